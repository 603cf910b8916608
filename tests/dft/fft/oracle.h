// Transforms of powers of two in wider arithmetic: quad, or long double where quad takes too long.
#pragma once

#include "frame/types.h"
#include "tests/support/quad.h"

#include <algorithm>
#include <vector>

namespace orv::test {

// exp(2*pi*i*k/2^order) by Taylor's series for an eighth of a circle, and by symmetry.
template <class X> cpx<X> unit_root(i64 k, int order)
{
    if (order < 3) return unit_root<X>(k * (8 >> order), 3);
    const i64 n = i64{1} << order;
    k = ((k % n) + n) % n;
    if (8 * k > n) { // one quarter back, or mirrored at the eighth
        if (4 * k >= n) {
            const cpx<X> w = unit_root<X>(k - n / 4, order);
            return {-w.im, w.re};
        }
        const cpx<X> w = unit_root<X>(n / 4 - k, order);
        return {w.im, w.re};
    }
    constexpr quad pi = quad{0x1.921fb54442d18p1} + 0x1.1a62633145c07p-53 - 0x1.f1976b7ed8fbcp-109;
    const X x = static_cast<X>(2 * pi * static_cast<quad>(k) / static_cast<quad>(n));
    X sine = 1, cosine = 1;
    for (int i = 30; i >= 2; i -= 2) {
        cosine = 1 - cosine * x * x / static_cast<X>(i * (i - 1));
        sine = 1 - sine * x * x / static_cast<X>(i * (i + 1));
    }
    return {cosine, x * sine};
}

// sum of x[j]*exp(sign*2*pi*i*j*k/n), in place; n is 2^order.
template <class X> void exact_transform(std::vector<cpx<X>>& x, int sign)
{
    int order = 0;
    while ((std::size_t{1} << order) < x.size()) ++order;
    const std::size_t n = x.size();
    for (std::size_t i = 0, j = 0; i < n; ++i) {
        if (i < j) std::swap(x[i], x[j]);
        std::size_t bit = n / 2;
        for (; bit && (j & bit); bit /= 2) j ^= bit;
        j |= bit;
    }
    std::vector<cpx<X>> roots(n / 2);
    for (std::size_t k = 0; k < roots.size(); ++k) roots[k] = unit_root<X>(sign * static_cast<i64>(k), order);
    for (std::size_t half = 1; half < n; half *= 2)
        for (std::size_t i = 0; i < n; i += 2 * half)
            for (std::size_t k = 0; k < half; ++k) {
                const cpx<X> a = x[i + k], b = x[i + k + half] * roots[k * (n / 2 / half)];
                x[i + k] = a + b, x[i + k + half] = a - b;
            }
}

// The sum itself, for what the oracle above is held against.
template <class X> std::vector<cpx<X>> naive_transform(const std::vector<cpx<X>>& x, int order, int sign)
{
    std::vector<cpx<X>> y(x.size());
    for (std::size_t k = 0; k < x.size(); ++k)
        for (std::size_t j = 0; j < x.size(); ++j) y[k] += x[j] * unit_root<X>(sign * static_cast<i64>(j * k), order);
    return y;
}

} // namespace orv::test
