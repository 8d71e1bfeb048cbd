"""Shows the records of korv in gdb: lists unrolled, texts, types and tokens by name.

gdb loads this file by itself with the library that it is installed for; `source korv_printers.py`
does the same for any program. Records are recognised by the names of their types, in any program.

    print *block                          a control block with its fields, references and errors
    print/r *block                        the same record as plain members
    print $korv_value(value, VARCHAR_SZ)  the data of a value record by its type, korv_values.py

Damaged records are expected: a list that runs in a circle, a pointer to nowhere and a text without
an end show as a remark in < >.
"""
import os
import sys
from collections.abc import Iterator
from typing import Callable, Optional, Union

import gdb
import gdb.printing
import gdb.types

# Nothing is written beside what may be installed.
sys.dont_write_bytecode, kept = True, sys.dont_write_bytecode
sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import korv_lines as lines  # noqa: E402
from korv_values import LIMIT, TOKENS, members, unreadable  # noqa: E402
del sys.path[0]
sys.dont_write_bytecode = kept

NOWHERE = "<part of a copy, which is not in memory>"
Child = tuple[str, Union[str, gdb.Value]]


# ---- Lists ---------------------------------------------------------------------------------------

def walk(name: str, first: Optional[gdb.Value], link: str = "link") -> Iterator[Child]:
    """The records of a list as children; where the list is broken, the last of them says how."""
    if first is None:
        yield f"{name}[0]", NOWHERE
        return
    places: dict[int, int] = {}
    while int(first):
        address = int(first)
        child = f"{name}[{len(places)}]"
        if address in places:
            yield child, f"<the list runs back to {name}[{places[address]}]>"
            return
        if len(places) == LIMIT:
            yield child, f"<more than {LIMIT} records>"
            return
        places[address] = len(places)
        record = first.dereference()
        try:
            record.fetch_lazy()
        except gdb.MemoryError:
            yield child, unreadable(address)
            return
        yield child, record
        first = record[link]


def block_children(block: gdb.Value) -> Iterator[Child]:
    fields = {}
    for name, field in walk("fields", block["fieldDefs"]):
        if isinstance(field, gdb.Value):
            fields[int(field.address)] = name
        yield name, field
    for name, node in walk("references", block["fieldRefs"].address):
        yield name, lines.reference(node, fields) if isinstance(node, gdb.Value) else node
    if not lines.is_x(block) and int(block["errorAnchor"]):
        yield "errors", next(walk("", block["errorAnchor"]))[1]


def service_children(service: gdb.Value) -> Iterator[Child]:
    yield from walk("operands", service["oprDefs"])
    if lines.is_x(service):
        yield from walk("fields", service["fieldDefs"])


def error_children(record: gdb.Value) -> Iterator[Child]:
    """The token slots, and the spare one after them if it holds a token."""
    count = int(record["tokenSlotCount"])
    first = record["tokenSlots"][0].address
    if first is None:
        yield "token[0]", NOWHERE
        return
    for index in range(max(count + 1, 0)):
        try:
            slot = (first + index).dereference()
            text = lines.slot(slot)
        except gdb.MemoryError:
            yield f"token[{index}]", unreadable(int(first + index))
            return
        if index < count:
            yield f"token[{index}]", text
        elif int(slot["tokenId"]) in TOKENS:
            yield "spare token", text


def anchor_children(anchor: gdb.Value) -> Iterator[Child]:
    return walk("error", anchor["head"], "next")


# ---- Registration --------------------------------------------------------------------------------

class LinePrinter:
    def __init__(self, record: gdb.Value, describe: Callable[[gdb.Value], str]) -> None:
        self.record = record
        self.describe = describe

    def to_string(self) -> str:
        return self.describe(self.record)


class ListPrinter(LinePrinter):
    def __init__(self, record: gdb.Value, describe: Callable[[gdb.Value], str],
                 list_children: Callable[[gdb.Value], Iterator[Child]]) -> None:
        super().__init__(record, describe)
        self.list_children = list_children

    def children(self) -> Iterator[Child]:
        return self.list_children(self.record)


# By the name of the type: a member that tells it from another type of the name, and the functions.
RECORDS = {
    "BlockHeader": ("eyeCatcher", lines.header),
    "FieldDefI": ("fldValue1", lines.field),
    "FieldDefX": ("fldValue1", lines.field),
    "OprDef": ("oprCode", lines.operand),
    "TokenSlot": ("tokenId", lines.slot),
    "ValueRecord": ("processingClass", lines.value),
    "OdbcDate": ("day", lines.date),
    "OdbcTimestamp": ("fraction", lines.timestamp),
    "CtrlBlkI": ("fieldRefs", lines.block, block_children),
    "CtrlBlkX": ("fieldRefs", lines.block, block_children),
    "SvcDefI": ("oprDefs", lines.service, service_children),
    "SvcDefX": ("oprDefs", lines.service, service_children),
    "ErrorRecord": ("tokenSlots", lines.error, error_children),
    "ErrorAnchor": ("recordCount", lines.anchor, anchor_children),
}


class Printers(gdb.printing.PrettyPrinter):
    def __init__(self) -> None:
        super().__init__("korv", [gdb.printing.SubPrettyPrinter(name) for name in RECORDS])

    def __call__(self, value: gdb.Value) -> Optional[LinePrinter]:
        record_type = gdb.types.get_basic_type(value.type)
        for known in self.subprinters:
            if known.name == record_type.name and known.enabled:
                member, *functions = RECORDS[known.name]
                if member in members(record_type):
                    return (ListPrinter if functions[1:] else LinePrinter)(value, *functions)
        return None


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
