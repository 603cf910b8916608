#include "dft/compute/box.h"

namespace orv::dft {
namespace {

i64 line_count(const DftiNode& head, const DftiNode& node)
{
    return &node == &head && head.forward_domain == CFG_DOMAIN_REAL ? half(head.length) : node.length;
}

// Blocks are narrower where short lines make short runs of memory. `below`: lines that are side by side.
template <class R> i64 log2_of_box(const DftiNode& node, i64 below)
{
    const i64 n = node.length, above = node.next != nullptr ? node.next->length : 1;
    const bool narrow = (n <= 32 && above <= 32 && below >= 4096) || (below <= 16 && n <= 16 && above > 2048);
    return log2_of_columns<R>(narrow ? 2 : 3);
}

} // namespace

i64 plane_count(const DftiNode& head) { return column_count(head, head) / head.next->length; }

i64 column_count(const DftiNode& head, const DftiNode& node)
{
    i64 count = 1;
    for (const DftiNode* n = &head; n != nullptr; n = n->next)
        if (n != &node) count *= line_count(head, *n);
    return count;
}

template <class R> i64 columns_buffer_bytes(const DftiNode& head)
{
    i64 longest = 0;
    for (const DftiNode* n = head.next->next; n != nullptr; n = n->next) longest = max(longest, n->length);
    return (longest << log2_of_columns<R>(3)) * static_cast<i64>(sizeof(cpx<R>));
}

// Dimensions below the node's that have no gaps between them in either array make one run of lines side by side. Runs
// are found by number: a number's digits are the indices of the dimensions that are in no run.
template <class R>
i32 columns_of_box(DftiNode* head, DftiNode* node, DftiKernel* kernel, Box<R> from, Box<R> to, i64 begin, i64 end,
                   void* buffer, void* work)
{
    const i64 in = from.stride(*head, *head), out = to.stride(*head, *head);
    i64 run = line_count(*head, *head);
    const DftiNode* above = head->next;
    for (; above != node && from.stride(*head, *above) == run * in && to.stride(*head, *above) == run * out;
         above = above->next)
        run *= above->length;
    const i64 log2_block = in == 2 && out == 2 ? log2_of_box<R>(*node, run) : 0;
    const Run how{node, kernel, buffer, log2_block, work};
    const bool in_place = from.data == to.data && from.side == to.side;

    for (i64 item = begin, m; item < end; item += m) {
        const i64 first = item % run;
        m = min(run - first, end - item);
        i64 rest = item / run, in_at = first * in, out_at = first * out;
        for (const DftiNode* n = above; n != nullptr; n = n->next) {
            if (n == node) continue;
            const i64 index = rest % n->length;
            rest /= n->length;
            in_at += index * from.stride(*head, *n);
            out_at += index * to.stride(*head, *n);
        }
        const Lines<cpx<R>> lines{to.data + out_at, to.stride(*head, *node), out};
        const i32 status =
            in_place ? transform<R>(how, m, lines)
                     : transform<cpx<R>, cpx<R>>(how, m, {from.data + in_at, from.stride(*head, *node), in}, lines);
        if (status != node_ok) return status;
    }
    return node_ok;
}

template i64 columns_buffer_bytes<float>(const DftiNode&);
template i64 columns_buffer_bytes<double>(const DftiNode&);
template i32 columns_of_box<float>(DftiNode*, DftiNode*, DftiKernel*, Box<float>, Box<float>, i64, i64, void*, void*);
template i32 columns_of_box<double>(DftiNode*, DftiNode*, DftiKernel*, Box<double>, Box<double>, i64, i64, void*,
                                    void*);

} // namespace orv::dft
