// What copies, transpositions and sums of matrices call a bad argument: the number of the first one that is bad,
// counted from 1; 0 if all are good.
#pragma once

#include "frame/arguments.h"

namespace orv::arguments {

namespace detail {

constexpr bool transposes(char trans) { return one_of(trans, "TC"); }

// Elements in a line of the matrix: a row, or in column-major order a column.
constexpr i64 line(char ordering, i64 rows, i64 cols) { return fold(ordering) == 'R' ? cols : rows; }
// The same of op of a matrix that is rows by cols before.
constexpr i64 line(char ordering, char trans, i64 rows, i64 cols)
{
    return transposes(trans) ? line(ordering, cols, rows) : line(ordering, rows, cols);
}
constexpr i64 reach(i64 line, i64 stride) { return max(1, (line - 1) * stride + 1); }

} // namespace detail

// A is rows by cols.
template <class T>
constexpr int omatcopy2(char ordering, char trans, i64 rows, i64 cols, T, const T*, i64 lda, i64 stridea, T*, i64 ldb,
                        i64 strideb)
{
    if (!one_of(ordering, "RC")) return 1;
    if (!one_of(trans, "NTRC")) return 2;
    if (rows < 0) return 3;
    if (cols < 0) return 4;
    if (stridea < 1) return 8;
    if (lda < detail::reach(detail::line(ordering, rows, cols), stridea)) return 7;
    if (strideb < 1) return 11;
    if (ldb < detail::reach(detail::line(ordering, trans, rows, cols), strideb)) return 10;
    return 0;
}

template <class T>
constexpr int omatcopy(char ordering, char trans, i64 rows, i64 cols, T alpha, const T* a, i64 lda, T* b, i64 ldb)
{
    const int bad = omatcopy2(ordering, trans, rows, cols, alpha, a, lda, 1, b, ldb, 1);
    return bad == 10 ? 9 : bad;
}

template <class T>
constexpr int imatcopy(char ordering, char trans, i64 rows, i64 cols, T alpha, T* ab, i64 lda, i64 ldb)
{
    const int bad = omatcopy2(ordering, trans, rows, cols, alpha, ab, lda, 1, ab, ldb, 1);
    return bad == 10 ? 8 : bad;
}

// C is rows by cols.
template <class T>
constexpr int omatadd(char ordering, char transa, char transb, i64 rows, i64 cols, T, const T*, i64 lda, T, const T*,
                      i64 ldb, T*, i64 ldc)
{
    if (!one_of(ordering, "RC")) return 1;
    if (!one_of(transa, "NTRC")) return 2;
    if (!one_of(transb, "NTRC")) return 3;
    if (rows < 0) return 4;
    if (cols < 0) return 5;
    if (lda < max(1, detail::line(ordering, transa, rows, cols))) return 8;
    if (ldb < max(1, detail::line(ordering, transb, rows, cols))) return 11;
    if (ldc < max(1, detail::line(ordering, rows, cols))) return 13;
    return 0;
}

} // namespace orv::arguments
