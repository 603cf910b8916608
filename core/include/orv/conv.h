/* Convolution and correlation: of one to seven dimensions, by direct sums or through Fourier transforms.

       orv_conv* c;                                       a picture of 480 lines of 640, blurred by 9 by 9 weights:
       int64_t weights[] = {9, 9}, picture[] = {640, 480};
       orv_conv_create(&c, 'd', ORV_CONV_CONVOLUTION, 2, weights, picture);
       orv_conv_set(c, ORV_CONV_SIZE, ORV_CONV_SAME);
       orv_conv_run(c, w, p, blurred);                    as often as one likes, on any arrays
       orv_conv_free(c);

   Formula   Convolution: z[j] = sum over k of x[k] * y[start + j*step - k]. Correlation: z[j] = sum over k of
             x[k] * y[start + j*step + k]. In every dimension; over all k for which both indices lie in their arrays.
             Nothing is conjugated. Either operand may be the longer one. In filters x is the filter, in searches what
             is looked for, and y the signal: ORV_CONV_SAME means y's size.
   Shapes    shape[0] is the dimension whose elements are neighbours in memory unless strides say otherwise (for arrays
             stored by rows: the last index first). Of nx and ny elements in a dimension all results with a product in
             them are nx + ny - 1: from start 0 on for a convolution, from start 1 - nx on for a correlation.
   Arrays    Element (j0, j1, ...) stands at j0*strides[0] + j1*strides[1] + ... from the array's address. A stride
             below 0 runs backwards through memory: the address is then that of the last element in that dimension, and
             element i of n stands at (n - 1 - i)*(-stride). A stride of 0, not of z, repeats one element. Arrays stand
             at any address; what lies between the elements is never touched. x and y are only read and may be the same
             array; z overlaps neither of them.
   Routes    Direct: each output is one chain of products, k ascending with dimension 0 fastest, each product and each
             sum rounded once. (The operand k counts through is x; of convolutions it is the one of fewer elements, x
             if both have as many, and from its last element on.) Transform: every output has an error of some roundings
             of the norm of x times the norm of y, so that outputs much smaller than the largest ones are less exact,
             and NaN or infinity in one place can be NaN in all outputs. Many outputs go through transforms in parts,
             which depend on shapes and types only. An orv_conv keeps the transforms that its first such run made,
             until a setting changes; a call that makes no orv_conv makes them anew.
   Results   Every function returns a status (orv/status.h): 0; -i if argument i is bad, counted from 1; or a positive
             code. Where it is not 0 nothing was changed or written, unless memory runs out while outputs come in
             parts, to threads or to transforms; orv_last_error() has a sentence with the values at fault.
   Threads   orv_conv_run and functions that ask only read an orv_conv, and any number of threads may call them at once.
             Setting and freeing need it alone. Several threads share the outputs of direct sums and the parts of
             transforms. Results are the same bits for any number of threads. */
#ifndef ORV_CONV_H
#define ORV_CONV_H

#include <orv/status.h>
#include <orv/types.h>

typedef struct orv_conv orv_conv; /* a problem: shapes and settings */

enum { ORV_CONV_MAX_RANK = 7 };

enum { ORV_CONV_CONVOLUTION = 1, ORV_CONV_CORRELATION = 2 };

/* What can be set, and read back. The first value named is the default. */
enum {
    /* Which outputs there are, of nx and ny elements in a dimension.
       ORV_CONV_FULL: all nx + ny - 1.
       ORV_CONV_SAME: ny of them, in the middle of all: from number (nx - 1)/2 on, rounded down.
       ORV_CONV_VALID: those for which all of the shorter operand meets the longer one: |nx - ny| + 1. */
    ORV_CONV_SIZE = 1,

    /* ORV_CONV_AUTOMATIC: the faster one by what either costs for these shapes. ORV_CONV_DIRECT, ORV_CONV_TRANSFORM. */
    ORV_CONV_ROUTE,

    /* 0: sums in the precision of the data. 1, for types s and c: products and sums in double, also the transforms, and
       only the results are rounded to single. */
    ORV_CONV_DOUBLE_SUMS,

    /* To be read only. */
    ORV_CONV_JOB,
    ORV_CONV_RANK,
    ORV_CONV_ROUTE_TAKEN /* what orv_conv_run does: ORV_CONV_DIRECT or ORV_CONV_TRANSFORM */
};
enum { ORV_CONV_FULL = 0, ORV_CONV_SAME = 1, ORV_CONV_VALID = 2 };
enum { ORV_CONV_AUTOMATIC = 0, ORV_CONV_DIRECT = 1, ORV_CONV_TRANSFORM = 2 };

/* A problem with default settings and arrays without gaps. type: s float, d double, c and z their complex numbers; in
   either case. *conv is not touched on failure. Bad: 1 null; 2, 3 none of these; 4 below 1 or above ORV_CONV_MAX_RANK;
   5, 6 null, a length below 1, or more elements than kernels count (2^31 - 1 in a dimension of the full result). */
ORV_API orv_status orv_conv_create(orv_conv** conv, char type, int job, int rank, const int64_t* xshape,
                                   const int64_t* yshape);

/* Another one of the same settings. Bad: 1, 2 null. */
ORV_API orv_status orv_conv_copy(orv_conv** copy, const orv_conv* conv);

/* Ends its life; null is allowed. */
ORV_API void orv_conv_free(orv_conv* conv);

/* Bad: 1 null; 2 nothing that can be set, or of orv_conv_get nothing there is; 3 no value of that setting, or null. */
ORV_API orv_status orv_conv_set(orv_conv* conv, int setting, int64_t value);
ORV_API orv_status orv_conv_get(const orv_conv* conv, int setting, int64_t* value);

