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

// How a pass differs from the usual one.
enum class Way {
    usual,
    aligned, // stores to y on 16 bytes
    in_order // the reproducible twins: in one chain for each sum
};

enum class Shape { near, far, band }; // far: beyond the second-level cache

template <Way way, Shape shape, class T>
constexpr Pass pass{.direct = true,
                    .across = is_complex<T> ? Op::conjugate : Op::transpose,
                    .one_lane = way == Way::in_order,
                    .align_y = way == Way::aligned,
                    .ahead = shape == Shape::band,
                    .far = shape == Shape::far};

template <class T> bool nothing_to_do(i64 n, T alpha, T beta) { return n <= 0 || (alpha == zero<T> && beta == one<T>); }

// triangle<half>() makes the storage.
template <Way way, Shape shape, class T, class Storage>
void symv(char uplo, i64 n, T alpha, const Storage& triangle, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    if (nothing_to_do(n, alpha, beta)) return;
    x = first(x, n, incx);
    y = first(y, n, incy);
    apply_beta(n, beta, y, incy);
    if (alpha == zero<T>) return;
    const auto multiply = [&]<Half half>() {
        const OffDiagonal<half, decltype(triangle.template operator()<half>())> side{
            triangle.template operator()<half>()};
        structured_mv<pass<way, shape, T>>(side, n, n, factor<T>(alpha), x, incx, y, incy);
    };
    if (half_of(uplo) == Half::upper) multiply.template operator()<Half::upper>();
    else multiply.template operator()<Half::lower>();
}

template <Way way, class T>
void full(char uplo, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    const auto triangle = [=]<Half half>() { return FullTriangle<const T, half>{a, lda, n}; };
    if constexpr (way == Way::usual)
        if (is_far<T>(n, n / 2)) return symv<way, Shape::far>(uplo, n, alpha, triangle, x, incx, beta, y, incy);
    symv<way, Shape::near>(uplo, n, alpha, triangle, x, incx, beta, y, incy);
}

template <class T> void packed(char uplo, i64 n, T alpha, const T* a, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    const auto triangle = [=]<Half half>() { return PackedTriangle<const T, half>{a, n}; };
    symv<Way::usual, Shape::near>(uplo, n, alpha, triangle, x, incx, beta, y, incy);
}

template <Way way, class T>
void band(char uplo, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    const auto triangle = [=]<Half half>() { return BandTriangle<const T, half>{a, lda, n, k}; };
    symv<way, Shape::band>(uplo, n, alpha, triangle, x, incx, beta, y, incy);
}

} // namespace

#define FULL_ARGUMENTS(T)                                                                                              \
    const char *uplo, const i64 *n, const T *alpha, const T *a, const i64 *lda, const T *x, const i64 *incx,           \
        const T *beta, T *y, const i64 *incy
#define FULL(name, T, way)                                                                                             \
    ORV_EXPORT void BLAS(name)(FULL_ARGUMENTS(T)) { full<way>(*uplo, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy); }
#define PACKED(name, T)                                                                                                \
    ORV_EXPORT void BLAS(name)(const char* uplo, const i64* n, const T* alpha, const T* a, const T* x,                 \
                               const i64* incx, const T* beta, T* y, const i64* incy)                                  \
    {                                                                                                                  \
        packed(*uplo, *n, *alpha, a, x, *incx, *beta, y, *incy);                                                       \
    }
#define BAND_ARGUMENTS(T)                                                                                              \
    const char *uplo, const i64 *n, const i64 *k, const T *alpha, const T *a, const i64 *lda, const T *x,              \
        const i64 *incx, const T *beta, T *y, const i64 *incy
#define BAND(name, T, way)                                                                                             \
    ORV_EXPORT void BLAS(name)(BAND_ARGUMENTS(T))                                                                      \
    {                                                                                                                  \
        band<way>(*uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy);                                          \
    }

FULL(xdsymv, double, Way::usual)
FULL(chemv, cpx<float>, Way::usual)
FULL(zhemv, cpx<double>, Way::usual)
PACKED(sspmv, float)
PACKED(dspmv, double)
PACKED(chpmv, cpx<float>)
PACKED(zhpmv, cpx<double>)
BAND(ssbmv, float, Way::usual)
BAND(zhbmv, cpx<double>, Way::usual)

// The reproducible twins keep the order of structured_mv.h with one lane.
FULL(xssymv_cnr, float, Way::in_order)
BAND(dsbmv_cnr, double, Way::in_order)
BAND(chbmv_cnr, cpx<float>, Way::in_order)

ORV_EXPORT void BLAS(xssymv)(FULL_ARGUMENTS(float))
{
    if (nothing_to_do(*n, *alpha, *beta)) return;
    if (orv_serv_cbwr_get(1) != 1) return BLAS(xssymv_cnr)(uplo, n, alpha, a, lda, x, incx, beta, y, incy);
    full<Way::usual>(*uplo, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

ORV_EXPORT void BLAS(dsbmv)(BAND_ARGUMENTS(double))
{
    if (nothing_to_do(*n, *alpha, *beta)) return;
    if (orv_serv_cbwr_get(1) != 1) return BLAS(dsbmv_cnr)(uplo, n, k, alpha, a, lda, x, incx, beta, y, incy);
    // On 16 bytes, or one element away from it.
    if (is_aligned(y, 8)) band<Way::aligned>(*uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy);
    else band<Way::usual>(*uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

ORV_EXPORT void BLAS(chbmv)(BAND_ARGUMENTS(cpx<float>))
{
    if (nothing_to_do(*n, *alpha, *beta)) return;
    if (orv_serv_cbwr_get(1) != 1) return BLAS(chbmv_cnr)(uplo, n, k, alpha, a, lda, x, incx, beta, y, incy);
    band<Way::usual>(*uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

} // namespace orv::blas
