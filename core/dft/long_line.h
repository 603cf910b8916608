// One long line of complex numbers on a team. A single transform of one dimension is one thread's work to the kernels,
// but their way of one dimension as two goes by columns, and those can be cut among threads.
#pragma once

#include "core/dft/descriptor.h"

namespace orv::core::dft {

// Threads for the line that the settings describe; 1 if it is none, or not long enough. Where there are more, its node
// is to be made for little work memory, which is how kernels are asked for two dimensions.
int line_threads(const Settings& s);

// Whether a committed node goes that way.
bool is_in_two_dimensions(const kernels::dft::DftiNode& node);

// The transform, a NodeStatus. The result is the same for any number of threads, but in its last bits not that of the
// kernels alone.
i32 compute_line(const orv_dft& dft, Direction direction, const void* from, void* to);

// Work memory that it takes.
i64 line_bytes(const orv_dft& dft);

} // namespace orv::core::dft
