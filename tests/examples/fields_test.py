#!/usr/bin/env python3
"""Runs the example of potentials as a user does, and solves its problems in other ways.

usage: fields_test.py PROGRAM_FOLDER LIBRARY_FOLDER REFERENCE_BLAS [unittest arguments]
"""
import re

import numpy
import scipy.fft
import scipy.sparse
import scipy.sparse.linalg

from programs import PAGE, InFolder, main, pictures, run


def differences(n, h, at_low=None, at_high=None):
    """Minus second differences at n + 1 points, of mirrored values where something is told of the derivative."""
    matrix = scipy.sparse.diags([-1, 2, -1], [-1, 0, 1], shape=(n + 1, n + 1)).tolil()
    if at_low == "derivative":
        matrix[0, 1] = -2
    if at_high == "derivative":
        matrix[n, n - 1] = -2
    return matrix.tocsr() / h**2


class Potential(InFolder):
    """A plate, a box and a sphere; errors and times over the grid."""

    def picture_is(self, picture, values, low, high):
        """values: the lower row first."""
        drawn = numpy.array([list(row) for row in picture])[::-1]
        shades = numpy.clip(255 * (values - low) / (high - low), 0, 255)
        self.assertEqual(drawn.shape, shades.shape)
        self.assertLess(numpy.abs(drawn - shades).max(), 0.502)

    def test_heats_the_plate_as_the_same_system_solved_by_elimination(self):
        output, text = self.page("potential", PAGE)
        nx, ny, h = 400, 200, 1 / 200
        x, y = numpy.arange(nx + 1) * h, numpy.arange(ny + 1) * h
        f = numpy.where(numpy.hypot(x[None, :] - 1.3, y[:, None] - 0.4) < 0.15 + 1e-9, 2000.0, 0.0)
        f[-1] += 2 / h * -30
        f[:, 1] += 80 / h**2
        f[:, -2] += 20 / h**2
        inner = slice(1, nx)
        system = (scipy.sparse.kron(scipy.sparse.identity(ny + 1), differences(nx, h)[inner, inner]) +
                  scipy.sparse.kron(differences(ny, h, "derivative", "derivative"), scipy.sparse.identity(nx - 1)))
        u = numpy.empty((ny + 1, nx + 1))
        u[:, 0], u[:, -1] = 80, 20
        u[:, inner] = scipy.sparse.linalg.spsolve(system.tocsc(), f[:, inner].ravel()).reshape(ny + 1, nx - 1)
        hottest, at_x, at_y = map(float, re.search(r"hottest ([\d.]+) degrees at (\S+) (\S+)", output).groups())
        row, column = numpy.unravel_index(u.argmax(), u.shape)
        self.assertAlmostEqual(hottest, u.max(), delta=1e-4)
        self.assertEqual((at_x, at_y), (round(x[column], 6), round(y[row], 6)))
        self.picture_is(next(pictures(text)), u, 0, 10 * numpy.ceil(u.max() / 10))

    def test_draws_slices_of_the_box_as_sines_give_them(self):
        output, text = self.page("potential", PAGE)
        n = 64
        f = numpy.zeros((n + 1, n + 1, n + 1))
        charge = 1e-9 / 8.8541878e-12 * n**3
        f[24, 24, 20], f[40, 40, 44] = charge, -charge
        waves = 4 * n * n * numpy.sin(numpy.arange(1, n) * numpy.pi / 2 / n)**2
        u = numpy.zeros_like(f)
        u[1:n, 1:n, 1:n] = scipy.fft.idstn(
            scipy.fft.dstn(f[1:n, 1:n, 1:n], type=1) /
            (waves[:, None, None] + waves[None, :, None] + waves[None, None, :]), type=1)
        self.assertAlmostEqual(float(re.search(r"box +([\d.]+) volts", output)[1]), u[28, 28, 26], delta=1e-4)
        slices = list(pictures(text))[2:8]
        for picture, k in zip(slices, (16, 24, 28, 32, 40, 48), strict=True):
            self.picture_is(picture, u[k], -60, 60)
            self.assertIn(f"{k / n:.3f} m above", text)

    def test_draws_winds_as_an_integral_over_the_sphere_gives_them(self):
        output, text = self.page("potential", PAGE)
        picture = numpy.array([list(row) for row in list(pictures(text))[9]])[::-1]
        self.assertEqual(picture.shape, (181, 361))
        storms = ((45, -30, 1), (50, 150, 1), (35, -130, 1), (-50, 20, -1), (-45, -100, -1), (-40, 120, -1))
        # Points between those of the map, so that the logarithm of no distance is infinite.
        up, east = numpy.meshgrid(numpy.radians(numpy.arange(-89.75, 90, 0.5)),
                                  numpy.radians(numpy.arange(-179.75, 180, 0.5)), indexing="ij")
        closeness = lambda a, b: numpy.sin(a) * numpy.sin(up) + numpy.cos(a) * numpy.cos(up) * numpy.cos(east - b)
        turning = sum(sign * 5e-5 * numpy.exp((closeness(*numpy.radians((a, b))) - 1) * 6.371**2)
                      for a, b, sign in storms)
        area = numpy.radians(0.5)**2 * numpy.cos(up)
        field = lambda a, b: (numpy.log(1 - closeness(*numpy.radians((a, b)))) * turning * area).sum() / 4 / numpy.pi
        most = float(re.findall(r">(\d+)</text>\s*<text[^>]*>square kilometres", text)[0])
        for a in range(-80, 90, 20):
            for b in range(-170, 180, 20):
                shade = 255 * (field(a, b) * 6371**2 + most) / (2 * most)
                self.assertAlmostEqual(picture[a + 90, b + 180], shade, delta=1)
        wind = re.search(r"strongest wind ([\d.]+) m/s", output)[1]
        self.assertIn(f"at {float(wind):.0f} m a second", text)

    def test_errors_fall_to_a_quarter_with_twice_the_cells(self):
        output, text = self.page("potential", PAGE)
        dots = 0
        for name, most in (("rectangle", 1024), ("box", 128), ("sphere", 512)):
            rows = [list(map(float, row)) for row in
                    re.findall(rf"^{name} +(\d+) +(\d+) +(\S+) +(\S+) +(\S+)$", output, re.M)]
            cells, unknowns, errors, times, _ = numpy.array(rows).T
            self.assertEqual((cells[0], cells[-1]), (8, most))
            points = {"rectangle": (cells + 1)**2, "box": (cells + 1)**3, "sphere": (2 * cells + 1) * (cells + 1)}[name]
            self.assertEqual(list(unknowns), list(points))
            fitted = -numpy.polyfit(numpy.log(cells), numpy.log(errors), 1)[0]
            told = float(re.search(rf"^{name} +slope ([\d.]+)$", output, re.M)[1])
            self.assertAlmostEqual(told, fitted, delta=1e-3)  # errors are printed with four digits
            self.assertAlmostEqual(told, 2, delta=0.05)
            self.assertIn(f"&minus;{told:.2f} for the {name}", text)
            self.assertGreater(times.min(), 0)
            dots += 2 * len(rows)
        self.assertEqual((text.count("<polyline"), text.count("<circle"), len(list(pictures(text)))), (8, dots, 11))

    def test_says_what_it_cannot_do(self):
        done = run("potential", "/nowhere/page.html")
        self.assertEqual(done.returncode, 1)
        self.assertIn("/nowhere/page.html: No such file", done.stderr)


if __name__ == "__main__":
    main()
