"""Times korv-mask on 100 MB of customer records: against the program that it replaced, built from the
history, and against programs that only split and join the columns. All are 64-bit programs."""
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

FUNCTION = "korv-mask"
SIZE = 100_000_000
RUNS = 5
MEMORY_LIMIT = 64 * 1024  # KiB
# Nanoseconds per value.
BATCH_LIMITS = {"empty provider": 40.0, "FF1 of 9 digits": 500.0, "EML pseudonym": 1000.0,
                "HASH pick": 1000.0}
BEFORE = "ae2d0979142bff84e3eb3185902977f52644e19c"  # the last commit with the program mask_csv
ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "examples/data"

SIX_RULES = """\
CARD = CCN, method=transpose, key=17
PHONE = NID, method=transpose, key=5
EMAIL = EML, method=transpose, key=4711, prefix=1, domain=masked.example
BIRTH_DATE = AGE, method=move, years=-1, days=45
CITY = LKP, file=CITIES.TXT, default=OTHER
"First Name" = HASH, method=seed, seed=autumn, file=NAMES.TXT
"""

PYTHON_FF3 = """\
import time
from ff3 import FF3Cipher
cipher = FF3Cipher("EF4359D8D580AA4F7F036D6F04FC6A94EF4359D8D580AA4F7F036D6F04FC6A94", "D8E7920AFA330A")
start = time.perf_counter()
for i in range(5000):
    cipher.encrypt(f"{i * 7919:09}")
print((time.perf_counter() - start) / 5000 * 1e9)
"""

PGCRYPTO = """\
CREATE EXTENSION pgcrypto;
SET max_parallel_workers_per_gather = 0;
CREATE TABLE addresses AS
    SELECT 'user.' || i || '@mail.example' AS address FROM generate_series(1, 200000) AS i;
SELECT sum(length(hmac(address, 'a key of 32 bytes for the peer..', 'sha256'))) FROM addresses;
\\timing on
SELECT sum(length(hmac(address, 'a key of 32 bytes for the peer..', 'sha256'))) FROM addresses;
"""

PYTHON = """\
import csv, sys
with open(sys.argv[1], newline="", encoding="utf-8") as file:
    csv.writer(sys.stdout).writerows(csv.reader(file))
"""


def run_or_exit(command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          check=False, **options)
    if done.returncode:
        raise SystemExit(f"{' '.join(map(str, command))}\n{done.stdout}")
    return done.stdout


def build_now(folder):
    run_or_exit(["cmake", "--preset", "native64", "-B", folder, "-DKORV_BUILD_TESTS=OFF"],
                cwd=ROOT)
    run_or_exit(["cmake", "--build", folder, "--target", "korv-mask-program", "bench_batch"])


def build_before(folder):
    """The former program from the history. It demands a rule; here it runs without one, too."""
    program = folder / "build/bin/mask_csv"
    if program.exists():
        return program
    folder.mkdir(parents=True, exist_ok=True)
    archive = subprocess.run(["git", "archive", BEFORE], cwd=ROOT, stdout=subprocess.PIPE,
                             check=True).stdout
    subprocess.run(["tar", "-x", "-C", folder], input=archive, check=True)
    rules = folder / "examples/mask_csv/host/rules.cpp"
    text = rules.read_text(encoding="utf-8")
    demand = 'if (rules.rules.empty()) throw HostError(path + ": no rule in it");'
    if demand not in text:
        raise SystemExit(f"{rules} is not the expected one")
    rules.write_text(text.replace(demand, ""), encoding="utf-8")
    run_or_exit(["cmake", "--preset", "native64", "-B", folder / "build", "-DKORV_BUILD_TESTS=OFF"],
                cwd=folder)
    run_or_exit(["cmake", "--build", folder / "build", "--target", "mask_csv"])
    return program


def write_records(target):
    """The demo's generator, repeated up to SIZE; returns the number of data rows."""
    rows = 20000
    text = subprocess.run([sys.executable, DATA / "make_customers.py", "--rows", str(rows)],
                          stdout=subprocess.PIPE, check=True).stdout
    heading, _, records = text.partition(b"\n")
    copies = SIZE // len(records)
    with open(target, "wb") as file:
        file.write(heading + b"\n")
        for _ in range(copies):
            file.write(records)
    return copies * rows


def repeat(source, target, times):
    with open(source, "rb") as file:
        heading = file.readline()
        begin = file.tell()
        with open(target, "wb") as copy:
            copy.write(heading)
            for _ in range(times):
                file.seek(begin)
                shutil.copyfileobj(file, copy, 1 << 20)


def seconds(command):
    start = time.monotonic()
    done = subprocess.run(command, check=False, stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL)
    if done.returncode > 1:  # 1: some values cannot be masked, as the records intend
        raise SystemExit(f"{command[0]} failed: exit status {done.returncode}")
    return time.monotonic() - start


def peak_memory(command):
    """KiB of the largest resident set, in a process of its own."""
    script = ("import resource, subprocess, sys\n"
              "done = subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL, "
              "stderr=subprocess.DEVNULL)\n"
              "if done.returncode > 1: sys.exit(2)\n"
              "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)\n")
    return int(run_or_exit([sys.executable, "-c", script, *map(str, command)]))


