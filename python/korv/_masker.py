"""Rules with their secrets, and the masking of columns and tables by them."""

from __future__ import annotations

import os
import re
from collections.abc import Iterator, Mapping, Sequence
from contextlib import contextmanager
from pathlib import Path
from typing import Any

import pyarrow as pa

from . import _arrow, _engine, _kinds
from ._engine import ColumnPlan, Handle
from ._masking import Outcome, check_type, deliver, mask_rows, output_type
from ._records import MaskError, MaskRecord, Status

#: The column of a single rule, in messages and tokens.
VALUE_COLUMN = "value"


class Masker:
    """Rules with their secrets. Any number of threads may use it at the same time.

    `rules` is the text of the rules, or the Path of a file with them. `secrets` is the path of a secrets
    file, or a mapping from names to bytes. `providers` are folders of provider modules instead of the
    package's own. With `files`, the rules can name files in these folders only."""

    def __init__(
        self,
        rules: str | Path,
        secrets: str | Path | Mapping[str, bytes] | None = None,
        *,
        providers: Sequence[str | Path] = (),
        files: Sequence[str | Path] = (),
        strict: bool = False,
        unmask: bool = False,
        keep_unlisted: bool = False,
    ) -> None:
        flags = (
            (_engine.STRICT if strict else 0)
            | (_engine.UNMASK if unmask else 0)
            | (_engine.KEEP_UNLISTED if keep_unlisted else 0)
        )
        # All handles get the rules of this moment, even if the file changes.
        text = rules.read_text("utf-8-sig", "surrogateescape") if isinstance(rules, Path) else rules
        rules_file = os.path.abspath(rules) if isinstance(rules, Path) else None
        self._start(flags, text, rules_file, secrets, providers, files)
        # Finds malformed rules and unreadable secrets at once. Rules for column numbers need the columns.
        if not re.search(r"^\s*@", text, re.MULTILINE):
            self._open((), _engine.SOME_COLUMNS).close()

    @classmethod
    def _of_rule(
        cls,
        rule: str,
        secrets: str | Path | Mapping[str, bytes] | None,
        providers: Sequence[str | Path],
        files: Sequence[str | Path],
        strict: bool,
        unmask: bool,
    ) -> Masker:
        masker = cls.__new__(cls)
        flags = _engine.ONE_RULE | (_engine.STRICT if strict else 0) | (_engine.UNMASK if unmask else 0)
        masker._start(flags, rule, None, secrets, providers, files)
        return masker

    def _start(
        self,
        flags: int,
        rules: str,
        rules_file: str | None,
        secrets: str | Path | Mapping[str, bytes] | None,
        providers: Sequence[str | Path],
        files: Sequence[str | Path],
    ) -> None:
        if not isinstance(rules, str):
            raise TypeError("the rules must be a str with their text, or a Path")
        given = _engine.Secrets(dict(secrets)) if isinstance(secrets, Mapping) else None
        path = None if secrets is None or isinstance(secrets, Mapping) else os.path.abspath(secrets)
        self._settings = _engine.Settings(
            flags,
            rules,
            rules_file,
            path,
            given,
            tuple(os.path.abspath(folder) for folder in providers),
            tuple(os.path.abspath(folder) for folder in files),
        )
        self._idle: dict[tuple[tuple[str, ...], int], list[Handle]] = {}
        self._fingerprints: dict[str, str] = {}
        self._is_closed = False

    def __enter__(self) -> Masker:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __repr__(self) -> str:
        return f"<korv.Masker, rules {self._settings.rules_file or 'given as text'}>"

    def __getstate__(self) -> dict[str, Any]:
        if self._settings.secrets is not None:
            raise TypeError(
                "a Masker whose secrets were given as bytes cannot be sent to another process; "
                "put them into a secrets file and give its path"
            )
        return {"settings": self._settings, "fingerprints": self._fingerprints}

    def __setstate__(self, state: dict[str, Any]) -> None:
        self._settings = state["settings"]
        # If the secrets file has other secrets there, that process must not mask with them.
        self._fingerprints = dict(state["fingerprints"])
        self._idle = {}
        self._is_closed = False

    def close(self) -> None:
        """Releases what the engine holds, and wipes the secrets. Calls that run may end."""
        self._is_closed = True
        for handles in list(self._idle.values()):
            while handles:
                handles.pop().close()
        if self._settings.secrets is not None:
            self._settings.secrets.wipe()

    def _open(self, names: tuple[str, ...], flags: int) -> Handle:
        if self._is_closed:
            raise ValueError("the Masker is closed")
        handle = Handle(self._settings, names, flags)
        for plan in handle.plan:
            if plan.secret is None or plan.fingerprint is None:
                continue
            if self._fingerprints.setdefault(plan.secret, plan.fingerprint) != plan.fingerprint:
                raise MaskError(
                    f"the secret {plan.secret} is not the one that this Masker began with: its fingerprint is "
                    f"{plan.fingerprint}, not {self._fingerprints[plan.secret]}",
                    Status.BAD_RULES,
                )
        return handle

    @contextmanager
    def _handle(self, names: tuple[str, ...], flags: int) -> Iterator[Handle]:
        # Appending to a list and taking from it need no lock.
        idle = self._idle.setdefault((names, flags), [])
        try:
            handle = idle.pop()
        except IndexError:
            handle = self._open(names, flags)
        try:
            yield handle
        finally:
            if self._is_closed:
                handle.close()
            else:
                idle.append(handle)

    def columns(self, names: Sequence[str]) -> list[ColumnPlan]:
        """What the rules do to a table with columns of these names. Raises MaskError if they do not fit it."""
        with self._handle(tuple(names), 0) as handle:
            return list(handle.plan)

    def mask_column(
        self,
        name: str,
        values: Any,
        related: Any = None,
        *,
        errors: list[MaskRecord] | None = None,
        first_row: int = 0,
    ) -> Any:
        """Masks values by the rule of the column `name`; the result is of the same kind as `values`.

        `related` has the values of the column that the rule also reads (`per=ID`) in the same rows. If a
        value fails, MaskError is raised, or, if there is a list `errors`, its records go there and the
        result has what the rule's on-error says."""
        column, back = _kinds.column_of(values, name)
        with self._handle((name,), _engine.SOME_COLUMNS) as handle:
            plan = handle.plan[0]
            if plan.is_dropped:
                raise ValueError(f"column {name}: the rule drops the column")
            if plan.is_kept:
                return values
            check_type(plan, column.type)
            other = None if plan.related is None else _related(plan, related, len(column))
            parts, records = [], []
            row = 0
            for chunk in column.chunks:
                others = {} if other is None else {0: _slice(other, row, len(chunk))}
                outcome = mask_rows(handle, [chunk], others, first_row + row, drop_rows=False)
                parts += [part[0] for part in outcome.parts]
                records += outcome.records
                row += len(chunk)
        deliver(records, errors)
        return back(pa.chunked_array(parts, output_type(plan, column.type)))

    def mask_table(self, table: Any, *, errors: list[MaskRecord] | None = None, first_row: int = 0) -> Any:
        """Masks a table by the rules, which must cover all of its columns; the result is of the same kind.

        Columns whose rule is DROP are left out, and so are rows in which a value failed whose rule says
        on-error=drop-row. `errors` is as for mask_column. A RecordBatchReader is masked while it is read."""
        if _kinds.is_pandas_frame(table):
            return self._mask_pandas(table, errors, first_row)
        stream, back = _kinds.stream_of(table)
        masking = TableMasking(self, stream.schema)

        def batches() -> Iterator[pa.RecordBatch]:
            row = first_row
            for batch in stream:
                outcome = masking.mask(batch, row)
                deliver(outcome.records, errors)
                row += len(batch)
                yield from masking.batches(outcome)

        return back(pa.RecordBatchReader.from_batches(masking.schema, batches()))

    def _mask_pandas(self, frame: Any, errors: list[MaskRecord] | None, first_row: int) -> Any:
        names = _kinds.pandas_names(frame)
        plans = self.columns(names)
        is_read = [not plan.is_kept and not plan.is_dropped for plan in plans]
        for plan in plans:
            if plan.related_index is not None:
                is_read[plan.related_index] = True
        table = _kinds.pandas_columns(frame, is_read)
        masking = TableMasking(self, table.schema)
        batches, records, dropped = [], [], set()
        row = 0
        for batch in table.to_batches():
            outcome = masking.mask(batch, row)
            batches += masking.batches(outcome)
            records += outcome.records
            dropped.update(outcome.dropped)
            row += len(batch)
        deliver([_moved(record, first_row) for record in records], errors)
        masked = pa.Table.from_batches(batches, masking.schema)
        remaining = [i for i in range(len(frame)) if i not in dropped] if dropped else None
        kept = [i for i, plan in enumerate(plans) if not plan.is_dropped]
        columns = {i: None if plans[i].is_kept else masked.column(at) for at, i in enumerate(kept)}
        return _kinds.pandas_frame(frame, columns, remaining)


