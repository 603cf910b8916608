// Stages of real transforms of odd length. A spectrum of n points stands among n reals: Re X[k] at k, Im X[k] at n-k.
// So column q of a stage and its conjugate are in the places q and count-q of the rows, before it and behind.
#pragma once

#include "dft/primitives/dft/real_radix.h"

namespace orv::dft::general {

// Pairs out of parts that go up from re and down from im, and back.
template <int n> ORV_INLINE pairs<double> joined(const double* re, const double* im)
{
    static_assert(n == 1);
    return {_mm_loadh_pd(_mm_load_sd(re), im)};
}
template <int n> ORV_INLINE void put_apart(double* re, double* im, pairs<double> x)
{
    static_assert(n == 1);
    _mm_storel_pd(re, x.r), _mm_storeh_pd(im, x.r);
}
template <int n> ORV_INLINE pairs<float> joined(const float* re, const float* im)
{
    const vec<float> up = load_first<n>(re), down = load_first<n>(im - (n - 1));
    return {_mm_unpacklo_ps(up.r, n == 1 ? down.r : swap_neighbours(down).r)};
}
template <int n> ORV_INLINE void put_apart(float* re, float* im, pairs<float> x)
{
    const pairs<float> parts{_mm_shuffle_ps(x.r, x.r, n == 1 ? _MM_SHUFFLE(1, 1, 0, 0) : _MM_SHUFFLE(1, 3, 2, 0))};
    store_first<n>(re, vec<float>{parts.r}), store_first<n>(im - (n - 1), vec<float>{second_pair(parts).r});
}

// The rows of a block: the spectra of its transforms.
template <class R> struct HalfRows {
    R* p;
    i64 count;
    template <int n> ORV_INLINE pairs<R> get(i64 j, i64 q) const
    {
        return joined<n>(p + j * count + q, p + j * count + count - q);
    }
    template <int n> ORV_INLINE void put(i64 j, i64 q, pairs<R> x) const
    {
        put_apart<n>(p + j * count + q, p + j * count + count - q, x);
    }
};

// The block as one spectrum: point k*count + q of column q, or the conjugate of it where that is beyond the middle.
template <class R> struct HalfSpectrum {
    R* p;
    i64 count, radix;
    R* low(i64 k, i64 q) const { return p + k * count + q; }
    R* high(i64 k, i64 q) const { return p + (radix - k) * count - q; }
    template <int n> ORV_INLINE pairs<R> get(i64 k, i64 q) const
    {
        if (2 * k < radix) return joined<n>(low(k, q), high(k, q));
        return conj(swap_neighbours(joined<n>(low(k, q), high(k, q))));
    }
    template <int n> ORV_INLINE void put(i64 k, i64 q, pairs<R> x) const
    {
        if (2 * k < radix) put_apart<n>(low(k, q), high(k, q), x);
        else put_apart<n>(low(k, q), high(k, q), swap_neighbours(conj(x)));
    }
};

// A spectrum of n points whose places are stride apart.
template <class R> struct HalfPoints {
    R* p;
    i64 n, stride;
    ORV_INLINE pairs<R> get(i64 k) const
    {
        if (k == 0) return only_real(p[0]);
        const pairs<R> x = joined<1>(p + min(k, n - k) * stride, p + max(k, n - k) * stride);
        return 2 * k < n ? x : conj(x);
    }
    ORV_INLINE void put(i64 k, pairs<R> x) const
    {
        if (k == 0) p[0] = first_lane(x).re;
        else put_apart<1>(p + min(k, n - k) * stride, p + max(k, n - k) * stride, 2 * k < n ? x : conj(x));
    }
};

} // namespace orv::dft::general
