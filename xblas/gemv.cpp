// gemv:    y := alpha*op(A)*x + beta*y                          A m by n, op by trans: 111 A, 113 its conjugate
// gemv2:   y := alpha*op(A)*(head_x + tail_x) + beta*y          transpose, anything else its transpose
//
//   alpha  beta     y                       read
//     0     0       0                       nothing
//     0    else     beta*y                  y
//   else    0       alpha*op(A)*x           A, x
//   else   else     alpha*op(A)*x + beta*y  A, x, y
//
// Each element is one sum over the columns in their order; that of gemv2 has two sums, for head and tail. Any order but
// 102 is row-major. Bad: see `refuses`. The bound for lda is the storage's in gemv and the length of y in gemv2.
#include "xblas/closing.h"
#include "xblas/members.h"

namespace orv::xblas {
namespace {

struct Shape {
    i64 rows, columns;         // of op(A)
    i64 row_step, column_step; // from one to the next
};

Shape shape(Order order, Trans trans, i64 m, i64 n, i64 lda)
{
    const bool along_columns = order == Order::column_major;
    const Shape as_stored{m, n, along_columns ? 1 : lda, along_columns ? lda : 1};
    if (!is_transposed(trans)) return as_stored;
    return {n, m, as_stored.column_step, as_stored.row_step};
}

bool refuses(Routine routine, Order order, i64 m, i64 n, i64 lda, i64 incx, i64 incy)
{
    if (m < 0) return routine.bad(3, m);
    if (n < 1) return routine.bad(4, n);
    if (incx == 0) return routine.bad(9, incx);
    if (incy == 0) return routine.bad(12, incy);
    if (known(order) && lda < (order == Order::row_major ? n : m)) return routine.bad(7, lda);
    return false;
}
bool refuses2(Routine routine, Trans trans, i64 m, i64 n, i64 lda, i64 incx, i64 incy)
{
    if (m < 0) return routine.bad(3, m);
    if (n < 1) return routine.bad(4, n);
    if (incx == 0) return routine.bad(10, incx);
    if (incy == 0) return routine.bad(13, incy);
    if (lda < (is_transposed(trans) ? n : m)) return routine.bad(7, lda);
    return false;
}

// Rows of A in fours, which share the elements of x. x: the vector, or its head and its tail.
template <class P, class T, class A, class... B>
ORV_INLINE void multiply(const Shape& s, const A* a, double sign, i64 incx, const Closing<P, T>& close, T* y, i64 incy,
                         const B*... x)
{
    const auto sum = [&]<class Sums, class V>(std::type_identity<Sums>, const V* v) {
        Sums sums{};
        add_products<P>(s.columns, Shared<V>{v, incx}, Several<A>{a, s.column_step, s.row_step, sign}, sums);
        return sums;
    };
    const auto close_four = [&](const auto&... sums) {
        const auto close_row = [&](int l) ORV_INLINE_LAMBDA { close(result<P>(sums, l)..., y + l * incy); };
        if constexpr (sizeof...(sums) == 1) close_row(0), close_row(1), close_row(2), close_row(3); // registers by name
        else
            for (int l = 0; l < 4; ++l) close_row(l);
    };
    i64 i = 0;
    for (; i + 4 <= s.rows; i += 4, a += 4 * s.row_step, y += 4 * incy)
        close_four(sum(std::type_identity<FourSums<P, B, A>>(), x)...);
    for (; i < s.rows; ++i, a += s.row_step, y += incy)
        close(sum(std::type_identity<sum_of<typename P::One, B, A>>(), x)..., y);
}

template <class P, class T, class A, class... B>
[[gnu::noinline]] void compute(const Shape& s, Trans trans, T alpha, const A* a, i64 incx, T beta, T* y, i64 incy,
                               const B*... x)
{
    y = first(y, s.rows, incy);
    if (alpha == zero<T> && beta == zero<T>) return clear(s.rows, y, incy);
    if (alpha == zero<T>) return scale<Plain<typename P::number>>(s.rows, beta, y, incy);
    const Closing<P, T> close(product_terms<P, sizeof...(x)>(alpha, beta), alpha, beta);
    multiply<P>(s, a, sign(trans), incx, close, y, incy, first(x, s.columns, incx)...);
}

template <class T, class A, class B>
void gemv(Routine routine, Order order, Trans trans, i64 m, i64 n, T alpha, const A* a, i64 lda, const B* x, i64 incx,
          T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec) || refuses(routine, order, m, n, lda, incx, incy)) return;
    with_arithmetic<T>(
        prec, [&]<class P>(P) { compute<P>(shape(order, trans, m, n, lda), trans, alpha, a, incx, beta, y, incy, x); });
}

template <class T, class A, class B>
void gemv2(Routine routine, Order order, Trans trans, i64 m, i64 n, T alpha, const A* a, i64 lda, const B* head_x,
           const B* tail_x, i64 incx, T beta, T* y, i64 incy, Prec prec)
{
    if (!known(prec) || refuses2(routine, trans, m, n, lda, incx, incy)) return;
    with_arithmetic<T>(prec, [&]<class P>(P) {
        compute<P>(shape(order, trans, m, n, lda), trans, alpha, a, incx, beta, y, incy, head_x, tail_x);
    });
}

} // namespace

XBLAS_MATRICES(gemv, _x)
XBLAS_MATRICES(gemv2, _x)

} // namespace orv::xblas
