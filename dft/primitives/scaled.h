// The choice of the worker by the class of the scale factor. Floating types have no factor.
#pragma once

#include "dft/primitives/operations.h"

namespace orv::dft {

// The largest factor with which a product can be other than zero: the largest one is 2^(2*bits - 2), of unsigned
// numbers nearly 2^(2*bits), and each part of a complex product is the sum of two. Half of 1 goes to even, which is 0.
template <class T>
inline constexpr int last_factor = 2 * bits_of<T> - (lowest<real_t<T>> < 0 ? 2 : 0) + (is_complex<T> ? 1 : 0);

template <class Op, class A, class B, class T> void scaled(A a, B b, T* dst, i64 n, i32 factor)
{
    if constexpr (is_floating<T>) work<Op, Law::factor>(a, b, dst, n);
    else if (factor > last_factor<T>) clear(dst, n);
    else if (factor > 1) work<Op, Law::factor_PosSfs>(a, b, dst, n, factor);
    else if (factor == 1) work<Op, Law::factor_1Sfs>(a, b, dst, n);
    else if (factor == 0) work<Op, Law::factor>(a, b, dst, n);
    else if (factor > -bits_of<T>) work<Op, Law::factor_NegSfs>(a, b, dst, n, factor);
    else work<Op, Law::factor_Bound>(a, b, dst, n);
}

} // namespace orv::dft
