"""Checks a wheel of the package: wheel.py WHEEL. Its name, its libraries, and what its metadata says."""

import email
import fnmatch
import re
import sys
import zipfile

wheel = sys.argv[1]
assert re.search(r"/korv-[0-9.]+-py3-none-manylinux_2_36_x86_64\.whl$", wheel), wheel
files = zipfile.ZipFile(wheel)
names = files.namelist()
PROVIDERS = ["aff", "age", "ccn", "eml", "hash", "lkp", "nid"]
expected = ["libKORVDataCnvLib.so", "libKORVSupport.so.21", "libkorvmask.so.1"]
expected += [f"korv-providers/libkorvprv_{name}.so" for name in PROVIDERS]
libraries = sorted(
    name.removeprefix("korv/_native/") for name in names if ".so" in name and "/_native/" in name
)
assert libraries == sorted(expected), libraries
bundled = [name for name in names if name.startswith("korv.libs/") and not name.endswith("/")]
assert len(bundled) == 1 and fnmatch.fnmatch(bundled[0], "korv.libs/libcrypto-*.so.3"), bundled
assert "korv/py.typed" in names and "korv/duckdb.py" in names
sources = [name for name in names if not name.startswith(("korv/", "korv.libs/", "korv-"))]
assert sources == [], sources
metadata = email.message_from_bytes(files.read(next(name for name in names if name.endswith("/METADATA"))))
assert metadata["License"] == "No licence has been chosen.", metadata["License"]
assert metadata.get_payload().startswith("# korv for Python")
