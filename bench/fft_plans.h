// The routines that bench/fft.cpp times: ?fft_(length, source, destination). Whoever includes this defines Plan, made
// once for a length and kept.
#pragma once

#include <map>

namespace orv::bench {

enum class Domain { complex, real };
template <Domain domain, bool single> struct Plan;

// The same length comes again and again, so it is looked at first.
template <Domain domain, bool single> void transform(int n, const void* x, void* y)
{
    using Kept = Plan<domain, single>;
    static std::map<int, Kept> plans;
    static int last_n = 0;
    static const Kept* last = nullptr;
    if (n != last_n) {
        last = &plans.try_emplace(n, n).first->second;
        last_n = n;
    }
    last->run(x, y);
}

} // namespace orv::bench

#define ORV_BENCH_TRANSFORM(t, domain, single)                                                                         \
    extern "C" __attribute__((visibility("default"))) void t##fft_(const int* n, const void* x, void* y)               \
    {                                                                                                                  \
        orv::bench::transform<orv::bench::Domain::domain, single>(*n, x, y);                                           \
    }
#define ORV_BENCH_TRANSFORMS                                                                                           \
    ORV_BENCH_TRANSFORM(z, complex, false)                                                                             \
    ORV_BENCH_TRANSFORM(c, complex, true) ORV_BENCH_TRANSFORM(d, real, false) ORV_BENCH_TRANSFORM(s, real, true)
