/* Extended and mixed precision BLAS: sums and solves that are computed more precisely than their operands are stored,
   and operands of different types without copies.

   Names: orv_xblas_<t><op>[_<a>[_<b>]][_x].
     t      type of the result, of alpha and of beta: s float, d double, c and z their complex numbers
     op     the operation, below
     a, b   types of the first and of the second input, where they differ from t: orv_xblas_zgemv_d_z_x multiplies a
            real matrix by a complex vector. Operations with one input have one letter.
     _x     the last argument chooses the precision that is computed in; without it that of t holds

     two inputs    d_s s_d s_s for d;  c_s s_c s_s for c;  c_c c_z z_c d_d d_z z_d for z       each with and without _x
     Hermitian     c_s for c;  c_c c_z z_c z_d for z                                           each with and without _x
     one input     s for d;  s for c;  c d for z                                               each with and without _x
     Same types throughout: with _x only.

   Every function returns a status: 0; -i if argument i is bad (counted from 1 as declared), in which case nothing was
   written; or a positive code. Each is the kernel orv_xblas_mc3_BLAS_<same name> behind a check of its arguments.

   That kernel can also be called directly, by a program that knows the interface of the BLAS Technical Forum; its own,
   fewer checks then report to orv_xblas_mc3_BLAS_error. A program that exports this name sees all reports; else they
   are kept for orv_last_error().

   Source: Li, Demmel, Bailey, Henry, Hida, Iskandar, Kahan, Kang, Kapur, Martin, Thompson, Tung, Yoo, Design,
   Implementation and Testing of Extended and Mixed Precision BLAS, ACM TOMS 28 (2002) 152-205. */
#ifndef ORV_XBLAS_H
#define ORV_XBLAS_H

#include <orv/status.h>
#include <orv/types.h>

/* Options are ints, in C++ too: any value can be passed, and a wrong one is answered with its position. */
#ifdef __cplusplus
#define ORV_OPTION : int
#else
#define ORV_OPTION
#endif
typedef enum ORV_OPTION { ORV_ROW_MAJOR = 101, ORV_COLUMN_MAJOR = 102 } orv_order;
typedef enum ORV_OPTION { ORV_NO_TRANS = 111, ORV_TRANS = 112, ORV_CONJ_TRANS = 113 } orv_trans;
typedef enum ORV_OPTION { ORV_UPPER = 121, ORV_LOWER = 122 } orv_uplo;
typedef enum ORV_OPTION { ORV_NON_UNIT_DIAG = 131, ORV_UNIT_DIAG = 132 } orv_diag;
typedef enum ORV_OPTION { ORV_LEFT_SIDE = 141, ORV_RIGHT_SIDE = 142 } orv_side;
typedef enum ORV_OPTION { ORV_CONJ = 191, ORV_NO_CONJ = 192 } orv_conj;
/* single, double: the arithmetic of float, double; indigenous: the machine's own, double; extra: pairs of doubles, some
   105 bits, of which the result is rounded once. A result of type d or z takes single for double. */
typedef enum ORV_OPTION {
    ORV_PREC_SINGLE = 211,
    ORV_PREC_DOUBLE = 212,
    ORV_PREC_INDIGENOUS = 213,
    ORV_PREC_EXTRA = 214
} orv_prec;
#undef ORV_OPTION

/* clang-format off */
/* ---- The grammar ------------------------------------------------------------------------------------------------ */

/* Lists the members of an operation as M(name, T, A, B, P): name without orv_xblas_, the types, P a closing parameter. */
#define ORV_XBLAS_S float
#define ORV_XBLAS_D double
#define ORV_XBLAS_C orv_complex_float
#define ORV_XBLAS_Z orv_complex_double
#define ORV_XBLAS_WITH , orv_prec prec
#define ORV_XBLAS_WITHOUT

