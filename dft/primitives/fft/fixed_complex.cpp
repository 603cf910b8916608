// Complex transforms of 1 to 32 points.
#include "dft/primitives/fft.h"
#include "dft/primitives/fft/fixed.h"

namespace orv::dft {
namespace {

template <FixedSize size> struct Fixed {
    template <class R> static void plain(const cpx<R>* src, cpx<R>* dst)
    {
        fixed_pairs<size.points, size.forward>(src, dst);
    }
    template <class R> static void scaled(R scale, const cpx<R>* src, cpx<R>* dst)
    {
        fixed_pairs<size.points, size.forward>(src, dst, scale);
    }
};

} // namespace

#define FIXED(which, t)                                                                                                \
    PRIMITIVE(2, ymps_cFFT##which##_##t, Fixed<size##which>::plain)                                                    \
    PRIMITIVE(3, ymps_cFFT##which##_scale_##t, Fixed<size##which>::scaled)
ORV_DFT_FIXED(FIXED, 32fc)
ORV_DFT_FIXED(FIXED, 64fc)

} // namespace orv::dft
