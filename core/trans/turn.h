// Transposition in place of a matrix that is no square, with work memory.
#pragma once

#include "frame/types.h"

namespace orv::core::trans {

// AB, m by n elements with rows lda apart, becomes alpha*op(AB) with rows ldb apart, op being T or C. False, with
// nothing written, if there is no memory for it.
template <class T> bool turn(char op, i64 m, i64 n, T alpha, T* ab, i64 lda, i64 ldb);

} // namespace orv::core::trans
