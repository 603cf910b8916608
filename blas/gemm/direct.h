// Tiles of C straight from the operands, with nothing packed: for products too small to pack, and for want of memory.
//
//   C(i, j) := C(i, j) + alpha*(X(i, 0)*Y(0, j) + X(i, 1)*Y(1, j) + ...)
//
// The sum starts at zero and ascends; then comes one product with alpha and one addition to C. That holds for every
// element, wherever it stands in a tile, so no choice made here shows in the result. Complex products keep four such
// sums, one for each product of parts (re*re, im*im, im*re, re*im), combined in pairs at the end; conjugation only
// turns their signs there. Rows of X run along the lanes of registers, elements of Y are repeated over the lanes.
#pragma once

#include "frame/simd.h"

namespace orv::gemm {

// Where the rows of X stand: side by side in memory, or a leading dimension apart with the steps side by side.
enum class Rows { adjacent, apart };

template <class T> struct Operands {
    const T* x; // X(i, p) at i + p*ldx (adjacent) or at p + i*ldx (apart)
    i64 ldx;
    const T* y; // Y(p, j) at p*y_step + j*y_column
    i64 y_step, y_column;
    T* c; // C(i, j) at i*c_row + j*c_column
    i64 c_row, c_column;
    bool conj_x, conj_y;
    factor<T> alpha;
};

// The sums of as many rows as a register has lanes, in one column.
template <class T> struct Sum {
    vec<T> sum = zeros<T>();
    ORV_INLINE void add(vec<T> x, vec<T> y) { sum += x * y; }
    ORV_INLINE vec<T> total(bool, bool) const { return sum; }
};
template <class R> struct Sum<cpx<R>> {
    using T = cpx<R>;
    vec<T> straight = zeros<T>(), crossed = zeros<T>(); // (re*re, im*im) and (im*re, re*im)
    ORV_INLINE void add(vec<T> x, vec<T> y)
    {
        straight += lane_product(x, y);
        crossed += lane_product(swap_neighbours(x), y);
    }
    ORV_INLINE vec<T> total(bool conj_x, bool conj_y) const
    {
        constexpr R sign[] = {R(1), R(-1)};
        const vec<T> re = lane_product(straight, splat(T{R(1), sign[conj_x == conj_y]}));
        const vec<T> im = lane_product(crossed, splat(T{sign[conj_x], sign[conj_y]}));
        return add_pairs(re, im);
    }
};

template <class T, Rows layout, int rows, int columns> class DirectTile {
    static constexpr int lanes = vec<T>::lanes;
    static constexpr int registers = (rows + lanes - 1) / lanes;
    static constexpr int last = rows - (registers - 1) * lanes; // rows in the last register
    static constexpr int steps_at_once = layout == Rows::apart ? lanes : 1;

    const Operands<T>& o;
    const T* x;
    const T* y;
    Sum<T> sums[registers][columns];

    ORV_INLINE void add_step(const vec<T> (&a)[registers], const T* y_row)
    {
#pragma GCC unroll 4
        for (int j = 0; j < columns; ++j) {
            const vec<T> b = splat(y_row[j * o.y_column]);
#pragma GCC unroll 2
            for (int r = 0; r < registers; ++r) sums[r][j].add(a[r], b);
        }
    }

    // The next `steps` of the sum: one of adjacent rows, up to a register's width of rows that stand apart, whose
    // square blocks change rows with columns on the way.
    template <int steps> ORV_INLINE void add_steps()
    {
        vec<T> a[steps_at_once][registers];
#pragma GCC unroll 2
        for (int r = 0; r < registers; ++r) {
            if constexpr (layout == Rows::adjacent) {
                a[0][r] = r + 1 < registers ? loadu(x + r * lanes) : load_first<last>(x + r * lanes);
            } else {
                vec<T> square[lanes];
#pragma GCC unroll 4
                for (int i = 0; i < lanes; ++i)
                    square[i] = r * lanes + i < rows ? load_first<steps>(x + (r * lanes + i) * o.ldx) : zeros<T>();
                transpose(square);
#pragma GCC unroll 4
                for (int s = 0; s < lanes; ++s) a[s][r] = square[s];
            }
        }
#pragma GCC unroll 4
        for (int s = 0; s < steps; ++s) add_step(a[s], y + s * o.y_step);
        x += layout == Rows::adjacent ? o.ldx : steps;
        y += steps * o.y_step;
    }

    template <int rest> ORV_INLINE void add_rest(i64 steps)
    {
        if constexpr (rest > 0) {
            if (steps == rest) add_steps<rest>();
            else add_rest<rest - 1>(steps);
        }
    }

public:
    ORV_INLINE DirectTile(const Operands<T>& operands, i64 i, i64 j)
        : o(operands), x(o.x + i * (layout == Rows::adjacent ? 1 : o.ldx)), y(o.y + j * o.y_column)
    {
    }

    ORV_INLINE void add(i64 k)
    {
        i64 p = steps_at_once;
        for (; p <= k; p += steps_at_once) add_steps<steps_at_once>();
        add_rest<steps_at_once - 1>(k - p + steps_at_once);
    }

    ORV_INLINE void update(T* c)
    {
#pragma GCC unroll 4
        for (int j = 0; j < columns; ++j) {
            T* column = c + j * o.c_column;
#pragma GCC unroll 2
            for (int r = 0; r < registers; ++r, column += lanes * o.c_row) {
                const vec<T> total = o.alpha * sums[r][j].total(o.conj_x, o.conj_y);
                const bool whole = r + 1 < registers;
                if (o.c_row == 1) {
                    if (whole) storeu(column, loadu(column) + total);
                    else store_first<last>(column, load_first<last>(column) + total);
                } else {
                    alignas(vector_bytes) T element[lanes];
                    store(element, total);
                    for (int i = 0; i < (whole ? lanes : last); ++i) column[i * o.c_row] += element[i];
                }
            }
        }
    }
};

// Walks C in tiles of two registers of rows (of rows that stand apart, no more than four) by four columns: eight sums
// in flight keep the adders busy, and the registers suffice.
template <class T, Rows layout> class Direct {
    static constexpr int lanes = vec<T>::lanes;
    static constexpr int max_rows = layout == Rows::apart && lanes == 4 ? lanes : 2 * lanes, max_columns = 4;

    const Operands<T>& o;
    const i64 k;

    template <int rows, int columns> [[gnu::noinline]] void tile(i64 i, i64 j) const
    {
        DirectTile<T, layout, rows, columns> t(o, i, j);
        t.add(k);
        t.update(o.c + i * o.c_row + j * o.c_column);
    }
    template <int rows, int columns> void last_rows(i64 i, i64 j, i64 left) const
    {
        if constexpr (rows > 0) {
            if (left == rows) tile<rows, columns>(i, j);
            else last_rows<rows - 1, columns>(i, j, left);
        }
    }
    template <int columns> void strip(i64 j, i64 m) const
    {
        i64 i = 0;
        for (; i + max_rows <= m; i += max_rows) tile<max_rows, columns>(i, j);
        last_rows<max_rows - 1, columns>(i, j, m - i);
    }
    template <int columns> void last_columns(i64 j, i64 m, i64 left) const
    {
        if constexpr (columns > 0) {
            if (left == columns) strip<columns>(j, m);
            else last_columns<columns - 1>(j, m, left);
        }
    }

public:
    Direct(const Operands<T>& operands, i64 depth) : o(operands), k(depth) {}

    void operator()(i64 m, i64 n) const
    {
        i64 j = 0;
        for (; j + max_columns <= n; j += max_columns) strip<max_columns>(j, m);
        last_columns<max_columns - 1>(j, m, n - j);
    }
};

} // namespace orv::gemm
