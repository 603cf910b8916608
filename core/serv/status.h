// Failures inside the core: each is recorded for the calling thread, none is printed.
#pragma once

#include "orv/status.h"

namespace orv::core {

// Records a failure of this thread with its sentence (printf-like) and returns the status.
[[gnu::format(printf, 2, 3)]] orv_status fail(orv_status status, const char* format, ...);

// Status of this thread's latest failure; ORV_OK if there was none.
orv_status last_status();

// Reports argument number `argument` (from 1) of a routine to the user's handler or the record; returns -argument.
orv_status bad_argument(const char* routine, int argument);

// The same with a sentence (printf-like) that says what is wrong with it.
[[gnu::format(printf, 3, 4)]] orv_status bad_argument(const char* routine, int argument, const char* format, ...);

} // namespace orv::core
