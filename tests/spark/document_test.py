"""docs/scale.md: its examples print what stands there."""
import os
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/documents"))
from run_document import BLOCK, NAMED, run  # noqa: E402


def test_examples_print_what_the_document_says(tmp_path):
    variables = {**os.environ, "PATH": f"{pathlib.Path(sys.executable).parent}:{os.environ['PATH']}"}
    compared = 0
    printed = None
    for language, content in BLOCK.findall((ROOT / "docs/scale.md").read_text(encoding="utf-8")):
        if language == "sh":
            printed = run(content, tmp_path, variables)
        elif language == "text" and printed is not None:
            assert printed == content
            printed = None
            compared += 1
        elif named := NAMED.match(content):
            (tmp_path / named.group(1)).write_text(content, encoding="utf-8")
    assert compared == 2
