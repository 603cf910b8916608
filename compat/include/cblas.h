/* CBLAS: the C interface to the BLAS, as far as libblas.so.3 of this project provides it.

   Programs that were compiled against any other <cblas.h> run on the library unchanged; this one serves programs that
   are built here. Dimensions and strides are ints; the library also exports each routine with 64-bit integers, as
   cblas_dgemm_64 and as cblas_dgemm64_. What each routine computes is told in <orv/blas.h>, under its name there
   (orv_dgemm). Complex scalars and arrays pass as void pointers to pairs, the real part first. */
#ifndef CBLAS_H
#define CBLAS_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#define CBLAS_INDEX size_t /* a position, counted from 0 */

typedef enum CBLAS_LAYOUT { CblasRowMajor = 101, CblasColMajor = 102 } CBLAS_LAYOUT;
typedef enum CBLAS_TRANSPOSE {
    CblasNoTrans = 111,
    CblasTrans = 112,
    CblasConjTrans = 113,
    CblasConjNoTrans = 114
} CBLAS_TRANSPOSE;
typedef enum CBLAS_UPLO { CblasUpper = 121, CblasLower = 122 } CBLAS_UPLO;
typedef enum CBLAS_DIAG { CblasNonUnit = 131, CblasUnit = 132 } CBLAS_DIAG;
typedef enum CBLAS_SIDE { CblasLeft = 141, CblasRight = 142 } CBLAS_SIDE;
#define CBLAS_ORDER CBLAS_LAYOUT

/* ---- Vectors */

void cblas_saxpy(int n, float alpha, const float* x, int incx, float* y, int incy);
void cblas_daxpy(int n, double alpha, const double* x, int incx, double* y, int incy);
void cblas_caxpy(int n, const void* alpha, const void* x, int incx, void* y, int incy);
void cblas_zaxpy(int n, const void* alpha, const void* x, int incx, void* y, int incy);
void cblas_saxpby(int n, float alpha, const float* x, int incx, float beta, float* y, int incy);
void cblas_daxpby(int n, double alpha, const double* x, int incx, double beta, double* y, int incy);
void cblas_caxpby(int n, const void* alpha, const void* x, int incx, const void* beta, void* y, int incy);
void cblas_zaxpby(int n, const void* alpha, const void* x, int incx, const void* beta, void* y, int incy);
void cblas_sscal(int n, float alpha, float* x, int incx);
void cblas_dscal(int n, double alpha, double* x, int incx);
void cblas_cscal(int n, const void* alpha, void* x, int incx);
void cblas_zscal(int n, const void* alpha, void* x, int incx);
void cblas_csscal(int n, float alpha, void* x, int incx);
void cblas_zdscal(int n, double alpha, void* x, int incx);
void cblas_scopy(int n, const float* x, int incx, float* y, int incy);
void cblas_dcopy(int n, const double* x, int incx, double* y, int incy);
void cblas_ccopy(int n, const void* x, int incx, void* y, int incy);
void cblas_zcopy(int n, const void* x, int incx, void* y, int incy);
void cblas_sswap(int n, float* x, int incx, float* y, int incy);
void cblas_dswap(int n, double* x, int incx, double* y, int incy);
void cblas_cswap(int n, void* x, int incx, void* y, int incy);
void cblas_zswap(int n, void* x, int incx, void* y, int incy);

float cblas_sdot(int n, const float* x, int incx, const float* y, int incy);
double cblas_ddot(int n, const double* x, int incx, const double* y, int incy);
float cblas_sdsdot(int n, float alpha, const float* x, int incx, const float* y, int incy);
double cblas_dsdot(int n, const float* x, int incx, const float* y, int incy);
void cblas_cdotu_sub(int n, const void* x, int incx, const void* y, int incy, void* result);
void cblas_zdotu_sub(int n, const void* x, int incx, const void* y, int incy, void* result);
void cblas_cdotc_sub(int n, const void* x, int incx, const void* y, int incy, void* result);
void cblas_zdotc_sub(int n, const void* x, int incx, const void* y, int incy, void* result);

