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

template <class T>
constexpr int gemm(char transa, char transb, i64 m, i64 n, i64 k, T, const T*, i64 lda, const T*, i64 ldb, T, const T*,
                   i64 ldc)
{
    if (!one_of(transa, "NTC")) return 1;
    if (!one_of(transb, "NTC")) return 2;
    if (m < 0) return 3;
    if (n < 0) return 4;
    if (k < 0) return 5;
    if (lda < max(1, fold(transa) == 'N' ? m : k)) return 8;
    if (ldb < max(1, fold(transb) == 'N' ? k : n)) return 10;
    if (ldc < max(1, m)) return 13;
    return 0;
}

template <class T>
constexpr int gemv(char trans, i64 m, i64 n, T, const T*, i64 lda, const T*, i64 incx, T, const T*, i64 incy)
{
    if (!one_of(trans, "NTC")) return 1;
    if (m < 0) return 2;
    if (n < 0) return 3;
    if (lda < max(1, m)) return 6;
    if (incx == 0) return 8;
    if (incy == 0) return 11;
    return 0;
}

template <class T> constexpr int ger(i64 m, i64 n, T, const T*, i64 incx, const T*, i64 incy, const T*, i64 lda)
{
    if (m < 0) return 1;
    if (n < 0) return 2;
    if (incx == 0) return 5;
    if (incy == 0) return 7;
    if (lda < max(1, m)) return 9;
    return 0;
}

} // namespace orv::arguments
