// The arguments of the public routines.
#pragma once

#include "core/serv/status.h"
#include "core/sparse/record.h"
#include "frame/arguments.h"

namespace orv::core::sparse {

// A routine as its caller knows it, and where it has its arguments.
struct Call {
    const char* name;
    char type;
    bool solves;
    int trans, matrix; // positions, from 1
};

// 0, or the reported status.
inline orv_status refuse(const Call& call, char trans, const orv_sparse* a)
{
    if (!arguments::one_of(trans, "NTC")) return bad_argument(call.name, call.trans, "trans is none of N, T, C");
    const char* fault = fault_of(a, call.type, trans, call.solves);
    return fault == nullptr ? ORV_OK : bad_argument(call.name, call.matrix, "%s", fault);
}

// A dense operand of rows by n, whose leading dimension is argument `position`.
inline orv_status refuse_dense(const Call& call, char order, const orv_sparse& a, i64 rows, i64 n, i64 ld, int position)
{
    const i64 line = fold(order) == 'R' ? n : rows;
    if (ld < max(1, line))
        return bad_argument(call.name, position, "it is smaller than a line of %lld", static_cast<long long>(line));
    if (a.bits == 32 && ld > 0x7fffffff)
        return bad_argument(call.name, position, "it does not fit in the 32 bits of the matrix' indices");
    return ORV_OK;
}
inline orv_status refuse_columns(const Call& call, const orv_sparse& a, i64 n)
{
    constexpr int position = 5;
    if (n < 0) return bad_argument(call.name, position, "it is negative");
    if (a.bits == 32 && n > 0x7fffffff)
        return bad_argument(call.name, position, "it does not fit in the 32 bits of the matrix' indices");
    return ORV_OK;
}
inline orv_status refuse_order(const Call& call, char order)
{
    return arguments::one_of(order, "RC") ? ORV_OK : bad_argument(call.name, 1, "order is none of R and C");
}

} // namespace orv::core::sparse
