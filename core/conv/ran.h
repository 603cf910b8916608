// What the calling thread's latest run took, and how runs fail.
#pragma once

#include "core/branch/loader.h"
#include "core/conv/record.h"

namespace orv::core::conv {

void remember(KernelName kernel, int threads);
void remember(const char* method, int threads); // of transforms

inline orv_status no_memory() { return fail(ORV_NO_MEMORY, "no memory is left for a convolution's work arrays"); }

} // namespace orv::core::conv
