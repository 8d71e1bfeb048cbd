"""Workers: output, report, summary and messages are the same for every number of them."""
import os
import random
import subprocess
import threading

from command import DATA, HERE, PROGRAM, main, read
from jobs import CHUNK, JobsTest, customers

STRONG = read(os.path.join(DATA, "rules.txt")).decode()
DISGUISES = read(os.path.join(HERE, "disguises.txt")).decode()


def field(text, quoted):
    return '"' + text.replace('"', '""') + '"' if quoted else text


class WorkersTest(JobsTest):
    def test_customers(self):
        self.check_customers(DISGUISES, "method=seed, seed=autumn")

    def test_customers_with_a_secret(self):
        secrets = self.write_secrets("demo = " + "01" * 32 + "\n")
        self.check_customers(STRONG, "secret=demo", "--secrets", secrets)

    def check_customers(self, rules, of_hash, *arguments):
        rules = "\n".join(line for line in rules.splitlines()
                          if "file=" not in line and "SEGMENT" not in line)
        rules += f"\nCITY = HASH, {of_hash}, list=A;B;C\n"
        rules += '"First Name" = CONST, value=-\n'
        run = self.assert_same(customers(20000), rules, "--keep-unlisted", *arguments, expect=1)
        self.assertGreater(len(run.out), 3 * CHUNK)
        self.assertEqual((20000, 20000), (run.summary["rows_in"], run.summary["rows_out"]))
        failed = sum(sum(column["failed"].values()) for column in run.summary["columns"])
        self.assertEqual(failed, len(self.lines_of_values(run.report)))
        self.assertGreater(failed, 200)

    @staticmethod
    def write_pieces(stream, contents):
        sizes = random.Random(3)
        at = 0
        while at < len(contents):
            at += os.write(stream.fileno(), contents[at:at + sizes.randrange(1, 70000)])
        stream.close()

    def test_streams_give_the_same_as_files(self):
        rows = customers(12000)
        run = self.mask(rows, "CARD = CCN, method=transpose, key=1", "--keep-unlisted", "--jobs",
                        "1", expect=1)
        for jobs in ("1", "4"):
            # The pipe hands over pieces of any size.
            with subprocess.Popen([PROGRAM, "-r", "rules.txt", "--keep-unlisted", "--jobs", jobs,
                                   "--report", "/dev/null"], cwd=self.folder,
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL) as process:
                writer = threading.Thread(target=self.write_pieces, args=(process.stdin, rows))
                writer.start()
                out = process.stdout.read()
                writer.join()
            self.assertEqual(1, process.returncode)
            self.assertTrue(out == run.out)

    def expected(self, seed, line_end):
        """Rows with quotes, line ends and delimiters in their fields, and as they must come out."""
        choose = random.Random(seed)
        rows, masked = [], []
        pieces = ["a", "bc", "é", "€", "😀", '"', '""', ",", "\n", "\r\n", " ", "x" * 50]
        size = 0
        while size < 3 * CHUNK:
            row, out = [], []
            for column in range(3):
                text = "".join(choose.choices(pieces, k=choose.randrange(0, 12)))
                if column == 1 and text == text[::-1]:
                    text = "fg" + "h" * choose.randrange(0, 3000)
                must = any(c in text for c in ',"\r\n')
                quoted = must or choose.randrange(4) == 0
                row.append(field(text, quoted))
                out.append(field(text[::-1] if column == 1 else text, quoted))
            rows.append(",".join(row))
            masked.append(",".join(out))
            size += len(rows[-1].encode())
        return ["A,B,C" + line_end + line_end.join(part) + line_end for part in (rows, masked)]

    def test_rows_with_line_ends_in_quotes_wherever_chunks_end(self):
        for seed, line_end in ((1, "\n"), (2, "\r\n"), (3, "\n")):
            rows, masked = self.expected(seed, line_end)
            run = self.assert_same(rows, "B = AFF, method=reverse\n* = KEEP", expect=0)
            self.assertTrue(run.out == masked.encode(), f"seed {seed}")

    def test_chunk_ends_at_every_place_of_a_row(self):
        row = '"a ""b""\r\n,é",xy\r\n'
        masked = row.replace("xy", "yx")
        length = len(row.encode())
        for fill in range(1, length + 2):
            # The first row moves all the others by one byte.
            count = CHUNK // length + 3
            run = self.mask("A,B\r\n" + "z" * fill + ",pq\r\n" + row * count,
                            "A = KEEP\nB = AFF, method=reverse", "--jobs", "2", expect=0)
            self.assertTrue(run.out.decode() == "A,B\r\n" + "z" * fill + ",qp\r\n" + masked * count,
                            f"{fill} bytes")

    def test_rows_longer_than_a_chunk(self):
        long = '"' + "z,\n" * CHUNK + '"'
        rows = f"A,B\nx,ab\n{long},cd\ny,ef\n{long},gh\n"
        run = self.assert_same(rows, "A = KEEP\nB = AFF, method=shuffle", expect=0)
        self.assertTrue(run.out.decode() == rows.replace("ab", "ba").replace("cd", "dc")
                        .replace("ef", "fe").replace("gh", "hg"))
        # The value is too long for its provider, which costs the value.
        run = self.assert_same(rows, "B = KEEP\nA = AFF, method=shuffle", expect=1)
        self.assertEqual(4, len(self.lines_of_values(run.report)))

    def test_a_last_row_without_an_end_and_a_blank_line_at_the_end(self):
        rows = "A,B\n" + "x,ab\n" * 300000
        for end in ("x,ab", "\n"):
            run = self.assert_same(rows + end, "A = KEEP\nB = AFF, method=shuffle", expect=0)
            self.assertTrue(run.out.decode() == (rows + end).replace("ab", "ba"))

    def test_utf16(self):
        rows = customers(8000)
        plain = self.mask(rows, "CARD = CCN, method=transpose, key=1", "--keep-unlisted", expect=1)
        run = self.assert_same(rows.decode().encode("utf-16"),
                               "CARD = CCN, method=transpose, key=1", "--keep-unlisted", expect=1)
        self.assertTrue(run.out == plain.out)
        self.assertEqual(plain.report, run.report)

    def test_the_number_of_workers(self):
        for jobs in ("0", "257", "-1", "x", "", "1.5", "4294967297"):
            self.assert_not_run("--jobs", "A\nab\n", "A = AFF, method=shuffle", "--jobs", jobs)
        run = self.mask("A\nab\n", "A = AFF, method=shuffle", "--jobs", "256", expect=0)
        self.assertEqual(b"A\nba\n", run.out)


main()
