#include "blas/rank_update.h"

#include "blas/ladder.h"
#include "frame/products.h"

#include <type_traits>

namespace orv::blas {
namespace {

// A factor made ready to multiply pieces of a vector. For complex numbers
// (f.re, f.im)*(x.re, x.re) + (-f.im, f.re)*(x.im, x.im), which rounds exactly as the plain formula.
template <class T> struct Term {
    vec<T> f;
    explicit Term(vec<T> f) : f(f) {}
    template <class Piece> ORV_INLINE vec<T> times(const T* x, int r) const { return f * Piece::load(x, r); }
};
template <class R> struct Term<cpx<R>> {
    using T = cpx<R>;
    vec<T> f, crossed;
    explicit Term(vec<T> f) : f(f), crossed(times_i(f)) {}
    template <class Piece> ORV_INLINE vec<T> times(const T* x, int r) const
    {
        if constexpr (Piece::rows < Piece::lanes) {
            const vec<T> v = Piece::load(x, r);
            return lane_product(f, real_parts(v)) + lane_product(crossed, imaginary_parts(v));
        } else {
            const T* const at = x + r * Piece::lanes;
            return lane_product(f, load_re_twice(at)) + lane_product(crossed, load_im_twice(at));
        }
    }
};

// c(from:to) += f.of[0]*x[0](from:to) + ..., a few rows.
template <int terms, class T>
ORV_INLINE void add_singly(Rows rows, const Factors<T, terms>& f, const T* const (&x)[terms], T* c)
{
    for (i64 i = rows.from; i < rows.to; ++i)
#pragma GCC unroll 2
        for (int t = 0; t < terms; ++t) c[i] = c[i] + first_lane(f.of[t]) * x[t][i];
}

// next(piece, m) for whole blocks of m rows, then for each binary digit of what is left, m being what is left each
// time.
template <int rows, class T, class Next> ORV_INLINE void by_digits(i64 m, const Next& next)
{
    if (m & rows) next(Piece<T, rows>(), m);
    if constexpr (rows > 1) by_digits<rows / 2, T>(m, next);
}
template <int block, class T, class Next> ORV_INLINE void in_pieces(i64 m, const Next& next)
{
    for (; m >= block; m -= block) next(Piece<T, block>(), m);
    by_digits<block / 2, T>(m, next);
}

// m > 0 rows of one column c of A, or of two that stand `distance` apart: c(0:m) += f0*x(0:m), then += g0*y(0:m) if
// there are two terms; the second column with f1 and g1. Unit strides; x and y reach a boundary together if T is read
// there only. What is updated next starts `skip` elements behind the rows.
template <bool far, int columns, int terms, class T>
ORV_INLINE void add_terms(i64 m, const T* x, const T* y, T* c, i64 distance, i64 skip, vec<T> f0, vec<T> g0, vec<T> f1,
                          vec<T> g1)
{
    constexpr i64 block = 4 * vec<T>::lanes, ahead = 2048 / sizeof(T); // a cache line, and half a page
    static_assert(columns <= 2 && terms <= 2);
    const Term<T> f[2] = {Term<T>(f0), Term<T>(f1)}, g[2] = {Term<T>(g0), Term<T>(g1)};
    T* column[2] = {c, c + (columns - 1) * distance};
    const auto add = [&]<bool aligned, class Piece>(std::bool_constant<aligned>, Piece) ORV_INLINE_LAMBDA {
        constexpr bool whole = aligned && Piece::rows >= Piece::lanes;
#pragma GCC unroll 4
        for (int r = 0; r < Piece::registers; ++r)
#pragma GCC unroll 2
            for (int k = 0; k < columns; ++k) {
                vec<T> sum = f[k].template times<Piece>(x, r);
                if constexpr (whole) sum = load(column[k] + r * Piece::lanes) + sum;
                else sum = Piece::load(column[k], r) + sum;
                if constexpr (terms == 2) sum += g[k].template times<Piece>(y, r);
                if constexpr (whole) store(column[k] + r * Piece::lanes, sum);
                else Piece::store(column[k], r, sum);
            }
        x += Piece::rows, y += Piece::rows, column[0] += Piece::rows, column[1] += Piece::rows;
    };
    const auto run = [&](auto aligned) ORV_INLINE_LAMBDA {
        in_pieces<block, T>(m, [&]<class Piece>(Piece piece, i64 left) ORV_INLINE_LAMBDA {
            if constexpr (far && Piece::rows == block)
#pragma GCC unroll 2
                for (int k = 0; k < columns; ++k) prefetch(column[k] + ahead + (ahead < left ? 0 : skip));
            add(aligned, piece);
        });
    };
    const auto single = [&]() ORV_INLINE_LAMBDA { add(std::false_type(), Piece<T, 1>()), --m; };
    if constexpr (vec<T>::lanes == 2) { // one element leads to a boundary
        if (!is_aligned(is_complex<T> ? x : c, vector_bytes)) single();
    } else if constexpr (vec<T>::lanes == 4 && far) { // three do, which short columns don't repay
        for (i64 peel = min(m, to_boundary(c)); peel > 0; --peel) single();
    }
    if (is_aligned(column[0], vector_bytes) && is_aligned(column[1], vector_bytes)) run(std::true_type());
    else run(std::false_type());
}

// The same, far. All storages share it: beside the way from memory a call costs nothing.
template <int columns, int terms, class T>
[[gnu::noinline]] void add_far_terms(i64 m, const T* x, const T* y, T* c, i64 distance, i64 skip, vec<T> f0, vec<T> g0,
                                     vec<T> f1, vec<T> g1)
{
    add_terms<true, columns, terms>(m, x, y, c, distance, skip, f0, g0, f1, g1);
}

// Column j of a far matrix; x[t][i] belongs to row i.
template <int terms, class T>
ORV_INLINE void update_column(const Storage<T>& a, i64 j, const RankUpdate<T, terms>& update,
                              const T* const (&x)[terms])
{
    const Rows rows = a.rows(j);
    const Factors<T, terms> f = update.factors(j);
    if (rows.from >= rows.to || f.all_zero()) return;
    T* const c = a.column(j) + rows.from;
    const T *const first = x[0] + rows.from, *const last = x[terms - 1] + rows.from;
    const vec<T> f0 = f.of[0], g0 = f.of[terms - 1];
    const i64 m = rows.to - rows.from;
    add_far_terms<1, terms>(m, first, last, c, 0, a.column(j + 1) + a.rows(j + 1).from - (c + m), f0, g0, f0, g0);
}

// Columns j and j + 1: the rows that both have go together, so that two streams come from memory at a time. In a
// triangle one of them has a row more. False if nothing was done: there is no common row, or a column without a factor.
template <int terms, class T>
bool update_pair(const Storage<T>& a, i64 j, const RankUpdate<T, terms>& update, const T* const (&x)[terms])
{
    const Rows own[2] = {a.rows(j), a.rows(j + 1)};
    const Rows common = {max(own[0].from, own[1].from), min(own[0].to, own[1].to)};
    const Factors<T, terms> f[2] = {update.factors(j), update.factors(j + 1)};
    if (common.from >= common.to || f[0].all_zero() || f[1].all_zero()) return false;
    T* const column[2] = {a.column(j), a.column(j + 1)};
    const T* const next = a.column(j + 2) + a.rows(j + 2).from;
    add_far_terms<2, terms>(common.to - common.from, x[0] + common.from, x[terms - 1] + common.from,
                            column[0] + common.from, column[1] - column[0], next - (column[0] + common.to), f[0].of[0],
                            f[0].of[terms - 1], f[1].of[0], f[1].of[terms - 1]);
    for (int k = 0; k < 2; ++k) {
        add_singly({own[k].from, common.from}, f[k], x, column[k]);
        add_singly({common.to, own[k].to}, f[k], x, column[k]);
    }
    return true;
}

template <class T> ORV_INLINE void make_real(Diagonal diagonal, T* e)
{
    if constexpr (is_complex<T>)
        if (diagonal == Diagonal::real) e->im = 0;
}

// The columns; x[t][i] belongs to row i. What the loops walk by is copied: stores to A cannot change it.
template <int terms, class T>
[[gnu::noinline]] void update_far(const Storage<T>& a, Columns columns, const RankUpdate<T, terms>& update,
                                  const T* const (&x)[terms], Diagonal diagonal, bool pairs)
{
    for (i64 j = columns.from; j < columns.to;) {
        const bool pair = pairs && j + 1 < columns.to && update_pair(a, j, update, x);
        if (!pair) update_column(a, j, update, x);
        for (const i64 end = j + (pair ? 2 : 1); j < end; ++j) make_real(diagonal, a.column(j) + j);
    }
}
// to(0:n) := x(i:i+n). Whole registers are stored, so that loads find them on their way to the cache.
template <class T> ORV_INLINE void gather_rows(i64 n, const StridedVector<T>& x, i64 i, T* to)
{
    constexpr i64 lanes = vec<T>::lanes;
    i64 r = 0;
#pragma GCC unroll 4
    for (; r + lanes <= n; r += lanes) store(to + r, gather(&x[i + r], x.inc));
    for (; r < n; ++r) to[r] = x[i + r];
}

// Other vectors are gathered once for all columns, in chunks that fit on a small stack.
template <int terms, class T>
[[gnu::noinline]] void update_gathered(const Storage<T>& a, Columns columns, Rows rows,
                                       const RankUpdate<T, terms>& update, Diagonal diagonal, bool far, bool far_pairs)
{
    constexpr i64 chunk = 16384 / sizeof(T) / terms;
    alignas(vector_bytes) T gathered[terms][chunk];
    const T* x[terms];
    for (i64 i = rows.from; i < rows.to; i += chunk) {
        const i64 count = min(chunk, rows.to - i);
        for (int t = 0; t < terms; ++t) {
            gather_rows(count, update.vectors[t], i, gathered[t]);
            x[t] = gathered[t] - i;
        }
        // Of every column only the rows in a chunk.
        Storage<T> part = a;
        part.all = {i, i + count};
        const bool whole = count == rows.to - rows.from;
        if (!whole) update_far(part, columns, update, x, diagonal, true);
        else if (far) update_far(a, columns, update, x, diagonal, far_pairs);
        else update_near(Flight<T>(a, columns.from), columns.to, update, x[0], x[terms - 1], diagonal);
    }
}

} // namespace

template <int terms, class T>
void update_near(const Flight<T>& a, i64 to, const RankUpdate<T, terms>& given, const T* x, const T* y,
                 Diagonal diagonal)
{
    const RankUpdate<T, terms> update = given;
    const i64 down = a.down, longer = a.longer, bend = a.bend;
    i64 m = a.rows, step = a.step;
    T* c = a.c;
    x += a.row, y += a.row;
    for (i64 j = a.from; j < to; ++j) {
        const Factors<T, terms> f = update.factors(j);
        const vec<T> f0 = f.of[0], g0 = f.of[terms - 1];
        if (!f.all_zero()) add_terms<false, 1, terms>(m, x, y, c, 0, 0, f0, g0, f0, g0);
        c += step, step += bend, m += longer, x += down, y += down;
    }
    if (is_complex<T> && diagonal == Diagonal::real) {
        T* own = a.c + (down ? 0 : a.from);
        step = a.step + 1 - down;
        for (i64 j = a.from; j < to; ++j, own += step, step += bend) make_real(diagonal, own);
    }
}

template <int terms, class T>
void update_any(const Storage<T>& a, Columns columns, const RankUpdate<T, terms>& update, Diagonal diagonal,
                bool far_pairs)
{
    const Rows rows = {a.rows(columns.from).from, a.rows(columns.to - 1).to};
    const bool far = is_far<T>(rows.to - rows.from, columns.to - columns.from);
    if (!in_place(update.vectors)) return update_gathered(a, columns, rows, update, diagonal, far, far_pairs);
    const T* x[terms];
    for (int t = 0; t < terms; ++t) x[t] = update.vectors[t].at;
    update_far(a, columns, update, x, diagonal, far_pairs);
}

#define UPDATES(terms, T)                                                                                              \
    template void update_near(const Flight<T>&, i64, const RankUpdate<T, terms>&, const T*, const T*, Diagonal);       \
    template void update_any(const Storage<T>&, Columns, const RankUpdate<T, terms>&, Diagonal, bool);
#define ONE_AND_TWO(T) UPDATES(1, T) UPDATES(2, T)

ONE_AND_TWO(float)
ONE_AND_TWO(double)
ONE_AND_TWO(cpx<float>)
ONE_AND_TWO(cpx<double>)

} // namespace orv::blas
