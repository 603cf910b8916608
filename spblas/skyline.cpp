// Skylines: products and solves. Row i of a lower triangle, or column i of an upper one, is stored from its first
// element that is not zero to the diagonal: val[pntr[i] - pntr[0]] to val[pntr[i + 1] - pntr[0] - 1]. Dense operands
// are by columns. op 1 A, else its transpose; uplo 1 lower, else upper; nonunit 0: ones stand on the diagonal, whatever
// is stored.
//
//   skymmgk   C := C + alpha*op(A)*B, A triangular
//   skymmsk   the same, A symmetric
//   skymmkk   the same, A anti-symmetric; the diagonal is not used
//   skysvk    y := op(A)^-1*y, A triangular
//
// first, last: columns of B and C, counted from 1. Where the profile of i lies along a row of op(A) it goes into a dot
// product, else a multiple of it is added; both by the public routines, which a program may replace.
#include "frame/kernels/blas.h"
#include "spblas/quotient.h"
#include "spblas/vectors.h"

#define SPBLAS_PUBLIC(name) ORV_JOIN(SPBLAS_PUBLIC_, ORV_SPBLAS)(name)
#define SPBLAS_PUBLIC_spblas(name) orv_blas_##name
#define SPBLAS_PUBLIC_spblas_lp64(name) orv_blas_lp64_##name
// Complex dot products with 64-bit integers are the branch's own.
#define SPBLAS_COMPLEX_DOT(name) ORV_JOIN(SPBLAS_COMPLEX_DOT_, ORV_SPBLAS)(name)
#define SPBLAS_COMPLEX_DOT_spblas(name) BLAS(name)
#define SPBLAS_COMPLEX_DOT_spblas_lp64(name) orv_blas_lp64_##name

