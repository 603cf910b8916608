#include "frame/serv.h"
#include "tests/support/probe.h"
#include "tests/support/process.h"
#include "tests/support/sanitized.h"

#include <atomic>
#include <barrier>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <mutex>
#include <orv/memory.h>
#include <random>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using orv::i64;
using orv::test::sanitized;

namespace {

constexpr i64 MiB = 1 << 20;

// A limit that does not follow from the number of processors, put back at the end; nothing kept at either end.
class Memory : public testing::Test {
protected:
    Memory()
    {
        orv_free_memory();
        orv_set_memory_limit(256 * MiB);
    }
    ~Memory() override
    {
        orv_set_memory_limit(limit);
        orv_free_memory();
    }
    const size_t limit = orv_get_memory_limit();
};

bool aligned(const void* block, i64 alignment) { return reinterpret_cast<std::uintptr_t>(block) % alignment == 0; }

// Runs f in a child of fork; true if it returned true within ten seconds.
template <class F> bool in_child(F f)
{
    const pid_t child = fork();
    if (child == 0) {
        alarm(10);
        _exit(f() ? 0 : 1);
    }
    int ended = -1;
    waitpid(child, &ended, 0);
    return WIFEXITED(ended) && WEXITSTATUS(ended) == 0;
}

// What the system says about the mapping that an address is in; nothing if it does not tell.
std::string flags_of(const void* address)
{
    std::ifstream maps("/proc/self/smaps");
    bool inside = false;
    for (std::string line; std::getline(maps, line);) {
        unsigned long from, to;
        if (std::sscanf(line.c_str(), "%lx-%lx ", &from, &to) == 2)
            inside = from <= reinterpret_cast<unsigned long>(address) && reinterpret_cast<unsigned long>(address) < to;
        else if (inside && line.starts_with("VmFlags:")) return line;
    }
    return {};
}

} // namespace

TEST_F(Memory, gives_blocks_of_any_power_of_two_alignment)
{
    for (i64 alignment = 1; alignment <= 2 * MiB; alignment *= 2)
        for (i64 bytes : {i64{0}, i64{1}, i64{127}, i64{4096}, i64{100000}, 3 * MiB}) {
            SCOPED_TRACE("alignment " + std::to_string(alignment) + " bytes " + std::to_string(bytes));
            void* blocks[] = {orv_serv_allocate(bytes, alignment), orv_serv_malloc(bytes, alignment),
                              orv_serv_calloc(bytes, 1, alignment)};
            for (void* block : blocks) {
                ASSERT_NE(block, nullptr);
                EXPECT_TRUE(aligned(block, alignment));
            }
            for (i64 i = 0; i < bytes; ++i) ASSERT_EQ(static_cast<char*>(blocks[2])[i], 0);
            for (int b = 0; b < 3; ++b) std::memset(blocks[b], b + 1, bytes);
            for (int b = 0; b < 3; ++b)
                for (i64 i = 0; i < bytes; i += 61) ASSERT_EQ(static_cast<char*>(blocks[b])[i], b + 1);
            orv_serv_deallocate(blocks[0]), orv_serv_free(blocks[1]), orv_serv_free(blocks[2]);
        }
}

TEST_F(Memory, asks_for_large_pages_for_large_blocks)
{
    if (access("/sys/kernel/mm/transparent_hugepage", F_OK) != 0) GTEST_SKIP() << "this system has none";
    for (const i64 bytes : {4 * MiB, 40 * MiB}) {
        void* blocks[] = {orv_serv_allocate(bytes, 64), orv_serv_malloc(bytes, 64), orv_serv_calloc(bytes, 1, 64)};
        for (void* block : blocks) {
            const std::string flags = flags_of(static_cast<char*>(block) + bytes / 2);
            EXPECT_TRUE(flags.empty() || flags.find(" hg") != std::string::npos) << flags;
            orv_serv_free(block);
        }
    }
}

