#include "core/serv/status.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace orv::core {
namespace {

// Plain data: a thread_local object with a destructor would pin the library in memory for good.
struct Record {
    orv_status status;
    char sentence[1024];
};
thread_local Record latest;

constinit std::atomic<orv_argument_handler> argument_handler{nullptr};

// Whether the user's handler took the report.
bool handled(const char* routine, int argument)
{
    const auto handler = argument_handler.load();
    if (handler != nullptr) handler(routine, argument);
    return handler != nullptr;
}

} // namespace

orv_status fail(orv_status status, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(latest.sentence, sizeof latest.sentence, format, arguments);
    va_end(arguments);
    return latest.status = status;
}

orv_status last_status() { return latest.status; }

orv_status bad_argument(const char* routine, int argument)
{
    if (handled(routine, argument)) return -argument;
    return fail(-argument, "%s: argument %d is not allowed; see the routine's description for its range", routine,
                argument);
}

orv_status bad_argument(const char* routine, int argument, const char* format, ...)
{
    if (handled(routine, argument)) return -argument;
    char why[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(why, sizeof why, format, arguments);
    va_end(arguments);
    return fail(-argument, "%s: argument %d: %s", routine, argument, why);
}

} // namespace orv::core

const char* orv_last_error() { return orv::core::latest.sentence; }

orv_argument_handler orv_set_argument_handler(orv_argument_handler handler)
{
    return orv::core::argument_handler.exchange(handler);
}

const char* orv_status_text(orv_status status)
{
    if (status < 0) return "an argument is not allowed; its number is the status without the sign";
    switch (status) {
    case ORV_OK:
        return "done";
    case ORV_NO_BRANCH:
        return "the library of kernels cannot be opened";
    case ORV_OLD_PROCESSOR:
        return "the processor lacks instructions that the kernels use";
    case ORV_BRANCH_MISMATCH:
        return "the library of kernels belongs to another version";
    case ORV_NO_KERNEL:
        return "the library of kernels lacks a kernel";
    case ORV_NO_MEMORY:
        return "no memory is left";
    case ORV_BAD_SETTING:
        return "a setting makes no sense";
    case ORV_NOT_COMMITTED:
        return "it has to be committed first";
    case ORV_UNSUPPORTED:
        return "no kernel does this";
    case ORV_INTERNAL_ERROR:
        return "a kernel failed: a fault of orv itself";
    case ORV_BAD_INDEX:
        return "an index of a sparse matrix leads outside of it";
    case ORV_NOT_SORTED:
        return "entries of a sparse matrix are not sorted";
    case ORV_DUPLICATE:
        return "two entries of a sparse matrix stand in the same place";
    case ORV_NO_DIAGONAL:
        return "a sparse matrix lacks an element of its diagonal";
    case ORV_ZERO_DIAGONAL:
        return "an element on the diagonal of a sparse matrix is zero";
    case ORV_TRANSFORM_FAILED:
        return "the Fourier transform inside a convolution was refused";
    case ORV_NOT_SOLVABLE:
        return "the right-hand side and the sides of a Poisson problem do not go together";
    case ORV_RESONANCE:
        return "the equation has no unique solution for this q";
    case ORV_NO_ROOM:
        return "there is too little room for the result";
    default:
        return "no status of this library";
    }
}
