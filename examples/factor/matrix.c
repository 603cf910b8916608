/* A file's entries as a full matrix, since that is what LAPACK's dgetrf and dpotrf factor. */
#include "matrix.h"

#include "market/market.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* A matrix that can be solved with, and has room. */
static void refuse_sizes(const struct market* in)
{
    if (in->rows != in->columns)
        refuse(in, in->sizes, "the matrix has %ld rows and %ld columns: only a square one can be solved", in->rows,
               in->columns);

    /* The matrix and its factors, full, in half of the memory. */
    const double needed = 2 * 8.0 * (double)in->rows * (double)in->rows;
    const double there = (double)sysconf(_SC_PHYS_PAGES) * (double)sysconf(_SC_PAGESIZE);
    if (needed > there / 2)
        refuse(in, in->sizes, "%ld rows are too many: full matrices of them need %.1f GiB, and this machine has %.1f",
               in->rows, needed / (1 << 30), there / (1 << 30));
}

/* Stores each entry and its mirror image. NaN stands where nothing was stored yet. */
static void store(const struct market* in, struct matrix* matrix)
{
    const long n = matrix->n;
    for (long e = 0; e < in->count; ++e) {
        const long i = in->row[e], j = in->column[e];
        if (!isnan(matrix->a[i + j * n]))
            refuse(in, in->at_line[e], "row %ld of column %ld for the second time", i + 1, j + 1);
        matrix->a[i + j * n] = in->value[e];
        if (i != j && in->symmetry != market_general)
            matrix->a[j + i * n] = in->symmetry == market_skew ? -in->value[e] : in->value[e];
    }
}

/* Gives what was not stored its value, and looks what the matrix is like. */
static void complete(struct matrix* matrix)
{
    const long n = matrix->n;
    for (long k = 0; k < n * n; ++k) {
        if (isnan(matrix->a[k])) matrix->a[k] = 0;
        matrix->nonzeros += matrix->a[k] != 0;
    }
    matrix->symmetric = 1;
    for (long j = 0; j < n; ++j)
        for (long i = 0; i < j; ++i) matrix->symmetric &= matrix->a[i + j * n] == matrix->a[j + i * n];
}

void read_matrix(const char* path, struct matrix* matrix)
{
    struct market in;
    open_market(&in, "factor", path);
    refuse_sizes(&in);
    *matrix = (struct matrix){.n = (int)in.rows};
    memcpy(matrix->about, in.about, sizeof matrix->about);
    read_market(&in);

    const long elements = in.rows * in.rows;
    matrix->a = malloc((size_t)elements * sizeof *matrix->a);
    if (matrix->a == NULL) refuse(&in, in.sizes, "no memory for %ld numbers", elements);
    for (long k = 0; k < elements; ++k) matrix->a[k] = NAN;
    store(&in, matrix);
    complete(matrix);
    free_market(&in);
}
