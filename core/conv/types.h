// From the letters of a problem to types.
#pragma once

#include "core/conv/record.h"
#include "frame/kernels/conv.h"

namespace orv::core::conv {

// f(Pair of the types of data and sums).
template <class F> auto by_pair(const Problem& p, F f)
{
    namespace k = kernels::conv;
    if (p.sums_in_single()) return p.is_complex() ? f(k::pair_cc{}) : f(k::pair_ss{});
    if (p.is_single()) return p.is_complex() ? f(k::pair_cz{}) : f(k::pair_sd{});
    return p.is_complex() ? f(k::pair_zz{}) : f(k::pair_dd{});
}

} // namespace orv::core::conv
