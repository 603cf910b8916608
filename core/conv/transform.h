// The route through transforms: those of x once, those of each piece of the outputs forward and backward.
#pragma once

#include "core/conv/cut.h"
#include "orv/dft.h"

namespace orv::core::conv {

// A committed transform for the pieces of a problem. An orv_conv keeps the one that its first run made.
struct Plan {
    Cut cut;
    orv_dft* transform;
    char method[160]; // as orv_dft_method tells it
};
void drop(const Plan* plan); // null is allowed

// keeper: where to keep a plan, or to find it; null where there is no such place.
orv_status run_transforms(const Problem& problem, const Operands& operands, Keeper* keeper);

} // namespace orv::core::conv
