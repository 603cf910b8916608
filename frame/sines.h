// Sines of 2*pi*k/2^order for 0 <= k <= 2^order/4: what all twiddles are copied from, here and in the core's table.
//
// Taylor's series for at most an eighth of a circle, in the 64 bits of long double: rounded once more to a type of
// fewer bits, what comes out is within 0.51 units in the last place.
#pragma once

#include "frame/types.h"

namespace orv {

namespace detail {

// The sum of x^i/i! from i = first on, every second i, with changing signs, up to terms below 2^-67 of the first.
constexpr long double alternating_series(long double x, int first)
{
    const long double square = x * x;
    long double sum = 1;
    for (int i = first + 18; i > first; i -= 2) sum = 1 - sum * square / static_cast<long double>(i * (i - 1));
    return first == 0 ? sum : x * sum;
}

} // namespace detail

template <class R> constexpr R base_sine(i64 k, int order)
{
    constexpr long double pi = 3.14159265358979323846264338327950288L;
    const i64 n = i64{1} << order;
    const bool beyond = 8 * k > n; // an eighth
    const long double angle = static_cast<long double>(beyond ? n / 4 - k : k) * (2 * pi / static_cast<long double>(n));
    return static_cast<R>(detail::alternating_series(angle, beyond ? 0 : 1));
}

// A base: 2^(order - 2) + 1 sines, for order at least 2.
constexpr i64 base_sines(int order) { return (i64{1} << (order - 2)) + 1; }
template <class R> constexpr void fill_base(int order, R* sines)
{
    for (i64 k = 0; k < base_sines(order); ++k) sines[k] = base_sine<R>(k, order);
}
template <class R, int order_> struct Base {
    static constexpr int order = order_;
    R sines[base_sines(order)];
    constexpr Base() : sines() { fill_base(order, sines); }
};

} // namespace orv
