"""Reading and writing of Parquet files by DuckDB."""

from __future__ import annotations

import glob
import os
from collections.abc import Iterator

import pyarrow as pa

from ._output import RunError

_ROWS = 1 << 16


def _connect(threads: int):  # type: ignore[no-untyped-def]
    try:
        import duckdb
    except ImportError:
        raise RunError("Parquet needs the package duckdb: pip install 'korv[files]'") from None
    connection = duckdb.connect(
        config={
            "threads": threads,
            "autoinstall_known_extensions": False,
            "autoload_known_extensions": False,
        }
    )
    connection.execute("SET TimeZone = 'UTC'")
    # UUIDs and the like stay what they are.
    connection.execute("SET arrow_lossless_conversion = true")
    return connection


class ParquetSource:
    """The rows of a file as batches, in their order."""

    def __init__(self, path: str, threads: int) -> None:
        self._connection = _connect(threads)
        # A name with an asterisk is the name of one file.
        name = glob.escape(os.path.abspath(path))
        source = "read_parquet(?, hive_partitioning = false)"
        count = self._connection.execute(f"SELECT count(*) FROM {source}", [name]).fetchall()
        self.rows: int = count[0][0]
        # In DuckDB 1 the reader's memory is the relation's.
        self._relation = relation = self._connection.sql(f"SELECT * FROM {source}", params=[name])
        # DuckDB 2 has another name for it.
        read = (
            relation.to_arrow_reader if hasattr(relation, "to_arrow_reader") else relation.fetch_arrow_reader
        )
        self._reader = read(_ROWS)
        self.schema: pa.Schema = self._reader.schema

    def __iter__(self) -> Iterator[pa.RecordBatch]:
        return iter(self._reader)

    def close(self) -> None:
        self._connection.close()


def write_parquet(path: str, schema: pa.Schema, batches: Iterator[pa.RecordBatch], threads: int) -> None:
    """Writes the batches. What they raise is raised."""
    fault: list[BaseException] = []

    def watched() -> Iterator[pa.RecordBatch]:
        try:
            yield from batches
        except BaseException as error:  # DuckDB would make a message of it
            fault.append(error)
            raise

    connection = _connect(threads)
    try:
        connection.register("masked", pa.RecordBatchReader.from_batches(schema, watched()))
        target = path.replace("'", "''")
        connection.execute(
            f"COPY masked TO '{target}' (FORMAT parquet, USE_TMP_FILE false, DICTIONARY_SIZE_LIMIT 10000)"
        )
    except BaseException:
        if fault:
            raise fault[0] from None
        raise
    finally:
        connection.close()
