// y := alpha*A*x + beta*y for symmetric and Hermitian A in any storage.
//
// Each element is one sum over the columns in their order. alpha = 0 multiplies y by beta, 0 included, so that NaN in y
// stays; otherwise beta = 0 sets y without reading it.
#pragma once

#include "xblas/members.h"
#include "xblas/products.h"

namespace orv::xblas {

template <class T> constexpr bool nothing_to_do(i64 n, T alpha, T beta)
{
    return n < 1 || (alpha == zero<T> && beta == one<T>);
}

// tail: of x, or null. scales_in_extra: where alpha is 0, extra precision scales y in extra precision.
template <class T, class A, class B>
[[gnu::noinline]] void multiply_or_scale(Prec prec, i64 n, const Rows& rows, T alpha, const A* a, const B* x,
                                         const B* tail, i64 incx, T beta, T* y, i64 incy, bool scales_in_extra = false)
{
    y = first(y, n, incy);
    with_arithmetic<T>(prec, [&]<class P>(P) {
        if (alpha == zero<T>) {
            if constexpr (is_complex<T>) // all that is Hermitian
                if (scales_in_extra) return scale<typename P::One>(n, beta, y, incy);
            return scale<Plain<typename P::number>>(n, beta, y, incy);
        }
        const Terms terms = tail != nullptr ? product_terms<P, 2>(alpha, beta) : product_terms<P, 1>(alpha, beta);
        multiply<P>(n, rows, a, first(x, n, incx), tail != nullptr ? first(tail, n, incx) : nullptr, incx,
                    Closing<P, T>(terms, alpha, beta), y, incy);
    });
}

} // namespace orv::xblas
