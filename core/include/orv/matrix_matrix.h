/* Dense BLAS: matrices and matrices, all but the general product. Part of <orv/blas.h>, where numbers, matrices,
   results and Fortran's way to call are described; what follows holds for all routines here.

   op        the letter trans: 'N' the matrix, 'T' its transpose, 'C' its conjugate transpose
   Triangle  the letter uplo: 'U' the elements on and above the diagonal are stored, 'L' those on and below it; the
             others are neither read nor written. The imaginary parts on the diagonal of a Hermitian matrix are taken
             as 0, and set to 0 by an update.
   Letters   in either case
   Scalars   beta = 0 sets C without reading it, so NaN in C is lost; alpha = 0 leaves C := beta*C and does not read A
             and B. Nothing is done if C has no elements.
   Memory    blocks are computed in work memory, or, if there is none, in a smaller one on the stack, with results that
             may differ in the last bits. On one thread trmm and trsm then leave B as it was and answer ORV_NO_MEMORY;
             on several, a thread that finds none computes its part of B without.
   Threads   large problems are shared among threads: symm, hemm, trmm and trsm by columns (side 'L') or rows ('R') of
             the result, the others by all of it. Results are the same bits on any number of threads; those of gemm3m
             only if k - 1 modulo 128 is 10 or more, or if results are to be reproducible (orv_set_reproducible).

   Source: Dongarra, Du Croz, Hammarling, Duff, ACM TOMS 16 (1990) 1-17; gemm3m: Higham, SIAM J. Matrix Anal. Appl. 13
   (1992) 681-687. */
#ifndef ORV_MATRIX_MATRIX_H
#define ORV_MATRIX_MATRIX_H

#include <orv/status.h>
#include <orv/types.h>

/* C := alpha*A*B + beta*C (side 'L') or alpha*B*A + beta*C (side 'R'), A symmetric of order m or n, B and C m by n.
   Bad: 1, 2 another letter; 3, 4 a negative m, n; 7, 9, 12 lda, ldb, ldc below max(1, rows). */
ORV_API orv_status orv_ssymm(char side, char uplo, int64_t m, int64_t n, float alpha, const float* a, int64_t lda,
                             const float* b, int64_t ldb, float beta, float* c, int64_t ldc);
ORV_API orv_status orv_dsymm(char side, char uplo, int64_t m, int64_t n, double alpha, const double* a, int64_t lda,
                             const double* b, int64_t ldb, double beta, double* c, int64_t ldc);
ORV_API orv_status orv_csymm(char side, char uplo, int64_t m, int64_t n, orv_complex_float alpha,
                             const orv_complex_float* a, int64_t lda, const orv_complex_float* b, int64_t ldb,
                             orv_complex_float beta, orv_complex_float* c, int64_t ldc);
ORV_API orv_status orv_zsymm(char side, char uplo, int64_t m, int64_t n, orv_complex_double alpha,
                             const orv_complex_double* a, int64_t lda, const orv_complex_double* b, int64_t ldb,
                             orv_complex_double beta, orv_complex_double* c, int64_t ldc);

/* The same with a Hermitian A. */
ORV_API orv_status orv_chemm(char side, char uplo, int64_t m, int64_t n, orv_complex_float alpha,
                             const orv_complex_float* a, int64_t lda, const orv_complex_float* b, int64_t ldb,
                             orv_complex_float beta, orv_complex_float* c, int64_t ldc);
ORV_API orv_status orv_zhemm(char side, char uplo, int64_t m, int64_t n, orv_complex_double alpha,
                             const orv_complex_double* a, int64_t lda, const orv_complex_double* b, int64_t ldb,
                             orv_complex_double beta, orv_complex_double* c, int64_t ldc);

/* C := alpha*A*A^T + beta*C (trans 'N', A n by k) or alpha*A^T*A + beta*C ('T', or 'C' of real numbers; A k by n), C
   symmetric of order n.
   Bad: 1, 2 another letter; 3, 4 a negative n, k; 7, 10 lda, ldc below max(1, rows). */
