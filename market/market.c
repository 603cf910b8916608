/* Reading the Matrix Market form: a banner, comments, a line of sizes, then a line an element. */
#define _GNU_SOURCE
#include "market/market.h"

#include <ctype.h>
#include <errno.h>
#include <math.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

void refuse(const struct market* in, long line, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    fprintf(stderr, "%s: %s:%ld: ", in->program, in->path, line);
    vfprintf(stderr, format, values);
    fputc('\n', stderr);
    va_end(values);
    exit(1);
}

/* Where the file is read now. */
#define here(...) refuse(in, in->number, __VA_ARGS__)

/* Moves to the next line; 0 at the end of the file. */
static int next(struct market* in)
{
    ++in->number;
    if (getline(&in->line, &in->room, in->file) >= 0) return 1;
    if (ferror(in->file)) here("%s", strerror(errno));
    return 0;
}

static const char* skip_blanks(const char* text)
{
    while (isspace((unsigned char)*text)) ++text;
    return text;
}

/* Moves to the next line that is not empty. */
static int next_filled(struct market* in)
{
    while (next(in))
        if (*skip_blanks(in->line)) return 1;
    return 0;
}

/* Each of these takes a number from the text and moves past it, or refuses the line. */
static long take_integer(const struct market* in, const char** text, const char* what, long low, long high)
{
    char* end;
    errno = 0;
    const long value = strtol(*text, &end, 10);
    if (end == *text || (*end != 0 && !isspace((unsigned char)*end))) here("no whole number for the %s", what);
    if (errno != 0 || value < low || value > high) here("the %s is not from %ld to %ld", what, low, high);
    *text = end;
    return value;
}

static double take_real(const struct market* in, const char** text)
{
    char* end;
    const double value = strtod(*text, &end);
    if (end == *text || (*end != 0 && !isspace((unsigned char)*end))) here("no number for the value");
    if (!isfinite(value)) here("the value is not a finite number");
    *text = end;
    return value;
}

static void end_of_line(const struct market* in, const char* text)
{
    if (*skip_blanks(text)) here("more on the line than belongs there: %.20s", skip_blanks(text));
}

/* The first line: what the lines to come look like. */
static void read_banner(struct market* in)
{
    char form[20], field[20], shape[20];
    if (!next(in) || strncmp(in->line, "%%MatrixMarket", 14) != 0)
        here("this is no Matrix Market file: it should begin with %%%%MatrixMarket");
    if (sscanf(in->line + 14, " matrix %19s %19s %19s", form, field, shape) != 3)
        here("expected: %%%%MatrixMarket matrix FORM FIELD SYMMETRY");
    in->array = strcasecmp(form, "array") == 0;
    if (!in->array && strcasecmp(form, "coordinate") != 0) here("the form %s is not coordinate or array", form);
    in->pattern = strcasecmp(field, "pattern") == 0;
    if (strcasecmp(field, "complex") == 0) here("complex matrices are not for this program, only real ones");
    if (!in->pattern && strcasecmp(field, "real") != 0 && strcasecmp(field, "integer") != 0)
        here("the field %s is not real, integer or pattern", field);
    if (in->array && in->pattern) here("an array cannot be a pattern");
    if (strcasecmp(shape, "general") == 0) in->symmetry = market_general;
    else if (strcasecmp(shape, "symmetric") == 0) in->symmetry = market_symmetric;
    else if (strcasecmp(shape, "skew-symmetric") == 0) in->symmetry = market_skew;
    else here("the symmetry %s is not general, symmetric or skew-symmetric", shape);
}

/* Comments, then the sizes. */
static void read_sizes(struct market* in)
{
    for (;;) {
        if (!next_filled(in)) here("the file ends before the line of sizes");
        if (in->line[0] != '%') break;
        const size_t used = strlen(in->about);
        snprintf(in->about + used, sizeof in->about - used, "%s", skip_blanks(in->line + 1));
    }
    const char* text = in->line;
    in->sizes = in->number;
    in->rows = take_integer(in, &text, "number of rows", 1, 1L << 30);
    in->columns = take_integer(in, &text, "number of columns", 1, 1L << 30);
    in->announced = in->array ? 0 : take_integer(in, &text, "number of entries", 0, 1L << 60);
    end_of_line(in, text);
}

void open_market(struct market* in, const char* program, const char* path)
{
    *in = (struct market){.program = program, .path = path, .file = fopen(path, "r")};
    if (in->file == NULL) {
        fprintf(stderr, "%s: %s: %s\n", program, path, strerror(errno));
        exit(1);
    }
    read_banner(in);
    read_sizes(in);
}

static void* grown(const struct market* in, void* block, long count, size_t size)
{
    block = realloc(block, (size_t)count * size);
    if (block == NULL) here("no memory for %ld entries", count);
    return block;
}

static void append(struct market* in, long row, long column, double value)
{
    if (in->symmetry == market_skew && row == column && value != 0)
        here("a skew-symmetric matrix has zeros on its diagonal");
    if (in->count == in->places) {
        in->places = in->places * 3 / 2 + 1000;
        in->row = grown(in, in->row, in->places, sizeof *in->row);
        in->column = grown(in, in->column, in->places, sizeof *in->column);
        in->at_line = grown(in, in->at_line, in->places, sizeof *in->at_line);
        in->value = grown(in, in->value, in->places, sizeof *in->value);
    }
    in->row[in->count] = (int)row, in->column[in->count] = (int)column;
    in->value[in->count] = value, in->at_line[in->count++] = in->number;
}

static void read_coordinates(struct market* in)
{
    for (long e = 0; e < in->announced; ++e) {
        if (!next_filled(in)) here("the file ends after %ld of %ld entries", e, in->announced);
        const char* text = in->line;
        const long i = take_integer(in, &text, "row", 1, in->rows) - 1;
        const long j = take_integer(in, &text, "column", 1, in->columns) - 1;
        const double value = in->pattern ? 1 : take_real(in, &text);
        end_of_line(in, text);
        append(in, i, j, value);
    }
}

/* Column after column; of a symmetric matrix from the diagonal down, of a skew one from below it. */
static void read_array(struct market* in)
{
    for (long j = 0; j < in->columns; ++j)
        for (long i = in->symmetry == market_general     ? 0
                      : in->symmetry == market_symmetric ? j
                                                         : j + 1;
             i < in->rows; ++i) {
            if (!next_filled(in)) here("the file ends before row %ld of column %ld", i + 1, j + 1);
            const char* text = in->line;
            const double value = take_real(in, &text);
            end_of_line(in, text);
            if (value != 0) append(in, i, j, value);
        }
}

void read_market(struct market* in)
{
    if (in->array) read_array(in);
    else read_coordinates(in);
    if (next_filled(in)) here("more lines than the sizes tell");
    free(in->line);
    fclose(in->file);
}

void free_market(struct market* in) { free(in->row), free(in->column), free(in->at_line), free(in->value); }
