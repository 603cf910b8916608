// What the libraries with a standard interface say when a call was not carried out.
//
// Such an interface has one way to tell: its error routine, which the program may replace. It gets the name of the
// routine and the number of a bad argument. Where no argument is at fault, no kernel can run, say, it gets a number
// that no argument has, so that nobody takes what stands in the operands for a result:
//
//   1000            no kernel covers what was asked for, and there is no other library to ask
//   1000 + status   a status of orv/status.h
//
// A routine of LAPACK has the same number, negated, as its info.
#pragma once

#include "frame/types.h"

#include <orv/status.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace orv::compat {

inline constexpr int not_carried_out = 1000;

// The error routine of Fortran's interface, by the width of its integers.
template <class Int> using Xerbla = void(const char* routine, const Int* position, std::size_t length);

// A routine as Fortran's error routine gets it: upper-case, filled up with blanks to six letters. Symbols will do:
// "dgemm", "dgemm_" and "dgemm_64_" are DGEMM.
struct RoutineName {
    char text[16] = "      ";
    std::size_t length = 0;

    explicit RoutineName(const char* symbol)
    {
        for (; length < sizeof text && symbol[length] != '\0' && symbol[length] != '_'; ++length)
            text[length] = symbol[length] >= 'a' ? fold(symbol[length]) : symbol[length]; // digits stay
        length = static_cast<std::size_t>(max(6, static_cast<i64>(length)));
    }
};

// What an error routine does that nobody has replaced: a line on standard error, and the end of the program.
[[noreturn, gnu::cold]] inline void print_and_stop(const char* routine, std::size_t length, i64 position)
{
    while (length > 0 && routine[length - 1] == ' ') --length;
    const int width = static_cast<int>(length);
    if (position > not_carried_out)
        std::fprintf(stderr, "orv: %.*s was not carried out: %s\n", width, routine, orv_last_error());
    else if (position == not_carried_out)
        std::fprintf(stderr,
                     "orv: %.*s was not carried out: liborv_lapack leaves these arguments to the LAPACK behind it, and "
                     "there is none: link the program with one, or install it\n",
                     width, routine);
    else
        std::fprintf(stderr, " ** On entry to %.*s parameter number %2lld had an illegal value\n", width, routine,
                     static_cast<long long>(position));
    std::exit(EXIT_FAILURE);
}

} // namespace orv::compat
