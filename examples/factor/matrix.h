/* A square matrix from a file in Matrix Market form. */
#ifndef MATRIX_H
#define MATRIX_H

struct matrix {
    int n;
    double* a;       /* n by n, column after column */
    long nonzeros;   /* elements that are not 0 */
    int symmetric;   /* equal to its transpose */
    char about[900]; /* the comments at the head of the file */
};

/* Reads the whole file, or says what is wrong with it, in which line, and ends the program. */
void read_matrix(const char* path, struct matrix* matrix);

#endif
