// The vector kernels by type, for the routines built from them.
#pragma once

#include "frame/kernels/blas.h"

namespace orv::blas {

// Gives a kernel a name that all types share.
#define ORV_AXPY(name, T)                                                                                              \
    inline void axpy(i64 n, T alpha, const T* x, i64 incx, T* y, i64 incy)                                             \
    {                                                                                                                  \
        kernels::blas::BLAS(name)(&n, &alpha, x, &incx, y, &incy);                                                     \
    }
#define ORV_SCAL(name, T)                                                                                              \
    inline void scal(i64 n, T alpha, T* x, i64 incx) { kernels::blas::BLAS(name)(&n, &alpha, x, &incx); }
#define ORV_REAL_DOT(name, T)                                                                                          \
    inline T conjugated_dot(i64 n, const T* x, i64 incx, const T* y, i64 incy)                                         \
    {                                                                                                                  \
        return kernels::blas::BLAS(name)(&n, x, &incx, y, &incy);                                                      \
    }
#define ORV_COMPLEX_DOT(name, T)                                                                                       \
    inline T conjugated_dot(i64 n, const T* x, i64 incx, const T* y, i64 incy)                                         \
    {                                                                                                                  \
        T result;                                                                                                      \
        kernels::blas::BLAS(name)(&result, &n, x, &incx, y, &incy);                                                    \
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
