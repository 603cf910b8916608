// Public routines of the core that kernels call, through symbols that a program may replace. The arguments of those
// that have a kernel behind them are the kernel's; what they return is for other callers.
#pragma once

#include "frame/kernels/blas.h"
#include "frame/kernels/trans.h"

namespace orv {

namespace kernels::dft {
struct DftiNode;
}

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

// Fourier transforms for kernels that need one, by the numbers of frame/kernels/dft_node.h; what they return is a
// NodeStatus. A transform is a node; free takes it back and clears the handle. Lengths of more than one dimension are
// those of an array stored by rows: the last is the innermost one. In place the output is not looked at.
using Handle = kernels::dft::DftiNode*;
enum DftiParameter : i32 {
    dfti_forward_scale = 4, // a double
    dfti_backward_scale = 5,
    dfti_conjugate_even_storage = 10, // an i32, as all below
    dfti_placement = 11,
    dfti_packed_format = 21,
    dfti_number_of_user_threads = 26
};
using CreateDfti1d = i64(Handle* handle, i32 domain, i64 length);
using CreateDftiMd = i64(Handle* handle, i32 domain, i32 rank, const i64* lengths);
using SetDfti = i64(Handle handle, i32 parameter, ...);
using CommitDfti = i64(Handle handle);
using ComputeDfti = i64(Handle handle, void* input, void* output);
using FreeDfti = i64(Handle* handle);
using DftiErrorClass = i64(i64 status, i64 error_class); // 1: the status is of that class, which is a NodeStatus

// The same for transforms of one dimension, in place, with packed spectra.
using CreateDftiExternal = i64(Handle* handle, i32 precision, i32 domain, i32 rank, i64 length);
using SetDftiExternal = i64(Handle handle, i32 parameter, i64 value);
template <class R> using ComputeDftiExternal = i64(Handle handle, R* data);
using DftiErrorMessage = const char*(i64 status);

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
imports::CreateDfti1d orv_dft_dfticreatedescriptor_s_1d, orv_dft_dfticreatedescriptor_d_1d;
imports::CreateDftiMd orv_dft_dfticreatedescriptor_s_md, orv_dft_dfticreatedescriptor_d_md;
imports::SetDfti orv_dft_dftisetvalue;
imports::CommitDfti orv_dft_dfticommitdescriptor, orv_dft_dfti_commit_descriptor_external;
imports::ComputeDfti orv_dft_dfticomputeforward, orv_dft_dfticomputebackward;
imports::FreeDfti orv_dft_dftifreedescriptor, orv_dft_dfti_free_descriptor_external;
imports::DftiErrorClass orv_dft_dftierrorclass;
imports::CreateDftiExternal orv_dft_dfti_create_descriptor_s_1d, orv_dft_dfti_create_descriptor_d_1d;
imports::SetDftiExternal orv_dft_dfti_set_value_intval;
imports::ComputeDftiExternal<float> orv_dft_dfti_compute_forward_s, orv_dft_dfti_compute_backward_s;
imports::ComputeDftiExternal<double> orv_dft_dfti_compute_forward_d, orv_dft_dfti_compute_backward_d;
imports::DftiErrorMessage orv_dft_dfti_error_message_external;
#undef ORV_IMPORTS
#undef ORV_REAL_IMPORTS
#undef ORV_COMPLEX_IMPORTS
}

} // namespace orv
