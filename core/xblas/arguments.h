// What the public routines of extended precision call a bad argument.
#pragma once

#include "frame/types.h"

namespace orv::core::extended {

// The number of the first bad argument, counted from 1; 0 if all are good. signature: the arguments' names, separated
// by blanks; numbers: their values, where they are whole numbers or options.
int bad_argument(const char* signature, const i64* numbers, int count);

} // namespace orv::core::extended
