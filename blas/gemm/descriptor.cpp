// The descriptor that binds a call to a kernel record.
#include "blas/gemm/blocks.h"

namespace orv::gemm {

// Clears everything but m_min, n_min, k_min and scratch_factor, which choosing a kernel overwrites anyway.
template <class T> void zero_desc(Desc<T>* desc)
{
    desc->unused = desc->kernel_index = desc->capability_mask = desc->version = 0;
    desc->mb = desc->nb = desc->kb = 0;
    desc->m_unit = desc->n_unit = desc->k_unit = 0;
    desc->a = desc->b = {};
    desc->get_blks_size = nullptr;
    desc->get_bufs_size = nullptr;
    desc->get_bufs = nullptr;
    desc->copyan = desc->copyat = desc->copyac = desc->copya_ext = nullptr;
    desc->copybn = desc->copybt = desc->copybc = desc->copyb_ext = nullptr;
    desc->ker = nullptr;
    desc->scratch_buffer = nullptr;
    desc->scratch_bytes = desc->scratch_align_shift = 0;
}

// Binds a record; 1 if there is none of that index. Block sizes that the caller has set stay.
template <class T> int get_kernel(i32 index, Desc<T>* desc)
{
    if (index < 0 || index >= sizes<T>.n_kernels) return 1;
    const Record<T>& record = all_kernels(desc)[index];
    desc->kernel_index = index;
    desc->capability_mask = record.capability_mask;
    desc->m_unit = record.m_unit, desc->n_unit = record.n_unit, desc->k_unit = record.k_unit;
    desc->m_min = record.m_min, desc->n_min = record.n_min, desc->k_min = record.k_min;
    desc->get_blks_size = record.get_blks_size;
    desc->get_bufs_size = record.get_bufs_size;
    desc->get_bufs = record.get_bufs;
    desc->copyan = record.copyan, desc->copyat = record.copyat, desc->copyac = record.copyac;
    desc->copybn = record.copybn, desc->copybt = record.copybt, desc->copybc = record.copybc;
    desc->copya_ext = record.copya_ext, desc->copyb_ext = record.copyb_ext;
    desc->scratch_factor = record.scratch_factor;
    desc->ker = record.ker;
    return 0;
}

template <class T> int get_optimal_kernel(Desc<T>* desc) { return get_kernel(best_kernel<T>(), desc); }

template <class T> int get_kernel_version(i64 n, i64 k, const Desc<T>* desc)
{
    return packs_b<T>(min(n, desc->nb), min(k, desc->kb)) ? b_blocks : b_unpacked;
}

// s reads n, k and the descriptor; the others none of their arguments.
#define VERSION(t, T)                                                                                                  \
    ORV_EXPORT int BLAS(t##gemm_get_kernel_version)(const i64*, const i64*, const i64*, const Desc<T>*)                \
    {                                                                                                                  \
        return b_blocks;                                                                                               \
    }
ORV_EXPORT int BLAS(sgemm_get_kernel_version)(const i64*, const i64* n, const i64* k, const Desc<float>* desc)
{
    return get_kernel_version(*n, *k, desc);
}
VERSION(d, double)
VERSION(c, cpx<float>)
VERSION(z, cpx<double>)

#define DESCRIPTOR(t, T)                                                                                               \
    template void zero_desc(Desc<T>*);                                                                                 \
    template int get_kernel(i32, Desc<T>*);                                                                            \
    template int get_optimal_kernel(Desc<T>*);                                                                         \
    template int get_kernel_version(i64, i64, const Desc<T>*);                                                         \
    ORV_EXPORT void BLAS(t##gemm_zero_desc)(Desc<T> * desc) { zero_desc(desc); }                                       \
    ORV_EXPORT void BLAS(t##gemm_num_kernels)(i32 * out) { *out = sizes<T>.n_kernels; }                                \
    ORV_EXPORT int BLAS(t##gemm_get_kernel)(i32 index, Desc<T> * desc) { return get_kernel(index, desc); }             \
    ORV_EXPORT int BLAS(t##gemm_get_optimal_kernel)(Desc<T> * desc) { return get_optimal_kernel(desc); }               \
    ORV_EXPORT int BLAS(t##gemm_api_support)() { return 1; }                                                           \
    ORV_EXPORT void BLAS(t##gemm_set_blks_size)(i64 mb, i64 nb, i64 kb, Desc<T> * desc)                                \
    {                                                                                                                  \
        desc->mb = mb, desc->nb = nb, desc->kb = kb;                                                                   \
    }

DESCRIPTOR(s, float)
DESCRIPTOR(d, double)
DESCRIPTOR(c, cpx<float>)
DESCRIPTOR(z, cpx<double>)

} // namespace orv::gemm
