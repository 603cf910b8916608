// The general path of complex transforms: each dimension gets a kernel of few points, plans for batches of columns, one
// dimension as two, or the engine.
#include "dft/chain.h"
#include "dft/compute/column_plan.h"

#include <cstdlib>

namespace orv::dft {
namespace {

// The order from which one dimension always goes as two, if it may: 0 forbids it.
i64 order_via_2d()
{
    const char* const text = std::getenv("DFTI_WORKSPACE_ORDER");
    return text != nullptr ? std::atol(text) : 32;
}

template <class R> bool goes_via_2d(const DftiNode& node, const DftiNode& head)
{
    constexpr i64 least_order = 16;
    if (!is_ordered(node) || node.complex_storage != CFG_STORE_COMPLEX || head.work_rank != 1 ||
        !has_unit_strides(head) || node.length_order < least_order)
        return false;
    const i64 order = order_via_2d();
    return order > 0 &&
           (node.length > engine_limit<R>(node.length) || node.length_order >= order || node.workspace == CFG_AVOID);
}

template <class R> i32 choose(DftiNode* node, DftiNode* head)
{
    using P = Precision<R>;
    using N = Parts<R>;
    if (node->complex_storage == CFG_STORE_SPLIT) {
        node->*P::forward = N::split_forward, node->*P::backward = N::split_backward;
        node->use_engine = 1;
        return N::init_split(node, head);
    }
    if (goes_via_2d<R>(*node, *head) && N::init_via_2d(node, head) == node_ok) {
        node->*P::forward = N::via_2d_forward, node->*P::backward = N::via_2d_backward;
        node->use_engine = 1;
        if (node->number_of_transforms == 1) node->flags |= DftiNode::via_2d_single;
        return node_ok;
    }
    if (!is_power_of_two(node->length))
        if (const i32 status = plan_batches<R>(node, head)) return give_up(head, status);
    return choose_engine<R>(node, head);
}

template <class R> void install_planes(DftiNode* head)
{
    if (is_in_place(*head)) head->kernel_2d_forward = head->kernel_2d_backward = Parts<R>::in_plane;
    else head->kernel_2d_forward_out = head->kernel_2d_backward_out = Parts<R>::in_plane_out;
}

template <class R> i32 commit(DftiNode* head, const Variant& variant)
{
    variant.define_threads(head, head->dynamic_threads);
    if (head->work_rank == 2) install_planes<R>(head);
    // One threaded transform of one dimension needs no chain.
    const bool threaded = head->work_rank == 1 && head->number_of_transforms == 1 && head->effective_threads > 1;
    if (!threaded)
        if (const i32 status = for_each_node(head, [=](DftiNode* node) { return choose<R>(node, head); }))
            return status;
    return finish(head, variant);
}

} // namespace

template <class R> i32 choose_engine(DftiNode* node, DftiNode* head)
{
    using P = Precision<R>;
    using N = Parts<R>;
    const i64 n = node->length;
    if constexpr (sizeof(R) == 4)
        if ((n == 2 || n == 4) && has_unit_strides(*head)) {
            node->use_engine = 0;
            DFT(set_codelet_cf)(node), DFT(set_codelet_cb)(node);
            return node_ok;
        }
    node->use_engine = 1;
    const bool ordered = is_ordered(*node);
    node->*P::forward = ordered ? N::forward : N::forward_out_of_order;
    node->*P::backward = ordered ? N::backward : N::backward_out_of_order;
    if constexpr (sizeof(R) == 8)
        if (ordered && n >= 2 && n <= 64 && !is_power_of_two(n)) {
            node->*P::forward = DFT(zsmallradix_forward)[n - 2];
            node->*P::backward = DFT(zsmallradix_inverse)[n - 2];
        }
    // Beside other kernels, too: the chain takes its bytes from there.
    if (const i32 status = N::init_complex(node, head)) return status;
    if (!ordered || node->method != nullptr) return node_ok;
    const i32 status = plan_columns<R>(node);
    return status == node_ok ? status : give_up(head, status);
}
template i32 choose_engine<float>(DftiNode* node, DftiNode* head);
template i32 choose_engine<double>(DftiNode* node, DftiNode* head);

namespace {

template <const Variant& variant, class R> i32 commit_variant(DftiNode* head) { return commit<R>(head, variant); }

ORV_DFT_VARIANTS(d, c2c)
ORV_DFT_VARIANTS(s, c2c)

} // namespace

PRIMITIVE(1, commit_descriptor_core_d_c2c_1d, commit_variant<d_c2c_1d, double>)
PRIMITIVE(1, commit_descriptor_core_d_c2c_md, commit_variant<d_c2c_md, double>)
PRIMITIVE(1, commit_descriptor_core_s_c2c_1d, commit_variant<s_c2c_1d, float>)
PRIMITIVE(1, commit_descriptor_core_s_c2c_md, commit_variant<s_c2c_md, float>)

} // namespace orv::dft
