// How large transforms are divided, and the bytes of every table: one place for queries, for Init and for the run.
#pragma once

#include "dft/primitives/fft/radix4.h"

namespace orv::dft {

inline constexpr i32 fixed_limit = 5; // orders below this and at it have kernels of their own
template <class R> inline constexpr i32 complex_limit = sizeof(R) == 8 ? 27 : 28;

// A large transform of 2^order points is 2^rows transforms of neighbours, then an outer step on blocks of 2^block
// points of all rows.
struct Step {
    i32 rows, block;
};
template <class R> constexpr Step step_of(i32 order)
{
    if (sizeof(R) == 8) return order <= 18 ? Step{6, 10} : Step{8, 13};
    return order <= 19 ? Step{4, 10} : Step{8, 14};
}
// The radix of the stage that comes after so many levels of the outer step are done.
constexpr int stage_log(i32 rows, i32 done)
{
    const i32 rest = rows - done;
    return rest == 2 || rest == 4 || rest == 6 ? 2 : 3;
}

// Twiddles of the outer step: they fit in as many bytes as half of the points take.
template <class R> constexpr i64 step_bytes(i32 order) { return static_cast<i64>(sizeof(cpx<R>)) << (order - 1); }

// Points are reversed in tiles of 2^5 by 2^5; up to this order without.
inline constexpr i32 tile_side = 5, tile_order = 2 * tile_side, untiled_limit = 17;

template <class R> constexpr i64 flat_bytes(i32 order)
{
    const i64 extra = order > table_limit ? table_bytes(i64{1} << (order - 2), sizeof(cpx<R>)) : 0;
    return level_one_bytes<R>(order) + extra + table_bytes(reversal_entries(order), sizeof(i32));
}
// All levels, from this one inward.
template <class R> constexpr i64 steps_bytes(i32 order)
{
    if (order <= flat_limit<R>) return flat_bytes<R>(order);
    return step_bytes<R>(order) + steps_bytes<R>(order - step_of<R>(order).rows);
}
inline constexpr i64 tile_table = table_bytes(reversal_entries(tile_order), sizeof(i32)) / sizeof(i32);
// A tile's table has the place of that of the innermost transforms, which find their points reversed.
constexpr i64 large_reversal_bytes(i32 order)
{
    const i64 entries = order <= untiled_limit ? reversal_entries(order) : (i64{1} << (order - tile_order)) + 1;
    return table_bytes(entries, sizeof(i32));
}
template <class R> constexpr i64 complex_bytes(i32 order)
{
    if (order <= fixed_limit) return 0;
    return order <= flat_limit<R> ? flat_bytes<R>(order) : steps_bytes<R>(order) + large_reversal_bytes(order);
}

template <class R> constexpr i64 complex_buffer(i32 order)
{
    constexpr i64 size = sizeof(cpx<R>), two_tiles = 2 * size << tile_order;
    if (order <= fixed_limit) return 0;
    if (order <= flat_limit<R>) return size << order;
    i64 most = order > untiled_limit ? two_tiles : 0;
    for (i32 inner = order; inner > flat_limit<R>; inner -= step_of<R>(inner).rows)
        most = max(most, size << step_of<R>(inner).block);
    return most;
}

struct Sizes {
    i64 spec, init, buffer;
};
// real: the points are real numbers, and go in pairs.
template <class R> constexpr Sizes sizes_of(i32 order, bool real)
{
    constexpr i64 size = sizeof(R), record = sizeof(YmpFftSpec);
    if (order <= fixed_limit) return {record + table_boundary, 0, 0};
    const i64 base = table_bytes(base_sines(order), size);
    const i64 tables = real ? complex_bytes<R>(order - 1) + base : complex_bytes<R>(order);
    return {round_up(record, table_boundary) + tables + table_boundary,
            order <= orv_dft_fix_base_32f::order ? 0 : base + table_boundary,
            complex_buffer<R>(real ? order - 1 : order)};
}

} // namespace orv::dft