float cblas_snrm2(int n, const float* x, int incx);
double cblas_dnrm2(int n, const double* x, int incx);
float cblas_scnrm2(int n, const void* x, int incx);
double cblas_dznrm2(int n, const void* x, int incx);
float cblas_sasum(int n, const float* x, int incx);
double cblas_dasum(int n, const double* x, int incx);
float cblas_scasum(int n, const void* x, int incx);
double cblas_dzasum(int n, const void* x, int incx);
float cblas_scabs1(const void* z);
double cblas_dcabs1(const void* z);
CBLAS_INDEX cblas_isamax(int n, const float* x, int incx);
CBLAS_INDEX cblas_idamax(int n, const double* x, int incx);
CBLAS_INDEX cblas_icamax(int n, const void* x, int incx);
CBLAS_INDEX cblas_izamax(int n, const void* x, int incx);
CBLAS_INDEX cblas_isamin(int n, const float* x, int incx);
CBLAS_INDEX cblas_idamin(int n, const double* x, int incx);
CBLAS_INDEX cblas_icamin(int n, const void* x, int incx);
CBLAS_INDEX cblas_izamin(int n, const void* x, int incx);

void cblas_srot(int n, float* x, int incx, float* y, int incy, float c, float s);
void cblas_drot(int n, double* x, int incx, double* y, int incy, double c, double s);
void cblas_csrot(int n, void* x, int incx, void* y, int incy, float c, float s);
void cblas_zdrot(int n, void* x, int incx, void* y, int incy, double c, double s);
void cblas_srotg(float* a, float* b, float* c, float* s);
void cblas_drotg(double* a, double* b, double* c, double* s);
void cblas_crotg(void* a, void* b, float* c, void* s);
void cblas_zrotg(void* a, void* b, double* c, void* s);
void cblas_srotm(int n, float* x, int incx, float* y, int incy, const float* param);
void cblas_drotm(int n, double* x, int incx, double* y, int incy, const double* param);
void cblas_srotmg(float* d1, float* d2, float* b1, float b2, float* param);
void cblas_drotmg(double* d1, double* d2, double* b1, double b2, double* param);

/* ---- Matrices and vectors */

void cblas_sgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int m, int n, float alpha, const float* a, int lda,
                 const float* x, int incx, float beta, float* y, int incy);
void cblas_dgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int m, int n, double alpha, const double* a, int lda,
                 const double* x, int incx, double beta, double* y, int incy);
void cblas_cgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int m, int n, const void* alpha, const void* a, int lda,
                 const void* x, int incx, const void* beta, void* y, int incy);
void cblas_zgemv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int m, int n, const void* alpha, const void* a, int lda,
                 const void* x, int incx, const void* beta, void* y, int incy);

void cblas_sgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int m, int n, int kl, int ku, float alpha, const float* a,
                 int lda, const float* x, int incx, float beta, float* y, int incy);
void cblas_dgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int m, int n, int kl, int ku, double alpha,
                 const double* a, int lda, const double* x, int incx, double beta, double* y, int incy);
void cblas_cgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int m, int n, int kl, int ku, const void* alpha,
                 const void* a, int lda, const void* x, int incx, const void* beta, void* y, int incy);
void cblas_zgbmv(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int m, int n, int kl, int ku, const void* alpha,
                 const void* a, int lda, const void* x, int incx, const void* beta, void* y, int incy);

void cblas_sger(CBLAS_LAYOUT layout, int m, int n, float alpha, const float* x, int incx, const float* y, int incy,
                float* a, int lda);
void cblas_dger(CBLAS_LAYOUT layout, int m, int n, double alpha, const double* x, int incx, const double* y, int incy,
                double* a, int lda);
void cblas_cgeru(CBLAS_LAYOUT layout, int m, int n, const void* alpha, const void* x, int incx, const void* y, int incy,
                 void* a, int lda);
void cblas_zgeru(CBLAS_LAYOUT layout, int m, int n, const void* alpha, const void* x, int incx, const void* y, int incy,
                 void* a, int lda);
