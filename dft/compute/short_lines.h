// Lines of a few pairs, transformed in registers where they stand: neither staged nor checked one by one. A line's
// results do not depend on the lines beside it.
#pragma once

#include "frame/types.h"

namespace orv::dft {

// Where lines stand: how far apart, in reals, points are, and lines.
struct LineSteps {
    i64 point, line;
};

// So many lines; each is read before it is written, so both arrays may be the same.
template <class R> using ShortLines = void(const R* from, LineSteps in, R* to, LineSteps out, i64 count);

// Longer lines have their points beside each other; strided ones are staged, or go by plans.
inline constexpr i64 longest_strided = 16;

// For the transform of n points, without scale; null where n is not 1 to 16 or 32.
template <class R> ShortLines<R>* short_lines(i64 n, bool forward);

} // namespace orv::dft