ORV_API orv_status orv_ssyrk(char uplo, char trans, int64_t n, int64_t k, float alpha, const float* a, int64_t lda,
                             float beta, float* c, int64_t ldc);
ORV_API orv_status orv_dsyrk(char uplo, char trans, int64_t n, int64_t k, double alpha, const double* a, int64_t lda,
                             double beta, double* c, int64_t ldc);
ORV_API orv_status orv_csyrk(char uplo, char trans, int64_t n, int64_t k, orv_complex_float alpha,
                             const orv_complex_float* a, int64_t lda, orv_complex_float beta, orv_complex_float* c,
                             int64_t ldc);
ORV_API orv_status orv_zsyrk(char uplo, char trans, int64_t n, int64_t k, orv_complex_double alpha,
                             const orv_complex_double* a, int64_t lda, orv_complex_double beta, orv_complex_double* c,
                             int64_t ldc);

/* C := alpha*A*A^H + beta*C ('N') or alpha*A^H*A + beta*C ('C'), C Hermitian. */
ORV_API orv_status orv_cherk(char uplo, char trans, int64_t n, int64_t k, float alpha, const orv_complex_float* a,
                             int64_t lda, float beta, orv_complex_float* c, int64_t ldc);
ORV_API orv_status orv_zherk(char uplo, char trans, int64_t n, int64_t k, double alpha, const orv_complex_double* a,
                             int64_t lda, double beta, orv_complex_double* c, int64_t ldc);

/* C := alpha*A*B^T + alpha*B*A^T + beta*C ('N', A and B n by k) or alpha*A^T*B + alpha*B^T*A + beta*C ('T', or 'C' of
   real numbers; k by n), C symmetric of order n.
   Bad: 1, 2 another letter; 3, 4 a negative n, k; 7, 9, 12 lda, ldb, ldc below max(1, rows). */
ORV_API orv_status orv_ssyr2k(char uplo, char trans, int64_t n, int64_t k, float alpha, const float* a, int64_t lda,
                              const float* b, int64_t ldb, float beta, float* c, int64_t ldc);
ORV_API orv_status orv_dsyr2k(char uplo, char trans, int64_t n, int64_t k, double alpha, const double* a, int64_t lda,
                              const double* b, int64_t ldb, double beta, double* c, int64_t ldc);
ORV_API orv_status orv_csyr2k(char uplo, char trans, int64_t n, int64_t k, orv_complex_float alpha,
                              const orv_complex_float* a, int64_t lda, const orv_complex_float* b, int64_t ldb,
                              orv_complex_float beta, orv_complex_float* c, int64_t ldc);
ORV_API orv_status orv_zsyr2k(char uplo, char trans, int64_t n, int64_t k, orv_complex_double alpha,
                              const orv_complex_double* a, int64_t lda, const orv_complex_double* b, int64_t ldb,
                              orv_complex_double beta, orv_complex_double* c, int64_t ldc);

/* C := alpha*A*B^H + conj(alpha)*B*A^H + beta*C ('N') or alpha*A^H*B + conj(alpha)*B^H*A + beta*C ('C'), C Hermitian.
 */
ORV_API orv_status orv_cher2k(char uplo, char trans, int64_t n, int64_t k, orv_complex_float alpha,
                              const orv_complex_float* a, int64_t lda, const orv_complex_float* b, int64_t ldb,
                              float beta, orv_complex_float* c, int64_t ldc);
ORV_API orv_status orv_zher2k(char uplo, char trans, int64_t n, int64_t k, orv_complex_double alpha,
                              const orv_complex_double* a, int64_t lda, const orv_complex_double* b, int64_t ldb,
                              double beta, orv_complex_double* c, int64_t ldc);

/* B := alpha*op(A)*B (side 'L') or alpha*B*op(A) (side 'R'), A triangular of order m or n, B m by n. The letter diag:
   'U' takes the diagonal of A as ones and does not read it, 'N' reads it. alpha = 0 sets B to zeros. Bad: 1, 2, 3, 4
   another letter; 5, 6 a negative m, n; 9, 11 lda, ldb below max(1, rows). */
