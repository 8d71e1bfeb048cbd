"""Secrets come from a file that only the user may read, or as bytes, and show up nowhere else."""

import os
import pickle

import korv
import pytest
from conftest import CARD, SECRETS

RULES = "A = CCN, secret=test"
SECRET = SECRETS["test"]
MASKED = korv.Masker(RULES, SECRETS).mask_column("A", [CARD])


def forms(secret):
    return [secret, secret.hex().encode(), repr(secret).encode(), secret.hex().upper().encode()]


def assert_hidden(data):
    data = data if isinstance(data, bytes) else data.encode()
    assert not any(form in data for form in forms(SECRET))


def test_file_and_bytes_are_the_same(secrets_file):
    assert korv.Masker(RULES, secrets_file).mask_column("A", [CARD]) == MASKED
    assert korv.Masker(RULES, str(secrets_file)).mask_column("A", [CARD]) == MASKED
    assert korv.mask([CARD], "CCN, secret=test", secrets_file) == MASKED
    assert korv.Masker(RULES, {"test": bytes(32)}).mask_column("A", [CARD]) != MASKED


def test_a_file_that_others_may_read_is_refused(secrets_file):
    secrets_file.chmod(0o640)
    with pytest.raises(korv.MaskError, match="chmod 600"):
        korv.Masker(RULES, secrets_file)
    with pytest.raises(korv.MaskError, match="No such file"):
        korv.Masker(RULES, secrets_file.with_name("none.txt"))


@pytest.mark.parametrize(
    "secrets",
    [
        {"test": b"short"},
        {"test": bytes(65)},
        {"Test": SECRET},
        {"": SECRET},
        {SECRET.hex(): SECRET},
        {"te\0st": SECRET},
    ],
)
def test_names_and_lengths(secrets):
    with pytest.raises(ValueError, match="16 to 64 bytes; its name has lower-case letters") as caught:
        korv.Masker(RULES, secrets)
    assert_hidden(repr(caught.value))


def test_repr_shows_no_secret(secrets_file):
    for secrets in (SECRETS, secrets_file):
        masker = korv.Masker(RULES, secrets)
        masker.mask_column("A", [CARD])
        everything = [masker, masker._settings, *vars(masker).values(), masker.columns(["A"])]
        for handles in masker._idle.values():
            everything += [vars(handle) for handle in handles]
        for thing in everything:
            assert_hidden(repr(thing) + str(thing))


def test_pickle_holds_no_secret(secrets_file):
    masker = korv.Masker(RULES, secrets_file)
    masker.mask_column("A", [CARD])
    data = pickle.dumps(masker)
    assert_hidden(data)
    copy = pickle.loads(data)
    assert copy.mask_column("A", [CARD]) == MASKED
    assert_hidden(repr(vars(copy)))


def test_pickle_refuses_secrets_that_are_bytes():
    with pytest.raises(TypeError, match="put them into a secrets file and give its path") as caught:
        pickle.dumps(korv.Masker(RULES, SECRETS))
    assert_hidden(repr(caught.value))
    assert pickle.loads(pickle.dumps(korv.Masker("A = CCN, method=transpose, key=5"))).mask_column(
        "A", [CARD]
    )


def test_paths_do_not_depend_on_the_folder(secrets_file, tmp_path, monkeypatch):
    monkeypatch.chdir(secrets_file.parent)
    masker = korv.Masker(RULES, secrets_file.name)
    data = pickle.dumps(masker)
    monkeypatch.chdir("/")
    assert masker.mask_column("A", [CARD]) == pickle.loads(data).mask_column("A", [CARD]) == MASKED


def test_another_secret_of_the_same_name_is_refused(secrets_file):
    masker = korv.Masker(RULES, secrets_file)
    masker.mask_column("A", [CARD])
    data = pickle.dumps(masker)
    secrets_file.write_text(f"test = {bytes(32).hex()}\n")
    with pytest.raises(korv.MaskError, match="is not the one that this Masker began with"):
        pickle.loads(data).mask_column("A", [CARD])
    with pytest.raises(korv.MaskError, match="is not the one that this Masker began with") as caught:
        masker.columns(["A"])
    assert_hidden(repr(caught.value))


def test_secrets_are_wiped():
    masker = korv.Masker(RULES, SECRETS)
    buffers = masker._settings.secrets._buffers
    assert bytes(buffers[0]) == SECRET
    masker.close()
    assert bytes(buffers[0]) == bytes(32)


def test_the_environment_is_left_alone(secrets_file):
    before = dict(os.environ)
    korv.Masker(RULES, secrets_file).mask_column("A", [CARD])
    assert dict(os.environ) == before
