// Direct sums of a convolution, added to what dst holds.
//
// Elements b[j] go one after the other from j = 0 on, and for each dst[i + j] += a[i]*b[j]: so every result is one
// chain of sums, in the order of b, and each product and each sum is rounded once. Several of them run in one pass over
// dst, which changes nothing in a chain.
#pragma once

#include "dft/primitives/members.h"

namespace orv::dft {

// `together` elements of b in one pass.
template <int together, class T> ORV_INLINE void add_products(const T* a, i64 n, const T* b, T* dst)
{
    constexpr i64 lanes = vec<T>::lanes;
    vec<T> factors[together];
    for (int j = 0; j < together; ++j) factors[j] = splat(b[j]);
    // At both ends only some of the products exist.
    const auto some = [=](i64 k) ORV_INLINE_LAMBDA {
        for (int j = 0; j < together; ++j)
            if (k - j >= 0 && k - j < n) dst[k] += a[k - j] * b[j];
    };
    i64 k = 0;
    for (; k < min(together - 1, n); ++k) some(k);
    for (; k <= n - lanes; k += lanes) {
        vec<T> sum = loadu(dst + k);
#pragma GCC unroll 8
        for (int j = 0; j < together; ++j) sum += loadu(a + k - j) * factors[j];
        storeu(dst + k, sum);
    }
    for (; k < n + together - 1; ++k) some(k);
}

template <class T> void add_convolution(const T* a, i64 n, const T* b, i64 m, T* dst)
{
    i64 j = 0;
    for (; j <= m - 8; j += 8) add_products<8>(a, n, b + j, dst + j);
    for (; j <= m - 2; j += 2) add_products<2>(a, n, b + j, dst + j);
    if (j < m) add_products<1>(a, n, b + j, dst + j);
}

// A long first input goes in slices that stay in the first-level cache together with their results.
inline constexpr i64 slice = 4096;

// dst := a * b for n >= m.
template <class T> void convolve_directly(const T* a, i64 n, const T* b, i64 m, T* dst)
{
    i64 cleared = 0;
    for (i64 i = 0; i < n; i += slice) {
        const i64 length = min(slice, n - i), end = i + length + m - 1;
        clear(dst + cleared, end - cleared);
        add_convolution(a + i, length, b, m, dst + i);
        cleared = end;
    }
}

} // namespace orv::dft
