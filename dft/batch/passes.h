// The bodies of the passes. Whichever the direction is, they run forward: the inverse of x is the transform of x read
// backwards.
#pragma once

#include "dft/batch/kernels.h"
#include "dft/batch/points.h"
#include "dft/primitives/dft/stages.h"
#include "dft/primitives/fft/butterfly.h"

namespace orv::dft::batch {

// put(k, X[k]) of x[j] = get(j). Powers of two go by the split radix, point by point from get and to put: there are
// more points than registers.
template <int r, class R, class Get, class Put> ORV_INLINE void transform_straight(Get get, Put put)
{
    pairs<R> x[r];
    if constexpr ((r & (r - 1)) == 0)
        dft::transform<r, true>(x, get, [&](auto k) ORV_INLINE_LAMBDA {
            constexpr int results = r < 4 ? r : 4;
            steps<results>([&](auto i) ORV_INLINE_LAMBDA {
                constexpr int point = k + i * (r / results);
                put(std::integral_constant<int, point>(), x[point]);
            });
        });
    else {
        steps<r>([&](auto j) ORV_INLINE_LAMBDA { x[j] = get(j); });
        transform<r, true>(x);
        steps<r>([&](auto k) ORV_INLINE_LAMBDA { put(k, x[k]); });
    }
}

// The records are copied because every store might change what they say, for all that the compiler knows.
template <int r, class R> void run_leaves(const Leaves<R>& leaves)
{
    const Leaves<R> a = leaves;
    const i64 step = a.apart * a.src_pitch;
    cpx<R>* dst = a.dst;
    for (i64 t = 0; t < a.transforms; ++t, dst += r * a.dst_pitch) {
        const i64 start = a.starts[t];
        const cpx<R>*const src = a.src + start * a.src_pitch, *const first = start == a.length ? a.src : src;
        for (i64 c = 0; c < a.columns; c += pairs<R>::lanes)
            transform_straight<r, R>(
                [&](auto j) ORV_INLINE_LAMBDA { return loadu((j == 0 ? first : src + j * step) + c); },
                [&](auto k, pairs<R> x) ORV_INLINE_LAMBDA { storeu(dst + k * a.dst_pitch + c, x); });
    }
}

template <int r, class R> void run_join(const Join<R>& join)
{
    const Join<R> a = join;
    constexpr int lanes = pairs<R>::lanes, twiddle = general::reals_of_twiddle<R>;
    const i64 from = a.count * a.src_pitch, to = a.count * a.dst_pitch;
    const cpx<R>* src = a.src;
    cpx<R>* dst = a.dst;
    const R* w = a.twiddles;
    for (i64 q = 0; q < a.count; ++q, src += a.src_pitch, dst += a.dst_pitch, w += (r - 1) * twiddle)
        for (i64 c = 0; c < a.columns; c += lanes)
            transform_straight<r, R>(
                [&](auto j) ORV_INLINE_LAMBDA {
                    const pairs<R> x = loadu(src + j * from + c);
                    if constexpr (j == 0) return x;
                    else return general::twiddled_by<true, lanes>(x, w + (j - 1) * twiddle);
                },
                [&](auto k, pairs<R> x) ORV_INLINE_LAMBDA { storeu(dst + k * to + c, x); });
}

template <int r, class R> constexpr auto leaves_of() -> void (*)(const Leaves<R>&)
{
    if constexpr (is_straight(r)) return run_leaves<r, R>;
    else return nullptr;
}
template <int r, class R> constexpr auto join_of() -> void (*)(const Join<R>&)
{
    if constexpr (is_straight(r)) return run_join<r, R>;
    else return nullptr;
}
template <class R, int... r> constexpr Passes<R> all_passes(std::integer_sequence<int, r...>)
{
    return {{leaves_of<r, R>()...}, {join_of<r, R>()...}};
}
template <class R> constexpr Passes<R> all_passes()
{
    return all_passes<R>(std::make_integer_sequence<int, longest_straight + 1>());
}

} // namespace orv::dft::batch
