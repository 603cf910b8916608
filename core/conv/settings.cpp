// Making, setting and asking. Nothing here needs the kernels.
#include "core/conv/transform.h"
#include "frame/serv.h"

#include <cinttypes>
#include <cmath>
#include <cstring>
#include <new>

namespace orv::core::conv {

orv_status refuse_type(const char* routine, int argument, char type)
{
    if (type != 0 && std::strchr("sdczSDCZ", type) != nullptr) return ORV_OK;
    return bad_argument(routine, argument, "'%c', but a type is s, d, c or z", type);
}

orv_status refuse_shapes(const Places& at, int rank, const i64* nx, const i64* ny)
{
    double elements = 1;
    for (int d = 0; d < rank; ++d) {
        const int behind = at.apart ? rank - 1 - d : 0, x = at.x + behind, y = at.y + behind;
        if (nx[d] < 1) return bad_argument(at.routine, x, "%" PRId64 " elements, but there is at least 1", nx[d]);
        if (ny[d] < 1) return bad_argument(at.routine, y, "%" PRId64 " elements, but there is at least 1", ny[d]);
        const int longer = nx[d] > ny[d] ? x : y;
        if (nx[d] > INT32_MAX || ny[d] > INT32_MAX || nx[d] + ny[d] - 1 > INT32_MAX)
            return bad_argument(at.routine, longer,
                                "%" PRId64 " and %" PRId64 " elements in a dimension have more results than the %d "
                                "that kernels count",
                                nx[d], ny[d], INT32_MAX);
        elements *= static_cast<double>(nx[d] + ny[d] - 1);
        if (elements > 0x1p56) return bad_argument(at.routine, longer, "more results than there are addresses");
    }
    return ORV_OK;
}

Problem problem_of(char type, int job, int rank, const i64* nx, const i64* ny, int size)
{
    Problem p{};
    p.type = static_cast<char>(type | 0x20);
    p.job = job, p.rank = rank;
    for (int d = 0; d < rank; ++d) p.nx[d] = nx[d], p.ny[d] = ny[d];
    take_size(p, size);
    return p;
}

void take_size(Problem& conv, int size)
{
    conv.size = size;
    for (int d = 0; d < conv.rank; ++d) {
        const i64 nx = conv.nx[d], ny = conv.ny[d], before = min(nx, ny) - 1;
        conv.step[d] = 1;
        conv.start[d] = conv.least_start(d);
        conv.count[d] = nx + ny - 1;
        if (size == ORV_CONV_SAME) conv.start[d] += (nx - 1) / 2, conv.count[d] = ny;
        if (size == ORV_CONV_VALID) conv.start[d] += before, conv.count[d] -= 2 * before;
    }
}

namespace {

orv_status set(Problem& conv, int setting, i64 value)
{
    switch (setting) {
    case ORV_CONV_SIZE:
        if (value < ORV_CONV_FULL || value > ORV_CONV_VALID) break;
        return take_size(conv, static_cast<int>(value)), ORV_OK;
    case ORV_CONV_ROUTE:
        if (value < ORV_CONV_AUTOMATIC || value > ORV_CONV_TRANSFORM) break;
        return conv.route = static_cast<int>(value), ORV_OK;
    case ORV_CONV_DOUBLE_SUMS:
        if (value != 0 && value != 1) break;
        return conv.double_sums = value == 1, ORV_OK;
    default:
        return bad_argument("orv_conv_set", 2, "%d, which is nothing that can be set", setting);
    }
    constexpr const char* choices[] = {"ORV_CONV_SIZE is ORV_CONV_FULL, ORV_CONV_SAME or ORV_CONV_VALID",
                                       "ORV_CONV_ROUTE is ORV_CONV_AUTOMATIC, ORV_CONV_DIRECT or ORV_CONV_TRANSFORM",
                                       "ORV_CONV_DOUBLE_SUMS is 0 or 1"};
    return bad_argument("orv_conv_set", 3, "%" PRId64 ", but %s", value, choices[setting - ORV_CONV_SIZE]);
}

// False if there is no such setting.
bool get(const Problem& conv, int setting, i64& value)
{
    switch (setting) {
    case ORV_CONV_SIZE:
        return value = conv.size, true;
    case ORV_CONV_ROUTE:
        return value = conv.route, true;
    case ORV_CONV_DOUBLE_SUMS:
        return value = conv.double_sums, true;
    case ORV_CONV_JOB:
        return value = conv.job, true;
    case ORV_CONV_RANK:
        return value = conv.rank, true;
    case ORV_CONV_ROUTE_TAKEN:
        return value = conv.route_taken, true;
    default:
        return false;
    }
}

orv_status set_outputs(Problem& conv, const i64* start, const i64* count, const i64* step)
{
    constexpr const char* routine = "orv_conv_set_outputs";
    Problem wanted = conv;
    take_size(wanted, conv.size);
    for (int d = 0; d < conv.rank; ++d) {
        const i64 least = conv.least_start(d);
        i64 last = wanted.start[d] + wanted.count[d] - 1;
        if (start != nullptr) {
            last = conv.last_start(d);
            if (start[d] < least || start[d] > last)
                return bad_argument(routine, 2,
                                    "%" PRId64 " in dimension %d, but starts are from %" PRId64 " to %" PRId64,
                                    start[d], d, least, last);
            wanted.start[d] = start[d];
        }
        if (step != nullptr) {
            if (step[d] < 1 || step[d] > INT32_MAX)
                return bad_argument(routine, 4, "%" PRId64 " in dimension %d, but a step is from 1 to %d", step[d], d,
                                    INT32_MAX);
            wanted.step[d] = step[d];
        }
        const i64 most = (conv.last_start(d) - wanted.start[d]) / wanted.step[d] + 1;
        wanted.count[d] = (last - wanted.start[d]) / wanted.step[d] + 1;
        if (count != nullptr) {
            if (count[d] < 1 || count[d] > most)
                return bad_argument(routine, 3,
                                    "%" PRId64 " in dimension %d, but from there with that step there are %" PRId64,
                                    count[d], d, most);
            wanted.count[d] = count[d];
        }
    }
    conv = wanted;
    return ORV_OK;
}

orv_status take_strides(Strides& strides, const Problem& conv, const i64* given, int argument)
{
    strides.given = given != nullptr;
    for (int d = 0; given != nullptr && d < conv.rank; ++d) {
        if (given[d] < -INT32_MAX || given[d] > INT32_MAX)
            return bad_argument("orv_conv_set_strides", argument, "%" PRId64 ", which kernels do not count in 32 bits",
                                given[d]);
        if (given[d] == 0 && argument == 4)
            return bad_argument("orv_conv_set_strides", argument, "0 in dimension %d: outputs would share a place", d);
        strides.step[d] = given[d];
    }
    return ORV_OK;
}

// An orv_conv of its own.
orv_status make(orv_conv** made, const Problem& problem)
{
    void* const block = orv_serv_malloc(sizeof(orv_conv), alignof(orv_conv));
    if (block == nullptr) return fail(ORV_NO_MEMORY, "no memory is left for an orv_conv");
    *made = new (block) orv_conv{problem, {}};
    return ORV_OK;
}

// After a change of what a route or a plan depends on, if it was one.
orv_status settle(orv_conv& conv, orv_status changed)
{
    if (changed != ORV_OK) return changed;
    take_route(conv);
    drop(conv.plan.exchange(nullptr));
    return ORV_OK;
}

} // namespace
} // namespace orv::core::conv

