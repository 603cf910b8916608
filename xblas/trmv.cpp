// trmv:    x := alpha*op(T)*x      T n by n triangular in full storage, tpmv: in packed storage
//
// op by trans: 111 T, 113 its conjugate transpose, 112 its transpose. Each element is one sum. trmv adds from the
// diagonal outwards. tpmv adds by ascending columns, but by descending ones where op(T) is upper and its columns are
// stored one after the other. With a unit diagonal that of T is not read and x[i] itself is added.
//
// alpha = 0 sets x to 0 in trmv, without reading anything; tpmv always multiplies. trmv reports any bad argument with
// code 0, but n < 1 as bad; tpmv takes any trans and diag.
#include "xblas/closing.h"
#include "xblas/members.h"
#include "xblas/rows.h"

namespace orv::xblas {
namespace {

// An element that enters a sum with no multiplication.
template <class N, class R> ORV_INLINE auto term(const R* x)
{
    if constexpr (std::is_same_v<N, Extra::One>) return Exact<double>{*x};
    else return static_cast<typename N::lane>(*x);
}
template <class N, class R> ORV_INLINE auto term(const cpx<R>* x)
{
    return cpx<decltype(term<N>(&x->re))>{term<N>(&x->re), term<N>(&x->im)};
}

// One row: the sum of a walk along T times elements of x, before or after the term of the diagonal.
template <class P, class T, class A> class RowSum {
    using N = typename P::One;

public:
    void add(const A* t, const Walk& w, double sign, const T* x, i64 incx)
    {
        add_products<P>(w.count, Shared<A>{t + w.at, w.step, w.bend, sign}, Several<T>{x, incx}, sum_);
    }
    void add_diagonal(const A* t, bool unit, double sign, const T* x)
    {
        if (unit) sum_ = plus(sum_, term<N>(x));
        else sum_ = plus(sum_, product(factor<N>(t, sign), factor<N>(x)));
    }
    const auto& operator()() const { return sum_; }

private:
    sum_of<N, A, T> sum_{};
};

bool refuses(Order order, Uplo uplo, Trans trans, Diag diag, i64 n, i64 ldt, i64 incx)
{
    return !known(order) || !known(uplo) || !known(trans) || !known(diag) || ldt < n || incx == 0;
}

template <class T, class A, class>
void trmv(Routine routine, Order order, Uplo uplo, Trans trans, Diag diag, i64 n, T alpha, const A* t, i64 ldt, T* x,
          i64 incx, Prec prec)
{
    if (!known(prec)) return;
    if (refuses(order, uplo, trans, diag, n, ldt, incx)) return routine.report(0, 0);
    if (n < 1) return void(routine.bad(4, n));
    x = first(x, n, incx);
    if (alpha == zero<T>) return clear(n, x, incx);

    // A lower op(T) is an upper one counted from the end, so that rows still have what they need of x.
    const bool rows_run = (order == Order::row_major) == !is_transposed(trans);
    i64 row_step = rows_run ? ldt : 1, column_step = rows_run ? 1 : ldt;
    if ((uplo == Uplo::lower) == !is_transposed(trans)) {
        t += (n - 1) * (row_step + column_step);
        x += (n - 1) * incx;
        row_step = -row_step, column_step = -column_step, incx = -incx;
    }
    const bool unit = diag == Diag::unit;
    with_arithmetic<T>(prec, [&]<class P>(P) {
        const Closing<P, T> close({alpha != one<T>, false}, alpha, zero<T>);
        for (i64 i = 0; i < n; ++i, t += row_step + column_step, x += incx) {
            RowSum<P, T, A> sum;
            sum.add_diagonal(t, unit, sign(trans), x);
            sum.add(t, {column_step, column_step, 0, n - i - 1}, sign(trans), x + incx, incx);
            close(sum(), x);
        }
    });
}

template <class T, class A, class>
void tpmv(Routine routine, Order order, Uplo uplo, Trans trans, Diag diag, i64 n, T alpha, const A* tp, T* x, i64 incx,
          Prec prec)
{
    if (!known(prec) || n < 1) return;
    if (!known(order)) return void(routine.bad(1, order));
    if (!known(uplo)) return void(routine.bad(2, uplo));
    if (incx == 0) return void(routine.bad(9, incx));
    x = first(x, n, incx);
    const Rows rows = Rows::packed(Kind::whole, order, uplo, n);
    const bool run_before = rows_run_before(order, uplo);
    const bool upper = (uplo == Uplo::upper) == !is_transposed(trans), unit = diag == Diag::unit;
    with_arithmetic<T>(prec, [&]<class P>(P) {
        const Closing<P, T> close({true, false}, alpha, zero<T>);
        for (i64 row = 0; row < n; ++row) {
            const i64 i = upper ? row : n - 1 - row;
            const Walk rest = rows.from_diagonal(i), behind = without_first(rest);
            T* const xi = x + i * incx;
            RowSum<P, T, A> sum;
            if (!upper) sum.add(tp, rows.before(i), sign(trans), x, incx);
            else if (run_before) sum.add(tp, backwards(behind), sign(trans), x + (n - 1) * incx, -incx);
            sum.add_diagonal(tp + rest.at, unit, sign(trans), xi);
            if (upper && !run_before) sum.add(tp, behind, sign(trans), xi + incx, incx);
            close(sum(), xi);
        }
    });
}

} // namespace

XBLAS_MATRICES(trmv, _x)
XBLAS_MATRICES(tpmv, _x)

} // namespace orv::xblas
