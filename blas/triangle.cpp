#include "blas/triangle.h"

#include "blas/stretch.h"
#include "blas/strip.h"

namespace orv::blas {
namespace {

constexpr bool square_first(Task task, Op op) { return (task == Task::solve) == (op == Op::none); }

template <Task task, Half half, Op op> inline constexpr bool up = ascending(task, {half, op, false});

// The elements of x that belong to the columns of a strip stay in registers until they are known.
template <int columns, class T> struct Own {
    vec<T> v[columns];
    explicit Own(const T* x)
    {
#pragma GCC unroll 4
        for (int c = 0; c < columns; ++c) v[c] = load_first<1>(x + c);
    }
    void store(T* x) const
    {
#pragma GCC unroll 4
        for (int c = 0; c < columns; ++c) store_first<1>(x + c, v[c]);
    }
    vec<T> operator()(int c) const { return splat_first(v[c]); }
};

// own := op(square)^-1 * own, own being elements j..j+columns-1, from the first to the last column or back.
template <Half half, Op op, int columns, class T>
ORV_INLINE void solve_square(bool unit, const Neighbours<const T>& b, i64 j, Own<columns, T>& own)
{
    constexpr bool forth = up<Task::solve, half, op>;
    constexpr auto nth = [](int s) { return forth ? s : columns - 1 - s; };
    unrolled<0, columns>([&]<int s>() ORV_INLINE_LAMBDA {
        constexpr int c = nth(s);
        const T* const column = b.at[c] + j;
        if constexpr (op != Op::none)
            unrolled<0, s>([&]<int solved>() ORV_INLINE_LAMBDA {
                own.v[c] = own.v[c] - element_product(element_of<op>(column + nth(solved)), own.v[nth(solved)]);
            });
        if (!unit) own.v[c] = quotient<op>(own.v[c], column[c]);
        if constexpr (op == Op::none)
            unrolled<s + 1, columns>([&]<int left>() ORV_INLINE_LAMBDA {
                own.v[nth(left)] = own.v[nth(left)] - element_product(element_of<op>(column + nth(left)), own.v[c]);
            });
    });
}

template <Half half, Op op, int columns, class T>
ORV_INLINE void solve_strip(bool unit, const Walk<T, true>& v, i64 j, T* x)
{
    const Neighbours<const T> b = v.b.template neighbours<columns>(j);
    Own<columns, T> own(x + j);
    const auto gain = [&](int c, vec<T>, vec<T> sum) ORV_INLINE_LAMBDA { own.v[c] = first_only(own.v[c] + sum); };
    if constexpr (op == Op::none) solve_square<half, op, columns>(unit, b, j, own), own.store(x + j);
    strip<pass_of<op>, edges_at(half, Edge::square), columns, T>(v, j, b, own, gain);
    if constexpr (op != Op::none) solve_square<half, op, columns>(unit, b, j, own), own.store(x + j);
}

// own += B*x in the square, B being what lies beside the diagonal; x is what own was before.
template <Half half, int columns, class T>
ORV_INLINE void multiply_square(const Walk<T, true>& v, const Neighbours<const T>& b, i64 j, const Own<columns, T>& x,
                                Own<columns, T>& own)
{
    const factor<T> alpha = v.alpha;
    unrolled<0, columns>([&]<int row>() ORV_INLINE_LAMBDA {
        constexpr int from = half == Half::lower ? 0 : row + 1, to = half == Half::lower ? row : columns;
        ProductSum<T> sum(own.v[row]);
        unrolled<from, to>([&]<int c>() ORV_INLINE_LAMBDA {
            const vec<T> element = load_first<1>(b.at[c] + j + row);
            const Multiplicand<T> f(alpha * x(c));
            c == from ? sum.begin(element, f) : sum.add(element, f);
        });
        if constexpr (from < to) own.v[row] = sum.value();
    });
}

template <Half half, Op op, int columns, class T>
ORV_INLINE void multiply_strip(bool unit, const Walk<T, true>& v, i64 j, T* x)
{
    const Neighbours<const T> b = v.b.template neighbours<columns>(j);
    const Own<columns, T> before(x + j);
    Own<columns, T> own = before;
    if (!unit)
#pragma GCC unroll 4
        for (int c = 0; c < columns; ++c) own.v[c] = element_product(element_of<op>(b.at[c] + j + c), own.v[c]);
    const auto gain = [&](int c, vec<T>, vec<T> sum) ORV_INLINE_LAMBDA { own.v[c] = own.v[c] + sum; };
    if constexpr (op == Op::none) multiply_square<half>(v, b, j, before, own), own.store(x + j);
    constexpr Edge edge = op == Op::none ? Edge::square : Edge::diagonal;
    strip<pass_of<op>, edges_at(half, edge), columns, T>(v, j, b, before, gain);
    if constexpr (op != Op::none) own.store(x + j);
}

} // namespace

template <Task task, Half half, Op op, class T>
void columns_in_place(bool unit, const Storage<const T>& a, Rows block, T* x)
{
    constexpr bool solve = task == Task::solve, forth = up<task, half, op>;
    // Were it const, it would be filled by whole registers from what the caller has just stored by words.
    Walk<T, true> v(a, solve ? -one<T> : one<T>, {x, 1}, {x, 1}, {x, 1}, {x, 1});
    const bool four = a.share_rows(4), two = a.share_rows(2);
    const auto next = [&]<int columns>() ORV_INLINE_LAMBDA {
        const i64 j = forth ? block.from : block.to - columns;
        if constexpr (solve) solve_strip<half, op, columns>(unit, v, j, x);
        else multiply_strip<half, op, columns>(unit, v, j, x);
        (forth ? block.from : block.to) = forth ? j + columns : j;
    };
    while (block.from < block.to) {
        const i64 left = block.to - block.from;
        if (left >= 4 && four) next.template operator()<4>();
        else if (left >= 2 && two) next.template operator()<2>();
        else next.template operator()<1>();
    }
}

namespace {

// Cuts 0..n-1 in blocks, each of which ends a multiple of `size`, a power of two, before n: what is left over stands at
// the low end. In the order of the task, triangle(block) for each; before each but the first one rectangle(columns,
// block), the part beside the triangle in the columns of the block that was before, or in its own.
template <class Triangle, class Rectangle>
ORV_INLINE void by_blocks(Task task, Form form, i64 n, i64 size, const Triangle& triangle, const Rectangle& rectangle)
{
    const bool up = ascending(task, form), first = square_first(task, form.op);
    Rows before{};
    for (i64 done = 0, count; done < n; done += count) {
        count = up && done == 0 ? ((n - 1) & (size - 1)) + 1 : min(size, n - done);
        const i64 to = up ? done + count : n - done;
        const Rows block{to - count, to};
        if (done > 0) rectangle(first ? before : block, block);
        triangle(block);
        before = block;
    }
}

// For strided x, a block's columns go along with two copies on the stack, 10 KiB together: of their own elements of x
// and of a window of rows.
constexpr i64 strided_block = 128;
template <class T> constexpr i64 window_rows = 8192 / sizeof(T);

// The rows of a block's columns, from the block outwards as far as a window reaches.
template <class T> Rows near(Half half, const Storage<const T>& a, Rows block)
{
    const Rows rest = beside(half, a, block);
    return half == Half::upper ? Rows{max(rest.from, block.to - window_rows<T>), block.to}
                               : Rows{block.from, min(rest.to, block.from + window_rows<T>)};
}

// With the rows beyond: x(rows) += alpha*A(rows, block)*x(block), or x(block) += alpha*op(A(rows, block))*x(rows).
template <class T>
[[gnu::noinline]] void strided_rectangle(Form form, const Storage<const T>& a, Rows block, T alpha, T* x, i64 incx)
{
    const Rows all = beside(form.half, a, block), done = near(form.half, a, block);
    const Rows beyond = form.half == Half::upper ? Rows{all.from, done.from} : Rows{done.to, all.to};
    if (beyond.from >= beyond.to) return;
    Stretch<T, strided_block> own_copy;
    Stretch<T, window_rows<T>> copy;
    T* const own = own_copy.gather(block.to - block.from, x + block.from * incx, incx) - block.from;
    for (i64 i = beyond.from; i < beyond.to; i += window_rows<T>) {
        const Rows window{i, min(beyond.to, i + window_rows<T>)};
        T* const others = copy.gather(window.to - i, x + i * incx, incx) - i;
        Walk<T, true> v(off_diagonal(form.half, a), alpha, {others, 1}, {own, 1}, {others, 1}, {own, 1});
        v.b.all = window;
        with_op<T>(form.op, [&]<Op op>() { strips<pass_of<op>, Edges{}, T>(v, block); });
        if (form.op == Op::none) copy.scatter(window.to - i, x + i * incx, incx);
    }
    if (form.op != Op::none) own_copy.scatter(block.to - block.from, x + block.from * incx, incx);
}

} // namespace

template <Task task, class T> void in_place_at_stride(Form form, const Storage<const T>& a, i64 n, T* x, i64 incx)
{
    const auto triangle = [=](Rows block) {
        const Rows window = near(form.half, a, block);
        const Rows changed = form.op == Op::none ? window : block;
        Stretch<T, window_rows<T>> copy;
        T* const own = copy.gather(window.to - window.from, x + window.from * incx, incx) - window.from;
        Storage<const T> part = a;
        part.all = window;
        block_in_place<task>(form, part, block, own);
        for (i64 i = changed.from; i < changed.to; ++i) x[i * incx] = own[i];
    };
    const auto rectangle = [=](Rows block, Rows /* next */) {
        strided_rectangle(form, a, block, task == Task::solve ? -one<T> : one<T>, x, incx);
    };
    if (n <= strided_block) triangle({0, n});
    else by_blocks(task, form, n, strided_block, triangle, rectangle);
}

// The columns of a small triangle are too short for the processor to read ahead by itself. Of a large matrix it is
// asked for before the rectangle that it comes after.
template <Task task, class T>
void blocks_in_place(Form form, i64 n, i64 size, const T* a, i64 lda, T* x, i64 incx, AddRectangle<T>* add)
{
    const bool none = form.op == Op::none, far = is_far<T>(n, n);
    const char trans = none ? 'N' : form.op == Op::transpose ? 'T' : 'C';
    const auto part = [=](Rows r) { return x + (incx < 0 ? r.to - 1 : r.from) * incx; };
    const auto own = [=](Rows block) {
        return full_triangle(form.half, a + block.from * (lda + 1), lda, block.to - block.from);
    };
    const auto ask_for = [](const Storage<const T>& t) {
        for (i64 j = 0; j < t.all.to; ++j)
            for (i64 i = t.rows(j).from; i < t.rows(j).to; i += cache_line / sizeof(T)) prefetch(t.column(j) + i);
    };
    const auto triangle = [=](Rows block) ORV_INLINE_LAMBDA {
        in_place<task>(form, own(block), block.to - block.from, x + block.from * incx, incx);
    };
    const auto rectangle = [=](Rows columns, Rows next) ORV_INLINE_LAMBDA {
        if (far) ask_for(own(next));
        const Rows rest = form.half == Half::upper ? Rows{0, columns.from} : Rows{columns.to, n};
        add(trans, rest.to - rest.from, columns.to - columns.from, a + rest.from + columns.from * lda, lda,
            part(none ? columns : rest), part(none ? rest : columns), incx);
    };
    by_blocks(task, form, n, size, triangle, rectangle);
}

#define COLUMNS(task, op, T)                                                                                           \
    template void columns_in_place<task, Half::lower, op>(bool, const Storage<const T>&, Rows, T*);                    \
    template void columns_in_place<task, Half::upper, op>(bool, const Storage<const T>&, Rows, T*);
#define IN_PLACE(task, T)                                                                                              \
    COLUMNS(task, Op::none, T)                                                                                         \
    COLUMNS(task, Op::transpose, T)                                                                                    \
    template void in_place_at_stride<task>(Form, const Storage<const T>&, i64, T*, i64);                               \
    template void blocks_in_place<task>(Form, i64, i64, const T*, i64, T*, i64, AddRectangle<T>*);
#define REAL(T) IN_PLACE(Task::solve, T) IN_PLACE(Task::multiply, T)
#define COMPLEX(T) REAL(T) COLUMNS(Task::solve, Op::conjugate, T) COLUMNS(Task::multiply, Op::conjugate, T)

REAL(float)
REAL(double)
COMPLEX(cpx<float>)
COMPLEX(cpx<double>)

} // namespace orv::blas
