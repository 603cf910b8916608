// Rank-one update: A(0:m, 0:n) := A + alpha*x*op(y), op(y) being y^T, or y^H in gerc.
//
// Each column gets x times the one rounded factor alpha*op(y)(j). A factor of zero, and an alpha of zero, leave the
// column unread, so NaN in x does not reach it. Negative strides address a vector from its far end.
#include "blas/ger.h"

#include "frame/simd.h"
#include "frame/symbol.h"

namespace orv {
namespace {

// y(0:m) += f*x(0:m), unit strides.
template <class T> void add_multiple(i64 m, const factor<T>& f, const T* x, T* y)
{
    constexpr int lanes = vec<T>::lanes;
    i64 i = 0;
    for (; i + 2 * lanes <= m; i += 2 * lanes)
        for (int r = 0; r < 2 * lanes; r += lanes) storeu(y + i + r, loadu(y + i + r) + f * loadu(x + i + r));
    for (; i + lanes <= m; i += lanes) storeu(y + i, loadu(y + i) + f * loadu(x + i));
    for (; i < m; ++i) store_first<1>(y + i, load_first<1>(y + i) + f * load_first<1>(x + i));
}

template <bool conjugated, class T> void update(i64 m, i64 n, T alpha, const T* x, const T* y, i64 incy, T* a, i64 lda)
{
    for (i64 j = 0; j < n; ++j, a += lda) {
        const T f = alpha * (conjugated ? conj(y[j * incy]) : y[j * incy]);
        if (f != zero<T>) add_multiple(m, factor<T>(f), x, a);
    }
}

// Strided x is gathered once for all columns, in chunks that fit on a small stack.
template <bool conjugated, class T>
void rank_one(i64 m, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy, T* a, i64 lda)
{
    if (m <= 0 || n <= 0 || alpha == zero<T>) return;
    x = first(x, m, incx);
    y = first(y, n, incy);
    if (incx == 1) return update<conjugated>(m, n, alpha, x, y, incy, a, lda);
    constexpr i64 chunk = 8192 / sizeof(T);
    T gathered[chunk];
    for (i64 i = 0; i < m; i += chunk) {
        const i64 rows = min(chunk, m - i);
        for (i64 r = 0; r < rows; ++r) gathered[r] = x[(i + r) * incx];
        update<conjugated>(rows, n, alpha, gathered, y, incy, a + i, lda);
    }
}

} // namespace

template <class T> void ger(i64 m, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy, T* a, i64 lda)
{
    rank_one<false>(m, n, alpha, x, incx, y, incy, a, lda);
}
template void ger(i64, i64, double, const double*, i64, const double*, i64, double*, i64);

#define GER(name, T, conjugated)                                                                                       \
    ORV_EXPORT void BLAS(name)(const i64* m, const i64* n, const T* alpha, const T* x, const i64* incx, const T* y,    \
                               const i64* incy, T* a, const i64* lda)                                                  \
    {                                                                                                                  \
        rank_one<conjugated>(*m, *n, *alpha, x, *incx, y, *incy, a, *lda);                                             \
    }

GER(sger, float, false)
GER(dger, double, false)
GER(cgeru, cpx<float>, false)
GER(cgerc, cpx<float>, true)
GER(zgeru, cpx<double>, false)
GER(zgerc, cpx<double>, true)

} // namespace orv
