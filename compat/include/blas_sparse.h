/* The Sparse BLAS of the BLAS Technical Forum, C interface, as libsparseblas.so of this project provides it.

   A matrix is built step by step behind a handle, and then used:

       blas_sparse_matrix a = BLAS_duscr_begin(m, n);
       BLAS_ussp(a, blas_lower_symmetric);            properties come before the first entry
       BLAS_duscr_insert_entry(a, 2.5, i, j);         in any order; entries of one place add up
       BLAS_duscr_end(a);
       BLAS_dusmv(blas_no_trans, 1.0, a, x, 1, y, 1);
       BLAS_usds(a);

   Every routine answers 0, or -1 if it refuses, in which case it has done nothing: a handle that is not there any more
   or is of another type, a call that comes too early or too late (entries before begin or after end, products before
   end), indices outside the matrix or its triangle, a stride of 0, no memory. begin answers a handle, or -1. A handle
   that was released is not valid again, whatever is made after it.

   Indices count from 0, or from 1 after blas_one_base (from the Fortran interface: from 1, or from 0 after
   blas_zero_base). Complex scalars and arrays are void pointers to pairs, the real part first; const enum arguments may
   be given as ints. Strides of vectors may be negative: logical element 0 is then the last one. Different matrices may
   be used, and one finished matrix multiplied with, from several threads at once. */
#ifndef BLAS_SPARSE_H
#define BLAS_SPARSE_H

