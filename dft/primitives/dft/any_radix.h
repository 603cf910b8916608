// Transforms of an odd prime number r of points without a body of their own, by the sums of the definition.
//
// As with the butterflies, the sums and the differences of x[j] and x[r-j] are formed once. Powers of a primitive root
// g number them: with j = g^a and k = g^b the angle is of g^(a+b), so all tables and sums are read one behind another
// (Rader, Discrete Fourier transforms when the number of data samples is prime, 1968). Four results at a time share
// what is loaded; results beyond the last are some of the first again.
#pragma once

#include "dft/primitives/dft/access.h"
#include "dft/primitives/dft/stages.h"
#include "frame/kernels/dft_general.h"

namespace orv::dft::general {

// The table of a radix: the powers of g modulo r, then for each power the registers (cos, cos) and (-sin, sin).
template <class R> struct RadixTable {
    using V = pairs<R>;
    static constexpr int together = 4; // results
    static constexpr i64 half(i64 r) { return r / 2; }
    static constexpr i64 powers(i64 r) { return half(r) + together - 1; }
    static constexpr i64 angles(i64 r) { return powers(r) + half(r) - 1; }
    static constexpr i64 bytes_of_powers(i64 r) { return round_up(powers(r) * i64{sizeof(i32)}, vector_bytes); }
    static constexpr i64 bytes(i64 r) { return bytes_of_powers(r) + angles(r) * 2 * vector_bytes; }

    const i32* power;
    const cpx<R>* angle;

    RadixTable(const void* table, i64 r)
        : power(static_cast<const i32*>(table)),
          angle(reinterpret_cast<const cpx<R>*>(static_cast<const t_8u*>(table) + bytes_of_powers(r)))
    {
    }
    ORV_INLINE V cosine(i64 e) const { return load(angle + 2 * e * V::lanes); }
    ORV_INLINE V sine(i64 e) const { return load(angle + (2 * e + 1) * V::lanes); }
};

// The smallest number whose powers are all of 1 to r-1 modulo the prime r.
constexpr i32 primitive_root(i32 r)
{
    for (i32 g = 2;; ++g) {
        i32 order = 1;
        for (i32 power = g; power != 1; power = power * g % r) ++order;
        if (order == r - 1) return g;
    }
}

// Both parts of a table; unity(k) is exp(-2*pi*i*k/r).
template <class R, class Unity> constexpr void fill_radix_table(i32 r, Unity unity, i32* powers, cpx<R>* angles)
{
    using Table = RadixTable<R>;
    constexpr int lanes = pairs<R>::lanes;
    const i32 g = primitive_root(r);
    i32 power = 1;
    for (i64 e = 0; e < Table::angles(r); ++e, power = power * g % r) {
        if (e < Table::powers(r)) powers[e] = power;
        const cpx<R> w = unity(power);
        for (int lane = 0; lane < lanes; ++lane, ++angles) angles[0] = {w.re, w.re}, angles[lanes] = {w.im, -w.im};
        angles += lanes;
    }
}

// What the sums need of work memory.
constexpr i64 work_of_radix(i64 r) { return r * i64{vector_bytes}; }

// get(j) is x[j], put(k, X) takes X[k]. Everything is read before anything is written.
template <bool forward, class R, class Get, class Put>
ORV_INLINE void any_prime(i64 r, RadixTable<R> table, t_8u* work, Get get, Put put)
{
    using T = cpx<R>;
    constexpr int lanes = pairs<R>::lanes, together = RadixTable<R>::together;
    auto* const sums = reinterpret_cast<T*>(work); // a sum, then a difference, for each pair
    const i64 half = table.half(r);
    const pairs<R> first = get(0);
    pairs<R> all = first;
    for (i64 a = 0; a < half; ++a) {
        const i64 j = table.power[a];
        const pairs<R> x = get(j), y = get(r - j);
        const pairs<R> sum = x + y;
        store(sums + 2 * a * lanes, sum), store(sums + (2 * a + 1) * lanes, x - y);
        all = all + sum;
    }
    put(0, all);
    for (i64 b = 0; b < half; b += together) {
        pairs<R> even[together], odd[together];
        for (int i = 0; i < together; ++i) even[i] = first, odd[i] = zeros<T>();
        for (i64 a = 0; a < half; ++a) {
            const pairs<R> sum = load(sums + 2 * a * lanes), difference = load(sums + (2 * a + 1) * lanes);
            steps<together>([&](auto i) ORV_INLINE_LAMBDA {
                even[i] = even[i] + lane_product(sum, table.cosine(a + b + i));
                odd[i] = odd[i] + lane_product(difference, table.sine(a + b + i));
            });
        }
        steps<together>([&](auto i) ORV_INLINE_LAMBDA {
            const i64 k = table.power[b + i];
            const pairs<R> turned = swap_neighbours(odd[i]);
            const pairs<R> up = even[i] + turned, down = even[i] - turned;
            put(k, forward ? up : down), put(r - k, forward ? down : up);
        });
    }
}

// Columns begin to end - 1 of a block, turned before or behind.
template <bool forward, Decimation way, class R, class From, class To>
ORV_INLINE void any_columns(From from, To to, i64 r, i64 begin, i64 end, const R* w, RadixTable<R> table, t_8u* work)
{
    constexpr int width = pairs<R>::lanes;
    i64 q = begin;
    const auto one = [&](auto n) ORV_INLINE_LAMBDA {
        const auto turned = [=](i64 j, pairs<R> x, bool here) ORV_INLINE_LAMBDA {
            return j == 0 || !here ? x : twiddled_by<forward, n()>(x, w + (j - 1) * reals_of_twiddle<R>);
        };
        any_prime<forward>(
            r, table, work,
            [=](i64 j)
                ORV_INLINE_LAMBDA { return turned(j, from.template get<n()>(j, q), way == Decimation::in_time); },
            [=](i64 k, pairs<R> x)
                ORV_INLINE_LAMBDA { to.template put<n()>(k, q, turned(k, x, way == Decimation::in_frequency)); });
    };
    for (; q <= end - width; q += width, w += (r - 1) * reals_of_twiddle<R>) one(std::integral_constant<int, width>{});
    if constexpr (width > 1)
        if (q < end) one(std::integral_constant<int, 1>{});
}

} // namespace orv::dft::general
