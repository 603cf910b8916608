// The loops that anyone would write, as a peer for the routines of extended and mixed precision, under the same names
// and with the same arguments. WIDE is the number that extra precision is computed in:
//
//   0  a pair of doubles, the accurate sums and products written down as they are defined
//   1  __float128
//   2  dd_real of the library QD
//
// Plain precision uses plain numbers in all three, in the order of the routines: compiled by -O3 -msse4.2 that is what
// they have to reach.
#include <cstdint>

#if WIDE == 2
#include <qd/dd_real.h>
#endif

namespace {

using i64 = std::int64_t;

#if WIDE == 0
struct Wide {
    double h, l;
    Wide(double a = 0) : h(a), l(0) {}
    Wide(double h, double l) : h(h), l(l) {}
};
Wide times(double a, double b)
{
    const double p = a * b, ca = a * 134217729.0, cb = b * 134217729.0;
    const double a1 = ca - (ca - a), b1 = cb - (cb - b), a2 = a - a1, b2 = b - b1;
    return {p, ((a1 * b1 - p) + a1 * b2 + b1 * a2) + a2 * b2};
}
Wide operator+(Wide a, Wide b)
{
    const double s1 = a.h + b.h;
    double v = s1 - a.h;
    double s2 = (b.h - v) + (a.h - (s1 - v));
    const double t1 = a.l + b.l;
    v = t1 - a.l;
    double t2 = (b.l - v) + (a.l - (t1 - v));
    s2 += t1;
    const double t3 = s1 + s2;
    s2 -= t3 - s1;
    t2 += s2;
    const double h = t3 + t2;
    return {h, t2 - (h - t3)};
}
Wide operator*(Wide a, double b)
{
    const Wide p = times(a.h, b);
    const double c = a.l * b, t1 = p.h + c, t2 = (c - (t1 - p.h)) + p.l, h = t1 + t2;
    return {h, t2 - (h - t1)};
}
double rounded(Wide a) { return a.h + a.l; }
#elif WIDE == 1
using Wide = __float128;
Wide times(double a, double b) { return static_cast<Wide>(a) * b; }
double rounded(Wide a) { return static_cast<double>(a); }
#else
using Wide = dd_real;
Wide times(double a, double b)
{
    double error;
    const double p = qd::two_prod(a, b, error);
    return {p, error};
}
double rounded(const Wide& a) { return to_double(a); }
#endif

// How sums are kept: in the precision of the operands, or wide.
template <class T> struct Plain {
    using Sum = T;
    static Sum product(T a, T b) { return a * b; }
};
struct Extra {
    using Sum = Wide;
    static Sum product(double a, double b) { return times(a, b); }
};
double rounded(double a) { return a; }

template <class P, class T> typename P::Sum sum_of(i64 n, const T* x, i64 incx, const T* y, i64 incy)
{
    typename P::Sum sum = 0;
    for (i64 i = 0; i < n; ++i) sum = sum + P::product(x[i * incx], y[i * incy]);
    return sum;
}
template <class P, class T> T closed(typename P::Sum sum, T alpha, T beta, T r)
{
    return static_cast<T>(rounded(sum * alpha + P::product(r, beta)));
}

template <class P, class T>
void gemv(bool by_rows, i64 m, i64 n, T alpha, const T* a, i64 lda, const T* x, T beta, T* y)
{
    for (i64 i = 0; i < m; ++i)
        y[i] =
            closed<P>(by_rows ? sum_of<P>(n, a + i * lda, 1, x, 1) : sum_of<P>(n, a + i, lda, x, 1), alpha, beta, y[i]);
}
template <class P, class T> void symv(i64 n, T alpha, const T* a, i64 lda, const T* x, T beta, T* y)
{
    for (i64 i = 0; i < n; ++i) {
        typename P::Sum sum = 0;
        for (i64 j = 0; j < i; ++j) sum = sum + P::product(a[j + i * lda], x[j]);
        for (i64 j = i; j < n; ++j) sum = sum + P::product(a[i + j * lda], x[j]);
        y[i] = closed<P>(sum, alpha, beta, y[i]);
    }
}
template <class P, class T>
void gemm(i64 m, i64 n, i64 k, T alpha, const T* a, i64 lda, const T* b, i64 ldb, T beta, T* c, i64 ldc)
{
    for (i64 i = 0; i < m; ++i)
        for (i64 j = 0; j < n; ++j)
            c[i + j * ldc] = closed<P>(sum_of<P>(k, a + i, lda, b + j * ldb, 1), alpha, beta, c[i + j * ldc]);
}

constexpr int extra = 214, no_trans = 111;

} // namespace

#define EXPORT extern "C" __attribute__((visibility("default")))

// Column-major, upper triangles, op(A) = A or its transpose, op(B) = B.
#define ROUTINES(t, T)                                                                                                 \
    EXPORT void blas_##t##dot_x_(const int*, const i64* n, const T* alpha, const T* x, const i64* incx, const T* beta, \
                                 const T* y, const i64* incy, T* r, const int* prec)                                   \
    {                                                                                                                  \
        if (*prec == extra) *r = closed<Extra>(sum_of<Extra>(*n, x, *incx, y, *incy), *alpha, *beta, *r);              \
        else *r = closed<Plain<T>>(sum_of<Plain<T>>(*n, x, *incx, y, *incy), *alpha, *beta, *r);                       \
    }                                                                                                                  \
    EXPORT void blas_##t##gemv_x_(const int* trans, const i64* m, const i64* n, const T* alpha, const T* a,            \
                                  const i64* lda, const T* x, const i64*, const T* beta, T* y, const i64*,             \
                                  const int* prec)                                                                     \
    {                                                                                                                  \
        const bool by_rows = *trans != no_trans;                                                                       \
        const i64 rows = by_rows ? *n : *m, columns = by_rows ? *m : *n;                                               \
        if (*prec == extra) gemv<Extra>(by_rows, rows, columns, *alpha, a, *lda, x, *beta, y);                         \
        else gemv<Plain<T>>(by_rows, rows, columns, *alpha, a, *lda, x, *beta, y);                                     \
    }                                                                                                                  \
    EXPORT void blas_##t##symv_x_(const int*, const i64* n, const T* alpha, const T* a, const i64* lda, const T* x,    \
                                  const i64*, const T* beta, T* y, const i64*, const int* prec)                        \
    {                                                                                                                  \
        if (*prec == extra) symv<Extra>(*n, *alpha, a, *lda, x, *beta, y);                                             \
        else symv<Plain<T>>(*n, *alpha, a, *lda, x, *beta, y);                                                         \
    }                                                                                                                  \
    EXPORT void blas_##t##gemm_x_(const int*, const int*, const i64* m, const i64* n, const i64* k, const T* alpha,    \
                                  const T* a, const i64* lda, const T* b, const i64* ldb, const T* beta, T* c,         \
                                  const i64* ldc, const int* prec)                                                     \
    {                                                                                                                  \
        if (*prec == extra) gemm<Extra>(*m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);                         \
        else gemm<Plain<T>>(*m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);                                     \
    }

ROUTINES(s, float)
ROUTINES(d, double)
