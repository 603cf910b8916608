// Sines of 2*pi*k/2^order for 0 <= k <= 2^order/4: what all twiddles of powers of two are copied from, here and in the
// core's table.
#pragma once

#include "frame/roots.h"

namespace orv {

template <class R> constexpr R base_sine(i64 k, int order) { return rounded<R>(root(k, i64{1} << order)).im; }

// A base: 2^(order - 2) + 1 sines, for order at least 2.
constexpr i64 base_sines(int order) { return (i64{1} << (order - 2)) + 1; }
template <class R> constexpr void fill_base(int order, R* sines)
{
    constexpr int longest_by_formula = 10; // the core's table is one of these
    if (order <= longest_by_formula) {
        for (i64 k = 0; k < base_sines(order); ++k) sines[k] = base_sine<R>(k, order);
        return;
    }
    RootWalk roots(i64{1} << order);
    for (i64 k = 0; k < base_sines(order); ++k) sines[k] = rounded<R>(roots.at(k)).im;
}
template <class R, int order_> struct Base {
    static constexpr int order = order_;
    R sines[base_sines(order)];
    constexpr Base() : sines() { fill_base(order, sines); }
};

} // namespace orv
