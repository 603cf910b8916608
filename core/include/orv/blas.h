/* Dense BLAS: vectors, sparse vectors, matrix products; matrices and vectors in <orv/matrix_vector.h>.

   Letters: s float, d double, c and z their complex numbers; two letters where types are mixed (zdscal: a complex
   vector times a double). All numbers pass by value, all dimensions and strides as int64_t.

   Vectors   n elements, inc apart: element i stands at x[i*inc], or, if inc is negative, at x[(i - n + 1)*inc], so that
             the array is walked from its far end. A stride of 0 meets one element n times. n below 1 touches nothing.
             Vectors may have any alignment. x and y do not overlap, unless the description says otherwise.
   Matrices  column-major: element (i,j) of an m by n matrix at a[i + j*lda], lda at least max(1, m); rows m to lda - 1
             of a column are never touched.
   Results   A function that computes a number returns it; all others return a status: 0, -i if argument i is bad
             (counted from 1, as the published interface counts), a positive code if no kernel can run. Where it is not
             0 nothing was written. Where no kernel can run a number is NaN and a position -1: orv_check() tells
             beforehand, orv_last_error() afterwards.
   Rounding  Every product and every sum is rounded once; none are fused. NaN and infinity spread as these operations
             spread them, wherever nothing else is said. The order of sums is fixed by n, the strides and the
             alignment of the operands, not by the number of threads; symv and hemv alone sum in another order on one
             thread than on several.

   All functions can be called from several threads at once on operands that no two calls write.

   Fortran's way to call. Each routine is also exported as orv_blas_daxpy and orv_blas_lp64_daxpy (in place of
   orv_daxpy): the same arguments in the same order, all by pointer, without lengths of strings; integers have 64 bits
   in the first and 32 in the second, positions and index arrays count from 1, and a complex result goes through a
   pointer before the other arguments. A bad argument goes to orv_serv_xerbla, and nothing is written.

   Sources: Lawson, Hanson, Kincaid, Krogh, ACM TOMS 5 (1979) 308-323 (vectors); Dodson, Grimes, Lewis, TOMS 17 (1991)
   253-263 (sparse vectors); Dongarra, Du Croz, Hammarling, Duff, TOMS 16 (1990) 1-17 (gemm); Blackford et al., TOMS 28
   (2002) 135-151 (axpby). */
#ifndef ORV_BLAS_H
#define ORV_BLAS_H

#include <orv/matrix_matrix.h>
#include <orv/matrix_vector.h>
#include <orv/status.h>
#include <orv/types.h>

#if defined(__cplusplus) && defined(__clang__) /* std::complex is returned just as C's own complex numbers are */
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

/* ---- Vectors ---------------------------------------------------------------------------------------------------- */

/* y := y + alpha*x. An alpha equal to 0 leaves y alone and does not read x, so NaN in x is lost; a NaN alpha computes.
   incy = 0 adds all of alpha*x to one element, in order. */
ORV_API orv_status orv_saxpy(int64_t n, float alpha, const float* x, int64_t incx, float* y, int64_t incy);
ORV_API orv_status orv_daxpy(int64_t n, double alpha, const double* x, int64_t incx, double* y, int64_t incy);
ORV_API orv_status orv_caxpy(int64_t n, orv_complex_float alpha, const orv_complex_float* x, int64_t incx,
                             orv_complex_float* y, int64_t incy);
ORV_API orv_status orv_zaxpy(int64_t n, orv_complex_double alpha, const orv_complex_double* x, int64_t incx,
                             orv_complex_double* y, int64_t incy);

/* y := alpha*x + beta*y. */
ORV_API orv_status orv_saxpby(int64_t n, float alpha, const float* x, int64_t incx, float beta, float* y, int64_t incy);
ORV_API orv_status orv_daxpby(int64_t n, double alpha, const double* x, int64_t incx, double beta, double* y,
                              int64_t incy);
ORV_API orv_status orv_caxpby(int64_t n, orv_complex_float alpha, const orv_complex_float* x, int64_t incx,
                              orv_complex_float beta, orv_complex_float* y, int64_t incy);
ORV_API orv_status orv_zaxpby(int64_t n, orv_complex_double alpha, const orv_complex_double* x, int64_t incx,
                              orv_complex_double beta, orv_complex_double* y, int64_t incy);

