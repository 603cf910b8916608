#!/usr/bin/python3
"""Times conversions, sums and products of sparse matrices beside SciPy's compiled routines (scipy.sparse._sparsetools).

These can be called from Python only, so both sides are, one after the other in each round, on the same arrays and one
thread; memory for results is taken and given back in each call. Prints milliseconds, medians of the rounds, and how many
times as fast orv is. What SciPy's routine leaves undone is added in a second line: rows that coo_tocsr does not sort,
and that csr_matmat does not."""
import argparse
import ctypes
import os
import pathlib
import re
import statistics
import time

os.environ["ORV_NUM_THREADS"] = "1"  # SciPy has one

import numpy
import scipy.sparse
from scipy.sparse import _sparsetools

BUILD = pathlib.Path(__file__).resolve().parent.parent / "build"

# pattern, small, large, large for products: the matrices of sparse_patterns.h and sparse_pairs.cpp
KINDS = [("grid5", 60, 1000, 1000), ("grid7", 15, 100, 100), ("random", 2000, 200000, 20000),
         ("power", 2000, 200000, 20000), ("band", 2000, 200000, 200000), ("block", 2000, 200000, 200000)]


def columns_of(pattern, size, n, random):
    """Rows and columns of entries, the diagonal apart; some may come twice."""
    rows = numpy.arange(n)
    if pattern.startswith("grid"):
        steps = [size**d for d in range(2 if pattern == "grid5" else 3)]
        ahead = [rows[rows // step % size < size - 1] for step in steps]
        lower, upper = numpy.concatenate(ahead), numpy.concatenate([i + step for i, step in zip(ahead, steps)])
        return numpy.append(lower, upper), numpy.append(upper, lower)
    if pattern == "band":
        rows, columns = numpy.repeat(rows, 21), (rows[:, None] + numpy.arange(-10, 11)).ravel()
        inside = (columns >= 0) & (columns < n)
        return rows[inside], columns[inside]
    if pattern == "block":
        blocks = rows // 8
        firsts = 8 * numpy.stack([blocks, (blocks * 7 + 3) % (n // 8), (blocks * 5 + 1) % (n // 8)], axis=1)
        return numpy.repeat(rows, 24), (firsts[:, :, None] + numpy.arange(8)).ravel()
    lengths = numpy.full(n, 20)
    if pattern == "power":
        lengths = numpy.minimum(2 + 2000 // (1 + random.integers(0, 1000, n)), n)
    return numpy.repeat(rows, lengths), random.integers(0, n, lengths.sum())


def matrix_of(pattern, size):
    random = numpy.random.default_rng(7)
    n = size**2 if pattern == "grid5" else size**3 if pattern == "grid7" else size
    rows, columns = columns_of(pattern, size, n, random)
    diagonal = numpy.arange(n)
    rows, columns = numpy.append(rows, diagonal), numpy.append(columns, diagonal)
    a = scipy.sparse.csr_matrix((numpy.ones(rows.size), (rows, columns)), (n, n))
    a.sum_duplicates()
    a.data = random.random(a.nnz)
    assert a.indices.dtype == numpy.int32
    return a


class Record(ctypes.Structure):
    """orv_sparse of orv/sparse.h."""
    _fields_ = [("format", ctypes.c_int), ("type", ctypes.c_char), ("kind", ctypes.c_char), ("uplo", ctypes.c_char),
                ("diag", ctypes.c_char), ("bits", ctypes.c_int), ("base", ctypes.c_int), ("rows", ctypes.c_int64),
                ("cols", ctypes.c_int64), ("count", ctypes.c_int64), ("block", ctypes.c_int64), ("ld", ctypes.c_int64),
                *((name, ctypes.c_void_p) for name in ("values", "begin", "end", "row", "col", "memory")),
                ("has_diagonal", ctypes.c_int)]


CSR, CSC, COO = 1, 2, 3
N, T = ctypes.c_char(b"N"), ctypes.c_char(b"T")


class Operands:
    """A matrix in compressed rows and, shuffled, in coordinates, and the two libraries' calls."""

    def __init__(self, orv, a):
        self.orv, self.a, self.n = orv, a, a.shape[0]
        order = numpy.random.default_rng(7).permutation(a.nnz)
        self.row = numpy.repeat(numpy.arange(self.n, dtype=numpy.int32), numpy.diff(a.indptr))[order]
        self.col, self.values = a.indices[order], a.data[order]
        self.rows = self.record(CSR, begin=a.indptr, col=a.indices, values=a.data)
        self.list = self.record(COO, row=self.row, col=self.col, values=self.values)

    def record(self, form, **arrays):
        r = Record(format=form, type=b"d", bits=32, rows=self.n, cols=self.n, count=self.a.nnz)
        for name, array in arrays.items():
            setattr(r, name, array.ctypes.data)
        return r

    def made(self, form, routine, *arguments):
        """A result of orv, which the caller frees."""
        r = Record(format=form, bits=32)
        status = getattr(self.orv, routine)(*arguments, ctypes.byref(r))
        assert status == 0, self.orv.orv_last_error()
        return r

    def empty(self, entries):
        return (numpy.empty(self.n + 1, numpy.int32), numpy.empty(entries, numpy.int32), numpy.empty(entries))

    def orv_csrcsc(self):
        return self.made(CSC, "orv_sparse_convert", N, ctypes.byref(self.rows))

    def orv_coocsr(self):
        return self.made(CSR, "orv_sparse_convert", N, ctypes.byref(self.list))

    def orv_add(self):
        a = ctypes.byref(self.rows)
        return self.made(CSR, "orv_sparse_dadd", T, ctypes.c_double(1), a, a)

    def orv_multiply(self):
        a = ctypes.byref(self.rows)
        return self.made(CSR, "orv_sparse_multiply", N, a, N, a)

    def scipy_csrcsc(self):
        a, made = self.a, self.empty(self.a.nnz)
        _sparsetools.csr_tocsc(self.n, self.n, a.indptr, a.indices, a.data, *made)
        return made

    def scipy_coocsr(self):
        made = self.empty(self.a.nnz)
        _sparsetools.coo_tocsr(self.n, self.n, self.a.nnz, self.row, self.col, self.values, *made)
        return made

    def scipy_add(self):
        a, turned, made = self.a, self.scipy_csrcsc(), self.empty(2 * self.a.nnz)
        _sparsetools.csr_plus_csr(self.n, self.n, a.indptr, a.indices, a.data, *turned, *made)
        return made

    def scipy_multiply(self):
        a = self.a
        most = _sparsetools.csr_matmat_maxnnz(self.n, self.n, a.indptr, a.indices, a.indptr, a.indices)
        made = self.empty(most)
        _sparsetools.csr_matmat(self.n, self.n, a.indptr, a.indices, a.data, a.indptr, a.indices, a.data, *made)
        return made

    def sorted(self, made):
        _sparsetools.csr_sort_indices(self.n, *made)
        return made

    def compare(self, routine):
        """Stops if the two do not give the same."""
        r = getattr(self, "orv_" + routine)()
        index = r.row if r.format == CSC else r.col

        def array(at, count, kind):
            return numpy.frombuffer((ctypes.c_byte * (count * numpy.dtype(kind).itemsize)).from_address(at), kind)

        found = (array(r.begin, self.n + 1, numpy.int32).copy(), array(index, r.count, numpy.int32).copy(),
                 array(r.values, r.count, float).copy())
        self.orv.orv_sparse_free(ctypes.byref(r))
        expected = self.sorted(getattr(self, "scipy_" + routine)())
        assert numpy.array_equal(found[0], expected[0]), routine
        self.sorted(found)
        assert numpy.array_equal(found[1], expected[1][:found[1].size]), routine
        assert numpy.allclose(found[2], expected[2][:found[1].size], rtol=1e-12, atol=0), routine


def seconds(call, release, least=0.02):
    """Seconds of one call, of as many as take some time together."""
    calls, taken = 0, 0.0
    while taken < least:
        start = time.perf_counter()
        made = call()
        if release:
            release(ctypes.byref(made))
        del made
        taken += time.perf_counter() - start
        calls += 1
    return taken / calls


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--lib", default=BUILD / "lib", help="where liborv.so is")
    parser.add_argument("--filter", default="", help="a regular expression of routine, pattern and size")
    parser.add_argument("--rounds", type=int, default=5)
    options = parser.parse_args()
    orv = ctypes.CDLL(str(pathlib.Path(options.lib) / "liborv.so"))
    orv.orv_last_error.restype = ctypes.c_char_p

    print(f"{'routine':<9}{'pattern':<8}{'size':>7}{'orv ms':>10}{'scipy ms':>10}{'ratio':>7}")
    for pattern, small, large, large_product in KINDS:
        operands = {}
        for routine in ("csrcsc", "coocsr", "add", "multiply"):
            for size in (small, large_product if routine == "multiply" else large):
                if not re.search(options.filter, f"{routine} {pattern} {size}"):
                    continue
                if size not in operands:
                    operands[size] = Operands(orv, matrix_of(pattern, size))
                it = operands[size]
                it.compare(routine)
                ours, theirs = getattr(it, "orv_" + routine), getattr(it, "scipy_" + routine)
                ways = [(ours, orv.orv_sparse_free), (theirs, None)]
                if routine in ("coocsr", "multiply"):
                    ways.append((lambda: it.sorted(theirs()), None))
                rounds = [[seconds(*way) for way in ways] for _ in range(options.rounds)]
                own, *peers = (1e3 * statistics.median(times) for times in zip(*rounds))
                for peer, what in zip(peers, ("", "  rows sorted")):
                    print(f"{routine:<9}{pattern:<8}{size:>7}{own:>10.3f}{peer:>10.3f}{peer / own:>7.2f}{what}",
                          flush=True)


if __name__ == "__main__":
    main()
