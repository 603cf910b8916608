// The way through one or two vectors that the elementwise kernels share: a path by stride and alignment, and on the
// path blocks of descending length.
//
//   unit stride, aligned      x and y reach a 16-byte boundary together; both are loaded and stored aligned
//   unit stride, misaligned   y is brought to a boundary; x is loaded aligned and spliced from neighbouring registers,
//                             and if written stored so too; or, by the kernel's choice, x straddles the boundaries
//   any stride                blocks of 4, 2, 1 elements; a negative stride starts at the far end
//   zero stride               every result falls on one location, in the order of the elements
//
// A path never changes a result: each element is computed once, by the same operation, alone.
//
// An operation is a generic callable on an element of x and one of y, or on a register of each. Where only y is
// written it is an Update, where both are it returns Both.
#pragma once

#include "frame/simd.h"

#include <type_traits>

namespace orv::blas {

template <class V> struct Both {
    V x, y;
};

// y := into(of(x), y). In two steps, so that `of` takes registers of x as they lie in memory, once each, and what it
// makes of them is spliced.
template <class Of, class Into> struct Update {
    Of of;
    Into into;

    template <class V, class W> ORV_INLINE auto operator()(V x, W y) const { return into(of(x), y); }
};

// A scalar that multiplies elements and registers of T alike; a real one may multiply complex numbers.
template <class A, class T> class Multiplier {
    A one;
    factor<A> many;

public:
    explicit Multiplier(A a) : one(a), many(a) {}
    ORV_INLINE T operator*(T x) const { return one * x; }
    template <class Register> ORV_INLINE vec<T> operator*(Register x) const
    {
        if constexpr (is_complex<A> == is_complex<T>) return many * x;
        else return {(many * vec<A>{x.r}).r};
    }
};

// Lengths of the blocks of a path, in registers, each as often as it fits. The first is what the hot loop runs; the
// others spare short vectors and tails a loop test for each register.
template <int longest, int... shorter> struct Blocks {
    using Longest = Blocks<longest>;

    // Calls body(length, i), the length in registers, from element i <= n on while a block fits before n; returns the
    // first element left over. i is 0, or where the longest blocks ended.
    template <class T, class Body> ORV_INLINE static i64 run(i64 i, i64 n, Body body)
    {
        for (constexpr i64 elements = longest * vec<T>::lanes; n - i >= elements; i += elements)
            body(std::integral_constant<int, longest>(), i);
        if constexpr (sizeof...(shorter) > 0) i = descend<T, longest, shorter...>(i, n, body);
        return i;
    }

private:
    // A block half as long as the one before fits once or not at all: a bit of n tells, for whole blocks ended at i.
    template <class T, int before, int length, int... rest, class Body>
    ORV_INLINE static i64 descend(i64 i, i64 n, Body body)
    {
        constexpr i64 elements = length * vec<T>::lanes;
        constexpr std::integral_constant<int, length> block;
        if constexpr (before == 2 * length) {
            if ((n & elements) != 0) body(block, i), i += elements;
        } else
            for (; n - i >= elements; i += elements) body(block, i);
        if constexpr (sizeof...(rest) > 0) i = descend<T, length, rest...>(i, n, body);
        return i;
    }
};

enum class Offset { spliced, straddling };

// What a kernel chooses of its unit-stride paths: their block lengths, and how x is met off the boundaries of y.
template <class AlignedBlocks, class MisalignedBlocks, Offset how = Offset::spliced> struct Ladder {
    using Aligned = AlignedBlocks;
    using Misaligned = MisalignedBlocks;
    static constexpr Offset offset = how;
};

// Elements from p to the next 16-byte boundary; where no whole number of elements leads there, 0.
template <class T> ORV_INLINE i64 to_boundary(const T* p)
{
    const auto off = reinterpret_cast<std::uintptr_t>(p) % vector_bytes;
    return off % sizeof(T) == 0 && off != 0 ? static_cast<i64>((vector_bytes - off) / sizeof(T)) : 0;
}

template <class X, class T, class Op> ORV_INLINE void apply_one(X* x, T* y, Op op)
{
    const auto result = op(T(*x), *y);
    if constexpr (std::is_const_v<X>) *y = result;
    else *x = result.x, *y = result.y;
}
template <class X, class T, class Op> ORV_INLINE void apply_singly(i64 i, i64 n, X* x, T* y, Op op)
{
    for (; i < n; ++i) apply_one(x + i, y + i, op);
}

// Two stores to one cache line leave together if they follow one another, so the registers of a block go in pairs.
// Calls body(offset, count) for each: count registers, `offset` elements into the block.
template <class T, int length, class Body> ORV_INLINE void in_pairs(Body body)
{
    constexpr int count = length < 2 ? length : 2;
#pragma GCC unroll 32
    for (int r = 0; r < length; r += count) body(r * vec<T>::lanes, std::integral_constant<int, count>());
}

template <bool aligned, class T, int count> ORV_INLINE void put(T* p, const vec<T> (&v)[count])
{
#pragma GCC unroll 2
    for (int r = 0; r < count; ++r) aligned ? store(p + r * vec<T>::lanes, v[r]) : storeu(p + r * vec<T>::lanes, v[r]);
}

// Vectors of more bytes than this lie beyond the first-level cache. There it pays to ask ahead: the processor's own
// look-ahead stops at the end of a page.
constexpr i64 near_bytes = 16384;

// Both vectors stand on boundaries, or neither need.
template <class Blocks, bool aligned, class X, class T, class Op> ORV_INLINE void unit_stride(i64 n, X* x, T* y, Op op)
{
    constexpr int lanes = vec<T>::lanes, line = 64 / sizeof(T);
    const auto block = [&]<int length, bool far>(std::integral_constant<int, length>, std::bool_constant<far>, i64 at) {
        in_pairs<T, length>([&]<int count>(i64 offset, std::integral_constant<int, count>) {
            X* const from = x + at + offset;
            T* const to = y + at + offset;
            if (far && offset % line == 0) {
                if (from != to) prefetch_ahead(from); // a vector that meets itself is asked for once
                prefetch_ahead(to);
            }
            vec<T> x_result[count], y_result[count];
#pragma GCC unroll 2
            for (int r = 0; r < count; ++r) {
                const auto at_place = [&](const T* p) {
                    if constexpr (aligned) return load_placed(p + r * lanes);
                    else return loadu(p + r * lanes);
                };
                if constexpr (std::is_const_v<X>) y_result[r] = op(at_place(from), at_place(to));
                else {
                    const Both<vec<T>> result = op(vec<T>(at_place(from)), vec<T>(at_place(to)));
                    x_result[r] = result.x, y_result[r] = result.y;
                }
            }
            if constexpr (!std::is_const_v<X>) put<aligned>(from, x_result);
            put<aligned>(to, y_result);
        });
    };
    i64 i = 0;
    if (n > near_bytes / i64(sizeof(T)))
        i = Blocks::Longest::template run<T>(i, n, [&](auto length, i64 at) { block(length, std::true_type(), at); });
    i = Blocks::template run<T>(i, n, [&](auto length, i64 at) { block(length, std::false_type(), at); });
    apply_singly(i, n, x, y, op);
}

// y stands on a boundary, x `off` elements behind one. Registers of x are loaded one ahead of use.
template <class Blocks, int off, class X, class T, class Op> ORV_INLINE void spliced(i64 n, X* x, T* y, Op op)
{
    constexpr int lanes = vec<T>::lanes;
    constexpr int ahead = lanes - off; // how far the last register that a block loads reaches past the block
    if (n < lanes + ahead) return apply_singly(0, n, x, y, op);
    i64 i = 0;
    if constexpr (std::is_const_v<X>) {
        vec<T> low = op.of(load_last<ahead>(x)); // of the register that x stands in, nothing before x
        i = Blocks::template run<T>(i, n - ahead, [&](auto length, i64 at) {
            in_pairs<T, length>([&]<int count>(i64 offset, std::integral_constant<int, count>) {
                vec<T> y_result[count];
#pragma GCC unroll 2
                for (int r = 0; r < count; ++r) {
                    const i64 here = at + offset + r * lanes;
                    const vec<T> high = op.of(load_placed(x + here + ahead));
                    y_result[r] = op.into(splice<off>(low, high), load(y + here));
                    low = high;
                }
                put<true>(y + at + offset, y_result);
            });
        });
    } else {
        // What x becomes is spliced to aligned stores too, one register late: the first and the last straddle.
        const Both<vec<T>> first = op(loadu(x), load(y));
        vec<T> low = load(x + ahead), late = first.x;
        storeu(x, first.x), store(y, first.y);
        x += lanes, y += lanes, n -= lanes;
        i = Blocks::template run<T>(i, n - ahead, [&](auto length, i64 at) {
            in_pairs<T, length>([&]<int count>(i64 offset, std::integral_constant<int, count>) {
                vec<T> x_result[count], y_result[count];
#pragma GCC unroll 2
                for (int r = 0; r < count; ++r) {
                    const i64 here = at + offset + r * lanes;
                    const vec<T> high = load(x + here + ahead);
                    const Both<vec<T>> result = op(splice<off>(low, high), load(y + here));
                    x_result[r] = splice<ahead>(late, result.x), y_result[r] = result.y;
                    low = high, late = result.x;
                }
                put<true>(x + at + offset - off, x_result);
                put<true>(y + at + offset, y_result);
            });
        });
        storeu(x + i - lanes, late);
    }
    apply_singly(i, n, x, y, op);
}

// Elements at a stride that are worth collecting in a register. Real ones are so where both vectors are written and no
// more than two have to come together.
template <class X, class T>
constexpr int collected = is_complex<T> || (sizeof(T) == 8 && !std::is_const_v<X>) ? vec<T>::lanes : 0;

template <class X, class T, class Op> ORV_INLINE void any_stride(i64 n, X* x, i64 incx, T* y, i64 incy, Op op)
{
    x = first(x, n, incx);
    y = first(y, n, incy);
    const auto one_by_one = [&]<int length>(std::integral_constant<int, length>) {
#pragma GCC unroll 4
        for (int e = 0; e < length; ++e) apply_one(x + e * incx, y + e * incy, op);
    };
    const auto block = [&]<int length>(std::integral_constant<int, length> size) {
        constexpr int lanes = collected<X, T>;
        if constexpr (lanes == 0) one_by_one(size);
        else if constexpr (length < lanes) one_by_one(size);
        else {
#pragma GCC unroll 4
            for (int e = 0; e < length; e += lanes) {
                const auto result = op(gather(x + e * incx, incx), gather(y + e * incy, incy));
                if constexpr (std::is_const_v<X>) scatter(y + e * incy, incy, result);
                else scatter(x + e * incx, incx, result.x), scatter(y + e * incy, incy, result.y);
            }
        }
        x += length * incx, y += length * incy;
    };
    for (; n >= 4; n -= 4) block(std::integral_constant<int, 4>());
    if (n >= 2) block(std::integral_constant<int, 2>());
    if (n % 2 != 0) block(std::integral_constant<int, 1>());
}

// A written vector keeps its place: what one element leaves there is what the next one finds.
template <class X, class T, class Op> ORV_INLINE void zero_stride(i64 n, X* x, i64 incx, T* y, i64 incy, Op op)
{
    x = first(x, n, incx);
    y = first(y, n, incy);
    for (; n > 0; --n, x += incx, y += incy) apply_one(x, y, op);
}

// y := op(x, y), or (x, y) := op(x, y), over n elements.
//
// Strides of -1 and -1 meet the same pairs as 1 and 1, so the test is on their product.
template <class Shape, class X, class T, class Op> ORV_INLINE void walk(i64 n, X* x, i64 incx, T* y, i64 incy, Op op)
{
    if (n <= 0) return;
    using Aligned = typename Shape::Aligned;
    using Misaligned = typename Shape::Misaligned;
    constexpr int lanes = vec<T>::lanes;
    constexpr std::uintptr_t unit = sizeof(T) < 8 ? sizeof(T) : 8;
    if (incx * incy != 1 || !is_aligned(x, unit) || !is_aligned(y, unit)) [[unlikely]] {
        if (incy == 0 || (incx == 0 && !std::is_const_v<X>)) zero_stride(n, x, incx, y, incy, op);
        else any_stride(n, x, incx, y, incy, op);
        return;
    }
    if (!is_aligned(y, vector_bytes)) [[unlikely]] {
        const i64 peel = min(to_boundary(y), n);
        apply_singly(0, peel, x, y, op);
        x += peel, y += peel, n -= peel;
    }
    if (is_aligned(x, vector_bytes) && (lanes > 1 || is_aligned(y, vector_bytes)))
        return unit_stride<Aligned, true>(n, x, y, op);
    const i64 off = lanes - to_boundary(x);
    if constexpr (lanes == 1 || Shape::offset == Offset::straddling) unit_stride<Misaligned, false>(n, x, y, op);
    else if (off == 1) spliced<Misaligned, 1>(n, x, y, op);
    else if constexpr (lanes == 4) {
        if (off == 2) spliced<Misaligned, 2>(n, x, y, op);
        else spliced<Misaligned, 3>(n, x, y, op);
    }
}

} // namespace orv::blas
