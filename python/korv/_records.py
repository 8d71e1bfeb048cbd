"""What a masking call reports: records of failed values, and the exception that carries them."""

from __future__ import annotations

import enum
from collections.abc import Sequence
from dataclasses import dataclass

#: Code of a masked value that does not fit the type of its column, such as `0123` in a column of
#: integers. Codes below 9000 are the provider's; those from 9000 on are the engine's.
CODE_DOES_NOT_FIT = 9100


class Status(enum.IntEnum):
    """What a record, or an exception, is about."""

    SUCCESS = 0
    VALUES_FAILED = 1  #: a value failed
    ABORTED = 2  #: a value failed whose rule says on-error=abort
    BAD_ARGUMENT = 3
    BAD_RULES = 4  #: rules that are malformed or do not fit the columns, or a bad secrets file
    BAD_PROVIDER = 5
    NO_MEMORY = 6
    TOO_LARGE = 7  #: a value above 1 GiB
    OVERRUN = 8  #: a provider has damaged the memory of the process, which should end


@dataclass(frozen=True)
class MaskRecord:
    """Something that went wrong. It never holds a clear value."""

    row: int | None  #: number of the row, from `first_row` on; None when it is about no value
    column: str | None
    code: int  #: the provider's error code, or one of the engine's; 0 when it is about no value
    message: str  #: one line for people, with the place in the rules if there is one
    tokens: tuple[tuple[str, str], ...] = ()  #: names and texts, such as ("KORV_TOKID_SRCLEN", "8")
    status: Status = Status.VALUES_FAILED
    is_first: bool = True  #: False for the further records of a value that has several
    provider: str | None = None
    rules_line: int = 0  #: line of the rules, from 1, or 0
    rules_position: int = 0  #: character in that line, from 1


class MaskError(Exception):
    """A call that ended early: rules that cannot be used, or a value that failed."""

    def __init__(self, message: str, status: Status, records: Sequence[MaskRecord] = ()) -> None:
        super().__init__(message, status, tuple(records))
        self.status = status
        self.records: tuple[MaskRecord, ...] = tuple(records)

    def __str__(self) -> str:
        return str(self.args[0])


def described(record: MaskRecord) -> str:
    """The record's message with its place in the data."""
    if record.row is None or record.column is None:
        return record.message
    return f"row {record.row}, column {record.column}: {record.message}"


def error_of(status: Status, records: Sequence[MaskRecord]) -> MaskError:
    """The exception for a call that has left `records`."""
    values = sum(record.is_first for record in records if record.row is not None)
    if values == 0:
        text = "\n".join(record.message for record in records)
        return MaskError(text or f"the engine ended with status {status.name}", status, records)
    counted = "1 value failed" if values == 1 else f"{values} values failed"
    if status == Status.ABORTED:
        counted += ", and its rule says on-error=abort"
    first = next(record for record in records if record.row is not None)
    return MaskError(f"{counted}: {described(first)}", status, records)
