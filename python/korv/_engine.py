"""The engine libkorvmask through ctypes: the records of korv/mask.h, and handles."""

from __future__ import annotations

import ctypes
import os
import threading
from collections.abc import Iterator, Sequence
from contextlib import contextmanager
from ctypes import (
    POINTER,
    Structure,
    c_char_p,
    c_int32,
    c_int64,
    c_size_t,
    c_uint8,
    c_uint32,
    c_uint64,
    c_void_p,
)
from dataclasses import dataclass
from pathlib import Path

import pyarrow as pa

from ._records import MaskRecord, Status, error_of

INTERFACE_VERSION = 3
NO_ROW = 2**64 - 1
NO_COLUMN = 2**32 - 1

KEEP_UNLISTED = 1
VERIFY_PROVIDERS = 2
STRICT = 16
UNMASK = 32
ONE_RULE = 64
SOME_COLUMNS = 128

ACTION_KEEP = 0
ACTION_DROP = 1
ACTION_NULL = 2

STATE_NULL = 1
STATE_FAILED = 2
STATE_DROP_ROW = 3

PROMISE_REVERSIBLE = 8


class KorvMaskSecret(Structure):
    _fields_ = [("name", c_char_p), ("bytes", POINTER(c_uint8)), ("length", c_uint32)]


class KorvMaskSettings(Structure):
    _fields_ = [
        ("size", c_size_t),
        ("flags", c_uint32),
        ("columnCount", c_uint32),
        ("columns", POINTER(c_char_p)),
        ("rules", c_char_p),
        ("rulesFile", c_char_p),
        ("folders", POINTER(c_char_p)),
        ("folderCount", c_uint32),
        ("secrets", POINTER(KorvMaskSecret)),
        ("secretCount", c_uint32),
        ("secretsFile", c_char_p),
        ("fileFolders", POINTER(c_char_p)),
        ("fileFolderCount", c_uint32),
    ]


class KorvMaskColumn(Structure):
    _fields_ = [
        ("name", c_char_p),
        ("actionName", c_char_p),
        ("action", c_int32),
        ("rulesLine", c_uint32),
        ("rulePattern", c_char_p),
        ("related", c_uint32),
        ("promises", c_uint32),
        ("onError", c_char_p),
        ("module", c_char_p),
        ("files", POINTER(c_char_p)),
        ("fileCount", c_uint32),
        ("method", c_char_p),
        ("isDisguise", c_uint32),
        ("secret", c_char_p),
        ("fingerprint", c_char_p),
        ("scope", c_char_p),
        ("mapping", c_char_p),
        ("relatedName", c_char_p),
    ]


class KorvMaskStrings(Structure):
    _fields_ = [
        ("count", c_uint64),
        ("first", c_uint64),
        ("offsetBits", c_uint32),
        ("offsets", c_void_p),
        ("bytes", c_void_p),
        ("validity", c_void_p),
    ]


class KorvMaskFailures(Structure):
    _fields_ = [("code", c_uint32), ("count", c_uint64)]


class KorvMaskStatistics(Structure):
    _fields_ = [
        ("values", c_uint64),
        ("nulls", c_uint64),
        ("masked", c_uint64),
        ("unchanged", c_uint64),
        ("formulas", c_uint64),
        ("failed", c_uint64),
        ("failures", POINTER(KorvMaskFailures)),
        ("failureCount", c_uint32),
    ]


class KorvMaskResult(Structure):
    _fields_ = [("strings", KorvMaskStrings), ("states", c_void_p), ("statistics", KorvMaskStatistics)]


class KorvMaskToken(Structure):
    _fields_ = [("id", c_uint32), ("name", c_char_p), ("text", c_char_p)]


class KorvMaskRecord(Structure):
    _fields_ = [
        ("status", c_int32),
        ("code", c_uint32),
        ("row", c_uint64),
        ("column", c_uint32),
        ("isFirst", c_uint32),
        ("rulesLine", c_uint32),
        ("rulesPosition", c_uint32),
        ("message", c_char_p),
        ("provider", c_char_p),
        ("tokens", POINTER(KorvMaskToken)),
        ("tokenCount", c_uint32),
    ]


