/* An ordinary program: calls of every kind of result, then two bad ones, under the library's own error routines. */
#include <cblas.h>
#include <stdio.h>

extern double ddot_(const int* n, const double* x, const int* incx, const double* y, const int* incy);
extern void dgemm_(const char* transa, const char* transb, const int* m, const int* n, const int* k,
                   const double* alpha, const double* a, const int* lda, const double* b, const int* ldb,
                   const double* beta, double* c, const int* ldc, size_t length_a, size_t length_b);

int main(void)
{
    const int n = 2, one = 1, bad = -1;
    const double x[] = {1, 2}, scale = 1;
    double y[] = {3, 4}, z[] = {0, 0};
    printf("%g", ddot_(&n, x, &one, y, &one));
    printf(" %g", cblas_ddot(2, x, 1, y, 1));
    cblas_daxpy(2, 2, x, 1, y, 1);
    printf(" %g", y[1]);
    cblas_zdotu_sub(1, x, 1, x, 1, z);
    printf(" %g\n", z[0]);
    fflush(stdout);
    dgemm_("N", "N", &bad, &n, &n, &scale, x, &n, y, &n, &scale, z, &n, 1, 1);
    cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, 2, 2, -1, 1, x, 2, y, 2, 1, z, 2);
    return 0;
}
