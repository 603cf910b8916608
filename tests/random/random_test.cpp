// Calls drawn at random: any routine, any setting of its arguments, any number of threads, small problems shared as if
// they were large. ORV_TEST_SEED=n draws others, ORV_RANDOM_CALLS=n so many times as many, and
//
//     ORV_RANDOM_LINE='syrk d un n=193 k=9 ... [cblas]' build/bin/test_random
//
// repeats one that failed. A line without its brackets is one for `orv verify` too.
#include "cli/verify/run.h"
#include "tests/random/check.h"
#include "tests/support/random.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <ostream>
#include <unistd.h>

namespace orv::test {
namespace {

using namespace verify;

// What runs now, for the message of a crash.
char running[512];

void tell(int signal)
{
    [[maybe_unused]] const auto written = write(2, running, std::strlen(running));
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

std::string checked(const Drawn& drawn)
{
    for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGILL, SIGFPE}) std::signal(signal, tell);
    std::snprintf(running, sizeof running, "\nin %s\n", text(drawn).c_str());
    return check(drawn);
}

struct Share {
    const char* group;
    int calls, part;
    double most; // multiplications, about
};
void PrintTo(const Share& share, std::ostream* to) { *to << share.group << ", part " << share.part; }

class RandomCalls : public testing::TestWithParam<Share> {};

TEST_P(RandomCalls, are_answered_as_the_reference_does)
{
    const auto& [group, calls, part, most] = GetParam();
    const char* const times = std::getenv("ORV_RANDOM_CALLS");
    const i64 count = calls * (times ? std::strtoll(times, nullptr, 10) : 1);
    const Group& from = *find_group(group);
    verify::Random random(seed() + 1000 * static_cast<u64>(part) + std::strlen(group));
    for (i64 i = 0; i < count; ++i) {
        const Family& family = random.of(from.families);
        const Routine& routine = random.of(family.routines);
        const auto ways = ways_of(family, routine);
        const Drawn drawn = draw(family, routine, random.of(ways), most, random);
        const std::string fault = checked(drawn);
        EXPECT_EQ(fault, "") << text(drawn);
        if (testing::UnitTest::GetInstance()->current_test_info()->result()->total_part_count() >= 5) break;
    }
}

std::vector<Share> shares()
{
    std::vector<Share> all;
    const auto add = [&](const char* group, int parts, int calls, double most) {
        for (int part = 0; part < parts; ++part) all.push_back({group, calls, part, most});
    };
    add("level1", 1, 3000, 2e5);
    add("sparse", 1, 500, 1e5);
    add("level2", 3, 2000, 4e4);
    add("level3", 6, 1250, 6e5);
    add("trans", 1, 1000, 3e4);
    add("xblas", 1, 2000, 1e3);
    return all;
}

INSTANTIATE_TEST_SUITE_P(Quick, RandomCalls, testing::ValuesIn(shares()), [](const auto& info) {
    return std::string(info.param.group) + '_' + std::to_string(info.param.part);
});

TEST(RandomCall, that_was_printed_can_be_repeated)
{
    const char* const given = std::getenv("ORV_RANDOM_LINE");
    const std::string line = given ? given
                                   : "syrk d UN n=193 k=9 alpha=1 lda=12 beta=0.5 ldc=200 shift=3 threads=4 "
                                     "eager=100000 seed=7 [cblas-by-rows]";
    const Drawn drawn = parse(line);
    EXPECT_EQ(checked(drawn), "") << line;
    EXPECT_EQ(text(drawn), line);
}

} // namespace
} // namespace orv::test