def _moved(record: MaskRecord, rows: int) -> MaskRecord:
    from dataclasses import replace

    return record if rows == 0 or record.row is None else replace(record, row=record.row + rows)


class TableMasking:
    """A masker's rules for the tables of one schema. Any number of threads may use it at the same time."""

    def __init__(self, masker: Masker, schema: pa.Schema) -> None:
        self._masker = masker
        self._names = tuple(schema.names)
        self.plan = masker.columns(self._names)
        fields = []
        for plan, field in zip(self.plan, schema):
            check_type(plan, field.type)
            if plan.related_index is not None:
                _check_related(plan, schema.field(plan.related_index).type)
            if plan.is_kept:
                fields.append(field)
            elif not plan.is_dropped:
                fields.append(pa.field(plan.name, output_type(plan, field.type)))
        #: The masked table's. Metadata of the table and of masked columns is left out.
        self.schema = pa.schema(fields)

    def mask(self, batch: pa.RecordBatch, first_row: int) -> Outcome:
        related = {
            i: batch.column(plan.related_index)
            for i, plan in enumerate(self.plan)
            if plan.related_index is not None
        }
        with self._masker._handle(self._names, 0) as handle:
            return mask_rows(handle, batch.columns, related, first_row, drop_rows=True)

    def batches(self, outcome: Outcome) -> list[pa.RecordBatch]:
        return [pa.RecordBatch.from_arrays(part, schema=self.schema) for part in outcome.parts]


