"""korv.spark.mask and korv.spark.errors: types, rows that are left out, failing values, files that change."""
import pytest
from customers import write_secrets

import korv
import korv.spark

TYPES = """
select id as ID, if(id % 10 = 3, '12', '4556737586899855') as CARD,
       date'2020-01-31' + cast(id as int) as DAY, timestamp'2020-01-01 23:00:00.123456' as MOMENT,
       timestamp_ntz'2020-01-01 23:00:00' as LOCAL, cast(id * 7 + 1000 as decimal(12, 2)) as AMOUNT,
       cast(id + 2000000 as int) as NUMBER, array(1, id) as LIST, map('a', 1) as MAP, binary('x') as RAW,
       cast(null as string) as NOTHING, 'a note' as NOTE
from range(0, 200, 1, 3)
"""
TYPE_RULES = """
ID=KEEP
CARD=CCN, secret=crm
DAY=AGE, secret=crm, range=-30..30
MOMENT=AGE, secret=crm, range=-30..30, per=ID
LOCAL=AGE, secret=crm, range=-30..30
AMOUNT=NID, secret=crm, on-error=null
NUMBER=NID, secret=crm, integer=int4
LIST=KEEP
MAP=KEEP
RAW=NULL
NOTHING=AFF, secret=crm
NOTE=DROP
"""
CARDS = "select id as ID, if(id % 10 = 3, concat('12-BAD-', id), '4556737586899855') as CARD from range(0, 1000, 1, 5)"
CARD_RULES = "ID=KEEP\nCARD=CCN, secret=crm"


def rows(dataframe):
    return sorted(tuple(row) for row in dataframe.collect())


def test_types_come_back_as_one_process_returns_them(spark, secrets_file):
    clear = spark.sql(TYPES)
    masked = korv.spark.mask(clear, TYPE_RULES, secrets_file, on_error="rule")
    assert [(field.name, field.dataType) for field in masked.schema] == [
        (field.name, field.dataType) for field in clear.schema if field.name != "NOTE"
    ]
    records = []
    with korv.Masker(TYPE_RULES, secrets_file) as masker:
        expected = masker.mask_table(clear.toArrow(), errors=records)
    assert records
    assert masked.toArrow().sort_by("ID").to_pylist() == expected.sort_by("ID").to_pylist()


@pytest.mark.parametrize("setting, value", [
    ("spark.sql.session.timeZone", "Asia/Tokyo"),
    ("spark.sql.execution.arrow.maxRecordsPerBatch", "7"),
    ("spark.sql.execution.arrow.useLargeVarTypes", "true"),
])
def test_settings_of_the_session_do_not_matter(spark, secrets_file, tmp_path, setting, value):
    spark.sql(TYPES).write.parquet(str(tmp_path / "clear"))

    def masked():
        clear = spark.read.parquet(str(tmp_path / "clear"))
        result = korv.spark.mask(clear, TYPE_RULES, secrets_file, on_error="rule").drop("MAP")
        return rows(result.selectExpr("* except (MOMENT)", "unix_micros(MOMENT)"))

    usual, before = masked(), spark.conf.get(setting)
    spark.conf.set(setting, value)
    try:
        assert masked() == usual
    finally:
        spark.conf.set(setting, before)


def test_a_column_that_may_become_null_is_declared_so(spark, secrets_file):
    clear = spark.sql("select 1L as ID, '12' as CARD")
    masked = korv.spark.mask(clear, "ID=KEEP\nCARD=CCN, secret=crm, on-error=null", secrets_file, on_error="rule")
    assert not masked.schema["ID"].nullable and masked.schema["CARD"].nullable
    assert rows(masked) == [(1, None)]


def test_metadata_of_a_masked_column_is_left_out(spark, secrets_file):
    clear = spark.sql(CARDS).withMetadata("CARD", {"example": "4556737586899855"}).withMetadata("ID", {"unit": "1"})
    masked = korv.spark.mask(clear, CARD_RULES, secrets_file, on_error="rule")
    assert (masked.schema["CARD"].metadata, masked.schema["ID"].metadata) == ({}, {"unit": "1"})


def test_rows_are_dropped(spark, secrets_file):
    masked = korv.spark.mask(spark.sql(CARDS), CARD_RULES + ", on-error=drop-row", secrets_file, on_error="rule")
    assert [row[0] for row in rows(masked)] == [i for i in range(1000) if i % 10 != 3]


def test_a_failing_value_ends_the_job(spark, secrets_file):
    masked = korv.spark.mask(spark.sql(CARDS), CARD_RULES, secrets_file)
    with pytest.raises(Exception) as fault:
        masked.collect()
    assert "a value of column CARD failed: CCN error 1" in str(fault.value)
    assert "BAD" not in str(fault.value)


