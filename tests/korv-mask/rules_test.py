"""Rules: actions without a provider, how columns are named, and what every rule can say."""
import os

from command import CommandTest, main

ROWS = "ID,NAME,ADDR1,ADDR2\n1,Anna,Main St,Berlin\n2,Bernd,Side St,Paris\n"


class ActionsTest(CommandTest):
    def test_keep(self):
        rows = 'ID,NOTE\n1,"say ""x"", twice"\n2,\n'
        self.assert_masked(rows, rows, "ID = KEEP\nNOTE = KEEP\n")
        self.assert_masked(rows, rows, "* = KEEP\n")

    def test_drop_leaves_the_column_out(self):
        for rule, expected in (
                ("ID = DROP\n* = KEEP",
                 "NAME,ADDR1,ADDR2\nAnna,Main St,Berlin\nBernd,Side St,Paris\n"),
                ("NAME = DROP\n* = KEEP", "ID,ADDR1,ADDR2\n1,Main St,Berlin\n2,Side St,Paris\n"),
                ("ADDR2 = DROP\n* = KEEP", "ID,NAME,ADDR1\n1,Anna,Main St\n2,Bernd,Side St\n"),
                ("ADDR* = DROP\n@2 = AFF, method=reverse\nID=KEEP", "ID,NAME\n1,annA\n2,dnreB\n"),
                ("* = DROP\nADDR1 = KEEP", "ADDR1\nMain St\nSide St\n")):
            self.assert_masked(expected, ROWS, rule)

    def test_drop_of_quoted_fields_in_any_order(self):
        rows = 'A,B,C\r\n"a,""1""\n",b,"c\r\n2"\r\n,"",\r\n'
        self.assert_masked('B\r\nb\r\n""\r\n', rows, "A = DROP\nB = KEEP\nC = DROP")
        self.assert_masked('A,C\r\n"a,""1""\n","c\r\n2"\r\n,\r\n', rows, "* = KEEP\nB = DROP")

    def test_a_row_whose_only_column_is_empty_can_be_told_from_no_row(self):
        run = self.mask("A,B\n,1\nx,2\n", "A = KEEP\nB = DROP", expect=0)
        self.assertEqual(2, run.summary["rows_out"])
        self.assertEqual(b'A\n""\nx\n', run.out)

    def test_null_empties_the_column(self):
        self.assert_masked("ID,NAME\n1,\n2,\n", "ID,NAME\n1,Anna\n2,Bernd\n",
                           "ID=KEEP\nNAME = NULL")

    def test_null_writes_the_first_text_that_means_null(self):
        self.assert_masked("ID,NAME\n1,N/A\n", "ID,NAME\n1,Anna\n", "ID=KEEP\nNAME = NULL",
                           "--null", "N/A", "--null", "-")

    def test_const_replaces_every_value(self):
        rows = "ID,NAME\n1,Anna\n2,Bernd\n"
        for value, field in (("value=Hidden", "Hidden"), ('"value=a, b"', '"a, b"'),
                             ('"value=say \\"x\\""', '"say ""x"""'), ("value=ÄÖ", "ÄÖ"),
                             ("value=0", "0")):
            self.assert_masked(f"ID,NAME\n1,{field}\n2,{field}\n", rows,
                               f"ID = KEEP\nNAME = CONST, {value}")

    def test_const_needs_its_value(self):
        self.assert_not_run(r"rules\.txt:1:\d+: .*CONST.*value", "A\nx\n", "A = CONST")

    def test_actions_take_no_operands_of_others(self):
        for action in ("KEEP", "DROP", "NULL"):
            self.assert_not_run(r"rules\.txt:1:\d+: ", "A\nx\n", f"A = {action}, key=1")

    def test_a_question_mark_is_not_a_decision(self):
        self.assert_not_run(r"rules\.txt:2:\d+: .*NAME", "ID,NAME\n1,Anna\n", "ID = KEEP\nNAME = ?")


