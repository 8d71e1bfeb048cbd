"""What masking costs on one core, alone and in Spark: CPU seconds for a million values, and memory.

Usage: bench/spark.py [ROWS]. Java must be installed. What else is missing is installed below build/bench/spark."""
import os
import pathlib
import resource
import subprocess
import sys
import tempfile
import venv
import warnings

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/spark"))

TICK = os.sysconf("SC_CLK_TCK")


def status_of(process):
    """Parent and CPU seconds of a process, with those of its children that have ended."""
    fields = pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()
    return int(fields[1]), sum(map(int, fields[11:15])) / TICK


def tree():
    """The CPU seconds of this process and of all below it."""
    found = {}
    for folder in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            found[int(folder.name)] = status_of(folder.name)
        except (FileNotFoundError, ProcessLookupError):
            pass
    ours = {os.getpid()}
    while more := {process for process, (parent, _) in found.items() if parent in ours} - ours:
        ours |= more
    return {process: found[process][1] for process in ours}


def cpu_seconds(function):
    before = sum(tree().values())
    function()
    return sum(tree().values()) - before


def largest_worker():
    """MiB of the largest Python worker so far."""
    peaks = []
    for process in tree():
        folder = pathlib.Path(f"/proc/{process}")
        if b"pyspark.daemon" in (folder / "cmdline").read_bytes():
            line = next(line for line in (folder / "status").read_text().splitlines() if line.startswith("VmHWM"))
            peaks.append(int(line.split()[1]) / 1024)
    return max(peaks)


def show(what, value, unit="CPU seconds"):
    print(f"{what:<58} {value:8.2f} {unit}", flush=True)


def install():
    """Runs this program again in an environment that has what it needs."""
    folder = ROOT / "build/bench/spark"
    venv.create(folder, with_pip=True)
    packages = [f"{ROOT}[files,spark]", "-r", ROOT / "tests/spark/requirements.txt"]
    subprocess.run([folder / "bin/pip", "install", "--quiet", *packages], check=True)
    os.execv(folder / "bin/python", [str(folder / "bin/python"), *sys.argv])


def main():
    try:
        import korv.spark
        import pyarrow.parquet as pq
        from customers import MASKED, RULES, write_customers, write_secrets
        from pyspark.sql import SparkSession
    except ImportError:
        install()
    rows = int(sys.argv[1]) if len(sys.argv) > 1 else 1_000_000
    millions = rows * len(MASKED) / 1e6
    os.environ["PYSPARK_PYTHON"] = sys.executable
    warnings.simplefilter("ignore")
    with tempfile.TemporaryDirectory() as folder:
        whole, half, secrets = (pathlib.Path(folder, name) for name in ("whole.parquet", "half.parquet", "secrets.txt"))
        write_customers(whole, rows)
        write_customers(half, rows // 2)
        write_secrets(secrets)
        print(f"For a million masked values; {rows} rows with {len(MASKED)} masked columns on one core")
        with korv.Masker(RULES, secrets) as masker:
            batches = list(pq.ParquetFile(whole).iter_batches(100_000))
            show("one process, from memory to memory",
                 cpu_seconds(lambda: [masker.mask_table(batch, errors=[]) for batch in batches]) / millions)
            batches = None  # Its memory is not needed any more.

        spark = (SparkSession.builder.master("local[1]").config("spark.ui.enabled", "false")
                 .config("spark.sql.shuffle.partitions", "1").getOrCreate())
        spark.sparkContext.setLogLevel("ERROR")

        def run(dataframe):
            dataframe.write.format("noop").mode("overwrite").save()

        def masked(path):
            return korv.spark.mask(spark.read.parquet(str(path)), RULES, secrets, on_error="rule")

        for records in (10_000, 100_000):
            spark.conf.set("spark.sql.execution.arrow.maxRecordsPerBatch", str(records))
            clear = spark.read.parquet(str(whole))
            run(masked(half))  # so that Java has compiled what runs often
            print(f"Spark, batches of {records} rows")
            show("  read from Parquet", cpu_seconds(lambda clear=clear: run(clear)) / millions)
            show("  and passed through Python",
                 cpu_seconds(lambda clear=clear: run(clear.mapInArrow(lambda batches: batches, clear.schema)))
                 / millions)
            show("  and masked there", cpu_seconds(lambda: run(masked(whole))) / millions)
            show("  the same with half of the rows", cpu_seconds(lambda: run(masked(half))) / millions * 2)
            show("  largest memory of the Python worker", largest_worker(), "MiB")
        spark.stop()
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        code = "import sys, korv.spark; korv.Masker(*sys.argv[1:3]).columns(sys.argv[3:])"
        names = pq.read_schema(whole).names
        subprocess.run([sys.executable, "-c", code, RULES, str(secrets), *names], check=True)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        show("Start of a Python worker", after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)


if __name__ == "__main__":
    main()
