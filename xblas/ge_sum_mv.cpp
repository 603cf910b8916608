// y := alpha*A*x + beta*B*x,    A and B m by n
//
// Each element is one sum over the columns of A and one over those of B, in their order. y is never read. alpha = 0
// leaves A unread, beta = 0 leaves B unread, both 0 set y to 0; a factor of 1 beside one of 0 multiplies nothing. Bad:
// prec; then, unless m = 0 or n = 0, the others as below.
#include "xblas/members.h"
#include "xblas/products.h"

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

template <class P, class T, class Sum> [[gnu::noinline]] T combined(Sum sum_a, T alpha, Sum sum_b, T beta)
{
    using N = typename P::One;
    return stored<T>(rounded(plus_product(unnamed(product(sum_a, factor<N>(&alpha))), sum_b, factor<N>(&beta))));
}

template <class P, class T, class A, class B>
[[gnu::noinline]] void multiply_both(i64 m, const Rows& rows_a, T alpha, const A* a, const B* x, i64 incx,
                                     const Rows& rows_b, T beta, const A* b, T* y, i64 incy)
{
    const auto store = [&](auto sum_a, auto sum_b) {
        *y = combined<P>(unnamed(widened<T>(sum_a)), alpha, unnamed(widened<T>(sum_b)), beta);
        y += incy;
    };
    i64 i = 0;
    for (const i64 fours = rows_in_fours(m, rows_a); i < fours; i += 4) {
        sum_of<typename P::One, A, B> of_a[4], of_b[4];
        row_sums<P>(rows_a, i, a, x, incx, of_a);
        row_sums<P>(rows_b, i, b, x, incx, of_b);
        for (int l = 0; l < 4; ++l) store(of_a[l], of_b[l]);
    }
    const auto short_sum = [&](const Rows& rows, const A* from) {
        const Walk row = rows.dense_row(i);
        sum_of<typename P::One, A, B> sum{};
        add_products<P>(row.count, Shared<A>{from + row.at, row.step}, Several<B>{x, incx}, sum);
        return sum;
    };
    for (; i < m; ++i) store(short_sum(rows_a, a), short_sum(rows_b, b));
}

template <class P, class T, class A, class B>
void multiply(Order order, i64 m, i64 n, T alpha, const A* a, i64 lda, const B* x, i64 incx, T beta, const A* b,
              i64 ldb, T* y, i64 incy)
{
    if (alpha == zero<T> && beta == zero<T>) return clear(m, y, incy);
    const bool by_rows = order == Order::row_major;
    const auto rows = [&](i64 ld) { return Rows::dense(m, n, by_rows ? 1 : ld, by_rows ? ld : 1); };
    if (alpha != zero<T> && beta != zero<T>)
        return multiply_both<P>(m, rows(lda), alpha, a, x, incx, rows(ldb), beta, b, y, incy);
    const bool is_a = beta == zero<T>;
    const T by = is_a ? alpha : beta;
    multiply<P, T, A, B>(m, rows(is_a ? lda : ldb), is_a ? a : b, x, nullptr, incx,
                         Closing<P, T>({by != one<T>, false}, by, zero<T>), y, incy);
}

template <class T, class A, class B>
void ge_sum_mv(Routine routine, Order order, i64 m, i64 n, T alpha, const A* a, i64 lda, const B* x, i64 incx, T beta,
               const A* b, i64 ldb, T* y, i64 incy, Prec prec)
{
    if (!known(prec)) return void(routine.bad(14, prec));
    if (m == 0 || n == 0 || refuses(routine, order, m, n, lda, incx, ldb, incy)) return;
    x = first(x, n, incx);
    y = first(y, m, incy);
    with_arithmetic<T>(prec,
                       [&]<class P>(P) { multiply<P>(order, m, n, alpha, a, lda, x, incx, beta, b, ldb, y, incy); });
}

} // namespace

XBLAS_MATRICES(ge_sum_mv, )

} // namespace orv::xblas
