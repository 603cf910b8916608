// Out of place: the two ways to copy, for the routines that have parsed their letters.
#pragma once

#include "frame/types.h"

namespace orv::trans {

// B := alpha*A or alpha*conj(A), rows by cols elements: a[i*lda + j*stridea] to b[i*ldb + j*strideb]. Every element is
// multiplied, by an alpha of 1, too. A and B do not overlap.
template <class T>
void copy(bool conjugated, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb, u64 strideb);

// B := alpha*A^T or alpha*A^H: a[i*lda + j*stridea] to b[j*ldb + i*strideb]. With alpha = 1 elements are moved (and, if
// need be, a sign bit changed), without a multiplication. A and B do not overlap.
template <class T>
void transpose(bool conjugated, u64 rows, u64 cols, T alpha, const T* a, u64 lda, u64 stridea, T* b, u64 ldb,
               u64 strideb);

} // namespace orv::trans
