// A problem as a program describes it, and what follows from that: outputs, strides, and the route.
#pragma once

#include "core/serv/status.h"
#include "frame/types.h"

#include <atomic>

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/conv.h"

namespace orv::core::conv {

using Numbers = i64[ORV_CONV_MAX_RANK]; // one a dimension

struct Strides {
    bool given;
    Numbers step;
};

struct Problem {
    char type;
    int job, rank;
    Numbers nx, ny;
    int size, route;
    bool double_sums;
    Numbers start, count, step; // of the outputs
    Strides x, y, z;
    const void* fixed_x;
    int route_taken; // ORV_CONV_DIRECT or ORV_CONV_TRANSFORM: what `route` comes to

    bool correlates() const { return job == ORV_CONV_CORRELATION; }
    bool is_complex() const { return type == 'c' || type == 'z'; }
    bool is_single() const { return type == 's' || type == 'c'; }
    i64 element_bytes() const { return (is_single() ? 4 : 8) * (is_complex() ? 2 : 1); }
    bool sums_in_single() const { return is_single() && !double_sums; }
    // The starts of all results with a product in them.
    i64 least_start(int d) const { return correlates() ? 1 - nx[d] : 0; }
    i64 last_start(int d) const { return least_start(d) + nx[d] + ny[d] - 2; }
};

struct Plan;
using Keeper = std::atomic<const Plan*>;

} // namespace orv::core::conv

struct orv_conv : orv::core::conv::Problem {
    mutable orv::core::conv::Keeper plan; // null until a run goes through transforms
};

namespace orv::core::conv {

// Where a routine's arguments have the shapes of x and y, and the size. apart: each length is an argument of its own,
// the outermost one first.
struct Places {
    const char* routine;
    int x, y, size;
    bool apart;
};
orv_status refuse_type(const char* routine, int argument, char type);
orv_status refuse_shapes(const Places& at, int rank, const i64* nx, const i64* ny);

// A problem of checked shapes with default settings but for the size: all its outputs are wanted. No route is taken
// yet.
Problem problem_of(char type, int job, int rank, const i64* nx, const i64* ny, int size);
void take_size(Problem& problem, int size);
// Once the shapes, outputs and settings are there.
void take_route(Problem& problem);

struct Operands {
    const void *x, *y;
    void* z;
};
// keeper: see core/conv/transform.h.
orv_status run(const Problem& problem, const Operands& operands, Keeper* keeper);

} // namespace orv::core::conv
