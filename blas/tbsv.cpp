// Band triangular solve: x := op(A)^-1 * x, A with k diagonals beside the main one, columns lda apart.
//
//   uplo    U: A is upper triangular, its diagonal in row k of the array; else lower, its diagonal in row 0
//   trans   N: op(A) = A; C: the conjugate transpose of complex matrices; anything else: the transpose
//   diag    U: ones on the diagonal, which is not read; else it is, and zeros on it give infinities or NaN
//
// n <= 0 leaves x alone; a negative incx addresses x from its far end. No memory is taken.
//
// Complex solves have two bodies: _f walks the band in strips like all triangles, _vial1 goes column by column through
// the vector kernels. Both read and write the same elements and treat special values alike.
#include "blas/triangle.h"
#include "frame/kernels/blas.h"
#include "frame/serv.h"

// The vector kernels by type.
#define VECTOR_KERNELS(T, axpy_name, dotu_name, dotc_name)                                                             \
    ORV_EXPORT void BLAS(axpy_name)(const orv::i64* n, const T* alpha, const T* x, const orv::i64* incx, T* y,         \
                                    const orv::i64* incy);                                                             \
    ORV_EXPORT void BLAS(dotu_name)(T * result, const orv::i64* n, const T* x, const orv::i64* incx, const T* y,       \
                                    const orv::i64* incy);                                                             \
    ORV_EXPORT void BLAS(dotc_name)(T * result, const orv::i64* n, const T* x, const orv::i64* incx, const T* y,       \
                                    const orv::i64* incy);                                                             \
    static void add_multiple(orv::i64 n, T alpha, const T* x, T* y, orv::i64 incy)                                     \
    {                                                                                                                  \
        const orv::i64 incx = 1;                                                                                       \
        BLAS(axpy_name)(&n, &alpha, x, &incx, y, &incy);                                                               \
    }                                                                                                                  \
    static T dot(bool conjugated, orv::i64 n, const T* x, const T* y, orv::i64 incy)                                   \
    {                                                                                                                  \
        const orv::i64 incx = 1;                                                                                       \
        T result;                                                                                                      \
        (conjugated ? BLAS(dotc_name) : BLAS(dotu_name))(&result, &n, x, &incx, y, &incy);                             \
        return result;                                                                                                 \
    }

VECTOR_KERNELS(orv::cpx<float>, xcaxpy_a, cdotu, xcdotc)
VECTOR_KERNELS(orv::cpx<double>, xzaxpy_a, zdotu, zdotc)

namespace orv::blas {
namespace {

template <class T> void by_strips(Form form, i64 n, i64 k, const T* a, i64 lda, T* x, i64 incx)
{
    in_place<Task::solve>(form, band_triangle(form.half, a, lda, n, k), n, x, incx);
}

template <class T> void by_columns(Form form, i64 n, i64 k, const T* a, i64 lda, T* x, i64 incx)
{
    const Storage<const T> band = band_triangle(form.half, a, lda, n, k);
    const auto solve = [=](i64 j) {
        const T* const column = band.column(j);
        const Rows rest = beside(form.half, band, {j, j + 1});
        const i64 rows = rest.to - rest.from;
        T* const others = x + (incx < 0 ? rest.to - 1 : rest.from) * incx; // the lowest address
        T* const own = x + j * incx;
        vec<T> v = load_first<1>(own);
        if (form.op != Op::none) {
            const T known = dot(form.op == Op::conjugate, rows, column + rest.from, others, incx);
            v = v - load_first<1>(&known);
        }
        if (!form.unit)
            v = form.op == Op::conjugate ? quotient<Op::conjugate>(v, column[j]) : quotient<Op::none>(v, column[j]);
        store_first<1>(own, v);
        if (form.op == Op::none) add_multiple(rows, -*own, column + rest.from, others, incx);
    };
    const bool up = ascending(Task::solve, form);
    for (i64 j = 0; j < n; ++j) solve(up ? j : n - 1 - j);
}

// The letters as the service layer reads them.
template <class T> Form form_by_service(const char* uplo, const char* trans, const char* diag)
{
    const auto is = [](const char* letter, char meaning) { return orv_serv_lsame(letter, &meaning, 1, 1) != 0; };
    return {is(uplo, 'U') ? Half::upper : Half::lower,
            is(trans, 'N')   ? Op::none
            : is(trans, 'C') ? Op::conjugate
                             : Op::transpose,
            is(diag, 'U')};
}

} // namespace

#define ARGUMENTS(T)                                                                                                   \
    const char *uplo, const char *trans, const char *diag, const i64 *n, const i64 *k, const T *a, const i64 *lda,     \
        T *x, const i64 *incx
#define TBSV(name, T, form_of_letters, body)                                                                           \
    ORV_EXPORT void BLAS(name)(ARGUMENTS(T))                                                                           \
    {                                                                                                                  \
        if (*n <= 0) return;                                                                                           \
        body(form_of_letters, *n, *k, a, *lda, first(x, *n, *incx), *incx);                                            \
    }

TBSV(stbsv, float, form_of<float>(*uplo, *trans, *diag), by_strips)
TBSV(dtbsv, double, form_of<double>(*uplo, *trans, *diag), by_strips)
TBSV(ctbsv_f, cpx<float>, form_by_service<cpx<float>>(uplo, trans, diag), by_strips)
TBSV(ztbsv_f, cpx<double>, form_by_service<cpx<double>>(uplo, trans, diag), by_strips)
TBSV(ctbsv_vial1, cpx<float>, form_of<cpx<float>>(*uplo, *trans, *diag), by_columns)
TBSV(ztbsv_vial1, cpx<double>, form_of<cpx<double>>(*uplo, *trans, *diag), by_columns)

// Short bands are too short for calls of vector kernels; columns of long and wide ones go four at a time.
constexpr bool in_strips(i64 n, i64 k) { return n < 64 || (n > 1000 && k > 500); }

ORV_EXPORT void BLAS(ctbsv)(ARGUMENTS(cpx<float>))
{
    // N in this case of the letter only.
    const bool strips = in_strips(*n, *k) || (*trans == 'N' && *n < 256);
    (strips ? BLAS(ctbsv_f) : BLAS(ctbsv_vial1))(uplo, trans, diag, n, k, a, lda, x, incx);
}

ORV_EXPORT void BLAS(ztbsv)(ARGUMENTS(cpx<double>))
{
    (in_strips(*n, *k) ? BLAS(ztbsv_f) : BLAS(ztbsv_vial1))(uplo, trans, diag, n, k, a, lda, x, incx);
}

} // namespace orv::blas
