#include "core/serv/processor.h"

#include "frame/export.h"
#include "frame/serv.h"
#include "orv/processor.h"

#include <cpuid.h>
#include <pthread.h>

namespace orv::core {
namespace {

constexpr Answers here = {[](unsigned leaf, unsigned subleaf) {
                              Registers r{};
                              __get_cpuid_count(leaf, subleaf, &r.a, &r.b, &r.c, &r.d);
                              return r;
                          },
                          [] {
                              unsigned low, high; // xgetbv is no instruction to a compiler for old processors
                              __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
                              return low;
                          }};

Processor found;

} // namespace

// Asked once: in a virtual machine each question costs microseconds.
const Processor& processor()
{
    static pthread_once_t once = PTHREAD_ONCE_INIT;
    pthread_once(&once, [] { found = understand(here); });
    return found;
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
