/* Sparse matrices: products and solves, conversions, sums, and products with each other, with matrices that stay where
   the program has them.

   A matrix is a record that points to the program's own arrays: nothing is copied, nothing is to be freed, and the
   arrays must stay as long as calls use them. No call writes an operand's record or its arrays, so any number of
   threads can use one matrix at once. A field that is 0 has its usual meaning, so

       orv_sparse a = {.format = ORV_SPARSE_CSR, .type = 'd', .bits = 32, .rows = n, .cols = n,
                       .begin = row_pointers, .col = columns, .values = values};
       orv_sparse_dmv('N', 1, &a, x, 0, y);

   multiplies by a general matrix whose indices count from 0.

   format   arrays
   CSR      compressed rows. Row i has the entries from begin[i] to end[i] - 1, both less begin[0], with the columns
            col[] and the values values[]. end may be null where rows follow each other: it is then begin + 1. Rows may
            lie in any order and have gaps between them.
   CSC      compressed columns: the same with rows row[] in the place of col[].
   COO      coordinates: `count` entries, the rows row[], the columns col[], in any order. Duplicates add up.
   DIA      `count` diagonals in ascending order of their distances col[] from the main one, those above it positive;
            the element of row i of diagonal d is values[i + d*ld], ld at least rows. What lies outside the matrix is
            not read.
   BSR      compressed rows of dense blocks, `block` by `block`, one after the other in values: begin, end and col are
            those of a CSR matrix whose entries are blocks. rows and cols are counted in elements. A block is stored by
            rows if indices count from 0, by columns if they count from 1.
   SKY      skyline: row i of a lower triangle, or column i of an upper one, from its first element that is not zero to
            the diagonal: values[begin[i] - begin[0]] to values[begin[i + 1] - begin[0] - 1], with rows + 1 numbers in
            begin.

   kind     what the entries mean
   G (0)    they are the matrix
   S H A    a triangle of a symmetric, Hermitian or anti-symmetric matrix; uplo says which one, others are skipped. A
            real Hermitian matrix is a symmetric one; the diagonal of a complex one is used as stored, and should be
            real. An entry on the diagonal of A is not used.
   T        a triangular matrix: the triangle uplo, others are skipped
   D        a diagonal matrix: entries beside the diagonal are skipped
   Of all but G rows and cols are equal. With diag U ones stand on the diagonal in place of what is stored there (S H T
   D). CSR, CSC and BSR matrices of these kinds have the entries of a row (CSC: of a column) sorted; for G any order
   will do. A product with a triangle T in CSR or CSC may add the skipped entries and take them off again, so there NaN
   among them stays.

   What there is of all this: everything in CSR, CSC and COO. DIA: everything. BSR: no H; no conjugate transpose of a
   complex S. SKY: S, A and T, stored and used as uplo says; no conjugate transpose of a complex one.

   Functions. trans: N A, T its transpose, C its conjugate transpose; either case. Vectors are contiguous. A dense
   matrix of n columns is stored by its order: R row-major, element (i, j) at x[i*ldx + j], C column-major, at x[i +
   j*ldx]; elements between the end of one line and the start of the next are not touched. x and y do not overlap, but
   in solves y may be x itself (ldy the same).

   Every result is a status: 0; -i if argument i is bad (counted from 1; orv_last_error() says what of it, of a matrix
   which field); a positive code. Where it is not 0 nothing was written. Only the record is looked at, and in solves the
   diagonal: wrong indices are for orv_sparse_check to find, before they are used.

   Threads (orv/threads.h). Products with N of CSR (general and triangular), DIA and BSR (general), with T or C of CSC
   in place of N, products with dense matrices, and solves give the same bits for any number of threads. Other products
   with a vector add up the parts of the threads in their order: the same bits for the same number of threads.

   Work memory (orv/memory.h): products with a vector of that other sort take a vector a thread, and go on with one
   thread if it is refused. Dense matrices go as they are where CSR, CSC, COO and BSR indices count from 0 and order is
   R, where they count from 1 and order is C, and with C for DIA and SKY; else they are turned, 48 columns at a time, in
   work memory of as many columns. */
