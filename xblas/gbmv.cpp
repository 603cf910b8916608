// gbmv:    y := alpha*op(A)*x + beta*y                          A m by n with kl diagonals below the main one and ku
// gbmv2:   y := alpha*op(A)*(head_x + tail_x) + beta*y          above, op by trans: 111 A, 112 its transpose, 113 its
//                                                               conjugate transpose
//
// Each element is one sum over the columns in their order, two for head and tail. y is read and multiplied whatever
// alpha and beta are, so NaN in it stays; only with alpha = 0 and beta = 1 nothing happens. Bad: see `refuses`.
#include "xblas/members.h"
#include "xblas/rows.h"

namespace orv::xblas {
namespace {

// later: 1 for gbmv2, whose arguments behind the vectors are one position further on.
bool refuses(Routine routine, Order order, Trans trans, i64 m, i64 n, i64 kl, i64 ku, i64 lda, i64 incx, i64 incy,
             i64 later)
{
    if (!known(order)) return routine.bad(1, order);
    if (!known(trans)) return routine.bad(2, trans);
    if (m < 0) return routine.bad(3, m);
    if (n < 0) return routine.bad(4, n);
    if (kl < 0 || kl >= m) return routine.bad(5, kl);
    if (ku < 0 || ku >= n) return routine.bad(6, ku);
    if (lda <= kl + ku) return routine.bad(9, lda);
    if (incx == 0) return routine.bad(11 + later, incx);
    if (incy == 0) return routine.bad(14 + later, incy);
    return false;
}

// Row i of op(A) has the columns i - below .. i + above that exist.
struct BandRows {
    static constexpr int parts = 1;
    i64 rows, columns, below, above;
    i64 diagonal, diagonal_step, step; // of A: where (0, 0) stands, from (i, i) to the next, along a row
    Use use;

    BandRows(Order order, Trans trans, i64 m, i64 n, i64 kl, i64 ku, i64 lda)
        : rows(m), columns(n), below(kl), above(ku), diagonal(order == Order::column_major ? ku : kl),
          diagonal_step(lda), step(order == Order::column_major ? lda - 1 : 1),
          use(trans == Trans::conjugate ? Use::conjugated : Use::stored)
    {
        if (!is_transposed(trans)) return;
        rows = n, columns = m, below = ku, above = kl;
        step = lda - step;
    }
    i64 width() const { return min(columns, below + above + 1); }
    i64 first_column(i64 i) const { return max(0, i - below); }
    template <class F> ORV_INLINE void walks(i64 i, F walk) const
    {
        const i64 from = first_column(i), to = min(columns, i + above + 1);
        walk({diagonal + i * diagonal_step + (from - i) * step, step, 0, max(0, to - from)}, use);
    }
};

template <class T, class A, class... B>
void compute(Prec prec, const BandRows& rows, T alpha, const A* a, i64 incx, T beta, T* y, i64 incy, const B*... x)
{
    if (rows.rows == 0 || rows.columns == 0 || (alpha == zero<T> && beta == one<T>)) return;
    with_arithmetic<T>(prec, [&]<class P>(P) {
        multiply(rows.rows, rows, a, incx, Closing<P, T>(all_terms, alpha, beta), first(y, rows.rows, incy), incy,
                 first(x, rows.columns, incx)...);
    });
}

template <class T, class A, class B>
void gbmv(Routine routine, Order order, Trans trans, i64 m, i64 n, i64 kl, i64 ku, T alpha, const A* a, i64 lda,
          const B* x, i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec) || refuses(routine, order, trans, m, n, kl, ku, lda, incx, incy, 0)) return;
    compute(prec, BandRows(order, trans, m, n, kl, ku, lda), alpha, a, incx, beta, y, incy, x);
}

template <class T, class A, class B>
void gbmv2(Routine routine, Order order, Trans trans, i64 m, i64 n, i64 kl, i64 ku, T alpha, const A* a, i64 lda,
           const B* head_x, const B* tail_x, i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec) || refuses(routine, order, trans, m, n, kl, ku, lda, incx, incy, 1)) return;
    compute(prec, BandRows(order, trans, m, n, kl, ku, lda), alpha, a, incx, beta, y, incy, head_x, tail_x);
}

} // namespace

XBLAS_TWO_INPUTS(gbmv, 15, 14, 14, 13, "_x")
XBLAS_TWO_INPUTS(gbmv2, 16, 15, 15, 14, "_x")

} // namespace orv::xblas