namespace orv::ORV_SPBLAS {

template <class T> using Axpy = void(const Int* n, const T* alpha, const T* x, const Int* incx, T* y, const Int* incy);
template <class T> using Dot = T(const Int* n, const T* x, const Int* incx, const T* y, const Int* incy);
template <class T> using Dotu = void(T* result, const Int* n, const T* x, const Int* incx, const T* y, const Int* incy);
extern "C" {
Axpy<float> SPBLAS_PUBLIC(saxpy);
Axpy<double> SPBLAS_PUBLIC(daxpy);
Axpy<cpx<float>> SPBLAS_PUBLIC(caxpy);
Axpy<cpx<double>> SPBLAS_PUBLIC(zaxpy);
Dot<float> SPBLAS_PUBLIC(sdot);
Dot<double> SPBLAS_PUBLIC(ddot);
Dotu<cpx<float>> SPBLAS_COMPLEX_DOT(cdotu);
Dotu<cpx<double>> SPBLAS_COMPLEX_DOT(zdotu);
}

namespace {

template <class T> struct Routines;
#define SPBLAS_ROUTINES(T, axpy_, dot_)                                                                                \
    template <> struct Routines<T> {                                                                                   \
        static constexpr auto& axpy = axpy_;                                                                           \
        static constexpr auto& dot = dot_;                                                                             \
    };
SPBLAS_ROUTINES(float, SPBLAS_PUBLIC(saxpy), SPBLAS_PUBLIC(sdot))
SPBLAS_ROUTINES(double, SPBLAS_PUBLIC(daxpy), SPBLAS_PUBLIC(ddot))
SPBLAS_ROUTINES(cpx<float>, SPBLAS_PUBLIC(caxpy), SPBLAS_COMPLEX_DOT(cdotu))
SPBLAS_ROUTINES(cpx<double>, SPBLAS_PUBLIC(zaxpy), SPBLAS_COMPLEX_DOT(zdotu))

constexpr Int step = 1;

template <class T> void axpy(Int n, T f, const T* x, T* y) { Routines<T>::axpy(&n, &f, x, &step, y, &step); }
template <class T> T dot(Int n, const T* x, const T* y)
{
    if constexpr (is_complex<T>) {
        T result;
        Routines<T>::dot(&result, &n, x, &step, y, &step);
        return result;
    } else return Routines<T>::dot(&n, x, &step, y, &step);
}

// The profile of row or column i: its elements and where they begin. The last one is on the diagonal.
template <class T> struct Profile {
    const T* val;
    Int length, from;
    Profile(const T* a, const Int* pntr, Int i)
        : val(a + (pntr[i] - pntr[0])), length(pntr[i + 1] - pntr[i]), from(i + 1 - length)
    {
    }
    Int beside() const { return length > 0 ? length - 1 : 0; } // without the diagonal
};

// What the profiles of a matrix do: along rows of op(A) and along columns of it, with their signs.
struct Acts {
    bool along_rows, along_columns, unit, diagonal;
    bool negate_rows, negate_columns;
};

template <class T>
[[gnu::noinline]] void multiply(const Acts& acts, const Int* first, const Int* last, const Int* m, const Int* nd,
                                T alpha, const T* val, const Int* pntr, const T* b, i64 ldb, T* c, i64 ldc)
{
    const T for_rows = negate_if(acts.negate_rows, alpha), for_columns = negate_if(acts.negate_columns, alpha);
    for (Int j = *first - 1, end = *last < *nd ? *last : *nd; j < end; ++j) {
        const T* x = b + j * ldb;
        T* y = c + j * ldc;
        for (Int i = 0; i < *m; ++i) {
            const Profile<T> p(val, pntr, i);
            // An element on the diagonal goes with one of the two.
            const bool with_rows = acts.diagonal && acts.along_rows, with_columns = acts.diagonal && !acts.along_rows;
            if (acts.along_rows) y[i] += for_rows * dot(with_rows ? p.length : p.beside(), p.val, x + p.from);
            if (acts.along_columns) axpy(with_columns ? p.length : p.beside(), for_columns * x[i], p.val, y + p.from);
            if (acts.unit) y[i] += alpha * x[i];
        }
    }
}

template <class T>
void triangular(const Int* op, const Int* first, const Int* last, const Int* m, const Int* nd, const Int* uplo,
                const Int* nonunit, const T* alpha, const T* val, const Int* pntr, const T* b, const Int* ldb, T* c,
                const Int* ldc)
{
    const bool along_rows = (*op == 1) == (*uplo == 1), unit = *nonunit == 0;
    multiply({along_rows, !along_rows, unit, !unit, false, false}, first, last, m, nd, *alpha, val, pntr, b, *ldb, c,
             *ldc);
}
template <class T>
void symmetric(const Int* first, const Int* last, const Int* m, const Int* nd, const Int*, const Int* nonunit,
               const T* alpha, const T* val, const Int* pntr, const T* b, const Int* ldb, T* c, const Int* ldc)
{
    const bool unit = *nonunit == 0;
    multiply({true, true, unit, !unit, false, false}, first, last, m, nd, *alpha, val, pntr, b, *ldb, c, *ldc);
}
template <class T>
void anti_symmetric(const Int* op, const Int* first, const Int* last, const Int* m, const Int* nd, const Int* uplo,
                    const Int*, const T* alpha, const T* val, const Int* pntr, const T* b, const Int* ldb, T* c,
                    const Int* ldc)
{
    const bool rows_as_stored = (*op == 1) == (*uplo == 1);
    multiply({true, true, false, false, !rows_as_stored, rows_as_stored}, first, last, m, nd, *alpha, val, pntr, b,
             *ldb, c, *ldc);
}

template <class T>
void solve(const Int* op, const Int* uplo, const Int* nonunit, const Int* n, const T* val, const Int* pntr, T* y)
{
    const bool along_rows = (*op == 1) == (*uplo == 1);
    for (Int done = 0; done < *n; ++done) {
        const Int i = along_rows ? done : *n - 1 - done;
        const Profile<T> p(val, pntr, i);
        if (along_rows) y[i] -= dot(p.beside(), p.val, y + p.from);
        if (*nonunit != 0) y[i] = divide(y[i], p.val[p.length - 1]);
        if (!along_rows) axpy(p.beside(), -y[i], p.val, y + p.from);
    }
}

} // namespace

SPBLAS_SDCZ(14, , skymmgk, triangular)
SPBLAS_SDCZ(13, , skymmsk, symmetric)
SPBLAS_SDCZ(14, , skymmkk, anti_symmetric)
SPBLAS_SDCZ(7, , skysvk, solve)

} // namespace orv::ORV_SPBLAS
