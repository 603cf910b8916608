// Integer arithmetic and the law of scale factors in 128 bits, by division: nothing in it overflows or shifts.
#pragma once

#include "tests/dft/primitive.h"

#include <limits>

namespace orv::test {

__extension__ using Exact = __int128;

template <class R> R saturated(Exact v)
{
    using limits = std::numeric_limits<R>;
    return v > limits::max() ? limits::max() : v < limits::min() ? limits::min() : static_cast<R>(v);
}

// v * 2^-factor to nearest, ties to even, saturated to R.
template <class R> R scaled(Exact v, i32 factor)
{
    for (; factor < 0 && v != 0; ++factor) {
        v *= 2;
        if (v > INT32_MAX || v < INT32_MIN) return saturated<R>(v);
    }
    if (factor <= 0) return saturated<R>(v);
    if (factor > 100) return 0;
    const Exact unit = Exact{1} << factor;
    Exact quotient = v / unit, rest = v % unit;
    if (rest < 0) rest += unit, quotient -= 1;
    if (2 * rest > unit || (2 * rest == unit && quotient % 2 != 0)) quotient += 1;
    return saturated<R>(quotient);
}

template <class T> T scaled(cpx<Exact> v, i32 factor)
{
    return {scaled<real_t<T>>(v.re, factor), scaled<real_t<T>>(v.im, factor)};
}

// Operands as numbers of 128 bits, or as what they are if they are floating.
template <class T> auto exact(T x)
{
    if constexpr (std::is_floating_point_v<real_t<T>>) return x;
    else if constexpr (is_complex<T>) return cpx<Exact>{x.re, x.im};
    else return Exact{x};
}
template <class T, class V> T result(V v, i32 factor)
{
    if constexpr (std::is_floating_point_v<real_t<T>>) return v;
    else return scaled<T>(v, factor);
}

// What reaches every edge of a type: its bounds, the roots of them, powers of two and what stands beside them.
template <class R> std::vector<R> edges()
{
    using limits = std::numeric_limits<R>;
    std::vector<R> all;
    for (const Exact around :
         {Exact{limits::min()}, Exact{limits::min() / 2}, Exact{limits::max() / 2}, Exact{limits::max()}, Exact{0},
          Exact{1} << (4 * sizeof(R)), Exact{1} << (4 * sizeof(R) - 1)})
        for (int beside = -2; beside <= 2; ++beside)
            if (around + beside >= limits::min() && around + beside <= limits::max())
                all.push_back(static_cast<R>(around + beside));
    return all;
}

// Pairs of operands: all pairs of edges; of complex numbers all pairs of pairs out of the most telling ones.
template <class T> void edge_pairs(std::vector<T>& a, std::vector<T>& b)
{
    std::vector<T> operands;
    if constexpr (is_complex<T>) {
        using limits = std::numeric_limits<real_t<T>>;
        for (const auto re : {limits::min(), limits::max()})
            for (const auto im : {limits::min(), limits::max()}) operands.push_back({re, im});
        for (const real_t<T> re :
             {limits::min(), real_t<T>(limits::min() + 1), real_t<T>(-1), real_t<T>(0), real_t<T>(3)})
            for (const real_t<T> im :
                 {limits::min(), limits::max(), real_t<T>(limits::min() / 2), real_t<T>(1), real_t<T>(0)})
                operands.push_back({re, im});
    } else operands = edges<T>();
    for (const T x : operands)
        for (const T y : operands) a.push_back(x), b.push_back(y);
}

} // namespace orv::test
