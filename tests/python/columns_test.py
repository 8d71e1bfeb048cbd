"""Columns of every kind and layout are masked alike, and come back as they went in."""

import ctypes

import korv
import pandas
import polars
import pyarrow as pa
import pytest
from conftest import CARD, CARDS, SECRETS

RULE = "CCN, secret=test"
MASKED = korv.mask(CARDS, RULE, SECRETS)
TEXTS = [pa.string(), pa.large_string(), pa.string_view()]
DICTIONARIES = [
    pa.dictionary(index, value)
    for index, value in (
        (pa.int32(), pa.string()),
        (pa.uint32(), pa.large_string()),
        (pa.int64(), pa.string_view()),
    )
]


@pytest.fixture(scope="module")
def masker():
    with korv.Masker(
        f"CARD = {RULE}\nOTHER = KEEP\nSIGNUP = AGE, secret=test, range=-9..9, per=ID", SECRETS
    ) as masker:
        yield masker


def test_the_values_are_masked():
    assert [value is None for value in MASKED] == [value is None for value in CARDS]
    assert [len(value or "") for value in MASKED] == [len(value or "") for value in CARDS]
    assert MASKED[3] == ""
    assert all(clear != masked for clear, masked in zip(CARDS, MASKED) if clear)
    assert MASKED[0][:6] == CARD[:6]


@pytest.mark.parametrize("type", TEXTS + DICTIONARIES, ids=str)
def test_layouts_come_back(masker, type):
    array = pa.array(CARDS).cast(type)
    masked = masker.mask_column("CARD", array)
    masked.validate(full=True)
    assert masked.type == type
    assert masked.to_pylist() == MASKED


def test_narrow_dictionaries_get_wider_indices(masker):
    masked = masker.mask_column("CARD", pa.array(CARDS).cast(pa.dictionary(pa.int8(), pa.string())))
    assert masked.type == pa.dictionary(pa.int32(), pa.string())
    assert masked.to_pylist() == MASKED


@pytest.mark.parametrize("type", TEXTS + DICTIONARIES, ids=str)
@pytest.mark.parametrize("begin", [0, 1, 3, 7, 8, 9])
def test_slices_and_validity_with_an_offset(masker, type, begin):
    array = pa.array(CARDS * 5).cast(type)
    part = array.slice(begin, 11)
    assert part.offset == begin
    assert masker.mask_column("CARD", part).to_pylist() == (MASKED * 5)[begin : begin + 11]


@pytest.mark.parametrize("type", TEXTS + DICTIONARIES, ids=str)
def test_nothing_and_nulls_only(masker, type):
    for values in ([], [None], [None] * 100):
        array = pa.array(values, pa.string()).cast(type)
        masked = masker.mask_column("CARD", array)
        assert (masked.type, masked.to_pylist()) == (type, values)
    assert masker.mask_column("CARD", pa.nulls(3)).equals(pa.nulls(3))
    assert masker.mask_column("CARD", []) == []
    assert masker.mask_column("CARD", [None]) == [None]


def test_chunks(masker):
    chunked = pa.chunked_array([CARDS[:2], [], CARDS[2:], CARDS])
    masked = masker.mask_column("CARD", chunked)
    assert isinstance(masked, pa.ChunkedArray)
    assert masked.to_pylist() == MASKED * 2
    empty = pa.chunked_array([], pa.string())
    assert masker.mask_column("CARD", empty).equals(empty)


def test_failed_rows_are_counted_over_chunks(masker):
    errors = []
    masker.mask_column(
        "CARD", pa.chunked_array([[CARD, "1"], ["2", CARD], [None, "3"]]), errors=errors, first_row=10
    )
    assert [error.row for error in errors] == [11, 12, 15]


def test_many_values_are_masked_in_parts(masker, monkeypatch):
    monkeypatch.setattr("korv._masking._MOST_ROWS", 7)
    errors = []
    masked = masker.mask_column("CARD", pa.array(CARDS * 10 + ["1"]), errors=errors)
    assert isinstance(masked, pa.Array)
    assert masked.to_pylist() == MASKED * 10 + [""]
    assert [error.row for error in errors] == [50]


def test_results_that_need_more_than_32_bits_are_parted(masker):
    # CONST makes 2.4 GB of a few bytes.
    text = "x" * 600_000
    array = pa.array(["a"] * 4_000)
    masked = korv.Masker(f'A = CONST, "value={text}"').mask_column("A", array)
    assert isinstance(masked, pa.ChunkedArray)
    assert masked.num_chunks > 1
    assert len(masked) == 4_000
    assert {len(chunk[0].as_py()) for chunk in masked.chunks} == {600_000}


