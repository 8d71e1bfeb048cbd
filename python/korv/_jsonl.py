"""JSON Lines: the values of some keys are taken out and replaced; everything else stays as it was written."""

from __future__ import annotations

import json
from collections.abc import Iterator
from json.decoder import scanstring  # type: ignore[attr-defined]
from typing import Any, NoReturn

import pyarrow as pa

from ._output import RunError

_ROWS = 1 << 14
_LONGEST_LINE = 16 << 20
_SUFFIXES = {".gz": "gzip", ".zst": "zstd"}
_BLANKS = " \t\r\n"


class Number(str):
    """The text of a number."""


def _constant(text: str) -> NoReturn:
    raise ValueError


_decoder = json.JSONDecoder(parse_float=Number, parse_int=Number, parse_constant=_constant)
quoted = json.encoder.encode_basestring


class Line:
    """An object, with the text of its members by key."""

    __slots__ = ("members",)

    def __init__(self, text: str) -> None:
        """Raises ValueError or RecursionError if the text is not one object."""
        self.members: dict[str, tuple[str, Any, str]] = {}  # key and colon, value, text of the value
        at = _skip(text, 0)
        if text[at : at + 1] != "{":
            raise ValueError
        at = _skip(text, at + 1)
        is_empty = text[at : at + 1] == "}"
        while not is_empty:
            begin = at
            if text[at : at + 1] != '"':
                raise ValueError
            key, at = scanstring(text, at + 1, True)
            at = _skip(text, at)
            if text[at : at + 1] != ":" or key in self.members:
                raise ValueError
            at = _skip(text, at + 1)
            value, end = _decoder.raw_decode(text, at)
            self.members[key] = (text[begin:at], value, text[at:end])
            at = _skip(text, end)
            if text[at : at + 1] == "}":
                break
            if text[at : at + 1] != ",":
                raise ValueError
            at = _skip(text, at + 1)
        if _skip(text, at + 1) != len(text):
            raise ValueError


def _skip(text: str, at: int) -> int:
    while at < len(text) and text[at] in _BLANKS:
        at += 1
    return at


def _compression(path: str) -> str | None:
    return next((name for suffix, name in _SUFFIXES.items() if path.endswith(suffix)), None)


def is_jsonl(path: str) -> bool:
    for suffix in _SUFFIXES:
        path = path.removesuffix(suffix)
    return path.endswith((".jsonl", ".ndjson"))


def read_lines(path: str) -> Iterator[list[tuple[int, Line]]]:
    """The objects of a file with the numbers of their lines, in batches. Blank lines are left out."""
    batch: list[tuple[int, Line]] = []
    for number, data in enumerate(_raw_lines(path), 1):
        if not data.strip():
            continue
        try:
            batch.append((number, Line(data.decode("utf-8"))))
        except (ValueError, RecursionError):  # their messages may hold a value
            raise RunError(
                f"{path}:{number}: not one JSON object in UTF-8 whose keys are all different"
            ) from None
        if len(batch) == _ROWS:
            yield batch
            batch = []
    if batch:
        yield batch


def _raw_lines(path: str) -> Iterator[bytes]:
    rest = b""
    with pa.input_stream(path, compression=_compression(path)) as stream:
        while block := stream.read(1 << 20):
            lines = (rest + block).split(b"\n")
            rest = lines.pop()
            yield from lines
            if len(rest) > _LONGEST_LINE:
                raise RunError(f"{path}: a line of more than {_LONGEST_LINE >> 20} MiB")
    if rest:
        yield rest


def open_writer(path: str, name: str) -> pa.NativeFile:
    """A stream that writes `path`, compressed as the file `name` is to be."""
    return pa.output_stream(path, compression=_compression(name))


def written(masked: str | None, value: object) -> str:
    """The text of a masked value in the place of `value`."""
    if masked is None:
        return "null"
    return masked if isinstance(value, Number) else quoted(masked)
