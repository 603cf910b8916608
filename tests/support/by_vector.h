// Large products checked in O(n^2): what a matrix does to a random vector, in wide arithmetic, with the magnitude of
// all terms that went in.
#pragma once

#include "tests/support/bounds.h"
#include "tests/support/random.h"

#include <algorithm>
#include <complex>
#include <vector>

namespace orv::test {

using Wide = std::complex<long double>;

template <class T> Wide wide(T x)
{
    if constexpr (is_complex<T>) return {x.re, x.im};
    else return x;
}
inline long double magnitude_of(Wide x) { return std::fabs(x.real()) + std::fabs(x.imag()); }

struct WideVector {
    std::vector<Wide> value;
    std::vector<long double> magnitude;

    explicit WideVector(i64 n) : value(static_cast<std::size_t>(n)), magnitude(value.size()) {}
    static WideVector random(i64 n)
    {
        WideVector v(n);
        Random numbers(77);
        for (std::size_t i = 0; i < v.value.size(); ++i)
            v.value[i] = numbers.value<double>(), v.magnitude[i] = magnitude_of(v.value[i]);
        return v;
    }
    i64 size() const { return static_cast<i64>(value.size()); }
    void add(i64 i, Wide f, const WideVector& x, i64 j)
    {
        const auto to = static_cast<std::size_t>(i), from = static_cast<std::size_t>(j);
        value[to] += f * x.value[from], magnitude[to] += magnitude_of(f) * x.magnitude[from];
    }
    WideVector times(Wide f) const
    {
        WideVector y(size());
        for (i64 i = 0; i < size(); ++i) y.add(i, f, *this, i);
        return y;
    }
    WideVector plus(const WideVector& x) const
    {
        WideVector y = *this;
        for (i64 i = 0; i < size(); ++i) y.add(i, 1, x, i);
        return y;
    }
};

// A*x of A with that many rows, element(i, j) its elements.
template <class Element> WideVector product(i64 rows, const Element& element, const WideVector& x)
{
    WideVector y(rows);
    for (i64 j = 0; j < x.size(); ++j)
        for (i64 i = 0; i < rows; ++i) y.add(i, element(i, j), x, j);
    return y;
}

// Largest error of a computed vector as a multiple of what so many roundings of type T may make; at most 1 passes.
template <class T> long double excess(const WideVector& computed, const WideVector& expected, long double roundings)
{
    long double worst = 0;
    for (std::size_t i = 0; i < expected.value.size(); ++i) {
        const long double error = magnitude_of(computed.value[i] - expected.value[i]);
        const long double share = error / (gamma_n<T>(roundings) * expected.magnitude[i]);
        if (error != 0 && !(share <= worst)) worst = share;
    }
    return worst;
}

} // namespace orv::test
