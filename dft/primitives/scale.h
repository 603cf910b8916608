// The law of scale factors: v * 2^-s, rounded to nearest with ties to even, saturated to the result's type. It is exact
// for every v and every s: no step leaves the width that v has.
//
// A law maps integers, or registers of them; what comes out lies within the result's type or saturates to the same as
// the true value does.
#pragma once

#include "dft/primitives/walk.h"

namespace orv::dft {

// -1 where a is above b, else 0.
template <class V> ORV_INLINE V above(V a, V b) { return -static_cast<V>(a > b); }
ORV_INLINE i32s above(i32s a, i32s b) { return a > b; }
ORV_INLINE i64 clamp(i64 v, i64 low, i64 high) { return v < low ? low : v > high ? high : v; }
ORV_INLINE i32s clamp(i32s v, i32 low, i32 high)
{
    return lanes32(_mm_min_epi32(_mm_max_epi32(bits(v), _mm_set1_epi32(low)), _mm_set1_epi32(high)));
}

// Products of 32-bit pairs: their sums may need one bit more than 64.
__extension__ using i128 = __int128;
ORV_INLINE i128 clamp(i128 v, i64 low, i64 high) { return v < low ? i128{low} : v > high ? i128{high} : v; }

template <class T> inline constexpr i64 lowest = T(-1) < T(0) ? -(i64{1} << (bits_of<T> - 1)) : 0;
template <class T> inline constexpr i64 highest = lowest<T> + (i64{1} << (bits_of<T> - 1)) * 2 - 1;

struct Plain {
    template <class V> ORV_INLINE V operator()(V v) const { return v; }
};

// s above 0. What lies below 2^s is compared with its half, or with one less where rounding up makes an odd result
// even.
struct Down {
    int s;
    template <class V> ORV_INLINE V operator()(V v) const
    {
        const V half = (V{} + 1) << (s - 1);
        const V whole = v >> s, rest = v & ~((V{} - 1) << s);
        return whole - above(rest, half - (whole & 1));
    }
};

// Result of type T, times 2^k. What is above T's range is held just outside of it first, so that it still saturates.
template <class T> struct Up {
    int k;
    template <class V> ORV_INLINE V operator()(V v) const
    {
        return clamp(v, lowest<T> >> k, (highest<T> >> k) + 1) << k;
    }
};

// The classes of factors, by the part of a worker's name.
enum class Law { factor, factor_1Sfs, factor_PosSfs, factor_NegSfs, factor_Bound };

// The law for results of type T; f is the factor where the class needs it.
template <Law law, class T, class... F> ORV_INLINE auto law_of(F... f)
{
    if constexpr (law == Law::factor) return Plain{};
    else if constexpr (law == Law::factor_1Sfs) return Down{1};
    else if constexpr (law == Law::factor_PosSfs) return Down{f...};
    else if constexpr (law == Law::factor_NegSfs) return Up<T>{(-f)...};
    else return Up<T>{bits_of<T>};
}

} // namespace orv::dft
