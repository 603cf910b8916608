// Eigen's answers at level 2: general and triangular matrices in full storage. It has none for bands and packed ones.
#include "bench/eigen.h"

namespace {

// f with the matrix, its transpose or its conjugate transpose.
template <class M, class F> void transposed(char trans, const M& a, F f)
{
    if (trans == 'N') f(a);
    else if (trans == 'T') f(a.transpose());
    else f(a.adjoint());
}

template <class T> void gemv(char trans, int m, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y, int incy)
{
    const bool plain = trans == 'N';
    with(plain ? n : m, x, incx, [&](auto u) {
        with(plain ? m : n, y, incy, [&](auto v) {
            if (beta != T(1)) v *= beta;
            transposed(trans, matrix(a, m, n, lda), [&](const auto& op) { v.noalias() += alpha * op * u; });
        });
    });
}

template <class T> void ger(int m, int n, T alpha, T* x, int incx, T* y, int incy, T* a, int lda, bool conjugated)
{
    auto am = matrix(a, m, n, lda);
    with(m, x, incx, [&](auto u) {
        with(n, y, incy, [&](auto v) {
            if (conjugated) am.noalias() += alpha * u * v.adjoint();
            else am.noalias() += alpha * u * v.transpose();
        });
    });
}

// f with the half of the square matrix that uplo names, as a constant.
template <class T, class F> void half(char uplo, int n, T* a, int lda, F f)
{
    auto am = matrix(a, n, n, lda);
    if (uplo == 'U') f(am, std::integral_constant<int, Eigen::Upper>());
    else f(am, std::integral_constant<int, Eigen::Lower>());
}

template <class T> void symv(char uplo, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y, int incy)
{
    half(uplo, n, a, lda, [&](auto am, auto part) {
        with(n, x, incx, y, incy, [&](auto u, auto v) {
            if (beta != T(1)) v *= beta;
            v.noalias() += am.template selfadjointView<decltype(part)::value>() * (alpha * u);
        });
    });
}

template <class T> void syr(char uplo, int n, Real<T> alpha, T* x, int incx, T* a, int lda)
{
    half(uplo, n, a, lda, [&](auto am, auto part) {
        with(n, x, incx, [&](auto u) { am.template selfadjointView<decltype(part)::value>().rankUpdate(u, alpha); });
    });
    if constexpr (Eigen::NumTraits<T>::IsComplex) matrix(a, n, n, lda).diagonal().imag().setZero();
}

template <class T> void syr2(char uplo, int n, T alpha, T* x, int incx, T* y, int incy, T* a, int lda)
{
    half(uplo, n, a, lda, [&](auto am, auto part) {
        with(n, x, incx, y, incy,
             [&](auto u, auto v) { am.template selfadjointView<decltype(part)::value>().rankUpdate(u, v, alpha); });
    });
    if constexpr (Eigen::NumTraits<T>::IsComplex) matrix(a, n, n, lda).diagonal().imag().setZero();
}

template <class T, class F> void triangle(char uplo, char trans, int n, T* a, int lda, F f)
{
    half(uplo, n, a, lda, [&](auto am, auto part) {
        transposed(trans, am, [&](const auto& op) {
            constexpr int stored = decltype(part)::value, flipped = Eigen::Upper + Eigen::Lower - stored;
            if (trans == 'N') f(op.template triangularView<stored>());
            else f(op.template triangularView<flipped>());
        });
    });
}

template <class T> void trmv(char uplo, char trans, int n, T* a, int lda, T* x, int incx)
{
    triangle(uplo, trans, n, a, lda, [&](const auto& t) { with(n, x, incx, [&](auto u) { u = t * u; }); });
}

template <class T> void trsv(char uplo, char trans, int n, T* a, int lda, T* x, int incx)
{
    triangle(uplo, trans, n, a, lda, [&](const auto& t) { with(n, x, incx, [&](auto u) { t.solveInPlace(u); }); });
}

} // namespace

#define TYPE(t, T, sy, geru)                                                                                           \
    EXPORT void t##gemv_(char* trans, int* m, int* n, T* alpha, T* a, int* lda, T* x, int* incx, T* beta, T* y,        \
                         int* incy)                                                                                    \
    {                                                                                                                  \
        gemv<T>(*trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);                                           \
    }                                                                                                                  \
    EXPORT void geru(int* m, int* n, T* alpha, T* x, int* incx, T* y, int* incy, T* a, int* lda)                       \
    {                                                                                                                  \
        ger<T>(*m, *n, *alpha, x, *incx, y, *incy, a, *lda, false);                                                    \
    }                                                                                                                  \
    EXPORT void t##sy##mv_(char* uplo, int* n, T* alpha, T* a, int* lda, T* x, int* incx, T* beta, T* y, int* incy)    \
    {                                                                                                                  \
        symv<T>(*uplo, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);                                                \
    }                                                                                                                  \
    EXPORT void t##sy##r_(char* uplo, int* n, Real<T>* alpha, T* x, int* incx, T* a, int* lda)                         \
    {                                                                                                                  \
        syr<T>(*uplo, *n, *alpha, x, *incx, a, *lda);                                                                  \
    }                                                                                                                  \
    EXPORT void t##sy##r2_(char* uplo, int* n, T* alpha, T* x, int* incx, T* y, int* incy, T* a, int* lda)             \
    {                                                                                                                  \
        syr2<T>(*uplo, *n, *alpha, x, *incx, y, *incy, a, *lda);                                                       \
    }                                                                                                                  \
    EXPORT void t##trmv_(char* uplo, char* trans, char*, int* n, T* a, int* lda, T* x, int* incx)                      \
    {                                                                                                                  \
        trmv<T>(*uplo, *trans, *n, a, *lda, x, *incx);                                                                 \
    }                                                                                                                  \
    EXPORT void t##trsv_(char* uplo, char* trans, char*, int* n, T* a, int* lda, T* x, int* incx)                      \
    {                                                                                                                  \
        trsv<T>(*uplo, *trans, *n, a, *lda, x, *incx);                                                                 \
    }
TYPE(s, float, sy, sger_)
TYPE(d, double, sy, dger_)
TYPE(c, cfloat, he, cgeru_)
TYPE(z, cdouble, he, zgeru_)
#define GERC(name, T)                                                                                                  \
    EXPORT void name(int* m, int* n, T* alpha, T* x, int* incx, T* y, int* incy, T* a, int* lda)                       \
    {                                                                                                                  \
        ger<T>(*m, *n, *alpha, x, *incx, y, *incy, a, *lda, true);                                                     \
    }
GERC(cgerc_, cfloat)
GERC(zgerc_, cdouble)
