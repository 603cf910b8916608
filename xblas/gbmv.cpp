// gbmv:    y := alpha*op(A)*x + beta*y                          A m by n with kl diagonals below the main one and ku
// gbmv2:   y := alpha*op(A)*(head_x + tail_x) + beta*y          above, op by trans: 111 A, 112 its transpose, 113 its
//                                                               conjugate transpose
//
// Each element is one sum over the columns in their order, two for head and tail. y is read and multiplied whatever
// alpha and beta are, so NaN in it stays; only with alpha = 0 and beta = 1 nothing happens. Bad: see `refuses`.
#include "xblas/members.h"
#include "xblas/products.h"

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
Rows band_rows(Order order, Trans trans, i64 m, i64 n, i64 kl, i64 ku, i64 lda)
{
    const bool by_columns = order == Order::column_major, as_stored = !is_transposed(trans);
    const bool along_columns = by_columns == as_stored; // rows of op(A) cross those of the storage
    return Rows::band(as_stored ? n : m, as_stored ? kl : ku, as_stored ? ku : kl, by_columns ? ku : kl, lda,
                      along_columns ? lda - 1 : 1, trans == Trans::conjugate ? Use::conjugated : Use::stored);
}

// tail: of x, or null.
template <class T, class A, class B>
[[gnu::noinline]] void compute(Prec prec, i64 m, const Rows& rows, T alpha, const A* a, const B* x, const B* tail,
                               i64 incx, T beta, T* y, i64 incy)
{
    if (m == 0 || rows.columns == 0 || (alpha == zero<T> && beta == one<T>)) return;
    with_arithmetic<T>(prec, [&]<class P>(P) {
        multiply<P>(m, rows, a, first(x, rows.columns, incx),
                    tail != nullptr ? first(tail, rows.columns, incx) : nullptr, incx,
                    Closing<P, T>(all_terms, alpha, beta), first(y, m, incy), incy);
    });
}

template <class T, class A, class B>
void gbmv(Routine routine, Order order, Trans trans, i64 m, i64 n, i64 kl, i64 ku, T alpha, const A* a, i64 lda,
          const B* x, i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec) || refuses(routine, order, trans, m, n, kl, ku, lda, incx, incy, 0)) return;
    compute<T, A, B>(prec, is_transposed(trans) ? n : m, band_rows(order, trans, m, n, kl, ku, lda), alpha, a, x,
                     nullptr, incx, beta, y, incy);
}

template <class T, class A, class B>
void gbmv2(Routine routine, Order order, Trans trans, i64 m, i64 n, i64 kl, i64 ku, T alpha, const A* a, i64 lda,
           const B* head_x, const B* tail_x, i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec) || refuses(routine, order, trans, m, n, kl, ku, lda, incx, incy, 1)) return;
    compute(prec, is_transposed(trans) ? n : m, band_rows(order, trans, m, n, kl, ku, lda), alpha, a, head_x, tail_x,
            incx, beta, y, incy);
}

} // namespace

XBLAS_MATRICES(gbmv, _x)
XBLAS_MATRICES(gbmv2, _x)

} // namespace orv::xblas
