#!/usr/bin/env python3
"""Writes the demo's customer records to standard output: the same ones every time.

    python3 make_customers.py > customers.csv
    python3 make_customers.py --rows 100000 > many.csv

The people are invented. Rows with a NOTE that begins with "!" are difficult on purpose. With --rows
the file has 12 columns (no SEGMENT), more empty and more quoted fields, and the difficult rows come
again every 1,000 rows.
"""
import argparse
import csv
import sys

ROWS = 240
PERIOD = 1000

FIRST = ("Anna Bernd Chloé Dmitri Élodie Fatima Günther Håkon Ilse José Karim Léa Małgorzata Noah "
         "Ólafur Petra Quentin Róisín Søren Thandi Uwe Věra Wei Ximena Yusuf Zoë Łukasz Мария Νίκος "
         "山田").split()
LAST = ("Müller Smith García Rossi Lefèvre Jensen Kowalski Nagy O'Brien van-Dijk Ångström Papadopoulos "
        "Silva Novák Horvat Yılmaz Иванов Okafor 佐藤 Dubois Schäfer Brown Costa Eriksen Peña "
        "Weiß MacDonald Tremblay Šimić Fernández").split()
CITIES = ("Berlin Paris Madrid Roma London Wien Zürich København Kraków Lisboa Athína Dublin Praha "
          "Oslo Malmö Gent Lyon Porto Graz Basel").split()
DOMAINS = "mail.example post.example Firma.Example uni.example".split()
SEGMENTS = "A B C D".split()


class Random:
    """A linear congruential generator, so that the rows depend on no library's generator."""

    def __init__(self, seed):
        self.state = seed

    def below(self, bound):
        self.state = (self.state * 6364136223846793005 + 1442695040888963407) % 2**64
        return (self.state >> 33) % bound

    def pick(self, items):
        return items[self.below(len(items))]

    def digits(self, count):
        return "".join(str(self.below(10)) for _ in range(count))


def check_digit(number):
    total = 0
    for i, digit in enumerate(reversed(number)):
        product = int(digit) * (2 if i % 2 == 0 else 1)
        total += product - 9 if product > 9 else product
    return str((10 - total % 10) % 10)


def card(random):
    prefix, length = random.pick([("4", 16), ("4", 13), ("51", 16), ("55", 16), ("37", 15),
                                  ("6011", 16), ("3528", 19)])
    number = prefix + random.digits(length - 1 - len(prefix))
    number += check_digit(number)
    separator = random.pick(["", "", " ", "-"])
    if not separator:
        return number
    return separator.join(number[i:i + 4] for i in range(0, len(number), 4))


def date(random, first_year, years):
    return first_year + random.below(years), 1 + random.below(12), 1 + random.below(28)


def ascii_name(name):
    table = str.maketrans("éüåóøěèöäßñşıćŚšŁłáí", "euaooeeoasnsiccsLlai")
    text = "".join(c for c in name.translate(table) if c.isascii() and c.isalpha())
    return text.lower() or "kunde"


def record(number, random):
    first, last = random.pick(FIRST), random.pick(LAST)
    birth = date(random, 1935, 70)
    signup = date(random, 2001, 23)
    return {
        "ID": str(100000 + number),
        "First Name": first,
        "LAST_NAME": last,
        "EMAIL": f"{ascii_name(first)}.{ascii_name(last)}{random.below(100)}@{random.pick(DOMAINS)}",
        "PHONE": f"+{random.pick(['49', '33', '44'])} {random.digits(3)} {random.digits(7)}",
        "BIRTH_DATE": "{:04}-{:02}-{:02}".format(*birth),
        "CARD": card(random),
        "NATIONAL_ID": f"{random.digits(3)}-{random.digits(2)}-{random.digits(4)}",
        "CITY": random.pick(CITIES),
        "ACCOUNT": str(1 + random.below(9)) + random.digits(8) + str(1 + random.below(9)),
        "SIGNUP": "{:02}.{:02}.{:04}".format(*signup[::-1]),
        "SEGMENT": random.pick(SEGMENTS),
        "NOTE": random.pick(["", "", "", "calls in the morning", "prefers e-mail", "VIP"]),
    }


