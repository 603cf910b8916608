// y := y + alpha*x
//
// n elements of x and y at steps incx and incy; a negative step starts at the far end, a step of 0 of y folds all of
// alpha*x into one element, in order. One rounding for each product and one for each sum. x is only read.
// n <= 0 leaves y alone; so does alpha equal to 0, whatever x holds. NaN in alpha or x reaches y.
//
// Published source: Lawson, Hanson, Kincaid, Krogh, Basic Linear Algebra Subprograms for Fortran Usage, 1979.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

using AxpyLadder = Ladder<Blocks<32, 16, 8, 4, 1>, Blocks<16, 8, 4, 2, 1>>;

template <class T> ORV_INLINE void axpy(i64 n, T alpha, const T* x, i64 incx, T* y, i64 incy)
{
    walk<AxpyLadder>(n, x, incx, y, incy, [=] {
        const Multiplier<T, T> a(alpha);
        return Update{[=](auto from) { return a * from; }, [](auto term, auto to) { return to + term; }};
    });
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define AXPY_A(name, T)                                                                                                \
    ORV_EXPORT void BLAS(name)(const i64* n, const T* alpha, const T* x, const i64* incx, T* y, const i64* incy)       \
    {                                                                                                                  \
        blas::axpy(*n, *alpha, x, *incx, y, *incy);                                                                    \
    }
#define AXPY(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(const i64* n, const T* alpha, const T* x, const i64* incx, T* y, const i64* incy)       \
    {                                                                                                                  \
        if (*alpha != zero<T>) blas::axpy(*n, *alpha, x, *incx, y, *incy);                                             \
    }

AXPY(xsaxpy, float)
AXPY(xdaxpy, double)
AXPY(xcaxpy, cpx<float>)
AXPY(xzaxpy, cpx<double>)

// For inner loops that have tested alpha already.
AXPY_A(xcaxpy_a, cpx<float>)
AXPY_A(xzaxpy_a, cpx<double>)
