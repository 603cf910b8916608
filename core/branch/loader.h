// The branch: opened at its first use, after the processor test.
#pragma once

#include "orv/status.h"

namespace orv::core {

// ORV_OK if the branch is open, opening it if need be; else the reason, recorded for this thread.
orv_status open_branch();

// Address of a symbol of the branch, or null with the reason recorded for this thread.
void* branch_symbol(const char* name);

} // namespace orv::core
