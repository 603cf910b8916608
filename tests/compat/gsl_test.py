#!/usr/bin/env python3
"""The tests that the GNU Scientific Library has for its own CBLAS, all 6,865 checks, on the stand-in with three threads.
Debian has them in its source package only: that is fetched once and compiled as it stands. What fails must be what
fails on the reference library (norms of vectors with a negative stride), and nothing else.

usage: gsl_test.py COMPILER STAND_IN_FOLDER FOLDER_OF_THE_REFERENCE_BLAS WORK_FOLDER
(skipped, with status 77, where the source or what it needs cannot be had)"""
import os
import pathlib
import re
import subprocess
import sys


def skip(why):
    print(why)
    sys.exit(77)


def outcome(program, folder):
    """Verdicts by case: PASS, or FAIL with the number that was found instead."""
    printed = subprocess.run([program], capture_output=True, text=True,
                             env={**os.environ, "GSL_TEST_VERBOSE": "1", "ORV_NUM_THREADS": "3",
                                  "LD_LIBRARY_PATH": folder, "LD_DEBUG": "bindings"})
    if not re.search(rf"to {re.escape(folder)}/libblas\.so\.3 \[0\]: normal symbol `cblas_zher2k'", printed.stderr):
        sys.exit(f"the checks did not run on {folder}")
    return re.findall(r"^(PASS|FAIL): (\S+\(case \d+\))(.*)", printed.stdout, re.MULTILINE)


compiler, stand_in, reference, work = sys.argv[1:]
work = pathlib.Path(work)
fetch = pathlib.Path(__file__).parents[2] / "cmake/debian_source.py"
if not pathlib.Path(reference, "libblas.so.3").exists():
    skip("the reference library is not installed")
if subprocess.run([compiler, "-E", "-x", "c", "-"], input="#include <gsl/gsl_test.h>", text=True,
                  capture_output=True).returncode:
    skip("libgsl-dev is not installed")

source = work / "gsl"
if not (source / "cblas/test.c").exists():
    fetched = subprocess.run([sys.executable, "-B", fetch, "gsl", source], capture_output=True, text=True)
    if fetched.returncode:
        skip(fetched.stderr)
(work / "config.h").touch()  # the checks take nothing from it
program = work / "checks"
subprocess.run([compiler, "-w", f"-I{work}", *sorted(source.glob("cblas/test*.c")), "-o", program,
                f"{stand_in}/libblas.so.3", "-lgsl", "-lm"], check=True)

mine, theirs = outcome(program, stand_in), outcome(program, reference)
if len(mine) < 6865:
    sys.exit(f"only {len(mine)} checks ran")
for (verdict, case, detail), (wanted, other, _) in zip(mine, theirs, strict=True):
    if (verdict, case) != (wanted, other):
        sys.exit(f"{verdict} where the reference has {wanted}: {case} {detail}")
print(f"{len(mine)} checks, {sum(v == 'FAIL' for v, _, _ in mine)} fail here and on the reference library alike")
