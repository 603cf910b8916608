#!/usr/bin/env python3
"""NumPy's own tests, as Debian ships them, with Debian's LAPACK on the stand-in: all of numpy.linalg, and those of
numpy.core that multiply matrices. The dynamic linker must say that the products came from here.

usage: numpy_test.py STAND_IN_FOLDER FOLDER_OF_LAPACK     (skipped, with status 77, where something is missing)"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

PYTHON = "/usr/bin/python3"
TESTS = ["numpy.linalg.tests", "numpy.core.tests.test_multiarray", "numpy.core.tests.test_numeric",
         "numpy.core.tests.test_einsum", "numpy.core.tests.test_ufunc", "numpy.matrixlib.tests",
         "numpy.polynomial.tests"]
# Who asks for what. LAPACK must be the plain one: others bring products of their own.
ASKED = {r"_multiarray_umath\S*": ["cblas_dgemm", "cblas_dgemv", "cblas_ddot", "cblas_zgemm", "cblas_dsyrk"],
         r"liblapack\.so\.3": ["dgemm_", "dtrsm_", "dsyrk_", "ztrmm_", "zherk_"]}


def skip(reason):
    print(reason)
    sys.exit(77)


stand_in, lapack = sys.argv[1:]
for module in ("numpy", "pytest", "hypothesis"):
    if subprocess.run([PYTHON, "-c", f"import {module}"], capture_output=True).returncode:
        skip(f"python3-{module} is not installed")
if not pathlib.Path(lapack, "liblapack.so.3").exists():
    skip("liblapack3 is not installed")

with tempfile.TemporaryDirectory() as place:
    done = subprocess.run([PYTHON, "-B", "-m", "pytest", "-q", "--disable-warnings", "-p", "no:cacheprovider",
                           "--pyargs", *TESTS], cwd=place, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env={**os.environ, "LD_LIBRARY_PATH": f"{stand_in}:{lapack}", "LD_DEBUG": "bindings",
                               "LD_DEBUG_OUTPUT": f"{place}/log"})
    log = "".join(path.read_text() for path in pathlib.Path(place).glob("log.*"))
print(done.stdout[-5000:])
for asker, names in ASKED.items():
    for name in names:
        if not re.search(rf"binding file \S*{asker} \[0\] to {re.escape(stand_in)}/libblas\.so\.3 \[0\]: "
                         rf"normal symbol `{name}'", log):
            sys.exit(f"{asker} did not take {name} from {stand_in}")
sys.exit(done.returncode)
