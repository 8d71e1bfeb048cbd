"""Different values stay different under a secret, and --unmask gives all of them back.

Small domains are masked completely. There the results must be the same set of values again."""
import itertools
import random

from attacks_test import DIGITS, LETTERS, MethodsTest, main, with_check_digit


def numbers(count):
    """All texts of so many digits."""
    return [f"{number:0{count}}" for number in range(10**count)]


class OneToOneTest(MethodsTest):
    # Not assertEqual in these, which would show megabytes.

    def assert_distinct(self, columns):
        """Masks columns, which are pairs of a rule and different values. The results are different
        as well, and can be unmasked. Returns them."""
        results = self.masked(columns)
        for (rule, values), column in zip(columns, results):
            self.assertTrue(len(set(values)) == len(values) == len(set(column)), rule)
            self.assertTrue(column != values, rule)
        rules = [rule for rule, _ in columns]
        again = self.masked(list(zip(rules, results)), "--unmask")
        for (rule, values), column in zip(columns, again):
            self.assertTrue(column == values, f"--unmask, {rule}")
        return results

    def assert_permuted(self, columns):
        """Each column has all values of its domain, and the results are the same values."""
        for (rule, values), column in zip(columns, self.assert_distinct(columns)):
            self.assertTrue(set(column) == set(values), rule)
            self.assertTrue(list(map(len, column)) == list(map(len, values)), rule)

    def test_all_numbers_of_1_to_6_digits(self):
        values = list(itertools.chain(*map(numbers, range(1, 7))))
        self.assert_permuted([("NID, secret=s1", values), ("AFF, secret=s1", values)])

    def test_all_short_texts(self):
        kinds = ([LETTERS], [LETTERS] * 2, [LETTERS] * 3, [DIGITS, LETTERS, "-", DIGITS],
                 [LETTERS] + [DIGITS] * 4)
        self.assert_permuted([("AFF, secret=s1", list(map("".join, itertools.product(*kind))))
                              for kind in kinds])

    def test_all_cards_of_1_to_6_encrypted_digits(self):
        """Of 12 digits. The Luhn sum stays what it is, right or wrong."""
        single, double = list(range(10)), [0, 2, 4, 6, 8, 1, 3, 5, 7, 9]
        parts = [double, single] * 6  # of the sum
        for count, (prefix, last) in enumerate(((8, 2), (8, 1), (8, 0), (7, 0), (6, 0), (5, 0)), 1):
            start, end = "41111111"[:prefix], "0" * last
            fixed = sum(part[int(digit)] for part, digit in zip(parts, start))
            sums = [fixed + sum(free) for free in itertools.product(*parts[prefix:prefix + count])]
            columns = []
            for luhn_sum in range(10 if count < 6 else 1):
                digits = [str(parts[prefix + count].index((luhn_sum - rest) % 10))
                          for rest in range(10)]
                columns.append((f"CCN, secret=s1, prefix={prefix}, last={last}",
                                [start + free + digits[rest % 10] + end
                                 for free, rest in zip(numbers(count), sums)]))
            self.assert_permuted(columns)

    def test_all_integers_of_1_to_5_digits(self):
        values = list(range(-10**5 + 1, 10**5))
        texts = list(map(str, values))
        self.assert_permuted([("NID, secret=s1, integer", texts),
                              ("NID, secret=s1, integer=int4", texts)])

    def test_large_integers(self):
        choose = random.Random(1)
        for name, limit in (("int4", 2**31), ("int8", 2**63)):
            for sign, most in (("", limit - 1), ("-", limit)):
                least = 10**(len(str(most)) - 1)
                values = {least, most, *(choose.randrange(least, most) for _ in range(20000))}
                rule = f"NID, secret=s1, integer={name}"
                [masked] = self.assert_distinct([(rule, [f"{sign}{value}" for value in values])])
                for text in masked:
                    self.assertEqual(sign, text.rstrip(DIGITS))
                    self.assertTrue(least <= abs(int(text)) <= most, text)

    def test_a_million_numbers(self):
        values = [f"{number:09}" for number in random.Random(2).sample(range(10**9), 10**6)]
        [masked] = self.assert_distinct([("NID, secret=s1", values)])
        self.assertTrue(all(len(value) == 9 for value in masked))

    def test_100000_in_sequence(self):
        values = range(100000)
        users = [f"user{number}@mail.example" for number in values]
        self.assert_distinct([
            ("CCN, secret=s1", [with_check_digit(f"411111{number:09}") for number in values]),
            ("NID, secret=s1", [f"{number // 10000:03}-{number // 100 % 100:02}-{number % 10000:04}"
                                for number in values]),
            ("EML, secret=s1, method=ff1", users),
            ("AFF, secret=s1", [f"AB {number:06} C" for number in values])])
        # The pseudonyms cannot be unmasked.
        self.assertEqual(len(users), len(set(self.masked_column("EML, secret=s1", users))))


main()
