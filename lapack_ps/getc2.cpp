// Factorisation with complete pivoting, in place: A = P*L*U*Q, L with ones on its diagonal.
//
//   a       order n, columns lda apart
//   ipiv    counts from 1: row i changed places with row ipiv(i)
//   jpiv    counts from 1: column i changed places with column jpiv(i)
//   info    0, or the last i, counted from 1, whose pivot was too small. The threshold, set once, stands in its place.
//
// A pivot is too small below max(eps*m, smlnum), m being the largest magnitude in A and smlnum the smallest number
// whose reciprocal does not overflow, divided by eps. Of equal candidates the last in the order of storage is the
// pivot. NaN is never chosen; where nothing else is left, nothing moves. Rows and columns change places, and what is
// left is updated, by the public routines. No memory is taken.
//
// Published source: Anderson et al., LAPACK Users' Guide, 3rd ed., 1999 (getc2).
#include "frame/kernels/lapack_ps.h"
#include "lapack_ps/front_ends.h"
#include "lapack_ps/scalar.h"

namespace orv::lapack {
namespace {

template <class T> struct Pivot {
    i64 row, column;
    real_t<T> magnitude;
};

// The largest of the columns and rows from i on.
template <class T> Pivot<T> find_pivot(i64 i, i64 n, const T* a, i64 lda)
{
    Pivot<T> pivot{i, i, 0};
    for (i64 q = i; q < n; ++q)
        for (i64 p = i; p < n; ++p)
            if (const auto magnitude = modulus(a[p + q * lda]); pivot.magnitude <= magnitude) pivot = {p, q, magnitude};
    return pivot;
}

template <class T> void getc2(i64 n, T* a, i64 lda, i64* ipiv, i64* jpiv, i64* info)
{
    using R = real_t<T>;
    *info = 0;
    if (n == 0) return;
    const R eps = front::lamch<R>("P");
    R smlnum = front::lamch<R>("S") / eps, bignum = 1 / smlnum;
    front::labad(&smlnum, &bignum);

    R threshold = smlnum; // all that counts for a single element
    const auto guard = [&](i64 i) {
        T& pivot = a[i + i * lda];
        if (modulus(pivot) < threshold) pivot = element<T>::make(threshold), *info = i + 1;
        return pivot;
    };
    for (i64 i = 0; i < n - 1; ++i) {
        const Pivot<T> found = find_pivot(i, n, a, lda);
        if (i == 0 && found.magnitude * eps > smlnum) threshold = found.magnitude * eps;
        if (found.row != i) front::swap(n, a + found.row, lda, a + i, lda);
        if (found.column != i) front::swap(n, a + found.column * lda, 1, a + i * lda, 1);
        ipiv[i] = found.row + 1, jpiv[i] = found.column + 1;

        const T pivot = guard(i);
        T* const below = a + i + 1 + i * lda;
        const i64 rest = n - 1 - i;
        for (i64 k = 0; k < rest; ++k) below[k] = quotient(below[k], pivot);
        T* const right = a + i + (i + 1) * lda;
        front::geru(rest, rest, -one<T>, below, 1, right, lda, right + 1, lda);
    }
    guard(n - 1);
    ipiv[n - 1] = jpiv[n - 1] = n;
}

} // namespace
} // namespace orv::lapack

using namespace orv;

#define GETC2(name, T)                                                                                                 \
    ORV_EXPORT void LAPACK_PS(name)(const i64* n, T* a, const i64* lda, i64* ipiv, i64* jpiv, i64* info)               \
    {                                                                                                                  \
        lapack::getc2(*n, a, *lda, ipiv, jpiv, info);                                                                  \
    }

GETC2(sgetc2, float)
GETC2(dgetc2, double)
GETC2(cgetc2, cpx<float>)
GETC2(zgetc2, cpx<double>)
