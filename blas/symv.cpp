// Products of a symmetric or Hermitian matrix and a vector: y := alpha*A*x + beta*y.
//
// One triangle of A is read, U the upper, any other letter the lower one: columns lda apart, packed without gaps, or k
// diagonals beside the main one. The imaginary part of a Hermitian diagonal is not read and counts as zero.
//
// n = 0, and alpha = 0 with beta = 1, leave y alone. beta is applied first, in a pass of its own (beta.h); alpha = 0
// then ends the call with A and x unread. Negative strides address a vector from its far end. NaN in what is read of A
// or x reaches y. No memory is taken but some 22 KiB of the stack where a stride is not 1.
#include "blas/beta.h"
#include "blas/structured_mv.h"
#include "frame/kernels/blas.h"
#include "frame/serv.h"

namespace orv::blas {
namespace {

template <class T> bool nothing_to_do(i64 n, T alpha, T beta) { return n <= 0 || (alpha == zero<T> && beta == one<T>); }

template <Pass pass, class T>
ORV_INLINE void symv(Half half, i64 n, T alpha, const Storage<const T>& triangle, const T* x, i64 incx, T beta, T* y,
                     i64 incy, Manner manner)
{
    if (nothing_to_do(n, alpha, beta)) return;
    x = first(x, n, incx);
    y = first(y, n, incy);
    apply_beta(n, beta, y, incy);
    if (alpha == zero<T>) return;
    structured_mv<pass>(off_diagonal(half, triangle), n, alpha, x, incx, y, incy, manner);
}

template <Pass pass, class T>
void full(char uplo, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    const Half half = half_of(uplo);
    symv<pass>(half, n, alpha, full_triangle(half, a, lda, n), x, incx, beta, y, incy,
               {.ahead = is_far<T>(n, n / 2) ? Ahead::further_on : Ahead::nothing});
}

template <class T> void packed(char uplo, i64 n, T alpha, const T* a, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    const Half half = half_of(uplo);
    symv<pass_of_both<T>>(half, n, alpha, packed_triangle(half, a, n), x, incx, beta, y, incy, {});
}

template <Pass pass, class T>
void band(char uplo, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy,
          bool on_boundary = false)
{
    const Half half = half_of(uplo);
    symv<pass>(half, n, alpha, band_triangle(half, a, lda, n, k), x, incx, beta, y, incy,
               {.on_boundary = on_boundary, .ahead = Ahead::next_strip});
}

} // namespace

#define FULL_ARGUMENTS(T)                                                                                              \
    const char *uplo, const i64 *n, const T *alpha, const T *a, const i64 *lda, const T *x, const i64 *incx,           \
        const T *beta, T *y, const i64 *incy
#define FULL(name, T, pass)                                                                                            \
    ORV_EXPORT void BLAS(name)(FULL_ARGUMENTS(T))                                                                      \
    {                                                                                                                  \
        full<pass<T>>(*uplo, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);                                          \
    }
#define PACKED(name, T)                                                                                                \
    ORV_EXPORT void BLAS(name)(const char* uplo, const i64* n, const T* alpha, const T* a, const T* x,                 \
                               const i64* incx, const T* beta, T* y, const i64* incy)                                  \
    {                                                                                                                  \
        packed(*uplo, *n, *alpha, a, x, *incx, *beta, y, *incy);                                                       \
    }
#define BAND_ARGUMENTS(T)                                                                                              \
    const char *uplo, const i64 *n, const i64 *k, const T *alpha, const T *a, const i64 *lda, const T *x,              \
        const i64 *incx, const T *beta, T *y, const i64 *incy
#define BAND(name, T, pass)                                                                                            \
    ORV_EXPORT void BLAS(name)(BAND_ARGUMENTS(T))                                                                      \
    {                                                                                                                  \
        band<pass<T>>(*uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy);                                      \
    }

FULL(xdsymv, double, pass_of_both)
FULL(chemv, cpx<float>, pass_of_both)
FULL(zhemv, cpx<double>, pass_of_both)
PACKED(sspmv, float)
PACKED(dspmv, double)
PACKED(chpmv, cpx<float>)
PACKED(zhpmv, cpx<double>)
BAND(ssbmv, float, pass_of_both)
BAND(zhbmv, cpx<double>, pass_of_both)

// The reproducible twins keep the order of structured_mv.h with one lane.
FULL(xssymv_cnr, float, pass_in_order)
BAND(dsbmv_cnr, double, pass_in_order)
BAND(chbmv_cnr, cpx<float>, pass_in_order)

ORV_EXPORT void BLAS(xssymv)(FULL_ARGUMENTS(float))
{
    if (nothing_to_do(*n, *alpha, *beta)) return;
    if (orv_serv_cbwr_get(1) != 1) return BLAS(xssymv_cnr)(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
    full<pass_of_both<float>>(*uplo, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

ORV_EXPORT void BLAS(dsbmv)(BAND_ARGUMENTS(double))
{
    if (nothing_to_do(*n, *alpha, *beta)) return;
    if (orv_serv_cbwr_get(1) != 1) return BLAS(dsbmv_cnr)(uplo, n, k, alpha, a, lda, x, incx, beta, y, incy);
    // On 16 bytes, or one element away from it.
    band<pass_of_both<double>>(*uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy, is_aligned(y, 8));
}

ORV_EXPORT void BLAS(chbmv)(BAND_ARGUMENTS(cpx<float>))
{
    if (nothing_to_do(*n, *alpha, *beta)) return;
    if (orv_serv_cbwr_get(1) != 1) return BLAS(chbmv_cnr)(uplo, n, k, alpha, a, lda, x, incx, beta, y, incy);
    band<pass_of_both<cpx<float>>>(*uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

} // namespace orv::blas
