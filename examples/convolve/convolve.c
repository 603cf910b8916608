/* A sound found in noise by correlation, a picture filtered by convolution, and how long either route takes.

   usage: convolve PICTURE.pgm [PAGE.html [SEED]]    prints tables; with PAGE also draws it; SEED is of the noise */
#include "convolve.h"

#include "examples/tools.h"

#include <errno.h>
#include <orv/threads.h>
#include <stdlib.h>
#include <string.h>

static const char* route(int taken) { return taken == ORV_CONV_DIRECT ? "direct" : "transform"; }

static void print(const char* what, const struct race* r)
{
    printf("%-16s %10.3f %13.3f %11.1e  %-9s  %s\n", what, 1e3 * r->direct, 1e3 * r->transform, r->difference,
           route(r->automatic), r->kernel);
}

static void print_course(const struct course* c)
{
    char words[40];
    for (int i = 0; i < c->count; ++i) print(shape_words(c, i, "x", words), &c->race[i]);
}

int main(int count, char** words)
{
    struct search sound;
    struct filters filters;
    struct course along, across;
    if (count < 2 || count > 4) {
        fprintf(stderr, "usage: convolve PICTURE.pgm [PAGE.html [SEED]]\n");
        return 1;
    }
    read_picture(words[1], &filters.width, &filters.height, &filters.picture);
    check(orv_set_num_threads(1)); /* so that times are of the routes, not of how many threads share them */
    memset(filters.effect, 0, sizeof filters.effect);
    search(count == 4 ? strtoul(words[3], NULL, 10) : 1, &sound);
    filter(&filters);
    compete_along(sound.recording, recording_length, &along);
    compete_across(filters.picture, filters.width, filters.height, &across);

    printf("sound     %d values, hidden from value %d on among %d of noise %d times as loud\n", sound_length,
           sound.hidden, recording_length, loudness);
    printf("found     from value %d on: likeness %.2f, elsewhere at most %.2f\n", sound.found,
           sound.likeness[sound.found], sound.elsewhere);
    printf("picture   %d by %d pixels\n\n", filters.width, filters.height);
    printf("weights           direct ms  transform ms  difference  automatic  done by\n");
    print("the sound", &sound.race);
    print("of the picture", &filters.race);
    print_course(&along);
    print_course(&across);

    int failed = 0;
    if (count > 2) {
        const struct results results = {&sound, &filters, &along, &across};
        failed = write_page(words[2], &results) != 0;
        if (failed) fprintf(stderr, "convolve: %s: %s\n", words[2], strerror(errno));
    }
    for (int e = 0; e < effects; ++e) free(filters.effect[e].result);
    free(filters.picture), free(sound.sound), free(sound.recording), free(sound.likeness);
    return failed;
}