/* Which outputs, a number for each dimension: where the first one starts in the formula, how many there are, and the
   step between them. Null start: the first of ORV_CONV_SIZE. Null step: 1. Null count: up to the last of ORV_CONV_SIZE
   or, behind a start of one's own, to the last of all. ORV_CONV_SIZE counts again once all three are null.
   Bad: 1 null; 2 outside of 0 to nx + ny - 2 (convolution), of 1 - nx to ny - 1 (correlation); 3 below 1, or the last
   output is outside of that; 4 below 1. */
ORV_API orv_status orv_conv_set_outputs(orv_conv* conv, const int64_t* start, const int64_t* count,
                                        const int64_t* step);

/* The shape of z and where its first element starts in the formula. Pointers to results may be null. Bad: 1 null. */
ORV_API orv_status orv_conv_get_outputs(const orv_conv* conv, int64_t* shape, int64_t* start);

/* Strides of each array, a number for each dimension; null: no gaps. Outputs must not share a place, which is not
   looked at. Bad: 1 null; 2, 3, 4 beyond 32 bits; 4 zero. */
ORV_API orv_status orv_conv_set_strides(orv_conv* conv, const int64_t* x, const int64_t* y, const int64_t* z);

/* x of all later runs: it stays the program's, and its elements may change between runs. Null: x comes with each run
   again. Bad: 1 null. */
ORV_API orv_status orv_conv_set_fixed(orv_conv* conv, const void* x);

/* Computes z. An x that was fixed is taken in place of a null one. ORV_NO_MEMORY if work memory is refused,
   ORV_TRANSFORM_FAILED if a transform is, ORV_UNSUPPORTED if an array without gaps has a stride beyond 32 bits, which
   direct sums do not count. Bad: 1, 3, 4 null; 2 null without a fixed one. */
ORV_API orv_status orv_conv_run(const orv_conv* conv, const void* x, const void* y, void* z);

/* What the calling thread's latest run took: of direct sums the kernel, as orv_branch_symbol() finds it
   ("orv_conv_mc3_dddirect_1d_conv_de"), of transforms how each is done, as orv_dft_method() tells; and by how many
   threads. Null and 0 before the first one. Valid until the thread's next call of this. */
ORV_API const char* orv_conv_kernel(void);
ORV_API int orv_conv_threads(void);

/* ---- In one call ------------------------------------------------------------------------------------------------ */

/* z := x * y of nx and ny elements without gaps, or their correlation; size is ORV_CONV_FULL, ORV_CONV_SAME (ny
   elements) or ORV_CONV_VALID. Bad: 1, 3 below 1 or too long; 2, 4, 6 null; 5 no size. */
ORV_API orv_status orv_convolve_s(int64_t nx, const float* x, int64_t ny, const float* y, int size, float* z);
ORV_API orv_status orv_convolve_d(int64_t nx, const double* x, int64_t ny, const double* y, int size, double* z);
ORV_API orv_status orv_convolve_c(int64_t nx, const orv_complex_float* x, int64_t ny, const orv_complex_float* y,
                                  int size, orv_complex_float* z);
ORV_API orv_status orv_convolve_z(int64_t nx, const orv_complex_double* x, int64_t ny, const orv_complex_double* y,
                                  int size, orv_complex_double* z);
ORV_API orv_status orv_correlate_s(int64_t nx, const float* x, int64_t ny, const float* y, int size, float* z);
ORV_API orv_status orv_correlate_d(int64_t nx, const double* x, int64_t ny, const double* y, int size, double* z);
ORV_API orv_status orv_correlate_c(int64_t nx, const orv_complex_float* x, int64_t ny, const orv_complex_float* y,
                                   int size, orv_complex_float* z);
ORV_API orv_status orv_correlate_z(int64_t nx, const orv_complex_double* x, int64_t ny, const orv_complex_double* y,
                                   int size, orv_complex_double* z);

/* The same of matrices stored by rows: element (i, j) of x stands at x[i*xcols + j], and so for y and z. Stored by
   columns, with rows and columns exchanged in all of them, it is the same problem. Bad: 1, 2, 4, 5 below 1 or too long;
   3, 6, 8 null; 7 no size. */
ORV_API orv_status orv_convolve2_s(int64_t xrows, int64_t xcols, const float* x, int64_t yrows, int64_t ycols,
                                   const float* y, int size, float* z);
ORV_API orv_status orv_convolve2_d(int64_t xrows, int64_t xcols, const double* x, int64_t yrows, int64_t ycols,
                                   const double* y, int size, double* z);
ORV_API orv_status orv_convolve2_c(int64_t xrows, int64_t xcols, const orv_complex_float* x, int64_t yrows,
                                   int64_t ycols, const orv_complex_float* y, int size, orv_complex_float* z);
ORV_API orv_status orv_convolve2_z(int64_t xrows, int64_t xcols, const orv_complex_double* x, int64_t yrows,
                                   int64_t ycols, const orv_complex_double* y, int size, orv_complex_double* z);
ORV_API orv_status orv_correlate2_s(int64_t xrows, int64_t xcols, const float* x, int64_t yrows, int64_t ycols,
                                    const float* y, int size, float* z);
ORV_API orv_status orv_correlate2_d(int64_t xrows, int64_t xcols, const double* x, int64_t yrows, int64_t ycols,
                                    const double* y, int size, double* z);
ORV_API orv_status orv_correlate2_c(int64_t xrows, int64_t xcols, const orv_complex_float* x, int64_t yrows,
                                    int64_t ycols, const orv_complex_float* y, int size, orv_complex_float* z);
ORV_API orv_status orv_correlate2_z(int64_t xrows, int64_t xcols, const orv_complex_double* x, int64_t yrows,
                                    int64_t ycols, const orv_complex_double* y, int size, orv_complex_double* z);

#endif
