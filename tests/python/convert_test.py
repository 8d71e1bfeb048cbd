"""python -m korv convert: Parquet and JSON Lines, with the policies, report and summary of korv-mask."""

import ctypes
import datetime
import glob
import gzip
import json
import os
import signal
import subprocess
import sys
import time
from decimal import Decimal

import korv
import pyarrow as pa
import pyarrow.parquet as pq
import pytest
from conftest import CARD, SECRETS
from korv.__main__ import main

RULES = """
ID = KEEP
CARD = CCN, secret=test
BORN = AGE, secret=test, range=-30..30, per=ID
NUMBER = NID, secret=test, integer=int8
NOTE = DROP
LIST = KEEP
"""
MASKER = korv.Masker(RULES, SECRETS)
CLEAR = pa.table(
    {
        "ID": pa.array([1, 2, 3], pa.int32()),
        "CARD": [CARD, None, "372199347995065"],
        "BORN": [datetime.date(2000, 1, 1), None, datetime.date(2001, 1, 1)],
        "NUMBER": [12345, 7, 99],
        "NOTE": [1.5, 2.5, None],
        "LIST": [[1], None, [2, 3]],
    }
)


@pytest.fixture
def run(tmp_path, secrets_file, monkeypatch, capfd):
    """Runs the program in a folder with rules and secrets; returns status and messages."""

    def run(source, output, *options, rules=RULES):
        (tmp_path / "rules.txt").write_text(rules)
        capfd.readouterr()
        status = main(
            ["convert", source, output, "--rules", "rules.txt", "--secrets", secrets_file.name, *options]
        )
        out, messages = capfd.readouterr()
        assert out == ""
        assert SECRETS["test"].hex() not in messages
        assert glob.glob(str(tmp_path / "*.tmp")) == []
        return status, messages

    monkeypatch.chdir(tmp_path)
    return run


def write_lines(path, *lines):
    path.write_text("".join(line + "\n" for line in lines), encoding="utf-8")


# Parquet


def test_parquet(run, tmp_path):
    pq.write_table(CLEAR, tmp_path / "in.parquet")
    assert run("in.parquet", "out.parquet", "--summary", "summary.json") == (0, "")
    masked = pq.read_table(tmp_path / "out.parquet")
    expected = MASKER.mask_table(CLEAR)
    assert masked.to_pylist() == expected.to_pylist()
    assert masked.schema.types == expected.schema.types
    summary = (tmp_path / "summary.json").read_text()
    assert summary.endswith("}\n") and "\n" not in summary[:-1] and ", " not in summary
    counts = json.loads(summary)
    card = counts["columns"][1]
    assert card.pop("fingerprint") == MASKER.columns(CLEAR.column_names)[1].fingerprint
    assert card == {
        "number": 2,
        "name": "CARD",
        "action": "CCN",
        "values": 2,
        "nulls": 1,
        "masked": 2,
        "unchanged": 0,
        "failed": {},
        "method": "ff1",
        "secret": "test",
    }
    assert counts["columns"][0] == {
        "number": 1,
        "name": "ID",
        "action": "KEEP",
        "values": 0,
        "nulls": 0,
        "masked": 0,
        "unchanged": 0,
        "failed": {},
    }
    assert {key: counts[key] for key in ("format", "status", "rows_in", "rows_out")} == {
        "format": 1,
        "status": 0,
        "rows_in": 3,
        "rows_out": 3,
    }


KEPT = pa.table(
    {
        "t_s": pa.array([1, None], pa.timestamp("s")), "t_us": pa.array([1, None], pa.timestamp("us")),
        "t_ns": pa.array([1, None], pa.timestamp("ns")), "t_utc": pa.array([1, None], pa.timestamp("us", "UTC")),
        "bool": [True, None], "f32": pa.array([1.5, None], pa.float32()), "f64": [0.1, None],
        "u8": pa.array([255, None], pa.uint8()), "u64": pa.array([2**64 - 1, None], pa.uint64()),
        "i8": pa.array([-128, None], pa.int8()), "dec": pa.array([Decimal("1.50"), None], pa.decimal128(20, 2)),
        "date": pa.array([5, None], pa.date32()), "time": pa.array([5, None], pa.time64("us")),
        "bin": [b"\x00\xff", None],
        "list": [["a"], None], "struct": [{"a": 1, "b": "x"}, None],
        "map": pa.array([[("k", 1)], None], pa.map_(pa.string(), pa.int32())),
        "text": ["\u00e9\x00", ""],
    }
)  # fmt: skip


