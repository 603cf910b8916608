// symv, hemv:      y := alpha*A*x + beta*y                        A n by n, symmetric or Hermitian, of which one
// symv2, hemv2:    y := alpha*A*(head_x + tail_x) + beta*y        triangle is stored in full storage
//
// Special values: symmetric.h. With n < 1, or alpha = 0 and beta = 1, nothing is checked either. Bad: see the checks of
// each family; symv, symv2, hemv2 take any order and uplo.
#include "xblas/symmetric.h"

namespace orv::xblas {
namespace {

bool refuses(Routine routine, i64 n, i64 lda, i64 incx, i64 incy)
{
    if (lda < n) return routine.bad(3, n); // the position and the value of n
    if (incx == 0) return routine.bad(8, incx);
    if (incy == 0) return routine.bad(11, incy);
    return false;
}
bool refuses2(Routine routine, i64 n, i64 lda, i64 incx, i64 incy)
{
    if (lda < n) return routine.bad(6, lda);
    if (incx == 0) return routine.bad(9, incx);
    if (incy == 0) return routine.bad(12, incy);
    return false;
}

template <class T, class A, class B>
[[gnu::noinline]] void symv(Routine routine, Order order, Uplo uplo, i64 n, T alpha, const A* a, i64 lda, const B* x,
                            i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec) || nothing_to_do(n, alpha, beta) || refuses(routine, n, lda, incx, incy)) return;
    multiply_or_scale<T, A, B>(prec, n, Rows::full(Kind::symmetric, order, uplo, n, lda), alpha, a, x, nullptr, incx,
                               beta, y, incy);
}

template <class T, class A, class B>
void hemv(Routine routine, Order order, Uplo uplo, i64 n, T alpha, const A* a, i64 lda, const B* x, i64 incx, T beta,
          T* y, i64 incy, Prec prec)
{
    if (!known(prec)) return void(routine.bad(12, prec));
    if (nothing_to_do(n, alpha, beta)) return;
    if (!known(order)) return void(routine.bad(1, order));
    if (!known(uplo)) return void(routine.bad(2, uplo));
    if (refuses(routine, n, lda, incx, incy)) return;
    multiply_or_scale<T, A, B>(prec, n, Rows::full(Kind::hermitian, order, uplo, n, lda), alpha, a, x, nullptr, incx,
                               beta, y, incy, true);
}

template <Kind kind, class T, class A, class B>
[[gnu::noinline]] void both_parts(Routine routine, Order order, Uplo uplo, i64 n, T alpha, const A* a, i64 lda,
                                  const B* x_head, const B* x_tail, i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec) || nothing_to_do(n, alpha, beta) || refuses2(routine, n, lda, incx, incy)) return;
    multiply_or_scale(prec, n, Rows::full(kind, order, uplo, n, lda), alpha, a, x_head, x_tail, incx, beta, y, incy,
                      kind == Kind::hermitian);
}
template <class T, class A, class B> constexpr auto& symv2 = both_parts<Kind::symmetric, T, A, B>;
template <class T, class A, class B> constexpr auto& hemv2 = both_parts<Kind::hermitian, T, A, B>;

} // namespace

XBLAS_MATRICES(symv, _x)
XBLAS_MATRICES(symv2, _x)
XBLAS_MATRICES(hemv, )
XBLAS_MATRICES(hemv2, _x)

} // namespace orv::xblas
