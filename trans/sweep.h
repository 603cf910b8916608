// target(j,i) = source(i,j): transposition through registers.
#pragma once

#include "trans/elements.h"

namespace orv::trans {

// rows by cols elements, both multiples of the lanes of a register. What goes to one row of the target is stored
// together: the processor merges neighbouring stores.
template <int rows, int cols, class S, class D> ORV_INLINE void tile(const S& source, const D& target)
{
    constexpr int lanes = S::lanes;
    static_assert(rows % lanes == 0 && cols % lanes == 0);
#pragma GCC unroll 4
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

// How far away a matrix is. near: in the second-level cache, most likely. crowded: far, and its rows are a multiple of
// a page apart, so that they meet in few sets of the first-level cache.
enum class Distance { near, far, crowded };

template <class T> Distance distance(u64 rows, u64 cols, u64 lda, u64 ldb)
{
    constexpr u64 near = 0x80000, page = 4096;
    if (rows * cols * sizeof(T) <= near) return Distance::near;
    return lda * sizeof(T) % page == 0 || ldb * sizeof(T) % page == 0 ? Distance::crowded : Distance::far;
}

// Asks for what the next strip will read in these rows, and for where it will write them. The processor does not
// foresee such short steps over many lines.
template <int rows, int cols, class S, class D>
ORV_INLINE void ask_ahead(const S& source, const D& target, Distance distance)
{
    const Level level = distance == Distance::crowded ? Level::second : Level::first;
    constexpr int line = static_cast<int>(cache_line / sizeof(typename S::element));
    constexpr int ahead = cols < line ? line : cols;
#pragma GCC unroll 1
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; j += line) source.ask(Level::second, i, ahead + j);
#pragma GCC unroll 1
    for (int j = 0; j < cols; ++j)
        for (int i = 0; i < rows; i += line) target.ask(level, cols + j, i);
}

// So many rows of the source, cols wide: to cols rows of the target, in runs of twelve elements, of eight, and shorter
// ones for the rest; runs of four where a register holds one element, since the addresses of more rows would not stay
// in registers. Strips of eight columns are of far matrices, and ask ahead.
template <int cols, class S, class D>
ORV_INLINE void strip(u64 rows, const S& source, const D& target, Distance distance)
{
    constexpr int lanes = S::lanes;
    constexpr bool far = cols == 8;
    u64 i = 0;
    [[maybe_unused]] const auto run = [&]<int length>() ORV_INLINE_LAMBDA {
        if constexpr (far && (length >= 8 || lanes == 1))
            ask_ahead<length, cols>(source.at(i, 0), target.at(0, i), distance);
        tile<length, cols>(source.at(i, 0), target.at(0, i));
        i += length;
    };
    if constexpr (cols >= lanes) {
        if constexpr (far && lanes > 1 && 12 % lanes == 0)
            while (rows - i > 12) run.template operator()<12>();
        if constexpr (lanes > 1)
            while (rows - i >= 8) run.template operator()<8>();
        if constexpr (4 % lanes == 0)
            while (rows - i >= 4) run.template operator()<4>();
        if constexpr (lanes == 2)
            if (rows - i >= 2) run.template operator()<2>();
    }
    for (; i < rows; ++i)
        for (int j = 0; j < cols; ++j) target.template put<1>(j, i, source.template get<1>(i, j));
}

// All of rows by cols elements. Eight columns of the source at a time use up its lines where they come from afar; four
// write fewer rows of the target at a time, which is faster where both are near.
template <class S, class D> void sweep(u64 rows, u64 cols, const S& source, const D& target, Distance distance)
{
    constexpr int lanes = S::lanes;
    u64 j = 0;
    if (distance != Distance::near)
        for (; cols - j >= 8; j += 8) strip<8>(rows, source.at(0, j), target.at(j, 0), distance);
    for (; cols - j >= 4; j += 4) strip<4>(rows, source.at(0, j), target.at(j, 0), Distance::near);
    if constexpr (lanes <= 2)
        if (cols - j >= 2) strip<2>(rows, source.at(0, j), target.at(j, 0), Distance::near), j += 2;
    for (; j < cols; ++j) strip<1>(rows, source.at(0, j), target.at(j, 0), Distance::near);
}

// Rows of the source that are swept together. Each brings a page of its own, unless rows are short; so does each of the
// eight rows of the target that are written and of the eight that are asked for. 62 pages are what the smallest
// first-level page tables hold. The number is a multiple of 16: a band ends with a cache line of the target, if rows of
// the target begin with one.
template <class T> u64 rows_together(u64 lda, u64 ldb)
{
    constexpr u64 page = 4096, size = sizeof(T), pages = 62, whole = 16;
    const auto rows_in_page = [](u64 bytes) { return bytes >= page ? 1 : (bytes + page - 1) / bytes; };
    const u64 per_page = rows_in_page(lda * size), target_per_page = rows_in_page(ldb * size);
    return (pages - 2 * ((target_per_page + 7) / target_per_page)) * per_page / whole * whole;
}

// The same in bands of rows that pages have room for. lda, ldb: the distances of rows.
template <class S, class D> void sweep_bands(u64 rows, u64 cols, const S& source, u64 lda, const D& target, u64 ldb)
{
    using T = typename S::element;
    constexpr u64 least = 64; // a few pages too many cost less than a second, low band
    const Distance d = distance<T>(rows, cols, lda, ldb);
    if (rows <= least || cols == 1) return sweep(rows, cols, source, target, d);
    const u64 height = rows_together<T>(lda, ldb);
    for (u64 i = 0; i < rows; i += height)
        sweep(rows - i < height ? rows - i : height, cols, source.at(i, 0), target.at(0, i), d);
}

// The same by halves: the longer side is cut in two, down to blocks that any cache holds; there the order of the last
// cuts makes no difference, and the block is swept. Halves are whole runs, so that shorter ones stand at edges only.
template <class S, class D> void cut_in_halves(u64 rows, u64 cols, S source, D target, Distance distance)
{
    constexpr u64 block = 64, run = 16;
    while (rows > block || cols > block) {
        if (cols < rows) {
            const u64 half = rows / 2 / run * run;
            cut_in_halves(half, cols, source, target, distance);
            source = source.at(half, 0), target = target.at(0, half), rows -= half;
        } else {
            const u64 half = cols / 2 / run * run;
            cut_in_halves(rows, half, source, target, distance);
            source = source.at(0, half), target = target.at(half, 0), cols -= half;
        }
    }
    sweep(rows, cols, source, target, distance);
}
template <class S, class D> void sweep_halves(u64 rows, u64 cols, const S& source, u64 lda, const D& target, u64 ldb)
{
    constexpr u64 small = 16;
    if (rows <= small && cols <= small) return sweep(rows, cols, source, target, Distance::near);
    cut_in_halves(rows, cols, source, target, distance<typename S::element>(rows, cols, lda, ldb));
}

} // namespace orv::trans
