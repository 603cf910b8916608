// One vector register of T and the operations that kernels build on. Only this file knows the register width:
// a body written against vec<T>::lanes serves a branch for wider vectors unchanged, except where a two-lane
// or four-lane order of summation is part of its contract.
//
//   vec<float>        four lanes        vec<cpx<float>>   two pairs (re, im)
//   vec<double>       two lanes         vec<cpx<double>>  one pair
#pragma once

#include "frame/types.h"

#include <smmintrin.h>

#define ORV_INLINE [[gnu::always_inline]] inline

namespace orv {

inline constexpr int vector_bytes = 16;

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

// Neighbours change places: (re, im) becomes (im, re); of reals, lane 0 with 1 and lane 2 with 3.
template <class T> ORV_INLINE vec<T> swap_neighbours(vec<T> a)
{
    if constexpr (sizeof(real_t<T>) == 4) return {_mm_shuffle_ps(a.r, a.r, _MM_SHUFFLE(2, 3, 0, 1))};
    else return {_mm_shuffle_pd(a.r, a.r, 1)};
}

// A scalar made ready to multiply vectors. For complex numbers: x*re + swap(x)*(-im, im), which rounds exactly
// as the plain formula (a.re*x.re - a.im*x.im, a.re*x.im + a.im*x.re).
template <class T> struct factor {
    vec<T> value;
    explicit factor(T a) : value(splat(a)) {}
    ORV_INLINE vec<T> operator*(vec<T> x) const { return value * x; }
};
template <class R> struct factor<cpx<R>> {
    vec<cpx<R>> re, im;
    explicit factor(cpx<R> a) : re(splat(cpx<R>{a.re, a.re})), im(splat(cpx<R>{-a.im, a.im})) {}
    ORV_INLINE vec<cpx<R>> operator*(vec<cpx<R>> x) const
    {
        return lane_product(x, re) + lane_product(swap_neighbours(x), im);
    }
};

} // namespace orv
