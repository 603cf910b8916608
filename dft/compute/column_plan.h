// Columns that are transformed side by side where they stand, a few in each register, by a plan that commit leaves with
// a dimension's node: neither turned to rows nor back. A column's results do not depend on those beside it.
#pragma once

#include "dft/compute/many.h"

namespace orv::dft {

// At commit, where the dimension can have a plan. It goes with the node.
template <class R> i32 plan_columns(DftiNode* node);

// If the node has a plan and does no more than transform, and lines are not dense on both sides; else nothing is done.
// Columns that are not neighbours are staged for it, so that their bits are the same whichever way they are gone
// through.
template <class R>
bool planned_columns(const Run& run, i64 count, const Lines<const cpx<R>>& in, const Lines<cpx<R>>& out);

} // namespace orv::dft
