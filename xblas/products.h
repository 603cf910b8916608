// Products of a matrix, as rows of any storage, with vectors and with the columns of a matrix. Like the loops that they
// rest on they are compiled once, in products_*.cpp.
#pragma once

#include "xblas/closing.h"
#include "xblas/rows.h"

namespace orv::xblas {

// The sum of row i times x, and of rows i, i + 1, i + 2, i + 3.
template <class P, class A, class B>
sum_of<typename P::One, A, B> row_sum(const Rows& rows, i64 i, const A* a, const B* x, i64 incx, double x_sign = 1);
template <class P, class A, class B>
void row_sums(const Rows& rows, i64 i, const A* a, const B* x, i64 incx, sum_of<typename P::One, A, B> (&sums)[4]);

// How many of n rows are taken in fours: all that fill one if rows are long. Each row is one chain of additions that
// waits for the last, and four chains run at once. Of short rows the processor overlaps as many by itself, and what
// begins and ends a group is saved: for full matrices the ways meet between 50 and 60 elements.
inline i64 rows_in_fours(i64 n, const Rows& rows)
{
    constexpr i64 long_row = 64;
    return rows.width() < long_row ? 0 : n / 4 * 4;
}

// y := alpha*A*x + beta*y in the form of close, for n rows; or the same with a head and a tail of x, null if it has
// none.
template <class P, class T, class A, class B>
void multiply(i64 n, const Rows& rows, const A* a, const B* x, const B* tail, i64 incx, const Closing<P, T>& close,
              T* y, i64 incy);

// C := alpha*A*B + beta*C in the form of close. b: column 0 of B, with apart the step from column to column.
template <class P, class T, class A, class B>
void multiply(i64 m, i64 n, const Rows& rows, const A* a, Several<B> b, const Closing<P, T>& close, T* c, i64 row_step,
              i64 column_step);

} // namespace orv::xblas
