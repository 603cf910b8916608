/* A plate, a box and a sphere. */
#include "potential.h"

#include "examples/tools.h"

#include <math.h>
#include <stdlib.h>

static const double pi = 3.14159265358979323846;

static double burner_heat(double x, double y, double z)
{
    const double edge = burner_radius + 1e-9; /* points on it are heated, too, however they are rounded */
    return (void)z, hypot(x - burner_x, y - burner_y) < edge ? burner : 0;
}

/* The left and the right side are kept at their temperatures, through the upper one heat goes away, through the lower
   one there goes none. */
void plate(struct field* f)
{
    static const double warmth = warm, coolness = cool, outwards = -loss;
    const orv_dpoisson_side sides[4] = {[0] = {&warmth, {0, 0}}, [1] = {&coolness, {0, 0}}, [3] = {&outwards, {0, 0}}};
    *f = (struct field){.axes = 2,
                        .axis = {{0, plate_width, 400, ORV_DIRICHLET, ORV_DIRICHLET},
                                 {0, plate_height, 200, ORV_NEUMANN, ORV_NEUMANN}}};
    orv_poisson* solver = open_field(f, 0);
    fill(f, burner_heat);
    solve(solver, f, sides);
    orv_poisson_free(solver);
}

/* One nanocoulomb of either sign, each at one point of the grid; the sides are earthed. */
void box(struct field* f)
{
    enum { n = 64 };
    const double permittivity = 8.8541878e-12, volume = 1.0 / n / n / n;
    const orv_poisson_axis axis = {0, 1, n, ORV_DIRICHLET, ORV_DIRICHLET};
    *f = (struct field){.axes = 3, .axis = {axis, axis, axis}};
    orv_poisson* solver = open_field(f, 0);
    *value_at(f, 20, 24, 24) = 1e-9 / permittivity / volume;
    *value_at(f, 44, 40, 40) = -1e-9 / permittivity / volume;
    solve(solver, f, NULL);
    orv_poisson_free(solver);
}

const struct storm storm[storms] = {{45, -30, 1},  {50, 150, 1},    {35, -130, 1},
                                    {-50, 20, -1}, {-45, -100, -1}, {-40, 120, -1}};

/* Minus the vorticity: 0.00005 a second in the middle of a storm, and less in a bell of 1000 km around it. `closeness`
   is the cosine of the distance from there. */
static double minus_vorticity(double longitude, double from_south, double z)
{
    const double width = 1000.0 / earth_radius;
    double sum = 0 * z; /* there is no third axis */
    for (int s = 0; s < storms; ++s) {
        const double up = storm[s].latitude * pi / 180, east = storm[s].longitude * pi / 180;
        const double closeness = sin(from_south) * cos(up) * cos(longitude - east) - cos(from_south) * sin(up);
        sum -= storm[s].turns * 5e-5 * exp((closeness - 1) / (width * width));
    }
    return sum;
}

void sphere(struct field* f)
{
    const double square = pow(1000.0 * earth_radius, 2);
    *f = (struct field){.axes = 2,
                        .axis = {{-pi, pi, 360, ORV_PERIODIC, ORV_PERIODIC}, {0, pi, 180, ORV_POLE, ORV_POLE}}};
    orv_poisson* solver = open_field(f, 1);
    fill(f, minus_vorticity);
    solve(solver, f, NULL);
    for (long i = 0; i < points(f); ++i) f->value[i] *= square; /* from a sphere of radius 1 to the earth */
    orv_poisson_free(solver);
}

/* The wind goes along the lines of equal values; its speed is the slope across them. */
double strongest_wind(const struct field* f)
{
    const double metre = 1000.0 * earth_radius, step = f->axis[1].b / (double)f->axis[1].n;
    double strongest = 0;
    for (int j = 1; j + 1 < along(f, 1); ++j)
        for (int i = 1; i + 1 < along(f, 0); ++i) {
            const double east = *value_at(f, i + 1, j, 0) - *value_at(f, i - 1, j, 0);
            const double south = *value_at(f, i, j + 1, 0) - *value_at(f, i, j - 1, 0);
            strongest = fmax(strongest, hypot(east / sin(place(f, 1, j)), south) / (2 * step * metre));
        }
    return strongest;
}
