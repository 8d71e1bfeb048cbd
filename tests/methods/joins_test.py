"""Tables that are masked one by one, with identity numbers in different layouts, join as before.

They are those of examples/joins, and larger ones of the same kind."""
import csv
import datetime
import hashlib
import io
import os
import re
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "korv-mask"))
from command import ROOT, CommandTest, main, read

EXAMPLE = os.path.join(ROOT, "examples", "joins")
sys.path.insert(0, EXAMPLE)
import make_tables  # noqa: E402

LAYOUTS = {"customers": r"\d{3}-\d\d-\d{4}", "orders": r"\d{9}", "payments": r"\d{3} \d\d \d{4}"}


def digits(text):
    return re.sub(r"\D", "", text)


# Two tables, a column of both, and what is compared of it.
JOINS = (("customers", "orders", "IDENTITY", digits),
         ("customers", "payments", "IDENTITY", digits),
         ("orders", "payments", "IDENTITY", digits),
         ("orders", "payments", "ORDER_NO", int),
         ("customers", "orders", "EMAIL", str.lower))


def joined(tables, left, right, column, compared):
    """The numbers of the rows that belong together."""
    places = {}
    for place, row in enumerate(tables[right]):
        places.setdefault(compared(row[column]), []).append(place)
    return [(place, other) for place, row in enumerate(tables[left])
            for other in places.get(compared(row[column]), ())]


def days(tables):
    """The days from each order to each of its payments."""
    date = datetime.date.fromisoformat
    return [(date(tables["payments"][payment]["PAID"])
             - date(tables["orders"][order]["ORDERED"])).days
            for order, payment in joined(tables, *JOINS[3])]


class JoinsTest(CommandTest):
    def setUp(self):
        super().setUp()
        self.write("secrets.txt", f"crm = {hashlib.sha256(b'crm').hexdigest()}\n")
        os.chmod(self.path("secrets.txt"), 0o600)
        self.rules = {name: read(os.path.join(EXAMPLE, f"{name}.txt")).decode()
                      for name in LAYOUTS}

    def tables(self, rows):
        """The bytes of tables of so many rows."""
        for name, contents in make_tables.tables(rows).items():
            make_tables.write(name, contents, self.folder)
        return {name: self.contents(f"{name}.csv") for name in LAYOUTS}

    @staticmethod
    def parsed(tables):
        return {name: list(csv.DictReader(io.StringIO(contents.decode())))
                for name, contents in tables.items()}

    def masked(self, tables, jobs):
        """Masks each table in a run of its own, with a number of jobs for each."""
        return {name: self.mask(tables[name], self.rules[name], "--secrets", "secrets.txt",
                                "--jobs", number, expect=0).out
                for name, number in zip(tables, jobs)}

    def assert_joined(self, clear, masked):
        """Every join has the rows that it had, and no value of a joined column is in clear."""
        clear, masked = self.parsed(clear), self.parsed(masked)
        for join in JOINS:
            pairs = joined(clear, *join)
            self.assertGreater(len(pairs), len(clear["orders"]) // 2)
            self.assertTrue(pairs == joined(masked, *join), join[:3])
            for name in join[:2]:
                for before, after in zip(clear[name], masked[name]):
                    if join[2] != "ORDER_NO":  # one of three digits may stay by chance
                        self.assertNotEqual(before[join[2]], after[join[2]])
        for name, layout in LAYOUTS.items():
            for row in masked[name]:
                self.assertRegex(row["IDENTITY"], rf"\A{layout}\Z")
        self.assertEqual(days(clear), days(masked))
        self.assertNotEqual([row["ORDERED"] for row in clear["orders"]],
                            [row["ORDERED"] for row in masked["orders"]])

    def test_example(self):
        """The files of the example are those of its script, and join."""
        tables = {name: read(os.path.join(EXAMPLE, f"{name}.csv")) for name in LAYOUTS}
        self.assertEqual(self.tables(make_tables.ROWS), tables)
        self.assert_joined(tables, self.masked(tables, "123"))

    def test_large_tables(self):
        """Tables of several chunks. The numbers of jobs make no difference."""
        tables = self.tables(20000)
        masked = self.masked(tables, "138")
        self.assert_joined(tables, masked)
        for jobs in ("813", "221"):
            self.assertTrue(masked == self.masked(tables, jobs), jobs)

    def test_disguised_tables(self):
        """Without a secret, numbers with and without separators have different results: both joins
        with the orders lose their rows."""
        tables = self.tables(1000)
        for name in self.rules:
            self.rules[name] = re.sub(r"(?m)^(IDENTITY =) .*",
                                      r"\1 NID, key=5, method=transpose", self.rules[name])
        clear, masked = self.parsed(tables), self.parsed(self.masked(tables, "123"))
        for join in (JOINS[0], JOINS[2]):
            pairs = joined(clear, *join)
            self.assertLess(len(set(pairs) & set(joined(masked, *join))), len(pairs) // 100)


main()
