// target(i,j) = source(i,j), row by row.
#pragma once

#include "trans/elements.h"

namespace orv::trans {

// n elements of one row, upwards. Each register is written before the next one is read, so a target may lie in the same
// memory as the source if no element moves up.
template <class S, class D> ORV_INLINE void row(u64 n, const S& source, const D& target)
{
    constexpr int lanes = S::lanes;
    static_assert(8 % lanes == 0);
    const auto pass = [&]<int count>(u64 j)
                          ORV_INLINE_LAMBDA { target.template put<count>(0, j, source.template get<count>(0, j)); };
    u64 j = 0;
    for (; j + 8 <= n; j += 8)
#pragma GCC unroll 8
        for (int k = 0; k < 8; k += lanes) pass.template operator()<lanes>(j + k);
    if constexpr (lanes > 1)
        for (; j + 2 <= n; j += 2) pass.template operator()<2>(j);
    for (; j < n; ++j) pass.template operator()<1>(j);
}

template <class S, class D> void rows_upwards(u64 rows, u64 cols, const S& source, const D& target)
{
    for (u64 i = 0; i < rows; ++i) row(cols, source.at(i, 0), target.at(i, 0));
}

// The same from the last element to the first, for a target in the same memory in which no element moves down.
template <class S, class D> void rows_downwards(u64 rows, u64 cols, const S& source, const D& target)
{
    constexpr int lanes = S::lanes;
    static_assert(8 % lanes == 0);
    for (u64 i = rows; i-- > 0;) {
        const S from = source.at(i, 0);
        const D to = target.at(i, 0);
        const auto pass = [&]<int count>(u64 j)
                              ORV_INLINE_LAMBDA { to.template put<count>(0, j, from.template get<count>(0, j)); };
        u64 j = cols;
        for (; j >= 8; j -= 8)
#pragma GCC unroll 8
            for (int k = lanes; k <= 8; k += lanes) pass.template operator()<lanes>(j - k);
        for (; j > 0; --j) pass.template operator()<1>(j - 1);
    }
}

} // namespace orv::trans
