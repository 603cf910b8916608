// Position of the element of greatest, or least, magnitude; the magnitude of a complex number is |re| + |im|.
//
// Both are one search for the greatest key: the key of an element is its magnitude, or minus its magnitude.
#include "blas/ladder.h"
#include "frame/simd.h"
#include "frame/symbol.h"

namespace orv::blas {
namespace {

enum class Want { greatest, least };

// Registers of magnitudes, signed: setting the sign bit instead of clearing it costs nothing.
template <Want want, class T> ORV_INLINE vec<T> signed_magnitude(vec<T> v)
{
    if constexpr (want == Want::greatest) return magnitude(v);
    else if constexpr (sizeof(real_t<T>) == 4) return {_mm_or_ps(_mm_set1_ps(-0.0f), v.r)};
    else return {_mm_or_pd(_mm_set1_pd(-0.0), v.r)};
}

// Keys of as many elements as a register holds reals. With inc = 0, the key of one element in all lanes.
template <Want want, bool unit, class R> ORV_INLINE vec<R> keys(const R* x, i64 inc)
{
    return signed_magnitude<want>(load_strided<unit>(x, inc));
}
template <Want want, bool unit, class R> ORV_INLINE vec<R> keys(const cpx<R>* x, i64 inc)
{
    const auto low = signed_magnitude<want>(load_strided<unit>(x, inc)).r;
    const auto high = signed_magnitude<want>(load_strided<unit>(x + vec<cpx<R>>::lanes * inc, inc)).r;
    if constexpr (sizeof(R) == 4)
        return {_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)) +
                _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
    else return {_mm_unpacklo_pd(low, high) + _mm_unpackhi_pd(low, high)};
}
template <Want want, class T> ORV_INLINE real_t<T> key(const T* x) { return first_lane(keys<want, false>(x, 0)); }

// The search as it is defined. The first element seeds every lane; then a register of elements a pass, from the first
// 16-byte boundary on for unit stride, single elements before it. In a pass a lane whose `key <= best` fails takes the
// position, and keeps the greater of key and best by the maximum instruction: so NaN moves a lane's position and never
// its maximum, except as the first element. The lane of the greatest maximum wins, of equal lanes the smallest
// position. Single elements, at the two ends, win by `key > best`, where NaN loses.
template <Want want, bool unit, class T> [[gnu::noinline]] i64 search_by_lanes(i64 n, const T* x, i64 inc)
{
    using R = real_t<T>;
    constexpr i64 lanes = vec<R>::lanes;
    R best[lanes];
    i64 position[lanes];

    R lead = key<want>(x);
    i64 at = 0, i = 0;
    const auto single = [&] {
        const R k = key<want>(x + i * inc);
        if (k > lead) lead = k, at = i;
        ++i;
    };
    for (const i64 head = unit ? min(to_boundary(x), n) : 0; i < head;) single();
    for (i64 l = 0; l < lanes; ++l) best[l] = lead, position[l] = at;
    for (; i + lanes <= n; i += lanes)
        for (i64 l = 0; l < lanes; ++l) {
            const R k = key<want>(x + (i + l) * inc);
            if (!(k <= best[l])) position[l] = i + l;
            best[l] = k > best[l] ? k : best[l];
        }
    lead = best[0], at = position[0];
    for (i64 l = 1; l < lanes; ++l)
        if (best[l] > lead || (!(best[l] < lead) && position[l] < at)) lead = best[l], at = position[l];
    while (i < n) single();
    return at + 1;
}

// The greatest of many keys, and whether a NaN was among them. Singles are compared as integers: the bits of magnitudes
// are ordered as the magnitudes are, and NaNs stand above infinity, so the maximum tells both. Those of least magnitude
// count downwards from infinity's bits, where NaNs wrap around to the top.
template <Want want, class R> struct Greatest;
template <Want want> struct Greatest<want, float> {
    using Key = __m128i;
    static constexpr int infinity = 0x7f800000;
    Key key = _mm_setzero_si128();

    ORV_INLINE static Key order(vec<float> keys)
    {
        const Key bits = _mm_castps_si128(keys.r);
        if constexpr (want == Want::greatest) return bits;
        else return _mm_sub_epi32(_mm_set1_epi32(static_cast<int>(infinity | 0x80000000)), bits);
    }
    ORV_INLINE void add(vec<float> keys) { key = _mm_max_epu32(key, order(keys)); }
    ORV_INLINE void add(vec<float> a, vec<float> b) { add(a), add(b); }
    ORV_INLINE void add(const Greatest& other) { key = _mm_max_epu32(key, other.key); }

    ORV_INLINE bool exceeds(Key bound) const
    {
        return _mm_movemask_epi8(_mm_cmpeq_epi32(_mm_max_epu32(key, bound), bound)) != 0xffff;
    }
    ORV_INLINE Key in_all_lanes() const
    {
        const Key half = _mm_max_epu32(key, _mm_shuffle_epi32(key, _MM_SHUFFLE(1, 0, 3, 2)));
        return _mm_max_epu32(half, _mm_shuffle_epi32(half, _MM_SHUFFLE(2, 3, 0, 1)));
    }
    ORV_INLINE bool saw_nan() const { return exceeds(_mm_set1_epi32(infinity)); }
    ORV_INLINE static int equal_lanes(vec<float> keys, Key bound)
    {
        return _mm_movemask_ps(_mm_castsi128_ps(_mm_cmpeq_epi32(order(keys), bound)));
    }
};
template <Want want> struct Greatest<want, double> {
    using Key = __m128d;
    Key key = _mm_set1_pd(-__builtin_inf()), unordered = _mm_setzero_pd();

    ORV_INLINE static Key order(vec<double> keys) { return keys.r; }
    ORV_INLINE void add(vec<double> a, vec<double> b)
    {
        key = _mm_max_pd(key, _mm_max_pd(a.r, b.r));
        unordered = _mm_or_pd(unordered, _mm_cmpunord_pd(a.r, b.r));
    }
    ORV_INLINE void add(vec<double> keys) { add(keys, keys); }
    ORV_INLINE void add(const Greatest& other)
    {
        key = _mm_max_pd(key, other.key);
        unordered = _mm_or_pd(unordered, other.unordered);
    }

    ORV_INLINE bool exceeds(Key bound) const { return _mm_movemask_pd(_mm_cmpgt_pd(key, bound)) != 0; }
    ORV_INLINE Key in_all_lanes() const { return _mm_max_pd(key, _mm_shuffle_pd(key, key, 1)); }
    ORV_INLINE bool saw_nan() const { return _mm_movemask_pd(unordered) != 0; }
    ORV_INLINE static int equal_lanes(vec<double> keys, Key bound)
    {
        return _mm_movemask_pd(_mm_cmpeq_pd(keys.r, bound));
    }
};

// Without a NaN the search by lanes finds the first of the greatest keys: a lane keeps the first of its own, and of
// equal lanes the smallest position wins. So any way to that element will do: blocks are scanned for their greatest key
// alone, and the one block that raised the record last is looked through. A NaN leads back to the search by lanes.
template <Want want, bool unit, class T> ORV_INLINE i64 search(i64 n, const T* x, i64 inc)
{
    using R = real_t<T>;
    constexpr i64 lanes = vec<R>::lanes, block = 64 * lanes;
    using Scan = Greatest<want, R>;
    const auto at = [&](i64 i) { return keys<want, unit>(x + i * inc, inc); };
    const auto one = [&](i64 i) { return keys<want, false>(x + i * inc, 0); };

    typename Scan::Key record = Scan::order(one(0));
    i64 found = 0;
    for (i64 start = 0; start < n; start += block) {
        const i64 end = min(n, start + block);
        Scan a, b;
        i64 i = start;
        for (; i + 4 * lanes <= end; i += 4 * lanes) {
            if constexpr (unit) prefetch_ahead(x + i);
            a.add(at(i), at(i + lanes));
            b.add(at(i + 2 * lanes), at(i + 3 * lanes));
        }
        for (; i + lanes <= end; i += lanes) a.add(at(i));
        for (; i < end; ++i) b.add(one(i));
        a.add(b);
        if (a.saw_nan()) return search_by_lanes<want, unit>(n, x, inc);
        if (a.exceeds(record)) record = a.in_all_lanes(), found = start;
    }
    const auto equal = [&](i64 i) { return Scan::equal_lanes(at(i), record) << (i - found); };
    for (; found + 4 * lanes <= n; found += 4 * lanes) {
        const int four = equal(found) | equal(found + lanes) | equal(found + 2 * lanes) | equal(found + 3 * lanes);
        if (four != 0) return found + __builtin_ctz(four) + 1;
    }
    while (Scan::equal_lanes(one(found), record) == 0) ++found;
    return found + 1;
}

// The position, counted from 1, of the first element of greatest or least magnitude; 0 for n < 1 or incx < 1.
template <Want want, class T> i64 extreme_position(i64 n, const T* x, i64 incx)
{
    if (n < 1 || incx < 1) return 0;
    if (n == 1) return 1;
    return incx == 1 ? search<want, true>(n, x, 1) : search<want, false>(n, x, incx);
}

} // namespace
} // namespace orv::blas

using namespace orv;
using namespace orv::blas;

#define EXTREME_POSITION(name, want, T)                                                                                \
    ORV_EXPORT i64 BLAS(name)(const i64* n, const T* x, const i64* incx)                                               \
    {                                                                                                                  \
        return extreme_position<want>(*n, x, *incx);                                                                   \
    }

EXTREME_POSITION(isamax, Want::greatest, float)
EXTREME_POSITION(idamax, Want::greatest, double)
EXTREME_POSITION(icamax, Want::greatest, cpx<float>)
EXTREME_POSITION(izamax, Want::greatest, cpx<double>)
EXTREME_POSITION(isamin, Want::least, float)
EXTREME_POSITION(idamin, Want::least, double)
EXTREME_POSITION(icamin, Want::least, cpx<float>)
EXTREME_POSITION(izamin, Want::least, cpx<double>)
