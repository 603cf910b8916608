// What is made of the answers of processors, this one and others. The latter are written as their makers describe them,
// but for that of the first Xeon, which is recorded from a virtual machine.
#include "core/serv/processor.h"

#include <cpuid.h>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <orv/orv.h>
#include <utility>

using namespace orv;
using namespace orv::core;

namespace {

struct Machine {
    std::map<std::pair<unsigned, unsigned>, Registers> leaves; // of leaf and subleaf
    unsigned kept_states = 0;
};
Machine machine; // that answers

Processor processor_of(const Machine& m)
{
    machine = m;
    return understand({[](unsigned leaf, unsigned subleaf) {
                           const auto found = machine.leaves.find({leaf, subleaf});
                           return found == machine.leaves.end() ? Registers{} : found->second;
                       },
                       [] { return machine.kept_states; }});
}

constexpr unsigned amd_caches = 0x8000001d;
constexpr Registers intel = {0x1c, 0x756e6547, 0x6c65746e, 0x49656e69},
                    amd = {0x10, 0x68747541, 0x444d4163, 0x69746e65};

const Machine xeon = {{{{0, 0}, intel},
                       {{1, 0}, {0x000c06f2, 0x00020800, 0xfffa3203, 0x1f8bfbff}},
                       {{4, 0}, {0x04000121, 0x02c0003f, 0x0000003f, 0}},
                       {{4, 1}, {0x04000122, 0x01c0003f, 0x0000003f, 0}},
                       {{4, 2}, {0x04000143, 0x03c0003f, 0x000007ff, 0}},
                       {{4, 3}, {0x04004163, 0x04c0003f, 0x00033fff, 0}},
                       {{7, 0}, {0, 0xf1bf2ffb, 0x00415f46, 0x20000010}}},
                      0xe7};

// A core of eight dies: 256 MiB in all, of which it uses the 32 MiB of its own.
const Machine zen = {{{{0, 0}, amd},
                      {{1, 0}, {0x00a00f11, 0x00100800, 0x7ed8320b, 0x178bfbff}},
                      {{7, 0}, {0, 0x219c97a9, 0, 0}},
                      {{amd_caches, 0}, {0x00004121, 0x01c0003f, 0x0000003f, 0}},
                      {{amd_caches, 1}, {0x00004122, 0x01c0003f, 0x0000003f, 0}},
                      {{amd_caches, 2}, {0x00004143, 0x01c0003f, 0x000003ff, 2}},
                      {{amd_caches, 3}, {0x0003c163, 0x03c0003f, 0x00007fff, 1}}},
                     7};

const Machine bulldozer = {{{{0, 0}, amd},
                            {{1, 0}, {0x00600f12, 0x00100800, 0x1e98220b, 0x178bfbff}},
                            {{amd_caches, 0}, {0x00000121, 0x00c0003f, 0x0000003f, 0}},
                            {{amd_caches, 1}, {0x00004122, 0x0040003f, 0x000001ff, 0}},
                            {{amd_caches, 2}, {0x00004143, 0x03c0003f, 0x000007ff, 0}},
                            {{amd_caches, 3}, {0x0001c163, 0x0fc0003f, 0x000007ff, 1}}},
                           7};

constexpr i32 kib = 1 << 10, mib = 1 << 20;

void expect_caches(const Machine& m, i32 l1d, i32 l2, i32 last)
{
    const Processor p = processor_of(m);
    EXPECT_EQ(p.l1d, l1d);
    EXPECT_EQ(p.l2, l2);
    EXPECT_EQ(p.last, last);
}

Machine without(Machine m, unsigned leaf)
{
    std::erase_if(m.leaves, [=](const auto& entry) { return entry.first.first == leaf; });
    return m;
}

} // namespace

TEST(Processor, has_the_caches_that_its_own_core_uses)
{
    expect_caches(xeon, 48 * kib, 2 * mib, 260 * mib);
    expect_caches(zen, 32 * kib, 512 * kib, 32 * mib);
    expect_caches(bulldozer, 16 * kib, 2 * mib, 8 * mib);
}

TEST(Processor, without_a_third_level_has_the_second_for_its_last)
{
    Machine m = xeon;
    m.leaves.erase({4, 3});
    expect_caches(m, 48 * kib, 2 * mib, 2 * mib);
}

TEST(Processor, with_a_cache_too_large_for_the_number_has_the_largest)
{
    Machine m = xeon;
    m.leaves[{4, 3}].c = 0xffffffff;
    expect_caches(m, 48 * kib, 2 * mib, 0x7fffffff);
}

TEST(Processor, whose_hypervisor_hides_the_caches_has_unknown_ones)
{
    expect_caches(without(xeon, 4), 0, 0, 0);
    expect_caches(without(zen, amd_caches), 0, 0, 0);
    expect_caches(Machine{}, 0, 0, 0);
}

TEST(Processor, has_its_name_or_at_least_that_of_its_maker)
{
    EXPECT_STREQ(processor_of(xeon).name, "GenuineIntel");
    EXPECT_STREQ(processor_of(zen).vendor, "AuthenticAMD");
    Machine m = xeon;
    const char name[48] = "A processor of 47 letters, no more than leaves ";
    for (unsigned i = 0; i < 3; ++i) std::memcpy(&m.leaves[{0x80000002 + i, 0}], name + 16 * i, 16);
    EXPECT_STREQ(processor_of(m).name, name);
}

TEST(Processor, is_a_bulldozer_by_maker_and_family)
{
    EXPECT_TRUE(processor_of(bulldozer).bulldozer);
    EXPECT_FALSE(processor_of(zen).bulldozer);
    EXPECT_FALSE(processor_of(xeon).bulldozer);
    Machine m = bulldozer;
    m.leaves[{0, 0}] = intel;
    EXPECT_FALSE(processor_of(m).bulldozer);
}

TEST(Processor, has_a_feature_only_with_all_of_its_bits)
{
    EXPECT_EQ(processor_of(xeon).features, sse42 | avx2);
    EXPECT_EQ(processor_of(zen).features, sse42 | avx2);
    EXPECT_EQ(processor_of(bulldozer).features, sse42);
    EXPECT_EQ(processor_of({}).features, 0u);
    for (const unsigned bit : {bit_SSE3, bit_SSSE3, bit_SSE4_1, bit_SSE4_2, bit_POPCNT}) {
        Machine m = xeon;
        m.leaves[{1, 0}].c &= ~bit;
        EXPECT_EQ(processor_of(m).features, avx2) << bit;
    }
    for (const unsigned bit : {bit_AVX, bit_FMA, bit_OSXSAVE}) {
        Machine m = xeon;
        m.leaves[{1, 0}].c &= ~bit;
        EXPECT_EQ(processor_of(m).features, sse42) << bit;
    }
    EXPECT_EQ(processor_of(without(xeon, 7)).features, sse42);
}

TEST(Processor, has_wide_registers_only_where_the_operating_system_keeps_them)
{
    for (const unsigned states : {0, 1, 3, 5}) {
        Machine m = xeon;
        m.kept_states = states;
        EXPECT_EQ(processor_of(m).features, sse42) << states;
    }
}

TEST(Processor, of_this_machine_makes_sense)
{
    orv_processor p;
    orv_get_processor(&p);
    EXPECT_GT(std::strlen(p.name), 0u);
    EXPECT_TRUE(p.has_sse42);
    if (p.l1_data_cache == 0) return; // unknown
    EXPECT_GE(p.l1_data_cache, 4 * kib);
    EXPECT_GE(p.last_cache, p.l1_data_cache);
}
