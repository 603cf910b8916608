#include "core/serv/processor.h"

#include "frame/export.h"
#include "frame/serv.h"
#include "orv/processor.h"

#include <cpuid.h>
#include <cstring>
#include <limits>
#include <pthread.h>

namespace orv::core {
namespace {

struct Registers {
    unsigned a, b, c, d;
};

// All zeros if the processor has no such leaf.
Registers cpuid(unsigned leaf, unsigned subleaf = 0)
{
    Registers r{};
    __get_cpuid_count(leaf, subleaf, &r.a, &r.b, &r.c, &r.d);
    return r;
}

// Leaf 4 of Intel and leaf 0x8000001d of AMD describe one cache a subleaf, in the same fields.
void read_caches(Processor& p)
{
    constexpr unsigned intel = 4, amd = 0x8000001d;
    const unsigned leaf = (cpuid(intel).a & 0x1f) != 0 ? intel : amd;
    unsigned last_level = 0;
    for (unsigned subleaf = 0; subleaf < 16; ++subleaf) {
        const Registers r = cpuid(leaf, subleaf);
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

void read_name(Processor& p)
{
    const Registers r = cpuid(0);
    std::memcpy(p.vendor, &r.b, 4), std::memcpy(p.vendor + 4, &r.d, 4), std::memcpy(p.vendor + 8, &r.c, 4);
    for (unsigned i = 0; i < 3; ++i) {
        const Registers part = cpuid(0x80000002 + i);
        std::memcpy(p.name + 16 * i, &part, 16);
    }
    if (p.name[0] == 0) std::memcpy(p.name, p.vendor, sizeof p.vendor);
}

constexpr FeatureName feature_names[] = {
    {sse42, "SSE4.2", 2009},
};

Processor found;

void look()
{
    const Registers r = cpuid(1);
    constexpr unsigned up_to_sse42 = bit_SSE3 | bit_SSSE3 | bit_SSE4_1 | bit_SSE4_2 | bit_POPCNT;
    if ((r.c & up_to_sse42) == up_to_sse42) found.features |= sse42;
    read_name(found);
    read_caches(found);
    const unsigned base_family = r.a >> 8 & 0xf,
                   family = base_family == 0xf ? base_family + (r.a >> 20 & 0xff) : base_family;
    found.bulldozer = family == 0x15 && std::strcmp(found.vendor, "AuthenticAMD") == 0;
}

} // namespace

// Asked once: in a virtual machine each question costs microseconds.
const Processor& processor()
{
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    pthread_once(&once, look);
    return found;
}

const FeatureName& missing_feature(unsigned features)
{
    const FeatureName* name = feature_names;
    while ((features & name->feature & ~processor().features) == 0) ++name;
    return *name;
}

} // namespace orv::core

using orv::i32;
using orv::core::processor;

void orv_get_processor(orv_processor* out)
{
    const auto& p = processor();
    *out = {p.name, (p.features & orv::core::sse42) != 0, p.l1d, p.l2, p.last};
}

ORV_EXPORT void orv_serv_cache_info(i32* entries)
{
    const auto& p = processor();
    entries[0] = p.l1d > 0 && p.last > 0;
    entries[1] = p.l1d, entries[2] = p.l2, entries[3] = p.last;
}

ORV_EXPORT i32 orv_serv_get_cache_size(int) { return processor().last; }

// Codes of processors and classes are free but for two values that mean processors with special treatment: 0x42 to the
// dense kernels, 4 to the transforms. Every processor of this branch is one kind.
ORV_EXPORT int orv_serv_get_microarchitecture() { return 1; }
ORV_EXPORT int orv_serv_cpu_detect() { return 1; }
ORV_EXPORT int orv_serv_cpuisbulldozer() { return processor().bulldozer; }
