// sbmv, hbmv:    y := alpha*A*x + beta*y      A n by n, symmetric or Hermitian, with k diagonals on either side of the
//                                             main one, of which one side is stored in band storage
//
// Special values: symmetric.h. Bad: prec; then, unless n < 1 or alpha = 0 with beta = 1, the others as below.
#include "xblas/symmetric.h"

namespace orv::xblas {
namespace {

bool refuses(Routine routine, Order order, Uplo uplo, i64 n, i64 k, i64 lda, i64 incx, i64 incy)
{
    if (!known(order)) return routine.bad(1, order);
    if (!known(uplo)) return routine.bad(2, uplo);
    if (k < 0 || k > n) return routine.bad(4, k);
    if (lda <= k || lda < 1) return routine.bad(7, lda);
    if (incx == 0) return routine.bad(9, incx);
    if (incy == 0) return routine.bad(12, incy);
    return false;
}

template <Kind kind, class T, class A, class B>
[[gnu::noinline]] void band(Routine routine, Order order, Uplo uplo, i64 n, i64 k, T alpha, const A* a, i64 lda,
                            const B* x, i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec)) return void(routine.bad(13, prec));
    if (nothing_to_do(n, alpha, beta) || refuses(routine, order, uplo, n, k, lda, incx, incy)) return;
    multiply_or_scale<T, A, B>(prec, n, Rows::band(kind, order, uplo, n, k, lda), alpha, a, x, nullptr, incx, beta, y,
                               incy);
}
template <class T, class A, class B> constexpr auto& sbmv = band<Kind::symmetric, T, A, B>;
template <class T, class A, class B> constexpr auto& hbmv = band<Kind::hermitian, T, A, B>;

} // namespace

XBLAS_MATRICES(sbmv, _x)
XBLAS_MATRICES(hbmv, )

} // namespace orv::xblas
