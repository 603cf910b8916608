// What the tests of rotations and reflectors share.
#pragma once

#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"
#include "tests/support/vectors.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace orv::test {

// Where two arrays first differ in a bit; empty if nowhere.
template <class Expected, class Computed>
std::string first_difference(const Expected& expected, const Computed& computed)
{
    if (expected.size() != computed.size()) return "sizes";
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (std::memcmp(&expected[i], &computed[i], sizeof expected[i]) != 0) return "element " + std::to_string(i);
    return {};
}

} // namespace orv::test