def test_kept_columns_of_parquet_stay(run, tmp_path):
    pq.write_table(KEPT, tmp_path / "in.parquet")
    assert run("in.parquet", "out.parquet", rules="* = KEEP") == (0, "")
    kept = pq.read_table(tmp_path / "out.parquet")
    assert kept.column_names == KEPT.column_names
    for name in KEPT.column_names:
        # Parquet has no time stamps in seconds.
        type = pa.timestamp("ms") if name == "t_s" else KEPT[name].type
        assert kept[name].cast(type).to_pylist() == KEPT[name].cast(type).to_pylist(), name


def test_rows_keep_their_order_and_memory_is_bounded(run, tmp_path):
    count = 700_000
    table = pa.table({"ID": range(count), "CARD": [str(4000000000000000 + i) for i in range(count)]})
    pq.write_table(table, tmp_path / "in.parquet", row_group_size=50_000)
    assert run("in.parquet", "out.parquet", "--jobs", "4", rules="ID = KEEP\nCARD = CCN, secret=test") == (
        0,
        "",
    )
    masked = pq.read_table(tmp_path / "out.parquet")
    assert masked["ID"].equals(table["ID"])
    assert masked["CARD"].equals(MASKER.mask_column("CARD", table["CARD"]))


def test_a_nested_column_under_a_rule_is_refused(run, tmp_path):
    pq.write_table(CLEAR, tmp_path / "in.parquet")
    for action in ("NID, secret=test", "NULL", "CONST, value=x"):
        status, messages = run(
            "in.parquet", "out.parquet", rules=RULES.replace("LIST = KEEP", f"LIST = {action}")
        )
        assert status == 2 and "column LIST: values of type list" in messages
    assert not (tmp_path / "out.parquet").exists()


def test_names_are_not_patterns(run, tmp_path):
    for name in ("*.parquet", "a?b.parquet", "[a].parquet", "k=v.parquet", "o'clock.parquet", "-.parquet"):
        pq.write_table(CLEAR, tmp_path / name)
        assert run(f"./{name}", f"./out {name}") == (0, "")
        assert pq.read_table(str(tmp_path / f"out {name}"), partitioning=None).num_columns == 5


# Failures


FAILING = pa.table({"ID": range(1, 6), "CARD": [CARD, "12", None, "4556-x", CARD]})


@pytest.mark.parametrize("form", ["parquet", "jsonl"])
def test_failures(run, tmp_path, form):
    rules = "ID = KEEP\nCARD = CCN, secret=test"
    if form == "parquet":
        pq.write_table(FAILING, tmp_path / "in.parquet")
    else:
        write_lines(tmp_path / "in.jsonl", *(json.dumps(row) for row in FAILING.to_pylist()))
    status, messages = run(f"in.{form}", f"out.{form}", "--summary", "s.json", rules=rules)
    assert status == 1
    lines = messages.splitlines()
    assert lines[0] == (
        f"in.{form}: row 2, column CARD: CCN error 2, too few digits: KORV_TOKID_COLNAME=CARD "
        "KORV_TOKID_SRCLEN=2 KORV_TOKID_EXPSRCLEN=12"
    )
    assert lines[1].startswith(f"in.{form}: row 4, column CARD: CCN error 1, ")
    assert lines[2:] == [f"in.{form}: 2 of 4 values in 5 rows failed"]
    summary = json.loads((tmp_path / "s.json").read_text())
    assert (summary["status"], summary["columns"][1]["failed"]) == (1, {"1": 1, "2": 1})
    assert run(f"in.{form}", f"out.{form}", "--report", "report.txt", rules=rules) == (1, "")
    assert (tmp_path / "report.txt").read_text() == messages

    for option in ("2", "3"):
        assert run(f"in.{form}", f"more.{form}", "--max-errors", option, rules=rules)[0] == 1
    for option in ("0", "1"):
        status, messages = run(
            f"in.{form}", f"none.{form}", "--max-errors", option, "--summary", "s.json", rules=rules
        )
        assert status == 2 and f"more than {option} values failed, which is the limit" in messages
        assert json.loads((tmp_path / "s.json").read_text())["status"] == 2
    status, messages = run(f"in.{form}", f"none.{form}", rules=rules + ", on-error=abort")
    assert status == 2 and "its rule says on-error=abort: row 2, column CARD" in messages
    assert not (tmp_path / f"none.{form}").exists()

    assert (
        run(f"in.{form}", f"less.{form}", "--summary", "s.json", rules=rules + ", on-error=drop-row")[0] == 1
    )
    summary = json.loads((tmp_path / "s.json").read_text())
    assert (summary["rows_in"], summary["rows_out"]) == (5, 3)
    if form == "parquet":
        assert pq.read_table(tmp_path / "less.parquet")["ID"].to_pylist() == [1, 3, 5]
    else:
        assert [json.loads(line)["ID"] for line in (tmp_path / "less.jsonl").open()] == [1, 3, 5]