void cblas_cgerc(CBLAS_LAYOUT layout, int m, int n, const void* alpha, const void* x, int incx, const void* y, int incy,
                 void* a, int lda);
void cblas_zgerc(CBLAS_LAYOUT layout, int m, int n, const void* alpha, const void* x, int incx, const void* y, int incy,
                 void* a, int lda);

void cblas_ssymv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, float alpha, const float* a, int lda, const float* x,
                 int incx, float beta, float* y, int incy);
void cblas_dsymv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, double alpha, const double* a, int lda, const double* x,
                 int incx, double beta, double* y, int incy);
void cblas_chemv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, const void* alpha, const void* a, int lda, const void* x,
                 int incx, const void* beta, void* y, int incy);
void cblas_zhemv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, const void* alpha, const void* a, int lda, const void* x,
                 int incx, const void* beta, void* y, int incy);

void cblas_ssbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, int k, float alpha, const float* a, int lda,
                 const float* x, int incx, float beta, float* y, int incy);
void cblas_dsbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, int k, double alpha, const double* a, int lda,
                 const double* x, int incx, double beta, double* y, int incy);
void cblas_chbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, int k, const void* alpha, const void* a, int lda,
                 const void* x, int incx, const void* beta, void* y, int incy);
void cblas_zhbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, int k, const void* alpha, const void* a, int lda,
                 const void* x, int incx, const void* beta, void* y, int incy);

void cblas_sspmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, float alpha, const float* ap, const float* x, int incx,
                 float beta, float* y, int incy);
void cblas_dspmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, double alpha, const double* ap, const double* x, int incx,
                 double beta, double* y, int incy);
void cblas_chpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, const void* alpha, const void* ap, const void* x,
                 int incx, const void* beta, void* y, int incy);
void cblas_zhpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, const void* alpha, const void* ap, const void* x,
                 int incx, const void* beta, void* y, int incy);

void cblas_ssyr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, float alpha, const float* x, int incx, float* a, int lda);
void cblas_dsyr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, double alpha, const double* x, int incx, double* a,
                int lda);
void cblas_cher(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, float alpha, const void* x, int incx, void* a, int lda);
void cblas_zher(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, double alpha, const void* x, int incx, void* a, int lda);

void cblas_sspr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, float alpha, const float* x, int incx, float* ap);
void cblas_dspr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, double alpha, const double* x, int incx, double* ap);
void cblas_chpr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, float alpha, const void* x, int incx, void* ap);
void cblas_zhpr(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, double alpha, const void* x, int incx, void* ap);

void cblas_ssyr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, float alpha, const float* x, int incx, const float* y,
                 int incy, float* a, int lda);
void cblas_dsyr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, double alpha, const double* x, int incx, const double* y,
                 int incy, double* a, int lda);
void cblas_cher2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, const void* alpha, const void* x, int incx, const void* y,
                 int incy, void* a, int lda);
void cblas_zher2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, const void* alpha, const void* x, int incx, const void* y,
                 int incy, void* a, int lda);

void cblas_sspr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, float alpha, const float* x, int incx, const float* y,
                 int incy, float* ap);
void cblas_dspr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, double alpha, const double* x, int incx, const double* y,
                 int incy, double* ap);
void cblas_chpr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, const void* alpha, const void* x, int incx, const void* y,
                 int incy, void* ap);
void cblas_zhpr2(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, int n, const void* alpha, const void* x, int incx, const void* y,
                 int incy, void* ap);

void cblas_strmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const float* a,
                 int lda, float* x, int incx);
void cblas_dtrmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const double* a,
                 int lda, double* x, int incx);
void cblas_ctrmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const void* a,
                 int lda, void* x, int incx);
void cblas_ztrmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const void* a,
                 int lda, void* x, int incx);

void cblas_strsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const float* a,
                 int lda, float* x, int incx);
void cblas_dtrsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const double* a,
                 int lda, double* x, int incx);
void cblas_ctrsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const void* a,
                 int lda, void* x, int incx);
void cblas_ztrsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const void* a,
                 int lda, void* x, int incx);

