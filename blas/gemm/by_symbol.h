// The products of this folder as other kernels call them: by way of their symbols.
#pragma once

#include "blas/gemm/driver.h"
#include "frame/kernels/blas.h"

namespace orv::gemm {

template <class T> using GemmPar = int(ORV_GEMM_ARGUMENTS(T), i32 version, Desc<T>* desc);

template <class T> inline constexpr Gemm<T>* whole_product = nullptr;
template <class T> inline constexpr GemmPar<T>* product_in_blocks = nullptr;
#define ORV_BY_SYMBOL(t, T)                                                                                            \
    ORV_EXPORT Gemm<T> BLAS(x##t##gemm);                                                                               \
    ORV_EXPORT GemmPar<T> BLAS(x##t##gemm_par);                                                                        \
    template <> inline constexpr Gemm<T>* whole_product<T> = BLAS(x##t##gemm);                                         \
    template <> inline constexpr GemmPar<T>* product_in_blocks<T> = BLAS(x##t##gemm_par);
ORV_BY_SYMBOL(s, float)
ORV_BY_SYMBOL(d, double)
ORV_BY_SYMBOL(c, cpx<float>)
ORV_BY_SYMBOL(z, cpx<double>)
#undef ORV_BY_SYMBOL

} // namespace orv::gemm
