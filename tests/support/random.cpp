#include "tests/support/random.h"

#include <cstdlib>

namespace orv::test {

std::uint64_t seed()
{
    static const std::uint64_t value = [] {
        const char* text = std::getenv("ORV_TEST_SEED");
        return text ? std::strtoull(text, nullptr, 0) : 20240229ull;
    }();
    return value;
}

} // namespace orv::test
