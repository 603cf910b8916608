// How structured matrices lie in memory. Whatever the storage, it holds columns, and of each column a run of rows:
//
//   column(j)   a pointer c such that c[i] is element (i, j) for every stored row i
//   rows(j)     the stored rows, diagonal included
//
// so that one body over a storage serves full, packed and band matrices. Bands lie as in BLAS: column j of the array
// holds column j of the matrix, the diagonal in row k of the array (upper), 0 (lower) or ku (general). What lies
// outside of the run is never read.
#pragma once

#include "frame/types.h"

namespace orv::blas {

enum class Half { lower, upper };

// U is the upper triangle, anything else the lower one.
constexpr Half half_of(char uplo) { return fold(uplo) == 'U' ? Half::upper : Half::lower; }

// Rows from..to-1.
struct Rows {
    i64 from, to;
};

template <class T, Half half> struct FullTriangle {
    T* a;
    i64 lda, n;
    T* column(i64 j) const { return a + j * lda; }
    Rows rows(i64 j) const { return half == Half::upper ? Rows{0, j + 1} : Rows{j, n}; }
};

// Column after column without gaps.
template <class T, Half half> struct PackedTriangle {
    T* a;
    i64 n;
    T* column(i64 j) const { return a + (half == Half::upper ? j * (j + 1) : j * (2 * n - j - 1)) / 2; }
    Rows rows(i64 j) const { return half == Half::upper ? Rows{0, j + 1} : Rows{j, n}; }
};

// k diagonals beside the main one.
template <class T, Half half> struct BandTriangle {
    T* a;
    i64 lda, n, k;
    T* column(i64 j) const { return a + j * lda - j + (half == Half::upper ? k : 0); }
    Rows rows(i64 j) const { return half == Half::upper ? Rows{max(0, j - k), j + 1} : Rows{j, min(n, j + k + 1)}; }
};

// m by n, kl diagonals below the main one and ku above.
template <class T> struct GeneralBand {
    T* a;
    i64 lda, m, kl, ku;
    T* column(i64 j) const { return a + j * lda - j + ku; }
    Rows rows(i64 j) const { return {max(0, j - ku), min(m, j + kl + 1)}; }
};

} // namespace orv::blas
