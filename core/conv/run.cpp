// A run: the problem becomes a task of the kernels', or one for each part of the outputs.
#include "core/branch/kernel.h"
#include "core/conv/parts.h"
#include "core/team/team.h"
#include "frame/kernels/conv.h"
#include "orv/branch.h"

#include <algorithm>
#include <cstdio>

namespace orv::core::conv {
namespace {

using kernels::conv::ConvTask;
namespace k = kernels::conv;

constinit Kernel make_task{k::newtask()};
constinit Kernel edit_task{k::edittask()};
constinit Kernel run_task{k::exec()};
constinit Kernel delete_task{k::deletetask()};

// Plain data, as in status.cpp.
struct Ran {
    char stem[32];
    int threads; // 0: nothing ran yet
};
thread_local Ran ran;
thread_local char symbol[64];

// The letters of the grid (frame/kernels/conv.h).
void remember(const orv_conv& c, int route, int threads)
{
    const char sums = !c.double_sums || !c.is_single() ? c.type : c.is_complex() ? 'z' : 'd';
    std::snprintf(ran.stem, sizeof ran.stem, "%c%c%s_%s_%s_de", c.type, sums,
                  route == ORV_CONV_DIRECT ? "direct" : "fft", c.rank == 1 ? "1d" : "all",
                  c.correlates() ? "corr" : "conv");
    ran.threads = threads;
}

// Numbers as kernels take them.
struct Narrow {
    i32 of[k::most_dimensions];
    explicit Narrow(int rank, const i64* numbers) : of{}
    {
        for (int d = 0; d < rank; ++d) of[d] = static_cast<i32>(numbers[d]);
    }
};

// Strides of an array of that shape; false where they are none of 32 bits.
bool complete(Strides& strides, int rank, const i64* shape)
{
    if (strides.given) return true;
    i64 step = 1;
    for (int d = 0; d < rank; ++d) {
        if (step > INT32_MAX) return false;
        strides.step[d] = step;
        step *= shape[d];
    }
    return true;
}

// All outputs of a part. A status of the kernels'.
i32 run_task_of(const Part& part, int route)
{
    const orv_conv& c = part.conv;
    ConvTask* task = nullptr;
    const i32 kind = c.is_complex() ? k::complex_kind : k::real_kind;
    const i32 mode = route == ORV_CONV_DIRECT ? k::direct_mode : k::transform_mode;
    const i32 data = c.is_single() ? k::single_precision : k::double_precision;
    const i32 sums = c.sums_in_single() ? k::single_precision : k::double_precision;
    i32 status = make_task.get()(&task, c.job, 0, mode, kind, data, c.rank, Narrow(c.rank, c.nx).of,
                                 Narrow(c.rank, c.ny).of, Narrow(c.rank, c.count).of);
    const auto edit = [&](i32 parameter, const i32* value) {
        if (status == k::ok) status = edit_task.get()(task, parameter, value);
    };
    edit(k::internal_precision_parameter, &sums);
    edit(k::start_parameter, Narrow(c.rank, c.start).of);
    edit(k::decimation_parameter, Narrow(c.rank, c.step).of);
    const auto& [x, y, z] = part.operands;
    if (status == k::ok)
        status = run_task.get()(task, x, Narrow(c.rank, c.x.step).of, y, Narrow(c.rank, c.y.step).of, z,
                                Narrow(c.rank, c.z.step).of);
    delete_task.get()(&task);
    return status;
}

// Shares end anywhere, for an output does not depend on the ones beside it. They are cut in the outermost dimension
// that has enough, else in the longest one.
int cut_dimension(const orv_conv& c, int threads)
{
    int longest = c.rank - 1;
    for (int d = c.rank - 1; d >= 0; --d) {
        if (c.count[d] >= threads) return d;
        if (c.count[d] > c.count[longest]) longest = d;
    }
    return longest;
}

// Products that are worth a thread: some 0.2 ms of one core.
double grain(const orv_conv& c) { return (c.sums_in_single() ? 2e6 : 1e6) / (c.is_complex() ? 4 : 1); }

// Nanoseconds that are worth a thread.
constexpr double transform_grain = 2e5;

// Whether one transform takes the same steps on any number of threads: plans for columns depend on it in single
// precision and from three dimensions on; of one dimension there is nothing to share.
bool transform_is_shared(const orv_conv& c) { return c.rank == 2 && !c.sums_in_single(); }

orv_status told(i32 status)
{
    switch (status) {
    case k::ok:
        return ORV_OK;
    case k::no_record_memory:
    case k::no_memory:
        return fail(ORV_NO_MEMORY, "no memory is left for a convolution's work arrays");
    case k::transform_failed:
        return fail(ORV_TRANSFORM_FAILED, "the Fourier transform inside a convolution was refused: no memory is left, "
                                          "or it is too long; ORV_CONV_DIRECT needs none");
    default:
        return fail(ORV_INTERNAL_ERROR, "a kernel of convolutions answered %d: a fault of orv itself", status);
    }
}

i32 run_direct(const Part& whole)
{
    const orv_conv& c = whole.conv;
    const int wanted = threads_for(products_of(c), grain(c));
    const int d = cut_dimension(c, wanted), threads = static_cast<int>(min(wanted, c.count[d]));
    remember(c, ORV_CONV_DIRECT, threads);
    std::atomic<i32> status{k::ok};
    parallel(threads, [&](int index, int count) {
        Numbers first = {}, share;
        std::copy_n(c.count, c.rank, share);
        first[d] = c.count[d] * index / count, share[d] = c.count[d] * (index + 1) / count - first[d];
        const i32 own = share[d] > 0 ? run_task_of(whole.outputs(first, share), ORV_CONV_DIRECT) : i32{k::ok};
        if (own != k::ok) status.store(own, std::memory_order_relaxed);
    });
    return status.load();
}

// Piece number `index`, dimension 0 fastest.
Part piece(const Part& whole, const Pieces& pieces, i64 index)
{
    const orv_conv& c = whole.conv;
    Numbers first, count;
    for (int d = 0; d < c.rank; ++d) {
        const i64 at = index % pieces.of[d];
        first[d] = c.count[d] * at / pieces.of[d];
        count[d] = c.count[d] * (at + 1) / pieces.of[d] - first[d];
        index /= pieces.of[d];
    }
    return whole.outputs(first, count).without_unread();
}

i32 run_pieces(const Part& whole, const Pieces& pieces)
{
    const int wanted = threads_for(transform_cost(whole.conv), transform_grain, pieces.total);
    remember(whole.conv, ORV_CONV_TRANSFORM, wanted);
    std::atomic<i32> status{k::ok};
    parallel(wanted, [&](int index, int count) {
        const Alone alone;
        for (i64 i = index; i < pieces.total && status.load(std::memory_order_relaxed) == k::ok; i += count)
            if (const i32 own = run_task_of(piece(whole, pieces, i), ORV_CONV_TRANSFORM))
                status.store(own, std::memory_order_relaxed);
    });
    return status.load();
}

i32 run_transform(const Part& given)
{
    const Part whole = longer_last(given);
    const Pieces pieces = pieces_of(whole.conv);
    if (pieces.total > 1 || !transform_is_shared(whole.conv)) return run_pieces(whole, pieces);
    remember(whole.conv, ORV_CONV_TRANSFORM, available_threads());
    return run_task_of(whole.without_unread(), ORV_CONV_TRANSFORM);
}

} // namespace

orv_status run(const orv_conv& conv, const Operands& operands)
{
    if (!make_task.get() || !edit_task.get() || !run_task.get() || !delete_task.get()) return last_status();
    Part whole{conv, operands};
    orv_conv& c = whole.conv;
    if (!complete(c.x, c.rank, c.nx) || !complete(c.y, c.rank, c.ny) || !complete(c.z, c.rank, c.count))
        return fail(ORV_UNSUPPORTED, "an array without gaps has a stride above %d, which kernels do not count",
                    INT32_MAX);
    return told(route_of(c) == ORV_CONV_DIRECT ? run_direct(whole) : run_transform(whole));
}

} // namespace orv::core::conv

using namespace orv::core;
using namespace orv::core::conv;

orv_status orv_conv_run(const orv_conv* conv, const void* x, const void* y, void* z)
{
    if (conv == nullptr) return bad_argument("orv_conv_run", 1, "null");
    const Operands operands{x != nullptr ? x : conv->fixed_x, y, z};
    if (operands.x == nullptr) return bad_argument("orv_conv_run", 2, "null, and orv_conv_set_fixed has none either");
    if (const int wrong = y == nullptr ? 3 : z == nullptr ? 4 : 0) return bad_argument("orv_conv_run", wrong, "null");
    return run(*conv, operands);
}

const char* orv_conv_kernel()
{
    if (ran.threads == 0) return nullptr;
    std::snprintf(symbol, sizeof symbol, "orv_conv_%s_%s", orv_branch_name(), ran.stem);
    return symbol;
}

int orv_conv_threads() { return ran.threads; }
