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
    Int begin, diagonal, behind, end; // of the row, of its entries on the diagonal, and one behind these and the row

    // The entries that count: beside the diagonal, and with those on it if it is stored.
    constexpr Int beside_from(const Options& o) const { return o.lower ? begin : behind; }
    constexpr Int beside_to(const Options& o) const { return o.lower ? diagonal : end; }
    constexpr Int from(const Options& o) const { return o.lower ? begin : o.diagonal ? diagonal : behind; }
    constexpr Int to(const Options& o) const { return o.upper ? end : o.diagonal ? behind : diagonal; }
};

template <class T> struct Csr {
    const T* val;
    const Int *col, *begin, *end;

    Csr(const Options& o, const T* a, const Int* columns, const Int* pntrb, const Int* pntre)
        : val(a - *pntrb), col(columns - *pntrb), begin(pntrb - o.base), end(pntre - o.base)
    {
    }

    ORV_INLINE Entries<T> entries(i64 from, i64 to) const { return {val + from, col + from, to - from}; }
    ORV_INLINE Entries<T> row(Int i) const { return entries(begin[i], end[i]); }

    // Looks for the diagonal from the side of the entries that do not count: of a triangle alone it is found at once.
    ORV_INLINE Cut cut(const Options& o, Int i) const
    {
        Cut c{begin[i], begin[i], end[i], end[i]};
        if (o.lower) {
            while (c.behind > c.begin && col[c.behind - 1] > i) --c.behind;
            for (c.diagonal = c.behind; c.diagonal > c.begin && col[c.diagonal - 1] == i;) --c.diagonal;
        } else {
            while (c.diagonal < c.end && col[c.diagonal] < i) ++c.diagonal;
            for (c.behind = c.diagonal; c.behind < c.end && col[c.behind] == i;) ++c.behind;
        }
        return c;
    }
};

} // namespace orv::ORV_SPBLAS
