// How a routine is found in a library and called: every argument of these interfaces is a pointer.
#pragma once

#include "bench/case.h"

#include <functional>

namespace orv::bench {

class Arena;

using Repeat = std::function<void(long calls)>;

// The case as a loop over calls of the library's routine, results going to the arena; empty if it has no such routine.
// The library has the standard Fortran interface, or is the core library, whose kernels are then called directly.
Repeat bind(const Case& c, void* handle, bool direct, const Arena& arena);

// The same for what bounds every library, see Limit.
Repeat bind_limit(const Case& c, const Arena& arena);

} // namespace orv::bench
