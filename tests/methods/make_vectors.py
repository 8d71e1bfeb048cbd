"""Writes vectors.csv: values of all providers and operands, with what the reference makes of them.

The file is written again only when vectors are added: the stored results never change. The values
come from SHAKE-256, not from a generator that another release of Python may change."""
import csv
import hashlib
import os
from string import ascii_letters, digits as DIGITS

from reference import luhn, mask, operands_of

SECRETS = [hashlib.shake_256(f"secret {size}".encode()).digest(size) for size in (32, 16, 64)]


def text(name, count, alphabet=DIGITS):
    """Characters that depend on a name."""
    number = int.from_bytes(hashlib.shake_256(name.encode()).digest(count + 16), "big")
    result = ""
    for _ in range(count):
        number, choice = divmod(number, len(alphabet))
        result += alphabet[choice]
    return result


def card(name, count):
    """A card number with the right check digit."""
    number = text(name, count - 1)
    return next(number + digit for digit in DIGITS if luhn(number + digit) == 0)


def rules():
    """For each provider and operands, the values."""
    yield "CCN", "", [card(f"card {count}", count) for count in range(12, 20)]
    yield "CCN", "", ["4111 1111 1111 1112", "5500-0000-0000-0005", "3782 822463 10005",
                      "000000000000", "9999999999999999999", "--4111 1111-1111 1111 "]
    for prefix in range(9):
        yield "CCN", f"prefix={prefix}", [card(f"prefix {prefix}", 16)]
    for last in range(5):
        yield "CCN", f"prefix=4, last={last}", [card(f"last {last}", 16), text(f"wrong {last}", 15)]
    yield "CCN", "last=4", [card(f"ends {count}", count) for count in range(12, 20)]
    yield "CCN", "prefix=8, last=4", [card("narrow 14", 14), "4111 1111 1111 111"]
    yield "CCN", "prefix=0, last=4", [card("wide 12", 12), "6011-0009-9013-9424"]

    yield "NID", "", [text(f"number {count}", count) for count in range(1, 41)]
    yield "NID", "", ["+49 (0)30 123456-78", "12.34/56", "000-00-0000", "#7", "1–2", "0000000",
                      "999999", "1,234,567", "€ 5"]
    for prefix, last in ((1, 0), (8, 0), (0, 1), (0, 4), (3, 2), (8, 4)):
        yield "NID", f"prefix={prefix}, last={last}", [text(f"ends {prefix} {last}", 13),
                                                       text(f"ends {prefix} {last}", 20)]
    yield "NID", "letters", ["AB123456C", "ab123456c", "de 89 3704 0044 0532 0130 00", "x", "7",
                             "123456789", "Qq", "A1-b2.C3", "ZZZZZZZZ", "X1234567L",
                             text("letters", 40, DIGITS + ascii_letters)]
    yield "NID", "letters, prefix=2, last=1", ["AB123456C", "ab123456C", "GB29 NWBK 6016 1331",
                                                "ab-1-c"]
    for country, count in (("us", 9), ("uk", 6), ("France", 15), ("Spain", 8), ("Italy", 7),
                           ("Canada", 9)):
        yield "NID", f"country={country}", [text(country, count)]
    yield "NID", "country=us, last=4", ["123-45-6789"]
    integers = ["0", "5", "9", "-1", "-9", "10", "99", "-10", "-99", "100000", "999999", "1000000",
                "-1234567", "9999999"]
    yield "NID", "integer", [*integers, "2147483648", "-9223372036854775809", "1" + 29 * "0",
                             "-" + 30 * "9"]
    yield "NID", "integer=int4", [*integers[::2], "999999999", "1000000000", "2147483647",
                                  "-1000000000", "-2147483647", "-2147483648"]
    yield "NID", "integer=int8", [*integers[1::2], "2147483648", "999999999999999999",
                                  "1000000000000000000", "9223372036854775807",
                                  "-1000000000000000000", "-9223372036854775808"]

    mixed = DIGITS + ascii_letters
    yield "AFF", "", [text(f"mixed {count}", count, mixed)
                      for count in (*range(1, 13), 15, 20, 25, 31, 40, 47, 50, 60)]
    yield "AFF", "", ["Smith, John", 'a "b" c', "x\ny", "aaaa", "AAAA", "aB3-dE6", "12345",
                      "123456", "€ 1,50 – net", "O'Neill & Sons (1987)", "000000", "zzzzz",
                      "@home", "a\tb;c|d"]
    yield "AFF", "", [text("long", 3000, ascii_letters)]
    yield "COL", "", ["Smith, John", "aB3-dE6"]

    addresses = ["ann.lee@shop.example", "Ann.Lee@Shop.Example", "JüRGEN@MÜller.example", "a@b",
                 "ΑΣ@ΣΣ.example", "\u0130@x.example", "x_1+tag@y.z.example", "\U0001f600 ß@x"]
    yield "EML", "", addresses
    for operands in ("length=13", "length=51", "domain=mask, length=20", "domain=keep",
                     "domain=Test.Example", "method=pseudonym, domain=keep, length=24"):
        yield "EML", operands, addresses[1:4]
    yield "EML", "method=ff1", ["ann.lee@shop.example", "Ann.Lee@Shop.Example", "a@b", "1@x",
                                "x_1+tag@y.z.example", "j.1987@MÜLLER.example",
                                "first.middle.last.42@mail.example"]
    yield "EML", "method=ff1, domain=keep", ["ann.lee@SHOP.example"]

    names = ["Ann", "ANN", "ann lee", "straße", "ας", "\u0131", "4711", "-", "\U0001f600"]
    yield "HASH", "list=Red;Green;Blue", names
    yield "HASH", "list=One", names[:2]
    yield "HASH", "list=" + ";".join(f"N{number}" for number in range(100)), names

    dates = ["2024-02-29", "1970-01-01", "1987-11-05", "0100-03-01", "9900-12-31"]
    for days in ("-30..30", "1..365", "-3652..-1", "7..7", "0..1"):
        yield "AGE", f"range={days}", dates
    yield "AGE", "range=-30..30, per=ID", dates


def related(number):
    """The column of per=: rows with equal, different and non-ASCII texts."""
    return ("17", "17", "018", "Jürgen", "a,b")[number % 5]


def rows():
    """The rows of the file."""
    for rule, (provider, operands, values) in enumerate(rules()):
        cases = [(value, SECRETS[0], "") for value in values]
        if rule % 3 == 0:
            cases += [(values[0], SECRETS[1], "hr"), (values[-1], SECRETS[2], "Büro 2")]
        for number, (value, secret, scope) in enumerate(cases):
            other = related(number) if "per=" in operands else ""
            result = mask(provider, value, secret, scope, other, **operands_of(operands))
            yield provider, operands, secret.hex(), scope, value, result, other


def main():
    path = os.path.join(os.path.dirname(os.path.abspath(__file__)), "vectors.csv")
    with open(path, "w", encoding="utf-8", newline="") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(("provider", "operands", "secret", "scope", "value", "result", "related"))
        writer.writerows(rows())


if __name__ == "__main__":
    main()
