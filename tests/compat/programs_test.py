#!/usr/bin/env python3
"""R and Octave as Debian ships them, on the stand-in with three threads: products of a matrix with itself, Cholesky
factors, solutions and eigenvalues, at orders just behind the edges of blocks and at others drawn at random. On the
reference library they must give the same numbers, and the dynamic linker must say that the routines came from here.

usage: programs_test.py STAND_IN_FOLDER FOLDER_OF_THE_REFERENCE_BLAS     (skipped, with status 77, where both are missing)"""
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile

DEPTH = 600  # so that the smallest order is worth a team too
ORDERS = [129, 193, 289, 385, 577] + random.Random(1).sample(range(130, 600), 4)
# Each prints lines of numbers: the diagonal, the last row and the last column of a matrix, where groups and blocks end.
R = '''
show <- function(m) cat(format(c(diag(m), m[nrow(m), ], m[, ncol(m)]), digits = 17), "\\n")
set.seed(1)
for (n in c(%s)) {
    a <- matrix(runif(%d * n) - 0.5, ncol = n)
    s <- crossprod(a)
    show(s)
    show(tcrossprod(t(a)))
    show(chol(s + n * diag(n)))
    show(solve(s + n * diag(n), a[1:n %%%% 200 + 1, ]))
    show(a[1:129, ] %%*%% s[, 1:129])
}
'''
OCTAVE = '''
1;
function show(m)
    printf("%%.17g ", [diag(m); m(end, :)'; m(:, end)]);
    printf("\\n");
end
rand("twister", 1);
for n = [%s]
    a = rand(n, %d) - 0.5;
    h = complex(a, rand(size(a)) - 0.5);
    s = a * a';
    show(s);
    show(real(h * h') + imag(h * h'));
    show(chol(s + n * eye(n)));
    show((s + n * eye(n)) \\ a(:, 1:n));
    show(single(a) * single(a)');
    show(eig(s) * ones(1, 2));
end
'''
orders = ", ".join(map(str, ORDERS))
PROGRAMS = [("r-base-core", ["Rscript", "-e", R % (orders, DEPTH)], ["dsyrk_", "dgemm_", "dtrsm_"]),
            ("octave", ["octave-cli", "--norc", "--eval", OCTAVE % (orders, DEPTH)],
             ["dsyrk_", "ssyrk_", "zherk_", "dgemm_", "dtrsm_", "dsymv_"])]


def run(command, folders, **environment):
    paths = ":".join(folders)
    done = subprocess.run(command, capture_output=True, text=True,
                          env={**os.environ, "LC_ALL": "C.UTF-8", "LD_LIBRARY_PATH": paths, "R_LD_LIBRARY_PATH": paths,
                               **environment})
    if done.returncode:
        sys.exit(done.stderr)
    return [[float(word) for word in line.split()] for line in done.stdout.splitlines()]


stand_in, reference = sys.argv[1:]
lapack = str(pathlib.Path(reference).parent / "lapack")
if not (pathlib.Path(reference, "libblas.so.3").exists() and pathlib.Path(lapack, "liblapack.so.3").exists()):
    print("the reference libraries are not installed")
    sys.exit(77)
found = [(command, names) for package, command, names in PROGRAMS
         if shutil.which(command[0]) or print(f"{package} is not installed")]
if not found:
    sys.exit(77)

for command, names in found:
    with tempfile.TemporaryDirectory() as place:
        ours = run(command, [stand_in, lapack], ORV_NUM_THREADS="3", LD_DEBUG="bindings",
                   LD_DEBUG_OUTPUT=f"{place}/log")
        log = "".join(path.read_text() for path in pathlib.Path(place).glob("log.*"))
    theirs = run(command, [reference, lapack])
    worst = 0
    for line, (mine, other) in enumerate(zip(ours, theirs, strict=True)):
        size, order = max(map(abs, other)), len(other) / 3
        narrow = 2**-24 if command[0] == "octave-cli" and line % 6 == 4 else 2**-53
        # Well conditioned all of it: a backward stable method moves numbers by a modest multiple of n*eps.
        share = max(abs(x - y) for x, y in zip(mine, other, strict=True)) / (4 * (order + DEPTH) * narrow * size)
        if not share <= 1:
            sys.exit(f"{command[0]}: line {line} differs by {share} of what it may")
        worst = max(worst, share)
    for name in names:
        if not re.search(rf"binding file \S+ \[0\] to {re.escape(stand_in)}/libblas\.so\.3 \[0\]: "
                         rf"normal symbol `{name}'", log):
            sys.exit(f"{command[0]} did not take {name} from {stand_in}")
    print(f"{command[0]}: {sum(map(len, ours))} numbers agree, to {worst:.1e} of what they may differ by")