def test_the_report_is_bounded(run, tmp_path):
    pq.write_table(pa.table({"CARD": ["1"] * 10_005}), tmp_path / "in.parquet")
    assert run("in.parquet", "out.parquet", "--report", "report.txt", rules="CARD = CCN, secret=test") == (
        1,
        "",
    )
    lines = (tmp_path / "report.txt").read_text().splitlines()
    assert lines[10_000:] == [
        "5 more errors are left out",
        "in.parquet: 10005 of 10005 values in 10005 rows failed",
    ]


@pytest.mark.parametrize("form", ["parquet", "jsonl"])
def test_options(run, tmp_path, form):
    if form == "parquet":
        pq.write_table(FAILING.slice(0, 1), tmp_path / "in.parquet")
    else:
        write_lines(tmp_path / "in.jsonl", json.dumps(FAILING.to_pylist()[0]))
    status, messages = run(f"in.{form}", f"out.{form}", rules="CARD = CCN, secret=test")
    assert status == 2 and "ID" in messages
    assert run(f"in.{form}", f"out.{form}", "--keep-unlisted", rules="CARD = CCN, secret=test") == (0, "")
    status, messages = run(
        f"in.{form}", f"not.{form}", "--strict", rules="ID = KEEP\nCARD = CCN, method=transpose, key=5"
    )
    assert status == 2 and "strict" in messages
    assert run(f"out.{form}", f"back.{form}", "--unmask", rules="ID = KEEP\nCARD = CCN, secret=test") == (
        0,
        "",
    )
    if form == "parquet":
        assert pq.read_table(tmp_path / "back.parquet").to_pylist() == FAILING.slice(0, 1).to_pylist()
    else:
        assert (tmp_path / "back.jsonl").read_text().replace(" ", "") == (
            tmp_path / "in.jsonl"
        ).read_text().replace(" ", "")
    status, messages = run(f"in.{form}", f"not.{form}", rules="ID = KEEP\nCARD = KEEP\nNONE = KEEP")
    assert status == 2 and "NONE" in messages
    assert not (tmp_path / f"not.{form}").exists()


# JSON Lines


def test_lines_keep_what_is_not_masked(run, tmp_path):
    write_lines(
        tmp_path / "in.jsonl",
        '{"ID":1, "CARD" : "4556737586899855","NUMBER":12345,"NOTE":{"a":[1,2]},"BORN":"2000-01-01"}',
        "",
        '{"CARD":null,"ID":"a\\u00e9\\/","NUMBER": "77", "LIST":[1.50,{"b" : 1e2}]}',
        '{"LIST":12345678901234567890.120,"NUMBER":null}',
        "  {  }\t",
        '{"ID":true,"list":"x","CARD":"\\u0034556737586899855"}\r',
    )
    rules = RULES + "list = KEEP"
    status, messages = run(
        "in.jsonl",
        "out.jsonl",
        rules=rules.replace("LIST = KEEP", '"LIST" = KEEP').replace("\nlist", '\n"list"'),
    )
    assert (status, messages) == (0, "")
    (card,) = MASKER.mask_column("CARD", [CARD])
    number, text = MASKER.mask_column("NUMBER", ["12345", "77"])
    (born,) = MASKER.mask_column("BORN", ["2000-01-01"], ["1"])
    assert (tmp_path / "out.jsonl").read_text() == (
        f'{{"ID":1,"CARD" : "{card}","NUMBER":{number},"BORN":"{born}"}}\n'
        f'{{"CARD":null,"ID":"a\\u00e9\\/","NUMBER": "{text}","LIST":[1.50,{{"b" : 1e2}}]}}\n'
        '{"LIST":12345678901234567890.120,"NUMBER":null}\n'
        "{}\n"
        f'{{"ID":true,"list":"x","CARD":"{card}"}}\n'
    )


