/* A sparse system from a file, in compressed rows, with indices from 0. */
#ifndef SYSTEM_H
#define SYSTEM_H

#include <orv/sparse.h>

struct system {
    int n;
    long nonzeros;   /* elements that are not 0, of the whole matrix */
    int symmetric;   /* as the file says */
    orv_sparse full; /* all elements */
    orv_sparse half; /* of a symmetric matrix: its lower triangle */
    double* diagonal;
    char about[900];
};

/* Reads the file, or says what is wrong with it, and ends the program. */
void read_system(const char* path, struct system* system);

#endif
