#!/usr/bin/env python3
"""Runs each row of docs/special-values.md through the public interface: all types, sizes on both sides of block edges.

usage: special_values_test.py LIBORV PAGE"""
import ctypes
import math
import sys

from calls import TYPES, SCALARS, Call, symbols, table_rows
from sparse_values import check_fourier, check_sparse

library = ctypes.CDLL(sys.argv[1])
SIZES = (3, 37, 130)


class Marked(Call):
    """A call with special values at places that the page names."""

    def __init__(self, routine, letter, function, size, unit):
        super().__init__(routine, letter, function, size + 1, size, size + 2, unit)
        self.i, self.j = (1, 3) if size == 3 else (size // 5, size - size // 3)

    def fill(self, name, places, value, part=0):
        array, width = self.arrays[name], self.parts(name)
        for place in places:
            array[place * width + part] = value

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
            self.arrays[name][::self.parts(name)] = [value] * self.length(name)

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
    for letter, function in symbols(library, routine):
        for size in SIZES:
            def call_with(value):
                call = Marked(routine, letter, function, size, unit)
                named_places = call.named(named)
                for place in split(zero):
                    call.put(place.removeprefix("inf "), math.inf if place.startswith("inf ") else 0.0)
                if operand:
                    call.put(operand, value)
                return call, call.run(), named_places

            if named == "none":
                plain = call_with(1.0)[1]
                bad = [special for special in (math.nan, math.inf, -math.inf) if call_with(special)[1] != plain]
            elif zero.startswith("inf "):
                if " im " in zero and letter not in "cz":
                    continue
                call, _, expected = call_with(math.nan)
                bad = (call.places(lambda part: True) - call.places(lambda part: part != 0)) ^ expected
                bad |= call.places(lambda part: not math.isfinite(part))
            else:
                call, _, expected = call_with(math.nan)
                bad = call.places(spreads) ^ expected
            if bad:
                return f"{function.__name__} n={size}: not so for {list(bad)[:5]}"
            runs += 1
    return runs if runs else f"no routine {routine}"


def check_vector(routine, vector, expected):
    runs = 0
    for letter, function in symbols(library, routine):
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
                if routine.startswith("sparse_"):
                    outcomes.append(check_sparse(library, routine, option == "U", split(zero), operand, named))
                elif "fft" in routine:
                    outcomes.append(check_fourier(library, routine))
                else:
                    outcomes.append(check_factors(routine, option == "U", zero, operand, named, lost))
    return outcomes


rows, runs, problems = 0, 0, []
for number, cells in table_rows(sys.argv[2]):
    rows += 1
    for outcome in check_row(cells):
        if isinstance(outcome, str):
            problems.append(f"{sys.argv[2]}:{number}: {outcome}")
        else:
            runs += outcome
print("\n".join(problems) if problems else f"{rows} rows hold in {runs} calls")
sys.exit(bool(problems) or rows < 60)
