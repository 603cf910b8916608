// Shares of the outputs end anywhere, for an output of a kernel does not depend on the ones beside it.
#include "core/conv/direct.h"

#include "core/branch/kernel.h"
#include "core/conv/ran.h"
#include "core/conv/types.h"
#include "core/team/team.h"

#include <algorithm>

namespace orv::core::conv {
namespace {

namespace k = kernels::conv;

// Kernels of a pair, [correlation].
template <class Pair> struct Kernels;
#define ORV_CONV_KERNELS(pair)                                                                                         \
    template <> struct Kernels<k::pair_##pair> {                                                                       \
        static inline constinit Kernel<k::signature_1d_de<k::pair_##pair::Data>> line[2]{                              \
            Kernel{k::pair##direct_1d_conv_de()}, Kernel{k::pair##direct_1d_corr_de()}};                               \
        static inline constinit Kernel<k::signature_all_de<k::pair_##pair::Data>> all[2]{                              \
            Kernel{k::pair##direct_all_conv_de()}, Kernel{k::pair##direct_all_corr_de()}};                             \
    };
ORV_CONV_KERNELS(ss)
ORV_CONV_KERNELS(sd)
ORV_CONV_KERNELS(dd)
ORV_CONV_KERNELS(cc)
ORV_CONV_KERNELS(cz)
ORV_CONV_KERNELS(zz)
#undef ORV_CONV_KERNELS

// Numbers as kernels take them.
struct Narrow {
    i32 of[k::most_dimensions];
    Narrow(int rank, const i64* numbers) : of{}
    {
        for (int d = 0; d < rank; ++d) of[d] = static_cast<i32>(numbers[d]);
    }
};

// Some of the outputs, count[d] from first[d] on.
struct Share {
    Numbers first, count;
};

template <class T> i32 compute(const Problem& p, auto* line, auto* all, const Operands& operands, const Share& share)
{
    const auto *x = static_cast<const T*>(operands.x), *y = static_cast<const T*>(operands.y);
    auto* z = static_cast<T*>(operands.z);
    Numbers start;
    for (int d = 0; d < p.rank; ++d) {
        start[d] = p.start[d] + share.first[d] * p.step[d];
        // A stride below 0 has the last one first.
        const i64 stride = p.z.step[d];
        z += stride * (stride >= 0 ? share.first[d] : share.first[d] + share.count[d] - p.count[d]);
    }
    const Narrow nx(p.rank, p.nx), ny(p.rank, p.ny), nz(p.rank, share.count), from(p.rank, start), step(p.rank, p.step),
        x_stride(p.rank, p.x.step), y_stride(p.rank, p.y.step), z_stride(p.rank, p.z.step);
    if (p.rank == 1)
        return line(x, *x_stride.of, y, *y_stride.of, z, *z_stride.of, *nx.of, *ny.of, *from.of, *nz.of, *step.of);
    return all(p.rank, x, nx.of, x_stride.of, y, ny.of, y_stride.of, z, nz.of, z_stride.of, from.of, step.of);
}

// Outputs are cut in the outermost dimension that has enough, else in the longest one.
int cut_dimension(const Problem& p, int threads)
{
    int longest = p.rank - 1;
    for (int d = p.rank - 1; d >= 0; --d) {
        if (p.count[d] >= threads) return d;
        if (p.count[d] > p.count[longest]) longest = d;
    }
    return longest;
}

// Products that are worth a thread: some 0.2 ms of one core.
double grain(const Problem& p) { return (p.sums_in_single() ? 2e6 : 1e6) / (p.is_complex() ? 4 : 1); }

orv_status told(i32 status)
{
    if (status == k::ok) return ORV_OK;
    if (status == k::no_memory) return no_memory();
    return fail(ORV_INTERNAL_ERROR, "a kernel of convolutions answered %d: a fault of orv itself", status);
}

template <class Pair> orv_status run(const Problem& p, const Operands& operands)
{
    Kernel<k::signature_1d_de<typename Pair::Data>>& line = Kernels<Pair>::line[p.correlates()];
    Kernel<k::signature_all_de<typename Pair::Data>>& all = Kernels<Pair>::all[p.correlates()];
    auto* const line_kernel = line.get();
    auto* const all_kernel = all.get();
    if (line_kernel == nullptr || all_kernel == nullptr) return last_status();
    const int wanted = threads_for(products_of(p), grain(p));
    const int d = cut_dimension(p, wanted), threads = static_cast<int>(min(wanted, p.count[d]));
    remember(p.rank == 1 ? line.name() : all.name(), threads);
    std::atomic<i32> status{k::ok};
    parallel(threads, [&](int index, int count) {
        Share share{};
        std::copy_n(p.count, p.rank, share.count);
        share.first[d] = p.count[d] * index / count;
        share.count[d] = p.count[d] * (index + 1) / count - share.first[d];
        if (share.count[d] == 0) return;
        if (const i32 own = compute<typename Pair::Data>(p, line_kernel, all_kernel, operands, share))
            status.store(own, std::memory_order_relaxed);
    });
    return told(status.load());
}

} // namespace

orv_status run_direct(const Problem& problem, const Operands& operands)
{
    return by_pair(problem, [&]<class Pair>(Pair) { return run<Pair>(problem, operands); });
}

} // namespace orv::core::conv
