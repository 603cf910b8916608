// Products of a structured matrix and a vector: one body for symmetric, Hermitian and banded matrices in every storage.
//
// The matrix B is a run of rows a column (storage.h), whose ends both ascend from column to column; of a symmetric or
// Hermitian matrix A, B is what lies strictly on one side of the diagonal, A = B + D + op(B). A pass goes over the
// columns in strips of four, of what then is left two and one; a strip whose columns share no stretch of rows is cut
// likewise. It reads B once, and does with each element what is asked for:
//
//   direct   y(i) += B(i,j) * f(j), f(j) = alpha*x(j): with B                   y := y + alpha*B*x
//   across   s(j) += op(B(i,j)) * x(i), at the end of the strip
//            y(j) += alpha * s(j): with the transpose, conjugated or not        y := y + alpha*op(B)*x
//   both     and y(j) += D(j) * f(j) before alpha*s(j)                          y := y + alpha*A*x
//
// Order of operations: a strip takes its rows downwards, and a row its columns from left to right. Sums of complex
// products keep the terms with the real and those with the imaginary parts apart, as in gemv_kernels.h. With `one_lane`
// that is all: one chain of sums for each s(j), which neither alignment nor strides nor leading dimensions change.
// Without, rows that all columns of a strip share go register by register, s(j) has a sum a lane, and strided vectors
// cut the rows in windows, each with a sum of its own.
#pragma once

#include "blas/gemv_kernels.h"
#include "blas/storage.h"
#include "blas/stretch.h"

