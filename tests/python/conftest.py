"""A secret, files with it, and the demo's data."""

import pathlib

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SECRETS = {"test": bytes(range(40, 72))}
CARD = "4556737586899855"
CARDS = [CARD, None, "372199347995065", "", "5580 5325 8975 1386"]


@pytest.fixture
def secrets_file(tmp_path):
    path = tmp_path / "secrets.txt"
    path.touch(mode=0o600)
    path.write_text("".join(f"{name} = {value.hex()}\n" for name, value in SECRETS.items()))
    return path
