// Tiles of C straight from the operands: what direct.h says, in as many registers as there are.
#include "blas/gemm/direct.h"

#include "frame/products.h"

namespace orv::gemm {
namespace {

// What the sums of as many rows as a register has lanes, in one column, come to.
template <class T> ORV_INLINE vec<T> total(const CrossedSum<T>& s, bool conj_x, bool conj_y)
{
    if constexpr (!is_complex<T>) return s.sum;
    else {
        using R = real_t<T>;
        constexpr R sign[] = {R(1), R(-1)};
        const vec<T> re = lane_product(s.straight, splat(T{R(1), sign[conj_x == conj_y]}));
        const vec<T> im = lane_product(s.crossed, splat(T{sign[conj_x], sign[conj_y]}));
        return add_pairs(re, im);
    }
}

template <class T, RowLayout layout, Alpha where, int rows, int columns> class DirectTile {
    static constexpr int lanes = vec<T>::lanes;
    static constexpr int registers = (rows + lanes - 1) / lanes;
    static constexpr int last = rows - (registers - 1) * lanes; // rows in the last register
    static constexpr int count = registers * columns;
    static constexpr int steps_at_once = layout == RowLayout::apart ? lanes : 1;

    const Operands<T>& o;
    const T* x;
    const T* y;
    CrossedSum<T> sums[count]; // of register r in column j at j*registers + r

    // One loop over all sums of a tile, not one inside another: the compiler keeps them in registers only where it
    // unrolls early, and that it does with innermost loops.
    ORV_INLINE void add_step(const vec<T> (&a)[registers], const T* y_row)
    {
#pragma GCC unroll 8
        for (int s = 0; s < count; ++s) sums[s].add(a[s % registers], load_splat(y_row + s / registers * o.y_column));
    }

    // The next `steps` of the sum: one of adjacent rows, up to a register's width of rows that stand apart, whose
    // square blocks change rows with columns on the way.
    template <int steps> ORV_INLINE void add_steps()
    {
        vec<T> a[steps_at_once][registers];
#pragma GCC unroll 2
        for (int r = 0; r < registers; ++r) {
            if constexpr (layout == RowLayout::adjacent) {
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
        x += layout == RowLayout::adjacent ? o.ldx : steps;
        y += steps * o.y_step;
    }

    template <int rest> ORV_INLINE void add_rest(i64 steps)
    {
        if constexpr (rest > 0) {
            if (steps == rest) add_steps<rest>();
            else add_rest<rest - 1>(steps);
        }
    }

    // What sum s brings to C.
    ORV_INLINE vec<T> brought(int s, const factor<T>& alpha, bool conj_x, bool conj_y) const
    {
        const vec<T> sum = total(sums[s], conj_x, conj_y);
        return where == Alpha::at_end ? alpha * sum : sum;
    }

    // C := old(C) + total for columns of adjacent rows. What a store to C cannot change is read before.
    template <bool replaces> ORV_INLINE void update_columns(T* c) const
    {
        const factor<T> alpha = o.alpha;
        const bool conj_x = o.conj_x, conj_y = o.conj_y;
        const i64 c_column = o.c_column;
#pragma GCC unroll 8
        for (int s = 0; s < count; ++s) {
            T* at = c + s % registers * lanes + s / registers * c_column;
            const vec<T> t = brought(s, alpha, conj_x, conj_y);
            if (s % registers + 1 < registers) storeu(at, replaces ? zeros<T>() + t : loadu(at) + t);
            else store_first<last>(at, replaces ? zeros<T>() + t : load_first<last>(at) + t);
        }
    }

    // The same for a C that lies on its side: its columns are adjacent, its rows c_row elements apart.
    ORV_INLINE void update_strided(T* c) const
    {
        vec<T> totals[count];
#pragma GCC unroll 8
        for (int s = 0; s < count; ++s) totals[s] = brought(s, o.alpha, o.conj_x, o.conj_y);
        add_strided(o, totals, c);
    }
    [[gnu::noinline]] static void add_strided(const Operands<T>& o, const vec<T> (&totals)[count], T* c)
    {
        for (int j = 0; j < columns; ++j)
            for (int i = 0; i < rows; ++i) {
                alignas(vector_bytes) T element[lanes];
                store(element, totals[j * registers + i / lanes]);
                T& at = c[i * o.c_row + j * o.c_column];
                at = (o.replaces ? zero<T> : at) + element[i % lanes];
            }
    }

public:
    ORV_INLINE DirectTile(const Operands<T>& operands, const T* x_corner, const T* y_corner)
        : o(operands), x(x_corner), y(y_corner)
    {
#pragma GCC unroll 8
        for (int s = 0; s < count; ++s) sums[s].clear();
    }

    ORV_INLINE void add()
    {
        i64 p = steps_at_once;
        for (; p <= o.k; p += steps_at_once) add_steps<steps_at_once>();
        add_rest<steps_at_once - 1>(o.k - p + steps_at_once);
    }

    ORV_INLINE void update(T* c) const
    {
        if (o.c_row != 1) update_strided(c);
        else if (o.replaces) update_columns<true>(c);
        else update_columns<false>(c);
    }
};

// Walks C in tiles of as many sums as keep the adders busy and leave registers for the operands: for reals two
// registers of rows by four columns, or, where it takes a square of four registers to turn rows that stand apart, one
// by eight; for complex numbers, whose sums take two registers, one by four.
template <class T, RowLayout layout, Alpha where> class Direct {
    static constexpr int lanes = vec<T>::lanes;
    static constexpr bool turns_squares_of_four = layout == RowLayout::apart && lanes == 4;
    static constexpr int max_rows = turns_squares_of_four || is_complex<T> ? lanes : 2 * lanes;
    static constexpr int max_columns = turns_squares_of_four ? 8 : 4;

    template <int rows, int columns>
    [[gnu::noinline]] static void tile(const Operands<T>& o, const T* x, const T* y, T* c)
    {
        DirectTile<T, layout, where, rows, columns> t(o, x, y);
        t.add();
        t.update(c);
    }
    template <int rows, int columns> static void last_rows(i64 left, const Operands<T>& o, const T* x, const T* y, T* c)
    {
        if constexpr (rows > 0) {
            if (left == rows) tile<rows, columns>(o, x, y, c);
            else last_rows<rows - 1, columns>(left, o, x, y, c);
        }
    }
    template <int columns> static void strip(i64 m, const Operands<T>& o, const T* y, T* c)
    {
        const T* x = o.x;
        const i64 x_step = max_rows * (layout == RowLayout::adjacent ? 1 : o.ldx), c_step = max_rows * o.c_row;
        for (; m >= max_rows; m -= max_rows, x += x_step, c += c_step) tile<max_rows, columns>(o, x, y, c);
        last_rows<max_rows - 1, columns>(m, o, x, y, c);
    }
    template <int columns> static void strip_of(i64 width, i64 m, const Operands<T>& o, const T* y, T* c)
    {
        if constexpr (columns > 0) {
            if (width == columns) strip<columns>(m, o, y, c);
            else strip_of<columns - 1>(width, m, o, y, c);
        }
    }

public:
    // Strips are as wide as they can be but for the last two, which share what is left: few sums at a time wait for one
    // another.
    static void product(i64 m, i64 n, const Operands<T>& o)
    {
        const T* y = o.y;
        T* c = o.c;
        for (; n >= 2 * max_columns; n -= max_columns, y += max_columns * o.y_column, c += max_columns * o.c_column)
            strip<max_columns>(m, o, y, c);
        if (n > max_columns) {
            const i64 half = (n + 1) / 2;
            strip_of<max_columns>(half, m, o, y, c);
            n -= half, y += half * o.y_column, c += half * o.c_column;
        }
        strip_of<max_columns>(n, m, o, y, c);
    }
};

} // namespace

template <class T, RowLayout layout, Alpha where> void direct(i64 m, i64 n, const Operands<T>& o)
{
    Direct<T, layout, where>::product(m, n, o);
}

#define DIRECT(T, layout, where) template void direct<T, RowLayout::layout, Alpha::where>(i64, i64, const Operands<T>&);
#define DIRECTS(T)                                                                                                     \
    DIRECT(T, adjacent, at_end)                                                                                        \
    DIRECT(T, adjacent, absent)                                                                                        \
    DIRECT(T, apart, at_end)

DIRECTS(float)
DIRECTS(double)
DIRECTS(cpx<float>)
DIRECTS(cpx<double>)

} // namespace orv::gemm
