#!/usr/bin/env python3
"""SciPy as Debian ships it, with liborv_lapack preloaded before the reference LAPACK: factorisations, singular values,
least squares, tridiagonal systems and eigenvalues of random and graded matrices. Without it there must be the same
numbers, and the dynamic linker must say that LAPACK's own routines call those from here.

usage: lapack_scipy_test.py LIBRARY FOLDER_OF_OUR_BLAS FOLDER_OF_THE_REFERENCE_LAPACK     (skipped, with status 77, where
there is no SciPy)"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

PYTHON = "/usr/bin/python3"
PROGRAM = '''
import numpy as np
import scipy.linalg as la

random = np.random.default_rng(1)
n = 150
grades = 10.0 ** np.linspace(0, -8, n)


def show(*arrays):
    for a in arrays:
        a = np.ravel(a)
        print(*map(repr, map(float, np.concatenate((a.real, a.imag)) if np.iscomplexobj(a) else a)))


for t in "fdFD":
    a = random.standard_normal((n, n)).astype(t)
    if t in "FD":
        a = a + 1j * random.standard_normal((n, n)).astype(t.lower())
    definite = a @ a.conj().T + n * np.eye(n, dtype=t)
    b = random.standard_normal((n, 5)).astype(t)
    for lower in (False, True):
        show(la.cholesky(definite, lower=lower), la.cho_solve(la.cho_factor(definite, lower=lower), b))
    for m in (a, a * grades.astype(t.lower()), a[:, :60]):
        show(la.svdvals(m), la.svd(m, lapack_driver="gesdd")[1], la.svd(m, lapack_driver="gesvd")[1])
    show(la.lstsq(a[:, :60], b, lapack_driver="gelsd")[0], la.lstsq(a[:, :60], b, lapack_driver="gelss")[0])
    band = np.vstack([np.full(n, -1), np.full(n, 4), np.full(n, -1.5)]).astype(t)
    for columns in (b, b[:, 0]):
        show(la.solve_banded((1, 1), band, columns), la.solveh_banded(band[:2], columns))
    show(la.eigvalsh(definite), la.eigh(definite, driver="ev")[0], la.eigvalsh(definite, driver="evd"))
    show([la.norm(a, kind) for kind in ("fro", 1, np.inf)])
'''
ASKED = r"binding file \S*liblapack\.so\.3 \[0\] to {} \[0\]: normal symbol `{}'"
NAMES = "dpotrf2_ zpotrf2_ dlange_ zlange_ dlasr_ zlasr_ dlasd3_ slasd4_ dpttrs_ zptts2_".split()


def run(**environment):
    done = subprocess.run([PYTHON, "-c", PROGRAM], env={**os.environ, **environment}, capture_output=True, text=True)
    if done.returncode:
        sys.exit(done.stderr)
    return [[float(word) for word in line.split()] for line in done.stdout.splitlines()]


library, blas, lapack = sys.argv[1:]
if subprocess.run([PYTHON, "-c", "import scipy"], capture_output=True).returncode:
    print("python3-scipy is not installed")
    sys.exit(77)
if not pathlib.Path(lapack, "liblapack.so.3").exists():
    print("the reference LAPACK is not installed")
    sys.exit(77)

paths = f"{blas}:{lapack}"
with tempfile.TemporaryDirectory() as place:
    ours = run(LD_PRELOAD=library, LD_LIBRARY_PATH=paths, LD_DEBUG="bindings", LD_DEBUG_OUTPUT=f"{place}/log")
    log = "".join(path.read_text() for path in pathlib.Path(place).iterdir())
theirs = run(LD_LIBRARY_PATH=paths)

worst = 0
quarter = len(theirs) // 4
for index, (mine, other) in enumerate(zip(ours, theirs, strict=True)):
    single = index // quarter in (0, 2)
    size = max(map(abs, other))
    off = max(abs(x - y) for x, y in zip(mine, other, strict=True)) / size / (2**-23 if single else 2**-52)
    worst = max(worst, off)
    # Backward stable methods move the largest by a modest multiple of n*eps; all systems have condition numbers below 20.
    if not off <= 20 * 150:
        sys.exit(f"line {index} differs by {off} eps of the largest")
for name in NAMES:
    if not re.search(ASKED.format(re.escape(library), name), log):
        sys.exit(f"liblapack.so.3 did not take {name} from {library}")
print(f"{sum(map(len, ours))} values agree, to {worst:.1f} eps of the largest")
