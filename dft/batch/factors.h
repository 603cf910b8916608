// A length as the product of those that have straight-line code.
#pragma once

#include "dft/batch/points.h"
#include "dft/batch/rules.h"

namespace orv::dft::batch {

// The last factor is of the shortest transforms; the one before it joins those, and so on up to the first.
struct Factors {
    static constexpr i64 most = 16;
    i64 of[most], count;

    constexpr i64 last() const { return of[count - 1]; }
    constexpr i64 joins() const { return count - 1; }
    constexpr bool add(i64 n)
    {
        if (!is_straight(n)) {
            const i64 d = split_radix(n);
            return d != 0 && add(d) && add(n / d);
        }
        if (count == most) return false;
        of[count++] = n;
        return true;
    }
};

// No factors: nothing covers the length.
constexpr Factors factors_of(i64 n)
{
    Factors f{};
    if (n < 2 || !f.add(n)) f.count = 0;
    return f;
}

} // namespace orv::dft::batch
