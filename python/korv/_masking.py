"""Masking of rows: the columns of a batch through a handle, and what came of them."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass, field

import pyarrow as pa

from . import _arrow
from ._engine import STATE_DROP_ROW, STATE_FAILED, ColumnPlan, Handle
from ._records import CODE_DOES_NOT_FIT, MaskRecord, Status, error_of

#: More rows than this are masked in several calls.
_MOST_ROWS = 1 << 20


@dataclass
class Counts:
    """Counts of a column's values, as KorvMaskStatistics has them."""

    values: int = 0
    nulls: int = 0
    masked: int = 0
    unchanged: int = 0
    formulas: int = 0
    failed: dict[int, int] = field(default_factory=dict)

    def add(self, other: Counts) -> None:
        for name in ("values", "nulls", "masked", "unchanged", "formulas"):
            setattr(self, name, getattr(self, name) + getattr(other, name))
        for code, count in other.failed.items():
            self.failed[code] = self.failed.get(code, 0) + count


@dataclass
class Outcome:
    """Masked rows: for each part of them the columns that are not dropped, and for each column its counts."""

    parts: list[list[pa.Array]]
    records: list[MaskRecord]
    counts: list[Counts]
    dropped: list[int]  #: numbers of the rows that on-error=drop-row leaves out


class _TooLarge(Exception):
    def __init__(self, records: list[MaskRecord]) -> None:
        super().__init__()
        self.records = records


def check_type(plan: ColumnPlan, type: pa.DataType) -> None:
    """Raises TypeError if the rule cannot be applied to values of this type."""
    if plan.is_kept or plan.is_dropped or _arrow.is_maskable(type):
        return
    if plan.action == "NULL" and not pa.types.is_nested(type):
        return
    raise TypeError(
        f"column {plan.name}: values of type {type} cannot be masked by {plan.action}; "
        "text, integers, decimals, dates and time stamps can"
    )


def output_type(plan: ColumnPlan, type: pa.DataType) -> pa.DataType:
    return type if plan.is_kept or not _arrow.is_maskable(type) else _arrow.masked_type(type)


def mask_rows(
    handle: Handle,
    columns: Sequence[pa.Array],
    related: dict[int, pa.Array],
    first_row: int,
    drop_rows: bool,
    numbers: dict[int, pa.BooleanArray] | None = None,
) -> Outcome:
    """Masks the columns that the handle was opened for. `related` has, by the index of a column, the
    values that its rule also reads. With `drop_rows` the rows that on-error=drop-row names are left out.
    `numbers` says, by the index of a column of texts, which of them must be JSON's numbers when masked."""
    count = len(columns[0]) if columns else 0
    most = min(count, _MOST_ROWS)
    begin = 0
    outcome = Outcome([], [], [Counts() for _ in columns], [])
    while begin < count or not outcome.parts:
        part = [column.slice(begin, most) for column in columns]
        others = {i: column.slice(begin, most) for i, column in related.items()}
        marks = {i: marks.slice(begin, most) for i, marks in (numbers or {}).items()}
        try:
            kept, records, counts, dropped = _mask_part(handle, part, others, first_row + begin, marks)
        except _TooLarge as fault:
            if most <= 1:
                raise error_of(Status.TOO_LARGE, fault.records) from None
            most //= 2
            continue
        outcome.dropped += [first_row + begin + i for i in sorted(dropped)]
        if dropped and drop_rows:
            kept = [_without(column, sorted(dropped)) for column in kept]
        outcome.parts.append(kept)
        outcome.records += records
        for total, more in zip(outcome.counts, counts):
            total.add(more)
        begin += most
    return outcome


def _without(array: pa.Array, rows: list[int]) -> pa.Array:
    # Arrow cannot filter every type.
    ends = [*rows, len(array)]
    begins = [0, *(row + 1 for row in rows)]
    return pa.concat_arrays([array.slice(begin, end - begin) for begin, end in zip(begins, ends)])


