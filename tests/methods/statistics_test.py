"""Values that are masked under a secret look random: every character of a result is equally likely
at every place, and a changed digit changes every other place as often as chance does.

All secrets and values are fixed, so that the results are, too. Each of some 650 statistics goes
beyond its bounds with a probability of two in a million at most. A correct method would have failed
here with a probability of about one in a thousand when this was written, and never fails later."""
import collections
import datetime
import itertools
import math
import random

from attacks_test import DIGITS, LETTERS, MethodsTest, main, with_check_digit

LEAST_P = 1e-6
BASE32 = LETTERS + "234567"
SECRETS = [f"s{number}" for number in range(400)]
VALUES = 50  # of each secret


def p_value(chi_square, freedom):
    """The probability of a chi-square this large or larger. From freedom n to n + 2 it grows by
    (x/2)^(n/2) exp(-x/2) / gamma(n/2 + 1)."""
    half = chi_square / 2
    start = freedom % 2 or 2
    p = math.erfc(math.sqrt(half)) if start == 1 else math.exp(-half)
    for n in range(start, freedom, 2):
        p += math.exp(n / 2 * math.log(half) - half - math.lgamma(n / 2 + 1))
    return p


class UniformTest(MethodsTest):
    def assert_uniform(self, samples, choices):
        """All choices are equally likely, and do not come more regularly than by chance."""
        counts = collections.Counter(samples)
        self.assertLessEqual(set(counts), set(choices))
        expected = counts.total() / len(choices)
        self.assertGreaterEqual(expected, 5)  # as the chi-square needs it
        chi_square = sum((counts[choice] - expected)**2 for choice in choices) / expected
        self.assertGreater(chi_square, 0)
        p = p_value(chi_square, len(choices) - 1)
        self.assertTrue(LEAST_P < p < 1 - LEAST_P, f"p = {p}: {counts.most_common()}")

    def results(self, rule, values, secrets=SECRETS):
        """The results of the values, for each secret."""
        return self.masked([(f"{rule}, secret={secret}", values) for secret in secrets])


class PlacesTest(UniformTest):
    def assert_places_uniform(self, rule, values, places):
        """`places` are pairs of some places in the results and their characters."""
        results = list(itertools.chain(*self.results(rule, values)))
        for at, choices in places:
            for place in at:
                with self.subTest(rule=rule, place=place):
                    self.assert_uniform([result[place] for result in results], choices)

    def test_p_value(self):
        """Values from printed tables of the chi-square distribution."""
        for chi_square, freedom, p in ((3.841, 1, .05), (5.991, 2, .05), (27.877, 9, .001),
                                       (34.382, 25, .1), (149.449, 100, .001)):
            self.assertAlmostEqual(p, p_value(chi_square, freedom), delta=p / 100)

    def test_cards(self):
        cards = [with_check_digit(f"411111{number:09}") for number in range(VALUES)]
        self.assert_places_uniform("CCN", cards, [(range(6, 16), DIGITS)])
        cards = [with_check_digit(f"4111111{number:07}") + "0" for number in range(VALUES)]
        self.assert_places_uniform("CCN, prefix=8, last=3", cards, [(range(8, 12), DIGITS)])

    def test_identity_numbers(self):
        numbers = [f"{number:09}" for number in range(VALUES)]
        self.assert_places_uniform("NID", numbers, [(range(9), DIGITS)])
        self.assert_places_uniform("NID", [number[3:] for number in numbers], [(range(6), DIGITS)])
        integers = [str(1234567 + number) for number in range(VALUES)]
        self.assert_places_uniform("NID, integer", integers,
                                   [([0], DIGITS[1:]), (range(1, 7), DIGITS)])

    def test_names(self):
        texts = [f"ab{number:02}-Xyz" for number in range(VALUES)]
        self.assert_places_uniform("AFF", texts, [
            ((0, 1, 6, 7), LETTERS), ((2, 3), DIGITS), ([5], LETTERS.upper())])

    def test_addresses(self):
        addresses = [f"user{number}@mail{number}.example" for number in range(VALUES)]
        self.assert_places_uniform("EML, length=51", addresses, [
            (range(51), BASE32), (range(52, 68), BASE32)])
        addresses = [f"ann{number:02}@mail.example" for number in range(VALUES)]
        self.assert_places_uniform("EML, method=ff1", addresses, [
            (range(3), LETTERS), ((3, 4), DIGITS)])

    def test_picks(self):
        words = [f"word{number}" for number in range(VALUES)]
        for choices in ("Red;Green;Blue", ";".join(map(str, range(100)))):
            results = self.results(f"HASH, list={choices}", words)
            self.assert_uniform(itertools.chain(*results), choices.split(";"))

    def test_dates(self):
        dates = [datetime.date(2000, 2, 1) + datetime.timedelta(number) for number in range(VALUES)]
        texts = list(map(str, dates))
        ids = [f"id{number}" for number in range(VALUES)]
        for rule, values in (("AGE, range=-30..30", texts),
                             ("AGE, range=-30..30, per=V0", ["2000-02-29"] * VALUES)):
            # V0 is the first column.
            _, *results = self.masked([("KEEP", ids)] + [(f"{rule}, secret={secret}", values)
                                                         for secret in SECRETS])
            date = datetime.date.fromisoformat
            days = [(date(result) - date(value)).days
                    for column in results for result, value in zip(column, values)]
            self.assert_uniform(days, range(-30, 31))


