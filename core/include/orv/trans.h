/* Copies, transpositions and sums of matrices, out of place and in place.

   ordering  R: row-major, element (i,j) of a matrix at a[i*lda + j]; C: column-major, at a[i + j*lda].
   trans     what op is: N the matrix itself, T its transpose, R its conjugate, C its conjugate transpose. For real
             types R is N and C is T.
   Letters are taken in either case. lda is at least the length of a row (R) or column (C) of the matrix, and at least
   1; elements between the end of one and the start of the next are never touched.

   Every result is a status: 0, -i if argument i is bad (counted from 1), a positive code if no kernel can run; where
   it is not 0 nothing was written.

   Each product and each sum is rounded once, none are fused; no factor is left out because it is 0, so NaN always
   spreads. A real alpha of 1 keeps every number. A complex alpha of 1 keeps every number without infinite parts;
   with an infinite part the product 0*infinity makes the other part NaN, and it may turn a part of -0 into 0, except
   where said otherwise.

   Large matrices are shared among threads (orv/threads.h); results do not depend on their number. All functions can
   be called from several threads at once on operands that no two calls write. */
#ifndef ORV_TRANS_H
#define ORV_TRANS_H

#include <orv/status.h>
#include <orv/types.h>

/* B := alpha*op(A). A is rows by cols; B is too, or cols by rows if op transposes. A and B do not overlap. With an
   alpha of 1 a copy (N) and a transposition (T, C) move the elements, all bits of them; C turns the sign of imaginary
   parts. */
ORV_API orv_status orv_somatcopy(char ordering, char trans, int64_t rows, int64_t cols, float alpha, const float* a,
                                 int64_t lda, float* b, int64_t ldb);
ORV_API orv_status orv_domatcopy(char ordering, char trans, int64_t rows, int64_t cols, double alpha, const double* a,
                                 int64_t lda, double* b, int64_t ldb);
ORV_API orv_status orv_comatcopy(char ordering, char trans, int64_t rows, int64_t cols, orv_complex_float alpha,
                                 const orv_complex_float* a, int64_t lda, orv_complex_float* b, int64_t ldb);
ORV_API orv_status orv_zomatcopy(char ordering, char trans, int64_t rows, int64_t cols, orv_complex_double alpha,
                                 const orv_complex_double* a, int64_t lda, orv_complex_double* b, int64_t ldb);

/* The same, but that only transpositions move, for matrices with gaps in their rows (or columns): neighbours are
   stridea or strideb elements apart, at least 1, and lda is at least 1 + (n - 1)*stridea for n elements in a row. */
ORV_API orv_status orv_somatcopy2(char ordering, char trans, int64_t rows, int64_t cols, float alpha, const float* a,
                                  int64_t lda, int64_t stridea, float* b, int64_t ldb, int64_t strideb);
ORV_API orv_status orv_domatcopy2(char ordering, char trans, int64_t rows, int64_t cols, double alpha, const double* a,
                                  int64_t lda, int64_t stridea, double* b, int64_t ldb, int64_t strideb);
ORV_API orv_status orv_comatcopy2(char ordering, char trans, int64_t rows, int64_t cols, orv_complex_float alpha,
                                  const orv_complex_float* a, int64_t lda, int64_t stridea, orv_complex_float* b,
                                  int64_t ldb, int64_t strideb);
ORV_API orv_status orv_zomatcopy2(char ordering, char trans, int64_t rows, int64_t cols, orv_complex_double alpha,
                                  const orv_complex_double* a, int64_t lda, int64_t stridea, orv_complex_double* b,
                                  int64_t ldb, int64_t strideb);

/* C := alpha*op(A) + beta*op(B), transa telling of A and transb of B. C is rows by cols, A and B have the shape that op
   turns into that. C may be A or B itself if that is not transposed (and has the same leading dimension); else it
   overlaps neither. Runs on one thread. */
ORV_API orv_status orv_somatadd(char ordering, char transa, char transb, int64_t rows, int64_t cols, float alpha,
                                const float* a, int64_t lda, float beta, const float* b, int64_t ldb, float* c,
                                int64_t ldc);
ORV_API orv_status orv_domatadd(char ordering, char transa, char transb, int64_t rows, int64_t cols, double alpha,
                                const double* a, int64_t lda, double beta, const double* b, int64_t ldb, double* c,
                                int64_t ldc);
ORV_API orv_status orv_comatadd(char ordering, char transa, char transb, int64_t rows, int64_t cols,
                                orv_complex_float alpha, const orv_complex_float* a, int64_t lda,
                                orv_complex_float beta, const orv_complex_float* b, int64_t ldb, orv_complex_float* c,
                                int64_t ldc);
ORV_API orv_status orv_zomatadd(char ordering, char transa, char transb, int64_t rows, int64_t cols,
                                orv_complex_double alpha, const orv_complex_double* a, int64_t lda,
                                orv_complex_double beta, const orv_complex_double* b, int64_t ldb,
                                orv_complex_double* c, int64_t ldc);

/* AB := alpha*op(AB). AB is rows by cols with leading dimension lda before, and op of it with leading dimension ldb
   after; only elements that op(AB) has are written.

   A square whose leading dimension stays is turned where it stands, and so is any matrix that is not transposed. To
   transpose any other matrix takes work memory (orv/memory.h): if it has no gaps (lda and ldb are the lengths of the
   rows, or columns, before and after), about 2 MiB, or 128 bytes for each element of its shorter side if that is more,
   and at most a five-hundredth of the matrix; if it has gaps, as much as the matrix. When that memory cannot be had,
   elements follow their cycles one by one, which needs no memory and takes far longer, at worst a time that grows with
   the square of the number of elements. */
ORV_API orv_status orv_simatcopy(char ordering, char trans, int64_t rows, int64_t cols, float alpha, float* ab,
                                 int64_t lda, int64_t ldb);
ORV_API orv_status orv_dimatcopy(char ordering, char trans, int64_t rows, int64_t cols, double alpha, double* ab,
                                 int64_t lda, int64_t ldb);
ORV_API orv_status orv_cimatcopy(char ordering, char trans, int64_t rows, int64_t cols, orv_complex_float alpha,
                                 orv_complex_float* ab, int64_t lda, int64_t ldb);
ORV_API orv_status orv_zimatcopy(char ordering, char trans, int64_t rows, int64_t cols, orv_complex_double alpha,
                                 orv_complex_double* ab, int64_t lda, int64_t ldb);

#endif
