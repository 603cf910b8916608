// Products with blocks of order 2, whose columns are a register each: an element of x, twice in a register, times a
// column is what it adds to both elements of y. Block rows are summed in the order of their entries; beta = 0 does not
// read y.
//
// Dense columns go in groups, and a group's sums stay in registers while a block row passes. A group has six columns.
// On one family of processors it has all of them, one after the other tile of six, unless the columns lie a multiple of
// 1024 elements apart: there they would crowd each other out of the cache, and each goes alone.
#include "spblas/bsr_pairs.h"

#include "frame/serv.h"
#include "frame/simd.h"

#if SPBLAS_NARROW // exported once, by the module whose integers they have

namespace orv::ORV_SPBLAS {
namespace {

struct Rows {
    i32 i, end; // both in
};

struct Pairs {
    const double *val, *x;
    const i32 *col, *begin, *end; // all numbered as the columns are
    i64 ldx;
    double* y;
    i64 ldy;
    double alpha, beta;
};

// Block row i for so many columns from the first of them.
template <int columns> ORV_INLINE void multiply_row(const Pairs& p, i32 i, i64 from)
{
    const double* x = p.x + from * p.ldx;
    vec<double> sum[columns]{};
    for (i64 e = p.begin[i]; e < p.end[i]; ++e) {
        const vec<double> left = loadu(p.val + 4 * e), right = loadu(p.val + 4 * e + 2);
        const double* element = x + 2 * i64{p.col[e]};
#pragma GCC unroll 6
        for (int c = 0; c < columns; ++c) {
            sum[c] += left * load_splat(element + c * p.ldx);
            sum[c] += right * load_splat(element + c * p.ldx + 1);
        }
    }
    double* y = p.y + from * p.ldy + 2 * i64{i};
    for (int c = 0; c < columns; ++c, y += p.ldy) {
        const vec<double> scaled = splat(p.alpha) * sum[c];
        storeu(y, p.beta == 0 ? scaled : splat(p.beta) * loadu(y) + scaled);
    }
}

template <int columns> [[gnu::noinline]] void multiply_rows(const Pairs& p, Rows rows, i64 from)
{
    for (i32 i = rows.i; i <= rows.end; ++i) multiply_row<columns>(p, i, from);
}

constexpr i64 tile = 6;
void multiply_tile(const Pairs& p, Rows rows, i64 from, i64 columns)
{
    switch (columns) {
    case 1:
        return multiply_rows<1>(p, rows, from);
    case 2:
        return multiply_rows<2>(p, rows, from);
    case 3:
        return multiply_rows<3>(p, rows, from);
    case 4:
        return multiply_rows<4>(p, rows, from);
    case 5:
        return multiply_rows<5>(p, rows, from);
    default:
        return multiply_rows<6>(p, rows, from);
    }
}

constexpr i64 crowding_stride = 1024;
i64 group_of(i64 columns, i64 stride)
{
    if (!orv_serv_cpuisbulldozer()) return tile;
    return stride % crowding_stride == 0 ? 1 : columns;
}

Pairs pairs(const double* alpha, const double* val, const i32* col, const i32* pntrb, const i32* pntre, const double* x,
            i64 ldx, double* y, i64 ldy, const double* beta)
{
    const i64 base = *pntrb;
    return {val - 4 * base, x - 2, col - base, pntrb - 1, pntre - 1, ldx, y - 2, ldy, *alpha, *beta};
}

void gemv(const i32* first, const i32* last, const i32*, const i32*, const i32*, const double* alpha, const double* val,
          const i32* col, const i32* pntrb, const i32* pntre, const double* x, double* y, const double* beta)
{
    if (*first > *last) return;
    multiply_rows<1>(pairs(alpha, val, col, pntrb, pntre, x, 0, y, 0, beta), {*first, *last}, 0);
}

void mm(const i32* first, const i32* last, const i32*, const i32* nd, const i32*, const double* alpha,
        const double* val, const i32* col, const i32* pntrb, const i32* pntre, const double* x, const i32* ldx,
        double* y, const i32* ldy, const double* beta)
{
    const i64 columns = *nd;
    if (*first > *last || columns < 1) return;
    const Pairs p = pairs(alpha, val, col, pntrb, pntre, x, *ldx, y, *ldy, beta);
    const i64 group = group_of(columns, *ldx), groups = (columns - 1) / group + 1;
    for (i64 g = 0; g < groups; ++g) {
        const i64 end = min((g + 1) * group, columns);
        for (i64 from = g * group; from < end; from += tile)
            multiply_tile(p, {*first, *last}, from, min(tile, end - from));
    }
}

} // namespace

ORV_EXPORT void SPBLAS_PAIRS(gemv)(ORV_PARAMETERS(13, value_argument, pairs_gemv)) { gemv(ORV_NAMES(13)); }
ORV_EXPORT void SPBLAS_PAIRS(mm)(ORV_PARAMETERS(15, value_argument, pairs_mm)) { mm(ORV_NAMES(15)); }

} // namespace orv::ORV_SPBLAS

#endif
