// One transform of several dimensions: what serial routes do as a whole, and thread bodies share by share.
#pragma once

#include "dft/compute/box.h"

namespace orv::dft {

enum class Direction { forward, backward };

// The lines begin to end of a pass.
struct Span {
    i64 begin, end;
};

template <class R> DftiKernel* kernel_of_pairs(Direction direction, const DftiNode& node)
{
    return node.*(direction == Direction::forward ? Precision<R>::forward : Precision<R>::backward);
}
template <class R> DftiKernel* kernel_of_reals(Direction direction, const DftiNode& node)
{
    return node.*(direction == Direction::forward ? Precision<R>::real_forward : Precision<R>::real_backward);
}

// From one transform of a batch to the next, in reals.
struct Steps {
    i64 in, out;
};

template <class R> struct WholeOfPairs {
    Direction direction;
    DftiNode* head;
    const R* input;
    R* output;

    static i64 buffer_bytes(const DftiNode& head);
    Steps steps() const;
    i32 all(void* buffer, void* work) const;
    i32 planes(Span items, void* buffer, void* work) const;
    i32 columns(DftiNode* node, Span items, void* buffer, void* work) const;
    PairPlane<R> first_plane(void* buffer, void* work) const;

private:
    Box<R> source() const { return {const_cast<R*>(input), Side::input, true}; }
    Box<R> target() const { return {output, is_in_place(*head) ? Side::input : Side::output, true}; }
};

// as_pairs: the half spectrum is kept as pairs, else packed, of two dimensions at most.
template <class R> struct WholeOfReals {
    Direction direction;
    DftiNode* head;
    const R* input;
    R* output;
    bool as_pairs;
    R* middle; // null where it is not needed

    static i64 buffer_bytes(const DftiNode& head);
    Steps steps() const;
    i32 all(void* buffer, void* work) const;
    i32 planes(Span items, void* buffer, void* work) const;
    i32 columns(DftiNode* node, Span items, void* buffer, void* work) const;
    RealPlane<R> first_plane(void* buffer, void* work) const;

private:
    bool is_forward() const { return direction == Direction::forward; }
    // Where planes come from and go to.
    Box<R> source() const;
    Box<R> target() const;
};

} // namespace orv::dft
