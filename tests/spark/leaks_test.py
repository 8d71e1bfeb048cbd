"""Secrets are only in the Python processes: not in Spark's pages, logs, process lists or Java's memory."""
import base64
import json
import pathlib
import threading
import time
import urllib.request

import pyarrow as pa
import pyarrow.parquet as pq
import pytest
from conftest import active_stages, executors, log_folder, python_workers
from customers import RULES

import korv.spark

CLEAR = "4000-BAD-VALUE-9173"
PAGES = ["jobs/", "stages/", "storage/", "environment/", "executors/", "SQL/"]
REST = ["jobs", "stages?details=true", "environment", "allexecutors", "sql?details=true", "storage/rdd"]


def forms(secret):
    """The ways in which a secret may be written down."""
    encoded = base64.b64encode(secret)
    return [secret, secret.hex().encode(), secret.hex().upper().encode(), encoded, base64.urlsafe_b64encode(secret),
            base64.b64encode(secret.hex().encode()).rstrip(b"=")]


def memory(process):
    """All memory that the process may write to, in pieces that overlap by more than a secret."""
    size = 1 << 24
    with open(f"/proc/{process}/maps") as maps, open(f"/proc/{process}/mem", "rb", buffering=0) as file:
        for line in maps:
            begin, end = (int(place, 16) for place in line.split()[0].split("-"))
            if line.split()[1][:2] != "rw" or line.rstrip().endswith(("[vvar]", "[vsyscall]")):
                continue
            while begin < end:
                try:
                    file.seek(begin)
                    yield file.read(min(size, end - begin) + 256)
                except OSError:  # pages that are not there
                    pass
                begin += size


def files_below(folder):
    return {str(path): path.read_bytes() for path in pathlib.Path(folder).rglob("*") if path.is_file()}


def environment(process):
    try:
        return pathlib.Path(f"/proc/{process}/environ").read_bytes()
    except (FileNotFoundError, ProcessLookupError):  # a Python worker that has had nothing to do
        return b""


def fetch(address):
    with urllib.request.urlopen(address) as answer:
        return answer.read()


def web_pages(spark):
    context = spark.sparkContext
    rest = f"{context.uiWebUrl}/api/v1/applications/{context.applicationId}"
    pages = {f"REST {name}": fetch(f"{rest}/{name}") for name in REST}
    numbers = {name: json.loads(pages[f"REST {name}"]) for name in ("jobs", "stages?details=true", "sql?details=true")}
    for stage in numbers["stages?details=true"]:
        tasks = f"stages/{stage['stageId']}/{stage['attemptId']}/taskList"
        pages[f"REST {tasks}"] = fetch(f"{rest}/{tasks}")
    details = [f"jobs/job/?id={job['jobId']}" for job in numbers["jobs"]]
    details += [f"stages/stage/?id={stage['stageId']}&attempt={stage['attemptId']}"
                for stage in numbers["stages?details=true"]]
    details += [f"SQL/execution/?id={query['id']}" for query in numbers["sql?details=true"]]
    return pages | {page: fetch(f"{context.uiWebUrl}/{page}") for page in PAGES + details}


@pytest.fixture
def busy(spark, secrets_file, tmp_path, processes):
    """While a job runs that masks, and after one that has failed on a value."""
    # From a file: Spark shows the constants of a query.
    pq.write_table(pa.table({"ID": [1], "CARD": [CLEAR]}), tmp_path / "bad.parquet")
    bad = spark.read.parquet(str(tmp_path / "bad.parquet"))
    with pytest.raises(Exception, match="CCN error 1") as fault:
        korv.spark.mask(bad, "ID=KEEP\nCARD=CCN, secret=crm", secrets_file).collect()
    go = tmp_path / "go"

    def wait(batches):
        import os
        import time

        yield from batches
        while not os.path.exists(go):
            time.sleep(0.1)

    numbers = spark.range(0, 100_000, 1, 2).selectExpr(
        "id as ID", "cast(4000000000000000 + id as string) as CARD", "concat('user', id, '@mail.example') as EMAIL",
        "'Ann' as NAME", "date'2000-01-01' as BIRTH", "'note' as NOTE")
    masked = korv.spark.mask(numbers, RULES, secrets_file, on_error="rule")
    job = threading.Thread(target=lambda: masked.mapInArrow(wait, masked.schema).count())
    job.start()
    try:
        while job.is_alive() and sum(stage.numActiveTasks for stage in active_stages(spark)) < 2:
            time.sleep(0.1)
        assert len(python_workers(processes())) >= 2
        yield str(fault.value)
    finally:
        go.touch()
        job.join()


def test_secrets_and_clear_values_stay_where_they_belong(spark, busy, processes, secret, secrets_file, cluster_folder):
    found = processes()
    java = [process for process, command in found if "/java " in command]
    assert len(executors(found)) == 2 and len(java) == 3
    looked_at = web_pages(spark) | {"fault": busy.encode()}
    looked_at |= {f"event log {name}": text for name, text in files_below(cluster_folder / "events").items()}
    looked_at |= {f"log {name}": text for name, text in files_below(log_folder(spark)).items()}
    for process, command in found:
        looked_at[f"command line {process}"] = command.encode()
        looked_at[f"environment {process}"] = environment(process)
    for name, text in looked_at.items():
        for form in forms(secret) + [CLEAR.encode()]:
            assert form not in text, name
    # What is looked at holds what is known to be there.
    for kind, known in [
        ("SQL/execution", b"MapInArrow"), ("stages/stage", b"Tasks"), ("REST sql", b"MapInArrow"),
        ("REST stages/", b"CCN error 1"), ("REST environment", b"local-cluster"), ("fault", b"CCN error 1"),
        ("event log", b"MapInArrow"), ("event log", b"CCN error 1"), ("log", b"CCN error 1"),
        ("command line", b"CoarseGrainedExecutorBackend"), ("environment", b"PATH="),
    ]:
        assert any(name.startswith(kind) and known in text for name, text in looked_at.items()), kind

    assert all(looked_at[f"environment {process}"] for process in java)

    path = str(secrets_file).encode()
    for process in java:
        is_there = False
        for piece in memory(process):
            is_there = is_there or path in piece
            for form in forms(secret):
                assert form not in piece, process
        assert is_there, "the secrets file's path is not found in a process that it has passed through"
