// Matrices by diagonals: column k of val has the diagonal of distance idiag[k] from the main one, above it if positive,
// with the element of row i at val[i + k*lval]. What a diagonal has outside the matrix is not read.
#pragma once

#include "spblas/vectors.h"

namespace orv::ORV_SPBLAS {

template <class T> struct Dia {
    const T* val;
    i64 lval;
    const Int* distance;
    Int count;
    ORV_INLINE const T* at(i64 row, i64 diagonal) const { return val + row + diagonal * lval; }
};

template <class T> ORV_INLINE vec<T> product(vec<T> a, vec<T> x)
{
    if constexpr (is_complex<T>)
        return add_sub(lane_product(real_parts(a), x), lane_product(imaginary_parts(a), swap_neighbours(x)));
    else return a * x;
}

// y[r] += (alpha*a[r])*x[r], the entries conjugated or not; eight rows a step.
template <class T> [[gnu::noinline]] void add_products(i64 n, T alpha, bool conjugates, const T* a, const T* x, T* y)
{
    constexpr i64 lanes = vec<T>::lanes;
    const factor<T> by(alpha, conjugates);
    i64 r = 0;
    const auto add = [&](i64 at) ORV_INLINE_LAMBDA {
        storeu(y + at, loadu(y + at) + product(by * loadu(a + at), loadu(x + at)));
    };
    for (; r + 8 <= n; r += 8)
#pragma GCC unroll 8
        for (i64 l = 0; l < 8; l += lanes) add(r + l);
    for (; r + lanes <= n; r += lanes) add(r);
    for (; r < n; ++r) y[r] += alpha * conjugate_if(conjugates, a[r]) * x[r];
}

} // namespace orv::ORV_SPBLAS
