// Nodes: their making, copies and end, and the tables that all of them share.
#include "dft/commit.h"

namespace orv::dft {
namespace {

constexpr i64 alignment = 16;
constexpr i64 unset = INT64_MIN; // a stride

constexpr DftiMethods methods = {commit,
                                 commit_child,
                                 DFT(getInputStrides),
                                 DFT(getOutputStrides),
                                 DFT(setInputStrides),
                                 DFT(setOutputStrides),
                                 DFT(getLengths),
                                 DFT(getDescriptorName),
                                 DFT(setDescriptorName),
                                 DFT(getScale),
                                 DFT(setScale),
                                 DFT(copy_node),
                                 DFT(getInputDistance),
                                 DFT(getOutputDistance),
                                 DFT(getNumberOfTransforms),
                                 DFT(setInputDistance),
                                 DFT(setOutputDistance),
                                 DFT(setNumberOfTransforms),
                                 DFT(getThreadLimit),
                                 DFT(setThreadLimit)};

DftiServices services; // filled by the core, through api of any node

i32 cache_bytes() { return orv_serv_get_cache_size(0); }

template <class Spec, class Free> void free_spec(Spec*& spec, Free free)
{
    if (spec != nullptr) free(spec);
    spec = nullptr;
}

void free_block(void*& block)
{
    release(block);
    block = nullptr;
}

void uncommit(DftiNode* node)
{
    if (node->next != nullptr) node->next->destroy(node->next);
    node->next = nullptr;
    if (node->method != nullptr && node->method->detach != nullptr) node->method->detach(node->method, node);
    if (node->via2d_data != nullptr && node->via2d_free != nullptr) {
        node->via2d_free(node);
        node->via2d_data = nullptr, node->via2d_free = nullptr;
    }
    node->max_buffer_bytes = node->node_buffer_bytes = 0;
    node->ccs_row_split = 0;
    free_spec(node->spec_c_64fc, DFT(ympsDFTFree_C_64fc));
    free_spec(node->spec_c_32fc, DFT(ympsDFTFree_C_32fc));
    free_spec(node->spec_c_64f, DFT(ympsDFTFree_C_64f));
    free_spec(node->spec_c_32f, DFT(ympsDFTFree_C_32f));
    free_spec(node->spec_outord_64fc, DFT(ympsDFTOutOrdFree_C_64fc));
    free_spec(node->spec_outord_32fc, DFT(ympsDFTOutOrdFree_C_32fc));
    free_block(node->buffer1);
    free_block(node->buffer0);
    free_spec(node->spec_r_64f, DFT(ympsDFTFree_R_64f));
    free_spec(node->spec_r_32f, DFT(ympsDFTFree_R_32f));
    node->commit_status = CFG_UNCOMMITTED;
    node->compute_forward = node->compute_backward = nullptr;
    node->flags &= DftiNode::no_decomposition;
}

void destroy(DftiNode* node)
{
    if (node->uncommit != nullptr) node->uncommit(node);
    for (Iotensor* t : {&node->lengths, &node->batch, &node->work_lengths, &node->work_batch}) DFT(Iotensor_destroy)(t);
    orv_serv_free(node);
}

// The first dimension is the fastest, the others follow without a gap, behind strides that are given.
void fill_unset_strides(Iotensor& t)
{
    i64 si = 1, so = 1;
    for (i32 k = 0; k < t.rank; ++k) {
        IotensorDim& d = t.dims[k];
        if (d.is == unset) d.is = si;
        if (d.os == unset) d.os = so;
        si = d.n * d.is, so = d.n * d.os;
    }
}

DftiNode* allocate(u32 precision, u32 domain)
{
    auto* const node = static_cast<DftiNode*>(orv_serv_calloc(1, sizeof(DftiNode), alignment));
    if (node == nullptr) return nullptr;
    node->precision = precision, node->forward_domain = domain;
    node->uncommit = uncommit, node->destroy = destroy;
    node->methods = &methods, node->api = &services;
    set_defaults(*node);
    return node;
}

i32 create_tensors(DftiNode& node, const i64* lengths)
{
    if (DFT(Iotensor_create)(&node.lengths, node.user_rank) != 0 || DFT(Iotensor_create)(&node.batch, 1) != 0)
        return node_no_memory;
    for (i32 k = 0; k < node.user_rank; ++k) node.lengths.dims[k] = {lengths[k], unset, unset};
    fill_unset_strides(node.lengths);
    node.batch.dims[0] = {1, 0, 0};
    const bool copied = DFT(Iotensor_copy)(&node.work_lengths, &node.lengths, strides_kept) == 0 &&
                        DFT(Iotensor_copy)(&node.work_batch, &node.batch, strides_kept) == 0;
    return copied ? node_ok : node_no_memory;
}

i32 create(DftiNode** out, u32 precision, u32 domain, i32 rank, const i64* lengths)
{
    if (!are_lengths(rank, lengths)) return node_bad_length;
    DftiNode* const node = allocate(precision, domain);
    if (node == nullptr) return node_no_memory;
    node->user_rank = rank;
    if (const i32 status = create_tensors(*node, lengths)) return node->destroy(node), status;
    if (services.cache_bytes == nullptr) services.cache_bytes = cache_bytes;
    *out = node;
    return node_ok;
}

void copy_settings(const DftiNode& from, DftiNode& to)
{
    to.uncommit = from.uncommit, to.destroy = from.destroy;
    to.methods = from.methods, to.api = from.api;
    to.bkdown_list = from.bkdown_list;
    to.nioargs = from.nioargs, to.magic = from.magic;
    to.flags = from.flags & DftiNode::no_decomposition;
    to.user_rank = from.user_rank;
    for (int k = 0; k < 10; ++k) to.descriptor_name[k] = from.descriptor_name[k];
    to.number_of_transforms = from.number_of_transforms;
    to.complex_storage = from.complex_storage, to.real_storage = from.real_storage;
    to.conjugate_even_storage = from.conjugate_even_storage;
    to.placement = from.placement, to.packed_format = from.packed_format;
    to.workspace = from.workspace, to.ordering = from.ordering, to.transpose = from.transpose;
    to.thread_hint = from.thread_hint, to.chain_hint = from.chain_hint, to.alignment_hint = from.alignment_hint;
    to.forward_scale = from.forward_scale, to.backward_scale = from.backward_scale;
    to.input_offset = from.input_offset, to.output_offset = from.output_offset;
    to.input_distance = from.input_distance, to.output_distance = from.output_distance;
    to.number_of_user_threads = from.number_of_user_threads, to.thread_limit = from.thread_limit;
}

i32 copy(const DftiNode* node, DftiNode** out)
{
    DftiNode* const made = allocate(node->precision, node->forward_domain);
    if (made == nullptr) return node_no_memory;
    copy_settings(*node, *made);
    for (Iotensor DftiNode::*t : {&DftiNode::lengths, &DftiNode::batch, &DftiNode::work_lengths, &DftiNode::work_batch})
        if (DFT(Iotensor_copy)(&(made->*t), &(node->*t), strides_kept) != 0) return made->destroy(made), node_no_memory;
    *out = made;
    return node_ok;
}

i32 free_method_node(DftiNode* node)
{
    if (auto* const kept = static_cast<DftiNode*>(node->method_data)) kept->destroy(kept);
    node->method_data = nullptr;
    return node_ok;
}

i32 get_version_string(char* buffer, i64 size)
{
    constexpr i64 longest = 198;
    char text[longest] = {};
    orv_serv_get_version_string_c(text, longest);
    for (i64 k = 0; k < min(size, longest) && text[k] != 0; ++k) buffer[k] = text[k];
    return node_ok;
}

} // namespace

bool are_lengths(i32 rank, const i64* lengths)
{
    i64 total = 1;
    for (i32 k = 0; k < rank; ++k)
        if (lengths[k] < 1 || __builtin_mul_overflow(total, lengths[k], &total)) return false;
    return rank > 0;
}

void set_defaults(DftiNode& node)
{
    node.magic = DftiNode::magic_word;
    node.commit_status = CFG_UNCOMMITTED;
    node.ordering = CFG_ORDERED;
    node.complex_storage = CFG_STORE_COMPLEX, node.real_storage = CFG_STORE_SPLIT;
    node.conjugate_even_storage = CFG_STORE_PACKED, node.packed_format = CFG_CCS;
    node.placement = CFG_IN_PLACE;
    node.transpose = CFG_NONE, node.workspace = CFG_ALLOW;
    node.number_of_transforms = 1;
    node.number_of_user_threads = 1;
    node.forward_scale = node.backward_scale = 1;
}

PRIMITIVE(5, dfti_create_node, create)
PRIMITIVE(2, copy_node, copy)
PRIMITIVE(1, free_allocated_buffers, free_method_node)
PRIMITIVE(2, dfti_get_version_string, get_version_string)

} // namespace orv::dft
