"""JSON Lines: the values of some keys are taken out and replaced; everything else stays as it was written."""

from __future__ import annotations

import json
import re
from collections.abc import Iterator
from json.decoder import scanstring  # type: ignore[attr-defined]
from typing import Any, NoReturn

import pyarrow as pa

from ._output import RunError

_ROWS = 1 << 12
_LONGEST_LINE = 16 << 20
_SUFFIXES = {".gz": "gzip", ".zst": "zstd"}


class Number(str):
    """The text of a number."""


def _constant(text: str) -> NoReturn:
    raise ValueError


_decoder = json.JSONDecoder(parse_float=Number, parse_int=Number, parse_constant=_constant)
quoted = json.encoder.encode_basestring

_BLANK = r"[ \t\r\n]*"
_KEY = rf'("([^"\\\x00-\x1f]*)"{_BLANK}:{_BLANK})'
_NEXT = rf"{_BLANK}([,}}]){_BLANK}"
_begin = re.compile(rf"{_BLANK}\{{{_BLANK}(\}}?){_BLANK}")
_key = re.compile(_KEY)
_colon = re.compile(rf"{_BLANK}:{_BLANK}")
_next = re.compile(_NEXT)
# Most members are plain, and quicker to find at once than by the decoder.
_NUMBER = r"-?(?:0|[1-9][0-9]*)(?:\.[0-9]+)?(?:[eE][-+]?[0-9]+)?"
_plain = re.compile(rf'{_KEY}(?:"([^"\\\x00-\x1f]*)"|({_NUMBER}))(?:{_NEXT})')

#: Key with its colon, value, and text of the value.
Member = tuple[str, Any, str]
#: An object with the number of its line.
Line = tuple[int, dict[str, Member]]


def members_of(text: str) -> dict[str, Member]:
    """The members of an object by their keys. Raises ValueError or RecursionError for another text."""
    members: dict[str, Member] = {}
    found = _begin.match(text)
    if found is None:
        raise ValueError
    at = found.end()
    following = "}" if found[1] else ","
    while following == ",":
        found = _plain.match(text, at)
        if found is not None:
            prefix, key, string, number, following = found.groups()
            at = found.end()
            member = (prefix, string, f'"{string}"') if number is None else (prefix, Number(number), number)
        else:
            key, member, following, at = _other_member(text, at)
        if key in members:
            raise ValueError
        members[key] = member
    if at != len(text):
        raise ValueError
    return members


def _other_member(text: str, begin: int) -> tuple[str, Member, str, int]:
    found = _key.match(text, begin)
    key, at = (found[2], found.end()) if found is not None else _escaped_key(text, begin)
    value, end = _decoder.raw_decode(text, at)
    found = _next.match(text, end)
    if found is None:
        raise ValueError
    return key, (text[begin:at], value, text[at:end]), found[1], found.end()


def _escaped_key(text: str, at: int) -> tuple[str, int]:
    if text[at : at + 1] != '"':
        raise ValueError
    key, at = scanstring(text, at + 1, True)
    found = _colon.match(text, at)
    if found is None:
        raise ValueError
    return key, found.end()


def _compression(path: str) -> str | None:
    return next((name for suffix, name in _SUFFIXES.items() if path.endswith(suffix)), None)


def is_jsonl(path: str) -> bool:
    for suffix in _SUFFIXES:
        path = path.removesuffix(suffix)
    return path.endswith((".jsonl", ".ndjson"))


def read_lines(path: str) -> Iterator[list[Line]]:
    """The objects of a file with the numbers of their lines, in batches. Blank lines are left out."""
    batch: list[Line] = []
    for number, data in enumerate(_raw_lines(path), 1):
        if not data.strip():
            continue
        try:
            batch.append((number, members_of(data.decode("utf-8"))))
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
