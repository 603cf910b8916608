// y := alpha*x + beta*y
//
// Vectors and strides as for axpy. Two roundings for the products, one for the sum. Neither alpha nor beta has a
// special value: a NaN in y stays one even if beta is 0. n <= 0 leaves y alone.
#include "blas/ladder.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

using AxpbyLadder = Ladder<Blocks<16, 8, 4, 2, 1>, Blocks<16, 8, 4, 2, 1>>;

template <class T> ORV_INLINE void axpby(i64 n, T alpha, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    walk<AxpbyLadder>(n, x, incx, y, incy, [=] {
        const Multiplier<T, T> a(alpha), b(beta);
        return Update{[=](auto from) { return a * from; }, [=](auto term, auto to) { return term + b * to; }};
    });
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define AXPBY(name, T)                                                                                                 \
    ORV_EXPORT void BLAS(name)(const i64* n, const T* alpha, const T* x, const i64* incx, const T* beta, T* y,         \
                               const i64* incy)                                                                        \
    {                                                                                                                  \
        blas::axpby(*n, *alpha, x, *incx, *beta, y, *incy);                                                            \
    }

AXPBY(xsaxpby, float)
AXPBY(xdaxpby, double)
AXPBY(xcaxpby, cpx<float>)
AXPBY(xzaxpby, cpx<double>)
