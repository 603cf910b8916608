// Operands and expectations of the interface tests: naive arithmetic in long double with the textbook bound.
#pragma once

#include "tests/compat/call.h"
#include "tests/support/bounds.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

namespace orv::test {

using wide = cpx<long double>;

template <class T> wide widen(T a)
{
    if constexpr (is_complex<T>) return {a.re, a.im};
    else return {a, 0};
}
template <class T> wide conjugate_if(bool conjugated, T a) { return conjugated ? conj(widen(a)) : widen(a); }
inline long double size(wide a) { return std::fabs(a.re) + std::fabs(a.im); }

// A number that was computed as a sum: its value, and the sum of the sizes of its terms. Without terms it is exact.
struct Expected {
    wide value{};
    long double magnitude = 0;
    int roundings = 0;

    Expected() = default;
    template <class T> explicit Expected(T exact) : value(widen(exact)) {}
    Expected& add(wide term, int term_roundings)
    {
        value += term, magnitude += size(term), roundings += term_roundings;
        return *this;
    }
};

template <class T> void expect_near(T computed, const Expected& expected)
{
    const long double allowed = gamma_n<T>(expected.roundings) * expected.magnitude;
    EXPECT_LE(size(widen(computed) - expected.value), allowed); // NaN fails
}

// n elements inc apart between guard pages, addressed as the standard addresses a vector.
template <class T> struct Vector {
    i64 n, inc;
    Guarded<T> storage;

    Vector(i64 length, i64 stride, Random& random)
        : n(length), inc(stride), storage(n > 0 ? static_cast<std::size_t>((n - 1) * std::abs(inc) + 1) : 0)
    {
        random.fill(storage);
    }
    i64 index(i64 i) const { return (inc < 0 ? (1 - n) * inc : 0) + i * inc; }
    T& operator[](i64 i) const { return storage[static_cast<std::size_t>(index(i))]; }
    T* data() const { return storage.data(); }
    Int length() const { return {n}; }
    Int step() const { return {inc}; }
};

// What a vector should hold afterwards; where nothing is said, what it held.
template <class T> struct After {
    const Vector<T>& x;
    std::vector<Expected> expected;

    explicit After(const Vector<T>& vector) : x(vector)
    {
        for (const T& element : x.storage) expected.emplace_back(element);
    }
    Expected& operator[](i64 i) { return expected[static_cast<std::size_t>(x.index(i))]; }
    void check() const
    {
        for (std::size_t i = 0; i < expected.size(); ++i) expect_near(x.storage[i], expected[i]);
    }
};

} // namespace orv::test
