// Matrices in compressed rows. Rows need not be adjacent in val, nor in order: row i has the entries from pntrb[i] to
// pntre[i] - 1, counted from pntrb[0], whatever that is. Within a row they are sorted by column.
//
// Rows, columns and the elements of vectors are numbered as the matrix numbers columns, from 0 or from 1: each array is
// moved once, and no loop converts.
#pragma once

#include "spblas/sums.h"

namespace orv::ORV_SPBLAS {

// A row cut at the diagonal.
struct Cut {
    i64 begin, diagonal, behind, end; // of the row, of its entries on the diagonal, and one behind these and the row

    // The entries that count: beside the diagonal, and with those on it if it is stored.
    constexpr i64 beside_from(const Options& o) const { return o.lower ? begin : behind; }
    constexpr i64 beside_to(const Options& o) const { return o.lower ? diagonal : end; }
    constexpr i64 from(const Options& o) const { return o.lower ? begin : o.diagonal ? diagonal : behind; }
    constexpr i64 to(const Options& o) const { return o.upper ? end : o.diagonal ? behind : diagonal; }
};

// Asks for the entries that will be read 64 cache lines after those of a row, or before them, so that they come from
// memory in time; the processor does not look ahead over the end of a page. Nothing is read here, so it does not matter
// whether they exist. Of matrices that stay in the caches it would cost a tenth. Rows up to two lines all take the same
// way, for their length is hard to foresee.
template <int step, class T> ORV_INLINE void ask_ahead(Entries<T> row)
{
    constexpr i64 line = cache_line / sizeof(T), ahead = step * 64 * line;
    const auto ask = [&](i64 e) ORV_INLINE_LAMBDA { prefetch(row.val + (e + ahead)), prefetch(row.col + (e + ahead)); };
    ask(0), ask(line);
    for (i64 e = 2 * line; e < row.n; e += line) ask(e);
}

template <class T> struct Csr {
    const T* val;
    const Int *col, *begin, *end;

    Csr(const Options& o, const T* a, const Int* columns, const Int* pntrb, const Int* pntre)
        : val(a - *pntrb), col(columns - *pntrb), begin(pntrb - o.base), end(pntre - o.base)
    {
    }

    ORV_INLINE Entries<T> entries(i64 from, i64 to) const { return {val + from, col + from, to - from}; }
    ORV_INLINE Entries<T> row(i64 i) const { return entries(begin[i], end[i]); }

    // Looks for the diagonal from the side of the entries that do not count: of a triangle alone it is found at once.
    ORV_INLINE Cut cut(const Options& o, i64 i) const { return o.lower ? cut<true>(i) : cut<false>(i); }
    template <bool lower> ORV_INLINE Cut cut(i64 i) const
    {
        const i64 from = begin[i], to = end[i];
        if constexpr (lower) {
            if (to - from > 1 && col[to - 1] == i && col[to - 2] < i) [[likely]]
                return {from, to - 1, to, to};
            i64 behind = to;
            while (behind > from && col[behind - 1] > i) --behind;
            i64 diagonal = behind;
            while (diagonal > from && col[diagonal - 1] == i) --diagonal;
            return {from, diagonal, behind, to};
        } else {
            if (to - from > 1 && col[from] == i && col[from + 1] > i) [[likely]]
                return {from, from, from + 1, to};
            i64 diagonal = from;
            while (diagonal < to && col[diagonal] < i) ++diagonal;
            i64 behind = diagonal;
            while (behind < to && col[behind] == i) ++behind;
            return {from, diagonal, behind, to};
        }
    }
};

// act(large) for rows i to end - 1: whether they are more than the second-level cache keeps from one call to the next,
// taken as if they followed each other. Loops are compiled for both.
template <class T, class Act> ORV_INLINE void by_size(const Csr<T>& a, i64 i, i64 end, const Act& act)
{
    constexpr i64 kept = 1 << 20, entry = sizeof(T) + sizeof(Int);
    if (i < end && (i64{a.end[end - 1]} - a.begin[i]) * entry > kept) act(std::true_type());
    else act(std::false_type());
}

} // namespace orv::ORV_SPBLAS
