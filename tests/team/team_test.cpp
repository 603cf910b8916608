#include "core/team/team.h"

#include <atomic>
#include <gtest/gtest.h>
#include <omp.h>
#include <orv/threads.h>
#include <thread>
#include <vector>
#include <xmmintrin.h>

using namespace orv;
using namespace orv::core;

namespace {

constexpr unsigned flags = 0x3f, invalid = 0x01;

struct Modes { // of the calling thread, put back at the end
    const unsigned before = _mm_getcsr();
    ~Modes() { _mm_setcsr(before); }
};

std::vector<unsigned> modes_of_openmp_threads()
{
    std::vector<unsigned> modes(4);
#pragma omp parallel num_threads(4)
    modes[omp_get_thread_num()] = _mm_getcsr() & ~flags;
    return modes;
}

} // namespace

TEST(Team, runs_every_member_once_at_the_same_time)
{
    for (int threads : {1, 2, 3, 8}) {
        std::vector<int> runs(threads, 0), counts(threads, 0);
        std::atomic<int> arrived{0};
        parallel(threads, [&](int index, int count) {
            ++runs[index], counts[index] = count;
            ++arrived;
            while (arrived < count) std::this_thread::yield(); // ends only if all run at once
        });
        EXPECT_EQ(runs, std::vector<int>(threads, 1));
        EXPECT_EQ(counts, std::vector<int>(threads, threads));
    }
}

TEST(Team, sends_the_caller_as_member_0)
{
    const auto caller = std::this_thread::get_id();
    parallel(3, [&](int index, int) { EXPECT_EQ(std::this_thread::get_id() == caller, index == 0); });
}

TEST(Team, is_not_woken_for_small_work)
{
    EXPECT_EQ(orv_set_num_threads(4), ORV_OK);
    EXPECT_EQ(threads_for(0, 100), 1);
    EXPECT_EQ(threads_for(199, 100), 1);
    EXPECT_EQ(threads_for(200, 100), 2);
    EXPECT_EQ(threads_for(399, 100), 3);
    EXPECT_EQ(threads_for(1'000'000, 100), 4);
    orv_set_num_threads(0);
}

TEST(Team, follows_the_nearest_setting)
{
    const int before = omp_get_max_threads();
    omp_set_num_threads(3);
    EXPECT_EQ(orv_get_num_threads(), 3);
    EXPECT_EQ(orv_set_num_threads(5), ORV_OK);
    EXPECT_EQ(orv_get_num_threads(), 5);
    EXPECT_EQ(orv_set_thread_num_threads(2), ORV_OK);
    EXPECT_EQ(orv_get_num_threads(), 2);
    std::thread([] { EXPECT_EQ(orv_get_num_threads(), 5); }).join();
    orv_set_thread_num_threads(0);
    EXPECT_EQ(orv_get_num_threads(), 5);
    for (int senseless : {-1, 1025}) {
        EXPECT_EQ(orv_set_num_threads(senseless), -1);
        EXPECT_EQ(orv_set_thread_num_threads(senseless), -1);
    }
    EXPECT_EQ(orv_get_num_threads(), 5);
    orv_set_num_threads(0);
    parallel(7, [](int, int) {});
    EXPECT_EQ(omp_get_max_threads(), 3) << "the host's setting stands";
    omp_set_num_threads(before);
}

TEST(Team, is_one_inside_a_parallel_region)
{
    parallel(2, [](int, int count) { EXPECT_TRUE(count == 1 || available_threads() == 1); });
#pragma omp parallel num_threads(2)
    {
        EXPECT_EQ(available_threads(), 1);
        EXPECT_EQ(threads_for(1'000'000, 1), 1);
    }
}

TEST(Team, computes_in_the_callers_modes_and_leaves_the_hosts_threads_theirs)
{
    const Modes restored;
    const auto host = modes_of_openmp_threads();
    const unsigned modes = (_mm_getcsr() & ~flags) | _MM_ROUND_UP | _MM_FLUSH_ZERO_ON | 0x40;
    _mm_setcsr(modes);
    unsigned seen[4] = {};
    parallel(4, [&](int index, int) { seen[index] = _mm_getcsr() & ~flags; });
    for (unsigned m : seen) EXPECT_EQ(m, modes);
    EXPECT_EQ(_mm_getcsr() & ~flags, modes);
    _mm_setcsr(restored.before);
    EXPECT_EQ(modes_of_openmp_threads(), host);
}

TEST(Team, brings_exception_flags_to_the_caller)
{
    const Modes restored;
    _mm_setcsr(_mm_getcsr() & ~flags);
    parallel(3, [](int index, int count) {
        volatile double zero = 0;
        if (index == count - 1) zero = zero / zero;
    });
    EXPECT_EQ(_mm_getcsr() & invalid, invalid);
    _mm_setcsr(_mm_getcsr() & ~flags);
    parallel(3, [](int, int) {});
    EXPECT_EQ(_mm_getcsr() & flags, 0u);
}

TEST(Team, serves_several_callers_at_once)
{
    std::vector<std::thread> callers;
    std::atomic<int> sum{0};
    for (int c = 0; c < 4; ++c)
        callers.emplace_back([&] {
            for (int i = 0; i < 50; ++i) parallel(2, [&](int, int count) { sum += 2 / count; });
        });
    for (auto& caller : callers) caller.join();
    EXPECT_EQ(sum, 4 * 50 * 2);
}
