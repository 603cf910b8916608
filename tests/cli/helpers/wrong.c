/* Routines that are wrong in ways that a broken machine or kernel could make them. A program that preloads this library
   gets them in place of the true ones. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <orv/orv.h>
#include <signal.h>

/* Forgets the last element of 17. */
double orv_ddot(int64_t n, const double* x, int64_t incx, const double* y, int64_t incy)
{
    double sum = 0;
    for (int64_t i = 0; i < n && i < (n == 17 ? 16 : n); ++i)
        sum += x[incx < 0 ? (i - n + 1) * incx : i * incx] * y[incy < 0 ? (i - n + 1) * incy : i * incy];
    return sum;
}

/* In float, off in its last digits: the same sum in double is not. */
double orv_dsdot(int64_t n, const float* x, int64_t incx, const float* y, int64_t incy)
{
    float sum = 0;
    for (int64_t i = 0; i < n; ++i)
        sum += x[incx < 0 ? (i - n + 1) * incx : i * incx] * y[incy < 0 ? (i - n + 1) * incy : i * incy];
    return sum;
}

/* Writes one element too many. */
orv_status orv_dcopy(int64_t n, const double* x, int64_t incx, double* y, int64_t incy)
{
    for (int64_t i = 0; i < n; ++i)
        y[incy < 0 ? (i - n + 1) * incy : i * incy] = x[incx < 0 ? (i - n + 1) * incx : i * incx];
    if (n > 0 && incy > 0) y[(n - 1) * incy + 1] = 1;
    return ORV_OK;
}

/* Reads what is not to be read. */
orv_status orv_dgemv(char trans, int64_t m, int64_t n, double alpha, const double* a, int64_t lda, const double* x,
                     int64_t incx, double beta, double* y, int64_t incy)
{
    for (int64_t i = 0; i < m; ++i) {
        double sum = 0;
        for (int64_t j = 0; j < n; ++j) sum += a[i + j * lda] * x[j * incx];
        y[i * incy] = alpha * sum + beta * y[i * incy];
    }
    (void)trans;
    return ORV_OK;
}

orv_status orv_cscal(int64_t n, orv_complex_float alpha, orv_complex_float* x, int64_t incx)
{
    (void)n, (void)alpha, (void)x, (void)incx;
    return ORV_NO_MEMORY;
}

orv_status orv_sswap(int64_t n, float* x, int64_t incx, float* y, int64_t incy)
{
    (void)n, (void)x, (void)incx, (void)y, (void)incy;
    raise(SIGSEGV);
    return ORV_OK;
}

/* Right, but for the last corner where several threads share groups of 64 rows and the last of them has one. */
orv_status orv_ssyrk(char uplo, char trans, int64_t n, int64_t k, float alpha, const float* a, int64_t lda, float beta,
                     float* c, int64_t ldc)
{
    orv_status (*const right)(char, char, int64_t, int64_t, float, const float*, int64_t, float, float*, int64_t) =
        (orv_status(*)(char, char, int64_t, int64_t, float, const float*, int64_t, float, float*, int64_t))dlsym(
            RTLD_NEXT, "orv_ssyrk");
    const int lost = n > 64 && n < 240 && n % 64 == 1 && orv_get_num_threads() > 1;
    const float corner = lost ? c[(n - 1) * (ldc + 1)] : 0;
    const orv_status status = right(uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
    if (lost) c[(n - 1) * (ldc + 1)] = corner;
    return status;
}
