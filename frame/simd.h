// One vector register of T and the operations that kernels build on, for registers of 16 bytes. A body that goes by
// vec<T>::lanes can serve wider ones, unless two or four lanes are part of its contract, as in an order of summation. A
// few bodies want what is not offered here, and use instructions of this width themselves: git grep _mm_ shows them.
//
//   vec<float>        four lanes        vec<cpx<float>>   two pairs (re, im)
//   vec<double>       two lanes         vec<cpx<double>>  one pair
#pragma once

#include "frame/branch.h"
#include "frame/types.h"

#include <smmintrin.h>

#define ORV_INLINE [[gnu::always_inline]] inline
#define ORV_INLINE_LAMBDA __attribute__((always_inline))

namespace orv {

static_assert(vector_bytes == 16, "registers of another width need their own form of what follows");
inline constexpr i64 cache_line = 64; // bytes

template <class R> struct reg;
template <> struct reg<float> {
    using type = __m128;
};
template <> struct reg<double> {
    using type = __m128d;
};

template <class T> struct vec {
    using real = real_t<T>;
    static constexpr int lanes = vector_bytes / sizeof(T);
    typename reg<real>::type r;
};

inline bool is_aligned(const void* p, std::uintptr_t bytes) { return reinterpret_cast<std::uintptr_t>(p) % bytes == 0; }

// Memory. load and store want 16-byte alignment, loadu and storeu take any address.
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

// A register and the boundary that it was loaded from, for what can be had there more cheaply by another load.
template <class T> struct placed : vec<T> {
    const T* at;
};
template <class T> ORV_INLINE placed<T> load_placed(const T* p) { return {load(p), p}; }

// Real or imaginary parts from a boundary, each twice: by the load alone, the shuffle ports stay free.
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

// The first n lanes, from and to any address; nothing beyond them is touched, and a load leaves zeros in the others.
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

// Two reals from any address, repeated to the width of the register. A load alone: the shuffle ports stay free.
template <class T> ORV_INLINE vec<T> load_pair(const T* p)
{
    using bits = double __attribute__((may_alias, aligned(1)));
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_castpd_ps(_mm_set1_pd(*reinterpret_cast<const bits*>(p)))};
    else return loadu(p);
}

// The element at p in every lane, a pair in every pair of lanes. A load alone, too.
template <class T> ORV_INLINE vec<T> load_splat(const T* p)
{
    if constexpr (is_complex<T>) return {load_pair(reinterpret_cast<const real_t<T>*>(p)).r};
    else if constexpr (sizeof(T) == 4) return {_mm_set1_ps(*p)};
    else return {_mm_set1_pd(*p)};
}

// n elements from any address to the last n lanes, some of them again in the others; nothing before or behind is read.
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

// The register that starts at lane `offset` of low and goes on into high.
template <int offset, class T> ORV_INLINE vec<T> splice(vec<T> low, vec<T> high)
{
    constexpr int bytes = offset * sizeof(T);
    if constexpr (sizeof(real_t<T>) == 8) return {_mm_shuffle_pd(low.r, high.r, 1)};
    else if constexpr (bytes == 8) return {_mm_shuffle_ps(low.r, high.r, _MM_SHUFFLE(1, 0, 3, 2))};
    else return {_mm_castsi128_ps(_mm_alignr_epi8(_mm_castps_si128(high.r), _mm_castps_si128(low.r), bytes))};
}

// Asks for the cache line at p, wherever that is; never faults.
ORV_INLINE void prefetch(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T0); }

// The same as far as the second-level cache, where many lines at once would crowd each other out of the first.
ORV_INLINE void prefetch_second_level(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T1); }

// For one pass over a long vector: asks for the line 2 KiB behind p, far enough to hide the way from main memory and
// near enough to be still there when its turn comes.
ORV_INLINE void prefetch_ahead(const void* p) { prefetch(static_cast<const char*>(p) + 2048); }

// A register of reals at p with its lanes 0, 2, .. or its lanes 1, 3, .. repeated over their neighbours; p on 16 bytes.
// Loads alone, too.
ORV_INLINE vec<float> load_even(const float* p) { return {_mm_moveldup_ps(_mm_load_ps(p))}; }
ORV_INLINE vec<float> load_odd(const float* p) { return {_mm_movehdup_ps(_mm_load_ps(p))}; }
ORV_INLINE vec<double> load_even(const double* p) { return {_mm_set1_pd(p[0])}; }
ORV_INLINE vec<double> load_odd(const double* p) { return {_mm_set1_pd(p[1])}; }

// Elements at p, p + inc, p + 2*inc, ..., one a lane.
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

