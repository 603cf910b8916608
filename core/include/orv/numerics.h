/* What decides the bits of a result. */
#ifndef ORV_NUMERICS_H
#define ORV_NUMERICS_H

#include <orv/api.h>

/* With a nonzero argument the routines that have a form with a fixed order of operations take it, so that a result
   depends neither on how the operands are aligned in memory nor on the number of threads; it may take longer. 0 leaves
   the choice to the routines. At first ORV_REPRODUCIBLE, by default 0. One state serves the process; thread-safe. */
ORV_API void orv_set_reproducible(int on);
ORV_API int orv_get_reproducible(void);

#endif
