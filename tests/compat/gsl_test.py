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


def fetch(work):
    """Debian's archives of the suites that this machine's packages are from, looked up in lists of our own."""
    suites = subprocess.run(["apt-get", "indextargets", "--format", "$(REPO_URI) $(RELEASE) $(COMPONENT)",
                             "Created-By: Packages", "Origin: Debian", "Component: main"],
                            capture_output=True, text=True, check=True).stdout.splitlines()
    if not suites:
        skip("apt knows no archive of Debian")
    sources, lists = work / "sources.list", work / "lists"
    sources.write_text("".join(f"deb-src {suite}\n" for suite in suites))
    lists.mkdir(exist_ok=True)
    apt = ["apt-get", "-qq", "-o", f"Dir::Etc::sourcelist={sources}", "-o", "Dir::Etc::sourceparts=-", "-o",
           f"Dir::State::lists={lists}", "-o", f"Dir::Cache={work}", "-o", "APT::Sandbox::User="]
    for step in [["update"], ["--download-only", "--only-source", "source", "gsl"]]:
        done = subprocess.run(apt + step, cwd=work, capture_output=True, text=True)
        if done.returncode:
            skip(f"the source package cannot be fetched: {done.stderr}")


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
if not pathlib.Path(reference, "libblas.so.3").exists():
    skip("the reference library is not installed")
if subprocess.run([compiler, "-E", "-x", "c", "-"], input="#include <gsl/gsl_test.h>", text=True,
                  capture_output=True).returncode:
    skip("libgsl-dev is not installed")

work.mkdir(parents=True, exist_ok=True)
if not list(work.glob("gsl_*.orig.tar.*")):
    fetch(work)
archive = next(work.glob("gsl_*.orig.tar.*"))
subprocess.run(["tar", "xf", archive.name, "--wildcards", "*/cblas/test*"], cwd=work, check=True)
(work / "config.h").touch()  # the checks take nothing from it
program = work / "checks"
subprocess.run([compiler, "-w", f"-I{work}", *sorted(work.glob("*/cblas/test*.c")), "-o", program,
                f"{stand_in}/libblas.so.3", "-lgsl", "-lm"], check=True)

mine, theirs = outcome(program, stand_in), outcome(program, reference)
if len(mine) < 6865:
    sys.exit(f"only {len(mine)} checks ran")
for (verdict, case, detail), (wanted, other, _) in zip(mine, theirs, strict=True):
    if (verdict, case) != (wanted, other):
        sys.exit(f"{verdict} where the reference has {wanted}: {case} {detail}")
print(f"{len(mine)} checks, {sum(v == 'FAIL' for v, _, _ in mine)} fail here and on the reference library alike")
