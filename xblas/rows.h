// How the rows of a stored matrix lie in memory. Whatever the storage, a row is a few walks over it, one behind the
// other in the order of the columns, and a product with a vector is the sum of the products of its walks. A record
// tells the walks of every storage, so one compiled loop serves all.
#pragma once

#include "xblas/options.h"
#include "xblas/sums.h"

namespace orv::xblas {

constexpr Walk backwards(Walk w)
{
    const i64 last_step = w.step + (w.count - 2) * w.bend;
    return {w.at + (w.count - 1) * (w.step + last_step) / 2, -last_step, w.bend, w.count};
}

enum class Use { stored, conjugated, real_part };

// Of one half of a symmetric matrix the other is the mirror image; of a Hermitian one it is the conjugate, and of the
// diagonal only the real part is read.
enum class Kind { whole, symmetric, hermitian };

// Which way runs along the storage, before the diagonal or behind it, depends on the triangle and the order.
constexpr bool rows_run_before(Order order, Uplo uplo)
{
    return (order == Order::column_major && uplo == Uplo::upper) || (order == Order::row_major && uplo == Uplo::lower);
}

struct Rows {
    Kind kind;
    Use use_before, use_behind;
    i64 columns, below, above;    // elements that a row has at most before its diagonal element, and behind it
    Walk diagonal;                // elements (0, 0), (1, 1), ...
    i64 step_before, bend_before; // along a row towards the diagonal
    i64 step_behind, bend_behind; // along row 0 from the diagonal on
    i64 step_growth;              // of step_behind from row to row

    // Every element is stored: all of them, or a band.
    static Rows dense(i64 rows, i64 columns, i64 step, i64 row_step)
    {
        return band(columns, rows, columns, 0, row_step + step, step, Use::stored);
    }
    static Rows band(i64 columns, i64 below, i64 above, i64 start, i64 diagonal_step, i64 step, Use use)
    {
        return {Kind::whole, use, use, columns, below, above, {start, diagonal_step, 0, columns}, step, 0, step, 0, 0};
    }
    // One triangle is stored, in full storage or as a band of k diagonals beside the main one.
    static Rows full(Kind kind, Order order, Uplo uplo, i64 n, i64 lda)
    {
        const bool run_before = rows_run_before(order, uplo);
        return half(kind, uplo, n, n, {0, lda + 1, 0, n}, run_before ? 1 : lda, run_before ? lda : 1);
    }
    static Rows band(Kind kind, Order order, Uplo uplo, i64 n, i64 k, i64 lda)
    {
        const bool run_before = rows_run_before(order, uplo);
        return half(kind, uplo, n, k, {run_before ? k : 0, lda, 0, n}, run_before ? 1 : lda - 1,
                    run_before ? lda - 1 : 1);
    }
    // The same column after column, or row after row, without gaps.
    static Rows packed(Kind kind, Order order, Uplo uplo, i64 n)
    {
        Rows rows = half(kind, uplo, n, n, {0, n, -1, n}, n - 1, 1);
        rows.bend_before = -1;
        if (rows_run_before(order, uplo)) {
            rows = half(kind, uplo, n, n, {0, 2, 1, n}, 1, 1);
            rows.step_growth = rows.bend_behind = 1;
        }
        return rows;
    }

    // What stands on the other side of the product multiplies by the transpose: the other half is conjugated.
    Rows mirrored() const
    {
        Rows rows = *this;
        rows.use_before = use_behind, rows.use_behind = use_before;
        return rows;
    }

    i64 width() const { return min(columns, below + above + 1); } // elements of the longest row
    i64 first_column(i64 i) const { return i - min(i, below); }
    i64 diagonal_at(i64 i) const { return diagonal.at + distance(i, diagonal.step, diagonal.bend); }

    ORV_INLINE Walk before(i64 i) const
    {
        const i64 count = min(i, below);
        return {diagonal_at(i) - distance(count, step_before, bend_before), step_before, bend_before, count};
    }
    ORV_INLINE Walk from_diagonal(i64 i) const
    {
        return {diagonal_at(i), step_behind + i * step_growth, bend_behind, min(columns - i, above + 1)};
    }
    ORV_INLINE Walk all(i64 i) const
    {
        const i64 count = min(i, below);
        return {diagonal_at(i) - count * step_before, step_before, 0,
                max(0, min(columns, i + above + 1) - (i - count))};
    }

    Walk dense_row(i64 i) const { return {i * (diagonal.step - step_before), step_before, 0, columns}; }

    // Hands the walks of row i to a function one by one: a record of them that went through memory would take longer
    // than a short row.
    template <class F> ORV_INLINE void walks(i64 i, F walk) const
    {
        if (kind == Kind::whole) return walk(all(i), use_before);
        walk(before(i), use_before);
        Walk rest = from_diagonal(i);
        if (kind == Kind::hermitian) {
            walk({rest.at, 0, 0, 1}, Use::real_part);
            rest = without_first(rest);
        }
        walk(rest, use_behind);
    }

    // The same for real numbers, where no use differs.
    template <class F> ORV_INLINE void real_walks(i64 i, F walk) const
    {
        const bool one = kind == Kind::whole;
        Walk next = one ? all(i) : before(i);
        for (bool last = one;; last = true, next = from_diagonal(i)) {
            walk(next);
            if (last) return;
        }
    }

private:
    // What lies before the diagonal of an upper Hermitian matrix is conjugated.
    static Rows half(Kind kind, Uplo uplo, i64 n, i64 k, Walk diagonal, i64 step_before, i64 step_behind)
    {
        const bool conjugates = kind == Kind::hermitian, before = uplo != Uplo::lower;
        return {kind,
                conjugates && before ? Use::conjugated : Use::stored,
                conjugates && !before ? Use::conjugated : Use::stored,
                n,
                k,
                k,
                diagonal,
                step_before,
                0,
                step_behind,
                0,
                0};
    }
};

} // namespace orv::xblas
