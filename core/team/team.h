// A team of threads for one call. Only team.cpp knows OpenMP; the host's own OpenMP settings are never touched.
#pragma once

#include "core/serv/settings.h"
#include "frame/types.h"

#include <atomic>
#include <type_traits>

namespace orv::core {

// Threads that a call made here and now may use: what the user set, else what OpenMP would take; 1 inside a parallel
// region and in a child process after fork, whose parent's team did not come along.
int available_threads();

// What the calling thread set for its own calls, 0 if nothing, before it is set to `threads`.
int exchange_own_threads(int threads);

// Calls of this thread compute alone while this lives.
class Alone {
public:
    Alone() : before_(exchange_own_threads(1)) {}
    Alone(const Alone&) = delete;
    Alone& operator=(const Alone&) = delete;
    ~Alone() { exchange_own_threads(before_); }

private:
    int before_;
};

// How many times larger work is taken than it is when the core decides about sharing it; see eagerness.h.
extern std::atomic<double> eagerness;
inline double eagerly(double work) { return work * eagerness.load(std::memory_order_relaxed); }

int threads_for_large(double worth, double grain, i64 most);

// Threads worth waking for so much work if each member should get at least `grain` of it, cut in `most` parts at most.
// Every decision about sharing is made here. Small work costs a multiplication and a comparison, and no call.
[[gnu::always_inline]] inline int threads_for(double work, double grain, i64 most = most_threads)
{
    const double worth = eagerly(work);
    return worth >= 2 * grain ? threads_for_large(worth, grain, most) : 1;
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
