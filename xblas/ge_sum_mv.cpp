// y := alpha*A*x + beta*B*x,    A and B m by n
//
// Each element is one sum over the columns of A and one over those of B, in their order. y is never read. alpha = 0
// leaves A unread, beta = 0 leaves B unread, both 0 set y to 0; a factor of 1 beside one of 0 multiplies nothing. Bad:
// prec; then, unless m = 0 or n = 0, the others as below.
#include "xblas/members.h"
#include "xblas/rows.h"

namespace orv::xblas {
namespace {

bool refuses(Routine routine, Order order, i64 m, i64 n, i64 lda, i64 incx, i64 ldb, i64 incy)
{
    const i64 least = order == Order::row_major ? n : m;
    if (!known(order)) return routine.bad(1, order);
    if (m < 0) return routine.bad(2, m);
    if (n < 0) return routine.bad(3, n);
    if (lda < least) return routine.bad(6, lda);
    if (ldb < least) return routine.bad(11, ldb);
    if (incx == 0) return routine.bad(8, incx);
    if (incy == 0) return routine.bad(13, incy);
    return false;
}

template <class P, class T, class SumA, class SumB> ORV_INLINE T combined(SumA sum_a, T alpha, SumB sum_b, T beta)
{
    using N = typename P::One;
    const auto a = unnamed(widened<T>(sum_a)), b = unnamed(widened<T>(sum_b));
    return stored<T>(rounded(plus_product(unnamed(product(a, factor<N>(&alpha))), b, factor<N>(&beta))));
}

template <class P, class T, class A, class B>
void multiply(Order order, i64 m, i64 n, T alpha, const A* a, i64 lda, const B* x, i64 incx, T beta, const A* b,
              i64 ldb, T* y, i64 incy)
{
    x = first(x, n, incx);
    y = first(y, m, incy);
    const bool by_rows = order == Order::row_major;
    const auto rows = [&](i64 ld) { return DenseRows{n, by_rows ? 1 : ld, by_rows ? ld : 1, Use::stored}; };
    const auto alone = [&](const A* matrix, i64 ld, T by) {
        multiply(m, rows(ld), matrix, incx, Closing<P, T>({by != one<T>, false}, by, zero<T>), y, incy, x);
    };
    if (alpha == zero<T> && beta == zero<T>) return clear(m, y, incy);
    if (alpha == zero<T>) return alone(b, ldb, beta);
    if (beta == zero<T>) return alone(a, lda, alpha);
    i64 i = 0;
    const Several<B> v{x, incx};
    for (const i64 fours = rows_in_fours(m, rows(lda)); i < fours; i += 4) {
        const auto of_a = row_sums<P>(rows(lda), i, a, v), of_b = row_sums<P>(rows(ldb), i, b, v);
        for (int l = 0; l < 4; ++l, y += incy) *y = combined<P>(of_a.row[l], alpha, of_b.row[l], beta);
    }
    for (; i < m; ++i, y += incy)
        *y = combined<P>(row_sum<P>(rows(lda), i, a, v), alpha, row_sum<P>(rows(ldb), i, b, v), beta);
}

template <class T, class A, class B>
void ge_sum_mv(Routine routine, Order order, i64 m, i64 n, T alpha, const A* a, i64 lda, const B* x, i64 incx, T beta,
               const A* b, i64 ldb, T* y, i64 incy, Prec prec)
{
    if (!known(prec)) return void(routine.bad(14, prec));
    if (m == 0 || n == 0 || refuses(routine, order, m, n, lda, incx, ldb, incy)) return;
    with_arithmetic<T>(prec,
                       [&]<class P>(P) { multiply<P>(order, m, n, alpha, a, lda, x, incx, beta, b, ldb, y, incy); });
}

} // namespace

XBLAS_TWO_INPUTS(ge_sum_mv, 14, 13, 13, 12, "")

} // namespace orv::xblas
