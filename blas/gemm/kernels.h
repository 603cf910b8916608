// The packing routines and register kernels, by exported name. Their contract stands in gemm.h.
#pragma once

#include "blas/gemm/gemm.h"
#include "frame/kernels/blas.h"

namespace orv::gemm {

#define ORV_GEMM_KERNELS(t, T)                                                                                         \
    ORV_EXPORT CopyA<T> BLAS(t##gemm_copyan), BLAS(t##gemm_copyat);                                                    \
    ORV_EXPORT CopyB<T> BLAS(t##gemm_copybn), BLAS(t##gemm_copybt);                                                    \
    ORV_EXPORT Ker<T> BLAS(t##gemm_ker0), BLAS(t##gemm_ker0_pst);
#define ORV_GEMM_REAL_KERNELS(t, T)                                                                                    \
    ORV_GEMM_KERNELS(t, T)                                                                                             \
    ORV_EXPORT CopyA<T> BLAS(t##gemm_copya_ext);                                                                       \
    ORV_EXPORT CopyB<T> BLAS(t##gemm_copyb_ext);
#define ORV_GEMM_COMPLEX_KERNELS(t, T)                                                                                 \
    ORV_GEMM_KERNELS(t, T)                                                                                             \
    ORV_EXPORT CopyA<T> BLAS(t##gemm_copyac);                                                                          \
    ORV_EXPORT CopyB<T> BLAS(t##gemm_copybc);

ORV_GEMM_REAL_KERNELS(s, float)
ORV_GEMM_REAL_KERNELS(d, double)
ORV_GEMM_COMPLEX_KERNELS(c, cpx<float>)
ORV_GEMM_COMPLEX_KERNELS(z, cpx<double>)
ORV_EXPORT Ker<double> BLAS(dgemm_ker1);

#undef ORV_GEMM_KERNELS
#undef ORV_GEMM_REAL_KERNELS
#undef ORV_GEMM_COMPLEX_KERNELS

} // namespace orv::gemm