#define ORV_XBLAS_BOTH(M, name, T, A, B) M##_X(name##_x, T, A, B) M(name, T, A, B)
#define ORV_XBLAS_HERMITIAN(M, op)                                                                                     \
    M##_X(c##op##_x, ORV_XBLAS_C, ORV_XBLAS_C, ORV_XBLAS_C) M##_X(z##op##_x, ORV_XBLAS_Z, ORV_XBLAS_Z, ORV_XBLAS_Z)    \
    ORV_XBLAS_BOTH(M, c##op##_c_s, ORV_XBLAS_C, ORV_XBLAS_C, ORV_XBLAS_S)                                              \
    ORV_XBLAS_BOTH(M, z##op##_c_c, ORV_XBLAS_Z, ORV_XBLAS_C, ORV_XBLAS_C)                                              \
    ORV_XBLAS_BOTH(M, z##op##_c_z, ORV_XBLAS_Z, ORV_XBLAS_C, ORV_XBLAS_Z)                                              \
    ORV_XBLAS_BOTH(M, z##op##_z_c, ORV_XBLAS_Z, ORV_XBLAS_Z, ORV_XBLAS_C)                                              \
    ORV_XBLAS_BOTH(M, z##op##_z_d, ORV_XBLAS_Z, ORV_XBLAS_Z, ORV_XBLAS_D)
#define ORV_XBLAS_TWO_INPUTS(M, op)                                                                                    \
    M##_X(s##op##_x, ORV_XBLAS_S, ORV_XBLAS_S, ORV_XBLAS_S) M##_X(d##op##_x, ORV_XBLAS_D, ORV_XBLAS_D, ORV_XBLAS_D)    \
    ORV_XBLAS_HERMITIAN(M, op)                                                                                         \
    ORV_XBLAS_BOTH(M, d##op##_d_s, ORV_XBLAS_D, ORV_XBLAS_D, ORV_XBLAS_S)                                              \
    ORV_XBLAS_BOTH(M, d##op##_s_d, ORV_XBLAS_D, ORV_XBLAS_S, ORV_XBLAS_D)                                              \
    ORV_XBLAS_BOTH(M, d##op##_s_s, ORV_XBLAS_D, ORV_XBLAS_S, ORV_XBLAS_S)                                              \
    ORV_XBLAS_BOTH(M, c##op##_s_c, ORV_XBLAS_C, ORV_XBLAS_S, ORV_XBLAS_C)                                              \
    ORV_XBLAS_BOTH(M, c##op##_s_s, ORV_XBLAS_C, ORV_XBLAS_S, ORV_XBLAS_S)                                              \
    ORV_XBLAS_BOTH(M, z##op##_d_d, ORV_XBLAS_Z, ORV_XBLAS_D, ORV_XBLAS_D)                                              \
    ORV_XBLAS_BOTH(M, z##op##_d_z, ORV_XBLAS_Z, ORV_XBLAS_D, ORV_XBLAS_Z)
#define ORV_XBLAS_SUM(M, op)                                                                                           \
    M##_X(s##op##_x, ORV_XBLAS_S, ORV_XBLAS_S, _) M##_X(d##op##_x, ORV_XBLAS_D, ORV_XBLAS_D, _)                        \
    M##_X(c##op##_x, ORV_XBLAS_C, ORV_XBLAS_C, _) M##_X(z##op##_x, ORV_XBLAS_Z, ORV_XBLAS_Z, _)
#define ORV_XBLAS_ONE_INPUT(M, op)                                                                                     \
    ORV_XBLAS_SUM(M, op)                                                                                               \
    ORV_XBLAS_BOTH(M, d##op##_s, ORV_XBLAS_D, ORV_XBLAS_S, _) ORV_XBLAS_BOTH(M, c##op##_s, ORV_XBLAS_C, ORV_XBLAS_S, _) \
    ORV_XBLAS_BOTH(M, z##op##_c, ORV_XBLAS_Z, ORV_XBLAS_C, _) ORV_XBLAS_BOTH(M, z##op##_d, ORV_XBLAS_Z, ORV_XBLAS_D, _)

/* ---- The operations --------------------------------------------------------------------------------------------- */

/* T: type of the result, A and B: types of the inputs. */

/* r := alpha * sum(op(x[i])*y[i]) + beta*r; conj = ORV_CONJ takes the conjugate of x. Only beta = 1 with n = 0 or
   alpha = 0 leaves r unread. */
#define ORV_XBLAS_dot(name, T, A, B, P)                                                                                \
    ORV_API orv_status orv_xblas_##name(orv_conj conj, int64_t n, T alpha, const A* x, int64_t incx, T beta,           \
        const B* y, int64_t incy, T* r P);

/* r := sum(x[i]), at least in double. */
#define ORV_XBLAS_sum(name, T, A, B, P)                                                                                \
    ORV_API orv_status orv_xblas_##name(int64_t n, const A* x, int64_t incx, T* r P);

/* y := alpha*x + beta*y. */
#define ORV_XBLAS_axpby(name, T, A, B, P)                                                                              \
    ORV_API orv_status orv_xblas_##name(int64_t n, T alpha, const A* x, int64_t incx, T beta, T* y, int64_t incy       \
        P);

/* w := alpha*x + beta*y. w may be x or y. */
#define ORV_XBLAS_waxpby(name, T, A, B, P)                                                                             \
    ORV_API orv_status orv_xblas_##name(int64_t n, T alpha, const A* x, int64_t incx, T beta, const B* y,              \
        int64_t incy, T* w, int64_t incw P);

/* y := alpha*op(A)*x + beta*y. A is m by n, op(A) as trans says. beta = 0 sets y without reading it. */
#define ORV_XBLAS_gemv(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_trans trans, int64_t m, int64_t n, T alpha, const         \
        A* a, int64_t lda, const B* x, int64_t incx, T beta, T* y, int64_t incy P);

/* y := alpha*op(A)*(head_x + tail_x) + beta*y. */
#define ORV_XBLAS_gemv2(name, T, A, B, P)                                                                              \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_trans trans, int64_t m, int64_t n, T alpha, const         \
        A* a, int64_t lda, const B* head_x, const B* tail_x, int64_t incx, T beta, T* y, int64_t incy P);

/* The same for a band of kl diagonals below the main one and ku above. y is always read. */
#define ORV_XBLAS_gbmv(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_trans trans, int64_t m, int64_t n, int64_t kl,            \
        int64_t ku, T alpha, const A* a, int64_t lda, const B* x, int64_t incx, T beta, T* y, int64_t incy P);

#define ORV_XBLAS_gbmv2(name, T, A, B, P)                                                                              \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_trans trans, int64_t m, int64_t n, int64_t kl,            \
        int64_t ku, T alpha, const A* a, int64_t lda, const B* head_x, const B* tail_x, int64_t incx, T beta, T* y,    \
        int64_t incy P);

/* y := alpha*A*x + beta*y, A n by n, symmetric (symv) or Hermitian (hemv), one triangle stored. With alpha = 0 also
   beta = 0 multiplies, so NaN in y stays. */
#define ORV_XBLAS_symv(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_uplo uplo, int64_t n, T alpha, const A* a, int64_t        \
        lda, const B* x, int64_t incx, T beta, T* y, int64_t incy P);

#define ORV_XBLAS_hemv ORV_XBLAS_symv

/* y := alpha*A*(x_head + x_tail) + beta*y. */
#define ORV_XBLAS_symv2(name, T, A, B, P)                                                                              \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_uplo uplo, int64_t n, T alpha, const A* a, int64_t        \
        lda, const B* x_head, const B* x_tail, int64_t incx, T beta, T* y, int64_t incy P);

#define ORV_XBLAS_hemv2 ORV_XBLAS_symv2

/* The same as symv for a band of k diagonals on either side of the main one. */
#define ORV_XBLAS_sbmv(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_uplo uplo, int64_t n, int64_t k, T alpha, const A*        \
        a, int64_t lda, const B* x, int64_t incx, T beta, T* y, int64_t incy P);

#define ORV_XBLAS_hbmv ORV_XBLAS_sbmv

/* The same as symv in packed storage. */
#define ORV_XBLAS_spmv(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_uplo uplo, int64_t n, T alpha, const A* ap, const         \
        B* x, int64_t incx, T beta, T* y, int64_t incy P);

#define ORV_XBLAS_hpmv ORV_XBLAS_spmv

/* y := alpha*A*x + beta*B*x, A and B m by n. y is not read. */
#define ORV_XBLAS_ge_sum_mv(name, T, A, B, P)                                                                          \
    ORV_API orv_status orv_xblas_##name(orv_order order, int64_t m, int64_t n, T alpha, const A* a, int64_t lda,       \
        const B* x, int64_t incx, T beta, const A* b, int64_t ldb, T* y, int64_t incy P);

/* x := alpha*op(T)*x, T n by n triangular; tpmv: in packed storage. */
#define ORV_XBLAS_trmv(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, int64_t        \
        n, T alpha, const A* t, int64_t ldt, T* x, int64_t incx P);

#define ORV_XBLAS_tpmv(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, int64_t        \
        n, T alpha, const A* tp, T* x, int64_t incx P);

