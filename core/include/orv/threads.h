/* How many threads a call may use. They come from OpenMP's pool; OMP_NUM_THREADS and its kin hold unless
   ORV_NUM_THREADS or a call below says otherwise, and orv never changes OpenMP's own settings.

   The first of these that is set decides: orv_set_thread_num_threads, orv_set_num_threads, ORV_NUM_THREADS, OpenMP.
   An ORV_NUM_THREADS that makes no sense counts as not set; orv_check() tells, and orv_last_error() after the first
   call. Small problems take one thread whatever is set; so do calls from inside a parallel region, and calls in a child
   process after fork. */
#ifndef ORV_THREADS_H
#define ORV_THREADS_H

#include <orv/status.h>

/* Threads for calls of the whole process; 0 goes back to the environment. -1 if threads is below 0 or above 1024. */
ORV_API orv_status orv_set_num_threads(int threads);

/* The same for calls from the calling thread only; 0 goes back to the number of the process. */
ORV_API orv_status orv_set_thread_num_threads(int threads);

/* Threads that a large call from here and now would use; at least 1. */
ORV_API int orv_get_num_threads(void);

#endif