#ifndef ORV_SPARSE_H
#define ORV_SPARSE_H

#include <orv/status.h>
#include <orv/types.h>

enum {
    ORV_SPARSE_CSR = 1,
    ORV_SPARSE_CSC = 2,
    ORV_SPARSE_COO = 3,
    ORV_SPARSE_DIA = 4,
    ORV_SPARSE_BSR = 5,
    ORV_SPARSE_SKY = 6
};

typedef struct orv_sparse {
    int format;         /* ORV_SPARSE_... */
    char type;          /* of values: s float, d double, c and z their complex numbers */
    char kind;          /* G or 0, S, H, A, T, D */
    char uplo;          /* U, L; of kinds S H A T */
    char diag;          /* N or 0: as stored; U: ones; of kinds S H T D */
    int bits;           /* of each index and pointer: 32 or 64 */
    int base;           /* what row[] and col[] count from: 0 or 1 (not DIA, SKY) */
    int64_t rows, cols; /* of the matrix */
    int64_t count;      /* COO: entries; DIA: diagonals; in results of all formats, see below */
    int64_t block;      /* BSR: order of a block */
    int64_t ld;         /* DIA: from a diagonal to the next in values */
    const void* values;
    const void *begin, *end; /* CSR, CSC, BSR, SKY */
    const void *row, *col;   /* CSR, BSR, DIA: col; CSC: row; COO: both */
    void* memory;            /* null but in results that have memory of their own: for orv_sparse_free */
    int has_diagonal;        /* 1: every row has its diagonal stored, so solves need not look (see below) */
} orv_sparse;

/* y := alpha*op(A)*x + beta*y. beta = 0 does not read y, alpha = 0 neither A nor x. */
ORV_API orv_status orv_sparse_smv(char trans, float alpha, const orv_sparse* a, const float* x, float beta, float* y);
ORV_API orv_status orv_sparse_dmv(char trans, double alpha, const orv_sparse* a, const double* x, double beta,
                                  double* y);
ORV_API orv_status orv_sparse_cmv(char trans, orv_complex_float alpha, const orv_sparse* a, const orv_complex_float* x,
                                  orv_complex_float beta, orv_complex_float* y);
ORV_API orv_status orv_sparse_zmv(char trans, orv_complex_double alpha, const orv_sparse* a,
                                  const orv_complex_double* x, orv_complex_double beta, orv_complex_double* y);

/* Y := alpha*op(A)*X + beta*Y, X and Y dense with n columns. */
ORV_API orv_status orv_sparse_smm(char order, char trans, float alpha, const orv_sparse* a, int64_t n, const float* x,
                                  int64_t ldx, float beta, float* y, int64_t ldy);
ORV_API orv_status orv_sparse_dmm(char order, char trans, double alpha, const orv_sparse* a, int64_t n, const double* x,
                                  int64_t ldx, double beta, double* y, int64_t ldy);
ORV_API orv_status orv_sparse_cmm(char order, char trans, orv_complex_float alpha, const orv_sparse* a, int64_t n,
                                  const orv_complex_float* x, int64_t ldx, orv_complex_float beta, orv_complex_float* y,
                                  int64_t ldy);
ORV_API orv_status orv_sparse_zmm(char order, char trans, orv_complex_double alpha, const orv_sparse* a, int64_t n,
                                  const orv_complex_double* x, int64_t ldx, orv_complex_double beta,
                                  orv_complex_double* y, int64_t ldy);

/* y := alpha*inverse(op(A))*x, A of kind T or D. ORV_NO_DIAGONAL if the diagonal is stored and a row has none of it; a
   zero on it divides. The diagonal of a BSR matrix is that of its blocks, each of them used whole: they are inverted in
   a copy of the values for each call. */
ORV_API orv_status orv_sparse_ssv(char trans, float alpha, const orv_sparse* a, const float* x, float* y);
ORV_API orv_status orv_sparse_dsv(char trans, double alpha, const orv_sparse* a, const double* x, double* y);
ORV_API orv_status orv_sparse_csv(char trans, orv_complex_float alpha, const orv_sparse* a, const orv_complex_float* x,
                                  orv_complex_float* y);
