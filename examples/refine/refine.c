/* An ill-conditioned system, solved and refined twice: with residuals in plain double, and with residuals in extra
   precision. Only the second arrives at the solution.

   usage: refine [PAGE.html]    prints the table; with PAGE also draws it */
#include "refine.h"

#include <orv/orv.h>

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

/* The Hilbert matrix 1/(i + j + 1), times the least common multiple of its denominators: whole numbers, so that the
   matrix, and b = A * (1, ..., 1), are exact and the solution is known. Its condition number is 1.6e13. */
static void hilbert(double* a, double* b)
{
    double multiple = 1;
    for (int d = 2; d < 2 * n; ++d) { /* lcm(1, ..., 2n - 1), below 2^53 */
        double x = multiple, y = d;
        while (y != 0) {
            const double rest = fmod(x, y);
            x = y, y = rest;
        }
        multiple = multiple / x * d;
    }
    for (int i = 0; i < n; ++i) {
        b[i] = 0;
        for (int j = 0; j < n; ++j) b[i] += a[i + j * n] = multiple / (i + j + 1);
    }
}

/* A = L*U with rows exchanged, in double, as any program would do it. */
static void factor(double* lu, int* pivot)
{
    for (int k = 0; k < n; ++k) {
        pivot[k] = k;
        for (int i = k + 1; i < n; ++i)
            if (fabs(lu[i + k * n]) > fabs(lu[pivot[k] + k * n])) pivot[k] = i;
        for (int j = 0; j < n; ++j) {
            const double row = lu[k + j * n];
            lu[k + j * n] = lu[pivot[k] + j * n], lu[pivot[k] + j * n] = row;
        }
        for (int i = k + 1; i < n; ++i) {
            lu[i + k * n] /= lu[k + k * n];
            for (int j = k + 1; j < n; ++j) lu[i + j * n] -= lu[i + k * n] * lu[k + j * n];
        }
    }
}

static void check(orv_status status)
{
    if (status == ORV_OK) return;
    fprintf(stderr, "refine: %s\n", orv_last_error());
    exit(1);
}

static void solve(const double* lu, const int* pivot, double* x)
{
    for (int k = 0; k < n; ++k) {
        const double swapped = x[k];
        x[k] = x[pivot[k]], x[pivot[k]] = swapped;
    }
    check(orv_xblas_dtrsv_x(ORV_COLUMN_MAJOR, ORV_LOWER, ORV_NO_TRANS, ORV_UNIT_DIAG, n, 1, lu, n, x, 1,
                            ORV_PREC_DOUBLE));
    check(orv_xblas_dtrsv_x(ORV_COLUMN_MAJOR, ORV_UPPER, ORV_NO_TRANS, ORV_NON_UNIT_DIAG, n, 1, lu, n, x, 1,
                            ORV_PREC_DOUBLE));
}

/* x := x + A^-1 * (b - A*x) again and again, the residual in this precision; the largest error after each step. */
static void refine(const double* a, const double* b, const double* lu, const int* pivot, orv_prec prec, double* error)
{
    double x[n] = {0}, r[n];
    for (int step = 0; step <= steps; ++step) {
        for (int i = 0; i < n; ++i) r[i] = b[i];
        check(orv_xblas_dgemv_x(ORV_COLUMN_MAJOR, ORV_NO_TRANS, n, n, -1, a, n, x, 1, 1, r, 1, prec));
        solve(lu, pivot, r);
        error[step] = 0;
        for (int i = 0; i < n; ++i) {
            x[i] += r[i];
            error[step] = fmax(error[step], fabs(x[i] - 1));
        }
    }
}

int main(int count, char** words)
{
    double a[n * n], b[n], lu[n * n];
    struct errors error;
    int pivot[n];
    hilbert(a, b);
    for (int i = 0; i < n * n; ++i) lu[i] = a[i];
    factor(lu, pivot);
    refine(a, b, lu, pivot, ORV_PREC_DOUBLE, error.plain);
    refine(a, b, lu, pivot, ORV_PREC_EXTRA, error.extra);

    printf("a Hilbert system of %d unknowns: the largest error by the precision of the residual\n\n", n);
    printf("step     double      extra\n");
    for (int s = 0; s <= steps; ++s) printf("%4d  %9.1e  %9.1e\n", s, error.plain[s], error.extra[s]);

    const double terms[] = {1e16, 1, -1e16};
    double in_double, in_extra;
    check(orv_xblas_dsum_x(3, terms, 1, &in_double, ORV_PREC_DOUBLE));
    check(orv_xblas_dsum_x(3, terms, 1, &in_extra, ORV_PREC_EXTRA));
    printf("\n1e16 + 1 - 1e16 = %g in double, %g in extra precision\n", in_double, in_extra);
    if (count > 1 && write_page(words[1], &error) != 0) return perror(words[1]), 1;
    return 0;
}
