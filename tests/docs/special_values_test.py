#!/usr/bin/env python3
"""Runs each row of docs/special-values.md through the public interface: all types, sizes on both sides of block edges.

usage: special_values_test.py LIBORV PAGE"""
import ctypes
import math
import re
import sys

library = ctypes.CDLL(sys.argv[1])
TYPES = {"s": ctypes.c_float, "d": ctypes.c_double, "c": ctypes.c_float, "z": ctypes.c_double}
# Arguments by pointer, in the order of the call: a letter in quotes; m, n, k and other integers; scalars; arrays as
# NAME:elements or NAME:rows,columns. P is a packed triangle, B a band: with k diagonals above the main one.
SCALARS = {"alpha", "beta", "c", "s"}
SIGNATURES = {
    "axpy axpyi": "n alpha x:n incx y:n incy",
    "axpby": "n alpha x:n incx beta y:n incy",
    "scal csscal zdscal": "n alpha x:n incx",
    "copy swap": "n x:n incx y:n incy",
    "rot csrot zdrot": "n x:n incx y:n incy c s",
    "gemv": "'N' m n alpha A:m,n lda x:n incx beta y:m incy",
    "gbmv": "'N' n n zero k alpha A:B,n lda x:n incx beta y:n incy",
    "symv hemv": "'U' n alpha A:n,n lda x:n incx beta y:n incy",
    "sbmv hbmv": "'U' n k alpha A:B,n lda x:n incx beta y:n incy",
    "spmv hpmv": "'U' n alpha A:P x:n incx beta y:n incy",
    "ger geru gerc": "m n alpha x:m incx y:n incy A:m,n lda",
    "syr her": "'U' n alpha x:n incx A:n,n lda",
    "spr hpr": "'U' n alpha x:n incx A:P",
    "syr2 her2": "'U' n alpha x:n incx y:n incy A:n,n lda",
    "spr2 hpr2": "'U' n alpha x:n incx y:n incy A:P",
    "trmv trsv": "'U' 'N' 'N' n A:n,n lda x:n incx",
    "tbmv tbsv": "'U' 'N' 'N' n k A:B,n lda x:n incx",
    "tpmv tpsv": "'U' 'N' 'N' n A:P x:n incx",
    "gemm gemm3m": "'N' 'N' m n k alpha A:m,k lda B:k,n ldb beta C:m,n ldc",
    "symm hemm": "'L' 'U' m n alpha A:m,m lda B:m,n ldb beta C:m,n ldc",
    "syrk herk": "'U' 'N' n k alpha A:n,k lda beta C:n,n ldc",
    "syr2k her2k": "'U' 'N' n k alpha A:n,k lda B:n,k ldb beta C:n,n ldc",
    "trmm trsm": "'L' 'U' 'N' 'N' m n alpha A:m,m lda B:m,n ldb",
    "omatcopy": "'C' 'N' m n alpha A:m,n lda B:m,n ldb",
    "omatadd": "'C' 'N' 'N' m n alpha A:m,n lda beta B:m,n ldb C:m,n ldc",
    "imatcopy": "'C' 'N' m n alpha A:m,n lda lda",
}
SIGNATURE = {name: text for names, text in SIGNATURES.items() for name in names.split()}
REAL_SCALARS = {"her": "alpha", "hpr": "alpha", "herk": "alpha beta", "her2k": "beta", "rot": "c", "csrot": "c s",
                "zdrot": "c s", "csscal": "alpha", "zdscal": "alpha"}
SIZES = (3, 37, 130)


# Routines whose name tells one type; all others stand for one routine a type.
OF_ONE_TYPE = {"csscal": "c", "zdscal": "z", "csrot": "c", "zdrot": "z", "scasum": "c", "dzasum": "z", "snrm2": "s",
               "dnrm2": "d", "scnrm2": "c", "dznrm2": "z", "dsdot": "s"}


def symbols(routine):
    """The type and the library's function of each form of a routine: axpy -> saxpy, daxpy, caxpy, zaxpy."""
    if routine in OF_ONE_TYPE:
        return [(OF_ONE_TYPE[routine], getattr(library, "orv_blas_" + routine))]
    prefix = "orv_" if "mat" in routine else "orv_blas_"  # by value, by pointer
    names = [(t, prefix + ("i" + t + routine[1:] if routine.startswith("ia") else t + routine)) for t in TYPES]
    return [(t, getattr(library, name)) for t, name in names if hasattr(library, name)]


