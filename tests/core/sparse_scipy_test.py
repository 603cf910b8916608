#!/usr/bin/env python3
"""Sparse products, solves, conversions and sums beside SciPy's, on the arrays that SciPy keeps.

usage: sparse_scipy_test.py LIBORV POWER.mtx [unittest arguments]
"""
import ctypes
import sys
import unittest

try:
    import numpy
    import scipy.io
    import scipy.sparse
    import scipy.sparse.linalg
except ImportError:
    sys.exit(77)  # skipped

orv = ctypes.CDLL(sys.argv[1])
POWER = sys.argv[2]
orv.orv_last_error.restype = ctypes.c_char_p


class Record(ctypes.Structure):
    _fields_ = [("format", ctypes.c_int), ("type", ctypes.c_char), ("kind", ctypes.c_char), ("uplo", ctypes.c_char),
                ("diag", ctypes.c_char), ("bits", ctypes.c_int), ("base", ctypes.c_int), ("rows", ctypes.c_int64),
                ("cols", ctypes.c_int64), ("count", ctypes.c_int64), ("block", ctypes.c_int64),
                ("ld", ctypes.c_int64)] + [(name, ctypes.c_void_p) for name in ("values", "begin", "end", "row", "col", "memory")]
    _fields_ += [("has_diagonal", ctypes.c_int)]


def record(a, **options):
    """The record of a SciPy matrix, whose arrays must live as long as it."""
    formats = {"csr": 1, "csc": 2, "coo": 3, "bsr": 5}
    r = Record(format=formats[a.format], type=b"d", rows=a.shape[0], cols=a.shape[1])
    for name, value in options.items():
        setattr(r, name, value)
    assert a.data.dtype == float
    indices = [a.row, a.col] if a.format == "coo" else [a.indptr, a.indices]
    assert all(array.dtype == indices[0].dtype for array in indices)
    r.bits = 8 * indices[0].dtype.itemsize
    pointers = [array.ctypes.data for array in indices]
    r.values = a.data.ctypes.data
    if a.format == "coo":
        r.count, r.row, r.col = a.nnz, *pointers
    elif a.format == "csc":
        r.begin, r.row = pointers
    else:
        r.begin, r.col = pointers
        if a.format == "bsr":
            r.block = a.blocksize[0]
    return r


def matrices():
    random = numpy.random.default_rng(5)
    power = scipy.io.mmread(POWER).tocsr().astype(float)
    yield "power network", power
    for m, n, density in ((200, 300, 0.05), (300, 200, 0.3), (500, 500, 0.002)):
        a = scipy.sparse.random(m, n, density, "csr", random_state=random)
        a.data -= 0.5
        yield f"{m} by {n}", a


def bound(a, x):
    """What rounding may do to a sum: gamma_n of the magnitudes, for two ways of computing it."""
    most = numpy.diff(abs(a).tocsr().indptr).max() + 8
    return 4 * most * 2.0**-53 * (abs(a) @ abs(x)) + 1e-300


def number(x):
    return ctypes.c_double(x)


def result(bits=32, base=0):
    """The record of a result in compressed rows, for which orv takes the memory."""
    return Record(format=1, bits=bits, base=base)


def taken(r):
    """A result as a SciPy matrix with arrays of its own."""
    integer = numpy.int32 if r.bits == 32 else numpy.int64

    def array(at, count, kind):
        if count == 0:
            return numpy.empty(0, kind)
        return numpy.frombuffer((ctypes.c_byte * (count * numpy.dtype(kind).itemsize)).from_address(at), kind).copy()

    begin = array(r.begin, r.rows + 1, integer) - r.base
    a = scipy.sparse.csr_matrix((array(r.values, r.count, float), array(r.col, r.count, integer) - r.base, begin),
                                shape=(r.rows, r.cols))
    orv.orv_sparse_free(ctypes.byref(r))
    return a


