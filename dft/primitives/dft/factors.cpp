// Complex transforms by factors, in the order of frequencies.
#include "dft/primitives/dft/factors.h"

namespace orv::dft::general {

#define FACTORS(t)                                                                                                     \
    ORV_EXPORT void DFT(ownscDftFwd_PrimeFact_##t)(const YmpDftSpec* spec, const t_##t* src, t_##t* dst, t_8u* work)   \
    {                                                                                                                  \
        by_factors<true>(*spec, array(src), array(dst), work);                                                         \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscDftInv_PrimeFact_##t)(const YmpDftSpec* spec, const t_##t* src, t_##t* dst, t_8u* work)   \
    {                                                                                                                  \
        by_factors<false>(*spec, array(src), array(dst), work);                                                        \
    }
ORV_DFT_PAIRS(FACTORS)

// With the parts exchanged, forward is inverse.
#define SPLIT_FACTORS(t)                                                                                               \
    ORV_EXPORT void DFT(ownscrDftFwd_PrimeFact_##t)(const YmpDftSpec* spec, const t_##t* src_re, const t_##t* src_im,  \
                                                    t_##t* dst_re, t_##t* dst_im, t_8u* work)                          \
    {                                                                                                                  \
        by_factors<true>(*spec, array(src_re, src_im), array(dst_re, dst_im), work);                                   \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscrDftInv_PrimeFact_##t)(const YmpDftSpec* spec, const t_##t* src_re, const t_##t* src_im,  \
                                                    t_##t* dst_re, t_##t* dst_im, t_8u* work)                          \
    {                                                                                                                  \
        DFT(ownscrDftFwd_PrimeFact_##t)(spec, src_im, src_re, dst_im, dst_re, work);                                   \
    }
ORV_DFT_REAL(SPLIT_FACTORS)

} // namespace orv::dft::general
