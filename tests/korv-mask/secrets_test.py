"""No clear value in anything that is not the output: report, summary, page, messages and others."""
import csv
import io
import os

from command import DATA, CommandTest, main, read
from jobs import customers

RULES = read(os.path.join(DATA, "rules.txt")).decode()
# Values that any text may hold.
SHORT = 4


class SecretsTest(CommandTest):
    def everything(self, rows, rules, *arguments):
        """All that a run writes but for its output, as text."""
        run = self.mask(rows, rules, "--html", "page.html", "--progress", "always", *arguments)
        texts = {"report": run.report, "messages": run.messages + run.stdout.decode(),
                 "summary": (run.raw_summary or b"").decode(),
                 "page": (self.contents("page.html") or b"").decode()}
        result = self.run_program("-r", "rules.txt", "in.csv", "--diff", "400", *arguments)
        texts["differences"] = (result.stdout + result.stderr).decode()
        result = self.run_program("-r", "rules.txt", "in.csv", *arguments)
        texts["messages without a report"] = result.stderr.decode()
        result = self.run_program("-r", "rules.txt", "in.csv", "--check", *arguments)
        texts["check"] = (result.stdout + result.stderr).decode()
        texts["suggestions"] = self.run_program("in.csv", "--suggest").stdout.decode()
        return run, texts

    def assert_hidden(self, values, texts, masked=()):
        """None of the values is in the texts. Masked values, which --diff shows, may be what
        another row has in clear."""
        masked = set(masked)
        for name, text in texts.items():
            for value in values:
                if name != "differences" or value not in masked:
                    self.assertTrue(value not in text, f"{value!r} in {name}")

    @staticmethod
    def fields(rows):
        return [field for row in csv.reader(io.StringIO(rows)) for field in row]

    def test_customers(self):
        for name in ("cities.txt", "first_names.txt"):
            self.write(name, read(os.path.join(DATA, name)))
        rows = read(os.path.join(DATA, "customers.csv")).decode()
        run, texts = self.everything(rows, RULES, "--keep-unlisted")
        self.assertEqual(1, run.status)
        values = {value for row in csv.DictReader(io.StringIO(rows)) for value in row.values()
                  if len(value) > SHORT}
        self.assertGreater(len(values), 1500)
        self.assert_hidden(values, texts, self.fields(run.out.decode()))

    def test_many_customers(self):
        rows = customers(3000).decode()
        rules = ("CARD = CCN, key=1\nEMAIL = EML, key=2\nPHONE = NID, key=3\n* = KEEP\n"
                 "BIRTH_DATE = AGE, days=3\nACCOUNT = AFF, method=number\n"
                 "NATIONAL_ID = NID, key=1, country=us")
        run, texts = self.everything(rows, rules)
        self.assertEqual(1, run.status)
        values = {row[column] for row in csv.DictReader(io.StringIO(rows))
                  for column in ("CARD", "EMAIL", "PHONE", "BIRTH_DATE", "ACCOUNT", "NATIONAL_ID")
                  if len(row[column]) > SHORT}
        self.assert_hidden(values, texts, self.fields(run.out.decode()))

    def test_failing_values(self):
        """For each provider a value that fails, at its error and as it is."""
        self.write("cities.txt", "berlin = Hamburg\n")
        cases = (("CCN, key=1", "quicksand77"), ("CCN, key=1", "77885544"),
                 ("CCN, key=1, strict", "4111111111119931"),
                 ("NID, key=1", "quicksandé"), ("NID, key=1, country=us", "99-8877-6655-4433"),
                 ("EML, key=1", "quick.sand.example"), ("EML, key=1", "quick@sand@example"),
                 ("AGE, days=1", "31.31.1931"), ("AGE, days=1", "1931-31-31"),
                 ("AGE, years=10, limit=5", "1931-01-31"), ("AFF", "quiqui"), ("AFF", "x" * 8001),
                 ("AFF, method=number", "quick77"), ("LKP, file=cities.txt", "Quicksand"),
                 ("NID, key=1, shift=1, unchanged=error", "0416"))
        for policy in ("empty", "null", "const, value=-", "drop-row", "abort"):
            for rule, value in cases:
                with self.subTest(rule=rule, policy=policy):
                    rows = f"ID,A\nother secret,{value}\n"
                    run, texts = self.everything(rows, f"ID = KEEP\nA = {rule}, on-error={policy}")
                    self.assertEqual(2 if policy == "abort" else 1, run.status, run.messages)
                    del texts["suggestions"]
                    self.assert_hidden((value, value.lower(), value.upper(), "other secret"), texts)
                    self.assertNotIn(value, (run.out or b"").decode())

    def test_malformed_rows(self):
        for row in ('quick"sand', '"quick"sand', '"quicksand', "quicksand,1,2", "quick\rsand",
                    "quicksand\0", b"quicksand\xff"):
            row = row if isinstance(row, bytes) else row.encode()
            run, texts = self.everything(b"ID,A\n1," + row + b"\n", "ID = KEEP\nA = AFF")
            self.assertEqual(2, run.status)
            self.assertIsNone(run.out)
            self.assert_hidden(("quick", "sand"), texts)

    def test_neighbours_of_failing_values(self):
        rows = "A,B\nquicksand,4111\nquicksilver,4112\n"
        _, texts = self.everything(rows, "A = KEEP\nB = CCN, key=1")
        self.assert_hidden(("quicksand", "quicksilver", "4111", "4112"), texts)


main()
