/* Spectra of a series, of a sound and of a picture: one dimension, many times one, and two; forward, filtered, back.

   usage: spectrum SERIES.csv PICTURE.pgm [PAGE.html]    prints the table; with PAGE also draws it */
#include "spectrum.h"

#include "examples/tools.h"

#include <errno.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const double pi = 3.14159265358979323846;
static const double blur_width = 3; /* standard deviation of the bell that each pixel becomes */

double slow(double f) { return f * slow_years < 1; }
double blur(double f) { return exp(-2 * pow(pi * blur_width * f, 2)); }
double sharpen(double f) { return 2 - blur(f); } /* adds what blurring would take away */

static void print(const char* what, const struct spectrum* s)
{
    printf("%-16s %10.2f %14.1f %11.1e %15.1e  %s\n", what, 1e6 * s->seconds, 1e6 * s->plain_seconds, s->difference,
           s->there_and_back, orv_dft_method(s->dft));
}

int main(int count, char** words)
{
    struct signal sunspots, sound, picture = {0};
    struct spectrum years, frames, pixels;
    if (count < 3 || count > 4) {
        fprintf(stderr, "usage: spectrum SERIES.csv PICTURE.pgm [PAGE.html]\n");
        return 1;
    }
    read_series(words[1], &sunspots);
    read_picture(words[2], &picture.width, &picture.height, &picture.value);
    make_sound(&sound);
    transform(&sunspots, &years);
    transform(&sound, &frames);
    transform(&picture, &pixels);

    int peak = 1;
    for (int k = 1; k < years.half; ++k)
        if (amplitude(&years, k, 0) > amplitude(&years, peak, 0)) peak = k;
    const double mean = amplitude(&years, 0, 0);
    printf("series    %d years from %.0f on, %.1f on average\n", sunspots.width, sunspots.first, mean);
    printf("peak      a wave of %.2f years, up and down by %.1f\n", (double)sunspots.width / peak,
           amplitude(&years, peak, 0));
    printf("picture   %d by %d pixels\n\n", picture.width, picture.height);
    printf("real transform           us  plain sums us  difference  there and back  method\n");
    char name[3][40];
    snprintf(name[0], sizeof name[0], "%d", sunspots.width);
    snprintf(name[1], sizeof name[1], "%d of %d", sound.height, sound.width);
    snprintf(name[2], sizeof name[2], "%d x %d", picture.width, picture.height);
    print(name[0], &years);
    print(name[1], &frames);
    print(name[2], &pixels);

    int failed = 0;
    if (count == 4) {
        double *slow_part = filtered(&years, slow), *blurred = filtered(&pixels, blur),
               *sharpened = filtered(&pixels, sharpen);
        const struct results results = {.sunspots = &sunspots,
                                        .picture = &picture,
                                        .years = &years,
                                        .frames = &frames,
                                        .pixels = &pixels,
                                        .peak = peak,
                                        .mean = mean,
                                        .slow = slow_part,
                                        .blurred = blurred,
                                        .sharpened = sharpened};
        failed = write_page(words[3], &results) != 0;
        if (failed) fprintf(stderr, "spectrum: %s: %s\n", words[3], strerror(errno));
        free(slow_part), free(blurred), free(sharpened);
    }
    release(&years), release(&frames), release(&pixels);
    return failed;
}
