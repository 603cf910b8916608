// Triangular solves and products in place: one body for both triangles, every operation and every storage.
//
//   solve      x := op(A)^-1 * x
//   multiply   x := op(A) * x
//
// A is walked in strips of four columns, of what is left two and one; of bands so narrow that the columns of a strip
// don't share its square on the diagonal, narrower strips. A strip is two things: that square, and the rows outside of
// it, which structured_mv.h multiplies. Each element of A is read once.
//
//   op(A)      with each strip, the square and then the rest       and the walk goes
//   solve N    x(own) solved, x(rest) -= A(rest, own)*x(own)       down (lower), up (upper)
//   solve T    x(own) -= A(rest, own)^T*x(rest), x(own) solved     up (lower), down (upper)
//   multiply N x(rest) += A(rest, own)*x(own), x(own) multiplied   up (lower), down (upper)
//   multiply T x(own) multiplied, x(own) += A(rest, own)^T*x(rest) down (lower), up (upper)
//
// so that no element of x is read after it was overwritten, nor before it is known. A is read in its triangle only, and
// not on a unit diagonal. A zero on the diagonal is divided by like any number. Zeros in x are multiplied like any
// number too: NaN in A reaches the result.
#pragma once

#include "blas/structured_mv.h"

namespace orv::blas {

enum class Task { solve, multiply };

struct Form {
    Half half;
    Op op;
    bool unit; // ones on the diagonal, which is not read
};

// The letters of uplo, trans, diag in either case: U is the upper triangle and else the lower one, U a unit diagonal.
template <class T> constexpr Form form_of(char uplo, char trans, char diag)
{
    return {half_of(uplo), op_of<T>(trans), fold(diag) == 'U'};
}

// body<form>() for a form known when the program runs.
template <class T, class Body> ORV_INLINE void with_form(Form form, const Body& body)
{
    const auto by_diagonal = [&]<Half half, Op op>() {
        if (form.unit) body.template operator()<Form{half, op, true}>();
        else body.template operator()<Form{half, op, false}>();
    };
    const auto by_operation = [&]<Half half>() {
        if (form.op == Op::none) return by_diagonal.template operator()<half, Op::none>();
        if constexpr (is_complex<T>)
            if (form.op == Op::conjugate) return by_diagonal.template operator()<half, Op::conjugate>();
        by_diagonal.template operator()<half, Op::transpose>();
    };
    if (form.half == Half::upper) by_operation.template operator()<Half::upper>();
    else by_operation.template operator()<Half::lower>();
}

template <Task task, Form form>
inline constexpr bool ascending = (task == Task::solve) == ((form.half == Half::lower) == (form.op == Op::none));
template <Task task, Form form> inline constexpr bool square_first = (task == Task::solve) == (form.op == Op::none);

// Single elements are kept in the first lane of a register, with zeros in the others.
template <Op op, class T> ORV_INLINE vec<T> element_of(const T* a)
{
    const vec<T> e = load_first<1>(a);
    if constexpr (op == Op::conjugate) return conj(e);
    else return e;
}
template <class T> ORV_INLINE vec<T> product(vec<T> a, vec<T> b)
{
    if constexpr (is_complex<T>)
        return add_sub(lane_product(a, real_parts(b)), lane_product(swap_neighbours(a), imaginary_parts(b)));
    else return a * b;
}

// b / op(d). Complex numbers: b*conj(u) / (d.re*u.re + d.im*u.im) with u = d/max(|d.re|, |d.im|), a part of which is 1
// or -1: the quotient of Smith (Algorithm 116, 1962) bit for bit, but without his branch. What comes between exceeds
// neither operands nor quotient by more than a factor of two. d = 0 gives NaN; of an infinite d, u is that of the largest
// number, and the quotient 0.
template <Op op, class T> ORV_INLINE vec<T> quotient(vec<T> b, T d)
{
    if constexpr (is_complex<T>) {
        using R = real_t<T>;
        if constexpr (op == Op::conjugate) d = conj(d);
        constexpr R most = sizeof(R) == sizeof(float) ? R(__FLT_MAX__) : R(__DBL_MAX__);
        const auto finite = [most](R a) { return a > most ? most : a < -most ? -most : a; };
        const T f{finite(d.re), finite(d.im)};
        const R re = magnitude(f.re), im = magnitude(f.im), larger = re > im ? re : im;
        const T u{f.re / larger, f.im / larger};
        const R t = d.re * u.re + d.im * u.im;
        return {(factor<T>(conj(u)) * b).r / splat(T{t, t}).r};
    } else return b / splat(d);
}
template <Form form, class T> ORV_INLINE vec<T> divided(vec<T> b, const T* diagonal)
{
    if constexpr (form.unit) return b;
    else return quotient<form.op>(b, *diagonal);
}

// op(A) = A adds columns to x(rows), the others add dot products with x(rows) to x(columns).
template <Op op> inline constexpr Pass pass_of{.direct = op == Op::none, .across = op};

// x(own) := op(square)^-1 * x(own), own being j..j+columns-1.
template <Form form, int columns, class Storage, class T> ORV_INLINE void solve_square(const Storage& a, i64 j, T* x)
{
    const auto nth = [](int s) { return ascending<Task::solve, form> ? s : columns - 1 - s; };
    vec<T> v[columns];
#pragma GCC unroll 4
    for (int c = 0; c < columns; ++c) v[c] = load_first<1>(x + j + c);
#pragma GCC unroll 4
    for (int s = 0; s < columns; ++s) {
        const int c = nth(s);
        const T* const column = a.column(j + c) + j;
        if constexpr (form.op != Op::none)
#pragma GCC unroll 4
            for (int solved = 0; solved < s; ++solved)
                v[c] = v[c] - product(element_of<form.op>(column + nth(solved)), v[nth(solved)]);
        v[c] = divided<form>(v[c], column + c);
        if constexpr (form.op == Op::none)
#pragma GCC unroll 4
            for (int left = s + 1; left < columns; ++left)
                v[nth(left)] = v[nth(left)] - product(element_of<form.op>(column + nth(left)), v[c]);
    }
#pragma GCC unroll 4
    for (int c = 0; c < columns; ++c) store_first<1>(x + j + c, v[c]);
}

template <Form form, int columns, class Storage, class T>
ORV_INLINE void solve_strip(const Storage& a, i64 j, Rows window, T* x)
{
    const Rows rest = form.half == Half::lower ? Rows{j + columns, window.to} : Rows{window.from, j};
    const Operands<T, true> v{{x, 1}, {x, 1}, {x, 1}, {x, 1}, false};
    if constexpr (form.op == Op::none) solve_square<form, columns>(a, j, x);
    strip<pass_of<form.op>, columns>(a, j, rest, factor<T>(-one<T>), v);
    if constexpr (form.op != Op::none) solve_square<form, columns>(a, j, x);
}

template <Form form, int columns, class Storage, class T>
ORV_INLINE void multiply_strip(const Storage& a, i64 j, Rows window, T* x)
{
    T before[columns], own[columns];
#pragma GCC unroll 4
    for (int c = 0; c < columns; ++c) {
        before[c] = own[c] = x[j + c];
        if constexpr (!form.unit)
            own[c] = first_lane(product(element_of<form.op>(a.column(j + c) + j + c), splat(own[c])));
    }
    const auto put = [&] {
#pragma GCC unroll 4
        for (int c = 0; c < columns; ++c) x[j + c] = own[c];
    };
    const Operands<T, true> v{{x, 1}, {before - j, 1}, {x, 1}, {own - j, 1}, false};
    if constexpr (form.op == Op::none) put();
    strip<pass_of<form.op>, columns>(OffDiagonal<form.half, Storage>{a}, j, window, factor<T>(one<T>), v);
    if constexpr (form.op != Op::none) put();
}

// The columns of a block in the rows of a window, which holds their own and others; x is element 0, unit stride.
template <Task task, Form form, class Storage, class T>
void block_in_place(const Storage& a, Rows block, Rows window, T* x)
{
    const auto have_square = [&](i64 j, int columns) {
        return j >= block.from && j + columns <= block.to && a.rows(j + columns - 1).from < a.rows(j).to;
    };
    const auto next = [&]<int columns>(i64 j) __attribute__((always_inline))
    {
        if constexpr (task == Task::solve) solve_strip<form, columns>(a, j, window, x);
        else multiply_strip<form, columns>(a, j, window, x);
    };
    if constexpr (ascending<task, form>) {
        for (i64 j = block.from; j < block.to;)
            if (have_square(j, 4)) next.template operator()<4>(j), j += 4;
            else if (have_square(j, 2)) next.template operator()<2>(j), j += 2;
            else next.template operator()<1>(j), j += 1;
    } else {
        for (i64 j = block.to; j > block.from;)
            if (have_square(j - 4, 4)) j -= 4, next.template operator()<4>(j);
            else if (have_square(j - 2, 2)) j -= 2, next.template operator()<2>(j);
            else j -= 1, next.template operator()<1>(j);
    }
}

// Cuts 0..n-1 in blocks, each of which ends a multiple of `size` before n: what is left over stands at the low end.
// For each, in the order of the task, triangle(block) and rectangle(block, next), the part beside it in the same
// columns; next is the block whose triangle follows.
template <Task task, Form form, class Triangle, class Rectangle>
void by_blocks(i64 n, i64 size, const Triangle& triangle, const Rectangle& rectangle)
{
    if (n <= 0) return;
    const auto step = [&](i64 to) {
        const Rows block{max(to - size, 0), to};
        if constexpr (square_first<task, form>) {
            triangle(block);
            const Rows up{max(block.from - size, 0), block.from}, down{to, min(to + size, n)};
            rectangle(block, ascending<task, form> ? down : up);
        } else {
            rectangle(block, block);
            triangle(block);
        }
    };
    if constexpr (ascending<task, form>)
        for (i64 to = (n - 1) % size + 1; to <= n; to += size) step(to);
    else
        for (i64 to = n; to > 0; to -= size) step(to);
}

// The stored rows outside of a block of columns.
template <Half half, class Storage> Rows beside(const Storage& a, Rows block)
{
    return half == Half::upper ? Rows{a.rows(block.from).from, block.from} : Rows{block.to, a.rows(block.to - 1).to};
}

// For strided x, a block's columns go along with two copies on the stack, 10 KiB together: of their own elements of x
// and of a window of rows.
constexpr i64 strided_block = 128;
template <class T> constexpr i64 window_rows = 8192 / sizeof(T);

// The rows of a block's columns, from the block outwards as far as a window reaches.
template <class T, Half half, class Storage> Rows near(const Storage& a, Rows block)
{
    const Rows rest = beside<half>(a, block);
    return half == Half::upper ? Rows{max(rest.from, block.to - window_rows<T>), block.to}
                               : Rows{block.from, min(rest.to, block.from + window_rows<T>)};
}

// With the rows beyond: x(rows) += alpha*A(rows, block)*x(block), or x(block) += alpha*op(A(rows, block))*x(rows).
template <Half half, Op op, class Storage, class T>
[[gnu::noinline]] void strided_rectangle(const Storage& a, Rows block, T alpha, T* x, i64 incx)
{
    const Rows all = beside<half>(a, block), done = near<T, half>(a, block);
    const Rows beyond = half == Half::upper ? Rows{all.from, done.from} : Rows{done.to, all.to};
    if (beyond.from >= beyond.to) return;
    Stretch<T, strided_block> own_copy;
    Stretch<T, window_rows<T>> copy;
    T* const own = own_copy.gather(block.to - block.from, x + block.from * incx, incx) - block.from;
    for (i64 i = beyond.from; i < beyond.to; i += window_rows<T>) {
        const Rows window{i, min(beyond.to, i + window_rows<T>)};
        T* const others = copy.gather(window.to - i, x + i * incx, incx) - i;
        const Operands<T, true> v{{others, 1}, {own, 1}, {others, 1}, {own, 1}, false};
        strips<pass_of<op>>(OffDiagonal<half, Storage>{a}, block, window, factor<T>(alpha), v);
        if constexpr (op == Op::none) copy.scatter(window.to - i, x + i * incx, incx);
    }
    if constexpr (op != Op::none) own_copy.scatter(block.to - block.from, x + block.from * incx, incx);
}

// The whole triangle; x is element 0, whatever the sign of incx.
template <Task task, Form form, class Storage, class T> void in_place(const Storage& a, i64 n, T* x, i64 incx)
{
    if (incx == 1) return block_in_place<task, form>(a, Rows{0, n}, Rows{0, n}, x);
    const auto triangle = [=](Rows block) {
        const Rows window = near<T, form.half>(a, block);
        const Rows changed = form.op == Op::none ? window : block;
        Stretch<T, window_rows<T>> copy;
        T* const own = copy.gather(window.to - window.from, x + window.from * incx, incx) - window.from;
        block_in_place<task, form>(a, block, window, own);
        for (i64 i = changed.from; i < changed.to; ++i) x[i * incx] = own[i];
    };
    const auto rectangle = [=](Rows block, Rows /* next */) {
        strided_rectangle<form.half, form.op>(a, block, task == Task::solve ? -one<T> : one<T>, x, incx);
    };
    by_blocks<task, form>(n, strided_block, triangle, rectangle);
}

// The same for a full triangle in blocks of `size` columns, all but the triangles themselves handed on:
// product(trans, m, n, a, lda, x, y, incx) is to add to y the product of a rectangle of m rows and n columns, or of its
// transpose, with x; to subtract it for a solve. x and y are given as to any routine, by their lowest address.
//
// The columns of a small triangle are too short for the processor to read ahead by itself. Of a large matrix it is
// asked for before the rectangle that it comes after.
template <Task task, Form form, class T, class Product>
void in_place_by_blocks(i64 n, i64 size, const T* a, i64 lda, T* x, i64 incx, const Product& product)
{
    using Triangle = FullTriangle<const T, form.half>;
    constexpr bool none = form.op == Op::none;
    constexpr char trans = none ? 'N' : form.op == Op::transpose ? 'T' : 'C';
    const bool far = is_far<T>(n, n);
    const auto part = [=](Rows r) { return x + (incx < 0 ? r.to - 1 : r.from) * incx; };
    const auto own = [=](Rows block) { return Triangle{a + block.from * (lda + 1), lda, block.to - block.from}; };
    const auto ask_for = [](const Triangle& t) {
        for (i64 j = 0; j < t.n; ++j)
            for (i64 i = t.rows(j).from; i < t.rows(j).to; i += cache_line / sizeof(T)) prefetch(t.column(j) + i);
    };
    const auto triangle = [=](Rows block) {
        in_place<task, form>(own(block), block.to - block.from, x + block.from * incx, incx);
    };
    const auto rectangle = [=](Rows block, Rows next) {
        if (far) ask_for(own(next));
        const Rows rest = beside<form.half>(Triangle{a, lda, n}, block);
        if (rest.from == rest.to) return;
        product(trans, rest.to - rest.from, block.to - block.from, a + rest.from + block.from * lda, lda,
                part(none ? block : rest), part(none ? rest : block), incx);
    };
    by_blocks<task, form>(n, size, triangle, rectangle);
}

} // namespace orv::blas
