// y := alpha*op(A)*x + beta*y with a real matrix and complex vectors and scalars: two real products, one for each part.
//
// A has m rows and n columns, lda apart; trans is N in either case for A itself, anything else for its transpose. A
// negative stride starts at the vector's far end. m or n of 0, and alpha = 0 with beta = 1, leave y alone. beta is
// applied first: 0 stores zeros, so NaN in y is lost; alpha = 0 then ends the call with A and x unread.
//
// The vectors travel as parts: an array of all real parts, and behind it one of all imaginary parts. Operands with a
// side of 3 or less, and want of memory for the parts, go the plain way.
#include "blas/beta.h"
#include "blas/gemv_kernels.h"
#include "blas/level1.h"
#include "frame/kernels/blas.h"
#include "frame/serv.h"

// By way of its symbol: the product in single precision asks for the reproducibility state itself.
#define REAL_GEMV(name, R)                                                                                             \
    ORV_EXPORT void BLAS(name)(const char* trans, const orv::i64* m, const orv::i64* n, const R* alpha, const R* a,    \
                               const orv::i64* lda, const R* x, const orv::i64* incx, const R* beta, R* y,             \
                               const orv::i64* incy);
REAL_GEMV(xsgemv, float)
REAL_GEMV(xdgemv, double)

namespace orv::blas {
namespace {

template <class R> constexpr auto* real_gemv = BLAS(xdgemv);
template <> constexpr auto* real_gemv<float> = BLAS(xsgemv);

// Below this many rows or columns two products and their parts cost more than one plain loop.
constexpr i64 least_side = 4;
constexpr i64 block_alignment = 128;

// parts := alpha*x
template <class R> void copy_x(i64 n, cpx<R> alpha, const cpx<R>* x, i64 incx, R* parts)
{
    x = first(x, n, incx);
    for (i64 i = 0; i < n; ++i, x += incx) {
        const cpx<R> scaled = alpha * *x;
        parts[i] = scaled.re, parts[i + n] = scaled.im;
    }
}
// parts := y
template <class R> void copy_y_forward(i64 n, const cpx<R>* y, i64 incy, R* parts)
{
    y = first(y, n, incy);
    for (i64 i = 0; i < n; ++i, y += incy) parts[i] = y->re, parts[i + n] = y->im;
}
// y := parts
template <class R> void copy_y_backward(i64 n, const R* parts, cpx<R>* y, i64 incy)
{
    y = first(y, n, incy);
    for (i64 i = 0; i < n; ++i, y += incy) *y = {parts[i], parts[i + n]};
}

template <class R> bool nothing_to_do(i64 m, i64 n, cpx<R> alpha, cpx<R> beta)
{
    return m == 0 || n == 0 || (alpha == zero<cpx<R>> && beta == one<cpx<R>>);
}

template <class R> void scale(i64 n, cpx<R> beta, cpx<R>* y, i64 incy)
{
    if (beta == zero<cpx<R>>) apply_beta(n, beta, first(y, n, incy), incy);
    else scal(n, beta, y, incy);
}

// The whole product, without memory.
template <class R>
void plain(char trans, i64 m, i64 n, cpx<R> alpha, const R* a, i64 lda, const cpx<R>* x, i64 incx, cpx<R> beta,
           cpx<R>* y, i64 incy)
{
    if (nothing_to_do(m, n, alpha, beta)) return;
    const bool straight = op_of<R>(trans) == Op::none;
    const i64 lenx = straight ? n : m, leny = straight ? m : n;
    scale(leny, beta, y, incy);
    if (alpha == zero<cpx<R>>) return;
    x = first(x, lenx, incx);
    y = first(y, leny, incy);
    for (i64 j = 0; j < n; ++j, a += lda) {
        if (straight) {
            const cpx<R> factor = alpha * x[j * incx];
            for (i64 i = 0; i < m; ++i) y[i * incy] += a[i] * factor;
        } else {
            cpx<R> sum = zero<cpx<R>>;
            for (i64 i = 0; i < m; ++i) sum += a[i] * x[i * incx];
            y[j * incy] += alpha * sum;
        }
    }
}

template <class R>
void mixed_gemv(const char* trans, i64 m, i64 n, cpx<R> alpha, const R* a, i64 lda, const cpx<R>* x, i64 incx,
                cpx<R> beta, cpx<R>* y, i64 incy)
{
    if (nothing_to_do(m, n, alpha, beta)) return;
    const bool straight = op_of<R>(*trans) == Op::none;
    const i64 lenx = straight ? n : m, leny = straight ? m : n;
    scale(leny, beta, y, incy);
    if (alpha == zero<cpx<R>>) return;

    const auto allocate = [](i64 length) {
        return static_cast<R*>(orv_serv_allocate(length * static_cast<i64>(sizeof(cpx<R>)), block_alignment));
    };
    R *x_parts = nullptr, *y_parts = nullptr;
    if (m >= least_side && n >= least_side) {
        x_parts = allocate(lenx);
        y_parts = allocate(leny);
    }
    if (x_parts == nullptr || y_parts == nullptr) plain(*trans, m, n, alpha, a, lda, x, incx, one<cpx<R>>, y, incy);
    else {
        copy_y_forward(leny, y, incy, y_parts);
        copy_x(lenx, alpha, x, incx, x_parts);
        constexpr R real_one = 1;
        constexpr i64 unit = 1;
        for (int part = 0; part < 2; ++part)
            real_gemv<R>(trans, &m, &n, &real_one, a, &lda, x_parts + part * lenx, &unit, &real_one,
                         y_parts + part * leny, &unit);
        copy_y_backward(leny, y_parts, y, incy);
    }
    if (y_parts != nullptr) orv_serv_deallocate(y_parts);
    if (x_parts != nullptr) orv_serv_deallocate(x_parts);
}

} // namespace
} // namespace orv::blas

using namespace orv;

#define MIXED_ARGUMENTS(R)                                                                                             \
    const char *trans, const i64 *m, const i64 *n, const cpx<R>*alpha, const R *a, const i64 *lda, const cpx<R>*x,     \
        const i64 *incx, const cpx<R>*beta, cpx<R>*y, const i64 *incy
#define MIXED_GEMV(stem, R)                                                                                            \
    ORV_EXPORT void BLAS(stem)(MIXED_ARGUMENTS(R))                                                                     \
    {                                                                                                                  \
        blas::mixed_gemv(trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);                                   \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(stem##_pst)(MIXED_ARGUMENTS(R))                                                               \
    {                                                                                                                  \
        blas::plain(*trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);                                       \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(stem##_copyx)(const i64* n, const cpx<R>* alpha, const cpx<R>* x, const i64* incx, R* parts)  \
    {                                                                                                                  \
        blas::copy_x(*n, *alpha, x, *incx, parts);                                                                     \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(stem##_copyy_fwd)(const i64* n, const cpx<R>* y, const i64* incy, R* parts)                   \
    {                                                                                                                  \
        blas::copy_y_forward(*n, y, *incy, parts);                                                                     \
    }                                                                                                                  \
    ORV_EXPORT void BLAS(stem##_copyy_bwd)(const i64* n, const R* parts, cpx<R>* y, const i64* incy)                   \
    {                                                                                                                  \
        blas::copy_y_backward(*n, parts, y, *incy);                                                                    \
    }

MIXED_GEMV(scgemv, float)
MIXED_GEMV(dzgemv, double)
