// The bodies of short lines, and the table of a direction.
#pragma once

#include "dft/compute/short_lines.h"
#include "dft/primitives/dft/butterflies.h"
#include "dft/primitives/fft/butterfly.h"

namespace orv::dft {

inline constexpr int longest_short = 32;
constexpr bool is_short(int n) { return (n >= 1 && n <= 16) || n == 32; }

// put(k, x) takes point k of the transform of get(0), ..., get(n - 1), all of which have been asked for before. The
// operations are those of the kernels of one row.
template <int n, bool forward, class R, class Get, class Put> ORV_INLINE void short_line(Get get, Put put)
{
    vec<cpx<R>> x[n];
    if constexpr ((n & (n - 1)) == 0)
        transform<n, forward>(x, get, [&](auto k) ORV_INLINE_LAMBDA {
            constexpr int count = n < 4 ? n : 4; // so many results are there after k
            general::steps<count>([&](auto i) ORV_INLINE_LAMBDA { put(k + i * (n / count), x[k + i * (n / count)]); });
        });
    else {
        general::steps<n>([&](auto j) ORV_INLINE_LAMBDA { x[j] = get(j); });
        general::butterfly<n, forward>(x);
        general::steps<n>([&](auto k) ORV_INLINE_LAMBDA { put(k, x[k]); });
    }
}

// The pairs of neighbouring lines, as many as a register holds.
template <bool neighbours> ORV_INLINE vec<cpx<double>> load_lines(const double* p, i64)
{
    return loadu(reinterpret_cast<const cpx<double>*>(p));
}
template <bool neighbours> ORV_INLINE vec<cpx<float>> load_lines(const float* p, i64 line)
{
    const auto* const at = reinterpret_cast<const cpx<float>*>(p);
    if constexpr (neighbours) return loadu(at);
    else return collect(at, reinterpret_cast<const cpx<float>*>(p + line));
}
template <bool neighbours> ORV_INLINE void store_lines(double* p, i64, vec<cpx<double>> x)
{
    storeu(reinterpret_cast<cpx<double>*>(p), x);
}
template <bool neighbours> ORV_INLINE void store_lines(float* p, i64 line, vec<cpx<float>> x)
{
    auto* const at = reinterpret_cast<cpx<float>*>(p);
    if constexpr (neighbours) storeu(at, x);
    else distribute(x, at, reinterpret_cast<cpx<float>*>(p + line));
}

// Two lines of so few points that all of them stay in registers: loaded and stored as they stand, whole registers of
// neighbours, which change places between.
template <int n, bool forward>
[[gnu::noinline]] void transform_dense(const float* from, i64 in, float* to, i64 out, i64 count)
{
    using V = vec<cpx<float>>;
    const auto pairs = [](const float* p) { return reinterpret_cast<const cpx<float>*>(p); };
    for (; count > 0; count -= 2, from += 2 * in, to += 2 * out) {
        V x[n];
        short_line<n, forward, float>(
            [&](auto j) ORV_INLINE_LAMBDA {
                constexpr int point = j % n, first = point / 2 * 2;
                V square[] = {loadu(pairs(from) + first), loadu(pairs(from + in) + first)};
                transpose(square);
                return square[point - first];
            },
            [&](auto k, V v) ORV_INLINE_LAMBDA { x[k] = v; });
        general::steps<n / 2>([&](auto i) ORV_INLINE_LAMBDA {
            V square[] = {x[2 * i], x[2 * i + 1]};
            transpose(square);
            storeu(reinterpret_cast<cpx<float>*>(to) + 2 * i, square[0]);
            storeu(reinterpret_cast<cpx<float>*>(to + out) + 2 * i, square[1]);
        });
    }
}

// dense: points of a line are neighbours.
template <int n, bool forward, bool neighbours, bool dense = false, class R>
[[gnu::noinline]] void transform_lines(const R* from, LineSteps in, R* to, LineSteps out, i64 count)
{
    constexpr int lanes = vec<cpx<R>>::lanes;
    if (dense) in.point = out.point = 2;
    for (; count > 0; count -= lanes, from += lanes * in.line, to += lanes * out.line)
        short_line<n, forward, R>(
            [&](i64 j) ORV_INLINE_LAMBDA { return load_lines<neighbours>(from + j * in.point, in.line); },
            [&](i64 k, vec<cpx<R>> x) ORV_INLINE_LAMBDA { store_lines<neighbours>(to + k * out.point, out.line, x); });
}

// Of rows with more points than registers, every other address would have to be loaded. A line that is left alone
// stands in for its neighbour.
template <int n, bool forward, class R>
void transform_short(const R* from, LineSteps in, R* to, LineSteps out, i64 count)
{
    constexpr int lanes = vec<cpx<R>>::lanes;
    constexpr bool always_dense = n > longest_strided;
    const i64 left = count % lanes, most = count - left;
    const bool dense = n >= 16 && in.point == 2 && out.point == 2;
    if constexpr (always_dense) transform_lines<n, forward, lanes == 1, true>(from, in, to, out, most);
    else if constexpr (lanes == 1) {
        if (dense) transform_lines<n, forward, true, n >= 16>(from, in, to, out, most);
        else transform_lines<n, forward, true>(from, in, to, out, most);
    } else {
        constexpr bool in_registers = n % 2 == 0 && n <= 8;
        if (in_registers && in.point == 2 && out.point == 2)
            transform_dense<in_registers ? n : 2, forward>(from, in.line, to, out.line, most);
        else if (dense) transform_lines<n, forward, false, n >= 16>(from, in, to, out, most);
        else if (in.line == 2 && out.line == 2) transform_lines<n, forward, true>(from, in, to, out, most);
        else transform_lines<n, forward, false>(from, in, to, out, most);
    }
    static_assert(lanes <= 2, "what is left of the lines is one");
    if constexpr (lanes == 2)
        if (left > 0)
            transform_lines<n, forward, false, always_dense>(from + most * in.line, {in.point, 0}, to + most * out.line,
                                                             {out.point, 0}, 1);
}

template <class R, bool forward, int... n> ShortLines<R>* find_short(i64 length, std::integer_sequence<int, n...>)
{
    static constexpr auto body = []<int points>(std::integral_constant<int, points>) -> ShortLines<R>* {
        if constexpr (is_short(points)) return transform_short<points, forward, R>;
        else return nullptr;
    };
    static constexpr ShortLines<R>* const all[] = {body(std::integral_constant<int, n>())...};
    return length >= 0 && length <= longest_short ? all[length] : nullptr;
}
template <class R, bool forward> ShortLines<R>* find_short(i64 length)
{
    return find_short<R, forward>(length, std::make_integer_sequence<int, longest_short + 1>());
}

} // namespace orv::dft
