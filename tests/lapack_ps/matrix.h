// Matrices in guarded storage for tests of factorisations.
#pragma once

#include "tests/support/bounds.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"
#include "tests/support/whole.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <vector>

namespace orv::test {

template <class T> T number(double re, double im = 0)
{
    if constexpr (is_complex<T>) return {real_t<T>(re), real_t<T>(im)};
    else return T(re);
}
template <class R> R real_of(R a) { return a; }
template <class R> R real_of(cpx<R> a) { return a.re; }
template <class T> real_t<T> largest_part(T a)
{
    if constexpr (is_complex<T>) return std::max(std::fabs(a.re), std::fabs(a.im));
    else return std::fabs(a);
}

// In long double; imaginary parts of reals are zero.
using Wide = cpx<long double>;
template <class R> Wide wide(R a) { return {a, 0}; }
template <class R> Wide wide(cpx<R> a) { return {a.re, a.im}; }
inline long double size(Wide a) { return std::hypot(a.re, a.im); }

inline const double not_a_number = std::numeric_limits<double>::quiet_NaN();

// Bits that agree; of NaN any agrees with any.
template <class T> bool same(T a, T b)
{
    if constexpr (is_complex<T>) return same(a.re, b.re) && same(a.im, b.im);
    else return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
}

// Values that agree, whatever the signs of zeros.
template <class T> bool equal(T a, T b)
{
    if constexpr (is_complex<T>) return equal(a.re, b.re) && equal(a.im, b.im);
    else return a == b || (a != a && b != b);
}

// Of order n, columns lda apart, touching an unreadable page; all that is not set is NaN.
template <class T> struct Square {
    i64 n, lda;
    Guarded<T> data;

    explicit Square(i64 order, i64 padding = 0, Edge edge = Edge::end)
        : n(order), lda(std::max<i64>(order, 1) + padding),
          data(static_cast<std::size_t>(order > 0 ? (order - 1) * lda + order : 0), edge)
    {
    }
    T& operator()(i64 i, i64 j) const { return data[static_cast<std::size_t>(i + j * lda)]; }
    void copy(const Square& other) const
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < n; ++i) (*this)(i, j) = other(i, j);
    }
};

// The first element that two arrays disagree in, or an empty string.
template <class Expected, class Computed, class Agree>
std::string difference(const Expected& expected, const Computed& computed, Agree agree)
{
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (!agree(expected[i], computed[i]))
            return "element " + std::to_string(i) + " of " + std::to_string(expected.size());
    return {};
}
template <class Expected, class Computed> std::string difference(const Expected& expected, const Computed& computed)
{
    return difference(expected, computed, [](auto a, auto b) { return same(a, b); });
}
template <class Expected, class Computed> std::string unequal(const Expected& expected, const Computed& computed)
{
    return difference(expected, computed, [](auto a, auto b) { return equal(a, b); });
}

} // namespace orv::test
