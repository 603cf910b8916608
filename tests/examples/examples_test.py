#!/usr/bin/env python3
"""Runs the example programs as a user does.

usage: examples_test.py PROGRAM_FOLDER LIBRARY_FOLDER REFERENCE_BLAS [unittest arguments]
"""
import base64
import math
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

programs, libraries, reference_blas = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
reference_folder = pathlib.Path(sys.argv[3]).parent
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
DATA = EXAMPLES / "digits/digits.csv"
POWER = EXAMPLES / "factor/power.mtx"
SUNSPOTS, PICTURE = EXAMPLES / "spectrum/sunspots.csv", EXAMPLES / "spectrum/ascent.pgm"


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

    def test_draws_an_error_of_zero_below_the_scale(self):
        with tempfile.TemporaryDirectory() as folder:
            page = pathlib.Path(folder) / "refine.html"
            zeros = run("refine", page).stdout.count(" 0.0e+00")
            drawn = page.read_text()
            ends = [float(point.split(",")[1]) for line in re.findall(r"points='(.*?)'", drawn) for point in line.split()]
            hollow = [float(y) for y in re.findall(r"cy=([\d.]+) r=4 [^>]*fill='#fff'", drawn)]
            self.assertEqual(len(hollow), zeros)
            self.assertGreater(zeros, 0)
            self.assertGreater(min(hollow), max(ends))


