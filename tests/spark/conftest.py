"""A real local cluster, a driver and two executor processes, and what tests read from them."""
import os
import pathlib
import subprocess
import sys

import pyspark
import pytest
from customers import RULES, write_customers, write_secrets
from pyspark.sql import SparkSession

ROWS = int(os.environ.get("KORV_SPARK_ROWS", "4000000"))
os.environ["PYSPARK_PYTHON"] = sys.executable


@pytest.fixture(scope="session")
def cluster_folder(tmp_path_factory):
    return tmp_path_factory.mktemp("cluster")


@pytest.fixture(scope="session")
def spark(cluster_folder):
    (cluster_folder / "events").mkdir()
    session = (
        SparkSession.builder.master("local-cluster[2,1,1024]")
        .appName("korv")
        .config("spark.eventLog.enabled", "true")
        .config("spark.eventLog.dir", f"file://{cluster_folder}/events")
        .config("spark.eventLog.compress", "false")
        .config("spark.local.dir", str(cluster_folder / "local"))
        .config("spark.sql.warehouse.dir", str(cluster_folder / "warehouse"))
        .config("spark.sql.session.timeZone", "America/New_York")
        .config("spark.sql.shuffle.partitions", "4")
        .getOrCreate()
    )
    session.sparkContext.setLogLevel("ERROR")
    yield session
    session.stop()


@pytest.fixture(scope="session")
def secret(cluster_folder):
    return write_secrets(cluster_folder / "secrets.txt")


@pytest.fixture(scope="session")
def secrets_file(cluster_folder, secret):
    return cluster_folder / "secrets.txt"


@pytest.fixture(scope="session")
def customers(cluster_folder):
    path = cluster_folder / "customers.parquet"
    write_customers(path, ROWS)
    return path


@pytest.fixture(scope="session")
def masked_here(cluster_folder, customers, secrets_file):
    """The customers, masked by one process."""
    output, rules = cluster_folder / "masked.parquet", cluster_folder / "rules.txt"
    rules.write_text(RULES)
    run = subprocess.run([sys.executable, "-m", "korv", "convert", customers, output, "--rules", rules,
                          "--secrets", secrets_file], capture_output=True, text=True, check=False)
    assert run.returncode == 1, run.stderr  # some values fail, on purpose
    return output


def processes_below(parent):
    """The process numbers and command lines of all descendants of a process."""
    children = {}
    for status in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            fields = status.read_text().rpartition(")")[2].split()
            command = (status.parent / "cmdline").read_bytes().replace(b"\0", b" ").decode(errors="replace")
        except (FileNotFoundError, ProcessLookupError):
            continue
        children.setdefault(int(fields[1]), []).append((int(status.parent.name), command))
    found = []
    waiting = [parent]
    while waiting:
        for process, command in children.get(waiting.pop(), []):
            found.append((process, command))
            waiting.append(process)
    return found


@pytest.fixture
def processes(spark):
    """Finds the processes of the cluster: the driver's Java process, executors and Python workers."""
    return lambda: processes_below(os.getpid())


def executors(found):
    return [process for process, command in found if "CoarseGrainedExecutorBackend" in command]


def python_workers(found):
    """Each executor has a daemon, whose children run the tasks."""
    daemons = [process for process, command in found if "pyspark.daemon" in command]
    return [process for daemon in daemons for process, _ in processes_below(daemon)]


def log_folder(spark):
    home = pathlib.Path(os.environ.get("SPARK_HOME", pathlib.Path(pyspark.__file__).parent))
    return home / "work" / spark.sparkContext.applicationId


def active_stages(spark):
    tracker = spark.sparkContext.statusTracker()
    stages = [tracker.getStageInfo(stage) for stage in tracker.getActiveStageIds()]
    return [stage for stage in stages if stage]
