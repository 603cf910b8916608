// What butterflies compute with: complex numbers in one of three shapes, with the same operations.
//
//   cpx<R>         one number
//   vec<cpx<R>>    a register of pairs
//   split<R>       a register of real parts and one of imaginary parts
#pragma once

#include "dft/primitives/members.h"

namespace orv::dft {

template <class R> struct split {
    vec<R> re, im;
};
template <class R> ORV_INLINE split<R> operator+(split<R> a, split<R> b) { return {a.re + b.re, a.im + b.im}; }
template <class R> ORV_INLINE split<R> operator-(split<R> a, split<R> b) { return {a.re - b.re, a.im - b.im}; }
template <class R> ORV_INLINE split<R> operator*(split<R> a, split<R> b)
{
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
template <class R> ORV_INLINE split<R> exchanged(split<R> a) { return {a.im, a.re}; }

template <class C> struct number;
template <class R> struct number<cpx<R>> {
    using real = R;
    static constexpr int lanes = 1;
};
template <class R> struct number<vec<cpx<R>>> {
    using real = R;
    static constexpr int lanes = vec<cpx<R>>::lanes;
};
template <class R> struct number<split<R>> {
    using real = R;
    static constexpr int lanes = vec<R>::lanes;
};

// Times a real number.
template <class R> ORV_INLINE cpx<R> scaled_by(cpx<R> a, R by) { return by * a; }
template <class R> ORV_INLINE vec<cpx<R>> scaled_by(vec<cpx<R>> a, R by)
{
    return lane_product(a, splat(cpx<R>{by, by}));
}
template <class R> ORV_INLINE split<R> scaled_by(split<R> a, R by) { return {a.re * splat(by), a.im * splat(by)}; }

// b*r, and a + b*r and a - b*r, for r = -i forward, i inverse.
template <bool forward, class R> ORV_INLINE cpx<R> turned_by(cpx<R> b)
{
    return forward ? cpx<R>{b.im, -b.re} : cpx<R>{-b.im, b.re};
}
template <bool forward, class R> ORV_INLINE vec<cpx<R>> turned_by(vec<cpx<R>> b)
{
    return forward ? conj(swap_neighbours(b)) : swap_neighbours(conj(b));
}
template <bool forward, class C> ORV_INLINE void add_turned(C a, C b, C& sum, C& difference)
{
    const C turned = turned_by<forward>(b);
    sum = a + turned, difference = a - turned;
}
template <bool forward, class R> ORV_INLINE void add_turned(split<R> a, split<R> b, split<R>& sum, split<R>& difference)
{
    split<R>& to_minus_i = forward ? sum : difference;
    split<R>& to_i = forward ? difference : sum;
    const split<R> minus_i{a.re + b.im, a.im - b.re}, i{a.re - b.im, a.im + b.re};
    to_minus_i = minus_i, to_i = i;
}

// The conjugates of a + b*r and a - b*r.
template <bool forward, class R>
ORV_INLINE void add_turned_conjugates(vec<cpx<R>> a, vec<cpx<R>> b, vec<cpx<R>>& sum, vec<cpx<R>>& difference)
{
    const vec<cpx<R>> first = conj(a), turned = swap_neighbours(b);
    sum = forward ? first + turned : first - turned, difference = forward ? first - turned : first + turned;
}

static_assert(vector_bytes == 16, "what follows names each lane, and views.h and recombine.h shuffle four or two");

// Each lane times a constant of its own.
ORV_INLINE vec<cpx<float>> times_each(vec<cpx<float>> a, const cpx<float> (&w)[2])
{
    const vec<cpx<float>> re{_mm_setr_ps(w[0].re, w[0].re, w[1].re, w[1].re)};
    const vec<cpx<float>> im{_mm_setr_ps(-w[0].im, w[0].im, -w[1].im, w[1].im)};
    return lane_product(a, re) + lane_product(swap_neighbours(a), im);
}
ORV_INLINE split<float> times_each(split<float> a, const cpx<float> (&w)[4])
{
    return a * split<float>{{_mm_setr_ps(w[0].re, w[1].re, w[2].re, w[3].re)},
                            {_mm_setr_ps(w[0].im, w[1].im, w[2].im, w[3].im)}};
}
ORV_INLINE split<double> times_each(split<double> a, const cpx<double> (&w)[2])
{
    return a * split<double>{{_mm_setr_pd(w[0].re, w[1].re)}, {_mm_setr_pd(w[0].im, w[1].im)}};
}

// Elements at indices of their own.
ORV_INLINE vec<float> gather(const float* p, const i64 (&i)[4])
{
    const __m128 low = _mm_unpacklo_ps(_mm_load_ss(p + i[0]), _mm_load_ss(p + i[1]));
    return {_mm_movelh_ps(low, _mm_unpacklo_ps(_mm_load_ss(p + i[2]), _mm_load_ss(p + i[3])))};
}
ORV_INLINE vec<double> gather(const double* p, const i64 (&i)[2])
{
    return {_mm_loadh_pd(_mm_load_sd(p + i[0]), p + i[1])};
}

// Halves and lanes of two registers side by side: by shuffles of integers, which two ports of newer processors do,
// while one alone does those that are named for floating point.
ORV_INLINE __m128d low_halves(__m128d a, __m128d b)
{
    return _mm_castsi128_pd(_mm_unpacklo_epi64(_mm_castpd_si128(a), _mm_castpd_si128(b)));
}
ORV_INLINE __m128d high_halves(__m128d a, __m128d b)
{
    return _mm_castsi128_pd(_mm_unpackhi_epi64(_mm_castpd_si128(a), _mm_castpd_si128(b)));
}
ORV_INLINE __m128 low_halves(__m128 a, __m128 b)
{
    return _mm_castpd_ps(low_halves(_mm_castps_pd(a), _mm_castps_pd(b)));
}
ORV_INLINE __m128 high_halves(__m128 a, __m128 b)
{
    return _mm_castpd_ps(high_halves(_mm_castps_pd(a), _mm_castps_pd(b)));
}
ORV_INLINE __m128 low_lanes(__m128 a, __m128 b)
{
    return _mm_castsi128_ps(_mm_unpacklo_epi32(_mm_castps_si128(a), _mm_castps_si128(b)));
}
ORV_INLINE __m128 high_lanes(__m128 a, __m128 b)
{
    return _mm_castsi128_ps(_mm_unpackhi_epi32(_mm_castps_si128(a), _mm_castps_si128(b)));
}

// The square of lanes by lanes numbers changes rows with columns.
ORV_INLINE void exchange_axes(vec<float> (&v)[4])
{
    const __m128 a = low_lanes(v[0].r, v[1].r), b = low_lanes(v[2].r, v[3].r);
    const __m128 c = high_lanes(v[0].r, v[1].r), d = high_lanes(v[2].r, v[3].r);
    v[0].r = low_halves(a, b), v[1].r = high_halves(a, b), v[2].r = low_halves(c, d), v[3].r = high_halves(c, d);
}
template <class T> ORV_INLINE void exchange_axes(vec<T> (&v)[2])
{
    const auto low = low_halves(v[0].r, v[1].r);
    v[1].r = high_halves(v[0].r, v[1].r), v[0].r = low;
}
ORV_INLINE void exchange_axes(vec<cpx<double>> (&)[1]) {}
template <class R, int n> ORV_INLINE void exchange_axes(split<R> (&x)[n])
{
    vec<R> re[n], im[n];
    for (int i = 0; i < n; ++i) re[i] = x[i].re, im[i] = x[i].im;
    exchange_axes(re), exchange_axes(im);
    for (int i = 0; i < n; ++i) x[i] = {re[i], im[i]};
}

} // namespace orv::dft
