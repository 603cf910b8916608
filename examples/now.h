/* The time, for differences. */
#ifndef NOW_H
#define NOW_H

#include <time.h>

/* In seconds. */
static inline double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + 1e-9 * (double)time.tv_nsec;
}

#endif
