"""The survivors that change nothing, each with the reason: equivalent.txt."""

from pathlib import Path

Key = tuple[str, str, str]


def read_explained(path: Path) -> dict[Key, str]:
    """The reasons by mutant. A block is a place, a line with "- ", one with "+ " and the reason."""
    found: dict[Key, str] = {}
    lines = [line for line in path.read_text().splitlines() if not line.startswith("#")]
    for block in "\n".join(lines).split("\n\n"):
        if not block.strip():
            continue
        place, before, after, *reason = block.strip().splitlines()
        key = place, before.removeprefix("- "), after.removeprefix("+ ")
        if not before.startswith("- ") or not after.startswith("+ ") or not reason:
            raise SystemExit(f"{path.name}: this entry is incomplete:\n{block}")
        if key in found:
            raise SystemExit(f"{path.name}: this entry is there twice:\n{block}")
        found[key] = " ".join(line.strip() for line in reason)
    return found
