#!/usr/bin/env python3
"""The built libraries against the lists of names in abi/, and against what they promise not to need.

usage: abi_test.py LIBRARY_FOLDER REFERENCE_BLAS TAG...      the tags of the branches of kernels
"""
import fnmatch
import pathlib
import re
import subprocess
import sys
import unittest

LISTS = pathlib.Path(__file__).resolve().parents[2] / "abi"
ABOUT = ("imports.txt", "started.txt", "data.txt")  # lists that name no further exports
libraries, reference_blas = map(pathlib.Path, sys.argv[1:3])
tags = sys.argv[3:]

# Instructions without a VEX prefix that are younger than SSE4.2, and the general-purpose ones that have one. tzcnt is
# none of them: to an older processor its bytes are bsf with an idle prefix, and so gcc uses it where the two agree.
YOUNGER = re.compile(r"(andn|bextr|bls(i|r|msk)|bzhi|mulx|pdep|pext|rorx|s(ar|hl|hr)x|lzcnt|ad[co]x|movbe)[wlq]?$|"
                     r"aes|pclmul|sha(1|256)|rd(rand|seed)|x(save|rstor)")


def run(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True, env={"LC_ALL": "C"}).stdout


def listed(name):
    lines = (line.strip() for line in (LISTS / name).read_text().splitlines())
    return {line for line in lines if line and not line.startswith("#")}


def symbols(library):
    """{name: type letter} of the dynamic symbols that a library defines, and the set of those that it needs."""
    defined, undefined = {}, set()
    for line in run("nm", "-D", "--without-symbol-versions", library).splitlines():
        *address, kind, name = line.split()
        if kind == "A":
            continue
        if address:
            defined[name] = kind
        else:
            undefined.add(name)
    return defined, undefined


def needed(library):
    return re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-dW", library))


def soname(library):
    return re.findall(r"\(SONAME\).*\[(.*)\]", run("readelf", "-dW", library))


def too_young(library):
    """The instructions of a library that a processor of the class of SSE4.2 doesn't know."""
    found = []
    for line in run("objdump", "-d", "--no-show-raw-insn", "-w", library).splitlines():
        columns = line.split("\t")
        if len(columns) < 2:
            continue
        words = columns[1].split()
        if words and (words[0].startswith("v") or YOUNGER.match(words[0]) or re.search(r"%[yz]mm|%k[0-7]", columns[1])):
            found.append(line.strip())
    return found


# Bytes of code a name, by module. Regular grids of names come out of few bodies; a form of a body for each name would be
# megabytes.
CODE_PER_NAME = {"conv": 1024, "dft": 1024, "pdepl": 1024, "pdett": 1024, "spblas": 1024, "spblas_lp64": 1024,
                 "xblas": 1024}


