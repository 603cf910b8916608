// y := op(A)^-1*y in place, A by diagonals in ascending order of their distances: triangular without alpha, diagonal as
// (alpha/a)*y. sv one vector; sm columns of a dense matrix, first to last counted from 1, or all nd (diagonal).
//
// dlast is how many diagonals are on the triangle's side, the first ones of a lower triangle and the last ones of an
// upper one; d2 is the position of the main diagonal, from 1, not looked at if ones stand in its place. Both come from
//
//   find_diag_par_<triangle><diagonal>(array, n, d0, dlast, d1, d2, flag)
//
// which also sets d0 := d1 := 1, and flag := 0, or -1 if the main diagonal is missing and needed. Where it would be, d2
// says: in a list of nothing but negative distances at n + 1, of nothing but positive ones at 0 if the triangle is
// upper.
//
// A row depends on none that is nearer than the diagonal nearest to the main one. So as many rows make a block whose
// elements are computed side by side, and only blocks follow each other.
#include "spblas/dia.h"
#include "spblas/quotient.h"

namespace orv::ORV_SPBLAS {
namespace {

template <bool lower, bool unit>
void find_diagonal(const Int* array, const Int* n, Int* d0, Int* dlast, Int* d1, Int* d2, Int* flag)
{
    Int beside = 0;
    while (beside < *n && (lower ? array[beside] < 0 : array[*n - 1 - beside] > 0)) ++beside;
    const Int main = lower ? beside + 1 : *n - beside;
    *d0 = *d1 = 1;
    *dlast = beside, *d2 = main;
    const bool missing = beside == *n || array[main - 1] != 0;
    *flag = missing && !unit ? -1 : 0;
}

// y[i] := y[i] / a[i]
template <class T> void divide_rows(i64 n, bool conjugates, const T* a, T* y)
{
    for (i64 i = 0; i < n; ++i) y[i] = divide(y[i], conjugate_if(conjugates, a[i]));
}

template <class T> [[gnu::noinline]] void solve(const Options& o, i64 m, const Dia<T>& a, T* y, Int beside, Int main)
{
    const Int from = o.lower ? 0 : a.count - beside, to = from + beside;
    const i64 nearest = beside == 0 ? 0 : o.lower ? -i64{a.distance[to - 1]} : i64{a.distance[from]};
    const i64 block = nearest == 0 ? m : min(nearest, m);
    const bool downward = o.lower != o.mirrored, conjugates = o.conjugate_diagonal();
    const i64 blocks = (m + block - 1) / block;
    for (i64 step = 0; step < blocks; ++step) {
        const i64 begin = (downward ? step : blocks - 1 - step) * block, end = min(begin + block, m);
        const auto close = [&] {
            if (!o.unit) divide_rows(end - begin, conjugates, a.at(begin, main - 1), y + begin);
        };
        if (o.mirrored) close();
        for (Int k = from; k < to; ++k) {
            const i64 d = a.distance[k], row = max(begin, -d), rows = min(end, m - d) - row;
            const T* entries = a.at(row, k);
            if (o.mirrored) add_products(rows, -one<T>, conjugates, entries, y + row, y + row + d);
            else add_products(rows, -one<T>, conjugates, entries, y + row + d, y + row);
        }
        if (!o.mirrored) close();
    }
}

template <class T>
[[gnu::noinline]] void solve_diagonal(const Options& o, i64 m, T alpha, const Dia<T>& a, i64 columns, T* y, i64 ldy)
{
    Int main = 0;
    while (main < a.count && a.distance[main] != 0) ++main;
    if (main == a.count) return;
    const T* entries = a.at(0, main);
    for (i64 c = 0; c < columns; ++c, y += ldy)
        for (i64 i = 0; i < m; ++i) y[i] = divide(alpha, conjugate_if(o.conjugate_diagonal(), entries[i])) * y[i];
}

template <class T>
ORV_INLINE void dia_sv_seq_body(const Options& o, const Int* m, const T*, const T* val, const Int* lval,
                                const Int* idiag, const Int* ndiag, T* y, const Int* dlast, const Int* d2)
{
    if (*m > 0) solve(o, *m, Dia<T>{val, *lval, idiag, *ndiag}, y, *dlast, *d2);
}
template <class T>
ORV_INLINE void dia_sm_par_body(const Options& o, const Int* first, const Int* last, const Int* m, const Int*, const T*,
                                const T* val, const Int* lval, const Int* idiag, const Int* ndiag, T* y, const Int* ldy,
                                const Int* dlast, const Int* d2)
{
    if (*m < 1) return;
    const i64 ld = *ldy;
    for (auto [c, end] = Part(first, last); c < end; ++c)
        solve(o, *m, Dia<T>{val, *lval, idiag, *ndiag}, y + c * ld, *dlast, *d2);
}
template <class T>
ORV_INLINE void dia_svd_seq_body(const Options& o, const Int* m, const T* alpha, const T* val, const Int* lval,
                                 const Int* idiag, const Int* ndiag, T* y)
{
    solve_diagonal(o, *m, *alpha, Dia<T>{val, *lval, idiag, *ndiag}, 1, y, 0);
}
template <class T>
ORV_INLINE void dia_sm_seq_body(const Options& o, const Int* m, const Int* nd, const T* alpha, const T* val,
                                const Int* lval, const Int* idiag, const Int* ndiag, T* y, const Int* ldy, const Int*,
                                const Int*)
{
    solve_diagonal(o, *m, *alpha, Dia<T>{val, *lval, idiag, *ndiag}, *nd, y, *ldy);
}

} // namespace

ORV_SPBLAS_dia_sv_seq(SPBLAS_MEMBER) ORV_SPBLAS_dia_sm_par(SPBLAS_MEMBER) ORV_SPBLAS_dia_svd_seq(SPBLAS_MEMBER)
    ORV_SPBLAS_dia_sm_seq(SPBLAS_MEMBER)

        SPBLAS_ROUTINE(7, find_diag_par_ln, find_diagonal<true, false>)
            SPBLAS_ROUTINE(7, find_diag_par_lu, find_diagonal<true, true>)
                SPBLAS_ROUTINE(7, find_diag_par_un, find_diagonal<false, false>)
                    SPBLAS_ROUTINE(7, find_diag_par_uu, find_diagonal<false, true>)

} // namespace orv::ORV_SPBLAS
