/* Real transforms forward and back by orv/dft.h, and the same by plain sums. */
#include "examples/now.h"
#include "examples/tools.h"
#include "spectrum.h"

#include <complex.h>
#include <math.h>
#include <stdlib.h>

static const double pi = 3.14159265358979323846;

/* How many values are transformed together. */
static double together(const struct signal* s) { return (double)s->width * (s->alone ? 1 : s->height); }

static double complex* roots(int n)
{
    double complex* root = memory(n, sizeof *root);
    for (int j = 0; j < n; ++j) root[j] = cexp(-2 * pi * I * j / n);
    return root;
}

/* By the definition, with a table of roots: rows first, then columns if they belong together. */
static void plain_sums(const struct signal* in, int half, double complex* out)
{
    double complex *row_root = roots(in->width), *root = roots(in->height), *column = memory(in->height, sizeof *root);
    for (int y = 0; y < in->height; ++y)
        for (int k = 0; k < half; ++k) {
            double complex sum = 0;
            for (int x = 0; x < in->width; ++x) sum += in->value[y * in->width + x] * row_root[(long)x * k % in->width];
            out[y * half + k] = sum;
        }
    for (int k = 0; k < half && !in->alone; ++k) {
        for (int y = 0; y < in->height; ++y) column[y] = out[y * half + k];
        for (int l = 0; l < in->height; ++l) {
            double complex sum = 0;
            for (int y = 0; y < in->height; ++y) sum += column[y] * root[(long)y * l % in->height];
            out[l * half + k] = sum;
        }
    }
    free(column), free(root), free(row_root);
}

/* The fastest of at least 50 calls, and of more within a fifth of a second. */
static double time_forward(const struct spectrum* s)
{
    const double end = now() + 0.2;
    double best = HUGE_VAL;
    for (int run = 0; run < 50 || now() < end; ++run) {
        const double begin = now();
        check(orv_dft_forward(s->dft, s->of->value, s->value));
        best = fmin(best, now() - begin);
    }
    return best;
}

static double pass(double f) { return (void)f, 1; }

static void compare(struct spectrum* s)
{
    const long numbers = (long)s->half * s->of->height, values = (long)s->of->width * s->of->height;
    double complex* plain = memory(numbers, sizeof *plain);
    const double begin = now();
    plain_sums(s->of, s->half, plain);
    s->plain_seconds = now() - begin;
    double largest = 0, difference = 0;
    for (long i = 0; i < numbers; ++i) {
        const double complex ours = s->value[i];
        largest = fmax(largest, cabs(plain[i])), difference = fmax(difference, cabs(ours - plain[i]));
    }
    s->difference = largest > 0 ? difference / largest : difference;
    free(plain);

    double* back = filtered(s, pass);
    largest = difference = 0;
    for (long i = 0; i < values; ++i) {
        largest = fmax(largest, fabs(s->of->value[i]));
        difference = fmax(difference, fabs(back[i] - s->of->value[i]));
    }
    s->there_and_back = largest > 0 ? difference / largest : difference;
    free(back);
}

void transform(const struct signal* signal, struct spectrum* s)
{
    const int64_t lengths[] = {signal->width, signal->height}; /* those that are neighbours in memory first */
    *s = (struct spectrum){.of = signal, .half = signal->width / 2 + 1};
    s->value = memory((long)s->half * signal->height, sizeof *s->value);
    check(orv_dft_create(&s->dft, ORV_DFT_DOUBLE, ORV_DFT_REAL, signal->alone || signal->height == 1 ? 1 : 2, lengths));
    check(orv_dft_set(s->dft, ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE));
    check(orv_dft_set(s->dft, ORV_DFT_THREADS, 1)); /* as the plain sums have; the whole takes microseconds */
    if (signal->alone) check(orv_dft_set(s->dft, ORV_DFT_TRANSFORMS, signal->height));
    check(orv_dft_set_scales(s->dft, 1, 1 / together(signal)));
    check(orv_dft_commit(s->dft));
    s->seconds = time_forward(s);
    compare(s);
}

void release(struct spectrum* s)
{
    orv_dft_free(s->dft);
    free(s->value);
    free(s->of->value);
}

double amplitude(const struct spectrum* s, int column, int row)
{
    const double complex y = s->value[row * s->half + column];
    const int twice = column > 0 && 2 * column < s->of->width; /* the other half is its mirror image */
    return (twice ? 2 : 1) * cabs(y) / together(s->of);
}

double* filtered(const struct spectrum* s, double (*gain)(double f))
{
    const int height = s->of->height;
    double complex* spectrum = memory((long)s->half * height, sizeof *spectrum);
    double* signal = memory((long)s->of->width * height, sizeof *signal);
    for (int l = 0; l < height; ++l)
        for (int k = 0; k < s->half; ++k) {
            const double fy = (double)(2 * l <= height ? l : height - l) / height, fx = (double)k / s->of->width;
            spectrum[l * s->half + k] = gain(hypot(fx, fy)) * s->value[l * s->half + k];
        }
    check(orv_dft_backward(s->dft, spectrum, signal));
    free(spectrum);
    return signal;
}
