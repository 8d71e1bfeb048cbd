"""gdb loads the printers by itself with an installed library, also when the prefix has been moved.

Usage: installed_test.py BUILD-FOLDER
"""
import os
import pathlib
import subprocess
import sys
import tempfile

environment = {name: value for name, value in os.environ.items() if not name.startswith("PYTHON")}
with tempfile.TemporaryDirectory() as folder:
    installed = pathlib.Path(folder).resolve() / "installed"
    for component in ("runtime", "development"):
        subprocess.run(["cmake", "--install", sys.argv[1], "--prefix", installed,
                        "--component", component], check=True, stdout=subprocess.DEVNULL)
    prefix = installed.rename(installed.with_name("moved"))
    [library] = prefix.rglob("libKORVSupport.so.*[0-9]")
    before = set(prefix.rglob("*"))
    shown = subprocess.run(
        ["gdb", "-nx", "-q", "-batch", "-iex", f"add-auto-load-safe-path {library.parent}", library,
         "-ex", "info auto-load python-scripts", "-ex", "info pretty-printer"],
        check=True, capture_output=True, text=True, timeout=60, env=environment).stdout
    print(shown)
    assert f"Yes     {library}-gdb.py" in shown, "not loaded"
    assert all(name in shown for name in ("CtrlBlkX", "OprDef", "ErrorAnchor")), "no printers"
    assert set(prefix.rglob("*")) == before, "something has been written beside them"
