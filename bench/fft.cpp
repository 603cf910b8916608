// Fourier transforms, forward and out of place: of complex numbers to as many, of reals to the half of a spectrum that
// tells the rest. Work is counted as the field does, 5 n log2 n operations (half of it for reals), whatever they cost.
#include "bench/case.h"

#include <cmath>

namespace orv::bench {
namespace {

// The routine is that of bench/fft_orv.cpp and its peers: length, source, destination.
Case transform(char type, const char* lengths, i64 n, bool quick)
{
    Case c{std::string(1, type) + "fft", lengths, n, type};
    const bool real = c.reals() == 1;
    c.quick = quick;
    c.integer(n).operand(n, Use::read).operand(real ? n / 2 * 2 + 2 : n, Use::written);
    const auto points = static_cast<double>(n);
    c.work = (real ? 2.5 : 5) * points * std::log2(points);
    c.unit = "GFLOP/s";
    c.limit = Limit::arithmetic;
    c.roundings = 1 + std::log2(points);
    c.magnitude = points;
    return c;
}

} // namespace

std::vector<Case> fft_cases()
{
    std::vector<Case> cases;
    for (const char type : {'z', 'c', 'd', 's'}) {
        for (int order = 2; order <= 20; ++order)
            cases.push_back(transform(type, "powers of two", i64{1} << order, order % 3 == 1));
        for (const i64 n : {6, 9, 12, 15, 20, 24, 36, 50, 60, 75, 100, 105, 120, 180, 210, 250, 360, 500, 700, 1000})
            cases.push_back(transform(type, "small factors", n, n % 60 == 0));
        for (const i64 n : {5, 7, 11, 13, 17, 31, 53, 97, 149, 211, 331, 499, 733, 997})
            cases.push_back(transform(type, "primes", n, n == 97));
    }
    return cases;
}

} // namespace orv::bench
