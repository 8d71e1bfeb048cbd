"""The summary: what it counts, and when it is written."""
import json
import os

from command import CommandTest, main

CARDS = "ID,CARD\n1,4111111111111111\n2,5500000000000004\n3,4111\n"
RULES = "ID = KEEP\nCARD = CCN, method=transpose, key=17\n"


class SummaryTest(CommandTest):
    def test_its_form(self):
        """The example of the manual, byte for byte."""
        run = self.mask("CARD\n4111111111111111\n5500000000000004\n4111\n",
                        "CARD = CCN, method=transpose, key=17", expect=1)
        self.assertEqual(
            b'{"format":1,"status":1,"rows_in":3,"rows_out":3,"columns":[{"number":1,"name":"CARD",'
            b'"action":"CCN","values":3,"nulls":0,"masked":2,"unchanged":0,"failed":{"2":1},'
            b'"method":"transpose","disguise":true}]}',
            run.raw_summary.rstrip(b"\n"))
        self.assertLessEqual(run.raw_summary.count(b"\n"), 1)

    def test_all_actions(self):
        run = self.mask("A,B,C,D,E\n1,2,3,4,ab\n,,,,\n5,6,7,8,cd\n",
                        "A = KEEP\nB = DROP\nC = NULL\nD = CONST, value=x\n"
                        "E = AFF, method=shuffle", expect=0)
        columns = run.summary["columns"]
        self.assertEqual(
            [(1, "A", "KEEP"), (2, "B", "DROP"), (3, "C", "NULL"), (4, "D", "CONST"),
             (5, "E", "AFF")], [(column["number"], column["name"], column["action"])
                                for column in columns])
        for column in columns:
            self.assertEqual(column["values"],
                             column["masked"] + sum(column["failed"].values()), column)
            self.assertLessEqual(column["unchanged"], column["masked"])
        self.assertEqual((2, 1, 2, 0), tuple(columns[4][name] for name in
                                             ("values", "nulls", "masked", "unchanged")))
        self.assertEqual((0, 3, 3), tuple(run.summary[name] for name in
                                          ("status", "rows_in", "rows_out")))

    def test_failures_by_code(self):
        run = self.mask("C\n4111\n41111111111111111111111\nx\n4111111111111111\n77\n",
                        "C = CCN, method=transpose, key=1", expect=1)
        column = run.summary["columns"][0]
        self.assertEqual({"1": 1, "2": 2, "3": 1}, column["failed"])
        self.assertEqual((5, 1), (column["values"], column["masked"]))

    def test_a_file_without_rows(self):
        run = self.mask("ID,CARD\n", RULES, expect=0)
        self.assertEqual((0, 0, 0), (run.summary["status"], run.summary["rows_in"],
                                     run.summary["rows_out"]))
        self.assertEqual([0, 0], [column["values"] for column in run.summary["columns"]])

    def test_names_of_any_kind_make_valid_json(self):
        names = ['say "x"', "back\\slash", "two\nlines", "Größe €", "tab\there", "\x01", "😀", ""]
        header = ",".join('"' + name.replace('"', '""') + '"' for name in names)
        run = self.mask(header + "\n" + "," * (len(names) - 1) + "\n", "* = KEEP", expect=0)
        self.assertEqual(names, [column["name"] for column in run.summary["columns"]])

    def test_it_says_nothing_about_places_and_times(self):
        first = self.mask(CARDS, RULES, expect=1).raw_summary
        os.makedirs(self.path("other/folder"))
        self.write("other/folder/cards.csv", CARDS)
        self.write("other/r", RULES)
        result = self.run_program("--rules", "other/r", "--summary", "other/s",
                                  stdin=CARDS.encode())
        self.assertEqual(1, result.returncode)
        self.assertEqual(first, self.contents("other/s"))
        result = self.run_program("--rules", "other/r", "--summary", "other/s",
                                  "other/folder/cards.csv", "-o", "other/out")
        self.assertEqual(first, self.contents("other/s"))

    def test_masked_text_that_begins_like_a_formula_is_counted_and_warned_of(self):
        """Fault 9: a spreadsheet would compute what was plain text."""
        self.write("list.txt", "\n".join(f"{sign}1+1" for sign in "=+-@") + "\n")
        for sign in "=+-@":
            run = self.mask(f"A,B\nab{sign},1\n{sign}cd{sign},2\nef,3\n",
                            "A = AFF, method=reverse\nB = KEEP", expect=0)
            self.assertEqual(1, run.summary["columns"][0]["formulas"])
            self.assertRegex(run.messages, r"\Akorv-mask: .*\b1\b.*\n\Z")
            self.assertNotIn("ba", run.messages)

    def test_there_is_no_warning_without_formulas(self):
        run = self.mask("A,B\n=ab=,=1\ncd,+2\n", "A = AFF, method=reverse\nB = KEEP", expect=0)
        self.assertEqual("", run.messages)
        for column in run.summary["columns"]:
            self.assertEqual(0, column.get("formulas", 0))


class EndsEarlyTest(CommandTest):
    def test_a_run_that_ends_early_has_one(self):
        for rows, rules, arguments in (
                (CARDS + "4\n", RULES, ()),
                (CARDS, RULES, ("--max-errors", "0")),
                (CARDS, "ID = KEEP\nCARD = CCN, method=transpose, key=17, on-error=abort", ())):
            run = self.mask(rows, rules, *arguments, expect=2)
            self.assertIsNone(run.out)
            self.assertEqual(2, run.summary["status"])
            self.assertEqual(["CARD", "CCN"], [run.summary["columns"][1][name] for name in
                                               ("name", "action")])

    def test_a_run_that_does_not_begin_has_none(self):
        self.write("rules.txt", RULES)
        for rows, arguments in (("ID,PHONE\n1,2\n", ()), ("", ()),
                                (CARDS, ("--providers", "nowhere")), (CARDS, ("-o", "none/x"))):
            self.write("in.csv", rows)
            self.write("summary.json", "old\n")
            result = self.run_program("-r", "rules.txt", "in.csv", "--summary", "summary.json",
                                      *arguments)
            self.assertEqual(2, result.returncode)
            self.assertEqual(b"old\n", self.contents("summary.json"))
            self.assert_no_temporary()

    def test_it_replaces_the_old_one(self):
        self.write("rules.txt", RULES)
        self.write("in.csv", CARDS)
        self.write("summary.json", "x" * 100000)
        os.chmod(self.path("summary.json"), 0o640)
        result = self.run_program("-r", "rules.txt", "in.csv", "-o", "out.csv", "--summary",
                                  "summary.json")
        self.assertEqual(1, result.returncode)
        self.assertEqual(1, json.loads(self.contents("summary.json"))["status"])
        self.assertEqual(0o640, os.stat(self.path("summary.json")).st_mode & 0o777)


main()
