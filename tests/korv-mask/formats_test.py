"""Forms of the input: delimiters, files without a header, NULL texts, code pages, blank lines."""
from command import CommandTest, main

REVERSE = "A = AFF, method=reverse\n* = KEEP\n"


class DelimiterTest(CommandTest):
    def test_other_delimiters(self):
        for name, character in ((";", ";"), ("\\t", "\t"), ("tab", "\t"), ("|", "|"), (":", ":"),
                                (" ", " "), ("x", "x"), ("\t", "\t")):
            rows = "A,B,C\nab,1,\n\"c,\"\"d\",2,-\n".replace(",", character)
            masked = "A,B,C\nba,1,\n\"d\"\",c\",2,-\n".replace(",", character)
            with self.subTest(delimiter=name):
                self.assert_masked(masked, rows, REVERSE, "--delimiter", name)

    def test_fields_are_quoted_for_the_delimiter_of_the_file(self):
        rules = "A = CONST, \"value=a,b\"\nB = CONST, value=a;b\n"
        self.assert_masked('A;B\na,b;"a;b"\n', "A;B\n1;2\n", rules, "--delimiter", ";")
        self.assert_masked('A,B\n"a,b",a;b\n', "A,B\n1,2\n", rules)

    def test_delimiters_that_cannot_be(self):
        for delimiter in ('"', "\n", "\r", "", ",,", "ä", "\\n", "tabs"):
            with self.subTest(delimiter=delimiter):
                self.assert_not_run("--delimiter", "A\nab\n", REVERSE, "--delimiter", delimiter)

    def test_a_semicolon_file_gets_a_hint(self):
        """Fault 7: the message of a file with another delimiter did not say what to do."""
        for character, shown in ((";", "';'"), ("\t", ""), ("|", "'|'")):
            rows = "ID,CARD\n1,4111111111111111\n".replace(",", character)
            run = self.assert_not_run("no column CARD", rows,
                                      "CARD = CCN, method=transpose, key=1\nID = KEEP\n")
            self.assertIn("ID" + character.replace("\t", ""), run.messages.replace("\t", ""))
            self.assertIn("--delimiter " + shown, run.messages)

    def test_no_hint_where_another_delimiter_would_not_help(self):
        run = self.assert_not_run("no column CARD", "ID,PHONE\n1,2\n",
                                  "CARD = AFF, method=shuffle\n* = KEEP")
        self.assertNotIn("--delimiter", run.messages)


class NoHeaderTest(CommandTest):
    def test_the_first_row_is_masked(self):
        run = self.assert_masked("ba,1\ndc,2\n", "ab,1\ncd,2\n",
                                 "@1 = AFF, method=reverse\n@2 = KEEP", "--no-header")
        self.assertEqual((2, 2), (run.summary["rows_in"], run.summary["rows_out"]))
        self.assertEqual(["@1", "@2"], [column["name"] for column in run.summary["columns"]])

    def test_rows_and_lines_are_counted_from_the_first(self):
        run = self.mask("77,1\n", "@1 = CCN, method=transpose, key=1\n* = KEEP", "--no-header",
                        expect=1)
        self.assertRegex(run.report, r"\Ain\.csv:1: row 1, column @1: CCN error 2")

    def test_names_fit_no_column(self):
        self.assert_not_run(r"rules\.txt:1:1: ", "A\nab\n", "A = AFF, method=shuffle",
                            "--no-header")

    def test_columns_without_a_rule_are_errors_as_elsewhere(self):
        self.assert_not_run("@2", "ab,1\n", "@1 = AFF, method=shuffle", "--no-header")
        self.assert_masked("ba,1\n", "ab,1\n", "@1 = AFF, method=shuffle", "--no-header",
                           "--keep-unlisted")

    def test_the_first_row_says_how_many_fields_there_are(self):
        self.assertRegex(self.mask("a,b\nc\n", "* = KEEP", "--no-header", expect=2).messages,
                         r"\Ain\.csv:2:1: the row has 1 field ")

    def test_a_byte_order_mark_stays(self):
        self.assert_masked("\ufeffba\n", "\ufeffab\n", "@1 = AFF, method=shuffle", "--no-header")


class NullTest(CommandTest):
    def test_texts_that_mean_null_pass(self):
        rows = "A,B\nNULL,1\nab,2\n\\N,NULL\n,4\n"
        run = self.assert_masked(rows.replace("ab", "ba"), rows, REVERSE, "--null", "NULL",
                                 "--null", "\\N")
        column = run.summary["columns"][0]
        self.assertEqual((1, 3), (column["values"], column["nulls"]))

    def test_the_text_must_be_the_same(self):
        run = self.assert_masked("A\nllun\n LLUN\nLLUNx\n", "A\nnull\nNULL \nxNULL\n",
                                 "A = AFF, method=reverse", "--null", "NULL")
        self.assertEqual(0, run.summary["columns"][0]["nulls"])

    def test_without_the_option_only_empty_fields_are_null(self):
        run = self.assert_masked("A,B\nLLUN,\n\"\",\n", "A,B\nNULL,\n\"\",\n", REVERSE)
        self.assertEqual((1, 1), (run.summary["columns"][0]["values"],
                                  run.summary["columns"][0]["nulls"]))

    def test_null_texts_beyond_ascii_and_with_delimiters(self):
        rows = 'A,B\nkein Wert —,1\n"a,b",2\n'
        self.assert_masked(rows, rows, REVERSE, "--null", "kein Wert —", "--null", "a,b")


