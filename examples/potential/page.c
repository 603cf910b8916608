/* The page: three fields, errors and times over the grid. */
#include "map.h"

#include "examples/page.h"

#include <math.h>
#include <orv/branch.h>

static const char* const style =
    ".slice{width:255px}.slice svg{width:255px;border:1px solid #d8d8d2}td:first-child,th:first-child{text-align:left}";

static double largest_magnitude(const struct field* f)
{
    double largest = 0;
    for (long i = 0; i < points(f); ++i) largest = fmax(largest, fabs(f->value[i]));
    return largest;
}

static void plate_map(FILE* out, const struct field* f)
{
    const struct plot plot = {.x = {0, plate_width, 0.25, "metres", 0},
                              .y = {0, plate_height, 0.25, "metres", 0},
                              .height = (double)(plot_right - plot_left) * plate_height / plate_width};
    const struct shading shading = {0, 10 * ceil(largest_magnitude(f) / 10), 5, 0, HEAT};
    open_plot(out, &plot);
    draw_map(out, &plot, f, 0, &shading);
    fprintf(out, "<ellipse cx=%.1f cy=%.1f rx=%.1f ry=%.1f fill=none stroke=#fff stroke-dasharray='4 4'/>\n",
            across(&plot, burner_x), up(&plot, burner_y), across(&plot, burner_radius) - across(&plot, 0),
            up(&plot, 0) - up(&plot, burner_radius));
    close_plot(out);
    draw_key(out, &shading, "degrees Celsius; a line every 5");
}

static void slices(FILE* out, const struct field* f)
{
    static const int height[] = {16, 24, 28, 32, 40, 48};
    const double side = plot_right - plot_left;
    const struct plot plot = {.x = {0, 1, 1, "", 0}, .y = {0, 1, 1, "", 0}, .height = side};
    const struct shading shading = {-60, 60, 5, 2.5, SIGNS};
    fprintf(out, "<div class=row>\n");
    for (int s = 0; s < (int)(sizeof height / sizeof *height); ++s) {
        fprintf(out, "<figure class=slice><svg viewBox='%d %d %.0f %.0f'>", plot_left, plot_top, side, side);
        draw_map(out, &plot, f, height[s], &shading);
        fprintf(out, "</svg><figcaption>%.3f m above the bottom</figcaption></figure>\n", place(f, 2, height[s]));
    }
    fprintf(out, "</div>\n");
    draw_key(out, &shading, "volts; lines at 2.5, 7.5, ..., of either sign");
}

static void earth_map(FILE* out, const struct field* f)
{
    const struct plot plot = {.x = {-180, 180, 60, "degrees of longitude", 0},
                              .y = {-90, 90, 30, "degrees of latitude", 0},
                              .height = (plot_right - plot_left) / 2.0};
    const double step = 10, most = 2 * step * ceil(largest_magnitude(f) * 1e-6 / (2 * step));
    const struct shading shading = {-most * 1e6, most * 1e6, step * 1e6, 0, SIGNS}, key = {-most, most, step, 0, SIGNS};
    open_plot(out, &plot);
    draw_map(out, &plot, f, 0, &shading);
    close_plot(out);
    draw_key(out, &key, "square kilometres a second, of which the wind keeps the same; a line every 10");
}

static const char* const* colours(void)
{
    static const char* colour[problems];
    colour[0] = blue, colour[1] = red, colour[2] = teal;
    return colour;
}

/* From this line on. */
static void keys(FILE* out, int line, const char* last)
{
    key(out, line, blue, "rectangle"), key(out, line + 1, red, "box"), key(out, line + 2, teal, "sphere");
    key(out, line + 3, grey, last);
}

static void errors(FILE* out, const struct course* c)
{
    const struct plot plot = {.x = {8, 1024, 2, "cells along a side (on the sphere, from pole to pole)", 1},
                              .y = {1e-8, 1, 100, "largest error (of values around 1)", 1},
                              .height = 260};
    open_plot(out, &plot);
    dashed(out, &plot, 2, (double[]){8, 1024}, (double[]){0.3, 0.3 * pow(8.0 / 1024, 2)}, grey);
    for (int p = 0; p < problems; ++p) dotted(out, &plot, c[p].count, c[p].cells, c[p].error, colours()[p]);
    keys(out, 9, "dashed: slope &minus;2");
    close_plot(out);
}