/* x := alpha*x. An alpha equal to 1 returns at once; an alpha of 0 multiplies like any other, so NaN stays NaN. */
ORV_API orv_status orv_sscal(int64_t n, float alpha, float* x, int64_t incx);
ORV_API orv_status orv_dscal(int64_t n, double alpha, double* x, int64_t incx);
ORV_API orv_status orv_cscal(int64_t n, orv_complex_float alpha, orv_complex_float* x, int64_t incx);
ORV_API orv_status orv_zscal(int64_t n, orv_complex_double alpha, orv_complex_double* x, int64_t incx);
ORV_API orv_status orv_csscal(int64_t n, float alpha, orv_complex_float* x, int64_t incx);
ORV_API orv_status orv_zdscal(int64_t n, double alpha, orv_complex_double* x, int64_t incx);

/* y := x. */
ORV_API orv_status orv_scopy(int64_t n, const float* x, int64_t incx, float* y, int64_t incy);
ORV_API orv_status orv_dcopy(int64_t n, const double* x, int64_t incx, double* y, int64_t incy);
ORV_API orv_status orv_ccopy(int64_t n, const orv_complex_float* x, int64_t incx, orv_complex_float* y, int64_t incy);
ORV_API orv_status orv_zcopy(int64_t n, const orv_complex_double* x, int64_t incx, orv_complex_double* y, int64_t incy);

/* x and y change places. */
ORV_API orv_status orv_sswap(int64_t n, float* x, int64_t incx, float* y, int64_t incy);
ORV_API orv_status orv_dswap(int64_t n, double* x, int64_t incx, double* y, int64_t incy);
ORV_API orv_status orv_cswap(int64_t n, orv_complex_float* x, int64_t incx, orv_complex_float* y, int64_t incy);
ORV_API orv_status orv_zswap(int64_t n, orv_complex_double* x, int64_t incx, orv_complex_double* y, int64_t incy);

/* Sum of x[i]*y[i]; dotc takes the conjugate of x. 0 if n is below 1. */
ORV_API float orv_sdot(int64_t n, const float* x, int64_t incx, const float* y, int64_t incy);
ORV_API double orv_ddot(int64_t n, const double* x, int64_t incx, const double* y, int64_t incy);
ORV_API orv_complex_float orv_cdotu(int64_t n, const orv_complex_float* x, int64_t incx, const orv_complex_float* y,
                                    int64_t incy);
ORV_API orv_complex_float orv_cdotc(int64_t n, const orv_complex_float* x, int64_t incx, const orv_complex_float* y,
                                    int64_t incy);
ORV_API orv_complex_double orv_zdotu(int64_t n, const orv_complex_double* x, int64_t incx, const orv_complex_double* y,
                                     int64_t incy);
ORV_API orv_complex_double orv_zdotc(int64_t n, const orv_complex_double* x, int64_t incx, const orv_complex_double* y,
                                     int64_t incy);

/* The same for floats with products and sum in double; sdsdot starts from sb and rounds once, at the end. */
ORV_API float orv_sdsdot(int64_t n, float sb, const float* x, int64_t incx, const float* y, int64_t incy);
ORV_API double orv_dsdot(int64_t n, const float* x, int64_t incx, const float* y, int64_t incy);

/* Euclidean norm of x; 0 if n is below 1. No overflow or underflow on the way: dnrm2 and dznrm2 scale, snrm2 and scnrm2
   sum in double. A NaN in x makes the result NaN; so do two infinities where it scales. */
ORV_API float orv_snrm2(int64_t n, const float* x, int64_t incx);
ORV_API double orv_dnrm2(int64_t n, const double* x, int64_t incx);
ORV_API float orv_scnrm2(int64_t n, const orv_complex_float* x, int64_t incx);
ORV_API double orv_dznrm2(int64_t n, const orv_complex_double* x, int64_t incx);

/* Sum of |x[i]|, of |re| + |im| for complex x; 0 if n is below 1. */
ORV_API float orv_sasum(int64_t n, const float* x, int64_t incx);
ORV_API double orv_dasum(int64_t n, const double* x, int64_t incx);
ORV_API float orv_scasum(int64_t n, const orv_complex_float* x, int64_t incx);
ORV_API double orv_dzasum(int64_t n, const orv_complex_double* x, int64_t incx);

/* |re z| + |im z|. */
ORV_API float orv_scabs1(orv_complex_float z);
ORV_API double orv_dcabs1(orv_complex_double z);

/* Position, from 0, of the first element whose absolute value (|re| + |im| for complex x) is largest, or smallest; -1
   if n or incx is below 1. NaN never compares as larger or smaller; with NaN in x the position is not specified. */
