// Public routines of the core that kernels call, through symbols that a program may replace. Their arguments are those
// of the kernels behind them; what they return is for other callers.
#pragma once

#include "frame/kernels/blas.h"
#include "frame/kernels/trans.h"

namespace orv {

extern "C" {
#define ORV_IMPORTS(t, T)                                                                                              \
    kernels::blas::Axpy<T> orv_blas_##t##axpy;                                                                         \
    kernels::blas::Gemv<T> orv_blas_##t##gemv;                                                                         \
    kernels::trans::Omatcopy2<T> orv_trans_orv_##t##omatcopy2_par;                                                     \
    int orv_trans_orv_##t##imatcopy_square_t_par(u64 n, T* ab, u64 ld);
ORV_IMPORTS(s, float)
ORV_IMPORTS(d, double)
ORV_IMPORTS(c, cpx<float>)
ORV_IMPORTS(z, cpx<double>)
#undef ORV_IMPORTS
}

} // namespace orv
