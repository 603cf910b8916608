// Fourier transforms, forward and out of place: of complex numbers to as many, of reals to the half of a spectrum that
// tells the rest. Work is counted as the field does, 5 n log2 n operations (half of it for reals), whatever they cost.
#include "bench/case.h"

#include <cmath>

namespace orv::bench {
namespace {

// Routines are those of bench/fft_plans.h.
struct Problem {
    const char* routine;
    const char* name; // of its lengths
    i64 n[3];
    i64 count;
    bool quick;
};

Case transform(char type, const Problem& p)
{
    Case c{std::string(1, type) + p.routine, p.name, p.n[0], type};
    const bool real = c.reals() == 1;
    c.quick = p.quick;
    c.integer(p.n[0]);
    if (std::string(p.routine) == "dft") c.integer(p.n[1]).integer(p.n[2]).integer(p.count);
    const i64 rows = p.n[1] * p.n[2] * p.count;
    c.operand(rows * p.n[0], Use::read).operand(rows * (real ? p.n[0] / 2 * 2 + 2 : p.n[0]), Use::written);
    const auto points = static_cast<double>(p.n[0] * p.n[1] * p.n[2]);
    c.work = (real ? 2.5 : 5) * points * std::log2(points) * static_cast<double>(p.count);
    c.unit = "GFLOP/s";
    c.limit = Limit::arithmetic;
    c.roundings = 1 + std::log2(points);
    c.magnitude = points;
    return c;
}

Problem line(const char* name, i64 n, bool quick) { return {"fft", name, {n, 1, 1}, 1, quick}; }
Problem shaped(const char* name, i64 n0, i64 n1, i64 n2, i64 count, bool quick)
{
    return {"dft", name, {n0, n1, n2}, count, quick};
}

} // namespace

std::vector<Case> fft_cases()
{
    std::vector<Case> cases;
    for (const char type : {'z', 'c', 'd', 's'}) {
        for (int order = 2; order <= 20; ++order)
            cases.push_back(transform(type, line("powers of two", i64{1} << order, order % 3 == 1)));
        for (const i64 n : {6, 9, 12, 15, 20, 24, 36, 50, 60, 75, 100, 105, 120, 180, 210, 250, 360, 500, 700, 1000})
            cases.push_back(transform(type, line("small factors", n, n % 60 == 0)));
        for (const i64 n : {5, 7, 11, 13, 17, 31, 53, 97, 149, 211, 331, 499, 733, 997})
            cases.push_back(transform(type, line("primes", n, n == 97)));

        for (int order = 2; order <= 22; order += 2)
            cases.push_back(transform(type, shaped("one", i64{1} << order, 1, 1, 1, order % 8 == 2)));
        for (const i64 n : {4, 8, 15, 16, 32, 60, 64, 100, 128, 256})
            cases.push_back(transform(type, shaped("1000 in a call", n, 1, 1, 1000, n == 60)));
        for (const i64 n : {64, 100, 128, 256, 500, 512, 1024, 2048})
            cases.push_back(transform(type, shaped("planes", n, n, 1, 1, n == 256)));
        for (const i64 n : {8, 9, 16, 32, 60, 64, 128, 256})
            cases.push_back(transform(type, shaped("cubes", n, n, n, 1, n == 32)));
        for (Case c : {transform(type, shaped("one threads", i64{1} << 22, 1, 1, 1, false)),
                       transform(type, shaped("planes threads", 2048, 2048, 1, 1, false))}) {
            c.threads = 2;
            cases.push_back(std::move(c));
        }
    }
    return cases;
}

} // namespace orv::bench