#: What tests compare with the header.
STRUCTURES = (
    KorvMaskSecret, KorvMaskSettings, KorvMaskColumn, KorvMaskStrings, KorvMaskFailures,
    KorvMaskStatistics, KorvMaskResult, KorvMaskToken, KorvMaskRecord,
)  # fmt: skip


def _load() -> ctypes.CDLL:
    native = ctypes.CDLL(str(Path(__file__).parent / "_native" / "libkorvmask.so.1"))
    for name, result, arguments in (
        ("KorvMaskVersion", c_uint32, []),
        ("KorvMaskOpen", c_int32, [POINTER(KorvMaskSettings), POINTER(c_void_p)]),
        ("KorvMaskClose", None, [c_void_p]),
        ("KorvMaskGetColumn", POINTER(KorvMaskColumn), [c_void_p, c_uint32]),
        ("KorvMaskBatch", c_int32, [c_void_p, c_uint32, c_uint64, POINTER(KorvMaskStrings),
                                    POINTER(KorvMaskStrings), POINTER(POINTER(KorvMaskResult))]),
        ("KorvMaskRecordCount", c_uint64, [c_void_p]),
        ("KorvMaskGetRecord", POINTER(KorvMaskRecord), [c_void_p, c_uint64]),
        ("KorvMaskClearRecords", None, [c_void_p]),
    ):  # fmt: skip
        function = getattr(native, name)
        function.restype = result
        function.argtypes = arguments
    if native.KorvMaskVersion() < INTERFACE_VERSION:
        raise ImportError(
            "the library libkorvmask of this package is too old for it; install the package again"
        )
    return native


native = _load()


class _CallGate:
    """Lets a fork wait until no call is in the engine, whose locks a child could not release."""

    def __init__(self) -> None:
        self._changed = threading.Condition()
        self._calls = 0
        self._forks = 0
        os.register_at_fork(before=self._close, after_in_parent=self._open, after_in_child=self._open)

    def _close(self) -> None:
        self._changed.acquire()
        self._forks += 1
        while self._calls > 0:
            self._changed.wait()

    def _open(self) -> None:
        self._forks -= 1
        self._changed.notify_all()
        self._changed.release()

    @contextmanager
    def call(self) -> Iterator[None]:
        with self._changed:
            while self._forks > 0:
                self._changed.wait()
            self._calls += 1
        try:
            yield
        finally:
            with self._changed:
                self._calls -= 1
                self._changed.notify_all()


_gate = _CallGate()
_damage: list[MaskRecord] = []


def _text(value: bytes | None) -> str | None:
    return None if value is None else value.decode("utf-8", "replace")


def _texts(values: Sequence[str]) -> ctypes.Array[c_char_p]:
    # Names and folders, which end at a zero byte in C.
    if any("\0" in value for value in values):
        raise ValueError("a name holds a zero character")
    return (c_char_p * len(values))(*(value.encode("utf-8", "surrogateescape") for value in values))


# Without the name: it could be a secret.
_BAD_SECRET = (
    "a secret has 16 to 64 bytes; its name has lower-case letters, digits and underscores, a letter first"
)


class Secrets:
    """Secrets that were given as bytes, in memory that `wipe` clears."""

    def __init__(self, secrets: dict[str, bytes]) -> None:
        if any("\0" in name for name in secrets):
            raise ValueError(_BAD_SECRET)
        self._buffers = [(c_uint8 * len(value)).from_buffer_copy(value) for value in secrets.values()]
        self.array = (KorvMaskSecret * len(secrets))(
            *(
                KorvMaskSecret(name.encode(), ctypes.cast(buffer, POINTER(c_uint8)), len(buffer))
                for name, buffer in zip(secrets, self._buffers)
            )
        )

    def wipe(self) -> None:
        for buffer in self._buffers:
            ctypes.memset(buffer, 0, len(buffer))
        self.array = (KorvMaskSecret * 0)()


