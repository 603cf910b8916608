// The general product as the other products of matrices call it: by way of its symbol, arguments by value.
#pragma once

#include "blas/gemm/by_symbol.h"

namespace orv::level3 {

// Columns in the next sweep where `left` are left, sweeps being at most `most` wide. The last one gets eight of those
// before it where it would have fewer: they would cost as much as many, and their products would go another way and
// round differently.
constexpr i64 sweep_of(i64 left, i64 most) { return left <= most ? left : left < most + 8 ? most - 8 : most; }

// C(0:m, 0:n) := alpha*op(A)*op(B) + beta*C.
template <class T>
void multiply(char transa, char transb, i64 m, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* b, i64 ldb, T beta,
              T* c, i64 ldc)
{
    if (m > 0 && n > 0) gemm::whole_product<T>(&transa, &transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
}

} // namespace orv::level3
