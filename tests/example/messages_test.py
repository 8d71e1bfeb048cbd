"""Every way not to run: the message, exit status 2, and no output file."""
import os

from command import CommandTest, main

RULES = "CARD = CCN, key=17\n"
ROWS = "ID,CARD\n1,4111111111111111\n"


class MessagesTest(CommandTest):
    def expect(self, message, rules=RULES, rows=ROWS, arguments=()):
        """Runs with the rules and rows, None for no such file, over an old output and over none."""
        for old in (None, b"old\n"):
            for name, contents in (("rules.txt", rules), ("in.csv", rows), ("out.csv", old)):
                if contents is not None:
                    self.write(name, contents)
                elif os.path.exists(self.path(name)):
                    os.remove(self.path(name))
            before = sorted(os.listdir(self.folder))
            result = self.run_program("-r", "rules.txt", "in.csv", "-o", "out.csv", *arguments)
            self.assertEqual((message + "\n", 2), (result.stderr.decode(), result.returncode))
            self.assertEqual(before, sorted(os.listdir(self.folder)))
            if old is not None:
                with open(self.path("out.csv"), "rb") as file:
                    self.assertEqual(old, file.read())

    def test_files_that_cannot_be_read(self):
        self.expect("rules.txt: cannot be read", rules=None)
        self.expect("in.csv: No such file or directory", rows=None)
        self.expect("in.csv: there is no header row", rows="")
        result = self.run_program("-r", "rules.txt", self.folder)
        self.assertEqual(2, result.returncode)
        self.assertIn(b"Is a directory", result.stderr)

    def test_files_that_cannot_be_written(self):
        self.write("rules.txt", RULES)
        self.write("in.csv", ROWS)
        for arguments, message in (
                (("-o", "none/out.csv"), b"none/out.csv: No such file or directory\n"),
                (("-o", "/dev/full"), b"/dev/full: No space left on device\n"),
                (("--report", "none/x"), b"none/x: No such file or directory\n")):
            result = self.run_program("-r", "rules.txt", "in.csv", *arguments)
            self.assertEqual((2, message), (result.returncode, result.stderr))

    def test_files_that_are_read_are_not_replaced(self):
        self.write("rules.txt", RULES)
        self.write("in.csv", ROWS)
        os.link(self.path("in.csv"), self.path("same.csv"))
        os.symlink("rules.txt", self.path("same.txt"))
        for option, written, read in (("--report", "in.csv", "in.csv"),
                                      ("--report", "same.csv", "in.csv"),
                                      ("--report", "rules.txt", "rules.txt"),
                                      ("-o", "rules.txt", "rules.txt"),
                                      ("-o", "same.txt", "rules.txt")):
            result = self.run_program("-r", "rules.txt", "in.csv", option, written)
            message = f"{written}: would replace {read}, which is read\n"
            self.assertEqual((2, message.encode()), (result.returncode, result.stderr))
        for report in ("out.csv", "./out.csv"):
            self.write("out.csv", ROWS)
            result = self.run_program("-r", "rules.txt", "in.csv", "-o", "out.csv", "--report",
                                      report)
            message = f"{report}: is the output, too\n"
            self.assertEqual((2, message.encode()), (result.returncode, result.stderr))
        for name, contents in (("in.csv", ROWS), ("rules.txt", RULES), ("out.csv", ROWS)):
            with open(self.path(name), encoding="utf-8") as file:
                self.assertEqual(contents, file.read())

    def test_rules_that_do_not_fit(self):
        self.expect("rules.txt:1:8: there is no provider CNC", rules="CARD = CNC, key=1\n")
        self.expect("rules.txt:2:1: in.csv has no column PHONE",
                    rules=RULES + "phone = NID, key=1\n")
        self.expect("rules.txt:1:1: in.csv has no column card", rules='"card" = CCN, key=1\n')
        self.expect("rules.txt:1:1: in.csv has more than one column CARD", rows="CARD,Card\n")
        self.expect("rules.txt:2:1: column CARD has two rules", rules=RULES + '"CARD" = AFF\n')
        self.expect("rules.txt:1:13: CCN has no operand KEYS", rules="CARD = CCN, keys=1\n")
        self.expect("rules.txt:1:8: CCN needs the operand KEY", rules="CARD = CCN\n")
        self.expect("rules.txt:1:5: a rule has the form COLUMN = PROVIDER, operand=value, ...",
                    rules="CARD")

    def test_rules_that_a_provider_refuses(self):
        self.expect("rules.txt:1: AFF error 2, the method is shuffle, reverse or number: "
                    "KORV_TOKID_COLNAME=CARD KORV_TOKID_METHOD=ODD\n"
                    "rules.txt:1:8: provider AFF does not accept this rule",
                    rules="CARD = AFF, method=odd\n")

    def test_providers_that_are_not_there(self):
        self.expect("rules.txt:1:8: provider CCN has no module: there is no file "
                    "nowhere/libkorvprv_ccn.so (--providers names the folder)",
                    arguments=("--providers", "nowhere"))
        self.write("libkorvprv_ccn.so", "no module")
        result = self.run_program("-r", "rules.txt", "in.csv", "--providers", ".")
        self.assertEqual(2, result.returncode)
        self.assertTrue(result.stderr.startswith(
            b"rules.txt:1:8: provider CCN cannot be loaded: "), result.stderr)

    def test_everything_that_is_wrong_with_the_rules_is_said_at_once(self):
        self.expect("rules.txt:1:5: a rule has the form COLUMN = PROVIDER, operand=value, ...\n"
                    "rules.txt:4:1: column CARD has a rule on line 2 already\n"
                    "rules.txt:5:5: the provider is missing",
                    rules="CARD\nCARD = CCN, key=17\n# x\nCARD = CCC\nID =")
        self.expect("rules.txt:3: AFF error 2, the method is shuffle, reverse or number: "
                    "KORV_TOKID_COLNAME=ID KORV_TOKID_METHOD=ODD\n"
                    "rules.txt:1:1: in.csv has no column X\n"
                    "rules.txt:2:8: CCN needs the operand KEY\n"
                    "rules.txt:3:6: provider AFF does not accept this rule",
                    rules="X = CCN, key=1\nCARD = CCN\nID = AFF, method=odd\n")

    def test_a_file_without_rules_does_not_fill_the_screen(self):
        wrong = "".join(f"rules.txt:{line}:2: a rule has the form COLUMN = PROVIDER, "
                        "operand=value, ...\n" for line in range(1, 21))
        self.expect(wrong + "no more than these are shown", rules="x\n" * 1000)

    def test_malformed_rows(self):
        for row, message in (
                ('2,a"b\n', "3:4: a quote in a field that does not begin with one"),
                ('2,"a" b\n', "3:6: text behind a closing quote"),
                ('2,"a\nb\n', "3:3: a quote that is never closed"),
                ("2\n", "3:1: the row has 1 fields where the header has 2"),
                ("\n", "3:1: the row has 1 fields where the header has 2"),
                ("2,3,4\n", "3:5: the row has 3 fields where the header has 2"),
                ("2,a\rb\n", "3:4: a carriage return without line feed"),
                (b"2,a\0b\n", "3:4: a NUL byte"),
                (b"2,\xc3\xa4\xff\n", "3:4: bytes that are not UTF-8, in the masked column CARD"),
                (b'2,"\n\xc3\xa4\xed\xa0\x80"\n',
                 "4:2: bytes that are not UTF-8, in the masked column CARD")):
            rows = ROWS.encode() + (row if isinstance(row, bytes) else row.encode())
            self.expect("in.csv:" + message, rows=rows)
        self.expect("in.csv:1:4: bytes that are not UTF-8", rows=b"ID,\xff\n")
        self.expect("in.csv:1:1: a NUL byte", rows=b"\0")

    def test_malformed_utf16(self):
        rows = "\ufeffID,CARD\n1,x".encode("utf-16-le")
        self.expect("in.csv:2:4: a UTF-16 surrogate without its partner", rows=rows + b"\x00\xd8")
        self.expect("in.csv:2:4: the input ends within a UTF-16 unit", rows=rows + b"x")
        self.expect("in.csv:2:4: a NUL byte", rows=rows + b"\0\0" + b"\x00\xdc")

    def test_columns_without_a_rule_may_hold_any_bytes(self):
        self.write("rules.txt", RULES)
        rows = b"ID,CARD\n\xff\xfe,\n"
        self.write("in.csv", rows)
        result = self.run_program("-r", "rules.txt", "in.csv")
        self.assertEqual((0, rows), (result.returncode, result.stdout))

    def test_wrong_command_lines(self):
        for arguments in ((), ("-r",), ("--odd",), ("-r", "x", "a", "b")):
            result = self.run_program(*arguments)
            self.assertEqual((2, b""), (result.returncode, result.stdout))
            self.assertNotEqual(b"", result.stderr)
        result = self.run_program("--help")
        self.assertEqual((0, b""), (result.returncode, result.stderr))
        for option in (b"--rules", b"--output", b"--report", b"--providers", b"--progress"):
            self.assertIn(option, result.stdout)


main()
