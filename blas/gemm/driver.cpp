// C := alpha*op(A)*op(B) + beta*C: the order of early exits, and which of the bodies serves.
#include "blas/gemm/driver.h"

#include "blas/ger.h"
#include "frame/symbol.h"

namespace orv::gemm {

void rank_one(char transa, char transb, i64 m, i64 n, double alpha, const double* a, i64 lda, const double* b, i64 ldb,
              double* c, i64 ldc)
{
    ger(m, n, alpha, a, is_plain(transa) ? 1 : lda, b, is_plain(transb) ? ldb : 1, c, ldc);
}

namespace {

// Products so small that packing, and even looking at the cache, would cost more than the sums.
template <class T> bool is_tiny(i64 m, i64 n, i64 k)
{
    constexpr i64 limit = 10;
    constexpr i64 least = is_complex<T> ? 3 : 1; // rows and columns
    return m >= least && m <= limit && n >= least && n <= limit && k >= 1 && k <= limit;
}

template <class T>
void product(char transa, char transb, i64 m, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* b, i64 ldb, T beta,
             T* c, i64 ldc)
{
    transa = fold(transa), transb = fold(transb);
    if (m <= 0 || n <= 0) return;
    if (beta == one<T> && is_tiny<T>(m, n, k)) return small(&transa, &transb, m, n, k, alpha, a, lda, b, ldb, c, ldc);

    Desc<T> desc;
    zero_desc(&desc);
    get_optimal_kernel(&desc);

    // C is scaled once, so that whatever follows adds to it.
    if (beta != one<T>) mscale(m, n, beta, c, ldc);
    if (alpha == zero<T>) return;
    if constexpr (sizes<T>.rank_one)
        if (k == 1) return rank_one(transa, transb, m, n, alpha, a, lda, b, ldb, c, ldc);
    if (m < desc.m_unit || n < desc.n_unit || k < desc.k_unit)
        return plain(transa, transb, m, n, k, alpha, a, lda, b, ldb, one<T>, c, ldc);

    desc.get_blks_size(&m, &n, &k, &desc);
    desc.version = get_kernel_version(n, k, &desc);
    blocked(transa, transb, m, n, k, alpha, a, lda, b, ldb, one<T>, c, ldc, desc.version, &desc);
}

} // namespace

#define DRIVER(t, T)                                                                                                   \
    ORV_EXPORT void BLAS(x##t##gemm)(const char* transa, const char* transb, const i64* m, const i64* n, const i64* k, \
                                     const T* alpha, const T* a, const i64* lda, const T* b, const i64* ldb,           \
                                     const T* beta, T* c, const i64* ldc)                                              \
    {                                                                                                                  \
        product(*transa, *transb, *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);                               \
    }

DRIVER(s, float)
DRIVER(d, double)
DRIVER(c, cpx<float>)
DRIVER(z, cpx<double>)

} // namespace orv::gemm
