"""No clear value in anything that is not the output: report, summary, page, messages and others."""
import csv
import hashlib
import io
import os

from command import DATA, HERE, CommandTest, main, read
from jobs import customers

STRONG = read(os.path.join(DATA, "rules.txt")).decode()
DISGUISES = read(os.path.join(HERE, "disguises.txt")).decode()
SECRET = hashlib.sha256(b"demo").hexdigest()
# Values that any text may hold.
SHORT = 4


class SecretsTest(CommandTest):
    def everything(self, rows, rules, *arguments):
        """All that a run writes except its output, as text."""
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

    def assert_customers_hidden(self, rules, *arguments):
        for name in ("cities.txt", "first_names.txt"):
            self.write(name, read(os.path.join(DATA, name)))
        rows = read(os.path.join(DATA, "customers.csv")).decode()
        run, texts = self.everything(rows, rules, "--keep-unlisted", *arguments)
        self.assertEqual(1, run.status)
        values = {value for row in csv.DictReader(io.StringIO(rows)) for value in row.values()
                  if len(value) > SHORT}
        self.assertGreater(len(values), 1500)
        self.assert_hidden(values, texts, self.fields(run.out.decode()))
        return texts

    def test_customers(self):
        self.assert_customers_hidden(DISGUISES)

    def test_customers_with_a_secret(self):
        secrets = self.write_secrets(f"demo = {SECRET}\n")
        texts = self.assert_customers_hidden(STRONG, "--secrets", secrets)
        self.assert_hidden((SECRET, SECRET[:16], SECRET[-16:]), texts)

    def test_many_customers(self):
        rows = customers(3000).decode()
        rules = ("CARD = CCN, method=transpose, key=1\nEMAIL = EML, method=transpose, key=2\n"
                 "PHONE = NID, method=transpose, key=3\n* = KEEP\n"
                 "BIRTH_DATE = AGE, method=move, days=3\nACCOUNT = AFF, method=number\n"
                 "NATIONAL_ID = NID, method=transpose, key=1, country=us")
        run, texts = self.everything(rows, rules)
        self.assertEqual(1, run.status)
        values = {row[column] for row in csv.DictReader(io.StringIO(rows))
                  for column in ("CARD", "EMAIL", "PHONE", "BIRTH_DATE", "ACCOUNT", "NATIONAL_ID")
                  if len(row[column]) > SHORT}
        self.assert_hidden(values, texts, self.fields(run.out.decode()))

    def test_failing_values(self):
        """For each provider a value that fails, at its error and as it is."""
        self.write("cities.txt", "berlin = Hamburg\n")
        card, number, mail = (f"{name}, method=transpose, key=1" for name in
                              ("CCN", "NID", "EML"))
        cases = ((card, "quicksand77"), (card, "77885544"),
                 (card + ", strict", "4111111111119931"),
                 (number, "quicksandé"), (number + ", country=us", "99-8877-6655-4433"),
                 (mail, "quick.sand.example"), (mail, "quick@sand@example"),
                 ("AGE, method=move, days=1", "31.31.1931"),
                 ("AGE, method=move, days=1", "1931-31-31"),
                 ("AGE, method=move, years=10, limit=5", "1931-01-31"),
                 ("AFF, method=shuffle", "quiqui"), ("AFF, method=shuffle", "x" * 8001),
                 ("AFF, method=number", "quick77"), ("LKP, file=cities.txt", "Quicksand"),
                 (number + ", shift=1, unchanged=error", "0416"))
        self.assert_failures_hidden(cases)

    def test_values_that_fail_with_a_secret(self):
        secrets = self.write_secrets(f"test = {SECRET}\n")
        cases = (("CCN, secret=test", "quicksand77"), ("CCN, secret=test", "77885544"),
                 ("CCN, secret=test, strict", "4111111111119931"),
                 ("CCN, secret=test, prefix=8, last=4", "411111119931"),
                 ("NID, secret=test", "quicksand"), ("NID, secret=test, letters", "quicksandé"),
                 ("NID, secret=test, prefix=8, last=4", "998877665544"),
                 ("NID, secret=test, country=us", "99-8877-6655-4433"),
                 ("NID, secret=test, integer", "0099887766"),
                 ("NID, secret=test, integer=int4", "9988776655"),
                 ("EML, secret=test", "quick.sand.example"),
                 ("EML, secret=test, method=ff1", "quicksandé@sand.example"),
                 ("EML, secret=test, method=ff1", "_-_-_-_@sand.example"),
                 ("AFF, secret=test", "quicksandé"),
                 ("AGE, secret=test, range=1..9", "31.31.1931"),
                 ("AGE, secret=test, range=1..9", "1931-31-31"),
                 ("AGE, secret=test, range=1..9", "9999-12-31"),
                 ("HASH, secret=test, list=a;b", "x" * 8001))
        for texts in self.assert_failures_hidden(cases, "--secrets", secrets):
            self.assert_hidden((SECRET, SECRET[:16], SECRET[-16:]), texts)

    def assert_failures_hidden(self, cases, *arguments):
        """Each value fails by its rule, and is nowhere to be seen. Returns the texts."""
        everything = []
        for policy in ("empty", "null", "const, value=-", "drop-row", "abort"):
            for rule, value in cases:
                with self.subTest(rule=rule, policy=policy):
                    rows = f"ID,A\nother secret,{value}\n"
                    run, texts = self.everything(rows, f"ID = KEEP\nA = {rule}, on-error={policy}",
                                                 *arguments)
                    self.assertEqual(2 if policy == "abort" else 1, run.status, run.messages)
                    del texts["suggestions"]
                    self.assert_hidden((value, value.lower(), value.upper(), "other secret"), texts)
                    self.assertNotIn(value, (run.out or b"").decode())
                    everything.append(texts)
        return everything

    def test_malformed_rows(self):
        for row in ('quick"sand', '"quick"sand', '"quicksand', "quicksand,1,2", "quick\rsand",
                    "quicksand\0", b"quicksand\xff"):
            row = row if isinstance(row, bytes) else row.encode()
            run, texts = self.everything(b"ID,A\n1," + row + b"\n",
                                         "ID = KEEP\nA = AFF, method=shuffle")
            self.assertEqual(2, run.status)
            self.assertIsNone(run.out)
            self.assert_hidden(("quick", "sand"), texts)

    def test_neighbours_of_failing_values(self):
        rows = "A,B\nquicksand,4111\nquicksilver,4112\n"
        _, texts = self.everything(rows, "A = KEEP\nB = CCN, method=transpose, key=1")
        self.assert_hidden(("quicksand", "quicksilver", "4111", "4112"), texts)


main()
