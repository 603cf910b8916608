// The symbol grammar: orv_<module>_<tag>_<name>. The tag comes from the build (frame/branch.h.in); no kernel knows it.
#pragma once

#include "frame/branch.h"
#include "frame/export.h"

#define ORV_KERNEL(module, name) ORV_KERNEL_OF(module, ORV_BRANCH_TAG, name)
#define ORV_KERNEL_OF(module, tag, name) ORV_KERNEL_OF_(module, tag, name)
#define ORV_KERNEL_OF_(module, tag, name) orv_##module##_##tag##_##name

// A module's own macro stands in its header of prototypes, frame/kernels/: BLAS(xdaxpy), for the reader to grep.

// Tables that a caller may look up carry the branch tag but no module.
#define ORV_TABLE(name) ORV_TABLE_OF(ORV_BRANCH_TAG, name)
#define ORV_TABLE_OF(tag, name) ORV_TABLE_OF_(tag, name)
#define ORV_TABLE_OF_(tag, name) orv_##tag##_##name

// What carries no tag is exported under its own name: ORV_EXPORT int dll_cpu_version().
