"""Compiles cost.cpp as users would and compares the code of each pair of functions.

Usage: same_code.py OBJECT-FOLDER SOURCE INCLUDE-FOLDER COMPILER [FLAG...]
Of by_hand_X and with_header_X those instructions are compared that a program without a fault can
reach: not the clean-up of a stack that unwinds, which the compiler sets apart. They must be the
same, or no more than by hand and with the same calls, where only registers and order differ. Counts by
callgrind would depend on inputs, and see only the instructions that these reach.
"""
import os
import re
import subprocess
import sys

JUMP = re.compile(r"(j\w+)\s+([0-9a-f]+) <")


def functions(path: str) -> dict[str, dict[int, str]]:
    """The functions of an object: {name: {address: instruction with its relocation}}."""
    text = subprocess.run(["objdump", "-drw", "--no-show-raw-insn", path], check=True,
                          capture_output=True, text=True, env={**os.environ, "LC_ALL": "C"}).stdout
    found = {}
    for name, body in re.findall(r"^[0-9a-f]+ <([\w.]+)>:\n((?:.+\n?)*)", text, re.M):
        lines = re.findall(r"^\s*([0-9a-f]+):\t(\S.*)$", body, re.M)
        found[name] = {int(address, 16): code.strip() for address, code in lines}
    return found


def reachable(code: dict[int, str]) -> list[str]:
    """What can run from the first instruction on, in order, with jumps as distances from there."""
    order = sorted(code)
    follower = dict(zip(order, order[1:]))
    seen: set[int] = set()
    waiting = [order[0]]
    while waiting:
        at = waiting.pop()
        if at in seen or at not in code:
            continue
        seen.add(at)
        jump = JUMP.match(code[at])
        if jump:
            waiting.append(int(jump[2], 16))
        ends = code[at].startswith(("ret", "ud2")) or (jump and jump[1] == "jmp")
        if not ends and at in follower:
            waiting.append(follower[at])
    return [normal(code[at], order[0]) for at in sorted(seen)
            if not re.match(r"(cs |data16 )*nop|xchg +%ax,%ax|lea +0x0\(%e?[sd]i", code[at])]


def normal(instruction: str, start: int) -> str:
    jump = JUMP.match(instruction)
    if jump:
        return f"{jump[1]} {int(jump[2], 16) - start:+x}"
    # "call 20 <f+0x20>\t20: R_386_PLT32 g": the name of the callee says it all.
    place, _, symbol = instruction.partition(": R_")
    if symbol:
        return re.sub(r"(\s+[0-9a-f]+ <.*)?\s[0-9a-f]+$", "", place) + " " + symbol.split("\t")[-1]
    return re.sub(r"\s*#.*|\s*<.*>", "", instruction)


def calls(code: list[str]) -> list[str]:
    return sorted(line for line in code if line.startswith("call") and "get_pc_thunk" not in line)


def main() -> int:
    folder, source, include, *command = sys.argv[1:]
    faults = 0
    for standard, exceptions in (("c++17", "-fno-exceptions"), ("c++20", "-fexceptions")):
        target = os.path.join(folder, f"cost-{standard}{exceptions}.o")
        subprocess.run([*command, "-O2", f"-std={standard}", exceptions, f"-I{include}",
                        "-c", source, "-o", target], check=True)
        code = functions(target)
        pairs = {match[1] for name in code if (match := re.fullmatch(r"by_hand_(\w+)", name))}
        if len(pairs) < 15:
            sys.exit(f"{target}: only {len(pairs)} pairs")
        for name in sorted(pairs):
            hand = reachable(code[f"by_hand_{name}"])
            header = reachable(code[f"with_header_{name}"])
            if hand == header:
                verdict = "the same"
            elif len(header) <= len(hand) and calls(hand) == calls(header):
                verdict = "no more, the same calls"
            else:
                faults += 1
                both = ["-- by hand", *hand, "-- with the header", *header]
                verdict = "NOT the same\n" + "\n".join(both)
            print(f"{standard} {exceptions} {name}: {len(hand)} and {len(header)} instructions, "
                  f"{verdict}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