class Branch:
    @classmethod
    def setUpClass(cls):
        cls.library = libraries / f"liborv_{cls.tag}.so"
        cls.defined, cls.undefined = symbols(cls.library)

    def listed(self, name):
        """The lists are written with the tag of the first branch; all have the same names."""
        return {re.sub(r"(?<![a-z])mc3_", f"{self.tag}_", line) for line in listed(name)}

    def test_exports_every_name_of_the_families_that_are_written(self):
        names = set().union(*(self.listed(p.name) for p in LISTS.glob("*.txt")
                              if p.name not in ABOUT and ".probable" not in p.name))
        for pattern in sorted(self.listed("started.txt")):
            due = set(fnmatch.filter(names, pattern))
            with self.subTest(pattern=pattern):
                self.assertTrue(due, "the pattern matches no name of the lists")
                self.assertFalse(sorted(due - self.defined.keys()), "not exported")

    def test_exports_no_name_outside_the_lists(self):
        names = set().union(*(self.listed(p.name) for p in LISTS.glob("*.txt") if p.name not in ABOUT))
        self.assertFalse(sorted(self.defined.keys() - names))

    def test_exports_functions_and_the_listed_tables(self):
        data = {name for name, kind in self.defined.items() if kind != "T"}
        tables = self.listed("data.txt")
        self.assertFalse([name for name in data if not any(fnmatch.fnmatch(name, table) for table in tables)])
        sizes = {}
        for line in run("readelf", "--dyn-syms", "-W", self.library).splitlines():
            words = line.split()
            if len(words) == 8 and words[3] == "OBJECT":
                sizes[words[7]] = int(words[2], 0)
        self.assertEqual(sizes.keys(), data)
        for name, size in sizes.items():
            self.assertTrue(size > 0 and size % 8 == 0, f"{name} has {size} bytes")

    def test_imports_nothing_outside_the_list(self):
        self.assertFalse(sorted(self.undefined - listed("imports.txt")))

    def test_finds_its_imports_in_the_core(self):
        core, _ = symbols(libraries / "liborv.so")
        self.assertFalse([name for name in sorted(self.undefined) if name.startswith("orv_") and name not in core])

    def test_needs_one_library_by_name(self):
        self.assertEqual(needed(self.library), ["libdl.so.2"])

    def test_holds_no_instruction_beyond_its_class(self):
        self.assertFalse(too_young(self.library)[:10])

    def test_code_stays_within_its_bytes_a_name(self):
        code = [words for words in map(str.split, run("nm", "-S", "--defined-only", self.library).splitlines())
                if len(words) == 4 and words[2] in "tTwW"]
        for module, limit in CODE_PER_NAME.items():
            exported = re.compile(rf"orv_{module}_{self.tag}_")
            inside = re.compile(rf"_Z\w*?3orv{len(module)}{module}")  # mangled: in the module's namespace
            names = sum(exported.match(name) is not None for *_, name in code)
            size = sum(int(size, 16) for _, size, _, name in code if exported.match(name) or inside.match(name))
            with self.subTest(module=module):
                self.assertGreater(names, 0)
                self.assertLessEqual(size / names, limit, f"{size} bytes for {names} names")


for tag in tags:
    globals()[f"Branch_{tag}"] = type(f"Branch_{tag}", (Branch, unittest.TestCase), {"tag": tag})


class Core(unittest.TestCase):
    library = libraries / "liborv.so"
    defined, _ = symbols(library)

    def test_exports_its_own_names_only(self):
        # The reports that keep what kernels say for orv_last_error().
        replaced = {f"orv_xblas_{tag}_BLAS_error" for tag in tags}
        self.assertFalse([name for name in self.defined.keys() - replaced
                          if not re.match(r"orv_[a-z]", name) or any(f"_{tag}_" in name for tag in tags)])

    def test_provides_the_whole_service_layer(self):
        service = {name for name in listed("imports.txt") if name.startswith("orv_serv_")}
        self.assertEqual(len(service), 22)
        self.assertFalse(sorted(service - self.defined.keys()))

    def test_needs_no_runtime_of_its_language(self):
        self.assertFalse([name for name in needed(self.library) if "stdc++" in name or "gcc_s" in name])

    def test_holds_no_instruction_beyond_the_oldest_class(self):
        """It must be able to say that a processor is too old."""
        self.assertFalse(too_young(self.library)[:10])

    def test_carries_the_major_version_in_its_name(self):
        self.assertEqual(soname(self.library), ["liborv.so.0"])


class StandIn(unittest.TestCase):
    library = libraries / "libblas.so.3"

    def test_has_the_name_that_programs_look_for(self):
        self.assertEqual(soname(self.library), ["libblas.so.3"])

    def test_has_a_twin_that_can_go_beside_another_library(self):
        twin = libraries / "liborv_blas.so"
        self.assertEqual(soname(twin), ["liborv_blas.so.0"])
        self.assertEqual(symbols(twin), symbols(self.library))

    # Published extensions that the reference library lacks: a*x + b*y, smallest entries, sparse vectors, matrix copies,
    # complex products by three real ones.
    extensions = {f"{prefix}{name}{suffix}" for t in "sdcz" for name in (f"{t}axpby", f"i{t}amin")
                  for prefix, suffix in (("cblas_", ""), ("", "_"))}
    extensions |= {f"{name}_" for t in "sdcz" for name in (f"{t}axpyi", f"{t}gthr", f"{t}gthrz", f"{t}sctr")}
    extensions |= {f"{prefix}{t}{name}{suffix}" for t in "sdcz" for name in ("omatcopy", "imatcopy", "geadd")
                   for prefix, suffix in (("cblas_", ""), ("", "_"))}
    extensions |= {f"{prefix}{t}gemm3m{suffix}" for t in "cz" for prefix, suffix in (("cblas_", ""), ("", "_"))}
    extensions |= {f"{name}_" for name in "sdoti ddoti cdotui cdotci zdotui zdotci sroti droti".split()}

    def test_exports_standard_names_only(self):
        """Names of the reference library, and the same for 64-bit integers in the spellings in use."""
        standard = symbols(reference_blas)[0].keys() | self.extensions
        allowed = set(standard)
        for name in standard:
            allowed |= {name + "64_", name + "_64"} if name.startswith("cblas_") else {name[:-1] + "_64_"}
        self.assertFalse(sorted(symbols(self.library)[0].keys() - allowed))

    def test_declares_what_it_exports(self):
        header = (LISTS.parent / "compat/include/cblas.h").read_text()
        exported = {name for name in symbols(self.library)[0] if name.startswith("cblas_") and "64" not in name}
        self.assertEqual(exported, set(re.findall(r"\b(cblas_\w+)\(", header)))

    def test_holds_no_instruction_beyond_the_oldest_class(self):
        self.assertFalse(too_young(self.library)[:10])


