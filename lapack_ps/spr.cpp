// Update of rank one of a complex symmetric matrix in packed storage: cspr.
//
//   A := A + alpha*x*x^T       nothing is conjugated
//
//   uplo   U: the upper triangle is packed, column after column, anything else: the lower one
//   n      not positive: nothing is done
//   alpha  (0, 0): nothing is done
//   x      n elements; a negative stride starts at the far end
//
// A(i,j) := A(i,j) + x(i)*(alpha*x(j)), each product and sum by the plain formulas, for every column with x(j) other
// than (0, 0); a column with x(j) = (0, 0) is left alone, so NaN in x does not reach it.
#include "frame/kernels/lapack_ps.h"
#include "frame/serv.h"
#include "frame/simd.h"

namespace orv::lapack {
namespace {

// y(0:n) += t*x(0:n)
template <class T> void add(i64 n, T t, const T* x, i64 inc, T* y)
{
    constexpr i64 lanes = vec<T>::lanes;
    i64 i = 0;
    if (inc == 1) {
        const factor<T> f(t);
        for (; i + lanes <= n; i += lanes) storeu(y + i, loadu(y + i) + f * loadu(x + i));
    }
    for (; i < n; ++i) y[i] += t * x[i * inc];
}

template <class T> void spr(const char* uplo, i64 n, T alpha, const T* x, i64 inc, T* a)
{
    if (n <= 0 || alpha == zero<T>) return;
    x = first(x, n, inc);
    const bool upper = orv_serv_lsame(uplo, "U", 1, 1) != 0;
    for (i64 j = 0; j < n; ++j) {
        const i64 from = upper ? 0 : j, count = upper ? j + 1 : n - j;
        if (x[j * inc] != zero<T>) add(count, alpha * x[j * inc], x + from * inc, inc, a);
        a += count;
    }
}

} // namespace

ORV_EXPORT void LAPACK_PS(cspr)(const char* uplo, const i64* n, const cpx<float>* alpha, const cpx<float>* x,
                                const i64* incx, cpx<float>* ap)
{
    spr(uplo, *n, *alpha, x, *incx, ap);
}

} // namespace orv::lapack
