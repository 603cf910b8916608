// Matrices in compressed rows of dense blocks, lb by lb, one after the other in val. With base 1 columns of a block
// come one after the other, and of dense operands too; with base 0 rows do. Rows and columns of the list are those of
// blocks.
#pragma once

#include "spblas/csr.h"

namespace orv::ORV_SPBLAS {

// A dense operand or a block: element (r, s) at at[r*row_step + s*column_step].
template <class T> struct Plane {
    T* at;
    i64 row_step, column_step;
    ORV_INLINE Plane<T> row(i64 r) const { return {at + r * row_step, row_step, column_step}; }
    ORV_INLINE Plane<T> column(i64 s) const { return {at + s * column_step, row_step, column_step}; }
    ORV_INLINE Plane<T> transposed() const { return {at, column_step, row_step}; }
};
template <class T> Plane<T> plane(bool by_rows, T* at, i64 ld) { return {at, by_rows ? ld : 1, by_rows ? 1 : ld}; }

// y += f*block*x for nd columns.
template <class T>
[[gnu::noinline]] void add_block(i64 lb, i64 nd, T f, const Plane<const T>& block, bool conjugates,
                                 const Plane<const T>& x, const Plane<T>& y)
{
    const auto entry = [&](i64 r, i64 s) ORV_INLINE_LAMBDA {
        return conjugate_if(conjugates, block.at[r * block.row_step + s * block.column_step]);
    };
    if (x.column_step == 1 && y.column_step == 1 && nd > 1) { // rows of x and y are vectors
        for (i64 r = 0; r < lb; ++r)
            for (i64 s = 0; s < lb; ++s)
                add_multiple(nd, f * entry(r, s), x.at + s * x.row_step, y.at + r * y.row_step);
        return;
    }
    for (i64 c = 0; c < nd; ++c) {
        const T* from = x.at + c * x.column_step;
        T* to = y.at + c * y.column_step;
        if (block.row_step == 1 && y.row_step == 1 && !conjugates) { // columns of the block and of y are
            for (i64 s = 0; s < lb; ++s) add_multiple(lb, f * from[s * x.row_step], block.at + s * lb, to);
            continue;
        }
        for (i64 r = 0; r < lb; ++r) {
            T sum = zero<T>;
            for (i64 s = 0; s < lb; ++s) sum += entry(r, s) * from[s * x.row_step];
            to[r * y.row_step] += f * sum;
        }
    }
}

// Rows of blocks: the list of a Csr, whose values are the blocks' first elements.
template <class T> struct Bsr {
    Csr<T> list;
    const T* blocks;
    i64 lb;
    bool by_rows;

    Bsr(const Options& o, i64 order, const T* val, const Int* col, const Int* pntrb, const Int* pntre)
        : list(o, val, col, pntrb, pntre), blocks(val - *pntrb * order * order), lb(order), by_rows(o.by_rows)
    {
    }
    ORV_INLINE Plane<const T> block(Int e) const { return plane(by_rows, blocks + e * lb * lb, lb); }
};

// The options of routines that get theirs as arguments: op 1 A, 2 its transpose, 3 the conjugate of that; lower 1, else
// upper.
inline Options options_of(Int op, char kind, char triangle, bool unit, bool by_rows)
{
    const char shape[] = {kind, triangle, unit ? 'u' : 'n'};
    return options(op == 1 ? 'n' : op == 3 ? 'c' : 't', shape, by_rows ? 0 : 1, by_rows ? 'c' : 'f');
}
inline char triangle_of(Int uplo) { return uplo == 1 ? 'l' : 'u'; }

} // namespace orv::ORV_SPBLAS
