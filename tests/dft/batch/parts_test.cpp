// What plans are made of, and the rules by which lengths divide.
#include "tests/dft/batch/batch.h"

#include <set>

namespace orv::test {
namespace {

#define PART(name) (*untagged<kernels::dft::name::signature>(kernels::dft::name::symbol))

alignas(256) t_8u memory[8192];

TEST(BatchArena, gives_out_from_below_and_takes_back)
{
    BatchArena arena = memory;
    EXPECT_EQ(PART(orvgArenaMalloc)(&arena, 100), memory);
    EXPECT_EQ(PART(orvgArenaMalloc)(&arena, 28), memory + 100);
    EXPECT_EQ(arena, memory + 128);
    PART(orvgArenaFree)(&arena, memory + 100, 28);
    EXPECT_EQ(arena, memory + 100);
}

int ended;
const BatchEnvTable table{300, [](BatchEnv*) { ++ended; }, nullptr, nullptr};

TEST(BatchEnvList, keeps_the_first_object_in_its_head_and_takes_nodes_for_others)
{
    BatchArena arena = memory;
    BatchEnvList head{reinterpret_cast<BatchEnv*>(1), &head, nullptr, 0};
    PART(orvgEnvList___init__)(&head, &arena, 64);
    EXPECT_TRUE(head.env == nullptr && head.next == nullptr && head.arena == &arena && head.alignment == 64);

    BatchEnv envs[3] = {{&table, &arena}, {&table, &arena}, {&table, &arena}};
    EXPECT_EQ(PART(orvgEnvList_add)(&head, &envs[0]), 0);
    EXPECT_EQ(arena, memory) << "no node";
    EXPECT_TRUE(head.env == &envs[0] && head.next == nullptr);
    EXPECT_EQ(PART(orvgEnvList_add)(&head, &envs[1]), 0);
    EXPECT_EQ(PART(orvgEnvList_add)(&head, &envs[2]), 0);
    EXPECT_EQ(arena, memory + 2 * 64);
    EXPECT_EQ(PART(orvgEnvList_add_mem)(2, 64), 2 * 64);
    ASSERT_EQ(static_cast<void*>(head.next), memory);
    EXPECT_TRUE(head.next->env == &envs[1] && head.next->next->env == &envs[2] && head.next->next->next == nullptr);

    arena += 3 * 320; // as if the objects, of 300 bytes, lay there
    ended = 0;
    PART(orvgEnvList_freeChildren)(&head);
    EXPECT_EQ(ended, 3);
    EXPECT_EQ(arena, memory + 2 * 64);
    PART(orvgEnvList___del__)(&head);
    EXPECT_EQ(arena, memory);
}

TEST(BatchEnvList, rounds_the_bytes_of_nodes_to_the_alignment)
{
    EXPECT_EQ(PART(orvgEnvList_add_mem)(1, 16), 32);
    EXPECT_EQ(PART(orvgEnvList_add_mem)(3, 256), 768);
    EXPECT_EQ(PART(orvgEnvList_add_mem)(0, 256), 0);
}

TEST(BatchChList, has_a_size_once)
{
    BatchArena arena = memory;
    BatchChList list{};
    PART(orvgChList___init__)(&list, &arena, 256);
    PART(orvgChList___del__)(&list);
    EXPECT_EQ(arena, memory) << "of no size";
    EXPECT_EQ(PART(orvgChList_setSize)(&list, 33), 0);
    EXPECT_TRUE(reinterpret_cast<t_8u*>(list.data) == memory && list.size == 33);
    EXPECT_EQ(arena, memory + 512);
    EXPECT_EQ(PART(orvgChList_add_mem)(33, 256), 512);
    EXPECT_EQ(PART(orvgChList_add_mem)(32, 256), 256);
    EXPECT_EQ(PART(orvgChList_setSize)(&list, 1), 7);
    EXPECT_EQ(list.size, 33);
    PART(orvgChList___del__)(&list);
    EXPECT_EQ(arena, memory);
    EXPECT_EQ(PART(orvgChList_setSize)(&list, 1), 0);
}

template <class F, class Body> void every_rule(const std::string& rule, Body body)
{
    for (const char* instance : {"Fwd", "Inv"})
        for (const char* type : {"32fc", "64fc"})
            body(untagged<F>(std::string("owngDFT") + instance + "Batch_" + type + "w7_" + rule));
}

TEST(BatchRules, know_the_base_lengths)
{
    const std::set<i64> others = {18, 20, 21, 22, 24, 25, 26, 27, 28, 30, 32, 33, 35, 36, 39,
                                  40, 42, 44, 45, 48, 49, 50, 52, 54, 55, 56, 60, 63, 64, 128};
    every_rule<HasBaseCase>("hasBaseCase", [&](auto has_base_case) {
        for (i64 n = -1; n <= 300; ++n)
            EXPECT_EQ(has_base_case(n) != 0, (n >= 2 && n <= 16) || others.count(n) != 0) << n;
    });
}

TEST(BatchRules, split_off_the_largest_listed_factor_up_to_the_root)
{
    const std::vector<i64> list = {64, 32, 25, 20, 16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2};
    every_rule<Divisors>("divisorsIntNonTriv", [&](auto divisors) {
        i64 out[2];
        ASSERT_EQ(divisors(out, 4100), 2);
        EXPECT_TRUE(out[0] == 25 && out[1] == 164);
        for (i64 n = -3; n < 9000; ++n) {
            i64 expected = 0;
            for (const i64 d : list)
                if (expected == 0 && n >= 4 && n % d == 0 && (n >= 4096 || d * d <= n)) expected = d;
            out[0] = out[1] = -5;
            ASSERT_EQ(divisors(out, n), expected == 0 ? 0 : 2) << n;
            EXPECT_TRUE(expected == 0 ? out[0] == -5 && out[1] == -5 : out[0] == expected && out[1] == n / expected)
                << n;
        }
    });
}

TEST(BatchRules, number_the_lengths_of_bases)
{
    for (const char* kind : {"19", "22", "31", "32", "33", "34"})
        every_rule<ChooseBaseRule>(std::string("env") + kind + "__chooseRule", [](auto rule) {
            for (i64 n = -1; n <= 200; ++n) {
                const i64 expected = n >= 2 && n <= 16 ? n - 1
                                     : n == 20         ? 16
                                     : n == 25         ? 17
                                     : n == 32         ? 18
                                     : n == 64         ? 19
                                     : n == 128        ? 20
                                                       : 0;
                EXPECT_EQ(rule(n), expected) << n;
            }
        });
}

TEST(BatchRules, choose_by_length_rows_and_columns)
{
    for (const char* instance : {"Fwd", "Inv"})
        for (const char* kind : {"1", "2"}) {
            const auto rule =
                untagged<ChoosePlanRule>(std::string("owngDFT") + instance + "Batch_64fcw7_env" + kind + "_chooseRule");
            const struct {
                i64 n, rows, columns, rule;
            } told[] = {{18, 1, 1, 1},  {128, 1, 32, 1}, {128, 1, 33, 9}, {128, 2, 32, 9},
                        {128, 2, 1, 5}, {16, 1, 1, 4},   {16, 2, 1, 5},   {2, 1, 32, 7},
                        {2, 1, 33, 9},  {2, 2, 2, 9},    {17, 1, 1, 9},   {65, 1, 1, 9}};
            for (const auto& t : told)
                EXPECT_EQ(rule(t.n, t.rows, t.columns), t.rule) << t.n << " " << t.rows << " " << t.columns;
        }
}

} // namespace
} // namespace orv::test