class ColumnsTest(CommandTest):
    def test_a_column_without_a_rule_is_an_error(self):
        run = self.assert_not_run("ADDR1", ROWS,
                                  "ID = KEEP\nNAME = AFF, method=shuffle\nADDR2 = KEEP")
        self.assertIn("--keep-unlisted", run.messages)

    def test_a_column_without_a_rule_can_be_kept(self):
        self.assert_masked(ROWS.replace("Anna", "annA").replace("Bernd", "dnreB"), ROWS,
                           "NAME = AFF, method=reverse", "--keep-unlisted")

    def test_all_columns_without_a_rule_are_named_at_once(self):
        run = self.assert_not_run("--keep-unlisted", ROWS, "ID = KEEP")
        for name in ("NAME", "ADDR1", "ADDR2"):
            self.assertIn(name, run.messages)

    def test_columns_by_number(self):
        self.assert_masked("A,B\nx,ba\n", "A,B\nx,ab\n", "@2 = AFF, method=reverse\n@1 = KEEP")

    def test_columns_with_equal_names(self):
        self.assert_masked("A,A\nab,dc\n", "A,A\nab,cd\n", "@2 = AFF, method=reverse\n@1 = KEEP")
        self.assert_not_run(r"rules\.txt:1:1: .*\bA\b.*@", "A,A\nab,cd\n", "A = KEEP")

    def test_a_number_beyond_the_last_column(self):
        for number in ("0", "3", "4294967297"):
            self.assert_not_run(r"rules\.txt:2:1: ", "A,B\nx,y\n",
                                f"* = KEEP\n@{number} = AFF, method=shuffle")

    def test_columns_by_pattern(self):
        self.assert_masked(ROWS.replace("Main St", "x").replace("Side St", "x")
                           .replace("Berlin", "x").replace("Paris", "x"), ROWS,
                           "ID = KEEP\nNAME = KEEP\naddr* = CONST, value=x")

    def test_an_exact_name_beats_a_pattern(self):
        for rules in ("* = CONST, value=x\nNAME = KEEP", "NAME = KEEP\n* = CONST, value=x"):
            self.assert_masked("ID,NAME\nx,Anna\n", "ID,NAME\n1,Anna\n", rules)
        self.assert_masked("ID,NAME\nx,Anna\n", "ID,NAME\n1,Anna\n",
                           "* = CONST, value=x\n@2 = KEEP")

    def test_two_patterns_for_one_column_are_an_error(self):
        self.assert_not_run(r"rules\.txt:\d:1: .*ADDR1", ROWS,
                            "ID = KEEP\nNAME = KEEP\nADDR* = KEEP\n*1 = NULL")

    def test_two_patterns_do_not_matter_where_a_name_decides(self):
        self.assert_masked(ROWS, ROWS, "ID = KEEP\nNAME = KEEP\nADDR* = KEEP\n*1 = NULL\n"
                                       "ADDR1 = KEEP")

    def test_two_rules_for_one_column_are_an_error(self):
        for columns in (("A", "A"), ("A", "@1"), ('"A"', "a")):
            rules = "{} = KEEP\n{} = AFF, method=shuffle".format(*columns)
            self.assert_not_run(r"rules\.txt:[12]:1: ", "A\nxy\n", rules)

    def test_quoted_names_are_literal(self):
        rows = "A*,AB,@1,?\nab,cd,ef,gh\n"
        self.assert_masked("A*,AB,@1,?\nx,cd,x,x\n", rows,
                           '"A*" = CONST, value=x\n"@1" = CONST, value=x\nAB = KEEP\n'
                           '"?" = CONST, value=x')
        self.assert_not_run(r"rules\.txt:2:1: .*a", "A\nxy\n",
                            '* = KEEP\n"a" = AFF, method=shuffle')

    def test_names_are_compared_without_regard_to_case_in_every_language(self):
        self.assert_masked("Größe,ÉTAT\nba,dc\n", "Größe,ÉTAT\nab,cd\n",
                           "GRÖ* = KEEP\ngröße = AFF, method=shuffle\nétat = AFF, method=shuffle")


class OperandsTest(CommandTest):
    def test_operand_values_keep_their_case(self):
        self.write("Cities.txt", "berlin = Hamburg\n")
        self.write("cities.txt", "berlin = Wrong\n")
        self.assert_masked("CITY\nHamburg\nOther\n", "CITY\nBerlin\nParis\n",
                           "CITY = LKP, file=Cities.txt, default=Other")

    def test_keys_and_actions_have_no_case(self):
        self.assert_masked("A,B\nba,x\n", "A,B\nab,x\n", "a = aff, Method=Reverse\nb = keep")

    def test_files_are_relative_to_the_rules(self):
        os.mkdir(self.path("rules"))
        self.write("rules/cities.txt", "berlin = Hamburg\n")
        self.write("rules/rules.txt", "CITY = LKP, file=cities.txt\n")
        result = self.run_program("-r", "rules/rules.txt", stdin=b"CITY\nBerlin\n")
        self.assertEqual((0, b"CITY\nHamburg\n", b""),
                         (result.returncode, result.stdout, result.stderr))

    def test_wrong_values_of_the_operands_of_every_rule(self):
        for operands in ("on-error=maybe", "on-error", "unchanged=maybe", "type=odd",
                         "on-error=const"):
            self.assert_not_run(r"rules\.txt:1:\d+: ", "A\nxy\n", f"A = AFF, {operands}")


main()
