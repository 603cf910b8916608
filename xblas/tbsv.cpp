// x := alpha*op(T)^-1*x      T n by n triangular with k diagonals beside the main one, in band storage
//
// op by trans: 111 T, 112 its transpose, 113 its conjugate transpose, 191 its conjugate. One unknown after the other
// (solve.h), each taking the k solved before it, the oldest first. alpha = 0 sets x to 0 and reads nothing. A 0 on the
// diagonal divides as it comes. k = 0 computes in 64 bits for any prec, and does nothing at all for alpha = 1 with a
// unit diagonal.
//
// Memory: a ring of the k latest solutions, for 32-bit results in 64-bit arithmetic and in extra precision; if there is
// none x stays what it is.
#include "xblas/members.h"
#include "xblas/solve.h"

namespace orv::xblas {
namespace {

bool refuses(Routine routine, Order order, Uplo uplo, Trans trans, Diag diag, i64 n, i64 k, i64 ldt, i64 incx)
{
    if (!known(order)) return routine.bad(1, order);
    if (!known(uplo)) return routine.bad(2, uplo);
    if (!known(trans) && trans != Trans::conjugate_only) return routine.bad(2, uplo); // both options share a code
    if (!known(diag)) return routine.bad(4, diag);
    if (n < 0) return routine.bad(5, n);
    if (k >= n) return routine.bad(6, k);
    if (ldt < 1 || ldt <= k) return routine.bad(9, ldt);
    if (incx == 0) return routine.bad(11, 0);
    return false;
}

template <class T, class A, class>
void tbsv(Routine routine, Order order, Uplo uplo, Trans trans, Diag diag, i64 n, i64 k, T alpha, const A* t, i64 ldt,
          T* x, i64 incx, Prec prec)
{
    if (refuses(routine, order, uplo, trans, diag, n, k, ldt, incx) || n == 0) return;
    if (!known(prec)) return void(routine.bad(13, prec));
    x = first(x, n, incx);
    if (alpha == zero<T>) return clear(n, x, incx);
    const bool unit = diag == Diag::unit;
    if (k == 0) {
        if (unit && alpha == one<T>) return;
        if (routine.has_prec) prec = Prec::double_;
    }

    // Where the first row's diagonal stands, and the way along a row and down a column. A matrix that is upper after
    // the transposition is a lower one counted from the end.
    const bool transposed = trans == Trans::transpose || trans == Trans::conjugate;
    const bool conjugated = trans == Trans::conjugate || trans == Trans::conjugate_only;
    const bool across = (order == Order::row_major) == transposed;
    i64 column_step = across ? ldt - 1 : 1, row_step = across ? 1 : ldt - 1;
    i64 start_at = across ? 0 : k;
    if ((uplo == Uplo::lower) == transposed) {
        start_at = ldt * (n - 1) + k - start_at;
        column_step = -column_step, row_step = -row_step;
        x += (n - 1) * incx;
        incx = -incx;
    }
    t += start_at;
    const double conj = sign(conjugated);
    with_arithmetic<T>(prec, [&]<class P>(P) {
        if (k == 0) {
            for (i64 i = 0; i < n; ++i, t += row_step + column_step, x += incx)
                *x = stored<T>(head(divided<P>(start<P, A>(alpha, x), t, unit, conj)));
            return;
        }
        Solved<P, T> solved;
        if (!solved.open(k, x, incx)) return;
        constexpr bool in_place = Solved<P, T>::in_place;
        for (i64 i = 0; i < n; ++i) {
            // The solutions i - before, ..., i - 1: from the oldest in the ring up to its end, then from its beginning.
            const i64 before = min(i, k), slot = in_place ? i : i % k;
            const i64 oldest = in_place ? i - before : i < k ? 0 : slot;
            const i64 to_end = in_place ? before : min(before, k - oldest);
            const A* const ti = t + i * row_step + (i - before) * column_step;
            auto value = start<P, A>(alpha, x + i * incx);
            value = subtracted<P>(value, solved, oldest, to_end, ti, column_step, conj);
            value = subtracted<P>(value, solved, 0, before - to_end, ti + to_end * column_step, column_step, conj);
            value = divided<P>(value, ti + before * column_step, unit, conj);
            x[i * incx] = stored<T>(head(value));
            solved.keep(slot, value);
        }
        solved.close();
    });
}

} // namespace

XBLAS_MATRICES(tbsv, _x)

} // namespace orv::xblas
