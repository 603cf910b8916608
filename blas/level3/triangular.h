// Triangular solves and products of matrices, in place in B, m by n:
//
//   trsm   op(A)*X = alpha*B (side L) or X*op(A) = alpha*B (side R)
//   trmm   B := alpha*op(A)*B         or B := alpha*B*op(A)
//
// A problem of side R is one of side L for the transposes: op(A)' * X' = B'. So everything below speaks of T, which is
// op(A) for side L and its transpose for side R, and of X, whose rows are those of B or, for side R, its columns. Only
// where elements are read or written, and in the letters of a general product, do the sides differ.
//
// A triangle T is cut in blocks along its diagonal, and these again in smaller ones. What is beside a block is a
// rectangle, and a general product. T is walked from the corner where a solve starts: down if it is lower, else up; a
// product goes the other way, so that nothing is read after it was overwritten.
#pragma once

#include "blas/level3/product.h"
#include "blas/triangle.h"

namespace orv::level3 {

using blas::Half, blas::Op, blas::Task;
using gemm::Desc;

template <class T> struct Triangular {
    bool right;
    blas::Form form;
    i64 order, others; // of T; columns of X
    const T* a;
    i64 lda;
    T* b;
    i64 ldb;

    static Triangular of(bool right, blas::Form form, i64 m, i64 n, const T* a, i64 lda, T* b, i64 ldb)
    {
        return {right, form, right ? n : m, right ? m : n, a, lda, b, ldb};
    }

    i64 rows() const { return right ? others : order; }
    i64 columns() const { return right ? order : others; }
    i64 row_step() const { return right ? ldb : 1; } // of X
    i64 column_step() const { return right ? 1 : ldb; }
    // Element (i, j) of T stands at a + i*t_row() + j*t_column(); op conjugate is left to who reads it.
    bool turned() const { return (form.op != Op::none) != right; }
    i64 t_row() const { return turned() ? lda : 1; }
    i64 t_column() const { return turned() ? 1 : lda; }
    bool lower() const { return (form.half == Half::lower) != turned(); }

    // `size` rows and columns of T, or columns of X, from i on.
    Triangular block(i64 i, i64 size) const
    {
        Triangular x = *this;
        x.order = size, x.a += i * (lda + 1), x.b += i * row_step();
        return x;
    }
    Triangular sweep(i64 j, i64 size) const
    {
        Triangular x = *this;
        x.others = size, x.b += j * column_step();
        return x;
    }
    // The general product X(to) += factor*T(to, from)*X(from) for rows that don't overlap.
    gemm::Product<T> rectangle(i64 to, i64 to_size, i64 from, i64 from_size, T factor) const
    {
        return product(a + to * t_row() + from * t_column(), to, to_size, from, from_size, factor);
    }
    // The same with a copy of what A holds there.
    gemm::Product<T> product(const T* t, i64 to, i64 to_size, i64 from, i64 from_size, T factor) const
    {
        const char op = form.op == Op::none ? 'N' : form.op == Op::transpose ? 'T' : 'C';
        const T* const source = b + from * row_step();
        T* const target = b + to * row_step();
        if (right) return {'N', op, others, to_size, from_size, factor, source, ldb, t, lda, one<T>, target, ldb};
        return {op, 'N', to_size, others, from_size, factor, t, lda, source, ldb, one<T>, target, ldb};
    }
};

// What a solve subtracts and a product adds.
template <Task task, class T> constexpr T factor_of_rectangles = task == Task::solve ? -one<T> : one<T>;

// A piece of T's diagonal on the way of a walk: before it, in the walk of a solve, come `done` rows and columns, behind
// it `left`.
struct Piece {
    i64 from, size, done_from, done, left_from, left;
};
// The piece of at most `size` rows after `done` of them. A walk up takes the last rows that are left.
constexpr Piece piece_of(bool lower, i64 order, i64 done, i64 size)
{
    size = min(size, order - done);
    const i64 left = order - done - size;
    if (lower) return {done, size, 0, done, done + size, left};
    return {left, size, order - done, done, 0, left};
}

// One level of cutting. The work areas are those of the gemm descriptor; the kernels need them.
template <class T> struct Level {
    i64 block;     // rows of T in a block
    i64 col_block; // columns of X that are finished before the next ones are begun
    i64 order; // 0: a block takes what the rest means for it, all at once; else: it gives what it means for the rest
    T* a_work; // the triangle, packed
    T* b_work;
    T* strip; // a few columns of X
};

// The levels of a call, from the one in force to the last.
template <class T> struct Levels {
    const Level<T>* level;
    i64 at, last;
    Desc<T>* desc; // for products in blocks; null: the whole product chooses for itself

    const Level<T>& here() const { return level[at]; }
    Levels next() const { return {level, at + 1, last, desc}; }
};

// X := T^-1*X or T*X without work memory, dividing by the diagonal; any sizes (triangular_plain.cpp).
template <Task task, class T> void plain(const Triangular<T>& x);

// The same in blocks of 4 rows and columns, the triangle packed at `packed`, some columns of X copied to `strip`
// (triangular_block.cpp). A diagonal is not divided by, but multiplied by its reciprocals; see there what that excepts.
template <Task task, class T> void last_level(const Triangular<T>& x, T* packed, T* strip);

// The triangle of an order that is a multiple of 4, as those blocks want it, and the blocks by themselves.
template <Task task, class T> void pack(const Triangular<T>& x, T* packed);
template <Task task, class T> void packed_triangle(const Triangular<T>& x, const T* packed, T* strip);

// Elements that the two take: all squares of four on and before the diagonal, each real in eight bytes; two registers
// for each row.
template <class T> constexpr i64 packed_elements(i64 order)
{
    return order / 4 * (order / 4 + 1) / 2 * 16 * (8 / i64(sizeof(real_t<T>)));
}
template <class T> constexpr i64 strip_elements(i64 order) { return order * 2 * vec<T>::lanes; }

// Arguments as they arrive. Parts get three flags of one byte in place of uplo and transa.
#define TRIANGULAR_ARGUMENTS(T)                                                                                        \
    const char *side, const char *uplo, const char *transa, const char *diag, const i64 *m, const i64 *n,              \
        const T *alpha, const T *a, const i64 *lda, T *b, const i64 *ldb
#define TRIANGULAR_FLAGS const char *upper, const char *is_n, const char *is_t, const char *diag
#define TRIANGULAR_OPERANDS(T) const i64 *m, const i64 *n, const T *a, const i64 *lda, T *b, const i64 *ldb

template <class T> constexpr blas::Form form_of_flags(TRIANGULAR_FLAGS)
{
    return blas::form_of<T>(*upper ? 'U' : 'L', *is_n ? 'N' : *is_t ? 'T' : 'C', *diag);
}
constexpr bool is_right(char side) { return fold(side) == 'R'; }

} // namespace orv::level3
