// y := alpha*op(A)*x + beta*y, A in compressed rows: mv, and the one gemv, which is the same.
//
//   kind                        rows first to last write     scaled by beta
//   g, t, not transposed        y[first .. last]             y[first .. last]
//   g transposed                any of the k elements        all k
//   s h a, t transposed         any of the m elements        all m
//   d                           y[0 .. m-1]                  all m
//
// A part that writes other elements than its own needs a y of its own. beta = 0 does not read y. first > last: scaled
// and no more. Entries outside the triangle and on an ignored diagonal are skipped, but in a triangle that is not
// transposed, where they are added and subtracted. A unit diagonal is in the product.
#include "spblas/csr_mv.h"

namespace orv::ORV_SPBLAS {
namespace {

template <class T>
[[gnu::noinline]] void run(const Options& o, Part rows, i64 scaled, const Close<T>& close, const T* val, const Int* col,
                           const Int* pntrb, const Int* pntre, const T* x, T* y)
{
    const bool nothing = rows.i >= rows.end;
    if (!keeps_to_its_rows(o) && (nothing || !acts_twice(o))) scale(y, scaled, close.beta);
    if (nothing) return;
    if (o.diagonal_only() && o.unit) return add_multiple(rows.end, close.alpha, x, y);
    multiply(o, rows.i + o.base, rows.end + o.base, Csr<T>(o, val, col, pntrb, pntre), close, x - o.base, y - o.base,
             scaled + o.base);
}

template <class T>
ORV_INLINE void csr_mv_par_body(const Options& o, const Int* first, const Int* last, const Int* m, const Int* k,
                                const T* alpha, const T* val, const Int* col, const Int* pntrb, const Int* pntre,
                                const T* x, T* y, const T* beta)
{
    run(o, Part(first, last), o.triangle() ? *m : *k, Close<T>{*alpha, *beta}, val, col, pntrb, pntre, x, y);
}
template <class T> constexpr auto& csr_gemv_par_body = csr_mv_par_body<T>;

template <class T>
ORV_INLINE void csr_mv_seq_body(const Options& o, const Int* m, const Int*, const T* alpha, const T* val,
                                const Int* col, const Int* pntrb, const Int* pntre, const T* x, T* y, const T* beta)
{
    run(o, Part(*m), *m, Close<T>{*alpha, *beta}, val, col, pntrb, pntre, x, y);
}

} // namespace

ORV_SPBLAS_csr_mv_par(SPBLAS_MEMBER) ORV_SPBLAS_csr_mv_seq(SPBLAS_MEMBER) ORV_SPBLAS_csr_gemv_par(SPBLAS_MEMBER)

} // namespace orv::ORV_SPBLAS
