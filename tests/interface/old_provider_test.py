"""A provider module of version 1 of the interface, stored as it was compiled, is loaded and masks as
it did. Usage: old_provider_test.py KORV-MASK FOLDER-OF-THE-MODULE"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAM, FOLDER = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
RULES = 'ID = KEEP\nPHONE = CDSWAP, at=2, "name=pq-7.t", flag\nNOTE = CDSWAP, at=2, type=wide\n'
CLEAR = "ID,PHONE,NOTE\n1,12-345,ab7\n2,,\n3,é1234,x\n4,none,99\n5,1,äöü42\n"
MASKED = "ID,PHONE,NOTE\n1,12-654,ab2\n2,,\n3,é1765,\n4,,\n5,,äöü57\n"


class OldProviderTest(unittest.TestCase):
    def test_it_masks_as_it_did_when_it_was_compiled(self):
        with tempfile.TemporaryDirectory(prefix="korv_old_provider_") as name:
            folder = pathlib.Path(name)
            (folder / "rules.txt").write_text(RULES, encoding="utf-8")
            (folder / "clear.csv").write_text(CLEAR, encoding="utf-8")
            done = subprocess.run(
                [PROGRAM, "--providers", FOLDER, "--rules", "rules.txt", "clear.csv",
                 "--output", "masked.csv", "--report", "report.txt"], cwd=folder, timeout=60,
                check=False, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            # Four values have no digit, which is the only error that the module reports.
            self.assertEqual(1, done.returncode, done.stdout)
            report = (folder / "report.txt").read_text(encoding="utf-8")
            self.assertEqual(4, report.count("CDSWAP error 1, no digit"), report)
            self.assertNotIn("error 3", report)
            self.assertEqual(MASKED, (folder / "masked.csv").read_text(encoding="utf-8"))


unittest.main(argv=[sys.argv[0]])
