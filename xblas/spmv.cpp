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
[[gnu::noinline]] void packed(Routine routine, Order order, Uplo uplo, i64 n, T alpha, const A* ap, const B* x,
                              i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec) || nothing_to_do(n, alpha, beta) || refuses(routine, order, uplo, incx, incy)) return;
    multiply_or_scale<T, A, B>(prec, n, Rows::packed(kind, order, uplo, n), alpha, ap, x, nullptr, incx, beta, y, incy);
}
template <class T, class A, class B> constexpr auto& spmv = packed<Kind::symmetric, T, A, B>;
template <class T, class A, class B> constexpr auto& hpmv = packed<Kind::hermitian, T, A, B>;

} // namespace

XBLAS_MATRICES(spmv, _x)
XBLAS_MATRICES(hpmv, _x)

} // namespace orv::xblas