ORV_API orv_status orv_sparse_zsv(char trans, orv_complex_double alpha, const orv_sparse* a,
                                  const orv_complex_double* x, orv_complex_double* y);

/* Whether each row has its diagonal is looked at before anything is written, in every solve: that is a second way
   through the indices, some 10 to 20 % of the time. A program that solves again and again sets has_diagonal once a
   solve or orv_sparse_check has found nothing wrong. It then has to clear it before the next solve whenever begin, end,
   row, col, count, uplo or base change, or what they point to; new values in the same places change nothing. Of a row
   without its diagonal solves then take another entry, of a row at either end perhaps one outside of the arrays. Of DIA
   one look at the distances is all, and always done. Results come with 0. */

/* The same for the n columns of a dense matrix. */
ORV_API orv_status orv_sparse_ssm(char order, char trans, float alpha, const orv_sparse* a, int64_t n, const float* x,
                                  int64_t ldx, float* y, int64_t ldy);
ORV_API orv_status orv_sparse_dsm(char order, char trans, double alpha, const orv_sparse* a, int64_t n, const double* x,
                                  int64_t ldx, double* y, int64_t ldy);
ORV_API orv_status orv_sparse_csm(char order, char trans, orv_complex_float alpha, const orv_sparse* a, int64_t n,
                                  const orv_complex_float* x, int64_t ldx, orv_complex_float* y, int64_t ldy);
ORV_API orv_status orv_sparse_zsm(char order, char trans, orv_complex_double alpha, const orv_sparse* a, int64_t n,
                                  const orv_complex_double* x, int64_t ldx, orv_complex_double* y, int64_t ldy);

/* Looks a matrix over: first its record (-1), then all entries. ORV_OK, or the first of these that holds of any entry;
   orv_last_error() says in a sentence which row and entry it is. Rows, columns and entries are numbered from the
   matrix' base there.

     ORV_BAD_INDEX
         an index or a pointer leads outside: no product may be tried
     ORV_NOT_SORTED
         the entries of a row (column, diagonals of DIA) do not ascend: products and solves with kinds other than G,
         and with DIA, are wrong
     ORV_DUPLICATE
         two entries stand in the same place: they add up, but for the diagonal of a solve, where one counts
     ORV_NO_DIAGONAL
         kinds T and D without diag U: an element of the diagonal is not stored: no solve
     ORV_ZERO_DIAGONAL
         it is stored and zero, of BSR a whole block of zeros: solves divide by zero

   Takes work memory for COO and for rows that are not sorted; ORV_NO_MEMORY if it is refused. */
ORV_API orv_status orv_sparse_check(const orv_sparse* a);

/* Results. The calls below make a matrix, and put it in a record in which the caller says how he wants it: format,
   bits, base, kind with uplo and diag, block for BSR; the type is that of the operands, rows and cols follow from them.
   Where the record has no arrays, memory is taken, and orv_sparse_free gives it back:

       orv_sparse b = {.format = ORV_SPARSE_CSC, .bits = 32};
       if (orv_sparse_convert('N', &a, &b) != ORV_OK) puts(orv_last_error());
       ...
       orv_sparse_free(&b);

   Or the arrays are the caller's, and `count` says for how much they have room; afterwards it says how much there is:

   format     count     elements of the arrays
   CSR, CSC   entries   begin: rows + 1, columns + 1; the others: count
   COO        entries   count
   DIA        diagonals   col: count; values: count*ld
   BSR        blocks    begin: rows/block + 1; col: count; values: count*block*block
   SKY        elements  begin: rows + 1; values: count

   The calls whose name ends in _sizes tell all of that before there is an array: they set type, rows, cols, count, and
   ld for DIA if it is 0. If arrays are too small for the result, or bits for its indices, the answer is ORV_NO_ROOM; if
   memory is refused, ORV_NO_MEMORY. Then, as after each answer that is not 0, record and arrays are as they were, but
   where a caller's own values had begun to be written when a kernel turned out to be missing. Arrays of a result may
   not overlap those of an operand (-i), and not each other. A record that holds a result can take another one, into the
   same arrays.

   Operands may be of any format, kind, base and width, with entries in any order and more than one in a place; they
   mean what they mean in products. Sums and products are of kind G unless another one is asked for. Of a kind that is
   asked for, what counts in it is there: of S, H, A and T one triangle, of D the diagonal, no ones of diag U. Nobody
   looks whether the matrix is symmetric. A kind with fewer elements than the matrix has is so a way to a part of it. In
   BSR, A and diag U count by whole blocks, and are made from such blocks only.

   Entries with the value zero stay in CSR, CSC and COO. What fills up DIA, BSR and SKY cannot be told from them, so
   there zeros are no entries, on the diagonal neither. Entries of one place stay several in CSR, CSC and COO, and add
   up elsewhere. Lines are sorted, but in products. Work memory is some three times what the result takes, less where an
   operand is of kind G, in CSR or CSC without `end`, and of the result's width and base. */

