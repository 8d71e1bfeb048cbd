"""The SQL function korv_mask for DuckDB."""

from __future__ import annotations

import functools
from collections.abc import Callable, Mapping, Sequence
from pathlib import Path
from typing import TYPE_CHECKING, Any, Literal

import pyarrow as pa
import pyarrow.compute as pc

from ._arrow import is_maskable, to_text
from ._masker import VALUE_COLUMN, Masker
from ._records import MaskError, MaskRecord

if TYPE_CHECKING:
    import duckdb

#: Rules that the function keeps open.
_MOST_RULES = 64


def register(
    connection: duckdb.DuckDBPyConnection,
    secrets: str | Path | Mapping[str, bytes] | None = None,
    *,
    name: str = "korv_mask",
    errors: Literal["raise", "null"] = "raise",
    providers: Sequence[str | Path] = (),
    files: Sequence[str | Path] = (),
    strict: bool = False,
) -> None:
    """Makes `korv_mask(value, 'CCN, secret=crm')` a function of the connection; the result is text.

    A third argument has the value of the column that the rule also reads (`per=ID`). NULL stays NULL. If a
    value fails, the query ends, or, with errors="null", the result is NULL. The other parameters are
    those of Masker."""
    if errors not in ("raise", "null"):
        raise ValueError("errors must be 'raise' or 'null'")

    @functools.lru_cache(_MOST_RULES)
    def masker_of(rule: str) -> Masker:
        return Masker._of_rule(rule, secrets, providers, files, strict, unmask=False)

    function = functools.partial(_mask, name, masker_of, errors == "null")

    def korv_mask(*arguments: pa.ChunkedArray) -> pa.ChunkedArray:
        return function(*arguments)

    # Without parameters it takes any number of arguments of any types, which its annotations do not say.
    create: Any = connection.create_function
    create(name, korv_mask, None, "VARCHAR", type="arrow", null_handling="special")


def _mask(
    name: str, masker_of: Callable[[str], Masker], failed_is_null: bool, *arguments: pa.ChunkedArray
) -> pa.ChunkedArray:
    if len(arguments) not in (2, 3):
        raise TypeError(f"{name} has two or three arguments: the value, the rule and a related value")
    values, rules, related = (*arguments, None)[:3]
    if len(values) == 0:
        return pa.chunked_array([], pa.string())
    distinct = pc.unique(rules).to_pylist()
    if len(distinct) != 1 or not isinstance(distinct[0], str):
        raise ValueError(f"{name}: the rule must be one text for all rows, such as 'CCN, secret=crm'")
    texts = _texts(name, values)
    records: list[MaskRecord] = []
    masked = masker_of(distinct[0]).mask_column(VALUE_COLUMN, texts, related, errors=records)
    if records and not failed_is_null:
        # DuckDB calls for some rows at a time, so their numbers say nothing.
        raise MaskError(f"{name}: a value failed: {records[0].message}", records[0].status, records)
    if records:
        failed = pa.array([record.row for record in records])
        is_failed = pc.is_in(pa.array(range(len(masked))), failed)
        masked = pc.if_else(is_failed, pa.scalar(None, masked.type), masked)
    return masked.cast(pa.string())


def _texts(name: str, values: pa.ChunkedArray) -> pa.ChunkedArray:
    if not is_maskable(values.type):
        raise TypeError(f"{name}: values of type {values.type} cannot be masked; cast them to VARCHAR")
    return pa.chunked_array([to_text(chunk) for chunk in values.chunks], pa.string())
