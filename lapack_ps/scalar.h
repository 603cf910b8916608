// What kernels of this folder ask of single numbers.
#pragma once

#include "frame/types.h"

namespace orv::lapack {

inline float square_root(float a) { return __builtin_sqrtf(a); }
inline double square_root(double a) { return __builtin_sqrt(a); }

template <class R> constexpr R real_part(R a) { return a; }
template <class R> constexpr R real_part(cpx<R> a) { return a.re; }

constexpr bool is_nan(float a) { return a != a; }
constexpr bool is_nan(double a) { return a != a; }
template <class R> constexpr bool is_nan(cpx<R> a) { return is_nan(a.re) || is_nan(a.im); }

// a/b. Complex ones by the method of Smith (Algorithm 116, Comm. ACM 5, 1962): the larger part of b is divided by, so
// neither its square overflows nor underflows.
constexpr float quotient(float a, float b) { return a / b; }
constexpr double quotient(double a, double b) { return a / b; }
template <class R> constexpr cpx<R> quotient(cpx<R> a, R b) { return {a.re / b, a.im / b}; }
template <class R> constexpr cpx<R> quotient(cpx<R> a, cpx<R> b)
{
    if (magnitude(b.re) >= magnitude(b.im)) {
        const R ratio = b.im / b.re, divisor = b.re + ratio * b.im;
        return {(a.re + a.im * ratio) / divisor, (a.im - a.re * ratio) / divisor};
    }
    const R ratio = b.re / b.im, divisor = b.im + ratio * b.re;
    return {(a.re * ratio + a.im) / divisor, (a.im * ratio - a.re) / divisor};
}
template <class T> constexpr T reciprocal(T a) { return quotient(one<T>, a); }

// |a|; of complex numbers without squares that overflow.
constexpr float modulus(float a) { return magnitude(a); }
constexpr double modulus(double a) { return magnitude(a); }
template <class R> constexpr R modulus(cpx<R> a)
{
    const R re = magnitude(a.re), im = magnitude(a.im);
    const R large = re < im ? im : re, small = re < im ? re : im;
    if (large == 0 || is_nan(small)) return large + small;
    const R ratio = small / large;
    return large * square_root(1 + ratio * ratio);
}

} // namespace orv::lapack
