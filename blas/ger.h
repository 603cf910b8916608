// The rank-one update, for the routines that end in one.
#pragma once

#include "frame/types.h"

namespace orv {

// A(0:m, 0:n) += alpha*x*y^T, column by column.
template <class T> void ger(i64 m, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy, T* a, i64 lda);

} // namespace orv
