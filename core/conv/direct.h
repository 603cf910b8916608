// The route of direct sums, by the kernels for it.
#pragma once

#include "core/conv/record.h"

namespace orv::core::conv {

orv_status run_direct(const Problem& problem, const Operands& operands);

// Products of all outputs together.
double products_of(const Problem& problem);

} // namespace orv::core::conv
