"""The records that ctypes is told of are those of korv/mask.h."""

import ctypes
import re
import subprocess

from conftest import ROOT
from korv import _engine, _records

HEADER = (ROOT / "include/korv/mask.h").read_text()


def run_c(tmp_path, body):
    source = tmp_path / "layout.c"
    source.write_text(
        "#include <korv/mask.h>\n#include <stdio.h>\nint main(void) {\n" + body + "return 0;\n}\n"
    )
    subprocess.run(["cc", "-std=c99", "-I", ROOT / "include", source, "-o", tmp_path / "layout"], check=True)
    return subprocess.run([tmp_path / "layout"], check=True, capture_output=True, text=True).stdout


def test_layouts(tmp_path):
    body, expected = "", ""
    for record in _engine.STRUCTURES:
        name = record.__name__
        body += f'printf("{name} %zu\\n", sizeof({name}));\n'
        expected += f"{name} {ctypes.sizeof(record)}\n"
        for member, _ in record._fields_:
            place = f"(char*)&record.{member} - (char*)&record, sizeof record.{member}"
            body += f'{{ {name} record; printf("{member} %td %zu\\n", {place}); }}\n'
            field = getattr(record, member)
            expected += f"{member} {field.offset} {field.size}\n"
    assert run_c(tmp_path, body) == expected


def test_every_member_is_listed():
    for record in _engine.STRUCTURES:
        text = re.search(
            rf"typedef struct {record.__name__} {{(.*?)\n}} {record.__name__};", HEADER, re.DOTALL
        )[1]
        without_comments = re.sub(r"/\*.*?\*/", "", text, flags=re.DOTALL)
        members = re.findall(r"(\w+);", without_comments)
        assert members == [name for name, _ in record._fields_]


def test_constants(tmp_path):
    names = {
        "KORV_MASK_VERSION": _engine.INTERFACE_VERSION,
        "KORV_MASK_NO_ROW": _engine.NO_ROW,
        "KORV_MASK_NO_COLUMN": _engine.NO_COLUMN,
        **{
            f"KORV_MASK_{name}": getattr(_engine, name)
            for name in ("KEEP_UNLISTED", "STRICT", "UNMASK", "ONE_RULE", "SOME_COLUMNS")
        },
        **{f"KORV_MASK_VALUE_{name}": getattr(_engine, f"STATE_{name}") for name in ("FAILED", "DROP_ROW")},
        **{f"KORV_MASK_{status.name}": int(status) for status in _records.Status},
    }
    body = "".join(f'printf("%llu\\n", (unsigned long long){name});\n' for name in names)
    assert [int(line) for line in run_c(tmp_path, body).split()] == list(names.values())
    listed = re.findall(
        r"KORV_MASK_(\w+) = \d,? ", re.search(r"enum KorvMaskStatus {.*?}", HEADER, re.DOTALL)[0]
    )
    assert listed == [status.name for status in _records.Status]


def test_reversible_is_the_promise_of_the_providers(tmp_path):
    source = run_c(tmp_path, "").strip()
    assert source == ""
    text = (ROOT / "include/korv/provider.h").read_text()
    assert int(re.search(r"PRV_PROMISE_REVERSIBLE = (\d+)", text)[1]) == _engine.PROMISE_REVERSIBLE
