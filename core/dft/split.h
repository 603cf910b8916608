// Spectra of reals in two arrays.
#pragma once

#include "core/dft/nodes.h"

namespace orv::core::dft {

// Runs a transform whose spectrum is to be in two arrays through an interleaved one in work memory; what kernels
// return, node_no_memory if there is none.
i32 compute_staged(const orv_dft& dft, Direction direction, kernels::dft::DftiCompute* run, Arrays from, Arrays to);

} // namespace orv::core::dft
