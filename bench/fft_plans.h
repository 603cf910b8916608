// The routines that bench/fft.cpp times. Whoever includes this defines what they run, made once for a length or a shape
// and kept: Plan<domain, single> of a Shape, and Line<domain, single> of a length.
//   ?fft_(length, source, destination)               one transform of one dimension, as directly as the library has it
//   ?dft_(n0, n1, n2, count, source, destination)    count of them, of up to three dimensions, n0 innermost
#pragma once

#include <compare>
#include <map>

namespace orv::bench {

enum class Domain { complex, real };

struct Shape {
    int n[3], count; // lengths behind the last dimension are 1
    auto operator<=>(const Shape&) const = default;
    int rank() const { return n[2] > 1 ? 3 : n[1] > 1 ? 2 : 1; }
    long rows() const { return static_cast<long>(n[1]) * n[2]; }
    long elements() const { return n[0] * rows(); }
    long half_spectrum() const { return (n[0] / 2 + 1) * rows(); }
};

template <Domain domain, bool single> struct Plan;
template <Domain domain, bool single> struct Line;

// The same key comes again and again, so it is looked at first.
template <class Kept, class Key> void transform(const Key& key, const void* x, void* y)
{
    static std::map<Key, Kept> plans;
    static Key last_key{};
    static const Kept* last = nullptr;
    if (last == nullptr || key != last_key) {
        last = &plans.try_emplace(key, key).first->second;
        last_key = key;
    }
    last->run(x, y);
}

} // namespace orv::bench

#define ORV_BENCH_TRANSFORM(t, domain, single)                                                                         \
    extern "C" __attribute__((visibility("default"))) void t##fft_(const int* n, const void* x, void* y)               \
    {                                                                                                                  \
        orv::bench::transform<orv::bench::Line<orv::bench::Domain::domain, single>>(*n, x, y);                         \
    }                                                                                                                  \
    extern "C" __attribute__((visibility("default"))) void t##dft_(const int* n0, const int* n1, const int* n2,        \
                                                                   const int* count, const void* x, void* y)           \
    {                                                                                                                  \
        const orv::bench::Shape shape{{*n0, *n1, *n2}, *count};                                                        \
        orv::bench::transform<orv::bench::Plan<orv::bench::Domain::domain, single>>(shape, x, y);                      \
    }
#define ORV_BENCH_TRANSFORMS                                                                                           \
    ORV_BENCH_TRANSFORM(z, complex, false)                                                                             \
    ORV_BENCH_TRANSFORM(c, complex, true) ORV_BENCH_TRANSFORM(d, real, false) ORV_BENCH_TRANSFORM(s, real, true)
