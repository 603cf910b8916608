// What a processor's answers mean.
#include "core/serv/processor.h"

#include <cpuid.h>
#include <cstring>
#include <limits>

namespace orv::core {
namespace {

// Each feature is a set of bits in leaf 1 (c) and in leaf 7 (b), and of the states that the operating system must keep.
constexpr unsigned sse_state = 1 << 1, avx_state = 1 << 2;
struct FeatureRow {
    Feature feature;
    FeatureName name;
    unsigned leaf1, leaf7, states;
};
constexpr FeatureRow feature_rows[] = {
    {sse42, {"SSE4.2", 2009}, bit_SSE3 | bit_SSSE3 | bit_SSE4_1 | bit_SSE4_2 | bit_POPCNT, 0, 0},
    {avx2,
     {"AVX2, or runs a system that does not keep its registers", 2013},
     bit_AVX | bit_FMA | bit_OSXSAVE,
     bit_AVX2,
     sse_state | avx_state},
};

unsigned read_features(const Answers& answers)
{
    const unsigned leaf1 = answers.cpuid(1, 0).c, leaf7 = answers.cpuid(7, 0).b;
    const unsigned states = leaf1 & bit_OSXSAVE ? answers.kept_states() : 0;
    const auto has = [](unsigned have, unsigned wanted) { return (have & wanted) == wanted; };
    unsigned features = 0;
    for (const FeatureRow& f : feature_rows)
        if (has(leaf1, f.leaf1) && has(leaf7, f.leaf7) && has(states, f.states)) features |= f.feature;
    return features;
}

// Leaf 4 of Intel and leaf 0x8000001d of AMD describe one cache a subleaf, in the same fields: those caches that this
// core uses, alone or with others. A processor may have several of them side by side, which do not count.
void read_caches(const Answers& answers, Processor& p)
{
    constexpr unsigned intel = 4, amd = 0x8000001d;
    const unsigned leaf = (answers.cpuid(intel, 0).a & 0x1f) != 0 ? intel : amd;
    unsigned last_level = 0;
    for (unsigned subleaf = 0; subleaf < 16; ++subleaf) {
        const Registers r = answers.cpuid(leaf, subleaf);
        const unsigned type = r.a & 0x1f, level = r.a >> 5 & 7;
        if (type == 0) return;
        constexpr unsigned instructions = 2;
        if (type == instructions) continue;
        const i64 line = (r.b & 0xfff) + 1, partitions = (r.b >> 12 & 0x3ff) + 1, ways = (r.b >> 22) + 1;
        const i64 sets = i64{r.c} + 1;
        const i32 size = static_cast<i32>(min(line * partitions * ways * sets, std::numeric_limits<i32>::max()));
        if (level == 1) p.l1d = size;
        if (level == 2) p.l2 = size;
        if (level >= last_level) last_level = level, p.last = size;
    }
}

void read_name(const Answers& answers, Processor& p)
{
    const Registers r = answers.cpuid(0, 0);
    std::memcpy(p.vendor, &r.b, 4), std::memcpy(p.vendor + 4, &r.d, 4), std::memcpy(p.vendor + 8, &r.c, 4);
    for (unsigned i = 0; i < 3; ++i) {
        const Registers part = answers.cpuid(0x80000002 + i, 0);
        std::memcpy(p.name + 16 * i, &part, 16);
    }
    if (p.name[0] == 0) std::memcpy(p.name, p.vendor, sizeof p.vendor);
}

} // namespace

FeatureName name_of_first(unsigned features)
{
    const FeatureRow* row = feature_rows;
    while ((row->feature & features) == 0) ++row;
    return row->name;
}

Processor understand(const Answers& answers)
{
    Processor p{};
    p.features = read_features(answers);
    read_name(answers, p);
    read_caches(answers, p);
    const unsigned signature = answers.cpuid(1, 0).a, base_family = signature >> 8 & 0xf,
                   family = base_family == 0xf ? base_family + (signature >> 20 & 0xff) : base_family;
    p.bulldozer = family == 0x15 && std::strcmp(p.vendor, "AuthenticAMD") == 0;
    return p;
}

} // namespace orv::core
