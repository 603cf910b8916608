// target(j,i) = source(i,j): transposition through registers.
#pragma once

#include "trans/elements.h"

namespace orv::trans {

// rows by cols elements, both multiples of the lanes of a register. What goes to one row of the target is stored
// together: the processor merges neighbouring stores.
template <int rows, int cols, class S, class D> ORV_INLINE void tile(const S& source, const D& target)
{
    constexpr int lanes = S::lanes;
#pragma GCC unroll 8
    for (int j = 0; j < cols; j += lanes) {
        vec<typename S::element> v[rows / lanes][lanes];
#pragma GCC unroll 12
        for (int i = 0; i < rows; i += lanes) {
#pragma GCC unroll 4
            for (int k = 0; k < lanes; ++k) v[i / lanes][k] = source.template get<lanes>(i + k, j);
            if constexpr (lanes > 1) transpose(v[i / lanes]);
        }
#pragma GCC unroll 4
        for (int k = 0; k < lanes; ++k)
#pragma GCC unroll 12
            for (int i = 0; i < rows; i += lanes) target.template put<lanes>(j + k, i, v[i / lanes][k]);
    }
}

// So many rows of the source, cols wide: to cols rows of the target, in runs of twelve elements, of eight, and shorter
// ones for the rest.
template <int cols, class S, class D> ORV_INLINE void strip(u64 rows, const S& source, const D& target)
{
    constexpr int lanes = S::lanes;
    u64 i = 0;
    if constexpr (cols >= lanes) {
        for (; rows - i > 12; i += 12) tile<12, cols>(source.at(i, 0), target.at(0, i));
        for (; rows - i >= 8; i += 8) tile<8, cols>(source.at(i, 0), target.at(0, i));
        if (rows - i >= 4) tile<4, cols>(source.at(i, 0), target.at(0, i)), i += 4;
        if constexpr (lanes == 2)
            if (rows - i >= 2) tile<2, cols>(source.at(i, 0), target.at(0, i)), i += 2;
    }
    for (; i < rows; ++i)
        for (int j = 0; j < cols; ++j) target.template put<1>(j, i, source.template get<1>(i, j));
}

// All of rows by cols elements, eight columns of the source at a time.
template <class S, class D> void sweep(u64 rows, u64 cols, const S& source, const D& target)
{
    constexpr int lanes = S::lanes;
    u64 j = 0;
    for (; cols - j >= 8; j += 8) strip<8>(rows, source.at(0, j), target.at(j, 0));
    if (cols - j >= 4) strip<4>(rows, source.at(0, j), target.at(j, 0)), j += 4;
    if constexpr (lanes <= 2)
        if (cols - j >= 2) strip<2>(rows, source.at(0, j), target.at(j, 0)), j += 2;
    for (; j < cols; ++j) strip<1>(rows, source.at(0, j), target.at(j, 0));
}

// Rows of the source that are swept together. Each brings a page of its own, unless rows are short, and so does each of
// the eight rows of the target: 62 pages are what the smallest first-level page tables hold. Where rows of the source
// are a multiple of 32 KiB apart they meet in one set of the first-level cache, which has room for eight.
template <class T> u64 rows_together(u64 lda, u64 ldb)
{
    constexpr u64 page = 4096, size = sizeof(T), pages = 62, cache = 0x8000;
    const auto rows_in_page = [](u64 bytes) { return bytes >= page ? 1 : (bytes + page - 1) / bytes; };
    const u64 bytes = lda * size, per_page = rows_in_page(bytes), target_per_page = rows_in_page(ldb * size);
    const u64 eight = 8 * per_page;
    if (ldb * size <= page || bytes * per_page % cache == 0) return eight;
    return (pages - (target_per_page + 7) / target_per_page) * per_page;
}

// The same in bands of rows that pages and cache have room for. lda, ldb: the distances of rows.
template <class S, class D> void sweep_bands(u64 rows, u64 cols, const S& source, u64 lda, const D& target, u64 ldb)
{
    constexpr u64 least = 8; // bands are never lower
    if (rows <= least) return sweep(rows, cols, source, target);
    const u64 height = rows_together<typename S::element>(lda, ldb);
    for (u64 i = 0; i < rows; i += height)
        sweep(rows - i < height ? rows - i : height, cols, source.at(i, 0), target.at(0, i));
}

// The same by halves: the longer side is cut in two, down to blocks that any cache holds; there the order of the last
// cuts makes no difference, and the block is swept.
template <class S, class D> void sweep_halves(u64 rows, u64 cols, S source, D target)
{
    constexpr u64 block = 32;
    while (rows > block || cols > block) {
        if (cols < rows) {
            const u64 half = rows / 2;
            sweep_halves(half, cols, source, target);
            source = source.at(half, 0), target = target.at(0, half), rows -= half;
        } else {
            const u64 half = cols / 2;
            sweep_halves(rows, half, source, target);
            source = source.at(0, half), target = target.at(half, 0), cols -= half;
        }
    }
    sweep(rows, cols, source, target);
}

} // namespace orv::trans
