// Which lengths have a kernel, and how the others divide: what plans, their sizes and the tables of short transforms go
// by.
#pragma once

#include "frame/types.h"

#include <initializer_list>

namespace orv::dft::batch {

// Lengths that are no other's product in a plan's eyes.
constexpr bool has_base_case(i64 n)
{
    if (n >= 2 && n <= 16) return true;
    constexpr i64 others[] = {18, 20, 21, 22, 24, 25, 26, 27, 28, 30, 32, 33, 35, 36, 39,
                              40, 42, 44, 45, 48, 49, 50, 52, 54, 55, 56, 60, 63, 64, 128};
    for (const i64 other : others)
        if (n == other) return true;
    return false;
}

// Of n as a product the factor that is split off: the largest of a list that divides n and is at most its root. 0:
// there is none.
constexpr i64 split_radix(i64 n)
{
    for (const i64 d : {64, 32, 25, 20, 16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2})
        if (n % d == 0 && d * d <= n) return d;
    return 0;
}

// How a base goes: 0 is no rule.
constexpr i64 base_rule(i64 n)
{
    if (n >= 2 && n <= 16) return n - 1;
    constexpr i64 others[] = {20, 25, 32, 64, 128};
    for (i64 i = 0; i < 5; ++i)
        if (n == others[i]) return 16 + i;
    return 0;
}

// How the columns of a plan go: 1, 4, 5 and 7 by a base, 9 split.
constexpr i64 plan_rule(i64 n, i64 rows, i64 columns)
{
    if (!has_base_case(n)) return 9;
    const bool few = columns < 33 && rows == 1;
    if (n > 16 && few) return 1;
    if (columns == 1) return rows == 1 ? 4 : 5;
    return few ? 7 : 9;
}

} // namespace orv::dft::batch
