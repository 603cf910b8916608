// The general matrix-vector product, for the routines that hand it rectangles.
#pragma once

#include "blas/gemv_kernels.h"

namespace orv::blas {

// y := alpha*op(A)*x + beta*y, A of m rows and n columns, lda apart.
//
// A negative stride starts at the vector's far end; a stride of 0 takes the one location for all elements. m or n of 0,
// and alpha = 0 with beta = 1, leave y alone. beta is applied first, in a pass of its own (beta.h); alpha = 0 then ends
// the call with A and x unread. No memory is taken but 19 KiB of the stack at most.
template <class T>
void gemv(Op op, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, i64 incx, T beta, T* y, i64 incy);

} // namespace orv::blas
