// Sorting by counting: entries go to rows in their order. Count them, make places of the counts, put each entry to the
// place of its row and move that on, and make pointers of the places.
#pragma once

#include "spblas/options.h"

namespace orv::ORV_SPBLAS {

// The places of entries that come so much later are asked for: those of a large matrix are anywhere in memory.
constexpr Int ahead = 16;

inline void clear_counts(Int* count, i64 n)
{
    for (i64 i = 0; i < n; ++i) count[i] = 0;
}
// count[0 .. n-1] become the places of the first entries of rows, from first on; returns the place behind the last.
inline Int counts_to_places(Int* count, Int n, Int first)
{
    for (Int i = 0; i < n; ++i) {
        const Int entries = count[i];
        count[i] = first, first += entries;
    }
    return first;
}
// Each place has moved over all entries of its row, to the first of the next: n + 1 pointers.
inline void places_to_starts(Int* place, Int n, Int first)
{
    for (Int i = n; i > 0; --i) place[i] = place[i - 1];
    place[0] = first;
}
// Rows from i to last, counted like their pointers, are empty.
inline void leave_empty(Int i, Int last, Int* start)
{
    for (Int row = i; row <= last; ++row) start[row + 1] = start[i];
}

} // namespace orv::ORV_SPBLAS
