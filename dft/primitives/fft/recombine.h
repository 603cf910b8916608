// Between the transform Z of m pairs of neighbouring reals, as if they were complex, and the spectrum X of these 2*m
// reals, for 0 < k < m and with w = exp(-2*pi*i*k/(2*m)):
//
//   forward    X[k] = (Z[k] + conj Z[m-k])/2 - i*w/2 * (Z[k] - conj Z[m-k])
//   inverse    Z[k] = (X[k] + conj X[m-k]) + i*conj(w) * (X[k] - conj X[m-k]), twice what forward started from
//
// Both ends go toward the middle. The table has half the sines of a quarter of a circle in 2*m steps; cosines are its
// other end.
#pragma once

#include "dft/primitives/fft/numbers.h"
#include "frame/sines.h"

namespace orv::dft {

ORV_INLINE vec<cpx<double>> load_backward(const cpx<double>* p) { return loadu(p); }
ORV_INLINE vec<cpx<float>> load_backward(const cpx<float>* p) { return gather(p, -1); }
ORV_INLINE void store_backward(cpx<double>* p, vec<cpx<double>> x) { storeu(p, x); }
ORV_INLINE void store_backward(cpx<float>* p, vec<cpx<float>> x) { scatter(p, -1, x); }

// A real for each number from p on, upward or downward, for both of its parts.
ORV_INLINE vec<cpx<double>> parts_upward(const double* p) { return {_mm_loaddup_pd(p)}; }
ORV_INLINE vec<cpx<double>> parts_downward(const double* p) { return {_mm_loaddup_pd(p)}; }
ORV_INLINE vec<cpx<float>> parts_upward(const float* p)
{
    const __m128 pair = load_first<2>(p).r;
    return {_mm_unpacklo_ps(pair, pair)};
}
ORV_INLINE vec<cpx<float>> parts_downward(const float* p)
{
    const __m128 pair = load_first<2>(p - 1).r;
    return {_mm_shuffle_ps(pair, pair, _MM_SHUFFLE(0, 0, 1, 1))};
}

// One step: a is the number at k, b the one at m - k. Inverse is the same with both exchanged, up to the factor.
template <bool forward, class R>
ORV_INLINE void recombine(vec<cpx<R>>& a, vec<cpx<R>>& b, vec<cpx<R>> half_sine, vec<cpx<R>> half_cosine)
{
    if constexpr (!forward) std::swap(a, b);
    const vec<cpx<R>> other = conj(b);
    vec<cpx<R>> sum = a + other, difference = a - other;
    if constexpr (forward) sum = lane_product(sum, splat(cpx<R>{R(0.5), R(0.5)}));
    else difference += difference;
    const vec<cpx<R>> turned =
        add_sub(lane_product(difference, half_sine), lane_product(swap_neighbours(difference), half_cosine));
    a = sum - turned, b = conj(sum + turned);
    if constexpr (!forward) std::swap(a, b);
}

// fresh: the numbers have just been stored. A load across two stores would wait for both; one number lies within one.
template <bool forward, bool fresh = false, class R>
ORV_INLINE void recombine_all(const cpx<R>* from, cpx<R>* to, i64 m, const R* half_sines)
{
    constexpr i64 lanes = vec<cpx<R>>::lanes;
    const R* const cosines = half_sines + m / 2;
    i64 k = 1;
    for (; k + lanes <= m - k - lanes + 1; k += lanes) {
        vec<cpx<R>> a = fresh ? gather(from + k, 1) : loadu(from + k), b = load_backward(from + m - k);
        recombine<forward>(a, b, parts_upward(half_sines + k), parts_downward(cosines - k));
        storeu(to + k, a), store_backward(to + m - k, b);
    }
    for (; k <= m - k; ++k) {
        const R s = half_sines[k], c = cosines[-k];
        vec<cpx<R>> a = load_first<1>(from + k), b = load_first<1>(from + m - k);
        recombine<forward>(a, b, splat(cpx<R>{s, s}), splat(cpx<R>{c, c}));
        store_first<1>(to + k, a), store_first<1>(to + m - k, b);
    }
}

// The table for 2^order reals, where they are few.
template <class R, int order> struct HalfSines {
    R table[base_sines(order)];
    constexpr HalfSines() : table()
    {
        for (i64 k = 0; k < base_sines(order); ++k) table[k] = base_sine<R>(k, order) / 2;
    }
};
template <class R, int order> inline constexpr HalfSines<R, order> half_sines;

} // namespace orv::dft