ORV_API int64_t orv_isamax(int64_t n, const float* x, int64_t incx);
ORV_API int64_t orv_idamax(int64_t n, const double* x, int64_t incx);
ORV_API int64_t orv_icamax(int64_t n, const orv_complex_float* x, int64_t incx);
ORV_API int64_t orv_izamax(int64_t n, const orv_complex_double* x, int64_t incx);
ORV_API int64_t orv_isamin(int64_t n, const float* x, int64_t incx);
ORV_API int64_t orv_idamin(int64_t n, const double* x, int64_t incx);
ORV_API int64_t orv_icamin(int64_t n, const orv_complex_float* x, int64_t incx);
ORV_API int64_t orv_izamin(int64_t n, const orv_complex_double* x, int64_t incx);

/* ---- Plane rotations -------------------------------------------------------------------------------------------- */

/* x' = c*x + s*y, y' = c*y - conj(s)*x, element by element; no value of c or s is special. */
ORV_API orv_status orv_srot(int64_t n, float* x, int64_t incx, float* y, int64_t incy, float c, float s);
ORV_API orv_status orv_drot(int64_t n, double* x, int64_t incx, double* y, int64_t incy, double c, double s);
ORV_API orv_status orv_crot(int64_t n, orv_complex_float* x, int64_t incx, orv_complex_float* y, int64_t incy, float c,
                            orv_complex_float s);
ORV_API orv_status orv_zrot(int64_t n, orv_complex_double* x, int64_t incx, orv_complex_double* y, int64_t incy,
                            double c, orv_complex_double s);
ORV_API orv_status orv_csrot(int64_t n, orv_complex_float* x, int64_t incx, orv_complex_float* y, int64_t incy, float c,
                             float s);
ORV_API orv_status orv_zdrot(int64_t n, orv_complex_double* x, int64_t incx, orv_complex_double* y, int64_t incy,
                             double c, double s);

/* c and s with c*a + s*b = r and c*b - conj(s)*a = 0; a becomes r.
   Real: r takes the sign of the larger of a and b, and b becomes z, from which c and s can be recovered (z = s if
   |a| > |b|, else 1/c, else 1). Both 0 give c = 1, s = 0, r = 0, z = 0.
   Complex: a = 0 gives c = 0, s = 1, r = b. */
ORV_API orv_status orv_srotg(float* a, float* b, float* c, float* s);
ORV_API orv_status orv_drotg(double* a, double* b, double* c, double* s);
ORV_API orv_status orv_crotg(orv_complex_float* a, orv_complex_float b, float* c, orv_complex_float* s);
ORV_API orv_status orv_zrotg(orv_complex_double* a, orv_complex_double b, double* c, orv_complex_double* s);

/* The modified rotation H on each pair (x[i], y[i]). param: flag, h11, h21, h12, h22.
     flag -1: H = | h11 h12 |    0: | 1   h12 |    1: | h11  1  |    -2: the identity, x and y are left alone
                  | h21 h22 |       | h21  1  |       | -1  h22 |  */
ORV_API orv_status orv_srotm(int64_t n, float* x, int64_t incx, float* y, int64_t incy, const float* param);
ORV_API orv_status orv_drotm(int64_t n, double* x, int64_t incx, double* y, int64_t incy, const double* param);

/* The H that makes the second of (sqrt(d1)*x1, sqrt(d2)*y1) zero. d1, d2 and x1 become those of the rotated
   pair, scaled so that d1 and |d2| stay between 4096^-2 and 4096^2; param as orv_drotm takes it, of which only entries
   that are not implied by the flag are written. d1 < 0 gives flag -1 and zeros everywhere; d2*y1 = 0 gives flag -2 and
   leaves d1, d2 and x1 alone. */
ORV_API orv_status orv_srotmg(float* d1, float* d2, float* x1, float y1, float* param);
ORV_API orv_status orv_drotmg(double* d1, double* d2, double* x1, double y1, double* param);

/* ---- Sparse vectors --------------------------------------------------------------------------------------------- */

/* A sparse vector has n elements x[i] with positions indx[i] in a dense vector y, counted from 0. No position occurs
   twice where the dense vector is written. */

/* y[indx[i]] := y[indx[i]] + alpha*x[i]. An alpha equal to 0 leaves y alone. */
ORV_API orv_status orv_saxpyi(int64_t n, float alpha, const float* x, const int64_t* indx, float* y);
ORV_API orv_status orv_daxpyi(int64_t n, double alpha, const double* x, const int64_t* indx, double* y);
ORV_API orv_status orv_caxpyi(int64_t n, orv_complex_float alpha, const orv_complex_float* x, const int64_t* indx,
                              orv_complex_float* y);
ORV_API orv_status orv_zaxpyi(int64_t n, orv_complex_double alpha, const orv_complex_double* x, const int64_t* indx,
                              orv_complex_double* y);

