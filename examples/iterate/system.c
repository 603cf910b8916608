/* The file's entries, sorted into compressed rows and looked over by orv_sparse_check. */
#include "system.h"

#include "market/market.h"

#include <orv/status.h>
#include <stdlib.h>
#include <string.h>

static void* memory(const struct market* in, long count, size_t size)
{
    void* block = calloc((size_t)count + 1, size);
    if (block == NULL) refuse(in, in->sizes, "no memory for %ld entries", count);
    return block;
}

/* Where entry e stands, and where its mirror image does; the entries of the other triangle of a symmetric matrix are
   those of the one that is stored. */
enum place { as_stored, mirrored };
static int row_of(const struct market* in, long e, enum place place) { return (place ? in->column : in->row)[e]; }
static int column_of(const struct market* in, long e, enum place place) { return (place ? in->row : in->column)[e]; }

/* Whether an entry at this place goes into the matrix: whole, or the lower triangle of it. */
static int counts(const struct market* in, long e, enum place place, int lower)
{
    const int mirrors = in->symmetry != market_general;
    if (place == mirrored && (!mirrors || in->row[e] == in->column[e])) return 0;
    return !lower || row_of(in, e, place) >= column_of(in, e, place);
}

/* Sorted by two passes, each of which keeps the order of the one before: by columns, then by rows. */
static void sort(const struct market* in, int lower, orv_sparse* a)
{
    const long n = in->rows;
    long* count = memory(in, n, sizeof *count);
    long all = 0;
    for (int place = as_stored; place <= mirrored; ++place)
        for (long e = 0; e < in->count; ++e)
            if (counts(in, e, place, lower)) ++count[column_of(in, e, place)], ++all;
    struct item {
        int row, column;
        double value;
    }* items = memory(in, all, sizeof *items);
    for (long j = 0, sum = 0; j < n; ++j) {
        const long entries = count[j];
        count[j] = sum, sum += entries;
    }
    for (int place = as_stored; place <= mirrored; ++place)
        for (long e = 0; e < in->count; ++e)
            if (counts(in, e, place, lower)) {
                const double value = place == mirrored && in->symmetry == market_skew ? -in->value[e] : in->value[e];
                items[count[column_of(in, e, place)]++] =
                    (struct item){row_of(in, e, place), column_of(in, e, place), value};
            }
    int64_t* begin = memory(in, n, sizeof *begin);
    int64_t* column = memory(in, all, sizeof *column);
    double* value = memory(in, all, sizeof *value);
    for (long k = 0; k < all; ++k) ++begin[items[k].row + 1];
    for (long i = 0; i < n; ++i) begin[i + 1] += begin[i], count[i] = begin[i];
    for (long k = 0; k < all; ++k) {
        const long at = count[items[k].row]++;
        column[at] = items[k].column, value[at] = items[k].value;
    }
    free(items), free(count);
    *a = (orv_sparse){.format = ORV_SPARSE_CSR,
                      .type = 'd',
                      .bits = 64,
                      .rows = n,
                      .cols = n,
                      .values = value,
                      .begin = begin,
                      .col = column};
    if (lower) a->kind = 'S', a->uplo = 'L';
}

void read_system(const char* path, struct system* system)
{
    struct market in;
    open_market(&in, "iterate", path);
    if (in.rows != in.columns)
        refuse(&in, in.sizes, "the matrix has %ld rows and %ld columns: only a square one can be solved", in.rows,
               in.columns);
    read_market(&in);
    *system = (struct system){.n = (int)in.rows, .symmetric = in.symmetry == market_symmetric};
    memcpy(system->about, in.about, sizeof system->about);
    sort(&in, 0, &system->full);
    if (orv_sparse_check(&system->full) != ORV_OK) refuse(&in, in.sizes, "%s", orv_last_error());
    if (system->symmetric) sort(&in, 1, &system->half);

    const int64_t *begin = system->full.begin, *column = system->full.col;
    const double* value = system->full.values;
    system->diagonal = memory(&in, in.rows, sizeof *system->diagonal);
    for (int i = 0; i < system->n; ++i)
        for (int64_t e = begin[i]; e < begin[i + 1]; ++e) {
            system->nonzeros += value[e] != 0;
            if (column[e] == i) system->diagonal[i] = value[e];
        }
    free_market(&in);
}