class Capsule:
    """An object with nothing but the PyCapsule interface."""

    def __init__(self, data, name):
        setattr(type(self), name, lambda self, schema=None: getattr(data, name)(schema))


def test_capsules(masker):
    array = type("Array", (Capsule,), {})(pa.array(CARDS), "__arrow_c_array__")
    stream = type("Stream", (Capsule,), {})(pa.chunked_array([CARDS, CARDS]), "__arrow_c_stream__")
    assert masker.mask_column("CARD", array).equals(pa.array(MASKED))
    assert masker.mask_column("CARD", stream).equals(pa.chunked_array([MASKED, MASKED]))


def test_results_have_capsules(masker):
    masked = masker.mask_column("CARD", pa.array(CARDS))
    assert polars.Series(masked).to_list() == MASKED


def test_polars(masker):
    series = polars.Series("CARD", CARDS)
    assert masker.mask_column("CARD", series).equals(polars.Series("CARD", MASKED), check_names=True)
    categories = masker.mask_column("CARD", series.cast(polars.Categorical))
    assert (categories.dtype, categories.to_list()) == (polars.Categorical, MASKED)


@pytest.mark.parametrize(
    "dtype", [object, "str", "string", pandas.ArrowDtype(pa.string()), "category"], ids=str
)
def test_pandas(masker, dtype):
    if dtype == "str" and pandas.__version__.startswith("2"):
        dtype = "string[pyarrow]"
    series = pandas.Series(CARDS, dtype=dtype, index=[3, 1, 4, 5, 9], name="cards")
    masked = masker.mask_column("CARD", series)
    assert masked.dtype == series.dtype or dtype == "category"
    assert (masked.name, list(masked.index)) == ("cards", [3, 1, 4, 5, 9])
    assert [None if pandas.isna(value) else value for value in masked] == MASKED


def test_kept_columns_come_back_themselves(masker):
    for values in ([1, 2], pa.array([1.5]), object()):
        if not isinstance(values, (list, pa.Array)):
            with pytest.raises(TypeError, match="neither a list"):
                masker.mask_column("OTHER", values)
        elif isinstance(values, pa.Array):
            assert masker.mask_column("OTHER", values) is values
    texts = ["a", None]
    assert masker.mask_column("OTHER", texts) is texts


def test_related_values(masker):
    dates, numbers = ["2020-01-01", "2020-01-01", None], ["1", "2", "3"]
    masked = masker.mask_column("SIGNUP", dates, numbers)
    assert masked[2] is None and all(value.startswith(("2019-12", "2020-01")) for value in masked[:2])
    for other in (
        pa.array(numbers),
        pa.array([1, 2, 3]),
        pa.chunked_array([["1"], ["2", "3"]]),
        polars.Series(numbers),
    ):
        assert masker.mask_column("SIGNUP", dates, other) == masked
        assert (
            masker.mask_column("SIGNUP", pa.chunked_array([dates[:2], dates[2:]]), other).to_pylist()
            == masked
        )
        assert korv.mask(dates, "AGE, secret=test, range=-9..9, per=ID", SECRETS, other) == masked
    with pytest.raises(ValueError, match="the rule also reads column ID"):
        masker.mask_column("SIGNUP", dates)
    with pytest.raises(ValueError, match="3 values, and 2 related ones"):
        masker.mask_column("SIGNUP", dates, ["1", "2"])


def test_other_columns_of_the_rules_do_not_matter(masker):
    assert masker.mask_column("CARD", CARDS) == korv.mask(CARDS, RULE, SECRETS)


def test_unmask():
    for rule, values in ((RULE, CARDS), ("NID, secret=test", [None, "12-34", "", "99999"])):
        masked = korv.mask(values, rule, SECRETS)
        assert masked != values
        assert korv.mask(masked, rule, SECRETS, unmask=True) == values


def test_arrays_that_lie_about_their_buffers_are_refused(masker):
    offsets = (ctypes.c_int32 * 4)(0, 16, 16, 16)
    array = pa.Array.from_buffers(pa.string(), 3, [None, pa.py_buffer(offsets), pa.py_buffer(CARD.encode())])
    assert masker.mask_column("CARD", array).to_pylist() == [MASKED[0], "", ""]
    offsets[2] = offsets[3] = 1_000_000
    with pytest.raises(pa.ArrowInvalid):
        masker.mask_column("CARD", array)
    offsets[2], offsets[3] = 2, 16
    with pytest.raises(korv.MaskError, match="cannot be read"):
        masker.mask_column("CARD", array)
