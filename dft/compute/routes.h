// Serial routes: so many transforms of any rank on one thread.
#pragma once

#include "dft/compute/whole.h"

namespace orv::dft {

// In place where both arrays are the same.
template <class R>
i32 route_of_pairs(Direction direction, DftiNode* head, const void* input, void* output, i64 count, void* work);

// Of one dimension: arrays of two pointers.
template <class R>
i32 route_of_two_arrays(Direction direction, DftiNode* head, const void* input, void* output, i64 count, void* work);

template <class R>
i32 route_of_reals(Direction direction, bool as_pairs, DftiNode* head, const void* input, void* output, i64 count,
                   void* work);

} // namespace orv::dft