TEST_F(Memory, gives_null_for_what_makes_no_sense)
{
    constexpr i64 most = std::numeric_limits<i64>::max();
    for (i64 bytes : {i64{-1}, std::numeric_limits<i64>::min(), most, most - 4096, i64{1} << 60}) {
        EXPECT_EQ(orv_serv_allocate(bytes, 128), nullptr) << bytes;
        EXPECT_EQ(orv_serv_malloc(bytes, 64), nullptr) << bytes;
        EXPECT_EQ(orv_serv_calloc(bytes, 1, 64), nullptr) << bytes;
        EXPECT_EQ(orv_serv_calloc(1, bytes, 64), nullptr) << bytes;
    }
    EXPECT_EQ(orv_serv_calloc(i64{1} << 33, i64{1} << 33, 64), nullptr);
    EXPECT_EQ(orv_serv_calloc((i64{1} << 32) + 1, i64{1} << 32, 64), nullptr); // 2^32 after an overflow
    for (i64 alignment : {i64{0}, i64{-8}, i64{3}, i64{96}, most, std::numeric_limits<i64>::min()}) {
        EXPECT_EQ(orv_serv_allocate(100, alignment), nullptr) << alignment;
        EXPECT_EQ(orv_serv_malloc(100, alignment), nullptr) << alignment;
    }
    EXPECT_EQ(orv_memory_held(), 0u);
}

TEST_F(Memory, is_returned_once_where_a_program_replaces_the_operations)
{
    orv::test::ProbeScope scope;
    orv_serv_free(orv_serv_malloc(100, 64));
    orv_serv_deallocate(orv_serv_allocate(100, 64));
    EXPECT_EQ(scope->allocations, 2);
    EXPECT_EQ(scope->live, 0);
}

TEST_F(Memory, takes_null_back)
{
    orv_serv_deallocate(nullptr);
    orv_serv_free(nullptr);
}

TEST_F(Memory, gives_null_when_the_system_has_no_more_and_goes_on_afterwards)
{
    if (sanitized()) GTEST_SKIP() << "the sanitizer's memory does not fit below a limit";
    EXPECT_TRUE(in_child([] {
        void* kept = orv_serv_allocate(MiB, 128);
        const rlimit small{512 * MiB, 512 * MiB};
        setrlimit(RLIMIT_AS, &small);
        const bool refused = orv_serv_allocate(1024 * MiB, 128) == nullptr &&
                             orv_serv_malloc(1024 * MiB, 64) == nullptr && orv_serv_calloc(1024, MiB, 64) == nullptr;
        orv_serv_deallocate(kept);
        return refused && orv_serv_allocate(MiB, 128) == kept && orv_memory_held() == MiB;
    }));
}

TEST_F(Memory, comes_back_at_the_next_call)
{
    void* block = orv_serv_allocate(3 * MiB, 128);
    orv_serv_deallocate(block);
    EXPECT_EQ(orv_memory_held(), 3u * MiB);
    for (i64 bytes : {3 * MiB, MiB, i64{1}}) {
        EXPECT_EQ(orv_serv_allocate(bytes, 64), block) << bytes;
        orv_serv_deallocate(block);
    }
    void* larger = orv_serv_allocate(3 * MiB + 1, 128);
    EXPECT_NE(larger, block);
    orv_serv_deallocate(larger);
    EXPECT_EQ(orv_serv_allocate(2 * MiB, 128), block) << "the smallest that is large enough";
    orv_serv_deallocate(block);
}

TEST_F(Memory, reuses_only_blocks_that_are_aligned_as_asked)
{
    for (int round = 0; round < 100; ++round)
        for (i64 alignment : {i64{128}, i64{4096}, i64{65536}}) {
            void* block = orv_serv_allocate(100000, alignment);
            ASSERT_TRUE(aligned(block, alignment));
            orv_serv_deallocate(block);
        }
}

TEST_F(Memory, is_kept_in_few_blocks_and_the_large_ones)
{
    std::vector<void*> blocks;
    for (i64 n = 1; n <= 8; ++n) blocks.push_back(orv_serv_allocate(n * MiB, 128));
    EXPECT_EQ(orv_memory_held(), 36u * MiB);
    for (void* block : blocks) orv_serv_deallocate(block);
    EXPECT_EQ(orv_memory_held(), static_cast<size_t>((5 + 6 + 7 + 8) * MiB));
}

TEST_F(Memory, is_not_kept_beyond_the_limit)
{
    orv_set_memory_limit(2 * MiB);
    EXPECT_EQ(orv_get_memory_limit(), 2u * MiB);
    void *a = orv_serv_allocate(2 * MiB, 128), *b = orv_serv_allocate(MiB, 128);
    ASSERT_TRUE(a != nullptr && b != nullptr);
    orv_serv_deallocate(a);
    EXPECT_EQ(orv_memory_held(), 1u * MiB) << "3 MiB were held, so the block went";
    orv_serv_deallocate(b);
    EXPECT_EQ(orv_memory_held(), 1u * MiB) << "1 MiB was held, so the block stayed";
    orv_set_memory_limit(0);
    EXPECT_EQ(orv_memory_held(), 0u) << "a lower limit acts at once";
    orv_serv_deallocate(orv_serv_allocate(MiB, 128));
    EXPECT_EQ(orv_memory_held(), 0u);
}

