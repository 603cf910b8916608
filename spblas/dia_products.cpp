// y := y + alpha*op(A)*x and Y := Y + alpha*op(A)*X, A m by k by diagonals: mv, mm. Whoever calls has scaled y.
//
//   mv   all of A; first and last are not read
//   mm   columns first to last of X and Y, counted from 1
//
// Tiles of 20000 rows by 5000 columns keep what they touch of x and y in the caches: rows of tiles from the first, in
// them tiles from the first, in each the diagonals in their order that cross it. The last tiles take what is left. Of a
// triangle only diagonals on its side are read. Ones in place of the main diagonal are the caller's to add.
#include "spblas/dia.h"

namespace orv::ORV_SPBLAS {
namespace {

constexpr i64 tile_rows = 20000, tile_columns = 5000;

// The pieces that a length is cut into: of `size`, the last longer by what is left.
struct Pieces {
    i64 length, size, count;
    Pieces(i64 n, i64 largest) : length(n), size(min(n, largest)), count(n / size) {}
    i64 begin(i64 piece) const { return piece * size; }
    i64 end(i64 piece) const { return piece + 1 == count ? length : (piece + 1) * size; }
};

// act(diagonal, row, rows, distance) for every stretch of a diagonal that counts.
template <class T, class Act>
ORV_INLINE void each_stretch(const Options& o, i64 m, i64 k, const Dia<T>& a, const Act& act)
{
    const Pieces rows(m, tile_rows), columns(k, tile_columns);
    for (i64 p = 0; p < rows.count; ++p)
        for (i64 q = 0; q < columns.count; ++q)
            for (Int diagonal = 0; diagonal < a.count; ++diagonal) {
                const i64 d = a.distance[diagonal];
                if (!(d == 0 ? o.diagonal : d < 0 ? o.lower : o.upper)) continue;
                const i64 begin = max(rows.begin(p), columns.begin(q) - d);
                const i64 end = min(rows.end(p), columns.end(q) - d);
                if (begin < end) act(diagonal, begin, end - begin, d);
            }
}

// Columns of x and y, one after the other within each stretch.
template <class T>
[[gnu::noinline]] void multiply(const Options& o, i64 m, i64 k, T alpha, const Dia<T>& a, i64 columns, const T* x,
                                i64 ldx, T* y, i64 ldy)
{
    if (m < 1 || k < 1) return;
    const T direct = negate_if(o.negate_direct, alpha), mirrored = negate_if(o.negate_mirrored, alpha);
    each_stretch(o, m, k, a, [&](Int diagonal, i64 row, i64 rows, i64 d) {
        const T* entries = a.at(row, diagonal);
        for (i64 c = 0; c < columns; ++c) {
            const T* from = x + c * ldx + row;
            T* to = y + c * ldy + row;
            if (d == 0) {
                add_products(rows, alpha, o.conjugate_diagonal(), entries, from, to);
                continue;
            }
            if (o.direct) add_products(rows, direct, o.conjugate_direct, entries, from + d, to);
            if (o.mirrored) add_products(rows, mirrored, o.conjugate_mirrored, entries, from, to + d);
        }
    });
}

template <class T>
ORV_INLINE void dia_mv_par_body(const Options& o, const Int*, const Int*, const Int* m, const Int* k, const T* alpha,
                                const T* val, const Int* lval, const Int* idiag, const Int* ndiag, const T* x, T* y)
{
    multiply(o, *m, *k, *alpha, Dia<T>{val, *lval, idiag, *ndiag}, 1, x, 0, y, 0);
}

template <class T>
ORV_INLINE void dia_mm_par_body(const Options& o, const Int* first, const Int* last, const Int* m, const Int*,
                                const Int* k, const T* alpha, const T* val, const Int* lval, const Int* idiag,
                                const Int* ndiag, const T* x, const Int* ldx, T* y, const Int* ldy)
{
    const i64 from = *first - 1, x_ld = *ldx, y_ld = *ldy;
    multiply(o, *m, *k, *alpha, Dia<T>{val, *lval, idiag, *ndiag}, *last - from, x + from * x_ld, x_ld, y + from * y_ld,
             y_ld);
}

} // namespace

ORV_SPBLAS_dia_mv_par(SPBLAS_MEMBER) ORV_SPBLAS_dia_mm_par(SPBLAS_MEMBER)

} // namespace orv::ORV_SPBLAS
