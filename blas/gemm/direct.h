// A product straight from the operands, with nothing packed: for products too small to pack, and for want of memory.
//
//   C(i, j) := C(i, j) + alpha*(X(i, 0)*Y(0, j) + X(i, 1)*Y(1, j) + ...)
//
// The sum starts at zero and ascends; then comes one product with alpha and one addition to C. That holds for every
// element, wherever it stands in a tile, so no choice made here shows in the result. Complex products keep four such
// sums, one for each product of parts (re*re, im*im, im*re, re*im), combined in pairs at the end; conjugation only
// turns their signs there. Rows of X run along the lanes of registers, elements of Y are repeated over the lanes.
#pragma once

#include "frame/simd.h"

namespace orv::gemm {

// Where the rows of X stand: side by side in memory, or a leading dimension apart with the steps side by side.
enum class RowLayout { adjacent, apart };

// Where alpha comes in: as a factor of the sum, or nowhere, because it is 1 or in X already.
enum class Alpha { at_end, absent };

template <class T> struct Operands {
    i64 k;      // steps
    const T* x; // X(i, p) at i + p*ldx (adjacent) or at p + i*ldx (apart)
    i64 ldx;
    const T* y; // Y(p, j) at p*y_step + j*y_column
    i64 y_step, y_column;
    T* c; // C(i, j) at i*c_row + j*c_column
    i64 c_row, c_column;
    bool conj_x, conj_y;
    bool replaces; // C counts as zero and is not read
    factor<T> alpha;
};

// C(0:m, 0:n) as above.
template <class T, RowLayout layout, Alpha where = Alpha::at_end> void direct(i64 m, i64 n, const Operands<T>& o);

} // namespace orv::gemm
