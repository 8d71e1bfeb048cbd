"""The option --suggest: a rules file to start from."""
import csv
import io
import os
import re

from command import DATA, CommandTest, main, read


def card(number):
    """The number with its check digit."""
    total = sum(sum(divmod(int(digit) * (2 - i % 2), 10))
                for i, digit in enumerate(reversed(number)))
    return number + str(-total % 10)


class SuggestTest(CommandTest):
    def suggest(self, rows, *arguments):
        self.write("in.csv", rows)
        before = sorted(os.listdir(self.folder))
        result = self.run_program("in.csv", "--suggest", *arguments)
        self.assertEqual((0, b""), (result.returncode, result.stderr))
        self.assertEqual(before, sorted(os.listdir(self.folder)))
        return result.stdout.decode()

    def rule_of(self, rules, column):
        found = [line for line in rules.splitlines()
                 if re.match(rf'"?{re.escape(column)}"?\s*=', line)]
        self.assertEqual(1, len(found), (column, rules))
        return found[0].split("=", 1)[1].strip()

    def check(self, rules, expect, *arguments):
        """--check with a secret at hand."""
        self.write("rules.txt", rules)
        secrets = self.write_secrets("crm = " + "00" * 32 + "\n")
        result = self.run_program("-r", "rules.txt", "in.csv", "--secrets", secrets, "--check",
                                  *arguments)
        self.assertEqual(expect, result.returncode, (rules, result.stderr))
        return result

    def decided(self, rules):
        """The rules with every question mark replaced."""
        self.write("list.txt", "Anna\nBernd\n")
        for pattern, decision in ((r"(?m)^([^#].*) = \?", r"\1 = KEEP"),
                                  (r"secret=\?", "secret=crm"), (r"file=\?", "file=list.txt"),
                                  (r"range=\?", "range=-9..9"),
                                  (r"format=\?", "format=MM/DD/YYYY")):
            rules = re.sub(pattern, decision, rules)
        return rules

    def customers(self, count=200):
        header = "NR,KARTE,ADRESSE,GEBOREN,SEIT,KONTAKT,SSN,CITY,LAST_NAME,XYZ\n"
        rows = "".join(
            f"{i},{card(f'4{i * 7919:014d}')},user{i}@mail.example,"
            f"19{i % 90 + 10}-0{i % 9 + 1}-1{i % 9},1{i % 9}.0{i % 9 + 1}.20{i % 20 + 10},"
            f"+49 30 {1000000 + i * 7},{100 + i % 800}-{10 + i % 80}-{1000 + i},"
            f"Entenhausen{'abcdefgh'[i % 8]},Gans,q{i * i % 7}-!\n" for i in range(count))
        return header + rows

    def test_what_columns_seem_to_hold(self):
        rules = self.suggest(self.customers())
        for column, pattern in (("KARTE", r"CCN\b"), ("ADRESSE", r"EML\b"),
                                ("GEBOREN", r"AGE\b.*YYYY-MM-DD"), ("SEIT", r"AGE\b.*DD\.MM\.YYYY"),
                                ("KONTAKT", r"NID\b"), ("SSN", r"NID\b"), ("XYZ", r"\?")):
            self.assertRegex(self.rule_of(rules, column), rf"\A{pattern}", column)
        for column in ("CITY", "LAST_NAME"):
            self.assertNotRegex(self.rule_of(rules, column), r"\A(KEEP|\?)", column)

    def test_it_says_how_many_values_agree(self):
        rows = "KARTE\n" + "".join(card(f"4{i:014d}") + "\n" for i in range(97)) + "x\ny\nz\n"
        rules = self.suggest(rows)
        self.assertRegex(self.rule_of(rules, "KARTE"), r"\ACCN")
        self.assertRegex(rules, r"(?m)^#.*\b97\b")

    def test_numbers_without_their_check_digit_are_not_cards(self):
        rows = "N\n" + "".join(f"4{i * 7919:015d}\n" for i in range(100))
        self.assertNotRegex(self.rule_of(self.suggest(rows), "N"), r"\ACCN")

    def test_what_is_not_known_has_to_be_decided(self):
        rules = self.suggest(self.customers())
        result = self.check(rules, 2)
        self.assertRegex(result.stderr, rb"rules\.txt:\d+:\d+: .*XYZ")
        decided = re.sub(r"(?m)^([^#].*) = \?", r"\1 = KEEP", rules)
        for question in ("secret=?", "range=?"):
            self.assertIn(question, decided)
            result = self.check(decided, 2)
            self.assertRegex(result.stderr.decode(), r"(?m)^rules\.txt:\d+:\d+: ")
            decided = decided.replace("secret=?", "secret=crm")
        self.check(self.decided(rules), 0)

    def test_the_demos_records(self):
        rules = self.suggest(read(os.path.join(DATA, "customers.csv")))
        for column, provider in (("EMAIL", "EML"), ("CARD", "CCN"), ("BIRTH_DATE", "AGE"),
                                 ("PHONE", "NID"), ("NATIONAL_ID", "NID"), ("SIGNUP", "AGE")):
            self.assertRegex(self.rule_of(rules, column), rf"\A{provider}\b", column)
        self.check(self.decided(rules), 0)

    def test_no_value_is_shown(self):
        rows = self.customers()
        rules = self.suggest(rows)
        for row in csv.DictReader(io.StringIO(rows)):
            for column, value in row.items():
                if len(value) > 4:
                    self.assertNotIn(value, rules, column)

    def test_names_that_rules_must_quote_or_number(self):
        rows = 'First Name,"a ""b""",@3,A*,#x,A,A,"k=v","c,d"\n' + "x,y,z,u,v,w,t,r,s\n" * 20
        rules = self.suggest(rows)
        self.check(rules, 2)
        result = self.check(self.decided(rules), 0)
        self.assertEqual(b"", result.stderr)

    def test_files_without_a_header(self):
        rows = "".join(f"{card(f'4{i:014d}')},user{i}@mail.example\n" for i in range(50))
        rules = self.suggest(rows, "--no-header")
        self.assertRegex(self.rule_of(rules, "@1"), r"\ACCN")
        self.assertRegex(self.rule_of(rules, "@2"), r"\AEML")
        self.check(self.decided(rules), 0, "--no-header")

    def test_it_reads_ten_thousand_rows(self):
        rows = "A\n" + "".join(f"user{i}@mail.example\n" for i in range(10000)) + "x,y\n" * 10
        self.assertRegex(self.rule_of(self.suggest(rows), "A"), r"\AEML")

    def test_files_with_little_in_them(self):
        for rows in ("A\n", "A,B\n", "A,B\n,\n,\n", "A\n\n"):
            rules = self.suggest(rows)
            self.assertRegex(self.rule_of(rules, "A"), r"\A\?")

    def test_files_that_cannot_be_read(self):
        for rows in (b"", b"A,B\nx\n", b"A,\xff\n", b'A\n"x\n'):
            self.write("in.csv", rows)
            result = self.run_program("in.csv", "--suggest")
            self.assertEqual(2, result.returncode)
            self.assertNotEqual(b"", result.stderr)


main()