def _mask_part(
    handle: Handle,
    columns: Sequence[pa.Array],
    related: dict[int, pa.Array],
    first_row: int,
    numbers: dict[int, pa.BooleanArray],
) -> tuple[list[pa.Array], list[MaskRecord], list[Counts], set[int]]:
    kept = []
    records: list[MaskRecord] = []
    counts = [Counts() for _ in columns]
    dropped: set[int] = set()
    for i, column in enumerate(columns):
        if handle.plan[i].is_dropped:
            continue
        other = _arrow.to_text(related[i]) if i in related else None
        kept.append(
            _mask_column(handle, i, column, other, first_row, records, counts[i], dropped, numbers.get(i))
        )
    if records:
        order = {plan.name: i for i, plan in reversed(list(enumerate(handle.plan)))}
        records.sort(key=lambda record: (record.row or 0, order.get(record.column or "", 0)))
    return kept, records, counts, dropped


def _mask_column(
    handle: Handle,
    index: int,
    array: pa.Array,
    related: pa.Array | None,
    first_row: int,
    records: list[MaskRecord],
    counts: Counts,
    dropped: set[int],
    numbers: pa.BooleanArray | None,
) -> pa.Array:
    plan = handle.plan[index]
    if plan.is_kept:
        return array
    if plan.action == "NULL" and not _arrow.is_maskable(array.type):
        counts.nulls = array.null_count
        counts.values = counts.masked = len(array) - array.null_count
        return pa.nulls(len(array), array.type)
    type = _arrow.masked_type(array.type)
    if len(array) == 0:
        return _arrow.from_text(pa.array([], pa.string()), type)[0]
    if pa.types.is_null(type):
        counts.nulls = len(array)
        return array
    status, batch, found = handle.mask(index, first_row, _arrow.to_text(array), related)
    if status == Status.TOO_LARGE:
        raise _TooLarge(found)
    if batch is None:
        raise error_of(status, records + found)
    counts.add(Counts(batch.values, batch.nulls, batch.masked, batch.unchanged, batch.formulas, batch.failed))
    texts = batch.texts
    is_text = _arrow.is_text(type.value_type if pa.types.is_dictionary(type) else type)
    if batch.states is not None:
        dropped.update(i for i, state in enumerate(batch.states) if state == STATE_DROP_ROW)
        if not is_text:
            texts = _arrow.without_failed(texts, batch.states, bytes([STATE_FAILED, STATE_DROP_ROW]))
    values, misfits = (
        _arrow.from_text(texts, type) if numbers is None else _arrow.json_numbers(texts, numbers)
    )
    if not is_text:
        counts.formulas = 0
    for i in misfits:
        if batch.states is not None and batch.states[i] in (STATE_FAILED, STATE_DROP_ROW):
            continue  # what replaces a failed value, which has its record
        found.append(
            _misfit(plan, "number of JSON" if numbers is not None else f"type {type}", first_row + i)
        )
        counts.masked -= 1
        counts.failed[CODE_DOES_NOT_FIT] = counts.failed.get(CODE_DOES_NOT_FIT, 0) + 1
        if plan.on_error == "drop-row":
            dropped.add(i)
    records += found
    if misfits and plan.on_error == "abort":
        raise error_of(Status.ABORTED, records)
    return values


def _misfit(plan: ColumnPlan, type: str, row: int) -> MaskRecord:
    return MaskRecord(
        row=row,
        column=plan.name,
        code=CODE_DOES_NOT_FIT,
        message=f"{plan.action} error {CODE_DOES_NOT_FIT}, the masked value does not fit the {type}: "
        f"KORV_TOKID_COLNAME={plan.name}",
        tokens=(("KORV_TOKID_COLNAME", plan.name),),
        provider=plan.action,
        rules_line=plan.rules_line,
    )


def deliver(records: Sequence[MaskRecord], errors: list[MaskRecord] | None) -> None:
    """Hands records to the caller's list; without a list they are raised."""
    if errors is not None:
        errors.extend(records)
    elif records:
        raise error_of(Status.VALUES_FAILED, records)
