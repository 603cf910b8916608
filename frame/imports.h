// Public routines of the core that kernels call, through symbols that a program may replace. The arguments of those
// that have a kernel behind them are the kernel's; what they return is for other callers.
#pragma once

#include "frame/kernels/blas.h"
#include "frame/kernels/trans.h"

namespace orv {

namespace imports { // what no kernel has

template <class T> using Lamch = T(const char* what);
template <class T> using Labad = void(T* small, T* large);
template <class T> using Lamc3 = T(const T* a, const T* b);
template <class T> using Lassq = void(const i64* n, const T* x, const i64* incx, real_t<T>* scale, real_t<T>* sumsq);
template <class T>
using Lascl = void(const char* type, const i64* kl, const i64* ku, const T* from, const T* to, const i64* m,
                   const i64* n, T* a, const i64* lda, i64* info);
template <class T>
using Lacpy = void(const char* uplo, const i64* m, const i64* n, const T* a, const i64* lda, T* b, const i64* ldb);
template <class T> using Lasd5 = void(const i64* i, const T* d, const T* z, T* delta, const T* rho, T* sigma, T* work);
template <class T> // orgati: a Fortran logical, which is as wide as an integer
using Laed6 = void(const i64* iteration, const i64* orgati, const T* rho, const T* d, const T* z, const T* f_at_0,
                   T* tau, i64* info);
template <class T> using ImatcopySquarePar = int(u64 n, T* ab, u64 ld);

} // namespace imports

extern "C" {
#define ORV_IMPORTS(t, T)                                                                                              \
    kernels::blas::Axpy<T> orv_blas_##t##axpy;                                                                         \
    kernels::blas::Swap<T> orv_blas_##t##swap;                                                                         \
    kernels::blas::Gemv<T> orv_blas_##t##gemv;                                                                         \
    imports::Lassq<T> orv_lapack_##t##lassq;                                                                           \
    kernels::trans::Omatcopy2<T> orv_trans_orv_##t##omatcopy2_par;                                                     \
    imports::ImatcopySquarePar<T> orv_trans_orv_##t##imatcopy_square_t_par;
#define ORV_REAL_IMPORTS(t, T)                                                                                         \
    ORV_IMPORTS(t, T)                                                                                                  \
    kernels::blas::Copy<T> orv_blas_##t##copy;                                                                         \
    kernels::blas::Scal<T> orv_blas_##t##scal;                                                                         \
    kernels::blas::Dot<T> orv_blas_##t##dot;                                                                           \
    kernels::blas::Norm<T> orv_blas_##t##nrm2;                                                                         \
    kernels::blas::Ger<T> orv_blas_##t##ger;                                                                           \
    kernels::blas::Gemm<T> orv_blas_##t##gemm;                                                                         \
    imports::Lamch<T> orv_lapack_##t##lamch;                                                                           \
    imports::Labad<T> orv_lapack_##t##labad;                                                                           \
    imports::Lamc3<T> orv_lapack_##t##lamc3;                                                                           \
    imports::Lascl<T> orv_lapack_##t##lascl;                                                                           \
    imports::Lacpy<T> orv_lapack_##t##lacpy;                                                                           \
    imports::Lasd5<T> orv_lapack_##t##lasd5;                                                                           \
    imports::Laed6<T> orv_lapack_##t##laed6;
#define ORV_COMPLEX_IMPORTS(t, T)                                                                                      \
    ORV_IMPORTS(t, T)                                                                                                  \
    kernels::blas::ComplexDot<T> orv_blas_##t##dotc;                                                                   \
    kernels::blas::Ger<T> orv_blas_##t##geru;
ORV_REAL_IMPORTS(s, float)
ORV_REAL_IMPORTS(d, double)
ORV_COMPLEX_IMPORTS(c, cpx<float>)
ORV_COMPLEX_IMPORTS(z, cpx<double>)
kernels::blas::RealScal<cpx<float>> orv_blas_csscal;
kernels::blas::RealScal<cpx<double>> orv_blas_zdscal;
kernels::blas::Ger<cpx<float>> orv_blas_cgerc;
kernels::blas::Syr<float> orv_blas_ssyr;
kernels::blas::Syr<cpx<double>> orv_blas_zher;
#undef ORV_IMPORTS
#undef ORV_REAL_IMPORTS
#undef ORV_COMPLEX_IMPORTS
}

} // namespace orv
