// Plans for batches of columns, made at commit for a node of a chain: for 1, 2, 4, ... columns at once.
#include "dft/chain.h"

namespace orv::dft {
namespace {

template <class R> struct Names;
#define ORV_DFT_BATCH_NAMES(R, letter, fc)                                                                             \
    template <> struct Names<R> {                                                                                      \
        static constexpr auto& forward_bytes = orvgDFTFwdBatchITGetThreadSize_##fc;                                    \
        static constexpr auto& backward_bytes = orvgDFTInvBatchITGetThreadSize_##fc;                                   \
        static constexpr auto& init_forward = orvgDFTFwdBatchITInitAlloc_##fc;                                         \
        static constexpr auto& init_backward = orvgDFTInvBatchITInitAlloc_##fc;                                        \
        static constexpr auto& free = DFT(batchfft_free_##letter);                                                     \
    };
ORV_DFT_BATCH_NAMES(float, c, 32fc)
ORV_DFT_BATCH_NAMES(double, z, 64fc)
#undef ORV_DFT_BATCH_NAMES

// The method of a node that has plans: there is nothing to commit, they are made on the way.
template <class R> constexpr DftiMethod batchfft{nullptr, Names<R>::free};

i64 columns_along(const DftiNode& node) { return is_in_place(node) ? node.input_stride : node.output_stride; }
i64 lowest_bit(i64 c) { return c & -c; }

// Elements that a batch may have, and the columns that it has at least where plans are worth it.
template <class R> constexpr i64 batch_elements = sizeof(R) == 8 ? 2048 : 4096;
template <class R> constexpr i64 least_columns = sizeof(R) == 8 ? 8 : 16;

template <class R> bool apply(const DftiNode& node, const DftiNode& head)
{
    const i64 n = node.length, columns = columns_along(node);
    const bool has_columns =
        node.dimension_index > 0 || (head.work_rank == 1 && node.number_of_transforms > 1 && is_in_place(node));
    const bool unit = head.input_stride == 1 && (is_in_place(node) || head.output_stride == 1);
    if (node.method != nullptr || !has_columns || !unit || !is_ordered(node) ||
        node.complex_storage != CFG_STORE_COMPLEX || batch_elements<R> / n < least_columns<R> || columns < 1 ||
        lowest_bit(columns) >= 256)
        return false;
    if constexpr (sizeof(R) == 8) return n < 2 || n > 64;
    else return n != 196 && !(head.effective_threads > 1 && (n - 1) / head.effective_threads % 2 == 0);
}

template <class R> i64 widest(const DftiNode& node)
{
    const i64 fit = batch_elements<R> / node.length;
    if constexpr (sizeof(R) == 4) return max(8, fit);
    else return max(lowest_bit(columns_along(node)) == 16 ? 16 : 4, fit);
}

template <class R> i32 make_plan(BatchPlans& plans, int k, i64 n, i64 stride)
{
    using N = Names<R>;
    const i64 columns = i64{1} << k;
    i64 forward = 0, backward = 0;
    i32 status = N::forward_bytes(n, 1, columns, stride, 1, &forward);
    if (status == node_ok) status = N::backward_bytes(n, 1, columns, stride, 1, &backward);
    if (status == node_ok) status = N::init_forward(&plans.forward[k], n, 1, columns, stride, 1);
    if (status == node_ok) status = N::init_backward(&plans.inverse[k], n, 1, columns, stride, 1);
    plans.thread_bytes = max(plans.thread_bytes, max(forward, backward));
    return status;
}

template <class R> i32 make_plans(BatchPlans& plans, const DftiNode& node, const DftiNode& head)
{
    const i64 columns = columns_along(node);
    plans.widest = widest<R>(node);
    for (int k = 0; k < BatchPlans::count && i64{1} << k <= columns; ++k)
        if (const i32 status = make_plan<R>(plans, k, node.length, columns)) return status;
    if (head.work_rank < 3) return node_ok;
    // Buffers of all threads should not be larger than what they work on.
    const DftiNode* last = &node;
    while (last->next != nullptr) last = last->next;
    const i64 bytes = last->length * columns_along(*last) * static_cast<i64>(sizeof(cpx<R>));
    return head.effective_threads * plans.thread_bytes > bytes ? node_internal_error : node_ok;
}

} // namespace

template <class R> i32 plan_batches(DftiNode* node, const DftiNode* head)
{
    if (!apply<R>(*node, *head)) return node_ok;
    auto* const plans = static_cast<BatchPlans*>(orv_serv_calloc(1, sizeof(BatchPlans), page_bytes()));
    if (plans == nullptr) return node_no_memory;
    node->method = &batchfft<R>, node->method_data = plans;
    const i32 status = make_plans<R>(*plans, *node, *head);
    if (status == node_ok) return node_ok;
    batchfft<R>.detach(node->method, node);
    return status == node_internal_error ? i32{node_ok} : status;
}
template i32 plan_batches<float>(DftiNode* node, const DftiNode* head);
template i32 plan_batches<double>(DftiNode* node, const DftiNode* head);

} // namespace orv::dft
