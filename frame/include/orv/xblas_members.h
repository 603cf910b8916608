/* The operations of extended and mixed precision, their members and their arguments: one list for <orv/xblas.h>, for
   the kernels, and for whoever binds the routines to another language.

     ORV_XBLAS_ALL(M)                      every member of every operation
     ORV_XBLAS_MEMBERS_<op>(M, op, more)   the members of one operation

   call M(op, t, ab, a, b, x, more) once for each member. Its name is <t><op><ab><x>: t is the letter of the result's
   type, ab the suffix (_d_z) or nothing, a and b the letters of the inputs' types, x is _x with prec or nothing; more
   is handed on.

     ORV_XBLAS_ARGUMENTS_<op>(T, A, B)     the parameters, T: type of the result, A and B: types of the inputs
     ORV_XBLAS_PREC##x                     and the one behind them */
#ifndef ORV_XBLAS_MEMBERS_H
#define ORV_XBLAS_MEMBERS_H

/* clang-format off */
/* ---- The grammar ------------------------------------------------------------------------------------------------- */

#define ORV_XBLAS_PREC_x , orv_prec prec
#define ORV_XBLAS_PREC

/* Same types throughout: with _x only. */
#define ORV_XBLAS_REAL(M, op, more) M(op, s, , s, s, _x, more) M(op, d, , d, d, _x, more)
#define ORV_XBLAS_COMPLEX(M, op, more) M(op, c, , c, c, _x, more) M(op, z, , z, z, _x, more)
#define ORV_XBLAS_SAME_TYPES(M, op, more) ORV_XBLAS_REAL(M, op, more) ORV_XBLAS_COMPLEX(M, op, more)

/* Mixed types: with and without _x. */
#define ORV_XBLAS_MIXED_1(M, op, t, a, more) M(op, t, _##a, a, a, _x, more) M(op, t, _##a, a, a, , more)
#define ORV_XBLAS_MIXED_2(M, op, t, a, b, more) M(op, t, _##a##_##b, a, b, _x, more) M(op, t, _##a##_##b, a, b, , more)

#define ORV_XBLAS_ONE_INPUT(M, op, more)                                                                               \
    ORV_XBLAS_SAME_TYPES(M, op, more) ORV_XBLAS_MIXED_1(M, op, d, s, more) ORV_XBLAS_MIXED_1(M, op, c, s, more)        \
    ORV_XBLAS_MIXED_1(M, op, z, c, more) ORV_XBLAS_MIXED_1(M, op, z, d, more)
#define ORV_XBLAS_HERMITIAN(M, op, more)                                                                               \
    ORV_XBLAS_COMPLEX(M, op, more) ORV_XBLAS_MIXED_2(M, op, c, c, s, more) ORV_XBLAS_MIXED_2(M, op, z, c, c, more)     \
    ORV_XBLAS_MIXED_2(M, op, z, c, z, more) ORV_XBLAS_MIXED_2(M, op, z, z, c, more)                                    \
    ORV_XBLAS_MIXED_2(M, op, z, z, d, more)
#define ORV_XBLAS_TWO_INPUTS(M, op, more)                                                                              \
    ORV_XBLAS_REAL(M, op, more) ORV_XBLAS_HERMITIAN(M, op, more) ORV_XBLAS_MIXED_2(M, op, d, d, s, more)               \
    ORV_XBLAS_MIXED_2(M, op, d, s, d, more) ORV_XBLAS_MIXED_2(M, op, d, s, s, more)                                    \
    ORV_XBLAS_MIXED_2(M, op, c, s, c, more) ORV_XBLAS_MIXED_2(M, op, c, s, s, more)                                    \
    ORV_XBLAS_MIXED_2(M, op, z, d, d, more) ORV_XBLAS_MIXED_2(M, op, z, d, z, more)

/* ---- The operations ---------------------------------------------------------------------------------------------- */

/* r := alpha * sum(op(x[i])*y[i]) + beta*r; conj = ORV_CONJ takes the conjugate of x. Only beta = 1 with n = 0 or
   alpha = 0 leaves r unread. */
#define ORV_XBLAS_MEMBERS_dot ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_dot(T, A, B)                                                                               \
    orv_conj conj, int64_t n, T alpha, const A* x, int64_t incx, T beta, const B* y, int64_t incy, T* r

/* r := sum(x[i]), at least in double. */
#define ORV_XBLAS_MEMBERS_sum ORV_XBLAS_SAME_TYPES
#define ORV_XBLAS_ARGUMENTS_sum(T, A, B) int64_t n, const A* x, int64_t incx, T* r

/* y := alpha*x + beta*y. */
#define ORV_XBLAS_MEMBERS_axpby ORV_XBLAS_ONE_INPUT
#define ORV_XBLAS_ARGUMENTS_axpby(T, A, B) int64_t n, T alpha, const A* x, int64_t incx, T beta, T* y, int64_t incy

