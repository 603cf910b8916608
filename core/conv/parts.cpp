#include "core/conv/parts.h"

#include <bit>
#include <cmath>
#include <utility>

namespace orv::core::conv {
namespace {

const void* moved(const void* array, i64 elements, const orv_conv& c)
{
    return static_cast<const char*>(array) + elements * c.element_bytes();
}

// From an array's address to that of some of its elements along a dimension of n: a stride below 0 has the last one
// first.
i64 distance(i64 stride, i64 n, i64 first, i64 count)
{
    return stride >= 0 ? first * stride : (first + count - n) * stride;
}

bool has_longer_x(const orv_conv& c)
{
    double x = 1, y = 1;
    for (int d = 0; d < c.rank; ++d) x *= static_cast<double>(c.nx[d]), y *= static_cast<double>(c.ny[d]);
    return x > y;
}

// Outputs of one dimension in a part, at most.
i64 share(i64 count, i64 pieces) { return (count + pieces - 1) / pieces; }

// Elements of y that so many outputs need.
i64 window(const orv_conv& c, int d, i64 outputs) { return min(c.ny[d], (outputs - 1) * c.step[d] + c.nx[d]); }

// A line is cut where a part is long enough to hide that its ends are computed twice: for threads alone, since the
// kernel cuts it further by itself.
i64 pieces_of_line(const orv_conv& c)
{
    const i64 least = max(i64{1} << 17, 16 * c.nx[0]);
    return max(1, min(c.count[0], c.count[0] * c.step[0] / least));
}

// Below this a transform costs more to set up than to run.
constexpr i64 least_length = 64;

i64 cheapest_pieces(const orv_conv& c, int d)
{
    constexpr double others = 8; // doublings in the other dimensions, more or less
    i64 best = 1;
    double least = 0;
    for (i64 pieces = 1; pieces <= c.count[d]; pieces += (pieces + 3) / 4) {
        const auto length = static_cast<double>(transform_length(c, d, pieces));
        if (pieces > 1 && length < least_length) break;
        const double cost = static_cast<double>(pieces) * length * (std::log2(length) + others);
        if (pieces == 1 || cost < 0.9 * least) best = pieces, least = cost;
    }
    return best;
}

} // namespace

Part Part::outputs(const i64* first, const i64* count) const
{
    Part part = *this;
    orv_conv& c = part.conv;
    i64 elements = 0;
    for (int d = 0; d < c.rank; ++d) {
        elements += distance(c.z.step[d], c.count[d], first[d], count[d]);
        c.start[d] += first[d] * c.step[d];
        c.count[d] = count[d];
    }
    part.operands.z = const_cast<void*>(moved(operands.z, elements, c));
    return part;
}

// Output j has y[t - k] or y[t + k] with t = start + j*step and k from 0 to nx - 1.
Part Part::without_unread() const
{
    Part part = *this;
    orv_conv& c = part.conv;
    i64 elements = 0;
    for (int d = 0; d < c.rank; ++d) {
        const i64 t = c.start[d], last_t = t + (c.count[d] - 1) * c.step[d], reach = c.nx[d] - 1;
        const i64 first = max(0, c.correlates() ? t : t - reach);
        const i64 end = min(c.ny[d], (c.correlates() ? last_t + reach : last_t) + 1);
        elements += distance(c.y.step[d], c.ny[d], first, end - first);
        c.ny[d] = end - first;
        c.start[d] -= first;
    }
    part.operands.y = moved(operands.y, elements, c);
    return part;
}

orv_conv longer_last(const orv_conv& conv)
{
    orv_conv c = conv;
    if (!c.correlates() && has_longer_x(c)) std::swap(c.nx, c.ny), std::swap(c.x, c.y);
    return c;
}

Part longer_last(const Part& part)
{
    const auto& [x, y, z] = part.operands;
    const bool exchanged = !part.conv.correlates() && has_longer_x(part.conv);
    return {longer_last(part.conv), exchanged ? Operands{y, x, z} : part.operands};
}

i64 transform_length(const orv_conv& c, int d, i64 pieces)
{
    const i64 full = window(c, d, share(c.count[d], pieces)) + c.nx[d] - 1;
    if (c.rank <= 2) return static_cast<i64>(std::bit_ceil(static_cast<u64>(full)));
    return round_up(full, c.rank == 3 ? 4 : c.rank == 4 ? 2 : 1);
}

Pieces pieces_of(const orv_conv& c)
{
    Pieces pieces{{}, 1};
    for (int d = 0; d < c.rank; ++d)
        pieces.total *= pieces.of[d] = c.rank == 1 ? pieces_of_line(c) : cheapest_pieces(c, d);
    return pieces;
}

} // namespace orv::core::conv
