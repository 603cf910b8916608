#include "blas/stretch.h"
#include "blas/strip.h"

namespace orv::blas {

template <Pass pass, Edges edges, class T> void strips(const WalkOf<pass, T>& __restrict v, Rows columns)
{
    const auto next = [&]<int width>(i64 j) ORV_INLINE_LAMBDA {
        const Neighbours<const T> b = v.b.template neighbours<width>(j);
        const auto own = [&](int c) ORV_INLINE_LAMBDA { return splat(*(v.x_column + (j + c))); };
        const auto gain = [&](int c, vec<T> f, vec<T> sum) ORV_INLINE_LAMBDA {
            T* const to = v.y_column + (j + c);
            vec<T> y = load_first<1>(to);
            // The diagonal of a Hermitian matrix is real; its imaginary part is not read.
            if constexpr (pass.both())
                if (edges.from == Edge::diagonal || edges.to == Edge::diagonal || v.diagonal)
                    y += lane_product(splat_real(b.at[c] + (j + c)), f);
            store_first<1>(to, y + sum);
        };
        strip<pass, edges, width, T>(v, j, b, own, gain);
    };
    const bool four = v.b.meet(4), two = v.b.meet(2);
    for (i64 j = columns.from; j < columns.to;) {
        const i64 left = columns.to - j;
        if (left >= 4 && four) next.template operator()<4>(j), j += 4;
        else if (left >= 2 && two) next.template operator()<2>(j), j += 2;
        else next.template operator()<1>(j), j += 1;
    }
}

// Strided vectors go in copies: x and y of all rows that a block of columns meets, itself included, if that fits on a
// small stack; else of 128 columns and of windows of rows.
template <Pass pass, class T>
void strided_strips(const Walk<T, true>& walk, i64 n, const T* x, i64 incx, T* y, i64 incy)
{
    Walk<T, true> v = walk;
    constexpr i64 window_rows = 8192 / sizeof(T), block_columns = 128;
    Stretch<T, window_rows> x_rows, y_rows;
    Stretch<T, block_columns> x_columns;
    alignas(vector_bytes) T gain[block_columns]; // of the columns' own elements of y, which may be among the rows too
    const Storage<const T> b = v.b;
    for (i64 j = 0; j < n;) {
        if constexpr (pass.both()) {
            const Rows columns{j, min(n, j + window_rows / 2)};
            const Rows met{min(b.rows(j).from, j), max(b.rows(columns.to - 1).to, columns.to)};
            const i64 count = met.to - met.from;
            if (count <= window_rows) {
                v.x_row.v = v.x_column.v = x_rows.gather(count, x + met.from * incx, incx) - met.from;
                v.y_row.v = v.y_column.v = y_rows.gather(count, y + met.from * incy, incy) - met.from;
                v.diagonal = true;
                v.b.all = b.all;
                whole_strips<pass, T>(v, columns);
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
            v.b.all = window;
            strips<pass, Edges{}, T>(v, columns);
            if constexpr (pass.direct) y_rows.scatter(count, y + i * incy, incy);
            i = window.to;
        }
        if constexpr (pass.across != Op::none)
            for (i64 c = j; c < columns.to; ++c) y[c * incy] = y[c * incy] + gain[c - j];
        j = columns.to;
    }
}

#define STRIPS(pass, edges, T) template void strips<pass, edges, T>(const WalkOf<pass, T>& __restrict, Rows);
#define STRIDED(pass, T)                                                                                               \
    STRIPS(pass, Edges{}, T)                                                                                           \
    template void strided_strips<pass, T>(const Walk<T, true>&, i64, const T*, i64, T*, i64);
#define REAL(T)                                                                                                        \
    STRIDED(pass_of<Op::none>, T)                                                                                      \
    STRIDED(pass_of<Op::transpose>, T)                                                                                 \
    STRIDED(pass_of_both<T>, T)                                                                                        \
    STRIPS(pass_of_both<T>, edges_at(Half::lower, Edge::diagonal), T)                                                  \
    STRIPS(pass_of_both<T>, edges_at(Half::upper, Edge::diagonal), T)
#define COMPLEX(T) REAL(T) STRIDED(pass_of<Op::conjugate>, T)

REAL(float)
REAL(double)
COMPLEX(cpx<float>)
COMPLEX(cpx<double>)
STRIPS(pass_in_order<float>, Edges{}, float)
STRIPS(pass_in_order<double>, Edges{}, double)
STRIPS(pass_in_order<cpx<float>>, Edges{}, cpx<float>)

} // namespace orv::blas
