/* Sounds that examples make. */
#ifndef SOUND_H
#define SOUND_H

#include <math.h>

/* At time t, a tone that rises evenly from one frequency to another within some seconds: its turns are the integral of
   its frequency. */
static inline double rising_tone(double t, double from, double to, double seconds)
{
    return sin(2 * 3.14159265358979323846 * (from + (to - from) / seconds * t / 2) * t);
}

#endif
