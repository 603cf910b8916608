/* Iterations for A*x = b, preconditioned by the diagonal of A. */
#ifndef METHODS_H
#define METHODS_H

#include "system.h"

/* y := A*x */
typedef void product(const orv_sparse* a, const double* x, double* y);

enum { most_iterations = 2000 };

struct run {
    const char* name;   /* of the product */
    const char* kernel; /* that computed it, or null */
    int iterations;
    int failed;             /* the method broke down: of conjugate gradients, A is not positive definite */
    double seconds;         /* of an iteration, the fastest of some runs */
    double product_seconds; /* of a product in it */
    double error;           /* largest of x, whose elements should be 1 */
    double residual[most_iterations + 1]; /* |b - A*x| / |b| by the method's own account */
};

/* Conjugate gradients for symmetric matrices, BiCGSTAB for others. */
const char* method_name(const struct system* system, int gradients);
void solve(const struct system* system, int gradients, product* multiply, const orv_sparse* a, struct run* run);

/* By orv, and by a plain loop over compressed rows. */
void multiply_by_orv(const orv_sparse* a, const double* x, double* y);
void multiply_by_loop(const orv_sparse* a, const double* x, double* y);

int write_page(const char* path, const char* name, const struct system* system, const char* method,
               const struct run* run, int runs);

#endif
