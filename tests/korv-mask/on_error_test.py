"""What becomes of values that fail, by the rule's on-error, and of unchanged ones."""
from command import CommandTest, main

# The second and the fourth card are too short.
ROWS = "ID,CARD\n1,4111111111111111\n2,4111 1\n3,5500000000000004\n4,77\n"
MASKED_1 = "4111115467961474"


class OnErrorTest(CommandTest):
    def setUp(self):
        super().setUp()
        plain = self.mask(ROWS, self.rules(""), expect=1)
        self.masked = [line.split(",")[1] for line in plain.out.decode().split()[1:]]
        self.assertEqual(MASKED_1, self.masked[0])
        self.assertEqual(["", ""], self.masked[1::2])

    @staticmethod
    def rules(operands):
        return f"ID = KEEP\nCARD = CCN, method=transpose, key=17{operands}\n"

    def expect_failed(self, field, operands, *arguments):
        run = self.mask(ROWS, self.rules(operands), *arguments, expect=1)
        one, _, three, _ = self.masked
        self.assertEqual(f"ID,CARD\n1,{one}\n2,{field}\n3,{three}\n4,{field}\n", run.out.decode())
        self.expect_reported(run)
        self.assertEqual((4, 4), (run.summary["rows_in"], run.summary["rows_out"]))
        self.assertEqual({"2": 2}, run.summary["columns"][1]["failed"])
        return run

    def expect_reported(self, run):
        lines = self.lines_of_values(run.report)
        self.assertEqual(["in.csv:3: row 2, column CARD: CCN error 2, too few digits: ",
                          "in.csv:5: row 4, column CARD: CCN error 2, too few digits: "],
                         [line[:line.index("KORV_TOKID")] for line in lines])
        self.assert_only_counted(run.messages, 2)

    def test_empty_is_the_default(self):
        self.expect_failed("", "")
        self.expect_failed("", ", on-error=empty")
        self.expect_failed("", ", on-error=empty", "--null", "N/A")

    def test_null(self):
        self.expect_failed("", ", on-error=null")
        self.expect_failed("N/A", ", on-error=null", "--null", "N/A", "--null", "?")
        self.expect_failed('"a,b"', ", on-error=null", "--null", "a,b")

    def test_const(self):
        self.expect_failed("Failed", ", on-error=const, value=Failed")
        self.expect_failed('"a, ""b"""', ', on-error=const, "value=a, \\"b\\""')

    def test_drop_row(self):
        run = self.mask(ROWS, self.rules(", on-error=drop-row"), expect=1)
        one, _, three, _ = self.masked
        self.assertEqual(f"ID,CARD\n1,{one}\n3,{three}\n", run.out.decode())
        self.expect_reported(run)
        self.assertEqual((4, 2), (run.summary["rows_in"], run.summary["rows_out"]))
        self.assertEqual({"2": 2}, run.summary["columns"][1]["failed"])

    def test_drop_row_of_the_last_row_without_a_line_end(self):
        run = self.mask(ROWS[:-1], self.rules(", on-error=drop-row"), expect=1)
        self.assertEqual((4, 2), (run.summary["rows_in"], run.summary["rows_out"]))
        self.assertEqual(3, len(run.out.decode().split()))

    def test_drop_row_of_all_rows(self):
        run = self.mask("CARD\n1\n2\n", "CARD = CCN, method=transpose, key=1, on-error=drop-row",
                        expect=1)
        self.assertEqual((b"CARD\n", 0), (run.out, run.summary["rows_out"]))

    def test_drop_row_where_several_columns_fail(self):
        run = self.mask("A,B\n1,x\n4111111111111111,x\n1,yz\n4111111111111111,yz\n",
                        "A = CCN, method=transpose, key=17, on-error=drop-row\n"
                        "B = AFF, method=shuffle, on-error=drop-row", expect=1)
        self.assertEqual(f"A,B\n{MASKED_1},zy\n", run.out.decode())
        self.assertEqual(4, len(self.lines_of_values(run.report)))
        self.assertEqual((4, 1), (run.summary["rows_in"], run.summary["rows_out"]))

    def test_abort(self):
        run = self.mask(ROWS, self.rules(", on-error=abort"), expect=2)
        self.assertIsNone(run.out)
        self.assertRegex(run.messages + run.report, r"in\.csv:3: row 2, column CARD: CCN error 2")
        self.assertRegex(run.messages, r"\A(korv-mask: |in\.csv:3).+\n")
        self.assertEqual(2, run.summary["status"])
        self.assert_no_temporary()

    def test_abort_keeps_the_old_output(self):
        self.write("in.csv", ROWS)
        self.write("rules.txt", self.rules(", on-error=abort"))
        for output in ("out.csv", "in.csv"):
            self.write("out.csv", "old\n")
            result = self.run_program("-r", "rules.txt", "in.csv", "-o", output)
            self.assertEqual(2, result.returncode)
            self.assertEqual((b"old\n", ROWS.encode()),
                             (self.contents("out.csv"), self.contents("in.csv")))

    def test_abort_does_not_matter_where_nothing_fails(self):
        self.assert_masked(f"CARD\n{MASKED_1}\n", "CARD\n4111111111111111\n",
                           "CARD = CCN, method=transpose, key=17, on-error=abort")

    def test_most_failures(self):
        for most, status in (("0", 2), ("1", 2), ("2", 1), ("3", 1)):
            run = self.mask(ROWS, self.rules(""), "--max-errors", most, expect=status)
            self.assertEqual(status, run.summary["status"])
            self.assertEqual(status == 2, run.out is None)
            if status == 2:
                self.assertRegex(run.messages, rf"korv-mask: .*\b{most}\b")
            self.assert_no_temporary()

    def test_no_failure_may_be_the_most(self):
        self.mask("CARD\n4111111111111111\n", "CARD = CCN, method=transpose, key=17",
                  "--max-errors", "0", expect=0)


class UnchangedTest(CommandTest):
    """Fault 4: values that NID and EML leave as they are were silent."""
    CASES = (("NID, method=transpose, key=1, shift=1", "0416", "5555"),
             ("EML, method=transpose, key=1", ".@x.example", "a@x.example"))

    def test_unchanged_values_are_counted(self):
        for rule, same, other in self.CASES:
            run = self.mask(f"A\n{same}\n{other}\n{same}\n", f"A = {rule}", expect=0)
            self.assertEqual([same, same], run.out.decode().split()[1::2])
            self.assertEqual((3, 3, 2), tuple(run.summary["columns"][0][name] for name in
                                              ("values", "masked", "unchanged")))

    def test_unchanged_values_can_be_errors(self):
        for rule, same, other in self.CASES:
            run = self.mask(f"A,B\n{same},1\n{other},2\n", f"B=KEEP\nA = {rule}, unchanged=error",
                            expect=1)
            self.assertEqual(b",1", run.out.splitlines()[1])
            column = run.summary["columns"][0]
            self.assertEqual((2, 1, 0), tuple(column[name] for name in
                                              ("values", "masked", "unchanged")))
            self.assertEqual([1], list(column["failed"].values()))
            self.assertRegex(run.report, r"in\.csv:2: row 1, column A: .*unchanged")
            self.assertNotIn(same, run.report + run.messages)

    def test_unchanged_values_follow_on_error(self):
        run = self.mask("A\n0416\n0416\n",
                        "A = NID, method=transpose, key=1, shift=1, unchanged=error, "
                        "on-error=const, value=-", expect=1)
        self.assertEqual(b"A\n-\n-\n", run.out)


main()
