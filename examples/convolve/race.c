/* The same result by direct sums, by transforms, and as orv chooses. */
#include "convolve.h"

#include "examples/now.h"
#include "examples/tools.h"

#include <math.h>
#include <stdlib.h>

static long elements(int rank, const int64_t* shape)
{
    long product = 1;
    for (int d = 0; d < rank; ++d) product *= (long)shape[d];
    return product;
}

/* The fastest of at least 3 runs, and of more within a fiftieth of a second. */
static double time_route(orv_conv* conv, int route, const double* x, const double* y, double* z)
{
    const double end = worked() + 0.02;
    double best = HUGE_VAL;
    check(orv_conv_set(conv, ORV_CONV_ROUTE, route));
    for (int run = 0; run < 3 || worked() < end; ++run) {
        const double begin = worked();
        check(orv_conv_run(conv, x, y, z));
        best = fmin(best, worked() - begin);
    }
    return best;
}

struct race compete(int job, int rank, const int64_t* x_shape, const double* x, const int64_t* y_shape, const double* y,
                    int size, double* z)
{
    struct race r = {0};
    orv_conv* conv;
    int64_t shape[ORV_CONV_MAX_RANK], taken;
    check(orv_conv_create(&conv, 'd', job, rank, x_shape, y_shape));
    check(orv_conv_set(conv, ORV_CONV_SIZE, size));
    check(orv_conv_get_outputs(conv, shape, NULL));
    const long count = elements(rank, shape);
    double* direct = memory(count, sizeof *direct);
    r.direct = time_route(conv, ORV_CONV_DIRECT, x, y, direct);
    r.transform = time_route(conv, ORV_CONV_TRANSFORM, x, y, z);
    double largest = 0, difference = 0;
    for (long i = 0; i < count; ++i)
        largest = fmax(largest, fabs(direct[i])), difference = fmax(difference, fabs(z[i] - direct[i]));
    r.difference = largest > 0 ? difference / largest : difference;

    check(orv_conv_set(conv, ORV_CONV_ROUTE, ORV_CONV_AUTOMATIC));
    check(orv_conv_get(conv, ORV_CONV_ROUTE_TAKEN, &taken));
    check(orv_conv_run(conv, x, y, z));
    r.automatic = (int)taken;
    snprintf(r.kernel, sizeof r.kernel, "%s", orv_conv_kernel());
    free(direct);
    orv_conv_free(conv);
    return r;
}

const char* shape_words(const struct course* c, int i, const char* by, char words[40])
{
    if (c->rank == 1) snprintf(words, 40, "%d", c->size[i]);
    else snprintf(words, 40, "%d %s %d", c->size[i], by, c->size[i]);
    return words;
}

/* Where the lines cross, and how well automatic chose. */
static void sum_up(struct course* c)
{
    c->crossing = c->changes = c->count;
    while (c->crossing > 0 && c->race[c->crossing - 1].transform < c->race[c->crossing - 1].direct) --c->crossing;
    while (c->changes > 0 && c->race[c->changes - 1].automatic == ORV_CONV_TRANSFORM) --c->changes;
    c->dearest = 1, c->dearest_at = 0;
    for (int i = 0; i < c->count; ++i) {
        const struct race* r = &c->race[i];
        const double taken = r->automatic == ORV_CONV_DIRECT ? r->direct : r->transform;
        const double times = taken / fmin(r->direct, r->transform);
        if (times > c->dearest) c->dearest = times, c->dearest_at = i;
    }
}

/* The filters are parts of the signal: times do not depend on values. */
void compete_along(const double* signal, int length, struct course* c)
{
    static const int sizes[] = {1, 2, 3, 4, 6, 8, 11, 16, 23, 32, 45, 64, 91, 128, 181, 256, 362, 512, 1024, 2048};
    double* z = memory(length, sizeof *z);
    c->rank = 1, c->count = sizeof sizes / sizeof *sizes;
    for (int i = 0; i < c->count; ++i) {
        const int64_t size = c->size[i] = sizes[i], shape = length;
        c->race[i] = compete(ORV_CONV_CONVOLUTION, 1, &size, signal, &shape, signal, ORV_CONV_SAME, z);
    }
    sum_up(c);
    free(z);
}

void compete_across(const double* picture, int width, int height, struct course* c)
{
    static const int sizes[] = {1, 3, 5, 7, 9, 11, 13, 15, 19, 23, 31, 41, 51, 63};
    const int64_t shape[] = {width, height};
    double* z = memory((long)width * height, sizeof *z);
    c->rank = 2, c->count = 0;
    for (int i = 0; i < (int)(sizeof sizes / sizeof *sizes) && sizes[i] <= width && sizes[i] <= height; ++i) {
        const int64_t sides[] = {sizes[i], sizes[i]};
        c->size[i] = sizes[i];
        c->race[i] = compete(ORV_CONV_CONVOLUTION, 2, sides, picture, shape, picture, ORV_CONV_SAME, z);
        ++c->count;
    }
    sum_up(c);
    free(z);
}
