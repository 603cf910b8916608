// Commit: the problem is brought into a form of its own, then the node's methods are asked in turn.
#include "dft/commit.h"

namespace orv::dft {
namespace {

// Of a complex transform in place only the input's strides count, and the order of its dimensions does not. A real one
// keeps the order, for the first dimension carries the half spectrum.
i32 normalise(DftiNode* node)
{
    const bool complex = node->forward_domain == CFG_DOMAIN_COMPLEX;
    const i32 mode = complex && is_in_place(*node) ? strides_of_input : strides_kept;
    if (DFT(Iotensor_copy)(&node->work_lengths, &node->lengths, mode) != 0 ||
        DFT(Iotensor_copy)(&node->work_batch, &node->batch, mode) != 0)
        return node_no_memory;
    if (!complex) return node_ok;
    for (Iotensor* t : {&node->work_lengths, &node->work_batch}) {
        DFT(Iotensor_sort)(t);
        DFT(Iotensor_remove1)(t);
    }
    DFT(Iotensor_compress)(&node->work_batch);
    return node_ok;
}

void take_over(DftiNode* node)
{
    node->committed_forward_scale = node->forward_scale;
    node->committed_backward_scale = node->backward_scale;
    node->forward_scale_s = static_cast<float>(node->forward_scale);
    node->backward_scale_s = static_cast<float>(node->backward_scale);
    const IotensorDim first = node->work_lengths.dims[0];
    node->length = first.n, node->input_stride = first.is, node->output_stride = first.os;
    if (node->work_batch.rank > 0) {
        const IotensorDim batch = node->work_batch.dims[0];
        node->number_of_transforms = batch.n;
        node->input_distance = batch.is, node->output_distance = batch.os;
    }
    node->work_rank = node->work_lengths.rank;
    node->effective_threads = node->thread_limit != 0 ? node->thread_limit : max_threads(*node);
    node->dynamic_threads = static_cast<u32>(dynamic_threads(*node));
}

// A method that refuses leaves the node to the next one, whatever its reason, but for memory: what a later method says
// would hide that there was none.
i32 ask_methods(DftiNode* node)
{
    i32 status = node_not_this_method;
    for (const DftiMethod* const* m = node->bkdown_list; m != nullptr && *m != nullptr; ++m) {
        status = (*m)->commit(*m, node);
        if (status == node_ok || status == node_no_memory) return status;
    }
    return status == node_not_this_method ? i32{node_inconsistent} : status;
}

// What was in force before a commit that fails is not of these settings.
i32 ended(DftiNode* node, i32 status)
{
    if (status != node_ok) node->uncommit(node);
    return status;
}

} // namespace

i32 commit_child(DftiNode* node)
{
    take_over(node);
    return ended(node, ask_methods(node));
}

i32 commit(DftiNode* node)
{
    const i32 status = normalise(node);
    return status == node_ok ? commit_child(node) : ended(node, status);
}

} // namespace orv::dft
