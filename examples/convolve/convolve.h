/* A sound looked for in noise, a picture filtered, and the times of both routes: shared by the program's files. */
#ifndef CONVOLVE_H
#define CONVOLVE_H

#include <orv/conv.h>

/* One problem computed by direct sums and by transforms. */
struct race {
    double direct, transform; /* seconds of a processor */
    double difference;        /* of both results, relative to the largest value of one */
    int automatic;            /* the route that orv takes when it may choose */
    char kernel[160];         /* what computed it then */
};

/* A sound, a recording of noise that hides it, and how much each part of the recording is like the sound. */
enum { rate = 8000, sound_length = rate / 2, recording_length = 10 * rate }; /* values a second, values, values */
enum { sweep_from = 500, sweep_to = 2500 };                                  /* Hz */
enum { lags = recording_length - sound_length + 1 };
enum { loudness = 4 }; /* of the noise, by the root of its mean square; that of the sound is 1 */
struct search {
    double *sound, *recording, *likeness; /* 1 in likeness: as much of the sound is in there as was hidden */
    int hidden, found;                    /* where the sound begins, in values */
    double elsewhere;                     /* the largest likeness far from where it was found */
    struct race race;
};

/* A picture and what weighted sums over the neighbours of each pixel make of it. */
enum { radius = 9, weights_side = 2 * radius + 1, effects = 3 };
struct effect {
    const char* name;
    double weights[weights_side * weights_side];
    double* result;
};
struct filters {
    int width, height;
    double* picture;
    struct effect effect[effects];
    struct race race;
};

/* Both routes over the number of weights, of a filter along one dimension or of each side of a square one. */
enum { most_sizes = 24 };
struct course {
    int rank, count, size[most_sizes];
    struct race race[most_sizes];
    int crossing;   /* index of the first size from which on the transform is faster; count: there is none */
    int changes;    /* index of the first size from which on automatic takes the transform; count: there is none */
    double dearest; /* the most that automatic takes, as a multiple of the faster route, */
    int dearest_at; /* and the index of that size */
};

/* sound.c */
void search(unsigned long seed, struct search* s);
/* filter.c */
void filter(struct filters* f);

/* race.c: z of x and y, on both routes; what automatic makes of it stays in z. */
struct race compete(int job, int rank, const int64_t* x_shape, const double* x, const int64_t* y_shape, const double* y,
                    int size, double* z);
/* Of the weights number i: how many, or how many by how many. */
const char* shape_words(const struct course* c, int i, const char* by, char words[40]);
void compete_along(const double* signal, int length, struct course* course);
void compete_across(const double* picture, int width, int height, struct course* course);

struct results {
    const struct search* search;
    const struct filters* filters;
    const struct course *along, *across;
};

/* page.c: writes the page, complete in one file. Returns 0, or -1 with errno set. */
int write_page(const char* path, const struct results* results);

#endif