def interleaved(commands):
    times = {who: [] for who in commands}
    for _ in range(RUNS):
        for who, command in commands.items():
            times[who].append(seconds(command))
    return {who: statistics.median(values) for who, values in times.items()}


def row(label, peer, ours, peer_time, unit):
    return {"function": FUNCTION, "input": label, "peer": peer, "unit": unit, "ours": ours,
            "literal": None, "peer_time": peer_time, "ratio": peer_time / ours}


def python_ff3(build):
    """Nanoseconds for FF3 of 9 digits by the package ff3, in an environment of its own."""
    python = build / "venv/bin/python"
    if not python.exists():
        run_or_exit([sys.executable, "-m", "venv", build / "venv"])
    run_or_exit([python, "-m", "pip", "install", "--quiet", "ff3==1.0.3"])
    return float(run_or_exit([python, "-c", PYTHON_FF3]))


def pgcrypto_hmac():
    """Nanoseconds for HMAC-SHA-256 of an address by PostgreSQL, in a cluster for this run."""
    done = subprocess.run(["pg_virtualenv", "-t", "psql", "-XAtq", "-v", "ON_ERROR_STOP=1"],
                          input=PGCRYPTO, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, check=False)
    time_line = re.search(r"Time: ([0-9.]+) ms", done.stdout)
    if done.returncode or not time_line:
        raise SystemExit(done.stdout)
    return float(time_line[1]) * 1e6 / 200000


def batches(build, now):
    """The rows of single values in batches: the least of several runs, because other work only adds to it."""
    times = {}
    for _ in range(RUNS):
        for line in run_or_exit([now / "bin/bench_batch", now / "lib/bench-providers"]).splitlines():
            taken, name = line.split(" ", 1)
            times[name] = min(times.get(name, float("inf")), float(taken))
    result = []
    for name, taken in times.items():
        limit = BATCH_LIMITS.get(name)
        if limit:
            result.append(row(f"{name}, a value", f"{limit:.0f} ns", taken, limit, "ns"))
        else:
            print(f"{FUNCTION}: {name}: {taken:,.0f} ns a value", file=sys.stderr)
    result.append(row("FF1 of 9 digits, a value", "Python ff3", times["FF1 of 9 digits"],
                      python_ff3(build), "ns"))
    result.append(row("EML pseudonym, a value", "pgcrypto hmac", times["EML pseudonym"],
                      pgcrypto_hmac(), "ns"))
    return result


def splitters(source):
    """Programs that split and join the columns of a file, as far as they are installed."""
    commands = {"mawk": ["mawk", "-F,", "-v", "OFS=,", "{ $1 = $1; print }", source],
                "csvtool": ["csvtool", "cat", source],
                "mlr": ["mlr", "--csv", "cat", source]}
    found = {who: command for who, command in commands.items() if shutil.which(who)}
    return {**found, "Python csv": [sys.executable, "-c", PYTHON, source]}


def rows(build):
    now, before = build / "now", build_before(build / "before")
    build_now(now)
    program = now / "bin/korv-mask"
    batch_rows = batches(build, now)
    with tempfile.TemporaryDirectory(prefix="korv-bench-") as name:
        folder = pathlib.Path(name)
        source = folder / "customers.csv"
        count = write_records(source)
        shutil.copy(DATA / "cities.txt", folder / "CITIES.TXT")
        shutil.copy(DATA / "first_names.txt", folder / "NAMES.TXT")
        rules = {"six": SIX_RULES, "keep": "* = KEEP\n", "none": "# no rule\n"}
        for rule, text in rules.items():
            (folder / f"{rule}.txt").write_text(text, encoding="utf-8")
            former = re.sub(r"method=\w+, ", "", text)
            (folder / f"{rule}.before.txt").write_text(former, encoding="utf-8")
        report = ["--report", folder / "report"]

        def new(rule, jobs):
            return [program, source, "--rules", folder / f"{rule}.txt", "--jobs", str(jobs),
                    "--keep-unlisted", *report]

        def old(rule):
            return [before, source, "--rules", folder / f"{rule}.before.txt", *report]

        times = interleaved({"six": new("six", 1), "six before": old("six"),
                             "keep": new("keep", 1), "keep before": old("none"),
                             "six, 2 jobs": new("six", 2), **splitters(source)})
        megabytes = source.stat().st_size / 1e6
        for who, value in times.items():
            print(f"{FUNCTION}: {who}: {megabytes / value:,.0f} MB a second", file=sys.stderr)
        small = peak_memory(new("six", 2))
        repeat(source, folder / "large.csv", 10)
        large = peak_memory([*new("six", 2)[:1], folder / "large.csv", *new("six", 2)[2:]])
    per_row = {who: value / count * 1e9 for who, value in times.items()}
    result = [row("six rules", "former program", per_row["six"], per_row["six before"], "ns"),
              row("KEEP", "former program", per_row["keep"], per_row["keep before"], "ns"),
              row("six rules, 2 jobs", "1 job", per_row["six, 2 jobs"], per_row["six"], "ns"),
              row("memory, 100 MB", "64 MiB", small, MEMORY_LIMIT, "KiB"),
              row("memory, 1 GB", "that of 100 MB", large, small, "KiB"), *batch_rows]
    result += [row("KEEP", who, per_row["keep"], per_row[who], "ns") for who in splitters(source)]
    return result
