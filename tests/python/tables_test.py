"""Tables of every kind are masked alike; rows and columns are left out as the rules say."""

import datetime

import duckdb
import korv
import pandas
import polars
import pyarrow as pa
import pytest
from conftest import CARD, SECRETS

RULES = """
ID = KEEP
CARD = CCN, secret=test
BORN = AGE, secret=test, range=-30..30, per=ID
NUMBER = NID, secret=test, integer=int8
NOTE = DROP
LIST = KEEP
"""
CLEAR = pa.table(
    {
        "ID": [1, 2, 3],
        "CARD": [CARD, None, "372199347995065"],
        "BORN": [datetime.date(2000, 1, 1), None, datetime.date(2001, 1, 1)],
        "NUMBER": [12345, 7, 99],
        "NOTE": [1.5, 2.5, None],
        "LIST": [[1], None, [2, 3]],
    }
)


@pytest.fixture(scope="module")
def masker():
    with korv.Masker(RULES, SECRETS) as masker:
        yield masker


@pytest.fixture(scope="module")
def masked(masker):
    return masker.mask_table(CLEAR)


def test_columns_are_those_of_mask_column(masker, masked):
    assert masked.column_names == ["ID", "CARD", "BORN", "NUMBER", "LIST"]
    for name in ("CARD", "BORN", "NUMBER"):
        assert masked[name].equals(masker.mask_column(name, CLEAR[name], CLEAR["ID"]))
        assert not masked[name].equals(CLEAR[name])
    for name in ("ID", "LIST"):
        assert masked[name].equals(CLEAR[name])


def test_arrow(masker, masked):
    batch = masker.mask_table(CLEAR.to_batches()[0])
    assert isinstance(batch, pa.RecordBatch) and pa.table(batch).equals(masked)
    reader = masker.mask_table(CLEAR.to_reader())
    assert isinstance(reader, pa.RecordBatchReader) and reader.read_all().equals(masked)
    uneven = pa.table(
        {
            name: pa.chunked_array([column.chunk(0)[:at], column.chunk(0)[at:]])
            for at, (name, column) in zip((1, 2, 1, 2, 1, 2), zip(CLEAR.column_names, CLEAR.columns))
        }
    )
    assert masker.mask_table(uneven).equals(masked)
    empty = masker.mask_table(CLEAR.slice(0, 0))
    assert (empty.schema, len(empty)) == (masked.schema, 0)
    assert masker.mask_table(CLEAR.schema.empty_table()).schema == masked.schema


def test_a_stream_is_masked_while_it_is_read(masker):
    taken = []

    def batches():
        for i in range(5):
            taken.append(i)
            yield CLEAR.to_batches()[0]

    reader = masker.mask_table(pa.RecordBatchReader.from_batches(CLEAR.schema, batches()))
    assert taken == []
    reader.read_next_batch()
    assert taken == [0]


def test_polars(masker, masked):
    frame = masker.mask_table(polars.DataFrame(CLEAR))
    assert isinstance(frame, polars.DataFrame)
    assert frame.equals(polars.DataFrame(masked))


def test_duckdb(masker, masked):
    relation = duckdb.sql("from CLEAR")
    assert masker.mask_table(relation).equals(masked)
    assert duckdb.sql("select max(ID), count(CARD) from masked").fetchall() == [(3, 2)]


@pytest.mark.parametrize("mapper", [None, pandas.ArrowDtype], ids=["numpy", "arrow"])
def test_pandas(masker, masked, mapper):
    clear = CLEAR.to_pandas(types_mapper=mapper)
    clear["ANY"] = pandas.Series([1, "a", object()], dtype=object)  # Arrow has no such type
    frame = korv.Masker(RULES + "ANY = KEEP", SECRETS).mask_table(clear)
    assert list(frame.columns) == [*masked.column_names, "ANY"]
    assert (frame.dtypes == clear[frame.columns].dtypes).all()
    for name in ("ID", "LIST", "ANY"):
        assert frame[name] is clear[name] or frame[name].equals(clear[name])
    for name in ("CARD", "BORN", "NUMBER"):
        values = [None if pandas.isna(value) else value for value in frame[name]]
        assert values == masked[name].to_pylist()


def test_pandas_index(masker):
    rules = korv.Masker("A = CCN, secret=test", SECRETS)
    frame = pandas.DataFrame({"A": [CARD, CARD, CARD]})
    masked = rules.mask_table(frame)
    assert rules.mask_table(frame[1:]).equals(masked[1:])
    assert rules.mask_table(frame.iloc[[2, 0]]).equals(masked.iloc[[2, 0]])
    for index in (
        pandas.Index(["x", "y", "z"]),
        pandas.Index([1, 2, 3], name="customer"),
        pandas.MultiIndex.from_tuples([(1, 2), (3, 4), (5, 6)]),
    ):
        with pytest.raises(TypeError, match="reset_index"):
            rules.mask_table(frame.set_index(index))
    with pytest.raises(TypeError, match="names of type str"):
        rules.mask_table(pandas.DataFrame({0: [CARD]}))


