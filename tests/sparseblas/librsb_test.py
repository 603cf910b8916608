#!/usr/bin/env python3
"""The Sparse BLAS of libsparseblas.so beside that of librsb: the same calls, each library in a process of its own.

usage: librsb_test.py LIBSPARSEBLAS          77 if there is no librsb
       librsb_test.py --answers LIBRARY      print what one library answers
"""
import ctypes
import ctypes.util
import os
import random
import subprocess
import sys

STRUCTURES = {"general": 231, "lower_triangular": 235, "upper_triangular": 236, "lower_symmetric": 237,
              "upper_symmetric": 238, "lower_hermitian": 239, "upper_hermitian": 240}
TRANSPOSITIONS = {"n": 111, "t": 112, "c": 113}
ORDERS = {"rows": 101, "columns": 102}
ONE_BASE, UNIT = 222, 132


class Type:
    """Arrays and scalars of one type in the C interface. Values are whole numbers, so that nothing is rounded."""

    def __init__(self, letter):
        self.letter, self.complex = letter, letter in "cz"
        self.real = ctypes.c_float if letter in "sc" else ctypes.c_double

    def array(self, values):
        flat = [part for v in values for part in ((v.real, v.imag) if self.complex else (v.real,))]
        return (self.real * max(1, len(flat)))(*flat)

    def scalar(self, value):
        return self.array([value]) if self.complex else self.real(value.real)

    def numbers(self, array, n):
        # + 0: a negative zero is a zero
        return [(complex(array[2 * i], array[2 * i + 1]) if self.complex else complex(array[i])) + 0 for i in range(n)]

    def draw(self, n):
        return [complex(random.randint(-3, 3), random.randint(-3, 3) if self.complex else 0) for _ in range(n)]


def ints(values):
    return (ctypes.c_int * max(1, len(values)))(*values)


def property_call(library, name, a, number):
    """usgp, ussp: librsb has them for Fortran only."""
    answer = ctypes.c_int(77)
    getattr(library, f"blas_{name}_")(*(ctypes.byref(ctypes.c_int(v)) for v in (a, number)), ctypes.byref(answer))
    return answer.value


def build(library, t, structure, unit, base, m, n):
    call = lambda name: getattr(library, f"BLAS_{t.letter}us{name}")
    a = call("cr_begin")(m, n)
    property_call(library, "ussp", a, STRUCTURES[structure])
    if unit:
        property_call(library, "ussp", a, UNIT)
    if base:
        property_call(library, "ussp", a, ONE_BASE)
    lower, general = structure.startswith("lower"), structure == "general"
    places = [(i, j) for i in range(m) for j in range(n)
              if (general or (i >= j if lower else i <= j)) and not (unit and i == j)]
    places = random.sample(places, max(1, len(places) // 2)) + ([] if unit else [(i, i) for i in range(min(m, n))])
    places = list(dict.fromkeys(places))
    random.shuffle(places)
    values = t.draw(len(places))
    for k, (i, j) in enumerate(places):
        if i == j:  # of triangles, to divide by exactly; of Hermitian matrices real
            values[k] = complex(random.choice((1, -1, 2)))
    half = len(places) // 2
    for k in range(half):
        call("cr_insert_entry")(a, t.scalar(values[k]), places[k][0] + base, places[k][1] + base)
    rest = places[half:]
    call("cr_insert_entries")(a, len(rest), t.array(values[half:]), ints([i + base for i, _ in rest]),
                              ints([j + base for _, j in rest]))
    status = call("cr_end")(a)
    return a, status


def answers(path):
    library = ctypes.CDLL(path)
    if hasattr(library, "rsb_lib_init"):
        library.rsb_lib_init(None)
    random.seed(17)
    for number in range(400):
        t = Type(random.choice("sdcz"))
        structure = random.choice(list(STRUCTURES))
        if not t.complex and "hermitian" in structure:
            structure = structure.replace("hermitian", "symmetric")
        triangular = "triangular" in structure
        unit, base = triangular and random.random() < .3, random.randint(0, 1)
        m = random.randint(2, 12)
        n = random.randint(2, 12) if structure == "general" else m
        trans = random.choice(list(TRANSPOSITIONS))
        a, status = build(library, t, structure, unit, base, m, n)
        op, alpha = TRANSPOSITIONS[trans], t.scalar(t.draw(1)[0])
        rows, cols = (m, n) if trans == "n" else (n, m)
        incx, incy = random.randint(1, 3), random.randint(1, 3)
        x, y = t.array(t.draw(cols * incx)), t.array(t.draw(rows * incy))
        status |= getattr(library, f"BLAS_{t.letter}usmv")(op, alpha, a, x, incx, y, incy)
        results = [t.numbers(y, rows * incy)]
        order, nrhs = random.choice(list(ORDERS)), random.randint(1, 4)
        by_rows = order == "rows"
        ld = nrhs if by_rows else max(m, n)  # librsb refuses a column that is as long as it need be
        lines = (cols, rows) if by_rows else (nrhs, nrhs)
        b, c = t.array(t.draw(ld * lines[0])), t.array(t.draw(ld * lines[1]))
        status |= getattr(library, f"BLAS_{t.letter}usmm")(ORDERS[order], op, nrhs, alpha, a, b, ld, c, ld)
        results.append(t.numbers(c, ld * lines[1]))
        if triangular and not unit:  # with ones librsb 1.3.0 sometimes does not come back
            x = t.array(t.draw(m * incx))
            status |= getattr(library, f"BLAS_{t.letter}ussv")(op, t.scalar(1 + 0j), a, x, incx)
            results.append(t.numbers(x, m * incx))
        properties = [property_call(library, "usgp", a, p) for p in (251, 252, 253, 243, 244)]
        status |= library.BLAS_usds(a)
        print(number, t.letter, structure, "unit" if unit else "", base, f"{m}x{n}", trans, order, "status", status,
              "properties", properties, *results)


def main():
    if sys.argv[1] == "--answers":
        return answers(sys.argv[2])
    peer = ctypes.util.find_library("rsb")
    if peer is None:
        print("no librsb here")
        return 77
    ours, theirs = (subprocess.run([sys.executable, "-B", __file__, "--answers", path], stdout=subprocess.PIPE, text=True,
                                   check=True, timeout=100, env=os.environ | {"OMP_NUM_THREADS": "1"}).stdout.splitlines() for path in (sys.argv[1], peer))
    different = [(a, b) for a, b in zip(ours, theirs) if a != b]
    print(f"{len(ours)} matrices beside librsb, {len(different)} answers differ")
    for a, b in different[:5]:
        print("ours:  ", a, "\nlibrsb:", b)
    return 1 if different or len(ours) != len(theirs) or len(ours) != 400 else 0


if __name__ == "__main__":
    sys.exit(main())