#ifdef __cplusplus
extern "C" {
#endif

typedef int blas_sparse_matrix;

enum blas_order_type { blas_rowmajor = 101, blas_colmajor = 102 };
enum blas_trans_type { blas_no_trans = 111, blas_trans = 112, blas_conj_trans = 113 };
enum blas_uplo_type { blas_upper = 121, blas_lower = 122 };
enum blas_diag_type { blas_non_unit_diag = 131, blas_unit_diag = 132 };
enum blas_conj_type { blas_conj = 191, blas_no_conj = 192 };
enum blas_base_type { blas_zero_base = 221, blas_one_base = 222 };
enum blas_symmetry_type {
    blas_general = 231,
    blas_symmetric = 232,
    blas_hermitian = 233,
    blas_triangular = 234,
    blas_lower_triangular = 235,
    blas_upper_triangular = 236,
    blas_lower_symmetric = 237,
    blas_upper_symmetric = 238,
    blas_lower_hermitian = 239,
    blas_upper_hermitian = 240
};
enum blas_field_type { blas_complex = 241, blas_real = 242, blas_double_precision = 243, blas_single_precision = 244 };
enum blas_size_type { blas_num_rows = 251, blas_num_cols = 252, blas_num_nonzeros = 253 };
enum blas_handle_type {
    blas_invalid_handle = 261,
    blas_new_handle = 262,
    blas_open_handle = 263,
    blas_valid_handle = 264
};
enum blas_sparsity_optimization_type {
    blas_regular = 271,
    blas_irregular = 272,
    blas_block = 273,
    blas_unassembled = 274
};

/* Properties. ussp, before the first entry: one of the triangles above (a square matrix, of which only entries in that
   triangle are inserted), blas_general; blas_unit_diag (ones stand on the diagonal, where nothing is inserted),
   blas_non_unit_diag; a base; blas_rowmajor, blas_colmajor and the ways to optimise, which are kept and change nothing.
   usgp: 1 or 0 for all of these, for fields and states of the handle; a number for blas_num_rows, blas_num_cols and
   blas_num_nonzeros (until end: entries so far; then: places that have one); -1 for anything else, and for a handle
   that is not valid but of blas_invalid_handle. */
int BLAS_usgp(blas_sparse_matrix A, int pname);
int BLAS_ussp(blas_sparse_matrix A, int pname);
int BLAS_usds(blas_sparse_matrix A);     /* releases the matrix */
int BLAS_uscr_end(blas_sparse_matrix A); /* of any type */

/* The routines of a type; SCALAR, IN and OUT: how a number, an array to read and one to write are passed.

   Vectors with few entries, x[k] at place indx[k] of y; y may have a stride.
     usdot  r := x'*y, with blas_conj conjugate of x       ussc  y at the places := x
     usaxpy y := alpha*x + y                               usga  x := y at the places; usgz: which become 0
   Building: block_begin has Mb by Nb blocks of k by l, variable_block_begin blocks of K[i] by L[j].
     insert_clique  an array of k by l values for rows indx and columns jndx; value (i, j) at i*row_stride +
   j*col_stride insert_block   the same for block i, j Products and solves. order: of the dense matrices. usmv, usmm: y
   := alpha*op(A)*x + y. ussv, ussm, of triangular matrices: x := alpha*inverse(op(T))*x. */
#define BLAS_SPARSE_ROUTINES(t, SCALAR, IN, OUT)                                                                       \
    int BLAS_##t##usdot(enum blas_conj_type conj, int nz, IN x, const int* indx, IN y, int incy, OUT r,                \
                        enum blas_base_type index_base);                                                               \
    int BLAS_##t##usaxpy(int nz, SCALAR alpha, IN x, const int* indx, OUT y, int incy,                                 \
                         enum blas_base_type index_base);                                                              \
    int BLAS_##t##usga(int nz, IN y, int incy, OUT x, const int* indx, enum blas_base_type index_base);                \
    int BLAS_##t##usgz(int nz, OUT y, int incy, OUT x, const int* indx, enum blas_base_type index_base);               \
    int BLAS_##t##ussc(int nz, IN x, OUT y, int incy, const int* indx, enum blas_base_type index_base);                \
    blas_sparse_matrix BLAS_##t##uscr_begin(int m, int n);                                                             \
    blas_sparse_matrix BLAS_##t##uscr_block_begin(int Mb, int Nb, int k, int l);                                       \
    blas_sparse_matrix BLAS_##t##uscr_variable_block_begin(int Mb, int Nb, const int* K, const int* L);                \
    int BLAS_##t##uscr_insert_entry(blas_sparse_matrix A, SCALAR val, int i, int j);                                   \
    int BLAS_##t##uscr_insert_entries(blas_sparse_matrix A, int nz, IN val, const int* indx, const int* jndx);         \
    int BLAS_##t##uscr_insert_col(blas_sparse_matrix A, int j, int nz, IN val, const int* indx);                       \
    int BLAS_##t##uscr_insert_row(blas_sparse_matrix A, int i, int nz, IN val, const int* jndx);                       \
    int BLAS_##t##uscr_insert_clique(blas_sparse_matrix A, int k, int l, IN val, int row_stride, int col_stride,       \
                                     const int* indx, const int* jndx);                                                \
    int BLAS_##t##uscr_insert_block(blas_sparse_matrix A, IN val, int row_stride, int col_stride, int i, int j);       \
    int BLAS_##t##uscr_end(blas_sparse_matrix A);                                                                      \
    int BLAS_##t##usmv(enum blas_trans_type transa, SCALAR alpha, blas_sparse_matrix A, IN x, int incx, OUT y,         \
                       int incy);                                                                                      \
    int BLAS_##t##ussv(enum blas_trans_type transt, SCALAR alpha, blas_sparse_matrix T, OUT x, int incx);              \
    int BLAS_##t##usmm(enum blas_order_type order, enum blas_trans_type transa, int nrhs, SCALAR alpha,                \
                       blas_sparse_matrix A, IN b, int ldb, OUT c, int ldc);                                           \
    int BLAS_##t##ussm(enum blas_order_type order, enum blas_trans_type transt, int nrhs, SCALAR alpha,                \
                       blas_sparse_matrix T, OUT b, int ldb);

BLAS_SPARSE_ROUTINES(s, float, const float*, float*)
BLAS_SPARSE_ROUTINES(d, double, const double*, double*)
BLAS_SPARSE_ROUTINES(c, const void*, const void*, void*)
BLAS_SPARSE_ROUTINES(z, const void*, const void*, void*)
#undef BLAS_SPARSE_ROUTINES

#ifdef __cplusplus
}
#endif

#endif