def _check_related(plan: ColumnPlan, type: pa.DataType) -> None:
    if not _arrow.is_maskable(type):
        raise TypeError(
            f"column {plan.name}: its rule reads column {plan.related}, whose type {type} is not supported"
        )


def _related(plan: ColumnPlan, values: Any, count: int) -> pa.ChunkedArray:
    if values is None:
        raise ValueError(
            f"column {plan.name}: the rule also reads column {plan.related}; give its values as `related`"
        )
    column, _ = _kinds.column_of(values, plan.related or "")
    if len(column) != count:
        raise ValueError(f"column {plan.name}: there are {count} values, and {len(column)} related ones")
    _check_related(plan, column.type)
    return column


def _slice(column: pa.ChunkedArray, begin: int, count: int) -> pa.Array:
    part = column.slice(begin, count)
    return part.chunk(0) if part.num_chunks == 1 else part.combine_chunks()


def mask(
    values: Any,
    rule: str,
    secrets: str | Path | Mapping[str, bytes] | None = None,
    related: Any = None,
    *,
    errors: list[MaskRecord] | None = None,
    providers: Sequence[str | Path] = (),
    files: Sequence[str | Path] = (),
    strict: bool = False,
    unmask: bool = False,
) -> Any:
    """Masks values by one rule without its column, such as `CCN, secret=crm`. See Masker.mask_column."""
    with Masker._of_rule(rule, secrets, providers, files, strict, unmask) as masker:
        return masker.mask_column(VALUE_COLUMN, values, related, errors=errors)
