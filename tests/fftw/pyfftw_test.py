#!/usr/bin/env python3
"""pyFFTW on our libraries, beside NumPy's own transforms: plans, new arrays, the interfaces of NumPy and SciPy, sines and
cosines, wisdom.

usage: pyfftw_test.py FOLDER_OF_THE_LIBRARIES     (skipped, with status 77, where there is no pyFFTW)"""
import subprocess
import sys

from programs import run_on, skip

PYTHON = "/usr/bin/python3"
PROGRAM = r'''
import itertools, sys
import numpy as np
import pyfftw
import scipy.fft
from pyfftw.interfaces import numpy_fft, scipy_fftpack

random = np.random.default_rng(3)
checks = 0

def near(got, expected, kind):
    global checks
    checks += 1
    scale = max(1e-30, np.abs(expected).max())
    assert got.shape == expected.shape, (got.shape, expected.shape)
    assert np.abs(got - expected).max() <= (1e-5 if kind == "single" else 1e-13) * scale, (kind, got.shape)

types = {"single": (np.float32, np.complex64), "double": (np.float64, np.complex128)}
shapes = [((n,), (0,)) for n in (1, 2, 3, 8, 12, 17, 100, 1000)] + [
    ((4, 6), (0, 1)), ((4, 6), (0,)), ((4, 6), (1, 0)), ((5, 8, 6), (0, 1, 2)), ((5, 8, 6), (1,)), ((5, 8, 6), (0, 2)),
    ((3, 4, 2, 5), (0, 1, 2, 3)), ((3, 4, 2, 5), (3, 1))]
flags = ["FFTW_ESTIMATE", "FFTW_MEASURE", "FFTW_PATIENT", "FFTW_EXHAUSTIVE"]
for kind, (real, cplx) in types.items():
    for (shape, axes), threads in itertools.product(shapes, (1, 2)):
        flag = flags[checks % 4]
        z = (random.standard_normal(shape) + 1j * random.standard_normal(shape)).astype(cplx)
        kept = z.copy()
        out = pyfftw.empty_aligned(shape, cplx)
        forward = pyfftw.FFTW(z, out, axes=axes, flags=(flag,), threads=threads)
        assert (z == kept).all()                                   # planning leaves the arrays alone
        near(forward(), np.fft.fftn(kept, axes=axes), kind)
        assert (z == kept).all()
        back = pyfftw.FFTW(out, z, axes=axes, direction="FFTW_BACKWARD", flags=(flag, "FFTW_DESTROY_INPUT"))
        near(back(), kept, kind)
        inplace = pyfftw.FFTW(z, z, axes=axes, flags=(flag,))
        z[:] = kept
        near(inplace(), np.fft.fftn(kept, axes=axes), kind)
        x = random.standard_normal(shape).astype(real)
        xkept = x.copy()
        half = np.fft.rfftn(x, axes=axes)
        to = np.empty(half.shape, cplx)
        near(pyfftw.FFTW(x, to, axes=axes, flags=(flag,))(), half, kind)
        near(pyfftw.FFTW(to, x, axes=axes, direction="FFTW_BACKWARD", flags=(flag,))(), xkept, kind)
        # strided and unaligned arrays
        wide = np.zeros(tuple(2 * n for n in shape), cplx)
        view = wide[tuple(slice(1, None, 2) for _ in shape)]
        view[:] = kept
        near(pyfftw.FFTW(view, out, axes=axes, flags=(flag, "FFTW_UNALIGNED"))(), np.fft.fftn(kept, axes=axes), kind)
        other = np.asfortranarray(kept)
        for f in ("fftn", "ifftn"):
            near(getattr(numpy_fft, f)(other, axes=axes, threads=threads), getattr(np.fft, f)(kept, axes=axes), kind)
        near(numpy_fft.rfftn(xkept, axes=axes), half, kind)
        near(numpy_fft.irfftn(half.astype(cplx), s=[shape[a] for a in axes], axes=axes), xkept, kind)
        near(scipy_fftpack.fft(kept, axis=axes[-1]), np.fft.fft(kept, axis=axes[-1]), kind)
        near(scipy_fftpack.ifftn(kept, axes=axes), np.fft.ifftn(kept, axes=axes), kind)
    # sines and cosines, alone and one along each axis
    waves = [(f, t, f"FFTW_R{'E' if f == 'dct' else 'O'}DFT{('00', '10', '01', '11')[t - 1]}")
             for f in ("dct", "dst") for t in (1, 2, 3, 4)]
    for f, t, direction in waves:
        for n in (2, 3, 8, 15, 16, 17, 100, 1000):
            x = random.standard_normal(n).astype(real)
            expected = getattr(scipy.fft, f)(x, type=t)
            near(pyfftw.FFTW(x, np.empty_like(x), direction=direction)(), expected, kind)
            near(getattr(scipy_fftpack, f)(x, type=t), expected, kind)
    for (f, t, one), (g, u, other) in itertools.product(waves, waves):
        x = random.standard_normal((6, 9)).astype(real)
        expected = getattr(scipy.fft, g)(getattr(scipy.fft, f)(x, type=t, axis=0), type=u, axis=1)
        plan = pyfftw.FFTW(x, np.empty_like(x), axes=(0, 1), direction=(one, other))
        near(plan(), expected, kind)
a = np.ones(37, complex)
pyfftw.forget_wisdom()
try:
    pyfftw.FFTW(a, np.empty_like(a), flags=("FFTW_WISDOM_ONLY",))
    sys.exit("a plan without wisdom")
except RuntimeError:
    pass
pyfftw.FFTW(a, np.empty_like(a))
wisdom = pyfftw.export_wisdom()
pyfftw.forget_wisdom()
assert pyfftw.import_wisdom(wisdom)[:2] == (True, True)
pyfftw.FFTW(a, np.empty_like(a), flags=("FFTW_WISDOM_ONLY",))
assert pyfftw.import_wisdom((b"foo", b"bar", b"baz")) == (False, False, False)
libraries = {line.split()[-1] for line in open("/proc/self/maps") if "libfftw3" in line and "fftw3l" not in line}
print(checks, *libraries)
'''

if subprocess.run([PYTHON, "-c", "import pyfftw"], capture_output=True).returncode:
    skip("python3-pyfftw is not installed")
folder = sys.argv[1]
checks, *libraries = run_on(folder, [PYTHON, "-B"], PROGRAM).split()
if len(libraries) < 2 or not all(library.startswith(folder) for library in libraries):
    sys.exit(f"pyFFTW ran on {libraries}")
print(f"{checks} results of pyFFTW as NumPy's")