/* w := alpha*x + beta*y. w may be x or y. */
#define ORV_XBLAS_MEMBERS_waxpby ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_waxpby(T, A, B)                                                                            \
    int64_t n, T alpha, const A* x, int64_t incx, T beta, const B* y, int64_t incy, T* w, int64_t incw

/* y := alpha*op(A)*x + beta*y. A is m by n, op(A) as trans says. beta = 0 sets y without reading it. */
#define ORV_XBLAS_MEMBERS_gemv ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_gemv(T, A, B)                                                                              \
    orv_order order, orv_trans trans, int64_t m, int64_t n, T alpha, const A* a, int64_t lda, const B* x,              \
    int64_t incx, T beta, T* y, int64_t incy

/* y := alpha*op(A)*(head_x + tail_x) + beta*y. */
#define ORV_XBLAS_MEMBERS_gemv2 ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_gemv2(T, A, B)                                                                             \
    orv_order order, orv_trans trans, int64_t m, int64_t n, T alpha, const A* a, int64_t lda, const B* head_x,         \
    const B* tail_x, int64_t incx, T beta, T* y, int64_t incy

/* The same for a band of kl diagonals below the main one and ku above. y is always read. */
#define ORV_XBLAS_MEMBERS_gbmv ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_gbmv(T, A, B)                                                                              \
    orv_order order, orv_trans trans, int64_t m, int64_t n, int64_t kl, int64_t ku, T alpha, const A* a, int64_t lda,  \
    const B* x, int64_t incx, T beta, T* y, int64_t incy

#define ORV_XBLAS_MEMBERS_gbmv2 ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_gbmv2(T, A, B)                                                                             \
    orv_order order, orv_trans trans, int64_t m, int64_t n, int64_t kl, int64_t ku, T alpha, const A* a, int64_t lda,  \
    const B* head_x, const B* tail_x, int64_t incx, T beta, T* y, int64_t incy

/* y := alpha*A*x + beta*y, A n by n, symmetric (symv) or Hermitian (hemv), one triangle stored. With alpha = 0 also
   beta = 0 multiplies, so NaN in y stays. */
#define ORV_XBLAS_MEMBERS_symv ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_symv(T, A, B)                                                                              \
    orv_order order, orv_uplo uplo, int64_t n, T alpha, const A* a, int64_t lda, const B* x, int64_t incx, T beta,     \
    T* y, int64_t incy

#define ORV_XBLAS_MEMBERS_hemv ORV_XBLAS_HERMITIAN
#define ORV_XBLAS_ARGUMENTS_hemv ORV_XBLAS_ARGUMENTS_symv

/* y := alpha*A*(x_head + x_tail) + beta*y. */
#define ORV_XBLAS_MEMBERS_symv2 ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_symv2(T, A, B)                                                                             \
    orv_order order, orv_uplo uplo, int64_t n, T alpha, const A* a, int64_t lda, const B* x_head, const B* x_tail,     \
    int64_t incx, T beta, T* y, int64_t incy

#define ORV_XBLAS_MEMBERS_hemv2 ORV_XBLAS_HERMITIAN
#define ORV_XBLAS_ARGUMENTS_hemv2 ORV_XBLAS_ARGUMENTS_symv2

/* The same as symv for a band of k diagonals on either side of the main one. */
#define ORV_XBLAS_MEMBERS_sbmv ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_sbmv(T, A, B)                                                                              \
    orv_order order, orv_uplo uplo, int64_t n, int64_t k, T alpha, const A* a, int64_t lda, const B* x, int64_t incx,  \
    T beta, T* y, int64_t incy

#define ORV_XBLAS_MEMBERS_hbmv ORV_XBLAS_HERMITIAN
#define ORV_XBLAS_ARGUMENTS_hbmv ORV_XBLAS_ARGUMENTS_sbmv

/* The same as symv in packed storage. */
#define ORV_XBLAS_MEMBERS_spmv ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_spmv(T, A, B)                                                                              \
    orv_order order, orv_uplo uplo, int64_t n, T alpha, const A* ap, const B* x, int64_t incx, T beta, T* y,           \
    int64_t incy

#define ORV_XBLAS_MEMBERS_hpmv ORV_XBLAS_HERMITIAN
#define ORV_XBLAS_ARGUMENTS_hpmv ORV_XBLAS_ARGUMENTS_spmv

/* y := alpha*A*x + beta*B*x, A and B m by n. y is not read. */
#define ORV_XBLAS_MEMBERS_ge_sum_mv ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_ge_sum_mv(T, A, B)                                                                         \
    orv_order order, int64_t m, int64_t n, T alpha, const A* a, int64_t lda, const B* x, int64_t incx, T beta,         \
    const A* b, int64_t ldb, T* y, int64_t incy

