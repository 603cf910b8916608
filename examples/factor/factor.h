/* What came out of one run of the program: shared by the mathematics and the page. */
#ifndef FACTOR_H
#define FACTOR_H

#include "matrix.h"
#include "share.h"

struct method {
    const char* name; /* "LU" or "Cholesky" */
    double seconds;   /* to factor and solve: the best of some times */
    double speed;     /* GFLOP/s */
    double residual;  /* |b - A x| / (|A| |x|), one-norms */
    double error;     /* largest of |x - 1|, where 1 is the solution */
    int share_count;
    struct share share[most_shares];
};

enum { most_methods = 2 };

struct run {
    char blas[4096], lapack[4096]; /* the files that computed */
    int count;
    struct method method[most_methods];
};

/* Writes the page, complete in one file: the matrix, this run, and the one before it, which may be null. Returns 0, or
   -1 with errno set. */
int write_page(const char* path, const char* name, const struct matrix* matrix, const struct run* run,
               const struct run* other);

#endif
