// y := y + alpha*op(A)*x and Y := Y + alpha*op(A)*X, A in coordinates: mv, mm. Whoever calls has scaled y.
//
//   mv of a general matrix    entries 1 to nnz; first and last are not read
//   all others                entries first to last, in their order; duplicates add up
//   d with ones               y[i] += alpha*x[i]; A is not read. mv: all m rows; mm: rows first to last
//
// Parts may add to the same element, so each needs a y of its own. Entries of the other triangle and on an ignored
// diagonal are skipped; ones in place of a triangle's diagonal are the caller's to add, once for all parts.
#include "spblas/coo.h"

namespace orv::ORV_SPBLAS {
namespace {

// act(f, i, j) for what entries e to end - 1 do: y[i] += f*x[j].
template <class T, class Act>
ORV_INLINE void each_term(const Options& o, i64 e, i64 end, const Coo<T>& a, T alpha, const Act& act)
{
    const T direct = negate_if(o.negate_direct, alpha), mirrored = negate_if(o.negate_mirrored, alpha);
    const bool general = o.lower && o.upper;
    for (; e < end; ++e) {
        const Int i = a.row[e], j = a.col[e];
        if (i == j ? o.diagonal : i > j ? o.lower : o.upper) {
            act((i == j ? alpha : direct) * conjugate_if(o.conjugate_direct, a.val[e]), i, j);
            if (!general && o.mirrored && i != j) act(mirrored * conjugate_if(o.conjugate_mirrored, a.val[e]), j, i);
        }
    }
}

// One vector.
template <class T>
[[gnu::noinline]] void multiply(const Options& o, i64 e, i64 end, const Coo<T>& a, T alpha, const T* x, T* y)
{
    if (o.lower && o.upper) { // nothing is to be left out
        const auto add = [&](i64 k) ORV_INLINE_LAMBDA {
            y[a.row[k]] += alpha * conjugate_if(o.conjugate_direct, a.val[k]) * x[a.col[k]];
        };
        for (; e + 2 <= end; e += 2) add(e), add(e + 1);
        if (e < end) add(e);
        return;
    }
    each_term(o, e, end, a, alpha, [=](T f, Int i, Int j) ORV_INLINE_LAMBDA { y[i] += f * x[j]; });
}

template <class T>
ORV_INLINE void coo_mv_par_body(const Options& o, const Int* first, const Int* last, const Int*, const Int*,
                                const T* alpha, const T* val, const Int* rowind, const Int* colind, const Int* nnz,
                                const T* x, T* y)
{
    const bool general = o.lower && o.upper;
    multiply(o, general ? 0 : *first - 1, general ? *nnz : *last, Coo<T>{val, rowind, colind}, *alpha, x - o.base,
             y - o.base);
}

template <class T>
ORV_INLINE void coo_mv_seq_body(const Options& o, const Int* m, const Int* k, const T* alpha, const T* val,
                                const Int* rowind, const Int* colind, const Int* nnz, const T* x, T* y)
{
    if (o.unit) add_multiple(min(*m, *k), *alpha, x, y);
    else multiply(o, 0, *nnz, Coo<T>{val, rowind, colind}, *alpha, x - o.base, y - o.base);
}

template <class T>
[[gnu::noinline]] void coo_mm_par_body(const Options& o, const Int* first, const Int* last, const Int* m, const Int* nd,
                                       const T* alpha, const T* val, const Int* rowind, const Int* colind, const Int*,
                                       const T* x, const Int* ldx, T* y, const Int* ldy)
{
    const i64 x_ld = *ldx, y_ld = *ldy, columns = *nd;
    const i64 e = *first - 1, end = *last;
    const Coo<T> a{val, rowind, colind};
    if (o.diagonal_only() && o.unit) {
        const i64 rows = min(end, *m) - e, lines = o.by_rows ? rows : columns;
        for (i64 line = 0; line < lines; ++line) {
            const i64 at = o.by_rows ? e + line : line, within = o.by_rows ? 0 : e;
            add_multiple(o.by_rows ? columns : rows, *alpha, x + at * x_ld + within, y + at * y_ld + within);
        }
    } else if (o.by_rows) {
        const T* x_rows = x - o.base * x_ld;
        T* y_rows = y - o.base * y_ld;
        each_term(o, e, end, a, *alpha,
                  [=](T f, Int i, Int j) { add_multiple(columns, f, x_rows + j * x_ld, y_rows + i * y_ld); });
    } else {
        for (i64 c = 0; c < columns; ++c) multiply(o, e, end, a, *alpha, x + c * x_ld - o.base, y + c * y_ld - o.base);
    }
}

} // namespace

ORV_SPBLAS_coo_mv_par(SPBLAS_MEMBER) ORV_SPBLAS_coo_mv_seq(SPBLAS_MEMBER) ORV_SPBLAS_coo_mm_par(SPBLAS_MEMBER)

} // namespace orv::ORV_SPBLAS
