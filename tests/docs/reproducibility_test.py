#!/usr/bin/env python3
"""Runs each row of docs/reproducibility.md through the public interface.

usage: reproducibility_test.py LIBORV PAGE NO_MEMORY     (the last: a library to load before, see no_memory.c)"""
import ctypes
import os
import subprocess
import sys

from calls import Call, symbols, table_rows

if "LD_PRELOAD" not in os.environ:
    os.execve(sys.executable, [sys.executable, "-B", *sys.argv], {**os.environ, "LD_PRELOAD": sys.argv[3]})
library = ctypes.CDLL(sys.argv[1])
no_memory = ctypes.c_int.in_dll(ctypes.CDLL(None), "no_memory")
NO_MEMORY = 5  # ORV_NO_MEMORY


def sizes(routine, change):
    """m, n, k: on both sides of block edges; where threads are to share, large enough for that."""
    if change in ("threads", "team"):
        matrices = sum("," in word for word in Call.signature(routine))
        return [(1, 1700, 1)] if routine in ("symv", "hemv") else [(403, 391, 140) if matrices > 1 else (1103, 1100, 9)]
    if change == "memory":
        return [(41, 40, 43), (200, 191, 137)]
    return [(4, 3, 5), (38, 37, 39), (131, 130, 132)]


class Difference(Exception):
    pass


def rows_only(call, bits):
    """The result without the gaps between its columns."""
    size = call.width * ctypes.sizeof(call.real)
    column, rows = call.column_length(call.result) * size, call.rows(call.result) * size
    return bits if call.shape[call.result] == "P" or rows == 0 else b"".join(
        bits[start:start + rows] for start in range(0, len(bits), column))


def run(routine, letter, function, shape, turn, gap=0, threads=1, offsets=None):
    assert library.orv_set_thread_num_threads(threads) == 0
    call = Call(routine, letter, function, *shape, gap=gap, offsets=offsets, mixed=True, turn=turn)
    before = bytes(call.arrays[call.result])
    status, bits = call.run()
    if status not in (0, NO_MEMORY):
        raise Difference(f"status {status}")
    return call, rows_only(call, bits) if gap else bits, before if status else None


def changed_runs(change, routine, *what):
    """The runs after the change: their bits, and what the result held before if the call was refused."""
    names = [word[0] for word in Call.signature(routine) if ":" in word]
    if change == "nothing":
        yield run(routine, *what)
    elif change == "threads":
        for threads in (2, 3, 4):
            yield run(routine, *what, threads=threads)
    elif change == "team":
        for threads in (3, 4):
            yield run(routine, *what, threads=threads)
    elif change == "alignment":
        start = dict.fromkeys(names, 0)
        for offsets in [{name: by} for name in names for by in (1, 2, 3)] + [dict.fromkeys(names, 1)]:
            yield run(routine, *what, offsets=start | offsets)
    elif change == "gaps":
        for gap in (1, 2, 5):
            yield run(routine, *what, gap=gap)
    elif change == "memory":
        no_memory.value = 1
        try:
            yield run(routine, *what)
        finally:
            no_memory.value = 0


def numbers(call, bits):
    return (call.real * (len(bits) // ctypes.sizeof(call.real))).from_buffer_copy(bits)


def check_close(call, bits, others):
    """Two orders of the same sums: each is off by gamma times the sum of sizes at most."""
    order = max(call.m, call.n, call.k)
    epsilon = 2**-24 if call.real is ctypes.c_float else 2**-53
    terms = 2 * order + 4  # products and sums that went into an element, of complex numbers twice
    sizes = 8 * 1.5 * (3 * order + 1)  # operands are below 1, but for a diagonal of the order
    allowed = 2 * 2 * terms * epsilon / (1 - 2 * terms * epsilon) * sizes
    if not all(abs(x - y) <= allowed for x, y in zip(numbers(call, bits), numbers(call, others))):
        raise Difference("more than the last bits")


def check(routine, change, state, result):
    """Runs one routine of a row, and returns how often; raises where the row does not hold."""
    runs, different = 0, False
    routine, _, depth = routine.rstrip(")").partition("(k=")
    for reproducible in {"any": (0, 1), "fast": (0,), "reproducible": (1,)}[state]:
        library.orv_set_reproducible(reproducible)
        for letter, function in symbols(library, routine):
            for shape in sizes(routine, change):
                shape = (*shape[:2], int(depth or shape[2]))
                for turn in (False, True):
                    what = letter, function, shape, turn
                    start = {"offsets": dict.fromkeys("ABCxy", 0)} if change == "alignment" else {}
                    call, bits, _ = run(routine, *what, threads=2 if change == "team" else 1, **start)
                    for _, others, before in changed_runs(change, routine, *what):
                        runs += 1
                        where = f"{function.__name__} m,n,k={shape} {'turned ' * turn}{change}, state {reproducible}"
                        if (result == "refused") != (before is not None):
                            raise Difference(f"{where}: {'not ' * (before is None)}refused")
                        if result == "refused" and others != before:
                            raise Difference(f"{where}: the result was touched")
                        if result == "the same" and others != bits:
                            raise Difference(f"{where}: not the same bits")
                        if result == "close":
                            different |= others != bits
                            check_close(call, bits, others)
    if not runs:
        raise Difference(f"no routine {routine}")
    if result == "close" and not different:
        raise Difference(f"{routine}, {change}: always the same bits")
    return runs


rows, runs, problems = 0, 0, []
for number, (routines, changes, state, result) in table_rows(sys.argv[2]):
    rows += 1
    for change in changes.split(", "):
        for routine in routines.split():
            try:
                runs += check(routine, change, state, result)
            except Difference as problem:
                problems.append(f"{sys.argv[2]}:{number}: {problem}")

# The environment variable sets the state.
for value, state in (("1", "1"), ("0", "0")):
    done = subprocess.run([sys.executable, "-c", "import ctypes, sys\n"
                           "print(ctypes.CDLL(sys.argv[1]).orv_get_reproducible())", sys.argv[1]],
                          env={**os.environ, "ORV_REPRODUCIBLE": value}, capture_output=True, text=True)
    if done.stdout.strip() != state:
        problems.append(f"ORV_REPRODUCIBLE={value} gives the state {done.stdout}")
print("\n".join(problems) if problems else f"{rows} rows hold in {runs} calls")
sys.exit(bool(problems) or rows < 15)