FAILING = [CARD, "1", None, "2", CARD]


@pytest.mark.parametrize("kind", ["arrow", "reader", "polars", "pandas"])
def test_rows_are_left_out(kind):
    masker = korv.Masker("ID = KEEP\nCARD = CCN, secret=test, on-error=drop-row\nLIST = KEEP", SECRETS)
    table = pa.table({"ID": range(5), "CARD": FAILING, "LIST": [[i] for i in range(5)]})
    clear = {
        "arrow": table,
        "reader": table.to_reader(2),
        "polars": polars.DataFrame(table),
        "pandas": table.to_pandas(),
    }
    errors = []
    masked = masker.mask_table(clear[kind], errors=errors, first_row=100)
    if kind == "pandas":
        assert list(masked.index) == [0, 2, 4]
        masked = pa.Table.from_pandas(masked, preserve_index=False)
    elif kind == "reader":
        masked = masked.read_all()
    masked = pa.table(masked)
    assert masked["ID"].to_pylist() == [0, 2, 4]
    assert masked["LIST"].to_pylist() == [[0], [2], [4]]
    assert [error.row for error in errors] == [101, 103]


def test_records_are_in_the_order_of_rows():
    masker = korv.Masker("A = CCN, secret=test\nB = CCN, secret=test", SECRETS)
    table = pa.table({"A": ["1", CARD, "2"], "B": ["3", "4", CARD]})
    errors = []
    masked = masker.mask_table(table, errors=errors)
    assert [(error.row, error.column) for error in errors] == [(0, "A"), (0, "B"), (1, "B"), (2, "A")]
    assert masked["B"].to_pylist()[:2] == ["", ""]


def test_types_are_checked_before_the_first_row(masker):
    with pytest.raises(TypeError, match="column CARD: values of type double"):
        masker.mask_table(CLEAR.set_column(1, "CARD", pa.array([1.5, 2.5, 3.5])))
    with pytest.raises(TypeError, match="column BORN: its rule reads column ID, whose type list"):
        masker.mask_table(CLEAR.set_column(0, "ID", CLEAR["LIST"]))
    with pytest.raises(TypeError, match="neither a DataFrame nor a table"):
        masker.mask_table({"ID": [1]})


def test_rules_must_cover_the_table(masker):
    with pytest.raises(korv.MaskError, match="NEW"):
        masker.mask_table(CLEAR.append_column("NEW", pa.array([1, 2, 3])))
    with pytest.raises(korv.MaskError, match="LIST"):
        masker.mask_table(CLEAR.drop_columns("LIST"))
    kept = korv.Masker("CARD = CCN, secret=test", SECRETS, keep_unlisted=True).mask_table(CLEAR)
    assert kept.drop_columns("CARD").equals(CLEAR.drop_columns("CARD"))


def test_metadata_goes():
    # It may hold clear values: pandas' has those of an index.
    field = pa.field("A", pa.string(), metadata={"sample": CARD})
    table = pa.table([pa.array([CARD])], schema=pa.schema([field], metadata={"pandas": CARD}))
    masked = korv.Masker("A = CCN, secret=test", SECRETS).mask_table(table)
    assert masked.schema.metadata is None and masked.schema.field("A").metadata is None


def test_columns_describe_what_happens(masker):
    plans = {plan.name: plan for plan in masker.columns(CLEAR.column_names)}
    assert [plans[name].action for name in CLEAR.column_names] == [
        "KEEP",
        "CCN",
        "AGE",
        "NID",
        "DROP",
        "KEEP",
    ]
    card, born = plans["CARD"], plans["BORN"]
    assert (card.method, card.secret, card.reversible, card.disguise, card.on_error) == (
        "ff1",
        "test",
        True,
        False,
        "empty",
    )
    assert len(card.fingerprint) == 8
    assert (born.related, born.reversible) == ("ID", False)
    assert korv.Masker("A = CCN, method=transpose, key=5").columns(["A"])[0].disguise


def test_two_columns_of_one_name():
    table = pa.table([[CARD], ["x"]], names=["A", "A"])
    masked = korv.Masker("@1 = CCN, secret=test\n@2 = KEEP", SECRETS).mask_table(table)
    assert masked.column(1).to_pylist() == ["x"] and masked.column(0).to_pylist() != [CARD]
