// What the loops over a grid share: which places of a row hold waves after its transform, and the parameter blocks of
// kernels as a common form.
#pragma once

#include "core/team/team.h"
#include "frame/kernels/pdepl.h"

#include <atomic>

namespace orv::core::pde {

using namespace kernels::pdepl;

// The waves of a row of n + 1 places: those from first up to end, each with an entry of the spectrum. Between periodic
// sides the even part of a row has waves 0 to m in places 0 to m, m = n/2, the odd part wave k in place m + k.
struct Waves {
    i64 first, end;
    i64 shift; // entry of the spectrum of place i: i - shift,
    i64 fold;  // of places behind fold: i - fold

    i64 entry(i64 place) const { return place > fold ? place - fold : place - shift; }
};
constexpr Waves waves(i64 pair, i64 n)
{
    const i64 never = INT64_MAX - 1;
    switch (pair) {
    case dd:
        return {1, n, 0, never};
    case dn:
        return {1, n + 1, 1, never};
    case nd:
        return {0, n, 0, never};
    case pp:
        return {0, n / 2 * 2, 0, n / 2};
    default:
        return {0, n + 1, 0, never};
    }
}

// Transforms forth and back multiply by this; the tridiagonal systems take it back.
constexpr double gain(i64 pair, i64 n)
{
    const i64 even = n / 2 * 2; // waves come in pairs
    return 2 * static_cast<double>(pair == pp ? even : n);
}

// What the calling thread's latest loop left in its block. Kernels tell their caller of a failure only that there was
// one.
extern thread_local i64 last_loop_status;

template <class Block> void finish(Block* block, i64 status) { block->status = last_loop_status = status; }

// The first failure of several threads.
class FirstFailure {
public:
    void note(i64 status)
    {
        i64 good = 0;
        if (status < 0) status_.compare_exchange_strong(good, status);
    }
    i64 status() const { return status_.load(); }

private:
    std::atomic<i64> status_{0};
};

// Shares `parts` pieces of work, each worth so many operations, among the threads that the block's ipar allows; each(i)
// for those from begin to end of a thread. The cut changes no result.
template <class Each> void share(const i64* ipar, i64 parts, double worth, Each each)
{
    constexpr double grain = 1e5; // operations that a thread has to have to be worth waking
    const i64 most = min(max(ipar[ipar_threads], 1), parts);
    const int threads = most > 1 ? threads_for(static_cast<double>(parts) * worth, grain, most) : 1;
    parallel(threads, [&](int index, int count) { each(parts * index / count, parts * (index + 1) / count); });
}

// Where dpar of a transform lies: the first and the second along x, then those along y.
inline constexpr int transform_tables[2][2] = {{ipar_x_first, ipar_x_second}, {ipar_y_first, ipar_y_second}};

template <class T> T* dpar_at(const i64* ipar, T* dpar, int position) { return dpar + ipar[position] - 1; }

} // namespace orv::core::pde
