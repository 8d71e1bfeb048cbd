"""The function of SQL."""

import duckdb
import korv
import korv.duckdb
import pytest
from conftest import CARD, CARDS, SECRETS

RULE = "'CCN, secret=test'"


@pytest.fixture
def connection():
    connection = duckdb.connect()
    korv.duckdb.register(connection, SECRETS)
    connection.execute("create table cards (i integer, card varchar)")
    connection.executemany("insert into cards values (?, ?)", list(enumerate(CARDS)))
    yield connection
    connection.close()


def test_texts(connection):
    masked = connection.sql(f"select korv_mask(card, {RULE}) from cards order by i").fetchall()
    assert [value for value, in masked] == korv.mask(CARDS, "CCN, secret=test", SECRETS)


def test_null_and_no_rows(connection):
    assert connection.sql(f"select korv_mask(NULL, {RULE}), korv_mask(NULL::integer, {RULE})").fetchall() == [
        (None, None)
    ]
    assert connection.sql(f"select korv_mask(card, {RULE}) from cards where i > 99").fetchall() == []


def test_numbers_and_dates_become_text(connection):
    query = """select korv_mask(12345, 'NID, secret=test'), korv_mask(123.45::decimal(9, 2), 'NID, secret=test'),
               korv_mask(date '2024-02-29', 'AGE, secret=test, range=-9..9')"""
    assert connection.sql(query).fetchall()[0] == (
        korv.mask(["12345"], "NID, secret=test", SECRETS)[0],
        korv.mask(["123.45"], "NID, secret=test", SECRETS)[0],
        korv.mask(["2024-02-29"], "AGE, secret=test, range=-9..9", SECRETS)[0],
    )


def test_related_values(connection):
    rule = "AGE, secret=test, range=-9..9, per=ID"
    query = f"select korv_mask(day, '{rule}', id) from (select date '2024-02-29' as day, range as id from range(5))"
    expected = korv.mask(["2024-02-29"] * 5, rule, SECRETS, [str(i) for i in range(5)])
    assert [value for value, in connection.sql(query).fetchall()] == expected


def test_many_rows_and_threads(connection):
    connection.execute("set threads = 4")
    query = f"""select count(*), count(distinct masked), bool_or(masked = card)
                from (select card, korv_mask(card, {RULE}) as masked
                      from (select (4556737586890000 + range)::varchar as card from range(200000)))"""
    assert connection.sql(query).fetchall() == [(200000, 200000, False)]


@pytest.mark.parametrize(
    "call, message",
    [
        (f"korv_mask('12', {RULE})", "a value failed: CCN error 2, too few digits"),
        ("korv_mask('1', 'NONE')", "there is no provider NONE"),
        ("korv_mask('1', 'CCN, secret=other')", "there is no secret other"),
        ("korv_mask('1', NULL)", "the rule must be one text for all rows"),
        ("korv_mask('1', 5)", "the rule must be one text for all rows"),
        (f"korv_mask(1.5::double, {RULE})", "values of type double cannot be masked; cast them to VARCHAR"),
        ("korv_mask('1')", "two or three arguments"),
        ("korv_mask('1', 'AGE, secret=test, range=-9..9, per=ID')", "the rule also reads column ID"),
        ("korv_mask('1', 'DROP')", "the rule drops the column"),
    ],
)
def test_errors(connection, call, message):
    with pytest.raises(duckdb.Error) as caught:
        connection.sql(f"select {call}").fetchall()
    assert message in str(caught.value)
    assert SECRETS["test"].hex() not in str(caught.value)


def test_a_rule_of_its_own_for_each_row_is_refused(connection):
    with pytest.raises(duckdb.Error, match="one text for all rows"):
        connection.sql("select korv_mask(card, 'CCN, secret=test, prefix=' || i) from cards").fetchall()


def test_messages_hold_no_value(connection):
    with pytest.raises(duckdb.Error) as caught:
        connection.sql(f"select korv_mask('secretive4556', {RULE})").fetchall()
    assert "secretive" not in str(caught.value)


def test_failed_values_can_be_null(connection):
    korv.duckdb.register(connection, SECRETS, name="masked", errors="null")
    query = (
        "select masked(value, 'CCN, secret=test, on-error=const, value=x') "
        "from (values (1, '12'), (2, ?), (3, NULL)) t(i, value) order by i"
    )
    masked = korv.mask([CARD], "CCN, secret=test", SECRETS)[0]
    assert connection.execute(query, [CARD]).fetchall() == [(None,), (masked,), (None,)]
    with pytest.raises(ValueError, match="'raise' or 'null'"):
        korv.duckdb.register(connection, SECRETS, errors="ignore")


def test_options(connection):
    korv.duckdb.register(connection, SECRETS, name="strictly", strict=True)
    with pytest.raises(duckdb.Error, match="strict"):
        connection.sql("select strictly('4556737586899855', 'CCN, method=transpose, key=5')").fetchall()
