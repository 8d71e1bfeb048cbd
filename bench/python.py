#!/usr/bin/env python3
"""Measures the Python package beside its peers: bench/python.py [--rows N] [--values N]

Run it with the Python of an environment that the package is installed in, with its extra `files`.
1. A column call, beside the C call on ready buffers, in turns: the least CPU time of each, and their ratio. The goal
   is at most 1.5 for 100,000 values.
2. Parquet to Parquet with 4 masked columns, beside the same with all columns kept: time, CPU seconds of the
   process, and masked values for each CPU second. The goal is a million.
3. JSON Lines with the same columns, for which there is no goal."""

import argparse
import ctypes
import os
import pathlib
import resource
import subprocess
import sys
import tempfile
import time

import duckdb
import korv
import pyarrow
from korv import _engine

SECRET = bytes(range(32))
RULES = {
    "card": "CCN, secret=bench",
    "email": "EML, secret=bench",
    "phone": "NID, secret=bench",
    "name": "HASH, secret=bench, list=Becker;Bernard;Fischer;Larsen;Martin;Meyer;Moreau;Nowak",
}
CLEAR = """
select range as id, (4556737586890000 + range * 7)::varchar as card, 'user' || range || '@mail.example' as email,
       (600000000 + range % 300000000)::varchar as phone, 'Name' || range % 5000 as name, random() as score
from range({rows})
"""
ROUNDS = 15


def least(rounds, *calls):
    """The least CPU time of each call; they take turns, so that other load meets them alike."""
    times = [float("inf")] * len(calls)
    for _ in range(rounds):
        for i, call in enumerate(calls):
            begin = time.thread_time()
            call()
            times[i] = min(times[i], time.thread_time() - begin)
    return times


def timed(masker, name, array):
    """The seconds that KorvMaskBatch and mask_column take for a column."""
    handle = _engine.Handle(masker._settings, (name,), 0)
    strings, result = _engine._strings_of(array), ctypes.POINTER(_engine.KorvMaskResult)()
    arguments = handle._handle, 0, 0, ctypes.byref(strings), None, ctypes.byref(result)
    batch = _engine.native.KorvMaskBatch
    return least(ROUNDS, lambda: batch(*arguments), lambda: masker.mask_column(name, array))


def column_calls(values):
    table = duckdb.sql(CLEAR.format(rows=values)).to_arrow_table()
    print(f"column call of {values} values, least CPU time of {ROUNDS}")
    for name, rule in RULES.items():
        masker = korv.Masker(f"{name} = {rule}", {"bench": SECRET})
        native, python = timed(masker, name, table[name].combine_chunks())
        print(
            f"  {rule.partition(',')[0]:5} C {native * 1e3:8.2f} ms   Python {python * 1e3:8.2f} ms   "
            f"ratio {python / native:.2f}"
        )


def run(folder, source, target, rules):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    begin = time.perf_counter()
    command = ["convert", source, target, "--rules", rules, "--secrets", "secrets.txt"]
    subprocess.run([sys.executable, "-m", "korv", *command], cwd=folder, check=True)
    wall = time.perf_counter() - begin
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime, wall


def files(rows):
    with tempfile.TemporaryDirectory(prefix="korv_bench_") as name:
        folder = pathlib.Path(name)
        (folder / "secrets.txt").touch(mode=0o600)
        (folder / "secrets.txt").write_text(f"bench = {SECRET.hex()}\n")
        rest = "id = KEEP\nscore = KEEP\n"
        (folder / "mask.txt").write_text(
            "".join(f"{column} = {rule}\n" for column, rule in RULES.items()) + rest
        )
        (folder / "keep.txt").write_text("".join(f"{column} = KEEP\n" for column in RULES) + rest)
        duckdb.sql(f"copy ({CLEAR.format(rows=rows)}) to '{folder}/in.parquet'")
        few = rows // 10
        duckdb.sql(f"copy ({CLEAR.format(rows=few)}) to '{folder}/in.jsonl' (format json)")
        for source, count, rounds in (("in.parquet", rows, 5), ("in.jsonl", few, 2)):
            target = source.replace("in", "out")
            masked = min(run(folder, source, target, "mask.txt") for _ in range(rounds))
            kept = min(run(folder, source, target, "keep.txt") for _ in range(rounds))
            values = len(RULES) * count
            print(f"{source}, {count} rows, {values} values, least CPU of {rounds}, start of Python included")
            for what, (cpu, wall) in (("masked", masked), ("kept", kept)):
                print(f"  {what}: {cpu:.2f} CPU seconds, {wall:.2f} s")
            print(
                f"  {values / masked[0] / 1e6:.2f} million masked values for each CPU second, in all; "
                f"{values / max(masked[0] - kept[0], 1e-9) / 1e6:.2f} million beyond keeping them"
            )


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--rows", type=int, default=1_000_000)
    parser.add_argument("--values", type=int, default=100_000)
    options = parser.parse_args()
    print(
        f"{os.cpu_count()} cores, load {os.getloadavg()[0]:.1f}, pyarrow {pyarrow.__version__}, "
        f"duckdb {duckdb.__version__}"
    )
    column_calls(options.values)
    files(options.rows)


if __name__ == "__main__":
    main()
