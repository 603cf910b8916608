// How the rows of a stored matrix lie in memory. Whatever the storage, a row is a few walks over it, one behind the
// other in the order of the columns, and a product with a vector is the sum of the products of its walks.
//
// Rows of any kind tell the first column of row i that is stored, and hand the walks of row i to a function one by one:
// a record of them that went through memory would take longer than a short row.
#pragma once

#include "xblas/closing.h"

namespace orv::xblas {

constexpr Walk backwards(Walk w)
{
    const i64 last_step = w.step + (w.count - 2) * w.bend;
    return {w.at + (w.count - 1) * (w.step + last_step) / 2, -last_step, w.bend, w.count};
}

enum class Use { stored, conjugated, real_part };

// ---- Storages of a symmetric, Hermitian or triangular matrix ----------------------------------------------------
//
// before(i): elements (i, 0..i-1), those that are stored at all.    from_diagonal(i): (i, i), (i, i+1), ...
// Which of the two runs along the storage depends on the triangle and the order.

constexpr bool rows_run_before(Order order, Uplo uplo)
{
    return (order == Order::column_major && uplo == Uplo::upper) || (order == Order::row_major && uplo == Uplo::lower);
}

// Full and band storage: k diagonals beside the main one, which starts at `diagonal` and goes on by lda + 1 or lda.
struct Half {
    i64 n, k, diagonal, diagonal_step, step_before, step_behind;

    static Half full(Order order, Uplo uplo, i64 n, i64 lda)
    {
        if (rows_run_before(order, uplo)) return {n, n, 0, lda + 1, 1, lda};
        return {n, n, 0, lda + 1, lda, 1};
    }
    static Half band(Order order, Uplo uplo, i64 n, i64 k, i64 lda)
    {
        if (rows_run_before(order, uplo)) return {n, k, k, lda, 1, lda - 1};
        return {n, k, 0, lda, lda - 1, 1};
    }
    i64 width() const { return min(n, 2 * k + 1); }
    Walk before(i64 i) const
    {
        const i64 count = min(i, k);
        return {diagonal + i * diagonal_step - count * step_before, step_before, 0, count};
    }
    Walk from_diagonal(i64 i) const { return {diagonal + i * diagonal_step, step_behind, 0, min(n - i, k + 1)}; }
};

// Column after column, or row after row, without gaps.
struct PackedHalf {
    i64 n;
    bool run_before;

