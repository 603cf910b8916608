// Triangular solves with a matrix in compressed rows, for one vector in place.
//
// The diagonal of a row is the entry at which a search stops; whether it is one is not tested. Where rows are solved
// downward (a lower triangle, or an upper one transposed) the search goes from the row's start while columns are below
// the row's number, else from its end while they are above. If all are, the entry behind the row's end, or before its
// start, is taken: its column is not read, its value is.
#pragma once

#include "spblas/csr.h"
#include "spblas/quotient.h"

namespace orv::ORV_SPBLAS {

// A vector, or a column of a dense matrix that is stored by rows.
template <class T> struct Strided {
    T* y;
    i64 step;
    ORV_INLINE T& operator[](Int i) const { return y[i * step]; }
};

// Sums over elements of either.
template <class T> ORV_INLINE T dot_with(Entries<T> row, T* y, bool conjugates)
{
    return dot(row.val, row.col, row.n, y, conjugates);
}
template <class T> ORV_INLINE T dot_with(Entries<T> row, Strided<T> y, bool conjugates)
{
    One<T> sum{};
    for (i64 e = 0; e < row.n; ++e) sum.add(row.val + e, &y[row.col[e]]);
    return sum.value(conjugates);
}

// The entries of row i that its solve uses beside the diagonal, and the one that stands for the diagonal.
struct Stop {
    Int from, to, diagonal;
};
template <class T> ORV_INLINE Stop stop(const Options& o, const Csr<T>& a, Int i, bool downward)
{
    const Int begin = a.begin[i], end = a.end[i];
    Int p = downward ? begin : end - 1;
    if (downward)
        while (p < end && a.col[p] < i) ++p;
    else
        while (p >= begin && a.col[p] > i) --p;
    const Int diagonal = p;
    // A search that comes from the other triangle has to leave out itself what is stored in place of ones.
    const bool whole = o.unit && o.mirrored;
    if (whole)
        while (p >= begin && p < end && a.col[p] == i) p += o.lower ? -1 : 1;
    if (o.lower) return {begin, p + (whole ? 1 : 0), diagonal};
    return {p + (whole ? 0 : 1), end, diagonal};
}

// y := op(A)^-1*y; Y is T* or Strided<T>, numbered as the columns are.
template <class T, class Y> void solve(const Options& o, Int m, const Csr<T>& a, Y y)
{
    const bool downward = o.lower != o.mirrored;
    const Int low = o.base, high = m + o.base - 1;
    for (Int step = 0; step < m; ++step) {
        const Int i = downward ? low + step : high - step;
        const Stop s = stop(o, a, i, downward);
        const bool conjugates = o.conjugate_diagonal();
        const auto divided = [&](T value) {
            return o.unit ? value : divide(value, conjugate_if(conjugates, a.val[s.diagonal]));
        };
        const Entries<T> beside = a.entries(s.from, s.to);
        if (o.direct) {
            y[i] = divided(y[i] - dot_with(beside, y, conjugates));
        } else {
            const T solved = y[i] = divided(y[i]);
            const Multiple<T> multiple(-solved, conjugates);
#pragma GCC unroll 8
            for (i64 e = 0; e < beside.n; ++e) multiple.add(beside.val[e], &y[beside.col[e]]);
        }
    }
}

// y[i] := (alpha/a)*y[i] with the entry on the diagonal; rows without one are left alone.
template <class T, class Y> void solve_diagonal(const Options& o, Int m, const Csr<T>& a, T alpha, Y y)
{
    for (Int i = o.base; i < m + o.base; ++i) {
        const Cut cut = a.cut(o, i);
        if (cut.diagonal < cut.behind)
            y[i] = divide(alpha, conjugate_if(o.conjugate_diagonal(), a.val[cut.diagonal])) * y[i];
    }
}

} // namespace orv::ORV_SPBLAS