def test_failing_values_are_a_table(spark, secrets_file):
    found = korv.spark.errors(spark.sql(CARDS), CARD_RULES, secrets_file, id_columns=["ID"])
    expected = []
    with korv.Masker(CARD_RULES, secrets_file) as masker:
        masker.mask_table(spark.sql(CARDS).toArrow(), errors=expected)
    assert rows(found) == sorted(
        (i, record.column, record.code, record.message, list(record.tokens), record.is_first)
        for i, record in zip((i for i in range(1000) if i % 10 == 3), expected, strict=True)
    )
    assert found.count() == 100
    assert "BAD" not in str(found.drop("ID").collect())
    assert korv.spark.errors(spark.sql(CARDS), CARD_RULES, secrets_file).columns == [
        "column", "code", "message", "tokens", "is_first"
    ]


def test_tasks_that_are_repeated_count_their_errors_once(spark, secrets_file):
    def fail_at_first(batches):
        from pyspark import TaskContext

        yield from batches
        if TaskContext.get().attemptNumber() == 0:
            raise RuntimeError("lost on purpose")

    found = korv.spark.errors(spark.sql(CARDS), CARD_RULES, secrets_file, id_columns=["ID"])
    repeated = found.mapInArrow(fail_at_first, found.schema)
    assert [row[0] for row in rows(repeated)] == [i for i in range(1000) if i % 10 == 3]


def masked_here(clear, rules, path):
    with korv.Masker(rules, path) as masker:
        return sorted(tuple(row.values()) for row in masker.mask_table(clear.toArrow(), errors=[]).to_pylist())


def test_a_secret_that_changes_between_jobs_is_the_new_one_in_all_workers(spark, tmp_path):
    path = tmp_path / "secrets.txt"
    clear = spark.sql(CARDS)
    results = []
    for _ in range(2):
        write_secrets(path)
        results.append(rows(korv.spark.mask(clear, CARD_RULES, path, on_error="rule")))
        assert results[-1] == masked_here(clear, CARD_RULES, path)
    assert results[0] != results[1]


def test_a_secret_that_changes_before_the_job_runs_ends_it(spark, tmp_path):
    path = tmp_path / "secrets.txt"
    write_secrets(path)
    masked = korv.spark.mask(spark.sql(CARDS), CARD_RULES, path, on_error="rule")
    write_secrets(path)
    with pytest.raises(Exception, match="the secret crm is not the one"):
        masked.collect()


def test_a_lookup_file_that_changes_is_noticed(spark, secrets_file, tmp_path):
    names, path = tmp_path / "names.txt", tmp_path / "rules.txt"
    path.write_text("ID = KEEP\nCARD = HASH, secret=crm, file=names.txt\n")
    clear = spark.sql(CARDS)
    results = []
    for name in ("Ann", "Eve"):
        names.write_text(name)
        masked = korv.spark.mask(clear, path, secrets_file)
        results.append({row[1] for row in masked.collect()})
    assert results == [{"Ann"}, {"Eve"}]
    names.write_text("Joe")
    late = korv.spark.mask(clear, path, secrets_file)
    names.write_text("Kim")
    with pytest.raises(Exception, match=r"names\.txt is not the same here"):
        late.collect()


def test_rules_that_do_not_fit_are_refused_at_once(spark, secrets_file, tmp_path):
    clear = spark.sql(CARDS)
    with pytest.raises(korv.MaskError, match="CARD"):
        korv.spark.mask(clear, "ID=KEEP", secrets_file)
    with pytest.raises(korv.MaskError):
        korv.spark.mask(clear, CARD_RULES)
    with pytest.raises(korv.MaskError):
        korv.spark.mask(clear, "ID=KEEP\nCARD=CCN, method=transpose, key=17", secrets_file, strict=True)
    with pytest.raises(TypeError, match="secrets file"):
        korv.spark.mask(clear, CARD_RULES, {"crm": b"0123456789abcdef"})
    with pytest.raises(ValueError, match="on_error"):
        korv.spark.mask(clear, CARD_RULES, secrets_file, on_error="ignore")
    assert korv.spark.mask(clear, "CARD=CCN, secret=crm", secrets_file, keep_unlisted=True).columns == ["ID", "CARD"]


@pytest.mark.parametrize("names", [["NO"], ["ID", "ID"], ["Code"]])
def test_id_columns_that_cannot_be_are_refused(spark, secrets_file, names):
    clear = spark.sql("select 1 as ID, 2 as Code")
    with pytest.raises(ValueError, match="id_columns"):
        korv.spark.errors(clear, "*=KEEP", secrets_file, id_columns=names)


def test_a_type_that_cannot_be_masked_ends_the_job(spark, secrets_file):
    masked = korv.spark.mask(spark.sql("select array('Ann') as NAMES"), "NAMES=AFF, secret=crm", secrets_file)
    with pytest.raises(Exception, match="column NAMES: values of type list"):
        masked.collect()
