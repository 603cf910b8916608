// Transforms of a few reals, and of an odd prime number of them: only the points 0 to n/2 of a spectrum are formed, or
// read.
//
// A register takes a sum and a difference of the definition together: (x[j] + x[n-j], x[n-j] - x[j]) times (cos, sin)
// adds to the real and to the imaginary part of a point. Back, a point's parts times (cos, sin) add to what x[j] and
// x[n-j] share, and to that in which they differ.
#pragma once

#include "dft/primitives/dft/any_radix.h"

namespace orv::dft::general {

// (x + y, y - x) in each pair.
template <class R> ORV_INLINE pairs<R> sum_and_difference(R x, R y)
{
    return swap_neighbours(add_sub(splat(cpx<R>{y, y}), splat(cpx<R>{x, x})));
}
template <class R> ORV_INLINE pairs<R> only_real(R x) { return splat(cpx<R>{x, 0}); }

// X of get(j) = x[j] to put(k, (Re X[k], Im X[k])) for 0 <= k <= n/2; k are constants.
template <int n, class R, class Get, class Put> ORV_INLINE void real_forward(Get get, Put put)
{
    constexpr int inner = (n - 1) / 2;
    constexpr bool even = n % 2 == 0;
    const auto first = only_real<R>(get(0)), middle = only_real<R>(even ? get(n / 2) : R(0));
    pairs<R> v[inner];
    steps<inner>([&](auto j) ORV_INLINE_LAMBDA { v[j] = sum_and_difference<R>(get(j + 1), get(n - 1 - j)); });
    steps<n / 2 + 1>([&](auto k) ORV_INLINE_LAMBDA {
        auto sum = first;
        if constexpr (even) sum = k % 2 == 0 ? sum + middle : sum - middle;
        steps<inner>([&](auto j) ORV_INLINE_LAMBDA {
            constexpr cpx<R> w = rounded<R>(root(k * (j + 1), n));
            sum = sum + lane_product(v[j], splat(w));
        });
        put(k, sum);
    });
}

// Back: get(k) = (Re X[k], Im X[k]), to put(j, x[j]), divided by nothing. The imaginary part of a point that has none
// does not count.
template <int n, class R, class Get, class Put> ORV_INLINE void real_inverse(Get get, Put put)
{
    constexpr int inner = (n - 1) / 2;
    constexpr bool even = n % 2 == 0;
    const auto first = only_real(first_lane(get(0)).re);
    const auto middle = only_real(even ? first_lane(get(n / 2)).re : R(0));
    pairs<R> v[inner];
    steps<inner>([&](auto k) ORV_INLINE_LAMBDA {
        const pairs<R> x = get(k + 1);
        v[k] = x + x;
    });
    steps<n / 2 + 1>([&](auto j) ORV_INLINE_LAMBDA {
        auto sum = first;
        if constexpr (even) sum = j % 2 == 0 ? sum + middle : sum - middle;
        steps<inner>([&](auto k) ORV_INLINE_LAMBDA {
            constexpr cpx<R> w = rounded<R>(root(j * (k + 1), n));
            sum = sum + lane_product(v[k], splat(w));
        });
        const cpx<R> x = first_lane(add_sub(real_parts(sum), imaginary_parts(sum)));
        put(j, x.re);
        if constexpr (2 * j != n && j != 0) put(n - j, x.im);
    });
}

// The sums of a prime r: of terms term(j), to put(k, sum) with the angles of j*k. The sum for 0 has all cosines 1.
template <class R, class Term, class Put>
ORV_INLINE void any_real(i64 r, RadixTable<R> table, t_8u* work, pairs<R> first, Term term, Put put)
{
    constexpr int lanes = pairs<R>::lanes, together = RadixTable<R>::together;
    auto* const terms = reinterpret_cast<cpx<R>*>(work);
    const i64 half = table.half(r);
    pairs<R> all = first;
    for (i64 a = 0; a < half; ++a) {
        const pairs<R> v = term(table.power[a]);
        store(terms + a * lanes, v);
        all = all + alternate(v, zeros<cpx<R>>());
    }
    put(0, all);
    for (i64 b = 0; b < half; b += together) {
        pairs<R> sum[together];
        for (auto& s : sum) s = first;
        for (i64 a = 0; a < half; ++a) {
            const pairs<R> v = load(terms + a * lanes);
            steps<together>([&](auto i) ORV_INLINE_LAMBDA {
                sum[i] = sum[i] + lane_product(v, alternate(table.cosine(a + b + i), table.sine(a + b + i)));
            });
        }
        steps<together>([&](auto i) ORV_INLINE_LAMBDA { put(table.power[b + i], sum[i]); });
    }
}

// The same for a prime r with a table. put takes k from 1 to r-1, where X[r-k] is the conjugate of X[k]; get likewise.
template <class R, class Get, class Put>
ORV_INLINE void any_real_forward(i64 r, RadixTable<R> table, t_8u* work, Get get, Put put)
{
    any_real<R>(
        r, table, work, only_real<R>(get(0)),
        [=](i64 j) ORV_INLINE_LAMBDA { return sum_and_difference<R>(get(j), get(r - j)); }, put);
}
template <class R, class Get, class Put>
ORV_INLINE void any_real_inverse(i64 r, RadixTable<R> table, t_8u* work, Get get, Put put)
{
    any_real<R>(
        r, table, work, only_real(first_lane(get(0)).re),
        [=](i64 k) ORV_INLINE_LAMBDA {
            const pairs<R> x = get(k);
            return x + x;
        },
        [=](i64 j, pairs<R> sum) ORV_INLINE_LAMBDA {
            const cpx<R> x = first_lane(add_sub(real_parts(sum), imaginary_parts(sum)));
            put(j, x.re);
            if (j != 0) put(r - j, x.im);
        });
}

} // namespace orv::dft::general
