// What every format can do, and the way to it from a record. A format is a class over the element type and the width of
// integers with these members:
//
//   find(form)                what form asks of the branch; false with the reason recorded
//   by_rows()                 how kernels want dense operands to be stored
//   adds_ones()               whether products with a unit diagonal have it in them; else the caller adds alpha*x
//   writes_own_rows()         where there is multiply_rows(part, count, alpha, x, beta, y): whether it can be taken. It
//                             does all of the product in the rows of a part, and writes no others. Else
//   divides()                 add(part, count, alpha, x, y) adds the product with a part of the entries to any row; or
//                             there is one part only. scale_and_add(part, count, alpha, x, beta, y) in its place where
//                             kernels scale y as they go
//   add(alpha, x, y)          the same with all of them for dense operands
//   work()                    entries, roughly
//   row_without_diagonal()    from 0; -1 if there is none
//   prepare_solve()           what solves need beside; asked once the diagonal is known to be there, but for diagonals,
//                             which find it by this
//   solve(alpha, y)           y := op(A)^-1*y; times alpha if applies_alpha()
#pragma once

#include "core/sparse/bsr.h"
#include "core/sparse/coo.h"
#include "core/sparse/csr.h"
#include "core/sparse/dia.h"
#include "core/sparse/sky.h"
#include "core/team/team.h"

namespace orv::core::sparse {

// act(format, matrix)
template <class T, class Int, class Act>
orv_status with_format_of_width(const orv_sparse& a, char trans, const Act& act)
{
    const Matrix<T, Int> matrix = matrix_of<T, Int>(a, trans);
    const auto as = [&]<template <class, class> class Format>() {
        Format<T, Int> format(matrix);
        return act(format, matrix.negative);
    };
    switch (a.format) {
    case ORV_SPARSE_CSR:
    case ORV_SPARSE_CSC:
        return as.template operator()<Csr>();
    case ORV_SPARSE_COO:
        return as.template operator()<Coo>();
    case ORV_SPARSE_DIA:
        return as.template operator()<Dia>();
    case ORV_SPARSE_BSR:
        return as.template operator()<Bsr>();
    default:
        return as.template operator()<Sky>();
    }
}

template <class T, class Act> orv_status with_format(const orv_sparse& a, char trans, const Act& act)
{
    return a.bits == 32 ? with_format_of_width<T, i32>(a, trans, act) : with_format_of_width<T, i64>(a, trans, act);
}

// Entries that are worth a thread: some 0.1 ms.
template <class T> inline constexpr double grain = is_complex<T> ? 5e4 : 1e5;

// A dense matrix in the order in which kernels want it, some columns at a time, if it is in the other.
inline constexpr i64 turned_columns = 48;
template <class T> orv_status turn(const Dense<const T>& from, const Dense<T>& to)
{
    if (from.lines == 0 || from.length == 0) return ORV_OK;
    return trans::Kernels<T>::omatcopy.run('R', 'T', from.lines, from.length, one<T>, from.at, from.ld, to.at, to.ld);
}
template <class T> Dense<const T> read(const Dense<T>& d) { return {d.at, d.lines, d.length, d.ld, d.by_rows}; }

// A dense matrix in work memory, of rows by columns.
template <class T> Dense<T> laid_out(T* at, i64 rows, i64 columns, bool by_rows)
{
    return Dense<T>::of(at, rows, columns, max(1, by_rows ? columns : rows), by_rows);
}

// act(part) for the columns of y, cut among threads; registers take eight at a time.
template <class T, class Act> void each_share_of_columns(double work, const Dense<T>& y, const Act& act)
{
    const i64 columns = y.columns(), granule = y.by_rows ? 8 : 1, pieces = (columns + granule - 1) / granule;
    const int threads = threads_for(work * static_cast<double>(columns), grain<T>, pieces);
    remember_threads(threads);
    parallel(threads, [&](int index, int count) {
        const i64 from = min(columns, pieces * index / count * granule),
                  to = min(columns, pieces * (index + 1) / count * granule);
        if (from < to) act(from, to - from);
    });
}

} // namespace orv::core::sparse