void cblas_stbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, int k,
                 const float* a, int lda, float* x, int incx);
void cblas_dtbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, int k,
                 const double* a, int lda, double* x, int incx);
void cblas_ctbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, int k,
                 const void* a, int lda, void* x, int incx);
void cblas_ztbmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, int k,
                 const void* a, int lda, void* x, int incx);

void cblas_stbsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, int k,
                 const float* a, int lda, float* x, int incx);
void cblas_dtbsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, int k,
                 const double* a, int lda, double* x, int incx);
void cblas_ctbsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, int k,
                 const void* a, int lda, void* x, int incx);
void cblas_ztbsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, int k,
                 const void* a, int lda, void* x, int incx);

void cblas_stpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const float* ap,
                 float* x, int incx);
void cblas_dtpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const double* ap,
                 double* x, int incx);
void cblas_ctpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const void* ap,
                 void* x, int incx);
void cblas_ztpmv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const void* ap,
                 void* x, int incx);

void cblas_stpsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const float* ap,
                 float* x, int incx);
void cblas_dtpsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const double* ap,
                 double* x, int incx);
void cblas_ctpsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const void* ap,
                 void* x, int incx);
void cblas_ztpsv(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int n, const void* ap,
                 void* x, int incx);

/* ---- Matrices */

void cblas_sgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, int m, int n, int k, float alpha,
                 const float* a, int lda, const float* b, int ldb, float beta, float* c, int ldc);
void cblas_dgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, int m, int n, int k, double alpha,
                 const double* a, int lda, const double* b, int ldb, double beta, double* c, int ldc);
void cblas_cgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, int m, int n, int k,
                 const void* alpha, const void* a, int lda, const void* b, int ldb, const void* beta, void* c, int ldc);
void cblas_zgemm(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, int m, int n, int k,
                 const void* alpha, const void* a, int lda, const void* b, int ldb, const void* beta, void* c, int ldc);

void cblas_ssymm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, int m, int n, float alpha, const float* a,
                 int lda, const float* b, int ldb, float beta, float* c, int ldc);
void cblas_dsymm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, int m, int n, double alpha, const double* a,
                 int lda, const double* b, int ldb, double beta, double* c, int ldc);
void cblas_csymm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, int m, int n, const void* alpha, const void* a,
                 int lda, const void* b, int ldb, const void* beta, void* c, int ldc);
void cblas_zsymm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, int m, int n, const void* alpha, const void* a,
                 int lda, const void* b, int ldb, const void* beta, void* c, int ldc);
void cblas_chemm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, int m, int n, const void* alpha, const void* a,
                 int lda, const void* b, int ldb, const void* beta, void* c, int ldc);
void cblas_zhemm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, int m, int n, const void* alpha, const void* a,
                 int lda, const void* b, int ldb, const void* beta, void* c, int ldc);
void cblas_ssyrk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, float alpha, const float* a,
                 int lda, float beta, float* c, int ldc);
void cblas_dsyrk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, double alpha,
                 const double* a, int lda, double beta, double* c, int ldc);
void cblas_csyrk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, const void* alpha,
                 const void* a, int lda, const void* beta, void* c, int ldc);
void cblas_zsyrk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, const void* alpha,
                 const void* a, int lda, const void* beta, void* c, int ldc);
void cblas_cherk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, float alpha, const void* a,
                 int lda, float beta, void* c, int ldc);
void cblas_zherk(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, double alpha, const void* a,
                 int lda, double beta, void* c, int ldc);
void cblas_ssyr2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, float alpha,
                  const float* a, int lda, const float* b, int ldb, float beta, float* c, int ldc);
void cblas_dsyr2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, double alpha,
                  const double* a, int lda, const double* b, int ldb, double beta, double* c, int ldc);
void cblas_csyr2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, const void* alpha,
                  const void* a, int lda, const void* b, int ldb, const void* beta, void* c, int ldc);
void cblas_zsyr2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, const void* alpha,
                  const void* a, int lda, const void* b, int ldb, const void* beta, void* c, int ldc);
