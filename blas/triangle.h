// Triangular solves and products in place: one body for both triangles, every operation and every storage.
//
//   solve      x := op(A)^-1 * x
//   multiply   x := op(A) * x
//
// A is walked in strips of four columns, of what is left two and one; of bands so narrow that the columns of a strip
// don't share its square on the diagonal, narrower strips. A strip is two things: that square, and the rows outside of
// it, which structured_mv.h multiplies. Each element of A is read once.
//
//   op(A)      with each strip, the square and then the rest       and the walk goes
//   solve N    x(own) solved, x(rest) -= A(rest, own)*x(own)       down (lower), up (upper)
//   solve T    x(own) -= A(rest, own)^T*x(rest), x(own) solved     up (lower), down (upper)
//   multiply N x(rest) += A(rest, own)*x(own), x(own) multiplied   up (lower), down (upper)
//   multiply T x(own) multiplied, x(own) += A(rest, own)^T*x(rest) down (lower), up (upper)
//
// so that no element of x is read after it was overwritten, nor before it is known. A is read in its triangle only, and
// not on a unit diagonal. A zero on the diagonal is divided by like any number. Zeros in x are multiplied like any
// number too: NaN in A reaches the result.
//
// op(A) and the half are compiled apart, as the inside of the loops changes by the one, and by the other which way a
// strip is walked and what is known of its edges. The storage and the diagonal are known when the program runs: where a
// column stands, and whether it has a factor of its own.
#pragma once

#include "blas/structured_mv.h"

namespace orv::blas {

enum class Task { solve, multiply };

struct Form {
    Half half;
    Op op;
    bool unit; // ones on the diagonal, which is not read
};

// The letters of uplo, trans, diag in either case: U is the upper triangle and else the lower one, U a unit diagonal.
template <class T> constexpr Form form_of(char uplo, char trans, char diag)
{
    return {half_of(uplo), op_of<T>(trans), fold(diag) == 'U'};
}

constexpr bool ascending(Task task, Form form)
{
    return (task == Task::solve) == ((form.half == Half::lower) == (form.op == Op::none));
}

// Single elements are kept in the first lane of a register, with zeros in the others.
template <Op op, class T> ORV_INLINE vec<T> element_of(const T* a)
{
    const vec<T> e = load_first<1>(a);
    if constexpr (op == Op::conjugate) return conj(e);
    else return e;
}

// b / op(d). Complex numbers: b*conj(u) / (d.re*u.re + d.im*u.im) with u = d/max(|d.re|, |d.im|), a part of which is 1
// or -1: the quotient of Smith (Algorithm 116, 1962) bit for bit, but without his branch. What comes between exceeds
// neither operands nor quotient by more than a factor of two. d = 0 gives NaN; of an infinite d, u is that of the
// largest number, and the quotient 0.
template <Op op, class T> ORV_INLINE vec<T> quotient(vec<T> b, T divisor)
{
    if constexpr (is_complex<T>) {
        using R = real_t<T>;
        using Parts = vec<R>; // each part in lanes of its own
        const vec<R> most = splat(sizeof(R) == sizeof(float) ? R(__FLT_MAX__) : R(__DBL_MAX__));
        const vec<T> d = op == Op::conjugate ? conj(splat(divisor)) : splat(divisor);
        const Parts finite = maximum({-most.r}, minimum(most, Parts{d.r})), size = magnitude(finite);
        const vec<T> u{(finite / maximum(size, swap_neighbours(size))).r}, squares = lane_product(d, u);
        const vec<T> product =
            lane_product(b, real_parts(u)) + lane_product(swap_neighbours(b), conj(imaginary_parts(u)));
        return {product.r / (squares + swap_neighbours(squares)).r};
    } else return b / splat(divisor);
}

// The stored rows outside of a block of columns.
template <class T> Rows beside(Half half, const Storage<T>& a, Rows block)
{
    return half == Half::upper ? Rows{a.rows(block.from).from, block.from} : Rows{block.to, a.rows(block.to - 1).to};
}

// The columns of a block in those rows of A that are wanted, their own and others; x is element 0, unit stride.
template <Task task, Half half, Op op, class T>
void columns_in_place(bool unit, const Storage<const T>& a, Rows block, T* x);
template <Task task, class T> ORV_INLINE void block_in_place(Form form, const Storage<const T>& a, Rows block, T* x)
{
    with_op<T>(form.op, [&]<Op op>() {
        if (form.half == Half::upper) columns_in_place<task, Half::upper, op>(form.unit, a, block, x);
        else columns_in_place<task, Half::lower, op>(form.unit, a, block, x);
    });
}

// The whole triangle; x is element 0, whatever the sign of incx.
template <Task task, class T> void in_place_at_stride(Form form, const Storage<const T>& a, i64 n, T* x, i64 incx);
template <Task task, class T> ORV_INLINE void in_place(Form form, const Storage<const T>& a, i64 n, T* x, i64 incx)
{
    if (incx == 1) block_in_place<task>(form, a, Rows{0, n}, x);
    else in_place_at_stride<task>(form, a, n, x, incx);
}

// Adds to y the product of a rectangle of m rows and n columns, or of its transpose, with x; subtracts it for a solve.
// x and y are given as to any routine, by their lowest address.
template <class T> using AddRectangle = void(char trans, i64 m, i64 n, const T* a, i64 lda, const T* x, T* y, i64 inc);

// The same for a full triangle in blocks of `size` columns, all but the triangles themselves handed on.
template <Task task, class T>
void blocks_in_place(Form form, i64 n, i64 size, const T* a, i64 lda, T* x, i64 incx, AddRectangle<T>* add);
template <Task task, class T>
ORV_INLINE void in_place_by_blocks(Form form, i64 n, i64 size, const T* a, i64 lda, T* x, i64 incx,
                                   AddRectangle<T>* add)
{
    if (n <= size) in_place<task>(form, full_triangle(form.half, a, lda, n), n, x, incx);
    else blocks_in_place<task>(form, n, size, a, lda, x, incx, add);
}

} // namespace orv::blas
