// Transforms of 1 to 32 points in two arrays. An inverse is the forward transform with both arrays exchanged.
#include "dft/primitives/fft.h"
#include "dft/primitives/fft/fixed.h"

namespace orv::dft {
namespace {

template <int n, class R, class... S>
ORV_INLINE void fixed_planes(const R* src_re, const R* src_im, R* dst_re, R* dst_im, S... scale)
{
    constexpr int lanes = vec<R>::lanes;
    using View = std::conditional_t<(n < lanes * lanes), PlaneNumbers<R>, Planes<R>>;
    fixed_transform<n, true>(View{readable(src_re), readable(src_im)}, View{dst_re, dst_im}, scale...);
}

template <FixedSize size> struct Fixed {
    template <class R> static void plain(const R* src_re, const R* src_im, R* dst_re, R* dst_im)
    {
        if constexpr (size.forward) fixed_planes<size.points>(src_re, src_im, dst_re, dst_im);
        else Fixed<{size.points}>::plain(src_im, src_re, dst_im, dst_re);
    }
    template <class R> static void scaled(R scale, const R* src_re, const R* src_im, R* dst_re, R* dst_im)
    {
        if constexpr (size.forward) fixed_planes<size.points>(src_re, src_im, dst_re, dst_im, scale);
        else Fixed<{size.points}>::scaled(scale, src_im, src_re, dst_im, dst_re);
    }
};

} // namespace

#define FIXED(which, t)                                                                                                \
    PRIMITIVE(4, ymps_crFFT##which##_##t, Fixed<size##which>::plain)                                                   \
    PRIMITIVE(5, ymps_crFFT##which##_scale_##t, Fixed<size##which>::scaled)
ORV_DFT_FIXED(FIXED, 32f)
ORV_DFT_FIXED(FIXED, 64f)

} // namespace orv::dft
