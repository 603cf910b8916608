// What the processor says about itself.
#pragma once

#include "frame/types.h"

namespace orv::core {

// What a branch of kernels may need.
enum Feature : unsigned {
    sse42 = 1 << 0, // SSE4.2 with everything below it, and the bit count that compilers take for part of it
    avx2 = 1 << 1,  // with fused operations, and an operating system that keeps the wide registers
};

struct Processor {
    char name[49]; // as the processor tells it
    char vendor[13];
    unsigned features; // of Feature
    bool bulldozer;    // AMD family 15h
    i32 l1d, l2, last; // cache sizes in bytes, 0 if unknown; last is the last level
};

const Processor& processor();

// How users know the first of some features, and the year since when usual processors have it.
struct FeatureName {
    const char* name;
    int since;
};
FeatureName name_of_first(unsigned features);

// How a processor is asked, so that others than this one can be understood, too.
struct Registers {
    unsigned a, b, c, d;
};
struct Answers {
    Registers (*cpuid)(unsigned leaf, unsigned subleaf); // all zeros if there is no such leaf
    unsigned (*kept_states)(); // of registers, by the operating system: XCR0; asked only if the processor has it
};
Processor understand(const Answers& answers);

} // namespace orv::core
