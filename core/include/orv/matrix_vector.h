/* Dense BLAS: matrices and vectors. Part of <orv/blas.h>, where numbers, vectors, matrices, results and Fortran's way
   to call are described; what follows holds for all routines here.

   op        the letter trans: 'N' the matrix, 'T' its transpose, 'C' its conjugate transpose
   Triangle  the letter uplo: 'U' the elements on and above the diagonal are stored, 'L' those on and below it; the
             others are those of a symmetric or Hermitian matrix, or zeros of a triangular one. The letter diag: 'U'
             takes the diagonal of a triangular matrix as ones and does not read it, 'N' reads it. The imaginary parts
             on the diagonal of a Hermitian matrix are taken as 0, and set to 0 by an update.
   Full      an n by n array of which only the triangle is touched
   Band      of column j the stored diagonals stand in column j of the array, the diagonal in row k of it for 'U', in
             row 0 for 'L', in row ku for a general band: element (i,j) at a[k + i - j + j*lda]. Nothing else is
             touched.
   Packed    the columns of the triangle one after the other without gaps
   Letters   in either case
   Scalars   beta = 0 sets y without reading it, so NaN in y is lost; alpha = 0 leaves y := beta*y and does not read A
             and x. Nothing is done, not even to y, if a dimension is 0.
   Threads   large operations are shared, where it says so, with the same bits for any number of them if nothing else is
             said.

   No routine needs memory. Source: Dongarra, Du Croz, Hammarling, Hanson, ACM TOMS 14 (1988) 1-17. */
#ifndef ORV_MATRIX_VECTOR_H
#define ORV_MATRIX_VECTOR_H

#include <orv/status.h>
#include <orv/types.h>

/* ---- General matrices ------------------------------------------------------------------------------------------- */

/* y := alpha*op(A)*x + beta*y, A m by n. x has n and y m elements for op 'N', the other way round else. Shared among
   threads by parts of y.
   Bad: 1 another letter; 2, 3 a negative m, n; 6 lda below max(1, m); 8, 11 an incx, incy of 0. */
ORV_API orv_status orv_sgemv(char trans, int64_t m, int64_t n, float alpha, const float* a, int64_t lda, const float* x,
                             int64_t incx, float beta, float* y, int64_t incy);
ORV_API orv_status orv_dgemv(char trans, int64_t m, int64_t n, double alpha, const double* a, int64_t lda,
                             const double* x, int64_t incx, double beta, double* y, int64_t incy);
ORV_API orv_status orv_cgemv(char trans, int64_t m, int64_t n, orv_complex_float alpha, const orv_complex_float* a,
                             int64_t lda, const orv_complex_float* x, int64_t incx, orv_complex_float beta,
                             orv_complex_float* y, int64_t incy);
ORV_API orv_status orv_zgemv(char trans, int64_t m, int64_t n, orv_complex_double alpha, const orv_complex_double* a,
                             int64_t lda, const orv_complex_double* x, int64_t incx, orv_complex_double beta,
                             orv_complex_double* y, int64_t incy);

/* The same with a band matrix: kl diagonals below the main one and ku above.
   Bad: 1 another letter; 2, 3 a negative m, n; 4, 5 a negative kl, ku; 8 lda below kl + ku + 1; 10, 13 an incx, incy
   of 0. */
ORV_API orv_status orv_sgbmv(char trans, int64_t m, int64_t n, int64_t kl, int64_t ku, float alpha, const float* a,
                             int64_t lda, const float* x, int64_t incx, float beta, float* y, int64_t incy);
ORV_API orv_status orv_dgbmv(char trans, int64_t m, int64_t n, int64_t kl, int64_t ku, double alpha, const double* a,
                             int64_t lda, const double* x, int64_t incx, double beta, double* y, int64_t incy);
ORV_API orv_status orv_cgbmv(char trans, int64_t m, int64_t n, int64_t kl, int64_t ku, orv_complex_float alpha,
                             const orv_complex_float* a, int64_t lda, const orv_complex_float* x, int64_t incx,
                             orv_complex_float beta, orv_complex_float* y, int64_t incy);
ORV_API orv_status orv_zgbmv(char trans, int64_t m, int64_t n, int64_t kl, int64_t ku, orv_complex_double alpha,
                             const orv_complex_double* a, int64_t lda, const orv_complex_double* x, int64_t incx,
                             orv_complex_double beta, orv_complex_double* y, int64_t incy);

/* A := A + alpha*x*y', A m by n, x of m and y of n elements; gerc takes the conjugate of y. An alpha equal to 0, and
   one of 0 times an element of y, leave A and its column alone. Shared among threads by columns.
   Bad: 1, 2 a negative m, n; 5, 7 an incx, incy of 0; 9 lda below max(1, m). */
