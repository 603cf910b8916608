// C := alpha*op(A)*op(B) + beta*C: the order of early exits, and which of the bodies serves.
#include "blas/gemm/blocks.h"
#include "blas/ger.h"
#include "frame/kernels/blas.h"
#include "frame/simd.h"

namespace orv::gemm {

void rank_one(const Product<double>& x)
{
    ger(x.m, x.n, x.alpha, x.a, is_plain(x.transa) ? 1 : x.lda, x.b, is_plain(x.transb) ? x.ldb : 1, x.c, x.ldc);
}

namespace {

// Products so small that packing, and even looking at the cache, would cost more than the sums.
template <class T> bool is_tiny(i64 m, i64 n, i64 k)
{
    constexpr i64 limit = 10;
    constexpr i64 least = is_complex<T> ? 3 : 1; // rows and columns
    return m >= least && m <= limit && n >= least && n <= limit && k >= 1 && k <= limit;
}

// Everything but the tiny products, for m and n above 0. Out of line, so that nothing of it delays those.
//
// C is scaled before anything is added to it. For a beta of 0 that takes no pass of its own: the first sums are added
// to zero, or stored, which is the same since they start at zero.
template <class T> [[gnu::noinline]] void larger_product(ORV_GEMM_ARGUMENTS(T))
{
    Product<T> x = product_of(ORV_GEMM_PASS);
    const i32 kernel = best_kernel<T>(); // the service layer is asked here, whichever way the product goes on
    constexpr const Sizes& s = sizes<T>; // the granules are the same for all kernels of a type
    if constexpr (s.rank_one)
        if (x.k == 1) {
            if (x.beta != one<T>) mscale(x.m, x.n, x.beta, x.c, x.ldc);
            if (x.alpha != zero<T>) rank_one(x);
            return;
        }
    // The plain path sees to scalars by itself.
    if (x.alpha == zero<T> || x.m < s.m_unit || x.n < s.n_unit || x.k < s.k_unit) return plain(x);

    if (x.beta != one<T> && x.beta != zero<T>) mscale(x.m, x.n, x.beta, x.c, x.ldc), x.beta = one<T>;
    if (is_better_in_place(x)) in_place(x);
    else blocked(x, kernel);
}

template <class T, Gemm<T>* small> ORV_INLINE void product(ORV_GEMM_ARGUMENTS(T))
{
    if (*m <= 0 || *n <= 0) return;
    if (*beta == one<T> && is_tiny<T>(*m, *n, *k)) small(ORV_GEMM_PASS);
    else larger_product(ORV_GEMM_PASS);
}

} // namespace

#define DRIVER(t, T)                                                                                                   \
    ORV_EXPORT void BLAS(x##t##gemm)(ORV_GEMM_ARGUMENTS(T))                                                            \
    {                                                                                                                  \
        product<T, kernels::blas::BLAS(t##gemm_sm_01_10)>(ORV_GEMM_PASS);                                              \
    }

DRIVER(s, float)
DRIVER(d, double)
DRIVER(c, cpx<float>)
DRIVER(z, cpx<double>)

} // namespace orv::gemm
