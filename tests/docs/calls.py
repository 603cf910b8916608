"""Calls of liborv's routines by name, on operands made for them: what the tests of the executed pages share."""
import ctypes
import random
import re

TYPES = {"s": ctypes.c_float, "d": ctypes.c_double, "c": ctypes.c_float, "z": ctypes.c_double}
# Arguments in the order of the call: a letter in quotes, an option as its number; m, n, k and other integers; scalars;
# arrays as NAME:elements or NAME:rows,columns. P is a packed triangle, B a band with k diagonals above the main one.
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
    "sbmv dsbmv hbmv": "'U' n k alpha A:B,n lda x:n incx beta y:n incy",
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
    "scgemm dzgemm": "'N' 'N' m n k alpha A:m,k lda B:k,n ldb beta C:m,n ldc",
    "xblas_axpby": "n alpha x:n incx beta y:n incy 214",
    "xblas_gemv": "102 111 m n alpha A:m,n lda x:n incx beta y:m incy 214",
    "xblas_gbmv": "102 111 n n zero k alpha A:B,n lda x:n incx beta y:n incy 214",
    "xblas_symv xblas_hemv": "102 121 n alpha A:n,n lda x:n incx beta y:n incy 214",
    "xblas_trsv": "102 121 111 131 n alpha A:n,n lda x:n incx 214",
    "xblas_gemm": "102 111 111 m n k alpha A:m,k lda B:k,n ldb beta C:m,n ldc 214",
    "xblas_symm xblas_hemm": "102 141 121 m n alpha A:m,m lda B:m,n ldb beta C:m,n ldc 214",
    "omatcopy": "'C' 'N' m n alpha A:m,n lda B:m,n ldb",
    "omatadd": "'C' 'N' 'N' m n alpha A:m,n lda beta B:m,n ldb C:m,n ldc",
    "imatcopy": "'C' 'N' m n alpha A:m,n lda lda",
}
# Those that answer a number in place of writing an array.
SUMS = {
    "asum scasum dzasum nrm2 snrm2 dnrm2 scnrm2 dznrm2 iamax iamin": "n x:n incx",
    "dot dotu dotc dsdot": "n x:n incx y:n incy",
    "doti dotui dotci": "n x:n places y:n",
}
SIGNATURES |= SUMS
SUMS = " ".join(SUMS).split()
SIGNATURE = {name: text for names, text in SIGNATURES.items() for name in names.split()}
# Arrays of real numbers in a call with complex ones.
REAL_ARRAYS = {"scgemm": "A", "dzgemm": "A"}
# Scalars that are real in a call with complex ones.
REAL_SCALARS = {"her": "alpha", "hpr": "alpha", "herk": "alpha beta", "her2k": "beta", "rot": "c", "csrot": "c s",
                "zdrot": "c s", "csscal": "alpha", "zdscal": "alpha"}
# Routines whose name tells one type; all others stand for one routine a type.
OF_ONE_TYPE = {"csscal": "c", "zdscal": "z", "csrot": "c", "zdrot": "z", "scasum": "c", "dzasum": "z", "snrm2": "s",
               "dnrm2": "d", "scnrm2": "c", "dznrm2": "z", "dsdot": "s", "dsbmv": "d",
               "scgemm": "c", "dzgemm": "z"}


def symbols(library, routine):
    """The type and the library's function of each form of a routine: axpy -> saxpy, daxpy, caxpy, zaxpy."""
    if routine in OF_ONE_TYPE:
        return [(OF_ONE_TYPE[routine], getattr(library, "orv_blas_" + routine))]
    if routine.startswith("xblas_"):
        names = [(t, f"orv_xblas_{t}{routine[6:]}_x") for t in TYPES]
        return [(t, getattr(library, name)) for t, name in names if hasattr(library, name)]
    prefix = "orv_" if "mat" in routine else "orv_blas_"  # by value, by pointer
    names = [(t, prefix + ("i" + t + routine[1:] if routine.startswith("ia") else t + routine)) for t in TYPES]
    return [(t, getattr(library, name)) for t, name in names if hasattr(library, name)]


