// Kernels of LAPACK's support.
#pragma once

#include "frame/kernels/prototype.h"

#define LAPACK_PS(name) ORV_KERNEL(lapack_ps, name)

namespace orv::kernels::lapack_ps {

// ---- Small factorisations and solves

template <class T> using Potrf = void(const char* uplo, const i64* n, T* a, const i64* lda, i64* info);
template <class T> using Sytrf = void(const char* uplo, const i64* n, T* a, const i64* lda, i64* ipiv, i64* info);
template <class T> using Getc2 = void(const i64* n, T* a, const i64* lda, i64* ipiv, i64* jpiv, i64* info);
template <class T>
using Gtsv = void(const i64* n, const i64* nrhs, T* dl, T* d, T* du, T* b, const i64* ldb, i64* info);
template <class T>
using Gtts2 = void(const i64* itrans, const i64* n, const i64* nrhs, const T* dl, const T* d, const T* du, const T* du2,
                   const i64* ipiv, T* b, const i64* ldb);
template <class T> using Ptts2 = void(const i64* n, const i64* nrhs, const T* d, const T* e, T* b, const i64* ldb);
template <class T>
using ComplexPtts2 = void(const i64* iuplo, const i64* n, const i64* nrhs, const real_t<T>* d, const T* e, T* b,
                          const i64* ldb);
template <class T> using Dttrfb = void(const i64* n, T* dl, T* d, const T* du, i64* info);
template <class T>
using Dttrsb = void(const char* trans, const i64* n, const i64* nrhs, const T* dl, const T* d, const T* du, T* b,
                    const i64* ldb, i64* info);
template <class T>
using Dtsvb = void(const i64* n, const i64* nrhs, T* dl, T* d, const T* du, T* b, const i64* ldb, i64* info);

// ---- Panels

template <class T>
using SymvNb = void(const char* uplo, const i64* n, const i64* nb, const T* alpha, const T* a, const i64* lda,
                    const T* x, const i64* strides, const T* beta, T* y, const i64* incy);
template <class T>
using Syr2Nb = void(const char* uplo, const i64* n, const i64* nb, const T* alpha, const T* x, const i64* strides,
                    const T* y, const i64* incy, T* a, const i64* lda);
template <class T>
using Syr2kNb = void(const char* uplo, const char* trans, const i64* n, const i64* k, const i64* nb, const T* alpha,
                     const T* a, const i64* lda, const T* b, const i64* ldb, const real_t<T>* beta, T* c,
                     const i64* ldc);

// ---- Norms, copies, updates

template <class T>
using Lange = real_t<T>(const char* norm, const i64* m, const i64* n, const T* a, const i64* lda, real_t<T>* work);
template <class T>
using Lansy = real_t<T>(const char* norm, const char* uplo, const i64* n, const T* a, const i64* lda, real_t<T>* work);
template <class T>
using Lacpy2 = void(const char* uplo, const i64* m, const i64* n, const T* a, const i64* lda, const T* alpha, T* b,
                    const i64* ldb, const T* beta);
template <class T>
using Lacpy3 = void(const char* uplo, const i64* m, const i64* n, const T* a, const i64* lda, const T* alpha, T* b,
                    const T* beta);
template <class T> using Spr = void(const char* uplo, const i64* n, const T* alpha, const T* x, const i64* incx, T* a);

// ---- Rotations, reflectors, the secular solver

template <class T>
using Lasr = void(const i64* m, const i64* n, const real_t<T>* c, const real_t<T>* s, T* a, const i64* lda);
template <class T>
using Rot2 = void(const i64* n, T* x, const i64* incx, T* y, const i64* incy, const T* tau, const T* v);
template <class T>
using Rot3 = void(const i64* n, T* x, const i64* incx, T* y, const i64* incy, T* z, const i64* incz, const T* tau,
                  const T* v1, const T* v2);
template <class T>
using Lartv = void(const i64* n, T* x, const i64* incx, T* y, const i64* incy, const real_t<T>* c, const T* s,
                   const i64* incc);
template <class T>
using Larfx = void(const char* side, const i64* m, const i64* n, const T* v, const T* tau, T* c, const i64* ldc,
                   T* work);
template <class T>
using Lasd3 = void(const i64* nl, const i64* nr, const i64* sqre, const i64* k, T* d, T* q, const i64* ldq, T* dsigma,
                   T* u, const i64* ldu, const T* u2, const i64* ldu2, T* vt, const i64* ldvt, T* vt2, const i64* ldvt2,
                   const i64* idxc, const i64* ctot, T* z, i64* info);
template <class T>
using Lasd4 = void(const i64* n, const i64* i, const T* d, const T* z, T* delta, const T* rho, T* sigma, T* work,
                   i64* info);

#define ORV_NAME(name, ...) ORV_PROTOTYPE(lapack_ps, name, name, __VA_ARGS__)
#include "frame/kernels/lapack_ps.def"
#undef ORV_NAME

} // namespace orv::kernels::lapack_ps
