// spmv, hpmv:    y := alpha*A*x + beta*y      A n by n, symmetric or Hermitian, of which one triangle is stored packed
//
// Special values: symmetric.h. With n < 1, or alpha = 0 and beta = 1, nothing is checked either.
#include "xblas/symmetric.h"

namespace orv::xblas {
namespace {

bool refuses(Routine routine, Order order, Uplo uplo, i64 incx, i64 incy)
{
    if (!known(order)) return routine.bad(1, order);
    if (!known(uplo)) return routine.bad(2, uplo);
    if (incx == 0) return routine.bad(7, incx);
    if (incy == 0) return routine.bad(10, incy);
    return false;
}

template <Kind kind, class T, class A, class B>
void packed(Routine routine, Order order, Uplo uplo, i64 n, T alpha, const A* ap, const B* x, i64 incx, T beta, T* y,
            i64 incy, Prec prec)
{
    if (!known(prec) || nothing_to_do(n, alpha, beta) || refuses(routine, order, uplo, incx, incy)) return;
    with_arithmetic<T>(prec, [&]<class P>(P) {
        multiply_or_scale<P, Plain<typename P::number>>(
            n, rows_of<kind>(PackedHalf{n, rows_run_before(order, uplo)}, uplo), alpha, ap, incx, beta, y, incy, x);
    });
}
template <class T, class A, class B> constexpr auto& spmv = packed<Kind::symmetric, T, A, B>;
template <class T, class A, class B> constexpr auto& hpmv = packed<Kind::hermitian, T, A, B>;

} // namespace

XBLAS_TWO_INPUTS(spmv, 11, 10, 10, 9, "_x")
XBLAS_HERMITIAN(hpmv, 11, 10, 10, 9, "_x")

} // namespace orv::xblas