class BeforeLapack(unittest.TestCase):
    library = libraries / "liborv_lapack.so"
    reference = reference_blas.parents[1] / "lapack/liblapack.so.3"

    def test_exports_names_of_the_reference_only(self):
        """And the same for 64-bit integers."""
        if not self.reference.exists():
            self.skipTest("the reference LAPACK is not installed")
        standard = symbols(self.reference)[0].keys()
        wide = {name[:-1] + "_64_" for name in standard}
        self.assertFalse(sorted(symbols(self.library)[0].keys() - standard - wide))

    def test_needs_no_lapack_by_name(self):
        """It goes before whichever there is."""
        self.assertFalse([name for name in needed(self.library) if "lapack" in name or "blas" in name])

    def test_holds_no_instruction_beyond_the_oldest_class(self):
        self.assertFalse(too_young(self.library)[:10])


class SparseBlas(unittest.TestCase):
    library = libraries / "libsparseblas.so"
    header = (LISTS.parent / "compat/include/blas_sparse.h").read_text()

    def test_exports_what_its_header_declares_and_each_name_for_fortran(self):
        of_types = {f"BLAS_{t}{name}" for name in re.findall(r"\bBLAS_##t##(\w+)\(", self.header) for t in "sdcz"}
        declared = of_types | set(re.findall(r"^int (BLAS_\w+)\(", self.header, re.M))
        self.assertEqual(len(declared), 80)
        self.assertEqual(set(symbols(self.library)[0]), declared | {name.lower() + "_" for name in declared})

    def test_needs_no_runtime_of_its_language(self):
        self.assertFalse([name for name in needed(self.library) if "stdc++" in name or "gcc_s" in name])

    def test_holds_no_instruction_beyond_the_oldest_class(self):
        self.assertFalse(too_young(self.library)[:10])


class Fftw(unittest.TestCase):
    of_prefix = {prefix: libraries / f"lib{prefix}.so.3" for prefix in ("fftw3", "fftw3f")}

    def test_takes_the_place_by_name(self):
        for name, library in self.of_prefix.items():
            self.assertEqual(soname(library), [f"lib{name}.so.3"])

    def test_the_names_of_threads_lead_to_it(self):
        for name in self.of_prefix:
            for kind in ("threads", "omp"):
                library = libraries / f"lib{name}_{kind}.so.3"
                self.assertEqual(soname(library), [library.name])
                self.assertEqual([n for n in needed(library) if "libc.so" not in n], [f"lib{name}.so.3"])

    def test_exports_names_of_its_precision_only(self):
        for prefixes, library in zip((("fftw_", "dfftw_"), ("fftwf_", "sfftw_")), self.of_prefix.values()):
            names = symbols(library)[0]
            self.assertFalse([name for name in names if not name.startswith(prefixes)])
            self.assertGreater(len(names), 170)

    def test_needs_no_runtime_of_its_language(self):
        for library in self.of_prefix.values():
            self.assertFalse([name for name in needed(library) if "stdc++" in name or "gcc_s" in name])

    def test_holds_no_instruction_beyond_the_oldest_class(self):
        for library in self.of_prefix.values():
            self.assertFalse(too_young(library)[:10])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
