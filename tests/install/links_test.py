"""The relative links of the installed documents lead to installed files and to existing headings."""
import os
import pathlib
import re
from collections.abc import Iterator

from installation import BUILD, InstallationTest, main

CODE = re.compile(r"^```.*?^```$|`[^`\n]*`", re.M | re.S)
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ +(.*)$", re.M)


def text(document: pathlib.Path) -> str:
    return CODE.sub(lambda code: "" if "\n" in code.group() else code.group().strip("`"),
                    document.read_text(encoding="utf-8"))


def anchors(document: pathlib.Path) -> set[str]:
    """The anchors of the headings, as GitHub and GitLab make them."""
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")
            for heading in HEADING.findall(text(document))}


def faults(document: pathlib.Path) -> Iterator[str]:
    for link in LINK.findall(text(document)):
        if re.match(r"\w+:", link):
            continue
        path, _, anchor = link.partition("#")
        target = pathlib.Path(os.path.normpath(document.parent / path)) if path else document
        if not target.exists():
            yield f"{link}: no such file"
        elif anchor and anchor not in anchors(target):
            yield f"{link}: no such heading"


class LinksTest(InstallationTest):
    def test_lead_to_what_is_installed(self):
        self.run_command("cmake", "--install", BUILD, "--prefix", self.prefix)
        documents = sorted(self.prefix.rglob("*.md"))
        self.assertTrue(documents)
        for document in documents:
            with self.subTest(document.relative_to(self.prefix)):
                self.assertEqual([], list(faults(document)))


main()
