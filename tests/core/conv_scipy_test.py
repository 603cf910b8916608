#!/usr/bin/env python3
"""Convolutions and correlations beside SciPy's, in all modes, by both routes.

usage: conv_scipy_test.py LIBORV [unittest arguments]
"""
import ctypes
import sys
import unittest

try:
    import numpy
    import scipy.signal
except ImportError:
    sys.exit(77)  # skipped

orv = ctypes.CDLL(sys.argv[1])
orv.orv_last_error.restype = ctypes.c_char_p

TYPES = {"s": numpy.float32, "d": numpy.float64, "c": numpy.complex64, "z": numpy.complex128}
SIZE, ROUTE = 1, 2
MODES = {"full": 0, "same": 1, "valid": 2}
ROUTES = (0, 1, 2)
CONVOLUTION, CORRELATION = 1, 2


def ok(status):
    if status != 0:
        raise AssertionError(orv.orv_last_error().decode())


def numbers(values):
    return (ctypes.c_int64 * len(values))(*values)


def pointer(array):
    return ctypes.c_void_p(array.ctypes.data)


def computed(job, x, y, mode, route):
    """What orv makes of two arrays of one type, whatever their strides are; the last index comes first in orv."""
    letter = next(t for t, kind in TYPES.items() if kind == x.dtype)
    conv = ctypes.c_void_p()
    ok(orv.orv_conv_create(ctypes.byref(conv), ctypes.c_char(letter.encode()), job, x.ndim, numbers(x.shape[::-1]),
                           numbers(y.shape[::-1])))
    try:
        ok(orv.orv_conv_set(conv, SIZE, ctypes.c_int64(MODES[mode])))
        ok(orv.orv_conv_set(conv, ROUTE, ctypes.c_int64(route)))
        shape = numbers([0] * x.ndim)
        ok(orv.orv_conv_get_outputs(conv, shape, None))
        z = numpy.full(list(shape)[::-1], numpy.nan, x.dtype)
        strides = [numbers([stride // a.itemsize for stride in a.strides[::-1]]) for a in (x, y, z)]
        ok(orv.orv_conv_set_strides(conv, *strides))
        ok(orv.orv_conv_run(conv, pointer(x), pointer(y), pointer(z)))
        return z
    finally:
        orv.orv_conv_free(conv)


def wide(array):
    return array.astype(complex if array.dtype.kind == "c" else float)


class Beside(unittest.TestCase):
    def setUp(self):
        self.random = numpy.random.default_rng(3)

    def array(self, letter, shape):
        values = self.random.standard_normal(shape)
        if letter in "cz":
            values = values + 1j * self.random.standard_normal(shape)
        return values.astype(TYPES[letter])

    def assert_near(self, z, wanted, x, y):
        """By the norms of the operands, which bound transforms and direct sums alike."""
        self.assertEqual(z.shape, wanted.shape)
        norms = numpy.linalg.norm(wide(x).ravel()) * numpy.linalg.norm(wide(y).ravel())
        allowed = 10 * (1 + numpy.log2(2 * wanted.size + 2)) * numpy.finfo(z.dtype).eps * norms
        self.assertLessEqual(numpy.abs(z - wanted).max(), allowed)

    def problems(self):
        longest = {1: 300, 2: 30, 3: 10, 4: 6}
        for letter in TYPES:
            for rank, length in longest.items():
                for _ in range(6):
                    shapes = self.random.integers(1, length + 1, (2, rank))
                    yield self.array(letter, shapes[0]), self.array(letter, shapes[1])

    def each(self, job, of_scipy):
        for x, y in self.problems():
            for mode in MODES:
                if mode == "valid" and any(nx > ny for nx, ny in zip(x.shape, y.shape)):
                    continue  # SciPy would exchange the operands, or refuse
                wanted = of_scipy(wide(y), wide(x), mode)
                for route in ROUTES:
                    with self.subTest(x=x.shape, y=y.shape, type=x.dtype, mode=mode, route=route):
                        self.assert_near(computed(job, x, y, mode, route), wanted, x, y)

    def test_convolve_in_all_modes(self):
        self.each(CONVOLUTION, lambda y, x, mode: scipy.signal.convolve(y, x, mode, "direct"))

    def test_fftconvolve_in_all_modes(self):
        self.each(CONVOLUTION, scipy.signal.fftconvolve)

    def test_correlate_in_all_modes(self):
        """SciPy conjugates its second operand."""
        self.each(CORRELATION, lambda y, x, mode: scipy.signal.correlate(y, x.conj(), mode, "direct"))

    def test_convolve2d_and_correlate2d_of_a_picture(self):
        picture, weights = self.array("d", (70, 50)), self.array("d", (6, 5))
        for mode in MODES:
            for route in ROUTES:
                self.assert_near(computed(CONVOLUTION, weights, picture, mode, route),
                                 scipy.signal.convolve2d(picture, weights, mode), weights, picture)
        self.assert_near(computed(CORRELATION, weights, picture, "valid", 0),
                         scipy.signal.correlate2d(picture, weights, "valid"), weights, picture)

    def test_slices_with_any_gaps(self):
        x, y = self.array("d", (9, 12))[::3, ::2], self.array("d", (40, 60))[:, ::4]
        wanted = scipy.signal.convolve(y, x, "full", "direct")
        for route in ROUTES:
            self.assert_near(computed(CONVOLUTION, x, y, "full", route), wanted, x, y)

    def test_transposed_arrays(self):
        x, y = self.array("c", (4, 7)).T, self.array("c", (30, 20)).T
        wanted = scipy.signal.convolve(wide(y), wide(x), "same", "direct")
        for route in ROUTES:
            self.assert_near(computed(CONVOLUTION, x, y, "same", route), wanted, x, y)

    def test_one_call_helpers(self):
        x, y = self.array("d", 12), self.array("d", 100)
        z = numpy.empty(111)
        ok(orv.orv_convolve_d(ctypes.c_int64(12), pointer(x), ctypes.c_int64(100), pointer(y), 0, pointer(z)))
        self.assert_near(z, numpy.convolve(x, y), x, y)
        a, b = self.array("s", (3, 5)), self.array("s", (20, 30))
        c = numpy.empty((20, 30), numpy.float32)
        ok(orv.orv_correlate2_s(*map(ctypes.c_int64, a.shape), pointer(a), *map(ctypes.c_int64, b.shape), pointer(b), 1,
                                pointer(c)))
        self.assert_near(c, scipy.signal.correlate2d(wide(b), wide(a), "same"), a, b)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0]] + sys.argv[2:])
