// A problem as a program describes it, and what follows from that: outputs, strides, and the route.
#pragma once

#include "core/serv/status.h"
#include "frame/types.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "orv/conv.h"

namespace orv::core::conv {

using Numbers = i64[ORV_CONV_MAX_RANK]; // one a dimension

struct Strides {
    bool given;
    Numbers step;
};

} // namespace orv::core::conv

struct orv_conv {
    char type;
    int job, rank;
    orv::core::conv::Numbers nx, ny;
    int size, route;
    bool double_sums;
    orv::core::conv::Numbers start, count, step; // of the outputs
    orv::core::conv::Strides x, y, z;
    const void* fixed_x;

    bool correlates() const { return job == ORV_CONV_CORRELATION; }
    bool is_complex() const { return type == 'c' || type == 'z'; }
    bool is_single() const { return type == 's' || type == 'c'; }
    orv::i64 element_bytes() const { return (is_single() ? 4 : 8) * (is_complex() ? 2 : 1); }
    bool sums_in_single() const { return is_single() && !double_sums; }
    // The starts of all results with a product in them.
    orv::i64 least_start(int d) const { return correlates() ? 1 - nx[d] : 0; }
    orv::i64 last_start(int d) const { return least_start(d) + nx[d] + ny[d] - 2; }
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

// A problem of checked shapes with default settings.
orv_conv problem_of(char type, int job, int rank, const i64* nx, const i64* ny);
// All outputs of a size.
void take_size(orv_conv& conv, int size);

// ORV_CONV_DIRECT or ORV_CONV_TRANSFORM.
int route_of(const orv_conv& conv);
// Products of all outputs together, and the time of a run through transforms in nanoseconds.
double products_of(const orv_conv& conv);
double transform_cost(const orv_conv& conv);

// Routine and argument numbers are those of the caller, for what only a run can find.
struct Operands {
    const void *x, *y;
    void* z;
};
orv_status run(const orv_conv& conv, const Operands& operands);

} // namespace orv::core::conv
