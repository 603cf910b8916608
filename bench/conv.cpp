// Convolutions in full: a line or a plane of elements with filters of growing size, so that a plot shows where direct
// sums and transforms cross. Work is counted as direct sums have it, two operations a product, whatever a library does.
#include "bench/case.h"

#include <cmath>

namespace orv::bench {
namespace {

// A filter of n elements a side, a signal of so many.
Case convolution(char type, const char* variant, i64 n, i64 signal, int rank, bool quick)
{
    Case c{std::string(1, type) + "conv", variant, n, type};
    c.quick = quick;
    const auto elements = [&](i64 side) { return rank == 1 ? side : side * side; };
    c.integer(rank).integer(n).integer(signal);
    c.operand(elements(n), Use::read)
        .operand(elements(signal), Use::read)
        .operand(elements(n + signal - 1), Use::written);
    const auto products = static_cast<double>(elements(n)) * static_cast<double>(elements(signal));
    c.work = 2 * products * (c.reals() == 2 ? 4 : 1);
    c.unit = "GFLOP/s";
    c.limit = Limit::arithmetic;
    c.roundings = 10 + std::log2(static_cast<double>(elements(n + signal)));
    c.magnitude = std::sqrt(static_cast<double>(elements(n)) * static_cast<double>(elements(signal)));
    return c;
}

} // namespace

std::vector<Case> conv_cases()
{
    std::vector<Case> cases;
    for (const char type : {'d', 's', 'z', 'c'}) {
        for (const i64 n : {4, 8, 16, 32, 64, 96, 128, 192, 256, 384, 512, 1024})
            for (const auto& [variant, signal] : {std::pair{"line 1000", 1000}, std::pair{"line 65536", 65536}})
                if (n <= signal) cases.push_back(convolution(type, variant, n, signal, 1, n == 64 && signal == 1000));
        for (const i64 n : {3, 5, 7, 9, 13, 17, 23, 31})
            for (const auto& [variant, signal] : {std::pair{"plane 100", 100}, std::pair{"plane 1024", 1024}})
                cases.push_back(convolution(type, variant, n, signal, 2, n == 5 && signal == 100));
    }
    return cases;
}

} // namespace orv::bench