def test_numbers_come_out_as_numbers(run, tmp_path):
    values = [str(value) for value in range(1000, 1200)]
    write_lines(tmp_path / "in.jsonl", *(f'{{"N":{value}}}' for value in values))
    status, messages = run("in.jsonl", "out.jsonl", rules="N = NID, secret=test")
    texts = korv.mask(values, "NID, secret=test", SECRETS)
    expected = [None if text.startswith("0") else int(text) for text in texts]
    assert [json.loads(line)["N"] for line in (tmp_path / "out.jsonl").open()] == expected
    assert status == 1 and None in expected
    assert messages.count(
        "NID error 9100, the masked value does not fit the number of JSON"
    ) == expected.count(None)
    run("in.jsonl", "out.jsonl", rules="N = NID, secret=test, on-error=drop-row")
    assert [json.loads(line)["N"] for line in (tmp_path / "out.jsonl").open()] == [
        value for value in expected if value is not None
    ]
    assert run("in.jsonl", "none.jsonl", rules="N = NID, secret=test, on-error=abort")[0] == 2


def test_replacements_of_failed_numbers(run, tmp_path):
    write_lines(tmp_path / "in.jsonl", '{"N":1}', '{"N":"1"}')
    for operands, first, second in (
        ("", None, ""),
        (", on-error=const, value=0", 0, "0"),
        (", on-error=const, value=a", None, "a"),
    ):
        status, messages = run("in.jsonl", "out.jsonl", rules="N = CCN, secret=test" + operands)
        assert status == 1 and messages.count("CCN error 2") == 2 and "9100" not in messages
        assert [json.loads(line)["N"] for line in (tmp_path / "out.jsonl").open()] == [first, second]


@pytest.mark.parametrize("value", ['{"a":1}', "[1]", "true", "false"])
@pytest.mark.parametrize("action", ["CCN, secret=test", "NULL", "CONST, value=x"])
def test_nested_values_under_a_rule_are_refused(run, tmp_path, value, action):
    write_lines(tmp_path / "in.jsonl", '{"A":"4556737586899855"}', f'{{"A":{value}}}')
    status, messages = run("in.jsonl", "out.jsonl", rules=f"A = {action}")
    assert status == 2 and "in.jsonl:2: key A: " in messages and messages.endswith("cannot be masked\n")
    assert not (tmp_path / "out.jsonl").exists()
    assert run("in.jsonl", "out.jsonl", rules="A = KEEP") == (0, "")


MALFORMED = [
    "[1]",
    "5",
    '{"a":"SECRETIVE',
    '{"a":1,"a":2}',
    '{"a":1,"\\u0061":2}',
    '{"a":NaN}',
    '{"a":1}{"b":2}',
    '{"a":[1,]}',
    '{"a":1} x',
    '{"a":1,}',
    "{",
    "{,}",
    '{"a" 1}',
    '{"a":01}',
    '{"a":1.}',
    '{"a":"\\x"}',
    '{"a":-}',
    '{"a":"SECRETIVE\x01"}',
    "{'a':1}",
    '{"a":' + "[" * 100_000,
    "\ufeff{}",
]


@pytest.mark.parametrize("line", MALFORMED, ids=lambda line: ascii(line[:12]))
def test_malformed_lines(run, tmp_path, line):
    write_lines(tmp_path / "in.jsonl", '{"a":1}', line)
    status, messages = run("in.jsonl", "out.jsonl", rules="a = KEEP")
    assert (status, messages) == (
        2,
        "korv convert: in.jsonl:2: not one JSON object in UTF-8 whose keys are all different\n",
    )
    assert not (tmp_path / "out.jsonl").exists()


def test_bytes_that_are_not_utf8(run, tmp_path):
    (tmp_path / "in.jsonl").write_bytes(b'{"a":"\xff"}\n')
    assert run("in.jsonl", "out.jsonl", rules="a = KEEP")[0] == 2


