// Registers of 16 bytes, through SSE 4.2. What each operation does stands in simd_any.h.
#pragma once

#include "frame/vec.h"

#include <smmintrin.h>

namespace orv {

template <> struct reg<float> {
    using type = __m128;
};
template <> struct reg<double> {
    using type = __m128d;
};
template <> struct reg<i32> {
    using type = i32 __attribute__((vector_size(16)));
};

template <class T> ORV_INLINE vec<T> load(const T* p)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_load_ps(reinterpret_cast<const float*>(p))};
    else return {_mm_load_pd(reinterpret_cast<const double*>(p))};
}
template <class T> ORV_INLINE vec<T> loadu(const T* p)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_loadu_ps(reinterpret_cast<const float*>(p))};
    else return {_mm_loadu_pd(reinterpret_cast<const double*>(p))};
}
template <class T> ORV_INLINE void store(T* p, vec<T> v)
{
    if constexpr (sizeof(real_t<T>) == 4) _mm_store_ps(reinterpret_cast<float*>(p), v.r);
    else _mm_store_pd(reinterpret_cast<double*>(p), v.r);
}
template <class T> ORV_INLINE void storeu(T* p, vec<T> v)
{
    if constexpr (sizeof(real_t<T>) == 4) _mm_storeu_ps(reinterpret_cast<float*>(p), v.r);
    else _mm_storeu_pd(reinterpret_cast<double*>(p), v.r);
}

ORV_INLINE vec<float> splat(float a) { return {_mm_set1_ps(a)}; }
ORV_INLINE vec<double> splat(double a) { return {_mm_set1_pd(a)}; }
ORV_INLINE vec<cpx<float>> splat(cpx<float> a) { return {_mm_setr_ps(a.re, a.im, a.re, a.im)}; }
ORV_INLINE vec<cpx<double>> splat(cpx<double> a) { return {_mm_setr_pd(a.re, a.im)}; }

// By the load alone, the shuffle ports stay free. Pairs of doubles fill a register, so any address will do.
template <class T> inline constexpr bool splits_on_boundaries = sizeof(real_t<T>) == 4;
ORV_INLINE vec<cpx<double>> load_re_twice(const cpx<double>* p) { return {_mm_loaddup_pd(&p->re)}; }
ORV_INLINE vec<cpx<double>> load_im_twice(const cpx<double>* p) { return {_mm_loaddup_pd(&p->im)}; }
// The compiler loads once and shuffles twice where the intrinsics for singles ask for two loads.
ORV_INLINE vec<cpx<float>> load_re_twice(const cpx<float>* p)
{
    __m128 r;
    asm("movsldup %1, %0" : "=x"(r) : "m"(*reinterpret_cast<const __m128*>(p)));
    return {r};
}
ORV_INLINE vec<cpx<float>> load_im_twice(const cpx<float>* p)
{
    __m128 r;
    asm("movshdup %1, %0" : "=x"(r) : "m"(*reinterpret_cast<const __m128*>(p)));
    return {r};
}

template <int n, class T> ORV_INLINE vec<T> load_first(const T* p)
{
    constexpr int bytes = n * sizeof(T);
    const auto* r = reinterpret_cast<const real_t<T>*>(p);
    if constexpr (bytes == vector_bytes) return loadu(p);
    else if constexpr (sizeof(*r) == 8) return {_mm_load_sd(r)};
    else if constexpr (bytes == 4) return {_mm_load_ss(r)};
    else {
        const __m128 pair = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(r)));
        if constexpr (bytes == 8) return {pair};
        else return {_mm_movelh_ps(pair, _mm_load_ss(r + 2))};
    }
}
template <int n, class T> ORV_INLINE void store_first(T* p, vec<T> v)
{
    constexpr int bytes = n * sizeof(T);
    auto* r = reinterpret_cast<real_t<T>*>(p);
    if constexpr (bytes == vector_bytes) storeu(p, v);
    else if constexpr (sizeof(*r) == 8) _mm_store_sd(r, v.r);
    else if constexpr (bytes == 4) _mm_store_ss(r, v.r);
    else {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(r), _mm_castps_si128(v.r));
        if constexpr (bytes == 12) _mm_store_ss(r + 2, _mm_movehl_ps(v.r, v.r));
    }
}

