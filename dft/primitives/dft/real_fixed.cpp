// Real transforms of 3 to 15 points that need no record; spectra are Perm.
#include "dft/primitives/dft/kernels.h"
#include "dft/primitives/dft/real_radix.h"
#include "dft/primitives/packed.h"

namespace orv::dft::general {
namespace {

template <int n, class R> ORV_INLINE void forward(const R* src, R* dst, R scale)
{
    constexpr Places at = places(Layout::perm, n);
    const auto factor = splat(cpx<R>{scale, scale});
    R x[n]; // source and destination may be the same
    for (int j = 0; j < n; ++j) x[j] = src[j];
    real_forward<n, R>([&](int j) ORV_INLINE_LAMBDA { return x[j]; },
                       [&](auto k, pairs<R> point) ORV_INLINE_LAMBDA {
                           point = lane_product(point, factor);
                           if constexpr (k == 0 || 2 * k == n) dst[k == 0 ? 0 : at.half] = first_lane(point).re;
                           else store_first<1>(reinterpret_cast<cpx<R>*>(dst + 2 * k + at.shift), point);
                       });
}

template <int n, class R> ORV_INLINE void inverse(const R* src, R* dst, R scale)
{
    constexpr Places at = places(Layout::perm, n);
    const auto factor = splat(cpx<R>{scale, scale});
    real_inverse<n, R>(
        [&](int k) ORV_INLINE_LAMBDA {
            const auto point = k == 0 || 2 * k == n
                                   ? only_real(src[k == 0 ? 0 : at.half])
                                   : load_first<1>(reinterpret_cast<const cpx<R>*>(src + 2 * k + at.shift));
            return lane_product(point, factor);
        },
        [&](int j, R x) ORV_INLINE_LAMBDA { dst[j] = x; });
}

} // namespace

#define POINTS(n, t)                                                                                                   \
    ORV_EXPORT void DFT(ownsrDFTfwd_##n##_##t)(const t_##t* src, t_##t* dst) { forward<n, t_##t>(src, dst, 1); }       \
    ORV_EXPORT void DFT(ownsrDFTinv_##n##_##t)(const t_##t* src, t_##t* dst) { inverse<n, t_##t>(src, dst, 1); }       \
    ORV_EXPORT void DFT(ownsrDFTfwd_##n##_scale_##t)(t_##t scale, const t_##t* src, t_##t* dst)                        \
    {                                                                                                                  \
        forward<n>(src, dst, scale);                                                                                   \
    }                                                                                                                  \
    ORV_EXPORT void DFT(ownsrDFTinv_##n##_scale_##t)(t_##t scale, const t_##t* src, t_##t* dst)                        \
    {                                                                                                                  \
        inverse<n>(src, dst, scale);                                                                                   \
    }
#define SIZES(t) ORV_DFT_FIXED_SIZES(POINTS, t)
ORV_DFT_REAL(SIZES)

} // namespace orv::dft::general
