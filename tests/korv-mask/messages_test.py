"""Every way not to run: the message, exit status 2, and no output file."""
import os
import re

from command import CommandTest, main

RULES = "CARD = CCN, method=transpose, key=17\nID = KEEP\n"
ROWS = "ID,CARD\n1,4111111111111111\n"


class MessagesTest(CommandTest):
    def expect(self, lines, rules=RULES, rows=ROWS, arguments=()):
        """Runs with the rules and rows, None for no such file, over an old output and over none.
        Each line of the messages begins with a text and holds some others."""
        for old in (None, b"old\n"):
            for name, contents in (("rules.txt", rules), ("in.csv", rows), ("out.csv", old)):
                if contents is not None:
                    self.write(name, contents)
                elif os.path.exists(self.path(name)):
                    os.remove(self.path(name))
            before = sorted(os.listdir(self.folder))
            result = self.run_program("-r", "rules.txt", "in.csv", "-o", "out.csv", *arguments)
            self.assertEqual((2, b""), (result.returncode, result.stdout))
            messages = result.stderr.decode()
            self.assertEqual(len(lines), messages.count("\n"), messages)
            for (begin, *words), message in zip(lines, messages.splitlines()):
                self.assertTrue(message.startswith(begin), f"{message!r} after {begin!r}")
                for word in words:
                    self.assertIn(word.lower(), message.lower())
            self.assertEqual(before, sorted(os.listdir(self.folder)))
            self.assertEqual(old, self.contents("out.csv"))

    def test_files_that_cannot_be_read(self):
        self.expect([("korv-mask: rules.txt: ", "No such file or directory")], rules=None)
        self.expect([("korv-mask: in.csv: No such file or directory",)], rows=None)
        self.expect([("korv-mask: in.csv: ", "header")], rows="")
        result = self.run_program("-r", "rules.txt", self.folder)
        self.assertEqual(2, result.returncode)
        self.assertRegex(result.stderr, rb"\Akorv-mask: .*: Is a directory\n\Z")

    def test_files_that_cannot_be_written(self):
        self.write("rules.txt", RULES)
        self.write("in.csv", ROWS)
        for arguments, message in (
                (("-o", "none/out.csv"), b"none/out.csv: No such file or directory\n"),
                (("-o", "/dev/full"), b"/dev/full: No space left on device\n"),
                (("--report", "none/x"), b"none/x: No such file or directory\n"),
                (("--summary", "none/x"), b"none/x: No such file or directory\n"),
                (("--html", "none/x"), b"none/x: No such file or directory\n")):
            result = self.run_program("-r", "rules.txt", "in.csv", *arguments)
            self.assertEqual((2, b"korv-mask: " + message), (result.returncode, result.stderr))

    def test_rules_that_do_not_fit(self):
        self.expect([("rules.txt:1:8: ", "CNC")], rules="CARD = CNC, key=1\nID = KEEP")
        self.expect([("rules.txt:3:1: ", "no column PHONE")],
                    rules=RULES + "phone = NID, method=transpose, key=1\n")
        self.expect([("rules.txt:1:1: ", "no column card")],
                    rules='"card" = CCN, method=transpose, key=1\nID = KEEP',
                    arguments=("--keep-unlisted",))
        self.expect([("rules.txt:1:1: ", "columns are named CARD")], rows="CARD,Card\n",
                    rules="CARD = CCN, method=transpose, key=1", arguments=("--keep-unlisted",))
        self.expect([("rules.txt:", "column CARD has a rule")],
                    rules=RULES + "@2 = AFF, method=shuffle\n")
        self.expect([("rules.txt:1:31: ", "CCN has no operand KEYS")],
                    rules="CARD = CCN, method=transpose, keys=1\nID = KEEP")
        self.expect([("rules.txt:1:8: ", "CCN needs a secret or a method", "secret=NAME",
                      "method=transpose")], rules="CARD = CCN\nID = KEEP")
        self.expect([("rules.txt:1:8: ", "LKP needs the operand FILE")],
                    rules="CARD = LKP\nID = KEEP")
        self.expect([("rules.txt:1:5: ", "form COLUMN = ")], rules="CARD")

    def test_rules_that_a_provider_refuses(self):
        self.expect([("rules.txt:1:8: ", "HASH error 1, ",
                      "KORV_TOKID_COLNAME=CARD KORV_TOKID_HASHSEED_LEN=3")],
                    rules="CARD = HASH, method=seed, seed=odd, list=a\nID = KEEP")
        self.expect([("rules.txt:1:8: ", "CCN error 107, ",
                      "KORV_TOKID_COLNAME=CARD KORV_TOKID_PARMKEY=KEY")],
                    rules="CARD = CCN, method=transpose\nID = KEEP")

    def test_providers_that_are_not_there(self):
        self.expect([("rules.txt:1:8: ", "provider CCN", "nowhere")],
                    arguments=("--providers", "nowhere"))
        self.write("libkorvprv_ccn.so", "no module")
        result = self.run_program("-r", "rules.txt", "in.csv", "--providers", ".")
        self.assertEqual(2, result.returncode)
        self.assertRegex(result.stderr, rb"\Arules.txt:1:8: .*CCN.*libkorvprv_ccn.so")

    def test_everything_that_is_wrong_with_the_rules_is_said_at_once(self):
        self.expect([("rules.txt:1:5: ", "form COLUMN = "),
                     ("rules.txt:4:1: ", "CARD", "line 2"),
                     ("rules.txt:5:5: ", "missing")],
                    rules="CARD\nCARD = CCN, method=transpose, key=17\n# x\nCARD = CCC\nID =")
        self.expect([("rules.txt:1:1: ", "no column X"), ("rules.txt:2:8: ", "the operand FILE"),
                     ("rules.txt:3:6: ", "HASH error 1", "KORV_TOKID_COLNAME=ID")],
                    rules="X = CCN, method=transpose, key=1\nCARD = LKP\n"
                          "ID = HASH, method=seed, seed=odd, list=a\n")

    def test_a_file_without_rules_does_not_fill_the_screen(self):
        self.write("rules.txt", "x\n" * 1000)
        self.write("in.csv", ROWS)
        result = self.run_program("-r", "rules.txt", "in.csv")
        self.assertEqual(2, result.returncode)
        self.assertIn(result.stderr.count(b"\n"), range(10, 30))

    def test_malformed_rows(self):
        for row, position, *words in (
                ('2,a"b\n', "3:4", "quote", "does not begin with one"),
                ('2,"a" b\n', "3:6", "after a closing quote"),
                ('2,"a\nb\n', "3:3", "quote", "never closed"),
                ("2\n", "3:1", "the row has 1 field where the header has 2"),
                ("\n2,3\n", "3:1", "the row has 1 field where the header has 2"),
                ("2,3,4\n", "3:5", "the row has 3 fields where the header has 2"),
                ("2,a\rb\n", "3:4", "carriage return without"),
                (b"2,a\0b\n", "3:4", "NUL byte"),
                (b"2,\xc3\xa4\xff\n", "3:4", "not UTF-8", "column CARD"),
                (b'2,"\n\xc3\xa4\xed\xa0\x80"\n', "4:2", "not UTF-8", "column CARD")):
            rows = ROWS.encode() + (row if isinstance(row, bytes) else row.encode())
            self.expect([(f"in.csv:{position}: ", *words)], rows=rows)
        self.expect([("in.csv:1:4: ", "not UTF-8")], rows=b"ID,\xff\n")
        self.expect([("in.csv:1:1: ", "NUL byte")], rows=b"\0")

    def test_malformed_utf16(self):
        rows = "\ufeffID,CARD\n1,x".encode("utf-16-le")
        self.expect([("in.csv:2:4: ", "surrogate")], rows=rows + b"\x00\xd8")
        self.expect([("in.csv:2:4: ", "UTF-16", "ends")], rows=rows + b"x")
        self.expect([("in.csv:2:4: ", "NUL byte")], rows=rows + b"\0\0" + b"\x00\xdc")

    def test_a_code_page_that_there_is_not(self):
        self.expect([("korv-mask: ", "encoding", "klingon")], arguments=("--encoding", "klingon"))

    def test_columns_that_are_kept_may_hold_any_bytes(self):
        rows = b"ID,CARD\n\xff\xfe,\n"
        self.assertEqual(rows, self.mask(rows, RULES, expect=0).out)

    def test_wrong_command_lines(self):
        for arguments in ((), ("-r",), ("--odd",), ("-r", "x", "a", "b"), ("-r", "x", "--jobs"),
                          ("-r", "x", "--max-errors", "-1"), ("-r", "x", "--diff", "many")):
            result = self.run_program(*arguments)
            self.assertEqual((2, b""), (result.returncode, result.stdout))
            self.assertNotEqual(b"", result.stderr)

    def test_messages_name_the_program_or_a_place(self):
        """Fault 7: a message in the middle of a script's output says where it comes from."""
        for arguments in (("-r", "none"), ("-r", "rules.txt", "none"), ("--odd",),
                          ("-r", "rules.txt", "in.csv", "-o", "/none/out.csv")):
            self.write("rules.txt", RULES)
            self.write("in.csv", ROWS)
            result = self.run_program(*arguments)
            self.assertTrue(re.match(rb"korv-mask: |rules\.txt:\d+:\d+: ", result.stderr),
                            result.stderr)


main()
