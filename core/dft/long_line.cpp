#include "core/dft/long_line.h"

#include "core/branch/kernel.h"
#include "core/serv/block.h"
#include "core/team/team.h"
#include "frame/kernels/dft_compute.h"
#include "orv/numerics.h"

#include <atomic>

namespace orv::core::dft {
namespace {

using namespace kernels::dft;

constexpr i64 shortest = i64{1} << 17; // below it a team gains nothing on powers of two
constexpr i64 block_columns = 16;      // are staged and transformed while they are in cache
constexpr i64 grain = i64{1} << 15;    // points that are worth a thread

template <class R> struct Steps;
#define STEPS(R, d, z, ...)                                                                                            \
    template <> struct Steps<R> {                                                                                      \
        static inline constinit Kernel one_and_two{x##z##_4step_1_2()};                                                \
        static inline constinit Kernel gather{gather_##z##_##z()};                                                     \
        static inline constinit Kernel scatter{scatter_##z##_##z()};                                                   \
        static inline constinit Kernel scale{dft_##z##d##scal()};                                                      \
    };
ORV_DFT_PRECISIONS(STEPS)
#undef STEPS

const Via2dData& plan_of(const DftiNode& node) { return *static_cast<const Via2dData*>(node.via2d_data); }

template <bool forward> i32 run_child(void*, void* data, DftiNode* child, void*)
{
    return (forward ? child->compute_forward : child->compute_backward)(child, data, nullptr, nullptr, nullptr);
}

// f(first, count) for a member's share of so many columns, whole blocks of them as far as they go.
template <class F> i32 share_columns(i64 columns, int threads, F&& f)
{
    const i64 blocks = (columns + block_columns - 1) / block_columns;
    std::atomic<i32> failure{node_ok};
    parallel(threads, [&](int index, int count) {
        const i64 first = blocks * index / count * block_columns;
        const i64 end = min(blocks * (index + 1) / count * block_columns, columns);
        if (first == end) return;
        if (const i32 status = f(first, end - first)) failure.store(status, std::memory_order_relaxed);
    });
    return failure.load(std::memory_order_relaxed);
}

// Columns of n2 points from a matrix of n1 columns to another, or the same one.
template <class R>
i32 transform_columns(const Via2dData& plan, DftiKernel* child, R scale, const cpx<R>* from, cpx<R>* to, i64 columns)
{
    const Block<cpx<R>> block(min(columns, block_columns) * plan.ld2);
    if (block.missing()) return node_no_memory;
    cpx<R>* const rows = block.get();
    for (i64 first = 0; first < columns; first += block_columns) {
        const i64 count = min(columns - first, block_columns);
        Steps<R>::gather.get()(plan.n2, count, rows, plan.ld2, from + first, plan.n1, 1);
        for (i64 r = 0; r < count; ++r) {
            cpx<R>* const row = rows + r * plan.ld2;
            if (const i32 status = child(row, row, plan.child2, nullptr)) return status;
            if (scale != 1) Steps<R>::scale.get()(plan.n2, scale, row, 1);
        }
        Steps<R>::scatter.get()(plan.n2, count, to + first, plan.n1, 1, rows, plan.ld2);
    }
    return node_ok;
}

// The line is a matrix of n1 rows of n2 points. Its columns are transformed, twisted and left as rows of n1 points, in
// the output or, where that is still being read, in work memory; the columns of these go to the output.
template <class R>
i32 compute(DftiNode* node, Direction direction, R scale, const void* input, void* output, int threads)
{
    using T = cpx<R>;
    auto* const one_and_two = Steps<R>::one_and_two.get();
    if (!one_and_two || !Steps<R>::gather.get() || !Steps<R>::scatter.get() || !Steps<R>::scale.get())
        return node_internal_error;
    const Via2dData& plan = plan_of(*node);
    DftiKernel* const child = direction == forward ? run_child<true> : run_child<false>;
    auto* const from = static_cast<T*>(const_cast<void*>(input)); // is not written to
    auto* const to = static_cast<T*>(output);

    const Block<T> work(from == to ? plan.n1 * plan.n2 : 0);
    if (work.missing()) return node_no_memory;
    T* const middle = from == to ? work.get() : to;
    const i32 status = share_columns(plan.n2, threads, [&](i64 first, i64 count) {
        return one_and_two(node, plan.n1, count, from + first, middle + first * plan.n1, child, plan.n2, nullptr, &plan,
                           first, direction == forward ? 1 : -1);
    });
    if (status != node_ok) return status;
    return share_columns(plan.n1, threads, [&](i64 first, i64 count) {
        return transform_columns<R>(plan, child, scale, middle + first, to + first, count);
    });
}

bool is_plain(const Settings& s, SideName side)
{
    const Layout l = layout(s, side);
    return l.strides[0] == 1 && l.offset == 0;
}

} // namespace

int line_threads(const Settings& s)
{
    const bool is_line = s.rank == 1 && !s.is_real() && !s.is_split() && s.transforms == 1 &&
                         s.ordering == ORV_DFT_ORDERED && s.lengths[0] >= shortest && is_plain(s, signal) &&
                         is_plain(s, spectrum);
    // Who wants little work memory does not get another array.
    if (!is_line || (s.in_place() && s.workspace == ORV_DFT_AVOID) || orv_get_reproducible()) return 1;
    const i64 n = s.lengths[0];
    return s.threads != 0 ? static_cast<int>(min(s.threads, n / grain)) : threads_for(n, grain);
}

bool is_in_two_dimensions(const DftiNode& node)
{
    return node.method == nullptr && node.via2d_data != nullptr && plan_of(node).mode != Via2dData::work_array;
}

i32 compute_line(const orv_dft& dft, Direction direction, const void* from, void* to)
{
    const Settings& s = dft.settings;
    const double scale = s.scales[direction];
    DftiNode* const node = dft.node[direction];
    if (s.precision == ORV_DFT_DOUBLE) return compute(node, direction, scale, from, to, dft.line_threads);
    return compute(node, direction, static_cast<float>(scale), from, to, dft.line_threads);
}

i64 line_bytes(const orv_dft& dft)
{
    const Settings& s = dft.settings;
    const Via2dData& plan = plan_of(*dft.node[dft.node[forward] ? forward : backward]);
    const i64 blocks = dft.line_threads * block_columns * max(plan.ld1, plan.ld2);
    return ((s.in_place() ? plan.n1 * plan.n2 : 0) + blocks) * element_bytes(s, signal);
}

} // namespace orv::core::dft
