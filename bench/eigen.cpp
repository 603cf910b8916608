// Eigen as a library with the standard interface: each routine as one expression on mapped operands.
#include "bench/eigen.h"

namespace {

template <class T>
void gemm(const char* ta, const char* tb, int m, int n, int k, T alpha, T* a, int lda, T* b, int ldb, T beta, T* c,
          int ldc)
{
    const bool na = *ta == 'N', nb = *tb == 'N';
    const auto am = matrix(a, na ? m : k, na ? k : m, lda);
    const auto bm = matrix(b, nb ? k : n, nb ? n : k, ldb);
    auto cm = matrix(c, m, n, ldc);
    const auto product = [&](const auto& x, const auto& y) {
        if (beta == T(0)) cm.noalias() = alpha * x * y;
        else {
            if (beta != T(1)) cm *= beta;
            cm.noalias() += alpha * x * y;
        }
    };
    if (na && nb) product(am, bm);
    else if (na) product(am, bm.transpose());
    else if (nb) product(am.transpose(), bm);
    else product(am.transpose(), bm.transpose());
}

template <class T> int position(int n, T* x, int inc)
{
    return with(n, x, inc, [](auto v) {
        Eigen::Index at = 0;
        if constexpr (Eigen::NumTraits<T>::IsComplex) (v.real().cwiseAbs() + v.imag().cwiseAbs()).maxCoeff(&at);
        else v.cwiseAbs().maxCoeff(&at);
        return static_cast<int>(at) + 1;
    });
}

template <class T> Real<T> sum(int n, T* x, int inc)
{
    return with(n, x, inc, [](auto v) {
        if constexpr (Eigen::NumTraits<T>::IsComplex) return (v.real().cwiseAbs() + v.imag().cwiseAbs()).sum();
        else return v.cwiseAbs().sum();
    });
}

template <class T, class S> void rotate(int n, T* x, int incx, T* y, int incy, Real<T> c, S s)
{
    with(n, x, incx, y, incy, [&](auto u, auto v) {
        Eigen::internal::apply_rotation_in_the_plane(u, v, Eigen::JacobiRotation<T>(T(c), Eigen::numext::conj(T(s))));
    });
}

} // namespace

#define GEMM(name, T)                                                                                                  \
    EXPORT void name(const char* ta, const char* tb, int* m, int* n, int* k, T* alpha, T* a, int* lda, T* b, int* ldb, \
                     T* beta, T* c, int* ldc)                                                                          \
    {                                                                                                                  \
        gemm<T>(ta, tb, *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);                                         \
    }

// A routine of two vectors as one expression of u and v, and of one vector as one expression of v.
#define PAIR(name, T, R, expression)                                                                                   \
    EXPORT R name(int* n, T* x, int* incx, T* y, int* incy)                                                            \
    {                                                                                                                  \
        return with(*n, x, *incx, y, *incy, [](auto u, auto v) { expression; });                                       \
    }
#define ONE(name, T, R, expression)                                                                                    \
    EXPORT R name(int* n, T* x, int* incx)                                                                             \
    {                                                                                                                  \
        return with(*n, x, *incx, [](auto v) { expression; });                                                         \
    }
#define SCAL(name, T, S)                                                                                               \
    EXPORT void name(int* n, S* a, T* x, int* incx)                                                                    \
    {                                                                                                                  \
        with(*n, x, *incx, [&](auto v) { v *= *a; });                                                                  \
    }
#define ROT(name, T, S)                                                                                                \
    EXPORT void name(int* n, T* x, int* incx, T* y, int* incy, Real<T>* c, S* s)                                       \
    {                                                                                                                  \
        rotate<T, S>(*n, x, *incx, y, *incy, *c, *s);                                                                  \
    }
#define VECTORS(t, T)                                                                                                  \
    GEMM(t##gemm_, T)                                                                                                  \
    EXPORT void t##axpy_(int* n, T* a, T* x, int* incx, T* y, int* incy)                                               \
    {                                                                                                                  \
        with(*n, x, *incx, y, *incy, [&](auto u, auto v) { v += *a * u; });                                            \
    }                                                                                                                  \
    EXPORT void t##axpby_(int* n, T* a, T* x, int* incx, T* b, T* y, int* incy)                                        \
    {                                                                                                                  \
        with(*n, x, *incx, y, *incy, [&](auto u, auto v) { v = *a * u + *b * v; });                                    \
    }                                                                                                                  \
    PAIR(t##copy_, T, void, v = u)                                                                                     \
    PAIR(t##swap_, T, void, u.swap(v))                                                                                 \
    SCAL(t##scal_, T, T)                                                                                               \
    EXPORT int i##t##amax_(int* n, T* x, int* incx) { return position<T>(*n, x, *incx); }

VECTORS(s, float)
VECTORS(d, double)
VECTORS(c, cfloat)
VECTORS(z, cdouble)
PAIR(sdot_, float, float, return u.dot(v))
PAIR(ddot_, double, double, return u.dot(v))
PAIR(cdotc_, cfloat, cfloat, return u.dot(v))
PAIR(zdotc_, cdouble, cdouble, return u.dot(v))
PAIR(cdotu_, cfloat, cfloat, return v.conjugate().dot(u))
PAIR(zdotu_, cdouble, cdouble, return v.conjugate().dot(u))
PAIR(dsdot_, float, double, return u.template cast<double>().dot(v.template cast<double>()))
EXPORT float sdsdot_(int* n, float* b, float* x, int* incx, float* y, int* incy)
{
    return static_cast<float>(*b + dsdot_(n, x, incx, y, incy));
}
SCAL(csscal_, cfloat, float)
SCAL(zdscal_, cdouble, double)
ONE(snrm2_, float, float, return v.norm())
ONE(dnrm2_, double, double, return v.norm())
ONE(scnrm2_, cfloat, float, return v.norm())
ONE(dznrm2_, cdouble, double, return v.norm())
EXPORT float sasum_(int* n, float* x, int* incx) { return sum(*n, x, *incx); }
EXPORT double dasum_(int* n, double* x, int* incx) { return sum(*n, x, *incx); }
EXPORT float scasum_(int* n, cfloat* x, int* incx) { return sum(*n, x, *incx); }
EXPORT double dzasum_(int* n, cdouble* x, int* incx) { return sum(*n, x, *incx); }
ROT(srot_, float, float)
ROT(drot_, double, double)
ROT(csrot_, cfloat, float)
ROT(zdrot_, cdouble, double)
ROT(crot_, cfloat, cfloat)
ROT(zrot_, cdouble, cdouble)
