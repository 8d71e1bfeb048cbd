"""Ways to mask the table of make_vectors.py. Each one returns its rows, as lists of texts and None, and its
faults, as a sorted list of (row, column, message)."""
import csv
import os
import re
import subprocess

# The program shows where the value is before the engine's message.
REPORT_LINE = re.compile(r".*?: row (\d+), column (\w+): (.*)")


def read_table(path):
    """A CSV file as the program reads it: an empty field is NULL."""
    with open(path, encoding="utf-8", newline="") as file:
        return [[field or None for field in row] for row in csv.reader(file)]


def c_call(folder, mask_table):
    """By mask_table.c. Its faults also have the code, before the message."""
    with open(os.path.join(folder, "table.fields"), "rb") as table:
        names = read_table(os.path.join(folder, "table.csv"))[0]
        run = subprocess.run([mask_table, str(len(names)), os.path.join(folder, "rules.txt"),
                              os.path.join(folder, "secrets.txt")],
                             stdin=table, capture_output=True, check=True)
    fields = [None if field == b"\xFF" else field.decode() for field in run.stdout.split(b"\0")[:-1]]
    rows = [fields[at:at + len(names)] for at in range(0, len(fields), len(names))]
    faults = [line.split("\t") for line in run.stderr.decode().splitlines()]
    return rows, sorted((int(row), column, code, message) for row, column, code, message in faults)


def command_line(folder, program):
    """By korv-mask. Its NULL is an empty field."""
    output, report = (os.path.join(folder, name) for name in ("masked.csv", "report"))
    run = subprocess.run([program, os.path.join(folder, "table.csv"), "-r", os.path.join(folder, "rules.txt"),
                          "--secrets", os.path.join(folder, "secrets.txt"), "-o", output, "--report", report],
                         stderr=subprocess.PIPE, check=False)
    if run.returncode != 1:  # some values fail, on purpose
        raise RuntimeError(run.stderr.decode())
    with open(report, encoding="utf-8") as file:
        *lines, _ = file.read().splitlines()  # the last line is a summary
    matches = [REPORT_LINE.fullmatch(line) for line in lines]
    return read_table(output)[1:], sorted((int(match[1]), match[2], match[3]) for match in matches)