class EncodingTest(CommandTest):
    TEXT = "A,B\nGrößé,Ñ\n\"é,ß\",1\n"
    MASKED = "A,B\néßörG,Ñ\n\"ß,é\",1\n"

    def test_code_pages(self):
        for encoding, python in (("1252", "cp1252"), ("ISO-8859-1", "latin-1"), ("850", "cp850"),
                                 ("windows-1252", "cp1252"), ("UTF-8", "utf-8"),
                                 ("utf-16le", "utf-16-le"), ("UTF-16BE", "utf-16-be"),
                                 ("iso-8859-15", "iso-8859-15"), ("37", "cp037")):
            with self.subTest(encoding=encoding):
                self.assert_masked(self.MASKED, self.TEXT.encode(python), REVERSE, "--encoding",
                                   encoding)

    def test_large_inputs_of_a_code_page(self):
        body = "".join(f"Größé{i},{'ñ' * (i % 50)}\n" for i in range(40000))
        masked = "".join(f"{str(i)[::-1]}éßörG,{'ñ' * (i % 50)}\n" for i in range(40000))
        for jobs in ("1", "3"):
            run = self.mask(("A,B\n" + body).encode("cp1252"), REVERSE, "--encoding", "1252",
                            "--jobs", jobs, expect=0)
            self.assertTrue(run.out == ("A,B\n" + masked).encode())

    def test_bytes_that_the_code_page_does_not_have(self):
        run = self.mask(b"A,B\nab,1\n\x81\xff,2\n", REVERSE, "--encoding", "UTF-8", expect=2)
        self.assertRegex(run.messages, r"\Ain\.csv:3:1: ")
        self.assertIsNone(run.out)


class BlankLinesTest(CommandTest):
    """Fault 3: a blank line at the end of the input ended the run."""

    def test_one_at_the_end_is_accepted(self):
        for end in ("\n", "\r\n"):
            rows = f"A,B{end}ab,1{end}{end}"
            run = self.assert_masked(rows.replace("ab", "ba"), rows, REVERSE)
            self.assertEqual((1, 1), (run.summary["rows_in"], run.summary["rows_out"]))

    def test_one_after_the_header_alone(self):
        self.assert_masked("A,B\n\n", "A,B\n\n", REVERSE)

    def test_another_one_is_an_error(self):
        for rows, line in (("A,B\nab,1\n\n\n", 3), ("A,B\n\nab,1\n", 2),
                           ("A,B\nab,1\n\ncd,2\n", 3)):
            run = self.mask(rows, REVERSE, expect=2)
            self.assertRegex(run.messages,
                             rf"\Ain\.csv:{line}:1: the row has 1 field where the header has 2\n")
            self.assertIsNone(run.out)

    def test_in_a_file_of_one_column_it_is_an_empty_value(self):
        run = self.assert_masked("A\nba\n\ndc\n", "A\nab\n\ncd\n", "A = AFF, method=reverse")
        column = run.summary["columns"][0]
        self.assertEqual((3, 3, 2, 1), (run.summary["rows_in"], run.summary["rows_out"],
                                        column["values"], column["nulls"]))

    def test_at_the_end_of_a_file_of_one_column(self):
        self.assert_masked("A\nba\n\n", "A\nab\n\n", "A = AFF, method=reverse")
        self.assert_masked("A\n\n\n", "A\n\n\n", "A = AFF, method=reverse")

    def test_an_emptied_field_alone_in_its_row_stays_a_row(self):
        """Fault 1: the row of a failed value vanished from a file of one column."""
        run = self.mask("A\n1\nx", "A = NID, method=transpose, key=5", expect=1)
        self.assertRegex(run.out, rb'\AA\n\d\n""\Z')
        self.assertEqual((2, 2), (run.summary["rows_in"], run.summary["rows_out"]))

    def test_a_null_alone_in_its_row_stays_a_row(self):
        self.assert_masked('A\n""\n""\n', "A\nx\ny\n", "A = NULL")
        run = self.mask("A\nx\n1\n", "A = NID, method=transpose, key=5, on-error=null", expect=1)
        self.assertRegex(run.out, rb'\AA\n""\n\d\n\Z')
        run = self.mask('A\nx\n', "A = CONST, \"value=\"")
        self.assertIn((run.status, run.out), ((0, b'A\n""\n'), (2, None)))


main()
