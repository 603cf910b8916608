/* What orv found out about the processor. */
#ifndef ORV_PROCESSOR_H
#define ORV_PROCESSOR_H

#include <orv/api.h>

typedef struct {
    const char* name;  /* as the processor tells it */
    int has_sse42;     /* 1 if it can run the kernels */
    int l1_data_cache; /* bytes; 0 if unknown */
    int l2_cache;
    int last_cache; /* the last level; at most 2^31 - 1 */
} orv_processor;

ORV_API void orv_get_processor(orv_processor* processor);

#endif
