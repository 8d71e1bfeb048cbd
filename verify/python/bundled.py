"""That the installed package works with the libcrypto that the wheel brings, also in its providers."""

import pathlib
import sys

import korv

for provider in ("CCN", "NID", "EML", "AFF", "HASH, list=a;b", "AGE, range=-9..9"):
    korv.mask(["4556737586899855"], f"{provider}, secret=test", {"test": bytes(32)}, errors=[])
mapped = {
    line.split()[-1] for line in pathlib.Path("/proc/self/maps").read_text().splitlines() if "/" in line
}
crypto = [path for path in mapped if "libcrypto" in path]
assert len(crypto) == 1 and crypto[0].startswith(sys.prefix) and "/korv.libs/" in crypto[0], crypto
