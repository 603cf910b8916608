/* Fields as maps: colours, and lines of equal values. */
#ifndef MAP_H
#define MAP_H

#include "examples/picture.h"
#include "examples/plot.h"
#include "potential.h"

/* The colours of values from `low` to `high`; lines at `line` and multiples of `step` from there. */
struct shading {
    double low, high, step, line;
    enum palette palette;
};

/* The plane k of a field on an open plot, whose scales say where its first and last points are along both axes. */
void draw_map(FILE* out, const struct plot* p, const struct field* f, int k, const struct shading* s);
/* What the colours mean, in a plot of its own. */
void draw_key(FILE* out, const struct shading* s, const char* name);

#endif
