#include "tests/core/teams.h"

#include <dlfcn.h>

namespace orv::test {
int teams;
}

// In place of the OpenMP run-time's entry, which it passes on to.
extern "C" __attribute__((visibility("default"))) void GOMP_parallel(void (*body)(void*), void* data, unsigned threads,
                                                                     unsigned flags)
{
    ++orv::test::teams;
    static const auto next = reinterpret_cast<decltype(&GOMP_parallel)>(dlsym(RTLD_NEXT, "GOMP_parallel"));
    next(body, data, threads, flags);
}
