// C := alpha*op(A)*op(B) + beta*C,    op(A) m by k, op(B) k by n; op: 111 the matrix, 113 its conjugate transpose,
//                                     anything else its transpose
//
//   alpha  beta     C                             read
//     0     any     beta*C, with 0, too           C
//   else     0      alpha*op(A)*op(B)             A, B
//   else    else    alpha*op(A)*op(B) + beta*C    A, B, C
//
// Each element is one sum over k in its order. Nothing happens if m, n or k is 0, so k = 0 does not scale C, or if
// alpha is 0 and beta 1. Any order but 102 is row-major. Bad: see `refuses`.
#include "xblas/closing.h"
#include "xblas/members.h"

namespace orv::xblas {
namespace {

bool refuses(Routine routine, Order order, Trans transa, Trans transb, i64 m, i64 n, i64 k, i64 lda, i64 ldb, i64 ldc)
{
    const bool columns = order == Order::column_major;
    if (m < 0) return routine.bad(4, m);
    if (n < 0) return routine.bad(5, n);
    if (k < 0) return routine.bad(6, k);
    if (ldc < (columns ? m : n)) return routine.bad(14, ldc);
    if (lda < (columns == !is_transposed(transa) ? m : k)) return routine.bad(9, lda);
    if (ldb < (columns == !is_transposed(transb) ? k : n)) return routine.bad(11, ldb);
    return false;
}

// C := alpha*A*B + beta*C in the form of close. a: row 0 of A, and a_down to the next; b: column 0 of B, with apart to
// the next. Columns go in fours, which share the elements of A.
template <class P, class T, class A, class B>
ORV_INLINE void multiply(i64 m, i64 n, i64 k, Shared<A> a, i64 a_down, Several<B> b, const Closing<P, T>& close, T* c,
                         i64 row_step, i64 column_step)
{
    for (i64 i = 0; i < m; ++i, a.at += a_down, c += row_step) {
        Several<B> column = b;
        T* to = c;
        i64 j = 0;
        for (; j + 4 <= n; j += 4, column.at += 4 * b.apart) {
            FourSums<P, A, B> sums;
            add_products<P>(k, a, column, sums);
            for (int l = 0; l < 4; ++l, to += column_step) close(result(sums, l), to);
        }
        for (; j < n; ++j, column.at += b.apart, to += column_step) {
            sum_of<typename P::One, A, B> sum{};
            add_products<P>(k, a, column, sum);
            close(sum, to);
        }
    }
}

template <class T, class A, class B>
void gemm(Routine routine, Order order, Trans transa, Trans transb, i64 m, i64 n, i64 k, T alpha, const A* a, i64 lda,
          const B* b, i64 ldb, T beta, T* c, i64 ldc, Prec prec)
{
    if (!known(prec) || refuses(routine, order, transa, transb, m, n, k, lda, ldb, ldc)) return;
    if (m == 0 || n == 0 || k == 0 || (alpha == zero<T> && beta == one<T>)) return;
    const bool columns = order == Order::column_major;
    const i64 row_step = columns ? 1 : ldc, column_step = columns ? ldc : 1;
    const bool a_runs_down = columns == !is_transposed(transa), b_runs_down = columns == !is_transposed(transb);
    const Shared<A> row{a, a_runs_down ? lda : 1, 0, sign(transa)};
    const Several<B> column{b, b_runs_down ? 1 : ldb, b_runs_down ? ldb : 1, sign(transb)};
    with_arithmetic<T>(prec, [&]<class P>(P) {
        if (alpha == zero<T>) {
            for (i64 i = 0; i < m; ++i) scale<Plain<typename P::number>>(n, beta, c + i * row_step, column_step);
        } else {
            const Closing<P, T> close({alpha != one<T>, beta != zero<T>}, alpha, beta);
            multiply(m, n, k, row, a_runs_down ? 1 : lda, column, close, c, row_step, column_step);
        }
    });
}

} // namespace

XBLAS_MATRICES(gemm, _x)

} // namespace orv::xblas
