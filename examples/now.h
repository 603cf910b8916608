/* The time in seconds, for differences. */
#ifndef NOW_H
#define NOW_H

#include <time.h>

static inline double on_clock(clockid_t clock)
{
    struct timespec time;
    clock_gettime(clock, &time);
    return (double)time.tv_sec + 1e-9 * (double)time.tv_nsec;
}

static inline double now(void) { return on_clock(CLOCK_MONOTONIC); }

/* What this thread has had of a processor: the same on a machine with nothing else to do, and more even on others. */
static inline double worked(void) { return on_clock(CLOCK_THREAD_CPUTIME_ID); }

#endif