    i64 width() const { return n; }
    Walk before(i64 i) const
    {
        if (run_before) return {i * (i + 1) / 2, 1, 0, i};
        return {i, n - 1, -1, i};
    }
    Walk from_diagonal(i64 i) const
    {
        if (run_before) return {i * (i + 1) / 2 + i, i + 1, 1, n - i};
        return {i * (2 * n - i + 1) / 2, 1, 0, n - i};
    }
};

// ---- Rows of whole matrices -------------------------------------------------------------------------------------

template <class Storage> struct SymmetricRows {
    static constexpr int parts = 2; // walks a row
    Storage half;
    i64 width() const { return half.width(); } // elements of the longest row
    i64 first_column(i64 i) const { return i - half.before(i).count; }
    template <class F> ORV_INLINE void walks(i64 i, F walk) const
    {
        walk(half.before(i), Use::stored);
        walk(half.from_diagonal(i), Use::stored);
    }
};

// One side of the diagonal is the conjugate of what is stored; of the diagonal only the real part is read.
template <class Storage> struct HermitianRows {
    static constexpr int parts = 3;
    Storage half;
    bool conjugate_before;
    i64 width() const { return half.width(); }
    i64 first_column(i64 i) const { return i - half.before(i).count; }
    template <class F> ORV_INLINE void walks(i64 i, F walk) const
    {
        const Walk rest = half.from_diagonal(i);
        walk(half.before(i), conjugate_before ? Use::conjugated : Use::stored);
        walk({rest.at, 0, 0, 1}, Use::real_part);
        walk(without_first(rest), conjugate_before ? Use::stored : Use::conjugated);
    }
};

// Every element is stored.
struct DenseRows {
    static constexpr int parts = 1;
    i64 columns, step, row_step;
    Use use;
    i64 width() const { return columns; }
    static i64 first_column(i64) { return 0; }
    template <class F> ORV_INLINE void walks(i64 i, F walk) const { walk({i * row_step, step, 0, columns}, use); }
};

// ---- Products ---------------------------------------------------------------------------------------------------

template <class P, class A, class B, class Sum> ORV_INLINE void add_real_part(const A* a, Several<B> v, Sum& sum)
{
    using N = typename P::One;
    const auto real = factor<N>(reinterpret_cast<const real_t<A>*>(a));
    sum = plus(sum, product(real, factor<N>(v.at, v.sign)));
}
template <class P, class A, class B> ORV_INLINE void add_real_part(const A* a, Several<B> v, FourSums<P, A, B>& sums)
{
    using N = typename P::Four;
    const auto real = factor<N>(reinterpret_cast<const real_t<A>*>(a));
    for (int g = 0; g < sums.groups; ++g) {
        sums.group[g] = plus(sums.group[g], product(real, factor<N>(v.at, v.sign, v.apart)));
        v.at += sums.lanes * v.apart;
    }
}

// Adds row i times v to sum, or to four sums. a: the matrix, v: the vector.
template <class P, class Rows, class A, class B, class Sums>
ORV_INLINE void add_row(const Rows& rows, i64 i, const A* a, Several<B> v, Sums& sums)
{
    v.at += rows.first_column(i) * v.step;
    rows.walks(i, [&](Walk walk, Use use) ORV_INLINE_LAMBDA {
        if (is_complex<A> && use == Use::real_part) add_real_part<P>(a + walk.at, v, sums);
        else
            add_products<P>(walk.count, Shared<A>{a + walk.at, walk.step, walk.bend, sign(use == Use::conjugated)}, v,
                            sums);
        v.at += walk.count * v.step;
    });
}
template <class P, class Rows, class A, class B>
ORV_INLINE auto row_sum(const Rows& rows, i64 i, const A* a, Several<B> v)
{
    sum_of<typename P::One, A, B> sum{};
    add_row<P>(rows, i, a, v, sum);
    return sum;
}

// The sums of rows i, i + 1, i + 2, i + 3.
template <class Sum> struct Sums {
    Sum row[4];
};
template <class P, class Rows, class A, class B>
ORV_INLINE auto row_sums(const Rows& rows, i64 i, const A* a, Several<B> x)
{
    Sums<sum_of<typename P::One, A, B>> sums{};
    FourRows part[Rows::parts];
    Use uses[Rows::parts];
    for (int l = 0; l < 4; ++l) {
        i64 column = rows.first_column(i + l);
        int p = 0;
        rows.walks(i + l, [&](Walk walk, Use use) ORV_INLINE_LAMBDA {
            part[p].walk[l] = walk, part[p].column[l] = column;
            uses[p++] = use;
            column += walk.count;
        });
    }
    for (int p = 0; p < Rows::parts; ++p) {
        if (is_complex<A> && uses[p] == Use::real_part)
            for (int l = 0; l < 4; ++l)
                add_real_part<P>(a + part[p].walk[l].at, Several<B>{x.at + part[p].column[l] * x.step, x.step},
                                 sums.row[l]);
        else add_rows<P>(part[p], a, sign(uses[p] == Use::conjugated), x.at, x.step, sums.row);
    }
    return sums;
}

// How many of n rows are taken in fours: all that fill one if rows are long. Each row is one chain of additions that
// waits for the last, and four chains run at once. Of short rows the processor overlaps as many by itself, and what
// begins and ends a group is saved: for full matrices the ways meet between 50 and 60 elements.
template <class Rows> constexpr i64 rows_in_fours(i64 n, const Rows& rows)
{
    constexpr i64 long_row = 64;
    return rows.width() < long_row ? 0 : n / 4 * 4;
}

// y := alpha*A*x + beta*y in the form of close, for n rows; or the same with a head and a tail of x.
template <class P, class Rows, class T, class A, class... B>
void multiply(i64 n, const Rows& rows, const A* a, i64 incx, const Closing<P, T>& close, T* y, i64 incy, const B*... x)
{
    i64 i = 0;
    const auto close_four = [&](const auto&... sums) {
        for (int l = 0; l < 4; ++l, y += incy) close(sums.row[l]..., y);
    };
    for (const i64 fours = rows_in_fours(n, rows); i < fours; i += 4)
        close_four(row_sums<P>(rows, i, a, Several<B>{x, incx})...);
    for (; i < n; ++i, y += incy) close(row_sum<P>(rows, i, a, Several<B>{x, incx})..., y);
}

// C := alpha*A*B + beta*C in the form of close. b: column 0 of B, as Several with apart the step from column to column.
template <class P, class Rows, class T, class A, class B>
void multiply(i64 m, i64 n, const Rows& rows, const A* a, Several<B> b, const Closing<P, T>& close, T* c, i64 row_step,
              i64 column_step)
{
    for (i64 i = 0; i < m; ++i, c += row_step) {
        const auto column = [&](i64 j) {
            Several<B> v = b;
            v.at += j * v.apart;
            return v;
        };
        i64 j = 0;
        for (; j + 4 <= n; j += 4) {
            FourSums<P, A, B> sums;
            add_row<P>(rows, i, a, column(j), sums);
            for (int l = 0; l < 4; ++l) close(result(sums, l), c + (j + l) * column_step);
        }
        for (; j < n; ++j) close(row_sum<P>(rows, i, a, column(j)), c + j * column_step);
    }
}

} // namespace orv::xblas