class Call:
    """One call on operands whose values are small and whose sums cannot overflow, and on what it leaves behind."""

    def __init__(self, routine, letter, function, size, unit):
        self.function, self.real, self.width = function, TYPES[letter], 2 if letter in "cz" else 1
        self.n, self.m, self.k = size, size + 1, size + 2
        self.i, self.j = (1, 3) if size == 3 else (size // 5, size - size // 3)
        self.real_scalars = REAL_SCALARS.get(routine, "").split()
        self.words = SIGNATURE[routine].split()
        if unit:
            self.words[self.words.index("m" if "m" in self.words else "n") - 1] = "'U'"
        if routine == "axpyi":
            self.words = "n alpha x:n places y:n".split()
        self.scalars = {word: (1.5, 0.0) for word in self.words if word in SCALARS}
        self.arrays, self.shape = {}, {}
        for word in self.words:
            if ":" in word:
                self.result, self.shape[word[0]] = word[0], word[2:]
                self.arrays[word[0]] = self.values(word[0])
        self.leading = {name: max(1, self.rows(name)) for name in self.shape}

    def rows(self, name):
        return {"n": self.n, "m": self.m, "k": self.k, "B": self.k + 1, "P": 0}[self.shape[name][0]]

    def columns(self, name):
        return {"n": self.n, "m": self.m, "k": self.k, "P": 0}[self.shape[name][-1]]

    def length(self, name):
        shape = self.shape[name]
        if shape == "P":
            return self.n * (self.n + 1) // 2
        return self.rows(name) * (self.columns(name) if "," in shape else 1)

    def position(self, name, i, j=None):
        """Of element (i,j), counted from 1, in its array."""
        if j is None:
            return i - 1
        if self.shape[name] == "P":
            return i - 1 + j * (j - 1) // 2
        if self.shape[name][0] == "B":
            return self.k + i - j + (j - 1) * (self.k + 1)
        return i - 1 + (j - 1) * self.rows(name)

    def values(self, name):
        """Small numbers, with 2 on the diagonal of what may be a system."""
        key = self.shape[name], self.real, self.width, self.n, name == "A"
        if key not in Call.made:
            Call.made[key] = self.make(name)
        return type(Call.made[key]).from_buffer_copy(Call.made[key])

    made = {}

    def make(self, name):
        parts = [(1 + p % 3) / 64 if p % self.width == 0 else 0.0 for p in range(self.length(name) * self.width)]
        if name == "A" and self.shape[name] in ("P", "B,n", "n,n", "m,m"):
            for d in range(1, (self.m if self.shape[name] == "m,m" else self.n) + 1):
                parts[self.position(name, d, d) * self.width] = 2.0
        return (self.real * len(parts))(*parts)

    def fill(self, name, places, value, part=0):
        array = self.arrays[name]
        for place in places:
            array[place * self.width + part] = value

    def triangle(self, name, below):
        order = self.columns(name)
        return [self.position(name, i, j) for j in range(1, order + 1)
                for i in (range(j + 1, self.rows(name) + 1) if below else range(1, j + 1))]

    def put(self, where, value):
        """Stores a number at a place, in the page's words."""
        where, part = where.removeprefix("im "), int(where.startswith("im "))
        name = where[0]
        if where in SCALARS:
            self.scalars[where] = (value, 0.0)
        elif where == "k":
            self.k = 0  # the arrays stay
        elif where.endswith(" below the diagonal"):
            self.fill(name, self.triangle(name, True), value)
        elif "(" in where:
            self.fill(name, [self.position(name, *(getattr(self, p) for p in where[2:-1].split(",")))], value, part)
        elif name == self.result and self.words[0] == "'U'" and self.shape[name] == "n,n":
            self.fill(name, self.triangle(name, False), value)
        else:
            self.arrays[name][::self.width] = [value] * self.length(name)

    def run(self):
        """The bytes of the result."""
        arguments = []
        for word in self.words:
            if word[0] == "'":
                arguments.append(ctypes.c_char(word[1].encode()))
            elif ":" in word:
                arguments.append(self.arrays[word[0]])
            elif word in SCALARS:
                count = 1 if word in self.real_scalars else self.width
                arguments.append((self.real * count)(*self.scalars[word][:count]))
            elif word == "places":
                arguments.append((ctypes.c_int64 * self.n)(*range(1, self.n + 1)))
            elif word.startswith("ld"):
                arguments.append(ctypes.c_int64(self.leading[word[2].upper()]))
            else:
                arguments.append(ctypes.c_int64({"n": self.n, "m": self.m, "k": self.k, "zero": 0}.get(word, 1)))
        self.function.restype = None
        if self.function.__name__.startswith("orv_blas_"):
            self.function(*map(ctypes.byref, arguments))
        else:
            self.function(*(self.value(a) for a in arguments))
        return bytes(self.arrays[self.result])

    def value(self, argument):
        """A scalar as C passes it: a complex number is a structure."""
        if not isinstance(argument, ctypes.Array) or len(argument) > 2:
            return argument
        pair = type("Pair", (ctypes.Structure,), {"_fields_": [("re", self.real), ("im", self.real)]})
        return pair(*argument) if len(argument) == 2 else self.real(argument[0])

    def places(self, special):
        """Elements of the result of which a part is special."""
        return {p // self.width for p, part in enumerate(self.arrays[self.result][:]) if special(part)}

    def named(self, what):
        """The positions in the result that the page's last column names."""
        name, (i, j) = self.result, (self.i, self.j)
        if "," not in self.shape[name] and self.shape[name] != "P":
            elements = {"all": range(1, self.length(name) + 1), "none": (), "element i": (i,), "elements i, j": (i, j),
                        "elements 1 to i": range(1, i + 1), "elements 1 to j": range(1, j + 1)}[what]
            return {self.position(name, e) for e in elements}
        all_rows, all_columns = range(1, self.rows(name) + 1), range(1, self.columns(name) + 1)
        row = lambda r: {(r, c) for c in all_columns}
        column = lambda c: {(r, c) for r in all_rows}
        upper = lambda elements: {(r, c) for r, c in elements if r <= c}
        elements = {
            "none": lambda: set(), "(i,j)": lambda: {(i, j)}, "row i": lambda: row(i), "column j": lambda: column(j),
            "row i but column j": lambda: row(i) - {(i, j)}, "rows i, j": lambda: row(i) | row(j),
            "rows 1 to i": lambda: set().union(*(row(r) for r in range(1, i + 1))),
            "row and column i": lambda: upper(row(i) | column(i)),
            "row and column i but (i,j)": lambda: upper(row(i) | column(i)) - {(i, j)},
            "below the diagonal": lambda: {(r, c) for c in all_columns for r in all_rows if r > c},
        }[what]()
        return {self.position(name, r, c) for r, c in elements}


def split(cell):
    return [] if cell == "-" else [word.strip() for word in cell.split(", ")]


def check_factors(routine, unit, zero, operand, named, spreads):
    """One row, one routine, one operand: how often it was run, or what is wrong."""
    runs = 0
    for letter, function in symbols(routine):
        for size in SIZES:
            def call_with(value):
                call = Call(routine, letter, function, size, unit)
                named_places = call.named(named)
                for place in split(zero):
                    call.put(place, 0.0)
                if operand:
                    call.put(operand, value)
                return call, call.run(), named_places

            if named == "none":
                plain = call_with(1.0)[1]
                bad = [special for special in (math.nan, math.inf, -math.inf) if call_with(special)[1] != plain]
            else:
                call, _, expected = call_with(math.nan)
                bad = call.places(spreads) ^ expected
            if bad:
                return f"{function.__name__} n={size}: not so for {list(bad)[:5]}"
            runs += 1
    return runs if runs else f"no routine {routine}"


def check_vector(routine, vector, expected):
    runs = 0
    for letter, function in symbols(routine):
        width = 2 if letter in "cz" else 1
        for repeat in (1, 40):  # zeros after it, so that loops over blocks see it too
            values = vector + [0.0] * (repeat - 1) if not routine.startswith("iamin") else vector + [9.0] * (repeat - 1)
            values = values if vector else []
            flat = [part for value in values for part in (value, 0.0)[:width]]
            x = (TYPES[letter] * max(1, len(flat)))(*flat)
            n, inc = ctypes.c_int64(len(values)), ctypes.c_int64(1)
            place = routine.startswith("ia")
            pair = routine in ("dotu", "dotc")
            function.restype = (ctypes.c_int64 if place else None if pair else ctypes.c_double if routine == "dsdot"
                                else TYPES[letter])
            arguments = [ctypes.byref(a) for a in ([n, x, inc, x, inc] if "dot" in routine else [n, x, inc])]
            if pair:
                answer = (TYPES[letter] * 2)()
                function(ctypes.byref(answer), *arguments)
                value = answer[0]
            else:
                value = function(*arguments) - place
            if not (value == expected or (math.isnan(expected) and math.isnan(value))):
                return f"{function.__name__} of {values}: {value}"
            runs += 1
    return runs if runs else f"no routine {routine}"


def check_row(cells):
    names, *rest = cells
    outcomes = []
    routines, _, option = names.partition(" with diag ")
    for routine in routines.split():
        if len(rest) == 2:
            outcomes.append(check_vector(routine, [float(word) for word in rest[0].split()], float(rest[1])))
        else:
            zero, operands, named = rest
            lost = math.isnan if operands != "-" else lambda x: not math.isfinite(x)
            for operand in split(operands) or [None]:
                outcomes.append(check_factors(routine, option == "U", zero, operand, named, lost))
    return outcomes


rows, runs, problems = 0, 0, []
for number, line in enumerate(open(sys.argv[2]), 1):
    cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
    if not line.startswith("|") or cells[0] == "routines" or set(cells[0]) == {"-"}:
        continue
    rows += 1
    for outcome in check_row(cells):
        if isinstance(outcome, str):
            problems.append(f"{sys.argv[2]}:{number}: {outcome}")
        else:
            runs += outcome
print("\n".join(problems) if problems else f"{rows} rows hold in {runs} calls")
sys.exit(bool(problems) or rows < 60)
