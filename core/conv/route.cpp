// Which route is faster. Kernels take the one that they are told, so this decides alone, by shapes and types only: the
// same for any arrays, strides and threads.
//
// Both costs are nanoseconds on one core of a processor of some 3 GHz; only their ratio counts. The numbers were fitted
// to some 500 problems of one to three dimensions; in 98 of 100 the route taken was at most 1.3 times the other's time.
#include "core/conv/parts.h"

#include <bit>
#include <cmath>
#include <limits>

namespace orv::core::conv {
namespace {

struct Costs {
    // Direct sums: a product; an output; a line of products that some outputs of a group have and others not.
    double product, output, edge;
    // Transforms: a point and doubling of a transform, in one, two and more dimensions; starting one of one dimension;
    // copying an output in one dimension.
    double line_point, plane_point, point, start, copy;
};

const Costs& costs_of(const orv_conv& c)
{
    static constexpr Costs single{0.065, 0.6, 45, 0.165, 0.85, 1.3, 20, 1}, pairs{0.26, 2.0, 32, 0.6, 1.0, 1.3, 60, 6};
    static constexpr Costs twice{0.14, 1.0, 25, 0.23, 1.15, 2.1, 300, 1},
        twice_pairs{0.45, 3.0, 22, 0.85, 1.7, 2.1, 900, 7};
    if (c.sums_in_single()) return c.is_complex() ? pairs : single;
    return c.is_complex() ? twice_pairs : twice;
}

double direct_cost(const orv_conv& c)
{
    const Costs& cost = costs_of(c);
    double outputs = 1, lines = 1;
    for (int d = 0; d < c.rank; ++d) {
        outputs *= static_cast<double>(c.count[d]);
        if (d > 0) lines *= static_cast<double>(c.count[d] * min(c.nx[d], c.ny[d]));
    }
    const double edges = 1 + static_cast<double>(min(c.nx[0], c.ny[0])) / 8;
    return cost.product * products_of(c) + cost.output * outputs + cost.edge * lines * edges;
}

// The linear convolution of the signal primitives goes by direct sums itself where one operand is short, and cuts a
// much longer one in blocks.
double line_cost(const orv_conv& c)
{
    const Costs& cost = costs_of(c);
    const i64 n = max(c.nx[0], c.ny[0]), m = min(c.nx[0], c.ny[0]), full = n + m - 1;
    if (full < 512 || m < 64) return std::numeric_limits<double>::infinity();
    const bool blocks = n >= 3 * m;
    const i64 points = static_cast<i64>(std::bit_ceil(static_cast<u64>(blocks ? 4 * m : full)));
    const double transforms =
        blocks ? 1 + 2 * std::ceil(static_cast<double>(full) / static_cast<double>(points - m + 1)) : 3;
    const auto size = static_cast<double>(points);
    return transforms * (cost.start + cost.line_point * size * std::log2(size)) + cost.copy * static_cast<double>(full);
}

} // namespace

double transform_cost(const orv_conv& conv)
{
    const orv_conv c = longer_last(conv);
    if (c.rank == 1) return line_cost(c);
    const Costs& cost = costs_of(c);
    const Pieces pieces = pieces_of(c);
    double points = 1;
    for (int d = 0; d < c.rank; ++d) points *= static_cast<double>(transform_length(c, d, pieces.of[d]));
    return static_cast<double>(pieces.total) * (c.rank == 2 ? cost.plane_point : cost.point) * points *
           std::log2(points + 1);
}

double products_of(const orv_conv& c)
{
    double products = 1;
    for (int d = 0; d < c.rank; ++d) {
        const auto nx = static_cast<double>(c.nx[d]), ny = static_cast<double>(c.ny[d]);
        products *= std::fmin(static_cast<double>(c.count[d]) * std::fmin(nx, ny), nx * ny);
    }
    return products;
}

int route_of(const orv_conv& c)
{
    if (c.route != ORV_CONV_AUTOMATIC) return c.route;
    return direct_cost(c) <= transform_cost(c) ? ORV_CONV_DIRECT : ORV_CONV_TRANSFORM;
}

} // namespace orv::core::conv
