// Slots of the dispatcher that this branch needs nothing for: the symbols exist, the bodies are empty.
#include "frame/kernels/blas.h"

#define SLOT(name)                                                                                                     \
    ORV_EXPORT void BLAS(name)() {}

#define SLOTS(t)                                                                                                       \
    SLOT(t##gemm_initialize_kernel_info)                                                                               \
    SLOT(t##gemm_initialize_buffers)                                                                                   \
    SLOT(t##gemm_map_thread_to_kernel)                                                                                 \
    SLOT(x##t##gemm_internal)

SLOTS(s)
SLOTS(d)
SLOTS(c)
SLOTS(z)
SLOT(sgemm_getbufs)
SLOT(sgemm_freebufs)
SLOT(dgemm_getbufs)
SLOT(dgemm_freebufs)

// Other variants of the product that the dispatcher knows.
#define PACKED_BEFORE(t)                                                                                               \
    SLOT(t##gemm_blk_info_htn)                                                                                         \
    SLOT(t##gemm_copyan_htn)                                                                                           \
    SLOT(t##gemm_copyat_htn) SLOT(t##gemm_copybn_htn) SLOT(t##gemm_copybt_htn)
#define REAL_SLOTS(t)                                                                                                  \
    PACKED_BEFORE(t)                                                                                                   \
    SLOT(x##t##gemm_1_thr_htn)                                                                                         \
    SLOT(x##t##gemm_0_abcopied_htn)                                                                                    \
    SLOT(x##t##gemm_1_acopied_htn)                                                                                     \
    SLOT(x##t##gemm_0_bcopied_htn)                                                                                     \
    SLOT(t##gemm_blk_info_0)                                                                                           \
    SLOT(t##gemm_copybn_0)                                                                                             \
    SLOT(t##gemm_copybt_0)                                                                                             \
    SLOT(t##gemm_getbufs_0)                                                                                            \
    SLOT(t##gemm_kernel_0)                                                                                             \
    SLOT(t##gemm_kernel_0_b0)                                                                                          \
    SLOT(x##t##gemm0_brc)
#define COMPLEX_SLOTS(t)                                                                                               \
    PACKED_BEFORE(t)                                                                                                   \
    SLOT(t##gemm_copyac_htn)                                                                                           \
    SLOT(t##gemm_copybc_htn)                                                                                           \
    SLOT(x##t##gemm_acopied_htn)                                                                                       \
    SLOT(x##t##gemm_bcopied_htn)                                                                                       \
    SLOT(x##t##gemm_abcopied_htn)

REAL_SLOTS(s)
REAL_SLOTS(d)
COMPLEX_SLOTS(c)
COMPLEX_SLOTS(z)
SLOT(dgemm_blk_info_0_brc)
SLOT(dgemm_blk_info_1_brc)
SLOT(xdgemm0_1_brc)
SLOT(xdgemm1_1_brc)
SLOT(dgemm_mscale_brc)
