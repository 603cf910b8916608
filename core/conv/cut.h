// How the outputs of a problem go through transforms: in pieces, as many as make it cheapest. That depends on nothing
// but shapes and types, so that the pieces, and with them the bits, are the same for any number of threads.
#pragma once

#include "core/conv/record.h"

namespace orv::core::conv {

// x and y of a problem as one convolution has them: x is the operand of which a piece needs all. A correlation is the
// convolution with its x backwards, whose output j has y[t - k] with t = first + j*step.
struct Roles {
    Numbers nx, ny, first;
    bool exchanged; // the problem's y is x here
};
Roles roles_of(const Problem& problem);

// In each dimension: outputs of a piece, of which the last may have fewer; pieces; points of their transforms.
struct Cut {
    Numbers outputs, pieces, length;
    i64 total; // of pieces

    i64 points(int rank) const;
};
Cut cut_of(const Problem& problem);

// The time of all its transforms in nanoseconds.
double cost_of(const Problem& problem, const Cut& cut);

} // namespace orv::core::conv
