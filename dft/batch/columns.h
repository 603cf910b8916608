// The kinds of bases: how columns are transformed by the tables of a plan, and what of the thread's buffer that takes.
#pragma once

#include "dft/batch/kernels.h"
#include "dft/batch/objects.h"
#include "dft/batch/tables.h"

namespace orv::dft::batch {

// The lists of a plan.
enum List { starts, radixes, places, twiddles };

template <class R> struct Columns {
    const cpx<R>* src;
    Layout from;
    cpx<R>* dst;
    Layout to;
    i64 count;

    Columns part(i64 begin, i64 columns) const
    {
        return {src + begin * from.distance, from, dst + begin * to.distance, to, columns};
    }
};

template <class R> inline constexpr i64 lanes = vec<cpx<R>>::lanes;
template <class R> constexpr i64 filling_registers(i64 columns) { return columns / lanes<R> * lanes<R>; }

// As many columns as stay in a first-level cache between two passes, and whole cache lines of them.
template <class R> constexpr i64 columns_together(i64 n)
{
    constexpr i64 cache = 32768, line = cache_line / sizeof(cpx<R>);
    return max(line, cache / (n * i64{sizeof(cpx<R>)}) / line * line);
}

// If the rows that a transform of so many points writes push each other out of a first-level cache before their lines
// are full. Then all rows are stored one by one when they are done.
template <class R> bool rows_collide(i64 points, i64 apart, i64 pitch)
{
    constexpr i64 way = 4096, ways = 12;
    return points > ways && apart * pitch * i64{sizeof(cpx<R>)} % way == 0;
}

// Columns side by side that fill registers; between: room for them, in rows of so many, where the length has more than
// one factor.
template <class R>
void transform_registers(const Tables<R>& tables, const Columns<R>& c, cpx<R>* between, i64 between_pitch)
{
    const i64 n = tables.length, *radix = tables.radixes, joins = tables.joins;
    const bool row_by_row = between != nullptr && rows_collide<R>(radix[0], n / radix[0], c.to.stride);
    const auto here = [=](bool last) { return last && !row_by_row; };
    const auto to = [=](bool last, i64 row) {
        return here(last) ? c.dst + row * c.to.stride : between + row * between_pitch;
    };
    const auto pitch = [=](bool last) { return here(last) ? c.to.stride : between_pitch; };

    i64 joined = radix[joins];
    passes<R>().leaves[joined]({c.src, c.from.stride, n, tables.apart, tables.starts, to(joins == 0, 0),
                                pitch(joins == 0), n / joined, c.count});
    for (i64 f = joins; f-- > 0; joined *= radix[f])
        for (i64 row = 0; row < n; row += joined * radix[f])
            passes<R>().joins[radix[f]]({between + row * between_pitch, between_pitch, to(f == 0, row), pitch(f == 0),
                                         joined, c.count, tables.twiddles + tables.places[f]});
    if (row_by_row)
        for (i64 row = 0; row < n; ++row)
            for (i64 column = 0; column < c.count; column += lanes<R>)
                storeu(c.dst + row * c.to.stride + column, load(between + row * between_pitch + column));
}
template <class R> void transform_registers(const BatchPlan& plan, const Columns<R>& c, cpx<R>* between)
{
    const auto* const w = reinterpret_cast<const R*>(plan.lists[twiddles]->data);
    const Tables<R> tables{plan.length,
                           plan.apart,
                           plan.lists[radixes]->size - 1,
                           plan.lists[radixes]->data,
                           plan.lists[starts]->data,
                           plan.lists[places]->data,
                           w};
    transform_registers<R>(tables, c, between, c.count);
}

// Kind 21: a length with straight-line code.
template <class R> i32 compute_straight(const Base& base, const Columns<R>& c, BatchArena*)
{
    transform_registers<R>(*base.plan, c, nullptr);
    return node_ok;
}

// Kind 20: a length that is split.
template <class R> constexpr i64 split_together(i64 n, i64 columns)
{
    return min(filling_registers<R>(columns), columns_together<R>(n));
}
template <class R> constexpr i64 room_of_split(i64 n, i64 together)
{
    return block(n * together * i64{sizeof(cpx<R>)});
}
template <class R> i32 compute_split(const Base& base, const Columns<R>& c, BatchArena* arena)
{
    const i64 bytes = room_of_split<R>(base.plan->length, base.together);
    auto* const between = static_cast<cpx<R>*>(orvgArenaMalloc(arena, bytes));
    for (i64 at = 0; at < c.count; at += base.together)
        transform_registers<R>(*base.plan, c.part(at, min(base.together, c.count - at)), between);
    orvgArenaFree(arena, between, bytes);
    return node_ok;
}

// Kind 5: any columns, staged so that they are side by side and fill registers.
template <class R> constexpr i64 staged_together(i64 n, i64 columns)
{
    return min(round_up(columns, lanes<R>), columns_together<R>(n));
}
template <class R> constexpr i64 room_of_staged(i64 n, i64 together)
{
    return room_of_split<R>(n, together) * (is_straight(n) ? 1 : 2);
}
template <class R> i32 compute_staged(const Base& base, const Columns<R>& c, BatchArena* arena)
{
    const i64 n = base.plan->length, pitch = base.together, bytes = room_of_split<R>(n, pitch);
    auto* const stage = static_cast<cpx<R>*>(orvgArenaMalloc(arena, bytes));
    auto* const between = is_straight(n) ? nullptr : static_cast<cpx<R>*>(orvgArenaMalloc(arena, bytes));
    for (i64 at = 0; at < c.count; at += pitch) {
        const Columns<R> part = c.part(at, min(pitch, c.count - at));
        for (i64 column = 0; column < round_up(part.count, lanes<R>); ++column)
            for (i64 j = 0; j < n; ++j) // what fills up a register is zero
                stage[j * pitch + column] =
                    column < part.count ? part.src[column * part.from.distance + j * part.from.stride] : cpx<R>{};
        const Layout rows{pitch, 1};
        transform_registers<R>(*base.plan, {stage, rows, stage, rows, round_up(part.count, lanes<R>)}, between);
        for (i64 column = 0; column < part.count; ++column)
            for (i64 j = 0; j < n; ++j)
                part.dst[column * part.to.distance + j * part.to.stride] = stage[j * pitch + column];
    }
    if (between != nullptr) orvgArenaFree(arena, between, bytes);
    orvgArenaFree(arena, stage, bytes);
    return node_ok;
}

} // namespace orv::dft::batch
