// The register tile: one panel of packed A times one panel of packed B, added to a patch of C.
//
// A step of the inner dimension holds one register of A and four pieces of B, a piece being two reals: a pair of
// columns, or one complex number. The product of A with a piece as it stands, and once more with A's neighbours
// swapped, makes all products of a two-by-two patch without a shuffle of B:
//
//   real      a = (a0, a1), piece (b0, b1)   straight (a0 b0, a1 b1)  swapped (a1 b0, a0 b1)   C00, C11 and C10, C01
//   complex   a = (re, im), piece (re, im)   straight (re re, im im)  swapped (im re, re im)   parts of one product
//
// Registers of four lanes hold two such pairs of A, and the piece twice. What belongs together is sorted out once a
// tile.
//
// Each element of C is one chain of products, added to zero in the order of the steps, and then one addition to C: the
// same for every place in a tile, every width and every number of rows. (Complex: one chain each for re*re, im*im,
// im*re, re*im.)
#pragma once

#include "blas/gemm/pack.h"

namespace orv::gemm {

// What becomes of the sum: it replaces C, which is not read, or is added to a C whose columns do or may not stand on 16
// bytes.
enum class Update { replace, add_aligned, add };

// How the body of a step is written down; the arithmetic is the same.
enum class Schedule { interleaved, loads_first };

// `rows` rows of C, at most one register, by `columns`.
template <class T, int rows, int columns, Schedule schedule> class Tile {
    static constexpr int per_piece = is_complex<T> ? 1 : 2;
    static constexpr int pieces = columns / per_piece;
    static constexpr bool odd = columns % per_piece == 1; // a last real column, multiplied with every row

    vec<T> straight[pieces + odd], swapped[pieces + odd];

    ORV_INLINE static vec<T> piece(const T* b, int i)
    {
        if (i == pieces) return splat(b[columns - 1]);
        return load_pair(b + i * per_piece);
    }
    ORV_INLINE void multiply(vec<T> x, vec<T> y, vec<T> b, int i)
    {
        straight[i] += lane_product(x, b);
        if (i < pieces) swapped[i] += lane_product(y, b);
    }

    // The compiler takes the steps of one sum together, and then has to spill. A value that is settled stands in its
    // register before anything behind this point is computed.
    ORV_INLINE static void settle(vec<T>& v) { asm volatile("" : "+x"(v.r)); }

public:
    ORV_INLINE Tile()
    {
#pragma GCC unroll 8
        for (int i = 0; i < pieces + odd; ++i) straight[i] = swapped[i] = zeros<T>();
    }

    ORV_INLINE void step(const T* a, const T* b)
    {
        const vec<T> x = rows == vec<T>::lanes ? load(a) : load_first<rows>(a), y = swap_neighbours(x);
        if constexpr (schedule == Schedule::loads_first) {
            vec<T> loaded[pieces + odd];
#pragma GCC unroll 8
            for (int i = 0; i < pieces + odd; ++i) loaded[i] = piece(b, i);
#pragma GCC unroll 8
            for (int i = 0; i < pieces + odd; ++i) multiply(x, y, loaded[i], i);
        } else {
#pragma GCC unroll 8
            for (int i = 0; i < pieces + odd; ++i) multiply(x, y, piece(b, i), i);
        }
#pragma GCC unroll 8
        for (int i = 0; i < pieces + odd; ++i) {
            settle(straight[i]);
            if (i < pieces) settle(swapped[i]);
        }
    }

    // depth is a multiple of 4.
    ORV_INLINE void run(i64 depth, const T* a, const T* b)
    {
        for (; depth >= 8; depth -= 8, a += 8 * rows, b += 8 * columns) {
#pragma GCC unroll 8
            for (int p = 0; p < 8; ++p) step(a + p * rows, b + p * columns);
        }
        if (depth > 0) {
#pragma GCC unroll 4
            for (int p = 0; p < 4; ++p) step(a + p * rows, b + p * columns);
        }
    }

    // The sums of column j.
    ORV_INLINE vec<T> column(int j) const
    {
        const int i = j / per_piece;
        const vec<T> turned = swap_neighbours(swapped[i]);
        if constexpr (is_complex<T>) return alternate(straight[i] - swap_neighbours(straight[i]), swapped[i] + turned);
        else if (i == pieces) return straight[i];
        else return j % 2 == 0 ? alternate(straight[i], turned) : alternate(turned, straight[i]);
    }

    template <Update update> ORV_INLINE void write(T* c, i64 ldc) const
    {
#pragma GCC unroll 8
        for (int j = 0; j < columns; ++j, c += ldc) {
            vec<T> sum = column(j);
            if constexpr (update == Update::add_aligned && rows == vec<T>::lanes) sum = load(c) + sum;
            else if constexpr (update != Update::replace) sum = load_first<rows>(c) + sum;
            store_first<rows>(c, sum);
        }
    }
};

} // namespace orv::gemm
