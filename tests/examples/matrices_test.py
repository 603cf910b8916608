#!/usr/bin/env python3
"""Runs the examples of dense and sparse matrices as a user does.

usage: matrices_test.py PROGRAM_FOLDER LIBRARY_FOLDER REFERENCE_BLAS [unittest arguments]
"""
import re
import unittest

from programs import DATA, POWER, InFolder, libraries, main, programs, reference_blas, reference_folder, run


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


class Digits(InFolder):
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


class Refine(InFolder):
    def test_reaches_the_solution_only_with_residuals_in_extra_precision(self):
        page = self.folder / "refine.html"
        done = run("refine", page)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        rows = [list(map(float, line.split())) for line in done.stdout.splitlines() if re.match(r" +\d ", line)]
        self.assertEqual(len(rows), 9)
        self.assertGreater(rows[-1][1], 1e-10)
        self.assertLess(rows[-1][2], 2.3e-16)  # the last bit of 1
        self.assertIn("= 0 in double, 1 in extra precision", done.stdout)
        self.assertEqual(page.read_text().count("<polyline"), 2)

    def test_draws_an_error_of_zero_below_the_scale(self):
        page = self.folder / "refine.html"
        zeros = run("refine", page).stdout.count(" 0.0e+00")
        drawn = page.read_text()
        ends = [float(point.split(",")[1]) for line in re.findall(r"points='(.*?)'", drawn) for point in line.split()]
        hollow = [float(y) for y in re.findall(r"cy=([\d.]+) r=4 [^>]*fill='#fff'", drawn)]
        self.assertEqual(len(hollow), zeros)
        self.assertGreater(zeros, 0)
        self.assertGreater(min(hollow), max(ends))


class Factor(InFolder):
    """LAPACK factors matrices from files."""

    def setUp(self):
        if not (programs / "factor").exists():
            self.skipTest("liblapack3 was not there when the examples were built")
        super().setUp()

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


class Iterate(InFolder):
    """Sparse systems from files, solved by iterations."""

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


if __name__ == "__main__":
    main()
