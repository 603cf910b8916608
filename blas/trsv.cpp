// Triangular solve: x := op(A)^-1 * x, A n by n, columns lda apart.
//
//   uplo    U: the upper triangle of A is read, else the lower one
//   trans   N: op(A) = A; C: the conjugate transpose of complex matrices; anything else: the transpose
//   diag    U: ones on the diagonal, which is not read; else it is, and zeros on it give infinities or NaN
//
// n <= 0 leaves x alone; a negative incx addresses x from its far end. Blocks of 32 columns, in the direction of the
// solve (triangle.h), are solved by a kernel of their own. Between them the public matrix-vector product, which may go
// parallel, takes what a block's solution means for the unsolved rest (N), or what the solved rest means for the next
// block (T, C). No memory is taken.
#include "blas/triangle.h"
#include "frame/imports.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

// The public products; alpha is -1 and beta is 1 in every call.
#define PUBLIC_GEMV(t, T)                                                                                              \
    void subtract_product(char trans, i64 m, i64 n, const T* a, i64 lda, const T* x, T* y, i64 inc)                    \
    {                                                                                                                  \
        const T minus = -one<T>, plus = one<T>;                                                                        \
        orv_blas_##t##gemv(&trans, &m, &n, &minus, a, &lda, x, &inc, &plus, y, &inc);                                  \
    }
PUBLIC_GEMV(s, float)
PUBLIC_GEMV(d, double)
PUBLIC_GEMV(c, cpx<float>)
PUBLIC_GEMV(z, cpx<double>)

constexpr i64 block_columns = 32;

template <class T> void trsv(Form form, i64 n, const T* a, i64 lda, T* x, i64 incx)
{
    AddRectangle<T>* const subtract = subtract_product;
    in_place_by_blocks<Task::solve>(form, n, block_columns, a, lda, x, incx, subtract);
}

// A triangle by itself.
template <class T> ORV_INLINE void solve_block(Form form, i64 n, const T* a, i64 lda, T* x, i64 incx)
{
    in_place<Task::solve>(form, full_triangle(form.half, a, lda, n), n, x, incx);
}

} // namespace

#define TRSV(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(const char* uplo, const char* trans, const char* diag, const i64* n, const T* a,        \
                               const i64* lda, T* x, const i64* incx)                                                  \
    {                                                                                                                  \
        trsv(form_of<T>(*uplo, *trans, *diag), *n, a, *lda, first(x, *n, *incx), *incx);                               \
    }

TRSV(strsv, float)
TRSV(xdtrsv, double)
TRSV(ctrsv, cpx<float>)
TRSV(ztrsv, cpx<double>)

// The kernels of the blocks. The letters of a name are its options: lnn is lower, not transposed, not unit; utu upper,
// transposed, unit.
#define BLOCK(t, T, uplo, trans, diag)                                                                                 \
    ORV_EXPORT void BLAS(t##trsv_##uplo##trans##diag)(const i64* n, const T* a, const i64* lda, T* x, const i64* incx) \
    {                                                                                                                  \
        solve_block(form_of<T>(#uplo[0], #trans[0], #diag[0]), *n, a, *lda, first(x, *n, *incx), *incx);               \
    }
#define BLOCKS(t, T, trans)                                                                                            \
    BLOCK(t, T, l, trans, n) BLOCK(t, T, l, trans, u) BLOCK(t, T, u, trans, n) BLOCK(t, T, u, trans, u)

BLOCKS(s, float, n)
BLOCKS(s, float, t)
BLOCKS(d, double, n)
BLOCKS(d, double, t)
BLOCKS(c, cpx<float>, n)
BLOCKS(c, cpx<float>, t)
BLOCKS(c, cpx<float>, c)
BLOCKS(z, cpx<double>, n)
BLOCKS(z, cpx<double>, t)
BLOCKS(z, cpx<double>, c)

} // namespace orv::blas
