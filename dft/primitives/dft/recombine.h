// Between the transform of m pairs of neighbouring reals and the spectrum of the reals, in Perm.
#pragma once

#include "dft/primitives/packed.h"
#include "frame/simd.h"

namespace orv::dft::general {

// Points k and m-k of both spectra at once, and of forward and of inverse: a + b and w*(a - b), where b is the other
// point's conjugate. In place or not; data is read and written as pairs at 2*k + shift.
template <bool forward, class R> void recombine(const R* src, i64 src_shift, R* dst, i64 m, const cpx<R>* twiddles)
{
    using T = cpx<R>;
    constexpr int width = vec<cpx<R>>::lanes;
    const auto* const from = reinterpret_cast<const T*>(src + src_shift);
    auto* const to = reinterpret_cast<T*>(dst);
    const auto half = splat(T{R(0.5), R(0.5)});
    const auto both = [=](vec<cpx<R>> x, vec<cpx<R>> y, vec<cpx<R>> w, vec<cpx<R>>& up,
                          vec<cpx<R>>& down) ORV_INLINE_LAMBDA {
        const auto a = x, b = conj(y), difference = a - b;
        auto sum = a + b;
        if (forward) sum = lane_product(sum, half);
        const auto turned = add_sub(lane_product(difference, real_parts(w)),
                                    lane_product(swap_neighbours(difference), imaginary_parts(w)));
        up = sum + turned, down = conj(sum - turned);
    };
    i64 k = 1;
    for (; k + width <= m - k - width + 1; k += width) {
        vec<cpx<R>> up, down;
        both(loadu(from + k), gather(from + m - k, -1), loadu(twiddles + k), up, down);
        storeu(to + k, up), scatter(to + m - k, -1, down);
    }
    for (; 2 * k <= m; ++k) {
        vec<cpx<R>> up, down;
        both(load_first<1>(from + k), load_first<1>(from + m - k), load_first<1>(twiddles + k), up, down);
        store_first<1>(to + m - k, down), store_first<1>(to + k, up);
    }
}
template <class R> void recombine_forward(const R* src, R* dst, i32 m, const cpx<R>* twiddles)
{
    const R sum = src[0] + src[1], difference = src[0] - src[1];
    recombine<true>(src, 0, dst, m, twiddles);
    dst[0] = sum, dst[1] = difference;
}
template <class R> void recombine_inverse(const R* src, Places at, R* dst, i64 m, const cpx<R>* twiddles)
{
    const R first = src[0], last = src[at.half];
    recombine<false>(src, at.shift, dst, m, twiddles);
    dst[0] = first + last, dst[1] = first - last;
}

} // namespace orv::dft::general
