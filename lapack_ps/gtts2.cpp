// Solves op(A)*X = B with a tridiagonal A factored by elimination with row exchanges (gttrf): A = P*L*U.
//
//   itrans         0: op(A) = A, 1: its transpose, 2 of complex numbers: its conjugate transpose
//   dl             the factors of the elimination
//   d, du, du2     the diagonals of U
//   ipiv           counts from 1: i + 1 at i where row i stayed, anything else where it changed places with the next
//   b              n by nrhs, columns ldb apart; becomes X
//
// From four right-hand sides on, the reciprocals of d are put into a block of memory and multiplied with; with fewer,
// or where there is no memory, each element is divided. n <= 0 or nrhs <= 0 does nothing.
//
// Published source: Anderson et al., LAPACK Users' Guide, 3rd ed., 1999 (gtts2).
#include "frame/kernels/lapack_ps.h"
#include "lapack_ps/reciprocals.h"
#include "lapack_ps/right_sides.h"

namespace orv::lapack {
namespace {

template <Transposition op, class T> struct Factors {
    i64 n;
    const T *dl, *du, *du2;
    const i64* ipiv;

    bool exchanged(i64 i) const { return ipiv[i] != i + 1; }

    template <class Group, class OverPivot> void solve(const Group& b, const OverPivot& over_pivot) const
    {
        if constexpr (op == Transposition::none) {
            eliminate(
                b, 0, n - 1, [&](i64 i) { return dl[i]; }, [&](i64 i) { return exchanged(i); });
            back_substitute(b, n, du, du2, over_pivot);
        } else {
            upper_transposed(b, over_pivot);
            lower_transposed(b);
        }
    }

    // b(i) := ((b(i) - u1(i-1)*b(i-1)) - u2(i-2)*b(i-2)) / d(i), downwards.
    template <class Group, class OverPivot>
    ORV_INLINE void upper_transposed(const Group& b, const OverPivot& over_pivot) const
    {
        auto above = over_pivot(b[0], 0);
        b.set(0, above);
        if (n == 1) return;
        auto x = over_pivot(minus_product(b[1], coefficient<op>(du, 0), above), 1);
        b.set(1, x);
        for (i64 i = 2; i < n; ++i) {
            const auto sum =
                minus_product(minus_product(b[i], coefficient<op>(du, i - 1), x), coefficient<op>(du2, i - 2), above);
            above = x;
            x = over_pivot(sum, i);
            b.set(i, x);
        }
    }

    // The steps of the elimination, transposed and in reverse.
    template <class Group> ORV_INLINE void lower_transposed(const Group& b) const
    {
        auto x = b[n - 1];
        for (i64 i = n - 2; i >= 0; --i) {
            const auto sum = minus_product(b[i], coefficient<op>(dl, i), x);
            if (exchanged(i)) b.set(i + 1, sum);
            else b.set(i + 1, x), x = sum;
        }
        b.set(0, x);
    }
};

template <Transposition op, class T> void gtts2(const Factors<op, T>& factors, i64 nrhs, const T* d, T* b, i64 ldb)
{
    if (factors.n <= 0 || nrhs <= 0) return;
    with_reciprocals<op == Transposition::conjugate>(factors.n, d, nrhs, [&](const T* reciprocals) {
        if (reciprocals != nullptr)
            return in_groups(nrhs, b, ldb, [&](const auto& group) {
                factors.solve(group, [&](auto row, i64 i) ORV_INLINE_LAMBDA { return reciprocals[i] * row; });
            });
        for (i64 j = 0; j < nrhs; ++j)
            factors.solve(Group<T, 1>{b + j * ldb, ldb},
                          [&](auto row, i64 i) ORV_INLINE_LAMBDA { return row / coefficient<op>(d, i); });
    });
}

template <class T>
void gtts2(i64 itrans, i64 n, i64 nrhs, const T* dl, const T* d, const T* du, const T* du2, const i64* ipiv, T* b,
           i64 ldb)
{
    if (itrans == 0) gtts2<Transposition::none, T>({n, dl, du, du2, ipiv}, nrhs, d, b, ldb);
    else if (!is_complex<T> || itrans == 1) gtts2<Transposition::plain, T>({n, dl, du, du2, ipiv}, nrhs, d, b, ldb);
    else if constexpr (is_complex<T>) gtts2<Transposition::conjugate, T>({n, dl, du, du2, ipiv}, nrhs, d, b, ldb);
}

} // namespace
} // namespace orv::lapack

using namespace orv;

#define GTTS2(name, T)                                                                                                 \
    ORV_EXPORT void LAPACK_PS(name)(const i64* itrans, const i64* n, const i64* nrhs, const T* dl, const T* d,         \
                                    const T* du, const T* du2, const i64* ipiv, T* b, const i64* ldb)                  \
    {                                                                                                                  \
        lapack::gtts2(*itrans, *n, *nrhs, dl, d, du, du2, ipiv, b, *ldb);                                              \
    }

GTTS2(sgtts2, float)
GTTS2(dgtts2, double)
GTTS2(cgtts2, cpx<float>)
GTTS2(zgtts2, cpx<double>)
