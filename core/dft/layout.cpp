// What is left to the core of where elements stand: without gaps, and in place so that both sides fit on each other.
#include "core/dft/descriptor.h"

#include <cstdlib>

namespace orv::core::dft {
namespace {

SideName opposite(SideName side) { return side == signal ? spectrum : signal; }

// How many elements of this side stand where the other one has `count`.
// In place a complex number of a half spectrum stands on two reals of the signal.
i64 seen_from(const Settings& s, SideName side, i64 count)
{
    if (!s.is_half()) return count;
    return side == signal ? 2 * count : count / 2;
}

// The same with what the other side needs of the room in place.
i64 room(const Settings& s, SideName side, int k)
{
    const i64 own = extent(s, side, k), other = extent(s, opposite(side), k);
    return s.in_place() ? max(own, k == 0 ? seen_from(s, side, other) : other) : own;
}

void without_gaps(const Settings& s, SideName side, i64* strides)
{
    i64 stride = 1;
    for (int k = 0; k < s.rank; ++k) {
        strides[k] = stride;
        stride *= room(s, side, k);
    }
}

void strides(const Settings& s, SideName side, i64* out)
{
    const SideName other = opposite(side);
    if (s.side[side].has_strides) {
        for (int k = 0; k < s.rank; ++k) out[k] = s.side[side].strides[k];
    } else if (s.in_place() && s.side[other].has_strides) {
        for (int k = 0; k < s.rank; ++k) {
            const i64 given = s.side[other].strides[k];
            out[k] = k == 0 ? given : seen_from(s, side, given);
        }
    } else {
        without_gaps(s, side, out);
    }
}

// From the first element of a transform to behind the last one.
i64 span(const Settings& s, SideName side, const i64* strides)
{
    i64 last = 0;
    for (int k = 0; k < s.rank; ++k) last += (room(s, side, k) - 1) * std::abs(strides[k]);
    return last + 1;
}

i64 chosen(const Settings& s, SideName side, Choice Side::*what, i64 otherwise)
{
    const Choice own = s.side[side].*what, other = s.side[opposite(side)].*what;
    if (own.made) return own.value;
    return s.in_place() && other.made ? seen_from(s, side, other.value) : otherwise;
}

} // namespace

Settings defaults(int precision, int domain, int rank, const i64* lengths)
{
    Settings s{};
    s.precision = precision, s.domain = domain, s.rank = rank;
    for (int k = 0; k < rank; ++k) s.lengths[k] = lengths[k];
    s.placement = ORV_DFT_IN_PLACE, s.storage = ORV_DFT_INTERLEAVED, s.format = ORV_DFT_HALF;
    s.ordering = ORV_DFT_ORDERED, s.workspace = ORV_DFT_ALLOW, s.directions = ORV_DFT_BOTH;
    s.transforms = 1;
    s.scales[forward] = s.scales[backward] = 1;
    return s;
}

i64 extent(const Settings& s, SideName side, int dimension)
{
    const i64 n = s.lengths[dimension];
    if (side == signal || !s.is_real()) return n;
    if (s.format == ORV_DFT_HALF) return dimension == 0 ? n / 2 + 1 : n;
    return s.format == ORV_DFT_CCS ? 2 * (n / 2 + 1) : n;
}

i64 element_bytes(const Settings& s, SideName side)
{
    const bool is_complex = !s.is_split() && (!s.is_real() || (side == spectrum && s.is_half()));
    return is_complex ? 2 * s.real_bytes() : s.real_bytes();
}

Layout layout(const Settings& s, SideName side)
{
    Layout l;
    strides(s, side, l.strides);
    l.distance = chosen(s, side, &Side::distance, span(s, side, l.strides));
    l.offset = chosen(s, side, &Side::offset, 0);
    return l;
}

} // namespace orv::core::dft
