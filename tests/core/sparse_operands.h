// Dense operands of sparse products and solves, and how far a result is from one in wide arithmetic.
#pragma once

#include "tests/core/sparse.h"

namespace orv::test {

// X and Y in guarded memory.
template <class T> struct Operands {
    Dense<T> x, y;

    Operands(i64 rows, i64 cols, i64 columns, bool by_rows, bool nan, i64 padding = 3)
        : x(cols, columns, by_rows, padding), y(rows, columns, by_rows, padding + 2, nan)
    {
    }
};

// The columns that are checked: one of each group of eight, and the last.
inline i64 next_column(i64 column, i64 columns)
{
    return column < columns - 1 ? std::min(column + 8, columns - 1) : columns;
}

// The worst element of Y := alpha*op(A)*X + beta*Y, as a share of its bound.
template <class T>
long double worst(const Style& style, char trans, const Coordinates<T>& a, T alpha, T beta, const Operands<T>& o,
                  i64 rows, i64 columns)
{
    const auto entries = whole_of(style, trans, a);
    const bool adds_skipped = style.kind == 'T'; // and takes them off again
    long double worst = 0;
    for (i64 c = 0; c < columns; c = next_column(c, columns)) {
        std::vector<WideSum> sums(static_cast<std::size_t>(rows));
        for (const auto& [i, j, value] : entries) sums[static_cast<std::size_t>(i)].add(value, o.x(j, c));
        if (adds_skipped)
            for (auto [i, j, value] : a.entries) {
                if (style.keeps(i, j)) continue;
                if (trans != 'N') std::swap(i, j);
                sums[static_cast<std::size_t>(i)].add(value, o.x(j, c)),
                    sums[static_cast<std::size_t>(i)].add(-value, o.x(j, c));
            }
        for (i64 i = 0; i < rows; ++i) {
            WideSum sum = sums[static_cast<std::size_t>(i)].times(alpha);
            if (beta != zero<T>) sum.add(beta, o.y.before(i, c));
            sum.terms += 4; // sums of parts
            keep_worst(worst, sum.excess(o.y(i, c)));
        }
    }
    return worst;
}

// The worst row of op(A)*Y against alpha*X.
template <class T>
long double residual(const Style& style, char trans, const Coordinates<T>& a, T alpha, const Operands<T>& o,
                     i64 columns)
{
    long double worst = 0;
    for (i64 c = 0; c < columns; c = next_column(c, columns)) {
        std::vector<WideSum> sums(static_cast<std::size_t>(a.m));
        for (const auto& [i, j, value] : whole_of(style, trans, a))
            sums[static_cast<std::size_t>(i)].add(value, o.y(j, c));
        for (i64 i = 0; i < a.m; ++i) {
            WideSum& sum = sums[static_cast<std::size_t>(i)];
            sum.add(-alpha, o.x(i, c));
            sum.terms += style.block > 1 ? 40 : 6; // a quotient, or an inverse
            keep_worst(worst, sum.excess(zero<T>));
        }
    }
    return worst;
}

} // namespace orv::test
