// Products with rows of blocks.
//
//   gemv   y := alpha*A*x + beta*y, block rows first to last, which scale and write their own elements only
//   mv     the same for a symmetric A of which a triangle is stored: scales all of y and adds to any element, so that a
//          part needs a y of its own
//   bsrmm  C := C + alpha*op(A)*B, dense operands of nd columns: general (gen), symmetric (sym), triangular (tr),
//          anti-symmetric (skew), only the diagonal (diag)
//   bsrbv  y[frow ..] += block*x[fcol ..], elements counted from 0
//
// Blocks on the diagonal are used whole, and mirrored ones are not; of a unit diagonal they are not read, and ones
// stand in their place; an anti-symmetric matrix has none. beta = 0 does not read y.
//
// Blocks of order 2 have loops of their own, of doubles with narrow indices in spblas/bsr_pairs.h.
#include "spblas/bsr.h"
#include "spblas/bsr_pairs.h"

namespace orv::ORV_SPBLAS {
namespace {

// Block rows i to end - 1, numbered as block columns are; so are x and y.
template <class T>
[[gnu::noinline]] void add_products(const Options& o, Int i, Int end, const Bsr<T>& a, i64 nd, T alpha,
                                    const Plane<const T>& x, const Plane<T>& y)
{
    const T direct = negate_if(o.negate_direct, alpha), mirrored = negate_if(o.negate_mirrored, alpha);
    const i64 lb = a.lb;
    for (; i < end; ++i) {
        const auto x_row = x.row(i * lb);
        const auto y_row = y.row(i * lb);
        Int from = a.list.begin[i], to = a.list.end[i];
        if (!(o.lower && o.upper)) {
            const Cut cut = a.list.cut(o, i);
            from = cut.beside_from(o), to = o.diagonal_only() ? from : cut.beside_to(o);
            if (o.diagonal)
                for (Int e = cut.diagonal; e < cut.behind; ++e)
                    add_block(lb, nd, alpha, o.direct ? a.block(e) : a.block(e).transposed(), o.conjugate_diagonal(),
                              x_row, y_row);
            if (o.unit)
                for (i64 r = 0; r < lb; ++r)
                    for (i64 c = 0; c < nd; ++c) *y_row.row(r).column(c).at += alpha * *x_row.row(r).column(c).at;
        }
        for (Int e = from; e < to; ++e) {
            const i64 j = a.list.col[e] * lb;
            if (o.direct) add_block(lb, nd, direct, a.block(e), o.conjugate_direct, x.row(j), y_row);
            if (o.mirrored) add_block(lb, nd, mirrored, a.block(e).transposed(), o.conjugate_mirrored, x_row, y.row(j));
        }
    }
}

// Blocks of order 2 and one vector: the two sums of a row stay in registers.
template <class T>
[[gnu::noinline]] void add_pairs(const Options& o, Int i, Int end, const Bsr<T>& a, T alpha, const T* x, T* y)
{
    const int upper_right = o.by_rows ? 1 : 2, lower_left = 3 - upper_right;
    for (; i < end; ++i) {
        T sum[2]{};
        for (Int e = a.list.begin[i]; e < a.list.end[i]; ++e) {
            const T *block = a.blocks + 4 * i64{e}, *from = x + 2 * i64{a.list.col[e]};
            sum[0] += block[0] * from[0] + block[upper_right] * from[1];
            sum[1] += block[lower_left] * from[0] + block[3] * from[1];
        }
        y[2 * i] += alpha * sum[0], y[2 * i + 1] += alpha * sum[1];
    }
}

template <class T>
[[gnu::noinline]] void multiply_vector(const Options& o, Part rows, i64 mb, i64 lb, T alpha, const T* val,
                                       const Int* col, const Int* pntrb, const Int* pntre, const T* x, T* y, T beta)
{
    const bool own = !o.mirrored;
    if (!own) scale(y, mb * lb, beta);
    if (rows.i >= rows.end) return;
    if (own) scale(y + rows.i * lb, (rows.end - rows.i) * lb, beta);
    const Bsr<T> a(o, lb, val, col, pntrb, pntre);
    const Int i = rows.i + o.base, end = rows.end + o.base;
    if (lb == 2 && own) return add_pairs(o, i, end, a, alpha, x - o.base * lb, y - o.base * lb);
    add_products(o, i, end, a, 1, alpha, Plane<const T>{x - o.base * lb, 1, 1}, Plane<T>{y - o.base * lb, 1, 1});
}

template <class T>
ORV_INLINE void bsr_mv_par_body(const Options& o, const Int* first, const Int* last, const Int* mb, const Int*,
                                const Int* lb, const T* alpha, const T* val, const Int* col, const Int* pntrb,
                                const Int* pntre, const T* x, T* y, const T* beta)
{
    multiply_vector(o, Part(first, last), *mb, *lb, *alpha, val, col, pntrb, pntre, x, y, *beta);
}
template <class T>
ORV_INLINE void bsr_gemv_par_body(const Options& o, const Int* first, const Int* last, const Int* mb, const Int* kb,
                                  const Int* lb, const T* alpha, const T* val, const Int* col, const Int* pntrb,
                                  const Int* pntre, const T* x, T* y, const T* beta)
{
    if constexpr (has_pairs<T>)
        if (*lb == 2 && !o.by_rows)
            return pairs_gemv(first, last, mb, kb, lb, alpha, val, col, pntrb, pntre, x, y, beta);
    bsr_mv_par_body(o, first, last, mb, kb, lb, alpha, val, col, pntrb, pntre, x, y, beta);
}

template <class T>
[[gnu::noinline]] void multiply_dense(const Options& o, const Int* mb, const Int* nd, const Int* lb, const T* alpha,
                                      const T* val, const Int* col, const Int* pntrb, const Int* pntre, const T* b,
                                      const Int* ldb, T* c, const Int* ldc)
{
    if (*mb < 1 || *nd < 1) return;
    const auto x = plane(o.by_rows, b, *ldb);
    const auto y = plane(o.by_rows, c, *ldc);
    const i64 moved = -i64{o.base} * *lb;
    add_products(o, Int{o.base}, *mb + o.base, Bsr<T>(o, *lb, val, col, pntrb, pntre), *nd, *alpha, x.row(moved),
                 y.row(moved));
}

template <bool by_rows, class T, class... Rest>
void general(const Int* op, const Int* mb, const Int* nd, const Int* lb, const T* alpha, const T* val, const Int* col,
             const Int* pntrb, const Int* pntre, const T* b, const Int* ldb, T* c, const Int* ldc)
{
    if constexpr (has_pairs<T> && !by_rows)
        if (*lb == 2 && *op == 1) {
            static constexpr Int first = 1;
            return pairs_mm(&first, mb, mb, nd, lb, alpha, val, col, pntrb, pntre, b, ldb, c, ldc, &one<T>);
        }
    multiply_dense(options_of(*op, 'g', '_', false, by_rows), mb, nd, lb, alpha, val, col, pntrb, pntre, b, ldb, c,
                   ldc);
}
template <bool by_rows, class T, class... Rest>
void symmetric(const Int* uplo, const Int* nonunit, const Int* mb, const Int* nd, const Int* lb, const T* alpha,
               Rest... rest)
{
    multiply_dense(options_of(1, 's', triangle_of(*uplo), *nonunit == 0, by_rows), mb, nd, lb, alpha, rest...);
}
template <bool by_rows, class T, class... Rest>
void triangular(const Int* op, const Int* uplo, const Int* nonunit, const Int* mb, const Int* nd, const Int* lb,
                const T* alpha, Rest... rest)
{
    multiply_dense(options_of(*op, 't', triangle_of(*uplo), *nonunit == 0, by_rows), mb, nd, lb, alpha, rest...);
}
template <bool by_rows, class T, class... Rest>
void anti_symmetric(const Int* op, const Int* uplo, const Int* mb, const Int* nd, const Int* lb, const T* alpha,
                    Rest... rest)
{
    multiply_dense(options_of(*op, 'a', triangle_of(*uplo), false, by_rows), mb, nd, lb, alpha, rest...);
}
template <bool by_rows, class T, class... Rest>
void diagonal(const Int* op, const Int* nonunit, const Int* mb, const Int* nd, const Int* lb, const T* alpha,
              Rest... rest)
{
    multiply_dense(options_of(*op, 'd', '_', *nonunit == 0, by_rows), mb, nd, lb, alpha, rest...);
}
template <bool by_rows, class T>
void block_times_vector(const Int* lb, const Int* frow, const Int* fcol, const T* block, const T* x, T* y)
{
    add_block(*lb, 1, one<T>, plane(by_rows, block, *lb), false, Plane<const T>{x + *fcol, 1, 1},
              Plane<T>{y + *frow, 1, 1});
}

} // namespace

ORV_SPBLAS_bsr_mv_par(SPBLAS_MEMBER) ORV_SPBLAS_bsr_gemv_par(SPBLAS_MEMBER)

#define SPBLAS_BSR(t)                                                                                                  \
    SPBLAS_BSR_OF(, t, false)                                                                                          \
    SPBLAS_BSR_OF(cspblas_, t, true)
#define SPBLAS_BSR_OF(before, t, by_rows)                                                                              \
    SPBLAS_ROUTINE(13, before##t##bsrmmgen, general<by_rows, type_##t>)                                                \
    SPBLAS_ROUTINE(14, before##t##bsrmmsym, symmetric<by_rows, type_##t>)                                              \
    SPBLAS_ROUTINE(15, before##t##bsrmmtr, triangular<by_rows, type_##t>)                                              \
    SPBLAS_ROUTINE(14, before##t##bsrmmskew, anti_symmetric<by_rows, type_##t>)                                        \
    SPBLAS_ROUTINE(14, before##t##bsrmmdiag, diagonal<by_rows, type_##t>)                                              \
    SPBLAS_ROUTINE(6, before##t##bsrbv, block_times_vector<by_rows, type_##t>)
    SPBLAS_BSR(s) SPBLAS_BSR(d) SPBLAS_BSR(c) SPBLAS_BSR(z)

} // namespace orv::ORV_SPBLAS
