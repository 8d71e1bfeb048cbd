"""Plain reference of the masking methods under a secret, to be read beside docs/methods.md.

mask() is the entry. All other functions follow the sections of that document. A value or an operand
that a method refuses raises ValueError."""
import base64
import datetime
import functools
import hmac
import math
import re
import struct
import unicodedata
from array import array
from string import ascii_letters, ascii_lowercase, digits as DIGITS

from cryptography.hazmat.primitives.ciphers import Cipher, algorithms, modes


# Notation

def hmac_sha256(key, message):
    """HMAC-SHA-256 (RFC 2104): 32 bytes."""
    return hmac.digest(key, message, "sha256")


def number_of(numerals, radix):
    """The number with these numerals, the most significant one first."""
    number = 0
    for numeral in numerals:
        number = number * radix + numeral
    return number


def numerals_of(number, radix, count):
    """The numerals of a number, with leading zeros."""
    numerals = []
    for _ in range(count):
        number, numeral = divmod(number, radix)
        numerals.append(numeral)
    return numerals[::-1]


def lower(text):
    """Lower case by the simple mapping: only U+0130 has more than one character in Python's."""
    return "".join(character.lower()[0] for character in text)


def upper(text):
    """Upper case by the simple mapping, which Python has only where its full mapping is simple."""
    def single(character):
        # Where Python's upper case has several characters, the simple one, if any, is title case.
        for mapped in (character.upper(), character.title()):
            if len(mapped) == 1:
                return mapped
        return character
    return "".join(map(single, text))


def base32(data):
    """Base32 (RFC 4648) in lower case, without padding."""
    return base64.b32encode(data).decode().rstrip("=").lower()


def scaled(digest, count):
    """The first 8 bytes of a digest, scaled to 0 ... count - 1."""
    return int.from_bytes(digest[:8], "big") * count >> 64


# The key

def hkdf(secret, info, length):
    """HKDF-SHA-256 (RFC 5869) without salt."""
    extracted = hmac_sha256(bytes(32), secret)
    result = block = b""
    for number in range(1, math.ceil(length / 32) + 1):
        block = hmac_sha256(extracted, block + info + bytes([number]))
        result += block
    return result[:length]


def derive_key(secret, provider, method, scope=""):
    """The key of a column."""
    if not 16 <= len(secret) <= 64:
        raise ValueError("a secret has 16 to 64 bytes")
    provider = provider.upper()
    provider = "AFF" if provider == "COL" else provider
    return hkdf(secret, "\0".join(("korv/1", scope, provider, method.lower())).encode(), 32)


def fingerprint(secret):
    """What tells secrets apart: 8 hexadecimal digits."""
    return hkdf(secret, b"korv/fingerprint", 4).hex()


# FF1

class Ff1:
    """FF1 (NIST SP 800-38G) for numerals of one radix; the key selects AES-128, 192 or 256."""

    def __init__(self, key, radix):
        if not 2 <= radix <= 36:
            raise ValueError("the radix is not 2 to 36")
        self.aes, self.radix = algorithms.AES(key), radix

    def encrypt(self, numerals, tweak):
        """The numerals of the ciphertext."""
        a, b, u, v = self._halves(numerals)
        for i in range(10):
            a, b = b, (a + self._round(i, b, u, v, tweak)) % self.radix ** (v if i % 2 else u)
        return numerals_of(a, self.radix, u) + numerals_of(b, self.radix, v)

    def decrypt(self, numerals, tweak):
        """The numerals of the plaintext."""
        a, b, u, v = self._halves(numerals)
        for i in reversed(range(10)):
            a, b = (b - self._round(i, a, u, v, tweak)) % self.radix ** (v if i % 2 else u), a
        return numerals_of(a, self.radix, u) + numerals_of(b, self.radix, v)

    def _halves(self, numerals):
        """Both halves as numbers, and their lengths."""
        if len(numerals) < 2 or not all(0 <= numeral < self.radix for numeral in numerals):
            raise ValueError("not a sequence of two or more numerals")
        u = len(numerals) // 2
        left, right = numerals[:u], numerals[u:]
        return number_of(left, self.radix), number_of(right, self.radix), u, len(right)

    def _round(self, i, half, u, v, tweak):
        """The number y of round i, from the half that this round does not change."""
        b = math.ceil((self.radix ** v - 1).bit_length() / 8)
        d = 4 * math.ceil(b / 4) + 4
        p = (bytes([1, 2, 1]) + self.radix.to_bytes(3, "big") + bytes([10, u % 256])
             + (u + v).to_bytes(4, "big") + len(tweak).to_bytes(4, "big"))
        q = tweak + bytes((-len(tweak) - b - 1) % 16) + bytes([i]) + half.to_bytes(b, "big")
        r = Cipher(self.aes, modes.CBC(bytes(16))).encryptor().update(p + q)[-16:]
        # Block j is the encrypted exclusive or of r and the number j.
        first = int.from_bytes(r, "big")
        inputs = b"".join((first ^ j).to_bytes(16, "big") for j in range(1, math.ceil(d / 16)))
        s = r + Cipher(self.aes, modes.ECB()).encryptor().update(inputs)
        return int.from_bytes(s[:d], "big")


