"""Every exported name is declared with a comment, in the prototype check, and used by a test."""

import pathlib
import re
import sys


def exports(path):
    return [line.split()[1] for line in path.read_text(encoding="ascii").splitlines()
            if re.match(r"(function|data) ", line)]


def without_comments(text):
    """The text with comments and string contents blanked."""
    pattern = r'/\*.*?\*/|//[^\n]*|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\''
    return re.sub(pattern, lambda match: '""' if match[0][0] == '"' else " ", text, flags=re.S)


def documented(name, header):
    """Whether the paragraph that declares the name opens with a comment."""
    for paragraph in re.split(r"\n\s*\n", header):
        declaration = re.search(rf"^KORV_API\b[^;]*?\b{name}\b\s*[(\[]", paragraph, flags=re.M)
        if declaration:
            return "*/" in paragraph[:declaration.start()]
    return None


def main():
    root = pathlib.Path(sys.argv[1])
    headers = [path.read_text() for path in sorted((root / "include/korv").glob("*.h"))]
    prototypes = "\n".join(without_comments((root / "tests/interface" / name).read_text())
                           for name in ("prototypes.c", "mask_prototypes.c"))
    # Those of the interface and of concurrency enter every function, whether others test it or not.
    tests = "\n".join(without_comments(path.read_text())
                      for pattern in ("*.c", "*.cpp", "*.h")
                      for path in sorted((root / "tests").rglob(pattern))
                      if path.parent.name not in ("concurrency", "interface", "support"))
    names = [name for folder in ("src", "datacnv", "mask")
             for name in exports(root / folder / "exports.txt")]
    if len(names) != len(set(names)):
        print("a name is listed twice")
        return 1

    faults = 0
    for name in names:
        found = [answer for answer in (documented(name, text) for text in headers)
                 if answer is not None]
        complaints = []
        if len(found) != 1:
            complaints.append(f"declared by {len(found)} headers")
        elif not found[0]:
            complaints.append("not documented")
        if not re.search(rf"\b{name}\b", prototypes):
            complaints.append("not in the prototype check")
        if not re.search(rf"\b{name}\b", tests):
            complaints.append("not tested")
        if complaints:
            faults += 1
            print(f"{name}: {', '.join(complaints)}")
    print(f"{len(names)} names, {faults} with faults")
    return 1 if faults or not names else 0


if __name__ == "__main__":
    sys.exit(main())
