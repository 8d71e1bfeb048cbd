"""The reference of the methods against published vectors, and what it must hold by itself."""
import csv
import os
import random
import unittest

import reference
from reference import Ff1, hkdf, mask, operands_of, permute, reversible, unpermute

HERE = os.path.dirname(os.path.abspath(__file__))
KEY = bytes(range(32))


def stored(name):
    """The rows of a file beside this one, without its comments."""
    with open(os.path.join(HERE, name), encoding="utf-8", newline="") as file:
        if file.read(1) == "#":
            file.readline()
        else:
            file.seek(0)
        return list(csv.DictReader(file))


class ReferenceTest(unittest.TestCase):
    def test_ff1_vectors(self):
        vectors = stored("ff1_vectors.csv")
        self.assertGreaterEqual(len(vectors), 9)
        for row in vectors:
            with self.subTest(row["source"]):
                ff1 = Ff1(bytes.fromhex(row["key"]), int(row["radix"]))
                tweak = bytes.fromhex(row["tweak"])
                clear, masked = ([int(numeral, 36) for numeral in row[name]]
                                 for name in ("plaintext", "ciphertext"))
                self.assertEqual(masked, ff1.encrypt(clear, tweak))
                self.assertEqual(clear, ff1.decrypt(masked, tweak))

    def test_ff1_in_every_radix(self):
        values = random.Random(1)
        for radix in range(2, 37):
            for count in (2, 3, 20, 21, 200):
                for key in (KEY[:16], KEY[:24], KEY):
                    clear = [values.randrange(radix) for _ in range(count)]
                    masked = Ff1(key, radix).encrypt(clear, b"tweak")
                    self.assertEqual(clear, Ff1(key, radix).decrypt(masked, b"tweak"))

    def test_hkdf_of_rfc_5869_case_3(self):
        self.assertEqual("8da4e775a563c18f715f802a063c5a31b8a11f5c5ee1879ec3454e5f3c738d2d"
                         "9d201395faa4b61a96c8", hkdf(b"\x0b" * 22, b"", 42).hex())

    def test_keys_differ(self):
        keys = {reference.derive_key(KEY, *names)
                for names in (("AFF", "ff1"), ("AFF", "ff1", "a"), ("NID", "ff1"), ("AFF", "x"))}
        self.assertEqual(4, len(keys))
        self.assertEqual(reference.derive_key(KEY, "AFF", "ff1"),
                         reference.derive_key(KEY, "col", "FF1"))
        self.assertRegex(reference.fingerprint(KEY), r"\A[0-9a-f]{8}\Z")

    def test_small_permutations_are_one_to_one(self):
        for n in range(1, 301):
            results = [permute(KEY, n, x, b"tweak") for x in range(n)]
            self.assertEqual(list(range(n)), sorted(results))
            self.assertEqual(list(range(n)), [unpermute(KEY, n, y, b"tweak") for y in results])

    def test_large_permutations_can_be_undone(self):
        values = random.Random(2)
        for n in (999_999, 1_000_000, 1_000_001, 10 ** 9, 26 ** 8, 9 * 10 ** 18):
            for x in [0, n - 1, *(values.randrange(n) for _ in range(50))]:
                y = permute(KEY, n, x, b"")
                self.assertTrue(0 <= y < n)
                self.assertEqual(x, unpermute(KEY, n, y, b""))

    def test_case_is_of_single_characters(self):
        self.assertEqual("i\N{GREEK SMALL LETTER SIGMA}", reference.lower("\u0130\u03a3"))
        self.assertEqual("\u00df\ufb01\u1fbc\u0178", reference.upper("\u00df\ufb01\u1fb3\u00ff"))

    def test_stored_vectors(self):
        for row in stored("vectors.csv"):
            with self.subTest(provider=row["provider"], operands=row["operands"]):
                rule = {"provider": row["provider"], "secret": bytes.fromhex(row["secret"]),
                        "scope": row["scope"], **operands_of(row["operands"])}
                self.assertEqual(row["result"],
                                 mask(value=row["value"], related=row["related"], **rule))
                if reversible(**rule):
                    self.assertEqual(row["value"], mask(value=row["result"], unmask=True, **rule))


if __name__ == "__main__":
    unittest.main(verbosity=2)
