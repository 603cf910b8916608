// x := alpha*x
//
// n elements at step incx; a negative step covers the same elements as a positive one, a step of 0 multiplies the one
// element n times. alpha equal to 1 returns without reading x; alpha equal to 0 is no special case, so NaN and infinity
// in x become NaN. n <= 0 leaves x alone.
//
// Published source: Lawson, Hanson, Kincaid, Krogh, Basic Linear Algebra Subprograms for Fortran Usage, 1979.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

using ScalLadder = Ladder<Blocks<16, 8, 4, 2, 1>, Blocks<16, 8, 4, 2, 1>>;

// A is T, or its real type.
template <class T, class A> ORV_INLINE void scal(i64 n, A alpha, T* x, i64 incx)
{
    if (alpha == one<A>) return;
    const T* same = x; // the walk through one vector is that through it and itself
    walk<ScalLadder>(n, same, incx, x, incx, [=] {
        const Multiplier<A, T> a(alpha);
        return Update{[](auto from) { return from; }, [=](auto, auto to) { return a * to; }};
    });
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define SCAL(name, A, T)                                                                                               \
    ORV_EXPORT void BLAS(name)(const i64* n, const A* alpha, T* x, const i64* incx)                                    \
    {                                                                                                                  \
        blas::scal(*n, *alpha, x, *incx);                                                                              \
    }

SCAL(sscal, float, float)
SCAL(dscal, double, double)
SCAL(cscal, cpx<float>, cpx<float>)
SCAL(zscal, cpx<double>, cpx<double>)
SCAL(csscal, float, cpx<float>)
SCAL(zdscal, double, cpx<double>)
