// One strip of the passes of structured_mv.h.
#pragma once

#include "blas/structured_mv.h"

namespace orv::blas {

// body<k>() for k = from..to-1.
template <int from, int to, class Body> ORV_INLINE void unrolled(const Body& body)
{
    if constexpr (from < to) {
        body.template operator()<from>();
        unrolled<from + 1, to>(body);
    }
}

// The real part of an element, in all lanes.
template <class T> ORV_INLINE vec<T> splat_real(const T* p)
{
    const auto re = reinterpret_cast<const real_t<T>&>(*p);
    if constexpr (is_complex<T>) return splat(T{re, re});
    else return splat(re);
}

// Rows that go together: two registers of reals; of complex numbers, which take twice the sums, one.
template <class T> constexpr int block = (is_complex<T> ? 1 : 2) * vec<T>::lanes;

// The rows of columns j..j+columns-1.
template <Edges edges, int columns, class T> ORV_INLINE Run run(const Storage<const T>& b, i64 j)
{
    Run rows = b.template run<columns>(j);
    if constexpr (edges.from != Edge::any) rows.shared.from = j + columns;
    if constexpr (edges.from != Edge::any) rows.any.from = edges.from == Edge::square ? j + columns : j + 1;
    if constexpr (edges.to != Edge::any) rows.shared.to = j;
    if constexpr (edges.to != Edge::any) rows.any.to = edges.to == Edge::square ? j : j + columns - 1;
    return rows;
}

// Columns j..j+columns-1 of B. own(c) is the element of x that column j+c multiplies, in every lane; at the end
// gain(c, f, s) takes what comes to the element of y that it gains: the column's factor, and alpha times its sum in the
// first lane.
template <Pass pass, Edges edges, int columns, class T, class Own, class Gain>
ORV_INLINE void strip(const WalkOf<pass, T>& v, i64 j, const Neighbours<const T>& b, const Own& own, const Gain& gain)
{
    const Run rows = run<edges, columns>(v.b, j);
    const factor<T> alpha = v.alpha;
    const auto scaled = [&](int c) {
        if constexpr (pass.direct) return alpha * own(min(c, columns - 1));
        else return zeros<T>();
    };
    const vec<T> f[4] = {scaled(0), scaled(1), scaled(2), scaled(3)};
    const Multiplicand<T> factors[4] = {Multiplicand<T>(f[0]), Multiplicand<T>(f[1]), Multiplicand<T>(f[2]),
                                        Multiplicand<T>(f[3])};
    ProductSum<T> sums[4] = {{}, {}, {}, {}};
    const auto x_row = v.x_row;
    const auto y_row = v.y_row;

    // A piece of the rows that columns from..to-1 of the strip have.
    const auto add = [&]<int from, int to, class Piece>(Piece, i64 i) ORV_INLINE_LAMBDA {
#pragma GCC unroll 8
        for (int r = 0; r < Piece::registers; ++r) {
            const Multiplicand<T> x =
                pass.across == Op::none ? Multiplicand<T>(zeros<T>()) : Piece::multiplicand(x_row + i, r);
            ProductSum<T> y(pass.direct ? Piece::load(y_row + i, r) : zeros<T>());
#pragma GCC unroll 4
            for (int c = from; c < to; ++c) {
                const vec<T> element = Piece::load(b.at[c] + i, r);
                if constexpr (pass.direct) c == from ? y.begin(element, factors[c]) : y.add(element, factors[c]);
                if constexpr (pass.across != Op::none) sums[c].add(element, x);
            }
            if constexpr (pass.direct) Piece::store(y_row + i, r, y.value());
        }
    };
    using One = Piece<T, 1>;
    using Block = Piece<T, block<T>>;

    const auto within = [&](i64 i) { return i >= rows.any.from && i < rows.any.to; };

    // Rows where a column more begins with each; those of all columns; rows where one more has ended with each.
    if (edges.from != Edge::any || rows.any.from < rows.shared.from)
        unrolled<1, edges.from == Edge::square ? 1 : columns>([&]<int begun>() ORV_INLINE_LAMBDA {
            const i64 i = rows.shared.from - columns + begun;
            if (edges.from == Edge::diagonal || within(i)) add.template operator()<0, begun>(One{}, i);
        });
    i64 i = rows.shared.from;
    const i64 end = rows.shared.to;
    if constexpr (pass.one_lane) {
        for (; i < end; ++i) add.template operator()<0, columns>(One{}, i);
    } else {
        if constexpr (pass.both() && vec<T>::lanes == 2 && !is_complex<T>)
            if (v.on_boundary && i < end && !is_aligned(y_row + i, vector_bytes))
                add.template operator()<0, columns>(One{}, i++);
        const auto blocks = [&](const auto& ask) ORV_INLINE_LAMBDA {
            for (const i64 start = i; i + Block::rows <= end; i += Block::rows) {
                ask(i - start);
                add.template operator()<0, columns>(Block{}, i);
            }
        };
        if (columns == 4 && v.ahead == Ahead::next_strip) {
            // A line of the next strip for every four registers of this one.
            const T* const next = b.at[3] + b.last_step + (rows.any.from + columns);
            blocks([&](i64 row) ORV_INLINE_LAMBDA {
#pragma GCC unroll 2
                for (int r = 0; r < Block::rows; r += vec<T>::lanes) prefetch(next + 4 * (row + r));
            });
        } else if (columns == 4 && v.ahead == Ahead::further_on) {
            const i64 start = i, count = end - i;
            blocks([&](i64 row) ORV_INLINE_LAMBDA {
                if (row * sizeof(T) % cache_line == 0)
                    look_ahead<columns, Block::rows>(row, count, b.at[0] + start, b.at[1] - b.at[0]);
            });
        } else {
            blocks([](i64) ORV_INLINE_LAMBDA {});
        }
        if constexpr (Block::rows > 1)
            tails<Block::rows / 2, T>(i, end, [&](auto piece, i64 row) ORV_INLINE_LAMBDA {
                add.template operator()<0, columns>(piece, row);
            });
    }
    if (edges.to != Edge::any || rows.shared.to < rows.any.to)
        unrolled<1, edges.to == Edge::square ? 1 : columns>([&]<int ended>() ORV_INLINE_LAMBDA {
            const i64 i = rows.shared.to - 1 + ended;
            if (edges.to == Edge::diagonal || within(i)) add.template operator()<ended, columns>(One{}, i);
        });

    if constexpr (pass.across != Op::none)
#pragma GCC unroll 4
        for (int c = 0; c < columns; ++c)
            gain(c, f[c], alpha * sums[c].folded().template value<pass.across == Op::conjugate>());
}

} // namespace orv::blas
