// Quadruple precision for oracles, without a library: 113 bits, exponents to +-16382.
#pragma once

#include <cmath>

namespace orv::test {

using quad = __float128;

inline quad magnitude(quad x) { return x < 0 ? -x : x; }

// Newton's steps double the digits of the start.
inline quad root(quad x)
{
    if (!(x > 0)) return x;
    quad scale = 1; // brings x into the range of long double's normal numbers with room to spare
    while (x > 0x1p4000L) x *= 0x1p-4000L, scale *= 0x1p2000L;
    while (x < 0x1p-4000L) x *= 0x1p4000L, scale *= 0x1p-2000L;
    quad y = std::sqrt(static_cast<long double>(x));
    for (int step = 0; step < 2; ++step) y = (y + x / y) / 2;
    return y * scale;
}

} // namespace orv::test
