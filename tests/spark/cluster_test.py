"""Masking millions of rows: the result is that of one process, for any partitions and after any worker is killed."""
import os
import signal
import threading
import time

import duckdb
import pytest
from conftest import ROWS, active_stages, executors, python_workers
from customers import MASKED, RULES

import korv.spark


def differences(folder, reference):
    """Rows that only one of the tables has. As ID is in each row, the other columns are compared row by row."""
    ours, theirs = f"(from read_parquet('{folder}/*.parquet'))", f"(from '{reference}')"
    return duckdb.sql(
        f"select (select count(*) from ({ours} except all {theirs})), "
        f"(select count(*) from ({theirs} except all {ours})), (select count(*) from {ours})"
    ).fetchall()[0]


def masked(dataframe, secrets_file):
    return korv.spark.mask(dataframe, RULES, secrets_file, on_error="rule")


def test_one_process_masks_every_column(masked_here, customers):
    unchanged = ", ".join(f"count(*) filter (a.{name} = b.{name})" for name in MASKED)
    *counts, rows = duckdb.sql(
        f"select {unchanged}, count(*) from '{masked_here}' as a join '{customers}' as b using (ID)"
    ).fetchall()[0]
    assert rows == ROWS
    # A date moves by one of 61 distances, of which one is 0; the others may hit their own value by chance.
    assert all(count < ROWS / 1000 for count in counts[:3]) and counts[3] < ROWS / 50


@pytest.mark.parametrize("bytes_each", ["16m", "1g"])
def test_partitions_of_a_file_do_not_matter(spark, bytes_each, customers, masked_here, secrets_file, tmp_path):
    spark.conf.set("spark.sql.files.maxPartitionBytes", bytes_each)
    spark.conf.set("spark.sql.files.minPartitionNum", "1")
    dataframe = spark.read.parquet(str(customers))
    print(f"{dataframe.rdd.getNumPartitions()} partitions")
    masked(dataframe, secrets_file).write.parquet(str(tmp_path / "out"))
    assert differences(tmp_path / "out", masked_here) == (0, 0, ROWS)


def test_partitions_by_value_do_not_matter(spark, customers, masked_here, secrets_file, tmp_path):
    dataframe = spark.read.parquet(str(customers)).repartition(7, "NAME")
    masked(dataframe, secrets_file).write.parquet(str(tmp_path / "out"))
    assert differences(tmp_path / "out", masked_here) == (0, 0, ROWS)


def one_executor(found):
    return executors(found)[:1]


@pytest.mark.parametrize("victims", [one_executor, python_workers])
def test_killing_changes_nothing(spark, victims, processes, customers, masked_here, secrets_file, tmp_path):
    spark.conf.set("spark.sql.files.maxPartitionBytes", "2m")
    dataframe = masked(spark.read.parquet(str(customers)), secrets_file)
    faults = []

    def write():
        try:
            dataframe.write.parquet(str(tmp_path / "out"))
        except Exception as fault:
            faults.append(fault)

    writer = threading.Thread(target=write)
    writer.start()
    killed = lost = 0
    next_kill = 1
    while writer.is_alive():
        for stage in active_stages(spark):
            lost = max(lost, stage.numFailedTasks)
            # A Python worker may have been between two tasks; then there is another try.
            if lost == 0 and stage.numActiveTasks > 0 and stage.numCompletedTasks >= next_kill:
                next_kill = stage.numCompletedTasks + 10
                for process in victims(processes()):
                    os.kill(process, signal.SIGKILL)
                    killed += 1
        time.sleep(0.05)
    writer.join()
    assert not faults
    assert killed > 0 and lost > 0, f"{killed} processes killed, {lost} tasks lost"
    assert differences(tmp_path / "out", masked_here) == (0, 0, ROWS)
