/* What came out of the refinement: shared by the mathematics and the page. */
#ifndef REFINE_H
#define REFINE_H

enum { n = 10, steps = 8 };

/* The largest error of the solution after each step, by the precision of the residual. */
struct errors {
    double plain[steps + 1]; /* double */
    double extra[steps + 1];
};

/* Writes the page, complete in one file. Returns 0, or -1 with errno set. */
int write_page(const char* path, const struct errors* error);

#endif
