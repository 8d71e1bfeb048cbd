"""The demo's records: the stored result and report, and where the records come from."""
import csv
import io
import os
import subprocess
import sys

from command import DATA, HERE, CommandTest, main, read


class DemoDataTest(CommandTest):
    def mask_demo(self, name):
        result = self.run_program("--rules", os.path.join(DATA, "rules.txt"),
                                  "--keep-unlisted", os.path.join(DATA, "customers.csv"),
                                  "--output", self.path(name), "--report", self.path("report"))
        self.assertEqual((1, b""), (result.returncode, result.stdout))
        self.assert_only_counted(result.stderr, 19)

    def test_result_and_report_are_the_stored_ones(self):
        self.mask_demo("out.csv")
        stored = read(os.path.join(HERE, "customers.masked.csv"))
        self.assertEqual(stored, read(self.path("out.csv")))
        report = read(self.path("report")).replace(DATA.encode() + b"/", b"")
        self.assertEqual(read(os.path.join(HERE, "customers.errors.txt")), report)

    def test_a_second_run_gives_the_same(self):
        self.mask_demo("first.csv")
        self.mask_demo("second.csv")
        self.assertEqual(read(self.path("first.csv")), read(self.path("second.csv")))

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

    def test_no_masked_field_is_left_in_clear(self):
        self.mask_demo("out.csv")
        before = csv.DictReader(io.StringIO(read(os.path.join(DATA, "customers.csv")).decode()))
        after = csv.DictReader(io.StringIO(read(self.path("out.csv")).decode()))
        fields = 0
        for number, (old, new) in enumerate(zip(before, after), 1):
            for column, value in old.items():
                if column in ("ID", "SEGMENT"):
                    self.assertEqual(value, new[column])
                elif value:
                    fields += 1
                    self.assertNotEqual(value, new[column], f"row {number}, {column}")
        self.assertGreater(fields, 2000)

    def test_report_holds_no_value(self):
        self.mask_demo("out.csv")
        report = read(self.path("report")).decode()
        before = csv.DictReader(io.StringIO(read(os.path.join(DATA, "customers.csv")).decode()))
        for row in before:
            for column in ("CARD", "EMAIL", "PHONE", "BIRTH_DATE", "NATIONAL_ID", "ACCOUNT"):
                if len(row[column]) > 3:
                    self.assertNotIn(row[column], report)

    def test_every_provider_is_used(self):
        with open(os.path.join(DATA, "rules.txt"), encoding="utf-8") as rules:
            text = rules.read()
        for name in ("CCN", "NID", "EML", "AFF", "COL", "AGE", "HASH", "LKP"):
            self.assertIn(f"= {name}", text)


main()
