"""A PostgreSQL server of the tests' own, with the extension, in a temporary folder.

Usage of the scripts beside this file: SCRIPT BUILD-FOLDER [TEST...]. The build folder holds the engine,
the providers and korv-mask. The server listens on a socket only. When the script is run by root, the
server and its clients run as the user postgres, because the server refuses to be run by root."""
import atexit
import hashlib
import os
import pathlib
import pwd
import shutil
import subprocess
import sys
import tempfile
import unittest

BUILD = pathlib.Path(sys.argv[1]).resolve() if len(sys.argv) > 1 else pathlib.Path()
ROOT = pathlib.Path(__file__).resolve().parents[2]
PG_CONFIG = os.environ.get("PG_CONFIG", "/usr/lib/postgresql/15/bin/pg_config")
KORV_MASK = BUILD / "bin" / "korv-mask"
IS_ROOT = os.geteuid() == 0
USER = "postgres" if IS_ROOT else pwd.getpwuid(os.geteuid()).pw_name
AS_USER = {"user": "postgres", "group": "postgres", "extra_groups": []} if IS_ROOT else {}
TIMEOUT = 900
SECRETS = "".join(f"{name} = {hashlib.sha256(name.encode()).hexdigest()}\n"
                  for name in ("crm", "payroll"))


def pg_config(name):
    return subprocess.run([PG_CONFIG, f"--{name}"], check=True, capture_output=True,
                          text=True).stdout.strip()


class Failed(Exception):
    """A statement has failed. The text is what psql writes, with the SQLSTATE."""


class Server:
    """A server that runs until the script ends. The settings are lines of postgresql.conf."""

    def __init__(self, *settings):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="korv_pg_"))
        self._hand_over(self.folder)
        atexit.register(shutil.rmtree, self.folder, ignore_errors=True)
        self._make_tree()
        self._install()
        self.lookups = self.make_folder("lookups")
        self.secrets = self.write("secrets.txt", SECRETS)
        self.secrets.chmod(0o600)
        self.data = self.folder / "data"
        self.log = self.folder / "log"
        self.environment = {"PATH": f"{self.bin}:/usr/bin:/bin", "LC_ALL": "C.UTF-8",
                            "PGHOST": str(self.folder), "PGDATABASE": "postgres", "PGUSER": USER,
                            "HOME": str(self.folder)}
        self.run("initdb", "-D", self.data, "-U", USER, "-A", "trust", "-E", "UTF8", "--no-sync")
        with (self.data / "postgresql.conf").open("a", encoding="utf-8") as file:
            file.write("\n".join((
                "listen_addresses = ''", f"unix_socket_directories = '{self.folder}'",
                "fsync = off", "max_parallel_workers = 4",
                "session_preload_libraries = 'korv'", f"korv.secrets_file = '{self.secrets}'",
                f"korv.lookup_folders = '{self.lookups}'", *settings)) + "\n")
        self.run("pg_ctl", "-D", self.data, "-l", self.log, "-w", "start")
        atexit.register(self.stop)

    @staticmethod
    def _hand_over(path):
        if IS_ROOT:
            shutil.chown(path, USER, USER)
        return path

    def make_folder(self, name):
        (self.folder / name).mkdir()
        return self._hand_over(self.folder / name)

    def _make_tree(self):
        """Copies the installed server. Programs find their files relative to their own place, so
        that the extension can be installed into the copy."""
        self.tree = self.folder / "tree"
        for name in ("bindir", "pkglibdir", "sharedir"):
            source = pg_config(name)
            shutil.copytree(source, f"{self.tree}{source}",
                            ignore=shutil.ignore_patterns("bitcode", "pgxs", "man"))
        self.bin = f"{self.tree}{pg_config('bindir')}"

    def _install(self):
        """Builds the extension in the build folder, and installs it into the copy."""
        module = BUILD / "postgresql"
        shutil.copytree(ROOT / "postgresql", module, dirs_exist_ok=True,
                        ignore=shutil.ignore_patterns("*.o", "*.so"))
        make = ["make", "-s", f"PG_CONFIG={PG_CONFIG}", f"KORV_INCLUDE={ROOT}/include",
                f"KORV_LIB={BUILD}/lib", f"KORV_RPATH={BUILD}/lib", "COPT=-Werror"]
        for target in ("all", "install"):
            subprocess.run([*make, target, f"DESTDIR={self.tree}"], cwd=module, check=True,
                           stdout=subprocess.DEVNULL)

    def write(self, name, contents):
        path = self.folder / name
        path.write_text(contents, encoding="utf-8")
        return self._hand_over(path)

    def run(self, program, *arguments, **options):
        path = program if "/" in str(program) else f"{self.bin}/{program}"
        done = subprocess.run([path, *map(str, arguments)], env=self.environment, cwd=self.folder,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=TIMEOUT, check=False, text=True,
                              **AS_USER, **options)
        if done.returncode:
            raise Failed(f"{program}: exit status {done.returncode}\n{done.stdout}")
        return done.stdout

    def stop(self):
        subprocess.run([f"{self.bin}/pg_ctl", "-D", self.data, "-m", "immediate", "-w", "stop"],
                       env=self.environment, cwd=self.folder, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL, check=False, **AS_USER)

    def psql(self, script, user=USER, database="postgres", keep_errors=False):
        """What a script prints, as bytes: rows without a header. Raises Failed with the first error.
        With keep_errors, all of the script runs, and all that it prints is returned, as text."""
        done = subprocess.run(
            [f"{self.bin}/psql", "-XqAt", "-v", f"ON_ERROR_STOP={int(not keep_errors)}", "-v", "VERBOSITY=verbose",
             "-f", "-", "-U", user, "-d", database],
            env=self.environment, cwd=self.folder, input=script.encode(), capture_output=True,
            timeout=TIMEOUT, check=False, **AS_USER)
        if keep_errors:
            return (done.stdout + done.stderr).decode(errors="replace")
        if done.returncode:
            raise Failed(done.stderr.decode(errors="replace"))
        return done.stdout

    def lines(self, script, **options):
        return self.psql(script, **options).decode().splitlines()


class ServerTest(unittest.TestCase):
    """Tests that share the server of the script."""

    settings = ()
    server = None

    @classmethod
    def setUpClass(cls):
        cls.server = Server(*cls.settings)
        cls.addClassCleanup(cls.server.stop)
        cls.server.psql("CREATE EXTENSION korv")

    def assert_fails(self, sql_state, script, **options):
        """The script fails with this SQLSTATE. Returns the message."""
        with self.assertRaises(Failed) as raised:
            self.server.psql(script, **options)
        self.assertIn(f"  {sql_state}: ", str(raised.exception))
        return str(raised.exception)


def main():
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]], verbosity=2)
