/* A rising tone in noise that is much louder, and the search for it. */
#include "convolve.h"

#include "examples/sound.h"
#include "examples/tools.h"

#include <stdlib.h>

static const double pi = 3.14159265358979323846;

/* From 0 to 1: the upper bits of a linear congruential generator. */
static double uniform(unsigned long* state)
{
    *state = *state * 6364136223846793005u + 1442695040888963407u;
    return (double)(*state >> 11) / 9007199254740992.0;
}

/* All but normal, of mean 0 and deviation 1. */
static double normal(unsigned long* state)
{
    double sum = -6;
    for (int i = 0; i < 12; ++i) sum += uniform(state);
    return sum;
}

/* It fades in and out; its mean square is 1. */
static void make_sound(double* sound)
{
    double squares = 0;
    for (int i = 0; i < sound_length; ++i) {
        const double fade = 0.5 - 0.5 * cos(2 * pi * i / sound_length);
        sound[i] = fade * rising_tone((double)i / rate, sweep_from, sweep_to, (double)sound_length / rate);
        squares += sound[i] * sound[i];
    }
    for (int i = 0; i < sound_length; ++i) sound[i] *= sqrt(sound_length / squares);
}

void search(unsigned long seed, struct search* s)
{
    const int64_t sound_shape = sound_length, recording_shape = recording_length;
    s->sound = memory(sound_length, sizeof(double));
    s->recording = memory(recording_length, sizeof(double));
    s->likeness = memory(lags, sizeof(double));
    make_sound(s->sound);
    s->hidden = (int)(uniform(&seed) * lags);
    for (int i = 0; i < recording_length; ++i) s->recording[i] = loudness * normal(&seed);
    for (int i = 0; i < sound_length; ++i) s->recording[s->hidden + i] += s->sound[i];

    s->race = compete(ORV_CONV_CORRELATION, 1, &sound_shape, s->sound, &recording_shape, s->recording, ORV_CONV_VALID,
                      s->likeness);
    s->found = 0;
    for (int i = 0; i < lags; ++i) {
        s->likeness[i] /= sound_length; /* what the sound gives with itself */
        if (s->likeness[i] > s->likeness[s->found]) s->found = i;
    }
    s->elsewhere = 0;
    for (int i = 0; i < lags; ++i)
        if (abs(i - s->found) > rate / 100) s->elsewhere = fmax(s->elsewhere, s->likeness[i]);
}
