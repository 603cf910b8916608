// The general product as the other products of matrices call it: by way of its symbol, arguments by value.
#pragma once

#include "blas/gemm/driver.h"
#include "frame/symbol.h"

namespace orv::gemm {

ORV_EXPORT Gemm<float> BLAS(xsgemm);
ORV_EXPORT Gemm<double> BLAS(xdgemm);
ORV_EXPORT Gemm<cpx<float>> BLAS(xcgemm);
ORV_EXPORT Gemm<cpx<double>> BLAS(xzgemm);

} // namespace orv::gemm

namespace orv::level3 {

template <class T> inline constexpr gemm::Gemm<T>* whole_product = nullptr;
template <> inline constexpr gemm::Gemm<float>* whole_product<float> = gemm::BLAS(xsgemm);
template <> inline constexpr gemm::Gemm<double>* whole_product<double> = gemm::BLAS(xdgemm);
template <> inline constexpr gemm::Gemm<cpx<float>>* whole_product<cpx<float>> = gemm::BLAS(xcgemm);
template <> inline constexpr gemm::Gemm<cpx<double>>* whole_product<cpx<double>> = gemm::BLAS(xzgemm);

// C(0:m, 0:n) := alpha*op(A)*op(B) + beta*C.
template <class T>
void multiply(char transa, char transb, i64 m, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* b, i64 ldb, T beta,
              T* c, i64 ldc)
{
    if (m > 0 && n > 0) whole_product<T>(&transa, &transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc);
}

} // namespace orv::level3
