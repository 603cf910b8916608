// Complex transforms of 3 to 15 points whose parts are in two arrays. With the parts exchanged, a forward transform is
// an inverse one.
#include "dft/primitives/dft/kernels.h"
#include "dft/primitives/dft/stages.h"

namespace orv::dft::general {

#define POINTS(n, t)                                                                                                   \
    ORV_EXPORT void DFT(ownscrDFTfwd_##n##_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re,               \
                                                t_##t* dst_im)                                                         \
    {                                                                                                                  \
        alone<n, true>(array(src_re, src_im), array(dst_re, dst_im));                                                  \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscrDFTfwd_##n##_scale_##t)(t_##t scale, const t_##t* src_re, const t_##t* src_im,           \
                                                      t_##t* dst_re, t_##t* dst_im)                                    \
    {                                                                                                                  \
        alone<n, true>(array(src_re, src_im), array(dst_re, dst_im), scale);                                           \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscrDFTinv_##n##_##t)(const t_##t* src_re, const t_##t* src_im, t_##t* dst_re,               \
                                                t_##t* dst_im)                                                         \
    {                                                                                                                  \
        DFT(ownscrDFTfwd_##n##_##t)(src_im, src_re, dst_im, dst_re);                                                   \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscrDFTinv_##n##_scale_##t)(t_##t scale, const t_##t* src_re, const t_##t* src_im,           \
                                                      t_##t* dst_re, t_##t* dst_im)                                    \
    {                                                                                                                  \
        DFT(ownscrDFTfwd_##n##_scale_##t)(scale, src_im, src_re, dst_im, dst_re);                                      \
    }
#define SIZES(t) ORV_DFT_FIXED_SIZES(POINTS, t)
ORV_DFT_REAL(SIZES)

} // namespace orv::dft::general
