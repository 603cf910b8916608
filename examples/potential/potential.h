/* Three fields, and how errors and times go with the grid: shared by the program's files. */
#ifndef POTENTIAL_H
#define POTENTIAL_H

#include <orv/poisson.h>

/* A grid and a value for each of its points: the first axis fastest, then the second one. */
struct field {
    int axes;
    orv_poisson_axis axis[3];
    double* value;
    double misfit; /* what was taken off the right-hand side everywhere, so that there is a solution */
};
long points(const struct field* f);
int along(const struct field* f, int axis);                   /* how many points there are along it */
double place(const struct field* f, int axis, int i);         /* coordinate of point i along it */
double* value_at(const struct field* f, int i, int j, int k); /* k is 0 with two axes */

/* field.c: a solver for -laplace(u) = right_hand_side, on the sphere too, where the axes are longitude and the
   angle from the south pole. */
typedef double function(double x, double y, double z);
orv_poisson* open_field(struct field* f, int on_sphere);
void fill(struct field* f, function* right_hand_side);
void solve(const orv_poisson* solver, struct field* f, const orv_dpoisson_side* sides);
/* Values of a function on one side, or of its derivative there: as many as there are points. */
orv_dpoisson_side on_side(const struct field* f, int side, function* value);

/* scenes.c */
enum { plate_width = 2, plate_height = 1 };              /* metres */
enum { warm = 80, cool = 20, loss = 30, burner = 2000 }; /* degrees; degrees a metre; degrees a square metre */
enum { earth_radius = 6371 };                            /* kilometres */
static const double burner_x = 1.3, burner_y = 0.4, burner_radius = 0.15; /* metres */
void plate(struct field* f);                                              /* its temperature: degrees */
void box(struct field* f);    /* of one metre, the potential of two charges in it: volts */
void sphere(struct field* f); /* the stream function of winds around six storms: square metres a second */
double strongest_wind(const struct field* f); /* metres a second */
enum { storms = 6 };
extern const struct storm {
    double latitude, longitude; /* degrees */
    int turns;                  /* 1: against the clock, seen from above */
} storm[storms];

/* course.c: problems whose solution is known, on finer and finer grids. */
enum { most_grids = 8, problems = 3 };
struct course {
    const char* name;
    int count;
    double cells[most_grids], unknowns[most_grids]; /* along an axis, and of all points */
    double error[most_grids];                       /* the largest */
    double seconds[most_grids];                     /* of a processor for a solve */
    double slope;                                   /* of the error: it goes like 1/cells to this power */
};
void refine_grids(struct course* courses);

struct results {
    const struct field *plate, *box, *sphere;
    const struct course* courses;
};

/* page.c: writes the page, complete in one file. Returns 0, or -1 with errno set. */
int write_page(const char* path, const struct results* results);

#endif
