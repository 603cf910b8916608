// A packed sparse vector against a dense one: element i of x belongs to element indx[i] of y, counted from 1.
//
//   axpyi   y := y + alpha*x at the places of x; alpha equal to 0 returns at once
//   doti    sum of x(i)*y(indx(i)); dotui and dotci for complex numbers, dotci conjugates x
//   gthr    x := y at the places of x;   gthrz   the same, and y := 0 there
//   sctr    y := x at the places of x
//   roti    plane rotation of x and y at those places, real; c = 1 with s = 0 returns at once
//
// n <= 0 does nothing, and makes a sum 0. Only elements of y that indx names are read or written; where it names one
// twice, the results follow one another in the order of x, except that gthrz reads a second time what it has cleared.
//
// Published source: Dodson, Grimes, Lewis, Sparse Extensions to the Fortran Basic Linear Algebra Subprograms, 1991.
#include "frame/kernels/blas.h"
#include "frame/simd.h"

namespace orv::blas {
namespace {

template <class T> void axpyi(i64 n, T alpha, const T* x, const i64* indx, T* y)
{
    if (alpha == zero<T>) return;
    const auto add = [&](i64 i) { y[indx[i] - 1] += alpha * x[i]; };
    i64 i = 0;
    for (; i + 2 <= n; i += 2) add(i), add(i + 1);
    if (i < n) add(i);
}

template <class T> T product(T x, T y) { return x * y; }
template <class T> T conjugate_product(T x, T y) { return conj(x) * y; }

// Element i of a block of 8 goes to sum i mod 4; the sums are added as (0 + 1) + (2 + 3), and to that what
// is left.
template <class T, T (*times)(T, T)> T doti(i64 n, const T* x, const i64* indx, const T* y)
{
    T sums[4] = {zero<T>, zero<T>, zero<T>, zero<T>};
    const auto term = [&](i64 i) { return times(x[i], y[indx[i] - 1]); };
    i64 i = 0;
    for (; i + 8 <= n; i += 8)
#pragma GCC unroll 8
        for (int e = 0; e < 8; ++e) sums[e % 4] = sums[e % 4] + term(i + e);
    T total = (sums[0] + sums[1]) + (sums[2] + sums[3]);
    for (; i < n; ++i) total = total + term(i);
    return total;
}

template <class T> void gthr(i64 n, const T* y, T* x, const i64* indx)
{
    i64 i = 0;
    for (; i + 2 <= n; i += 2) {
        const T a = y[indx[i] - 1], b = y[indx[i + 1] - 1];
        x[i] = a, x[i + 1] = b;
    }
    if (i < n) x[i] = y[indx[i] - 1];
}

template <class T> void gthrz(i64 n, T* y, T* x, const i64* indx)
{
    for (i64 i = 0; i < n; ++i) {
        x[i] = y[indx[i] - 1];
        y[indx[i] - 1] = zero<T>;
    }
}

template <class T> void sctr(i64 n, const T* x, const i64* indx, T* y)
{
    i64 i = 0;
    for (; i + 2 <= n; i += 2) y[indx[i] - 1] = x[i], y[indx[i + 1] - 1] = x[i + 1];
    if (i < n) y[indx[i] - 1] = x[i];
}

template <class T> void roti(i64 n, T* x, const i64* indx, T* y, T c, T s)
{
    if (c == T(1) && s == T(0)) return;
    for (i64 i = 0; i < n; ++i) {
        const T a = x[i], b = y[indx[i] - 1];
        x[i] = c * a + s * b;
        y[indx[i] - 1] = c * b - s * a;
    }
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define UPDATES(axpyi_, gthr_, gthrz_, sctr_, T)                                                                       \
    ORV_EXPORT void BLAS(axpyi_)(const i64* n, const T* alpha, const T* x, const i64* indx, T* y)                      \
    {                                                                                                                  \
        blas::axpyi(*n, *alpha, x, indx, y);                                                                           \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(gthr_)(const i64* n, const T* y, T* x, const i64* indx) { blas::gthr(*n, y, x, indx); }       \
    ORV_EXPORT void BLAS(gthrz_)(const i64* n, T* y, T* x, const i64* indx) { blas::gthrz(*n, y, x, indx); }           \
    ORV_EXPORT void BLAS(sctr_)(const i64* n, const T* x, const i64* indx, T* y) { blas::sctr(*n, x, indx, y); }

#define REAL(doti_, roti_, T)                                                                                          \
    ORV_EXPORT T BLAS(doti_)(const i64* n, const T* x, const i64* indx, const T* y)                                    \
    {                                                                                                                  \
        return blas::doti<T, blas::product<T>>(*n, x, indx, y);                                                        \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(roti_)(const i64* n, T* x, const i64* indx, T* y, const T* c, const T* s)                     \
    {                                                                                                                  \
        blas::roti(*n, x, indx, y, *c, *s);                                                                            \
    }

#define COMPLEX(name, times, T)                                                                                        \
    ORV_EXPORT void BLAS(name)(T * result, const i64* n, const T* x, const i64* indx, const T* y)                      \
    {                                                                                                                  \
        *result = blas::doti<T, blas::times<T>>(*n, x, indx, y);                                                       \
    }

UPDATES(saxpyi, sgthr, sgthrz, ssctr, float)
UPDATES(daxpyi, dgthr, dgthrz, dsctr, double)
UPDATES(caxpyi, cgthr, cgthrz, csctr, cpx<float>)
UPDATES(zaxpyi, zgthr, zgthrz, zsctr, cpx<double>)
REAL(sdoti, sroti, float)
REAL(ddoti, droti, double)
COMPLEX(cdotui, product, cpx<float>)
COMPLEX(cdotci, conjugate_product, cpx<float>)
COMPLEX(zdotui, product, cpx<double>)
COMPLEX(zdotci, conjugate_product, cpx<double>)
