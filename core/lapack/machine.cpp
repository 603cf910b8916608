// What LAPACK routines ask about the arithmetic: orv_lapack_?lamch, orv_lapack_?labad.
#include "frame/export.h"
#include "frame/imports.h"

#include <limits>

using namespace orv;

namespace {

// The constant that a letter, in either case, stands for; 0 for any other letter.
template <class R> R constant(char letter)
{
    using Limits = std::numeric_limits<R>;
    constexpr R rounding = Limits::epsilon() / 2;
    static_assert(1 / Limits::max() < Limits::min(), "the least normal number has a finite reciprocal");
    switch (fold(letter)) {
    case 'E':
        return rounding; // largest relative error of one operation
    case 'S':
        return Limits::min(); // least number with a finite reciprocal
    case 'B':
        return Limits::radix; // base of the arithmetic
    case 'P':
        return Limits::epsilon(); // rounding times base
    case 'N':
        return Limits::digits; // digits of a number in that base
    case 'R':
        return 1; // operations round
    case 'M':
        return Limits::min_exponent; // of the least normal number
    case 'U':
        return Limits::min(); // that number
    case 'L':
        return Limits::max_exponent; // of the largest number
    case 'O':
        return Limits::max(); // that number
    default:
        return 0;
    }
}

} // namespace

ORV_EXPORT float orv_lapack_slamch(const char* letter) { return constant<float>(*letter); }
ORV_EXPORT double orv_lapack_dlamch(const char* letter) { return constant<double>(*letter); }

// Narrows the range between a small and a large number on machines whose exponents reach beyond 2000 decimal digits. No
// machine of this architecture has such numbers, so both stay.
ORV_EXPORT void orv_lapack_slabad(float*, float*) {}
ORV_EXPORT void orv_lapack_dlabad(double*, double*) {}
