// What the reference BLAS calls a bad argument, and how it is reported. Each check takes all arguments of a routine in
// its order and gives the number of the first one that is bad, counted from 1, tested in the order of the reference; 0
// if all are good. Level-1 routines take whatever comes.
#pragma once

#include "frame/types.h"

#include <cstddef>

namespace orv::arguments {

// The name of a routine as Fortran's error routine gets it: six letters, upper-case, filled up with blanks.
struct Name {
    static constexpr int length = 6;
    char text[length + 1] = "      ";

    explicit constexpr Name(const char* routine)
    {
        for (int i = 0; i < length && routine[i] != '\0'; ++i)
            text[i] = routine[i] >= 'a' ? fold(routine[i]) : routine[i]; // digits stay
    }
};

template <std::size_t length> constexpr bool one_of(char letter, const char (&letters)[length])
{
    for (std::size_t i = 0; i + 1 < length; ++i)
        if (fold(letter) == letters[i]) return true;
    return false;
}

// The checks are objects, so that a table can name one; `auto` is what no check looks at: scalars and arrays.

constexpr auto gemm = [](char transa, char transb, i64 m, i64 n, i64 k, auto, auto, i64 lda, auto, i64 ldb, auto, auto,
                         i64 ldc) {
    if (!one_of(transa, "NTC")) return 1;
    if (!one_of(transb, "NTC")) return 2;
    if (m < 0) return 3;
    if (n < 0) return 4;
    if (k < 0) return 5;
    if (lda < max(1, fold(transa) == 'N' ? m : k)) return 8;
    if (ldb < max(1, fold(transb) == 'N' ? k : n)) return 10;
    if (ldc < max(1, m)) return 13;
    return 0;
};

// General matrices and vectors.

constexpr auto gemv = [](char trans, i64 m, i64 n, auto, auto, i64 lda, auto, i64 incx, auto, auto, i64 incy) {
    if (!one_of(trans, "NTC")) return 1;
    if (m < 0) return 2;
    if (n < 0) return 3;
    if (lda < max(1, m)) return 6;
    if (incx == 0) return 8;
    if (incy == 0) return 11;
    return 0;
};

constexpr auto gbmv = [](char trans, i64 m, i64 n, i64 kl, i64 ku, auto, auto, i64 lda, auto, i64 incx, auto, auto,
                         i64 incy) {
    if (!one_of(trans, "NTC")) return 1;
    if (m < 0) return 2;
    if (n < 0) return 3;
    if (kl < 0) return 4;
    if (ku < 0) return 5;
    if (lda < 1 || lda - 1 - kl < ku) return 8; // kl + ku + 1 might overflow
    if (incx == 0) return 10;
    if (incy == 0) return 13;
    return 0;
};

constexpr auto ger = [](i64 m, i64 n, auto, auto, i64 incx, auto, i64 incy, auto, i64 lda) {
    if (m < 0) return 1;
    if (n < 0) return 2;
    if (incx == 0) return 5;
    if (incy == 0) return 7;
    if (lda < max(1, m)) return 9;
    return 0;
};

// Products with symmetric and Hermitian matrices: full, band, packed.

constexpr auto symv = [](char uplo, i64 n, auto, auto, i64 lda, auto, i64 incx, auto, auto, i64 incy) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (lda < max(1, n)) return 5;
    if (incx == 0) return 7;
    if (incy == 0) return 10;
    return 0;
};

constexpr auto sbmv = [](char uplo, i64 n, i64 k, auto, auto, i64 lda, auto, i64 incx, auto, auto, i64 incy) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (k < 0) return 3;
    if (lda <= k) return 6;
    if (incx == 0) return 8;
    if (incy == 0) return 11;
    return 0;
};

constexpr auto spmv = [](char uplo, i64 n, auto, auto, auto, i64 incx, auto, auto, i64 incy) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (incx == 0) return 6;
    if (incy == 0) return 9;
    return 0;
};

// Updates of these, by one vector and by two.

constexpr auto syr = [](char uplo, i64 n, auto, auto, i64 incx, auto, i64 lda) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (incx == 0) return 5;
    if (lda < max(1, n)) return 7;
    return 0;
};

constexpr auto spr = [](char uplo, i64 n, auto, auto, i64 incx, auto) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (incx == 0) return 5;
    return 0;
};

