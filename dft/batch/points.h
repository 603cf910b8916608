// Transforms of as many points as have straight-line code, in registers.
#pragma once

#include "dft/primitives/dft/butterflies.h"

namespace orv::dft::batch {

using general::pairs;
using general::steps;

constexpr bool is_straight(i64 n) { return (n >= 2 && n <= 16) || n == 20 || n == 25 || n == 32; }

template <int n, bool forward, class R> ORV_INLINE void transform(pairs<R> (&x)[n])
{
    static_assert(is_straight(n));
    general::butterfly<n, forward>(x);
}

} // namespace orv::dft::batch
