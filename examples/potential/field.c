#include "potential.h"

#include "examples/tools.h"

#include <stdlib.h>

int along(const struct field* f, int axis) { return axis < f->axes ? (int)f->axis[axis].n + 1 : 1; }

long points(const struct field* f) { return (long)along(f, 0) * along(f, 1) * along(f, 2); }

double place(const struct field* f, int axis, int i)
{
    if (axis >= f->axes) return 0;
    const orv_poisson_axis* a = &f->axis[axis];
    return a->a + (a->b - a->a) * i / (double)a->n;
}

double* value_at(const struct field* f, int i, int j, int k)
{
    return &f->value[((long)k * along(f, 1) + j) * along(f, 0) + i];
}

orv_poisson* open_field(struct field* f, int on_sphere)
{
    orv_poisson* solver;
    f->value = memory(points(f), sizeof *f->value);
    check(on_sphere ? orv_poisson_create_sphere(&solver, ORV_DFT_DOUBLE, &f->axis[0], &f->axis[1], 0)
                    : orv_poisson_create(&solver, ORV_DFT_DOUBLE, f->axes, f->axis, 0));
    return solver;
}

void fill(struct field* f, function* right_hand_side)
{
    for (int k = 0; k < along(f, 2); ++k)
        for (int j = 0; j < along(f, 1); ++j)
            for (int i = 0; i < along(f, 0); ++i)
                *value_at(f, i, j, k) = right_hand_side(place(f, 0, i), place(f, 1, j), place(f, 2, k));
}

void solve(const orv_poisson* solver, struct field* f, const orv_dpoisson_side* sides)
{
    check(orv_dpoisson_solve(solver, f->value, NULL, sides, &f->misfit));
}

orv_dpoisson_side on_side(const struct field* f, int side, function* value)
{
    const int axis = side / 2, end = side % 2 ? along(f, axis) - 1 : 0;
    const int first = axis == 0 ? 1 : 0, second = axis == 2 ? 1 : 2; /* the other two axes */
    const int n = along(f, first), m = along(f, second);
    double* values = memory((long)n * m, sizeof *values);
    for (int k = 0; k < m; ++k)
        for (int j = 0; j < n; ++j) {
            double at[3];
            at[axis] = place(f, axis, end), at[first] = place(f, first, j), at[second] = place(f, second, k);
            values[(long)k * n + j] = value(at[0], at[1], at[2]);
        }
    return (orv_dpoisson_side){.values = values, .stride = {1, n}};
}
