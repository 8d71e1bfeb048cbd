"""Numbers, dates and time stamps are masked as text and cast back; what does not fit is an error."""

import datetime
from decimal import Decimal

import korv
import pandas
import polars
import pyarrow as pa
import pytest
from conftest import SECRETS

NID = "NID, secret=test"
AGE = "AGE, secret=test, range=-30..30"


def mask(values, rule, **options):
    return korv.mask(values, rule, SECRETS, **options)


@pytest.mark.parametrize("type", [pa.int32(), pa.int64(), pa.uint32(), pa.uint64()], ids=str)
def test_integers(type):
    values = [None, 7, 123456, 2147483647]
    masked = mask(pa.array(values, type), "NID, secret=test, integer=int4")
    assert masked.type == type
    texts = mask(
        [None if value is None else str(value) for value in values], "NID, secret=test, integer=int4"
    )
    assert masked.to_pylist() == [None if text is None else int(text) for text in texts]
    assert mask(masked, "NID, secret=test, integer=int4", unmask=True).to_pylist() == values


def test_integers_that_do_not_fit_are_null_and_have_a_record():
    errors = []
    values = pa.array(range(100, 128), pa.int8())
    masked = mask(values, "NID, secret=test, integer", errors=errors)
    texts = mask([str(value) for value in values.to_pylist()], "NID, secret=test, integer")
    expected = [int(text) if int(text) < 128 else None for text in texts]
    assert masked.to_pylist() == expected
    assert None in expected
    assert [error.row for error in errors] == [i for i, value in enumerate(expected) if value is None]
    assert {error.code for error in errors} == {korv.CODE_DOES_NOT_FIT} == {9100}
    with pytest.raises(korv.MaskError, match="does not fit the type int8"):
        mask(values, "NID, secret=test, integer")


def test_a_zero_in_front_does_not_fit():
    # 0123 as an integer would be 123, which another number has as its masked value.
    values = range(1000, 1300)
    texts = mask([str(value) for value in values], NID)
    errors = []
    masked = mask(pa.array(values), NID, errors=errors).to_pylist()
    assert masked == [None if text.startswith("0") else int(text) for text in texts]
    assert len(errors) == masked.count(None) > 0


@pytest.mark.parametrize(
    "text", ["0x1f", "+5", "1e3", "-0", "007", "1.0", "９", "5 6", "99999999999999999999"]
)
def test_texts_that_are_no_integers(text):
    errors = []
    assert mask(pa.array([5]), f'CONST, "value={text}"', errors=errors).to_pylist() == [None]
    assert [error.code for error in errors] == [korv.CODE_DOES_NOT_FIT]


@pytest.mark.parametrize(
    "type", [pa.decimal32(7, 2), pa.decimal64(12, 2), pa.decimal128(30, 2), pa.decimal256(60, 2)], ids=str
)
def test_decimals(type):
    values = [Decimal("123.45"), None, Decimal("-9876.50"), Decimal("0.07")]
    errors = []
    masked = mask(pa.array(values, type), NID, errors=errors)
    texts = mask([None if value is None else str(value) for value in values], NID)
    failed = {error.row for error in errors}
    assert masked.type == type
    for row, (text, value) in enumerate(zip(texts, masked.to_pylist())):
        has_zero = text is not None and text.lstrip("-").startswith("0") and text.lstrip("-")[1] != "."
        assert (row in failed) == has_zero
        assert value == (None if text is None or has_zero else Decimal(text))


def test_decimals_keep_all_digits():
    value = Decimal("12345678901234567890123456789012345.678")
    type = pa.decimal128(38, 3)
    masked = mask(pa.array([value], type), NID)
    assert mask(masked, NID, unmask=True).to_pylist() == [value]
    errors = []
    too_fine = mask(pa.array([value], type), 'CONST, "value=1.2345"', errors=errors)
    assert (too_fine.to_pylist(), errors[0].code) == ([None], korv.CODE_DOES_NOT_FIT)
    assert mask(pa.array([value], type), "CONST, value=0").to_pylist() == [Decimal("0.000")]


@pytest.mark.parametrize("type", [pa.date32(), pa.date64()], ids=str)
def test_dates(type):
    values = [datetime.date(2024, 2, 29), None, datetime.date(1970, 1, 1)]
    masked = mask(pa.array(values, type), AGE)
    assert masked.type == type
    assert [value and value.isoformat() for value in masked.to_pylist()] == mask(
        [value and value.isoformat() for value in values], AGE
    )


def test_dates_that_do_not_fit():
    errors = []
    dates = pa.array([datetime.date(2024, 2, 29)])
    masked = mask(dates, "AGE, method=move, days=1, format=YYYY-DD-MM", errors=errors)
    assert masked.to_pylist() == [None]
    assert mask(dates, "CONST, value=2001-02-30", errors=errors).to_pylist() == [None]
    assert errors[-1].code == korv.CODE_DOES_NOT_FIT
    assert mask(dates, "CONST, value=2001-02-03").to_pylist() == [datetime.date(2001, 2, 3)]


