"""The types and tokens that the gdb printers know are those of the headers.

Usage: tables_test.py SOURCE-FOLDER
"""
import json
import pathlib
import re
import subprocess
import sys

source = pathlib.Path(sys.argv[1])
names = ("TYPES", "FIXED_TEXT", "VARIABLE_TEXT", "TERMINATED_TEXT", "NUMBERS", "MOMENTS", "OPAQUE",
         "TOKENS")
done = subprocess.run(
    ["gdb", "-nx", "-q", "-batch", "-ex", f"python sys.path.append('{source}/gdb')",
     "-ex", "python sys.dont_write_bytecode = True", "-ex", "python import json, korv_values",
     "-ex", f"python print(json.dumps([getattr(korv_values, name) for name in {names}]))"],
    check=True, capture_output=True, text=True, timeout=60)
types, *families, tokens = ({int(number): entry for number, entry in table.items()}
                            for table in json.loads(done.stdout))


def constants(header: str, pattern: str) -> list[tuple[str, str]]:
    return re.findall(pattern, (source / "include/korv" / header).read_text(encoding="utf-8"), re.M)


[enumeration] = constants("datatypes.h", r"enum KorvDataType \{([^}]*)\}")
expected = {int(number): "DATATYPE_101" if name == "101" else name
            for name, number in re.findall(r"KORV_TYPE_(\w+) = (\d+)", enumeration)}
assert len(expected) == 27 and types == expected, f"{types}\n{expected}"

# A type of text says by its name how it ends and how wide it is; every other one has one rule.
for number, name in types.items():
    text = re.search(r"(W?)(VARCHAR|CHAR|SZ)(?:_SZ)?$", name)
    kind = 2 if name.endswith("SZ") else 1 if name.endswith("VARCHAR") else 0
    rules = [index for index, family in enumerate(families) if number in family]
    assert len(rules) == 1 and (rules[0] == kind if text else rules[0] > 2), f"{name}: {rules}"
    assert not text or families[kind][number] == (4 if text[1] else 1), f"{name}: wide or narrow?"

expected = {int(number): name for number, name in constants("tokens.h", r"^    X\((\d+), (\w+)\)")}
assert len(expected) == 89 and tokens == expected, f"{tokens}\n{expected}"
print("27 types and 89 tokens are as in the headers")