ORV_API orv_status orv_sger(int64_t m, int64_t n, float alpha, const float* x, int64_t incx, const float* y,
                            int64_t incy, float* a, int64_t lda);
ORV_API orv_status orv_dger(int64_t m, int64_t n, double alpha, const double* x, int64_t incx, const double* y,
                            int64_t incy, double* a, int64_t lda);
ORV_API orv_status orv_cgeru(int64_t m, int64_t n, orv_complex_float alpha, const orv_complex_float* x, int64_t incx,
                             const orv_complex_float* y, int64_t incy, orv_complex_float* a, int64_t lda);
ORV_API orv_status orv_zgeru(int64_t m, int64_t n, orv_complex_double alpha, const orv_complex_double* x, int64_t incx,
                             const orv_complex_double* y, int64_t incy, orv_complex_double* a, int64_t lda);
ORV_API orv_status orv_cgerc(int64_t m, int64_t n, orv_complex_float alpha, const orv_complex_float* x, int64_t incx,
                             const orv_complex_float* y, int64_t incy, orv_complex_float* a, int64_t lda);
ORV_API orv_status orv_zgerc(int64_t m, int64_t n, orv_complex_double alpha, const orv_complex_double* x, int64_t incx,
                             const orv_complex_double* y, int64_t incy, orv_complex_double* a, int64_t lda);

/* ---- Symmetric matrices, and Hermitian ones (chemv, cher, ...) ----------------------------------------------------
 */

/* y := alpha*A*x + beta*y, A n by n. Shared among threads by parts of A, whose sums go to work memory for up to 17
   vectors of n elements; without it one thread computes. Any two or more threads give the same bits. One thread differs
   from them in the last bits, unless results are to be reproducible (orv_set_reproducible): then one thread computes.
   Bad: 1 another letter; 2 a negative n; 5 lda below max(1, n); 7, 10 an incx, incy of 0. */
ORV_API orv_status orv_ssymv(char uplo, int64_t n, float alpha, const float* a, int64_t lda, const float* x,
                             int64_t incx, float beta, float* y, int64_t incy);
ORV_API orv_status orv_dsymv(char uplo, int64_t n, double alpha, const double* a, int64_t lda, const double* x,
                             int64_t incx, double beta, double* y, int64_t incy);
ORV_API orv_status orv_chemv(char uplo, int64_t n, orv_complex_float alpha, const orv_complex_float* a, int64_t lda,
                             const orv_complex_float* x, int64_t incx, orv_complex_float beta, orv_complex_float* y,
                             int64_t incy);
ORV_API orv_status orv_zhemv(char uplo, int64_t n, orv_complex_double alpha, const orv_complex_double* a, int64_t lda,
                             const orv_complex_double* x, int64_t incx, orv_complex_double beta, orv_complex_double* y,
                             int64_t incy);

/* The same with a band matrix of k diagonals on either side of the main one.
   Bad: 1 another letter; 2, 3 a negative n, k; 6 lda below k + 1; 8, 11 an incx, incy of 0. */
ORV_API orv_status orv_ssbmv(char uplo, int64_t n, int64_t k, float alpha, const float* a, int64_t lda, const float* x,
                             int64_t incx, float beta, float* y, int64_t incy);
ORV_API orv_status orv_dsbmv(char uplo, int64_t n, int64_t k, double alpha, const double* a, int64_t lda,
                             const double* x, int64_t incx, double beta, double* y, int64_t incy);
ORV_API orv_status orv_chbmv(char uplo, int64_t n, int64_t k, orv_complex_float alpha, const orv_complex_float* a,
                             int64_t lda, const orv_complex_float* x, int64_t incx, orv_complex_float beta,
                             orv_complex_float* y, int64_t incy);
ORV_API orv_status orv_zhbmv(char uplo, int64_t n, int64_t k, orv_complex_double alpha, const orv_complex_double* a,
                             int64_t lda, const orv_complex_double* x, int64_t incx, orv_complex_double beta,
                             orv_complex_double* y, int64_t incy);

/* The same with a packed matrix.
   Bad: 1 another letter; 2 a negative n; 6, 9 an incx, incy of 0. */
ORV_API orv_status orv_sspmv(char uplo, int64_t n, float alpha, const float* ap, const float* x, int64_t incx,
                             float beta, float* y, int64_t incy);
ORV_API orv_status orv_dspmv(char uplo, int64_t n, double alpha, const double* ap, const double* x, int64_t incx,
                             double beta, double* y, int64_t incy);
