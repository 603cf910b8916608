// The product without work areas, for small operands and for want of memory; and the scaling of C.
#include "blas/gemm/direct.h"
#include "blas/gemm/driver.h"
#include "frame/kernels/blas.h"

namespace orv::gemm {
namespace {

// y := beta*y for `columns` neighbouring columns of m rows.
template <int columns, class T> void scale_columns(i64 m, T beta, T* c, i64 ldc)
{
    constexpr int lanes = vec<T>::lanes;
    const factor<T> f(beta);
    const bool clear = beta == zero<T>;
    i64 i = 0;
    if (clear)
        for (; i + 2 * lanes <= m; i += 2 * lanes)
            for (int j = 0; j < columns; ++j)
                for (int r = 0; r < 2; ++r) storeu(c + i + r * lanes + j * ldc, zeros<T>());
    else
        for (; i + 2 * lanes <= m; i += 2 * lanes)
            for (int j = 0; j < columns; ++j)
                for (int r = 0; r < 2; ++r) {
                    T* at = c + i + r * lanes + j * ldc;
                    storeu(at, f * loadu(at));
                }
    for (; i < m; ++i)
        for (int j = 0; j < columns; ++j) c[i + j * ldc] = clear ? zero<T> : beta * c[i + j * ldc];
}

// C += alpha*X*Y, in chunks of rows whose part of X stays in the first-level cache while all columns pass.
template <RowLayout layout, class T> ORV_INLINE void add_product(i64 m, i64 n, Operands<T>& o)
{
    constexpr i64 cached = 16384 / sizeof(T), granule = 8;
    if (m * o.k <= cached) return direct<T, layout>(m, n, o);
    const i64 chunk = max(cached / o.k / granule * granule, granule);
    for (i64 i = 0; i < m; i += chunk) {
        direct<T, layout>(min(m - i, chunk), n, o);
        o.x += chunk * (layout == RowLayout::adjacent ? 1 : o.ldx);
        o.c += chunk * o.c_row;
    }
}

} // namespace

template <class T> void mscale(i64 m, i64 n, T beta, T* c, i64 ldc)
{
    i64 j = 0;
    for (; j + 2 <= n; j += 2) scale_columns<2>(m, beta, c + j * ldc, ldc);
    if (j < n) scale_columns<1>(m, beta, c + j * ldc, ldc);
}

// C := beta*C, then C := C + alpha*sum with the sum over all of k in ascending order (direct.h). k of 0 and below, and
// an alpha of 0, add nothing and leave A and B unread. Letters come in either case.
template <class T> void plain(const Product<T>& x)
{
    if (x.m <= 0 || x.n <= 0) return;
    const bool adds = x.k > 0 && x.alpha != zero<T>, replaces = adds && x.beta == zero<T>;
    if (x.beta != one<T> && !replaces) mscale(x.m, x.n, x.beta, x.c, x.ldc);
    if (!adds) return;

    const bool na = is_plain(x.transa), nb = is_plain(x.transb);
    const bool ca = is_conjugated(x.transa), cb = is_conjugated(x.transb);
    const factor<T> f(x.alpha);
    // Lanes want rows: a flat C is computed as the transposed product.
    if (x.m < vec<T>::lanes && x.m < x.n) {
        Operands<T> o = {x.k, x.b, x.ldb, x.a, na ? x.lda : 1, na ? 1 : x.lda, x.c, x.ldc, 1, cb, ca, replaces, f};
        return nb ? add_product<RowLayout::apart>(x.n, x.m, o) : add_product<RowLayout::adjacent>(x.n, x.m, o);
    }
    Operands<T> o = {x.k, x.a, x.lda, x.b, nb ? 1 : x.ldb, nb ? x.ldb : 1, x.c, 1, x.ldc, ca, cb, replaces, f};
    return na ? add_product<RowLayout::adjacent>(x.m, x.n, o) : add_product<RowLayout::apart>(x.m, x.n, o);
}

#define PLAIN(t, T)                                                                                                    \
    template void plain(const Product<T>&);                                                                            \
    template void mscale(i64, i64, T, T*, i64);                                                                        \
    ORV_EXPORT void BLAS(t##gemm_pst)(ORV_GEMM_ARGUMENTS(T)) { plain(product_of(ORV_GEMM_PASS)); }                     \
    ORV_EXPORT void BLAS(t##gemm_mscale)(const i64* m, const i64* n, const T* beta, T* c, const i64* ldc)              \
    {                                                                                                                  \
        mscale(*m, *n, *beta, c, *ldc);                                                                                \
    }

PLAIN(s, float)
PLAIN(d, double)
PLAIN(c, cpx<float>)
PLAIN(z, cpx<double>)

} // namespace orv::gemm
