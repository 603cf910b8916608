// The loops of products.h, for the files that compile them.
#pragma once

#include "xblas/loop.h"
#include "xblas/products.h"
#include "xblas/types.h"

namespace orv::xblas {
namespace {

template <class P, class A, class B, class Sum>
ORV_INLINE void add_real_part(const A* a, const B* v, double v_sign, Sum& sum)
{
    using N = typename P::One;
    const auto real = factor<N>(reinterpret_cast<const real_t<A>*>(a));
    sum = plus(sum, product(real, factor<N>(v, v_sign)));
}

// Whether the sum of a row takes little code. Then it is compiled where it is wanted: half of the time that short rows
// take is calls.
template <class P, class A, class B> inline constexpr bool is_brief = is_plain<P>&& are_real<A, B>;

template <class P, class A, class B>
ORV_INLINE sum_of<typename P::One, A, B> brief_row_sum(const Rows& rows, i64 i, const A* a, const B* x, i64 incx)
{
    sum_of<typename P::One, A, B> sum{};
    x += rows.first_column(i) * incx;
    rows.real_walks(i, [&](const Walk& walk) ORV_INLINE_LAMBDA {
        run<typename P::One, 1, true>(walk.count, Shared<A>{a + walk.at, walk.step, walk.bend}, Several<B>{x, incx},
                                      alone, &sum);
        x += walk.count * incx;
    });
    return sum;
}

template <class P, class A, class B>
ORV_INLINE sum_of<typename P::One, A, B> any_row_sum(const Rows& rows, i64 i, const A* a, const B* x, i64 incx,
                                                     double x_sign)
{
    sum_of<typename P::One, A, B> sum{};
    x += rows.first_column(i) * incx;
    rows.walks(i, [&](Walk walk, Use use) ORV_INLINE_LAMBDA {
        if (is_complex<A> && use == Use::real_part) add_real_part<P>(a + walk.at, x, x_sign, sum);
        else
            add_products<P>(walk.count, Shared<A>{a + walk.at, walk.step, walk.bend, sign(use == Use::conjugated)},
                            Several<B>{x, incx, 0, x_sign}, sum);
        x += walk.count * incx;
    });
    return sum;
}

// Adds row i times four vectors to four sums.
template <class P, class A, class B>
ORV_INLINE void add_row(const Rows& rows, i64 i, const A* a, Several<B> v, FourSums<P, A, B>& sums)
{
    using N = typename P::Four;
    v.at += rows.first_column(i) * v.step;
    rows.walks(i, [&](Walk walk, Use use) {
        if (is_complex<A> && use == Use::real_part) {
            const auto real = factor<N>(reinterpret_cast<const real_t<A>*>(a + walk.at));
            for (int g = 0; g < sums.groups; ++g) {
                const B* const at = v.at + g * sums.lanes * v.apart;
                sums.group[g] = plus(sums.group[g], product(real, factor<N>(at, v.sign, v.apart)));
            }
        } else {
            const double sign = orv::xblas::sign(use == Use::conjugated);
            add_products<P>(walk.count, Shared<A>{a + walk.at, walk.step, walk.bend, sign}, v, sums);
        }
        v.at += walk.count * v.step;
    });
}

} // namespace

template <class P, class A, class B>
sum_of<typename P::One, A, B> row_sum(const Rows& rows, i64 i, const A* a, const B* x, i64 incx, double x_sign)
{
    if constexpr (is_brief<P, A, B>) return brief_row_sum<P>(rows, i, a, x, incx);
    else return any_row_sum<P>(rows, i, a, x, incx, x_sign);
}

template <class P, class A, class B>
void row_sums(const Rows& rows, i64 i, const A* a, const B* x, i64 incx, sum_of<typename P::One, A, B> (&sums)[4])
{
    FourRows part[3];
    Use uses[3];
    int parts = 0;
    for (int l = 0; l < 4; ++l) {
        i64 column = rows.first_column(i + l);
        parts = 0;
        rows.walks(i + l, [&](const Walk& walk, Use use) ORV_INLINE_LAMBDA {
            part[parts].walk[l] = walk, part[parts].column[l] = column;
            uses[parts++] = use;
            column += walk.count;
        });
        sums[l] = {};
    }
    for (int p = 0; p < parts; ++p) {
        if (is_complex<A> && uses[p] == Use::real_part)
            for (int l = 0; l < 4; ++l)
                add_real_part<P>(a + part[p].walk[l].at, x + part[p].column[l] * incx, 1, sums[l]);
        else add_rows<P>(part[p], a, sign(uses[p] == Use::conjugated), x, incx, sums);
    }
}

template <class P, class T, class A, class B>
void multiply(i64 n, const Rows& rows, const A* a, const B* x, const B* tail, i64 incx, const Closing<P, T>& close,
              T* y, i64 incy)
{
    const auto sum = [&](i64 i, const B* v) ORV_INLINE_LAMBDA {
        if constexpr (is_brief<P, A, B>) return brief_row_sum<P>(rows, i, a, v, incx);
        else if constexpr (is_plain<P>) return any_row_sum<P>(rows, i, a, v, incx, 1);
        else return row_sum<P>(rows, i, a, v, incx);
    };
    i64 i = 0;
    for (const i64 fours = rows_in_fours(n, rows); i < fours; i += 4) {
        sum_of<typename P::One, A, B> heads[4], tails[4];
        row_sums<P>(rows, i, a, x, incx, heads);
        if (tail != nullptr) row_sums<P>(rows, i, a, tail, incx, tails);
        for (int l = 0; l < 4; ++l, y += incy)
            if (tail != nullptr) close(heads[l], tails[l], y);
            else close(heads[l], y);
    }
    if (tail == nullptr) {
        for (; i < n; ++i, y += incy)
            if constexpr (is_plain<P>) close.in_line(sum(i, x), y);
            else close(sum(i, x), y);
    }
    for (; i < n; ++i, y += incy) {
        const auto head = row_sum<P>(rows, i, a, x, incx);
        close(head, row_sum<P>(rows, i, a, tail, incx), y);
    }
}

template <class P, class T, class A, class B>
void multiply(i64 m, i64 n, const Rows& rows, const A* a, Several<B> b, const Closing<P, T>& close, T* c, i64 row_step,
              i64 column_step)
{
    for (i64 i = 0; i < m; ++i, c += row_step) {
        Several<B> column = b;
        T* to = c;
        i64 j = 0;
        for (; j + 4 <= n; j += 4, column.at += 4 * b.apart) {
            FourSums<P, A, B> sums;
            add_row<P>(rows, i, a, column, sums);
            for (int l = 0; l < 4; ++l, to += column_step) close(result(sums, l), to);
        }
        for (; j < n; ++j, column.at += b.apart, to += column_step)
            close(row_sum<P>(rows, i, a, column.at, column.step, column.sign), to);
    }
}

// For a pair of types of inputs, and for a type of result with such a pair.
#define XBLAS_ROWS(P, A, B)                                                                                            \
    template sum_of<P::One, A, B> row_sum<P>(const Rows&, i64, const A*, const B*, i64, double);                       \
    template void row_sums<P>(const Rows&, i64, const A*, const B*, i64, sum_of<P::One, A, B>(&)[4]);
#define XBLAS_PRODUCTS(P, T, A, B)                                                                                     \
    template void multiply<P>(i64, const Rows&, const A*, const B*, const B*, i64, const Closing<P, T>&, T*, i64);     \
    template void multiply<P>(i64, i64, const Rows&, const A*, Several<B>, const Closing<P, T>&, T*, i64, i64);

} // namespace orv::xblas
