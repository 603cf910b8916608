#!/usr/bin/env python3
"""Installs into an empty folder, moves the folder, and builds and runs a program against it in two ways.

usage: package_test.py CMAKE BUILD_FOLDER VERSION [unittest arguments]
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zlib

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
        shutil.copy(HERE / "native.c", cls.source)
        shutil.copy(HERE / "standard.c", cls.source)
        shutil.copy(HERE / "sparse.c", cls.source)
        shutil.copy(HERE / "consumer.cmake", cls.source / "CMakeLists.txt")

    def installed_files(self):
        """Libraries and programs, without links."""
        paths = [*self.prefix.glob("lib/*.so*"), *self.prefix.glob("lib/orv/*"), *self.prefix.glob("bin/*")]
        found = [path for path in paths if path.is_file() and not path.is_symlink()]
        self.assertGreaterEqual(len(found), 6)
        return found

    def check_native(self, program, **variables):
        told_version, branch, doubled = run(program, env=variables).split()
        self.assertEqual((told_version, doubled), (version, "6"))
        self.assertEqual(pathlib.Path(branch).resolve().parent, (self.prefix / "lib").resolve())

    def check_standard(self, program, **variables):
        self.assertEqual(run(program, env=variables), "1 3 2 4")
        found = run("ldd", program, env={"PATH": os.environ["PATH"], **variables})
        self.assertRegex(found, rf"liborv_blas\.so\.0 => {self.prefix}/lib/")

    def pkg_config(self, name, package):
        """Builds a program by pkg-config alone; returns its path."""
        environment = {**os.environ, "PKG_CONFIG_PATH": str(self.prefix / "lib/pkgconfig")}
        self.assertEqual(run("pkg-config", "--modversion", package, env=environment), version)
        flags = run("pkg-config", "--cflags", "--libs", package, env=environment).split()
        run("cc", self.source / f"{name}.c", "-o", self.folder / name, *flags)
        return self.folder / name

    def test_serves_programs_built_with_pkg_config(self):
        self.check_native(self.pkg_config("native", "orv"), LD_LIBRARY_PATH=str(self.prefix / "lib"))
        self.check_standard(self.pkg_config("standard", "orv-blas"), LD_LIBRARY_PATH=str(self.prefix / "lib"))
        sparse = self.pkg_config("sparse", "orv-sparseblas")
        self.assertEqual(run(sparse, env={"LD_LIBRARY_PATH": str(self.prefix / "lib")}), "30 4 0")

    def test_serves_the_first_program_of_the_readme(self):
        readme = (HERE.parents[1] / "README.md").read_text()
        (self.source / "readme.c").write_text(re.search(r"```c\n(.*?)```", readme, re.S).group(1))
        program = self.pkg_config("readme", "orv")
        self.assertEqual(run(program, env={"LD_LIBRARY_PATH": str(self.prefix / "lib")}), "5 11\n11 25")

    def test_serves_programs_built_with_cmake(self):
        target = self.folder / "by_cmake"
        run(cmake, "-G", "Ninja", "-S", self.source, "-B", target, f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run(cmake, "--build", target)
        self.check_native(target / "native")
        self.check_standard(target / "standard")
        self.assertEqual(run(target / "sparse"), "30 4 0")

    def test_names_no_folder_of_the_build_machine(self):
        for path in self.prefix.rglob("*"):
            if path.is_file() and path.suffix in (".pc", ".cmake", ".h"):
                for folder in (build, build.parent, self.folder):
                    whole_path = rf"(?<![\w.}}-]){re.escape(str(folder))}\b"  # not the end of a longer one
                    self.assertNotRegex(path.read_text(), whole_path, path)

    def test_libraries_look_for_each_other_beside_themselves(self):
        for path in self.installed_files():
            for line in run("readelf", "-dW", path).splitlines():
                if "RUNPATH" in line or "RPATH" in line:
                    self.assertIn("[$ORIGIN", line, path)

    def test_symbols_are_in_files_of_their_own_where_debuggers_look(self):
        for path in self.installed_files():
            if path.name.endswith(("_threads.so.3", "_omp.so.3")):
                continue  # names without code
            link = run("readelf", "--debug-dump=links", path)
            name, checksum = re.search(r"info file: (\S+)\s+CRC value: (0x[0-9a-f]+)", link).groups()
            separate = path.parent / ".debug" / name
            self.assertEqual(zlib.crc32(separate.read_bytes()), int(checksum, 16), path)
            for file, expected in ((path, set()), (separate, {".symtab", ".debug_line"})):
                found = {".symtab", ".debug_line"}.intersection(run("readelf", "-SW", file).split())
                self.assertEqual(found, expected, file)

    def test_runs_without_headers_and_debug_files(self):
        prefix = self.folder / "runtime"
        run(cmake, "--install", build, "--prefix", prefix, "--component", "runtime")
        self.assertEqual({path.name for path in prefix.iterdir()}, {"bin", "lib"})
        for pattern in ("*.debug", "*.pc", "*.cmake", "liborv.so"):
            self.assertFalse([*prefix.rglob(pattern)], pattern)
        self.assertIn(str(prefix), run(prefix / "bin/orv", "info"))

    def test_command_runs(self):
        self.assertIn(str(self.prefix), run(self.prefix / "bin/orv", "info"))

    def test_standing_in_needs_a_folder_of_its_own(self):
        """A library named libblas.so.3 in lib/ would be met by every program as soon as the linker's cache sees it."""
        self.assertFalse(list(self.prefix.glob("lib/libblas*")))
        self.assertFalse(list(self.prefix.glob("lib/libfftw*")))
        names = sorted(path.name for path in self.prefix.glob("lib/orv/*") if path.is_file())
        fftw = [f"libfftw3{p}{kind}.so.3" for p in ("", "f") for kind in ("", "_omp", "_threads")]
        self.assertEqual(names, ["libblas.so.3", *fftw])

    def test_stand_in_finds_the_core_from_there(self):
        program = self.folder / "stood_in"
        run("cc", self.source / "standard.c", "-o", program, f"-I{self.prefix}/include/orv/compat",
            self.prefix / "lib/orv/libblas.so.3", f"-Wl,-rpath-link,{self.prefix}/lib")
        self.assertEqual(run(program, env={"LD_LIBRARY_PATH": str(self.prefix / "lib/orv")}), "1 3 2 4")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
