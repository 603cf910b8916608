// Sorting the entries of rows by column; those of one column stay in their order. Very long rows ask for memory, and go
// on without.
#pragma once

#include "spblas/options.h"

namespace orv::ORV_SPBLAS {

// Entries first to last - 1.
template <class T> void sort_entries(Int* col, T* val, Int first, Int last);

// Rows i to end - 1, counted from 0, of compressed rows whose pointers count from base.
template <class T> void sort_rows(Int i, Int end, const Int* start, Int base, Int* col, T* val)
{
    for (; i < end; ++i) sort_entries(col - base, val - base, start[i], start[i + 1]);
}

} // namespace orv::ORV_SPBLAS