template <class T> ORV_INLINE vec<T> splat_first(vec<T> v)
{
    if constexpr (sizeof(T) == vector_bytes) return v;
    else if constexpr (sizeof(T) == 4) return {_mm_shuffle_ps(v.r, v.r, 0)};
    else if constexpr (is_complex<T>) return {_mm_movelh_ps(v.r, v.r)};
    else return {_mm_movedup_pd(v.r)};
}
template <class T> ORV_INLINE vec<T> first_only(vec<T> v)
{
    if constexpr (sizeof(T) == vector_bytes) return v;
    else if constexpr (sizeof(T) == 4) return {_mm_insert_ps(v.r, v.r, 0b1110)};
    else if constexpr (is_complex<T>) return {_mm_castsi128_ps(_mm_move_epi64(_mm_castps_si128(v.r)))};
    else return {_mm_castsi128_pd(_mm_move_epi64(_mm_castpd_si128(v.r)))};
}

template <class T> ORV_INLINE void settle(vec<T>& v) { asm volatile("" : "+x"(v.r)); }

// A load alone.
template <class T> ORV_INLINE vec<T> load_pair(const T* p)
{
    using bits = double __attribute__((may_alias, aligned(1)));
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_castpd_ps(_mm_set1_pd(*reinterpret_cast<const bits*>(p)))};
    else return loadu(p);
}

template <int n, class T> ORV_INLINE vec<T> load_last(const T* p)
{
    constexpr int bytes = n * sizeof(T);
    const auto* r = reinterpret_cast<const real_t<T>*>(p);
    if constexpr (bytes == vector_bytes) return loadu(p);
    else if constexpr (sizeof(*r) == 8) return {_mm_loaddup_pd(r)};
    else if constexpr (bytes == 4) return {_mm_load1_ps(r)};
    else if constexpr (bytes == 8) return load_pair(p);
    else return {_mm_loadh_pi(_mm_load1_ps(r), reinterpret_cast<const __m64*>(r + 1))};
}

inline constexpr bool splices_cheaply = true;
template <int offset, class T> ORV_INLINE vec<T> splice(vec<T> low, vec<T> high)
{
    constexpr int bytes = offset * sizeof(T);
    if constexpr (sizeof(real_t<T>) == 8) return {_mm_shuffle_pd(low.r, high.r, 1)};
    else if constexpr (bytes == 8) return {_mm_shuffle_ps(low.r, high.r, _MM_SHUFFLE(1, 0, 3, 2))};
    else return {_mm_castsi128_ps(_mm_alignr_epi8(_mm_castps_si128(high.r), _mm_castps_si128(low.r), bytes))};
}

// Loads alone, too.
ORV_INLINE vec<float> load_even(const float* p) { return {_mm_moveldup_ps(_mm_load_ps(p))}; }
ORV_INLINE vec<float> load_odd(const float* p) { return {_mm_movehdup_ps(_mm_load_ps(p))}; }
ORV_INLINE vec<double> load_even(const double* p) { return {_mm_set1_pd(p[0])}; }
ORV_INLINE vec<double> load_odd(const double* p) { return {_mm_set1_pd(p[1])}; }

template <int n> ORV_INLINE vec<double> load_widened_first(const float* p)
{
    return {_mm_cvtps_pd(load_first<n>(p).r)};
}