using namespace orv;
using namespace orv::core;
using namespace orv::core::conv;

orv_status orv_conv_create(orv_conv** conv, char type, int job, int rank, const int64_t* xshape, const int64_t* yshape)
{
    constexpr Places at{"orv_conv_create", 5, 6, 0, false};
    if (conv == nullptr) return bad_argument(at.routine, 1, "null");
    if (const auto bad = refuse_type(at.routine, 2, type)) return bad;
    if (job != ORV_CONV_CONVOLUTION && job != ORV_CONV_CORRELATION)
        return bad_argument(at.routine, 3, "%d, but it is ORV_CONV_CONVOLUTION or ORV_CONV_CORRELATION", job);
    if (rank < 1 || rank > ORV_CONV_MAX_RANK)
        return bad_argument(at.routine, 4, "%d, but a rank is from 1 to %d", rank, ORV_CONV_MAX_RANK);
    if (xshape == nullptr) return bad_argument(at.routine, 5, "null");
    if (yshape == nullptr) return bad_argument(at.routine, 6, "null");
    if (const auto bad = refuse_shapes(at, rank, xshape, yshape)) return bad;
    Problem problem = problem_of(type, job, rank, xshape, yshape, ORV_CONV_FULL);
    take_route(problem);
    return make(conv, problem);
}

orv_status orv_conv_copy(orv_conv** copy, const orv_conv* conv)
{
    if (const int wrong = copy == nullptr ? 1 : conv == nullptr ? 2 : 0)
        return bad_argument("orv_conv_copy", wrong, "null");
    return make(copy, *conv);
}

void orv_conv_free(orv_conv* conv)
{
    if (conv == nullptr) return;
    drop(conv->plan.load());
    orv_serv_free(conv);
}

orv_status orv_conv_set(orv_conv* conv, int setting, int64_t value)
{
    if (conv == nullptr) return bad_argument("orv_conv_set", 1, "null");
    return settle(*conv, set(*conv, setting, value));
}

orv_status orv_conv_get(const orv_conv* conv, int setting, int64_t* value)
{
    if (conv == nullptr) return bad_argument("orv_conv_get", 1, "null");
    i64 found;
    if (!get(*conv, setting, found)) return bad_argument("orv_conv_get", 2, "%d, which is no setting", setting);
    if (value == nullptr) return bad_argument("orv_conv_get", 3, "null");
    *value = found;
    return ORV_OK;
}

orv_status orv_conv_set_outputs(orv_conv* conv, const int64_t* start, const int64_t* count, const int64_t* step)
{
    if (conv == nullptr) return bad_argument("orv_conv_set_outputs", 1, "null");
    return settle(*conv, set_outputs(*conv, start, count, step));
}

orv_status orv_conv_get_outputs(const orv_conv* conv, int64_t* shape, int64_t* start)
{
    if (conv == nullptr) return bad_argument("orv_conv_get_outputs", 1, "null");
    for (int d = 0; d < conv->rank; ++d) {
        if (shape != nullptr) shape[d] = conv->count[d];
        if (start != nullptr) start[d] = conv->start[d];
    }
    return ORV_OK;
}

orv_status orv_conv_set_strides(orv_conv* conv, const int64_t* x, const int64_t* y, const int64_t* z)
{
    if (conv == nullptr) return bad_argument("orv_conv_set_strides", 1, "null");
    Problem wanted = *conv;
    if (const auto bad = take_strides(wanted.x, wanted, x, 2)) return bad;
    if (const auto bad = take_strides(wanted.y, wanted, y, 3)) return bad;
    if (const auto bad = take_strides(wanted.z, wanted, z, 4)) return bad;
    static_cast<Problem&>(*conv) = wanted;
    return ORV_OK;
}

orv_status orv_conv_set_fixed(orv_conv* conv, const void* x)
{
    if (conv == nullptr) return bad_argument("orv_conv_set_fixed", 1, "null");
    conv->fixed_x = x;
    return ORV_OK;
}
