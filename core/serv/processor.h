// What the processor says about itself.
#pragma once

#include "frame/types.h"

namespace orv::core {

struct Processor {
    char name[49]; // as the processor tells it
    char vendor[13];
    bool sse42;        // SSE4.2 with everything below it, and the bit count that compilers take for part of it
    bool bulldozer;    // AMD family 15h
    i32 l1d, l2, last; // cache sizes in bytes, 0 if unknown; last is the last level
};

const Processor& processor();

} // namespace orv::core
