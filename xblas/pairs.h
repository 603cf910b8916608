// Loops whose terms go one after the other into a sum.
#pragma once

#include "frame/simd.h"
#include "frame/types.h"

namespace orv::xblas {

// next() n times, two a trip: with fewer instructions a term, short loops overlap with what comes before and behind.
// real: next() is a chain of scalars. Of complex numbers the compiler makes registers, if it sees the trips counted.
template <bool real, class Next> ORV_INLINE void in_pairs(i64 n, Next next)
{
    for (i64 pairs = n >> 1; pairs > 0; --pairs) {
        next(), next();
        if constexpr (real) asm("" : "+r"(pairs)); // or else what next() counts is computed from it once more behind
    }
    if (n & 1) next();
}

} // namespace orv::xblas
