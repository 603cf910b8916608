// Replicable random operands. ORV_TEST_SEED=n repeats a run; the seed of a failing test is printed with its problem.
#pragma once

#include "frame/types.h"

#include <cstdint>
#include <random>
#include <vector>

namespace orv::test {

std::uint64_t seed();

class Random {
public:
    explicit Random(std::uint64_t stream = 0) : engine_(seed() + stream * 0x9e3779b97f4a7c15ull) {}

    i64 integer(i64 low, i64 high) { return std::uniform_int_distribution<i64>(low, high)(engine_); }

    // Uniform in [-1, 1).
    template <class T> T value()
    {
        if constexpr (is_complex<T>) {
            const auto re = value<real_t<T>>(), im = value<real_t<T>>();
            return {re, im};
        } else return static_cast<T>(std::uniform_real_distribution<double>(-1, 1)(engine_));
    }

    template <class Range> void fill(Range&& range)
    {
        for (auto& element : range) element = value<std::remove_cvref_t<decltype(element)>>();
    }

private:
    std::mt19937_64 engine_;
};

template <class T> std::vector<T> random_elements(i64 count, std::uint64_t stream)
{
    std::vector<T> elements(static_cast<std::size_t>(count));
    Random(stream).fill(elements);
    return elements;
}

} // namespace orv::test
