"""What goes wrong is raised, or comes back as records; neither holds clear values or secrets."""

import pickle
import re

import korv
import pandas
import pyarrow as pa
import pytest
from conftest import CARD, ROOT, SECRETS

RULE = "CCN, secret=test"


def test_records():
    errors = []
    masked = korv.mask([CARD, "12345", None, "4556-x"], RULE, SECRETS, errors=errors)
    assert masked[1] == masked[3] == "" and masked[2] is None
    first, second = errors
    assert (first.row, first.column, first.code, first.provider) == (1, "value", 2, "CCN")
    assert first.tokens == (
        ("KORV_TOKID_COLNAME", "value"),
        ("KORV_TOKID_SRCLEN", "5"),
        ("KORV_TOKID_EXPSRCLEN", "12"),
    )
    assert first.message == (
        "CCN error 2, too few digits: KORV_TOKID_COLNAME=value KORV_TOKID_SRCLEN=5 " "KORV_TOKID_EXPSRCLEN=12"
    )
    assert (second.row, second.code, second.is_first, second.status) == (
        3,
        1,
        True,
        korv.Status.VALUES_FAILED,
    )
    with pytest.raises(AttributeError):
        first.row = 5
    assert pickle.loads(pickle.dumps(first)) == first


def test_exceptions():
    with pytest.raises(korv.MaskError, match=r"^2 values failed: row 0, column value: CCN error 2") as caught:
        korv.mask(["1", "2", CARD], RULE, SECRETS)
    assert [record.row for record in caught.value.records] == [0, 1]
    assert caught.value.status == korv.Status.VALUES_FAILED
    copy = pickle.loads(pickle.dumps(caught.value))
    assert (str(copy), copy.records, copy.status) == (
        str(caught.value),
        caught.value.records,
        caught.value.status,
    )


@pytest.mark.parametrize(
    "operands, replacement",
    [
        ("", ""),
        (", on-error=empty", ""),
        (", on-error=null", None),
        (", on-error=const, value=none", "none"),
        (", on-error=drop-row", ""),
    ],
)
def test_policies(operands, replacement):
    errors = []
    masked = korv.mask([CARD, "1"], RULE + operands, SECRETS, errors=errors)
    assert masked == [korv.mask([CARD], RULE, SECRETS)[0], replacement]
    assert len(errors) == 1


def test_abort_is_always_raised():
    errors = []
    with pytest.raises(
        korv.MaskError, match="1 value failed, and its rule says on-error=abort: row 1"
    ) as caught:
        korv.mask([CARD, "1", "2"], RULE + ", on-error=abort", SECRETS, errors=errors)
    assert caught.value.status == korv.Status.ABORTED
    assert errors == []


def test_a_masker_goes_on_after_an_abort():
    masker = korv.Masker(f"A = {RULE}, on-error=abort", SECRETS)
    for _ in range(3):
        with pytest.raises(korv.MaskError):
            masker.mask_column("A", ["1"])
        assert masker.mask_column("A", [CARD]) == korv.mask([CARD], RULE, SECRETS)


@pytest.mark.parametrize(
    "rules, message",
    [
        ("A", "rules:1:2: a rule has the form"),
        ("A = KEEP\nA = KEEP", "rules:2:"),
        ("A = NONE", "there is no provider NONE"),
        ("A = CCN", "rules:1:"),
        ("A = CCN, secret=other", "there is no secret other"),
        ("A = CCN, secret=test, prefix=99", "rules:1:23"),
        ("A = LKP, file=/no/such/file", "rules:1:"),
        ("B = KEEP", "A"),
    ],
)
def test_rules_that_cannot_be_used(rules, message):
    with pytest.raises(korv.MaskError, match=re.escape(message)) as caught:
        korv.Masker(rules, SECRETS).mask_column("A", [CARD])
    assert caught.value.status in (korv.Status.BAD_RULES, korv.Status.BAD_PROVIDER)


def test_malformed_rules_are_found_at_once(tmp_path):
    with pytest.raises(korv.MaskError, match="rules:1:2"):
        korv.Masker("A")
    path = tmp_path / "my rules.txt"
    path.write_text("A = KEEP\nB CCN\n")
    with pytest.raises(korv.MaskError, match=r"my rules.txt:2:"):
        korv.Masker(path)
    with pytest.raises(FileNotFoundError):
        korv.Masker(tmp_path / "none.txt")
    with pytest.raises(ValueError, match="zero character"):
        korv.Masker("A = KEEP\0B = CCN")
    with pytest.raises(TypeError, match="str with their text, or a Path"):
        korv.Masker(b"A = KEEP")
    with pytest.raises(korv.MaskError):
        korv.mask(["x"], "KEEP\nB = CCN")


