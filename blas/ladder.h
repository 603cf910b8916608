// The way through one or two vectors that the elementwise kernels share: a path by stride and alignment, and on the
// path blocks of descending length.
//
//   unit stride, aligned      x and y reach a register's boundary together; both are loaded and stored aligned
//   unit stride, misaligned   y is brought to a boundary; x is loaded aligned and spliced from neighbouring registers,
//                             and if written stored so too; or, by the kernel's choice and where registers are wider
//                             than 16 bytes, x straddles the boundaries
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
#include <utility>

namespace orv::blas {

template <class V> struct Both {
    V x, y;
};

// y := into(of(x), y). In two steps, so that `of` takes registers of x as they lie in memory, once each, and what it
// makes of them is spliced.
template <class Of, class Into> struct Update {
    [[no_unique_address]] Of of;
    [[no_unique_address]] Into into;

    template <class V, class W> ORV_INLINE auto operator()(V x, W y) const { return into(of(x), y); }
};

// A scalar that multiplies elements and registers of T alike; a real one may multiply complex numbers.
template <class A, class T> class Multiplier {
    factor<A> many;

public:
    explicit Multiplier(A a) : many(a) {}
    ORV_INLINE T operator*(T x) const { return many.scalar() * x; }
    template <class Register> ORV_INLINE vec<T> operator*(Register x) const
    {
        if constexpr (is_complex<A> == is_complex<T>) return many * x;
        else return {(many * vec<A>{x.r}).r};
    }
};

// Hides from the compiler where a value comes from, lest it derive further counters and addresses: they would spare a
// long vector an instruction a block, and cost a short one a dozen before the first.
ORV_INLINE void forget(i64& value) { asm("" : "+r"(value)); }

// Lengths of the blocks of a path, in registers, each as often as it fits. The first is what the hot loop runs; the
// others spare short vectors and tails a loop test for each register.
template <int longest, int... shorter> struct Blocks {
    using Longest = Blocks<longest>;

    // Calls body(length), the length in registers of so many lanes, while a block fits into n >= 0 elements; returns
    // how many are left.
    template <int lanes, class Body> ORV_INLINE static i64 run(i64 n, Body body)
    {
        constexpr i64 elements = longest * lanes;
        for (n -= elements; n >= 0; n -= elements) forget(n), body(std::integral_constant<int, longest>());
        forget(n), n += elements;
        if constexpr (sizeof...(shorter) > 0) n = descend<lanes, longest, shorter...>(n, body);
        return n;
    }

private:
    // Less than a block of length `before` is left. One half as long fits once or not at all: a bit of n tells, and is
    // met where it is needed, for a jump back costs more than one ahead.
    template <int lanes, int before, int length, int... rest, class Body>
    ORV_INLINE static i64 descend(i64 n, Body body)
    {
        constexpr i64 elements = length * lanes;
        constexpr std::integral_constant<int, length> block;
        if constexpr (before == 2 * length) {
            if ((n & elements) != 0) [[likely]]
                body(block);
            n &= elements - 1;
        } else
            for (; n >= elements; n -= elements) forget(n), body(block);
        if constexpr (sizeof...(rest) > 0) n = descend<lanes, length, rest...>(n, body);
        return n;
    }
};

enum class Offset { spliced, straddling };

// What a kernel chooses of its unit-stride paths: their block lengths, and how x is met off the boundaries of y.
template <class AlignedBlocks, class MisalignedBlocks, Offset how = Offset::spliced> struct Ladder {
    using Aligned = AlignedBlocks;
    using Misaligned = MisalignedBlocks;
    static constexpr Offset offset = how;
};

// Elements from p to the next boundary of a register; where no whole number of elements leads there, 0.
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
template <class X, class T, class Op> ORV_INLINE void apply_singly(i64 n, X* x, T* y, Op op)
{
    for (; n > 0; --n) apply_one(x++, y++, op);
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
    const auto block = [&]<int length, bool far>(std::integral_constant<int, length>,
                                                 std::bool_constant<far>) ORV_INLINE_LAMBDA {
        in_pairs<T, length>([&]<int count>(i64 offset, std::integral_constant<int, count>) ORV_INLINE_LAMBDA {
            X* const from = x + offset;
            T* const to = y + offset;
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
        x += length * lanes, y += length * lanes;
    };
    if (n > near_bytes / i64(sizeof(T))) [[unlikely]]
        n = Blocks::Longest::template run<lanes>(n, [&](auto length)
                                                        ORV_INLINE_LAMBDA { block(length, std::true_type()); });
    n = Blocks::template run<lanes>(n, [&](auto length) ORV_INLINE_LAMBDA { block(length, std::false_type()); });
    apply_singly(n, x, y, op);
}

// y stands on a boundary, x `off` elements behind one. Registers of x are loaded one ahead of use.
template <class Blocks, int off, class X, class T, class Op> ORV_INLINE void spliced(i64 n, X* x, T* y, Op op)
{
    constexpr int lanes = vec<T>::lanes;
    constexpr int ahead = lanes - off; // how far the last register that a block loads reaches past the block
    if (n < lanes + ahead) return apply_singly(n, x, y, op);
    n -= ahead;
    if constexpr (std::is_const_v<X>) {
        vec<T> low = op.of(load_last<ahead>(x)); // of the register that x stands in, nothing before x
        n = Blocks::template run<lanes>(n, [&]<int length>(std::integral_constant<int, length>) ORV_INLINE_LAMBDA {
            in_pairs<T, length>([&]<int count>(i64 offset, std::integral_constant<int, count>) ORV_INLINE_LAMBDA {
                vec<T> y_result[count];
#pragma GCC unroll 2
                for (int r = 0; r < count; ++r) {
                    const i64 here = offset + r * lanes;
                    const vec<T> high = op.of(load_placed(x + here + ahead));
                    y_result[r] = op.into(splice<off>(low, high), load(y + here));
                    low = high;
                }
                put<true>(y + offset, y_result);
            });
            x += length * lanes, y += length * lanes;
        });
    } else {
        // What x becomes is spliced to aligned stores too, one register late: the first and the last straddle.
        const Both<vec<T>> first = op(loadu(x), load(y));
        vec<T> low = load(x + ahead), late = first.x;
        storeu(x, first.x), store(y, first.y);
        x += lanes, y += lanes, n -= lanes;
        n = Blocks::template run<lanes>(n, [&]<int length>(std::integral_constant<int, length>) ORV_INLINE_LAMBDA {
            in_pairs<T, length>([&]<int count>(i64 offset, std::integral_constant<int, count>) ORV_INLINE_LAMBDA {
                vec<T> x_result[count], y_result[count];
#pragma GCC unroll 2
                for (int r = 0; r < count; ++r) {
                    const i64 here = offset + r * lanes;
                    const vec<T> high = load(x + here + ahead);
                    const Both<vec<T>> result = op(splice<off>(low, high), load(y + here));
                    x_result[r] = splice<ahead>(late, result.x), y_result[r] = result.y;
                    low = high, late = result.x;
                }
                put<true>(x + offset - off, x_result);
                put<true>(y + offset, y_result);
            });
            x += length * lanes, y += length * lanes;
        });
        storeu(x - lanes, late);
    }
    apply_singly(n + ahead, x, y, op);
}

// Elements at a stride that are worth collecting in a register. Real ones are so where both vectors are written and no
// more than two have to come together.
template <class X, class T>
constexpr int collected = is_complex<T> || (sizeof(T) == 8 && !std::is_const_v<X>) ? vec<T>::lanes : 0;

// What is left of a vector at a stride. X is T or const T.
template <class X> class Strided {
    using T = std::remove_const_t<X>;
    X* here;
    i64 step; // in bytes

public:
    ORV_INLINE Strided(X* x, i64 n, i64 inc) : here(first(x, n, inc)), step(inc * i64(sizeof(T))) { forget(step); }

    ORV_INLINE X* at(int e) const { return reinterpret_cast<X*>(reinterpret_cast<std::intptr_t>(here) + e * step); }
    ORV_INLINE void advance(int e) { here = at(e); }

    // Element e alone, or for lanes > 0 a register of elements from e on.
    template <int lanes> ORV_INLINE auto get(int e) const
    {
        if constexpr (lanes == 0) return T(*at(e));
        else return get(e, std::make_integer_sequence<int, lanes>());
    }
    template <int lanes, class V> ORV_INLINE void put(int e, V v) const
    {
        if constexpr (lanes == 0) *at(e) = v;
        else put(e, v, std::make_integer_sequence<int, lanes>());
    }

private:
    template <int... lane> ORV_INLINE vec<T> get(int e, std::integer_sequence<int, lane...>) const
    {
        return collect(static_cast<const T*>(at(e + lane))...);
    }
    template <int... lane> ORV_INLINE void put(int e, vec<T> v, std::integer_sequence<int, lane...>) const
    {
        distribute(v, at(e + lane)...);
    }
};

template <class X, class T, class Op> ORV_INLINE void any_stride(i64 n, Strided<X> x, Strided<T> y, Op op)
{
    const auto block = [&]<int length>(std::integral_constant<int, length>) ORV_INLINE_LAMBDA {
        constexpr int lanes = collected<X, T> <= length ? collected<X, T> : 0, width = max(lanes, 1);
        const auto result = [&](int e)
                                ORV_INLINE_LAMBDA { return op(x.template get<lanes>(e), y.template get<lanes>(e)); };
        if constexpr (std::is_const_v<X>) {
#pragma GCC unroll 4
            for (int e = 0; e < length; e += width) y.template put<lanes>(e, result(e));
        } else { // all of x, then all of y: stores to one cache line leave together if they follow one another
            decltype(result(0)) both[length];
#pragma GCC unroll 4
            for (int e = 0; e < length; e += width) both[e] = result(e);
#pragma GCC unroll 4
            for (int e = 0; e < length; e += width) x.template put<lanes>(e, both[e].x);
#pragma GCC unroll 4
            for (int e = 0; e < length; e += width) y.template put<lanes>(e, both[e].y);
        }
        x.advance(length), y.advance(length);
    };
    Blocks<4, 2, 1>::run<1>(n, block); // elements count singly
}

// A written vector keeps its place: what one element leaves there is what the next one finds.
template <class X, class T, class Op> ORV_INLINE void zero_stride(i64 n, X* x, i64 incx, T* y, i64 incy, Op op)
{
    x = first(x, n, incx);
    y = first(y, n, incy);
    for (; n > 0; --n, x += incx, y += incy) apply_one(x, y, op);
}

// Functions of their own, so that the common path need not save the registers that these want.
template <class X, class T, class Make>
[[gnu::noinline]] void walk_at_strides(i64 n, X* x, i64 incx, T* y, i64 incy, Make make)
{
    if (incy == 0 || (incx == 0 && !std::is_const_v<X>)) zero_stride(n, x, incx, y, incy, make());
    else any_stride(n, Strided<X>(x, n, incx), Strided<T>(y, n, incy), make());
}

template <class Shape, class X, class T, class Make>
[[gnu::noinline]] void walk_misaligned(i64 n, X* x, T* y, Make make)
{
    using Misaligned = typename Shape::Misaligned;
    constexpr int lanes = vec<T>::lanes;
    constexpr std::uintptr_t unit = sizeof(T) < 8 ? sizeof(T) : 8;
    if (!is_aligned(x, unit) || !is_aligned(y, unit)) return walk_at_strides(n, x, 1, y, 1, make);
    const auto op = make();
    if (!is_aligned(y, vector_bytes)) {
        const i64 peel = min(to_boundary(y), n);
        apply_singly(peel, x, y, op);
        x += peel, y += peel, n -= peel;
    }
    const i64 off = lanes - to_boundary(x);
    if (is_aligned(x, vector_bytes) && is_aligned(y, vector_bytes))
        unit_stride<typename Shape::Aligned, true>(n, x, y, op);
    else if constexpr (lanes == 1 || Shape::offset == Offset::straddling || !splices_cheaply)
        unit_stride<Misaligned, false>(n, x, y, op);
    else if (off == 1) spliced<Misaligned, 1>(n, x, y, op);
    else if constexpr (lanes == 4) {
        if (off == 2) spliced<Misaligned, 2>(n, x, y, op);
        else spliced<Misaligned, 3>(n, x, y, op);
    } else static_assert(lanes == 2, "each offset of a wider register needs its own splice");
}

// y := op(x, y), or (x, y) := op(x, y), over n elements, with the op that make() returns: what it is made from passes
// to the path taken in registers.
//
// Strides of -1 and -1 meet the same pairs as 1 and 1, so the test is on their product.
template <class Shape, class X, class T, class Make>
ORV_INLINE void walk(i64 n, X* x, i64 incx, T* y, i64 incy, Make make)
{
    if (n <= 0) [[unlikely]]
        return;
    if (incx * incy != 1) [[unlikely]]
        return walk_at_strides(n, x, incx, y, incy, make);
    if (is_aligned(x, vector_bytes) && is_aligned(y, vector_bytes)) [[likely]]
        return unit_stride<typename Shape::Aligned, true>(n, x, y, make());
    walk_misaligned<Shape>(n, x, y, make);
}

} // namespace orv::blas