ORV_API orv_status orv_chpmv(char uplo, int64_t n, orv_complex_float alpha, const orv_complex_float* ap,
                             const orv_complex_float* x, int64_t incx, orv_complex_float beta, orv_complex_float* y,
                             int64_t incy);
ORV_API orv_status orv_zhpmv(char uplo, int64_t n, orv_complex_double alpha, const orv_complex_double* ap,
                             const orv_complex_double* x, int64_t incx, orv_complex_double beta, orv_complex_double* y,
                             int64_t incy);

/* A := A + alpha*x*x', Hermitian: x times its conjugate, alpha real. An alpha equal to 0 leaves A alone.
   ssyr and dsyr are shared among threads by columns.
   Bad: 1 another letter; 2 a negative n; 5 an incx of 0; 7 lda below max(1, n). */
ORV_API orv_status orv_ssyr(char uplo, int64_t n, float alpha, const float* x, int64_t incx, float* a, int64_t lda);
ORV_API orv_status orv_dsyr(char uplo, int64_t n, double alpha, const double* x, int64_t incx, double* a, int64_t lda);
ORV_API orv_status orv_cher(char uplo, int64_t n, float alpha, const orv_complex_float* x, int64_t incx,
                            orv_complex_float* a, int64_t lda);
ORV_API orv_status orv_zher(char uplo, int64_t n, double alpha, const orv_complex_double* x, int64_t incx,
                            orv_complex_double* a, int64_t lda);

/* The same with a packed matrix. Bad: 1 another letter; 2 a negative n; 5 an incx of 0. */
ORV_API orv_status orv_sspr(char uplo, int64_t n, float alpha, const float* x, int64_t incx, float* ap);
ORV_API orv_status orv_dspr(char uplo, int64_t n, double alpha, const double* x, int64_t incx, double* ap);
ORV_API orv_status orv_chpr(char uplo, int64_t n, float alpha, const orv_complex_float* x, int64_t incx,
                            orv_complex_float* ap);
ORV_API orv_status orv_zhpr(char uplo, int64_t n, double alpha, const orv_complex_double* x, int64_t incx,
                            orv_complex_double* ap);

/* A := A + alpha*x*y' + alpha*y*x', Hermitian: with the conjugates of y' and x', and of the second alpha. An alpha
   equal to 0 leaves A alone. Bad: 1 another letter; 2 a negative n; 5, 7 an incx, incy of 0; 9 lda below max(1, n). */
ORV_API orv_status orv_ssyr2(char uplo, int64_t n, float alpha, const float* x, int64_t incx, const float* y,
                             int64_t incy, float* a, int64_t lda);
ORV_API orv_status orv_dsyr2(char uplo, int64_t n, double alpha, const double* x, int64_t incx, const double* y,
                             int64_t incy, double* a, int64_t lda);
ORV_API orv_status orv_cher2(char uplo, int64_t n, orv_complex_float alpha, const orv_complex_float* x, int64_t incx,
                             const orv_complex_float* y, int64_t incy, orv_complex_float* a, int64_t lda);
ORV_API orv_status orv_zher2(char uplo, int64_t n, orv_complex_double alpha, const orv_complex_double* x, int64_t incx,
                             const orv_complex_double* y, int64_t incy, orv_complex_double* a, int64_t lda);

/* The same with a packed matrix. Bad: 1 another letter; 2 a negative n; 5, 7 an incx, incy of 0. */
ORV_API orv_status orv_sspr2(char uplo, int64_t n, float alpha, const float* x, int64_t incx, const float* y,
                             int64_t incy, float* ap);
ORV_API orv_status orv_dspr2(char uplo, int64_t n, double alpha, const double* x, int64_t incx, const double* y,
                             int64_t incy, double* ap);
ORV_API orv_status orv_chpr2(char uplo, int64_t n, orv_complex_float alpha, const orv_complex_float* x, int64_t incx,
                             const orv_complex_float* y, int64_t incy, orv_complex_float* ap);
ORV_API orv_status orv_zhpr2(char uplo, int64_t n, orv_complex_double alpha, const orv_complex_double* x, int64_t incx,
                             const orv_complex_double* y, int64_t incy, orv_complex_double* ap);

/* ---- Triangular matrices ---------------------------------------------------------------------------------------- */

/* x := op(A)*x, A n by n.
   Bad: 1, 2, 3 another letter; 4 a negative n; 6 lda below max(1, n); 8 an incx of 0. */
ORV_API orv_status orv_strmv(char uplo, char trans, char diag, int64_t n, const float* a, int64_t lda, float* x,
                             int64_t incx);
