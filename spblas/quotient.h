// Quotients, as solves need them: each is divided, for a reciprocal would round once more.
#pragma once

#include "spblas/options.h"

namespace orv::ORV_SPBLAS {

template <class T> constexpr T divide(T a, T b) { return a / b; }
// A quotient whose squares neither overflow nor vanish: the larger part of the divisor is divided out first.
template <class R> constexpr cpx<R> divide(cpx<R> a, cpx<R> b)
{
    if (magnitude(b.re) >= magnitude(b.im)) {
        const R ratio = b.im / b.re, length = b.re + b.im * ratio;
        return {(a.re + a.im * ratio) / length, (a.im - a.re * ratio) / length};
    }
    const R ratio = b.re / b.im, length = b.re * ratio + b.im;
    return {(a.re * ratio + a.im) / length, (a.im * ratio - a.re) / length};
}

} // namespace orv::ORV_SPBLAS
