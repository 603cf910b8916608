// Strided vectors for unit-stride loops: copied stretch by stretch to the stack.
#pragma once

#include "frame/simd.h"

namespace orv::blas {

// A stretch of a vector without its stride: in place if it has none, else a copy.
template <class T, i64 capacity> class Stretch {
    alignas(vector_bytes) T copy[capacity];

public:
    // V is T or const T. Whole registers are stored, so that the kernel's loads find them on their way to the cache.
    template <class V> ORV_INLINE V* gather(i64 n, V* x, i64 inc)
    {
        if (inc == 1) return x;
        constexpr i64 lanes = vec<T>::lanes;
        i64 i = 0;
#pragma GCC unroll 4
        for (; i + lanes <= n; i += lanes, x += lanes * inc) store(copy + i, orv::gather(x, inc));
        for (; i < n; ++i, x += inc) copy[i] = *x;
        return copy;
    }
    ORV_INLINE void scatter(i64 n, T* y, i64 inc) const
    {
        if (inc == 1) return;
#pragma GCC unroll 8
        for (i64 i = 0; i < n; ++i, y += inc) *y = copy[i];
    }
};

} // namespace orv::blas
