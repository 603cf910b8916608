// The way through one or two vectors that the elementwise kernels share: a path by stride and alignment, and on the
// path blocks of descending length.
//
//   unit stride, aligned      x and y reach a 16-byte boundary together; both are loaded and stored aligned
//   unit stride, misaligned   y is brought to a boundary; x, if only read, is loaded aligned and spliced from
//                             neighbouring registers, so that no load straddles a cache line
//   any stride                element by element, blocks of 4, 2, 1; a negative stride starts at the far end
//   zero stride               every result falls on one location, in the order of the elements
//
// A path never changes a result: each element is computed once, by the same operation, alone.
//
// An operation is a generic callable. It takes an element of x and of y, or a register of each, and returns what y
// becomes, or, where x is not const, Both.
#pragma once

#include "frame/simd.h"

#include <type_traits>

namespace orv::blas {

template <class V> struct Both {
    V x, y;
};

// A scalar that multiplies elements and registers of T alike; a real one may multiply complex numbers.
template <class A, class T> class Multiplier {
    A one;
    factor<A> many;

public:
    explicit Multiplier(A a) : one(a), many(a) {}
    ORV_INLINE T operator*(T x) const { return one * x; }
    ORV_INLINE vec<T> operator*(vec<T> x) const
    {
        if constexpr (is_complex<A> == is_complex<T>) return many * x;
        else return {(many * vec<A>{x.r}).r};
    }
};

// Lengths of the blocks of a path, in registers, each as often as it fits. The first is what the hot loop runs; the
// others spare short vectors and tails a loop test for each register.
template <int... registers> struct Blocks {
    // Calls body(length, i), the length in registers, from element i on while a block fits before n; returns the first
    // element left over.
    template <class T, class Body> ORV_INLINE static i64 run(i64 i, i64 n, Body&& body)
    {
        const auto block = [&](auto length) {
            constexpr i64 elements = decltype(length)::value * vec<T>::lanes;
            for (; n - i >= elements; i += elements) body(length, i);
        };
        (block(std::integral_constant<int, registers>{}), ...);
        return i;
    }
};

// The block lengths of a kernel's paths.
template <class AlignedBlocks, class MisalignedBlocks> struct Ladder {
    using Aligned = AlignedBlocks;
    using Misaligned = MisalignedBlocks;
};

// Elements from p to the next 16-byte boundary; those that no whole number of elements brings there answer 0.
template <class T> ORV_INLINE i64 to_boundary(const T* p)
{
    const auto off = reinterpret_cast<std::uintptr_t>(p) % vector_bytes;
    return off % sizeof(T) == 0 && off != 0 ? static_cast<i64>((vector_bytes - off) / sizeof(T)) : 0;
}

// One element at each of two places.
template <class X, class T, class Op> ORV_INLINE void apply_one(X* x, T* y, Op op)
{
    const auto result = op(T(*x), *y);
    if constexpr (std::is_const_v<X>) *y = result;
    else *x = result.x, *y = result.y;
}

// `length` registers at each of two places, all loads before the first store of a register.
template <int length, bool aligned, class X, class T, class Op> ORV_INLINE void apply_block(X* x, T* y, Op op)
{
    constexpr int lanes = vec<T>::lanes;
#pragma GCC unroll 32
    for (int r = 0; r < length; ++r) {
        T* const at = y + r * lanes;
        const T* const from = x + r * lanes;
        const auto result = op(aligned ? load(from) : loadu(from), aligned ? load(at) : loadu(at));
        const auto put = [](T* p, vec<T> v) { aligned ? store(p, v) : storeu(p, v); };
        if constexpr (std::is_const_v<X>) put(at, result);
        else put(x + r * lanes, result.x), put(at, result.y);
    }
}

template <class Sizes, bool aligned, class X, class T, class Op>
ORV_INLINE void unit_stride(i64 i, i64 n, X* x, T* y, Op op)
{
    i = Sizes::template run<T>(
        i, n, [&](auto length, i64 at) { apply_block<decltype(length)::value, aligned>(x + at, y + at, op); });
    for (; i < n; ++i) apply_one(x + i, y + i, op);
}

// y stands on a boundary at element i, x stands `offset` elements behind one.
template <class Sizes, int offset, class T, class Op>
ORV_INLINE void spliced(i64 i, i64 n, const T* x, T* y, Op op)
{
    constexpr int lanes = vec<T>::lanes;
    // The last register that a block loads reaches lanes - offset elements past the block.
    constexpr int ahead = lanes - offset;
    if (n - i >= lanes + ahead) {
        vec<T> low = load_last<ahead>(x + i); // of the register that x + i lies in, nothing before x
        i = Sizes::template run<T>(i, n - ahead, [&](auto length, i64 at) {
#pragma GCC unroll 32
            for (int r = 0; r < decltype(length)::value; ++r) {
                const vec<T> high = load(x + at + ahead + r * lanes);
                T* const to = y + at + r * lanes;
                store(to, op(splice<offset>(low, high), load(to)));
                low = high;
            }
        });
    }
    for (; i < n; ++i) apply_one(x + i, y + i, op);
}

template <class X, class T, class Op> ORV_INLINE void any_stride(i64 n, X* x, i64 incx, T* y, i64 incy, Op op)
{
    x = first(x, n, incx);
    y = first(y, n, incy);
    const auto block = [&]<int length>(std::integral_constant<int, length>) {
        if constexpr (std::is_const_v<X>) {
            T result[length];
#pragma GCC unroll 4
            for (int r = 0; r < length; ++r) result[r] = op(T(x[r * incx]), y[r * incy]);
#pragma GCC unroll 4
            for (int r = 0; r < length; ++r) y[r * incy] = result[r];
        } else {
#pragma GCC unroll 4
            for (int r = 0; r < length; ++r) apply_one(x + r * incx, y + r * incy, op);
        }
        x += length * incx, y += length * incy;
    };
    for (; n >= 4; n -= 4) block(std::integral_constant<int, 4>{});
    if (n >= 2) block(std::integral_constant<int, 2>{});
    if (n % 2 != 0) block(std::integral_constant<int, 1>{});
}

// y keeps its place: what one element leaves there is what the next one finds.
template <class X, class T, class Op> ORV_INLINE void zero_stride(i64 n, X* x, i64 incx, T* y, Op op)
{
    x = first(x, n, incx);
    T kept = *y;
    for (; n > 0; --n, x += incx) apply_one(x, &kept, op);
    *y = kept;
}

// y := op(x, y), or (x, y) := op(x, y), over n elements.
//
// Strides of -1 and -1 meet the same pairs as 1 and 1, so the test is on their product.
template <class Shape, class X, class T, class Op> ORV_INLINE void walk(i64 n, X* x, i64 incx, T* y, i64 incy, Op op)
{
    if (n <= 0) return;
    constexpr std::uintptr_t unit = sizeof(T) < 8 ? sizeof(T) : 8;
    if (incx * incy != 1 || !is_aligned(x, unit) || !is_aligned(y, unit)) {
        if (incy == 0) zero_stride(n, x, incx, y, op);
        else any_stride(n, x, incx, y, incy, op);
        return;
    }
    using Aligned = typename Shape::Aligned;
    using Misaligned = typename Shape::Misaligned;
    const i64 peel = min(to_boundary(y), n);
    for (i64 i = 0; i < peel; ++i) apply_one(x + i, y + i, op);
    const i64 offset = vec<T>::lanes - to_boundary(x + peel);
    const bool on_boundary = is_aligned(y + peel, vector_bytes);
    if (on_boundary && is_aligned(x + peel, vector_bytes)) unit_stride<Aligned, true>(peel, n, x, y, op);
    else if constexpr (std::is_const_v<X> && vec<T>::lanes > 1) {
        if (offset == 1) spliced<Misaligned, 1>(peel, n, x, y, op);
        if constexpr (vec<T>::lanes == 4) {
            if (offset == 2) spliced<Misaligned, 2>(peel, n, x, y, op);
            if (offset == 3) spliced<Misaligned, 3>(peel, n, x, y, op);
        }
    } else unit_stride<Misaligned, false>(peel, n, x, y, op);
}

} // namespace orv::blas
