"""The masking methods of the program against the stored vectors and the plain reference.

All rules of a test are columns of one file; fields below the last value of a column are empty."""
import csv
import io
import os
import random
import sys
from string import ascii_letters, ascii_lowercase, digits as DIGITS
from typing import NamedTuple

import reference

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(os.path.dirname(HERE), "korv-mask"))
from command import STEP, CommandTest, main  # noqa: E402, it needs the path above

SECRETS = [bytes(range(first, first + 32)) for first in (0, 100)]
# How many random values each rule gets.
COUNT = 2000 // STEP


class Column(NamedTuple):
    """A rule, its values, and for each value the text of the column of per=."""
    provider: str
    operands: str
    secret: bytes
    scope: str
    values: list
    others: list

    def expected(self):
        """What the reference makes of the values; nothing where it refuses one."""
        operands, results = reference.operands_of(self.operands), []
        for value, other in zip(self.values, self.others):
            try:
                results.append(reference.mask(self.provider, value, self.secret, self.scope, other,
                                              **operands))
            except ValueError:
                results.append("")
        return results

    def reversible(self):
        return reference.reversible(self.provider, **reference.operands_of(self.operands))


class MethodsTest(CommandTest):
    def masked(self, columns, *arguments, expect=0):
        """What the program makes of the values of each column."""
        names = {secret: f"s{number}" for number, secret in
                 enumerate(dict.fromkeys(column.secret for column in columns))}
        secrets = self.write("secrets.txt", "".join(f"{name} = {secret.hex()}\n"
                                                    for secret, name in names.items()))
        os.chmod(secrets, 0o600)
        header, rules = [], ""
        for number, column in enumerate(columns):
            rule = f"V{number} = {column.provider}, secret={names[column.secret]}"
            rule += f", scope={column.scope}" if column.scope else ""
            rule += f", {column.operands}" if column.operands else ""
            rules += rule.replace("per=ID", f"per=R{number}") + f"\nR{number} = KEEP\n"
            header += [f"V{number}", f"R{number}"]
        file = io.StringIO()
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(header)
        count = max(len(column.values) for column in columns)
        fields = [text + [""] * (count - len(text)) for column in columns
                  for text in (column.values, column.others)]
        writer.writerows(zip(*fields))
        run = self.mask(file.getvalue(), rules, "--secrets", secrets, *arguments, expect=expect)
        rows = list(csv.reader(io.StringIO(run.out.decode(), newline="")))
        self.assertEqual((header, count), (rows[0], len(rows) - 1))
        results = list(zip(*rows[1:]))[::2]
        return [list(texts[:len(column.values)]) for texts, column in zip(results, columns)]

    def assert_column(self, column, expected, actual):
        """Shows the first difference only."""
        for value, wanted, result in zip(column.values, expected, actual, strict=True):
            if wanted != result:
                self.fail(f"{column.provider}, {column.operands}, scope={column.scope}: {value!r} "
                          f"becomes {result!r}, not {wanted!r}")

    def assert_methods(self, columns, expected):
        """The program's results are the expected ones, and --unmask undoes them where it can."""
        for column, wanted, actual in zip(columns, expected, self.masked(columns)):
            with self.subTest(provider=column.provider, operands=column.operands):
                self.assert_column(column, wanted, actual)
        # These columns have the expected values as the values to be unmasked.
        back = [(column, column._replace(values=wanted))
                for column, wanted in zip(columns, expected) if column.reversible()]
        if back:
            results = self.masked([column for _, column in back], "--unmask")
            for (clear, column), actual in zip(back, results):
                with self.subTest("unmask", provider=column.provider, operands=column.operands):
                    self.assert_column(column, clear.values, actual)

    def test_stored_vectors(self):
        columns, expected = {}, {}
        with open(os.path.join(HERE, "vectors.csv"), encoding="utf-8", newline="") as file:
            for row in csv.DictReader(file):
                rule = row["provider"], row["operands"], bytes.fromhex(row["secret"]), row["scope"]
                column = columns.setdefault(rule, Column(*rule, [], []))
                column.values.append(row["value"])
                column.others.append(row["related"])
                expected.setdefault(rule, []).append(row["result"])
        self.assertGreater(len(columns), 50)
        self.assert_methods(list(columns.values()), list(expected.values()))

    def assert_random(self, provider, rules, make):
        """Random values for each of the rules; make(random, operands) returns one."""
        columns = []
        for number, operands in enumerate(rules):
            values = random.Random(f"{provider} {operands}")
            arguments = reference.operands_of(operands)
            columns.append(Column(
                provider, operands, SECRETS[number % 2], ("", "hr")[number // 2 % 2],
                [make(values, arguments) for _ in range(COUNT)],
                [f"{values.randrange(100)}" if "per=" in operands else "" for _ in range(COUNT)]))
        expected = [column.expected() for column in columns]
        for column, results in zip(columns, expected):
            self.assertNotIn("", results, f"{provider}, {column.operands}")
        self.assert_methods(columns, expected)

    # Each tweak of a small range has a table of its own, which the reference makes slowly. The ends
    # of numbers and the short values are therefore a few fixed ones.

    @staticmethod
    def separated(values, numerals, separators):
        """The numerals with some separators between them."""
        return "".join(numeral + (values.choice(separators) if values.random() < 0.1 else "")
                       for numeral in numerals)

    def test_random_cards(self):
        def card(values, operands):
            prefix, last = operands.get("prefix", 6), operands.get("last", 0)
            count = values.randint(max(12, prefix + last + 2), 19)
            middle = "".join(values.choices(DIGITS, k=count - prefix - last))
            digits = (values.choice(("41111111", "55000000"))[:prefix] + middle
                      + values.choice(("0000", "4242", "9913"))[:last])
            return self.separated(values, digits, " -")
        self.assert_random("CCN", ("", "prefix=4, last=4", "prefix=0", "prefix=8, last=2",
                                   "prefix=6, last=4"), card)

    def test_random_numbers(self):
        def number(values, operands):
            prefix, last = operands.get("prefix", 0), operands.get("last", 0)
            alphabet = DIGITS + (ascii_letters if operands.get("letters") else "")
            count = 9 if "country" in operands else values.choice((1, 2, 6, 7, 9, 13, 20, 40))
            if count < 6 and alphabet != DIGITS:
                middle = "a1Bc2"[:count]
            else:
                middle = "".join(values.choices(alphabet, k=count))
            if "country" not in operands:
                middle = "12345678"[:prefix] + middle + "4711"[:last]
            return self.separated(values, middle, "./ –€()+")
        self.assert_random("NID", ("", "prefix=2, last=3", "letters", "letters, prefix=3, last=1",
                                   "country=us"), number)

    def test_random_integers(self):
        def integer(values, operands):
            high = {"int4": 2 ** 31 - 1, "int8": 2 ** 63 - 1}.get(operands["integer"], 10 ** 40)
            return str(values.randrange(high // 10 ** values.randrange(len(str(high))) + 1)
                       * values.choice((1, -1)))
        self.assert_random("NID", ("integer", "integer=int4", "integer=int8"), integer)

    def test_random_texts(self):
        def text(values, _):
            if values.random() < 0.1:
                return values.choice(("a", "Z", "7", "a1", "b-2", "AB 9", "x,y,z,w", "00000"))
            characters = values.choices(DIGITS + ascii_letters, k=values.randint(6, 60))
            return self.separated(values, characters, ' ,;.-"\n\t–€@')
        self.assert_random("AFF", ("",), text)
        self.assert_random("COL", ("method=ff1",), text)

    def test_random_addresses(self):
        def address(values, operands):
            alphabet, least = DIGITS + ascii_letters, 6
            if operands.get("method") != "ff1":
                alphabet, least = alphabet + "äÉßΣ\u0130\U0001f600", 1
            characters = values.choices(alphabet, k=values.randint(least, 30))
            user = self.separated(values, characters, "._+-")
            domain = "".join(values.choices(ascii_lowercase + "ABCÄ", k=values.randint(1, 12)))
            return f"{user}@{domain}.example"
        self.assert_random("EML", ("", "length=13", "length=51, domain=keep", "domain=Test.Example",
                                   "method=ff1"), address)

    def test_random_picks(self):
        def name(values, _):
            characters = ascii_letters + " äÉßΣς\u0131"
            return "".join(values.choices(characters, k=values.randint(1, 30)))
        numbers = ";".join(f"N{number}" for number in range(97))
        self.assert_random("HASH", ("list=Red;Green;Blue", f"list={numbers}"), name)

    def test_random_dates(self):
        def date(values, _):
            return (f"{values.randint(100, 9900):04}-{values.randint(1, 12):02}"
                    f"-{values.randint(1, 28):02}")
        rules = ("range=-30..30", "range=1..20000", "range=-30..30, per=ID")
        self.assert_random("AGE", rules, date)

    def test_refused_values(self):
        """Each value fails and leaves an empty field."""
        cases = (
            ("CCN", "", "41111111111", "4" * 20, "4111a11111111111", "4111/1111/1111/1111"),
            ("CCN", "prefix=8, last=3", "411111111111"),
            ("CCN", "prefix=8, last=4", "411111111111", "4111111111111"),
            ("NID", "", "12a", "ä1", "1\u0663", "1\u0301", "-"),
            ("NID", "prefix=2, last=2", "1234", "123"),
            ("NID", "letters", "aä", "+"),
            ("NID", "country=us", "12345678", "1234567890"),
            ("NID", "integer", "-0", "007", "+5", "1 ", "1.0", "-", "a"),
            ("NID", "integer=int4", "2147483648", "-2147483649", "10000000000"),
            ("NID", "integer=int8", "9223372036854775808", "-9223372036854775809"),
            ("AFF", "", "--", "a\u00e9", "7\u0663", "e\u0301"),
            ("EML", "", "ann", "a@b@c", "@b", "a@"),
            ("EML", "method=ff1", "ann", "a@b@c", "ä@b", "-@b", "@b", "a@"),
            ("AGE", "range=-30..-1", "0001-01-01", "2023-02-29", "2024-1-1", "today"),
            ("AGE", "range=1..30", "9999-12-31"),
            ("AGE", "range=1..30, per=ID", "2024-01-01"))
        columns = [Column(provider, operands, SECRETS[0], "", list(values), [""] * len(values))
                   for provider, operands, *values in cases]
        for column, actual in zip(columns, self.masked(columns, expect=1)):
            with self.subTest(provider=column.provider, operands=column.operands):
                nothing = [""] * len(column.values)
                self.assertEqual(nothing, column.expected())
                self.assert_column(column, nothing, actual)


main()
