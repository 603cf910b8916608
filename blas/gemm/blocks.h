// What is settled before a product is cut into blocks: which kernel, the size of blocks, the work areas for them.
#pragma once

#include "blas/gemm/driver.h"
#include "blas/gemm/tables.h"
#include "frame/serv.h"

namespace orv::gemm {

// The index of the kernel for this processor. The table of the best has two entries: 1 is for one processor, of which
// only types that have two kernels ask.
template <class T> i32 best_kernel()
{
    constexpr int second_entry_processor = 0x42;
    const i32* const best = best_kernels(static_cast<const Desc<T>*>(nullptr));
    if constexpr (sizes<T>.n_kernels > 1) return best[orv_serv_get_microarchitecture() == second_entry_processor];
    else return best[0];
}

// Depth of a block. Panels are 256 deep, so that a panel pair of d fills half of a 32 KiB first-level cache with room
// for C; a shallow product is one block. Between 256 and 512 a real product splits evenly: 300 is not 256 and a rest of
// 44, which would hardly pay for reading C once more. Complex products of middling depth take half the depth.
template <class T> i64 depth_block(i64 k, i64 k_unit)
{
    constexpr i64 full = 256, half = 128;
    if (k < full) return max(round_up(k, k_unit), half);
    if constexpr (is_complex<T>) return k <= 4 * full ? half : full;
    return k > full && k < 2 * full ? round_up(k / 2, k_unit) : full;
}

// Rows of a block of A; a cache of unknown size counts as large.
template <class T> i64 row_block()
{
    i32 cache[orv_serv_cache_entries];
    cache[0] = 0;
    orv_serv_cache_info(cache);
    return cache[0] != 0 && cache[3] <= small_cache ? sizes<T>.mb_small : sizes<T>.mb_large;
}

// Columns of a block of B.
template <class T> i64 column_block(i64 n, i64 n_unit)
{
    return round_up(min(max(n, n_unit), sizes<T>.nb_cap), n_unit);
}

// s leaves B in place while a block of it takes at most 512 KiB: the strips that its kernel copies then come from a
// near cache, and the copy of the whole block is saved. The other types always pack B.
template <class T> constexpr bool packs_b(i64 columns, i64 depth)
{
    constexpr i64 unpacked_limit = 0x80000;
    return sizeof(T) != 4 || columns * depth * i64(sizeof(T)) > unpacked_limit;
}

struct Areas {
    bool a, scratch, b;
};

// Bytes of areas for blocks of mp by kp and kp by np elements, whole granules: panels, and a margin behind them for
// kernels that load ahead of their use. The scratch area takes a strip of a granule's columns, or several.
struct AreaBytes {
    static constexpr i64 margin = 0x200, page_shift = 12, line_shift = 7;
    i64 a, scratch, b;

    constexpr AreaBytes(i64 mp, i64 np, i64 kp, i64 element, i64 strip)
        : a(mp * kp * element + margin), scratch(strip * kp * element + margin), b(np * kp * element + margin)
    {
    }
};

// Bytes to ask for, so that an area can be pushed up to its own boundary.
constexpr i64 room(i64 bytes, i64 shift) { return (i64(2) << shift) + bytes; }

} // namespace orv::gemm
