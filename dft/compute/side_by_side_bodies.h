// The bodies of the passes, and their tables.
#pragma once

#include "dft/compute/side_by_side_passes.h"

namespace orv::dft::side_by_side {

// Points so many reals behind the heads of the lines.
ORV_INLINE vec<cpx<double>> load_point(LinesInLanes<double> lines, i64 at)
{
    return loadu(reinterpret_cast<const cpx<double>*>(lines.of[0] + at));
}
ORV_INLINE vec<cpx<float>> load_point(LinesInLanes<float> lines, i64 at)
{
    return collect(reinterpret_cast<const cpx<float>*>(lines.of[0] + at),
                   reinterpret_cast<const cpx<float>*>(lines.of[1] + at));
}
ORV_INLINE void store_point(LinesInLanes<double> lines, i64 at, vec<cpx<double>> x)
{
    storeu(reinterpret_cast<cpx<double>*>(lines.of[0] + at), x);
}
ORV_INLINE void store_point(LinesInLanes<float> lines, i64 at, vec<cpx<float>> x)
{
    distribute(x, reinterpret_cast<cpx<float>*>(lines.of[0] + at), reinterpret_cast<cpx<float>*>(lines.of[1] + at));
}

template <int n, class R> void run_leaves(const Leaves<R>& leaves, LinesInLanes<R> from)
{
    using V = vec<cpx<R>>;
    const Leaves<R> a = leaves;
    const i64 apart = (a.backwards ? -2 : 2) * a.apart;
    V* to = a.to;
    for (i64 t = 0; t < a.transforms; ++t, to += n) {
        const i64 start = a.starts[t * a.starts_step];
        const auto lines = from + 2 * (a.backwards ? a.length - start : start);
        const i64 first = a.backwards && start == 0 ? -2 * a.length : 0;
        general::butterfly_between<n, true, R>(
            [&](auto j) ORV_INLINE_LAMBDA { return load_point(lines, j == 0 ? first : j * apart); },
            [&](auto k, V x) ORV_INLINE_LAMBDA { to[k] = x; });
    }
}

// x times a twiddle of all lanes, from a table of stages: of column q of its register.
ORV_INLINE vec<cpx<double>> twiddled_by(vec<cpx<double>> x, const double* w, i64)
{
    return general::twiddled_by<true, 1>(x, w);
}
ORV_INLINE vec<cpx<float>> twiddled_by(vec<cpx<float>> x, const float* w, i64 q)
{
    const auto* const part = reinterpret_cast<const cpx<float>*>(w) + q;
    return lane_product(x, load_splat(part)) + lane_product(swap_neighbours(x), load_splat(part + 2));
}

template <int r, bool last, class R> void run_join(const Join<R>& join, LinesInLanes<R> lines)
{
    using V = vec<cpx<R>>;
    const Join<R> a = join;
    V* data = a.data;
    const i64 blocks = last ? 1 : a.blocks;
    for (i64 b = 0; b < blocks; ++b, data += r * a.count)
        for (i64 q = 0; q < a.count; ++q) {
            const R* const w = a.twiddles + q / V::lanes * (r - 1) * general::reals_of_twiddle<R>;
            general::butterfly_between<r, true, R>(
                [&](auto j) ORV_INLINE_LAMBDA {
                    const V x = data[j * a.count + q];
                    if constexpr (j == 0) return x;
                    else return twiddled_by(x, w + (j - 1) * general::reals_of_twiddle<R>, q % V::lanes);
                },
                [&](auto k, V x) ORV_INLINE_LAMBDA {
                    if constexpr (last) store_point(lines, 2 * (k * a.count + q), x);
                    else data[k * a.count + q] = x;
                });
        }
}

template <int n, class R> constexpr auto leaves_of() -> void (*)(const Leaves<R>&, LinesInLanes<R>)
{
    if constexpr (is_leaf(n)) return run_leaves<n, R>;
    else return nullptr;
}
template <int r, bool last, class R> constexpr auto join_of() -> void (*)(const Join<R>&, LinesInLanes<R>)
{
    if constexpr (is_join(r)) return run_join<r, last, R>;
    else return nullptr;
}
template <class R, int... n, int... r>
constexpr Passes<R> all_passes(std::integer_sequence<int, n...>, std::integer_sequence<int, r...>)
{
    return {{leaves_of<n, R>()...}, {join_of<r, false, R>()...}, {join_of<r, true, R>()...}};
}
template <class R>
inline constexpr Passes<R> table = all_passes<R>(std::make_integer_sequence<int, longest_leaf + 1>(),
                                                 std::make_integer_sequence<int, largest_join + 1>());

} // namespace orv::dft::side_by_side
