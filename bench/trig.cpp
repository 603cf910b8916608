// Sums of sines and cosines, out of place, by the names that FFTW has for them. Work is counted as that of a real
// Fourier transform, 2.5 n log2 n operations, n being the cells between points.
#include "bench/case.h"
#include "bench/trig_plans.h"

#include <cmath>

namespace orv::bench {
namespace {

Case transform(char type, int kind, int order)
{
    const i64 n = i64{1} << order, points = n + waves[kind].more_points;
    Case c{std::string(1, type) + "r2r", waves[kind].name, n, type};
    c.quick = order == 10;
    c.integer(kind).integer(points);
    c.operand(points, Use::read).operand(points, Use::written);
    c.work = 2.5 * static_cast<double>(n) * order;
    c.unit = "GFLOP/s";
    c.limit = Limit::arithmetic;
    c.roundings = 8 + std::sqrt(static_cast<double>(n)); // running sums; next to an end more, where results are small
    c.magnitude = static_cast<double>(n);
    return c;
}

} // namespace

std::vector<Case> trig_cases()
{
    std::vector<Case> cases;
    for (const char type : {'d', 's'})
        for (int kind = 0; kind < wave_kinds; ++kind)
            for (int order = 6; order <= 18; ++order) cases.push_back(transform(type, kind, order));
    return cases;
}

} // namespace orv::bench
