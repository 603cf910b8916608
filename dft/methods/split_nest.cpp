// Transforms of real and imaginary parts in two arrays that come down to simpler ones, each a node of its own: several
// batches to one that runs for every index of the last of them; several dimensions to one each, of which the first goes
// from input to output and the others follow in place.
#include "dft/methods/method.h"

namespace orv::dft {
namespace {

void* behind(const DftiNode& node, void* array, i64 elements)
{
    return static_cast<char*>(array) + elements * (node.precision == CFG_SINGLE ? 4 : 8);
}

// The arrays of a call; in place there are only the first two.
struct Parts {
    void *re, *im, *to_re, *to_im;
    Parts moved(const DftiNode& node, i64 in, i64 out) const
    {
        if (is_in_place(node)) return {behind(node, re, in), behind(node, im, in), nullptr, nullptr};
        return {behind(node, re, in), behind(node, im, in), behind(node, to_re, out), behind(node, to_im, out)};
    }
    Parts begun(const DftiNode& node) const { return moved(node, node.input_offset, node.output_offset); }
    // What comes next in place.
    Parts results() const { return to_re == nullptr ? *this : Parts{to_re, to_im, nullptr, nullptr}; }
};

template <bool forward> i32 run(DftiNode* child, const Parts& p)
{
    return (forward ? child->compute_forward : child->compute_backward)(child, p.re, p.im, p.to_re, p.to_im);
}

bool applies(const DftiNode& node) { return node.forward_domain == CFG_DOMAIN_COMPLEX && is_split_and_whole(node); }

i32 create_child(const DftiNode& node, i64 length, DftiNode** child)
{
    if (*child != nullptr) return node_ok;
    return DFT(dfti_create_node)(child, node.precision, CFG_DOMAIN_COMPLEX, 1, &length);
}
// Its tensors stand already.
i32 commit_child(const DftiNode& node, DftiNode* child, bool in_place, bool scaled)
{
    child->api = node.api;
    child->bkdown_list = node.bkdown_list;
    child->complex_storage = CFG_STORE_SPLIT;
    child->placement = in_place ? CFG_IN_PLACE : CFG_OUT_OF_PLACE;
    child->forward_scale = scaled ? node.committed_forward_scale : 1;
    child->backward_scale = scaled ? node.committed_backward_scale : 1;
    child->thread_limit = node.thread_limit;
    child->number_of_user_threads = node.number_of_user_threads;
    return child->methods->commit_child(child);
}

// ---- Several batches

struct Batches {
    IotensorDim outer;
    DftiNode* child;
    void release()
    {
        if (child != nullptr) child->destroy(child);
        *this = {};
    }
};

template <bool forward> i32 each_of_outer(DftiNode* node, void* re, void* im, void* to_re, void* to_im)
{
    const auto& state = *static_cast<const Batches*>(node->method_data);
    const Parts first = Parts{re, im, to_re, to_im}.begun(*node);
    i32 status = node_ok;
    for (i64 j = 0; j < state.outer.n && status == node_ok; ++j)
        status = run<forward>(state.child, first.moved(*node, j * state.outer.is, j * state.outer.os));
    return status;
}

i32 prepare(const DftiNode& node, Batches& state)
{
    if (const i32 status = create_child(node, node.work_lengths.dims[0].n, &state.child)) return status;
    DftiNode* const child = state.child;
    if (DFT(Iotensor_copy)(&child->work_lengths, &node.work_lengths, strides_kept) != 0 ||
        DFT(Iotensor_copy)(&child->work_batch, &node.work_batch, strides_kept) != 0)
        return node_no_memory;
    state.outer = child->work_batch.dims[--child->work_batch.rank];
    return commit_child(node, child, is_in_place(node), true);
}

// ---- Several dimensions

struct Dimensions {
    i32 rank;
    DftiNode** children;
    void release()
    {
        resize(0);
        orv::dft::release(children);
        *this = {};
    }
    // Children beyond the rank go; those that are new are still to be made.
    bool resize(i32 to)
    {
        for (i32 k = to; k < rank; ++k)
            if (children[k] != nullptr) children[k]->destroy(children[k]);
        if (to <= rank) return rank = to, true;
        auto** const more = static_cast<DftiNode**>(orv_serv_calloc(to, sizeof(DftiNode*), cache_line));
        if (more == nullptr) return false;
        for (i32 k = 0; k < rank; ++k) more[k] = children[k];
        orv::dft::release(children);
        children = more, rank = to;
        return true;
    }
};

template <bool forward> i32 each_dimension(DftiNode* node, void* re, void* im, void* to_re, void* to_im)
{
    const auto& state = *static_cast<const Dimensions*>(node->method_data);
    const Parts first = Parts{re, im, to_re, to_im}.begun(*node), rest = first.results();
    i32 status = node_ok;
    for (i32 k = 0; k < state.rank && status == node_ok; ++k)
        status = run<forward>(state.children[k], k == 0 ? first : rest);
    return status;
}

// All other dimensions are batches of dimension k. Behind the first one, both sides are the output.
i32 set_tensors(const DftiNode& node, i32 k, DftiNode* child)
{
    Iotensor &length = child->work_lengths, &batch = child->work_batch;
    if (DFT(Iotensor_join)(&batch, &node.work_lengths, &node.work_batch) != 0) return node_no_memory;
    length.dims[0] = batch.dims[k];
    batch.dims[k].n = 1;
    if (k > 0) {
        length.dims[0].is = length.dims[0].os;
        for (i32 d = 0; d < batch.rank; ++d) batch.dims[d].is = batch.dims[d].os;
    }
    DFT(Iotensor_remove1)(&batch);
    DFT(Iotensor_sort)(&batch);
    DFT(Iotensor_compress)(&batch);
    return node_ok;
}

i32 prepare(const DftiNode& node, Dimensions& state)
{
    if (!state.resize(node.work_rank)) return node_no_memory;
    for (i32 k = 0; k < state.rank; ++k) {
        DftiNode*& child = state.children[k];
        if (const i32 status = create_child(node, node.work_lengths.dims[k].n, &child)) return status;
        if (const i32 status = set_tensors(node, k, child)) return status;
        if (const i32 status = commit_child(node, child, k > 0 || is_in_place(node), k == 0)) return status;
    }
    return node_ok;
}

template <class State> i32 commit(const DftiMethod* method, DftiNode* node, DftiCompute* forward, DftiCompute* backward)
{
    take(method, node);
    auto* const state = state_of<State>(node);
    const i32 status = state == nullptr ? i32{node_no_memory} : prepare(*node, *state);
    if (status != node_ok) return give_up(node, status);
    finish(node, forward, backward);
    return node_ok;
}
i32 commit_batches(const DftiMethod* method, DftiNode* node)
{
    if (!applies(*node) || node->work_rank != 1 || node->work_batch.rank < 2) return node_not_this_method;
    return commit<Batches>(method, node, each_of_outer<true>, each_of_outer<false>);
}
i32 commit_dimensions(const DftiMethod* method, DftiNode* node)
{
    if (!applies(*node) || node->work_rank == 1) return node_not_this_method;
    return commit<Dimensions>(method, node, each_dimension<true>, each_dimension<false>);
}

} // namespace

ORV_EXPORT constinit const DftiMethod DFT(bkd_as2s_1_m){commit_batches, detach<Batches>};
ORV_EXPORT constinit const DftiMethod DFT(bkd_as2s_n_m){commit_dimensions, detach<Dimensions>};

} // namespace orv::dft
