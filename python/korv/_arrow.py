"""Arrays as texts that the engine masks, and masked texts as arrays of the type that they came from."""

from __future__ import annotations

import re
from collections.abc import Sequence
from decimal import Decimal

import pyarrow as pa
import pyarrow.compute as pc

_NUMBER = re.compile(r"-?(0|[1-9][0-9]*)(\.[0-9]+)?", re.ASCII)
_NEGATIVE_ZERO = re.compile(r"-0(\.0*)?", re.ASCII)


def is_text(type: pa.DataType) -> bool:
    return bool(pa.types.is_string(type) or pa.types.is_large_string(type) or pa.types.is_string_view(type))


def _is_number(type: pa.DataType) -> bool:
    return bool(pa.types.is_integer(type) or pa.types.is_decimal(type))


def is_maskable(type: pa.DataType) -> bool:
    """Whether values of this type can be masked as text and come back as what they were."""
    if pa.types.is_dictionary(type):
        return is_maskable(type.value_type)
    return bool(
        is_text(type)
        or _is_number(type)
        or pa.types.is_date(type)
        or pa.types.is_timestamp(type)
        or pa.types.is_null(type)
    )


def masked_type(type: pa.DataType) -> pa.DataType:
    """The type of the masked column: the same one, except that narrow dictionary indices are widened.

    Masked values may differ where clear ones did not, for example those that depend on another column."""
    if not pa.types.is_dictionary(type):
        return type
    index = type.index_type if type.index_type.bit_width >= 32 else pa.int32()
    return pa.dictionary(index, masked_type(type.value_type))


def to_text(array: pa.Array) -> pa.Array:
    """The values as an array of type string or large_string."""
    type = array.type
    if pa.types.is_dictionary(type):
        dictionary = to_text(array.dictionary)
        longest = pc.max(pc.binary_length(dictionary)).as_py() or 0
        if longest * len(array) >= 2**31:
            dictionary = dictionary.cast(pa.large_string())
        return pa.DictionaryArray.from_arrays(array.indices, dictionary).dictionary_decode()
    if pa.types.is_string(type) or pa.types.is_large_string(type):
        return array
    if pa.types.is_string_view(type):
        # Views may stand for more than 2 GiB.
        return array.cast(pa.string() if array.get_total_buffer_size() < 2**30 else pa.large_string())
    if pa.types.is_timestamp(type) and type.tz is not None:
        array = array.cast(pa.timestamp(type.unit, "UTC"))
    return array.cast(pa.string())


def from_text(texts: pa.Array, type: pa.DataType) -> tuple[pa.Array, list[int]]:
    """The texts as values of `type`, as far as they fit, and the indices of those that do not.

    A text fits if the value stands for all of it: an integer that would lose a zero in front could
    become equal to another one. A value that does not fit is NULL."""
    if texts.type == type:
        return texts, []
    if pa.types.is_dictionary(type):
        values, misfits = (texts, []) if is_text(type.value_type) else from_text(texts, type.value_type)
        return values.dictionary_encode().cast(type), misfits
    if is_text(type):
        return texts.cast(type), []
    if pa.types.is_null(type):
        return pa.nulls(len(texts)), [i for i, is_valid in enumerate(texts.is_valid()) if is_valid.as_py()]
    try:
        values = texts.cast(type)
        if pa.types.is_date(type):  # which Arrow reads in one form only
            return values, []
        if to_text(values).equals(texts.cast(pa.string())):
            return values, []
    except pa.ArrowInvalid:  # its message holds a value
        pass
    known: dict[str, str | None] = {}
    fitting: list[str | None] = []
    misfits = []
    for i, text in enumerate(texts.to_pylist()):
        if text is not None and text not in known:
            known[text] = _fitting(text, type)
        fitting.append(None if text is None else known[text])
        if text is not None and known[text] is None:
            misfits.append(i)
    return pa.array(fitting, pa.string()).cast(type), misfits


def _fitting(text: str, type: pa.DataType) -> str | None:
    """A text that becomes the value that `text` stands for; None if there is no such value."""
    zone = ""
    if _is_number(type):
        if not _NUMBER.fullmatch(text) or _NEGATIVE_ZERO.fullmatch(text):
            return None
    else:
        text = text.replace("T", " ", 1)
        zone = "Z" if pa.types.is_timestamp(type) and type.tz is not None else ""
        text = text.removesuffix("Z") + zone
    try:
        back = to_text(pa.array([text]).cast(type))[0].as_py()
    except pa.ArrowInvalid:
        return None
    if _is_number(type):
        return text if Decimal(back) == Decimal(text) else None
    return text if back.removesuffix(zone).startswith(text.removesuffix(zone)) else None


def json_numbers(texts: pa.Array, numbers: pa.BooleanArray) -> tuple[pa.Array, list[int]]:
    """The texts, with NULL for those that must be JSON's numbers and are not, and the indices of these."""
    fits = pc.match_substring_regex(texts, r"^-?(0|[1-9][0-9]*)(\.[0-9]+)?([eE][-+]?[0-9]+)?$")
    wrong = pc.and_(numbers, pc.fill_null(pc.invert(fits), False))
    misfits = pc.indices_nonzero(wrong).to_pylist()
    return (pc.if_else(wrong, pa.scalar(None, texts.type), texts), misfits) if misfits else (texts, [])


def without_failed(texts: pa.Array, states: bytes, failed: bytes) -> pa.Array:
    """The texts with NULL for those that are empty and whose state is one of `failed`."""
    has_failed = pa.array([state in failed for state in states])
    return pc.if_else(
        pc.and_(has_failed, pc.equal(pc.binary_length(texts), 0)), pa.scalar(None, texts.type), texts
    )


def text_array(values: list[str | None] | tuple[str | None, ...], name: str) -> pa.Array | pa.ChunkedArray:
    """A list of texts and None. A text that is not valid Unicode becomes a value that is not UTF-8."""
    array = _inferred(values)
    if array is None and all(value is None or isinstance(value, str) for value in values):
        encoded = [None if value is None else value.encode("utf-8", "surrogatepass") for value in values]
        binary = pa.array(encoded, pa.binary())
        return pa.Array.from_buffers(pa.string(), len(binary), binary.buffers())
    if array is not None and pa.types.is_null(array.type):
        return array.cast(pa.string())
    if array is None or not pa.types.is_string(array.type):
        raise TypeError(
            f"column {name}: a list must hold texts and None only; make an Arrow array of other values"
        )
    return array


def _inferred(values: Sequence[object]) -> pa.Array | pa.ChunkedArray | None:
    try:
        return pa.array(values)
    except (pa.ArrowException, UnicodeEncodeError):  # their messages may hold a value
        return None
