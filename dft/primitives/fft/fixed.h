// Transforms of 1 to 128 points. With several lanes, lane l has every lanes-th point from l on: its transform is done
// as if it were alone, then squares of results change rows with columns, and the last butterfly goes across rows.
#pragma once

#include "dft/primitives/fft/butterfly.h"
#include "dft/primitives/fft/views.h"

namespace orv::dft {

// The roots that the lanes of a register are multiplied by, as constants.
template <class C, int n, int row, int column, bool forward> struct LaneRoots {
    using R = typename number<C>::real;
    cpx<R> w[number<C>::lanes];
    constexpr LaneRoots() : w()
    {
        for (int l = 0; l < number<C>::lanes; ++l) w[l] = root_of_one<R, forward>(n, row * (column + l));
    }
};
template <int n, int row, int column, bool forward, class C> ORV_INLINE C times_roots(C a)
{
    if constexpr (row == 0) return a;
    else {
        constexpr LaneRoots<C, n, row, column, forward> roots;
        return times_each(a, roots.w);
    }
}

// scale: one factor, or none.
template <int n, bool forward, class View, class... S> ORV_INLINE void fixed_transform(View from, View to, S... scale)
{
    using C = typename View::shape;
    constexpr int lanes = number<C>::lanes, m = n / lanes;
    const auto put = [&](i64 i, C x) ORV_INLINE_LAMBDA {
        if constexpr (sizeof...(S) > 0) to.put(i, scaled_by(x, scale...));
        else to.put(i, x);
    };
    C x[m];
    const auto load = [&](int i) ORV_INLINE_LAMBDA { return from.get(lanes * i); };
    if constexpr (lanes == 1)
        transform<m, forward>(x, load, [&](int k) ORV_INLINE_LAMBDA {
            each_quarter<m>(k, [&](int i) ORV_INLINE_LAMBDA { put(i, x[i]); });
        });
    else {
        transform<m, forward>(x, load, [](auto) {});
        each<m / lanes>([&](auto square) ORV_INLINE_LAMBDA {
            constexpr int k = square * lanes;
            C rows[lanes], y[lanes];
            each<lanes>([&](auto l) ORV_INLINE_LAMBDA { rows[l] = x[k + l]; });
            exchange_axes(rows);
            const auto turned = [&](auto l) ORV_INLINE_LAMBDA { return times_roots<n, l, k, forward>(rows[l]); };
            transform<lanes, forward>(y, turned, [](auto) {});
            each<lanes>([&](auto l) ORV_INLINE_LAMBDA { put(k + m * l, y[l]); });
        });
    }
}

// The token of a name: how many points, and which direction.
struct FixedSize {
    int points;
    bool forward = true;
};
inline constexpr FixedSize size_1{1}, size_2{2};
inline constexpr FixedSize sizefwd_4{4}, sizefwd_8{8}, sizefwd_16{16}, sizefwd_32{32};
inline constexpr FixedSize sizeinv_4{4, false}, sizeinv_8{8, false}, sizeinv_16{16, false}, sizeinv_32{32, false};

template <int n, bool forward, class R, class... S>
ORV_INLINE void fixed_pairs(const cpx<R>* src, cpx<R>* dst, S... scale)
{
    constexpr int lanes = vec<cpx<R>>::lanes;
    using View = std::conditional_t<(lanes > 1 && n < lanes * lanes) || n == 1, Numbers<R>, Registers<R>>;
    fixed_transform<n, forward>(View{readable(src)}, View{dst}, scale...);
}

} // namespace orv::dft