/* x := alpha*op(T)^-1*x; tbsv: T a band of k diagonals beside the main one. A 0 on the diagonal is not tested for. */
#define ORV_XBLAS_trsv(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, int64_t        \
        n, T alpha, const A* t, int64_t ldt, T* x, int64_t incx P);

#define ORV_XBLAS_tbsv(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, int64_t        \
        n, int64_t k, T alpha, const A* t, int64_t ldt, T* x, int64_t incx P);

/* C := alpha*op(A)*op(B) + beta*C, C m by n, k the length of the sums. k = 0 leaves C alone; alpha = 0 multiplies C by
   beta, 0 included; else beta = 0 sets C without reading it. */
#define ORV_XBLAS_gemm(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_trans transa, orv_trans transb, int64_t m, int64_t        \
        n, int64_t k, T alpha, const A* a, int64_t lda, const B* b, int64_t ldb, T beta, T* c, int64_t ldc P);

/* C := alpha*A*B + beta*C, or alpha*B*A + beta*C for the right side; A symmetric (symm) or Hermitian (hemm). */
#define ORV_XBLAS_symm(name, T, A, B, P)                                                                               \
    ORV_API orv_status orv_xblas_##name(orv_order order, orv_side side, orv_uplo uplo, int64_t m, int64_t n, T         \
        alpha, const A* a, int64_t lda, const B* b, int64_t ldb, T beta, T* c, int64_t ldc P);

