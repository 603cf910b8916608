// The product of a banded matrix and a vector: y := alpha*op(A)*x + beta*y, A of m rows and n columns with kl diagonals
// below the main one and ku above.
//
// trans: N is the product with A, C (of complex matrices) with its conjugate transpose, anything else with its
// transpose. m or n of 0, and alpha = 0 with beta = 1, leave y alone. beta is applied first, in a pass of its own
// (beta.h); alpha = 0 then ends the call with A and x unread. Negative strides address a vector from its far end. NaN
// in the band or in x reaches y. No memory is taken but some 22 KiB of the stack where a stride is not 1.
#include "blas/beta.h"
#include "blas/structured_mv.h"
#include "frame/kernels/blas.h"

namespace orv::blas {
namespace {

template <class T>
void gbmv(Op op, i64 m, i64 n, i64 kl, i64 ku, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y,
          i64 incy)
{
    if (m <= 0 || n <= 0 || (alpha == zero<T> && beta == one<T>)) return;
    const i64 lenx = op == Op::none ? n : m, leny = op == Op::none ? m : n;
    x = first(x, lenx, incx);
    y = first(y, leny, incy);
    apply_beta(leny, beta, y, incy);
    if (alpha == zero<T>) return;
    const i64 columns = min(n, m + ku); // those behind have no rows
    with_op<T>(op, [&]<Op op>() {
        structured_mv<pass_of<op>>(general_band(a, lda, m, kl, ku), columns, alpha, x, incx, y, incy,
                                   {.ahead = Ahead::next_strip});
    });
}

} // namespace

#define GBMV(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(const char* trans, const i64* m, const i64* n, const i64* kl, const i64* ku,            \
                               const T* alpha, const T* a, const i64* lda, const T* x, const i64* incx, const T* beta, \
                               T* y, const i64* incy)                                                                  \
    {                                                                                                                  \
        gbmv(op_of<T>(*trans), *m, *n, *kl, *ku, *alpha, a, *lda, x, *incx, *beta, y, *incy);                          \
    }

GBMV(sgbmv, float)
GBMV(dgbmv, double)
GBMV(cgbmv, cpx<float>)
GBMV(zgbmv, cpx<double>)

} // namespace orv::blas
