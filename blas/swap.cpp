// x and y change places.
//
// n elements at steps incx and incy, a negative step starts at the far end; with a step of 0 the exchanges follow one
// another in the order of the elements. Bits travel unchanged.
//
// Published source: Lawson, Hanson, Kincaid, Krogh, Basic Linear Algebra Subprograms for Fortran Usage, 1979.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

using SwapLadder = Ladder<Blocks<16, 8, 4, 2, 1>, Blocks<8, 4, 2, 1>>;

template <class T> ORV_INLINE void swap(i64 n, T* x, i64 incx, T* y, i64 incy)
{
    walk<SwapLadder>(n, x, incx, y, incy, [] { return [](auto a, auto b) { return Both{b, a}; }; });
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define SWAP(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(const i64* n, T* x, const i64* incx, T* y, const i64* incy)                             \
    {                                                                                                                  \
        blas::swap(*n, x, *incx, y, *incy);                                                                            \
    }

SWAP(xsswap, float)
SWAP(xdswap, double)
SWAP(xcswap, cpx<float>)
SWAP(xzswap, cpx<double>)