@dataclass(frozen=True)
class ColumnPlan:
    """What the rules do to a column."""

    name: str
    action: str  #: KEEP, DROP, NULL, CONST, or the name of the provider
    method: str | None = None  #: method of a provider that has several
    disguise: bool = False  #: True if anyone with this package can undo the method
    secret: str | None = None  #: name of the secret
    fingerprint: str | None = None  #: 8 digits that tell the secret from others
    scope: str = ""
    related: str | None = None  #: name of the column that the rule also reads
    on_error: str = "empty"  #: empty, null, const, drop-row or abort
    reversible: bool = False
    module: str | None = None  #: path of the provider's module
    files: tuple[str, ...] = ()  #: files that the rule names
    rules_line: int = 0
    related_index: int | None = None  #: index of the related column; None if it is not among the columns

    @property
    def is_kept(self) -> bool:
        return self.action == "KEEP"

    @property
    def is_dropped(self) -> bool:
        return self.action == "DROP"


def _plan_of(column: KorvMaskColumn, count: int) -> ColumnPlan:
    return ColumnPlan(
        name=_text(column.name) or "",
        action=_text(column.actionName) or "",
        method=_text(column.method),
        disguise=column.isDisguise == 1,
        secret=_text(column.secret),
        fingerprint=_text(column.fingerprint),
        scope=_text(column.scope) or "",
        related=_text(column.relatedName),
        on_error=_text(column.onError) or "",
        reversible=column.promises & PROMISE_REVERSIBLE != 0,
        module=_text(column.module),
        files=tuple(os.fsdecode(column.files[i]) for i in range(column.fileCount)),
        rules_line=column.rulesLine,
        related_index=column.related if column.related < count else None,
    )


@dataclass
class Batch:
    """A masked batch: its texts, the state of each value when one has failed, and its counts."""

    texts: pa.Array
    states: bytes | None
    values: int
    nulls: int
    masked: int
    unchanged: int
    formulas: int
    failed: dict[int, int]


@dataclass(frozen=True)
class Settings:
    """What a handle is opened with, apart from the columns."""

    flags: int
    rules: str
    rules_file: str | None = None
    secrets_file: str | None = None
    secrets: Secrets | None = None
    folders: tuple[str, ...] = ()
    file_folders: tuple[str, ...] = ()


