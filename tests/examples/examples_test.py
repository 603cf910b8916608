#!/usr/bin/env python3
"""Runs the example programs as a user does.

usage: examples_test.py PROGRAM_FOLDER LIBRARY_FOLDER REFERENCE_BLAS [unittest arguments]
"""
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

programs, libraries, reference_blas = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
reference_folder = pathlib.Path(sys.argv[3]).parent
DATA = pathlib.Path(__file__).resolve().parents[2] / "examples/digits/digits.csv"


def run(program, *arguments, **variables):
    return subprocess.run([str(programs / program), *map(str, arguments)], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, env={k: str(v) for k, v in variables.items()})


class ResolveKernel(unittest.TestCase):
    def test_calls_a_kernel_by_name(self):
        done = run("resolve_kernel", libraries)
        self.assertEqual((done.stdout, done.stderr), ("x.y = 20, and with y from its far end 30\n", ""))

    def test_says_what_is_missing(self):
        done = run("resolve_kernel", "/nowhere")
        self.assertEqual(done.returncode, 1)
        self.assertIn("/nowhere/liborv.so", done.stderr)


def table(output):
    """The rows of the table: variance, share, total, residual of each component."""
    rows = [re.findall(r"[-+.\de]+", line) for line in output.splitlines() if re.match(r" +\d+ ", line)]
    return [[float(word) for word in row[1:]] for row in rows]


class Digits(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_computes_the_same_on_the_reference_library(self):
        ours, theirs = run("digits", DATA), run("digits", DATA, LD_LIBRARY_PATH=reference_folder)
        self.assertEqual((ours.returncode, ours.stderr), (0, ""))
        self.assertIn(f"computed by {libraries}", ours.stdout)
        self.assertIn(f"computed by {reference_blas}", theirs.stdout)
        self.assertEqual(len(table(ours.stdout)), 10)
        # An eigenvalue moves by at most the norm of the difference of two computed covariance matrices (Weyl): twice
        # gamma_n (n = 1797, and 65 more for the Rayleigh quotient) times the trace, far below the last printed digit.
        # So rows agree but for one unit of it. The last column is rounding itself and only has to be small.
        for row, other in zip(table(ours.stdout), table(theirs.stdout), strict=True):
            for value, expected, unit in zip(row, other, (1e-8, 1e-2, 1e-2)):
                self.assertLess(abs(value - expected), 1.5 * unit)
            self.assertLess(max(row[3], other[3]), 1e-12 * 1.05)

    def test_runs_on_a_library_that_is_loaded_before(self):
        done = run("digits", DATA, LD_LIBRARY_PATH=reference_folder, LD_PRELOAD=libraries / "liborv_blas.so")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn(f"computed by {libraries / 'liborv_blas.so'}", done.stdout)

    def test_writes_a_page_with_every_digit_and_every_component(self):
        page = self.folder / "index.html"
        self.assertEqual(run("digits", DATA, page).returncode, 0)
        text = page.read_text()
        self.assertTrue(text.startswith("<!doctype html>") and text.rstrip().endswith("</html>"))
        self.assertEqual(len(re.findall(r"<text x=[-.\d]+ y=[-.\d]+>\d</text>", text)), 1797)
        self.assertEqual(len(re.findall(r"component \d+<br>", text)), 10)
        self.assertNotRegex(text, r"\bnan\b|https?://")

    def test_says_where_a_page_cannot_be_written(self):
        done = run("digits", DATA, "/nowhere/page.html")
        self.assertEqual(done.returncode, 1)
        self.assertIn("/nowhere/page.html: No such file", done.stderr)

    def expect_refusal(self, text, line, why):
        path = self.folder / "bad.csv"
        path.write_text(text)
        done = run("digits", path)
        self.assertEqual(done.returncode, 1)
        self.assertIn(f"{path}:{line}: {why}", done.stderr)

    def test_refuses_bad_data_with_file_and_line(self):
        lines = DATA.read_text().splitlines(keepends=True)
        at_700 = lambda line: "".join(lines[:699]) + line + "".join(lines[700:])
        numbers = lines[699].rstrip().split(",")
        for text, line, why in (
                ("", 1, "the file ends before this line"),
                ("".join(lines[:900]), 901, "the file ends before this line"),
                ("".join(lines)[:-1], 1797, "the line should go on with a new line after number 65"),
                ("".join(lines)[:-3], 1797, "the line should go on with a comma after number 64"),
                (at_700("\n"), 700, "number 1 of 65 is missing or not a number from 0 to 16"),
                (at_700(",".join(numbers[:20]) + "\n"), 700, "the line should go on with a comma after number 20"),
                (at_700(",".join(numbers + ["1"]) + "\n"), 700, "the line should go on with a new line after number 65"),
                (at_700(",".join(["x"] + numbers[1:]) + "\n"), 700, "number 1 of 65 is missing or not a number"),
                (at_700(",".join(["nan"] + numbers[1:]) + "\n"), 700, "number 1 of 65 is missing or not a number"),
                (at_700(",".join(["3.5"] + numbers[1:]) + "\n"), 700, "the line should go on with a comma"),
                (at_700(",".join(["17"] + numbers[1:]) + "\n"), 700, "number 1 of 65 is missing or not a number"),
                (at_700(",".join(["-1"] + numbers[1:]) + "\n"), 700, "number 1 of 65 is missing or not a number"),
                (at_700(",".join(numbers[:64] + ["10"]) + "\n"), 700, "number 65 of 65 is missing or not a number"),
                (at_700("9" * 2000 + "\n"), 700, "number 1 of 65 is missing or not a number"),
                ("".join(lines) + lines[0], 1798, "the file has more lines than there are images")):
            with self.subTest(line=line, why=why):
                self.expect_refusal(text, line, why)

    def test_says_that_there_is_no_data(self):
        done = run("digits", "/nowhere.csv")
        self.assertEqual(done.returncode, 1)
        self.assertIn("/nowhere.csv: No such file", done.stderr)


class Refine(unittest.TestCase):
    def test_reaches_the_solution_only_with_residuals_in_extra_precision(self):
        with tempfile.TemporaryDirectory() as folder:
            page = pathlib.Path(folder) / "refine.html"
            done = run("refine", page)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            rows = [list(map(float, line.split())) for line in done.stdout.splitlines() if re.match(r" +\d ", line)]
            self.assertEqual(len(rows), 9)
            self.assertGreater(rows[-1][1], 1e-10)
            self.assertLess(rows[-1][2], 2.3e-16)  # the last bit of 1
            self.assertIn("= 0 in double, 1 in extra precision", done.stdout)
            self.assertEqual(page.read_text().count("<polyline"), 2)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
