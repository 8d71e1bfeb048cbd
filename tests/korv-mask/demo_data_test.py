"""The demo's records: what its rules make of them, the stored result and report of other rules, and
where the records come from."""
import csv
import datetime
import hashlib
import io
import os
import re
import shutil
import subprocess
import sys

from command import DATA, HERE, CommandTest, main, read

# Of secrets made like this, the first one with which no date of the demo moves by 0 days.
SECRET = hashlib.sha256(b"demo 100").hexdigest()


class DemoTest(CommandTest):
    """Runs in a copy of the demo's data."""
    RULES = os.path.join(DATA, "rules.txt")

    def setUp(self):
        super().setUp()
        for name in ("customers.csv", "cities.txt", "first_names.txt"):
            shutil.copy(os.path.join(DATA, name), self.folder)
        shutil.copy(self.RULES, self.path("rules.txt"))

    def run_demo(self, name, failed, *arguments):
        result = self.run_program("--rules", "rules.txt", "customers.csv", "--output", name,
                                  "--report", "report", "--summary", "summary", *arguments)
        self.assertEqual((1, b""), (result.returncode, result.stdout))
        self.assert_only_counted(result.stderr, failed)

    def rows(self, name):
        return list(csv.DictReader(io.StringIO(self.contents(name).decode())))

    def assert_no_field_in_clear(self, masked):
        """Every field of a column that is not kept is another one. Fields that failed are empty,
        and have a line of the report each."""
        report = self.contents("report").decode()
        failed = {(int(row), column) for row, column in
                  re.findall(r": row (\d+), column (.+?): ", report)}
        fields = 0
        for number, (old, new) in enumerate(zip(self.rows("customers.csv"), self.rows(masked),
                                                strict=True), 1):
            for column, value in old.items():
                if column in ("ID", "SEGMENT"):
                    self.assertEqual(value, new[column])
                elif value:
                    fields += 1
                    self.assertNotEqual(value, new[column], f"row {number}, {column}")
                    self.assertEqual(new[column] == "", (number, column) in failed)
        self.assertGreater(fields, 2000)

    def assert_report_holds_no_value(self):
        report = self.contents("report").decode()
        for row in self.rows("customers.csv"):
            for column in ("CARD", "EMAIL", "PHONE", "BIRTH_DATE", "NATIONAL_ID", "ACCOUNT"):
                if len(row[column]) > 3:
                    self.assertNotIn(row[column], report)


class DemoDataTest(DemoTest):
    def mask_demo(self, name, secret=SECRET):
        secrets = self.write_secrets(f"demo = {secret}\n")
        self.run_demo(name, 16, "--secrets", secrets)

    def test_no_masked_field_is_left_in_clear(self):
        self.mask_demo("out.csv")
        self.assert_no_field_in_clear("out.csv")

    def test_report_holds_neither_a_value_nor_the_secret(self):
        self.mask_demo("out.csv")
        self.assert_report_holds_no_value()
        self.assertNotIn(SECRET.encode(), self.contents("report") + self.contents("summary"))

    def test_equal_secrets_give_the_same(self):
        self.mask_demo("first.csv")
        self.mask_demo("second.csv")
        self.assertEqual(self.contents("first.csv"), self.contents("second.csv"))
        self.mask_demo("third.csv", hashlib.sha256(b"another").hexdigest())
        for first, third in zip(self.rows("first.csv"), self.rows("third.csv")):
            if first["EMAIL"]:
                self.assertNotEqual(first["EMAIL"], third["EMAIL"])

    def test_the_dates_of_a_row_move_together(self):
        self.mask_demo("out.csv")
        pairs = list(zip(self.rows("customers.csv"), self.rows("out.csv")))
        days = {number: [self.day(row[0][column]) - self.day(row[1][column])
                         for column in ("BIRTH_DATE", "SIGNUP")]
                for number, row in enumerate(pairs)
                if all(row[1][column] for column in ("BIRTH_DATE", "SIGNUP"))}
        self.assertGreater(len(days), 200)
        for birth, signup in days.values():
            self.assertEqual(birth, signup)
            self.assertIn(birth.days, range(-30, 31))

    @staticmethod
    def day(text):
        form = "%Y-%m-%d" if text[4] == "-" else "%d.%m.%Y"
        return datetime.datetime.strptime(text[:10], form)

    def test_without_the_secret_nothing_is_masked(self):
        result = self.run_program("--rules", "rules.txt", "customers.csv", "--output", "out.csv")
        self.assertEqual(2, result.returncode)
        self.assertIsNone(self.contents("out.csv"))

    def test_strict_takes_the_rules(self):
        secrets = self.write_secrets(f"demo = {SECRET}\n")
        self.run_demo("out.csv", 16, "--secrets", secrets, "--strict")

    def test_every_provider_is_used(self):
        text = self.contents("rules.txt").decode()
        for name in ("CCN", "NID", "EML", "COL", "AGE", "HASH", "LKP"):
            self.assertIn(f"= {name}", text)

    def test_records_are_what_their_script_makes(self):
        script = [sys.executable, os.path.join(DATA, "make_customers.py")]
        made = subprocess.run(script, capture_output=True, check=True).stdout
        self.assertEqual(read(os.path.join(DATA, "customers.csv")), made)
        self.assertGreaterEqual(len(list(csv.reader(io.StringIO(made.decode())))), 201)
        many = subprocess.run([*script, "--rows", "2500"], capture_output=True, check=True).stdout
        self.assertEqual([12] * 2501, [len(row) for row in csv.reader(io.StringIO(many.decode()))])
        self.assertEqual(sorted({*csv.DictReader(io.StringIO(many.decode())).fieldnames}),
                         sorted(set(csv.DictReader(io.StringIO(made.decode())).fieldnames) -
                                {"SEGMENT"}))


class DisguisesTest(DemoTest):
    """Methods without a secret. The results are those of the first release."""
    RULES = os.path.join(HERE, "disguises.txt")

    def test_result_and_report_are_the_stored_ones(self):
        self.run_demo("out.csv", 19)
        self.assertEqual(read(os.path.join(HERE, "customers.masked.csv")),
                         self.contents("out.csv"))
        self.assertEqual(read(os.path.join(HERE, "customers.errors.txt")), self.contents("report"))

    def test_a_second_run_gives_the_same(self):
        self.run_demo("first.csv", 19)
        self.run_demo("second.csv", 19)
        self.assertEqual(self.contents("first.csv"), self.contents("second.csv"))

    def test_no_masked_field_is_left_in_clear(self):
        self.run_demo("out.csv", 19)
        self.assert_no_field_in_clear("out.csv")

    def test_report_holds_no_value(self):
        self.run_demo("out.csv", 19)
        self.assert_report_holds_no_value()

    def test_every_provider_is_used(self):
        text = self.contents("rules.txt").decode()
        for name in ("CCN", "NID", "EML", "AFF", "COL", "AGE", "HASH", "LKP"):
            self.assertIn(f"= {name}", text)


main()
