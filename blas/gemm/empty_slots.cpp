// Slots of the dispatcher that this branch needs nothing for: the symbols exist, the bodies are empty.
#include "frame/symbol.h"

#define SLOT(name)                                                                                                     \
    ORV_EXPORT void BLAS(name)() {}

#define SLOTS(t)                                                                                                       \
    SLOT(t##gemm_initialize_kernel_info)                                                                               \
    SLOT(t##gemm_initialize_buffers)                                                                                   \
    SLOT(t##gemm_map_thread_to_kernel)                                                                                 \
    SLOT(x##t##gemm_internal)

SLOTS(s)
SLOTS(d)
SLOTS(c)
SLOTS(z)
SLOT(sgemm_getbufs)
SLOT(sgemm_freebufs)
SLOT(dgemm_getbufs)
SLOT(dgemm_freebufs)
