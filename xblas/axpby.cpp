// axpby:  y := alpha*x + beta*y          waxpby:  w := alpha*x + beta*y
//
// n elements, each of the result from one x and one y, which are read whatever alpha and beta are. w may be x or y.
// Nothing happens for n < 1; axpby also returns for alpha = 0 with beta = 1. Bad, tested before that: a stride of 0.
#include "xblas/closing.h"
#include "xblas/members.h"

namespace orv::xblas {
namespace {

// y*beta + x*alpha. The real part sums two differences of products; the imaginary part takes the four products one
// after the other. In extra precision each complex product is complete before they are added.
template <class Y, class F, class X> ORV_INLINE auto combined(Y y, F beta, X x, F alpha)
{
    const auto u = product(y, beta), t = product(x, alpha);
    if constexpr (!is_complex<F>) return rounded(u + t);
    else if constexpr (is_complex<X> && std::is_arithmetic_v<real_t<F>>)
        return F{u.re + t.re, u.im + x.im * alpha.re + x.re * alpha.im};
    else return cpx<decltype(rounded(u.re + t.re))>{rounded(u.re + t.re), rounded(u.im + t.im)};
}

template <class N, class T, class A, class B>
[[gnu::noinline]] void combine(i64 n, T alpha, const A* x, i64 incx, T beta, const B* y, i64 incy, T* w, i64 incw)
{
    const auto a = factor<N>(&alpha), b = factor<N>(&beta);
    x = first(x, n, incx);
    y = first(y, n, incy);
    w = first(w, n, incw);
    const auto next = [=](const A* xi, const B* yi, T* wi)
                          ORV_INLINE_LAMBDA { *wi = stored<T>(combined(factor<N>(yi), b, factor<N>(xi), a)); };
    // Neighbours in memory: the compiler takes several elements at once, each in the same operations. w is x, or y, or
    // neither.
    if (incx == 1 && incy == 1 && incw == 1)
#pragma omp simd
        for (i64 i = 0; i < n; ++i) next(x + i, y + i, w + i);
    else
        for (i64 i = 0; i < n; ++i, x += incx, y += incy, w += incw) next(x, y, w);
}

template <class T, class A, class>
void axpby(Routine routine, i64 n, T alpha, const A* x, i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec)) return;
    if (incx == 0) return void(routine.bad(4, incx));
    if (incy == 0) return void(routine.bad(7, incy));
    if (n < 1 || (alpha == zero<T> && beta == one<T>)) return;
    with_arithmetic<T>(prec, [&]<class P>(P) { combine<typename P::One>(n, alpha, x, incx, beta, y, incy, y, incy); });
}

template <class T, class A, class B>
void waxpby(Routine routine, i64 n, T alpha, const A* x, i64 incx, T beta, const B* y, i64 incy, T* w, i64 incw,
            Prec prec)
{
    if (!known(prec)) return;
    if (incx == 0) return void(routine.bad(4, incx));
    if (incy == 0) return void(routine.bad(7, incy));
    if (incw == 0) return void(routine.bad(9, incw));
    if (n < 1) return;
    with_arithmetic<T>(prec, [&]<class P>(P) { combine<typename P::One>(n, alpha, x, incx, beta, y, incy, w, incw); });
}

} // namespace

XBLAS_VECTORS(axpby, _x)
XBLAS_VECTORS(waxpby, _x)

} // namespace orv::xblas