/* B := op(A): another format, another width or base, another kind, the transpose ('T', or 'C' with conjugates). */
ORV_API orv_status orv_sparse_convert(char trans, const orv_sparse* a, orv_sparse* b);
ORV_API orv_status orv_sparse_convert_sizes(char trans, const orv_sparse* a, orv_sparse* b);

/* C := alpha*op(A) + B. C has an entry wherever A or B has one, whatever comes out, and whatever alpha is. Large sums
   are shared among threads, with the same bits for any number of them. A CSR result is the quickest. */
ORV_API orv_status orv_sparse_sadd(char trans, float alpha, const orv_sparse* a, const orv_sparse* b, orv_sparse* c);
ORV_API orv_status orv_sparse_dadd(char trans, double alpha, const orv_sparse* a, const orv_sparse* b, orv_sparse* c);
ORV_API orv_status orv_sparse_cadd(char trans, orv_complex_float alpha, const orv_sparse* a, const orv_sparse* b,
                                   orv_sparse* c);
ORV_API orv_status orv_sparse_zadd(char trans, orv_complex_double alpha, const orv_sparse* a, const orv_sparse* b,
                                   orv_sparse* c);
ORV_API orv_status orv_sparse_add_sizes(char trans, const orv_sparse* a, const orv_sparse* b, orv_sparse* c);

/* C := op(A)*op(B). C has an entry wherever a product of two entries goes, whatever comes out. In CSR of kind G, the
   entries of a row stand in the order in which the rows of A and B bring them; orv_sparse_convert gives a sorted copy.
   Large products are shared among threads, with the same bits for any number of them.

   In two steps, for CSR of kind G: orv_sparse_multiply_sizes counts, and if c->begin is not null, it receives the
   pointers, from base on; orv_sparse_multiply_values computes col and values by these pointers (c->count: their room),
   also again when A and B have got other values in the same places. It believes that the pointers are those of this
   product. */
ORV_API orv_status orv_sparse_multiply(char transa, const orv_sparse* a, char transb, const orv_sparse* b,
                                       orv_sparse* c);
ORV_API orv_status orv_sparse_multiply_sizes(char transa, const orv_sparse* a, char transb, const orv_sparse* b,
                                             orv_sparse* c);
ORV_API orv_status orv_sparse_multiply_values(char transa, const orv_sparse* a, char transb, const orv_sparse* b,
                                              orv_sparse* c);

/* The same product as a dense matrix of the operands' type, stored by `order` as above. Shared among threads, with the
   same bits for any number of them. */
ORV_API orv_status orv_sparse_multiply_dense(char order, char transa, const orv_sparse* a, char transb,
                                             const orv_sparse* b, void* c, int64_t ldc);

/* Gives back the memory of a result, and leaves a matrix without entries and arrays in its record. Records that have
   none of their own are left alone. */
ORV_API void orv_sparse_free(orv_sparse* a);

/* The kernel that the calling thread's latest product, solve or sum ran, as orv_branch_symbol() finds it
   ("orv_spblas_mc3_dcsr0ng__c__mvout_par"), and by how many threads. Null and 0 before the first one; a call that had
   nothing to do for a kernel leaves both. Valid until the thread's next call of this. */
ORV_API const char* orv_sparse_kernel(void);
ORV_API int orv_sparse_threads(void);

#endif
