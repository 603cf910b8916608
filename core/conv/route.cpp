// Which route is faster. Nothing else decides: the same for any arrays, strides and threads.
#include "core/conv/costs.h"
#include "core/conv/cut.h"
#include "core/conv/direct.h"

#include <cmath>

namespace orv::core::conv {
namespace {

double direct_cost(const Problem& p, double outputs)
{
    const DirectCosts& cost = direct_costs_of(p);
    double lines = 1;
    for (int d = 1; d < p.rank; ++d) lines *= static_cast<double>(p.count[d] * min(p.nx[d], p.ny[d]));
    const double edges = 1 + static_cast<double>(min(p.nx[0], p.ny[0])) / 8;
    return cost.product * products_of(p) + cost.output * outputs + cost.edge * lines * edges;
}

bool is_direct_faster(const Problem& p)
{
    double outputs = 1;
    for (int d = 0; d < p.rank; ++d) outputs *= static_cast<double>(p.count[d]);
    const double direct = direct_cost(p, outputs);
    const TransformCosts& cost = transform_costs_of(p);
    if (direct <= 3 * cost.start + outputs * cost.point) return true; // whatever the cut
    return direct <= cost_of(p, cut_of(p));
}

} // namespace

double products_of(const Problem& p)
{
    double products = 1;
    for (int d = 0; d < p.rank; ++d) {
        const auto nx = static_cast<double>(p.nx[d]), ny = static_cast<double>(p.ny[d]);
        products *= std::fmin(static_cast<double>(p.count[d]) * std::fmin(nx, ny), nx * ny);
    }
    return products;
}

void take_route(Problem& p)
{
    p.route_taken = p.route != ORV_CONV_AUTOMATIC ? p.route
                    : is_direct_faster(p)         ? ORV_CONV_DIRECT
                                                  : ORV_CONV_TRANSFORM;
}

} // namespace orv::core::conv
