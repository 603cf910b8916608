// Rank-one update: A(0:m, 0:n) := A + alpha*x*op(y), op(y) being y^T, or y^H in gerc.
//
// Each column gets x times the one rounded factor alpha*op(y)(j). A factor of zero, and an alpha of zero, leave the
// column unread, so NaN in x does not reach it. Negative strides address a vector from its far end.
#include "blas/ger.h"

#include "blas/rank_update.h"
#include "frame/kernels/blas.h"

namespace orv {
namespace {

using namespace blas;

template <class T>
void rank_one(bool conjugated, i64 m, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy, T* a, i64 lda)
{
    if (m <= 0 || n <= 0 || alpha == zero<T>) return;
    const RankUpdate<T, 1> update = {factor<T>(alpha, conjugated), {{m, x, incx}}, {n, y, incy}};
    update_columns(rectangle(a, lda, m, n), {0, n}, update, Diagonal::general, false);
}

} // namespace

template <class T> void ger(i64 m, i64 n, T alpha, const T* x, i64 incx, const T* y, i64 incy, T* a, i64 lda)
{
    rank_one(false, m, n, alpha, x, incx, y, incy, a, lda);
}
template void ger(i64, i64, double, const double*, i64, const double*, i64, double*, i64);

#define GER(name, T, conjugated)                                                                                       \
    ORV_EXPORT void BLAS(name)(const i64* m, const i64* n, const T* alpha, const T* x, const i64* incx, const T* y,    \
                               const i64* incy, T* a, const i64* lda)                                                  \
    {                                                                                                                  \
        rank_one(conjugated, *m, *n, *alpha, x, *incx, y, *incy, a, *lda);                                             \
    }

GER(sger, float, false)
GER(dger, double, false)
GER(cgeru, cpx<float>, false)
GER(cgerc, cpx<float>, true)
GER(zgeru, cpx<double>, false)
GER(zgerc, cpx<double>, true)

} // namespace orv