class Scipy(unittest.TestCase):
    def expect(self, status):
        self.assertEqual(status, 0, orv.orv_last_error())

    def forms(self, a):
        for form in ("csr", "csc", "coo", "bsr"):
            if form != "bsr":
                yield getattr(a, "to" + form)()
            elif a.shape[0] % 2 == 0 and a.shape[1] % 2 == 0:
                blocks = a.tobsr((2, 2))
                blocks.sort_indices()
                yield blocks

    def test_products_with_vectors(self):
        for name, a in matrices():
            for stored in self.forms(a):
                for trans, op in ((b"N", a), (b"T", a.T.tocsr())):
                    with self.subTest(name, format=stored.format, trans=trans):
                        r = record(stored)
                        self.expect(orv.orv_sparse_check(ctypes.byref(r)))
                        x = numpy.sin(numpy.arange(op.shape[1]))
                        y = numpy.full(op.shape[0], numpy.nan)
                        self.expect(orv.orv_sparse_dmv(ctypes.c_char(trans), number(1), ctypes.byref(r),
                                                       x.ctypes.data_as(ctypes.c_void_p), number(0),
                                                       y.ctypes.data_as(ctypes.c_void_p)))
                        self.assertTrue((abs(y - op @ x) <= bound(op, x)).all())

    def test_products_with_dense_matrices(self):
        for name, a in matrices():
            for stored in self.forms(a):
                for order in "CF":
                    with self.subTest(name, format=stored.format, order=order):
                        r = record(stored)
                        x = numpy.array(numpy.sin(numpy.arange(a.shape[1] * 17)).reshape(-1, 17), order=order)
                        y = numpy.full((a.shape[0], 17), numpy.nan, order=order)
                        ldx, ldy = (17, 17) if order == "C" else a.shape[::-1]
                        self.expect(orv.orv_sparse_dmm(
                            ctypes.c_char(b"R" if order == "C" else b"C"), ctypes.c_char(b"N"), number(1),
                            ctypes.byref(r), ctypes.c_int64(17), x.ctypes.data_as(ctypes.c_void_p),
                            ctypes.c_int64(ldx), number(0), y.ctypes.data_as(ctypes.c_void_p), ctypes.c_int64(ldy)))
                        self.assertTrue((abs(y - a @ x) <= bound(a, x)).all())

    def test_triangular_solves(self):
        power = scipy.io.mmread(POWER).tocsr().astype(float)
        for lower in (True, False):
            a = (scipy.sparse.tril if lower else scipy.sparse.triu)(power).tocsr()
            a.sort_indices()
            right = numpy.cos(numpy.arange(a.shape[0]))
            expected = scipy.sparse.linalg.spsolve_triangular(a, right, lower=lower)
            for form in ("csr", "csc", "coo"):
                with self.subTest(form, lower=lower):
                    stored = getattr(a, "to" + form)()
                    r = record(stored, kind=b"T", uplo=b"L" if lower else b"U")
                    y = numpy.full(a.shape[0], numpy.nan)
                    self.expect(orv.orv_sparse_dsv(ctypes.c_char(b"N"), number(1), ctypes.byref(r),
                                                   right.ctypes.data_as(ctypes.c_void_p),
                                                   y.ctypes.data_as(ctypes.c_void_p)))
                    # Diagonals are at least the sum of the others in their rows, so errors do not grow.
                    self.assertTrue((abs(y - expected) <= 1e-12 * abs(expected).max()).all())

    def test_conversions_and_transposes(self):
        for name, a in matrices():
            for stored in self.forms(a):
                for trans, op in ((b"N", a), (b"T", a.T.tocsr())):
                    with self.subTest(name, format=stored.format, trans=trans):
                        r = result(64, 1)
                        self.expect(orv.orv_sparse_convert(ctypes.c_char(trans), ctypes.byref(record(stored)),
                                                           ctypes.byref(r)))
                        found, op = taken(r), op.sorted_indices()
                        self.assertTrue(numpy.array_equal(found.indptr, op.indptr))
                        self.assertTrue(numpy.array_equal(found.indices, op.indices))
                        self.assertTrue(numpy.array_equal(found.data, op.data))

    def test_sums(self):
        for name, a in matrices():
            other = scipy.sparse.random(*a.shape, 0.01, "coo", random_state=numpy.random.default_rng(3))
            for stored in self.forms(a):
                with self.subTest(name, format=stored.format):
                    r = result()
                    self.expect(orv.orv_sparse_dadd(ctypes.c_char(b"N"), number(-2), ctypes.byref(record(other)),
                                                    ctypes.byref(record(stored)), ctypes.byref(r)))
                    found, expected = taken(r), (a - 2 * other.tocsr())
                    self.assertEqual(abs(found - expected).max(), 0)  # a product by two and one sum: nothing to round

    def test_products_of_sparse_matrices(self):
        for name, a in matrices():
            for stored in self.forms(a):
                for transa, transb, left, right in ((b"N", b"T", a, a.T), (b"T", b"N", a.T, a)):
                    with self.subTest(name, format=stored.format, transa=transa):
                        r, matrix = result(), record(stored)
                        self.expect(orv.orv_sparse_multiply(ctypes.c_char(transa), ctypes.byref(matrix),
                                                            ctypes.c_char(transb), ctypes.byref(matrix),
                                                            ctypes.byref(r)))
                        found, expected = taken(r), left.tocsr() @ right.tocsr()
                        terms = left.tocsr().getnnz(axis=1).max() + 2
                        bounds = 2 * terms * 2.0**-53 * (abs(left).tocsr() @ abs(right).tocsr())
                        self.assertLessEqual((abs(found - expected) - bounds).max(), 0)
                        dense = numpy.full(found.shape, numpy.nan)
                        self.expect(orv.orv_sparse_multiply_dense(
                            ctypes.c_char(b"R"), ctypes.c_char(transa), ctypes.byref(matrix), ctypes.c_char(transb),
                            ctypes.byref(matrix), dense.ctypes.data_as(ctypes.c_void_p),
                            ctypes.c_int64(found.shape[1])))
                        self.assertTrue((abs(dense - expected.toarray()) <= bounds.toarray()).all())

    def test_the_check_says_what_is_wrong(self):
        a = scipy.io.mmread(POWER).tocsr().astype(float)
        a.indices[5] = 1723
        r = record(a)
        self.assertNotEqual(orv.orv_sparse_check(ctypes.byref(r)), 0)
        self.assertIn(b"column 1723 is none of the 1723 from 0 on", orv.orv_last_error())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
