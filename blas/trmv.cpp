// Triangular product: x := op(A) * x, A n by n, columns lda apart.
//
//   uplo    U: the upper triangle of A is read, else the lower one
//   trans   N: op(A) = A; C: the conjugate transpose of complex matrices; anything else: the transpose
//   diag    U: ones on the diagonal, which is not read; else it is
//
// n <= 0 leaves x alone; a negative incx addresses x from its far end. Blocks of 64 columns, in the order of
// triangle.h, are multiplied in place by a kernel of their own, the rectangles beside them by the matrix-vector
// product. No memory is taken.
#include "blas/triangle.h"
#include "frame/kernels/blas.h"

// The products by type.
#define DRIVER(name, T)                                                                                                \
    ORV_EXPORT void BLAS(name)(const char* trans, const orv::i64* m, const orv::i64* n, const T* alpha, const T* a,    \
                               const orv::i64* lda, const T* x, const orv::i64* incx, const T* beta, T* y,             \
                               const orv::i64* incy);                                                                  \
    static void add_product(char trans, orv::i64 m, orv::i64 n, const T* a, orv::i64 lda, const T* x, T* y,            \
                            orv::i64 inc)                                                                              \
    {                                                                                                                  \
        const T plus = orv::one<T>;                                                                                    \
        BLAS(name)(&trans, &m, &n, &plus, a, &lda, x, &inc, &plus, y, &inc);                                           \
    }

DRIVER(xsgemv, float)
DRIVER(xdgemv, double)
DRIVER(xcgemv, orv::cpx<float>)
DRIVER(xzgemv, orv::cpx<double>)

namespace orv::blas {
namespace {

constexpr i64 block_columns = 64;

template <class T> void trmv(Form form, i64 n, const T* a, i64 lda, T* x, i64 incx)
{
    AddRectangle<T>* const add = add_product;
    in_place_by_blocks<Task::multiply>(form, n, block_columns, a, lda, x, incx, add);
}

// A triangle by itself.
template <class T> void multiply_block(Form form, i64 n, const T* a, i64 lda, T* x, i64 incx)
{
    in_place<Task::multiply>(form, full_triangle(form.half, a, lda, n), n, x, incx);
}

} // namespace

#define ARGUMENTS(T)                                                                                                   \
    const char *uplo, const char *trans, const char *diag, const i64 *n, const T *a, const i64 *lda, T *x,             \
        const i64 *incx
#define TRMV(name, T, body)                                                                                            \
    ORV_EXPORT void BLAS(name)(ARGUMENTS(T))                                                                           \
    {                                                                                                                  \
        body(form_of<T>(*uplo, *trans, *diag), *n, a, *lda, first(x, *n, *incx), *incx);                               \
    }

TRMV(xstrmv, float, trmv)
TRMV(xdtrmv, double, trmv)
TRMV(xctrmv, cpx<float>, trmv)
TRMV(xztrmv, cpx<double>, trmv)

// The kernels of the blocks; any n.
TRMV(strmv_in, float, multiply_block)
TRMV(dtrmv_in, double, multiply_block)
TRMV(ctrmv_in, cpx<float>, multiply_block)
TRMV(ztrmv_in, cpx<double>, multiply_block)

// One member's piece of a product shared among threads, n, a and x being those of the whole: with J the `count` columns
// from the global index `first_column` on,
//
//   x(J) := op(A(J, J)) * x(J)
//
// Nothing but x(J) and the triangle A(J, J) is read, so members with disjoint columns may run at once, in any order.
// What the elements outside of J add to x(J) is the caller's to multiply, from a copy of x. All columns are the whole
// product.
#define TRMV_IN_THREAD(name, T)                                                                                        \
    ORV_EXPORT void BLAS(name)(ARGUMENTS(T), const i64* count, const i64* first_column)                                \
    {                                                                                                                  \
        const i64 j = *first_column;                                                                                   \
        trmv(form_of<T>(*uplo, *trans, *diag), *count, a + j * (*lda + 1), *lda, first(x, *n, *incx) + j * *incx,      \
             *incx);                                                                                                   \
    }

TRMV_IN_THREAD(xstrmv_in_thread, float)
TRMV_IN_THREAD(xdtrmv_in_thread, double)
TRMV_IN_THREAD(xctrmv_in_thread, cpx<float>)
TRMV_IN_THREAD(xztrmv_in_thread, cpx<double>)

} // namespace orv::blas
