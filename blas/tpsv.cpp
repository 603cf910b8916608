// Packed triangular solve: x := op(A)^-1 * x, the columns of A's triangle one after the other without gaps.
//
//   uplo    U: A is upper triangular, column j stands j*(j+1)/2 elements from the start; else lower, j*(2*n-j+1)/2
//   trans   N: op(A) = A; C: the conjugate transpose of complex matrices; anything else: the transpose
//   diag    U: ones on the diagonal, which is not read; else it is, and zeros on it give infinities or NaN
//
// n <= 0 leaves x alone; a negative incx addresses x from its far end. No memory is taken.
#include "blas/triangle.h"
#include "frame/kernels/blas.h"

namespace orv::blas {

#define TPSV(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(const char* uplo, const char* trans, const char* diag, const i64* n, const T* a, T* x,  \
                               const i64* incx)                                                                        \
    {                                                                                                                  \
        const Form form = form_of<T>(*uplo, *trans, *diag);                                                            \
        in_place<Task::solve>(form, packed_triangle(form.half, a, *n), *n, first(x, *n, *incx), *incx);                \
    }

TPSV(stpsv, float)
TPSV(dtpsv, double)
TPSV(ctpsv, cpx<float>)
TPSV(ztpsv, cpx<double>)

} // namespace orv::blas
