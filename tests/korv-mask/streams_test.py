"""Standard input and output, line ends, UTF-16 input, reports, and the progress bar."""
import os
import pty
import signal
import subprocess

from command import DATA, PROGRAM, CommandTest, demo_rules, main, read

RULES = ["--rules", demo_rules(), "--keep-unlisted"]
CUSTOMERS = os.path.join(DATA, "customers.csv")


class StreamsTest(CommandTest):
    def mask_stream(self, contents):
        result = self.run_program(*RULES, stdin=contents)
        self.assertEqual(1, result.returncode)
        return result.stdout

    def setUp(self):
        super().setUp()
        self.customers = read(CUSTOMERS)
        self.masked = self.mask_stream(self.customers)

    def test_files_and_streams_give_the_same(self):
        for arguments in ([CUSTOMERS, "-o", "out.csv"], [CUSTOMERS], ["-o", "out.csv"],
                          ["-", "-o", "-"]):
            result = self.run_program(*RULES, *arguments, stdin=self.customers)
            self.assertEqual(1, result.returncode)
            out = read(self.path("out.csv")) if "out.csv" in arguments else result.stdout
            self.assertEqual(self.masked, out)

    def test_the_input_may_be_its_own_output(self):
        path = self.write("rows.csv", self.customers)
        self.run_program(*RULES, path, "-o", path)
        self.assertEqual(self.masked, read(path))

    def test_a_link_to_the_output_stays(self):
        rows = self.write("rows.csv", self.customers)
        link = self.path("link.csv")
        os.symlink("rows.csv", link)
        self.run_program(*RULES, link, "-o", link)
        self.assertTrue(os.path.islink(link))
        self.assertEqual(self.masked, read(rows))

    def test_crlf_stays_crlf(self):
        # The line ends inside quotes are text, which the rules mask: take the row with them away.
        plain = [line for line in self.customers.split(b"\n") if line.startswith((b"ID", b"1000"))
                 and line.count(b'"') % 2 == 0]
        rows = b"\n".join(plain) + b"\n"
        self.assertEqual(self.mask_stream(rows).replace(b"\n", b"\r\n"),
                         self.mask_stream(rows.replace(b"\n", b"\r\n")))

    def test_a_last_line_without_end_stays_so(self):
        self.assertEqual(self.masked[:-1], self.mask_stream(self.customers[:-1]))

    def test_utf8_byte_order_mark_stays(self):
        mark = b"\xef\xbb\xbf"
        self.assertEqual(mark + self.masked, self.mask_stream(mark + self.customers))

    def test_utf16_gives_the_same_as_utf8(self):
        many = self.customers + self.customers.split(b"\n", 1)[1] * 3
        masked = self.mask_stream(many)
        text = many.decode()
        for mark, encoding in ((b"\xff\xfe", "utf-16-le"), (b"\xfe\xff", "utf-16-be")):
            self.assertEqual(masked, self.mask_stream(mark + text.encode(encoding)))

    def test_report_goes_to_standard_error_or_a_file(self):
        to_error = self.run_program(*RULES, CUSTOMERS)
        to_file = self.run_program(*RULES, CUSTOMERS, "--report", "report.txt")
        values = self.lines_of_values(to_error.stderr.decode())
        self.assertEqual(19, len(values))
        self.assertEqual(values, self.lines_of_values(read(self.path("report.txt")).decode()))
        for messages in (to_error.stderr, to_file.stderr):
            self.assertRegex(messages, rb"korv-mask: .*customers\.csv: 19 of \d+ values in 240 "
                                       rb"rows failed")
        self.assert_only_counted(to_file.stderr, 19)

    def test_nothing_is_reported_when_all_is_well(self):
        rules = self.write("rules.txt", "A = AFF, method=shuffle\n")
        result = self.run_program("-r", rules, "--report", "report", stdin=b"A\nab\n")
        self.assertEqual((0, b"A\nba\n", b""), (result.returncode, result.stdout, result.stderr))
        self.assertEqual(b"", read(self.path("report")))

    def test_empty_fields_and_quotes(self):
        rules = self.write("rules.txt", "A = AFF, method=reverse\nB = KEEP\n")
        for row, masked in ((b",x", b",x"), (b'"",x', b'"",x'), (b'"ab","x""y"', b'"ba","x""y"'),
                            (b'"b,a",', b'"a,b",'), (b'"a""b",', b'"b""a",'),
                            (b'"a\nb",', b'"b\na",'),
                            (b'"a","b"', b',"b"')):
            result = self.run_program("-r", rules, stdin=b"A,B\n" + row + b"\n")
            self.assertEqual(b"A,B\n" + masked + b"\n", result.stdout)

    def run_on_terminal(self, *arguments, stdin):
        """Runs with standard error on a terminal; returns what appears there."""
        master, slave = pty.openpty()
        with subprocess.Popen([PROGRAM, *arguments], stdin=stdin, stdout=subprocess.DEVNULL,
                              stderr=slave):
            os.close(slave)
            shown = b""
            while True:
                try:
                    piece = os.read(master, 65536)
                except OSError:
                    break
                if not piece:
                    break
                shown += piece
        os.close(master)
        return shown

    def test_progress_bar(self):
        rules = self.write("rules.txt", "* = KEEP\nA = AFF, method=shuffle\n")
        long_input = self.write("long.csv", b"A,B\n" + b"ab," + b"x" * 9000 + b"\n" +
                                (b"ab," + b"x" * 9000 + b"\n") * 1100)
        short_input = self.write("short.csv", b"A,B\nab,x\n")
        for jobs in ("1", "4"):
            with open(long_input, "rb") as file:
                shown = self.run_on_terminal("-r", rules, "--jobs", jobs, stdin=file)
            self.assertIn(b"#", shown)
            self.assertTrue(shown.endswith(b"\r\x1b[K"), shown)
        with open(short_input, "rb") as file:
            self.assertEqual(b"", self.run_on_terminal("-r", rules, stdin=file))
        with open(long_input, "rb") as file:
            shown = self.run_on_terminal("-r", rules, "--progress", "never", stdin=file)
        self.assertEqual(b"", shown)
        result = self.run_program("-r", rules, long_input, "-o", "out.csv")
        self.assertEqual(b"", result.stderr)
        result = self.run_program("-r", rules, long_input, "-o", "out.csv", "--progress", "always")
        self.assertIn(b"#", result.stderr)

    def test_an_interrupted_run_leaves_no_file(self):
        rules = self.write("rules.txt", "A = AFF, method=shuffle\n")
        for jobs in ("1", "4"):
            with subprocess.Popen([PROGRAM, "-r", rules, "--jobs", jobs, "-o",
                                   self.path("out.csv")], stdin=subprocess.PIPE) as process:
                # More than the program holds at once: when all of it is written, the program has
                # begun its output.
                process.stdin.write(b"A\n")
                for _ in range(12):
                    process.stdin.write(b"ab\n" * 1000000)
                process.stdin.flush()
                self.assertEqual(2, len(os.listdir(self.folder)))
                process.send_signal(signal.SIGTERM)
                process.wait()
            self.assertEqual(-signal.SIGTERM, process.returncode)
            self.assertEqual(["rules.txt"], os.listdir(self.folder))


main()
