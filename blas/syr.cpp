// Updates of rank one and two of one triangle of a symmetric or, if complex, Hermitian matrix, full or packed:
//
//   A := A + alpha*x*x^H                             ?syr, ?spr, ?her, ?hpr       alpha is real
//   A := A + alpha*x*y^H + conj(alpha)*y*x^H         ?syr2, ?spr2, ?her2, ?hpr2
//
//   uplo    U: the upper triangle is stored, anything else: the lower; the other triangle is neither read nor written
//   n       the order; not positive: nothing is done
//   alpha   0: nothing is done
//   x, y    n elements each; a negative stride starts at the far end, 0 takes the one location for all elements
//   a       columns lda apart; or packed, column after column without gaps
//
// Each element is computed alone, in the order of rank_update.h, with factors rounded once a column:
//
//   A(i, j) := A(i, j) + x(i)*(alpha*conj(x(j)))
//   A(i, j) := (A(i, j) + x(i)*(alpha*conj(y(j)))) + y(i)*conj(alpha*x(j))
//
// Columns whose factors are zero are left alone. The diagonal of a Hermitian matrix is real: imaginary parts there
// count as zero whatever they hold, and are zero afterwards. No memory is taken but 16 KiB of the stack for strided
// vectors.
//
// _in_thread: a member's share of a full triangle, n neighbouring columns. Members of a team share no element of A.
//
//   upper   the columns from `first` on, so that local column j has first + 1 + j rows. a points to the top of the
//           member's first column, and x and y to what the plain routine of order first + n would be given: their
//           elements 0..first+n-1 are read.
//   lower   the mirror image: `first` counts from the last column backwards, so `first` columns follow the member's own
//           and local column j has first + n - j rows. a points to the diagonal in the member's first column, and x and
//           y are what the plain routine for the triangle of order first + n that starts there would be given.
//
// With `first` of 0 it is the plain routine.
//
// _cnr: the twin that a routine leaves for unless the reproducibility state is 1. It fixes the order above: the bits of
// the result depend on nothing but the values of the operands. The fast bodies keep that order too, so they are shared.
#include "blas/rank_update.h"
#include "frame/kernels/blas.h"
#include "frame/serv.h"

