// Numbers by chance, the same everywhere for the same seed.
#pragma once

#include "frame/types.h"

#include <algorithm>

namespace orv::verify {

// A generator of its own, so that a line gives the same data everywhere (Steele, Lea, Flood, OOPSLA 2014, 453-472).
class Random {
public:
    explicit Random(u64 seed) : state_(seed) {}

    u64 bits()
    {
        u64 z = state_ += 0x9e3779b97f4a7c15u;
        z = (z ^ z >> 30) * 0xbf58476d1ce4e5b9u;
        z = (z ^ z >> 27) * 0x94d049bb133111ebu;
        return z ^ z >> 31;
    }
    double operator()() { return static_cast<double>(static_cast<i64>(bits())) * 0x1p-63; } // uniform in [-1, 1)

    i64 from(i64 low, i64 high) { return low + static_cast<i64>(bits() % static_cast<u64>(high - low + 1)); }
    bool one_in(i64 n) { return from(1, n) == 1; }
    template <class Range> auto& of(Range& range)
    {
        return *(std::begin(range) + from(0, static_cast<i64>(std::size(range)) - 1));
    }
    // A size: every other one by an edge of blocks, whose sides are multiples of 16.
    i64 size(i64 low, i64 high)
    {
        if (one_in(2)) return from(low, high);
        return std::clamp(from(low / 16, high / 16) * 16 + from(-1, 1), low, high);
    }

private:
    u64 state_;
};

} // namespace orv::verify
