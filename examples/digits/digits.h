/* The handwritten digits and what their principal components tell: shared by the mathematics and the page. */
#ifndef DIGITS_H
#define DIGITS_H

enum { images = 1797, side = 8, pixels = side * side, classes = 10, components = 10 };

struct digits {
    double pixel[images][pixels]; /* 0 (paper) to 16 (ink), row after row */
    int label[images];            /* the digit that was meant: 0 to 9 */
};

struct analysis {
    const char* library;                   /* the file that the matrix products came from */
    double mean[pixels];                   /* the average image */
    double total_variance;                 /* trace of the covariance matrix */
    double variance[components];           /* its largest eigenvalues */
    double vector[components][pixels];     /* their eigenvectors, of length 1 */
    double residual[components];           /* |C v - lambda v| / lambda */
    double coordinate[images][components]; /* each image on the eigenvectors, the average at the origin */
};

/* Writes the page, complete in one file. Returns 0, or -1 with errno set. */
int write_page(const char* path, const struct digits* data, const struct analysis* result);

#endif
