// The branch: opened at its first use, after the processor test.
#pragma once

#include "orv/status.h"

namespace orv::core {

// ORV_OK if the branch is open, opening it if need be; else the reason, recorded for this thread.
orv_status open_branch();

// Address of a symbol of the branch, or null with the reason recorded for this thread.
void* branch_symbol(const char* name);

// A kernel by its module and its name within it; the tag between them in the symbol is that of the branch which is
// open.
struct KernelName {
    const char *module, *stem;
};
void* branch_kernel(KernelName name);

} // namespace orv::core