/* x := alpha*op(T)*x, T n by n triangular; tpmv: in packed storage. */
#define ORV_XBLAS_MEMBERS_trmv ORV_XBLAS_ONE_INPUT
#define ORV_XBLAS_ARGUMENTS_trmv(T, A, B)                                                                              \
    orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, int64_t n, T alpha, const A* t, int64_t ldt,       \
    T* x, int64_t incx

#define ORV_XBLAS_MEMBERS_tpmv ORV_XBLAS_ONE_INPUT
#define ORV_XBLAS_ARGUMENTS_tpmv(T, A, B)                                                                              \
    orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, int64_t n, T alpha, const A* tp, T* x,             \
    int64_t incx

/* x := alpha*op(T)^-1*x; tbsv: T a band of k diagonals beside the main one. A 0 on the diagonal is not tested for. */
#define ORV_XBLAS_MEMBERS_trsv ORV_XBLAS_ONE_INPUT
#define ORV_XBLAS_ARGUMENTS_trsv(T, A, B)                                                                              \
    orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, int64_t n, T alpha, const A* t, int64_t ldt,       \
    T* x, int64_t incx

#define ORV_XBLAS_MEMBERS_tbsv ORV_XBLAS_ONE_INPUT
#define ORV_XBLAS_ARGUMENTS_tbsv(T, A, B)                                                                              \
    orv_order order, orv_uplo uplo, orv_trans trans, orv_diag diag, int64_t n, int64_t k, T alpha, const A* t,         \
    int64_t ldt, T* x, int64_t incx

/* C := alpha*op(A)*op(B) + beta*C, C m by n, k the length of the sums. k = 0 leaves C alone; alpha = 0 multiplies C by
   beta, 0 included; else beta = 0 sets C without reading it. */
#define ORV_XBLAS_MEMBERS_gemm ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_gemm(T, A, B)                                                                              \
    orv_order order, orv_trans transa, orv_trans transb, int64_t m, int64_t n, int64_t k, T alpha, const A* a,         \
    int64_t lda, const B* b, int64_t ldb, T beta, T* c, int64_t ldc

/* C := alpha*A*B + beta*C, or alpha*B*A + beta*C for the right side; A symmetric (symm) or Hermitian (hemm). */
#define ORV_XBLAS_MEMBERS_symm ORV_XBLAS_TWO_INPUTS
#define ORV_XBLAS_ARGUMENTS_symm(T, A, B)                                                                              \
    orv_order order, orv_side side, orv_uplo uplo, int64_t m, int64_t n, T alpha, const A* a, int64_t lda,             \
    const B* b, int64_t ldb, T beta, T* c, int64_t ldc

#define ORV_XBLAS_MEMBERS_hemm ORV_XBLAS_HERMITIAN
#define ORV_XBLAS_ARGUMENTS_hemm ORV_XBLAS_ARGUMENTS_symm

/* ---- All of them ------------------------------------------------------------------------------------------------- */

#define ORV_XBLAS_ALL(M)                                                                                               \
    ORV_XBLAS_MEMBERS_dot(M, dot, ) ORV_XBLAS_MEMBERS_sum(M, sum, ) ORV_XBLAS_MEMBERS_axpby(M, axpby, )                \
    ORV_XBLAS_MEMBERS_waxpby(M, waxpby, ) ORV_XBLAS_MEMBERS_gemv(M, gemv, ) ORV_XBLAS_MEMBERS_gemv2(M, gemv2, )        \
    ORV_XBLAS_MEMBERS_gbmv(M, gbmv, ) ORV_XBLAS_MEMBERS_gbmv2(M, gbmv2, ) ORV_XBLAS_MEMBERS_symv(M, symv, )            \
    ORV_XBLAS_MEMBERS_hemv(M, hemv, ) ORV_XBLAS_MEMBERS_symv2(M, symv2, ) ORV_XBLAS_MEMBERS_hemv2(M, hemv2, )          \
    ORV_XBLAS_MEMBERS_sbmv(M, sbmv, ) ORV_XBLAS_MEMBERS_hbmv(M, hbmv, ) ORV_XBLAS_MEMBERS_spmv(M, spmv, )              \
    ORV_XBLAS_MEMBERS_hpmv(M, hpmv, ) ORV_XBLAS_MEMBERS_ge_sum_mv(M, ge_sum_mv, ) ORV_XBLAS_MEMBERS_trmv(M, trmv, )    \
    ORV_XBLAS_MEMBERS_tpmv(M, tpmv, ) ORV_XBLAS_MEMBERS_trsv(M, trsv, ) ORV_XBLAS_MEMBERS_tbsv(M, tbsv, )              \
    ORV_XBLAS_MEMBERS_gemm(M, gemm, ) ORV_XBLAS_MEMBERS_symm(M, symm, ) ORV_XBLAS_MEMBERS_hemm(M, hemm, )

#endif

