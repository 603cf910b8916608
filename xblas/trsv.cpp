// x := alpha*op(T)^-1*x      T n by n triangular in full storage
//
// op by trans: 111 T, 112 its transpose, 113 its conjugate transpose. One unknown after the other (solve.h), each
// taking the solved ones by ascending index. alpha = 0 sets x to 0 and reads nothing. A 0 on the diagonal divides as it
// comes. Any bad argument is reported with code 0; n < 1 is none.
//
// Memory: n numbers for 32-bit results in 64-bit arithmetic, 2n in extra precision, twice that if complex; if there is
// none x stays what it is.
#include "xblas/members.h"
#include "xblas/solve.h"

namespace orv::xblas {
namespace {

bool refuses(Order order, Uplo uplo, Trans trans, Diag diag, i64 n, i64 ldt, i64 incx)
{
    return !known(order) || !known(uplo) || !known(trans) || !known(diag) || ldt < n || incx == 0;
}

template <class T, class A, class>
void trsv(Routine routine, Order order, Uplo uplo, Trans trans, Diag diag, i64 n, T alpha, const A* t, i64 ldt, T* x,
          i64 incx, Prec prec)
{
    if (!known(prec)) return;
    if (refuses(order, uplo, trans, diag, n, ldt, incx)) return routine.report(0, 0);
    if (n < 1) return;
    x = first(x, n, incx);
    if (alpha == zero<T>) return clear(n, x, incx);

    const bool rows_run = (order == Order::row_major) == !is_transposed(trans);
    const i64 row_step = rows_run ? ldt : 1, column_step = rows_run ? 1 : ldt;
    const bool lower = (uplo == Uplo::lower) == !is_transposed(trans), unit = diag == Diag::unit;
    with_arithmetic<T>(prec, [&]<class P>(P) {
        Solved<P, T> solved;
        if (!solved.open(n, x, incx)) return;
        for (i64 row = 0; row < n; ++row) {
            const i64 i = lower ? row : n - 1 - row, from = lower ? 0 : i + 1;
            const A* const ti = t + i * row_step;
            auto value = start<P, A>(alpha, x + i * incx);
            value = subtracted<P>(value, solved, from, row, ti + from * column_step, column_step, sign(trans));
            value = divided<P>(value, ti + i * column_step, unit, sign(trans));
            x[i * incx] = stored<T>(head(value));
            solved.keep(i, value);
        }
        solved.close();
    });
}

} // namespace

XBLAS_MATRICES(trsv, )

} // namespace orv::xblas
