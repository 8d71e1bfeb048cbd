"""Every exported name is declared by one header, with a comment."""
import pathlib
import re
import sys


def exports(path):
    return [line.split()[1] for line in path.read_text(encoding="ascii").splitlines()
            if re.match(r"(function|data) ", line)]


def documented(name, header):
    """Whether the paragraph that declares the name opens with a comment; None if no paragraph does."""
    for paragraph in re.split(r"\n\s*\n", header):
        declaration = re.search(rf"^KORV_API\b[^;]*?\b{name}\b\s*[(\[]", paragraph, flags=re.M)
        if declaration:
            return "*/" in paragraph[:declaration.start()]
    return None


def main():
    root = pathlib.Path(sys.argv[1])
    headers = [path.read_text() for path in sorted((root / "include/korv").glob("*.h"))]
    names = [name for folder in ("src", "datacnv", "mask")
             for name in exports(root / folder / "exports.txt")]
    faults = 0
    for name in names:
        found = [answer for answer in (documented(name, text) for text in headers)
                 if answer is not None]
        if found != [True]:
            faults += 1
            print(f"{name}: " + ("not documented" if found == [False]
                                 else f"declared by {len(found)} headers"))
    print(f"{len(names)} names, {faults} with faults")
    return 1 if faults or not names else 0


if __name__ == "__main__":
    sys.exit(main())
