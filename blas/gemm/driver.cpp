// C := alpha*op(A)*op(B) + beta*C: the order of early exits, and which of the bodies serves.
#include "blas/gemm/driver.h"

#include "blas/ger.h"
#include "frame/simd.h"
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

// Everything but the tiny products, for m and n above 0.
template <class T>
void scale_and_multiply(char transa, char transb, i64 m, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* b,
                        i64 ldb, T beta, T* c, i64 ldc)
{
    constexpr const Sizes& s = sizes<T>; // the granules are the same for all kernels of a type
    const bool is_rank_one = s.rank_one && k == 1;
    // The plain path scales C, and sees to an alpha of zero, by itself.
    if (!is_rank_one && (m < s.m_unit || n < s.n_unit || k < s.k_unit))
        return plain(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);

    // C is scaled once, so that whatever follows adds to it.
    if (beta != one<T>) mscale(m, n, beta, c, ldc);
    if (alpha == zero<T>) return;
    if constexpr (s.rank_one)
        if (is_rank_one) return rank_one(transa, transb, m, n, alpha, a, lda, b, ldb, c, ldc);

    Desc<T> desc;
    zero_desc(&desc);
    get_optimal_kernel(&desc);
    desc.in_place = 1;
    desc.get_blks_size(&m, &n, &k, &desc);
    desc.version = get_kernel_version(n, k, &desc);
    blocked(transa, transb, m, n, k, alpha, a, lda, b, ldb, one<T>, c, ldc, desc.version, &desc);
}

// Out of line, so that nothing of it delays a tiny product.
template <class T> [[gnu::noinline]] void larger_product(ORV_GEMM_ARGUMENTS(T))
{
    scale_and_multiply(fold(*transa), fold(*transb), *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);
}

template <class T, Gemm<T>* small> ORV_INLINE void product(ORV_GEMM_ARGUMENTS(T))
{
    if (*m <= 0 || *n <= 0) return;
    if (*beta == one<T> && is_tiny<T>(*m, *n, *k)) small(ORV_GEMM_PASS);
    else larger_product(ORV_GEMM_PASS);
}

} // namespace

#define DRIVER(t, T)                                                                                                   \
    ORV_EXPORT Gemm<T> BLAS(t##gemm_sm_01_10);                                                                         \
    ORV_EXPORT void BLAS(x##t##gemm)(ORV_GEMM_ARGUMENTS(T)) { product<T, BLAS(t##gemm_sm_01_10)>(ORV_GEMM_PASS); }

DRIVER(s, float)
DRIVER(d, double)
DRIVER(c, cpx<float>)
DRIVER(z, cpx<double>)

} // namespace orv::gemm