# Permutation

def stream(key):
    """The 32-bit numbers of AES-256 in counter mode."""
    encryptor = Cipher(algorithms.AES(key), modes.CTR(bytes(16))).encryptor()
    while True:
        yield from struct.unpack(">1024I", encryptor.update(bytes(4096)))


@functools.lru_cache(maxsize=256)
def table(key, n, tweak):
    """The shuffled table of the numbers below n."""
    numbers = stream(hmac_sha256(key, b"korv/table\0" + str(n).encode() + b"\0" + tweak))
    result = array("I", range(n))
    for i in range(n - 1, 0, -1):
        while (w := next(numbers)) >= 2 ** 32 // (i + 1) * (i + 1):
            pass
        j = w % (i + 1)
        result[i], result[j] = result[j], result[i]
    return result


def permute(key, n, x, tweak):
    """permute(N, X, T) under a key."""
    return table(key, n, tweak)[x] if n < 1_000_000 else large(Ff1.encrypt, key, n, x, tweak)


def unpermute(key, n, x, tweak):
    """The number that permute() maps to x."""
    return table(key, n, tweak).index(x) if n < 1_000_000 else large(Ff1.decrypt, key, n, x, tweak)


def large(step, key, n, x, tweak):
    """The permutation for n from 1,000,000, where step is Ff1.encrypt or Ff1.decrypt."""
    count = round(math.log10(n))
    if n == 10 ** count:
        return number_of(step(Ff1(key, 10), numerals_of(x, 10, count), tweak), 10)
    count = (n - 1).bit_length()
    bits = step(Ff1(key, 2), numerals_of(x, 2, count), tweak)
    while (y := number_of(bits, 2)) >= n:
        bits = step(Ff1(key, 2), bits, tweak)
    return y


# Numerals of a text. In what follows, change is permute or unpermute.

def pattern(numerals):
    """9 for each digit and a for each letter."""
    return "".join("9" if numeral in DIGITS else "a" for numeral in numerals)


def numeral_places(text, letters):
    """The places of the numerals in a text whose other characters are all separators."""
    for character in text:
        # Letters, digits and combining marks.
        word = unicodedata.category(character) in ("Lu", "Ll", "Lt", "Lm", "Lo", "Nd",
                                                   "Mn", "Mc", "Me")
        if word and character not in DIGITS and not (letters and character in ascii_letters):
            raise ValueError("a character that is neither a numeral nor a separator")
    places = [place for place, character in enumerate(text)
              if character in DIGITS or character in ascii_letters]
    if not places:
        raise ValueError("no numerals")
    return places


def characters(text, places):
    """The characters at these places."""
    return "".join(text[place] for place in places)


def encrypted(change, key, text, places, tweak):
    """The text with the numerals at these places encrypted."""
    n, x = 1, 0
    for character in characters(text, places):
        radix = 10 if character in DIGITS else 26
        n, x = n * radix, x * radix + int(character, 36) - (0 if radix == 10 else 10)
    y = change(key, n, x, tweak.encode())
    result = list(text)
    for place in reversed(places):
        if text[place] in DIGITS:
            y, numeral = divmod(y, 10)
            result[place] = DIGITS[numeral]
        else:
            y, numeral = divmod(y, 26)
            letter = ascii_lowercase[numeral]
            result[place] = letter if text[place] in ascii_lowercase else letter.upper()
    return "".join(result)


# CCN, method ff1

def luhn(number):
    """The Luhn sum of a number modulo 10."""
    total = 0
    for place, digit in enumerate(reversed(number)):
        product = int(digit) * (2 if place % 2 else 1)
        total += product // 10 + product % 10
    return total % 10


def ccn_ff1(change, key, value, prefix=6, last=0):
    """Encrypts the free digits of a card number and keeps its Luhn sum."""
    if not set(value) <= set(DIGITS + " -"):
        raise ValueError("a character that is not a digit, a blank or a hyphen")
    places = [place for place, character in enumerate(value) if character in DIGITS]
    count = len(places)
    if not 12 <= count <= 19:
        raise ValueError("not 12 to 19 digits")
    first, free, end = places[:prefix], places[prefix:count - last], places[count - last:]
    if len(free) < 2:
        raise ValueError("no digit is left to be encrypted")
    tweak = characters(value, first) + "/" + characters(value, end)
    result = encrypted(change, key, value, free[:-1], tweak)
    for digit in DIGITS:
        result = result[:free[-1]] + digit + result[free[-1] + 1:]
        if luhn(characters(result, places)) == luhn(characters(value, places)):
            break
    return result


# NID, method ff1

COUNTRIES = {"france": 15, "spain": 8, "italy": 7, "uk": 6, "us": 9, "canada": 9}
LIMITS = {"int4": 2 ** 31, "int8": 2 ** 63}


