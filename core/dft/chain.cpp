// The end of a commit that no method took: the node gets one more for each dimension above the first, chained to it,
// and the kernels choose for each of them. The chain is one block and the core's. Kernels let go of it through the node
// in `next`, also when they give up halfway, so what is let go of is marked, and the block goes when all of it is.
#include "core/branch/kernel.h"
#include "frame/export.h"
#include "frame/kernels/dft_node.h"
#include "frame/serv.h"

#include <bit>

using namespace orv;
using namespace orv::core;
using namespace orv::kernels::dft;

namespace {

struct Chain {
    i64 count;
    bool building; // the block has to outlive its nodes
    DftiNode* nodes() { return reinterpret_cast<DftiNode*>(this + 1); }
};
static_assert(sizeof(Chain) % alignof(DftiNode) == 0);

Chain* chain_of(DftiNode* node) { return reinterpret_cast<Chain*>(node - (node->dimension_index - 1)) - 1; }

// `destroy` of a chained node: its tables, and by them the nodes behind it.
void let_go(DftiNode* node)
{
    node->uncommit(node);
    node->magic = 0;
    Chain* const chain = chain_of(node);
    if (node->dimension_index == 1 && !chain->building) orv_serv_free(chain);
}

void give_dimension(DftiNode* node, const DftiNode* head, i64 index)
{
    const IotensorDim& d = head->work_lengths.dims[index];
    node->dimension_index = index;
    node->length = d.n;
    node->length_order = std::bit_width(static_cast<u64>(d.n) - 1);
    node->input_stride = d.is;
    node->output_stride = d.os;
}

// What a node of its own would have from its creator. The scale is the first dimension's.
void take_after(DftiNode* node, const DftiNode* head)
{
    node->magic = DftiNode::magic_word;
    node->commit_status = CFG_UNCOMMITTED;
    node->user_rank = head->user_rank, node->work_rank = head->work_rank;
    node->methods = head->methods, node->api = head->api;
    node->uncommit = head->uncommit, node->destroy = let_go;
    node->precision = head->precision, node->forward_domain = head->forward_domain;
    node->committed_forward_scale = node->committed_backward_scale = 1;
    node->forward_scale_s = node->backward_scale_s = 1;
    node->forward_scale = node->backward_scale = 1;
    node->number_of_user_threads = head->number_of_user_threads;
    node->effective_threads = head->effective_threads, node->thread_limit = head->thread_limit;
    node->dynamic_threads = head->dynamic_threads;
}

void count_elements(DftiNode* head)
{
    i64 above_first = 1;
    for (int k = 1; k < head->work_rank; ++k) above_first *= head->work_lengths.dims[k].n;
    const i64 n = head->work_lengths.dims[0].n;
    head->total_size = n * above_first;
    head->total_half_size = (n / 2 + 1) * above_first;
}

Chain* make_chain(const DftiNode* head)
{
    const i64 count = head->work_rank - 1;
    const i64 bytes = static_cast<i64>(sizeof(Chain)) + count * static_cast<i64>(sizeof(DftiNode));
    auto* const chain = static_cast<Chain*>(orv_serv_calloc(1, bytes, 16));
    if (chain == nullptr) return nullptr;
    chain->count = count, chain->building = true;
    DftiNode* const nodes = chain->nodes();
    for (i64 k = 0; k < count; ++k) {
        take_after(&nodes[k], head);
        give_dimension(&nodes[k], head, k + 1);
        nodes[k].total_size = head->total_size, nodes[k].total_half_size = head->total_half_size;
        if (k > 0) nodes[k].prev = &nodes[k - 1], nodes[k - 1].next = &nodes[k];
    }
    return chain;
}

void break_up(Chain* chain)
{
    DftiNode* const nodes = chain->nodes();
    for (i64 k = 0; k < chain->count; ++k)
        if (nodes[k].magic != 0) let_go(&nodes[k]);
    orv_serv_free(chain);
}

i32 commit(DftiNode* head, Kernel<CommitCore>& core)
{
    CommitCore* const choose = core.get();
    if (choose == nullptr) return node_internal_error;
    head->uncommit(head); // what an earlier commit left
    give_dimension(head, head, 0);
    count_elements(head);
    if (head->work_rank == 1) return choose(head);

    Chain* const chain = make_chain(head);
    if (chain == nullptr) return node_no_memory;
    head->next = chain->nodes();
    head->next->prev = head;
    const i32 status = choose(head);
    if (status == node_ok) {
        chain->building = false;
    } else {
        head->next = nullptr;
        break_up(chain);
        head->uncommit(head);
    }
    return status;
}

} // namespace

#define COMMIT(variant)                                                                                                \
    ORV_EXPORT i32 orv_dft_commit_node_##variant##_omp(DftiNode* head)                                                 \
    {                                                                                                                  \
        static constinit Kernel core{kernels::dft::commit_descriptor_core_##variant()};                                \
        return commit(head, core);                                                                                     \
    }
COMMIT(d_c2c_1d)
COMMIT(d_c2c_md)
COMMIT(d_r2c_1d)
COMMIT(d_r2c_md)
COMMIT(s_c2c_1d)
COMMIT(s_c2c_md)
COMMIT(s_r2c_1d)
COMMIT(s_r2c_md)