def test_a_last_line_without_end_and_new_keys(run, tmp_path):
    (tmp_path / "in.jsonl").write_text('{"A":1}\n' * 5000 + '{"B":2,"A":3}')
    assert run("in.jsonl", "out.jsonl", rules="A = KEEP\nB = NULL") == (0, "")
    assert (tmp_path / "out.jsonl").read_text() == '{"A":1}\n' * 5000 + '{"B":null,"A":3}\n'
    status, messages = run("in.jsonl", "none.jsonl", rules="A = KEEP")
    assert status == 2 and "B" in messages
    (tmp_path / "in.jsonl").write_text("")
    assert run("in.jsonl", "empty.jsonl", rules="A = KEEP") == (0, "")
    assert (tmp_path / "empty.jsonl").read_text() == ""


def test_compressed_lines(run, tmp_path):
    rules = "A = AFF, secret=test"
    lines = "".join(f'{{"A":"text {i}"}}\n' for i in range(20_000))
    (tmp_path / "in.jsonl").write_text(lines)
    assert run("in.jsonl", "out.ndjson", rules=rules) == (0, "")
    masked = (tmp_path / "out.ndjson").read_bytes()
    half = len(lines) // 2
    (tmp_path / "in.jsonl.gz").write_bytes(
        gzip.compress(lines[:half].encode()) + gzip.compress(lines[half:].encode())
    )
    assert run("in.jsonl.gz", "out.jsonl.zst", rules=rules) == (0, "")
    assert pa.input_stream(str(tmp_path / "out.jsonl.zst"), compression="zstd").read() == masked
    assert run("out.jsonl.zst", "back.jsonl.gz", "--unmask", rules=rules) == (0, "")
    assert gzip.decompress((tmp_path / "back.jsonl.gz").read_bytes()) == lines.encode()
    (tmp_path / "cut.jsonl.gz").write_bytes(gzip.compress(lines.encode())[:-1000])
    status, _ = run("cut.jsonl.gz", "none.jsonl", rules=rules)
    assert status == 2 and not (tmp_path / "none.jsonl").exists()


# Files


def test_the_output_may_be_the_input(run, tmp_path):
    for form in ("parquet", "jsonl"):
        path = tmp_path / f"in.{form}"
        if form == "parquet":
            pq.write_table(FAILING.slice(0, 1), path)
        else:
            write_lines(path, json.dumps(FAILING.to_pylist()[0]))
        path.chmod(0o640)
        rules = "ID = KEEP\nCARD = CCN, secret=test"
        assert run(path.name, path.name, rules=rules) == (0, "")
        assert path.stat().st_mode & 0o777 == 0o640
        assert CARD.encode() not in path.read_bytes()
        os.link(path, tmp_path / "other")
        status, messages = run(path.name, path.name, rules=rules)
        assert status == 2 and "has several names (hard links)" in messages
        (tmp_path / "other").unlink()


@pytest.mark.parametrize(
    "options",
    [
        ("--report", "in.jsonl"),
        ("--summary", "in.jsonl"),
        ("--report", "rules.txt"),
        ("--summary", "secrets.txt"),
        ("--report", "x", "--summary", "x"),
        ("--summary", "out.jsonl"),
        ("--report", "cities.txt"),
        ("--summary", "link"),
    ],
    ids=" ".join,
)
def test_no_file_is_overwritten_that_is_read(run, tmp_path, options):
    write_lines(tmp_path / "in.jsonl", '{"A":"Rome"}', '{"A":"Nowhere"}')
    (tmp_path / "cities.txt").write_text("Rome = Bari\n")
    (tmp_path / "link").symlink_to("cities.txt")
    before = {path: path.read_bytes() for path in tmp_path.iterdir() if path.name != "rules.txt"}
    status, messages = run("in.jsonl", "out.jsonl", *options, rules="A = LKP, file=cities.txt")
    assert status == 2 and ("would overwrite" in messages or "are the same file" in messages)
    after = {path: path.read_bytes() for path in tmp_path.iterdir() if path.name != "rules.txt"}
    assert before == after


def test_outputs_that_are_read(run, tmp_path):
    write_lines(tmp_path / "in.jsonl", '{"A":"Rome"}')
    (tmp_path / "cities.jsonl").write_text("Rome = Bari\n")
    status, _ = run("in.jsonl", "cities.jsonl", rules="A = LKP, file=cities.jsonl")
    assert status == 2 and (tmp_path / "cities.jsonl").read_text() == "Rome = Bari\n"


