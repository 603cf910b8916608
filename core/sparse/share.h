// Where rows are cut among threads: entries, not rows, are even.
#pragma once

#include "frame/types.h"

namespace orv::core::sparse {

// What a row costs beside its entries, in entries.
inline constexpr i64 row_cost = 2;

// Entries of m compressed rows that follow each other, and what the rows cost. If they do not follow each other it is
// an estimate, and never negative.
template <class Int> i64 work_of(const Int* begin, const Int* end, Int m)
{
    return m == 0 ? 0 : max(0, i64{end[m - 1]} - begin[0]) + row_cost * m;
}

// The row, from 0, at which part `index` of `count` begins: the first one that has that share of the work before it.
// before(i), the work in front of row i, ascends; if it does not, parts are less even, but still each row is in one of
// them.
template <class Int, class Before> Int share_of(const Before& before, Int m, i64 work, int index, int count)
{
    if (index == 0) return 0;
    if (index == count) return m;
    const i64 share = work * index / count;
    Int low = 0, high = m;
    while (low < high) {
        const Int middle = low + (high - low) / 2;
        if (before(middle) < share) low = middle + 1;
        else high = middle;
    }
    return low;
}

// The same for compressed rows that begin at begin.
template <class Int> Int share_of_rows(const Int* begin, Int m, i64 work, int index, int count)
{
    return share_of([begin](Int i) { return i64{begin[i]} - begin[0] + row_cost * i; }, m, work, index, count);
}

} // namespace orv::core::sparse
