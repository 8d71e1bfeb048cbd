"""Masking of Spark DataFrames. Each Python worker masks the rows of its tasks, with the secrets file of its machine."""

from __future__ import annotations

import hashlib
import pickle
from collections.abc import Iterator, Sequence
from functools import lru_cache
from pathlib import Path
from typing import Any, Literal

import pyarrow as pa
from pyspark.sql import DataFrame
from pyspark.sql.types import ArrayType, BooleanType, IntegerType, StringType, StructField, StructType

from ._masker import Masker, TableMasking
from ._records import MaskError, Status

_TOKENS = pa.list_(pa.struct([("name", pa.string()), ("text", pa.string())]))
_RECORD = {"column": pa.string(), "code": pa.int32(), "message": pa.string(), "tokens": _TOKENS, "is_first": pa.bool_()}
_SPARK_TOKEN = StructType([StructField("name", StringType()), StructField("text", StringType())])
_SPARK_RECORD = [
    StructField("column", StringType()),
    StructField("code", IntegerType()),
    StructField("message", StringType()),
    StructField("tokens", ArrayType(_SPARK_TOKEN)),
    StructField("is_first", BooleanType()),
]


class _Job:
    """What the workers get: the rules and paths, and what tells whether their files are the driver's."""

    def __init__(self, dataframe: DataFrame, masker: Masker) -> None:
        self.plan = masker.columns(dataframe.columns)
        files = sorted({file for plan in self.plan for file in plan.files})
        # The pickled masker has the path of the secrets file and the fingerprints of the secrets.
        self._content = pickle.dumps(masker), tuple((file, _digest(file)) for file in files)

    def masking(self, batch: pa.RecordBatch) -> TableMasking:
        return _masking(*self._content, batch.schema)


def _digest(file: str) -> str:
    return hashlib.sha256(Path(file).read_bytes()).hexdigest()[:16]


@lru_cache(maxsize=4)
def _masking(masker: bytes, files: tuple[tuple[str, str], ...], schema: pa.Schema) -> TableMasking:
    # A worker process runs many tasks, each with a copy of the job: what one has opened serves the next.
    masking = TableMasking(pickle.loads(masker), schema)
    for file, digest in files:
        if _digest(file) != digest:
            raise MaskError(f"the file {file} is not the same here as where the job was started", Status.BAD_RULES)
    return masking


def _masked(job: _Job, on_error: str, batches: Iterator[pa.RecordBatch]) -> Iterator[pa.RecordBatch]:
    for batch in batches:
        masking = job.masking(batch)
        outcome = masking.mask(batch, 0)
        if outcome.records and on_error == "raise":
            record = outcome.records[0]
            raise MaskError(
                f"a value of column {record.column} failed: {record.message} (korv.spark.errors lists all that fail)",
                Status.VALUES_FAILED,
            )
        yield from masking.batches(outcome)


def _failed(job: _Job, id_columns: Sequence[str], batches: Iterator[pa.RecordBatch]) -> Iterator[pa.RecordBatch]:
    for batch in batches:
        records = job.masking(batch).mask(batch, 0).records
        rows = pa.array([record.row for record in records], pa.int64())
        columns: dict[str, Any] = {name: batch.column(name).take(rows) for name in id_columns}
        for name, type in _RECORD.items():
            values = [getattr(record, name) for record in records]
            if name == "tokens":
                values = [[{"name": token, "text": text} for token, text in tokens] for tokens in values]
            columns[name] = pa.array(values, type)
        yield pa.RecordBatch.from_pydict(columns)


def mask(
    dataframe: DataFrame,
    rules: str | Path,
    secrets_path: str | Path | None = None,
    *,
    on_error: Literal["raise", "rule"] = "raise",
    files: Sequence[str | Path] = (),
    providers: Sequence[str | Path] = (),
    strict: bool = False,
    keep_unlisted: bool = False,
) -> DataFrame:
    """The rows of a DataFrame, masked. Columns whose rule is DROP are left out.

    The other arguments are those of korv.Masker. The secrets file, and the files and folders that the
    rules and arguments name, must be present under the same paths on every machine. A file with the rules
    is read by this call only. A value that fails ends the job. With on_error="rule" it becomes what the
    rule's on-error says instead, and `errors` lists it."""
    if on_error not in ("raise", "rule"):
        raise ValueError("on_error is 'raise' or 'rule'")
    masker = Masker(rules, secrets_path, files=files, providers=providers, strict=strict, keep_unlisted=keep_unlisted)
    job = _Job(dataframe, masker)
    # A masked value may be NULL, and the metadata of a masked column may hold clear values.
    fields = [
        field if plan.is_kept else StructField(field.name, field.dataType)
        for plan, field in zip(job.plan, dataframe.schema)
        if not plan.is_dropped
    ]
    return dataframe.mapInArrow(lambda batches: _masked(job, on_error, batches), StructType(fields))


def errors(
    dataframe: DataFrame,
    rules: str | Path,
    secrets_path: str | Path | None = None,
    *,
    id_columns: Sequence[str] = (),
    files: Sequence[str | Path] = (),
    providers: Sequence[str | Path] = (),
    strict: bool = False,
    keep_unlisted: bool = False,
) -> DataFrame:
    """A table of the values that fail: column, code, message, tokens and is_first, as in korv.MaskRecord.

    These hold no clear value. Before them stand the columns `id_columns` of the failing row, in clear. The
    rows are masked once more when the table is used, and a rule with on-error=abort ends that job."""
    names = [field.name for field in dataframe.schema if field.name in id_columns]
    if len(names) != len(id_columns) or {name.lower() for name in names} & set(_RECORD):
        raise ValueError(f"id_columns must be columns of the DataFrame, other than {', '.join(_RECORD)}")
    masker = Masker(rules, secrets_path, files=files, providers=providers, strict=strict, keep_unlisted=keep_unlisted)
    job = _Job(dataframe, masker)
    fields = [dataframe.schema[name] for name in names]
    return dataframe.mapInArrow(lambda batches: _failed(job, names, batches), StructType([*fields, *_SPARK_RECORD]))
