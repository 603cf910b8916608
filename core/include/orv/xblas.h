/* Extended and mixed precision BLAS: sums and solves that are computed more precisely than their operands are stored,
   and operands of different types without copies.

   Names: orv_xblas_<t><op>[_<a>[_<b>]][_x].
     t      type of the result, of alpha and of beta: s float, d double, c and z their complex numbers
     op     the operation: <orv/xblas_members.h> has each with what it computes and its arguments
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
#include <orv/xblas_members.h>

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
   105 bits, of which the result is rounded once. A result of type d or z takes single for double. Where alpha is 0,
   products of matrices (hemv apart, and gbmv) leave beta*y or beta*C in the arithmetic of the result's type. */
typedef enum ORV_OPTION {
    ORV_PREC_SINGLE = 211,
    ORV_PREC_DOUBLE = 212,
    ORV_PREC_INDIGENOUS = 213,
    ORV_PREC_EXTRA = 214
} orv_prec;
#undef ORV_OPTION

#define ORV_XBLAS_TYPE_s float
#define ORV_XBLAS_TYPE_d double
#define ORV_XBLAS_TYPE_c orv_complex_float
#define ORV_XBLAS_TYPE_z orv_complex_double
#define ORV_XBLAS_DECLARE(op, t, ab, a, b, x, more)                                                                    \
    ORV_API orv_status orv_xblas_##t##op##ab##x(                                                                       \
        ORV_XBLAS_ARGUMENTS_##op(ORV_XBLAS_TYPE_##t, ORV_XBLAS_TYPE_##a, ORV_XBLAS_TYPE_##b) ORV_XBLAS_PREC##x);
ORV_XBLAS_ALL(ORV_XBLAS_DECLARE)

/* A property of a precision's arithmetic: 151 its base, 152 digits, 153 whether it rounds, 154 whether it is IEEE's,
   155 least exponent, 156 greatest; 0 for any other number. */
ORV_API int64_t orv_xblas_fpinfo(int property, orv_prec prec);

#endif
