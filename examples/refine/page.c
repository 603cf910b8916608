/* The page: how the error goes down, or doesn't, from step to step. */
#include "examples/page.h"
#include "refine.h"

#include <math.h>
#include <orv/branch.h>
#include <stdio.h>

static const char* const style = "td,th{padding-right:3em}";
static const char *const plain_colour = "#d6404e", *const extra_colour = "#4269d0";

/* A scale of logarithms from 1 down to the last bit of 1. It has no place for zero, which gets a line of its own. */
enum { left = 70, right = 590, top = 24, decade = 17, digits = 16, zero = top + decade * digits + 44 };

static double across(int step) { return left + 25 + 60 * step; }
static double down(double error) { return error == 0 ? zero : top - decade * fmax(log10(error), -digits); }

static void scale(FILE* out)
{
    for (int d = 0; d <= digits; d += 4)
        fprintf(out,
                "<path d='M%d %dH%d' stroke='#e4e4de'/><text x=%d y=%d text-anchor=end fill='#5c6370'>%s%d</text>\n",
                left, top + decade * d, right, left - 8, top + decade * d + 4, d == 0 ? "" : "1e-", d == 0 ? 1 : d);
    fprintf(out,
            "<path d='M%d %dH%d' stroke='#22252b' stroke-dasharray='2 4'/><text x=%d y=%d text-anchor=end "
            "fill='#5c6370'>exactly 0</text>\n",
            left, zero, right, left - 8, zero + 4);
    for (int s = 0; s <= steps; ++s)
        fprintf(out, "<text x=%.0f y=%d text-anchor=middle fill='#5c6370'>%d</text>\n", across(s), zero + 30, s);
    fprintf(out, "<text x=%.0f y=%d text-anchor=middle fill='#5c6370'>steps of refinement</text>\n", across(steps / 2),
            zero + 52);
}

/* A point a step: full on the scale, hollow where the error is zero, which no line leads to. */
static void curve(FILE* out, const double* error, const char* colour, const char* label)
{
    fprintf(out, "<polyline fill=none stroke-width=2.5 stroke='%s' points='", colour);
    for (int s = 0; s <= steps; ++s)
        if (error[s] != 0) fprintf(out, "%.0f,%.1f ", across(s), down(error[s]));
    fprintf(out, "'/>\n");
    for (int s = 0; s <= steps; ++s)
        fprintf(out, "<circle cx=%.0f cy=%.1f r=4 stroke-width=2 stroke='%s' fill='%s'/>\n", across(s), down(error[s]),
                colour, error[s] == 0 ? "#fff" : colour);
    fprintf(out, "<text x=%d y=%.1f fill='%s'>%s</text>\n", right + 8, down(error[steps]) + 4, colour, label);
}

static void cell(FILE* out, double error)
{
    if (error == 0) fprintf(out, "<td>0");
    else fprintf(out, "<td>%.1e", error);
}

int write_page(const char* path, const struct errors* error)
{
    FILE* out = open_page(path, "A solution, refined", figure_rules, style);
    if (out == NULL) return -1;
    fprintf(
        out,
        "<p>The Hilbert matrix of order %d, in whole numbers, has a condition number of 1.6e13: of 16 digits a "
        "solver loses up to 13. Refinement computes what is left of the right-hand side, solves for it with the same "
        "factors, and adds that to the solution. But what is left is a difference of almost equal numbers. In "
        "plain double its digits are gone before they are used; in extra precision they are there. The largest error "
        "of the solution, which is all ones, after each step:</p>\n",
        n);
    fprintf(out, "<svg class=map viewBox='0 0 770 %d'>\n", zero + 66);
    scale(out);
    curve(out, error->plain, plain_colour, "residual in double");
    curve(out, error->extra, extra_colour, "in extra precision");
    fprintf(out, "</svg>\n<h2>The same in numbers</h2>\n"
                 "<table><tr><th>step<th>residual in double<th>in extra precision</tr>\n");
    for (int s = 0; s <= steps; ++s) {
        fprintf(out, "<tr><td>%d", s);
        cell(out, error->plain[s]), cell(out, error->extra[s]);
        fprintf(out, "</tr>\n");
    }
    fprintf(out,
            "</table>\n<footer>Computed by <code>%s</code> with residuals and triangular solves of "
            "<code>orv/xblas.h</code>.</footer>",
            orv_path());
    return close_page(out);
}
