/* Factorisations and solves of LAPACK's kind. Matrices are stored by columns, element (i,j) at a[i + j*lda]; letters
   are taken in either case.

   Every result is a status: 0, -i if argument i is bad (counted from 1), a positive code if no kernel can run; where it
   is not 0 nothing was written. How a computation ended is told by *info: 0, or the number of the first pivot, counted
   from 1, at which it had to stop. All functions can be called from several threads at once on operands that no two
   calls write. */
#ifndef ORV_LAPACK_H
#define ORV_LAPACK_H

#include <orv/status.h>
#include <orv/types.h>

/* Cholesky factorisation of a symmetric or Hermitian positive definite matrix of order n: A = L*L^H (uplo 'L') or
   A = U^H*U ('U'). The triangle that uplo names is read and becomes the factor, the other one is neither read nor
   written; the imaginary parts of the diagonal are taken as 0. info i: the leading minor of order i is not positive, or
   not a number; the factor of the one before it is complete, all else in the triangle is not specified. Blocks of the
   matrix are factored by kernels for small matrices, the rest are trsm and syrk (herk); without memory for these a slow
   loop takes their place. Bad: 1 another letter; 2 a negative n; 4 lda below max(1, n).
   Source: Elmroth, Gustavson, IBM J. Res. Dev. 44 (2000) 605-624. */
ORV_API orv_status orv_spotrf(char uplo, int64_t n, float* a, int64_t lda, int64_t* info);
ORV_API orv_status orv_dpotrf(char uplo, int64_t n, double* a, int64_t lda, int64_t* info);
ORV_API orv_status orv_cpotrf(char uplo, int64_t n, orv_complex_float* a, int64_t lda, int64_t* info);
ORV_API orv_status orv_zpotrf(char uplo, int64_t n, orv_complex_double* a, int64_t lda, int64_t* info);

/* Tridiagonal systems that need no pivoting, such as diagonally dominant ones, by elimination from both ends at once:
   the two sweeps do not wait for one another, and meet in the middle. dl and du hold the n - 1 elements below and above
   the diagonal, d the n on it.

   dttrfb factors A: d receives the reciprocals of the pivots, dl the multipliers; du stays as it is. info i: pivot i is
   zero or not a number. The order of elimination is 1, n, 2, n-1, ... for pivots counted from 1.
   Bad: 1 a negative n.
   Source: van der Vorst, Parallel Computing 5 (1987) 45-54. */
ORV_API orv_status orv_sdttrfb(int64_t n, float* dl, float* d, const float* du, int64_t* info);
ORV_API orv_status orv_ddttrfb(int64_t n, double* dl, double* d, const double* du, int64_t* info);
ORV_API orv_status orv_cdttrfb(int64_t n, orv_complex_float* dl, orv_complex_float* d, const orv_complex_float* du,
                               int64_t* info);
ORV_API orv_status orv_zdttrfb(int64_t n, orv_complex_double* dl, orv_complex_double* d, const orv_complex_double* du,
                               int64_t* info);

/* Solves op(A)*X = B with the factors of dttrfb, for nrhs columns of B, which become those of X. trans: 'N' A itself,
   'T' its transpose, 'C' its conjugate transpose. info is always 0. Bad: 1 another letter; 2, 3 a negative n, nrhs; 8
   ldb below max(1, n). */
ORV_API orv_status orv_sdttrsb(char trans, int64_t n, int64_t nrhs, const float* dl, const float* d, const float* du,
                               float* b, int64_t ldb, int64_t* info);
ORV_API orv_status orv_ddttrsb(char trans, int64_t n, int64_t nrhs, const double* dl, const double* d, const double* du,
                               double* b, int64_t ldb, int64_t* info);
ORV_API orv_status orv_cdttrsb(char trans, int64_t n, int64_t nrhs, const orv_complex_float* dl,
                               const orv_complex_float* d, const orv_complex_float* du, orv_complex_float* b,
                               int64_t ldb, int64_t* info);
ORV_API orv_status orv_zdttrsb(char trans, int64_t n, int64_t nrhs, const orv_complex_double* dl,
                               const orv_complex_double* d, const orv_complex_double* du, orv_complex_double* b,
                               int64_t ldb, int64_t* info);

/* Both in one call: factors A and solves A*X = B. If info is not 0, B does not hold a solution.
   Bad: 1, 2 a negative n, nrhs; 7 ldb below max(1, n). */
ORV_API orv_status orv_sdtsvb(int64_t n, int64_t nrhs, float* dl, float* d, const float* du, float* b, int64_t ldb,
                              int64_t* info);
ORV_API orv_status orv_ddtsvb(int64_t n, int64_t nrhs, double* dl, double* d, const double* du, double* b, int64_t ldb,
                              int64_t* info);
ORV_API orv_status orv_cdtsvb(int64_t n, int64_t nrhs, orv_complex_float* dl, orv_complex_float* d,
                              const orv_complex_float* du, orv_complex_float* b, int64_t ldb, int64_t* info);
ORV_API orv_status orv_zdtsvb(int64_t n, int64_t nrhs, orv_complex_double* dl, orv_complex_double* d,
                              const orv_complex_double* du, orv_complex_double* b, int64_t ldb, int64_t* info);

/* B := alpha*A + beta*B on a part of m by n matrices: 'U' the rows 0..j of each column j, 'L' its rows j..m-1, any
   other letter all. Each product and each sum is rounded once, and no factor is special: a NaN of B stays even if beta
   is 0. A and B do not overlap. Bad: 2, 3 a negative m, n; 5, 8 lda, ldb below max(1, m). */
ORV_API orv_status orv_slacpy2(char uplo, int64_t m, int64_t n, const float* a, int64_t lda, float alpha, float* b,
                               int64_t ldb, float beta);
ORV_API orv_status orv_dlacpy2(char uplo, int64_t m, int64_t n, const double* a, int64_t lda, double alpha, double* b,
                               int64_t ldb, double beta);
ORV_API orv_status orv_clacpy2(char uplo, int64_t m, int64_t n, const orv_complex_float* a, int64_t lda,
                               orv_complex_float alpha, orv_complex_float* b, int64_t ldb, orv_complex_float beta);
ORV_API orv_status orv_zlacpy2(char uplo, int64_t m, int64_t n, const orv_complex_double* a, int64_t lda,
                               orv_complex_double alpha, orv_complex_double* b, int64_t ldb, orv_complex_double beta);

/* The same with the part of B stored without gaps, that of one column right behind that of the column before. */
ORV_API orv_status orv_slacpy3(char uplo, int64_t m, int64_t n, const float* a, int64_t lda, float alpha, float* b,
                               float beta);
ORV_API orv_status orv_dlacpy3(char uplo, int64_t m, int64_t n, const double* a, int64_t lda, double alpha, double* b,
                               double beta);
ORV_API orv_status orv_clacpy3(char uplo, int64_t m, int64_t n, const orv_complex_float* a, int64_t lda,
                               orv_complex_float alpha, orv_complex_float* b, orv_complex_float beta);
ORV_API orv_status orv_zlacpy3(char uplo, int64_t m, int64_t n, const orv_complex_double* a, int64_t lda,
                               orv_complex_double alpha, orv_complex_double* b, orv_complex_double beta);

#endif
