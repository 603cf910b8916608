// Stages of transforms whose length is a product, for a radix with a butterfly of its own.
//
// Decimated in time, the transforms of every radix-th element are joined: their point q is turned by twiddle j*q for
// transform j, then transforms of radix points run down the columns. Decimated in frequency, for spectra that stay in
// the order in which the factors leave them, the columns are transformed first and turned behind.
#pragma once

#include "dft/primitives/dft/access.h"
#include "dft/primitives/dft/butterflies.h"

namespace orv::dft::general {

enum class Decimation { in_time, in_frequency };

// Twiddles as stages read them: for each register's columns, and for the rows 1 to radix-1, a register of real parts
// and a register of imaginary parts, which alternate in sign, so that a product is two multiplications and one sum. An
// inverse subtracts: that conjugates.
template <bool forward, int n, class R> ORV_INLINE pairs<R> twiddled_by(pairs<R> x, const R* w)
{
    using T = cpx<R>;
    constexpr int step = vector_bytes / sizeof(R);
    const auto parts = [](const R* p) ORV_INLINE_LAMBDA {
        if constexpr (n == vec<T>::lanes) return load(reinterpret_cast<const T*>(p));
        else return load_first<n>(reinterpret_cast<const T*>(p));
    };
    const auto straight = lane_product(x, parts(w)), crossed = lane_product(swap_neighbours(x), parts(w + step));
    return forward ? straight + crossed : straight - crossed;
}
inline constexpr i64 registers_of_twiddle = 2;
template <class R> inline constexpr i64 reals_of_twiddle = registers_of_twiddle* vector_bytes / i64{sizeof(R)};

// The rows of a block: column q of row j is element j*count + q.
template <class Form> struct Rows {
    Form at;
    i64 count;
    template <int n> ORV_INLINE auto get(i64 j, i64 q) const { return at.template get<n>(j * count + q); }
    template <int n, class V> ORV_INLINE void put(i64 j, i64 q, V x) const { at.template put<n>(j * count + q, x); }
};

// n columns of a block from column q on.
template <int radix, bool forward, Decimation way, int n, class From, class To, class R>
ORV_INLINE void column(From from, To to, i64 q, const R* w)
{
    pairs<R> x[radix];
    steps<radix>([&](auto j) ORV_INLINE_LAMBDA { x[j] = from.template get<n>(j, q); });
    const auto turn = [&]() ORV_INLINE_LAMBDA {
        steps<radix - 1>([&](auto j) ORV_INLINE_LAMBDA {
            x[j + 1] = twiddled_by<forward, n>(x[j + 1], w + j * reals_of_twiddle<R>);
        });
    };
    if constexpr (way == Decimation::in_time) turn();
    butterfly<radix, forward>(x);
    if constexpr (way == Decimation::in_frequency) turn();
    steps<radix>([&](auto j) ORV_INLINE_LAMBDA { to.template put<n>(j, q, x[j]); });
}

// Columns begin to end - 1 of a block.
template <int radix, bool forward, Decimation way, class From, class To, class R>
ORV_INLINE void columns(From from, To to, i64 begin, i64 end, const R* w)
{
    constexpr int width = pairs<R>::lanes;
    i64 q = begin;
    for (; q <= end - width; q += width, w += (radix - 1) * reals_of_twiddle<R>)
        column<radix, forward, way, width>(from, to, q, w);
    if constexpr (width > 1)
        if (q < end) column<radix, forward, way, 1>(from, to, q, w);
}

// Blocks of radix*count elements behind one another, in place or not.
template <int radix, bool forward, Decimation way, class Form>
ORV_INLINE void join(Form src, Form dst, i32 count, i32 blocks, const typename Form::real* twiddles)
{
    const i64 points = i64{radix} * count;
    for (i64 b = 0; b < blocks; ++b, src = src + points, dst = dst + points)
        columns<radix, forward, way>(Rows<Form>{src, count}, Rows<Form>{dst, count}, 0, count, twiddles);
}

// Transforms of n points that lie stride apart, from place(b) on for transform b; the results are behind one another.
// The last register takes a transform twice where their number does not fill it.
template <int n, bool forward, class Form, class Place>
ORV_INLINE void transforms(Form src, Form dst, i64 stride, i64 number, Place place)
{
    constexpr int width = Form::width;
    for (i64 b = 0; b < number; b += width) {
        Lanes<Form> from, to;
        steps<width>([&](auto lane) ORV_INLINE_LAMBDA {
            const i64 t = lane == 0 ? b : min(b + lane, number - 1);
            from.of[lane] = src + place(t), to.of[lane] = dst + n * t;
        });
        pairs<typename Form::real> x[n];
        steps<n>([&](auto j) ORV_INLINE_LAMBDA { x[j] = from.get(j * stride); });
        butterfly<n, forward>(x);
        to.put_all(x);
    }
}

// A transform of n points alone; what is there of scale multiplies the results.
template <int n, bool forward, class Form, class... S> ORV_INLINE void alone(Form src, Form dst, S... scale)
{
    pairs<typename Form::real> x[n];
    steps<n>([&](auto j) ORV_INLINE_LAMBDA { x[j] = src.template get<1>(j); });
    butterfly<n, forward>(x);
    (([&](auto s) ORV_INLINE_LAMBDA {
         const auto factor = splat(cpx<typename Form::real>{s, s});
         for (auto& e : x) e = lane_product(e, factor);
     }(scale)),
     ...);
    steps<n>([&](auto k) ORV_INLINE_LAMBDA { dst.template put<1>(k, x[k]); });
}

} // namespace orv::dft::general
