// Nodes, which kernels work by, from the settings of a transform.
#pragma once

#include "core/dft/descriptor.h"

namespace orv::core::dft {

// Makes and commits what the settings need. On failure there are none, and the reason is recorded.
orv_status make_nodes(orv_dft& dft);
void drop_nodes(orv_dft& dft);

// A node by its creator, with the services lent to it; a NodeStatus, or no_kernel with the reason recorded.
constexpr i32 no_kernel = -1;
i32 create_node(DftiNode** node, int precision, int domain, int rank, const i64* lengths);

int threads_used(const orv_dft& dft);

// The transform of a checked and committed orv_dft: two arrays for each side, the second null but for split ones.
struct Arrays {
    void *first, *second;
};
orv_status compute(const orv_dft& dft, Direction direction, Arrays from, Arrays to);

} // namespace orv::core::dft