ORV_INLINE vec<float> gather(const float* p, i64 inc)
{
    const __m128 low = _mm_unpacklo_ps(_mm_load_ss(p), _mm_load_ss(p + inc));
    const __m128 high = _mm_unpacklo_ps(_mm_load_ss(p + 2 * inc), _mm_load_ss(p + 3 * inc));
    return {_mm_movelh_ps(low, high)};
}
ORV_INLINE vec<double> gather(const double* p, i64 inc) { return {_mm_loadh_pd(_mm_load_sd(p), p + inc)}; }
ORV_INLINE vec<cpx<float>> gather(const cpx<float>* p, i64 inc)
{
    return {_mm_loadh_pi(load_first<1>(p).r, reinterpret_cast<const __m64*>(p + inc))};
}
ORV_INLINE vec<cpx<double>> gather(const cpx<double>* p, i64 /* one lane */) { return loadu(p); }

ORV_INLINE void scatter(float* p, i64 inc, vec<float> v)
{
    for (int lane = 0; lane < 4; ++lane) p[lane * inc] = v.r[lane];
}
ORV_INLINE void scatter(double* p, i64 inc, vec<double> v) { _mm_storel_pd(p, v.r), _mm_storeh_pd(p + inc, v.r); }
ORV_INLINE void scatter(cpx<float>* p, i64 inc, vec<cpx<float>> v)
{
    _mm_storel_pi(reinterpret_cast<__m64*>(p), v.r), _mm_storeh_pi(reinterpret_cast<__m64*>(p + inc), v.r);
}
ORV_INLINE void scatter(cpx<double>* p, i64 /* one lane */, vec<cpx<double>> v) { storeu(p, v); }

// To collect single floats costs more than to use them one by one.
ORV_INLINE vec<double> collect(const double* a, const double* b) { return {_mm_loadh_pd(_mm_load_sd(a), b)}; }
ORV_INLINE vec<cpx<float>> collect(const cpx<float>* a, const cpx<float>* b)
{
    return {_mm_loadh_pi(load_first<1>(a).r, reinterpret_cast<const __m64*>(b))};
}
ORV_INLINE vec<cpx<double>> collect(const cpx<double>* a) { return loadu(a); }
ORV_INLINE void distribute(vec<double> v, double* a, double* b) { _mm_storel_pd(a, v.r), _mm_storeh_pd(b, v.r); }
ORV_INLINE void distribute(vec<cpx<float>> v, cpx<float>* a, cpx<float>* b)
{
    store_first<1>(a, v), _mm_storeh_pi(reinterpret_cast<__m64*>(b), v.r);
}
ORV_INLINE void distribute(vec<cpx<double>> v, cpx<double>* a) { storeu(a, v); }

template <class R, class Of> ORV_INLINE vec<R> generate(Of of)
{
    if constexpr (sizeof(R) == 4) return {_mm_setr_ps(of(0), of(1), of(2), of(3))};
    else return {_mm_setr_pd(of(0), of(1))};
}

template <class T> ORV_INLINE vec<T> swap_neighbours(vec<T> a)
{
    // The integer shuffle leaves its source alone, so no copy goes before it.
    if constexpr (sizeof(real_t<T>) == 4)
        return {_mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(a.r), _MM_SHUFFLE(2, 3, 0, 1)))};
    else return {_mm_castsi128_pd(_mm_shuffle_epi32(_mm_castpd_si128(a.r), _MM_SHUFFLE(1, 0, 3, 2)))};
}

template <class T> ORV_INLINE vec<T> alternate(vec<T> even, vec<T> odd)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_blend_ps(even.r, odd.r, 0b1010)};
    else return {_mm_blend_pd(even.r, odd.r, 0b10)};
}

template <class T> ORV_INLINE vec<T> real_parts(vec<T> a)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_moveldup_ps(a.r)};
    else return {_mm_movedup_pd(a.r)};
}
template <class T> ORV_INLINE vec<T> imaginary_parts(vec<T> a)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_movehdup_ps(a.r)};
    else return {_mm_unpackhi_pd(a.r, a.r)};
}

template <class T> ORV_INLINE vec<T> add_sub(vec<T> a, vec<T> b)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_addsub_ps(a.r, b.r)};
    else return {_mm_addsub_pd(a.r, b.r)};
}

