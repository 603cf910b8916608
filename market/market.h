/* Real matrices from files in Matrix Market form. */
#ifndef MARKET_H
#define MARKET_H

#include <stddef.h>
#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

enum market_symmetry { market_general, market_symmetric, market_skew };

struct market {
    long rows, columns, sizes; /* sizes: the line that has them */
    enum market_symmetry symmetry;
    char about[900]; /* the comments at the head of the file */

    /* The entries in the order of the file, from 0: of a symmetric or skew matrix those of one triangle, as the file
       has them. at_line: where they stand. */
    long count;
    int *row, *column;
    double* value;
    long* at_line;

    /* The reader's own. */
    const char *program, *path;
    FILE* file;
    char* line;
    size_t room;
    long number, announced, places;
    int array, pattern;
};

/* Reads the head of a file: all but the entries. Each of these says what is wrong with the file, in which line, and
   ends the program if anything is. */
void open_market(struct market* market, const char* program, const char* path);

/* Reads the entries, and closes the file. */
void read_market(struct market* market);

/* Says what is wrong with a line, and ends the program. */
void refuse(const struct market* market, long line, const char* format, ...);

void free_market(struct market* market);

#ifdef __cplusplus
}
#endif

#endif
