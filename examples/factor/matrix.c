/* Reading the Matrix Market form: a banner, comments, a line of sizes, then a line an element. Whatever form the file
   has, the result is a full matrix, since that is what LAPACK's dgetrf and dpotrf factor. */
#define _GNU_SOURCE
#include "matrix.h"

#include <ctype.h>
#include <errno.h>
#include <math.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

enum symmetry { general, symmetric, skew };

struct reader {
    const char* path;
    FILE* file;
    char* line;
    size_t room;
    long number; /* of the line, from 1 */
};

static void refuse(const struct reader* in, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    fprintf(stderr, "factor: %s:%ld: ", in->path, in->number);
    vfprintf(stderr, format, values);
    fputc('\n', stderr);
    va_end(values);
    exit(1);
}

/* Moves to the next line; 0 at the end of the file. */
static int next(struct reader* in)
{
    ++in->number;
    if (getline(&in->line, &in->room, in->file) >= 0) return 1;
    if (ferror(in->file)) refuse(in, "%s", strerror(errno));
    return 0;
}

static const char* skip_blanks(const char* text)
{
    while (isspace((unsigned char)*text)) ++text;
    return text;
}

/* Moves to the next line that is not empty. */
static int next_filled(struct reader* in)
{
    while (next(in))
        if (*skip_blanks(in->line)) return 1;
    return 0;
}

/* Each of these takes a number from the text and moves past it, or refuses the line. */
static long take_integer(const struct reader* in, const char** text, const char* what, long low, long high)
{
    char* end;
    errno = 0;
    const long value = strtol(*text, &end, 10);
    if (end == *text || (*end != 0 && !isspace((unsigned char)*end))) refuse(in, "no whole number for the %s", what);
    if (errno != 0 || value < low || value > high) refuse(in, "the %s is not from %ld to %ld", what, low, high);
    *text = end;
    return value;
}

static double take_real(const struct reader* in, const char** text)
{
    char* end;
    const double value = strtod(*text, &end);
    if (end == *text || (*end != 0 && !isspace((unsigned char)*end))) refuse(in, "no number for the value");
    if (!isfinite(value)) refuse(in, "the value is not a finite number");
    *text = end;
    return value;
}

static void end_of_line(const struct reader* in, const char* text)
{
    if (*skip_blanks(text)) refuse(in, "more on the line than belongs there: %.20s", skip_blanks(text));
}

/* The first line: what the lines to come look like. */
static void read_banner(struct reader* in, int* array, int* pattern, enum symmetry* kind)
{
    char form[20], field[20], shape[20];
    if (!next(in) || strncmp(in->line, "%%MatrixMarket", 14) != 0)
        refuse(in, "this is no Matrix Market file: it should begin with %%%%MatrixMarket");
    if (sscanf(in->line + 14, " matrix %19s %19s %19s", form, field, shape) != 3)
        refuse(in, "expected: %%%%MatrixMarket matrix FORM FIELD SYMMETRY");
    *array = strcasecmp(form, "array") == 0;
    if (!*array && strcasecmp(form, "coordinate") != 0) refuse(in, "the form %s is not coordinate or array", form);
    *pattern = strcasecmp(field, "pattern") == 0;
    if (strcasecmp(field, "complex") == 0) refuse(in, "complex matrices are not for this program, only real ones");
    if (!*pattern && strcasecmp(field, "real") != 0 && strcasecmp(field, "integer") != 0)
        refuse(in, "the field %s is not real, integer or pattern", field);
    if (*array && *pattern) refuse(in, "an array cannot be a pattern");
    if (strcasecmp(shape, "general") == 0) *kind = general;
    else if (strcasecmp(shape, "symmetric") == 0) *kind = symmetric;
    else if (strcasecmp(shape, "skew-symmetric") == 0) *kind = skew;
    else refuse(in, "the symmetry %s is not general, symmetric or skew-symmetric", shape);
}

