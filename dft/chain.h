// What commits of a chain of nodes share, one node for each dimension: by precision, and for both domains.
#pragma once

#include "dft/node.h"
#include "frame/kernels/dft_batch.h"
#include "frame/kernels/dft_compute.h"

namespace orv::dft {

// What is installed in nodes of a precision.
template <class R> struct Parts;
#define ORV_DFT_PARTS(R, d, z, dz, zd, t, tc)                                                                          \
    template <> struct Parts<R> {                                                                                      \
        static constexpr auto& forward = DFT(xymps_fwd_##tc);                                                          \
        static constexpr auto& backward = DFT(xymps_inv_##tc);                                                         \
        static constexpr auto& forward_out_of_order = DFT(xymps_fwd_rev_##tc);                                         \
        static constexpr auto& backward_out_of_order = DFT(xymps_inv_rev_##tc);                                        \
        static constexpr auto& split_forward = DFT(xymps_fwd_##t);                                                     \
        static constexpr auto& split_backward = DFT(xymps_inv_##t);                                                    \
        static constexpr auto& real_forward = DFT(xymps_fwd_rtocomplex_##t);                                           \
        static constexpr auto& real_backward = DFT(xymps_inv_complextor_##t);                                          \
        static constexpr auto& init_complex = DFT(ymp_init_##d##_c2c);                                                 \
        static constexpr auto& init_split = DFT(ymp_init_##d##_ri2ri);                                                 \
        static constexpr auto& init_real = DFT(z##_ymp_real_init);                                                     \
        static constexpr auto& set_real_forward = DFT(set_codelet_##d##f);                                             \
        static constexpr auto& set_real_backward = DFT(set_codelet_##d##b);                                            \
        static constexpr auto& in_plane = DFT(x##z##dft2d);                                                            \
        static constexpr auto& in_plane_out = DFT(x##z##dft2d_out);                                                    \
        static constexpr auto& real_plane_forward = DFT(x##dz##dft2d);                                                 \
        static constexpr auto& real_plane_backward = DFT(x##zd##dft2d);                                                \
        static constexpr auto& half_plane_forward = DFT(x##d##z##z##dft2d);                                            \
        static constexpr auto& half_plane_backward = DFT(x##z##zd##dft2d);                                             \
        static constexpr auto& init_via_2d = DFT(x##z##_init_data_1d_via_2d);                                          \
        static constexpr auto& via_2d_forward = DFT(x##z##_1d_via_2d_f);                                               \
        static constexpr auto& via_2d_backward = DFT(x##z##_1d_via_2d_b);                                              \
    };
ORV_DFT_PRECISIONS(ORV_DFT_PARTS)
#undef ORV_DFT_PARTS

// What ends a commit: by direction and placement.
struct Entries {
    DftiCompute *forward_in_place, *backward_in_place, *forward, *backward;
};
// What the general path of a kind of transform has of its own; more dimensions may turn out to be one.
struct Variant {
    Entries one_dimension, md;
    ThreadedModeDefinition* define_threads;
};
#define ORV_DFT_ENTRIES(p, d, r)                                                                                       \
    {                                                                                                                  \
        DFT(compute_fwd_##p##_##d##_##r##_i), DFT(compute_bwd_##p##_##d##_##r##_i),                                    \
            DFT(compute_fwd_##p##_##d##_##r##_o), DFT(compute_bwd_##p##_##d##_##r##_o)                                 \
    }
#define ORV_DFT_VARIANT(p, d, r)                                                                                       \
    constexpr Variant p##_##d##_##r{ORV_DFT_ENTRIES(p, d, 1d), ORV_DFT_ENTRIES(p, d, md),                              \
                                    DFT(threaded_mode_definition_##p##_##d##_##r)};
#define ORV_DFT_VARIANTS(p, d) ORV_DFT_VARIANT(p, d, 1d) ORV_DFT_VARIANT(p, d, md)

// What every node has of the first one.
inline void copy_settings(const DftiNode& head, DftiNode& node, i64 index)
{
    node.input_offset = head.input_offset, node.output_offset = head.output_offset;
    node.input_distance = head.input_distance, node.output_distance = head.output_distance;
    node.thread_hint = head.thread_hint, node.chain_hint = head.chain_hint;
    node.precision = head.precision, node.forward_domain = head.forward_domain;
    node.complex_storage = head.complex_storage, node.real_storage = head.real_storage;
    node.conjugate_even_storage = head.conjugate_even_storage, node.packed_format = head.packed_format;
    node.placement = head.placement, node.workspace = head.workspace, node.ordering = head.ordering;
    node.number_of_transforms = head.number_of_transforms;
    node.alignment_hint = head.alignment_hint;
    node.dimension_index = index;
    node.threaded_forward_s = node.threaded_backward_s = nullptr;
    node.threaded_forward_d = node.threaded_backward_d = nullptr;
}

// choose(node): what a node of the chain runs; its status ends the walk.
template <class Choose> i32 for_each_node(DftiNode* head, Choose choose)
{
    i64 index = 0;
    for (DftiNode* node = head; node != nullptr; node = node->next, ++index) {
        copy_settings(*head, *node, index);
        if (const i32 status = choose(node)) return status;
        head->max_buffer_bytes = max(head->max_buffer_bytes, node->node_buffer_bytes);
        node->commit_status = CFG_COMMITTED;
    }
    return node_ok;
}

inline i32 finish(DftiNode* head, const Variant& variant)
{
    const Entries& e = head->work_rank == 1 ? variant.one_dimension : variant.md;
    if (is_in_place(*head)) finish(head, e.forward_in_place, e.backward_in_place);
    else finish(head, e.forward, e.backward);
    return node_ok;
}

inline bool has_unit_strides(const DftiNode& head) { return head.input_stride == 1 && head.output_stride == 1; }

// A dimension of complex numbers by the engine or by a kernel of few points.
template <class R> i32 choose_engine(DftiNode* node, DftiNode* head);

// Plans for batches of columns along a node, where they apply and are worth their memory.
template <class R> i32 plan_batches(DftiNode* node, const DftiNode* head);

} // namespace orv::dft
