#!/usr/bin/env python3
"""Level 1 with strides of every sign, and of 0: the same results from our library as from the reference.

usage: strides_test.py LIBRARY REFERENCE_FOLDER"""
import ctypes
import math
import os
import sys

reference = os.path.join(sys.argv[2], "libblas.so.3")
if not os.path.exists(reference):
    print("no reference library")
    sys.exit(77)
ours, theirs = ctypes.CDLL(sys.argv[1]), ctypes.CDLL(reference)
TYPES = {"s": ctypes.c_float, "d": ctypes.c_double, "c": ctypes.c_float, "z": ctypes.c_double}
SPACE = 40

# Routines by the letters of their vectors and of their result, and their arguments: "2" a scalar of the type of x.
ROUTINES = {}
for letter in "sdcz":
    ROUTINES[letter + "scal"] = (letter, None, "n 2 x incx")
    ROUTINES[letter + "copy"] = ROUTINES[letter + "swap"] = (letter, None, "n x incx y incy")
    ROUTINES[letter + "axpy"] = (letter, None, "n 2 x incx y incy")
    ROUTINES[f"i{letter}amax"] = (letter, "i", "n x incx")
for name, letter, result in (("s", "s", "s"), ("d", "d", "d"), ("sc", "c", "s"), ("dz", "z", "d")):
    ROUTINES[name + "asum"] = ROUTINES[name + "nrm2"] = (letter, result, "n x incx")
for letter in "sd":
    ROUTINES[letter + "dot"] = (letter, letter, "n x incx y incy")
for name, letter in (("cs", "c"), ("zd", "z")):
    ROUTINES[name + "scal"] = (letter, None, "n real x incx")


def call(library, name, cblas, numbers):
    """The result and the vectors after a call."""
    letter, result, words = ROUTINES[name]
    ctype, complex_pair = TYPES[letter], letter in "cz"
    values = {
        "x": (ctype * SPACE)(*[(7 * i) % 11 - 5 for i in range(SPACE)]),
        "y": (ctype * SPACE)(*[(5 * i) % 13 - 6 for i in range(SPACE)]),
        "2": (ctype * 2)(2, 3), "real": (ctype * 1)(3),
        **{word: ctypes.c_int(value) for word, value in numbers.items()},
    }
    arguments = []
    for word in words.split():
        value = values[word]
        if not cblas:
            arguments.append(value if isinstance(value, ctypes.Array) else ctypes.byref(value))
        elif word == "real" or (word == "2" and not complex_pair):
            arguments.append(ctype(value[0]))
        else:
            arguments.append(value)
    function = getattr(library, f"cblas_{name}" if cblas else f"{name}_")
    function.restype = None if result is None else TYPES.get(result, ctypes.c_size_t if cblas else ctypes.c_int)
    return function(*arguments), list(values["x"]), list(values["y"])


def alike(a, b):
    """Whole numbers are exact in all orders of summation; norms are rounded."""
    return a[1:] == b[1:] and (a[0] == b[0] or math.isclose(a[0], b[0], rel_tol=1e-6))


problems, calls = [], 0
for name in ROUTINES:
    for cblas in (False, True):
        for n in (-1, 0, 1, 3, 5):
            for incx in (-3, -1, 0, 1, 2):
                for incy in (-2, 0, 1) if "y" in ROUTINES[name][2] else (1,):
                    numbers = {"n": n, "incx": incx, "incy": incy}
                    mine, other = (call(library, name, cblas, numbers) for library in (ours, theirs))
                    calls += 1
                    if not alike(mine, other):
                        problems.append(f"{'cblas_' * cblas}{name} {numbers}: {mine}, not {other}")
print("\n".join(problems) if problems else f"{calls} calls agree")
sys.exit(bool(problems) or calls < 1000)
