// Position of the element of greatest, or least, magnitude; the magnitude of a complex number is |re| + |im|.
//
// Both are one search for the greatest key: the key of an element is its magnitude, or minus its magnitude.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"
#include "frame/simd.h"

namespace orv::blas {
namespace {

enum class Want { greatest, least };

// Registers of magnitudes, signed: setting the sign bit instead of clearing it costs nothing.
template <Want want, class T> ORV_INLINE vec<T> signed_magnitude(vec<T> v)
{
    if constexpr (want == Want::greatest) return magnitude(v);
    else return negative_magnitude(v);
}

// Keys of as many elements as a register holds reals. With inc = 0, the key of one element in all lanes.
template <Want want, bool unit, class R> ORV_INLINE vec<R> keys(const R* x, i64 inc)
{
    return signed_magnitude<want>(load_strided<unit>(x, inc));
}
template <Want want, bool unit, class R> ORV_INLINE vec<R> keys(const cpx<R>* x, i64 inc)
{
    const auto low = signed_magnitude<want>(load_strided<unit>(x, inc));
    const auto high = signed_magnitude<want>(load_strided<unit>(x + vec<cpx<R>>::lanes * inc, inc));
    return add_parts_sparing_shuffles(low, high);
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
// count downwards, from infinity's bits to zero's, and NaNs wrap around to the top.
template <Want want, class R> struct Greatest;
template <Want want> struct Greatest<want, float> {
    static constexpr int infinity = 0x7f800000;
    static constexpr int top = want == Want::greatest ? infinity : infinity - INT32_MAX - 1; // of all but NaNs
    using Wrapping [[gnu::vector_size(vector_bytes)]] = unsigned;
    vec<i32> key;

    ORV_INLINE explicit Greatest(vec<float> keys) : key{reinterpret_cast<reg<i32>::type>(keys.r)}
    {
        if constexpr (want == Want::least)
            key.r =
                reinterpret_cast<reg<i32>::type>(static_cast<unsigned>(infinity) - reinterpret_cast<Wrapping>(keys.r));
    }
    ORV_INLINE Greatest(vec<float> a, vec<float> b) : Greatest(a) { add(Greatest(b)); }
    ORV_INLINE void add(const Greatest& other) { key = maximum(key, other.key); }

    // With the same key in all lanes: whether another holds a greater one, which then takes its place.
    ORV_INLINE bool raised_by(Greatest other)
    {
        if (!any(other.key > key)) return false;
        key = greatest_lane(other.key);
        return true;
    }
    ORV_INLINE bool saw_nan() const { return first_lane(key) > top; }
    ORV_INLINE auto equal_lanes(Greatest other) const { return key == other.key; }
};
template <Want want> struct Greatest<want, double> {
    vec<double> key;
    mask<double> unordered;

    ORV_INLINE explicit Greatest(vec<double> keys) : Greatest(keys, keys) {}
    ORV_INLINE Greatest(vec<double> a, vec<double> b) : key(maximum(a, b)), unordered(orv::unordered(a, b)) {}
    ORV_INLINE void add(const Greatest& other)
    {
        key = maximum(key, other.key);
        unordered = unordered | other.unordered;
    }

    ORV_INLINE bool raised_by(Greatest other)
    {
        unordered = unordered | other.unordered;
        if (!any(other.key > key)) return false;
        key = greatest_lane(other.key);
        return true;
    }
    ORV_INLINE bool saw_nan() const { return any(unordered); }
    ORV_INLINE auto equal_lanes(Greatest other) const { return key == other.key; }
};

// The greatest key, lane by lane, of `count` registers of elements.
template <Want want, bool unit, int count, class T> ORV_INLINE Greatest<want, real_t<T>> greatest(const T* x, i64 inc)
{
    constexpr int half = count / 2;
    const T* const middle = x + half * vec<real_t<T>>::lanes * inc;
    if constexpr (count == 1) return Greatest<want, real_t<T>>(keys<want, unit>(x, inc));
    else if constexpr (count == 2) return {keys<want, unit>(x, inc), keys<want, unit>(middle, inc)};
    else {
        auto all = greatest<want, unit, half>(x, inc);
        all.add(greatest<want, unit, half>(middle, inc));
        return all;
    }
}

// Without a NaN the search by lanes finds the first of the greatest keys: a lane keeps the first of its own, and of
// equal lanes the smallest position wins. So any way to that element will do: blocks are scanned for their greatest key
// alone, and the one block that raised the record last is looked through. A NaN leads back to the search by lanes.
template <Want want, bool unit, class T> ORV_INLINE i64 search(i64 n, const T* x, i64 inc)
{
    using R = real_t<T>;
    using Look = Blocks<8, 4, 1>;
    constexpr i64 lanes = vec<R>::lanes;
    const auto one = [&](i64 i) { return Greatest<want, R>(keys<want, false>(x + i * inc, 0)); };

    auto record = one(0);
    i64 found = 0;
    i64 i = 0;
    const auto look = [&]<int count, bool far>(std::integral_constant<int, count>, std::bool_constant<far>) {
        constexpr i64 bytes = count * lanes * sizeof(T);
        if constexpr (far)
            for (i64 at = 0; at < bytes; at += cache_line) prefetch_ahead(reinterpret_cast<const char*>(x + i) + at);
        if (record.raised_by(greatest<want, unit, count>(x + i * inc, inc))) found = i;
        i += count * lanes;
    };
    i64 left = n;
    if (unit && n > near_bytes / i64(sizeof(T)))
        left = Look::Longest::template run<lanes>(left, [&](auto count) { look(count, std::true_type()); });
    Look::template run<lanes>(left, [&](auto count) { look(count, std::false_type()); });
    for (; i < n; ++i)
        if (record.raised_by(one(i))) found = i;
    if (record.saw_nan()) return search_by_lanes<want, unit>(n, x, inc);

    const auto equal = [&](int r) {
        return record.equal_lanes(greatest<want, unit, 1>(x + (found + r * lanes) * inc, inc));
    };
    for (; n - found >= 4 * lanes; found += 4 * lanes)
        if (const int at = first_true(equal(0), equal(1), equal(2), equal(3)); at >= 0) return found + at + 1;
    while (!any(record.equal_lanes(one(found)))) ++found;
    return found + 1;
}

// A function of its own, so that unit stride need not save the registers that this wants.
template <Want want, class T> [[gnu::noinline]] i64 search_at_stride(i64 n, const T* x, i64 inc)
{
    return search<want, false>(n, x, inc);
}

// The position, counted from 1, of the first element of greatest or least magnitude; 0 for n < 1 or incx < 1.
template <Want want, class T> ORV_INLINE i64 extreme_position(i64 n, const T* x, i64 incx)
{
    if (n < 1 || incx < 1) return 0;
    if (n == 1) return 1;
    return incx == 1 ? search<want, true>(n, x, 1) : search_at_stride<want>(n, x, incx);
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
