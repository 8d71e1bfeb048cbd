"""The option --check: what is validated and said, and that nothing is written."""
import os
import re

from command import CommandTest, main

ROWS = "ID,CARD,CITY,NOTE,MEMO\nClearId,4556737586899855,Entenhausen,secret note,\n"
RULES = ("ID = KEEP\nCARD = CCN, method=transpose, key=17\nCITY = LKP, file=cities.txt\n"
         "N* = DROP\nMEMO = CONST, value=none\n")


class CheckTest(CommandTest):
    def check(self, rules=RULES, rows=ROWS, arguments=(), expect=0):
        self.write("cities.txt", "berlin = Hamburg\n")
        self.write("rules.txt", rules)
        self.write("in.csv", rows)
        before = sorted(os.listdir(self.folder))
        result = self.run_program("-r", "rules.txt", "in.csv", "--check", *arguments)
        self.assertEqual(expect, result.returncode, result.stderr)
        self.assertEqual(before, sorted(os.listdir(self.folder)))
        return result.stdout.decode(), result.stderr.decode()

    def test_it_says_what_will_happen_to_each_column(self):
        shown, messages = self.check()
        self.assertEqual("", messages)
        lines = shown.splitlines()
        for name, action in (("ID", "KEEP"), ("CARD", "CCN"), ("CITY", "LKP"), ("NOTE", "DROP"),
                             ("MEMO", "CONST")):
            self.assertEqual(1, len([line for line in lines if name in line and action in line and
                                     not line.startswith("warning: ")]), (name, shown))

    def test_it_says_which_columns_are_kept_without_a_rule(self):
        shown, _ = self.check("CARD = CCN, method=transpose, key=17",
                              arguments=("--keep-unlisted",))
        self.assertEqual(4, len(re.findall(r"(?im)^.*(?:keep|kept).*$", shown)), shown)

    def test_it_shows_no_value(self):
        shown, messages = self.check()
        for value in ROWS.splitlines()[1].split(","):
            self.assertTrue(not value or value not in shown + messages)

    def test_it_writes_nothing(self):
        self.write("out.csv", "old\n")
        self.check(arguments=("-o", "out.csv", "--report", "new.txt", "--summary", "new.json",
                              "--html", "new.html"))
        self.assertEqual(b"old\n", self.contents("out.csv"))
        self.check(arguments=("-o", "in.csv"))
        self.assertEqual(ROWS.encode(), self.contents("in.csv"))

    def test_it_reads_standard_input(self):
        self.check()
        result = self.run_program("-r", "rules.txt", "--check", stdin=ROWS.encode())
        self.assertEqual((0, b""), (result.returncode, result.stderr))

    def test_faults(self):
        for rules, rows, message in (
                ("CARD = CNC, key=1\n* = KEEP", ROWS, "rules.txt:1:8: "),
                ("CARD = CCN, keys=1\n* = KEEP", ROWS, "rules.txt:1:8: "),
                ("CARD = CCN, method=transpose, keys=1\n* = KEEP", ROWS, "rules.txt:1:31: "),
                ("* = KEEP\nPHONE = AFF, method=shuffle", ROWS, "no column PHONE"),
                ("CARD = KEEP", ROWS, "NOTE"),
                ("* = KEEP\nCITY = LKP, file=none.txt", ROWS, "No such file or directory"),
                ("* = KEEP\nCITY = LKP, file=in.csv", ROWS, "LKP error 2"),
                ("* = KEEP\nCARD = ?", ROWS, "rules.txt:2:"),
                ("CARD", ROWS, "rules.txt:1:5: "),
                (RULES, "", "header"),
                (RULES, "ID,CARD\xff", "no column CITY")):
            with self.subTest(rules=rules, rows=rows):
                _, messages = self.check(rules, rows, expect=2)
                self.assertIn(message, messages)

    def test_a_lookup_file_that_cannot_be_opened_is_named_with_the_reason(self):
        _, messages = self.check("* = KEEP\nCITY = LKP, file=none.txt", expect=2)
        self.assertRegex(messages, r"rules\.txt:2.*none\.txt.*No such file or directory")


main()