constexpr auto syr2 = [](char uplo, i64 n, auto, auto, i64 incx, auto, i64 incy, auto, i64 lda) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (incx == 0) return 5;
    if (incy == 0) return 7;
    if (lda < max(1, n)) return 9;
    return 0;
};

constexpr auto spr2 = [](char uplo, i64 n, auto, auto, i64 incx, auto, i64 incy, auto) {
    if (!one_of(uplo, "UL")) return 1;
    if (n < 0) return 2;
    if (incx == 0) return 5;
    if (incy == 0) return 7;
    return 0;
};

// Products with triangular matrices and their solves: full, band, packed.

constexpr int triangle(char uplo, char trans, char diag, i64 n)
{
    if (!one_of(uplo, "UL")) return 1;
    if (!one_of(trans, "NTC")) return 2;
    if (!one_of(diag, "UN")) return 3;
    if (n < 0) return 4;
    return 0;
}

constexpr auto trmv = [](char uplo, char trans, char diag, i64 n, auto, i64 lda, auto, i64 incx) {
    if (const int bad = triangle(uplo, trans, diag, n)) return bad;
    if (lda < max(1, n)) return 6;
    if (incx == 0) return 8;
    return 0;
};

constexpr auto tbmv = [](char uplo, char trans, char diag, i64 n, i64 k, auto, i64 lda, auto, i64 incx) {
    if (const int bad = triangle(uplo, trans, diag, n)) return bad;
    if (k < 0) return 5;
    if (lda <= k) return 7;
    if (incx == 0) return 9;
    return 0;
};

constexpr auto tpmv = [](char uplo, char trans, char diag, i64 n, auto, auto, i64 incx) {
    if (const int bad = triangle(uplo, trans, diag, n)) return bad;
    if (incx == 0) return 7;
    return 0;
};

// Products of matrices with a symmetric or Hermitian one, and updates of such.

constexpr auto symm = [](char side, char uplo, i64 m, i64 n, auto, auto, i64 lda, auto, i64 ldb, auto, auto, i64 ldc) {
    if (!one_of(side, "LR")) return 1;
    if (!one_of(uplo, "UL")) return 2;
    if (m < 0) return 3;
    if (n < 0) return 4;
    if (lda < max(1, fold(side) == 'L' ? m : n)) return 7;
    if (ldb < max(1, m)) return 9;
    if (ldc < max(1, m)) return 12;
    return 0;
};

// Products with a triangular matrix, and solves.
constexpr auto trmm = [](char side, char uplo, char trans, char diag, i64 m, i64 n, auto, auto, i64 lda, auto,
                         i64 ldb) {
    if (!one_of(side, "LR")) return 1;
    if (!one_of(uplo, "UL")) return 2;
    if (!one_of(trans, "NTC")) return 3;
    if (!one_of(diag, "UN")) return 4;
    if (m < 0) return 5;
    if (n < 0) return 6;
    if (lda < max(1, fold(side) == 'L' ? m : n)) return 9;
    if (ldb < max(1, m)) return 11;
    return 0;
};

// The transposed product has two letters for reals, T for a symmetric and C for a Hermitian result: that one has a real
// factor of C.
template <class Element, class Factor> constexpr bool update_letter(char trans)
{
    if constexpr (!is_complex<Element>) return one_of(trans, "NTC");
    else return one_of(trans, is_complex<Factor> ? "NT" : "NC");
}

constexpr auto syrk = []<class F, class T>(char uplo, char trans, i64 n, i64 k, F, const T*, i64 lda, F, T*, i64 ldc) {
    if (!one_of(uplo, "UL")) return 1;
    if (!update_letter<T, F>(trans)) return 2;
    if (n < 0) return 3;
    if (k < 0) return 4;
    if (lda < max(1, fold(trans) == 'N' ? n : k)) return 7;
    if (ldc < max(1, n)) return 10;
    return 0;
};

constexpr auto syr2k = []<class F, class T>(char uplo, char trans, i64 n, i64 k, T, const T*, i64 lda, const T*,
                                            i64 ldb, F, T*, i64 ldc) {
    if (!one_of(uplo, "UL")) return 1;
    if (!update_letter<T, F>(trans)) return 2;
    if (n < 0) return 3;
    if (k < 0) return 4;
    const i64 rows = max(1, fold(trans) == 'N' ? n : k);
    if (lda < rows) return 7;
    if (ldb < rows) return 9;
    if (ldc < max(1, n)) return 12;
    return 0;
};

} // namespace orv::arguments
