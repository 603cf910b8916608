// The public routines of extended and mixed precision. Each is its kernel behind a check of the arguments; the kernels'
// own checks differ from family to family, and in some report nothing.
#include "core/branch/branches.h"
#include "core/branch/kernel.h"
#include "core/serv/status.h"
#include "frame/export.h"
#include "frame/grid.h"

#include <atomic>

// In the library a complex number is the type that kernels know; it is passed like C's own.
#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/xblas.h"

#include "core/xblas/arguments.h"

namespace orv::core {
namespace {

// What kernels report while a routine runs. A call that goes well looks at the count alone: to reach a variable of its
// thread takes longer than all checks together.
std::atomic<u64> reports{0}; // so far, by all threads
struct Report {
    u64 number;
    orv_status status;
};
thread_local Report latest; // of this thread

void record(orv_status status) { latest = {reports.fetch_add(1) + 1, status}; }

[[gnu::noinline, gnu::cold]] orv_status reported_since(u64 before)
{
    return latest.number > before ? latest.status : ORV_OK;
}

// Kernels take complex scalars by pointer.
template <class A> auto passed(const A& value)
{
    if constexpr (is_complex<A>) return &value;
    else return value;
}
template <class... A> using KernelForm = void(decltype(passed(std::declval<A>()))...);

// prec is the last argument wherever there is one.
template <class A> bool is_bad_prec(A argument)
{
    if constexpr (std::is_same_v<A, orv_prec>) return !extended::known(argument);
    else return false;
}

template <class Check, class... A>
orv_status call(Kernel<KernelForm<A...>>& kernel, const char* name, Check check, const A&... arguments)
{
    if (const int bad = check(arguments...)) return bad_argument(name, bad);
    if ((is_bad_prec(arguments) || ...)) return bad_argument(name, sizeof...(A));
    const u64 before = reports.load(std::memory_order_relaxed);
    if (const orv_status status = kernel.run(passed(arguments)...); status != ORV_OK) return status;
    if (__builtin_expect(reports.load(std::memory_order_relaxed) == before, 1)) return ORV_OK;
    return reported_since(before);
}

template <class F> struct kernel_of;
template <class... A> struct kernel_of<orv_status(A...)> {
    using type = Kernel<KernelForm<A...>>;
};

} // namespace
} // namespace orv::core

using namespace orv;
using namespace orv::core;

// What kernels report unless the program exports a routine of this name itself: kept for orv_last_error().
static void keep(const char* routine, i64 code, i64 value, const char* form)
{
    const auto text = static_cast<long long>(value);
    if (form != nullptr) record(fail(ORV_NO_MEMORY, "%s: no memory is left", routine));
    else if (code == 0) record(fail(-1, "%s: an option, a leading dimension or a stride is not allowed", routine));
    else
        record(fail(static_cast<orv_status>(code), "%s: argument %lld is not allowed; the value looked at is %lld",
                    routine, static_cast<long long>(-code), text));
}
#define REPORT(tag, code, needs)                                                                                       \
    ORV_EXPORT void orv_xblas_##tag##_BLAS_error(const char* routine, i64 number, i64 value, const char* form, ...)    \
    {                                                                                                                  \
        keep(routine, number, value, form);                                                                            \
    }
ORV_EACH_BRANCH(REPORT)

int64_t orv_xblas_fpinfo(int property, orv_prec prec)
{
    static constinit Kernel<i64(int, int)> kernel{{"xblas", "BLAS_fpinfo_x"}};
    auto* fpinfo = kernel.get();
    return fpinfo != nullptr ? fpinfo(property, prec) : 0;
}

// One routine: its kernel, and the form by value as the header declares it.
#define ROUTINE(name, check, count)                                                                                    \
    orv_status orv_xblas_##name(ORV_PARAMETERS(count, value_argument, orv_xblas_##name))                               \
    {                                                                                                                  \
        static constinit kernel_of<decltype(orv_xblas_##name)>::type kernel{{"xblas", "BLAS_" #name}};                 \
        return call(kernel, "orv_xblas_" #name, check, ORV_NAMES(count));                                              \
    }
#define MEMBER(op, t, ab, a, b, x, more)                                                                               \
    ROUTINE(t##op##ab##x, extended::op, ORV_COUNT(ORV_XBLAS_ARGUMENTS_##op(, , ) ORV_XBLAS_PREC##x))
ORV_XBLAS_ALL(MEMBER)
