// Convolutions and correlations of one and two dimensions in one call.
#include "core/conv/record.h"

using namespace orv;
using namespace orv::core;
using namespace orv::core::conv;

namespace {

orv_status compute(const Places& at, char type, int job, int rank, const i64* nx, const i64* ny, int size,
                   const Operands& operands)
{
    if (const auto bad = refuse_shapes(at, rank, nx, ny)) return bad;
    const int z = at.size + 1;
    if (const int wrong = operands.x == nullptr   ? at.x + rank
                          : operands.y == nullptr ? at.y + rank
                          : operands.z == nullptr ? z
                                                  : 0)
        return bad_argument(at.routine, wrong, "null");
    if (size < ORV_CONV_FULL || size > ORV_CONV_VALID)
        return bad_argument(at.routine, at.size, "%d, but it is ORV_CONV_FULL, ORV_CONV_SAME or ORV_CONV_VALID", size);
    Problem problem = problem_of(type, job, rank, nx, ny, size);
    take_route(problem);
    return run(problem, operands, nullptr);
}

} // namespace

#define ONCE(t, T, name, job)                                                                                          \
    orv_status orv_##name##_##t(int64_t nx, const T* x, int64_t ny, const T* y, int size, T* z)                        \
    {                                                                                                                  \
        return compute({"orv_" #name "_" #t, 1, 3, 5, true}, *#t, job, 1, &nx, &ny, size, {x, y, z});                  \
    }                                                                                                                  \
    orv_status orv_##name##2_##t(int64_t xrows, int64_t xcols, const T* x, int64_t yrows, int64_t ycols, const T* y,   \
                                 int size, T* z)                                                                       \
    {                                                                                                                  \
        const i64 nx[] = {xcols, xrows}, ny[] = {ycols, yrows};                                                        \
        return compute({"orv_" #name "2_" #t, 1, 4, 7, true}, *#t, job, 2, nx, ny, size, {x, y, z});                   \
    }
#define ONCE_OF(t, T)                                                                                                  \
    ONCE(t, T, convolve, ORV_CONV_CONVOLUTION)                                                                         \
    ONCE(t, T, correlate, ORV_CONV_CORRELATION)
ONCE_OF(s, float)
ONCE_OF(d, double)
ONCE_OF(c, cpx<float>)
ONCE_OF(z, cpx<double>)
