// Products and updates of rank two with a panel (panel.h) of a symmetric or Hermitian matrix:
//
//   y := alpha*A*x + beta*y                          ?symv_nb, ?hemv_nb
//   A := A + alpha*x*y^H + conj(alpha)*y*x^H         ?syr2_nb, ?her2_nb
//
// In the product A has the elements of the panel and their mirror images, and zeros elsewhere: the products of panels
// that make up the triangle add up to the product with the matrix. The update writes the panel only, and leaves the
// imaginary parts of a Hermitian diagonal zero.
//
//   n, nb        order and width; one of them not positive: nothing is done
//   x, y         n elements each; incx and incy are not looked at: the stride is 1
//   beta         0: y is not read
//
// The product goes several columns at a time through registers where everything is in step and the reproducibility
// state leaves the choice. Else it takes one column j after the other: y(j) += t*A(j,j), y(i) += t*A(i,j) and s +=
// conj(A(i,j))*x(i) for the other rows i, ascending, with t = alpha*x(j), and in the end y(j) += alpha*s; so the
// alignment of the data cannot change a bit. The update computes each element alone,
//
//   A(i,j) := (A(i,j) + x(i)*(alpha*conj(y(j)))) + y(i)*conj(alpha*x(j)),
//
// with the same bits on either path.
#include "lapack_ps/panel.h"
#include "frame/kernels/lapack_ps.h"

namespace orv::lapack {
namespace {

template <class T> Path chosen_path(i64 lda, const T* a, const T* x, const T* y)
{
    return orv_serv_cbwr_get(1) == 1 ? path_in_step(is_even(lda), a, x, y) : Path::plain;
}

template <class T> void scale(i64 n, T beta, T* y)
{
    if (beta == one<T>) return;
    if (beta == zero<T>)
        for (i64 i = 0; i < n; ++i) y[i] = zero<T>;
    else
        for (i64 i = 0; i < n; ++i) y[i] = beta * y[i];
}

// What a diagonal element counts as.
template <class T> T on_diagonal(T a)
{
    if constexpr (is_complex<T>) return {a.re, 0};
    else return a;
}

// y += alpha*A*x for `width` columns of the panel from j on and their mirror images: the square on the diagonal first,
// then the rows that all of them have.
template <int width, class T> void multiply(Path path, const Panel<const T>& p, i64 j, T alpha, const T* x, T* y)
{
    static_assert(width <= 4);
    const T* column[width];
    T t[4] = {};
    InnerProduct<T> s[width];
    const i64 end = j + width;
    for (int k = 0; k < width; ++k) {
        const i64 own = j + k;
        column[k] = p.column(own), t[k] = alpha * x[own];
        y[own] += t[k] * on_diagonal(column[k][own]);
        for (i64 i = p.upper ? j : own + 1; i < (p.upper ? own : end); ++i)
            y[i] += t[k] * column[k][i], s[k].add(column[k][i], x[i]);
    }

    const factor<T> f[4] = {factor<T>(t[0]), factor<T>(t[1]), factor<T>(t[2]), factor<T>(t[3])};
    each_row(
        path, p.upper ? 0 : end, p.upper ? j : p.n, x,
        [&](i64 i) ORV_INLINE_LAMBDA {
            const vec<T> from = loadu(x + i);
            vec<T> to = loadu(y + i);
#pragma GCC unroll 4
            for (int k = 0; k < width; ++k) {
                const vec<T> a = loadu(column[k] + i);
                to += f[k] * a, s[k].add(a, from);
            }
            storeu(y + i, to);
        },
        [&](i64 i) ORV_INLINE_LAMBDA {
#pragma GCC unroll 4
            for (int k = 0; k < width; ++k) y[i] += t[k] * column[k][i], s[k].add(column[k][i], x[i]);
        });
    for (int k = 0; k < width; ++k) y[j + k] += alpha * s[k].total();
}

template <class T> void symv_nb(const char* uplo, i64 n, i64 nb, T alpha, const T* a, i64 lda, const T* x, T beta, T* y)
{
    if (n <= 0 || nb <= 0) return;
    scale(n, beta, y);
    const Path path = chosen_path(lda, a, x, y);
    const Panel<const T> panel(uplo, n, nb, a, lda);
    i64 j = panel.from;
    if (path == Path::lanes) {
        constexpr int width = is_complex<T> ? 2 : 4; // all that a column needs stays in registers
        for (; j + width <= panel.to; j += width) multiply<width>(path, panel, j, alpha, x, y);
    }
    for (; j < panel.to; ++j) multiply<1>(path, panel, j, alpha, x, y);
}

template <class T> void syr2_nb(const char* uplo, i64 n, i64 nb, T alpha, const T* x, const T* y, T* a, i64 lda)
{
    if (n <= 0 || nb <= 0) return;
    const Path path = chosen_path(lda, a, x, y);
    const Panel<T> panel(uplo, n, nb, a, lda);
    for (i64 j = panel.from; j < panel.to; ++j) {
        T* const c = panel.column(j);
        const T by_x = alpha * conj(y[j]), by_y = conj(alpha * x[j]);
        const factor<T> f(by_x), g(by_y);
        each_row(
            path, panel.upper ? 0 : j, panel.upper ? j + 1 : n, x,
            [&](i64 i) ORV_INLINE_LAMBDA { storeu(c + i, loadu(c + i) + f * loadu(x + i) + g * loadu(y + i)); },
            [&](i64 i) ORV_INLINE_LAMBDA { c[i] = c[i] + by_x * x[i] + by_y * y[i]; });
        if constexpr (is_complex<T>) c[j].im = 0;
    }
}

} // namespace

#define SYMV_NB(name, T)                                                                                               \
    ORV_EXPORT void LAPACK_PS(name)(const char* uplo, const i64* n, const i64* nb, const T* alpha, const T* a,         \
                                    const i64* lda, const T* x, const i64*, const T* beta, T* y, const i64*)           \
    {                                                                                                                  \
        symv_nb(uplo, *n, *nb, *alpha, a, *lda, x, *beta, y);                                                          \
    }
#define SYR2_NB(name, T)                                                                                               \
    ORV_EXPORT void LAPACK_PS(name)(const char* uplo, const i64* n, const i64* nb, const T* alpha, const T* x,         \
                                    const i64*, const T* y, const i64*, T* a, const i64* lda)                          \
    {                                                                                                                  \
        syr2_nb(uplo, *n, *nb, *alpha, x, y, a, *lda);                                                                 \
    }

SYMV_NB(ssymv_nb, float)
SYMV_NB(dsymv_nb, double)
SYMV_NB(chemv_nb, cpx<float>)
SYMV_NB(zhemv_nb, cpx<double>)

SYR2_NB(ssyr2_nb, float)
SYR2_NB(dsyr2_nb, double)
SYR2_NB(cher2_nb, cpx<float>)
SYR2_NB(zher2_nb, cpx<double>)

} // namespace orv::lapack
