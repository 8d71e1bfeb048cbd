"""The examples of the manual run, in their order, as they stand there."""

import re

from conftest import ROOT


def test_examples(tmp_path, monkeypatch, capfd):
    text = (ROOT / "python/README.md").read_text()
    blocks = re.findall(r"^```python\n(.*?)^```", text, re.DOTALL | re.MULTILINE)
    assert text.index("```python") < text.index("\n## ")
    monkeypatch.chdir(tmp_path)
    names = {}
    for block in blocks:
        exec(compile(block, "python/README.md", "exec"), names)
    out, messages = capfd.readouterr()
    assert messages == ""
    lines = out.splitlines()
    assert not re.search("lovelace|turing|morning|4556 7375 8689 9855'?, ", out)
    assert re.search(r"\['4556 73\d\d \d{4} \d{4}'\]", out)
    assert "1 value failed: row 0, column CARD: CCN error 2, too few digits: " in out
    assert "2" in lines and "['']" in lines
    assert "['4556 7375 8689 9855']" in lines
    assert (tmp_path / "masked.parquet").exists()


def test_every_name_is_documented():
    import korv

    text = (ROOT / "python/README.md").read_text()
    for name in korv.__all__:
        assert f"korv.{name}" in text
