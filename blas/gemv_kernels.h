// Unit-stride matrix-vector kernels and the sums that they are made of.
//
// Orders of operations, which no path, alignment or leading dimension changes:
//
//   N   y(i) takes the columns four at a time, left to right: y + a0*x0, + a1*x1, + a2*x2, + a3*x3, every x(j) times
//       alpha beforehand. Of the n mod 4 last columns first two go together, then one.
//   T   each column has a sum of its own, a vector of lanes: row i belongs to lane i mod lanes, the last of an odd
//       number of rows to lane 0. The lanes meet at the end (lane 0 + lane 1; of four (0 + 2) + (1 + 3)), the sum is
//       multiplied by alpha and added to y(j).
//
// Complex products a*x keep the terms with x.re and those with x.im in two sums. N starts the first with y, the second
// with zero, and joins them after every group of columns; T and C join them at the end. So C differs from T in two
// signs.
#pragma once

#include "frame/products.h"

namespace orv::blas {

enum class Op { none, transpose, conjugate };

// Anything but N and C, in either case, is T; and of real matrices C is T.
template <class T> constexpr Op op_of(char trans)
{
    if (fold(trans) == 'N') return Op::none;
    return is_complex<T> && fold(trans) == 'C' ? Op::conjugate : Op::transpose;
}

// body<op>() for an operation known when the program runs. Real matrices are never conjugated.
template <class T, class Body> ORV_INLINE void with_op(Op op, const Body& body)
{
    if (op == Op::none) return body.template operator()<Op::none>();
    if constexpr (is_complex<T>)
        if (op == Op::conjugate) return body.template operator()<Op::conjugate>();
    body.template operator()<Op::transpose>();
}

// From this size on, half of a second-level cache, a kernel asks ahead for what it will read of a matrix.
inline constexpr i64 far_bytes = 1 << 20;
template <class T> constexpr bool is_far(i64 m, i64 n) { return m * n * static_cast<i64>(sizeof(T)) >= far_bytes; }
// A few columns may be part of a matrix that is far, as in solves by blocks. The distance of columns tells its size.
template <class T> constexpr bool is_far(i64 m, i64 n, i64 lda) { return is_far<T>(m, n) || is_far<T>(lda, lda / 2); }

// y += alpha*op(A)*x for A of m rows and n columns, lda apart; x and y have unit stride. Any alignment. m or n not
// positive: nothing is done. A is read once, in order of storage; NaN in A or x reaches y. far says whether the matrix
// that A is a block of is far; it changes no result.
template <Op op, class T>
void gemv_kernel(i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, T* y, bool far = false);

// Asks for what a strip of columns holds further on, as much as `rows` rows from row i on take; at its end for the
// start of the next strip. Streams from beyond the second-level cache need it: the processor's own look-ahead stops at
// every page edge.
template <int columns, int rows, class T> ORV_INLINE void look_ahead(i64 i, i64 m, const T* a, i64 lda)
{
    i64 at = i + min(1024 / static_cast<i64>(sizeof(T)), m);
    if (at >= m) at += columns * lda - m;
#pragma GCC unroll 4
    for (int j = 0; j < columns; ++j)
#pragma GCC unroll 2
        for (i64 byte = 0; byte < rows * static_cast<i64>(sizeof(T)); byte += cache_line)
            prefetch(reinterpret_cast<const char*>(a + at + j * lda) + byte);
}

// A piece of a column: whole registers, or the first few lanes of one.
template <class T, int rows_> struct Piece {
    static constexpr int rows = rows_;
    static constexpr int lanes = vec<T>::lanes;
    static_assert(rows < lanes || rows % lanes == 0);
    static constexpr int registers = rows < lanes ? 1 : rows / lanes;

    ORV_INLINE static vec<T> load(const T* p, int r)
    {
        return load_first < rows < lanes ? rows : lanes > (p + r * lanes);
    }
    // Ready to multiply; where the load can repeat the parts, the shuffle ports stay free.
    ORV_INLINE static Multiplicand<T> multiplicand(const T* p, int r)
    {
        if constexpr (is_complex<T> && lanes == 1) return {load_re_twice(p + r), load_im_twice(p + r)};
        else return Multiplicand<T>(load(p, r));
    }
    ORV_INLINE static void store(T* p, int r, vec<T> v) { store_first < rows<lanes ? rows : lanes>(p + r * lanes, v); }
};

template <int rows, class T, class Body> ORV_INLINE void tails(i64 i, i64 m, const Body& body)
{
    if (m - i >= rows) body(Piece<T, rows>{}, i), i += rows;
    if constexpr (rows > 1) tails<rows / 2, T>(i, m, body);
}

// Calls body(piece, i) for blocks of rows from i on while one fits before m, then for tails: each power of two below
// the block at most once.
template <int block, class T, class Body> ORV_INLINE void each_piece(i64 m, const Body& body)
{
    constexpr int tail = block > 16 ? 16 : block / 2;
    static_assert(block == 24 || block == 2 * tail || block == 1);
    i64 i = 0;
    for (; i + block <= m; i += block) body(Piece<T, block>{}, i);
    if constexpr (tail > 0) tails<tail, T>(i, m, body);
}

} // namespace orv::blas
