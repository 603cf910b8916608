// y := beta*y, the pass that the matrix-vector products make before they add to y.
#pragma once

#include "frame/simd.h"

namespace orv::blas {

// Below this many elements the set-up of a block fill costs more than it saves.
inline constexpr i64 block_fill_from = 13;

template <class T> void fill_zeros(i64 n, T* y)
{
    constexpr i64 lanes = vec<T>::lanes, block = 4 * lanes;
    i64 i = 0;
    if (n < block_fill_from) {
        for (; i + 4 <= n; i += 4) y[i] = y[i + 1] = y[i + 2] = y[i + 3] = zero<T>;
    } else {
        for (; i + block <= n; i += block)
#pragma GCC unroll 4
            for (i64 r = 0; r < block; r += lanes) storeu(y + i + r, zeros<T>());
    }
    for (; i < n; ++i) y[i] = zero<T>;
}

template <class T> [[gnu::noinline]] void multiply_by_beta(i64 n, T beta, T* y, i64 incy)
{
    i64 i = 0;
    if (incy == 1) {
        constexpr i64 lanes = vec<T>::lanes;
        const factor<T> f(beta);
        for (; i + 8 <= n; i += 8)
#pragma GCC unroll 8
            for (i64 r = 0; r < 8; r += lanes) storeu(y + i + r, f * loadu(y + i + r));
        for (; i < n; ++i) y[i] = beta * y[i];
    } else if (incy == 0) {
        T power = beta;
        for (int r = 1; r < 8; ++r) power = power * beta;
        for (; i + 8 <= n; i += 8) *y = power * *y;
        for (; i < n; ++i) *y = beta * *y;
    } else {
        for (; i + 8 <= n; i += 8)
#pragma GCC unroll 8
            for (int r = 0; r < 8; ++r, y += incy) *y = beta * *y;
        for (; i < n; ++i, y += incy) *y = beta * *y;
    }
}

template <class T> [[gnu::noinline]] void clear(i64 n, T* y, i64 incy)
{
    if (incy == 1) return fill_zeros(n, y);
    if (incy == 0) n = min(n, 1);
    i64 i = 0;
    for (; i + 8 <= n; i += 8)
#pragma GCC unroll 8
        for (int r = 0; r < 8; ++r, y += incy) *y = zero<T>;
    for (; i < n; ++i, y += incy) *y = zero<T>;
}

// y is element 0 of n, element i stands at y[i*incy], the sign of incy notwithstanding.
//
// beta = 1 touches nothing. beta = 0 stores zeros without reading, so NaN in y is lost. At stride 0 the one location is
// cleared, or multiplied by beta once for each of the n elements: by the product of 8 factors for every whole block of
// 8, then by one factor after the other.
template <class T> ORV_INLINE void apply_beta(i64 n, T beta, T* y, i64 incy)
{
    if (beta == one<T>) return;
    if (beta == zero<T>) clear(n, y, incy);
    else multiply_by_beta(n, beta, y, incy);
}

} // namespace orv::blas