# What a row number gets instead of its plain values.
DIFFICULT = {
    3: {"NOTE": '! says "hello", then hangs up'},
    7: {"LAST_NAME": 'von "Ritter", Freiherr', "NOTE": "! quotes and a comma in a name"},
    11: {"NOTE": "! first line\nsecond line\n\nfourth line"},
    17: {"CARD": "4111 1111", "NOTE": "! card too short"},
    23: {"CARD": "41111111111111111111111", "NOTE": "! card too long"},
    29: {"CARD": "4111-11I1-1111-1111", "NOTE": "! a letter among the digits"},
    31: {"CARD": "", "EMAIL": "", "CITY": "", "BIRTH_DATE": "", "NOTE": "! empty fields"},
    37: {"EMAIL": "no.address.example", "NOTE": "! no at sign"},
    41: {"EMAIL": "two@at@signs.example", "NOTE": "! two at signs"},
    43: {"EMAIL": "x@post.example", "NOTE": "! user part as short as the prefix"},
    47: {"BIRTH_DATE": "2000-02-29", "NOTE": "! a leap day"},
    53: {"BIRTH_DATE": "1999-02-29", "NOTE": "! a day that never was"},
    59: {"BIRTH_DATE": "29/02/2000", "NOTE": "! another date format"},
    61: {"CITY": "Entenhausen", "NOTE": "! a city that is not in the lookup file"},
    67: {"CITY": "ZÜRICH", "NOTE": "! capitals"},
    71: {"NATIONAL_ID": "123-45-678", "NOTE": "! identity number too short"},
    73: {"NATIONAL_ID": "unknown", "NOTE": "! identity number without a digit"},
    79: {"First Name": "  ", "NOTE": "! blanks only"},
    83: {"ACCOUNT": "12345X", "NOTE": "! a letter in a number"},
    89: {"ACCOUNT": "1234554321", "NOTE": "! a number that is its own reverse"},
    97: {"LAST_NAME": "X", "NOTE": "! a single letter"},
    101: {"LAST_NAME": "Anna", "First Name": "😀 Emoji", "NOTE": "! beyond the basic plane"},
    103: {"SIGNUP": "31.01.2024", "NOTE": "! the end of a long month"},
    107: {"SIGNUP": "00.00.0000", "NOTE": "! a date of zeros"},
    109: {"NOTE": "x" * 9000},
    113: {"CARD": "4000 0000 0000 0000", "NOTE": "! a wrong check digit"},
    127: {"PHONE": "—", "NOTE": "! a dash for a phone number"},
    131: {"EMAIL": "ÄÖÜ.grün@Post.Example", "NOTE": "! letters beyond ASCII in an address"},
    137: {"PHONE": "(030) 12 34 56 / 78", "NOTE": "! a phone number in pieces"},
    139: {"NOTE": '"'},
    149: {"NOTE": "! ends in a quote\""},
    151: {"LAST_NAME": "Anna-Anna", "NOTE": "! a name in two halves"},
    157: {"CARD": "٤١١١١١١١١١١١١١١١", "NOTE": "! digits of another script"},
}


# NOTE in a file of many rows: most need quotes, as free text does.
NOTES = ["", "VIP", "calls in the morning, never at noon", 'says "hello"', "Zürich, 2nd floor",
         "moved: first Köln, then Århus", "two\nlines", "prefers e-mail"]
# Columns that may be empty in a file of many rows.
OPTIONAL = ["First Name", "EMAIL", "PHONE", "BIRTH_DATE", "CARD", "NATIONAL_ID", "CITY", "SIGNUP"]


def demo_records():
    random = Random(2024)
    for number in range(1, ROWS + 1):
        row = record(number, random)
        row.update(DIFFICULT.get(number, {}))
        yield row


def many_records(rows):
    random = Random(1)
    for number in range(1, rows + 1):
        row = record(number, random)
        del row["SEGMENT"]
        row["NOTE"] = random.pick(NOTES)
        if random.below(8) == 0:
            row[random.pick(OPTIONAL)] = ""
        row.update(DIFFICULT.get(number % PERIOD, {}))
        yield row


def write(records, file):
    """Writes records, of which there is at least one, as CSV to a text file."""
    first = next(records)
    writer = csv.writer(file, lineterminator="\n")
    writer.writerow(first)
    writer.writerow(first.values())
    for row in records:
        writer.writerow(row.values())


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("--rows", type=int, help="write this many records instead of the demo's")
    arguments = parser.parse_args()
    sys.stdout.reconfigure(encoding="utf-8", newline="")
    write(demo_records() if arguments.rows is None else many_records(arguments.rows), sys.stdout)


if __name__ == "__main__":
    main()