void cblas_cher2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, const void* alpha,
                  const void* a, int lda, const void* b, int ldb, float beta, void* c, int ldc);
void cblas_zher2k(CBLAS_LAYOUT layout, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, int n, int k, const void* alpha,
                  const void* a, int lda, const void* b, int ldb, double beta, void* c, int ldc);
void cblas_strmm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int m,
                 int n, float alpha, const float* a, int lda, float* b, int ldb);
void cblas_dtrmm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int m,
                 int n, double alpha, const double* a, int lda, double* b, int ldb);
void cblas_ctrmm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int m,
                 int n, const void* alpha, const void* a, int lda, void* b, int ldb);
void cblas_ztrmm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int m,
                 int n, const void* alpha, const void* a, int lda, void* b, int ldb);
void cblas_strsm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int m,
                 int n, float alpha, const float* a, int lda, float* b, int ldb);
void cblas_dtrsm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int m,
                 int n, double alpha, const double* a, int lda, double* b, int ldb);
void cblas_ctrsm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int m,
                 int n, const void* alpha, const void* a, int lda, void* b, int ldb);
void cblas_ztrsm(CBLAS_LAYOUT layout, CBLAS_SIDE side, CBLAS_UPLO uplo, CBLAS_TRANSPOSE trans, CBLAS_DIAG diag, int m,
                 int n, const void* alpha, const void* a, int lda, void* b, int ldb);

/* Beyond the standard. */
void cblas_cgemm3m(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, int m, int n, int k,
                   const void* alpha, const void* a, int lda, const void* b, int ldb, const void* beta, void* c,
                   int ldc);
void cblas_zgemm3m(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE transa, CBLAS_TRANSPOSE transb, int m, int n, int k,
                   const void* alpha, const void* a, int lda, const void* b, int ldb, const void* beta, void* c,
                   int ldc);

/* ---- Copies and sums of matrices (told in <orv/trans.h>), beyond the standard; CblasConjNoTrans is for these alone */

void cblas_somatcopy(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int rows, int cols, float alpha, const float* a,
                     int lda, float* b, int ldb);
void cblas_domatcopy(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int rows, int cols, double alpha, const double* a,
                     int lda, double* b, int ldb);
void cblas_comatcopy(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int rows, int cols, const void* alpha, const void* a,
                     int lda, void* b, int ldb);
void cblas_zomatcopy(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int rows, int cols, const void* alpha, const void* a,
                     int lda, void* b, int ldb);
void cblas_simatcopy(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int rows, int cols, float alpha, float* ab, int lda,
                     int ldb);
void cblas_dimatcopy(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int rows, int cols, double alpha, double* ab, int lda,
                     int ldb);
void cblas_cimatcopy(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int rows, int cols, const void* alpha, void* ab,
                     int lda, int ldb);
void cblas_zimatcopy(CBLAS_LAYOUT layout, CBLAS_TRANSPOSE trans, int rows, int cols, const void* alpha, void* ab,
                     int lda, int ldb);

/* C := alpha*A + beta*C; a factor of 0 leaves its matrix unread. */
void cblas_sgeadd(CBLAS_LAYOUT layout, int rows, int cols, float alpha, const float* a, int lda, float beta, float* c,
                  int ldc);
void cblas_dgeadd(CBLAS_LAYOUT layout, int rows, int cols, double alpha, const double* a, int lda, double beta,
                  double* c, int ldc);
void cblas_cgeadd(CBLAS_LAYOUT layout, int rows, int cols, const void* alpha, const void* a, int lda, const void* beta,
                  void* c, int ldc);
void cblas_zgeadd(CBLAS_LAYOUT layout, int rows, int cols, const void* alpha, const void* a, int lda, const void* beta,
                  void* c, int ldc);

/* Called for a bad argument, with its position counted from 1 (the layout is the first) and the routine's name. A
   program may define its own in place of the library's, which prints a line and returns. */
void cblas_xerbla(int position, const char* routine, const char* format, ...);

#ifdef __cplusplus
}
#endif
#endif
