// Operands and expectations of matrix-vector products, for tests of single routines.
#pragma once

#include "tests/support/bounds.h"
#include "tests/support/kernels.h"
#include "tests/support/vectors.h"

#include <gtest/gtest.h>

namespace orv::test {

// m by n elements, lda apart, against an unreadable page. All padding is NaN and must stay what it is.
template <class T> struct Matrix {
    i64 m, n, lda;
    Guarded<T> data;

    Matrix(i64 m, i64 n, i64 lda, Edge edge = Edge::end, std::size_t shift = 0)
        : m(m), n(n), lda(lda), data(m > 0 && n > 0 ? static_cast<std::size_t>((n - 1) * lda + m) : 0, edge, shift)
    {
    }
    T& operator()(i64 i, i64 j) const { return data[static_cast<std::size_t>(i + j * lda)]; }
    void fill(Random& random) const
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < m; ++i) (*this)(i, j) = random.value<T>();
    }
    const T* operator*() const { return data.data(); }
};

template <class T> constexpr T scalar(double re, double im)
{
    if constexpr (is_complex<T>) return {static_cast<real_t<T>>(re), static_cast<real_t<T>>(im)};
    else return static_cast<T>(re);
}

// A value in long double beside the magnitudes that went into it, a part each; imaginary parts of reals are zero.
struct Bounded {
    long double re = 0, im = 0, re_magnitude = 0, im_magnitude = 0;

    Bounded() = default;
    template <class R> explicit Bounded(R a) : re(a), re_magnitude(std::fabs(re)) {}
    template <class R>
    explicit Bounded(cpx<R> a) : re(a.re), im(a.im), re_magnitude(std::fabs(re)), im_magnitude(std::fabs(im))
    {
    }
    Bounded& operator+=(const Bounded& b)
    {
        re += b.re, im += b.im, re_magnitude += b.re_magnitude, im_magnitude += b.im_magnitude;
        return *this;
    }
    Bounded operator*(const Bounded& b) const
    {
        Bounded p;
        p.re = re * b.re - im * b.im, p.im = re * b.im + im * b.re;
        p.re_magnitude = re_magnitude * b.re_magnitude + im_magnitude * b.im_magnitude;
        p.im_magnitude = re_magnitude * b.im_magnitude + im_magnitude * b.re_magnitude;
        return p;
    }
};

template <class T> long double excess(T computed, const Bounded& b, i64 roundings)
{
    if constexpr (is_complex<T>)
        return excess(computed, ComplexEntry{{b.re, b.re_magnitude, static_cast<long double>(roundings)},
                                             {b.im, b.im_magnitude, static_cast<long double>(roundings)}});
    else return excess(computed, Entry{b.re, b.re_magnitude, static_cast<long double>(roundings)});
}

// Roundings on the longest way into a sum of `length` products that a scalar multiplies and that is added to a scaled
// element: one product and one sum a term, the scalar's product, and joins of a complex number's partial sums.
template <class T> constexpr i64 product_roundings(i64 length)
{
    return is_complex<T> ? length + length / 2 + 10 : length + 4;
}

template <class T> bool same_bits(T a, T b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

} // namespace orv::test
