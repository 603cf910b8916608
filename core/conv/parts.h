// Parts of a problem: some of its outputs, which are a problem of their own.
#pragma once

#include "core/conv/record.h"

namespace orv::core::conv {

// A problem with its arrays; all strides are given.
struct Part {
    orv_conv conv;
    Operands operands;

    // The outputs from first[d] on, count[d] of them.
    Part outputs(const i64* first, const i64* count) const;
    // The same problem with no more of y than the outputs need.
    Part without_unread() const;
};

// Of a convolution x is the operand of fewer elements: both come to the same, and it is y that is cut.
orv_conv longer_last(const orv_conv& conv);
Part longer_last(const Part& part);

// In how many parts the outputs go through transforms, by dimension: as many as make it cheapest, which depends on
// nothing but shapes and types, so that the parts, and with them the bits, are the same for any number of threads.
struct Pieces {
    Numbers of;
    i64 total;
};
Pieces pieces_of(const orv_conv& conv);

// What one of those transforms is called for in dimension d: its length.
i64 transform_length(const orv_conv& conv, int d, i64 pieces);

} // namespace orv::core::conv