def test_the_rules_of_the_first_moment_count(tmp_path):
    path = tmp_path / "rules.txt"
    path.write_text(f"\ufeffA = {RULE}\r\n")
    masker = korv.Masker(path, SECRETS)
    path.write_text("A = KEEP")
    assert masker.mask_column("A", [CARD]) == korv.mask([CARD], RULE, SECRETS)


def test_files_of_rules(tmp_path):
    (tmp_path / "lists").mkdir()
    (tmp_path / "lists" / "cities.txt").write_text("Rome = Bari\n")
    rules = tmp_path / "rules.txt"
    rules.write_text("A = LKP, file=lists/cities.txt")
    assert korv.Masker(rules).mask_column("A", ["Rome"]) == ["Bari"]
    assert korv.Masker(rules).columns(["A"])[0].files == (str(tmp_path / "lists" / "cities.txt"),)
    rule = "LKP, file=cities.txt"
    assert korv.mask(["Rome"], rule, files=[tmp_path / "lists"]) == ["Bari"]
    (tmp_path / "other.txt").write_text("Rome = Bari\n")
    with pytest.raises(korv.MaskError):
        korv.mask(["Rome"], f"LKP, file={tmp_path}/other.txt", files=[tmp_path / "lists"])
    with pytest.raises(korv.MaskError):
        korv.mask(["Rome"], "LKP, file=../other.txt", files=[tmp_path / "lists"])


def test_options():
    with pytest.raises(korv.MaskError, match="strict"):
        korv.mask([CARD], "CCN, method=transpose, key=5", strict=True)
    with pytest.raises(korv.MaskError, match="cannot be reversed"):
        korv.mask(["a@b.example"], "EML, secret=test", SECRETS, unmask=True)
    with pytest.raises(korv.MaskError, match="no provider CCN"):
        korv.mask([CARD], RULE, SECRETS, providers=[ROOT / "tests"])
    with pytest.raises(ValueError, match="the rule drops the column"):
        korv.Masker("A = DROP").mask_column("A", ["x"])


def test_a_closed_masker_is_of_no_use():
    masker = korv.Masker(f"A = {RULE}", SECRETS)
    masker.mask_column("A", [CARD])
    masker.close()
    masker.close()
    with pytest.raises(ValueError, match="the Masker is closed"):
        masker.mask_column("A", [CARD])


BAD_VALUES = [["secretvalue", 1], [1, "secretvalue"], ["secretvalue", b"x"], [["secretvalue"], 1]]


@pytest.mark.parametrize("values", BAD_VALUES, ids=repr)
def test_messages_about_lists_and_series_hold_no_value(values):
    for kind in (list, lambda values: pandas.Series(values, dtype=object)):
        with pytest.raises(TypeError) as caught:
            korv.mask(kind(values), RULE, SECRETS)
        assert "secretvalue" not in repr(caught.value)
        assert caught.value.__context__ is None or caught.value.__suppress_context__


@pytest.mark.parametrize("text", ["a\0b", "\udc80", "\ud83d"])
def test_texts_that_are_no_text_fail(text):
    errors = []
    assert korv.mask(["x1", text], "AFF, secret=test", SECRETS, errors=errors)[1] == ""
    assert [(error.row, error.code) for error in errors] == [(1, 9008)]


def test_bytes_that_are_not_utf8_fail():
    array = pa.Array.from_buffers(pa.string(), 2, pa.array([b"ok1", b"\xff\xfe"]).buffers())
    errors = []
    masked = korv.mask(array, "AFF, secret=test", SECRETS, errors=errors)
    assert masked[1].as_py() == "" and errors[0].code == 9008


@pytest.mark.parametrize("provider", ["CCN", "NID", "EML", "AFF", "AGE, range=-9..9"])
def test_no_message_holds_a_clear_value(provider):
    values = [
        "Confidential Words \u00e9",
        "12-secretive-34567",
        "secretive@",
        "@@@secretive",
        "4556secretive",
    ]
    errors = []
    name, _, operands = provider.partition(",")
    korv.mask(values, f"{name}, secret=test{',' + operands if operands else ''}", SECRETS, errors=errors)
    for error in errors:
        assert "secretive" not in repr(error) and "Confidential" not in repr(error)
    if name in ("CCN", "AGE"):
        assert len({error.row for error in errors}) == len(values)