TEST_F(Memory, of_all_threads_is_freed_by_one_call_but_for_blocks_in_use)
{
    constexpr int count = 4;
    std::barrier kept(count + 1), freed(count + 1);
    std::vector<std::thread> threads;
    for (int t = 0; t < count; ++t)
        threads.emplace_back([&] {
            orv_serv_deallocate(orv_serv_allocate(MiB, 128));
            kept.arrive_and_wait();
            freed.arrive_and_wait();
            orv_serv_deallocate(orv_serv_allocate(MiB, 128)); // the thread goes on as before
        });
    auto* in_use = static_cast<char*>(orv_serv_allocate(MiB, 128));
    kept.arrive_and_wait();
    EXPECT_EQ(orv_memory_held(), (count + 1u) * MiB);
    orv_free_memory();
    EXPECT_EQ(orv_memory_held(), 1u * MiB);
    std::memset(in_use, 1, MiB);
    freed.arrive_and_wait();
    for (auto& thread : threads) thread.join();
    orv_serv_deallocate(in_use);
    EXPECT_EQ(orv_memory_held(), 1u * MiB) << "ended threads gave theirs back";
}

TEST_F(Memory, may_be_returned_by_another_thread)
{
    orv_set_memory_limit(8 * MiB); // some come back beyond the limit
    std::mutex mutex;
    std::vector<std::pair<unsigned char*, unsigned char>> pool; // block and its fill
    std::atomic<int> damaged{0};
    const auto work = [&](unsigned seed) {
        std::minstd_rand random(seed);
        for (int i = 0; i < 3000; ++i) {
            const i64 bytes = 1 + random() % (i % 16 == 0 ? 2 * MiB : 40000);
            auto* block = static_cast<unsigned char*>(orv_serv_allocate(bytes, i64{1} << random() % 13));
            const auto fill = static_cast<unsigned char>(random());
            std::memset(block, fill, bytes < 64 ? bytes : 64);
            block[bytes - 1] = fill;
            std::pair<unsigned char*, unsigned char> other;
            {
                const std::lock_guard lock(mutex);
                pool.emplace_back(block, fill);
                const std::size_t pick = random() % pool.size();
                if (pool.size() < 12) continue;
                other = pool[pick], pool[pick] = pool.back(), pool.pop_back();
            }
            damaged += *other.first != other.second;
            orv_serv_deallocate(other.first);
            if (i % 100 == 0) orv_free_memory();
        }
    };
    std::vector<std::thread> threads;
    for (unsigned t = 1; t <= 4; ++t) threads.emplace_back(work, t);
    for (auto& thread : threads) thread.join();
    for (const auto& [block, fill] : pool) damaged += *block != fill, orv_serv_deallocate(block);
    EXPECT_EQ(damaged, 0);
    orv_free_memory();
    EXPECT_EQ(orv_memory_held(), 0u);
}

TEST_F(Memory, works_in_a_child_forked_amid_other_threads_calls)
{
    if (sanitized()) GTEST_SKIP() << "the sanitizer's own locks do not survive a fork amid threads";
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t)
        threads.emplace_back([&] {
            while (!stop) orv_free_memory();
        });
    threads.emplace_back([&] {
        while (!stop) std::thread([] { orv_serv_deallocate(orv_serv_allocate(MiB, 128)); }).join();
    });
    bool fine = true;
    for (int i = 0; i < 100 && fine; ++i)
        fine = in_child([] {
            void* block = orv_serv_allocate(MiB, 128);
            orv_serv_deallocate(block);
            const bool reused = orv_serv_allocate(MiB, 128) == block;
            std::thread([] { orv_serv_deallocate(orv_serv_allocate(MiB, 128)); }).join();
            orv_free_memory();
            return reused;
        });
    stop = true;
    for (auto& thread : threads) thread.join();
    EXPECT_TRUE(fine);
}

TEST_F(Memory, kept_by_threads_of_the_parent_is_freed_in_a_child)
{
    std::barrier kept(2), forked(2);
    std::thread other([&] {
        orv_serv_deallocate(orv_serv_allocate(MiB, 128));
        kept.arrive_and_wait();
        forked.arrive_and_wait();
    });
    kept.arrive_and_wait();
    EXPECT_TRUE(in_child([] { return orv_memory_held() == 0; }));
    EXPECT_EQ(orv_memory_held(), 1u * MiB);
    forked.arrive_and_wait();
    other.join();
}
