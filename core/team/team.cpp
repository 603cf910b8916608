#include "core/team/team.h"

#include "core/serv/status.h"
#include "core/team/eagerness.h"
#include "orv/threads.h"

#include <atomic>
#include <dlfcn.h>
#include <omp.h>
#include <pthread.h>
#include <xmmintrin.h>

namespace orv::core {
namespace {

constinit std::atomic<int> process_threads{0}; // 0: not set
thread_local int own_threads;                  // 0: not set
thread_local bool has_team;                    // threads may wait for this one's next region, since run_team
constinit std::atomic<bool> forked{false};

// The OpenMP run-time keeps its threads waiting in its own code, and loses some memory whenever it is loaded and
// unloaded: it must stay when this library goes.
void pin_openmp()
{
    Dl_info openmp;
    if (dladdr(reinterpret_cast<void*>(omp_get_max_threads), &openmp) == 0) return;
    if (void* handle = dlopen(openmp.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE)) dlclose(handle);
}

// A child holds the OpenMP state of the thread that forked but none of its threads, so a region that the program opens
// there would wait for ever. As far as it was orv that brought the threads, they are sent home before: settings stay,
// and the next region starts new ones, here as in the child. Inside a region OpenMP refuses. A team of another thread
// works on undisturbed, and the child has nothing of it.
void before_fork()
{
    if (has_team && omp_pause_resource_all(omp_pause_soft) == 0) has_team = false;
}

[[gnu::constructor]] void start()
{
    pin_openmp();
    // orv itself computes alone in a child: a fork from inside a region leaves a state that no team can be woken from.
    pthread_atfork(before_fork, nullptr, [] { forked.store(true, std::memory_order_relaxed); });
}

int user_threads()
{
    if (own_threads > 0) return own_threads;
    if (const int threads = process_threads.load(std::memory_order_relaxed)) return threads;
    return static_cast<int>(number(Setting::num_threads));
}

constexpr unsigned exception_flags = 0x3f; // of MXCSR: sticky results, not modes

} // namespace

constinit std::atomic<double> eagerness{1};

int available_threads()
{
    if (forked.load(std::memory_order_relaxed) || omp_in_parallel()) return 1;
    const int wanted = user_threads();
    if (wanted == 0) return omp_get_max_threads();
    const int limit = omp_get_thread_limit();
    return wanted < limit ? wanted : limit;
}

int exchange_own_threads(int threads)
{
    const int before = own_threads;
    own_threads = threads;
    return before;
}

int threads_for_large(double worth, double grain, i64 most)
{
    if (most < 2) return 1;
    const i64 shares = worth < most_threads * grain ? static_cast<i64>(worth / grain) : most_threads;
    return static_cast<int>(min(available_threads(), min(most, shares)));
}

void run_team(int threads, void (*body)(void*, int, int), void* argument)
{
    if (forked.load(std::memory_order_relaxed)) return body(argument, 0, 1);

    has_team = true;
    const unsigned modes = _mm_getcsr() & ~exception_flags;
    std::atomic<unsigned> raised{0};
#pragma omp parallel num_threads(threads)
    {
        const int index = omp_get_thread_num();
        if (index == 0) {
            body(argument, 0, omp_get_num_threads());
        } else {
            // The member belongs to the host's OpenMP too: it gets its own modes back.
            const unsigned own = _mm_getcsr();
            _mm_setcsr(modes);
            body(argument, index, omp_get_num_threads());
            raised.fetch_or(_mm_getcsr() & exception_flags, std::memory_order_relaxed);
            _mm_setcsr(own);
        }
    }
    _mm_setcsr(_mm_getcsr() | raised.load(std::memory_order_relaxed));
}

} // namespace orv::core

namespace {
constexpr int most_threads = orv::core::most_threads;

orv_status check_threads(const char* routine, int threads)
{
    return threads < 0 || threads > most_threads ? orv::core::bad_argument(routine, 1) : ORV_OK;
}
} // namespace

orv_status orv_set_num_threads(int threads)
{
    const orv_status status = check_threads("orv_set_num_threads", threads);
    if (status == ORV_OK) orv::core::process_threads.store(threads, std::memory_order_relaxed);
    return status;
}

orv_status orv_set_thread_num_threads(int threads)
{
    const orv_status status = check_threads("orv_set_thread_num_threads", threads);
    if (status == ORV_OK) orv::core::own_threads = threads;
    return status;
}

void orv_team_set_eagerness(double times) { orv::core::eagerness.store(times, std::memory_order_relaxed); }

int orv_get_num_threads() { return orv::core::available_threads(); }
