// r := sum(x[i])
//
// n elements, added in their order, in 64 bits whatever their type, or in extra precision. n = 0 gives 0.
// Bad: n < 0, incx = 0.
#include "xblas/closing.h"
#include "xblas/members.h"
#include "xblas/pairs.h"

namespace orv::xblas {
namespace {

template <class Sum, class R> void add_elements(i64 n, const R* x, i64 incx, R* r)
{
    Sum sum{};
    in_pairs<true>(n, [&]() ORV_INLINE_LAMBDA {
        sum = sum + static_cast<double>(*x);
        x += incx;
    });
    if constexpr (std::is_same_v<Sum, double>) *r = static_cast<R>(sum);
    else *r = static_cast<R>(sum.h);
}
template <class Sum, class R> void add_elements(i64 n, const cpx<R>* x, i64 incx, cpx<R>* r)
{
    Sum re{}, im{};
    in_pairs<false>(n, [&]() ORV_INLINE_LAMBDA {
        re = re + static_cast<double>(x->re);
        im = im + static_cast<double>(x->im);
        x += incx;
    });
    if constexpr (std::is_same_v<Sum, double>) *r = {static_cast<R>(re), static_cast<R>(im)};
    else *r = {static_cast<R>(re.h), static_cast<R>(im.h)};
}

template <class T, class, class> void sum(Routine routine, i64 n, const T* x, i64 incx, T* r, Prec prec)
{
    if (!known(prec)) return;
    if (n < 0) return void(routine.bad(1, n));
    if (incx == 0) return void(routine.bad(3, incx));
    x = first(x, n, incx);
    if (prec == Prec::extra) add_elements<dd<double>>(n, x, incx, r);
    else add_elements<double>(n, x, incx, r);
}

} // namespace

XBLAS_VECTORS(sum, _x)

} // namespace orv::xblas