template <class T> ORV_INLINE vec<T> conj(vec<T> a)
{
    if constexpr (!is_complex<T>) return a;
    else if constexpr (sizeof(real_t<T>) == 4) return {_mm_xor_ps(a.r, _mm_setr_ps(0, -0.0f, 0, -0.0f))};
    else return {_mm_xor_pd(a.r, _mm_setr_pd(0, -0.0))};
}

// The mask is of the other bits, for andnot would overwrite the mask in place of the loaded register and cost a copy
// each time.
template <class T> ORV_INLINE vec<T> magnitude(vec<T> a)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_and_ps(a.r, _mm_castsi128_ps(_mm_set1_epi32(INT32_MAX)))};
    else return {_mm_and_pd(a.r, _mm_castsi128_pd(_mm_set1_epi64x(INT64_MAX)))};
}
template <class T> ORV_INLINE vec<T> negative_magnitude(vec<T> a)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_or_ps(_mm_set1_ps(-0.0f), a.r)};
    else return {_mm_or_pd(_mm_set1_pd(-0.0), a.r)};
}

ORV_INLINE vec<float> maximum(vec<float> a, vec<float> b) { return {_mm_max_ps(a.r, b.r)}; }
ORV_INLINE vec<double> maximum(vec<double> a, vec<double> b) { return {_mm_max_pd(a.r, b.r)}; }
ORV_INLINE vec<float> minimum(vec<float> a, vec<float> b) { return {_mm_min_ps(a.r, b.r)}; }
ORV_INLINE vec<double> minimum(vec<double> a, vec<double> b) { return {_mm_min_pd(a.r, b.r)}; }
ORV_INLINE vec<i32> maximum(vec<i32> a, vec<i32> b)
{
    return {reinterpret_cast<reg<i32>::type>(
        _mm_max_epi32(reinterpret_cast<__m128i>(a.r), reinterpret_cast<__m128i>(b.r)))};
}
ORV_INLINE vec<float> root(vec<float> a) { return {_mm_sqrt_ps(a.r)}; }
ORV_INLINE vec<double> root(vec<double> a) { return {_mm_sqrt_pd(a.r)}; }

ORV_INLINE mask<double> unordered(vec<double> a, vec<double> b)
{
    return {reinterpret_cast<mask<double>::bits>(_mm_cmpunord_pd(a.r, b.r))};
}
template <class T> ORV_INLINE bool any_nonzero(vec<T> a)
{
    if constexpr (sizeof(real_t<T>) == 4) return _mm_movemask_ps(_mm_cmpneq_ps(a.r, _mm_setzero_ps())) != 0;
    else return _mm_movemask_pd(_mm_cmpneq_pd(a.r, _mm_setzero_pd())) != 0;
}
template <class R> ORV_INLINE int lane_bits(mask<R> a)
{
    if constexpr (sizeof(R) == 4) return _mm_movemask_ps(reinterpret_cast<__m128>(a.m));
    else return _mm_movemask_pd(reinterpret_cast<__m128d>(a.m));
}
template <class R> ORV_INLINE int first_true(mask<R> a, mask<R> b, mask<R> c, mask<R> d)
{
    const auto bits = [](mask<R> m) { return reinterpret_cast<__m128i>(m.m); };
    const __m128i low = _mm_packs_epi32(bits(a), bits(b)), high = _mm_packs_epi32(bits(c), bits(d));
    const int all = _mm_movemask_epi8(_mm_packs_epi16(low, high)); // 16 for the four registers
    return all != 0 ? __builtin_ctz(all) * vec<R>::lanes / 4 : -1;
}

ORV_INLINE void transpose(vec<float> (&v)[4]) { _MM_TRANSPOSE4_PS(v[0].r, v[1].r, v[2].r, v[3].r); }
ORV_INLINE void transpose(vec<double> (&v)[2])
{
    const __m128d low = _mm_unpacklo_pd(v[0].r, v[1].r);
    v[1].r = _mm_unpackhi_pd(v[0].r, v[1].r), v[0].r = low;
}
ORV_INLINE void transpose(vec<cpx<float>> (&v)[2])
{
    const __m128 low = _mm_movelh_ps(v[0].r, v[1].r);
    v[1].r = _mm_movehl_ps(v[1].r, v[0].r), v[0].r = low;
}
ORV_INLINE void transpose(vec<cpx<double>> (&)[1]) {}

