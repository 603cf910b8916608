/* A picture, blurred, sharpened and shaken by weighted sums. */
#include "convolve.h"

#include "examples/tools.h"

#include <math.h>
#include <stdlib.h>

/* A bell whose weights add up to 1. */
static void bell(double width, double* weights)
{
    double sum = 0;
    for (int y = -radius; y <= radius; ++y)
        for (int x = -radius; x <= radius; ++x) sum += * weights++ = exp(-(x * x + y * y) / (2 * width * width));
    for (int i = 0; i < weights_side * weights_side; ++i) *--weights /= sum;
}

static void choose_weights(struct filters* f)
{
    enum { middle = radius * weights_side + radius };
    f->effect[0].name = "blurred";
    bell(3, f->effect[0].weights);

    f->effect[1].name = "sharpened";
    bell(1, f->effect[1].weights);
    for (int i = 0; i < weights_side * weights_side; ++i) f->effect[1].weights[i] *= -2;
    f->effect[1].weights[middle] += 3; /* the picture, and twice what a bell would take away */

    f->effect[2].name = "shaken";
    for (int i = -radius; i <= radius; ++i)
        f->effect[2].weights[middle + i * (weights_side - 1)] = 1.0 / weights_side; /* from upper right to lower left */
}

/* The picture, gone on with at all sides as it is at the edge. */
static double* extended(const struct filters* f, const int64_t shape[2])
{
    double* out = memory((long)(shape[0] * shape[1]), sizeof *out);
    for (int y = 0; y < shape[1]; ++y)
        for (int x = 0; x < shape[0]; ++x) {
            const int from_x = x < radius ? 0 : x - radius >= f->width ? f->width - 1 : x - radius;
            const int from_y = y < radius ? 0 : y - radius >= f->height ? f->height - 1 : y - radius;
            out[y * shape[0] + x] = f->picture[from_y * f->width + from_x];
        }
    return out;
}

void filter(struct filters* f)
{
    const int64_t side[] = {weights_side, weights_side}, shape[] = {f->width + 2 * radius, f->height + 2 * radius};
    double* picture = extended(f, shape);
    choose_weights(f);
    for (int e = 0; e < effects; ++e) {
        f->effect[e].result = memory((long)f->width * f->height, sizeof(double));
        f->race = compete(ORV_CONV_CONVOLUTION, 2, side, f->effect[e].weights, shape, picture, ORV_CONV_VALID,
                          f->effect[e].result);
    }
    free(picture);
}
