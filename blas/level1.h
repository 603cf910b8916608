// The vector kernels by type, for the routines built from them.
#pragma once

#include "frame/kernels/blas.h"
#include "frame/types.h"

namespace orv::blas {

// Declares a kernel and gives it a name that all types share.
#define ORV_AXPY(name, T)                                                                                              \
    ORV_EXPORT void BLAS(name)(const i64* n, const T* alpha, const T* x, const i64* incx, T* y, const i64* incy);      \
    inline void axpy(i64 n, T alpha, const T* x, i64 incx, T* y, i64 incy)                                             \
    {                                                                                                                  \
        BLAS(name)(&n, &alpha, x, &incx, y, &incy);                                                                    \
    }
#define ORV_SCAL(name, T)                                                                                              \
    ORV_EXPORT void BLAS(name)(const i64* n, const T* alpha, T* x, const i64* incx);                                   \
    inline void scal(i64 n, T alpha, T* x, i64 incx) { BLAS(name)(&n, &alpha, x, &incx); }
#define ORV_REAL_DOT(name, T)                                                                                          \
    ORV_EXPORT T BLAS(name)(const i64* n, const T* x, const i64* incx, const T* y, const i64* incy);                   \
    inline T conjugated_dot(i64 n, const T* x, i64 incx, const T* y, i64 incy)                                         \
    {                                                                                                                  \
        return BLAS(name)(&n, x, &incx, y, &incy);                                                                     \
    }
#define ORV_COMPLEX_DOT(name, T)                                                                                       \
    ORV_EXPORT void BLAS(name)(T * result, const i64* n, const T* x, const i64* incx, const T* y, const i64* incy);    \
    inline T conjugated_dot(i64 n, const T* x, i64 incx, const T* y, i64 incy)                                         \
    {                                                                                                                  \
        T result;                                                                                                      \
        BLAS(name)(&result, &n, x, &incx, y, &incy);                                                                   \
        return result;                                                                                                 \
    }

ORV_AXPY(xsaxpy, float)
ORV_AXPY(xdaxpy, double)
ORV_AXPY(xcaxpy, cpx<float>)
ORV_AXPY(xzaxpy, cpx<double>)
ORV_SCAL(sscal, float)
ORV_SCAL(dscal, double)
ORV_SCAL(cscal, cpx<float>)
ORV_SCAL(zscal, cpx<double>)
ORV_REAL_DOT(xsdot, float)
ORV_REAL_DOT(xddot, double)
ORV_COMPLEX_DOT(xcdotc, cpx<float>)
ORV_COMPLEX_DOT(zdotc, cpx<double>)

} // namespace orv::blas
