"""Rows of docs/special-values.md on sparse matrices and Fourier transforms: all types, formats, bases; several sizes."""
import ctypes
import itertools
import math
import random

from calls import TYPES

FORMATS = {"CSR": 1, "CSC": 2, "COO": 3, "DIA": 4, "BSR": 5}
COLUMNS = 3  # of dense operands


class Record(ctypes.Structure):
    _fields_ = [("format", ctypes.c_int), ("type", ctypes.c_char), ("kind", ctypes.c_char), ("uplo", ctypes.c_char),
                ("diag", ctypes.c_char), ("bits", ctypes.c_int), ("base", ctypes.c_int), ("rows", ctypes.c_int64),
                ("cols", ctypes.c_int64), ("count", ctypes.c_int64), ("block", ctypes.c_int64),
                ("ld", ctypes.c_int64)] + [(name, ctypes.c_void_p)
                                           for name in ("values", "begin", "end", "row", "col", "memory")]
    _fields_ += [("has_diagonal", ctypes.c_int)]


class Numbers:
    """What a type's numbers are: an array of their parts, and one by value."""

    def __init__(self, letter):
        self.real, self.width = TYPES[letter], 2 if letter in "cz" else 1
        self.pair = type("Pair", (ctypes.Structure,), {"_fields_": [("re", self.real), ("im", self.real)]})

    def array(self, values):
        return (self.real * (self.width * len(values)))(*(part for v in values for part in (v, 0.5 * v)[:self.width]))

    def scalar(self, value):
        return self.pair(value, 0.0) if self.width == 2 else self.real(value)

    def elements(self, array, special):
        return {p // self.width for p, part in enumerate(array[:]) if special(part)}


def record_of(numbers, letter, name, base, a, solves, unit):
    """A full matrix, of which a solve takes the upper triangle; its arrays must live as long as it."""
    n, integer = len(a), ctypes.c_int64
    r = Record(format=FORMATS[name], type=letter.encode(), bits=64, base=base, rows=n, cols=n, block=1, ld=n)
    if solves:
        r.kind, r.uplo, r.diag = b"T", b"U", b"U" if unit else b"N"
    places = [(i, j) for i in range(n) for j in range(n)]
    if name == "CSC":
        places = [(i, j) for j, i in places]
    if name == "DIA":
        distances = range(1 - n, n)
        values = [a[i][i + d] if 0 <= i + d < n else 1.0 for d in distances for i in range(n)]
        indices = {"col": list(distances)}
        r.count = len(distances)
    else:
        values = [a[i][j] for i, j in places]
        lines = {"CSC": ["row"], "COO": ["row", "col"]}.get(name, ["col"])
        indices = {line: [(i if line == "row" else j) + base for i, j in places] for line in lines}
        r.count = len(places)
        if name != "COO":
            indices["begin"] = [base + n * i for i in range(n + 1)]
    arrays = [numbers.array(values)] + [(integer * len(index))(*index) for index in indices.values()]
    for field, array in zip(["values", *indices], arrays):
        setattr(r, field, ctypes.addressof(array))
    return r, arrays


def run(library, letter, routine, name, base, n, unit, put):
    """The result of a call into which put(matrix, vectors, scalars) has placed special values."""
    numbers, draw = Numbers(letter), random.Random(7)
    solves, dense = routine in ("sv", "sm"), routine in ("mm", "sm")
    number = lambda: draw.uniform(0.5, 1.5)
    a = [[number() + (n if i == j else 0) for j in range(n)] for i in range(n)]
    each = COLUMNS if dense else 1
    vectors = {"x": [[number()] * each for _ in range(n)], "y": [[number()] * each for _ in range(n)]}
    scalars = {"alpha": 0.75, "beta": -0.5}
    put(a, vectors, scalars)
    r, arrays = record_of(numbers, letter, name, base, a, solves, unit)
    x, y = (numbers.array([v for line in vectors[v] for v in line]) for v in "xy")
    char, integer = ctypes.c_char, ctypes.c_int64
    words = [char(b"R")] * dense + [char(b"N"), numbers.scalar(scalars["alpha"]), ctypes.byref(r)]
    words += [integer(each)] * dense + [x] + [integer(each)] * dense
    words += [] if solves else [numbers.scalar(scalars["beta"])]
    words += [y] + [integer(each)] * dense
    status = getattr(library, f"orv_sparse_{letter}{routine}")(*words)
    assert status == 0, f"status {status}"
    return numbers, y, each


def check_sparse(library, routine, unit, zero, operand, named):
    routine, runs = routine.removeprefix("sparse_"), 0
    for letter, name, base, n in itertools.product(TYPES, FORMATS, (0, 1), (4, 21)):
        i, j = 1, n - 2
        expected = {"none": set(), "all": set(range(n)), "element i": {i}, "elements 1 to i": set(range(i + 1)),
                    "elements 1 to j": set(range(j + 1))}[named]

        def put(value, a, vectors, scalars):
            for where, special in [(where, 0.0) for where in zero] + ([(operand, value)] if operand else []):
                if where in scalars:
                    scalars[where] = special
                elif where in vectors:
                    vectors[where][:] = [[special] * len(line) for line in vectors[where]]
                elif where == "x(j)":
                    vectors["x"][j] = [special] * len(vectors["x"][j])
                elif where in ("A(i,j)", "A(i,i)"):
                    a[i][j if where == "A(i,j)" else i] = special
                else:
                    for r, c in itertools.product(range(n), range(n)):
                        if where == "A" or r > c:
                            a[r][c] = special

        def call_with(value):
            return run(library, letter, routine, name, base, n, unit, lambda *places: put(value, *places))

        if named == "none":
            plain = call_with(1.0)[1][:]
            wrong = any(call_with(special)[1][:] != plain for special in (math.nan, math.inf, -math.inf))
        else:
            numbers, y, each = call_with(math.nan)
            lost = math.isnan if operand else lambda part: not math.isfinite(part)
            wrong = {place // each for place in numbers.elements(y, lost)} != expected
        if wrong:
            return f"orv_sparse_{letter}{routine} {name} base {base} n={n}: not so"
        runs += 1
    return runs


def check_fourier(library, routine):
    """NaN in one number of a transform is in all that come out."""
    runs = 0
    for letter, n in itertools.product(TYPES, (1, 2, 3, 4, 7, 16, 60, 64, 97, 1000, 1024, 4096)):
        numbers = Numbers(letter)
        backward, real = routine.startswith("i"), letter in "sd"
        signal, spectrum = (1 if real else 2, n), (2, n // 2 + 1 if real else n)  # parts of a number, numbers
        (reads, read), (writes, written) = (spectrum, signal) if backward else (signal, spectrum)
        x, y = (numbers.real * (reads * read))(*[0.5] * (reads * read)), (numbers.real * (writes * written))()
        for part in range(reads):
            x[min(1, n - 1) * reads + part] = math.nan
        status = getattr(library, f"orv_{routine}_{letter}")(ctypes.c_int64(n), x, y)
        lost = {place // writes for place, part in enumerate(y[:]) if math.isnan(part)}
        if status != 0 or len(lost) != written:
            return f"orv_{routine}_{letter} n={n}: status {status}, {len(lost)} of {written}"
        runs += 1
    return runs
