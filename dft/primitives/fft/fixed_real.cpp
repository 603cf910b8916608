// Transforms of 1 to 32 reals, to Perm and from there: neighbours go as one complex number.
#include "dft/primitives/fft.h"
#include "dft/primitives/fft/fixed.h"
#include "dft/primitives/fft/recombine.h"

namespace orv::dft {
namespace {

template <int n, bool forward, class R, class... S> ORV_INLINE void fixed_reals(const R* src, R* dst, S... scale)
{
    auto* const to = reinterpret_cast<cpx<R>*>(dst);
    const auto* from = reinterpret_cast<const cpx<R>*>(src);
    if constexpr (n > 4 && forward) {
        fixed_pairs<n / 2, true>(from, to, scale...);
        recombine_all<true, true>(to, to, n / 2, half_sines<R, log_of(n)>.table);
        *to = {dst[0] + dst[1], dst[0] - dst[1]};
    } else if constexpr (n > 4) {
        cpx<R> z[n / 2];
        recombine_all<false>(from, z, n / 2, half_sines<R, log_of(n)>.table);
        z[0] = {src[0] + src[1], src[0] - src[1]};
        fixed_pairs<n / 2, false>(z, to, scale...);
    } else {
        R x[n];
        for (int i = 0; i < n; ++i) x[i] = (src[i] * ... * scale);
        if constexpr (n == 1) dst[0] = x[0];
        else if constexpr (n == 2) dst[0] = x[0] + x[1], dst[1] = x[0] - x[1];
        else if constexpr (forward) {
            const R even = x[0] + x[2], odd = x[1] + x[3];
            dst[0] = even + odd, dst[1] = even - odd, dst[2] = x[0] - x[2], dst[3] = x[3] - x[1];
        } else {
            const R even = x[0] + x[1], odd = x[0] - x[1], re = x[2] + x[2], im = x[3] + x[3];
            dst[0] = even + re, dst[2] = even - re, dst[1] = odd - im, dst[3] = odd + im;
        }
    }
}

template <FixedSize size> struct Fixed {
    template <class R> static void plain(const R* src, R* dst) { fixed_reals<size.points, size.forward>(src, dst); }
    template <class R> static void scaled(R scale, const R* src, R* dst)
    {
        fixed_reals<size.points, size.forward>(src, dst, scale);
    }
};

} // namespace

#define FIXED(which, t)                                                                                                \
    PRIMITIVE(2, ymps_rFFT##which##_##t, Fixed<size##which>::plain)                                                    \
    PRIMITIVE(3, ymps_rFFT##which##_scale_##t, Fixed<size##which>::scaled)
ORV_DFT_FIXED(FIXED, 32f)
ORV_DFT_FIXED(FIXED, 64f)

} // namespace orv::dft
