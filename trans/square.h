// Squares in place: tiles of one cache line by as many rows, exchanged with their mirror images.
#pragma once

#include "trans/elements.h"

namespace orv::trans {

// Elements in a cache line: the side of a tile.
template <class T> inline constexpr u64 tile_unit = cache_line / sizeof(T);

// The block at p, rows by cols elements, and the mirror block at q, cols by rows, change places, each transposed. Both
// sides are multiples of the lanes; p and q do not overlap.
template <int rows, int cols, class T, class Op> ORV_INLINE void exchange_blocks(T* p, T* q, u64 ld, const Op& op)
{
    constexpr int lanes = vec<T>::lanes;
    static_assert(rows == lanes && cols % lanes == 0);
    vec<T> down[cols / lanes][lanes], across[cols / lanes][lanes];
#pragma GCC unroll 4
    for (int j = 0; j < cols; j += lanes)
#pragma GCC unroll 4
        for (int k = 0; k < lanes; ++k) {
            down[j / lanes][k] = op(loadu(p + k * ld + j));
            across[j / lanes][k] = op(loadu(q + (j + k) * ld));
        }
#pragma GCC unroll 4
    for (int j = 0; j < cols / lanes; ++j) transpose(down[j]), transpose(across[j]);
#pragma GCC unroll 4
    for (int k = 0; k < lanes; ++k)
#pragma GCC unroll 4
        for (int j = 0; j < cols; j += lanes) {
            storeu(q + (j + k) * ld, down[j / lanes][k]);
            storeu(p + k * ld + j, across[j / lanes][k]);
        }
}

// The smallest square on the diagonal.
template <class T, class Op> ORV_INLINE void turn_block(T* p, u64 ld, const Op& op)
{
    constexpr int lanes = vec<T>::lanes;
    vec<T> v[lanes];
    for (int k = 0; k < lanes; ++k) v[k] = op(loadu(p + k * ld));
    transpose(v);
    for (int k = 0; k < lanes; ++k) storeu(p + k * ld, v[k]);
}

// A tile at p and its mirror image at q change places, each transposed.
template <class T, class Op> ORV_INLINE void exchange_tiles(T* p, T* q, u64 ld, const Op& op)
{
    constexpr int lanes = vec<T>::lanes, unit = tile_unit<T>, cols = max(4, lanes);
#pragma GCC unroll 1
    for (int i = 0; i < unit; i += lanes)
#pragma GCC unroll 4
        for (int j = 0; j < unit; j += cols) exchange_blocks<lanes, cols>(p + i * ld + j, q + j * ld + i, ld, op);
}

// The tile at p to a square on the stack, transposed.
template <class T, class Op> ORV_INLINE void take_tile(const T* p, u64 ld, T* square, const Op& op)
{
    constexpr int lanes = vec<T>::lanes, unit = tile_unit<T>;
#pragma GCC unroll 1
    for (int i = 0; i < unit; i += lanes)
#pragma GCC unroll 4
        for (int j = 0; j < unit; j += lanes) {
            vec<T> v[lanes];
            for (int k = 0; k < lanes; ++k) v[k] = op(loadu(p + (i + k) * ld + j));
            if constexpr (lanes > 1) transpose(v);
            for (int k = 0; k < lanes; ++k) store(square + (j + k) * unit + i, v[k]);
        }
}
template <class T> ORV_INLINE void put_tile(T* p, u64 ld, const T* square)
{
    constexpr int lanes = vec<T>::lanes, unit = tile_unit<T>;
#pragma GCC unroll 2
    for (int i = 0; i < unit; ++i)
#pragma GCC unroll 4
        for (int j = 0; j < unit; j += lanes) storeu(p + i * ld + j, load(square + i * unit + j));
}

// Whether rows are whole pages apart.
template <class T> bool is_crowded(u64 ld)
{
    constexpr u64 page = 4096;
    return ld * sizeof(T) % page == 0;
}

// The same where they are: the lines of a tile meet in one set of the first-level cache, so each is read once, from end
// to end, and written once.
template <class T, class Op> ORV_INLINE void exchange_crowded_tiles(T* p, T* q, u64 ld, const Op& op)
{
    constexpr int unit = tile_unit<T>;
    alignas(cache_line) T down[unit * unit], across[unit * unit];
    take_tile(p, ld, down, op);
    take_tile(q, ld, across, op);
    put_tile(q, ld, down);
    put_tile(p, ld, across);
}

// Asks for the lines of a tile at p and of its mirror image at q.
template <class T> ORV_INLINE void ask_tiles(const T* p, const T* q, u64 ld)
{
    for (u64 k = 0; k < tile_unit<T>; ++k) ask(Level::second, p + k * ld), ask(Level::second, q + k * ld);
}

// A tile on the diagonal.
template <class T, class Op> ORV_INLINE void turn_tile(T* p, u64 ld, const Op& op)
{
    constexpr int lanes = vec<T>::lanes, unit = tile_unit<T>;
#pragma GCC unroll 1
    for (int i = 0; i < unit; i += lanes) {
        turn_block(p + i * ld + i, ld, op);
        for (int j = i + lanes; j < unit; j += lanes)
            exchange_blocks<lanes, lanes>(p + i * ld + j, p + j * ld + i, ld, op);
    }
}

// A := op(A)^T, n by n elements.
template <class T, class Op> void turn_square(u64 n, T* a, u64 ld, const Op& op)
{
    constexpr u64 unit = tile_unit<T>, lanes = vec<T>::lanes;
    constexpr u64 second_level_cache = 262144; // bytes that surely fit
    const u64 tiled = n / unit * unit;
    const auto exchange = [&](u64 i, u64 j)
                              ORV_INLINE_LAMBDA { exchange_tiles(a + i * ld + j, a + j * ld + i, ld, op); };
    if (n * n * sizeof(T) <= second_level_cache) {
        for (u64 i = 0; i < tiled; i += unit) {
            turn_tile(a + i * ld + i, ld, op);
            for (u64 j = i + unit; j < tiled; j += unit) exchange(i, j);
        }
    } else {
        // Rows of tiles in groups: their lines stay in the caches while those of their partners pass, each row of which
        // is met by the whole group. The next partners are asked for. 32 rows and those of a partner are fewer pages
        // than a first-level page table holds.
        constexpr u64 group = 32;
        static_assert(group % unit == 0);
        for (u64 i = 0; i < tiled; i += unit) turn_tile(a + i * ld + i, ld, op);
        const bool crowded = is_crowded<T>(ld);
        for (u64 first = 0; first < tiled; first += group) {
            const u64 end = tiled - first < group ? tiled : first + group;
            for (u64 j = first + unit; j < tiled; j += unit)
                for (u64 i = first; i < end && i < j; i += unit) {
                    ask_tiles(a + i * ld + j + unit, a + (j + unit) * ld + i, ld);
                    if (crowded) exchange_crowded_tiles(a + i * ld + j, a + j * ld + i, ld, op);
                    else exchange(i, j);
                }
        }
    }
    // The rest: the rows and columns behind the last tile.
    u64 i = tiled;
    for (; i + lanes <= n; i += lanes) {
        for (u64 j = 0; j < i; j += lanes) exchange_blocks<lanes, lanes>(a + i * ld + j, a + j * ld + i, ld, op);
        turn_block(a + i * ld + i, ld, op);
    }
    for (; i < n; ++i) {
        T *across = a + i * ld, *down = a + i;
        for (u64 j = 0; j < i; ++j) {
            const vec<T> v = op(load_first<1>(across + j));
            store_first<1>(across + j, op(load_first<1>(down + j * ld)));
            store_first<1>(down + j * ld, v);
        }
        store_first<1>(across + i, op(load_first<1>(across + i)));
    }
}

} // namespace orv::trans
