/* Routines that are wrong in ways that a broken machine or kernel could make them. A program that preloads this library
   gets them in place of the true ones. */
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
