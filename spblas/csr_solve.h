// Solves with a matrix in compressed rows, for one vector in place.
//
// The diagonal of a row is the entry at which a search stops; whether it is one is not tested. Where rows are solved
// downward (a lower triangle, an upper one transposed, a diagonal matrix) the search goes from the row's start while
// columns are below the row's number, else from its end while they are above. If all are, the entry behind the row's
// end, or before its start, is taken: its column is not read, its value is.
#pragma once

#include "spblas/csr.h"
#include "spblas/quotient.h"

namespace orv::ORV_SPBLAS {

// A vector, or a column of a dense matrix that is stored by rows.
template <class T> struct Strided {
    T* y;
    i64 step;
    ORV_INLINE T& operator[](i64 i) const { return y[i * step]; }
};

// Where the search for the diagonal of row i stops. In a triangle alone, that is the end where it would be found last,
// so there it is looked for first.
template <class T> ORV_INLINE i64 stop(const Csr<T>& a, i64 i, bool downward)
{
    const i64 begin = a.begin[i], end = a.end[i];
    if (downward) {
        if (begin < end && a.col[end - 1] == i && (end - begin == 1 || a.col[end - 2] < i)) return end - 1;
        i64 p = begin;
        while (p < end && a.col[p] < i) ++p;
        return p;
    }
    if (begin < end && a.col[begin] == i && (end - begin == 1 || a.col[begin + 1] > i)) return begin;
    i64 p = end - 1;
    while (p >= begin && a.col[p] > i) --p;
    return p;
}

// The entries of row i that act beside the diagonal, which stands at p.
template <class T> ORV_INLINE Entries<T> beside(const Options& o, const Csr<T>& a, i64 i, i64 p)
{
    const i64 begin = a.begin[i], end = a.end[i];
    // What is stored in place of ones does not act.
    if (o.unit) {
        while (p >= begin && p < end && a.col[p] == i) p += o.lower ? -1 : 1;
        p += o.lower ? 1 : -1;
    }
    return o.lower ? a.entries(begin, p) : a.entries(p + 1, end);
}

// By the diagonal of a row, which is not read where it stands for a one.
template <class T> ORV_INLINE T divided(const Options& o, const Csr<T>& a, i64 diagonal, T value)
{
    return o.unit ? value : divide(value, conjugate_if(o.conjugate_diagonal(), a.val[diagonal]));
}

// Each row takes from the elements that are solved already, entry by entry along the search. The last of them is often
// the one that has just been solved: it is still in a register, so the row waits for its product, two sums and a
// quotient and not for memory. Four entries a step leave the processor a quarter of the jumps to foresee; with a loop
// for either kind of row, where the loop ends does not wait for what columns say.
template <bool downward, bool large, class T, class Y>
[[gnu::noinline]] void solve_rows(Options o, Int m, Csr<T> a, Y y)
{
    constexpr int step = downward ? 1 : -1;
    T newest = zero<T>;
    i64 i = downward ? i64{o.base} : i64{m} + o.base - 1;
    for (const i64 end = downward ? i64{m} + o.base : i64{o.base} - 1; i != end; i += step) {
        if constexpr (large) ask_ahead<step>(a.row(i));
        const i64 diagonal = stop(a, i, downward), start = downward ? a.begin[i] : a.end[i] - 1;
        const auto solve_to = [&](i64 behind, auto meets_newest) ORV_INLINE_LAMBDA {
            i64 p = start;
            One<T> sum{};
            const auto next = [&]() ORV_INLINE_LAMBDA {
                if (p == behind) return false;
                sum.add(a.val + p, &y[a.col[p]]), p += step;
                return true;
            };
            while (next() && next() && next() && next()) {
            }
            if constexpr (meets_newest) sum.add(a.val + behind, &newest);
            y[i] = newest = divided(o, a, diagonal, y[i] - sum.value(o.conjugate_diagonal()));
        };
        if (start != diagonal && a.col[diagonal - step] == i - step) solve_to(diagonal - step, std::true_type());
        else solve_to(diagonal, std::false_type());
    }
}

// Each solved element is taken from those that its row leads to.
template <bool large, class T, class Y> void solve_columns(const Options& o, Int m, const Csr<T>& a, Y y)
{
    const bool downward = !o.lower;
    const i64 low = o.base, high = i64{m} + o.base - 1;
    for (i64 step = 0; step < m; ++step) {
        const i64 i = downward ? low + step : high - step;
        if constexpr (large) downward ? ask_ahead<1>(a.row(i)) : ask_ahead<-1>(a.row(i));
        const i64 diagonal = stop(a, i, downward);
        const Entries<T> row = beside(o, a, i, diagonal);
        const T solved = y[i] = divided(o, a, diagonal, y[i]);
        const Multiple<T> multiple(-solved, o.conjugate_diagonal());
#pragma GCC unroll 8
        for (i64 e = 0; e < row.n; ++e) multiple.add(row.val[e], &y[row.col[e]]);
    }
}

// y := op(A)^-1*y; Y is T* or Strided<T>, numbered as the columns are.
template <class T, class Y> void solve(const Options& o, Int m, const Csr<T>& a, Y y)
{
    by_size(a, o.base, i64{m} + o.base, [&](auto large) ORV_INLINE_LAMBDA {
        if (!o.direct) solve_columns<large>(o, m, a, y);
        else if (o.lower) solve_rows<true, large>(o, m, a, y);
        else solve_rows<false, large>(o, m, a, y);
    });
}

// y[i] := (alpha/a)*y[i]
template <class T, class Y> void solve_diagonal(const Options& o, Int m, const Csr<T>& a, T alpha, Y y)
{
    for (Int i = o.base; i < m + o.base; ++i)
        y[i] = divide(alpha, conjugate_if(o.conjugate_diagonal(), a.val[stop(a, i, true)])) * y[i];
}

} // namespace orv::ORV_SPBLAS