static void times(FILE* out, const struct course* c)
{
    enum { parts = 64 };
    const struct course* flat = &c[0];
    double milliseconds[problems][most_grids], n[parts], n_log_n[parts], least = HUGE_VAL, most = 0;
    for (int p = 0; p < problems; ++p)
        for (int i = 0; i < c[p].count; ++i) {
            milliseconds[p][i] = 1e3 * c[p].seconds[i];
            least = fmin(least, milliseconds[p][i]), most = fmax(most, milliseconds[p][i]);
        }
    const struct plot plot = {
        .x = {10, 1e7, 10, "unknowns", 1}, .y = decades(least, most, "milliseconds a solve"), .height = 260};
    const int middle = flat->count / 2;
    const double unit = milliseconds[0][middle] / (flat->unknowns[middle] * log(flat->unknowns[middle]));
    for (int i = 0; i < parts; ++i) n[i] = 1000 * pow(1000, i / (parts - 1.0)), n_log_n[i] = unit * n[i] * log(n[i]);
    open_plot(out, &plot);
    dashed(out, &plot, parts, n, n_log_n, grey);
    for (int p = 0; p < problems; ++p) dotted(out, &plot, c[p].count, c[p].unknowns, milliseconds[p], colours()[p]);
    keys(out, 0, "dashed: n log n");
    close_plot(out);
}

int write_page(const char* path, const struct results* r)
{
    const struct course* c = r->courses;
    const struct course* flat = &c[0];
    const int last = flat->count - 1;
    FILE* out = open_page(path, "Heat, charges and winds", figure_rules, style);
    if (out == NULL) return -1;
    fprintf(out,
            "<p>The temperature of a plate, the voltage in a box and the winds of the earth follow one equation: "
            "sources say "
            "how much a field bends, in all directions together, and at the sides something is told of it. On a "
            "regular grid its many unknowns are found in a few passes over them, by sine and cosine "
            "waves.</p>\n<h2>A plate</h2>\n<p>A metal plate of %d by %d metres is kept at %d degrees at its left side "
            "and at %d at its right one; the lower side is insulated, through the upper one heat is drawn off (the "
            "temperature falls by %d degrees a metre there). A burner heats the dashed disc. The temperature, from "
            "%ld points:</p>\n",
            plate_width, plate_height, warm, cool, loss, points(r->plate));
    plate_map(out, r->plate);
    fprintf(
        out,
        "<h2>A box</h2>\n<p>Two charges in a box of one metre with earthed sides: one of +1 nanocoulomb, low and to "
        "the left, and one of &minus;1, high and to the right. Six slices of the potential, from %ld points; each "
        "shows a "
        "square metre from above. Close to a charge the colours end at %d volts.</p>\n",
        points(r->box), 60);
    slices(out, r->box);
    fprintf(
        out,
        "<h2>The earth</h2>\n<p>On either half of the earth %d storms turn as storms do: against the clock in the "
        "north, with it in the south. From how fast the air turns, everywhere, comes the stream function: the wind "
        "blows along its lines, the faster the closer they are, at %.0f m a second where it is strongest. The sphere "
        "has no sides, so the field is known up to a constant; its mean is 0 here.</p>\n",
        storms / 2, strongest_wind(r->sphere));
    earth_map(out, r->sphere);
    fprintf(out,
            "<h2>What the grid leaves of the error</h2>\n<p>Three problems made from a known solution, on finer and "
            "finer grids. With twice the cells along each side the error falls to a quarter: the slopes of the "
            "lines that fit best are");
    for (int p = 0; p < problems; ++p)
        fprintf(out, "%s &minus;%.2f for the %s",
                p == 0              ? ""
                : p == problems - 1 ? " and"
                                    : ",",
                c[p].slope, c[p].name);
    fprintf(out, ".</p>\n");
    errors(out, c);
    fprintf(
        out,
        "<h2>What a solve takes</h2>\n<p>The fastest of at least 3 solves on one thread, in processor time. The "
        "largest rectangle, of %.0f unknowns, takes %.1f milliseconds, %.0f nanoseconds an unknown. A transform of n "
        "values takes "
        "about n log n operations, and so does a solve; where the grid no longer fits into the processor's caches, the "
        "memory's speed counts, too.</p>\n",
        flat->unknowns[last], 1e3 * flat->seconds[last], 1e9 * flat->seconds[last] / flat->unknowns[last]);
    times(out, c);
    fprintf(out, "<table><tr><th>grid<th>cells<th>unknowns<th>largest error<th>ms<th>ns an unknown</tr>\n");
    for (int p = 0; p < problems; ++p)
        for (int i = 0; i < c[p].count; ++i)
            fprintf(out, "<tr><td>%s<td>%.0f<td>%.0f<td>%.1e<td>%.3f<td>%.0f</tr>\n", c[p].name, c[p].cells[i],
                    c[p].unknowns[i], c[p].error[i], 1e3 * c[p].seconds[i], 1e9 * c[p].seconds[i] / c[p].unknowns[i]);
    fprintf(out, "</table>\n<footer>Computed by <code>%s</code> with <code>orv/poisson.h</code>.</footer>", orv_path());
    return close_page(out);
}
