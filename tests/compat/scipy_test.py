#!/usr/bin/env python3
"""SciPy as Debian ships it, on the stand-in: vibrations of a membrane (ARPACK), eigenvalues and singular values of full
matrices and a banded system (LAPACK) spend their time at level 2. The reference library must give the same numbers, and
the dynamic linker must say that the routines came from here.

usage: scipy_test.py TWIN FOLDER_OF_THE_REFERENCE_BLAS     (skipped, with status 77, where there is no SciPy)"""
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
import scipy.sparse as sp
import scipy.sparse.linalg as sla

random = np.random.default_rng(1)
a = random.standard_normal((200, 200))
h = a + 1j * random.standard_normal((200, 200))
line = sp.diags([-1, 2, -1], [-1, 0, 1], shape=(50, 50))
band = np.vstack([np.full(2000, 4.0), np.full(2000, -1.0), np.full(2000, -0.5)])
for values in (
    sla.eigsh(sp.kronsum(line, line).tocsr(), 12, ncv=80, which="LA", v0=np.ones(2500), return_eigenvectors=False),
    la.eigh(a + a.T, eigvals_only=True, driver="ev"),
    la.eigh(h + h.conj().T, eigvals_only=True, driver="ev"),
    la.svdvals(a),
    la.cho_solve_banded((la.cholesky_banded(band, lower=True), True), np.ones(2000)),
):
    print(*map(repr, map(float, values)))
'''
# Who asks for what, at the first call of it or when it is loaded.
ASKED = {r"_arpack\S*": ["dgemv_", "dger_"], r"liblapack\.so\.3": ["dsymv_", "zhemv_", "dgemv_", "dtbsv_", "dsyr_"]}


def skip(reason):
    print(reason)
    sys.exit(77)


def run(**environment):
    done = subprocess.run([PYTHON, "-c", PROGRAM], env={**os.environ, **environment}, capture_output=True, text=True)
    if done.returncode:
        sys.exit(done.stderr)
    return [[float(word) for word in line.split()] for line in done.stdout.splitlines()]


twin, reference = sys.argv[1:]
if subprocess.run([PYTHON, "-c", "import scipy"], capture_output=True).returncode:
    skip("python3-scipy is not installed")
lapack = str(pathlib.Path(reference).parent / "lapack")
if not (pathlib.Path(reference, "libblas.so.3").exists() and pathlib.Path(lapack, "liblapack.so.3").exists()):
    skip("the reference libraries are not installed")

paths = f"{reference}:{lapack}"
with tempfile.TemporaryDirectory() as place:
    ours = run(LD_PRELOAD=twin, LD_LIBRARY_PATH=paths, LD_DEBUG="bindings", LD_DEBUG_OUTPUT=f"{place}/log")
    log = "".join(path.read_text() for path in pathlib.Path(place).iterdir())
theirs = run(LD_LIBRARY_PATH=paths)

worst = 0
for mine, other in zip(ours, theirs, strict=True):
    size = max(map(abs, other))
    worst = max(worst, *(abs(x - y) / size for x, y in zip(mine, other, strict=True)))
    # A backward stable method moves them by a modest multiple of n*eps.
    if not worst <= 200 * len(other) * 2**-52:
        sys.exit(f"values differ by {worst} of the largest")
for asker, names in ASKED.items():
    for name in names:
        if not re.search(rf"binding file \S*{asker} \[0\] to {re.escape(twin)} \[0\]: normal symbol `{name}'", log):
            sys.exit(f"{asker} did not take {name} from {twin}")
print(f"{sum(map(len, ours))} values agree, to {worst:.1e} of the largest")
