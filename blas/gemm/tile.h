// The register tile: one panel of packed A times one panel of packed B, added to a patch of C.
//
// To the inner loop all four types look alike: a step multiplies each of a few reals of A (four singles or two doubles:
// one register) with each of eight reals of B and adds the products P(i, j) = a(i)*b(j) to as many sums. Of the four
// products of a pair (a0, a1) with a pair (b0, b1), rows and columns of reals, or the parts of complex numbers, each
// scheme below gets two by one multiplication; how they are spread over registers is sorted out once a tile.
//
// Each element of C is one chain of products, added to zero in the order of the steps, and then one addition to C: the
// same for every place in a tile, every width, every number of rows and both schemes. (Complex: one chain each for
// re*re, im*im, im*re, re*im; the first two give the real part by subtraction.)
//
// Values are made to settle in registers: left to itself, the compiler takes the steps of one sum together, spills, and
// loads an operand once for each product.
#pragma once

#include "blas/gemm/pack.h"

namespace orv::gemm {

// Scheme 1: the reals of B are repeated over neighbouring lanes, (a0, a1) * (b0, b0) and (a0, a1) * (b1, b1), by loads
// that repeat what they load. No shuffle competes with the arithmetic: for processors that load three times a cycle,
// and strips that fill whole registers.
//
//   two lanes    pair a           even (b0, b0)           odd (b1, b1)
//   four lanes   pair a, a again  even (b0, b0, b2, b2)   odd (b1, b1, b3, b3)     and so on
template <class R, int na, int nb> class Repeating {
    static constexpr int lanes = vec<R>::lanes, pairs = (na + 1) / 2, registers = nb / lanes;
    static_assert(nb % lanes == 0);

    vec<R> even[pairs][registers], odd[pairs][registers];

    ORV_INLINE static void add(vec<R> (&sums)[pairs][registers], int v, const vec<R> (&x)[pairs], vec<R> b)
    {
        settle(b);
#pragma GCC unroll 2
        for (int q = 0; q < pairs; ++q) sums[q][v] += x[q] * b;
    }

public:
    ORV_INLINE Repeating()
    {
#pragma GCC unroll 2
        for (int q = 0; q < pairs; ++q)
#pragma GCC unroll 4
            for (int v = 0; v < registers; ++v) even[q][v] = odd[q][v] = zeros<R>();
    }

    ORV_INLINE void step(const R* a, const R* b)
    {
        vec<R> x[pairs];
#pragma GCC unroll 2
        for (int q = 0; q < pairs; ++q) x[q] = 2 * q + 1 < na ? load_pair(a + 2 * q) : splat(a[2 * q]), settle(x[q]);
#pragma GCC unroll 4
        for (int v = 0; v < registers; ++v) {
            add(even, v, x, load_even(b + v * lanes));
            add(odd, v, x, load_odd(b + v * lanes));
        }
#pragma GCC unroll 4
        for (int v = 0; v < registers; ++v)
#pragma GCC unroll 2
            for (int q = 0; q < pairs; ++q) settle(even[q][v]), settle(odd[q][v]);
    }

    // P(0:na, j); lanes from na on hold anything.
    ORV_INLINE vec<R> column(int j) const
    {
        const auto& sums = j % 2 == 0 ? even : odd;
        if constexpr (lanes == 2) return sums[0][j / lanes];
        vec<R> rows[lanes / 2];
#pragma GCC unroll 4
        for (int q = 0; q < lanes / 2; ++q) rows[q] = sums[min(q, pairs - 1)][j / lanes];
        return pair_of_each(rows, j % lanes / 2);
    }
};

// Scheme 2: pairs of B as they stand, (a0, a1) * (b0, b1), and A once more with neighbours swapped, (a1, a0) * (b0,
// b1). One shuffle a step, but half as many loads: for processors that load once a cycle, and for strips of any width.
template <class R, int na, int nb> class Swapping {
    static constexpr int pairs = (nb + 1) / 2;

    vec<R> straight[pairs], swapped[pairs];

    // A last real of B without a neighbour is repeated, and multiplied straight only.
    ORV_INLINE static constexpr bool is_single(int i) { return 2 * i + 1 == nb; }

public:
    ORV_INLINE Swapping()
    {
#pragma GCC unroll 4
        for (int i = 0; i < pairs; ++i) straight[i] = swapped[i] = zeros<R>();
    }

    ORV_INLINE void step(const R* a, const R* b)
    {
        const vec<R> x = na == vec<R>::lanes ? load(a) : load_first<na>(a), y = swap_neighbours(x);
#pragma GCC unroll 4
        for (int i = 0; i < pairs; ++i) {
            vec<R> piece = is_single(i) ? splat(b[2 * i]) : load_pair(b + 2 * i);
            settle(piece);
            straight[i] += x * piece;
            if (!is_single(i)) swapped[i] += y * piece;
        }
#pragma GCC unroll 4
        for (int i = 0; i < pairs; ++i) {
            settle(straight[i]);
            if (!is_single(i)) settle(swapped[i]);
        }
    }

    ORV_INLINE vec<R> column(int j) const
    {
        const vec<R> s = straight[j / 2];
        if (is_single(j / 2)) return s;
        const vec<R> w = swap_neighbours(swapped[j / 2]);
        return j % 2 == 0 ? alternate(s, w) : alternate(w, s);
    }
};

// What becomes of the sums: they replace C, which is not read, or are added to a C whose columns all stand on 16 bytes,
// or anywhere.
enum class TileStore { replace, add_aligned, add };

// C(0:rows, 0:columns), at most one register high, `depth` steps, a multiple of 4.
template <int rows, int columns, TileStore store, template <class, int, int> class Scheme, class T>
ORV_INLINE void multiply_tile(i64 depth, const T* a, const T* b, T* c, i64 ldc)
{
    using R = real_t<T>;
    constexpr int parts = sizeof(T) / sizeof(R), na = rows * parts, nb = columns * parts;
    constexpr int pass = columns == b_unit<T> ? 2 * group : group; // whole tiles are worth a longer loop
    constexpr int ahead = 512 / sizeof(R); // some hundred cycles: time enough for the second-level cache

    const R* x = reinterpret_cast<const R*>(a);
    const R* y = reinterpret_cast<const R*>(b);
#pragma GCC unroll 8
    for (int j = 0; j < columns; ++j) prefetch(c + j * ldc);

    Scheme<R, na, nb> products;
    for (; depth >= pass; depth -= pass, x += pass * na, y += pass * nb) {
#pragma GCC unroll 2
        for (int i = 0; i < pass * na; i += cache_line / sizeof(R)) prefetch(x + ahead + i);
#pragma GCC unroll 8
        for (int p = 0; p < pass; ++p) products.step(x + p * na, y + p * nb);
    }
    if (pass > group && depth > 0) {
#pragma GCC unroll 4
        for (int p = 0; p < group; ++p) products.step(x + p * na, y + p * nb);
    }

#pragma GCC unroll 8
    for (int j = 0; j < columns; ++j, c += ldc) {
        vec<T> sum;
        if constexpr (parts == 1) sum = products.column(j);
        else sum.r = add_sub(products.column(2 * j), swap_neighbours(products.column(2 * j + 1))).r;
        if constexpr (store == TileStore::add_aligned && rows == vec<T>::lanes) sum = load(c) + sum;
        else if constexpr (store != TileStore::replace) sum = load_first<rows>(c) + sum;
        store_first<rows>(c, sum);
    }
}

} // namespace orv::gemm
