// Copies and transpositions of matrices, an expression each.
#include "bench/eigen.h"

#define TRANSPOSE(t, T)                                                                                                \
    EXPORT void t##omatcopy_(char*, char* trans, int* rows, int* cols, T* alpha, T* a, int* lda, T* b, int* ldb)       \
    {                                                                                                                  \
        const auto from = matrix(a, *rows, *cols, *lda);                                                               \
        if (*trans == 'N') matrix(b, *rows, *cols, *ldb) = *alpha * from;                                              \
        else if (*alpha == T(1)) matrix(b, *cols, *rows, *ldb) = from.transpose();                                     \
        else matrix(b, *cols, *rows, *ldb) = *alpha * from.transpose();                                                \
    }                                                                                                                  \
    EXPORT void t##imatcopy_(char*, char*, int* rows, int* cols, T* alpha, T* ab, int* lda, int* ldb)                  \
    {                                                                                                                  \
        auto from = matrix(ab, *rows, *cols, *lda);                                                                    \
        if (*rows == *cols) from.transposeInPlace();                                                                   \
        else matrix(ab, *cols, *rows, *ldb) = from.transpose().eval();                                                 \
        if (*alpha != T(1)) matrix(ab, *cols, *rows, *ldb) *= *alpha;                                                  \
    }

TRANSPOSE(s, float)
TRANSPOSE(d, double)
TRANSPOSE(c, cfloat)
TRANSPOSE(z, cdouble)