def turned(routine):
    """The signature with other letters: transposed, the lower triangle, from the right."""
    text = SIGNATURE[routine]
    hermitian = routine in ("herk", "her2k")
    if "mat" in routine or routine in SUMS or "'" not in text:
        return text
    if routine in ("symm", "hemm", "trmm", "trsm"):
        text = text.replace("'U'", "'l'").replace("'L'", "'R'").replace("'l'", "'L'").replace("A:m,m", "A:n,n")
        return text.replace("'N'", "'T'", 1)
    text = text.replace("'U'", "'L'")
    if "gemm" in routine:
        return text.replace("'N' 'N'", "'T' 'T'").replace("A:m,k", "A:k,m").replace("B:k,n", "B:n,k")
    if routine == "gemv":
        return text.replace("'N'", "'T'").replace("x:n", "x:*").replace("y:m", "y:n").replace("x:*", "x:m")
    return re.sub(r"'N'", "'C'" if hermitian else "'T'", text, count=1).replace(":n,k", ":k,n")


class Call:
    """One call. Operands hold small numbers, with 2 on the diagonal of what may be a system, so no sum overflows.

    gap: elements between the columns of matrices; offsets: of the array of this name, elements from an address that is
    a multiple of 64; mixed: numbers of all digits in place of simple ones; turn: with other letters."""

    def __init__(self, routine, letter, function, m, n, k, unit=False, gap=0, offsets=None, mixed=False,
                 turn=False):
        self.function, self.real, self.width = function, TYPES[letter], 2 if letter in "cz" else 1
        self.m, self.n, self.k, self.gap, self.offsets, self.mixed = m, n, k, gap, offsets or {}, mixed
        self.real_scalars = REAL_SCALARS.get(routine, "").split()
        self.routine = routine
        self.words = (turned(routine) if turn else SIGNATURE[routine]).split()
        self.lower = "'L'" in self.words and routine not in ("symm", "hemm")
        if unit:
            self.words[self.words.index("m" if "m" in self.words else "n") - 1] = "'U'"
        if routine == "axpyi":
            self.words = "n alpha x:n places y:n".split()
        self.scalars = {word: (1.5, 0.75 if mixed else 0.0) for word in self.words if word in SCALARS}
        self.arrays, self.shape, self.memory = {}, {}, {}
        for word in self.words:
            if ":" in word:
                self.result, self.shape[word[0]] = word[0], word[2:]
                self.arrays[word[0]] = self.values(word[0])
        self.leading = {name: max(1, self.column_length(name)) for name in self.shape}

    def parts(self, name):
        """Numbers that make an element of the array: 2 of a complex one."""
        return 1 if name in REAL_ARRAYS.get(self.routine, "") else self.width

    def rows(self, name):
        return {"n": self.n, "m": self.m, "k": self.k, "B": self.k + 1, "P": 0}[self.shape[name][0]]

    def columns(self, name):
        return {"n": self.n, "m": self.m, "k": self.k, "P": 0}[self.shape[name][-1]]

    def column_length(self, name):
        return self.rows(name) + (self.gap if "," in self.shape[name] else 0)

    def length(self, name):
        shape = self.shape[name]
        if shape == "P":
            return self.n * (self.n + 1) // 2
        return self.column_length(name) * (self.columns(name) if "," in shape else 1)

    def position(self, name, i, j=None):
        """Of element (i,j), counted from 1, in its array."""
        if j is None:
            return i - 1
        if self.shape[name] == "P":
            return i - 1 + ((j - 1) * (2 * self.n - j) if self.lower else j * (j - 1)) // 2
        if self.shape[name][0] == "B":
            i += 1 - j + (0 if self.lower else self.k)
        return i - 1 + (j - 1) * self.column_length(name)

    @staticmethod
    def signature(routine):
        return SIGNATURE[routine].split()

    made = {}

    def values(self, name):
        key = (name, self.shape[name], self.real, self.parts(name), self.m, self.n, self.k, self.gap, self.mixed,
               self.lower)
        if key not in Call.made:
            Call.made[key] = self.make(name)
        return type(Call.made[key]).from_buffer_copy(Call.made[key])

    def make(self, name):
        """Columns are stretches of one list of numbers, so gaps do not change what stands in them."""
        width = self.parts(name)
        rows = (self.rows(name) or self.length(name)) * width
        digits = random.Random(name)
        period = rows + 1009
        numbers = ([digits.uniform(-1, 1) for _ in range(period)] if self.mixed else
                   [(1 + p % 3) / 64 if p % width == 0 else 0.0 for p in range(period)])
        parts = []
        for column in range(self.columns(name) if "," in self.shape[name] else 1):
            start = column * 14 % 1009 // width * width
            parts += numbers[start:start + rows] + [0.0] * (width * (self.column_length(name) - self.rows(name)))
        if name == "A" and self.shape[name] in ("P", "B,n", "n,n", "m,m"):
            order = self.m if self.shape[name] == "m,m" else self.n
            for d in range(1, order + 1):
                parts[self.position(name, d, d) * width] = 2.0 if not self.mixed else float(order)
        return (self.real * len(parts))(*parts)

    def place(self, name):
        """Where the array stands: a copy at the offset that was asked for."""
        array = self.arrays[name]
        if name not in self.offsets:
            return array
        size = ctypes.sizeof(array)
        room = (ctypes.c_char * (size + 128))()
        shift = -ctypes.addressof(room) % 64 + self.offsets[name] * self.parts(name) * ctypes.sizeof(self.real)
        copy = type(array).from_buffer(room, shift)
        ctypes.memmove(copy, array, size)
        self.arrays[name] = copy
        return copy

    def arguments(self):
        arguments = []
        for word in self.words:
            if word[0] == "'":
                arguments.append(ctypes.c_char(word[1].encode()))
            elif word.isdigit():
                arguments.append(ctypes.c_int(int(word)))
            elif ":" in word:
                arguments.append(self.place(word[0]))
            elif word in SCALARS:
                count = 1 if word in self.real_scalars else self.width
                arguments.append((self.real * count)(*self.scalars[word][:count]))
            elif word == "places":
                arguments.append((ctypes.c_int64 * self.n)(*range(1, self.n + 1)))
            elif word.startswith("ld"):
                arguments.append(ctypes.c_int64(self.leading[word[2].upper()]))
            else:
                arguments.append(ctypes.c_int64({"n": self.n, "m": self.m, "k": self.k, "zero": 0}.get(word, 1)))
        return arguments

    def run(self, around=lambda call: call()):
        """The status, and the bytes of the result. around makes the call."""
        arguments = self.arguments()
        by_pointer = self.function.__name__.startswith("orv_blas_")
        passed = [ctypes.byref(a) if by_pointer else self.value(a) for a in arguments]
        if self.routine in SUMS:
            return 0, self.sum(passed)
        self.function.restype = ctypes.c_int
        status = around(lambda: self.function(*passed))
        return status, bytes(self.arrays[self.result])

    def sum(self, passed):
        if self.routine in ("dotu", "dotc", "dotui", "dotci"):
            pair = (self.real * 2)()
            self.function.restype = None
            self.function(ctypes.byref(pair), *passed)
            return bytes(pair)
        answer = (ctypes.c_int64 if self.routine.startswith("ia") else
                  ctypes.c_double if self.routine == "dsdot" else self.real)
        self.function.restype = answer
        return bytes(answer(self.function(*passed)))

    def value(self, argument):
        """A scalar as C passes it: a complex number is a structure."""
        if not isinstance(argument, ctypes.Array) or len(argument) > 2:
            return argument
        pair = type("Pair", (ctypes.Structure,), {"_fields_": [("re", self.real), ("im", self.real)]})
        return pair(*argument) if len(argument) == 2 else self.real(argument[0])


def table_rows(page):
    """The cells of each row of the tables in a page, with the number of its line."""
    for number, line in enumerate(open(page), 1):
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if line.startswith("|") and cells[0] != "routines" and set(cells[0]) != {"-"}:
            yield number, cells