ORV_INLINE vec<double> pair_of_each(const vec<double> (&v)[1], int) { return v[0]; }
ORV_INLINE vec<float> pair_of_each(const vec<float> (&v)[2], int k)
{
    return {k == 0 ? _mm_movelh_ps(v[0].r, v[1].r) : _mm_movehl_ps(v[1].r, v[0].r)};
}
ORV_INLINE vec<float> first_pair_and_turned(vec<cpx<float>> a)
{
    return {_mm_shuffle_ps(a.r, a.r, _MM_SHUFFLE(0, 1, 1, 0))};
}

ORV_INLINE vec<float> add_parts(vec<cpx<float>> low, vec<cpx<float>> high) { return {_mm_hadd_ps(low.r, high.r)}; }
ORV_INLINE vec<double> add_parts(vec<cpx<double>> low, vec<cpx<double>> high) { return {_mm_hadd_pd(low.r, high.r)}; }
ORV_INLINE vec<float> add_parts_sparing_shuffles(vec<cpx<float>> low, vec<cpx<float>> high)
{
    return {_mm_shuffle_ps(low.r, high.r, _MM_SHUFFLE(2, 0, 2, 0)) +
            _mm_shuffle_ps(low.r, high.r, _MM_SHUFFLE(3, 1, 3, 1))};
}
ORV_INLINE vec<double> add_parts_sparing_shuffles(vec<cpx<double>> low, vec<cpx<double>> high)
{
    // Only one of them needs the shuffle ports.
    return {_mm_blend_pd(low.r, high.r, 0b10) + _mm_shuffle_pd(low.r, high.r, 0b01)};
}
ORV_INLINE vec<cpx<double>> add_pairs(vec<cpx<double>> re, vec<cpx<double>> im) { return {add_parts(re, im).r}; }
ORV_INLINE vec<cpx<float>> add_pairs(vec<cpx<float>> re, vec<cpx<float>> im)
{
    const __m128 sums = add_parts(re, im).r;
    return {_mm_shuffle_ps(sums, sums, _MM_SHUFFLE(3, 1, 2, 0))};
}

ORV_INLINE vec<float> fold_lanes(vec<float> a)
{
    const __m128 half = a.r + _mm_movehl_ps(a.r, a.r);
    return {half + _mm_shuffle_ps(half, half, 1)};
}
ORV_INLINE vec<double> fold_lanes(vec<double> a) { return {a.r + _mm_unpackhi_pd(a.r, a.r)}; }
ORV_INLINE vec<cpx<float>> fold_lanes(vec<cpx<float>> a) { return {a.r + _mm_movehl_ps(a.r, a.r)}; }
ORV_INLINE vec<cpx<double>> fold_lanes(vec<cpx<double>> a) { return a; }

ORV_INLINE vec<i32> greatest_lane(vec<i32> a)
{
    const auto shuffled = [](vec<i32> v, auto order) ORV_INLINE_LAMBDA {
        return vec<i32>{reinterpret_cast<reg<i32>::type>(
            _mm_shuffle_epi32(reinterpret_cast<__m128i>(v.r), decltype(order)::value))};
    };
    const vec<i32> half = maximum(a, shuffled(a, std::integral_constant<int, _MM_SHUFFLE(1, 0, 3, 2)>()));
    return maximum(half, shuffled(half, std::integral_constant<int, _MM_SHUFFLE(2, 3, 0, 1)>()));
}
ORV_INLINE vec<double> greatest_lane(vec<double> a) { return maximum(a, {_mm_shuffle_pd(a.r, a.r, 1)}); }

} // namespace orv
