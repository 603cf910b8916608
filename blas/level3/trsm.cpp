// Solves op(A)*X = alpha*B (side L) or X*op(A) = alpha*B (side R) for X, in place of B, m by n.
//
//   uplo    U: the upper triangle of A is read, else the lower one
//   transa  N: op(A) = A; C: the conjugate transpose of complex matrices; anything else: the transpose
//   diag    U: ones on the diagonal, which is not read; else it is, and a zero on it gives infinities or NaN
//
// An alpha of 0 clears B and reads nothing. Without work memory B stays as it came, and the result is 1,
// else 0. Elements of the diagonal are not divided by, but multiplied by their reciprocals; triangular_block.cpp says
// where not.
#include "blas/level3/triangular_levels.h"

namespace orv::level3 {
namespace {

// Small enough for the triangle and a strip of X to stay in the first-level cache; the blocks above them are as deep as
// a product in blocks wants its panels.
constexpr Cut left_cuts[] = {{0x80, 1000}, {0x20, 1000}};
constexpr Cut right_cuts[] = {{0x80, 0x200}, {0x20, 0x200}};
constexpr Cut large_right_cuts[] = {{0x100, 0x200}, {0x20, 0x200}};
constexpr i64 large = 2000;

template <class T> Done solve(const Triangular<T>& x, T alpha)
{
    if (x.order <= 0 || x.others <= 0) return Done::yes;
    if (alpha == zero<T>) return scale(x, alpha), Done::yes;
    const bool done = with_work_block<Task::solve, T>([&](const auto& work) {
        scale(x, alpha);
        const auto fits = [&](i64 block) { return x.right ? block < x.order : block <= x.order; };
        const auto by = [&](const auto& cuts) { walk<Task::solve>(x, cuts, first_level(cuts, fits), work); };
        if (!x.right) by(left_cuts);
        else if (x.order < large) by(right_cuts);
        else by(large_right_cuts);
    });
    return done ? Done::yes : Done::no_memory;
}

} // namespace

#define TRSM(t, T)                                                                                                     \
    ORV_EXPORT Done BLAS(x##t##trsm)(TRIANGULAR_ARGUMENTS(T))                                                          \
    {                                                                                                                  \
        return solve(                                                                                                  \
            Triangular<T>::of(is_right(*side), blas::form_of<T>(*uplo, *transa, *diag), *m, *n, a, *lda, b, *ldb),     \
            *alpha);                                                                                                   \
    }                                                                                                                  \
    TRIANGULAR_LEVEL(t##trsm, T, solve, left, false)                                                                   \
    TRIANGULAR_LEVEL(t##trsm, T, solve, right, true)

TRSM(s, float)
TRSM(d, double)
TRSM(c, cpx<float>)
TRSM(z, cpx<double>)

} // namespace orv::level3
