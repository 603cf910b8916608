// Which way a linear convolution goes, for inputs of n >= m elements: decided here only, for the query of the buffer's
// size and for the run.
#pragma once

#include "frame/types.h"

namespace orv::dft {

enum class Route { direct, one_transform, blocks };

struct ConvolutionPlan {
    Route route = Route::direct;
    i32 order = 0; // of the transforms
    i64 step = 0;  // results that one block gives
};

// The smallest order of a power of two that is at least n.
constexpr i32 order_of(i64 n)
{
    i32 order = 0;
    while ((i64{1} << order) < n) ++order;
    return order;
}

// What the low byte of an algorithm asks for.
enum class Algorithm { automatic, direct, transform };
constexpr Algorithm algorithm_of(i32 kind) { return static_cast<Algorithm>(kind & 0xff); }
constexpr bool is_algorithm(i32 kind) { return algorithm_of(kind) <= Algorithm::transform; }

constexpr ConvolutionPlan plan_convolution(i64 n, i64 m, Algorithm algorithm = Algorithm::automatic)
{
    const bool short_one = n + m - 1 < 512 || m < 64; // direct sums are faster there
    if (algorithm == Algorithm::direct || (algorithm == Algorithm::automatic && short_one)) return {};
    if (n < 3 * m) {
        const i32 order = order_of(n + m - 1);
        return {Route::one_transform, order, i64{1} << order};
    }
    const i32 order = order_of(2 * m) + 1;
    return {Route::blocks, order, (i64{1} << order) - m + 1};
}

} // namespace orv::dft
