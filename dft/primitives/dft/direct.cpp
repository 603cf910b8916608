// Complex transforms by the sums of the definition, for primes up to 89.
#include "dft/primitives/dft/kernels.h"

namespace orv::dft::general {

#define DIRECT(t)                                                                                                      \
    ORV_EXPORT void DFT(ownscDft_Dir_##t)(const t_##t* src, t_##t* dst, i32 n, i32 sign, const void* table,            \
                                          t_8u* work)                                                                  \
    {                                                                                                                  \
        auto& transform = sign < 0 ? DFT(ownscDftInv_Prime_##t) : DFT(ownscDftFwd_Prime_##t);                          \
        transform(src, dst, n, 1, table, work);                                                                        \
    }
ORV_DFT_PAIRS(DIRECT)
#define SPLIT_DIRECT(t)                                                                                                \
    ORV_EXPORT void DFT(ownscrDft_Dir_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re, t_##t* dst_im,     \
                                           i32 n, i32 sign, const void* table, t_8u* work)                             \
    {                                                                                                                  \
        auto& transform = sign < 0 ? DFT(ownscrDftInv_Prime_##t) : DFT(ownscrDftFwd_Prime_##t);                        \
        transform(src_re, src_im, dst_re, dst_im, n, 1, table, work);                                                  \
    }
ORV_DFT_REAL(SPLIT_DIRECT)

} // namespace orv::dft::general