class Handle:
    """An open set of rules for some columns. One thread at a time may use it."""

    def __init__(self, settings: Settings, columns: Sequence[str], flags: int) -> None:
        self._handle = c_void_p()
        if "\0" in settings.rules:
            raise ValueError("the rules hold a zero character")
        names, folders, files = (
            _texts(texts) for texts in (columns, settings.folders, settings.file_folders)
        )
        record = KorvMaskSettings(
            size=ctypes.sizeof(KorvMaskSettings),
            flags=settings.flags | flags,
            columnCount=len(names),
            columns=names,
            rules=settings.rules.encode("utf-8", "surrogateescape"),
            rulesFile=None if settings.rules_file is None else os.fsencode(settings.rules_file),
            folders=folders,
            folderCount=len(folders),
            secretsFile=None if settings.secrets_file is None else os.fsencode(settings.secrets_file),
            fileFolders=files,
            fileFolderCount=len(files),
        )
        if settings.secrets is not None:
            record.secrets = settings.secrets.array
            record.secretCount = len(settings.secrets.array)
        with _gate.call():
            status = native.KorvMaskOpen(ctypes.byref(record), ctypes.byref(self._handle))
        if status != Status.SUCCESS:
            self._names: Sequence[str] = columns
            records = self._take_records()
            self.close()
            if status == Status.NO_MEMORY:
                raise MemoryError
            if status == Status.BAD_ARGUMENT and not records:
                raise ValueError(_BAD_SECRET)
            raise error_of(Status(status), records)
        self._names = columns
        self.plan = [
            _plan_of(native.KorvMaskGetColumn(self._handle, i).contents, len(columns))
            for i in range(len(columns))
        ]

    def close(self) -> None:
        handle, self._handle = self._handle, c_void_p()
        if handle:
            with _gate.call():
                native.KorvMaskClose(handle)

    def __del__(self) -> None:
        if _gate is not None:  # otherwise the interpreter ends
            self.close()

    def _take_records(self) -> list[MaskRecord]:
        records = []
        for i in range(native.KorvMaskRecordCount(self._handle)):
            record = native.KorvMaskGetRecord(self._handle, i).contents
            tokens = [record.tokens[k] for k in range(record.tokenCount)]
            records.append(
                MaskRecord(
                    row=None if record.row == NO_ROW else record.row,
                    column=None if record.column == NO_COLUMN else self._names[record.column],
                    code=record.code,
                    message=_text(record.message) or "",
                    tokens=tuple((_text(token.name) or "", _text(token.text) or "") for token in tokens),
                    status=Status(record.status),
                    is_first=record.isFirst == 1,
                    provider=_text(record.provider),
                    rules_line=record.rulesLine,
                    rules_position=record.rulesPosition,
                )
            )
        native.KorvMaskClearRecords(self._handle)
        return records

    def mask(
        self, column: int, first_row: int, source: pa.Array, related: pa.Array | None
    ) -> tuple[Status, Batch | None, list[MaskRecord]]:
        """Masks texts, at least one. Without a batch the status is ABORTED or TOO_LARGE."""
        if _damage:
            raise error_of(Status.OVERRUN, _damage)
        strings = _strings_of(source)
        other = None if related is None else ctypes.byref(_strings_of(related))
        result = POINTER(KorvMaskResult)()
        with _gate.call():
            number = native.KorvMaskBatch(
                self._handle, column, first_row, ctypes.byref(strings), other, ctypes.byref(result)
            )
        status = Status(number)
        if status == Status.SUCCESS:
            return status, _batch_of(result.contents, source.type), []
        records = self._take_records()
        if status == Status.VALUES_FAILED:
            return status, _batch_of(result.contents, source.type), records
        if status in (Status.ABORTED, Status.TOO_LARGE):
            return status, None, records
        if status == Status.NO_MEMORY:
            raise MemoryError
        if status == Status.OVERRUN:
            _damage.extend(records)
        raise error_of(status, records)


def _strings_of(array: pa.Array) -> KorvMaskStrings:
    # Together with the engine's look at all offsets this keeps it within the buffers.
    array.validate()
    validity, offsets, data = array.buffers()
    return KorvMaskStrings(
        count=len(array),
        first=array.offset,
        offsetBits=64 if pa.types.is_large_string(array.type) else 32,
        offsets=offsets.address,
        bytes=None if data is None else data.address,
        validity=None if validity is None else validity.address,
    )


def _copied(address: int | None, size: int) -> pa.Buffer:
    buffer = pa.allocate_buffer(size)
    if address is not None and size > 0:
        ctypes.memmove(buffer.address, address, size)
    return buffer


def _batch_of(result: KorvMaskResult, type: pa.DataType) -> Batch:
    # The engine's memory is its own again with the next batch.
    strings, counts = result.strings, result.statistics
    count = strings.count
    integer = c_int64 if strings.offsetBits == 64 else c_int32
    width = ctypes.sizeof(integer)
    length = integer.from_address(strings.offsets + count * width).value
    buffers = [
        None if strings.validity is None else _copied(strings.validity, (count + 7) // 8),
        _copied(strings.offsets, (count + 1) * width),
        _copied(strings.bytes, length),
    ]
    return Batch(
        texts=pa.Array.from_buffers(type, count, buffers),
        states=ctypes.string_at(result.states, count) if counts.failed > 0 else None,
        values=counts.values,
        nulls=counts.nulls,
        masked=counts.masked,
        unchanged=counts.unchanged,
        formulas=counts.formulas,
        failed={counts.failures[i].code: counts.failures[i].count for i in range(counts.failureCount)},
    )
