// symm, hemm:    C := alpha*A*B + beta*C (side 141), or alpha*B*A + beta*C (side 142)
//                C m by n, A symmetric or Hermitian, of which one triangle is stored in full storage
//
// Each element is one sum along the row of A in the order of its columns; of a Hermitian A's diagonal only the real
// part is read. alpha = 0 multiplies C by beta, 0 included; otherwise beta = 0 sets C without reading it. Bad arguments
// are not reported: as for m < 1, n < 1, or alpha = 0 with beta = 1, nothing happens.
#include "xblas/symmetric.h"

namespace orv::xblas {
namespace {

bool refuses(Order order, Side side, i64 m, i64 n, i64 lda, i64 ldb, i64 ldc)
{
    if (m < 1 || n < 1) return true;
    if (order == Order::column_major && (ldb < m || ldc < m)) return true;
    if (order == Order::row_major && (ldb < n || ldc < n)) return true;
    if (side == Side::left && lda < m) return true;
    return side == Side::right && lda < n;
}

template <class T, class A, class B>
[[gnu::noinline]] void compute(Kind kind, Order order, Side side, Uplo uplo, i64 m, i64 n, T alpha, const A* a, i64 lda,
                               const B* b, i64 ldb, T beta, T* c, i64 ldc, Prec prec)
{
    if (alpha == zero<T> && beta == one<T>) return;
    // A multiplies from the left or, all matrices transposed, from the right.
    const bool left = side == Side::left;
    const i64 length = left ? m : n, others = left ? n : m;
    const bool along = (order == Order::column_major && left) || (order == Order::row_major && !left);
    const i64 row_step = along ? 1 : ldc, column_step = along ? ldc : 1;
    const Rows as_stored = Rows::full(kind, order, uplo, length, lda), rows = left ? as_stored : as_stored.mirrored();
    with_arithmetic<T>(prec, [&]<class P>(P) {
        if (alpha == zero<T>) {
            for (i64 i = 0; i < length; ++i)
                scale<Plain<typename P::number>>(others, beta, c + i * row_step, column_step);
            return;
        }
        const Closing<P, T> close({alpha != one<T>, beta != zero<T>}, alpha, beta);
        multiply<P>(length, others, rows, a, Several<B>{b, along ? 1 : ldb, along ? ldb : 1}, close, c, row_step,
                    column_step);
    });
}

template <Kind kind, class T, class A, class B>
[[gnu::noinline]] void both_kinds(Routine, Order order, Side side, Uplo uplo, i64 m, i64 n, T alpha, const A* a,
                                  i64 lda, const B* b, i64 ldb, T beta, T* c, i64 ldc, Prec prec)
{
    if (!known(prec) || refuses(order, side, m, n, lda, ldb, ldc)) return;
    compute(kind, order, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc, prec);
}
template <class T, class A, class B> constexpr auto& symm = both_kinds<Kind::symmetric, T, A, B>;
template <class T, class A, class B> constexpr auto& hemm = both_kinds<Kind::hermitian, T, A, B>;

} // namespace

XBLAS_MATRICES(symm, _x)
XBLAS_MATRICES(hemm, _x)

} // namespace orv::xblas
