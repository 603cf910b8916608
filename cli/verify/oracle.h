// Whether equations hold, computed by plain loops in a wider type.
#pragma once

#include "cli/verify/storage.h"

namespace orv::verify {

// The element that is worst: how far it is off, and how far it may be by the textbook (Higham, Accuracy and Stability
// of Numerical Algorithms, 2nd ed., chapter 3): gamma_n times the sum of the sizes of all that went into it.
struct Verdict {
    double share = 0; // error/bound: at most 1 is right; infinite if the result is not even a number
    double error = 0, bound = 0;
    std::string place; // "c(3,4)", counted from 0

    void include(const Verdict& other)
    {
        if (place.empty() || other.share > share) *this = other;
    }
};

Verdict judge(const Equation& equation, char work, const Arrays& arrays);

// Of the position of an extreme size in x.
Verdict judge_extreme(int extreme, const View& x, i64 position, const Arrays& arrays);

} // namespace orv::verify
