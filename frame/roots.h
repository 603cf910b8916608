// Roots of unity, for the constants of kernels and for their tables: one formula at compile time and at run time. Once
// rounded to double a part is within 0.51 units of its last place, rounded to float closer still.
#pragma once

#include "frame/types.h"

namespace orv {

struct Root {
    long double re, im;
};

namespace detail {

// 1 - x^2/(a*b) * (1 - x^2/((a+2)*(b+2)) * ...) from a = first, b = first + 1 on: ten terms leave 2^-70 for x below
// pi/4. The reciprocals are constants, for a division takes as long as all the rest of a term.
template <int first> struct Series {
    static constexpr int terms = 10;
    struct Reciprocals {
        long double of[terms];
    };
    static constexpr Reciprocals reciprocals = [] {
        Reciprocals r{};
        for (int i = 0; i < terms; ++i) r.of[i] = 1.0L / ((first + 2 * i) * (first + 2 * i + 1));
        return r;
    }();
    static constexpr long double at(long double square)
    {
        long double sum = 1;
        for (int i = terms; i-- > 0;) sum = 1 - square * reciprocals.of[i] * sum;
        return sum;
    }
};

} // namespace detail

// exp(2*pi*i*k/n), for n > 0 below 2^59. The angle is brought into the first eighth of the circle in integers.
constexpr Root root(i64 k, i64 n)
{
    constexpr long double quarter_pi = 0.785398163397448309615660845819875721L;
    const i64 eighths = 8 * (k % n + (k < 0 && k % n != 0 ? n : 0)), octant = eighths / n;
    const i64 rest = octant % 2 == 0 ? eighths - octant * n : (octant + 1) * n - eighths;
    const long double x = quarter_pi * static_cast<long double>(rest) / static_cast<long double>(n), square = x * x;
    const long double cosine = detail::Series<1>::at(square), sine = x * detail::Series<2>::at(square);
    const bool swapped = ((octant + 1) & 2) != 0;
    const long double re = swapped ? sine : cosine, im = swapped ? cosine : sine;
    return {((octant + 2) & 4) != 0 ? -re : re, octant >= 4 ? -im : im};
}

// The same for one k after the other of a long circle: the product of the first root of a block and of a step within
// the block, which takes a tenth of the formula's time. A part near 0 is at least a 256th of the products that it is
// the difference of, so it loses 8 of the 11 bits that double does not have: within 0.9 units of its last place, and
// most parts within 0.51.
class RootWalk {
public:
    constexpr explicit RootWalk(i64 n) : n_(n), steps_()
    {
        for (i64 j = 0; j < block; ++j) steps_[j] = root(j, n);
    }
    constexpr Root at(i64 k)
    {
        if (k / block != number_) {
            number_ = k / block;
            first_ = root(number_ * block, n_);
        }
        const Root step = steps_[k % block];
        return {first_.re * step.re - first_.im * step.im, first_.re * step.im + first_.im * step.re};
    }

private:
    static constexpr i64 block = 64;

    i64 n_, number_ = -1;
    Root first_{};
    Root steps_[block];
};

template <class R> constexpr cpx<R> rounded(Root w) { return {static_cast<R>(w.re), static_cast<R>(w.im)}; }

} // namespace orv