ORV_API orv_status orv_dtrmv(char uplo, char trans, char diag, int64_t n, const double* a, int64_t lda, double* x,
                             int64_t incx);
ORV_API orv_status orv_ctrmv(char uplo, char trans, char diag, int64_t n, const orv_complex_float* a, int64_t lda,
                             orv_complex_float* x, int64_t incx);
ORV_API orv_status orv_ztrmv(char uplo, char trans, char diag, int64_t n, const orv_complex_double* a, int64_t lda,
                             orv_complex_double* x, int64_t incx);

/* Solves op(A)*x' = x, x' taking the place of x. There is no test for singularity: a 0 on the diagonal gives infinity
   or NaN. Arguments and errors are those of trmv. */
ORV_API orv_status orv_strsv(char uplo, char trans, char diag, int64_t n, const float* a, int64_t lda, float* x,
                             int64_t incx);
ORV_API orv_status orv_dtrsv(char uplo, char trans, char diag, int64_t n, const double* a, int64_t lda, double* x,
                             int64_t incx);
ORV_API orv_status orv_ctrsv(char uplo, char trans, char diag, int64_t n, const orv_complex_float* a, int64_t lda,
                             orv_complex_float* x, int64_t incx);
ORV_API orv_status orv_ztrsv(char uplo, char trans, char diag, int64_t n, const orv_complex_double* a, int64_t lda,
                             orv_complex_double* x, int64_t incx);

/* Both with a band matrix of k diagonals beside the main one.
   Bad: 1, 2, 3 another letter; 4, 5 a negative n, k; 7 lda below k + 1; 9 an incx of 0. */
ORV_API orv_status orv_stbmv(char uplo, char trans, char diag, int64_t n, int64_t k, const float* a, int64_t lda,
                             float* x, int64_t incx);
ORV_API orv_status orv_dtbmv(char uplo, char trans, char diag, int64_t n, int64_t k, const double* a, int64_t lda,
                             double* x, int64_t incx);
ORV_API orv_status orv_ctbmv(char uplo, char trans, char diag, int64_t n, int64_t k, const orv_complex_float* a,
                             int64_t lda, orv_complex_float* x, int64_t incx);
ORV_API orv_status orv_ztbmv(char uplo, char trans, char diag, int64_t n, int64_t k, const orv_complex_double* a,
                             int64_t lda, orv_complex_double* x, int64_t incx);
ORV_API orv_status orv_stbsv(char uplo, char trans, char diag, int64_t n, int64_t k, const float* a, int64_t lda,
                             float* x, int64_t incx);
ORV_API orv_status orv_dtbsv(char uplo, char trans, char diag, int64_t n, int64_t k, const double* a, int64_t lda,
                             double* x, int64_t incx);
ORV_API orv_status orv_ctbsv(char uplo, char trans, char diag, int64_t n, int64_t k, const orv_complex_float* a,
                             int64_t lda, orv_complex_float* x, int64_t incx);
ORV_API orv_status orv_ztbsv(char uplo, char trans, char diag, int64_t n, int64_t k, const orv_complex_double* a,
                             int64_t lda, orv_complex_double* x, int64_t incx);

/* Both with a packed matrix. Bad: 1, 2, 3 another letter; 4 a negative n; 7 an incx of 0. */
ORV_API orv_status orv_stpmv(char uplo, char trans, char diag, int64_t n, const float* ap, float* x, int64_t incx);
ORV_API orv_status orv_dtpmv(char uplo, char trans, char diag, int64_t n, const double* ap, double* x, int64_t incx);
ORV_API orv_status orv_ctpmv(char uplo, char trans, char diag, int64_t n, const orv_complex_float* ap,
                             orv_complex_float* x, int64_t incx);
ORV_API orv_status orv_ztpmv(char uplo, char trans, char diag, int64_t n, const orv_complex_double* ap,
                             orv_complex_double* x, int64_t incx);
ORV_API orv_status orv_stpsv(char uplo, char trans, char diag, int64_t n, const float* ap, float* x, int64_t incx);
ORV_API orv_status orv_dtpsv(char uplo, char trans, char diag, int64_t n, const double* ap, double* x, int64_t incx);
ORV_API orv_status orv_ctpsv(char uplo, char trans, char diag, int64_t n, const orv_complex_float* ap,
                             orv_complex_float* x, int64_t incx);
ORV_API orv_status orv_ztpsv(char uplo, char trans, char diag, int64_t n, const orv_complex_double* ap,
                             orv_complex_double* x, int64_t incx);

#endif
