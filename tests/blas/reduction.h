// What the tests of the reducing vector kernels share: the problems they are run on, and comparison bit for bit.
#pragma once

#include "tests/support/kernels.h"
#include "tests/support/random.h"
#include "tests/support/vectors.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>

namespace orv::test {

template <class R> inline constexpr R inf = std::numeric_limits<R>::infinity();
template <class R> inline constexpr R quiet_nan = std::numeric_limits<R>::quiet_NaN();

inline bool same_bits(float a, float b) { return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b); }
inline bool same_bits(double a, double b) { return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b); }
template <class R> bool same_bits(cpx<R> a, cpx<R> b) { return same_bits(a.re, b.re) && same_bits(a.im, b.im); }

// Calls body(n, vector) with random vectors of every length through all blocks and a few longer ones, of every kind of
// stride, at both edges, and of up to 80 elements at every alignment.
template <class T, class Body> void for_each_vector(const char* routine, Body&& body)
{
    std::vector<i64> lengths;
    for (i64 n = 0; n <= 200; ++n) lengths.push_back(n);
    for (const i64 n : {255, 256, 257, 511, 512, 513, 999, 1000, 2047, 2050, 8191, 8193}) lengths.push_back(n);

    Random random;
    for (const i64 n : lengths)
        for (const i64 inc : {1, -1, 2, -3, 0}) {
            const std::vector<Place> edges = {{Edge::end, 0}, {Edge::start, 0}};
            for (const Place place : n <= 80 ? places<T>() : edges) {
                Strided<T> x(n, inc, place);
                x.fill(random);
                SCOPED_TRACE(problem(routine, letter<T>, n, inc, place));
                body(n, x);
                if (testing::Test::HasFailure()) return;
            }
        }
}

// Elements side by side, ending at an unreadable page.
template <class T> struct Packed : Strided<T> {
    Packed(std::initializer_list<T> elements) : Strided<T>(static_cast<i64>(elements.size()), 1)
    {
        i64 i = 0;
        for (const T& element : elements) (*this)(i++) = element;
    }
};

} // namespace orv::test
