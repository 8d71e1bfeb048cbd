"""Masks a file: Parquet to Parquet, JSON Lines to JSON Lines."""

from __future__ import annotations

import json
import sys
from collections import deque
from collections.abc import Callable, Iterable, Iterator
from concurrent.futures import Future, ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path
from typing import Any, TypeVar

import pyarrow as pa

from . import _engine, _jsonl, _parquet
from ._arrow import text_array
from ._engine import ColumnPlan
from ._masker import Masker, TableMasking
from ._masking import Counts, Outcome, mask_rows
from ._output import OutputFile, RunError, check_roles, write_file
from ._records import MaskError, MaskRecord, Status, described

ALL_MASKED, SOME_FAILED, NOT_RUN = 0, 1, 2
_MOST_LINES = 10_000

T = TypeVar("T")
R = TypeVar("R")


@dataclass(frozen=True)
class Options:
    """A run. The paths are as the user gives them."""

    input: str
    output: str
    rules: str
    secrets: str | None = None
    report: str | None = None  #: None for standard error
    summary: str | None = None
    max_errors: int | None = None
    strict: bool = False
    keep_unlisted: bool = False
    unmask: bool = False
    providers: tuple[str, ...] = ()
    jobs: int = 1
    progress: bool = False  #: a bar on standard error


class _Run:
    """What a run counts and reports."""

    def __init__(self, options: Options) -> None:
        self._options = options
        self._lines = 0
        self._report: list[str] = []
        self.plan: list[ColumnPlan] = []
        self.counts: list[Counts] = []
        self.rows_in = self.rows_out = self.failed = 0
        self.bar: Any = None
        self.files_differ = False  # whether the report and the summary may be written

    def set_plan(self, plan: list[ColumnPlan]) -> None:
        self.plan = plan
        self.files_differ = False
        _check_files(self._options, plan)
        self.files_differ = True

    def take(self, outcome: Outcome, rows: int) -> None:
        self.counts += [Counts() for _ in outcome.counts[len(self.counts) :]]
        for total, more in zip(self.counts, outcome.counts):
            total.add(more)
        self.rows_in += rows
        self.rows_out += rows - len(outcome.dropped)
        self.add(outcome.records)
        if self.bar is not None:
            self.bar.update(rows)

    def add(self, records: Iterable[MaskRecord]) -> None:
        for record in records:
            if record.is_first and record.row is not None:
                if self.failed == self._options.max_errors:
                    raise RunError(
                        f"{self._options.input}: more than {self.failed} values failed, which is the limit "
                        "of --max-errors"
                    )
                self.failed += 1
            self._lines += 1
            if self._lines <= _MOST_LINES:
                self.print(f"{self._options.input}: {described(record)}")

    def print(self, line: str) -> None:
        text = "".join(c if c.isprintable() else "?" for c in line)
        if self._options.report is not None:
            self._report.append(text + "\n")
        elif self.bar is not None:
            self.bar.write(text, file=sys.stderr)
        else:
            print(text, file=sys.stderr)

    def finish(self, status: int) -> None:
        """Writes the report and the summary."""
        if self.bar is not None:
            self.bar.close()
            self.bar = None
        if self._lines > _MOST_LINES:
            self.print(f"{self._lines - _MOST_LINES} more errors are left out")
        if self.failed > 0:
            values = sum(counts.values for counts in self.counts)
            self.print(
                f"{self._options.input}: {self.failed} of {values} values in {self.rows_in} rows failed"
            )
        if self._options.report is not None:
            write_file(self._options.report, "".join(self._report))
        if self._options.summary is not None:
            write_file(self._options.summary, self._summary(status))

    def _summary(self, status: int) -> str:
        columns = []
        for number, (plan, counts) in enumerate(
            zip(self.plan, [*self.counts, *map(_no_counts, self.plan)]), 1
        ):
            column: dict[str, Any] = {
                "number": number,
                "name": plan.name,
                "action": plan.action,
                "values": counts.values,
                "nulls": counts.nulls,
                "masked": counts.masked,
                "unchanged": counts.unchanged,
                "failed": {str(code): counts.failed[code] for code in sorted(counts.failed)},
            }
            if plan.method is not None:
                column["method"] = plan.method
            if plan.disguise:
                column["disguise"] = True
            if plan.secret is not None:
                column |= {"secret": plan.secret, "fingerprint": plan.fingerprint}
            if counts.formulas > 0:
                column["formulas"] = counts.formulas
            columns.append(column)
        run = {
            "format": 1,
            "status": status,
            "rows_in": self.rows_in,
            "rows_out": self.rows_out,
            "columns": columns,
        }
        return json.dumps(run, ensure_ascii=False, separators=(",", ":")) + "\n"


