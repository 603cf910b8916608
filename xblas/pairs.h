// Loops whose terms go one after the other into a sum.
#pragma once

#include "frame/simd.h"
#include "frame/types.h"

namespace orv::xblas {

// next() n times, two a trip: with fewer instructions a term, short loops overlap with what comes before and behind.
template <class Next> ORV_INLINE void in_pairs(i64 n, Next next)
{
    for (; n >= 2; n -= 2) next(), next();
    if (n == 1) next();
}

} // namespace orv::xblas