def nid_ff1(change, key, value, prefix=0, last=0, letters=False, country=None, integer=False):
    """Encrypts the numerals of an identity number."""
    if integer:
        return nid_integer(change, key, value, integer)
    places = numeral_places(value, letters)
    count = len(places)
    if country is not None and count != COUNTRIES[country.lower()]:
        raise ValueError("another number of digits than the country's numbers have")
    free = places[prefix:count - last]
    if not free:
        raise ValueError("no numeral is left to be encrypted")
    tweak = (characters(value, places[:prefix]) + "/"
             + characters(value, places[count - last:])).upper()
    if letters:
        tweak += "/" + pattern(characters(value, free))
    return encrypted(change, key, value, free, tweak)


def nid_integer(change, key, value, integer):
    """Encrypts an integer; integer is True, int4 or int8."""
    if not re.fullmatch("0|-?[1-9][0-9]*", value):
        raise ValueError("not an integer")
    sign = "-" if value[0] == "-" else ""
    number = value.lstrip("-")
    low = (1 if sign else 0) if len(number) == 1 else 10 ** (len(number) - 1)
    high = 10 ** len(number) - 1
    if integer in LIMITS:
        high = min(high, LIMITS[integer] if sign else LIMITS[integer] - 1)
    if int(number) > high:
        raise ValueError("the integer is too large")
    tweak = sign or "+"
    return sign + str(low + change(key, high - low + 1, int(number) - low, tweak.encode()))


# AFF and COL, method ff1

def aff_ff1(change, key, value):
    """Encrypts all digits and letters together."""
    places = numeral_places(value, True)
    return encrypted(change, key, value, places, pattern(characters(value, places)))


# EML

def parts(address):
    """The user part and the domain of an address."""
    user, _, domain = address.partition("@")
    if not user or not domain or "@" in domain:
        raise ValueError("not one @ between two texts")
    return user, domain


def eml_pseudonym(key, value, length=16, domain="mask"):
    """Replaces the user part by a pseudonym of the address."""
    address = lower(value)
    _, own = parts(address)
    if domain == "mask":
        domain = base32(hmac_sha256(key, ("@" + own).encode()))[:16] + ".example"
    elif domain == "keep":
        domain = own
    return base32(hmac_sha256(key, address.encode()))[:length] + "@" + lower(domain)


def eml_ff1(change, key, value, domain="keep"):
    """Encrypts the user part."""
    if domain != "keep":
        raise ValueError("the method keeps the domain")
    user, own = parts(value)
    places = numeral_places(user, True)
    tweak = pattern(characters(user, places)) + "@" + lower(own)
    return encrypted(change, key, user, places, tweak) + "@" + own


# HASH, method pick

def hash_pick(key, value, choices):
    """Picks an element of a list."""
    return choices[scaled(hmac_sha256(key, upper(value).encode()), len(choices))]


# AGE, method range

def age_range(key, value, range, per=None, related=None):
    """Moves a date, written as YYYY-MM-DD, by a number of days from A..B."""
    if not re.fullmatch("[0-9]{4}-[0-9]{2}-[0-9]{2}", value):
        raise ValueError("not a date")
    a, b = map(int, range.split(".."))
    message = value if per is None else related
    if not message:
        raise ValueError("the column of per= is empty")
    days = a + scaled(hmac_sha256(key, message.encode()), b - a + 1)
    try:
        moved = datetime.date.fromisoformat(value) + datetime.timedelta(days)
    except OverflowError as error:
        raise ValueError("the date leaves the years 1 to 9999") from error
    return moved.isoformat()


# All providers

REVERSIBLE = {("CCN", "ff1"): ccn_ff1, ("NID", "ff1"): nid_ff1, ("AFF", "ff1"): aff_ff1,
              ("COL", "ff1"): aff_ff1, ("EML", "ff1"): eml_ff1}
IRREVERSIBLE = {("EML", "pseudonym"): eml_pseudonym, ("HASH", "pick"): hash_pick,
                ("AGE", "range"): age_range}
DEFAULTS = {"CCN": "ff1", "NID": "ff1", "EML": "pseudonym", "HASH": "pick", "AFF": "ff1",
            "COL": "ff1", "AGE": "range"}


def reversible(provider, method=None, **_):
    """Whether a rule can be unmasked."""
    return (provider, method or DEFAULTS[provider]) in REVERSIBLE


def mask(provider, value, secret, scope="", related=None, unmask=False, method=None, **operands):
    """The masked value, or the clear one with unmask; related is the column of per= in this row."""
    method = method or DEFAULTS[provider]
    key = derive_key(secret, provider, method, scope)
    if (provider, method) in REVERSIBLE:
        change = unpermute if unmask else permute
        return REVERSIBLE[provider, method](change, key, value, **operands)
    if unmask:
        raise ValueError("this method cannot be undone")
    if provider == "AGE":
        operands["related"] = related
    return IRREVERSIBLE[provider, method](key, value, **operands)


def operands_of(text):
    """The operands of a rule, such as "prefix=4, letters", as arguments of mask()."""
    operands = {}
    for part in filter(None, text.split(", ")):
        name, equals, value = part.partition("=")
        if name == "list":
            operands["choices"] = value.split(";")
        elif not equals:
            operands[name.replace("-", "_")] = True
        else:
            operands[name.replace("-", "_")] = int(value) if value.isdecimal() else value
    return operands