def _no_counts(_: ColumnPlan) -> Counts:
    return Counts()


def in_order(items: Iterable[T], function: Callable[[T], R], jobs: int) -> Iterator[R]:
    """Like map, in threads, and never far ahead of what is taken."""
    waiting: deque[Future[R]] = deque()
    with ThreadPoolExecutor(jobs) as pool:
        try:
            for item in items:
                waiting.append(pool.submit(function, item))
                if len(waiting) > jobs:
                    yield waiting.popleft().result()
            while waiting:
                yield waiting.popleft().result()
        finally:
            for future in waiting:
                future.cancel()


def _mask_parquet(options: Options, masker: Masker, run: _Run, path: str) -> None:
    source = _parquet.ParquetSource(options.input, options.jobs)
    masking = TableMasking(masker, source.schema)
    run.set_plan(masking.plan)
    run.bar = _bar(options, source.rows)

    def numbered() -> Iterator[tuple[int, pa.RecordBatch]]:
        row = 1
        for batch in source:
            yield row, batch
            row += len(batch)

    def masked() -> Iterator[pa.RecordBatch]:
        work = in_order(numbered(), lambda item: (masking.mask(item[1], item[0]), len(item[1])), options.jobs)
        for outcome, rows in work:
            run.take(outcome, rows)
            yield from masking.batches(outcome)

    _parquet.write_parquet(path, masking.schema, masked(), options.jobs)
    source.close()


class _LinesMasking:
    """The masking of JSON Lines. Its columns are the keys that have come up so far."""

    def __init__(self, options: Options, masker: Masker, run: _Run) -> None:
        self._path = options.input
        self._masker = masker
        self._run = run
        self._names: tuple[str, ...] = ()

    def numbered(self) -> Iterator[tuple[int, tuple[str, ...], list[_jsonl.Line]]]:
        row = 1
        for lines in _jsonl.read_lines(self._path):
            keys = dict.fromkeys(self._names)
            for _, members in lines:
                keys.update(dict.fromkeys(members))
            if len(keys) > len(self._names):
                self._names = tuple(keys)
                with self._masker._handle(self._names, _engine.SOME_COLUMNS) as handle:
                    self._run.set_plan(handle.plan)
            yield row, self._names, lines
            row += len(lines)
        if self._names:
            self._masker.columns(self._names)  # a rule for a key that never came up is an error

    def mask(self, item: tuple[int, tuple[str, ...], list[_jsonl.Line]]) -> tuple[Outcome, int, bytes]:
        first_row, names, lines = item
        with self._masker._handle(names, _engine.SOME_COLUMNS) as handle:
            columns, related, numbers = [], {}, {}
            for i, plan in enumerate(handle.plan):
                if plan.is_kept or plan.is_dropped:
                    columns.append(pa.nulls(len(lines)))
                    continue
                texts, numbers[i] = self._texts(plan.name, lines)
                columns.append(texts)
                if plan.related is not None:
                    name = plan.related if plan.related_index is None else names[plan.related_index]
                    related[i], _ = self._texts(name, lines, texts)
            outcome = mask_rows(handle, columns, related, first_row, drop_rows=False, numbers=numbers)
            return outcome, len(lines), _written(handle.plan, lines, outcome, first_row)

    def _texts(
        self, name: str, lines: list[_jsonl.Line], wanted: pa.Array | None = None
    ) -> tuple[pa.Array, pa.BooleanArray]:
        texts, numbers = [], []
        is_wanted = [True] * len(lines) if wanted is None else wanted.is_valid().to_pylist()
        for (number, members), is_read in zip(lines, is_wanted):
            _, value, _ = members.get(name, ("", None, "")) if is_read else ("", None, "")
            if value is not None and not isinstance(value, str):
                kind = "a boolean" if isinstance(value, bool) else "a nested value"
                raise RunError(f"{self._path}:{number}: key {name}: {kind} cannot be masked")
            texts.append(value)
            numbers.append(isinstance(value, _jsonl.Number))
        return text_array(texts, name), pa.array(numbers, pa.bool_())


