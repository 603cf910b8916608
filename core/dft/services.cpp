#include "core/dft/services.h"

#include "core/team/team.h"

#include <unistd.h>

namespace orv::core::dft {
namespace {

using kernels::dft::DftTask;

// Kernels may take fewer threads than they were given where more would not pay.
i32 dynamic_threads() { return 1; }
i32 max_threads() { return available_threads(); }
i32 processors() { return static_cast<i32>(max(sysconf(_SC_NPROCESSORS_ONLN), 1)); }
i32 fixed_threads() { return 0; }

// Every task is run, by however many threads there are.
void parallel_for(i32 tasks, DftTask* run, void* argument)
{
    parallel(static_cast<int>(min(tasks, available_threads())), [=](int index, int count) {
        for (i32 task = index; task < tasks; task += count) run(task, tasks, argument);
    });
}

// A task a thread, so that they may wait for each other; each is told how many there are.
void parallel_together(i32 tasks, DftTask* run, void* argument)
{
    parallel(tasks, [=](int index, int count) { run(index, count, argument); });
}

// Threads that make their first transforms at once all write the same.
template <class F> void provide(F*& slot, F* service)
{
    if (__atomic_load_n(&slot, __ATOMIC_RELAXED) == nullptr) __atomic_store_n(&slot, service, __ATOMIC_RELAXED);
}

} // namespace

void lend(kernels::dft::DftiServices* services)
{
    provide(services->dynamic_threads, dynamic_threads);
    provide(services->max_threads, max_threads);
    provide(services->processors, processors);
    provide(services->parallel_for, parallel_for);
    provide(services->parallel_together, parallel_together);
    provide(services->fixed_threads, fixed_threads);
}

} // namespace orv::core::dft
