#!/usr/bin/env python3
"""Shows the first rows of two CSV files with the same columns side by side.

    python3 side_by_side.py customers.csv masked.csv 3
"""
import csv
import itertools
import sys
import unicodedata


def width(text):
    return sum(2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in text)


def padded(text, columns):
    return text + " " * max(columns - width(text), 0)


def main():
    before_path, after_path, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    with open(before_path, encoding="utf-8", newline="") as before, \
            open(after_path, encoding="utf-8", newline="") as after:
        pairs = zip(csv.DictReader(before), csv.DictReader(after))
        for number, (old, new) in enumerate(itertools.islice(pairs, count), 1):
            print(f"row {number}")
            for column in old:
                mark = " " if old[column] == new[column] else "*"
                print(f"  {mark} {padded(column, 12)} {padded(old[column], 34)} {new[column]}")


if __name__ == "__main__":
    main()
