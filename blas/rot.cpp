// Plane rotation: x := c*x + s*y and y := c*y - conj(s)*x, with the x from before.
//
// n elements at steps incx and incy, a negative step starts at the far end; with a step of 0 the rotations follow one
// another in the order of the elements. c is real; s is real, or complex for crot and zrot. No value of c or s is
// special. Two products and one sum an element, each rounded once.
//
// Published source: Lawson, Hanson, Kincaid, Krogh, Basic Linear Algebra Subprograms for Fortran Usage, 1979.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

// Its sums leave no port free for the shuffles of splicing.
using RealLadder = Ladder<Blocks<8, 4, 2, 1>, Blocks<8, 4, 2, 1>, Offset::straddling>;
using ComplexLadder = Ladder<Blocks<4, 2, 1>, Blocks<2, 1>, Offset::straddling>;

template <class T, class S> ORV_INLINE void rot(i64 n, T* x, i64 incx, T* y, i64 incy, real_t<T> c, S s)
{
    using Shape = std::conditional_t<is_complex<S>, ComplexLadder, RealLadder>;
    walk<Shape>(n, x, incx, y, incy, [=] {
        const Multiplier<real_t<T>, T> cosine(c);
        const Multiplier<S, T> sine(s), conjugate(conj(s));
        return [=](auto a, auto b) { return Both{cosine * a + sine * b, cosine * b - conjugate * a}; };
    });
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define ROT(name, T, S)                                                                                                \
    ORV_EXPORT void BLAS(name)(const i64* n, T* x, const i64* incx, T* y, const i64* incy, const real_t<T>* c,         \
                               const S* s)                                                                             \
    {                                                                                                                  \
        blas::rot(*n, x, *incx, y, *incy, *c, *s);                                                                     \
    }

ROT(xsrot, float, float)
ROT(xdrot, double, double)
ROT(xcsrot, cpx<float>, float)
ROT(xzdrot, cpx<double>, double)
ROT(xcrot, cpx<float>, cpx<float>)
ROT(xzrot, cpx<double>, cpx<double>)
