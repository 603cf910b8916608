// The older form of a transform: one block of records, one for each dimension.
#include "dft/commit.h"

namespace orv::dft {
namespace {

constexpr i32 most_real_dimensions = 3;

i32 create(DftiNode** out, u32 precision, u32 domain, i32 rank, const i64* lengths)
{
    if (out == nullptr) return node_inconsistent;
    if (!are_lengths(rank, lengths)) return node_bad_length;
    auto* const nodes = static_cast<DftiNode*>(orv_serv_calloc(rank, sizeof(DftiNode), 16));
    if (nodes == nullptr) return node_no_memory;
    i64 below = 1;
    for (i32 k = 0; k < rank; ++k) {
        DftiNode& node = nodes[k];
        set_defaults(node);
        node.precision = precision, node.forward_domain = domain;
        node.user_rank = rank;
        node.dimension_index = k;
        node.length = lengths[k];
        node.input_stride = node.output_stride = below;
        node.committed_forward_scale = node.committed_backward_scale = 1;
        node.forward_scale_s = node.backward_scale_s = 1;
        node.prev = k > 0 ? &nodes[k - 1] : nullptr;
        node.next = k + 1 < rank ? &nodes[k + 1] : nullptr;
        below *= lengths[k];
    }
    nodes->total_half_size = lengths[0] / 2 + 1;
    if (domain == CFG_DOMAIN_REAL && rank > most_real_dimensions) return orv_serv_free(nodes), node_unsupported;
    *out = nodes;
    return node_ok;
}

i32 number_of_arguments(const DftiNode* node) { return static_cast<i32>(pointers_of(*node)); }

} // namespace

PRIMITIVE(5, create_descriptor_md, create)
PRIMITIVE(1, determine_nioargs, number_of_arguments)

} // namespace orv::dft
