// Band triangular product: x := op(A) * x, A with k diagonals beside the main one, columns lda apart.
//
//   uplo    U: A is upper triangular, its diagonal in row k of the array; else lower, its diagonal in row 0
//   trans   N: op(A) = A; C: the conjugate transpose of complex matrices; anything else: the transpose
//   diag    U: ones on the diagonal, which is not read; else it is
//
// n <= 0 leaves x alone; a negative incx addresses x from its far end. No memory is taken.
#include "blas/triangle.h"
#include "frame/kernels/blas.h"

namespace orv::blas {

#define TBMV(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(const char* uplo, const char* trans, const char* diag, const i64* n, const i64* k,      \
                               const T* a, const i64* lda, T* x, const i64* incx)                                      \
    {                                                                                                                  \
        const Form form = form_of<T>(*uplo, *trans, *diag);                                                            \
        in_place<Task::multiply>(form, band_triangle(form.half, a, *lda, *n, *k), *n, first(x, *n, *incx), *incx);     \
    }

TBMV(stbmv, float)
TBMV(dtbmv, double)

// Complex products have one body under two names.
TBMV(ctbmv, cpx<float>)
TBMV(ctbmv_f, cpx<float>)
TBMV(ztbmv, cpx<double>)
TBMV(ztbmv_f, cpx<double>)

} // namespace orv::blas