namespace orv::blas {

struct Pass {
    bool direct = false;
    Op across = Op::none; // none: no such product
    bool one_lane = false;
    bool align_y = false; // doubles: stores to y on 16 bytes
    bool ahead = false;   // bands: ask for the next strip while one is at work
    bool far = false;     // full matrices beyond the second-level cache: ask for what a strip holds further on
    constexpr bool both() const { return direct && across != Op::none; }
};

// The side of a triangle, without its diagonal.
template <Half half, class Triangle> struct OffDiagonal {
    Triangle a;
    auto column(i64 j) const { return a.column(j); }
    Rows rows(i64 j) const
    {
        const Rows all = a.rows(j);
        return half == Half::upper ? Rows{all.from, all.to - 1} : Rows{all.from + 1, all.to};
    }
};

// v + i is the address of element i.
template <class T, bool unit> struct Elements {
    T* v;
    i64 inc;
    ORV_INLINE T* operator+(i64 i) const { return unit ? v + i : v + i * inc; }
};

// The operands as rows and as columns of B index them.
template <class T, bool unit> struct Operands {
    Elements<const T, unit> x_row, x_column;
    Elements<T, unit> y_row, y_column;
    bool diagonal; // whether this pass is to take the diagonal too
};

// body<k>() for k = from..to-1.
template <int from, int to, class Body> ORV_INLINE void unrolled(const Body& body)
{
    if constexpr (from < to) {
        body.template operator()<from>();
        unrolled<from + 1, to>(body);
    }
}

// The real part of an element, in all lanes.
template <class T> ORV_INLINE vec<T> splat_real(const T* p)
{
    const auto re = reinterpret_cast<const real_t<T>&>(*p);
    if constexpr (is_complex<T>) return splat(T{re, re});
    else return splat(re);
}

// Rows that go together: two registers of reals; of complex numbers, which take twice the sums, one.
template <class T> constexpr int block = (is_complex<T> ? 1 : 2) * vec<T>::lanes;

// Columns j..j+columns-1 of B in the rows of the window.
template <Pass pass, int columns, class T, class Storage, bool unit>
ORV_INLINE void strip(const Storage& b, i64 j, Rows window, const factor<T>& alpha, const Operands<T, unit>& v)
{
    const auto column = [&](int c) { return b.column(j + min(c, columns - 1)); };
    const T* const at[4] = {column(0), column(1), column(2), column(3)};
    const auto scaled = [&](int c) {
        if constexpr (pass.direct) return alpha * splat(*(v.x_column + (j + min(c, columns - 1))));
        else return zeros<T>();
    };
    const vec<T> f[4] = {scaled(0), scaled(1), scaled(2), scaled(3)};
    const Multiplicand<T> factors[4] = {Multiplicand<T>(f[0]), Multiplicand<T>(f[1]), Multiplicand<T>(f[2]),
                                        Multiplicand<T>(f[3])};
    Sum<T> sums[4] = {{}, {}, {}, {}};

    // A piece of the rows that columns from..to-1 of the strip have.
    const auto add = [&]<int from, int to, class Piece>(Piece, i64 i) __attribute__((always_inline))
    {
#pragma GCC unroll 8
        for (int r = 0; r < Piece::registers; ++r) {
            const Multiplicand<T> x =
                pass.across == Op::none ? Multiplicand<T>(zeros<T>()) : Piece::multiplicand(v.x_row + i, r);
            Sum<T> y(pass.direct ? Piece::load(v.y_row + i, r) : zeros<T>());
#pragma GCC unroll 4
            for (int c = from; c < to; ++c) {
                const vec<T> element = Piece::load(at[c] + i, r);
                if constexpr (pass.direct) c == from ? y.begin(element, factors[c]) : y.add(element, factors[c]);
                if constexpr (pass.across != Op::none) sums[c].add(element, x);
            }
            if constexpr (pass.direct) Piece::store(v.y_row + i, r, y.template value<Op::none>());
        }
    };
    using One = Piece<T, 1>;

    const Rows left = b.rows(j), right = b.rows(j + columns - 1);
    const Rows all{max(left.from, window.from), min(right.to, window.to)};
    const auto within = [&](i64 i) { return i >= all.from && i < all.to; };

    // Rows where a column more begins with each; those of all columns; rows where one more has ended with each.
    unrolled<1, columns>([&]<int begun>() __attribute__((always_inline)) {
        const i64 i = right.from - columns + begun;
        if (within(i)) add.template operator()<0, begun>(One{}, i);
    });
    i64 i = max(right.from, all.from);
    const i64 end = min(left.to, all.to);
    if constexpr (pass.one_lane) {
        for (; i < end; ++i) add.template operator()<0, columns>(One{}, i);
    } else {
        if constexpr (pass.align_y)
            if (i < end && !is_aligned(v.y_row + i, vector_bytes)) add.template operator()<0, columns>(One{}, i++);
        each_piece<block<T>, T>(
            end - i, [&]<class Piece>(Piece piece, i64 row) __attribute__((always_inline)) {
                // Columns of a band are too short for the processor's own look-ahead, but the strips lie one behind the
                // other: a line of the next one for every four registers of this one.
                if constexpr (pass.ahead && columns == 4 && Piece::rows == block<T>)
#pragma GCC unroll 2
                    for (int r = 0; r < Piece::rows; r += vec<T>::lanes)
                        prefetch(b.column(j + columns) + (left.from + columns) + 4 * (row + r));
                if constexpr (pass.far && columns == 4 && Piece::rows == block<T>)
                    if (row * sizeof(T) % cache_line == 0)
                        look_ahead<columns, block<T>>(row, end - i, at[0] + i, at[1] - at[0]);
                add.template operator()<0, columns>(piece, i + row);
            });
    }
    unrolled<1, columns>([&]<int ended>() __attribute__((always_inline)) {
        const i64 i = left.to - 1 + ended;
        if (within(i)) add.template operator()<ended, columns>(One{}, i);
    });

    if constexpr (pass.across != Op::none)
#pragma GCC unroll 4
        for (int c = 0; c < columns; ++c) {
            T* const to = v.y_column + (j + c);
            vec<T> y = One::load(to, 0);
            // The diagonal of a Hermitian matrix is real; its imaginary part is not read.
            if constexpr (pass.both())
                if (v.diagonal) y += lane_product(splat_real(at[c] + (j + c)), f[c]);
            One::store(to, 0, y + alpha * sums[c].folded().template value<pass.across>());
        }
}

template <Pass pass, class T, class Storage, bool unit>
[[gnu::noinline]] void strips(Storage b, Rows columns, Rows window, factor<T> alpha, Operands<T, unit> v)
{
    for (i64 j = columns.from; j < columns.to;) {
        const i64 together = b.rows(j).to;
        if (j + 4 <= columns.to && b.rows(j + 3).from <= together) strip<pass, 4>(b, j, window, alpha, v), j += 4;
        else if (j + 2 <= columns.to && b.rows(j + 1).from <= together) strip<pass, 2>(b, j, window, alpha, v), j += 2;
        else strip<pass, 1>(b, j, window, alpha, v), j += 1;
    }
}

// Strided vectors go in copies: x and y of all rows that a block of columns meets, itself included, if that fits on a
// small stack; else of 128 columns and of windows of rows.
template <Pass pass, class T, class Storage>
void strided_strips(const Storage& b, i64 n, const factor<T>& alpha, const T* x, i64 incx, T* y, i64 incy)
{
    constexpr i64 window_rows = 8192 / sizeof(T), block_columns = 128;
    Stretch<T, window_rows> x_rows, y_rows;
    Stretch<T, block_columns> x_columns;
    alignas(vector_bytes) T gain[block_columns]; // of the columns' own elements of y, which may be among the rows too
    Operands<T, true> v;
    for (i64 j = 0; j < n;) {
        if constexpr (pass.both()) {
            const Rows columns{j, min(n, j + window_rows / 2)};
            const Rows met{min(b.rows(j).from, j), max(b.rows(columns.to - 1).to, columns.to)};
            const i64 count = met.to - met.from;
            if (count <= window_rows) {
                v.x_row.v = v.x_column.v = x_rows.gather(count, x + met.from * incx, incx) - met.from;
                v.y_row.v = v.y_column.v = y_rows.gather(count, y + met.from * incy, incy) - met.from;
                v.diagonal = true;
                strips<pass>(b, columns, met, alpha, v);
                y_rows.scatter(count, y + met.from * incy, incy);
                j = columns.to;
                continue;
            }
        }
        const Rows columns{j, min(n, j + block_columns)};
        const Rows rows{b.rows(j).from, b.rows(columns.to - 1).to};
        for (T& e : gain) e = zero<T>;
        v.y_column.v = gain - j;
        if constexpr (pass.direct) v.x_column.v = x_columns.gather(columns.to - j, x + j * incx, incx) - j;
        for (i64 i = rows.from; i < rows.to;) {
            const Rows window{i, min(rows.to, i + window_rows)};
            const i64 count = window.to - i;
            if constexpr (pass.across != Op::none) v.x_row.v = x_rows.gather(count, x + i * incx, incx) - i;
            if constexpr (pass.direct) v.y_row.v = y_rows.gather(count, y + i * incy, incy) - i;
            v.diagonal = i == rows.from;
            strips<pass>(b, columns, window, alpha, v);
            if constexpr (pass.direct) y_rows.scatter(count, y + i * incy, incy);
            i = window.to;
        }
        if constexpr (pass.across != Op::none)
            for (i64 c = j; c < columns.to; ++c) y[c * incy] = y[c * incy] + gain[c - j];
        j = columns.to;
    }
}

// The pass over columns 0..n-1 of B, of m rows. x and y are elements 0, whatever the sign of the strides.
template <Pass pass, class T, class Storage>
void structured_mv(const Storage& b, i64 m, i64 n, const factor<T>& alpha, const T* x, i64 incx, T* y, i64 incy)
{
    if constexpr (pass.one_lane)
        strips<pass>(b, {0, n}, {0, m}, alpha, Operands<T, false>{{x, incx}, {x, incx}, {y, incy}, {y, incy}, true});
    else if (incx == 1 && incy == 1)
        strips<pass>(b, {0, n}, {0, m}, alpha, Operands<T, true>{{x, 1}, {x, 1}, {y, 1}, {y, 1}, true});
    else strided_strips<pass>(b, n, alpha, x, incx, y, incy);
}

} // namespace orv::blas
