// The packed layouts of the spectrum X of n reals, of which X[0], ..., X[n/2] say all:
//
//   Perm   Re X[0], Re X[n/2], Re X[1], Im X[1], ...      of odd n as Pack
//   Pack   Re X[0], Re X[1], Im X[1], ..., Re X[n/2]      of odd n without the last
//   CCS    Re X[0], 0, Re X[1], Im X[1], ...              n + 2 values with Re X[n/2], 0 at the end, of odd n n + 1
#pragma once

#include "frame/types.h"

namespace orv::dft {

enum class Layout { perm, pack, ccs };

// Where the parts stand: X[k] from 2*k + shift on for 0 < 2*k < n; the real X[n/2] of even n at half.
struct Places {
    i64 shift, half;
};
constexpr Places places(Layout layout, i64 n)
{
    const bool even = n % 2 == 0;
    if (layout == Layout::ccs) return {0, n};
    if (layout == Layout::perm && even) return {0, 1};
    return {-1, n - 1};
}

} // namespace orv::dft
