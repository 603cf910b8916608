// Plans run on their own arrays or on others, and what a program can ask of them; memory, threads and the rest.
#include "compat/fftw/plan.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace orv::compat::fftw {

EXPORT void X(execute)(const Plan* plan) { plan->run(plan->problem.arrays); }
EXPORT void X(execute_dft)(const Plan* plan, C* in, C* out) { plan->run({in, nullptr, out, nullptr}); }
EXPORT void X(execute_dft_r2c)(const Plan* plan, R* in, C* out) { plan->run({in, nullptr, out, nullptr}); }
EXPORT void X(execute_dft_c2r)(const Plan* plan, C* in, R* out) { plan->run({in, nullptr, out, nullptr}); }
EXPORT void X(execute_r2r)(const Plan* plan, R* in, R* out) { plan->run({in, nullptr, out, nullptr}); }
EXPORT void X(execute_split_dft)(const Plan* plan, R* ri, R* ii, R* ro, R* io) { plan->run({ri, ii, ro, io}); }
EXPORT void X(execute_split_dft_r2c)(const Plan* plan, R* in, R* ro, R* io) { plan->run({in, nullptr, ro, io}); }
EXPORT void X(execute_split_dft_c2r)(const Plan* plan, R* ri, R* ii, R* out) { plan->run({ri, ii, out, nullptr}); }
EXPORT void X(destroy_plan)(Plan* plan) { free_plan(plan); }

EXPORT void X(flops)(const Plan* plan, double* additions, double* products, double* both)
{
    *additions = plan->additions, *products = plan->products, *both = 0;
}
EXPORT double X(estimate_cost)(const Plan* plan) { return plan->additions + plan->products; }
EXPORT double X(cost)(const Plan* plan) { return plan->additions + plan->products; }

EXPORT char* X(sprint_plan)(const Plan* plan)
{
    const char* method = plan->dft                 ? orv_dft_method(plan->dft)
                         : plan->lines[0].spectrum ? orv_dft_method(plan->lines[0].spectrum)
                         : plan->lines[0].wave     ? "sines or cosines"
                                                   : "nothing to do";
    char* text = nullptr;
    return asprintf(&text, "(orv %s)", method) < 0 ? nullptr : text;
}
EXPORT void X(fprint_plan)(const Plan* plan, std::FILE* file)
{
    char* const text = X(sprint_plan)(plan);
    if (text != nullptr) std::fputs(text, file);
    std::free(text);
}
EXPORT void X(print_plan)(const Plan* plan) { X(fprint_plan)(plan, stdout); }

// A cache line suits every register.
EXPORT void* X(malloc)(std::size_t bytes)
{
    void* block = nullptr;
    return posix_memalign(&block, 64, bytes) == 0 ? block : nullptr;
}
EXPORT R* X(alloc_real)(std::size_t n) { return static_cast<R*>(X(malloc)(n * sizeof(R))); }
EXPORT C* X(alloc_complex)(std::size_t n) { return static_cast<C*>(X(malloc)(n * sizeof(C))); }
EXPORT void X(free)(void* block) { std::free(block); }
EXPORT int X(alignment_of)(R* array) { return static_cast<int>(reinterpret_cast<std::uintptr_t>(array) % 16); }

EXPORT void X(forget_wisdom)();
EXPORT void X(cleanup)() { X(forget_wisdom)(); }
EXPORT void X(set_timelimit)(double) {} // planning measures nothing

// Plans may be made by several threads at once, and share a team of threads that is not theirs.
EXPORT int X(init_threads)() { return 1; }
EXPORT void X(plan_with_nthreads)(int count) { set_planner_threads(count); }
EXPORT int X(planner_nthreads)() { return planner_threads(); }
EXPORT void X(make_planner_thread_safe)() {}
EXPORT void X(cleanup_threads)()
{
    X(forget_wisdom)();
    set_planner_threads(1);
}
using Loop = void(void* (*work)(char*), char* jobs, std::size_t size, int count, void* data);
EXPORT void X(threads_set_callback)(Loop*, void*) {} // orv's team does the work

#define TEXT(name, ...)                                                                                                \
    EXPORT const char X(name)[];                                                                                       \
    const char X(name)[] = __VA_ARGS__;
TEXT(version, "fftw-3.3.10-orv")
TEXT(cc, "see orv info")
TEXT(codelet_optim, "")

} // namespace orv::compat::fftw
