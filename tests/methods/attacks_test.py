"""Disguises can be undone with the program. The same attacks get nothing from values that are
masked under a secret.

Each attack is one function that runs twice. The attacker has the program and runs it with other
rules, but does not know the key or the secret. Against a disguise this recovers what is described
at the test; against a secret no more than the random hits that are to be expected, plus four
standard deviations."""
import collections
import hashlib
import itertools
import math
import os
import random
import re
import string
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "korv-mask"))
from command import CommandTest, main
import make_customers

DIGITS, LETTERS = string.digits, string.ascii_lowercase
KEYS, SHIFTS = 23, 9  # keys that differ modulo 23, and shifts 1 to 9
OLD_RULES = [f"key={key}, shift={shift}, method=transpose"
             for key in range(KEYS) for shift in range(1, SHIFTS + 1)]
OWN_SECRETS = [f"secret=own{number}" for number in range(KEYS * SHIFTS)]


def with_check_digit(digits):
    return digits + make_customers.check_digit(digits)


def random_digits(count, choose):
    return "".join(choose.choices(DIGITS, k=count))


def most_hits(expected):
    """Hits are rare and independent, so that their variance is their expected number."""
    return expected + 4 * math.sqrt(expected)


class MethodsTest(CommandTest):
    """Masks many columns in one run. The secret NAME is the SHA-256 of its name."""

    def masked(self, columns, *arguments):
        """The masked values of columns, which are pairs of a rule and a list of values."""
        rules = "".join(f"V{i} = {rule}\n" for i, (rule, _) in enumerate(columns))
        names = sorted(set(re.findall(r"secret=(\w+)", rules)))
        if names:
            self.write("secrets.txt", "".join(
                f"{name} = {hashlib.sha256(name.encode()).hexdigest()}\n" for name in names))
            os.chmod(self.path("secrets.txt"), 0o600)
            arguments += ("--secrets", "secrets.txt")
        header = ",".join(f"V{i}" for i in range(len(columns)))
        rows = itertools.zip_longest(*(values for _, values in columns), fillvalue="")
        run = self.mask("\n".join((header, *map(",".join, rows), "")), rules, *arguments, expect=0)
        fields = run.out.decode().replace("\n", ",").split(",")[len(columns):]
        return [fields[i::len(columns)][:len(values)] for i, (_, values) in enumerate(columns)]

    def masked_column(self, rule, values, *arguments):
        return self.masked([(rule, values)], *arguments)[0]


