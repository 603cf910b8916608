// One vector register of T and the operations that kernels build on.
//
//   of 16 bytes   vec<float>   four lanes     vec<cpx<float>>   two pairs (re, im)
//                 vec<double>  two lanes      vec<cpx<double>>  one pair
//
// Lanes are counted from the lowest address. A body goes by vec<T>::lanes and serves any width; one that does not, for
// its order of summation is of two lanes, say, or its tile has four rows, says so by a static_assert. What registers
// of a width have instructions of their own for stands in simd_sse.h; simd_any.h has the same for all others.
#pragma once

#include "frame/vec.h"

#if ORV_VECTOR_BYTES == 16
#include "frame/simd_sse.h"
#else
#include "frame/simd_any.h"
#endif

#include <xmmintrin.h>

namespace orv {

inline constexpr i64 cache_line = 64; // bytes

inline bool is_aligned(const void* p, std::uintptr_t bytes) { return reinterpret_cast<std::uintptr_t>(p) % bytes == 0; }

// Asks for the cache line at p, wherever that is; never faults.
ORV_INLINE void prefetch(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T0); }

// The same as far as the second-level cache, where many lines at once would crowd each other out of the first.
ORV_INLINE void prefetch_second_level(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T1); }

// For one pass over a long vector: asks for the line 2 KiB behind p, far enough to hide the way from main memory and
// near enough to be still there when its turn comes.
ORV_INLINE void prefetch_ahead(const void* p) { prefetch(static_cast<const char*>(p) + 2048); }

// A register and the boundary that it was loaded from, for what can be had there more cheaply by another load.
template <class T> struct placed : vec<T> {
    const T* at;
};
template <class T> ORV_INLINE placed<T> load_placed(const T* p) { return {load(p), p}; }

// The element at p in every lane, a pair in every pair of lanes. A load alone: the shuffle ports stay free.
template <class T> ORV_INLINE vec<T> load_splat(const T* p)
{
    if constexpr (is_complex<T>) return {load_pair(reinterpret_cast<const real_t<T>*>(p)).r};
    else return splat(*p);
}

// Elements at p, p + inc, p + 2*inc, ..., where the stride is known to be 1 when the code is compiled.
template <bool unit, class T> ORV_INLINE vec<T> load_strided(const T* p, i64 inc)
{
    if constexpr (unit) return loadu(p);
    else return gather(p, inc);
}

// As many neighbouring singles as there are doubles in a register.
ORV_INLINE vec<double> load_widened(const float* p) { return load_widened_first<vec<double>::lanes>(p); }

template <class T> ORV_INLINE T first_lane(vec<T> v)
{
    if constexpr (is_complex<T>) return {v.r[0], v.r[1]};
    else return v.r[0];
}

template <class T> ORV_INLINE vec<T> zeros() { return {typename reg<real_t<T>>::type{}}; }

// Lane by lane; sums serve complex numbers too, products and quotients are for reals.
template <class T> ORV_INLINE vec<T> operator+(vec<T> a, vec<T> b) { return {a.r + b.r}; }
template <class T> ORV_INLINE vec<T> operator-(vec<T> a, vec<T> b) { return {a.r - b.r}; }
template <class T> ORV_INLINE vec<T>& operator+=(vec<T>& a, vec<T> b) { return a = a + b; }
template <class T> ORV_INLINE vec<T> lane_product(vec<T> a, vec<T> b) { return {a.r * b.r}; }
ORV_INLINE vec<float> operator*(vec<float> a, vec<float> b) { return {a.r * b.r}; }
ORV_INLINE vec<double> operator*(vec<double> a, vec<double> b) { return {a.r * b.r}; }
ORV_INLINE vec<float> operator/(vec<float> a, vec<float> b) { return {a.r / b.r}; }
ORV_INLINE vec<double> operator/(vec<double> a, vec<double> b) { return {a.r / b.r}; }

// Comparisons of reals. NaN is not equal to anything, and no greater; it is unordered.
template <class R> ORV_INLINE mask<R> operator==(vec<R> a, vec<R> b) { return {a.r == b.r}; }
template <class R> ORV_INLINE mask<R> operator>(vec<R> a, vec<R> b) { return {a.r > b.r}; }
template <class R> ORV_INLINE mask<R> operator|(mask<R> a, mask<R> b) { return {a.m | b.m}; }
template <class R> ORV_INLINE bool any(mask<R> a) { return lane_bits(a) != 0; }

// Tails of which only the program knows how long they are: body<n>() for 0 < n <= most, as load_first<n> and
// store_first<n> want it; nothing for n = 0.
template <int most, class Body> ORV_INLINE void with_count(i64 n, Body body)
{
    if constexpr (most > 0) {
        if (n == most) body.template operator()<most>();
        else with_count<most - 1>(n, body);
    }
}

// The way through n elements: body(i, registers) for blocks of so many registers, as long as one fits, then for those
// of the next number; and tail(i) for each element that is left.
template <class T, int... registers, class Body, class Tail> ORV_INLINE void each(i64 n, Body body, Tail tail)
{
    i64 i = 0;
    const auto blocks = [&]<int count>(std::integral_constant<int, count> length) ORV_INLINE_LAMBDA {
        for (; i + count * vec<T>::lanes <= n; i += count * vec<T>::lanes) body(i, length);
    };
    (blocks(std::integral_constant<int, registers>()), ...);
    for (; i < n; ++i) tail(i);
}

// a*b of whole elements, as the plain formula rounds: (a.re*b.re - a.im*b.im, a.re*b.im + a.im*b.re).
template <class T> ORV_INLINE vec<T> element_product(vec<T> a, vec<T> b)
{
    if constexpr (!is_complex<T>) return a * b;
    else return add_sub(lane_product(a, real_parts(b)), lane_product(swap_neighbours(a), imaginary_parts(b)));
}

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
