"""Times the example host on the demo's records repeated to 200 MB, against awk that only splits and
joins the columns."""
import csv
import pathlib
import shutil
import statistics
import subprocess
import tempfile
import time

FUNCTION = "mask_csv"
SIZE = 200_000_000
RUNS = 3
DATA = pathlib.Path(__file__).resolve().parent.parent / "examples/mask_csv/data"


def repeat_records(target):
    """Writes the heading and as many copies of the records as make SIZE; returns their number."""
    heading, _, records = (DATA / "customers.csv").read_bytes().partition(b"\n")
    copies = SIZE // len(records)
    with open(target, "wb") as file:
        file.write(heading + b"\n")
        for _ in range(copies):
            file.write(records)
    return copies


def count_records():
    """The records of the demo's file; some have line ends within a field."""
    with open(DATA / "customers.csv", newline="", encoding="utf-8") as file:
        return sum(1 for _ in csv.reader(file)) - 1


def host_command(build, source):
    return [build / "bin/mask_csv", "--rules", DATA / "rules.txt", source]


def seconds(command):
    start = time.monotonic()
    result = subprocess.run(command, check=False, stdout=subprocess.DEVNULL)
    if result.returncode > 1:  # 1: some values cannot be masked, as the demo intends
        raise SystemExit(f"{command[0]} failed: exit status {result.returncode}")
    return time.monotonic() - start


def rows(build):
    awks = [awk for awk in ("mawk", "gawk") if shutil.which(awk)]
    with tempfile.TemporaryDirectory(prefix="korv-bench-") as name:
        folder = pathlib.Path(name)
        source = folder / "customers.csv"
        count = repeat_records(source) * count_records()
        commands = {"ours": [*host_command(build, source), "--output", "-",
                             "--report", folder / "report"]}
        for awk in awks:
            commands[awk] = [awk, "-F,", "-v", "OFS=,", "{ $1 = $1; print }", source]
        times = {who: [] for who in commands}
        for _ in range(RUNS):
            for who, command in commands.items():
                times[who].append(seconds(command))
    medians = {who: statistics.median(values) / count * 1e9 for who, values in times.items()}
    for who, nanoseconds in medians.items():
        print(f"{FUNCTION if who == 'ours' else who}: {1e9 / nanoseconds:,.0f} rows a second")
    return [{"function": FUNCTION, "input": "200 MB of customers", "peer": awk, "unit": "ns",
             "ours": medians["ours"], "literal": None, "peer_time": medians[awk],
             "ratio": medians[awk] / medians["ours"]} for awk in awks]