class TransposedDigitsTest(MethodsTest):
    """CCN and NID without a secret: the key selects one of 23 orders, and every digit moves forward
    by an amount that depends on its place and the shift."""

    CARDS = 5000
    PHONES = 500

    def count_transformations(self, provider, values, rules):
        results = self.masked([(f"{provider}, {rule}", values) for rule in rules])
        return len(set(map(tuple, results)))

    def recovered(self, masked, pairs, provider, rules, places):
        """The attacker's guesses at the digits of masked values at these places.

        The attacker knows some pairs of a clear and a masked value, and takes the first rule that
        agrees with them, or the first one of all if no rule does. Masking chosen values by that rule
        shows for each place where its digit goes and what it becomes. The masked values are then
        reversed.
        """
        clear, known = map(list, zip(*pairs))
        columns = [(f"{provider}, {rule}", clear) for rule in rules]
        agreeing = (column[0] for column, result in zip(columns, self.masked(columns))
                    if result == known)
        rule = next(agreeing, columns[0][0])
        start = clear[0]
        probes = [start[:place] + digit + start[place + 1:]
                  for place in places for digit in DIGITS]
        results = iter(self.masked_column(rule, probes))
        guesses = [list(value) for value in masked]
        for place in places:
            of_digits = list(itertools.islice(results, 10))
            target = max(places, key=lambda at: len({result[at] for result in of_digits}))
            clear_digit = {result[target]: digit for digit, result in zip(DIGITS, of_digits)}
            for guess, value in zip(guesses, masked):
                guess[place] = clear_digit.get(value[target], "0")
        return list(map("".join, guesses))

    def cards_recovered(self, rule, rules):
        """How many cards are recovered from one pair. The last digit follows from the others."""
        choose = random.Random(1)
        cards = [with_check_digit("411111" + random_digits(9, choose))
                 for _ in range(self.CARDS + 1)]
        masked = self.masked_column(f"CCN, {rule}", cards)
        guesses = self.recovered(masked[1:], [(cards[0], masked[0])], "CCN", rules, range(6, 15))
        return sum(with_check_digit(guess[:-1]) == card for guess, card in zip(guesses, cards[1:]))

    def phones_recovered(self, rule, rules):
        """How many telephone numbers are recovered from two pairs."""
        choose = random.Random(2)
        phones = [f"0{random_digits(3, choose)}-{random_digits(7, choose)}"
                  for _ in range(self.PHONES + 2)]
        masked = self.masked_column(f"NID, {rule}", phones)
        places = [place for place, c in enumerate(phones[0]) if c != "-"]
        guesses = self.recovered(masked[2:], list(zip(phones, masked))[:2], "NID", rules, places)
        return sum(map(str.__eq__, guesses, phones[2:]))

    def test_5000_keys_are_23_transformations(self):
        choose = random.Random(3)
        keys = [choose.randrange(10**9) for _ in range(5000)]
        for provider, values in (("CCN", ["4111111234567893", "4111119876543217"]),
                                 ("NID", ["0171-2345678", "0305-9876541"])):
            for shifts, count in ((("3",), KEYS), (DIGITS[1:], KEYS * SHIFTS)):
                rules = [f"key={key}, shift={shift}, method=transpose"
                         for key in keys[:5000 // len(shifts)] for shift in shifts]
                self.assertEqual(count, self.count_transformations(provider, values, rules))

    def test_keys_that_are_the_same(self):
        rules = [f"key={key}, method=transpose" for key in (17, 40, 999999997)]
        self.assertEqual(1, self.count_transformations("CCN", ["4111111234567893"], rules))

    def test_1000_secrets_are_1000_transformations(self):
        for provider, value in (("CCN", "4111111234567893"), ("NID", "123-45-6789")):
            rules = [f"secret=s{number}" for number in range(1000)]
            self.assertEqual(1000, self.count_transformations(provider, [value], rules))

    def test_cards_from_one_pair(self):
        # A few cards have the same result as another one, see EqualNumbersTest.
        self.assertGreaterEqual(self.cards_recovered("key=271828182, shift=7, method=transpose",
                                                     OLD_RULES), self.CARDS - 5)
        # Nine digits are unknown, the tenth is the check digit.
        self.assertLessEqual(self.cards_recovered("secret=victim", OWN_SECRETS),
                             most_hits(self.CARDS / 10**9))

    def test_phones_from_two_pairs(self):
        self.assertEqual(self.PHONES, self.phones_recovered(
            "key=314159265, shift=2, method=transpose", OLD_RULES))
        self.assertLessEqual(self.phones_recovered("secret=victim", OWN_SECRETS),
                             most_hits(self.PHONES / 10**11))


class EqualNumbersTest(MethodsTest):
    """NID: different numbers become equal, and equal numbers different. It takes no attack: the
    joins of the masked tables are wrong."""

    FOUR_DIGITS = [f"{number:04}" for number in range(10**4)]
    INTEGERS = [str(number) for number in range(10**4)]
    LAYOUTS = ["123-45-6789", "123456789", "123 45 6789"]

    def test_collisions(self):
        old = self.masked_column("NID, key=5, method=transpose", self.FOUR_DIGITS)
        self.assertEqual(["3654", "3654"], [old[0], old[7654]])
        # Zeros only are never a result.
        self.assertEqual(9999, len(set(old)))
        new = self.masked_column("NID, secret=s1", self.FOUR_DIGITS)
        self.assertEqual(self.FOUR_DIGITS, sorted(new))

    def test_integers(self):
        old = self.masked_column("NID, key=5, method=transpose", self.INTEGERS)
        leading_zeros = sum(value[0] == "0" for value in old)
        self.assertGreater(leading_zeros, 900)  # a tenth of them
        self.assertLess(len(set(map(int, old))), len(old) - 900)
        new = self.masked_column("NID, secret=s1, integer", self.INTEGERS)
        self.assertEqual(self.INTEGERS, sorted(new, key=int))

    def test_layouts(self):
        for rule, count in (("key=5, method=transpose", 2), ("secret=s1", 1)):
            masked = self.masked_column(f"NID, {rule}", self.LAYOUTS)
            self.assertEqual([re.sub(r"\d", "9", value) for value in self.LAYOUTS],
                             [re.sub(r"\d", "9", value) for value in masked])
            self.assertEqual(count, len({re.sub(r"\D", "", value) for value in masked}))


def back(character, shift):
    """A letter or digit, moved back in the circle of its kind."""
    kind = DIGITS if character in DIGITS else LETTERS
    return kind[(kind.index(character) - shift) % len(kind)]


def shape(text):
    return re.sub("[a-z]", "a", re.sub("[0-9]", "9", text))


class MovedCharactersTest(MethodsTest):
    """EML without a secret: every character of the user part moves forward by an amount that
    depends on its place only, one for letters and one for digits."""

    ADDRESSES = 500
    KNOWN = "customerrelationsmanagement"

    def setUp(self):
        super().setUp()
        self.choose = random.Random(4)
        people = list(itertools.product(map(make_customers.ascii_name, make_customers.FIRST),
                                        map(make_customers.ascii_name, make_customers.LAST)))
        # A public list of user names, some of which are those of the masked addresses.
        self.names = sorted({name for first, last in people for name in (
            f"{first}.{last}", f"{first[0]}.{last}", f"{last}{first}",
            f"{first}.{last}{self.choose.randrange(100)}")})
        self.users = self.choose.sample(self.names, self.ADDRESSES)

    def masked_users(self, rule, users):
        masked = self.masked_column(f"EML, {rule}", [f"{user}@mail.example" for user in users])
        return [address.split("@")[0] for address in masked]

    def by_frequency(self, masked):
        """The attacker's guesses, without any key: place by place, he takes the amounts by which
        most of the masked beginnings become beginnings in the list."""
        count = collections.Counter((shape(name), name[:end])
                                    for name in self.names for end in range(1, len(name) + 1))
        shapes = [shape(user) for user in masked]
        guesses = [""] * len(masked)
        for place in range(max(map(len, masked))):
            for kind in (LETTERS, DIGITS):
                which = [i for i, user in enumerate(masked) if user[place:place + 1] in tuple(kind)]
                moved = [[guesses[i] + back(masked[i][place], shift) for i in which]
                         for shift in range(len(kind))]
                likely = [sum(math.log(count[shapes[i], text] + .01)
                              for i, text in zip(which, texts)) for texts in moved]
                for i, text in zip(which, moved[likely.index(max(likely))]):
                    guesses[i] = text
            for i, user in enumerate(masked):
                if place < len(user) and user[place] not in LETTERS + DIGITS:
                    guesses[i] += user[place]
        return guesses

    def hits_by_frequency(self, rule):
        """How many users are recovered, and how many random hits are to be expected: a guess that
        is not in the list becomes a random name of the list, one of the same shape if there is one.
        """
        by_shape = collections.defaultdict(list)
        for name in self.names:
            by_shape[shape(name)].append(name)
        listed = set(self.names)
        hits, expected = 0, 0
        masked = self.masked_users(rule, self.users)
        for user, text, guess in zip(self.users, masked, self.by_frequency(masked)):
            choices = by_shape.get(shape(text), self.names)
            hits += user == (guess if guess in listed else self.choose.choice(choices))
            expected += 1 / len(choices)
        return hits, expected

    def hits_by_pair(self, rule, users):
        """How many users are recovered by one pair of a clear and a masked user part."""
        pair, *masked = self.masked_users(rule, [self.KNOWN, *users])
        moved = [(LETTERS + LETTERS).find(to, LETTERS.index(c)) - LETTERS.index(c)
                 if to in LETTERS else 0 for c, to in zip(self.KNOWN, pair)]
        guesses = ["".join(back(c, shift) if c in LETTERS else c for c, shift in zip(user, moved))
                   for user in masked]
        return sum(map(str.__eq__, guesses, users))

    def test_users_by_frequency(self):
        hits, _ = self.hits_by_frequency("key=271828182, method=transpose")
        self.assertGreaterEqual(hits, 0.98 * self.ADDRESSES)
        for rule in ("secret=victim", "secret=victim, method=ff1"):
            hits, expected = self.hits_by_frequency(rule)
            self.assertLess(expected, 0.1 * self.ADDRESSES)
            self.assertLessEqual(hits, most_hits(expected))

    def test_users_by_one_pair(self):
        users = [user for user in self.users if not re.search(r"\d", user)]
        self.assertGreater(len(users), 300)
        self.assertEqual(len(users), self.hits_by_pair("key=4711, method=transpose", users))
        for rule in ("secret=victim", "secret=victim, method=ff1"):
            # Any text of the same letters is as likely.
            expected = sum(26.0**-sum(c in LETTERS for c in user) for user in users)
            self.assertLessEqual(self.hits_by_pair(rule, users), most_hits(expected))


class NamesTest(MethodsTest):
    """AFF and COL without a secret: the methods move characters, whatever the value."""

    PIECE = 4

    def setUp(self):
        super().setUp()
        choose = random.Random(5)
        self.names = [" ".join(make_customers.ascii_name(choose.choice(names)).capitalize()
                               for names in (make_customers.FIRST, make_customers.LAST))
                      for _ in range(2000)]

    def pieces(self, word):
        """What is enough to read a word: four letters of it, or all."""
        size = min(len(word), self.PIECE)
        return [word[at:at + size] for at in range(len(word) - size + 1)]

    def readable(self, masked):
        return sum(any(piece.lower() in value.lower() for piece in self.pieces(word))
                   for name, value in zip(self.names, masked) for word in name.split())

    def expected_readable(self):
        """The number of ways in which the pieces fit into the words of the masked value, each with
        its probability."""
        expected = 0
        for name in self.names:
            for word, place in itertools.product(name.split(), repeat=2):
                pieces = self.pieces(word)
                size = len(pieces[0])
                expected += len(pieces) * max(len(place) - size + 1, 0) / 26**size
        return expected

    def test_words(self):
        words = sum(len(name.split()) for name in self.names)
        for provider in ("AFF", "COL"):
            old = self.masked_column(f"{provider}, method=shuffle", self.names)
            self.assertGreater(self.readable(old), 0.7 * words)
            new = self.masked_column(f"{provider}, secret=s1", self.names)
            self.assertLessEqual(self.readable(new), most_hits(self.expected_readable()))

    def test_masking_again(self):
        """Masking a second time undoes the first time, without a key."""
        numbers = [f"{number}1" for number in range(2 * 10**8, 2 * 10**8 + 2000)]
        for provider in ("AFF", "COL"):
            for method, values in (("shuffle", self.names), ("reverse", self.names),
                                   ("number", numbers)):
                rule = f"{provider}, method={method}"
                once = self.masked_column(rule, values)
                self.assertEqual(values, self.masked_column(rule, once))
            rule = f"{provider}, secret=s1"
            once = self.masked([(rule, self.names), (rule, numbers)])
            again = self.masked([(rule, column) for column in once])
            # The shortest names have seven letters.
            for values, column, domain in zip((self.names, numbers), again, (26**7, 10**10)):
                hits = sum(map(str.__eq__, values, column))
                self.assertLessEqual(hits, most_hits(len(values) / domain))


class OwnSecretTest(MethodsTest):
    def test_unmask_with_another_secret(self):
        choose = random.Random(6)
        digits = [random_digits(9, choose) for _ in range(5000)]
        # Nine digits are unknown in each of them.
        columns = (("CCN", [with_check_digit("411111" + text) for text in digits]),
                   ("NID", [f"{text[:3]}-{text[3:5]}-{text[5:]}" for text in digits]),
                   ("AFF", [f"No. {text}" for text in digits]),
                   ("EML, method=ff1", [f"{text}@mail.example" for text in digits]))
        masked = self.masked([(f"{rule}, secret=victim", values) for rule, values in columns])
        for secret, most in (("victim", len(digits)), ("own", most_hits(len(digits) / 10**9))):
            guesses = self.masked([(f"{rule}, secret={secret}", values)
                                   for (rule, _), values in zip(columns, masked)], "--unmask")
            for (rule, values), column in zip(columns, guesses):
                hits = sum(map(str.__eq__, values, column))
                self.assertLessEqual(hits, most, rule)
                self.assertEqual(secret == "victim", hits == len(values), rule)


if __name__ == "__main__":
    main()