namespace orv::blas {
namespace {

template <class T> RankUpdate<T, 1> rank_one(i64 n, real_t<T> alpha, const T* x, i64 incx)
{
    const StridedVector<T> v{n, x, incx};
    return {factor<T>(element<T>::make(alpha), true), {v}, v, true};
}
template <class T> RankUpdate<T, 2> rank_two(i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy)
{
    return {alpha, {n, x, incx}, {n, y, incy}};
}

template <class Scalar> bool nothing_to_do(i64 n, Scalar alpha) { return n <= 0 || alpha == zero<Scalar>; }

template <class T> constexpr Diagonal diagonal = is_complex<T> ? Diagonal::real : Diagonal::general;

// n columns of a triangle of order first + n: the last ones of the upper, the first ones of the lower.
template <class T, int terms>
void update_full(char uplo, i64 n, const RankUpdate<T, terms>& update, T* a, i64 lda, i64 first)
{
    if (nothing_to_do(n, update.alpha.scalar())) return;
    const i64 order = first + n;
    const bool upper = half_of(uplo) == Half::upper;
    update_columns(full_triangle(half_of(uplo), upper ? a - first * lda : a, lda, order),
                   upper ? Columns{first, order} : Columns{0, n}, update, diagonal<T>, true);
}

template <class T, int terms> void update_packed(char uplo, i64 n, const RankUpdate<T, terms>& update, T* a)
{
    if (nothing_to_do(n, update.alpha.scalar())) return;
    update_columns(packed_triangle(half_of(uplo), a, n), {0, n}, update, diagonal<T>, false);
}

// A routine's twin takes over where results are to be reproducible. A call with nothing to do doesn't ask.
template <class T> bool leaves_for_twin(i64 n, T alpha)
{
    return !nothing_to_do(n, alpha) && orv_serv_cbwr_get(1) != 1;
}

#define RANK_ONE(T) const char *uplo, const i64 *n, const real_t<T>*alpha, const T *x, const i64 *incx, T *a
#define RANK_TWO(T)                                                                                                    \
    const char *uplo, const i64 *n, const T *alpha, const T *x, const i64 *incx, const T *y, const i64 *incy, T *a

template <class T> void syr(RANK_ONE(T), const i64* lda, const i64* first)
{
    update_full(*uplo, *n, rank_one(*first + *n, *alpha, x, *incx), a, *lda, *first);
}
template <class T> void syr2(RANK_TWO(T), const i64* lda, const i64* first)
{
    update_full(*uplo, *n, rank_two(*first + *n, *alpha, x, *incx, y, *incy), a, *lda, *first);
}
template <class T> void spr(RANK_ONE(T)) { update_packed(*uplo, *n, rank_one(*n, *alpha, x, *incx), a); }
template <class T> void spr2(RANK_TWO(T)) { update_packed(*uplo, *n, rank_two(*n, *alpha, x, *incx, y, *incy), a); }

constexpr i64 whole = 0; // the share that starts with column 0

} // namespace

#define SYR(name, T)                                                                                                   \
    ORV_EXPORT void BLAS(name)(RANK_ONE(T), const i64* lda) { syr(uplo, n, alpha, x, incx, a, lda, &whole); }
#define SYR_IN_THREAD(name, T)                                                                                         \
    ORV_EXPORT void BLAS(name)(RANK_ONE(T), const i64* lda, const i64* first)                                          \
    {                                                                                                                  \
        syr(uplo, n, alpha, x, incx, a, lda, first);                                                                   \
    }
#define SPR(name, T)                                                                                                   \
    ORV_EXPORT void BLAS(name)(RANK_ONE(T)) { spr(uplo, n, alpha, x, incx, a); }

SYR(xssyr, float)
SYR(xdsyr, double)
SYR(cher, cpx<float>)
SYR(zher, cpx<double>)
SYR_IN_THREAD(xssyr_in_thread, float)
SYR_IN_THREAD(xdsyr_in_thread, double)
SPR(sspr, float)
SPR(dspr, double)
SPR(chpr, cpx<float>)
SPR(zhpr, cpx<double>)

#define SYR2(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(RANK_TWO(T), const i64* lda) { syr2(uplo, n, alpha, x, incx, y, incy, a, lda, &whole); }
#define SYR2_IN_THREAD(name, T)                                                                                        \
    ORV_EXPORT void BLAS(name)(RANK_TWO(T), const i64* lda, const i64* first)                                          \
    {                                                                                                                  \
        syr2(uplo, n, alpha, x, incx, y, incy, a, lda, first);                                                         \
    }
#define SPR2(name, T)                                                                                                  \
    ORV_EXPORT void BLAS(name)(RANK_TWO(T)) { spr2(uplo, n, alpha, x, incx, y, incy, a); }

SYR2(cher2, cpx<float>)
SYR2(zher2, cpx<double>)
SPR2(dspr2, double)
SPR2(chpr2, cpx<float>)
SPR2(zhpr2, cpx<double>)

// The routines that have a twin, each with it.
#define SYR2_BY_STATE(name, T)                                                                                         \
    SYR2(name##_cnr, T)                                                                                                \
    ORV_EXPORT void BLAS(name)(RANK_TWO(T), const i64* lda)                                                            \
    {                                                                                                                  \
        if (leaves_for_twin(*n, *alpha)) BLAS(name##_cnr)(uplo, n, alpha, x, incx, y, incy, a, lda);                   \
        else syr2(uplo, n, alpha, x, incx, y, incy, a, lda, &whole);                                                   \
    }
#define SYR2_IN_THREAD_BY_STATE(name, T)                                                                               \
    SYR2_IN_THREAD(name##_cnr, T)                                                                                      \
    ORV_EXPORT void BLAS(name)(RANK_TWO(T), const i64* lda, const i64* first)                                          \
    {                                                                                                                  \
        if (leaves_for_twin(*n, *alpha)) BLAS(name##_cnr)(uplo, n, alpha, x, incx, y, incy, a, lda, first);            \
        else syr2(uplo, n, alpha, x, incx, y, incy, a, lda, first);                                                    \
    }
#define SPR2_BY_STATE(name, T)                                                                                         \
    SPR2(name##_cnr, T)                                                                                                \
    ORV_EXPORT void BLAS(name)(RANK_TWO(T))                                                                            \
    {                                                                                                                  \
        if (leaves_for_twin(*n, *alpha)) BLAS(name##_cnr)(uplo, n, alpha, x, incx, y, incy, a);                        \
        else spr2(uplo, n, alpha, x, incx, y, incy, a);                                                                \
    }

SYR2_BY_STATE(xssyr2, float)
SYR2_BY_STATE(xdsyr2, double)
SYR2_IN_THREAD_BY_STATE(xssyr2_in_thread, float)
SYR2_IN_THREAD_BY_STATE(xdsyr2_in_thread, double)
SPR2_BY_STATE(sspr2, float)

} // namespace orv::blas
