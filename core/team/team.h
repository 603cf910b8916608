// A team of threads for one call. Only team.cpp knows OpenMP; the host's own OpenMP settings are never touched.
#pragma once

#include "frame/types.h"

#include <type_traits>

namespace orv::core {

// Threads that a call made here and now may use: what the user set, else what OpenMP would take; 1 inside a parallel
// region and in a child process after fork, whose parent's team did not come along.
int available_threads();

// Threads worth waking for `work` operations if each member should get at least `grain` of them. Small work costs
// one comparison.
inline int threads_for(i64 work, i64 grain)
{
    if (work < 2 * grain) return 1;
    return static_cast<int>(min(available_threads(), work / grain));
}

void run_team(int threads, void (*body)(void* argument, int index, int count), void* argument);

// Calls f(index, count) once for each index below count, at once, and returns when all are done. count is at most
// `threads`; it may be smaller if the system gives fewer. The caller is member 0, and its rounding and flush-to-zero
// modes hold for all members; floating-point exception flags that members raise reach the caller.
template <class F> void parallel(int threads, F&& f)
{
    if (threads <= 1) return f(0, 1);
    using Body = std::remove_reference_t<F>;
    run_team(
        threads, [](void* body, int index, int count) { (*static_cast<Body*>(body))(index, count); },
        const_cast<void*>(static_cast<const void*>(&f)));
}

} // namespace orv::core
