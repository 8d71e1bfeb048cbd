"""The shipped providers, as they are installed, and the provider template pass a level.

Further arguments: the level."""
import glob
import os
import re
import subprocess
import sys
import time

from command import BUILD, ROOT, KitTest, check, main

LEVEL = int(sys.argv[4])
DATA = os.path.join(ROOT, "examples", "data")


def cached(name):
    with open(os.path.join(BUILD, "CMakeCache.txt"), encoding="utf-8") as file:
        return re.search(rf"^{name}:\w+=(.*)$", file.read(), re.M).group(1)


class ShippedTest(KitTest):
    def run_command(self, *command):
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              check=False)
        self.assertEqual(0, done.returncode, done.stdout)

    def install(self):
        prefix = os.path.join(self.folder, "installed")
        for component in ("runtime", "datacnv", "development", "engine", "mask"):
            self.run_command("cmake", "--install", BUILD, "--prefix", prefix, "--component",
                             component)
        return prefix

    def assert_sound(self, module, *arguments):
        start = time.monotonic()
        result = check(module, "--level", LEVEL, *arguments)
        print(f"{time.monotonic() - start:.1f} s  {result.out.splitlines()[-1]}", flush=True)
        self.assert_status(0, result)
        for line in result.out.splitlines()[:-1]:
            self.assertRegex(line, "tests were not run.*libcrypto")
        return result

    def test_shipped_providers(self):
        prefix = self.install()
        modules = sorted(glob.glob(os.path.join(prefix, "lib", "korv-providers", "*.so")))
        self.assertGreaterEqual(len(modules), 7)
        for module in modules:
            arguments = []
            if module.endswith("lkp.so"):  # it has no sample rules: each needs a file
                arguments = ["--rule", "LKP, file=cities.txt", "--rule",
                             "LKP, file=cities.txt, default=none", "--files", DATA]
            with self.subTest(module=os.path.basename(module)):
                self.assert_sound(module, *arguments)

    def test_templates(self):
        prefix = self.install()
        flags = cached("CMAKE_C_FLAGS")
        for template in ("provider_template", "provider_template_cpp"):
            build = os.path.join(self.folder, template)
            self.run_command("cmake", "-S", os.path.join(ROOT, "examples", template), "-B", build,
                             f"-DCMAKE_PREFIX_PATH={prefix}", f"-DCMAKE_C_FLAGS={flags}",
                             f"-DCMAKE_CXX_FLAGS={flags}",
                             f"-DCMAKE_C_COMPILER={cached('CMAKE_C_COMPILER')}")
            self.run_command("cmake", "--build", build)
            [module] = glob.glob(os.path.join(build, "libkorvprv_*.so"))
            with self.subTest(template=template):
                self.assert_sound(module)


main()
