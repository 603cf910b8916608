// The kernel tables, exported as data.
#pragma once

#include "blas/gemm/gemm.h"
#include "blas/gemm/sizes.h"

namespace orv::gemm {

// All kernels of a type, and the indices of the best: entry 1 on the processor with code 0x42, entry 0 elsewhere.
#define ORV_GEMM_TABLES(t, T)                                                                                          \
    ORV_EXPORT const Record<T> ORV_TABLE(t##_all_gemm_ker)[sizes<T>.n_kernels];                                        \
    ORV_EXPORT const i32 ORV_TABLE(t##_opt_gemm_ker)[2];                                                               \
    inline const Record<T>* all_kernels(const Desc<T>*) { return ORV_TABLE(t##_all_gemm_ker); }                        \
    inline const i32* best_kernels(const Desc<T>*) { return ORV_TABLE(t##_opt_gemm_ker); }

ORV_GEMM_TABLES(s, float)
ORV_GEMM_TABLES(d, double)
ORV_GEMM_TABLES(c, cpx<float>)
ORV_GEMM_TABLES(z, cpx<double>)
#undef ORV_GEMM_TABLES

} // namespace orv::gemm
