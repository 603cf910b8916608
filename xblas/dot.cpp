// r := alpha * sum(op(x[i]) * y[i]) + beta * r,  op(x) = x, or its conjugate for conj = 191
//
// n elements each, added in their order. r, x and y are read whatever alpha and beta are: NaN in them reaches the
// result. Only with beta = 1 and (n = 0 or alpha = 0) nothing happens. Bad: n < 0, incx = 0, incy = 0.
#include "xblas/closing.h"
#include "xblas/members.h"

namespace orv::xblas {
namespace {

template <class T, class A, class B>
void dot(Routine routine, Conj conj, i64 n, T alpha, const A* x, i64 incx, T beta, const B* y, i64 incy, T* r,
         Prec prec)
{
    if (!known(prec)) return;
    if (n < 0) return void(routine.bad(2, n));
    if (incx == 0) return void(routine.bad(5, incx));
    if (incy == 0) return void(routine.bad(8, incy));
    if (beta == one<T> && (n == 0 || alpha == zero<T>)) return;
    with_arithmetic<T>(prec, [&]<class P>(P) {
        sum_of<typename P::One, A, B> sum{};
        add_products<P>(n, Shared<A>{first(x, n, incx), incx, 0, sign(conj == Conj::conjugate)},
                        Several<B>{first(y, n, incy), incy}, sum);
        Closing<P, T>(all_terms, alpha, beta)(sum, r);
    });
}

} // namespace

XBLAS_VECTORS(dot, _x)

} // namespace orv::xblas
