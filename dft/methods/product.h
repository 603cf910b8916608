// Products of arrays of pairs.
#pragma once

#include "frame/simd.h"

namespace orv::dft {

template <bool conjugated, class V> ORV_INLINE V factor_of(V table)
{
    if constexpr (conjugated) return conj(table);
    else return table;
}
// y := x*table, or x*conj(table)
template <bool conjugated, class T> void multiply(const T* x, const T* table, T* y, i64 n)
{
    each<T, 4, 1>(
        n,
        [=]<int count>(i64 i, std::integral_constant<int, count>) ORV_INLINE_LAMBDA {
            for (int r = 0; r < count; ++r, i += vec<T>::lanes)
                storeu(y + i, element_product(loadu(x + i), factor_of<conjugated>(loadu(table + i))));
        },
        [=](i64 i) ORV_INLINE_LAMBDA { y[i] = x[i] * factor_of<conjugated>(table[i]); });
}

} // namespace orv::dft
