// What the core lends to Fourier kernels: threads, and what it knows of the machine.
#pragma once

#include "frame/kernels/dft_node.h"

namespace orv::core::dft {

// Fills what is empty in the table that all nodes of the branch share. A program may have put services of its own
// there.
void lend(kernels::dft::DftiServices* services);

} // namespace orv::core::dft
