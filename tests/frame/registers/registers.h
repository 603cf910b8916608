// Registers and what they are compared with: arrays of as many elements.
#pragma once

#include "frame/simd.h"
#include "tests/support/guarded.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace orv::test {

template <class T> inline constexpr int lanes = vec<T>::lanes;
template <class T> using Lanes = std::array<T, lanes<T>>;

template <class T> Lanes<T> lanes_of(vec<T> v)
{
    Lanes<T> a;
    static_assert(sizeof a == sizeof v);
    std::memcpy(&a, &v, sizeof a);
    return a;
}
template <class T> vec<T> register_of(const Lanes<T>& a)
{
    vec<T> v;
    std::memcpy(&v, &a, sizeof v);
    return v;
}

// What becomes of lane l by the formula of(l).
template <class T, class Of> Lanes<T> each_lane(Of of)
{
    Lanes<T> a;
    for (int l = 0; l < lanes<T>; ++l) a[l] = of(l);
    return a;
}

// To the bit, but that one NaN is as good as another.
template <class R> bool same(R a, R b) { return (a != a && b != b) || std::memcmp(&a, &b, sizeof a) == 0; }
template <class R> bool same(cpx<R> a, cpx<R> b) { return same(a.re, b.re) && same(a.im, b.im); }
template <class T> testing::AssertionResult is(vec<T> v, const Lanes<T>& expected)
{
    const Lanes<T> a = lanes_of(v);
    for (int l = 0; l < lanes<T>; ++l)
        if (!same(a[l], expected[l])) return testing::AssertionFailure() << "lane " << l;
    return testing::AssertionSuccess();
}

inline std::mt19937 generator(1);
template <class T> T drawn()
{
    const auto real = [] { return std::uniform_real_distribution<real_t<T>>(-2, 2)(generator); };
    if constexpr (is_complex<T>) return {real(), real()};
    else return real();
}
template <class T> Lanes<T> drawn_lanes()
{
    return each_lane<T>([](int) { return drawn<T>(); });
}

// body<k>() for k = from..to.
template <int from, int to, class Body> void for_each_count(const Body& body)
{
    if constexpr (from <= to) body.template operator()<from>(), for_each_count<from + 1, to>(body);
}

using Elements = testing::Types<float, double, cpx<float>, cpx<double>>;
using Reals = testing::Types<float, double>;

} // namespace orv::test