// The same, where the stride is known to be 1 when the code is compiled.
template <bool unit, class T> ORV_INLINE vec<T> load_strided(const T* p, i64 inc)
{
    if constexpr (unit) return loadu(p);
    else return gather(p, inc);
}

// The lanes of v to p, p + inc, p + 2*inc, ...
ORV_INLINE void scatter(double* p, i64 inc, vec<double> v) { _mm_storel_pd(p, v.r), _mm_storeh_pd(p + inc, v.r); }
ORV_INLINE void scatter(cpx<float>* p, i64 inc, vec<cpx<float>> v)
{
    _mm_storel_pi(reinterpret_cast<__m64*>(p), v.r), _mm_storeh_pi(reinterpret_cast<__m64*>(p + inc), v.r);
}
ORV_INLINE void scatter(cpx<double>* p, i64 /* one lane */, vec<cpx<double>> v) { storeu(p, v); }

// Two neighbouring singles as doubles.
ORV_INLINE vec<double> load_widened(const float* p) { return {_mm_cvtps_pd(load_first<2>(p).r)}; }

template <class T> ORV_INLINE T first_lane(vec<T> v)
{
    if constexpr (is_complex<T>) return {v.r[0], v.r[1]};
    else return v.r[0];
}

// The same value in every lane, or the same pair in every pair of lanes.
ORV_INLINE vec<float> splat(float a) { return {_mm_set1_ps(a)}; }
ORV_INLINE vec<double> splat(double a) { return {_mm_set1_pd(a)}; }
ORV_INLINE vec<cpx<float>> splat(cpx<float> a) { return {_mm_setr_ps(a.re, a.im, a.re, a.im)}; }
ORV_INLINE vec<cpx<double>> splat(cpx<double> a) { return {_mm_setr_pd(a.re, a.im)}; }
template <class T> ORV_INLINE vec<T> zeros()
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_setzero_ps()};
    else return {_mm_setzero_pd()};
}

// Lane by lane; sums serve complex numbers too, products and quotients are for reals.
template <class T> ORV_INLINE vec<T> operator+(vec<T> a, vec<T> b) { return {a.r + b.r}; }
template <class T> ORV_INLINE vec<T> operator-(vec<T> a, vec<T> b) { return {a.r - b.r}; }
template <class T> ORV_INLINE vec<T>& operator+=(vec<T>& a, vec<T> b) { return a = a + b; }
template <class T> ORV_INLINE vec<T> lane_product(vec<T> a, vec<T> b) { return {a.r * b.r}; }
ORV_INLINE vec<float> operator*(vec<float> a, vec<float> b) { return {a.r * b.r}; }
ORV_INLINE vec<double> operator*(vec<double> a, vec<double> b) { return {a.r * b.r}; }
ORV_INLINE vec<float> operator/(vec<float> a, vec<float> b) { return {a.r / b.r}; }
ORV_INLINE vec<double> operator/(vec<double> a, vec<double> b) { return {a.r / b.r}; }

// Whether a lane is other than zero; NaN is.
template <class T> ORV_INLINE bool any_nonzero(vec<T> a)
{
    if constexpr (sizeof(real_t<T>) == 4) return _mm_movemask_ps(_mm_cmpneq_ps(a.r, _mm_setzero_ps())) != 0;
    else return _mm_movemask_pd(_mm_cmpneq_pd(a.r, _mm_setzero_pd())) != 0;
}

// Neighbours change places: (re, im) becomes (im, re); of reals, lane 0 with 1 and lane 2 with 3.
template <class T> ORV_INLINE vec<T> swap_neighbours(vec<T> a)
{
    // The integer shuffle leaves its source alone, so no copy goes before it.
    if constexpr (sizeof(real_t<T>) == 4)
        return {_mm_castsi128_ps(_mm_shuffle_epi32(_mm_castps_si128(a.r), _MM_SHUFFLE(2, 3, 0, 1)))};
    else return {_mm_castsi128_pd(_mm_shuffle_epi32(_mm_castpd_si128(a.r), _MM_SHUFFLE(1, 0, 3, 2)))};
}

// Of reals or of parts of pairs: lanes 0, 2, .. of the first and lanes 1, 3, .. of the second.
template <class T> ORV_INLINE vec<T> alternate(vec<T> even, vec<T> odd)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_blend_ps(even.r, odd.r, 0b1010)};
    else return {_mm_blend_pd(even.r, odd.r, 0b10)};
}

// Of each pair the one part, twice.
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

