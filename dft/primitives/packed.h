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

// From Perm to another layout in place.
template <class R> inline void from_perm(Layout layout, R* x, i64 n)
{
    if (layout == Layout::perm) return;
    const Places perm = places(Layout::perm, n), to = places(layout, n);
    const R middle = x[perm.half];
    if (to.shift < perm.shift)
        for (i64 i = 2; i < n; ++i) x[i - 1] = x[i];
    if (to.shift > perm.shift)
        for (i64 i = n; i-- > 1;) x[i + 1] = x[i];
    if (n % 2 == 0) x[to.half] = middle;
    if (layout == Layout::pack) return;
    x[1] = 0;
    if (n % 2 == 0) x[n + 1] = 0;
}
// From any layout to Perm; source and destination may be the same.
template <class R> inline void to_perm(Layout layout, const R* src, R* dst, i64 n)
{
    const Places perm = places(Layout::perm, n), from = places(layout, n);
    const i64 begin = 2 + perm.shift, moved = from.shift - perm.shift;
    const R first = src[0], middle = n % 2 == 0 ? src[from.half] : R(0);
    if (moved < 0)
        for (i64 i = n; i-- > begin;) dst[i] = src[i + moved];
    else if (moved > 0 || src != dst)
        for (i64 i = begin; i < n; ++i) dst[i] = src[i + moved];
    dst[0] = first;
    if (n % 2 == 0) dst[perm.half] = middle;
}

} // namespace orv::dft
