"""What the tests of the installation share: the build that is installed, and consumers of it."""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest

BUILD, SOURCE = (pathlib.Path(argument) for argument in sys.argv[1:3])
CONSUMERS = pathlib.Path(__file__).resolve().parent / "consumers"
LINKED = ("runtime", "datacnv", "development")  # what a consumer of the support library needs
ENGINE = (*LINKED, "engine", "mask")  # what a consumer of the engine needs


def cached(name: str, build: pathlib.Path = BUILD) -> str:
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    return re.search(rf"^{name}:\w+=(.*)$", cache, re.M).group(1)


CC, CXX = cached("CMAKE_C_COMPILER"), cached("CMAKE_CXX_COMPILER")
GENERATOR = cached("CMAKE_GENERATOR")
FLAGS = shlex.split(cached("CMAKE_C_FLAGS"))
VERSION = cached("CMAKE_PROJECT_VERSION")
BITS = 32 if "-m32" in FLAGS else 64


class InstallationTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.mkdtemp(prefix="korv_install_")
        self.addCleanup(shutil.rmtree, folder)
        self.folder = pathlib.Path(folder).resolve()
        self.prefix = self.folder / "stage"

    def run_command(self, *command: object, fails: bool = False, status: int = 0,
                    **environment: object) -> str:
        """Returns what the command prints. It must end with the status, or fail with any other."""
        words = [str(word) for word in command]
        done = subprocess.run(words, cwd=self.folder, text=True, timeout=300, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env={**os.environ, "LD_LIBRARY_PATH": "",
                                   **{name: str(value) for name, value in environment.items()}})
        self.assertEqual(fails, done.returncode != status,
                         f"{shlex.join(words)}: exit status {done.returncode}\n{done.stdout}")
        return done.stdout

    def install(self, *components: str, build: pathlib.Path = BUILD, **environment: object) -> None:
        prefix = [] if "DESTDIR" in environment else ["--prefix", self.prefix]
        for component in components:
            self.run_command("cmake", "--install", build, *prefix, "--component", component,
                             **environment)

    def pkg_config(self, folder: pathlib.Path, *arguments: str) -> list[str]:
        return shlex.split(self.run_command("pkg-config", *arguments, PKG_CONFIG_LIBDIR=folder,
                                            PKG_CONFIG_PATH="", PKG_CONFIG_SYSROOT_DIR=""))

    def build_by_pkg_config(self, folder: pathlib.Path, *packages: str) -> pathlib.Path:
        """The C consumer; with the companion's package it calls that one, too."""
        program = self.folder / "use"
        define = [] if "korv-datacnv" in packages else ["-DSUPPORT_ALONE"]
        words = self.pkg_config(folder, "--cflags", "--libs", *packages)
        self.run_command(CC, *FLAGS, "-std=c99", "-Wall", "-Werror", *define, CONSUMERS / "use.c",
                         *words, "-o", program)
        return program

    def configure(self, consumer: object, build: str, *options: str, flags: str = "",
                  fails: bool = False) -> str:
        flags = flags or shlex.join(FLAGS)
        return self.run_command("cmake", "-G", GENERATOR, "-S", consumer, "-B", self.folder / build,
                                f"-DCMAKE_C_COMPILER={CC}", f"-DCMAKE_CXX_COMPILER={CXX}",
                                f"-DCMAKE_C_FLAGS={flags}", f"-DCMAKE_CXX_FLAGS={flags}",
                                *options, fails=fails)

    def build_by_find_package(self, build: str, *options: str,
                              consumer: str = "find_package") -> pathlib.Path:
        self.configure(CONSUMERS / consumer, build, *options)
        self.run_command("cmake", "--build", self.folder / build)
        return self.folder / build / "use"

    def check_use(self, program: pathlib.Path, **environment: object) -> None:
        self.assertEqual(f"used with pointers of {BITS // 8} bytes\n",
                         self.run_command(program, **environment))

    def exports(self, folder: str) -> list[str]:
        return (SOURCE / folder / "exports.txt").read_text(encoding="ascii").splitlines()

    def files(self, folder: pathlib.Path) -> set[str]:
        return {str(path.relative_to(folder)) for path in folder.rglob("*")
                if path.is_symlink() or not path.is_dir()}


def main() -> None:
    unittest.main(argv=[sys.argv[0]], verbosity=2)
