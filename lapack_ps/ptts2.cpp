// Solves A*X = B with a Hermitian tridiagonal A that is factored without exchanges (pttrf).
//
//   iuplo    of complex numbers: 1: A = U^H*D*U with e on the superdiagonal of U; else A = L*D*L^H, e below that of L
//   d        the diagonal of D, real
//   e        n - 1 elements
//   b        n by nrhs, columns ldb apart; becomes X
//
// From four right-hand sides on, the reciprocals of d are put into a block of memory and multiplied with; with fewer,
// or where there is no memory, each element is divided. n = 1 is one call of the public scaling. n < 1 does nothing.
//
// Published source: Anderson et al., LAPACK Users' Guide, 3rd ed., 1999 (ptts2).
#include "frame/kernels/lapack_ps.h"
#include "lapack_ps/front_ends.h"
#include "lapack_ps/reciprocals.h"
#include "lapack_ps/right_sides.h"

namespace orv::lapack {
namespace {

// Downwards b(i) := b(i) - e(i-1)*b(i-1), and upwards b(i) := b(i)/d(i) - e(i)*b(i+1), one of the two with conj(e).
template <bool upper, class T> struct Factors {
    i64 n;
    const T* e;

    T down(i64 i) const { return upper ? conj(e[i]) : e[i]; }
    T up(i64 i) const { return upper ? e[i] : conj(e[i]); }

    template <class Group, class OverPivot> void solve(const Group& b, const OverPivot& over_pivot) const
    {
        auto x = b[0];
        for (i64 i = 1; i < n; ++i) {
            x = minus_product(b[i], down(i - 1), x);
            b.set(i, x);
        }
        x = over_pivot(x, n - 1);
        b.set(n - 1, x);
        for (i64 i = n - 2; i >= 0; --i) {
            x = minus_product(over_pivot(b[i], i), up(i), x);
            b.set(i, x);
        }
    }
};

template <bool upper, class T> void ptts2(i64 n, i64 nrhs, const real_t<T>* d, const T* e, T* b, i64 ldb)
{
    using R = real_t<T>;
    if (n < 1) return;
    if (n == 1) return front::scal(nrhs, 1 / d[0], b, ldb);
    const Factors<upper, T> factors{n, e};
    with_reciprocals<false>(n, d, nrhs, [&](const R* reciprocals) {
        if (reciprocals != nullptr)
            return in_groups(nrhs, b, ldb, [&](const auto& group) {
                factors.solve(group, [&](auto row, i64 i) ORV_INLINE_LAMBDA { return reciprocals[i] * row; });
            });
        for (i64 j = 0; j < nrhs; ++j)
            factors.solve(Group<T, 1>{b + j * ldb, ldb}, [&](auto row, i64 i) ORV_INLINE_LAMBDA { return row / d[i]; });
    });
}

} // namespace
} // namespace orv::lapack

using namespace orv;

#define PTTS2(name, T)                                                                                                 \
    ORV_EXPORT void LAPACK_PS(name)(const i64* n, const i64* nrhs, const T* d, const T* e, T* b, const i64* ldb)       \
    {                                                                                                                  \
        lapack::ptts2<false>(*n, *nrhs, d, e, b, *ldb);                                                                \
    }
#define PTTS2_COMPLEX(name, T)                                                                                         \
    ORV_EXPORT void LAPACK_PS(name)(const i64* iuplo, const i64* n, const i64* nrhs, const real_t<T>* d, const T* e,   \
                                    T* b, const i64* ldb)                                                              \
    {                                                                                                                  \
        (*iuplo == 1 ? lapack::ptts2<true, T> : lapack::ptts2<false, T>)(*n, *nrhs, d, e, b, *ldb);                    \
    }

PTTS2(sptts2, float)
PTTS2(dptts2, double)
PTTS2_COMPLEX(cptts2, cpx<float>)
PTTS2_COMPLEX(zptts2, cpx<double>)
