// The stages of complex transforms whose parts are in two arrays. With the parts exchanged, forward is inverse.
#include "dft/primitives/dft/kernels.h"
#include "dft/primitives/dft/stages.h"

namespace orv::dft::general {

#define PRIME(r, t)                                                                                                    \
    ORV_EXPORT void DFT(ownscrDftFwd_Prime##r##_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re,          \
                                                     t_##t* dst_im, i32 stride, i32 number, const i32* starts)         \
    {                                                                                                                  \
        transforms<r, true>(array(src_re, src_im), array(dst_re, dst_im), stride, number,                              \
                            [starts](i64 b) ORV_INLINE_LAMBDA { return i64{starts[b]}; });                             \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscrDftInv_Prime##r##_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re,          \
                                                     t_##t* dst_im, i32 stride, i32 number, const i32* starts)         \
    {                                                                                                                  \
        DFT(ownscrDftFwd_Prime##r##_##t)(src_im, src_re, dst_im, dst_re, stride, number, starts);                      \
    }
#define FACT(r, t)                                                                                                     \
    ORV_EXPORT void DFT(ownscrDftFwd_Fact##r##_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re,           \
                                                    t_##t* dst_im, i32 count, i32 blocks, const t_##t* twiddles)       \
    {                                                                                                                  \
        join<r, true, Decimation::in_time>(array(src_re, src_im), array(dst_re, dst_im), count, blocks, twiddles);     \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscrDftInv_Fact##r##_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re,           \
                                                    t_##t* dst_im, i32 count, i32 blocks, const t_##t* twiddles)       \
    {                                                                                                                  \
        DFT(ownscrDftFwd_Fact##r##_##t)(src_im, src_re, dst_im, dst_re, count, blocks, twiddles);                      \
    }
#define STAGES(t) ORV_DFT_PRIMES(PRIME, t) ORV_DFT_FACTS(FACT, t)
ORV_DFT_REAL(STAGES)

} // namespace orv::dft::general
