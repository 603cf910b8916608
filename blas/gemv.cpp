#include "blas/gemv.h"

#include "blas/beta.h"
#include "blas/stretch.h"
#include "frame/kernels/blas.h"
#include "frame/serv.h"

namespace orv::blas {
namespace {

// A block of A to one call of the kernel: its part of x and of y, gathered, fits on a small stack.
constexpr i64 block_rows = 1000, block_columns = 128;

// y += alpha*op(A)*x in blocks of A, in its order of storage.
template <Op op, class T>
void gemv_strided(i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T* y, i64 incy)
{
    const bool far = is_far<T>(m, n, lda);
    Stretch<T, block_rows> along_rows;
    Stretch<T, block_columns> along_columns;
    for (i64 j = 0; j < n; j += block_columns) {
        const i64 columns = min(block_columns, n - j);
        for (i64 i = 0; i < m; i += block_rows) {
            const i64 rows = min(block_rows, m - i);
            const T* const block = a + i + j * lda;
            if constexpr (op == Op::none) {
                const T* const from = along_columns.gather(columns, x + j * incx, incx);
                T* const to = along_rows.gather(rows, y + i * incy, incy);
                gemv_kernel<op>(rows, columns, alpha, block, lda, from, to, far);
                along_rows.scatter(rows, y + i * incy, incy);
            } else {
                const T* const from = along_rows.gather(rows, x + i * incx, incx);
                T* const to = along_columns.gather(columns, y + j * incy, incy);
                gemv_kernel<op>(rows, columns, alpha, block, lda, from, to, far);
                along_columns.scatter(columns, y + j * incy, incy);
            }
        }
    }
}

template <Op op, class T>
void gemv(i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    const i64 lenx = op == Op::none ? n : m, leny = op == Op::none ? m : n;
    x = first(x, lenx, incx);
    y = first(y, leny, incy);
    apply_beta(leny, beta, y, incy);
    if (alpha == zero<T>) return;
    if (incx == 1 && incy == 1) gemv_kernel<op>(m, n, alpha, a, lda, x, y, is_far<T>(m, n, lda));
    else gemv_strided<op>(m, n, alpha, a, lda, x, incx, y, incy);
}

template <class T> bool nothing_to_do(i64 m, i64 n, T alpha, T beta)
{
    return m == 0 || n == 0 || (alpha == zero<T> && beta == one<T>);
}

} // namespace

template <class T>
void gemv(Op op, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    if (nothing_to_do(m, n, alpha, beta)) return;
    if (op == Op::none) return gemv<Op::none>(m, n, alpha, a, lda, x, incx, beta, y, incy);
    if constexpr (is_complex<T>)
        if (op == Op::conjugate) return gemv<Op::conjugate>(m, n, alpha, a, lda, x, incx, beta, y, incy);
    gemv<Op::transpose>(m, n, alpha, a, lda, x, incx, beta, y, incy);
}
#define GEMV_INSTANCE(T) template void gemv(Op, i64, i64, T, const T*, i64, const T*, i64, T, T*, i64);
GEMV_INSTANCE(float)
GEMV_INSTANCE(double)
GEMV_INSTANCE(cpx<float>)
GEMV_INSTANCE(cpx<double>)

namespace {

// y(0:columns) += alpha*A^T*x, each sum in one chain: from 0, row after row.
template <int columns, class T> void dot_in_order(i64 m, T alpha, const T* a, i64 lda, const T* x, i64 incx, T* y)
{
    T sum[columns] = {};
    for (i64 i = 0; i < m; ++i)
#pragma GCC unroll 8
        for (int j = 0; j < columns; ++j) sum[j] = sum[j] + a[i + j * lda] * x[i * incx];
    for (int j = 0; j < columns; ++j) y[j] = y[j] + alpha * sum[j];
}

// The reproducible twin: the reference routine's order, whatever the alignment, the strides and the leading dimension.
//
//   N   y(i) = ((beta*y(i) + a(i,0)*(alpha*x(0))) + a(i,1)*(alpha*x(1))) + ..., as the fast body computes it too
//   T   y(j) = beta*y(j) + alpha*((a(0,j)*x(0) + a(1,j)*x(1)) + ...), the sum in one chain
template <class T>
void gemv_in_order(Op op, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    if (op == Op::none) return gemv(op, m, n, alpha, a, lda, x, incx, beta, y, incy);
    if (nothing_to_do(m, n, alpha, beta)) return;
    x = first(x, m, incx);
    y = first(y, n, incy);
    apply_beta(n, beta, y, incy);
    if (alpha == zero<T>) return;
    Stretch<T, block_columns> along_columns;
    for (i64 first_column = 0; first_column < n; first_column += block_columns) {
        const i64 columns = min(block_columns, n - first_column);
        const T* const block = a + first_column * lda;
        T* const to = along_columns.gather(columns, y + first_column * incy, incy);
        i64 j = 0;
        for (; j + 8 <= columns; j += 8) dot_in_order<8>(m, alpha, block + j * lda, lda, x, incx, to + j);
        for (; j < columns; ++j) dot_in_order<1>(m, alpha, block + j * lda, lda, x, incx, to + j);
        along_columns.scatter(columns, y + first_column * incy, incy);
    }
}

} // namespace

// trans: N is the product with A, C (of complex matrices) with its conjugate transpose, anything else with its
// transpose.
#define GEMV_ARGUMENTS(T)                                                                                              \
    const char *trans, const i64 *m, const i64 *n, const T *alpha, const T *a, const i64 *lda, const T *x,             \
        const i64 *incx, const T *beta, T *y, const i64 *incy
#define GEMV(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(GEMV_ARGUMENTS(T))                                                                      \
    {                                                                                                                  \
        gemv(op_of<T>(*trans), *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);                                    \
    }

GEMV(xdgemv, double)
GEMV(xcgemv, cpx<float>)
GEMV(xzgemv, cpx<double>)

// The last argument is 1 in every call and says nothing.
ORV_EXPORT void BLAS(xsgemv_cnr)(GEMV_ARGUMENTS(float), const i64* /* one */)
{
    gemv_in_order(op_of<float>(*trans), *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

ORV_EXPORT void BLAS(xsgemv)(GEMV_ARGUMENTS(float))
{
    if (nothing_to_do(*m, *n, *alpha, *beta)) return;
    if (orv_serv_cbwr_get(1) != 1) {
        constexpr i64 flag = 1;
        return BLAS(xsgemv_cnr)(trans, m, n, alpha, a, lda, x, incx, beta, y, incy, &flag);
    }
    gemv(op_of<float>(*trans), *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}

} // namespace orv::blas