#define ORV_XBLAS_hemm ORV_XBLAS_symm

/* ---- The declarations, from the lists ------------------------------------------------------------------------- */

#define ORV_XBLAS_DECLARE_dot_X(name, T, A, B) ORV_XBLAS_dot(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_dot(name, T, A, B) ORV_XBLAS_dot(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_dot, dot)
#define ORV_XBLAS_DECLARE_sum_X(name, T, A, B) ORV_XBLAS_sum(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_sum(name, T, A, B) ORV_XBLAS_sum(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_SUM(ORV_XBLAS_DECLARE_sum, sum)
#define ORV_XBLAS_DECLARE_axpby_X(name, T, A, B) ORV_XBLAS_axpby(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_axpby(name, T, A, B) ORV_XBLAS_axpby(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_ONE_INPUT(ORV_XBLAS_DECLARE_axpby, axpby)
#define ORV_XBLAS_DECLARE_waxpby_X(name, T, A, B) ORV_XBLAS_waxpby(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_waxpby(name, T, A, B) ORV_XBLAS_waxpby(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_waxpby, waxpby)
#define ORV_XBLAS_DECLARE_gemv_X(name, T, A, B) ORV_XBLAS_gemv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_gemv(name, T, A, B) ORV_XBLAS_gemv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_gemv, gemv)
#define ORV_XBLAS_DECLARE_gemv2_X(name, T, A, B) ORV_XBLAS_gemv2(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_gemv2(name, T, A, B) ORV_XBLAS_gemv2(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_gemv2, gemv2)
#define ORV_XBLAS_DECLARE_gbmv_X(name, T, A, B) ORV_XBLAS_gbmv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_gbmv(name, T, A, B) ORV_XBLAS_gbmv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_gbmv, gbmv)
#define ORV_XBLAS_DECLARE_gbmv2_X(name, T, A, B) ORV_XBLAS_gbmv2(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_gbmv2(name, T, A, B) ORV_XBLAS_gbmv2(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_gbmv2, gbmv2)
#define ORV_XBLAS_DECLARE_symv_X(name, T, A, B) ORV_XBLAS_symv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_symv(name, T, A, B) ORV_XBLAS_symv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_symv, symv)
#define ORV_XBLAS_DECLARE_hemv_X(name, T, A, B) ORV_XBLAS_hemv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_hemv(name, T, A, B) ORV_XBLAS_hemv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_HERMITIAN(ORV_XBLAS_DECLARE_hemv, hemv)
#define ORV_XBLAS_DECLARE_symv2_X(name, T, A, B) ORV_XBLAS_symv2(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_symv2(name, T, A, B) ORV_XBLAS_symv2(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_symv2, symv2)
#define ORV_XBLAS_DECLARE_hemv2_X(name, T, A, B) ORV_XBLAS_hemv2(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_hemv2(name, T, A, B) ORV_XBLAS_hemv2(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_HERMITIAN(ORV_XBLAS_DECLARE_hemv2, hemv2)
#define ORV_XBLAS_DECLARE_sbmv_X(name, T, A, B) ORV_XBLAS_sbmv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_sbmv(name, T, A, B) ORV_XBLAS_sbmv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_sbmv, sbmv)
#define ORV_XBLAS_DECLARE_hbmv_X(name, T, A, B) ORV_XBLAS_hbmv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_hbmv(name, T, A, B) ORV_XBLAS_hbmv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_HERMITIAN(ORV_XBLAS_DECLARE_hbmv, hbmv)
#define ORV_XBLAS_DECLARE_spmv_X(name, T, A, B) ORV_XBLAS_spmv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_spmv(name, T, A, B) ORV_XBLAS_spmv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_spmv, spmv)
#define ORV_XBLAS_DECLARE_hpmv_X(name, T, A, B) ORV_XBLAS_hpmv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_hpmv(name, T, A, B) ORV_XBLAS_hpmv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_HERMITIAN(ORV_XBLAS_DECLARE_hpmv, hpmv)
#define ORV_XBLAS_DECLARE_ge_sum_mv_X(name, T, A, B) ORV_XBLAS_ge_sum_mv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_ge_sum_mv(name, T, A, B) ORV_XBLAS_ge_sum_mv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_ge_sum_mv, ge_sum_mv)
#define ORV_XBLAS_DECLARE_trmv_X(name, T, A, B) ORV_XBLAS_trmv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_trmv(name, T, A, B) ORV_XBLAS_trmv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_ONE_INPUT(ORV_XBLAS_DECLARE_trmv, trmv)
#define ORV_XBLAS_DECLARE_tpmv_X(name, T, A, B) ORV_XBLAS_tpmv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_tpmv(name, T, A, B) ORV_XBLAS_tpmv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_ONE_INPUT(ORV_XBLAS_DECLARE_tpmv, tpmv)
#define ORV_XBLAS_DECLARE_trsv_X(name, T, A, B) ORV_XBLAS_trsv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_trsv(name, T, A, B) ORV_XBLAS_trsv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_ONE_INPUT(ORV_XBLAS_DECLARE_trsv, trsv)
#define ORV_XBLAS_DECLARE_tbsv_X(name, T, A, B) ORV_XBLAS_tbsv(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_tbsv(name, T, A, B) ORV_XBLAS_tbsv(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_ONE_INPUT(ORV_XBLAS_DECLARE_tbsv, tbsv)
#define ORV_XBLAS_DECLARE_gemm_X(name, T, A, B) ORV_XBLAS_gemm(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_gemm(name, T, A, B) ORV_XBLAS_gemm(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_gemm, gemm)
#define ORV_XBLAS_DECLARE_symm_X(name, T, A, B) ORV_XBLAS_symm(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_symm(name, T, A, B) ORV_XBLAS_symm(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_TWO_INPUTS(ORV_XBLAS_DECLARE_symm, symm)
#define ORV_XBLAS_DECLARE_hemm_X(name, T, A, B) ORV_XBLAS_hemm(name, T, A, B, ORV_XBLAS_WITH)
#define ORV_XBLAS_DECLARE_hemm(name, T, A, B) ORV_XBLAS_hemm(name, T, A, B, ORV_XBLAS_WITHOUT)
ORV_XBLAS_HERMITIAN(ORV_XBLAS_DECLARE_hemm, hemm)

/* A property of a precision's arithmetic: 151 its base, 152 digits, 153 whether it rounds, 154 whether it is IEEE's, 155
   least exponent, 156 greatest; 0 for any other number. */
ORV_API int64_t orv_xblas_fpinfo(int property, orv_prec prec);

#endif
