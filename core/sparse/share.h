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
// begin ascends; if it does not, parts are less even, but still each row is in one of them.
template <class Int> Int share_of_rows(const Int* begin, Int m, i64 work, int index, int count)
{
    if (index == 0) return 0;
    if (index == count) return m;
    const i64 before = work * index / count;
    Int low = 0, high = m;
    while (low < high) {
        const Int middle = low + (high - low) / 2;
        if (i64{begin[middle]} - begin[0] + row_cost * middle < before) low = middle + 1;
        else high = middle;
    }
    return low;
}

} // namespace orv::core::sparse
