// y := op(A)^-1*y in place, A in compressed rows: triangular without alpha, diagonal as (alpha/a)*y.
//
//   sv   one vector
//   sm   columns first to last of a dense matrix, counted from 1, one after the other
//
// sm works in m elements of memory; refused, it works in the dense matrix itself, with the same sums in another order.
// The diagonal must be stored; nothing tests it (spblas/csr_solve.h says what is taken in its place).
#include "spblas/csr_solve.h"

#include "spblas/memory.h"

namespace orv::ORV_SPBLAS {
namespace {

template <class T, class Y> void solve_one(const Options& o, Int m, T alpha, const Csr<T>& a, Y y)
{
    if (o.diagonal_only()) solve_diagonal(o, m, a, alpha, y);
    else solve(o, m, a, y);
}

template <class T> [[gnu::noinline]] void solve_vector(const Options& o, Int m, T alpha, const Csr<T>& a, T* y)
{
    solve_one(o, m, alpha, a, y - o.base);
}

template <class T>
ORV_INLINE void csr_sv_seq_body(const Options& o, const Int* m, const T* alpha, const T* val, const Int* col,
                                const Int* pntrb, const Int* pntre, T* y)
{
    if (*m > 0) solve_vector(o, *m, *alpha, Csr<T>(o, val, col, pntrb, pntre), y);
}

template <class T>
[[gnu::noinline]] void csr_sm_par_body(const Options& o, const Int* first, const Int* last, const Int* m, const Int*,
                                       const T* alpha, const T* val, const Int* col, const Int* pntrb, const Int* pntre,
                                       T* y, const Int* ldy)
{
    const Int n = *m;
    auto [j, end] = Part(first, last);
    if (n < 1 || j >= end) return;
    const Csr<T> a(o, val, col, pntrb, pntre);
    const i64 ld = *ldy, row_step = o.by_rows ? ld : 1, column_step = o.by_rows ? 1 : ld;
    const Block<T> memory(n);
    T* scratch = memory.data();
    for (; j < end; ++j) {
        T* column = y + j * column_step;
        if (scratch != nullptr) {
            for (Int i = 0; i < n; ++i) scratch[i] = column[i * row_step];
            solve_vector(o, n, *alpha, a, scratch);
            for (Int i = 0; i < n; ++i) column[i * row_step] = scratch[i];
        } else solve_one(o, n, *alpha, a, Strided<T>{column - o.base * row_step, row_step});
    }
}

} // namespace

ORV_SPBLAS_csr_sv_seq(SPBLAS_MEMBER) ORV_SPBLAS_csr_sm_par(SPBLAS_MEMBER)

} // namespace orv::ORV_SPBLAS
