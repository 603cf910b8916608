// Error bounds of the textbook (Higham, Accuracy and Stability of Numerical Algorithms, 2nd ed., chapter 3).
#pragma once

#include "frame/types.h"

#include <cmath>
#include <limits>

namespace orv::test {

// Unit roundoff u, and gamma_n = n*u / (1 - n*u).
template <class T> inline constexpr long double unit = std::numeric_limits<real_t<T>>::epsilon() / 2.0L;
template <class T> constexpr long double gamma_n(long double n) { return n * unit<T> / (1 - n * unit<T>); }

// What an entry should be: its value, the sum of the magnitudes of all terms that went in, and the number of
// roundings on the longest way from an operand to the result.
struct Entry {
    long double exact = 0, magnitude = 0;
    long double roundings = 0;
    void add(long double term) { exact += term, magnitude += std::fabs(term); }
};

// Error as a multiple of what theory allows: at most 1 passes. NaN compares false with everything, so it fails.
template <class T> long double excess(T computed, const Entry& entry)
{
    const long double allowed =
        gamma_n<T>(entry.roundings) * entry.magnitude + entry.roundings * std::numeric_limits<T>::denorm_min();
    const long double error = std::fabs(static_cast<long double>(computed) - entry.exact);
    return error == 0 ? 0 : error / allowed;
}

// One entry for each part. A complex product takes two products and a sum a part: feed both terms of each part.
struct ComplexEntry {
    Entry re, im;
    void add(long double a_re, long double a_im, long double b_re, long double b_im)
    {
        re.add(a_re * b_re), re.add(-a_im * b_im);
        im.add(a_re * b_im), im.add(a_im * b_re);
    }
};

template <class R> long double excess(cpx<R> computed, const ComplexEntry& entry)
{
    const long double re = excess(computed.re, entry.re), im = excess(computed.im, entry.im);
    return re <= im || im != im ? im : re;
}

} // namespace orv::test
