/* The temperature of a plate, the potential of charges in a box, winds on the earth; errors and times over the grid.

   usage: potential [PAGE.html]    prints tables; with PAGE also draws it */
#include "potential.h"

#include "examples/tools.h"

#include <errno.h>
#include <math.h>
#include <orv/threads.h>
#include <stdlib.h>
#include <string.h>

/* The place of its largest value. */
static void print_largest(const struct field* f, const char* what, const char* unit)
{
    long top = 0;
    for (long i = 0; i < points(f); ++i)
        if (f->value[i] > f->value[top]) top = i;
    printf("%s %.4f %s at", what, f->value[top], unit);
    for (int d = 0; d < f->axes; ++d) printf(" %g", place(f, d, (int)(top % along(f, d)))), top /= along(f, d);
    printf("\n");
}

int main(int count, char** words)
{
    struct field plate_field, box_field, sphere_field;
    struct course courses[problems];
    if (count > 2) {
        fprintf(stderr, "usage: potential [PAGE.html]\n");
        return 1;
    }
    check(orv_set_num_threads(1)); /* times are of the method, not of how many threads share it */
    plate(&plate_field);
    box(&box_field);
    sphere(&sphere_field);
    refine_grids(courses);

    print_largest(&plate_field, "plate     hottest", "degrees");
    printf("box       %.4f volts halfway from its middle to the first charge\n", *value_at(&box_field, 26, 28, 28));
    printf("sphere    strongest wind %.2f m/s, misfit %.1e of 5e-05 a second\n\n", strongest_wind(&sphere_field),
           fabs(sphere_field.misfit));
    printf("grid          cells   unknowns  largest error          us  ns an unknown\n");
    for (int p = 0; p < problems; ++p) {
        const struct course* c = &courses[p];
        for (int i = 0; i < c->count; ++i)
            printf("%-10s %8.0f %10.0f %14.3e %11.1f %14.1f\n", c->name, c->cells[i], c->unknowns[i], c->error[i],
                   1e6 * c->seconds[i], 1e9 * c->seconds[i] / c->unknowns[i]);
        printf("%-10s slope %.3f\n", c->name, c->slope);
    }

    int failed = 0;
    if (count == 2) {
        const struct results results = {&plate_field, &box_field, &sphere_field, courses};
        failed = write_page(words[1], &results) != 0;
        if (failed) fprintf(stderr, "potential: %s: %s\n", words[1], strerror(errno));
    }
    free(plate_field.value), free(box_field.value), free(sphere_field.value);
    return failed;
}