/* Sum of x[i]*y[indx[i]]; dotci takes the conjugate of x. 0 if n is below 1. */
ORV_API float orv_sdoti(int64_t n, const float* x, const int64_t* indx, const float* y);
ORV_API double orv_ddoti(int64_t n, const double* x, const int64_t* indx, const double* y);
ORV_API orv_complex_float orv_cdotui(int64_t n, const orv_complex_float* x, const int64_t* indx,
                                     const orv_complex_float* y);
ORV_API orv_complex_float orv_cdotci(int64_t n, const orv_complex_float* x, const int64_t* indx,
                                     const orv_complex_float* y);
ORV_API orv_complex_double orv_zdotui(int64_t n, const orv_complex_double* x, const int64_t* indx,
                                      const orv_complex_double* y);
ORV_API orv_complex_double orv_zdotci(int64_t n, const orv_complex_double* x, const int64_t* indx,
                                      const orv_complex_double* y);

/* x[i] := y[indx[i]]; gthrz sets y[indx[i]] to 0 after reading it. */
ORV_API orv_status orv_sgthr(int64_t n, const float* y, float* x, const int64_t* indx);
ORV_API orv_status orv_dgthr(int64_t n, const double* y, double* x, const int64_t* indx);
ORV_API orv_status orv_cgthr(int64_t n, const orv_complex_float* y, orv_complex_float* x, const int64_t* indx);
ORV_API orv_status orv_zgthr(int64_t n, const orv_complex_double* y, orv_complex_double* x, const int64_t* indx);
ORV_API orv_status orv_sgthrz(int64_t n, float* y, float* x, const int64_t* indx);
ORV_API orv_status orv_dgthrz(int64_t n, double* y, double* x, const int64_t* indx);
ORV_API orv_status orv_cgthrz(int64_t n, orv_complex_float* y, orv_complex_float* x, const int64_t* indx);
ORV_API orv_status orv_zgthrz(int64_t n, orv_complex_double* y, orv_complex_double* x, const int64_t* indx);

/* y[indx[i]] := x[i]. */
ORV_API orv_status orv_ssctr(int64_t n, const float* x, const int64_t* indx, float* y);
ORV_API orv_status orv_dsctr(int64_t n, const double* x, const int64_t* indx, double* y);
ORV_API orv_status orv_csctr(int64_t n, const orv_complex_float* x, const int64_t* indx, orv_complex_float* y);
ORV_API orv_status orv_zsctr(int64_t n, const orv_complex_double* x, const int64_t* indx, orv_complex_double* y);

/* x[i]' = c*x[i] + s*y[indx[i]], y[indx[i]]' = c*y[indx[i]] - s*x[i]. c = 1 with s = 0 returns at once. */
ORV_API orv_status orv_sroti(int64_t n, float* x, const int64_t* indx, float* y, float c, float s);
ORV_API orv_status orv_droti(int64_t n, double* x, const int64_t* indx, double* y, double c, double s);

/* ---- Matrices --------------------------------------------------------------------------------------------------- */

/* C := alpha*op(A)*op(B) + beta*C, op(A) m by k, op(B) k by n, C m by n. op: 'N' the matrix, 'T' its transpose, 'C' its
   conjugate transpose, in either case of letter; for 'T' and 'C' A is stored k by m, B n by k.
   beta = 0 sets C without reading it, so NaN in C is lost; alpha = 0 or k = 0 leaves C := beta*C and does not read A
   and B. Large products are shared among threads, with the same bits for any number of them.
   Bad: 1, 2 another letter; 3, 4, 5 a negative m, n, k; 8, 10, 13 lda, ldb, ldc below max(1, rows as stored). */
ORV_API orv_status orv_sgemm(char transa, char transb, int64_t m, int64_t n, int64_t k, float alpha, const float* a,
                             int64_t lda, const float* b, int64_t ldb, float beta, float* c, int64_t ldc);
ORV_API orv_status orv_dgemm(char transa, char transb, int64_t m, int64_t n, int64_t k, double alpha, const double* a,
                             int64_t lda, const double* b, int64_t ldb, double beta, double* c, int64_t ldc);
ORV_API orv_status orv_cgemm(char transa, char transb, int64_t m, int64_t n, int64_t k, orv_complex_float alpha,
                             const orv_complex_float* a, int64_t lda, const orv_complex_float* b, int64_t ldb,
                             orv_complex_float beta, orv_complex_float* c, int64_t ldc);
ORV_API orv_status orv_zgemm(char transa, char transb, int64_t m, int64_t n, int64_t k, orv_complex_double alpha,
                             const orv_complex_double* a, int64_t lda, const orv_complex_double* b, int64_t ldb,
                             orv_complex_double beta, orv_complex_double* c, int64_t ldc);

#if defined(__cplusplus) && defined(__clang__)
#pragma clang diagnostic pop
#endif

#endif
