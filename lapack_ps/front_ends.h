// The public routines that kernels of this folder ask for, overloaded by element type: front::gemv and its kin. Each
// goes through the exported symbol, so a program can put another routine in its place, and may go parallel.
//
// Scalars and sizes are passed by value here and by pointer there. Option words are handed on as they are: only their
// first letter counts. A Fortran logical is as wide as an integer. Sums of products return their result.
#pragma once

#include "frame/imports.h"

namespace orv::front {

// FRONT(result, symbol, name, (parameters by value), (arguments))
#define FRONT(result, symbol, name, parameters, arguments)                                                             \
    inline result name parameters { return symbol arguments; }

#define FOR_REALS(F) F(s, float) F(d, double)
#define FOR_COMPLEX(F) F(c, cpx<float>) F(z, cpx<double>)
#define FOR_ALL(F) FOR_REALS(F) FOR_COMPLEX(F)

// y := x, and x <-> y.
#define FRONT_COPY(t, T)                                                                                               \
    FRONT(void, orv_blas_##t##copy, copy, (i64 n, const T* x, i64 incx, T* y, i64 incy), (&n, x, &incx, y, &incy))
#define FRONT_SWAP(t, T)                                                                                               \
    FRONT(void, orv_blas_##t##swap, swap, (i64 n, T * x, i64 incx, T * y, i64 incy), (&n, x, &incx, y, &incy))
FOR_REALS(FRONT_COPY)
FOR_ALL(FRONT_SWAP)

// y += alpha*x, and x := alpha*x with a real alpha.
#define FRONT_AXPY(t, T)                                                                                               \
    FRONT(void, orv_blas_##t##axpy, axpy, (i64 n, T alpha, const T* x, i64 incx, T* y, i64 incy),                      \
          (&n, &alpha, x, &incx, y, &incy))
#define FRONT_SCAL(t, T)                                                                                               \
    FRONT(void, orv_blas_##t##scal, scal, (i64 n, real_t<T> alpha, T * x, i64 incx), (&n, &alpha, x, &incx))
FOR_ALL(FRONT_AXPY)
FOR_REALS(FRONT_SCAL)
FRONT_SCAL(cs, cpx<float>)
FRONT_SCAL(zd, cpx<double>)

// The sum of conj(x)*y, and the Euclidean norm.
#define FRONT_DOT(t, T)                                                                                                \
    FRONT(T, orv_blas_##t##dot, dotc, (i64 n, const T* x, i64 incx, const T* y, i64 incy), (&n, x, &incx, y, &incy))
#define FRONT_DOTC(t, T)                                                                                               \
    inline T dotc(i64 n, const T* x, i64 incx, const T* y, i64 incy)                                                   \
    {                                                                                                                  \
        T result;                                                                                                      \
        orv_blas_##t##dotc(&result, &n, x, &incx, y, &incy);                                                           \
        return result;                                                                                                 \
    }
#define FRONT_NRM2(t, T) FRONT(T, orv_blas_##t##nrm2, nrm2, (i64 n, const T* x, i64 incx), (&n, x, &incx))
FOR_REALS(FRONT_DOT)
FOR_COMPLEX(FRONT_DOTC)
FOR_REALS(FRONT_NRM2)

// y := alpha*op(A)*x + beta*y.
#define FRONT_GEMV(t, T)                                                                                               \
    FRONT(                                                                                                             \
        void, orv_blas_##t##gemv, gemv,                                                                                \
        (const char* trans, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy), \
        (trans, &m, &n, &alpha, a, &lda, x, &incx, &beta, y, &incy))
FOR_ALL(FRONT_GEMV)

// A += alpha*x*y^T (geru), A += alpha*x*y^H (gerc); of reals the two are one routine.
#define FRONT_GER(name, routine, T)                                                                                    \
    FRONT(void, routine, name, (i64 m, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy, T* a, i64 lda),     \
          (&m, &n, &alpha, x, &incx, y, &incy, a, &lda))
#define FRONT_GER_REAL(t, T) FRONT_GER(geru, orv_blas_##t##ger, T) FRONT_GER(gerc, orv_blas_##t##ger, T)
#define FRONT_GERU(t, T) FRONT_GER(geru, orv_blas_##t##geru, T)
FOR_REALS(FRONT_GER_REAL)
FOR_COMPLEX(FRONT_GERU)
FRONT_GER(gerc, orv_blas_cgerc, cpx<float>)

// A triangle of A += alpha*x*x^H, alpha real: singles and complex doubles only.
#define FRONT_HER(routine, T)                                                                                          \
    FRONT(void, routine, her, (const char* uplo, i64 n, real_t<T> alpha, const T* x, i64 incx, T* a, i64 lda),         \
          (uplo, &n, &alpha, x, &incx, a, &lda))
FRONT_HER(orv_blas_ssyr, float)
FRONT_HER(orv_blas_zher, cpx<double>)

// C := alpha*op(A)*op(B) + beta*C.
#define FRONT_GEMM(t, T)                                                                                               \
    FRONT(void, orv_blas_##t##gemm, gemm,                                                                              \
          (const char* transa, const char* transb, i64 m, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* b,      \
           i64 ldb, T beta, T* c, i64 ldc),                                                                            \
          (transa, transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc))
FOR_REALS(FRONT_GEMM)

// Constants of the arithmetic, of the type that the caller names: lamch<double>("Epsilon").
template <class R> R lamch(const char* what);
#define FRONT_LAMCH(t, T)                                                                                              \
    template <> inline T lamch<T>(const char* what) { return orv_lapack_##t##lamch(what); }
FOR_REALS(FRONT_LAMCH)

// Square roots of both where the range of exponents is very wide; a + b rounded to working precision.
#define FRONT_LABAD(t, T) FRONT(void, orv_lapack_##t##labad, labad, (T * small, T * large), (small, large))
#define FRONT_LAMC3(t, T) FRONT(T, orv_lapack_##t##lamc3, lamc3, (T a, T b), (&a, &b))
FOR_REALS(FRONT_LABAD)
FOR_REALS(FRONT_LAMC3)

// scale^2*sum := the sum of squares of magnitudes + scale^2*sum.
#define FRONT_LASSQ(t, T)                                                                                              \
    FRONT(void, orv_lapack_##t##lassq, lassq, (i64 n, const T* x, i64 incx, real_t<T>* scale, real_t<T>* sum),         \
          (&n, x, &incx, scale, sum))
FOR_ALL(FRONT_LASSQ)

// A := (to/from)*A without overflow on the way; B := A or a triangle of it.
#define FRONT_LASCL(t, T)                                                                                              \
    FRONT(void, orv_lapack_##t##lascl, lascl,                                                                          \
          (const char* type, i64 kl, i64 ku, T from, T to, i64 m, i64 n, T* a, i64 lda, i64* info),                    \
          (type, &kl, &ku, &from, &to, &m, &n, a, &lda, info))
#define FRONT_LACPY(t, T)                                                                                              \
    FRONT(void, orv_lapack_##t##lacpy, lacpy, (const char* uplo, i64 m, i64 n, const T* a, i64 lda, T* b, i64 ldb),    \
          (uplo, &m, &n, a, &lda, b, &ldb))
FOR_REALS(FRONT_LASCL)
FOR_REALS(FRONT_LACPY)

// Roots of secular equations: of a 2 by 2 problem (i is 1 or 2), and of one with three poles, the wanted root between
// poles 2 and 3 if orgati is set and between 1 and 2 if not.
#define FRONT_LASD5(t, T)                                                                                              \
    FRONT(void, orv_lapack_##t##lasd5, lasd5, (i64 i, const T* d, const T* z, T* delta, T rho, T* dsigma, T* work),    \
          (&i, d, z, delta, &rho, dsigma, work))
#define FRONT_LAED6(t, T)                                                                                              \
    FRONT(void, orv_lapack_##t##laed6, laed6,                                                                          \
          (i64 iteration, i64 orgati, T rho, const T* d, const T* z, T f_at_0, T* tau, i64* info),                     \
          (&iteration, &orgati, &rho, d, z, &f_at_0, tau, info))
FOR_REALS(FRONT_LASD5)
FOR_REALS(FRONT_LAED6)

#undef FRONT
#undef FOR_REALS
#undef FOR_COMPLEX
#undef FOR_ALL

} // namespace orv::front