class Factor(unittest.TestCase):
    """LAPACK factors matrices from files."""

    def setUp(self):
        if not (programs / "factor").exists():
            self.skipTest("liblapack3 was not there when the examples were built")
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def matrix(self, text):
        path = self.folder / "m.mtx"
        path.write_text(text)
        return path

    def methods(self, done):
        """Seconds, speed, residual, error, libraries with their shares of the time: by method."""
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        rows = re.findall(r"^(LU|Cholesky) +([\d.]+) +([\d.]+) +(\S+) +(\S+) +(.*)$", done.stdout, re.M)
        return {name: (*map(float, numbers), dict(re.findall(r"(\S+) (\d+)%", rest))) for name, *numbers, rest in rows}

    def test_solves_on_both_libraries_and_shows_where_the_time_went(self):
        saved, page = self.folder / "reference.txt", self.folder / "page.html"
        theirs = run("factor", POWER, LD_LIBRARY_PATH=reference_folder)
        saved.write_text(theirs.stdout)
        ours = run("factor", POWER, page, saved, ORV_NUM_THREADS=1)  # waiting for others counts as time
        self.assertRegex(ours.stdout, rf"BLAS +{libraries}/libblas.so.3\n")
        self.assertRegex(theirs.stdout, rf"BLAS +{reference_blas}\n")
        for output in (ours.stdout, theirs.stdout):
            self.assertRegex(output, r"LAPACK +\S+/lapack/liblapack.so.3")
            self.assertIn("1723 by 1723, 6511 elements not 0, symmetric", output)
        for done, library in ((ours, "liborv_mc3.so"), (theirs, "libblas.so.3")):
            found = self.methods(done)
            self.assertEqual(list(found), ["LU", "Cholesky"])
            for _, _, residual, error, share in found.values():
                # Backward stable in practice: a residual of a modest multiple of the last bit, an error of that times
                # the condition, 2e5.
                self.assertLess(residual, 10 * 2**-52)
                self.assertLess(error, 2e5 * 10 * 2**-52)
                self.assertIn(library, share)  # how much of the time is the machine's affair
        text = page.read_text()
        self.assertTrue(text.startswith("<!doctype html>") and text.rstrip().endswith("</html>"))
        self.assertEqual(len(re.findall(r"<tr><td>(?:LU|Cholesky)<td>(?:this one|the other)", text)), 4)
        self.assertIn(str(reference_blas), text)
        self.assertNotRegex(text, r"\bnan\b|\binf\b")

    def test_reads_every_form(self):
        banner = "%%MatrixMarket matrix "
        for head, body, kind in (
                ("coordinate real general", "2 2 3\n1 1 2\n1 2 1e0\n2 2 -4\n", "3 elements not 0, not symmetric"),
                ("coordinate integer symmetric", "2 2 3\n1 1 2\n2 1 1\n2 2 2\n", "4 elements not 0, symmetric"),
                ("coordinate pattern general", "2 2 3\n1 1\n2 1\n2 2\n", "3 elements not 0, not symmetric"),
                ("coordinate real skew-symmetric", "2 2 1\n2 1 3\n", "2 elements not 0, not symmetric"),
                ("array real general", "2 2\n1\n0\n5\n2\n", "3 elements not 0, not symmetric"),
                ("array integer symmetric", "2 2\n3\n1\n3\n", "4 elements not 0, symmetric"),
                ("array real skew-symmetric", "2 2\n7\n", "2 elements not 0, not symmetric"),
                ("COORDINATE Real General", "% a comment\n\n2 2 2\n\n2 2 1\n1 1 1\n\n", "2 elements not 0, symmetric")):
            with self.subTest(head=head):
                done = run("factor", self.matrix(f"{banner}{head}\n{body}"))
                self.assertIn(f"2 by 2, {kind}\n", done.stdout)
                found = self.methods(done)
                self.assertEqual("Cholesky" in found, kind.endswith(" symmetric") and "not symmetric" not in kind)
                self.assertLess(found["LU"][3], 1e-15)

    def test_refuses_bad_files_with_file_and_line(self):
        real = "%%MatrixMarket matrix coordinate real general\n"
        symmetric = real.replace("general", "symmetric")
        array = "%%MatrixMarket matrix array real general\n"
        for text, line, why in (
                ("", 1, "this is no Matrix Market file"),
                ("1 2 3\n", 1, "this is no Matrix Market file"),
                ("%%MatrixMarket matrix coordinate\n", 1, "expected: %%MatrixMarket matrix FORM FIELD SYMMETRY"),
                ("%%MatrixMarket vector coordinate real general\n", 1, "expected: %%MatrixMarket matrix"),
                (real.replace("coordinate", "dense"), 1, "the form dense is not coordinate or array"),
                (real.replace("real", "complex"), 1, "complex matrices are not for this program"),
                (real.replace("real", "quaternion"), 1, "the field quaternion is not real, integer or pattern"),
                (array.replace("real", "pattern"), 1, "an array cannot be a pattern"),
                (real.replace("general", "hermitian"), 1, "the symmetry hermitian is not general, symmetric or skew"),
                (real, 2, "the file ends before the line of sizes"),
                (real + "% only comments\n", 3, "the file ends before the line of sizes"),
                (real + "2 2\n", 2, "no whole number for the number of entries"),
                (real + "2 x 1\n", 2, "no whole number for the number of columns"),
                (real + "0 0 0\n", 2, "the number of rows is not from 1 to"),
                (real + "2 3 1\n1 1 1\n", 2, "the matrix has 2 rows and 3 columns: only a square one can be solved"),
                (real + "500000000 500000000 1\n", 2, "500000000 rows are too many: full matrices of them need"),
                (real + "99999999999999999999 1 1\n", 2, "the number of rows is not from 1 to"),
                (real + "2 2 1\n1 1 1 1\n", 3, "more on the line than belongs there: 1"),
                (real + "2 2 1\n3 1 1\n", 3, "the row is not from 1 to 2"),
                (real + "2 2 1\n1 0 1\n", 3, "the column is not from 1 to 2"),
                (real + "2 2 1\n1 1\n", 3, "no number for the value"),
                (real + "2 2 1\n1 1 nan\n", 3, "the value is not a finite number"),
                (real + "2 2 1\n1 1 1e999\n", 3, "the value is not a finite number"),
                (real + "2 2 1\n1 1 2,5\n", 3, "no number for the value"),
                (real + "2 2 2\n1 1 1\n", 4, "the file ends after 1 of 2 entries"),
                (real + "2 2 1\n1 1 1\n2 2 1\n", 4, "more lines than the sizes tell"),
                (real + "2 2 2\n1 1 1\n% late\n", 4, "no whole number for the row"),
                (real + "2 2 2\n1 1 1\n1 1 1\n", 4, "row 1 of column 1 for the second time"),
                (symmetric + "2 2 2\n2 1 1\n1 2 1\n", 4, "row 1 of column 2 for the second time"),
                (symmetric.replace("symmetric", "skew-symmetric") + "2 2 1\n1 1 1\n", 3, "zeros on its diagonal"),
                (array + "2 2\n1\n2\n3\n", 6, "the file ends before row 2 of column 2"),
                (array + "2 2 4\n1\n", 2, "more on the line than belongs there")):
            with self.subTest(line=line, why=why):
                path = self.matrix(text)
                done = run("factor", path)
                self.assertEqual(done.returncode, 1)
                self.assertIn(f"factor: {path}:{line}: ", done.stderr)
                self.assertIn(why, done.stderr)

    def test_says_that_a_matrix_is_singular(self):
        path = self.matrix("%%MatrixMarket matrix coordinate real symmetric\n3 3 3\n1 1 1\n2 1 1\n2 2 1\n")
        done = run("factor", path)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, f"factor: {path}: the matrix is singular: pivot 2 of 3 is 0, so A*x = b has no "
                                      "solution or many\n")

    def test_says_that_a_matrix_is_all_but_singular_or_not_positive_definite(self):
        # The second row is the first one divided by three and rounded.
        done = run("factor", self.matrix("%%MatrixMarket matrix array real symmetric\n2 2\n1\n"
                                         "0.33333333333333331\n0.11111111111111116\n"))
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("singular as far as double can tell, no digit of x can be trusted", done.stdout)
        done = run("factor", self.matrix("%%MatrixMarket matrix coordinate real symmetric\n2 2 2\n1 1 1\n2 2 -1\n"))
        self.assertIn("Cholesky  does not apply: the matrix is not positive definite (leading 2 by 2)\n", done.stdout)
        done = run("factor", self.matrix("%%MatrixMarket matrix coordinate real general\n2 2 3\n1 1 1\n1 2 1\n2 2 1\n"))
        self.assertIn("Cholesky  does not apply: the matrix is not symmetric\n", done.stdout)

    def test_says_what_cannot_be_opened(self):
        for arguments, why in ((["/nowhere.mtx"], "/nowhere.mtx: No such file"),
                               ([POWER, self.folder / "page.html", "/nowhere.txt"], "/nowhere.txt: No such file"),
                               ([POWER, "/nowhere/page.html"], "/nowhere/page.html: No such file")):
            done = run("factor", *arguments)
            self.assertEqual(done.returncode, 1)
            self.assertIn(why, done.stderr)


