// Modified plane rotation: (x, y) := H (x, y) element by element.
//
// param holds the flag, then h11, h21, h12, h22. flag -2: H is the identity and nothing is read; below zero: all four
// entries as given; zero: h11 and h22 are 1; above zero: h12 is 1 and h21 is -1. Vectors and strides as for rot.
//
// Published source: Lawson, Hanson, Kincaid, Krogh, Basic Linear Algebra Subprograms for Fortran Usage, 1979.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

using RotmLadder = Ladder<Blocks<4, 2, 1>, Blocks<4, 2, 1>, Offset::straddling>;

template <class T> void rotm(i64 n, T* x, i64 incx, T* y, i64 incy, const T* param)
{
    const T flag = param[0];
    if (n < 1 || flag + T(2) == T(0)) return;
    const Multiplier<T, T> h11(param[1]), h21(param[2]), h12(param[3]), h22(param[4]);
    const auto walk = [=](auto op) { blas::walk<RotmLadder>(n, x, incx, y, incy, [=] { return op; }); };
    if (flag < T(0)) walk([=](auto a, auto b) { return Both{h11 * a + h12 * b, h21 * a + h22 * b}; });
    else if (flag == T(0)) walk([=](auto a, auto b) { return Both{a + h12 * b, h21 * a + b}; });
    else walk([=](auto a, auto b) { return Both{h11 * a + b, h22 * b - a}; });
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define ROTM(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(const i64* n, T* x, const i64* incx, T* y, const i64* incy, const T* param)             \
    {                                                                                                                  \
        blas::rotm(*n, x, *incx, y, *incy, param);                                                                     \
    }

ROTM(srotm, float)
ROTM(drotm, double)
