/* Plots of values over scales, in a page. */
#ifndef PLOT_H
#define PLOT_H

#include <stdio.h>

extern const char *const blue, *const red, *const teal, *const grey, *const ink;

/* What a scale spans, and how far apart its numbers are: 0 if it has none. Of a logarithmic one each number is `step`
   times the last. */
struct scale {
    double from, to, step;
    const char* name;
    int logarithmic;
};
struct plot {
    struct scale x, y;
    double height; /* of the inner part, whose width is that of plot_left to plot_right; 0: 220 */
};
enum { plot_left = 62, plot_right = 755, plot_top = 34 };

/* Where a value is on the plot. */
double across(const struct plot* p, double x);
double up(const struct plot* p, double y);

void open_plot(FILE* out, const struct plot* p);
void close_plot(FILE* out);

/* A curve through values at equal distances; a dashed one through points, and one with a dot at each. */
void curve(FILE* out, const struct plot* p, int count, double first, double step, const double* value,
           const char* colour);
void dotted(FILE* out, const struct plot* p, int count, const double* x, const double* y, const char* colour);
void dot(FILE* out, const struct plot* p, double x, double y, const char* colour);
/* All of many values at equal distances: from the smallest to the largest of those that share a place. */
void band(FILE* out, const struct plot* p, long count, double first, double step, const double* value,
          const char* colour);
void ring(FILE* out, const struct plot* p, double x, double y, const char* colour);
void dashed(FILE* out, const struct plot* p, int count, const double* x, const double* y, const char* colour);
void key(FILE* out, int line, const char* colour, const char* text); /* what a colour means, in a corner */
void label(FILE* out, const struct plot* p, double x, double y, const char* anchor, const char* colour,
           const char* text);

/* A logarithmic scale for values from the least to the most. */
struct scale decades(double least, double most, const char* name);

/* The next of 1, 2, 5, 10, ... times a power of ten that goes at most six times into this. */
double step_for(double span);
double largest_of(const double* value, long count); /* of positive ones */

#endif