class Iterate(unittest.TestCase):
    """Sparse systems from files, solved by iterations."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def matrix(self, text):
        path = self.folder / "m.mtx"
        path.write_text("%%MatrixMarket matrix coordinate real " + text)
        return path

    def rows(self, output):
        """Steps, times, last residual, error: by what the products were."""
        found = re.findall(r"^(orv, [a-z ]+|a plain loop) +(\d+) +(\S+) +(\S+) +(\S+) +(\S+)", output, re.M)
        return {name.strip(): list(map(float, numbers)) for name, *numbers in found}

    def test_solves_the_power_network_by_conjugate_gradients(self):
        page = self.folder / "page.html"
        done = run("iterate", POWER, page)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("1723 by 1723, 6511 elements not 0, symmetric", done.stdout)
        self.assertIn("conjugate gradients", done.stdout)
        rows = self.rows(done.stdout)
        self.assertEqual(list(rows), ["orv, whole matrix", "orv, lower triangle", "a plain loop"])
        for steps, _, _, residual, error in rows.values():
            self.assertLess(steps, 1723)
            self.assertLessEqual(residual, 1e-12)
            self.assertLess(error, 1e-12 * 2e5)  # the condition is 2e5
        text = page.read_text()
        self.assertEqual(text.count("<polyline"), 3)
        self.assertTrue(text.startswith("<!doctype html>") and text.rstrip().endswith("</html>"))
        self.assertNotRegex(text, r"\bnan\b|\binf\b")

    def test_takes_another_method_where_gradients_do_not_apply(self):
        for text, words in (("general\n3 3 5\n1 1 4\n1 2 1\n2 2 5\n3 1 1\n3 3 6\n", ["not symmetric", "BiCGSTAB"]),
                            ("symmetric\n2 2 2\n1 1 1\n2 2 -1\n",
                             ["do not apply: the matrix is not positive definite", "BiCGSTAB"])):
            with self.subTest(text):
                done = run("iterate", self.matrix(text))
                self.assertEqual((done.returncode, done.stderr), (0, ""))
                for word in words:
                    self.assertIn(word, done.stdout)
                self.assertLess(self.rows(done.stdout)["orv, whole matrix"][4], 1e-10)

    def test_refuses_bad_files_with_file_and_line(self):
        for text, line, why in (("general\n2 3 1\n1 1 1\n", 2, "only a square one can be solved"),
                                ("general\n2 2 1\n3 1 1\n", 3, "the row is not from 1 to 2"),
                                ("general\n2 2 2\n1 1 1\n1 1 1\n", 2, "row 0 has column 0 twice")):
            path = self.matrix(text)
            done = run("iterate", path)
            self.assertEqual(done.returncode, 1)
            self.assertIn(f"iterate: {path}:{line}: ", done.stderr)
            self.assertIn(why, done.stderr)


def pictures(page):
    """The bitmaps in a page: rows of values, the upper one first."""
    for text in re.findall(r"data:image/bmp;base64,([A-Za-z0-9+/=]*)'", page):
        data = base64.b64decode(text, validate=True)
        number = lambda at: int.from_bytes(data[at:at + 4], "little")
        width, height, pixels = number(18), number(22), number(10)
        pitch = (width + 3) // 4 * 4
        assert data[:2] == b"BM" and number(2) == len(data) == pixels + pitch * height
        yield [data[pixels + pitch * y:][:width] for y in reversed(range(height))]


class Spectrum(unittest.TestCase):
    """Transforms of a series and of a picture, forward and back."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def file(self, content):
        path = self.folder / "input"
        path.write_bytes(content)
        return path

    def page(self, series, picture):
        page = self.folder / "page.html"
        done = run("spectrum", series, picture, page)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        text = page.read_text()
        self.assertTrue(text.startswith("<!doctype html>") and text.rstrip().endswith("</html>"))
        self.assertNotRegex(text, r"\bnan\b|\binf\b|https?://")
        return done.stdout, text

    def test_finds_the_cycle_of_sunspots_and_names_the_methods(self):
        output, text = self.page(SUNSPOTS, PICTURE)
        self.assertIn("309 years from 1700 on, 49.8 on average", output)
        self.assertIn("a wave of 11.04 years, up and down by 29.6", output)  # 309/28
        rows = re.findall(r"^(309|247 of 256|256 x 256) +([\d.]+) +([\d.]+) +(\S+) +(\S+)  (.*)$", output, re.M)
        self.assertEqual([row[0] for row in rows], ["309", "247 of 256", "256 x 256"])
        self.assertIn("the engine (legacy); 1 thread;", rows[0][5])
        self.assertIn("rows and columns (legacy); 1 thread;", rows[2][5])
        for _, _, _, difference, there_and_back, method in rows:
            # Relative to the largest wave, sums of n terms are wrong by n roundings at most, a transform by fewer.
            self.assertLess(float(difference), 2 * 512 * 2**-53)
            self.assertLess(float(there_and_back), 1e-13)
            self.assertIn(method.strip(), text)
        self.assertEqual((text.count("<polyline"), len(list(pictures(text)))), (5, 5))

    def test_shows_a_rising_tone_in_every_frame_of_the_sound(self):
        _, text = self.page(SUNSPOTS, PICTURE)
        shades = next(pictures(text))[::-1]  # low frequencies first, 8000/256 Hz apart
        self.assertEqual((len(shades), len(shades[0])), (129, 247))
        beeps = 0
        for frame in range(247):
            middle = (64 * frame + 128) / 8000
            rising, column = (300 + 1500 * middle) / 31.25, [row[frame] for row in shades]
            self.assertLess(abs(column.index(max(column)) - rising), 2)
            if abs(rising - 64) < 8:
                continue  # both tones are one
            if min(middle % 0.25, 0.25 - middle % 0.25) < 0.02:
                continue  # the softer one comes or goes within the frame
            heard = middle % 0.5 > 0.25
            self.assertEqual(column[64] > 150, heard)
            beeps += heard
        self.assertGreater(beeps, 50)

    def test_takes_a_slow_wave_from_a_fast_one(self):
        values = [50 + 20 * math.cos(2 * math.pi * t / 50) + 10 * math.sin(2 * math.pi * t / 8) for t in range(200)]
        series = self.file(b"YEAR,N\n" + b"".join(b"%d,%.15g\n" % (1800 + t, v) for t, v in enumerate(values)))
        output, text = self.page(series, PICTURE)
        self.assertIn("a wave of 50.00 years, up and down by 20.0", output)
        whole, slow = ([float(point.split(",")[1]) for point in line.split()]
                       for line in re.findall(r"points='(.*?)'", text)[:2])
        pixel = (max(whole) - min(whole)) / (max(values) - min(values))
        for t, y in enumerate(slow):  # drawn with one decimal
            self.assertAlmostEqual((slow[0] - y) / pixel, 20 * (math.cos(2 * math.pi * t / 50) - 1), delta=0.3 / pixel)

    def test_filters_as_sums_over_neighbours_do(self):
        width, height = 22, 17  # both parities; the bell reaches around the edges
        picture = [[(37 * x * x + 91 * y + 13 * x * y) % 256 for x in range(width)] for y in range(height)]
        path = self.file(b"P5\n%d %d\n255\n" % (width, height) + b"".join(map(bytes, picture)))
        _, text = self.page(SUNSPOTS, path)
        _, same, _, blurred, sharpened = pictures(text)
        self.assertEqual([list(row) for row in same], picture)
        bell = {d: math.exp(-d * d / 18) / math.sqrt(18 * math.pi) for d in range(-15, 16)}
        for y in range(height):
            for x in range(width):
                smooth = sum(bell[dx] * bell[dy] * picture[(y + dy) % height][(x + dx) % width]
                             for dy in bell for dx in bell)
                cut = lambda value: min(max(value, 0), 255)
                self.assertAlmostEqual(blurred[y][x], cut(smooth), delta=0.51)
                self.assertAlmostEqual(sharpened[y][x], cut(2 * picture[y][x] - smooth), delta=0.51)

    def test_refuses_bad_files(self):
        for arguments, why in (
                ((self.file(b""), PICTURE), "the file is empty"),
                (("/nowhere.csv", PICTURE), "/nowhere.csv: No such file"),
                ((SUNSPOTS, "/nowhere.pgm"), "/nowhere.pgm: No such file"),
                ((SUNSPOTS, PICTURE, "/nowhere/page.html"), "/nowhere/page.html: No such file")):
            done = run("spectrum", *arguments)
            self.assertEqual(done.returncode, 1)
            self.assertIn(why, done.stderr)
        for text, why in ((b"Y,N\n1700,x\n", "a line is not YEAR,NUMBER"), (b"Y,N\n1700,nan\n", "is not YEAR,NUMBER"),
                          (b"Y,N\n1700,1\n1702,1\n", "the years do not follow"), (b"Y,N\n1700,1\n", "two years")):
            done = run("spectrum", self.file(text), PICTURE)
            self.assertEqual((done.returncode, why in done.stderr), (1, True), done.stderr)
        for text, why in ((b"P2\n2 2\n255\n", "no PGM file"), (b"P5\n1 2\n255\nab", "the sides are not from 2"),
                          (b"P5\n2 2\n255\nabc", "the file ends before the last pixel")):
            done = run("spectrum", SUNSPOTS, self.file(text))
            self.assertEqual((done.returncode, why in done.stderr), (1, True), done.stderr)


