#include "dft/compute/column_plan.h"
#include "dft/batch/columns.h"
#include "dft/compute/plain.h"

namespace orv::dft {
namespace {

using batch::Factors;

constexpr i64 shortest = 16, longest = 2048;

// Of powers of two hardly a pass touches more than 8 rows at a time of the array, whatever its pitch: so many have room
// beside each other in a first-level cache where all of them are on the same lines of it.
Factors column_factors(i64 n)
{
    switch (n) {
    case 16:
        return {{4, 4}, 2};
    case 32:
        return {{4, 8}, 2};
    case 256:
        return {{8, 4, 8}, 3};
    case 512:
        return {{8, 8, 8}, 3};
    case 1024:
        return {{8, 16, 8}, 3};
    case 2048:
        return {{8, 16, 16}, 3};
    default:
        return batch::factors_of(n);
    }
}

// What commit leaves in `buffer0`, which ends with the node. In one block with the tables behind it: places of the
// shortest transforms forward, then inverse, then twiddles.
struct alignas(cache_line) ColumnPlan {
    i64 length, joins, transforms;
    i64 radixes[Factors::most], places[Factors::most];

    static i64 bytes_of_starts(i64 transforms)
    {
        return round_up(2 * transforms * static_cast<i64>(sizeof(i64)), cache_line);
    }
    i64* starts(bool forward) { return reinterpret_cast<i64*>(this + 1) + (forward ? 0 : transforms); }
    template <class R> R* twiddles()
    {
        return reinterpret_cast<R*>(reinterpret_cast<t_8u*>(this + 1) + bytes_of_starts(transforms));
    }
    template <class R> batch::Tables<R> tables(bool forward)
    {
        return {length, forward ? transforms : -transforms, joins, radixes, starts(forward), places, twiddles<R>()};
    }
};

// Columns that go through all passes together: runs of 512 bytes of the array, which outweigh that a second-level cache
// holds long columns between passes; in parts that are nearly equal.
template <class R> i64 columns_of_part(i64 count)
{
    constexpr i64 line = cache_line / sizeof(cpx<R>), most = 8 * line;
    const i64 parts = (count - 1) / most + 1;
    return round_up((count - 1) / parts + 1, line);
}

// Rows between passes are an odd number of cache lines apart.
template <class R> i64 pitch_of(i64 columns)
{
    constexpr i64 line = cache_line / sizeof(cpx<R>);
    return columns / line % 2 != 0 ? columns : columns + line;
}

template <class R> struct Columns {
    Lines<const cpx<R>> in;
    Lines<cpx<R>> out;
    i64 count;

    Columns part(i64 at, i64 columns) const { return {in.from(at), out.from(at), columns}; }
    // If registers can be loaded and stored across them.
    bool are_side_by_side() const
    {
        return in.are_neighbours() && out.are_neighbours() && in.stride % 2 == 0 && out.stride % 2 == 0;
    }
};

template <class R> void transform_here(const batch::Tables<R>& tables, const Columns<R>& c, cpx<R>* between, i64 pitch)
{
    transform_registers(tables, {c.in.line(0), {c.in.stride / 2, 1}, c.out.line(0), {c.out.stride / 2, 1}, c.count},
                        between, pitch);
}

// Other columns, and what fills no register: the same in rows of a stage, zeros beside them.
template <class R>
void transform_staged(const batch::Tables<R>& tables, const Columns<R>& c, cpx<R>* stage, cpx<R>* between, i64 pitch)
{
    const i64 n = tables.length, columns = round_up(c.count, batch::lanes<R>);
    for (i64 k = 0; k < columns; ++k) {
        const R* p = c.in.from(k).data;
        for (i64 j = 0; j < n; ++j, p += c.in.stride)
            stage[j * pitch + k] = k < c.count ? cpx<R>{p[0], p[1]} : cpx<R>{};
    }
    const batch::Layout rows{pitch, 1};
    transform_registers(tables, {stage, rows, stage, rows, columns}, between, pitch);
    for (i64 k = 0; k < c.count; ++k) {
        R* p = c.out.from(k).data;
        for (i64 j = 0; j < n; ++j, p += c.out.stride) p[0] = stage[j * pitch + k].re, p[1] = stage[j * pitch + k].im;
    }
}

template <class R> bool transform(ColumnPlan& plan, bool forward, const Columns<R>& all)
{
    const i64 together = columns_of_part<R>(all.count), pitch = pitch_of<R>(together), room = plan.length * pitch;
    const i64 here = all.are_side_by_side() ? batch::filling_registers<R>(all.count) : 0;
    const Buffer buffer((here == all.count ? room : 2 * room) * static_cast<i64>(sizeof(cpx<R>)));
    if (buffer.missing()) return false;
    auto* const between = static_cast<cpx<R>*>(buffer.begin());
    const batch::Tables<R> tables = plan.tables<R>(forward);
    for (i64 at = 0; at < here; at += together)
        transform_here(tables, all.part(at, min(together, here - at)), between, pitch);
    for (i64 at = here; at < all.count; at += together)
        transform_staged(tables, all.part(at, min(together, all.count - at)), between + room, between, pitch);
    return true;
}

} // namespace

template <class R> i32 plan_columns(DftiNode* node)
{
    const i64 n = node->length;
    if (node->dimension_index == 0 || n < shortest || n > longest || node->buffer0 != nullptr) return node_ok;
    const Factors f = column_factors(n);
    if (f.count == 0) return node_ok;
    const i64 transforms = n / f.last();
    const i64 bytes = static_cast<i64>(sizeof(ColumnPlan)) + ColumnPlan::bytes_of_starts(transforms) +
                      batch::reals_of_twiddles<R>(f) * static_cast<i64>(sizeof(R));
    auto* const plan = static_cast<ColumnPlan*>(orv_serv_malloc(bytes, cache_line));
    if (plan == nullptr) return node_no_memory;
    node->buffer0 = plan;
    plan->length = n, plan->joins = f.joins(), plan->transforms = transforms;
    for (i64 j = 0; j < f.count; ++j) plan->radixes[j] = f.of[j];
    for (const bool forward : {true, false}) batch::put_starts(f, n, forward, plan->starts(forward));
    batch::put_twiddles(f, plan->twiddles<R>(), plan->places);
    return node_ok;
}

template <class R>
bool planned_columns(const Run& run, i64 count, const Lines<const cpx<R>>& in, const Lines<cpx<R>>& out)
{
    auto* const plan = static_cast<ColumnPlan*>(run.node->buffer0);
    if (plan == nullptr || (in.is_dense() && out.is_dense())) return false;
    const bool forward = transforms_pairs<R>(run, true);
    return (forward || transforms_pairs<R>(run, false)) && transform<R>(*plan, forward, {in, out, count});
}

#define INSTANCES(R, ...)                                                                                              \
    template i32 plan_columns<R>(DftiNode*);                                                                           \
    template bool planned_columns<R>(const Run&, i64, const Lines<const cpx<R>>&, const Lines<cpx<R>>&);
ORV_DFT_PRECISIONS(INSTANCES)

} // namespace orv::dft
