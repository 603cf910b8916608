#include "core/conv/cut.h"

#include "core/conv/costs.h"

#include <bit>
#include <cmath>
#include <utility>

namespace orv::core::conv {
namespace {

// Elements of y that so many outputs read, those outside of it counted too.
i64 window(const Problem& p, const Roles& r, int d, i64 outputs) { return (outputs - 1) * p.step[d] + r.nx[d]; }

// The least length that keeps all outputs of a dimension apart: zeros before y may share places with those behind it.
i64 least_length(const Problem& p, const Roles& r, int d)
{
    const i64 last = r.first[d] + (p.count[d] - 1) * p.step[d];
    const i64 before = max(0, r.nx[d] - 1 - r.first[d]), behind = max(0, last - (r.ny[d] - 1));
    return max(window(p, r, d, p.count[d]) - min(before, behind), r.nx[d]);
}

// The next power of two, or three or five times one.
i64 good_length(i64 n)
{
    i64 best = static_cast<i64>(std::bit_ceil(static_cast<u64>(n)));
    for (const i64 odd : {3, 5}) {
        const i64 length = odd * static_cast<i64>(std::bit_ceil(static_cast<u64>((n + odd - 1) / odd)));
        best = min(best, length);
    }
    return best;
}
bool is_power(i64 n) { return (n & (n - 1)) == 0; }

void take_length(Cut& cut, const Problem& p, const Roles& r, int d, i64 length)
{
    const bool whole = length >= least_length(p, r, d);
    cut.length[d] = length;
    cut.outputs[d] = whole ? p.count[d] : min(p.count[d], (length - r.nx[d]) / p.step[d] + 1);
    cut.pieces[d] = (p.count[d] + cut.outputs[d] - 1) / cut.outputs[d];
    cut.total = 1;
    for (int k = 0; k < p.rank; ++k) cut.total *= cut.pieces[k];
}

} // namespace

Roles roles_of(const Problem& p)
{
    Roles r{};
    double x = 1, y = 1;
    for (int d = 0; d < p.rank; ++d) {
        r.nx[d] = p.nx[d], r.ny[d] = p.ny[d];
        r.first[d] = p.start[d] + (p.correlates() ? p.nx[d] - 1 : 0);
        x *= static_cast<double>(p.nx[d]), y *= static_cast<double>(p.ny[d]);
    }
    r.exchanged = !p.correlates() && x > y; // both come to the same
    if (r.exchanged) std::swap(r.nx, r.ny);
    return r;
}

i64 Cut::points(int rank) const
{
    i64 product = 1;
    for (int d = 0; d < rank; ++d) product *= length[d];
    return product;
}

double cost_of(const Problem& p, const Cut& cut)
{
    const TransformCosts& cost = transform_costs_of(p);
    const auto points = static_cast<double>(cut.points(p.rank));
    double doublings = 0;
    for (int d = 0; d < p.rank; ++d)
        doublings += std::log2(static_cast<double>(cut.length[d])) * (is_power(cut.length[d]) ? 1 : cost.mixed);
    // What no longer fits in a cache comes slower, the more the larger it is.
    const double beyond = std::fmax(0, std::log2(points * cost.bytes) - cost.cached);
    const double transform = cost.start + points * cost.doubling * doublings * (1 + cost.slower * beyond);
    const double piece = 2 * transform + points * cost.point;
    return static_cast<double>(cut.total) * piece + transform + points * cost.point / 2;
}

// One dimension after the other, the others as they were found so far, and once more with all of them found.
Cut cut_of(const Problem& p)
{
    const Roles r = roles_of(p);
    Cut best{};
    for (int d = 0; d < p.rank; ++d) best.pieces[d] = 1;
    for (int d = 0; d < p.rank; ++d) take_length(best, p, r, d, good_length(least_length(p, r, d)));
    double least = cost_of(p, best);
    for (int d = 0; d < 2 * p.rank; ++d) {
        const int axis = d % p.rank;
        Cut cut = best;
        for (i64 n = r.nx[axis]; n < least_length(p, r, axis); ++n) {
            n = good_length(n);
            take_length(cut, p, r, axis, n);
            if (const double cost = cost_of(p, cut); cost < least) best = cut, least = cost;
        }
        if (p.rank == 1) break;
    }
    return best;
}

} // namespace orv::core::conv
