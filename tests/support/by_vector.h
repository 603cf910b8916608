// Large products checked in O(n^2): what a matrix does to a random vector, in wide arithmetic, with the magnitude of
// all terms that went in.
#pragma once

#include "tests/support/bounds.h"
#include "tests/support/random.h"

#include <algorithm>
#include <complex>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
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

template <class T> T conjugated(T x)
{
    if constexpr (is_complex<T>) return conj(x);
    else return x;
}

// m by n, the rows behind the last one NaN.
template <class T> struct Matrix {
    i64 m, n, ld;
    std::vector<T> elements;

    Matrix(i64 rows, i64 columns, std::uint64_t stream)
        : m(rows), n(columns), ld(rows + 3), elements(random_elements<T>(ld * columns, stream))
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = m; i < ld; ++i) at(i, j) = nan();
    }
    static T nan() { return element<T>::make(std::numeric_limits<real_t<T>>::quiet_NaN()); }
    T& at(i64 i, i64 j) { return elements[static_cast<std::size_t>(i + j * ld)]; }
    const T& at(i64 i, i64 j) const { return elements[static_cast<std::size_t>(i + j * ld)]; }
    const T* data() const { return elements.data(); }
    Matrix with(std::vector<T> others) const
    {
        Matrix x = *this;
        x.elements = std::move(others);
        return x;
    }
    // Element (i, j) of op(X).
    T op(char letter, i64 i, i64 j) const
    {
        const T e = fold(letter) == 'N' ? at(i, j) : at(j, i);
        return fold(letter) == 'C' ? conjugated(e) : e;
    }
    WideVector times(char letter, const WideVector& x) const
    {
        return product(
            fold(letter) == 'N' ? m : n, [&](i64 i, i64 j) { return wide(op(letter, i, j)); }, x);
    }
    WideVector times(const WideVector& x) const { return times('N', x); }
};

// One triangle of a square matrix, the other one NaN.
template <class T> struct Half : Matrix<T> {
    bool upper, hermitian, unit = false;

    Half(char uplo, i64 n, std::uint64_t stream, bool hermitian_ = false)
        : Matrix<T>(n, n, stream), upper(fold(uplo) == 'U'), hermitian(hermitian_)
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < n; ++i)
                if (!stored(i, j)) this->at(i, j) = this->nan();
    }
    bool stored(i64 i, i64 j) const { return i == j || upper == (i < j); }
    Half with(std::vector<T> others) const
    {
        Half x = *this;
        x.elements = std::move(others);
        return x;
    }
    // As a symmetric or Hermitian matrix.
    WideVector times_whole(const WideVector& x) const
    {
        const auto whole = [&](i64 i, i64 j) {
            const T e = stored(i, j) ? this->at(i, j) : this->at(j, i);
            if (i == j && hermitian) return Wide(wide(e).real());
            return wide(stored(i, j) || !hermitian ? e : conjugated(e));
        };
        return product(this->n, whole, x);
    }
    // op of it as a triangular matrix.
    WideVector times_triangle(char trans, const WideVector& x) const
    {
        const auto triangle = [&](i64 i, i64 j) {
            const bool plain = fold(trans) == 'N';
            if (!(plain ? stored(i, j) : stored(j, i))) return Wide(0);
            return i == j && unit ? Wide(1) : wide(this->op(trans, i, j));
        };
        return product(this->n, triangle, x);
    }
    bool leaves_the_rest(const Half& before) const
    {
        for (i64 j = 0; j < this->n; ++j)
            for (i64 i = 0; i < this->ld; ++i)
                if (!(i < this->n && stored(i, j)) && std::memcmp(&this->at(i, j), &before.at(i, j), sizeof(T)) != 0)
                    return false;
        return true;
    }
};

// Triangles whose solves stay well within range.
template <class T> Half<T> triangle(char uplo, char diag, i64 n)
{
    Half<T> a(uplo, n, 1);
    const auto small = element<T>::make(real_t<T>(1) / static_cast<real_t<T>>(n));
    for (T& e : a.elements) e = e * small;
    for (i64 j = 0; j < n; ++j) a.at(j, j) = fold(diag) == 'U' ? a.nan() : element<T>::make(1) + a.at(j, j);
    a.unit = fold(diag) == 'U';
    return a;
}

// Roundings on the way to a sum of n products, with scalars; a complex product is worth two.
template <class T> long double roundings(i64 n) { return static_cast<long double>((is_complex<T> ? 2 : 1) * n + 24); }

// A matrix times a vector: as computed, and as it should be.
template <class T> void expect_equal(const WideVector& computed, const WideVector& expected, i64 n)
{
    WideVector both = expected; // a computed matrix is as large as what went in
    for (std::size_t i = 0; i < both.magnitude.size(); ++i) both.magnitude[i] += computed.magnitude[i];
    EXPECT_LE(excess<T>(computed, both, roundings<T>(n)), 1);
}

} // namespace orv::test
