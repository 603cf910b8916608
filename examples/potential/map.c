#include "map.h"

#include "examples/tools.h"

#include <math.h>
#include <stdlib.h>

/* Where the line of this level crosses the sides of a cell: 0, 2 or 4 points, of which each two are one piece of it. */
static void cross_cell(FILE* out, const double x[4], const double y[4], const double value[4], double level)
{
    double cross_x[4], cross_y[4];
    int count = 0;
    for (int a = 0; a < 4; ++a) {
        const int b = (a + 1) % 4;
        if ((value[a] < level) == (value[b] < level)) continue;
        const double share = (level - value[a]) / (value[b] - value[a]);
        cross_x[count] = x[a] + share * (x[b] - x[a]), cross_y[count++] = y[a] + share * (y[b] - y[a]);
    }
    for (int i = 0; i + 1 < count; i += 2)
        fprintf(out, "M%.1f %.1fL%.1f %.1f", cross_x[i], cross_y[i], cross_x[i + 1], cross_y[i + 1]);
}

/* Cells are two of the grid's wide and high: more would not show. */
static void lines(FILE* out, const struct plot* p, const struct field* f, int k, double level)
{
    const int n = along(f, 0), m = along(f, 1);
    for (int j = 0; j + 2 < m; j += 2)
        for (int i = 0; i + 2 < n; i += 2) {
            double x[4], y[4], value[4];
            for (int corner = 0; corner < 4; ++corner) {
                const int right = corner == 1 || corner == 2, further = corner >= 2;
                const double part_x = (i + 2.0 * right) / (n - 1), part_y = (j + 2.0 * further) / (m - 1);
                x[corner] = across(p, p->x.from + part_x * (p->x.to - p->x.from));
                y[corner] = up(p, p->y.from + part_y * (p->y.to - p->y.from));
                value[corner] = *value_at(f, i + 2 * right, j + 2 * further, k);
            }
            cross_cell(out, x, y, value, level);
        }
}

static double shade(const struct shading* s, double value) { return 255 * (value - s->low) / (s->high - s->low); }

/* Half a pixel goes beyond the edges, so that points are in the middle of theirs. */
void draw_map(FILE* out, const struct plot* p, const struct field* f, int k, const struct shading* s)
{
    const int n = along(f, 0), m = along(f, 1);
    const double left = across(p, p->x.from), width = across(p, p->x.to) - left;
    const double top = up(p, p->y.to), height = up(p, p->y.from) - top;
    double* shades = memory((long)n * m, sizeof *shades);
    for (int j = 0; j < m; ++j)
        for (int i = 0; i < n; ++i) shades[(m - 1 - j) * n + i] = shade(s, *value_at(f, i, j, k));
    fprintf(out, "<image x=%.2f y=%.2f width=%.2f height=%.2f preserveAspectRatio=none href='",
            left - 0.5 * width / (n - 1), top - 0.5 * height / (m - 1), width * n / (n - 1), height * m / (m - 1));
    picture_address(out, n, m, shades, s->palette);
    fprintf(out,
            "'/>\n<path fill=none stroke='%s' stroke-opacity=.55 stroke-width=.8 vector-effect=non-scaling-stroke d='",
            ink);
    for (double level = s->line + s->step * ceil((s->low - s->line) / s->step); level <= s->high; level += s->step)
        lines(out, p, f, k, level);
    fprintf(out, "'/>\n");
    free(shades);
}

void draw_key(FILE* out, const struct shading* s, const char* name)
{
    enum { count = 256 };
    const struct plot plot = {.x = {s->low, s->high, 2 * s->step, name, 0}, .y = {0, 1, 0, "", 0}, .height = 14};
    double shades[count];
    for (int i = 0; i < count; ++i) shades[i] = i;
    open_plot(out, &plot);
    fprintf(out, "<image x=%d y=%d width=%d height=14 preserveAspectRatio=none href='", plot_left, plot_top,
            plot_right - plot_left);
    picture_address(out, count, 1, shades, s->palette);
    fprintf(out, "'/>"), close_plot(out);
}
