// Three dimensions and more: planes of the two lowest ones, and columns along each of the others. Like the passes of a
// plane they can be shared among threads.
#pragma once

#include "dft/compute/plane.h"

namespace orv::dft {

// An array of a transform of several dimensions: whose strides it has, and what its elements are.
enum class Side { input, output, middle }; // middle: half spectra without gaps
template <class R> struct Box {
    R* data; // not written through where it is the input of a call
    Side side;
    bool as_pairs;

    // In reals, of the dimension that a node is for.
    i64 stride(const DftiNode& head, const DftiNode& node) const
    {
        const i64 unit = as_pairs ? 2 : 1;
        if (side == Side::input) return unit * node.input_stride;
        if (side == Side::output) return unit * node.output_stride;
        i64 product = 2;
        for (const DftiNode* n = &head; n != &node; n = n->next) product *= n == &head ? half(n->length) : n->length;
        return product;
    }
};

// Of a chain of three nodes or more.
i64 plane_count(const DftiNode& head);
// Lines along the dimension of a node; the first dimension counts as half spectra where the domain is real.
i64 column_count(const DftiNode& head, const DftiNode& node);

template <class R> i64 columns_buffer_bytes(const DftiNode& head);

// Lines begin to end along the dimension of the node, which is the third one or a higher one.
template <class R>
i32 columns_of_box(DftiNode* head, DftiNode* node, DftiKernel* kernel, Box<R> from, Box<R> to, i64 begin, i64 end,
                   void* buffer, void* work);

// Planes so many reals apart in either array.
struct PlaneSteps {
    i64 in, out;
};

// planes(count, reals from the beginning of `from`, of `to`, steps) for runs of planes begin to end along the third
// dimension.
template <class R, class Planes>
i32 each_run_of_planes(const DftiNode& head, const Box<R>& from, const Box<R>& to, i64 begin, i64 end, Planes planes)
{
    if (head.next->next == nullptr) return planes(1, 0, 0, PlaneSteps{0, 0});
    const DftiNode& third = *head.next->next;
    for (i64 item = begin, next; item < end; item = next) {
        i64 rest = item, in = 0, out = 0;
        for (const DftiNode* n = &third; n != nullptr; n = n->next) {
            const i64 index = rest % n->length;
            rest /= n->length;
            in += index * from.stride(head, *n);
            out += index * to.stride(head, *n);
        }
        next = min(end, item - item % third.length + third.length);
        const PlaneSteps steps{from.stride(head, third), to.stride(head, third)};
        if (const i32 status = planes(next - item, in, out, steps); status != node_ok) return status;
    }
    return node_ok;
}

} // namespace orv::dft
