#!/usr/bin/env python3
"""orv_bench runs a case and writes figures that the table can read. Asks nothing of the figures.

usage: smoke_test.py ORV_BENCH LIBRARY_FOLDER FOLDER_OF_A_WRONG_LIBRARY"""
import pathlib
import subprocess
import sys
import tempfile

import table

program, folder, wrong = sys.argv[1:]


def run(*words, lib=folder):
    return subprocess.run([program, "--lib", lib, *words], capture_output=True, text=True)


def check(fact, text):
    if not fact:
        sys.exit(f"smoke_test: {text}")


done = run("--filter", "^(dgemm small beta=1 8|zdotu unit 100|daxpy call 10)$", "--rounds", "3", "--sample", "1e-4")
check(done.returncode == 0, f"status {done.returncode}\n{done.stderr}")
with tempfile.TemporaryDirectory() as place:
    results = pathlib.Path(place) / "results.csv"
    results.write_text(done.stdout)
    cases, libraries = table.load(results)
check([c.name for c in cases] == ["dgemm small beta=1 8", "daxpy call 10", "zdotu unit 100"],
      f"cases {[c.name for c in cases]}")
for case in cases:
    check(case.ours, f"{case.name}: not run by orv")
    for library, time in case.figures.items():
        check(case.faster(time.fastest, time.median) >= 1 and case.faster(time.median, time.slowest) >= 1
              and time.median > 0, f"{case.name}: {library} {time}")

# Both have LAPACK, and no more: what they would find of the BLAS is the one below them, orv's own.
done = run("--filter", "^daxpy unit 100$", "--libraries", "orv,lapack", "--rounds", "1", "--sample", "1e-4")
timed = [line.split(",")[2] for line in done.stdout.splitlines()[1:] if not line.startswith("#")]
check(timed == ["orv"], f"a library was timed for a routine that it doesn't have: {timed}\n{done.stderr}")

for case in "daxpy unit 100", "dscal unit 100":
    done = run("--filter", f"^{case}$", lib=wrong)
    check(done.returncode == 1 and f"{case}: orv and" in done.stderr, f"a wrong answer was timed\n{done.stderr}")
check(run("--filter", "(").returncode == 1, "a filter that is no expression was taken")
check(run("--pass", "none").returncode == 1, "a pass that does not exist was taken")
