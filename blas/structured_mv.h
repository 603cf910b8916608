// Products of a structured matrix and a vector: one body for symmetric, Hermitian and banded matrices in every storage.
//
// The matrix B is a run of rows a column (storage.h); of a symmetric or Hermitian matrix A, B is what lies strictly on
// one side of the diagonal, A = B + D + op(B). A pass goes over the columns in strips of four, of what then is left two
// and one; of bands so narrow that the columns of a strip share no stretch of rows, narrower strips. It reads B once,
// and does with each element what is asked for:
//
//   direct   y(i) += B(i,j) * f(j), f(j) = alpha*x(j): with B                   y := y + alpha*B*x
//   across   s(j) += op(B(i,j)) * x(i), at the end of the strip
//            y(j) += alpha * s(j): with the transpose, conjugated or not        y := y + alpha*op(B)*x
//   both     and y(j) += D(j) * f(j) before alpha*s(j)                          y := y + alpha*A*x
//
// Order of operations: a strip takes its rows downwards, and a row its columns from left to right. Sums of complex
// products keep the terms with the real and those with the imaginary parts apart, as in gemv_kernels.h. With `one_lane`
// that is all: one chain of sums for each s(j), which neither alignment nor strides nor leading dimensions change.
// Without, rows that all columns of a strip share go register by register, s(j) has a sum a lane, and strided vectors
// cut the rows in windows, each with a sum of its own.
//
// A strip is compiled for each type, pass and width (strip.h), and once more for each edge that is known to run along
// the diagonal: storage and what is asked for ahead are fields of the record that it walks by.
#pragma once

#include "blas/gemv_kernels.h"
#include "blas/storage.h"

namespace orv::blas {

struct Pass {
    bool direct = false;
    Op across = Op::none; // none: no such product
    bool one_lane = false;
    constexpr bool both() const { return direct && across != Op::none; }
};

// op(A) = A adds columns to rows of y, the others add dot products with rows of x to elements of y.
template <Op op> inline constexpr Pass pass_of{.direct = op == Op::none, .across = op};
// A symmetric matrix if real, a Hermitian one if complex.
template <class T>
inline constexpr Pass pass_of_both{.direct = true, .across = is_complex<T> ? Op::conjugate : Op::transpose};
template <class T>
inline constexpr Pass pass_in_order{.direct = true, .across = pass_of_both<T>.across, .one_lane = true};

// How the rows of a strip's columns begin, or end: anyhow; right behind the diagonal, or before it; beyond the square
// that the strip has on the diagonal. Where that is known, no row is asked whether it is there.
enum class Edge { any, diagonal, square };
struct Edges {
    Edge from = Edge::any, to = Edge::any;
};
constexpr Edges edges_at(Half half, Edge edge) { return half == Half::lower ? Edges{.from = edge} : Edges{.to = edge}; }

// What a strip of four asks for ahead, where columns are too short, or too far from each other, for the processor's own
// look-ahead: nothing; of bands, whose strips lie one behind the other, the next strip; of full matrices beyond the
// second-level cache what the columns hold further on.
enum class Ahead { nothing, next_strip, further_on };

// v + i is the address of element i.
template <class T, bool unit> struct Elements {
    T* v;
    i64 inc;
    ORV_INLINE T* operator+(i64 i) const { return unit ? v + i : v + i * inc; }
};

// What a strip walks by: B, alpha, and the vectors as rows and as columns of B index them.
template <class T, bool unit> struct Walk {
    Storage<const T> b;
    factor<T> alpha;
    Elements<const T, unit> x_row, x_column;
    Elements<T, unit> y_row, y_column;
    bool diagonal = false;    // whether this pass is to take the diagonal too, if that is not known
    bool on_boundary = false; // doubles: stores to y on 16 bytes
    Ahead ahead = Ahead::nothing;

    // Written member by member: the list of an aggregate would first be cleared as a whole.
    Walk(const Storage<const T>& b, T alpha, Elements<const T, unit> x_row, Elements<const T, unit> x_column,
         Elements<T, unit> y_row, Elements<T, unit> y_column)
        : b(b), alpha(alpha), x_row(x_row), x_column(x_column), y_row(y_row), y_column(y_column)
    {
    }
};
// The vectors in one piece, x and y being elements 0.
template <Pass pass, class T> using WalkOf = Walk<T, !pass.one_lane>;

// Columns of B in strips; not more rows than those of the record are touched, which lies apart from all vectors. With
// the edge along the diagonal no columns' rows are cut off there, and the diagonal is taken.
template <Pass pass, Edges edges, class T> void strips(const WalkOf<pass, T>& __restrict walk, Rows columns);

// The same with the edges that the whole of B has.
template <Pass pass, class T> ORV_INLINE void whole_strips(const WalkOf<pass, T>& walk, Rows columns)
{
    if constexpr (pass.both() && !pass.one_lane) {
        if (walk.b.ends_before_diagonal()) strips<pass, edges_at(Half::upper, Edge::diagonal), T>(walk, columns);
        else strips<pass, edges_at(Half::lower, Edge::diagonal), T>(walk, columns);
    } else strips<pass, Edges{}, T>(walk, columns);
}

// The same over all columns, x and y being strided. Takes some 22 KiB of the stack.
template <Pass pass, class T>
void strided_strips(const Walk<T, true>& walk, i64 n, const T* x, i64 incx, T* y, i64 incy);

// How a whole product differs from the usual one.
struct Manner {
    bool on_boundary = false;
    Ahead ahead = Ahead::nothing;
};

// The pass over columns 0..n-1 of B. x and y are elements 0, whatever the sign of the strides.
template <Pass pass, class T>
ORV_INLINE void structured_mv(const Storage<const T>& b, i64 n, T alpha, const T* x, i64 incx, T* y, i64 incy,
                              Manner manner)
{
    WalkOf<pass, T> walk(b, alpha, {x, incx}, {x, incx}, {y, incy}, {y, incy});
    walk.diagonal = true, walk.on_boundary = manner.on_boundary, walk.ahead = manner.ahead;
    if constexpr (!pass.one_lane)
        if (incx != 1 || incy != 1) return strided_strips<pass, T>(walk, n, x, incx, y, incy);
    whole_strips<pass, T>(walk, {0, n});
}

} // namespace orv::blas
