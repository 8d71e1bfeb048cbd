"""The demo's records become what korv-mask makes of them, as text, as a table and by SQL."""

import csv
import shutil

import duckdb
import korv
import korv.duckdb
import pyarrow as pa
import pyarrow.csv
import pytest
from conftest import ROOT

STORED = ROOT / "tests/korv-mask"
DATA = ROOT / "examples/data"


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    folder = tmp_path_factory.mktemp("demo")
    for file in (DATA / "cities.txt", DATA / "first_names.txt", DATA / "customers.csv"):
        shutil.copy(file, folder)
    shutil.copy(STORED / "disguises.txt", folder / "rules.txt")
    return folder


@pytest.fixture(scope="module")
def clear(folder):
    with open(folder / "customers.csv", newline="", encoding="utf-8") as file:
        header, *rows = csv.reader(file)
    columns = [[value or None for value in column] for column in zip(*rows)]
    return pa.table({name: pa.array(column, pa.string()) for name, column in zip(header, columns)})


@pytest.fixture(scope="module")
def expected():
    with open(STORED / "customers.masked.csv", newline="", encoding="utf-8") as file:
        header, *rows = csv.reader(file)
    return {name: list(column) for name, column in zip(header, zip(*rows))}


def as_csv(values):
    return [value or "" for value in values]


def test_the_table(folder, clear, expected):
    errors = []
    masked = korv.Masker(folder / "rules.txt").mask_table(clear, errors=errors, first_row=1)
    assert {name: as_csv(masked[name].to_pylist()) for name in masked.column_names} == expected
    report = (STORED / "customers.errors.txt").read_text().splitlines()
    lines = [line.partition(": ")[2] for line in report if ": row " in line]
    assert [f"row {error.row}, column {error.column}: {error.message}" for error in errors] == lines


def test_a_column_and_a_rule_at_a_time(folder, clear, expected):
    rules = {}
    for line in (folder / "rules.txt").read_text().splitlines():
        if line and not line.startswith("#"):
            name, _, rule = line.partition("=")
            rules[name.strip().strip('"')] = rule.strip()
    assert list(rules) == clear.column_names
    connection = duckdb.connect()
    connection.register("clear", clear)
    korv.duckdb.register(connection, errors="null", files=[folder])
    for name, rule in rules.items():
        masked = korv.mask(clear[name], rule, files=[folder], errors=[])
        assert as_csv(masked.to_pylist()) == expected[name]
        by_sql = connection.execute(f"select korv_mask(\"{name}\", '{rule}') from clear").fetchall()
        assert as_csv(value for value, in by_sql) == expected[name]
