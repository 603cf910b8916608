/* Problems made from a solution: what grids of more and more cells leave of the error, and how long they take. */
#include "potential.h"

#include "examples/now.h"
#include "examples/tools.h"

#include <math.h>
#include <stdlib.h>
#include <string.h>

static const double pi = 3.14159265358979323846;

/* exp(x)*cos(2y): told at the lower x and the upper y side, its derivative outwards at the others. */
static double plane_u(double x, double y, double z) { return (void)z, exp(x) * cos(2 * y); }
static double plane_f(double x, double y, double z) { return 3 * plane_u(x, y, z); }
static double plane_down(double x, double y, double z) { return (void)z, 2 * exp(x) * sin(2 * y); }

/* cos(2 pi x)*exp(y)*sin(z + 1): periodic, told below, its derivative told above, told on both sides. */
static double space_u(double x, double y, double z) { return cos(2 * pi * x) * exp(y) * sin(z + 1); }
static double space_f(double x, double y, double z) { return 4 * pi * pi * space_u(x, y, z); }

/* Two waves of the sphere. */
static double sphere_u(double p, double t, double z) { return (void)z, pow(sin(t), 2) * cos(2 * p) + cos(t); }
static double sphere_f(double p, double t, double z) { return (void)z, 6 * pow(sin(t), 2) * cos(2 * p) + 2 * cos(t); }

static const struct problem {
    const char* name;
    int on_sphere, least, most; /* cells along an axis, doubled from the least to the most */
    struct field like;          /* with one cell along each axis, or 2 */
    function *u, *f, *side[6];
} problem[problems] = {
    {"rectangle",
     0,
     8,
     1024,
     {.axes = 2, .axis = {{0, 1, 1, ORV_DIRICHLET, ORV_NEUMANN}, {0, 1, 1, ORV_NEUMANN, ORV_DIRICHLET}}},
     plane_u,
     plane_f,
     {plane_u, plane_u, plane_down, plane_u}},
    {"box",
     0,
     8,
     128,
     {.axes = 3,
      .axis = {{0, 1, 1, ORV_PERIODIC, ORV_PERIODIC},
               {0, 1, 1, ORV_DIRICHLET, ORV_NEUMANN},
               {0, 1, 1, ORV_DIRICHLET, ORV_DIRICHLET}}},
     space_u,
     space_f,
     {space_u, space_u, space_u, space_u, space_u, space_u}},
    {"sphere",
     1,
     8,
     512,
     {.axes = 2,
      .axis = {{0, 6.283185307179586, 2, ORV_PERIODIC, ORV_PERIODIC}, {0, 3.141592653589793, 1, ORV_POLE, ORV_POLE}}},
     sphere_u,
     sphere_f,
     {NULL}}};

static double largest_error(const struct field* f, function* u)
{
    double largest = 0;
    for (int k = 0; k < along(f, 2); ++k)
        for (int j = 0; j < along(f, 1); ++j)
            for (int i = 0; i < along(f, 0); ++i)
                largest =
                    fmax(largest, fabs(*value_at(f, i, j, k) - u(place(f, 0, i), place(f, 1, j), place(f, 2, k))));
    return largest;
}

/* The fastest of at least 3 solves, and of more within a fiftieth of a second. */
static void compute(const struct problem* p, struct course* c, int cells)
{
    struct field f = p->like;
    orv_dpoisson_side sides[6] = {{NULL, {0, 0}}};
    for (int d = 0; d < f.axes; ++d) f.axis[d].n *= cells;
    orv_poisson* solver = open_field(&f, p->on_sphere);
    for (int s = 0; s < 2 * f.axes; ++s)
        if (p->side[s] != NULL) sides[s] = on_side(&f, s, p->side[s]);
    fill(&f, p->f);
    double* right = memory(points(&f), sizeof *right);
    memcpy(right, f.value, (size_t)points(&f) * sizeof *right);
    double best = HUGE_VAL;
    const double end = worked() + 0.02;
    for (int run = 0; run < 3 || worked() < end; ++run) {
        memcpy(f.value, right, (size_t)points(&f) * sizeof *right);
        const double begin = worked();
        solve(solver, &f, sides);
        best = fmin(best, worked() - begin);
    }
    c->cells[c->count] = cells;
    c->unknowns[c->count] = (double)points(&f);
    c->seconds[c->count] = best;
    c->error[c->count++] = largest_error(&f, p->u);
    for (int s = 0; s < 6; ++s) free((void*)sides[s].values);
    free(right), free(f.value);
    orv_poisson_free(solver);
}

/* Of the line that comes closest to the logarithms of errors over those of cells: least squares. */
static double slope(const struct course* c)
{
    double x = 0, y = 0, xx = 0, xy = 0;
    for (int i = 0; i < c->count; ++i) {
        const double at = log(c->cells[i]), value = log(c->error[i]);
        x += at, y += value, xx += at * at, xy += at * value;
    }
    return -(xy - x * y / c->count) / (xx - x * x / c->count);
}

void refine_grids(struct course* courses)
{
    for (int p = 0; p < problems; ++p) {
        courses[p] = (struct course){.name = problem[p].name};
        for (int n = problem[p].least; n <= problem[p].most; n *= 2) compute(&problem[p], &courses[p], n);
        courses[p].slope = slope(&courses[p]);
    }
}
