// Solves with rows of blocks, in place: C := op(A)^-1*C, nd dense columns. op 1 A, 2 its transpose, 3 the conjugate of
// that; uplo 1 lower, else upper.
//
//   bsr_gauss     A by block rows, of which the entries beside the diagonal are taken on the proper side only
//   bsc_gauss     the same by block columns: col has the block rows of column j's blocks
//   bsr_invdiag   mb, flag, lb, val, col, pntrb, pntre: replaces the diagonal block of each block row by its inverse;
//                 nothing if mb or flag is 0. Rows of blocks without a diagonal block are left alone.
//
// The solves take diagonal blocks for inverses, as bsr_invdiag leaves them. A block that is missing counts for ones.
// Within a row, blocks are sorted by column. Inverses are found by elimination, each pivot the largest left in its
// column; a singular block becomes infinite or not a number.
#include "spblas/bsr.h"
#include "spblas/quotient.h"

namespace orv::ORV_SPBLAS {
namespace {

template <class T> ORV_INLINE T* on_stack(i64 n) // as long as the caller runs
{
    return static_cast<T*>(__builtin_alloca(static_cast<std::size_t>(n) * sizeof(T)));
}

template <class T>
[[gnu::noinline]] void gauss(bool by_columns, Int op, Int uplo, const Int* lb, const Int* mb, const Int* nd,
                             const T* val, const Int* col, const Int* pntrb, const Int* pntre, bool by_rows, T* c,
                             i64 ldc)
{
    const i64 order = *lb, columns = *nd;
    if (*mb < 1 || columns < 1) return;
    // Columns of A are rows of its transpose: what is below its diagonal is above that of the list.
    const bool lower = uplo == 1, transposes = op != 1, conjugates = op == 3;
    const Options o = options_of(1, 't', lower != by_columns ? 'l' : 'u', false, by_rows);
    const Bsr<T> a(o, order, val, col, pntrb, pntre);
    const bool downward = lower != transposes, gathers = transposes == by_columns;
    const auto as_used = [&](Int e) { return transposes ? a.block(e).transposed() : a.block(e); };
    const Plane<T> y = plane(by_rows, c, ldc).row(-o.base * order);
    const auto read = [](const Plane<T>& p) { return Plane<const T>{p.at, p.row_step, p.column_step}; };
    T* copy = on_stack<T>(order);
    for (Int step = 0; step < *mb; ++step) {
        const Int i = o.base + (downward ? step : *mb - 1 - step);
        const Cut cut = a.list.cut(o, i);
        const Plane<T> row = y.row(i * order);
        const Int from = cut.beside_from(o), to = cut.beside_to(o);
        if (gathers)
            for (Int e = from; e < to; ++e)
                add_block(order, columns, -one<T>, as_used(e), conjugates, read(y.row(a.list.col[e] * order)), row);
        if (cut.diagonal < cut.behind)
            for (i64 j = 0; j < columns; ++j) {
                const Plane<T> column = row.column(j);
                for (i64 r = 0; r < order; ++r) copy[r] = column.at[r * column.row_step], *column.row(r).at = zero<T>;
                add_block(order, 1, one<T>, as_used(cut.diagonal), conjugates, Plane<const T>{copy, 1, 1}, column);
            }
        if (!gathers)
            for (Int e = from; e < to; ++e)
                add_block(order, columns, -one<T>, as_used(e), conjugates, read(row), y.row(a.list.col[e] * order));
    }
}

template <bool by_columns, bool by_rows, class T>
void gauss_of(const Int* op, const Int* uplo, const Int* lb, const Int* mb, const Int* nd, const T* val, const Int* col,
              const Int* pntrb, const Int* pntre, T* c, const Int* ldc)
{
    gauss(by_columns, *op, *uplo, lb, mb, nd, val, col, pntrb, pntre, by_rows, c, *ldc);
}

template <class T> constexpr real_t<T> size_of(T a)
{
    if constexpr (is_complex<T>) return magnitude(a.re) + magnitude(a.im);
    else return magnitude(a);
}
template <class T> void swap_lines(i64 n, T* a, T* b, i64 step)
{
    for (i64 k = 0; k < n; ++k) {
        const T kept = a[k * step];
        a[k * step] = b[k * step], b[k * step] = kept;
    }
}

// Elimination in place: column k of what is left gives way to column k of the inverse. The inverse of the transpose is
// the transpose of the inverse, so it does not matter which way the block is stored.
template <class T> [[gnu::noinline]] void invert(i64 n, T* a, Int* pivot)
{
    const auto at = [=](i64 r, i64 s) -> T& { return a[r + s * n]; };
    for (i64 k = 0; k < n; ++k) {
        i64 largest = k;
        for (i64 r = k + 1; r < n; ++r)
            if (size_of(at(r, k)) > size_of(at(largest, k))) largest = r;
        pivot[k] = static_cast<Int>(largest);
        if (largest != k) swap_lines(n, &at(k, 0), &at(largest, 0), n);
        const T divisor = at(k, k);
        at(k, k) = one<T>;
        for (i64 s = 0; s < n; ++s) at(k, s) = divide(at(k, s), divisor);
        for (i64 r = 0; r < n; ++r) {
            if (r == k) continue;
            const T f = at(r, k);
            at(r, k) = zero<T>;
            for (i64 s = 0; s < n; ++s) at(r, s) -= f * at(k, s);
        }
    }
    for (i64 k = n - 1; k >= 0; --k)
        if (pivot[k] != k) swap_lines(n, &at(0, k), &at(0, pivot[k]), 1);
}

template <bool by_rows, class T>
void invert_diagonal(const Int* mb, const Int* flag, const Int* lb, T* val, const Int* col, const Int* pntrb,
                     const Int* pntre)
{
    if (*mb == 0 || *flag == 0) return;
    const i64 order = *lb;
    const Options o = options_of(1, 'd', '_', false, by_rows);
    const Bsr<T> a(o, order, val, col, pntrb, pntre);
    T* blocks = val - *pntrb * order * order;
    Int* pivot = on_stack<Int>(order);
    for (Int i = o.base; i < *mb + o.base; ++i) {
        const Cut cut = a.list.cut(o, i);
        if (cut.diagonal < cut.behind) invert(order, blocks + cut.diagonal * order * order, pivot);
    }
}

} // namespace

#define SPBLAS_BSR(t)                                                                                                  \
    SPBLAS_ROUTINE(11, t##bsr_gauss, gauss_of<false, false, type_##t>)                                                 \
    SPBLAS_ROUTINE(11, t##bsr_cspblas_gauss, gauss_of<false, true, type_##t>)                                          \
    SPBLAS_ROUTINE(11, t##bsc_gauss, gauss_of<true, false, type_##t>)                                                  \
    SPBLAS_ROUTINE(11, t##bsc_cspblas_gauss, gauss_of<true, true, type_##t>)                                           \
    SPBLAS_ROUTINE(7, t##bsr_invdiag, invert_diagonal<false, type_##t>)                                                \
    SPBLAS_ROUTINE(7, t##bsr_cspblas_invdiag, invert_diagonal<true, type_##t>)
SPBLAS_BSR(s)
SPBLAS_BSR(d)
SPBLAS_BSR(c)
SPBLAS_BSR(z)

} // namespace orv::ORV_SPBLAS
