"""Writes a table with a column for each of many rules: all providers and methods, narrow and wide text, NULL,
and values that fail.

    make_vectors.py FOLDER [--disguises]

FOLDER then holds the table as table.csv and as table.fields (see mask_table.c), the rules as rules.txt, their
secrets as secrets.txt, and the lookup file cities.txt. With --disguises, rules that need a secret are left out. The
values come from SHAKE-256, so that every release of Python makes the same ones."""
import csv
import hashlib
import os
import sys

ROWS = 400
CITIES = ["Paris = Lyon", "Zürich = Bern", "東京 = 大阪", "Oslo = Bergen"]

LETTERS = "abcdefghijklmnopqrstuvwxyz"
WIDE = "äéßñøŁжλ中😀"


class Source:
    """Random choices that depend on a name alone."""

    def __init__(self, name):
        self._number = int.from_bytes(hashlib.shake_256(name.encode()).digest(400), "big")

    def below(self, bound):
        self._number, choice = divmod(self._number, bound)
        return choice

    def one(self, choices):
        return choices[self.below(len(choices))]

    def text(self, alphabet, shortest, longest):
        return "".join(self.one(alphabet) for _ in range(shortest + self.below(longest - shortest + 1)))


def card(source):
    number = source.text("0123456789", 11, 18)
    doubled = sum(sum(divmod(int(digit) * (2 if place % 2 == 0 else 1), 10))
                  for place, digit in enumerate(reversed(number)))
    number += str(-doubled % 10)
    separator = source.one(["", "", " ", "-"])
    return separator.join(number[at:at + 4] for at in range(0, len(number), 4))


def number(source):
    digits = source.text("0123456789", 1, 20)
    return source.one(["", "+", "(", "№ "]) + source.one([digits, f"{digits[:3]}-{digits[3:]}"])


def social_security_number(source):
    digits = source.text("0123456789", 9, 9)
    return source.one([digits, f"{digits[:3]}-{digits[3:5]}-{digits[5:]}"])


def email(source):
    user = source.text(LETTERS + LETTERS.upper() + "0123456789", 1, 12)
    return user + source.one(["", ".x", "_1", "-"]) + "@" + source.text(LETTERS, 1, 8) + source.one(
        [".org", ".example", ".Ünïcode.example"])


def date(source):
    return f"{1 + source.below(9999):04}-{1 + source.below(12):02}-{1 + source.below(31):02}" + source.one(
        ["", "", "", " 14:30", "T23:59:59.125Z"])


def name(source):
    return source.one([source.text(LETTERS, 1, 10).capitalize(), source.text(WIDE + LETTERS, 1, 8)])


def city(source):
    return source.one(["Paris", "PARIS", "Zürich", "東京", "oslo", "Rome"])


def text(source):
    return source.text(LETTERS + LETTERS.upper() + "0123456789   ,.;-\"'=" + source.one(["", WIDE]), 1, 60)


def integer(source):
    return source.one(["", "", "-"]) + str(source.below(10 ** source.one([1, 4, 9, 9, 10, 18])))


# Rules with what they mask. Some of the values do not fit their rules: these fail.
RULES = (
    ("CCN, secret=crm", card), ("CCN, secret=crm, strict", card), ("CCN, secret=hr, prefix=0, last=4", card),
    ("CCN, secret=crm, scope=cards, prefix=8, type=wide", card),
    ("CCN, method=transpose, key=17", card), ("CCN, method=transpose, key=999999999, shift=9, prefix=0", card),
    ("NID, secret=crm", number), ("NID, secret=crm, prefix=2, last=1, on-error=null", number),
    ("NID, secret=hr, letters", text), ("NID, secret=crm, country=us", social_security_number),
    ("NID, secret=crm, integer", integer), ("NID, secret=crm, integer=int4", integer),
    ("NID, secret=crm, integer=int8, on-error=const, value=0", integer),
    ("NID, method=transpose, key=5", number),
    ("EML, secret=crm", email), ("EML, secret=crm, length=51, domain=keep", email),
    ("EML, secret=hr, domain=masked.example, type=wide", email), ("EML, secret=crm, method=ff1", email),
    ("EML, method=transpose, key=4711, prefix=1, case=keep", email),
    ("AGE, secret=crm, range=-30..30", date), ("AGE, secret=crm, range=1..3000, per=ID", date),
    ("AGE, method=move, years=-1, days=45, limit=400", date),
    ("AGE, method=move, months=1, format=DD.MM.YYYY|YYYY-MM-DD", date),
    ("AFF, secret=crm", text), ("COL, secret=hr, scope=notes", name), ("AFF, method=shuffle", text),
    ("AFF, method=reverse, unchanged=error", name), ("AFF, method=number", integer),
    ("HASH, secret=crm, list=Red;Green;Größe;緑", name), ("HASH, method=seed, seed=autumn, list=a;b;c;d;e", name),
    ("LKP, file=cities.txt", city), ("LKP, file=cities.txt, default=Ålesund", city),
    ("KEEP", text), ("NULL", text), ("CONST, value=masked", text),
)
SECRETS = ("crm", "hr")


def value(rule, make, row):
    """None is NULL."""
    source = Source(f"{rule} {row}")
    if source.below(20) == 0:
        return None
    if source.below(20) == 0:
        return source.one(["?", "x", "@", "a@", "0", "-", "é", "😀", "\t", "0000-00-00", "1" * 40, "x" * 8001])
    return make(source)


def columns(disguises=False):
    """The columns' names, rules and makers; the first column is one that other rules read."""
    return [("ID", "KEEP", None)] + [(f"C{place}", rule, make) for place, (rule, make) in enumerate(RULES, 1)
                                     if not (disguises and "secret=" in rule)]


def write(folder, disguises=False):
    table = [[name for name, _, _ in columns(disguises)]]
    for row in range(ROWS):
        table.append([str(row % 37)] + [value(rule, make, row) for _, rule, make in columns(disguises)[1:]])
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "table.csv"), "w", encoding="utf-8", newline="") as file:
        csv.writer(file, lineterminator="\n").writerows(table)
    with open(os.path.join(folder, "table.fields"), "wb") as file:
        for row in table:
            file.writelines(b"\xFF\0" if field is None else field.encode() + b"\0" for field in row)
    with open(os.path.join(folder, "rules.txt"), "w", encoding="utf-8") as file:
        file.writelines(f"{name} = {rule}\n" for name, rule, _ in columns(disguises))
    with open(os.path.join(folder, "cities.txt"), "w", encoding="utf-8") as file:
        file.writelines(f"{line}\n" for line in CITIES)
    secrets = os.path.join(folder, "secrets.txt")
    with open(os.open(secrets, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "w", encoding="ascii") as file:
        file.writelines(f"{secret} = {hashlib.sha256(secret.encode()).hexdigest()}\n" for secret in SECRETS)


if __name__ == "__main__":
    write(sys.argv[1], "--disguises" in sys.argv[2:])
