/* A real signal of one or two dimensions, or many of one, its spectrum, and how both were computed: shared by the
 * program's files. */
#ifndef SPECTRUM_H
#define SPECTRUM_H

#include <orv/dft.h>
#include <stddef.h>

/* Values without gaps, rows of width numbers; height is 1 for a series. */
struct signal {
    int width, height;
    double* value;
    double first; /* of a series: when it begins, a number a year */
    int alone;    /* whether each row is a signal of its own, transformed with the others in one call */
};

/* Half of a signal's spectrum, width/2 + 1 numbers a row, and what is known about the way there. */
struct spectrum {
    const struct signal* of;
    orv_dft* dft; /* backward divides by the number of values transformed together */
    int half;
    orv_complex_double* value;
    double seconds, plain_seconds; /* of orv's transform, and of plain sums */
    double difference;             /* between both, relative to the largest */
    double there_and_back;         /* largest error after backward, relative to the largest value */
};

/* input.c: says what is wrong with a file, and ends the program. */
void read_series(const char* path, struct signal* series);

/* sound.c: a sound, cut into overlapping frames that fade in and out: a row each. */
enum { sound_rate = 8000, frame_length = 256, frame_step = 64 };            /* values a second, values, values */
enum { sweep_from = 300, sweep_to = 3300, sweep_seconds = 2, beep = 2000 }; /* Hz */
void make_sound(struct signal* frames);

/* transform.c */
void transform(const struct signal* signal, struct spectrum* spectrum);
void release(struct spectrum* spectrum);                                /* and its signal */
double amplitude(const struct spectrum* spectrum, int column, int row); /* of a wave in the signal's own unit */
/* The signal with its wave of frequency f (cycles a value, in any direction) multiplied by gain(f). */
double* filtered(const struct spectrum* spectrum, double (*gain)(double f));

/* spectrum.c: the filters */
double slow(double f);
double blur(double f);
double sharpen(double f);
enum { slow_years = 25 };

struct results {
    const struct signal *sunspots, *picture;
    const struct spectrum *years, *frames, *pixels;
    int peak; /* index of the strongest wave of the sunspots */
    double mean;
    const double *slow, *blurred, *sharpened;
};

/* page.c: writes the page, complete in one file. Returns 0, or -1 with errno set. */
int write_page(const char* path, const struct results* results);

#endif