@pytest.mark.parametrize("unit", ["s", "ms", "us", "ns"])
@pytest.mark.parametrize("zone", [None, "UTC", "America/New_York"])
def test_time_stamps(unit, zone):
    type = pa.timestamp(unit, zone)
    value = datetime.datetime(2024, 2, 29, 23, 59, 58)
    array = (
        pa.array([value, None], pa.timestamp(unit)).cast(type)
        if zone is None
        else pa.array([value.replace(tzinfo=datetime.timezone.utc), None], type)
    )
    masked = mask(array, AGE)
    assert masked.type == type
    # The day is that of UTC, and the time of day stays.
    day, *_ = mask(["2024-02-29"], AGE)
    moved = masked.cast(pa.timestamp(unit, "UTC")) if zone else masked
    assert moved.cast(pa.string()).to_pylist()[0][:19] == f"{day} 23:59:58"
    assert masked.to_pylist()[1] is None
    constant = mask(array, 'CONST, "value=2001-02-03T04:05:06"')
    assert (
        constant.cast(pa.timestamp(unit, "UTC") if zone else type).cast(pa.string())[0].as_py()[:19]
        == "2001-02-03 04:05:06"
    )


def test_time_stamps_beyond_nanoseconds():
    errors = []
    array = pa.array([datetime.datetime(2024, 2, 29)], pa.timestamp("ns"))
    assert mask(array, "CONST, value=9999-12-31", errors=errors).to_pylist() == [None]
    assert errors[0].code == korv.CODE_DOES_NOT_FIT
    assert mask(array.cast(pa.timestamp("us")), "CONST, value=9999-12-31").to_pylist() == [
        datetime.datetime(9999, 12, 31)
    ]


def test_dictionaries_of_numbers():
    array = pa.array([5, 6, None, 5]).dictionary_encode()
    masked = mask(array, "NID, secret=test, integer")
    assert masked.type == array.type
    assert masked.to_pylist() == mask(pa.array([5, 6, None, 5]), "NID, secret=test, integer").to_pylist()


@pytest.mark.parametrize(
    "values",
    [
        pa.array([1.5]),
        pa.array([True]),
        pa.array([b"a"]),
        pa.array([[1]]),
        pa.array([{"a": 1}]),
        pa.array([datetime.time(1)]),
        pa.array([1.5]).dictionary_encode(),
    ],
    ids=lambda values: str(values.type),
)
def test_other_types_are_refused(values):
    with pytest.raises(TypeError, match="cannot be masked by NID"):
        mask(values, NID)
    masker = korv.Masker("A = KEEP")
    assert masker.mask_column("A", values) is values


def test_null_works_for_all_but_nested_types():
    assert mask(pa.array([1.5, None]), "NULL").equals(pa.nulls(2, pa.float64()))
    assert mask(pa.array([True]), "NULL").equals(pa.nulls(1, pa.bool_()))
    assert mask(pa.array([7]), "NULL").equals(pa.nulls(1, pa.int64()))
    with pytest.raises(TypeError, match="cannot be masked by NULL"):
        mask(pa.array([[1]]), "NULL")


def test_policies_for_values_that_do_not_fit():
    values = pa.array([1000, 1001, 1002, 1003] * 10)
    expected = [
        int(text) if text[0] != "0" else None
        for text in mask([str(value) for value in values.to_pylist()], NID)
    ]
    while None not in expected:
        values = pa.array([value + 10 for value in values.to_pylist()])
        expected = [
            int(text) if text[0] != "0" else None
            for text in mask([str(value) for value in values.to_pylist()], NID)
        ]
    with pytest.raises(korv.MaskError) as caught:
        mask(values, NID + ", on-error=abort", errors=[])
    assert caught.value.status == korv.Status.ABORTED
    errors = []
    masker = korv.Masker(f"A = {NID}, on-error=drop-row", SECRETS)
    table = masker.mask_table(pa.table({"A": values}), errors=errors)
    assert table["A"].to_pylist() == [value for value in expected if value is not None]
    assert len(errors) == expected.count(None)


def test_failed_values_that_are_not_text_are_null_or_the_constant():
    values = pa.array([7, 4111111111111111])
    rule = "CCN, secret=test"
    for operands, replacement in (
        ("", None),
        (", on-error=null", None),
        (", on-error=const, value=0", 0),
        (", on-error=const, value=none", None),
    ):
        errors = []
        masked = mask(values, rule + operands, errors=errors).to_pylist()
        assert masked[0] == replacement and masked[1] not in (None, 4111111111111111)
        assert [(error.row, error.code) for error in errors] == [(0, 2)]


def test_polars_and_pandas():
    rule = "NID, secret=test, integer"
    expected = mask(pa.array([12, 345, None]), rule).to_pylist()
    assert mask(polars.Series("n", [12, 345, None]), rule).to_list() == expected
    nullable = mask(pandas.Series([12, 345, None], dtype="Int64"), rule)
    assert (str(nullable.dtype), nullable.isna().tolist(), nullable[:2].tolist()) == (
        "Int64",
        [False, False, True],
        expected[:2],
    )
    plain = mask(pandas.Series([12, 345]), rule)
    assert (str(plain.dtype), plain.tolist()) == ("int64", expected[:2])
    with pytest.raises(TypeError, match="values of type double"):
        mask(pandas.Series([12, 345, None]), rule)
    days = pandas.Series(pandas.to_datetime(["2024-02-29", None]))
    masked = mask(days, AGE)
    assert masked.dtype == days.dtype and pandas.isna(masked[1])
    assert str(masked[0].date()) == mask(["2024-02-29"], AGE)[0]


def test_numpy_integers_with_failures_do_not_become_floats():
    errors = []
    large = 9007199254740993  # not a double
    masked = mask(pandas.Series([5, large]), "CCN, secret=test, prefix=0", errors=errors)
    assert str(masked.dtype) == "Int64"
    assert masked.isna().tolist() == [True, False]
    assert masked[1] == int(mask([str(large)], "CCN, secret=test, prefix=0")[0])
