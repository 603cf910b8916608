// A run takes one of the two routes; what it took can be asked for.
#include "core/conv/direct.h"
#include "core/conv/ran.h"
#include "core/conv/transform.h"
#include "orv/branch.h"

#include <cstdio>

namespace orv::core::conv {
namespace {

// Plain data, as in status.cpp.
struct Ran {
    KernelName kernel; // no module: transforms
    char method[sizeof Plan::method];
    int threads; // 0: nothing ran yet
};
thread_local Ran ran;
thread_local char answer[sizeof Plan::method];

// Strides of an array of that shape; false where one is beyond 32 bits.
bool complete(Strides& strides, int rank, const i64* shape)
{
    if (strides.given) return true;
    i64 step = 1;
    for (int d = 0; d < rank; step *= shape[d++]) strides.step[d] = step;
    return strides.step[rank - 1] <= INT32_MAX;
}

} // namespace

void remember(KernelName kernel, int threads) { ran.kernel = kernel, ran.threads = threads; }
void remember(const char* method, int threads)
{
    ran.kernel = {nullptr, nullptr}, ran.threads = threads;
    std::snprintf(ran.method, sizeof ran.method, "%s", method);
}

orv_status run(const Problem& problem, const Operands& operands, Keeper* keeper)
{
    Problem p = problem;
    bool is_narrow = complete(p.x, p.rank, p.nx);
    is_narrow &= complete(p.y, p.rank, p.ny);
    is_narrow &= complete(p.z, p.rank, p.count);
    if (p.route_taken != ORV_CONV_DIRECT) return run_transforms(p, operands, keeper);
    if (is_narrow) return run_direct(p, operands);
    return fail(ORV_UNSUPPORTED,
                "an array without gaps has a stride above %d, which kernels of direct sums do not count; "
                "ORV_CONV_TRANSFORM goes without them",
                INT32_MAX);
}

} // namespace orv::core::conv

using namespace orv::core;
using namespace orv::core::conv;

orv_status orv_conv_run(const orv_conv* conv, const void* x, const void* y, void* z)
{
    if (conv == nullptr) return bad_argument("orv_conv_run", 1, "null");
    const Operands operands{x != nullptr ? x : conv->fixed_x, y, z};
    if (operands.x == nullptr) return bad_argument("orv_conv_run", 2, "null, and orv_conv_set_fixed has none either");
    if (const int wrong = y == nullptr ? 3 : z == nullptr ? 4 : 0) return bad_argument("orv_conv_run", wrong, "null");
    return run(*conv, operands, &conv->plan);
}

const char* orv_conv_kernel()
{
    if (ran.threads == 0) return nullptr;
    const auto& [module, stem] = ran.kernel;
    if (module == nullptr) std::snprintf(answer, sizeof answer, "%s", ran.method);
    else std::snprintf(answer, sizeof answer, "orv_%s_%s_%s", module, orv_branch_name(), stem);
    return answer;
}

int orv_conv_threads() { return ran.threads; }
