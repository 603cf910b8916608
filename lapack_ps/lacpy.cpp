// Scaled copies of matrices and triangles: ?lacpy2, ?lacpy3.
//
//   B := alpha*A + beta*B       on the part of A that uplo names
//
//   uplo   U: rows 0..j of column j, L: rows j..m-1, in either case; any other letter: the whole matrix
//   a      m by n, columns lda apart
//   b      lacpy2: columns ldb apart, element (i,j) for element (i,j) of a
//          lacpy3: packed, the part of one column right behind that of the column before
//
// Each product and the sum are rounded once; no factor is special, so a NaN in B stays even if beta is 0. What is
// outside of the part is neither read nor written. A and B do not overlap.
#include "frame/kernels/lapack_ps.h"
#include "frame/serv.h"
#include "frame/simd.h"

namespace orv::lapack {
namespace {

template <class T> struct Combination {
    factor<T> alpha, beta;
    T a, b;
    Combination(T a, T b) : alpha(a), beta(b), a(a), b(b) {}

    // y(0:n) := alpha*x(0:n) + beta*y(0:n)
    void apply(i64 n, const T* x, T* y) const
    {
        constexpr int lanes = vec<T>::lanes, most = lanes < 8 ? 8 / lanes : 1;
        each<T, most, 1>(
            n,
            [&]<int count>(i64 i, std::integral_constant<int, count>) ORV_INLINE_LAMBDA {
#pragma GCC unroll 8
                for (int r = 0; r < count; ++r) {
                    const i64 at = i + r * lanes;
                    storeu(y + at, alpha * loadu(x + at) + beta * loadu(y + at));
                }
            },
            [&](i64 i) ORV_INLINE_LAMBDA { y[i] = a * x[i] + b * y[i]; });
    }
};

struct RowRange {
    i64 from, to;
};

// part(j): the rows of column j that belong to the part. target(j, rows): where they go.
template <class T, class Target, class Part>
void copy_columns(i64 n, T alpha, const T* a, i64 lda, T beta, Target target, Part part)
{
    const Combination<T> combination(alpha, beta);
    for (i64 j = 0; j < n; ++j) {
        const RowRange rows = part(j);
        if (rows.from < rows.to) combination.apply(rows.to - rows.from, a + rows.from + j * lda, target(j, rows));
    }
}

template <class T, class Target>
void lacpy(const char* uplo, i64 m, i64 n, const T* a, i64 lda, T alpha, T beta, Target target)
{
    if (orv_serv_lsame(uplo, "U", 1, 1))
        copy_columns(n, alpha, a, lda, beta, target, [=](i64 j) { return RowRange{0, min(j + 1, m)}; });
    else if (orv_serv_lsame(uplo, "L", 1, 1))
        copy_columns(n, alpha, a, lda, beta, target, [=](i64 j) { return RowRange{j, m}; });
    else copy_columns(n, alpha, a, lda, beta, target, [=](i64) { return RowRange{0, m}; });
}

template <class T> auto at_its_place(T* b, i64 ldb)
{
    return [=](i64 j, RowRange rows) { return b + rows.from + j * ldb; };
}
template <class T> auto packed(T* b)
{
    return [b](i64, RowRange rows) mutable {
        T* const here = b;
        b += rows.to - rows.from;
        return here;
    };
}

} // namespace

#define LACPY(t, T)                                                                                                    \
    ORV_EXPORT void LAPACK_PS(t##lacpy2)(const char* uplo, const i64* m, const i64* n, const T* a, const i64* lda,     \
                                         const T* alpha, T* b, const i64* ldb, const T* beta)                          \
    {                                                                                                                  \
        lacpy(uplo, *m, *n, a, *lda, *alpha, *beta, at_its_place(b, *ldb));                                            \
    }                                                                                                                  \
    ORV_EXPORT void LAPACK_PS(t##lacpy3)(const char* uplo, const i64* m, const i64* n, const T* a, const i64* lda,     \
                                         const T* alpha, T* b, const T* beta)                                          \
    {                                                                                                                  \
        lacpy(uplo, *m, *n, a, *lda, *alpha, *beta, packed(b));                                                        \
    }

LACPY(s, float)
LACPY(d, double)
LACPY(c, cpx<float>)
LACPY(z, cpx<double>)

} // namespace orv::lapack
