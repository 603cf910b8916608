// Small whole numbers: sums of their products are exact, whatever their order, so results compare bit for bit.
#pragma once

#include "frame/types.h"
#include "tests/support/random.h"

#include <cmath>

namespace orv::test {

// From -8 to 8, parts of complex numbers too.
template <class T> T whole(Random& random)
{
    const auto number = [&] { return std::round(8 * random.value<double>()); };
    if constexpr (is_complex<T>) {
        const auto re = real_t<T>(number());
        return {re, real_t<T>(number())};
    } else return T(number());
}

} // namespace orv::test
