#include "blas/gemm/tables.h"

namespace orv::gemm {
namespace {

using namespace kernels::blas; // all by their symbols

// Packing for external use: nothing inside the branch calls it, and the complex types have none.
template <class F> constexpr F* no_ext = nullptr;

} // namespace

#define SIZES(T)                                                                                                       \
    sizes<T>.m_unit, sizes<T>.n_unit, sizes<T>.k_unit, sizes<T>.scratch_factor, sizes<T>.m_min, sizes<T>.n_min,        \
        sizes<T>.k_min, sizes<T>.capability_mask
#define SIZING(type) BLAS(type##gemm_get_blks_size), BLAS(type##gemm_get_bufs_size), BLAS(type##gemm_get_bufs)

// For real types the operator C is T.
#define REAL(type, T, ker)                                                                                             \
    {                                                                                                                  \
        SIZES(T), SIZING(type), BLAS(type##gemm_copyan), BLAS(type##gemm_copyat), BLAS(type##gemm_copyat),             \
            BLAS(type##gemm_copybn), BLAS(type##gemm_copybt), BLAS(type##gemm_copybt), BLAS(type##gemm_##ker),         \
            BLAS(type##gemm_copya_ext), BLAS(type##gemm_copyb_ext)                                                     \
    }
#define COMPLEX(type, T, ker)                                                                                          \
    {                                                                                                                  \
        SIZES(T), SIZING(type), BLAS(type##gemm_copyan), BLAS(type##gemm_copyat), BLAS(type##gemm_copyac),             \
            BLAS(type##gemm_copybn), BLAS(type##gemm_copybt), BLAS(type##gemm_copybc), BLAS(type##gemm_##ker),         \
            no_ext<CopyA<T>>, no_ext<CopyB<T>>                                                                         \
    }

const Record<float> ORV_TABLE(s_all_gemm_ker)[] = {REAL(s, float, ker0)};
const Record<double> ORV_TABLE(d_all_gemm_ker)[] = {REAL(d, double, ker0), REAL(d, double, ker1)};
const Record<cpx<float>> ORV_TABLE(c_all_gemm_ker)[] = {COMPLEX(c, cpx<float>, ker0)};
const Record<cpx<double>> ORV_TABLE(z_all_gemm_ker)[] = {COMPLEX(z, cpx<double>, ker0)};

const i32 ORV_TABLE(s_opt_gemm_ker)[] = {0, 0};
const i32 ORV_TABLE(d_opt_gemm_ker)[] = {0, 1};
const i32 ORV_TABLE(c_opt_gemm_ker)[] = {0, 0};
const i32 ORV_TABLE(z_opt_gemm_ker)[] = {0, 0};

} // namespace orv::gemm
