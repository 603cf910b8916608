// What commits a node, for the files of this folder.
#pragma once

#include "dft/node.h"

namespace orv::dft {

// The first two entries of every node's table of methods.
NodeStep commit, commit_child;

// Whether an array can have these lengths: there are some, all are above 0, and their product is a number.
bool are_lengths(i32 rank, const i64* lengths);

// The settings that a new node has beyond zero.
void set_defaults(DftiNode& node);

} // namespace orv::dft
