"""The engine's C interface and the program mask the table of vectors to the same texts and faults, which never
change."""
import hashlib
import json
import os
import re
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "korv-mask"))
from command import PROGRAM, CommandTest, has_secrets, main

import make_vectors
import routes

MASK_TABLE = os.path.join(os.path.dirname(PROGRAM), "mask_table")
# SHA-256 of masked texts, error codes and tokens. Another one means that equal values are masked to other texts
# than before.
RESULTS = {False: "f2d4afaf8b4748e57d9e1259cf9821e98e6bfdf7faef04f6f19a25ec3a9a80e5",
           True: "8ac2642adf14698c3f9ea188668428fce7ebf734698efa9e33ac626ca9de7dd3"}


def digest(rows, faults):
    tokens = [(row, column, code, re.findall(r"KORV_TOKID_\w+=\S*", message))
              for row, column, code, message in faults]
    return hashlib.sha256(json.dumps([rows, tokens]).encode()).hexdigest()


class VectorsTest(CommandTest):
    def mask(self, disguises):
        make_vectors.write(self.folder, disguises)
        rows, faults = routes.c_call(self.folder, MASK_TABLE)
        self.assertEqual(make_vectors.ROWS, len(rows))
        self.assertEqual(RESULTS[disguises], digest(rows, faults))
        other_rows, other_faults = routes.command_line(self.folder, PROGRAM)
        # NULL and an empty text are one in a CSV file.
        self.assertEqual([[field or None for field in row] for row in rows], other_rows)
        self.assertEqual([(row, column, message) for row, column, _, message in faults], other_faults)

    def test_methods_without_a_secret(self):
        self.mask(disguises=True)

    def test_all_methods(self):
        if not has_secrets():
            self.skipTest("the program is built without libcrypto")
        self.mask(disguises=False)


main()
