// Complex transforms of 3 to 15 points that need no record.
#include "dft/primitives/dft/kernels.h"
#include "dft/primitives/dft/stages.h"

namespace orv::dft::general {

#define POINTS(n, dir, forward, t)                                                                                     \
    ORV_EXPORT void DFT(ownscDFT##dir##_##n##_##t)(const t_##t* src, t_##t* dst)                                       \
    {                                                                                                                  \
        alone<n, forward>(array(src), array(dst));                                                                     \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownscDFT##dir##_##n##_scale_##t)(real_t<t_##t> scale, const t_##t* src, t_##t* dst)            \
    {                                                                                                                  \
        alone<n, forward>(array(src), array(dst), scale);                                                              \
    }
#define DIRECTIONS(t)                                                                                                  \
    ORV_DFT_FIXED_SIZES(POINTS, fwd, true, t)                                                                          \
    ORV_DFT_FIXED_SIZES(POINTS, inv, false, t)
ORV_DFT_PAIRS(DIRECTIONS)

} // namespace orv::dft::general
