#include "tests/support/probe.h"

#include "frame/serv.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <mutex>

#define PROBE_EXPORT extern "C" __attribute__((visibility("default"), used))

namespace orv::test {

Probe& probe()
{
    static Probe instance;
    return instance;
}

void free_what_is_left()
{
    while (!probe().living.empty()) orv_serv_deallocate(probe().living.back());
}

void each_allocation_fails(const std::function<void()>& call, const std::function<void()>& check)
{
    for (i64 k = 0;; ++k) {
        ProbeScope scope;
        scope->fail_at = k;
        call();
        EXPECT_EQ(scope->live, 0) << "leak when allocation " << k << " fails";
        check();
        if (scope->failed == 0) return;
    }
}

namespace {

std::mutex in_use; // members of a team call operations at once

// The core's own operation behind the probe.
template <class F> F* next(const char* name) { return reinterpret_cast<F*>(dlsym(RTLD_NEXT, name)); }

// arguments: what the operation is called with, bytes its size by them.
template <class... A> void* allocate(const char* operation, i64 bytes, i64 alignment, A... arguments)
{
    Probe& p = probe();
    if (!p.active) return next<void*(A...)>(operation)(arguments...);
    const std::lock_guard lock(in_use);
    const bool fail = p.fail_all || p.allocations == p.fail_at;
    ++p.allocations;
    p.asked_bytes.push_back(bytes), p.asked_alignments.push_back(alignment);
    if (fail) return ++p.failed, nullptr;
    ++p.live;
    return p.living.emplace_back(next<void*(A...)>(operation)(arguments...));
}

void release(const char* operation, void* block)
{
    if (probe().active && block != nullptr) {
        const std::lock_guard lock(in_use);
        --probe().live, std::erase(probe().living, block);
    }
    next<void(void*)>(operation)(block);
}

} // namespace
} // namespace orv::test

using namespace orv;
using orv::test::probe;

PROBE_EXPORT void* orv_serv_allocate(i64 bytes, i64 alignment)
{
    return test::allocate("orv_serv_allocate", bytes, alignment, bytes, alignment);
}
PROBE_EXPORT void* orv_serv_malloc(i64 bytes, i64 alignment)
{
    return test::allocate("orv_serv_malloc", bytes, alignment, bytes, alignment);
}
PROBE_EXPORT void* orv_serv_calloc(i64 count, i64 element_size, i64 alignment)
{
    return test::allocate("orv_serv_calloc", count * element_size, alignment, count, element_size, alignment);
}
PROBE_EXPORT void orv_serv_deallocate(void* block) { test::release("orv_serv_deallocate", block); }
PROBE_EXPORT void orv_serv_free(void* block) { test::release("orv_serv_free", block); }

PROBE_EXPORT int orv_serv_check_ptr(const void* block, const char* routine, int name_length)
{
    if (probe().active) {
        const std::lock_guard lock(test::in_use);
        probe().checked.emplace_back(routine, name_length);
        if (!probe().passes_checks_on) return block == nullptr;
    }
    return test::next<int(const void*, const char*, int)>("orv_serv_check_ptr")(block, routine, name_length);
}

PROBE_EXPORT int orv_serv_cbwr_get(int selector)
{
    if (probe().active) ++probe().reproducibility_asked;
    if (probe().reproducibility) return *probe().reproducibility;
    return test::next<int(int)>("orv_serv_cbwr_get")(selector);
}

PROBE_EXPORT int orv_serv_get_microarchitecture()
{
    if (probe().active) ++probe().microarchitecture_asked;
    if (probe().microarchitecture) return *probe().microarchitecture;
    return test::next<int()>("orv_serv_get_microarchitecture")();
}

PROBE_EXPORT void orv_serv_cache_info(i32* entries)
{
    test::next<void(i32*)>("orv_serv_cache_info")(entries);
    if (!probe().cache) return;
    for (std::size_t i = 0; i < probe().cache->size(); ++i) entries[i] = (*probe().cache)[i];
}
