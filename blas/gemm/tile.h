// The register tile: panels of packed A times one panel of packed B, added to a patch of C.
//
// A step of the inner dimension holds one register of A and four pieces of B, a piece being two reals: a pair of
// columns, or one complex number. The product of A with a piece as it stands, and once more with A's neighbours
// swapped, makes all products of a two-by-two patch without a shuffle of B:
//
//   real      a = (a0, a1), piece (b0, b1)   straight (a0 b0, a1 b1)  swapped (a1 b0, a0 b1)   C00, C11 and C10, C01
//   complex   a = (re, im), piece (re, im)   straight (re re, im im)  swapped (im re, re im)   parts of one product
//
// A register of four lanes holds two such pairs of A, and the piece twice: a load that repeats 64 bits makes it so,
// without a shuffle. What belongs together is sorted out once a tile.
//
// Each element of C is one chain of products, added to zero in the order of the steps, and then one addition to C: the
// same for every place in a tile, every width and every number of rows. (Complex: one chain each for re*re, im*im,
// im*re, re*im; the first two give the real part by subtraction.)
#pragma once

#include "blas/gemm/pack.h"

namespace orv::gemm {

// What becomes of the sums: they replace C, which is not read, or are added to a C whose columns all stand on 16 bytes,
// or anywhere.
enum class Update { replace, add_aligned, add };

// How a step is written down; the arithmetic is the same.
enum class Schedule { interleaved, loads_first };

// Pieces of a panel of B; a last column of reals without a neighbour is one that is multiplied straight only.
template <class T, int columns> inline constexpr int pieces_of = is_complex<T> ? columns : (columns + 1) / 2;

// `panels` panels of A, of `rows` rows each, by `columns` columns.
template <class T, int rows, int panels, int columns, Schedule schedule> class Tile {
    static constexpr int pieces = pieces_of<T, columns>, per_piece = is_complex<T> ? 1 : 2;
    static constexpr bool odd = columns % per_piece == 1;
    static constexpr bool is_full = panels == 1 && pieces == 4;

    vec<T> straight[panels][pieces], swapped[panels][pieces];

    ORV_INLINE static constexpr bool is_single(int i) { return odd && i == pieces - 1; }

    ORV_INLINE static vec<T> piece(const T* b, int i)
    {
        return is_single(i) ? splat(b[columns - 1]) : load_pair(b + i * per_piece);
    }

    // Keeps a value in a register at this point. Left to itself, the compiler takes the steps of one sum together,
    // spills, and loads each piece of B twice.
    ORV_INLINE static void settle(vec<T>& v) { asm volatile("" : "+x"(v.r)); }

    ORV_INLINE void multiply(const vec<T> (&x)[panels], const vec<T> (&y)[panels], vec<T> b, int i)
    {
        settle(b);
#pragma GCC unroll 4
        for (int q = 0; q < panels; ++q) {
            straight[q][i] += lane_product(x[q], b);
            if (!is_single(i)) swapped[q][i] += lane_product(y[q], b);
        }
    }

    ORV_INLINE void settle_sums()
    {
#pragma GCC unroll 4
        for (int q = 0; q < panels; ++q)
#pragma GCC unroll 4
            for (int i = 0; i < pieces; ++i) {
                settle(straight[q][i]);
                if (!is_single(i)) settle(swapped[q][i]);
            }
    }

    ORV_INLINE void step(const T* a, i64 a_stride, const T* b)
    {
        vec<T> x[panels], y[panels];
#pragma GCC unroll 4
        for (int q = 0; q < panels; ++q) {
            x[q] = rows == vec<T>::lanes ? load(a + q * a_stride) : load_first<rows>(a + q * a_stride);
            y[q] = swap_neighbours(x[q]);
        }
        if constexpr (schedule == Schedule::loads_first) {
            vec<T> loaded[pieces];
#pragma GCC unroll 4
            for (int i = 0; i < pieces; ++i) settle(loaded[i] = piece(b, i));
#pragma GCC unroll 4
            for (int i = 0; i < pieces; ++i) multiply(x, y, loaded[i], i);
        } else {
#pragma GCC unroll 4
            for (int i = 0; i < pieces; ++i) multiply(x, y, piece(b, i), i);
        }
        settle_sums();
    }

    template <int steps> ORV_INLINE static void prefetch_steps(const T* a)
    {
        constexpr int ahead = 512; // bytes: some hundred cycles, enough for the second-level cache
        const char* first = reinterpret_cast<const char*>(a) + ahead;
#pragma GCC unroll 4
        for (int i = 0; i < int(steps * rows * sizeof(T)); i += cache_line) prefetch(first + i);
    }

    // The sums of column j.
    ORV_INLINE vec<T> column(int q, int j) const
    {
        const int i = j / per_piece;
        const vec<T> s = straight[q][i];
        if (is_single(i)) return s;
        const vec<T> w = swapped[q][i], turned = swap_neighbours(w);
        if constexpr (is_complex<T>) return alternate(s - swap_neighbours(s), w + turned);
        else return j % 2 == 0 ? alternate(s, turned) : alternate(turned, s);
    }

public:
    // C(0:panels*rows, 0:columns), `depth` steps, a multiple of 4.
    template <Update update> ORV_INLINE void multiply(i64 depth, const T* a, i64 a_stride, const T* b, T* c, i64 ldc)
    {
#pragma GCC unroll 8
        for (int j = 0; j < columns; ++j) prefetch(c + j * ldc);
        clear();
        if constexpr (is_full) {
            for (; depth >= 2 * group; depth -= 2 * group, a += 2 * group * rows, b += 2 * group * columns) {
                prefetch_steps<2 * group>(a);
                run<2 * group>(a, a_stride, b);
            }
            if (depth > 0) run<group>(a, a_stride, b);
        } else
            for (; depth > 0; depth -= group, a += group * rows, b += group * columns) run<group>(a, a_stride, b);
        write<update>(c, ldc);
    }

private:
    ORV_INLINE void clear()
    {
#pragma GCC unroll 4
        for (int q = 0; q < panels; ++q)
#pragma GCC unroll 4
            for (int i = 0; i < pieces; ++i) straight[q][i] = swapped[q][i] = zeros<T>();
    }

    template <int steps> ORV_INLINE void run(const T* a, i64 a_stride, const T* b)
    {
#pragma GCC unroll 8
        for (int p = 0; p < steps; ++p) step(a + p * rows, a_stride, b + p * columns);
    }

    template <Update update> ORV_INLINE void write(T* c, i64 ldc) const
    {
#pragma GCC unroll 8
        for (int j = 0; j < columns; ++j, c += ldc)
#pragma GCC unroll 4
            for (int q = 0; q < panels; ++q) {
                T* to = c + q * rows;
                vec<T> sum = column(q, j);
                if constexpr (update == Update::add_aligned) sum = load(to) + sum;
                else if constexpr (update == Update::add) sum = load_first<rows>(to) + sum;
                store_first<rows>(to, sum);
            }
    }
};

} // namespace orv::gemm
