// Element types and integer widths that every kernel shares.
#pragma once

#include <cstdint>

namespace orv {

using i32 = std::int32_t;
using i64 = std::int64_t;
using u64 = std::uint64_t;

// A pair with the real part first, laid out as Fortran and C lay out a complex number. The standard
// library's complex type would bring run-time calls for its special-value rules; kernels use plain formulas.
template <class R> struct cpx {
    R re, im;
};

template <class R> constexpr cpx<R> operator+(cpx<R> a, cpx<R> b) { return {a.re + b.re, a.im + b.im}; }
template <class R> constexpr cpx<R> operator-(cpx<R> a, cpx<R> b) { return {a.re - b.re, a.im - b.im}; }
template <class R> constexpr cpx<R> operator-(cpx<R> a) { return {-a.re, -a.im}; }
template <class R> constexpr cpx<R> operator*(cpx<R> a, cpx<R> b)
{
    return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
template <class R> constexpr cpx<R> operator*(R a, cpx<R> b) { return {a * b.re, a * b.im}; }
template <class R> constexpr cpx<R>& operator+=(cpx<R>& a, cpx<R> b) { return a = a + b; }
template <class R> constexpr cpx<R>& operator-=(cpx<R>& a, cpx<R> b) { return a = a - b; }
template <class R> constexpr cpx<R>& operator*=(cpx<R>& a, cpx<R> b) { return a = a * b; }
template <class R> constexpr bool operator==(cpx<R> a, cpx<R> b) { return a.re == b.re && a.im == b.im; }
template <class R> constexpr bool operator!=(cpx<R> a, cpx<R> b) { return !(a == b); }

constexpr float conj(float a) { return a; }
constexpr double conj(double a) { return a; }
template <class R> constexpr cpx<R> conj(cpx<R> a) { return {a.re, -a.im}; }

constexpr float magnitude(float a) { return __builtin_fabsf(a); }
constexpr double magnitude(double a) { return __builtin_fabs(a); }

template <class T> struct element {
    using real = T;
    static constexpr bool is_complex = false;
    static constexpr T make(T re) { return re; }
};
template <class R> struct element<cpx<R>> {
    using real = R;
    static constexpr bool is_complex = true;
    static constexpr cpx<R> make(R re) { return {re, R(0)}; }
};

template <class T> using real_t = typename element<T>::real;
template <class T> inline constexpr bool is_complex = element<T>::is_complex;
template <class T> inline constexpr T zero = element<T>::make(0);
template <class T> inline constexpr T one = element<T>::make(1);

constexpr i64 min(i64 a, i64 b) { return a < b ? a : b; }
constexpr i64 max(i64 a, i64 b) { return a > b ? a : b; }
constexpr i64 round_up(i64 n, i64 granule) { return (n + granule - 1) / granule * granule; }

// Option letters come in either case; clearing bit 5 folds them.
constexpr char fold(char letter) { return static_cast<char>(letter & 0xdf); }

// Logical element 0 of a vector of n elements: a negative step addresses the vector from its far end.
template <class T> constexpr T* first(T* x, i64 n, i64 inc) { return inc < 0 ? x + (1 - n) * inc : x; }

} // namespace orv
