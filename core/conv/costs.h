// What either route costs, in nanoseconds on one core of a processor of some 3 GHz; only ratios count.
#pragma once

#include "core/conv/record.h"

namespace orv::core::conv {

struct DirectCosts {
    double product, output, edge; // edge: a line of products that some outputs of a group have and others not
};
struct TransformCosts {
    double doubling;       // a point of a transform, for each doubling of its length
    double mixed;          // times that where the length is no power of two
    double point;          // packing, multiplying and taking out a point of a piece
    double start;          // of a transform
    double bytes;          // of a point
    double cached, slower; // of 2^cached bytes; for each doubling beyond
};

// By the precision of the sums and whether they are complex.
inline const DirectCosts& direct_costs_of(const Problem& p)
{
    static constexpr DirectCosts costs[2][2] = {{{0.116, 0.25, 25}, {0.46, 1.2, 22}},
                                                {{0.063, 0.3, 35}, {0.255, 0.8, 32}}};
    return costs[p.sums_in_single()][p.is_complex()];
}
inline const TransformCosts& transform_costs_of(const Problem& p)
{
    static constexpr TransformCosts costs[2][2] = {
        {{0.17, 1.5, 1.6, 250, 8, 17, 0.07}, {0.31, 1.5, 2.6, 100, 16, 17, 0.07}},
        {{0.10, 1.5, 1.0, 250, 4, 17, 0.07}, {0.16, 1.5, 1.8, 100, 8, 17, 0.07}}};
    return costs[p.sums_in_single()][p.is_complex()];
}

} // namespace orv::core::conv