class Convolve(unittest.TestCase):
    """A sound found in noise, a picture filtered, and the times of both routes."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def page(self, picture, *seed):
        page = self.folder / "page.html"
        done = run("convolve", picture, page, *seed)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        text = page.read_text()
        self.assertTrue(text.startswith("<!doctype html>") and text.rstrip().endswith("</html>"))
        self.assertNotRegex(text, r"\bnan\b|\binf\b|https?://")
        return done.stdout, text

    def small_picture(self):
        width, height = 22, 17
        picture = [[(37 * x * x + 91 * y + 13 * x * y) % 256 for x in range(width)] for y in range(height)]
        path = self.folder / "small.pgm"
        path.write_bytes(b"P5\n%d %d\n255\n" % (width, height) + b"".join(map(bytes, picture)))
        return path, picture

    def test_finds_the_sound_where_it_was_hidden(self):
        places = set()
        for seed in range(1, 4):
            output, text = self.page(self.small_picture()[0], seed)
            hidden = int(re.search(r"hidden from value (\d+) on", output)[1])
            found, likeness, elsewhere = re.search(r"from value (\d+) on: likeness ([\d.]+), elsewhere at most ([\d.]+)",
                                                   output).groups()
            self.assertEqual(int(found), hidden)
            # Noise of deviation 4 against 4000 values of root mean square 1 leaves a deviation of 4/sqrt(4000).
            deviation = 4 / math.sqrt(4000)
            self.assertLess(abs(float(likeness) - 1), 5 * deviation)
            self.assertTrue(2 * deviation < float(elsewhere) < 7 * deviation)
            self.assertIn(f"{hidden / 8000:.4f} seconds after the start", text)
            self.assertIn(f">found at {hidden / 8000:.4f} seconds</text>", text)
            places.add(hidden)
        self.assertEqual(len(places), 3)

    def test_filters_as_sums_over_neighbours_do(self):
        path, picture = self.small_picture()
        _, text = self.page(path)
        same, blurred, _, sharpened, _, shaken, weights = pictures(text)
        self.assertEqual([list(row) for row in same], picture)
        side = range(-9, 10)

        def bell(width):
            one = [math.exp(-d * d / (2 * width * width)) for d in side]
            return [[a * b / sum(one)**2 for a in one] for b in one]

        def summed(weight, x, y):
            at = lambda x, y: picture[min(max(y, 0), len(picture) - 1)][min(max(x, 0), len(picture[0]) - 1)]
            return sum(weight(dx, dy) * at(x + dx, y + dy) for dy in side for dx in side)

        soft, sharp = bell(3), bell(1)
        cut = lambda value: min(max(value, 0), 255)
        for y in range(len(picture)):
            for x in range(len(picture[0])):
                for drawn, weight in ((blurred, lambda dx, dy: soft[dy + 9][dx + 9]),
                                      (sharpened, lambda dx, dy: 3 * (dx == dy == 0) - 2 * sharp[dy + 9][dx + 9]),
                                      (shaken, lambda dx, dy: (dx == -dy) / 19)):
                    self.assertAlmostEqual(drawn[y][x], cut(summed(weight, x, y)), delta=0.51)
        self.assertEqual([[shade == 255 for shade in row] for row in weights], [[x + y == 18 for x in range(19)]
                                                                                for y in range(19)])

    def test_tells_of_both_routes_and_of_where_they_cross(self):
        output, text = self.page(PICTURE)
        rows = re.findall(r"^(.{16}) +([\d.]+) +([\d.]+) +(\S+)  (direct|transform) +orv_conv_mc3_dd(direct|fft)_\w+$",
                          output, re.M)
        courses = {"square": [row for row in rows if " x " in row[0]],
                   "line": [row for row in rows if row[0].strip().isdigit()]}
        self.assertEqual([len(courses["line"]), len(courses["square"]), len(rows)], [20, 14, 36])
        for _, _, _, difference, automatic, kernel in rows:
            # An output is wrong by some roundings of the norms' product, which is some times the largest value.
            self.assertLess(float(difference), 1e-12)
            self.assertEqual(kernel, {"direct": "direct", "transform": "fft"}[automatic])
        # Times are rounded in the output, so sizes at which both are all but equal may go either way.
        sentences = re.findall(r"<p>(?:The lines cross between (\S+|\d+ &times; \d+) weights and (\S+|\d+ &times; \d+): "
                               r"|The transform is faster at all|Direct sums are faster at the largest)", text)
        self.assertEqual(len(sentences), 2)
        for course, (before, since) in zip((courses["line"], courses["square"]), sentences):
            sizes = [row[0].strip().replace(" x ", " &times; ") for row in course]
            wins = [float(transform) <= float(direct) for _, direct, transform, *_ in course]
            if since:
                self.assertEqual(sizes.index(since), sizes.index(before) + 1)
                self.assertTrue(all(wins[sizes.index(since):]))
        changes = [next((row[0].strip() for row in course if row[4] == "transform"), None) for course in courses.values()]
        for change in filter(None, changes):
            if change not in ("1", "1 x 1"):
                self.assertIn(f"took it from {change.replace(' x ', ' &times; ')} on", text)
        self.assertEqual((text.count("<polyline"), text.count("<circle"), len(list(pictures(text)))),
                         (4, 1 + 3 * (20 + 14), 7))

    def test_refuses_bad_files(self):
        for arguments, why in ((("/nowhere.pgm",), "/nowhere.pgm: No such file"),
                               ((SUNSPOTS,), "no PGM file"),
                               ((PICTURE, "/nowhere/page.html"), "/nowhere/page.html: No such file")):
            done = run("convolve", *arguments)
            self.assertEqual(done.returncode, 1)
            self.assertIn(why, done.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