def _written(plans: list[ColumnPlan], lines: list[_jsonl.Line], outcome: Outcome, first_row: int) -> bytes:
    kept = [plan for plan in plans if not plan.is_dropped]
    masked: dict[str, list[str | None] | None] = {plan.name: None for plan in kept}
    for at, plan in enumerate(kept):
        if not plan.is_kept:
            masked[plan.name] = [text for part in outcome.parts for text in part[at].to_pylist()]
    dropped = {row - first_row for row in outcome.dropped}
    rows = []
    for i, (_, members) in enumerate(lines):
        if i in dropped:
            continue
        texts = []
        for key, (prefix, value, text) in members.items():
            if key not in masked:
                continue
            column = masked[key]
            texts.append(prefix + (text if column is None else _jsonl.written(column[i], value)))
        rows.append("{" + ",".join(texts) + "}\n")
    return "".join(rows).encode("utf-8")


def _mask_lines(options: Options, masker: Masker, run: _Run, path: str) -> None:
    masking = _LinesMasking(options, masker, run)
    run.bar = _bar(options, None)
    with _jsonl.open_writer(path, options.output) as stream:
        for outcome, rows, data in map(masking.mask, masking.numbered()):
            run.take(outcome, rows)
            stream.write(data)


def _bar(options: Options, rows: int | None) -> Any:
    if not options.progress:
        return None
    try:
        from tqdm import tqdm
    except ImportError:
        return None
    return tqdm(total=rows, unit=" rows", unit_scale=True, leave=False, file=sys.stderr)


def _check_files(options: Options, plan: list[ColumnPlan]) -> None:
    """Refuses a run that would overwrite a file that is read, or write a file twice."""
    read = [options.rules, *([options.secrets] if options.secrets else ())]
    read += [file for column in plan for file in column.files]
    check_roles(
        options.input, options.output, read, [path for path in (options.report, options.summary) if path]
    )


def convert(options: Options) -> int:
    """Masks the file. Returns 0 if every value is masked and 1 if some failed; raises what ends a run
    without output: RunError, MaskError, OSError, or the error of a library."""
    is_lines = _jsonl.is_jsonl(options.input)
    if is_lines != _jsonl.is_jsonl(options.output) or not (is_lines or options.input.endswith(".parquet")):
        raise RunError(
            "a file that ends in .parquet becomes one that ends in .parquet, and one that ends in .jsonl or "
            ".ndjson, also with .gz or .zst, becomes such a file"
        )
    if not is_lines and not options.output.endswith(".parquet"):
        raise RunError(f"{options.output}: the name of the output must end in .parquet")
    _check_files(options, [])
    masker = Masker(
        Path(options.rules),
        options.secrets,
        providers=options.providers,
        strict=options.strict,
        unmask=options.unmask,
        keep_unlisted=options.keep_unlisted,
    )
    run = _Run(options)
    with masker, OutputFile(options.output) as output:
        try:
            (_mask_lines if is_lines else _mask_parquet)(options, masker, run, output.temporary)
            status = SOME_FAILED if run.failed > 0 else ALL_MASKED
            run.finish(status)
            # The output comes last: when it is there, nothing can fail any more.
            output.commit()
            return status
        except Exception as error:
            if isinstance(error, MaskError) and error.status == Status.ABORTED:
                run.add(error.records)
            if run.files_differ:
                run.finish(NOT_RUN)
            raise
