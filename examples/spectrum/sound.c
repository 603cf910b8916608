/* A sound: a tone that rises all the time, and a softer one that comes and goes. */
#include "examples/sound.h"
#include "examples/tools.h"
#include "spectrum.h"

#include <math.h>

static const double pi = 3.14159265358979323846;

static double sound(double t)
{
    const double rising = rising_tone(t, sweep_from, sweep_to, sweep_seconds);
    return fmod(t, 0.5) < 0.25 ? rising : rising + 0.3 * sin(2 * pi * beep * t);
}

void make_sound(struct signal* frames)
{
    const int count = (sound_rate * sweep_seconds - frame_length) / frame_step + 1;
    *frames = (struct signal){.width = frame_length, .height = count, .alone = 1};
    frames->value = memory((long)count * frame_length, sizeof(double));
    for (int f = 0; f < count; ++f)
        for (int i = 0; i < frame_length; ++i) {
            const double fade = 0.5 - 0.5 * cos(2 * pi * i / frame_length); /* ends at 0, so that no edge is heard */
            frames->value[f * frame_length + i] = fade * sound((double)(f * frame_step + i) / sound_rate);
        }
}