@pytest.mark.parametrize(
    "source, output, message",
    [
        ("none.jsonl", "out.jsonl", "No such file"),
        ("none.parquet", "out.parquet", "none.parquet"),
        ("in.jsonl", "out.parquet", "becomes"),
        ("in.csv", "out.csv", "becomes"),
        ("in.jsonl", "none/out.jsonl", "No such file"),
        ("broken.parquet", "out.parquet", "broken.parquet"),
        ("in.jsonl", "folder.jsonl", "not a regular file"),
    ],
)
def test_files_that_cannot_be_used(run, tmp_path, source, output, message):
    write_lines(tmp_path / "in.jsonl", '{"A":"x"}')
    (tmp_path / "broken.parquet").write_bytes(b"PAR1 SECRETIVE PAR1")
    (tmp_path / "folder.jsonl").mkdir()
    status, messages = run(source, output, rules="A = NULL")
    assert status == 2 and message in messages and messages.startswith("korv convert: ")
    assert "Traceback" not in messages and "SECRETIVE" not in messages
    assert not (tmp_path / output).is_file()


def test_usage():
    result = subprocess.run(
        [sys.executable, "-m", "korv", "convert", "--help"], capture_output=True, text=True, check=False
    )
    assert result.returncode == 0 and "usage: python -m korv convert" in result.stdout
    for arguments in (
        [],
        ["convert"],
        ["convert", "a.jsonl", "b.jsonl"],
        ["convert", "a", "b", "--rules", "c", "--jobs", "-1"],
    ):
        with pytest.raises(SystemExit) as caught:
            main(arguments)
        assert caught.value.code == 2


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP])
@pytest.mark.parametrize("form", ["parquet", "jsonl"])
def test_a_signal_leaves_nothing(tmp_path, secrets_file, number, form):
    # More rows than can be masked before the signal arrives.
    if form == "parquet":
        table = pa.table({"CARD": pa.array([CARD] * 500_000)})
        with pq.ParquetWriter(tmp_path / "in.parquet", table.schema) as writer:
            for _ in range(20):
                writer.write_table(table)
    else:
        (tmp_path / "in.jsonl").write_text(f'{{"CARD":"{CARD}"}}\n' * 1_000_000)
    (tmp_path / "rules.txt").write_text("CARD = CCN, secret=test")
    process = subprocess.Popen(
        [
            sys.executable,
            "-m",
            "korv",
            "convert",
            f"in.{form}",
            f"out.{form}",
            "--rules",
            "rules.txt",
            "--secrets",
            secrets_file.name,
        ],
        cwd=tmp_path,
        stderr=subprocess.PIPE,
        # The tests may be run by a program that ignores it, such as nohup.
        preexec_fn=lambda: signal.signal(number, signal.SIG_DFL),  # noqa: PLW1509 (there are no threads)
    )
    while process.poll() is None and not glob.glob(str(tmp_path / "out.*.tmp")):
        time.sleep(0.01)
    process.send_signal(number)
    _, messages = process.communicate(timeout=120)
    assert (process.returncode, messages) == (-number, b"")
    assert sorted(path.name for path in tmp_path.iterdir()) == [f"in.{form}", "rules.txt", "secrets.txt"]


def test_no_other_process_reads_its_memory(run, tmp_path, secrets_file):
    write_lines(tmp_path / "in.jsonl", '{"A":"x1"}')
    code = (
        "import atexit, ctypes, runpy; atexit.register(lambda: print(ctypes.CDLL(None).prctl(3, 0, 0, 0, 0))); "
        "runpy.run_module('korv', run_name='__main__')"
    )
    (tmp_path / "rules.txt").write_text("A = AFF, secret=test")
    result = subprocess.run(
        [
            sys.executable,
            "-c",
            code,
            "convert",
            "in.jsonl",
            "out.jsonl",
            "--rules",
            "rules.txt",
            "--secrets",
            secrets_file.name,
        ],
        cwd=tmp_path,
        capture_output=True,
        text=True,
        check=True,
    )
    assert result.stdout == "0\n"
    assert ctypes.CDLL(None).prctl(3, 0, 0, 0, 0) == 1