/* Comments, then the sizes. */
static long read_sizes(struct reader* in, int array, struct matrix* matrix)
{
    for (;;) {
        if (!next_filled(in)) refuse(in, "the file ends before the line of sizes");
        if (in->line[0] != '%') break;
        const size_t used = strlen(matrix->about);
        snprintf(matrix->about + used, sizeof matrix->about - used, "%s", skip_blanks(in->line + 1));
    }
    const char* text = in->line;
    const long rows = take_integer(in, &text, "number of rows", 1, 1L << 30);
    const long columns = take_integer(in, &text, "number of columns", 1, 1L << 30);
    const long entries = array ? 0 : take_integer(in, &text, "number of entries", 0, 1L << 60);
    end_of_line(in, text);
    if (rows != columns)
        refuse(in, "the matrix has %ld rows and %ld columns: only a square one can be solved", rows, columns);

    /* The matrix and its factors, full, in half of the memory. */
    const double needed = 2 * 8.0 * (double)rows * (double)rows;
    const double there = (double)sysconf(_SC_PHYS_PAGES) * (double)sysconf(_SC_PAGESIZE);
    if (needed > there / 2)
        refuse(in, "%ld rows are too many: full matrices of them need %.1f GiB, and this machine has %.1f", rows,
               needed / (1 << 30), there / (1 << 30));
    matrix->n = (int)rows;
    return entries;
}

/* Stores an element and its mirror image. NaN stands where nothing was stored yet. */
static void store(const struct reader* in, struct matrix* matrix, enum symmetry kind, long i, long j, double value)
{
    double* const here = &matrix->a[i + j * matrix->n];
    double* const mirror = &matrix->a[j + i * matrix->n];
    if (kind == skew && i == j && value != 0) refuse(in, "a skew-symmetric matrix has zeros on its diagonal");
    if (!isnan(*here)) refuse(in, "row %ld of column %ld for the second time", i + 1, j + 1);
    *here = value;
    if (i != j && kind != general) *mirror = kind == skew ? -value : value;
}

static void read_coordinates(struct reader* in, struct matrix* matrix, enum symmetry kind, int pattern, long entries)
{
    for (long e = 0; e < entries; ++e) {
        if (!next_filled(in)) refuse(in, "the file ends after %ld of %ld entries", e, entries);
        const char* text = in->line;
        const long i = take_integer(in, &text, "row", 1, matrix->n) - 1;
        const long j = take_integer(in, &text, "column", 1, matrix->n) - 1;
        const double value = pattern ? 1 : take_real(in, &text);
        end_of_line(in, text);
        store(in, matrix, kind, i, j, value);
    }
}

/* Column after column; of a symmetric matrix from the diagonal down, of a skew one from below it. */
static void read_array(struct reader* in, struct matrix* matrix, enum symmetry kind)
{
    for (long j = 0; j < matrix->n; ++j)
        for (long i = kind == general ? 0 : kind == symmetric ? j : j + 1; i < matrix->n; ++i) {
            if (!next_filled(in)) refuse(in, "the file ends before row %ld of column %ld", i + 1, j + 1);
            const char* text = in->line;
            const double value = take_real(in, &text);
            end_of_line(in, text);
            store(in, matrix, kind, i, j, value);
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
    struct reader in = {.path = path, .file = fopen(path, "r")};
    int array, pattern;
    enum symmetry kind;
    if (in.file == NULL) {
        fprintf(stderr, "factor: %s: %s\n", path, strerror(errno));
        exit(1);
    }
    *matrix = (struct matrix){0};
    read_banner(&in, &array, &pattern, &kind);
    const long entries = read_sizes(&in, array, matrix);

    const long elements = (long)matrix->n * matrix->n;
    matrix->a = malloc((size_t)elements * sizeof *matrix->a);
    if (matrix->a == NULL) refuse(&in, "no memory for %ld numbers", elements);
    for (long k = 0; k < elements; ++k) matrix->a[k] = NAN;
    if (array) read_array(&in, matrix, kind);
    else read_coordinates(&in, matrix, kind, pattern, entries);
    if (next_filled(&in)) refuse(&in, "more lines than the sizes tell");
    complete(matrix);
    free(in.line);
    fclose(in.file);
}
