// One element, or as many as a register holds: bodies are written once for both. V is T or vec<T>.
#pragma once

#include "frame/simd.h"

#include <type_traits>

namespace orv::lapack {

template <class V> struct lanes_of {
    using Element = V;
    static constexpr int count = 1;
};
template <class T> struct lanes_of<vec<T>> {
    using Element = T;
    static constexpr int count = vec<T>::lanes;
};

// From and to p, p + inc, p + 2*inc, ...; the stride is 1 where that is known when the code is compiled.
template <class V, bool unit, class T> ORV_INLINE V get(const T* p, i64 inc)
{
    if constexpr (std::is_same_v<V, T>) return *p;
    else return load_strided<unit>(p, inc);
}
template <bool unit, class T> ORV_INLINE void put(T* p, i64 /* one element */, T v) { *p = v; }
template <bool unit, class T> ORV_INLINE void put(T* p, i64 inc, vec<T> v)
{
    if constexpr (unit) storeu(p, v);
    else scatter(p, inc, v);
}

// a*x of one number a and elements x; a real one multiplies both parts.
template <class T> ORV_INLINE T scaled(T x, real_t<T> a) { return a * x; }
template <class T> ORV_INLINE vec<T> scaled(vec<T> x, real_t<T> a)
{
    if constexpr (is_complex<T>) return lane_product(x, splat(T{a, a}));
    else return x * splat(a);
}
template <class T> ORV_INLINE T product(T a, T x) { return a * x; }
template <class T> ORV_INLINE vec<T> product(T a, vec<T> x) { return factor<T>(a) * x; }

} // namespace orv::lapack