// Differences of real parts, sums of imaginary parts.
template <class T> ORV_INLINE vec<T> add_sub(vec<T> a, vec<T> b)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_addsub_ps(a.r, b.r)};
    else return {_mm_addsub_pd(a.r, b.r)};
}

// Lanes 0 and 1, or 2 and 3, of the first and then of the second.
ORV_INLINE vec<float> low_halves(vec<float> a, vec<float> b) { return {_mm_movelh_ps(a.r, b.r)}; }
ORV_INLINE vec<float> high_halves(vec<float> a, vec<float> b) { return {_mm_movehl_ps(b.r, a.r)}; }

template <class T> ORV_INLINE vec<T> conj(vec<T> a)
{
    if constexpr (!is_complex<T>) return a;
    else if constexpr (sizeof(real_t<T>) == 4) return {_mm_xor_ps(a.r, _mm_setr_ps(0, -0.0f, 0, -0.0f))};
    else return {_mm_xor_pd(a.r, _mm_setr_pd(0, -0.0))};
}

// The square of lanes by lanes elements changes rows with columns.
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

// Complex numbers whose parts are the sums of neighbours: real parts of the first, imaginary parts of the second.
ORV_INLINE vec<cpx<double>> add_pairs(vec<cpx<double>> re, vec<cpx<double>> im) { return {_mm_hadd_pd(re.r, im.r)}; }
ORV_INLINE vec<cpx<float>> add_pairs(vec<cpx<float>> re, vec<cpx<float>> im)
{
    const __m128 sums = _mm_hadd_ps(re.r, im.r);
    return {_mm_shuffle_ps(sums, sums, _MM_SHUFFLE(3, 1, 2, 0))};
}

// Magnitudes of reals, or of the parts of pairs: the sign bits cleared. The mask is of the other bits, for andnot would
// overwrite the mask in place of the loaded register and cost a copy each time.
template <class T> ORV_INLINE vec<T> magnitude(vec<T> a)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_and_ps(a.r, _mm_castsi128_ps(_mm_set1_epi32(INT32_MAX)))};
    else return {_mm_and_pd(a.r, _mm_castsi128_pd(_mm_set1_epi64x(INT64_MAX)))};
}

// The sum of all elements, in lane 0 (the other lanes mean nothing): the upper half of the register is added to the
// lower half, and of four lanes then lane 1 to lane 0: (0 + 2) + (1 + 3).
ORV_INLINE vec<float> fold_lanes(vec<float> a)
{
    const __m128 half = a.r + _mm_movehl_ps(a.r, a.r);
    return {half + _mm_shuffle_ps(half, half, 1)};
}
ORV_INLINE vec<double> fold_lanes(vec<double> a) { return {a.r + _mm_unpackhi_pd(a.r, a.r)}; }
ORV_INLINE vec<cpx<float>> fold_lanes(vec<cpx<float>> a) { return {a.r + _mm_movehl_ps(a.r, a.r)}; }
ORV_INLINE vec<cpx<double>> fold_lanes(vec<cpx<double>> a) { return a; }

// A scalar made ready to multiply vectors. For complex numbers: x*re + swap(x)*(-im, im), which rounds exactly
// as the plain formula (a.re*x.re - a.im*x.im, a.re*x.im + a.im*x.re).
template <class T> struct factor {
    vec<T> value;
    explicit factor(T a, bool /* of reals nothing is conjugated */ = false) : value(splat(a)) {}
    ORV_INLINE T scalar() const { return value.r[0]; }
    ORV_INLINE vec<T> operator*(vec<T> x) const { return value * x; }
};
template <class R> struct factor<cpx<R>> {
    vec<cpx<R>> re, im;
    explicit factor(cpx<R> a) : re(splat(cpx<R>{a.re, a.re})), im(splat(cpx<R>{-a.im, a.im})) {}
    // Multiplies the conjugates of vectors: signs of x go over to the factor, so the products are the same.
    factor(cpx<R> a, bool conjugated) : factor(a)
    {
        if (conjugated) re = splat(cpx<R>{a.re, -a.re}), im = splat(cpx<R>{a.im, a.im});
    }
    ORV_INLINE cpx<R> scalar() const { return {re.r[0], im.r[1]}; }
    ORV_INLINE vec<cpx<R>> operator*(vec<cpx<R>> x) const
    {
        return lane_product(x, re) + lane_product(swap_neighbours(x), im);
    }
    // The same products and sums.
    ORV_INLINE vec<cpx<R>> operator*(placed<cpx<R>> x) const
    {
        return lane_product(load_re_twice(x.at), alternate(re, im)) +
               lane_product(load_im_twice(x.at), alternate(im, re));
    }
};

} // namespace orv
