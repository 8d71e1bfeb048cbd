"""The records of korv in a line each, for gdb: functions named after what they describe."""
import gdb
import gdb.types
from korv_values import (QUOTED, date_text, dump, shown, text_at, timestamp_text, token_name,
                         type_name)

VERSION = 21
CLASSES = {-1: "none", 74: "text", 75: "number"}


def name_of(record: gdb.Value) -> str:
    return gdb.types.get_basic_type(record.type).name or ""


def is_x(record: gdb.Value) -> bool:
    return name_of(record).endswith("X")


def carried(record: gdb.Value, names: str) -> str:
    """Those of the members that are not zero."""
    values = [(name, int(record[name])) for name in names.split()]
    return "".join(f", {name} {value}" for name, value in values if value)


def header_fault(record: gdb.Value, expected: str) -> str:
    """What is wrong with the block header: it is not the one that the library writes."""
    found = header(record["header"])
    return "" if found.startswith(f'"{expected}" version {VERSION},') else f", <header {found}>"


def header(block_header: gdb.Value) -> str:
    letters = [int(block_header["eyeCatcher"][i]) & 0xFF for i in range(4)]
    return (f'"{shown(letters, QUOTED)}" version {int(block_header["version"])}, '
            f'{int(block_header["length"])} bytes')


def field(record: gdb.Value) -> str:
    wide = int(record["wideText"])
    text = text_at(record["wideText"], 4) if wide else text_at(record["narrowText"], 1)
    return (f"{type_name(int(record['dataType']))}({int(record['length'])}) {text}"
            + carried(record, "fldValue1 fldValue2 fldValue3 fldFlag")
            + (header_fault(record, "FLDX") if is_x(record) else ""))


def operand(record: gdb.Value) -> str:
    kind = int(record["valueKind"])
    if kind == 0:
        value = "no value"
    elif kind == 1:
        value = str(int(record["intValue"]))
    elif kind == 2:
        value = text_at(record["wideValue"], 4)
    elif kind == 3:
        value = text_at(record["narrowValue"], 1) + ", wide " + text_at(record["wideValue"], 4)
    else:
        value = f"{int(record['otherValue']):#x} of kind {kind}"
    name = " " + text_at(record["oprText"], 4) if int(record["oprText"]) else ""
    return (f"operand {int(record['oprCode'])}{name}: {value}"
            + carried(record, "oprValue1 oprFlag oprValue2"))


def slot(record: gdb.Value) -> str:
    number = int(record["tokenId"])
    if not number and not int(record["text"]):
        return "unused"
    return f"{token_name(number)} {text_at(record['text'], 4)}"


def value(record: gdb.Value) -> str:
    length, data = int(record["length"]), int(record["data"])
    number = int(record["processingClass"])
    null = int(record["nullIndicator"]) == 1 or not data
    return (("null" if null else f"{length} bytes: {dump(data, min(length, 16))}")
            + f", class {CLASSES.get(number, number)}, capacity {int(record['capacity'])}, "
              f"copied {int(record['copiedLength'])}")


def date(record: gdb.Value) -> str:
    return date_text(*(int(record[name]) for name in ("year", "month", "day")))


def timestamp(moment: gdb.Value) -> str:
    names = ("year", "month", "day", "hour", "minute", "second")
    return timestamp_text(*(int(moment[name]) for name in names)) + carried(moment, "fraction")


def head(record: gdb.Value, expected: str, names: str) -> str:
    fault = header_fault(record, expected) if is_x(record) else ""
    return name_of(record) + carried(record, names) + fault


def block(record: gdb.Value) -> str:
    return head(record, "BLKX", "blkCode blkAttr1 blkAttr2 blkAttr3 blkAttr4 blkAttr5 blkFlag "
                "blkValue1 blkValue2 blkValue3")


def reference(node: gdb.Value, fields: dict[int, str]) -> str:
    """`fields` has the names of the block's fields by their addresses, in the order of the list."""
    position = (int(node["fieldPos"]) + 0x8000) % 0x10000 - 0x8000
    place = int(node["fieldDef"])
    if place in fields:
        field = fields[place]
    elif position >= len(fields):
        field = "<past the end>"
    else:
        field = "<not in the list>" if place else "<not set>"
    return f"position {position}, {field}"


def service(record: gdb.Value) -> str:
    return head(record, "SVCX", "svcCode1 svcCode2 svcAttr1 svcAttr2 svcFlag svcValue")


def error(record: gdb.Value) -> str:
    return (f"error {int(record['firstCode'])}, {int(record['secondCode'])}"
            + header_fault(record, "ECBD"))


def anchor(record: gdb.Value) -> str:
    return name_of(record) + carried(record, "recordCount currentSize largestSize")
