// y := alpha*A*x + beta*y for symmetric and Hermitian A in any storage.
//
// Each element is one sum over the columns in their order. alpha = 0 multiplies y by beta, 0 included, so that NaN in y
// stays; otherwise beta = 0 sets y without reading it.
#pragma once

#include "xblas/members.h"
#include "xblas/rows.h"

namespace orv::xblas {

enum class Kind { symmetric, hermitian };

template <class T> constexpr bool nothing_to_do(i64 n, T alpha, T beta)
{
    return n < 1 || (alpha == zero<T> && beta == one<T>);
}

// The rows of a matrix of this kind. What lies before the diagonal of an upper Hermitian matrix is conjugated.
template <Kind kind, class Storage> auto rows_of(const Storage& half, Uplo uplo)
{
    if constexpr (kind == Kind::symmetric) return SymmetricRows<Storage>{half};
    else return HermitianRows<Storage>{half, uplo != Uplo::lower};
}

// N: the arithmetic of beta*y where alpha is 0.
template <class P, class N, class Rows, class T, class A, class... B>
void multiply_or_scale(i64 n, const Rows& rows, T alpha, const A* a, i64 incx, T beta, T* y, i64 incy, const B*... x)
{
    y = first(y, n, incy);
    if (alpha == zero<T>) return scale<N>(n, beta, y, incy);
    multiply(n, rows, a, incx, Closing<P, T>(product_terms<P, sizeof...(x)>(alpha, beta), alpha, beta), y, incy,
             first(x, n, incx)...);
}

} // namespace orv::xblas
