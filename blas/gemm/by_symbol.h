// The products of this folder as other kernels call them: by way of their symbols.
#pragma once

#include "blas/gemm/driver.h"

namespace orv::gemm {

using kernels::blas::GemmPar;

template <class T> inline constexpr Gemm<T>* whole_product = nullptr;
template <class T> inline constexpr GemmPar<T>* product_in_blocks = nullptr;
#define ORV_BY_SYMBOL(t, T)                                                                                            \
    template <> inline constexpr Gemm<T>* whole_product<T> = kernels::blas::BLAS(x##t##gemm);                          \
    template <> inline constexpr GemmPar<T>* product_in_blocks<T> = kernels::blas::BLAS(x##t##gemm_par);
ORV_BY_SYMBOL(s, float)
ORV_BY_SYMBOL(d, double)
ORV_BY_SYMBOL(c, cpx<float>)
ORV_BY_SYMBOL(z, cpx<double>)
#undef ORV_BY_SYMBOL

} // namespace orv::gemm