ORV_API orv_status orv_strmm(char side, char uplo, char trans, char diag, int64_t m, int64_t n, float alpha,
                             const float* a, int64_t lda, float* b, int64_t ldb);
ORV_API orv_status orv_dtrmm(char side, char uplo, char trans, char diag, int64_t m, int64_t n, double alpha,
                             const double* a, int64_t lda, double* b, int64_t ldb);
ORV_API orv_status orv_ctrmm(char side, char uplo, char trans, char diag, int64_t m, int64_t n, orv_complex_float alpha,
                             const orv_complex_float* a, int64_t lda, orv_complex_float* b, int64_t ldb);
ORV_API orv_status orv_ztrmm(char side, char uplo, char trans, char diag, int64_t m, int64_t n,
                             orv_complex_double alpha, const orv_complex_double* a, int64_t lda, orv_complex_double* b,
                             int64_t ldb);

/* Solves op(A)*X = alpha*B (side 'L') or X*op(A) = alpha*B (side 'R') for X, which takes the place of B. A singular A
   divides by zero and goes on: infinities and NaN in B tell. Elements of blocks are multiplied by the reciprocal of the
   diagonal, so a result may differ from a division in its last bit. */
ORV_API orv_status orv_strsm(char side, char uplo, char trans, char diag, int64_t m, int64_t n, float alpha,
                             const float* a, int64_t lda, float* b, int64_t ldb);
ORV_API orv_status orv_dtrsm(char side, char uplo, char trans, char diag, int64_t m, int64_t n, double alpha,
                             const double* a, int64_t lda, double* b, int64_t ldb);
ORV_API orv_status orv_ctrsm(char side, char uplo, char trans, char diag, int64_t m, int64_t n, orv_complex_float alpha,
                             const orv_complex_float* a, int64_t lda, orv_complex_float* b, int64_t ldb);
ORV_API orv_status orv_ztrsm(char side, char uplo, char trans, char diag, int64_t m, int64_t n,
                             orv_complex_double alpha, const orv_complex_double* a, int64_t lda, orv_complex_double* b,
                             int64_t ldb);

/* gemm by three real products in place of four: a quarter fewer multiplications, and an error that is small beside the
   norms of A and B, not beside each element of C. Faster than gemm for matrices of order 80 (c) or 32 (z) and more, by
   a tenth at 130 (c) or 50 (z), by a fifth from 260 on. Arguments as of gemm. */
ORV_API orv_status orv_cgemm3m(char transa, char transb, int64_t m, int64_t n, int64_t k, orv_complex_float alpha,
                               const orv_complex_float* a, int64_t lda, const orv_complex_float* b, int64_t ldb,
                               orv_complex_float beta, orv_complex_float* c, int64_t ldc);
ORV_API orv_status orv_zgemm3m(char transa, char transb, int64_t m, int64_t n, int64_t k, orv_complex_double alpha,
                               const orv_complex_double* a, int64_t lda, const orv_complex_double* b, int64_t ldb,
                               orv_complex_double beta, orv_complex_double* c, int64_t ldc);

/* gemm with a real A and complex B and C; 'C' of A means 'T'. Beside a complex A 1.5 times as fast for matrices of
   order 64 (sc) or 32 (dz), 1.9 times for those of order 500. Arguments as of gemm. */
ORV_API orv_status orv_scgemm(char transa, char transb, int64_t m, int64_t n, int64_t k, orv_complex_float alpha,
                              const float* a, int64_t lda, const orv_complex_float* b, int64_t ldb,
                              orv_complex_float beta, orv_complex_float* c, int64_t ldc);
ORV_API orv_status orv_dzgemm(char transa, char transb, int64_t m, int64_t n, int64_t k, orv_complex_double alpha,
                              const double* a, int64_t lda, const orv_complex_double* b, int64_t ldb,
                              orv_complex_double beta, orv_complex_double* c, int64_t ldc);

#endif
