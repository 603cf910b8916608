// Which route is faster. Kernels take the one that they are told, so this decides alone, by shapes only: the same for
// any arrays, strides and threads.
#include "core/conv/record.h"

#include <bit>
#include <cmath>

namespace orv::core::conv {
namespace {

// Time in units of a product of double precision in the direct sums.
double direct_cost(const orv_conv& c)
{
    const double product = (c.sums_in_single() ? 0.5 : 1) * (c.is_complex() ? 4 : 1);
    return product * products_of(c);
}

double transform_cost(const orv_conv& c)
{
    double points = 1;
    for (int d = 0; d < c.rank; ++d) points *= static_cast<double>(c.nx[d] + c.ny[d] - 1);
    return 30 * points * std::log2(points + 1);
}

} // namespace

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
