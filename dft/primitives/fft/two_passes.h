// Transforms of 2^8 to 2^12 pairs in two passes: as many transforms of every `rows`-th point as there are rows, each to
// a row of its own; then for each column the transform of its numbers times their twiddles.
//
// Both passes work on pairs. x*w = x.re * w + x.im * i*w: the two parts of x come from memory in both halves of a
// register without a shuffle, so a product costs an addition where it would cost an addition and a shuffle, and there
// is no way into blocks and back. For that twiddles stand twice, as w and as i*w, more than the tables of a record have
// room for; there are few such lengths, and theirs are constants, the same for both directions.
#pragma once

#include "dft/primitives/fft/butterfly.h"
#include "dft/primitives/fft/views.h"

namespace orv::dft {

// w and i*w by blocks of columns, in the order in which the second pass reads them: of each row but the first.
template <class R, int columns, int rows> struct PairTwiddles {
    static constexpr int lanes = vec<cpx<R>>::lanes;
    alignas(cache_line) cpx<R> of[columns / lanes][rows - 1][2][lanes];
    constexpr PairTwiddles() : of()
    {
        for (int column = 0; column < columns; ++column)
            for (int row = 1; row < rows; ++row) {
                const cpx<R> w = root_of_one<R, true>(columns * rows, row * column);
                auto& both = of[column / lanes][row - 1];
                both[0][column % lanes] = w, both[1][column % lanes] = {-w.im, w.re};
            }
    }
};
template <class R, int columns, int rows> inline constexpr PairTwiddles<R, columns, rows> pair_twiddles;

// Each lane to an address of its own: stores of halves, for shuffles would wait for the ports that add.
ORV_INLINE void store_lanes(vec<cpx<double>> x, cpx<double>* first, cpx<double>*) { storeu(first, x); }
ORV_INLINE void store_lanes(vec<cpx<float>> x, cpx<float>* first, cpx<float>* second) { distribute(x, first, second); }

template <int columns, int rows, bool forward, class R>
[[gnu::noinline]] void transform_rows(const cpx<R>* src, cpx<R>* work)
{
    using C = vec<cpx<R>>;
    for (int row = 0; row < rows; row += C::lanes, src += C::lanes, work += C::lanes * columns) {
        C x[columns];
        const auto load = [&](int i) ORV_INLINE_LAMBDA { return loadu(src + i * rows); };
        transform<columns, forward>(x, load, [&](int k) ORV_INLINE_LAMBDA {
            each_quarter<columns>(k, [&](int column) ORV_INLINE_LAMBDA {
                store_lanes(x[column], work + column, work + column + columns);
            });
        });
    }
}

// The inverse takes x.re * w - x.im * i*w, and the conjugates of what comes of that.
template <int columns, int rows, bool forward, class R>
[[gnu::noinline]] void transform_columns(const cpx<R>* work, cpx<R>* dst)
{
    using C = vec<cpx<R>>;
    for (const auto& twiddles : pair_twiddles<R, columns, rows>.of) {
        C x[rows];
        const auto load_turned = [&](auto row) ORV_INLINE_LAMBDA {
            const cpx<R>* const p = work + row * columns;
            if constexpr (row == 0) return forward ? load(p) : conj(load(p));
            else {
                const auto& w = twiddles[row - 1];
                const C a = lane_product(load_re_twice(p), load(w[0])), b = lane_product(load_im_twice(p), load(w[1]));
                return forward ? a + b : a - b;
            }
        };
        transform<rows, true, 1, !forward>(x, load_turned, [&](int k) ORV_INLINE_LAMBDA {
            each_quarter<rows>(k, [&](int row) ORV_INLINE_LAMBDA { storeu(dst + row * columns, x[row]); });
        });
        work += C::lanes, dst += C::lanes;
    }
}

template <int columns, int rows, bool forward, class R> void two_passes(const cpx<R>* src, cpx<R>* dst)
{
    alignas(cache_line) cpx<R> work[columns * rows];
    transform_rows<columns, rows, forward>(src, work);
    transform_columns<columns, rows, forward>(work, dst);
}

} // namespace orv::dft
