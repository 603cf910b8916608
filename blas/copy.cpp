// y := x
//
// Vectors and strides as for axpy; bits travel unchanged. A step of 0 of y leaves the last element there.
//
// Published source: Lawson, Hanson, Kincaid, Krogh, Basic Linear Algebra Subprograms for Fortran Usage, 1979.
#include "blas/ladder.h"
#include "frame/symbol.h"

namespace orv::blas {
namespace {

using CopyLadder = Ladder<Blocks<16, 8, 4, 2, 1>, Blocks<16, 8, 4, 2, 1>>;

template <class T> void copy(i64 n, const T* x, i64 incx, T* y, i64 incy)
{
    walk<CopyLadder>(n, x, incx, y, incy, [](auto from, auto) { return from; });
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define COPY(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(const i64* n, const T* x, const i64* incx, T* y, const i64* incy)                       \
    {                                                                                                                  \
        blas::copy(*n, x, *incx, y, *incy);                                                                            \
    }

COPY(xscopy, float)
COPY(xdcopy, double)
COPY(xccopy, cpx<float>)
COPY(xzcopy, cpx<double>)
