"""Kinds of columns and tables: lists, Arrow, polars, pandas, and back to the kind that came in."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any

import pyarrow as pa

from ._arrow import text_array


def _is_of(value: object, library: str, name: str) -> bool:
    # Without an import: the library may not be installed.
    return any(
        kind.__name__ == name and kind.__module__.partition(".")[0] == library for kind in type(value).__mro__
    )


def _chunked(array: pa.Array | pa.ChunkedArray) -> pa.ChunkedArray:
    return array if isinstance(array, pa.ChunkedArray) else pa.chunked_array([array])


def _one(column: pa.ChunkedArray) -> pa.Array | pa.ChunkedArray:
    if column.num_chunks == 1:
        return column.chunk(0)
    try:
        return column.combine_chunks()
    except pa.ArrowInvalid:  # above 2 GiB
        return column


def _from_pandas(values: Any, name: str) -> pa.ChunkedArray:
    try:
        return _chunked(pa.Array.from_pandas(values))
    except (pa.ArrowException, UnicodeEncodeError, TypeError, ValueError):  # its message may hold a value
        raise TypeError(f"column {name}: the values are not of one type that Arrow has") from None


def _to_pandas(column: pa.ChunkedArray, like: Any) -> Any:
    import pandas

    if hasattr(like.dtype, "__from_arrow__"):
        return pandas.Series(like.dtype.__from_arrow__(column))
    if like.dtype == object:
        return pandas.Series(column.to_pylist(), dtype=object)
    if pa.types.is_integer(column.type) and column.null_count > 0:
        # Without this the integers would become floating-point numbers.
        nullable = pandas.api.types.pandas_dtype(like.dtype.name.replace("i", "I").replace("u", "U"))
        return pandas.Series(nullable.__from_arrow__(column))
    return column.to_pandas()


def column_of(values: Any, name: str) -> tuple[pa.ChunkedArray, Callable[[pa.ChunkedArray], Any]]:
    """The values as Arrow, and what makes a masked column the kind that came in."""
    if isinstance(values, (list, tuple)):
        return _chunked(text_array(values, name)), lambda column: column.to_pylist()
    if isinstance(values, pa.ChunkedArray):
        return values, lambda column: column
    if isinstance(values, pa.Array):
        return _chunked(values), _one
    if _is_of(values, "polars", "Series"):
        import polars

        return pa.chunked_array(values), lambda column: polars.Series(values.name, column)
    if _is_of(values, "pandas", "Series"):

        def back(column: pa.ChunkedArray) -> Any:
            series = _to_pandas(column, values)
            series.index, series.name = values.index, values.name
            return series

        return _from_pandas(values, name), back
    if hasattr(values, "__arrow_c_array__"):
        return _chunked(pa.array(values)), _one
    if hasattr(values, "__arrow_c_stream__"):
        return pa.chunked_array(values), lambda column: column
    raise TypeError(
        f"column {name}: {type(values).__name__} is neither a list, a series nor an array "
        "with Arrow's PyCapsule interface"
    )


def pandas_columns(frame: Any, is_masked: list[bool]) -> pa.Table:
    """A DataFrame as a table, with NULL in the columns that are not masked: they need no Arrow type."""
    names = list(frame.columns)
    arrays = [
        _from_pandas(frame.iloc[:, i], name) if is_masked[i] else pa.chunked_array([pa.nulls(len(frame))])
        for i, name in enumerate(names)
    ]
    return pa.table(arrays, names=names)


def pandas_names(frame: Any) -> list[str]:
    """The names of the columns. Raises TypeError for a frame whose labels could hold clear values."""
    import pandas

    names = list(frame.columns)
    if frame.columns.nlevels != 1 or not all(isinstance(name, str) for name in names):
        raise TypeError("the columns of the DataFrame must have names of type str")
    index = frame.index
    is_count = index.nlevels == 1 and index.name is None and pandas.api.types.is_integer_dtype(index.dtype)
    if not is_count:
        raise TypeError(
            "the DataFrame has an index that no rule covers; call reset_index(), so that it becomes columns, "
            "or reset_index(drop=True)"
        )
    return names


def pandas_frame(frame: Any, columns: dict[int, pa.ChunkedArray | None], remaining: list[int] | None) -> Any:
    """A DataFrame of masked columns by their index, and of the frame's own where there is None."""
    import pandas

    rows = frame if remaining is None else frame.iloc[remaining]
    parts = []
    for i, column in columns.items():
        part = rows.iloc[:, i]
        if column is not None:
            name, part = part.name, _to_pandas(column, part)
            part.index, part.name = rows.index, name
        parts.append(part)
    return pandas.concat(parts, axis=1) if parts else rows.iloc[:, :0]


def stream_of(table: Any) -> tuple[pa.RecordBatchReader, Callable[[pa.RecordBatchReader], Any]]:
    """A table as a stream of batches, and what makes the masked stream the kind that came in."""
    if isinstance(table, pa.RecordBatchReader):
        return table, lambda reader: reader
    if isinstance(table, pa.RecordBatch):
        reader = pa.RecordBatchReader.from_batches(table.schema, [table])
        return reader, lambda masked: _one_batch(masked.read_all())
    if _is_of(table, "polars", "DataFrame"):
        import polars

        return pa.RecordBatchReader.from_stream(table), lambda reader: polars.DataFrame(reader.read_all())
    if hasattr(table, "__arrow_c_stream__"):
        return pa.RecordBatchReader.from_stream(table), lambda reader: reader.read_all()
    if hasattr(table, "__arrow_c_array__"):
        return stream_of(pa.record_batch(table))
    raise TypeError(
        f"{type(table).__name__} is neither a DataFrame nor a table with Arrow's PyCapsule interface"
    )


def is_pandas_frame(table: object) -> bool:
    return _is_of(table, "pandas", "DataFrame")


def _one_batch(table: pa.Table) -> pa.RecordBatch:
    arrays = [_one(column) for column in table.columns]
    return pa.RecordBatch.from_arrays(arrays, schema=table.schema)
