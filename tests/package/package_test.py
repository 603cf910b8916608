#!/usr/bin/env python3
"""Installs into an empty folder, moves the folder, and builds and runs a program against it in two ways.

usage: package_test.py CMAKE BUILD_FOLDER VERSION [unittest arguments]
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
cmake, build, version = sys.argv[1], pathlib.Path(sys.argv[2]).resolve(), sys.argv[3]


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          **options)
    if done.returncode != 0:
        raise AssertionError(f"{command}\n{done.stdout}")
    return done.stdout.strip()


class Package(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        cls.prefix = cls.folder / "moved" / "away"
        run(cmake, "--install", build, "--prefix", cls.folder / "first")
        cls.prefix.parent.mkdir()
        shutil.move(cls.folder / "first", cls.prefix)
        cls.source = cls.folder / "source"
        cls.source.mkdir()
        shutil.copy(HERE / "main.c", cls.source)
        shutil.copy(HERE / "consumer.cmake", cls.source / "CMakeLists.txt")

    def check(self, program, **variables):
        told_version, branch, total = run(program, env={"PATH": os.environ["PATH"], **variables}).split()
        self.assertEqual((told_version, total), (version, "6"))
        self.assertEqual(pathlib.Path(branch).resolve(), (self.prefix / "lib/liborv_mc3.so").resolve())

    def test_serves_a_program_built_with_pkg_config(self):
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.prefix / "lib/pkgconfig")}
        flags = run("pkg-config", "--cflags", "--libs", "orv", env=environment).split()
        self.assertEqual(run("pkg-config", "--modversion", "orv", env=environment), version)
        run("cc", self.source / "main.c", "-o", self.folder / "by_pkg_config", *flags)
        self.check(self.folder / "by_pkg_config", LD_LIBRARY_PATH=str(self.prefix / "lib"))

    def test_serves_a_program_built_with_cmake(self):
        target = self.folder / "by_cmake"
        run(cmake, "-S", self.source, "-B", target, f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run(cmake, "--build", target)
        self.check(target / "consumer")

    def test_names_no_folder_of_the_build_machine(self):
        for path in self.prefix.rglob("*"):
            if path.is_file() and path.suffix in (".pc", ".cmake", ".h"):
                for folder in (build, build.parent, self.folder):
                    self.assertNotIn(str(folder), path.read_text(), path)

    def test_libraries_look_for_each_other_beside_themselves(self):
        for path in [*self.prefix.rglob("*.so*"), *self.prefix.glob("bin/*")]:
            for line in run("readelf", "-dW", path).splitlines():
                if "RUNPATH" in line or "RPATH" in line:
                    self.assertIn("[$ORIGIN", line, path)

    def test_command_runs(self):
        self.assertIn(str(self.prefix), run(self.prefix / "bin/orv", "info"))

    def test_standing_in_needs_a_folder_of_its_own(self):
        """A library named libblas.so.3 in lib/ would be met by every program as soon as the linker's cache sees it."""
        self.assertFalse(list(self.prefix.glob("lib/libblas*")))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
