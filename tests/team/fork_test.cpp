// What fork does to teams, orv's and the program's own.
#include "core/team/team.h"

#include <atomic>
#include <gtest/gtest.h>
#include <omp.h>
#include <orv/orv.h>
#include <set>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace orv::core;

namespace {

// Whether f() holds in a child process that ends in time.
template <class F> bool holds_in_child(F f)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(30);
        _exit(f() ? 0 : 1);
    }
    int ended = -1;
    waitpid(child, &ended, 0);
    return WIFEXITED(ended) && WEXITSTATUS(ended) == 0;
}

// The program's own use of OpenMP.
bool opens_a_region(int threads)
{
    int sum = 0;
#pragma omp parallel num_threads(threads) reduction(+ : sum)
    sum += omp_get_thread_num() + 1;
    return sum == threads * (threads + 1) / 2;
}

std::set<pid_t> threads_of_a_region()
{
    std::vector<pid_t> ids(3);
#pragma omp parallel num_threads(3)
    ids[omp_get_thread_num()] = gettid();
    return {ids.begin(), ids.end()};
}

int members(int threads)
{
    int members = 0;
    parallel(threads, [&](int index, int count) {
        if (index == 0) members = count;
    });
    return members;
}

// The matrix of ones times itself by the library, each member of whose team takes memory.
bool multiplies()
{
    constexpr int n = 300;
    const std::vector<double> a(n * n, 1.0);
    std::vector<double> c(n * n);
    return orv_dgemm('N', 'N', n, n, n, 1, a.data(), n, a.data(), n, 0, c.data(), n) == ORV_OK &&
           c == std::vector<double>(n * n, n);
}

struct OpenMpThreads { // set for the process, put back at the end
    const int before = omp_get_max_threads();
    explicit OpenMpThreads(int threads) { omp_set_num_threads(threads); }
    ~OpenMpThreads() { omp_set_num_threads(before); }
};

} // namespace

TEST(Fork, leaves_the_child_a_team_of_one)
{
    parallel(2, [](int, int) {}); // the parent has threads waiting
    EXPECT_TRUE(holds_in_child([] {
        const bool alone = members(2) == 1; // the number may stem from before the fork
        return alone && available_threads() == 1 && orv_set_num_threads(4) == ORV_OK && available_threads() == 1;
    }));
    EXPECT_EQ(members(2), 2);
}

TEST(Fork, leaves_openmp_to_the_child_and_the_team_to_the_parent)
{
    const OpenMpThreads host(4);
    for (int round = 0; round < 3; ++round) {
        ASSERT_EQ(members(4), 4);
        EXPECT_TRUE(holds_in_child([] { return opens_a_region(3) && members(4) == 1 && omp_get_max_threads() == 4; }));
        EXPECT_EQ(omp_get_max_threads(), 4);
    }
    EXPECT_TRUE(opens_a_region(4));
}

TEST(Fork, leaves_openmp_to_the_child_of_a_program_that_computes)
{
    const OpenMpThreads host(4);
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(multiplies());
        EXPECT_TRUE(holds_in_child([] { return opens_a_region(3) && multiplies() && opens_a_region(4); }));
    }
    EXPECT_TRUE(multiplies());
}

TEST(Fork, is_possible_inside_a_region)
{
    ASSERT_EQ(members(2), 2);
    std::atomic<int> good{0};
#pragma omp parallel num_threads(2)
    good += holds_in_child([] { return members(2) == 1; });
    EXPECT_EQ(good, 2);
    EXPECT_TRUE(opens_a_region(2));
    EXPECT_EQ(members(2), 2);
    EXPECT_TRUE(holds_in_child([] { return opens_a_region(2); })) << "threads are still sent home later";
}

TEST(Fork, lets_the_team_of_another_thread_work_on)
{
    std::atomic<bool> works{false}, may_end{false};
    int count = 0;
    std::thread other([&] {
        parallel(2, [&](int index, int members) {
            if (index == 0) count = members;
            works = true;
            while (!may_end) std::this_thread::yield();
        });
        EXPECT_EQ(members(2), 2);
    });
    while (!works) std::this_thread::yield();
    EXPECT_TRUE(holds_in_child([] { return opens_a_region(3); }));
    may_end = true;
    other.join();
    EXPECT_EQ(count, 2);
}

TEST(Fork, leaves_threads_alone_that_orv_did_not_bring)
{
    std::thread([] {
        const auto before = threads_of_a_region();
        EXPECT_TRUE(holds_in_child([] { return members(2) == 1; }));
        EXPECT_EQ(threads_of_a_region(), before);
    }).join();
}
