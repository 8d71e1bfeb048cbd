"""Runs a session of gdb again and compares what it prints.

Usage: transcript.py (static | live) FILE PROGRAM SOURCE-FOLDER [GDB-OPTION...]
FILE has lines of the form "(gdb) COMMAND", each followed by its output; in a Markdown file
the block ```gdb is used. Exit status 77 where a live session is impossible: nothing may be traced here.
"""
import os
import re
import subprocess
import sys

SKIPPED = 77
# What gdb says of threads and of the system, which has nothing to do with the session.
NOISE = re.compile(r"^(\[|Using host libthread_db|warning: ).*\n|^\n", re.M)


def session(path: str) -> str:
    with open(path, encoding="utf-8") as file:
        text = file.read()
    if path.endswith(".md"):
        blocks = re.findall(r"^```gdb\n(.*?)^```$", text, re.M | re.S)
        assert len(blocks) == 1, f"{path}: {len(blocks)} sessions"
        text = blocks[0]
    return text


def comparable(text: str) -> str:
    """Without addresses and numbers of lines, and with paths from the source folder on."""
    text = re.sub(r"\S*/(?=tests/gdb/)", "", NOISE.sub("", text))
    text = re.sub(r"(, line |[.]c:|^)[0-9]+(?=[.\n\t])", r"\1N", text, flags=re.M)
    return re.sub(r"0x[0-9a-f]+", "0x...", text)


def main() -> int:
    kind, path, program, source, *options = sys.argv[1:]
    expected = session(path)
    commands = re.findall(r"^\(gdb\) (.*)$", expected, re.M)
    assert commands, f"{path}: no commands"
    arguments = ["gdb", "-nx", "-q", "-batch", "-iex", "set debuginfod enabled off",
                 "-iex", "set print pretty on", *options, program]
    for command in commands:
        arguments += ["-ex", f"echo (gdb) {command}\\n", "-ex", command]
    environment = {**os.environ, "LC_ALL": os.environ.get("KORV_LOCALE", "C.UTF-8")}
    done = subprocess.run(arguments, cwd=source, env=environment, text=True, encoding="utf-8",
                          timeout=120, check=False, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    untraced = re.search(r"Could not trace the inferior|ptrace: Operation not", done.stdout)
    if kind == "live" and untraced:
        print(done.stdout)
        return SKIPPED
    found, expected = comparable(done.stdout), comparable(expected)
    if found != expected:
        print(f"== printed\n{found}== expected, in {path}\n{expected}")
        return 1
    print(f"{len(commands)} commands print what {path} says")
    return 0


if __name__ == "__main__":
    sys.exit(main())
