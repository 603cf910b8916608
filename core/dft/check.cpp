// Do settings go together? Looked at once, before any kernel sees them.
#include "core/dft/descriptor.h"

#include <cinttypes>
#include <cstdio>

namespace orv::core::dft {
namespace {

constexpr const char* side_names[] = {"signal", "spectrum"};

// What is one behind the other in place: `what` of the signal beside that of the spectrum.
orv_status match(const Settings& s, const char* what, i64 of_signal, i64 of_spectrum)
{
    const i64 wanted = s.is_half() ? 2 * of_spectrum : of_spectrum;
    if (of_signal == wanted) return ORV_OK;
    if (s.is_half())
        return fail(ORV_BAD_SETTING,
                    "in place, two reals stand where one complex number does: %s is %" PRId64
                    " for the signal and %" PRId64 " for the spectrum; the first must be twice the second",
                    what, of_signal, of_spectrum);
    return fail(ORV_BAD_SETTING,
                "in place needs equal strides, distances and offsets: %s is %" PRId64 " for the signal and %" PRId64
                " for the spectrum",
                what, of_signal, of_spectrum);
}

orv_status check_in_place(const Settings& s, const Layout& a, const Layout& b)
{
    if (s.is_half() && (a.strides[0] != 1 || b.strides[0] != 1))
        return fail(ORV_BAD_SETTING,
                    "in place, a real signal and its half spectrum need stride 1 in dimension 0: it is %" PRId64
                    " for the signal and %" PRId64 " for the spectrum",
                    a.strides[0], b.strides[0]);
    for (int k = s.is_half() ? 1 : 0; k < s.rank; ++k) {
        char what[40];
        std::snprintf(what, sizeof what, "the stride of dimension %d", k);
        if (s.lengths[k] == 1) continue;
        if (const auto status = match(s, what, a.strides[k], b.strides[k])) return status;
    }
    if (s.transforms > 1)
        if (const auto status = match(s, "the distance of transforms", a.distance, b.distance)) return status;
    return match(s, "the offset", a.offset, b.offset);
}

bool is_written(const Settings& s, SideName side)
{
    return s.in_place() || s.directions != (side == spectrum ? ORV_DFT_BACKWARD : ORV_DFT_FORWARD);
}

// No element may be farther away than a pointer reaches.
bool reaches_too_far(const Settings& s, SideName side, const Layout& l)
{
    __int128 reach = l.offset < 0 ? -static_cast<__int128>(l.offset) : l.offset;
    const auto add = [&](i64 count, i64 step) {
        const __int128 wide = step;
        reach += static_cast<__int128>(max(count - 1, 0)) * (wide < 0 ? -wide : wide);
    };
    for (int k = 0; k < s.rank; ++k) add(extent(s, side, k), l.strides[k]);
    add(s.transforms, l.distance);
    return reach > (INT64_MAX - 1) / element_bytes(s, side);
}

orv_status check_side(const Settings& s, SideName side, const Layout& l)
{
    if (s.transforms > 1 && l.distance == 0 && is_written(s, side))
        return fail(ORV_BAD_SETTING,
                    "%" PRId64
                    " transforms would all write the same %s: its distance is 0; set another, or one transform",
                    s.transforms, side_names[side]);
    if (reaches_too_far(s, side, l))
        return fail(ORV_BAD_SETTING,
                    "the %s reaches farther than memory does: lower its lengths, strides, distance (%" PRId64
                    "), offset (%" PRId64 ") or the number of transforms (%" PRId64 ")",
                    side_names[side], l.distance, l.offset, s.transforms);
    return ORV_OK;
}

orv_status check_real(const Settings& s)
{
    if (s.is_split() && s.format != ORV_DFT_HALF)
        return fail(ORV_BAD_SETTING,
                    "a packed spectrum consists of reals and cannot be split: set ORV_DFT_FORMAT to ORV_DFT_HALF, or "
                    "ORV_DFT_STORAGE to ORV_DFT_INTERLEAVED");
    if (s.is_split() && s.in_place())
        return fail(
            ORV_BAD_SETTING,
            "a real signal cannot be in place with a split spectrum, which is two arrays: set ORV_DFT_PLACEMENT "
            "to ORV_DFT_OUT_OF_PLACE");
    if (s.format != ORV_DFT_HALF && s.rank > 2)
        return fail(ORV_UNSUPPORTED,
                    "packed spectra (ORV_DFT_CCS, ORV_DFT_PACK, ORV_DFT_PERM) have one or two dimensions, not %d: set "
                    "ORV_DFT_FORMAT to ORV_DFT_HALF",
                    s.rank);
    return ORV_OK;
}

} // namespace

orv_status check_lengths(const char* routine, int argument, int rank, const i64* lengths)
{
    constexpr i64 most_elements = i64{1} << 43; // of 16 bytes each: the address space of a process
    if (lengths == nullptr) return bad_argument(routine, argument, "null");
    i64 elements = 1;
    for (int k = 0; k < rank; ++k) {
        if (lengths[k] < 1)
            return bad_argument(routine, argument, "%" PRId64 " for dimension %d, but lengths are at least 1",
                                lengths[k], k);
        if (__builtin_mul_overflow(elements, lengths[k], &elements) || elements > most_elements)
            return bad_argument(routine, argument, "too large: all elements together do not fit in memory");
    }
    return ORV_OK;
}

orv_status check(const Settings& s)
{
    if (s.is_real())
        if (const auto status = check_real(s)) return status;
    const Layout a = layout(s, signal), b = layout(s, spectrum);
    if (s.in_place())
        if (const auto status = check_in_place(s, a, b)) return status;
    if (const auto status = check_side(s, signal, a)) return status;
    return check_side(s, spectrum, b);
}

} // namespace orv::core::dft
