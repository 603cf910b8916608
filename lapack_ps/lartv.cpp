// A plane rotation of its own for each pair of elements:
//
//   x[i] := c[i]*x[i] + s[i]*y[i]    and    y[i] := c[i]*y[i] - conj(s[i])*x[i], with the x[i] from before
//
// n elements at steps incx and incy, c (real) and s (as x) both at steps incc; a negative step starts at the far end,
// with a step of 0 the rotations follow one another. n < 1 leaves x and y alone.
#include "frame/kernels/lapack_ps.h"
#include "frame/simd.h"

namespace orv::lapack {
namespace {

template <class C, class S, class T> ORV_INLINE void rotate(C c, S s, T& x, T& y)
{
    const T before = x;
    x = c * before + s * y;
    y = c * y - conj(s) * before;
}

template <class T> void lartv(i64 n, T* x, i64 incx, T* y, i64 incy, const real_t<T>* c, const T* s, i64 incc)
{
    if (n < 1) return;
    x = first(x, n, incx), y = first(y, n, incy), c = first(c, n, incc), s = first(s, n, incc);
    if constexpr (!is_complex<T>)
        if (incx == 1 && incy == 1 && incc == 1)
            for (constexpr i64 lanes = vec<T>::lanes; n >= lanes; n -= lanes) {
                vec<T> a = loadu(x), b = loadu(y);
                rotate(loadu(c), loadu(s), a, b);
                storeu(x, a), storeu(y, b);
                x += lanes, y += lanes, c += lanes, s += lanes;
            }
    for (; n > 0; --n, x += incx, y += incy, c += incc, s += incc) rotate(*c, *s, *x, *y);
}

} // namespace
} // namespace orv::lapack

using namespace orv;

#define LARTV(name, T)                                                                                                 \
    ORV_EXPORT void LAPACK_PS(name)(const i64* n, T* x, const i64* incx, T* y, const i64* incy, const real_t<T>* c,    \
                                    const T* s, const i64* incc)                                                       \
    {                                                                                                                  \
        lapack::lartv(*n, x, *incx, y, *incy, c, s, *incc);                                                            \
    }

LARTV(slartv, float)
LARTV(dlartv, double)
LARTV(clartv, cpx<float>)
LARTV(zlartv, cpx<double>)