class SmallDomainsTest(UniformTest):
    SECRETS = [f"s{number}" for number in range(1000)]

    def test_four_digits(self):
        """Every value is equally likely to become each of the 10,000 values."""
        choose = random.Random(1)
        values = ["0000", "9999", *(f"{number:04}" for number in choose.sample(range(1, 9999), 58))]
        results = self.results("NID", values, self.SECRETS)
        self.assert_uniform(map(int, itertools.chain(*results)), range(10**4))
        for of_value in zip(*results):
            self.assert_uniform((int(result) // 100 for result in of_value), range(100))

    def test_one_digit(self):
        """The results of two values are equally likely to be each pair of different digits."""
        pairs = list(itertools.permutations(DIGITS, 2))
        results = list(zip(*self.results("NID", list(DIGITS), self.SECRETS)))
        for one, other in ((0, 1), (1, 2), (8, 9), (9, 0), (0, 5), (3, 7)):
            self.assert_uniform(zip(results[one], results[other]), pairs)


class AvalancheTest(MethodsTest):
    """One changed digit or letter changes each place of the result with the probability of chance,
    such as 9/10 for a digit."""

    COUNT = 4000

    def assert_avalanche(self, rule, values, changed, places):
        """`changed` are lists of values, each with another place changed."""
        before, *after = self.masked([(f"{rule}, secret=s1", values)
                                      for values in (values, *changed)])
        for number, column in enumerate(after):
            for at, choices in places:
                for place in at:
                    changes = sum(a[place] != b[place] for a, b in zip(before, column))
                    p = 1 - 1 / len(choices)
                    deviation = abs(changes - len(values) * p)
                    with self.subTest(rule=rule, changed=number, place=place):
                        # Five standard deviations.
                        self.assertLess(deviation, 5 * math.sqrt(len(values) * p * (1 - p)))

    def changed(self, values, place, choices):
        """The values with another character at this place."""
        choose = random.Random(place)
        return [value[:place] + choose.choice(choices.replace(value[place], "")) + value[place + 1:]
                for value in values]

    def random_texts(self, *kinds):
        choose = random.Random(7)
        return ["".join(map(choose.choice, kinds)) for _ in range(self.COUNT)]

    def test_cards(self):
        # A digit of the prefix changes all others, too, by the tweak.
        digits = self.random_texts(*[DIGITS[1:]] * 15)
        cards = list(map(with_check_digit, digits))
        changed = [list(map(with_check_digit, self.changed(digits, place, DIGITS)))
                   for place in range(15)]
        self.assert_avalanche("CCN", cards, changed, [(range(6, 15), DIGITS)])

    def test_identity_numbers(self):
        for count in (4, 9):
            numbers = self.random_texts(*[DIGITS] * count)
            changed = [self.changed(numbers, place, DIGITS) for place in range(count)]
            self.assert_avalanche("NID", numbers, changed, [(range(count), DIGITS)])

    def test_names(self):
        kinds = [LETTERS] * 4 + [DIGITS] * 2
        texts = self.random_texts(*kinds)
        changed = [self.changed(texts, place, kind) for place, kind in enumerate(kinds)]
        self.assert_avalanche("AFF", texts, changed, [(range(4), LETTERS), (range(4, 6), DIGITS)])

    def test_addresses(self):
        users = self.random_texts(*[LETTERS] * 8)
        changed = [self.changed(users, place, LETTERS) for place in range(8)]
        columns = [[f"{user}@mail.example" for user in column] for column in (users, *changed)]
        self.assert_avalanche("EML", columns[0], columns[1:], [(range(16), BASE32)])
        self.assert_avalanche("EML, method=ff1", columns[0], columns[1:], [(range(8), LETTERS)])


main()
