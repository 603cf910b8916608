// CBLAS: cblas_daxpy with 32-bit integers; cblas_daxpy_64 and cblas_daxpy64_, the two spellings in use, with 64-bit
// ones. Complex scalars and arrays pass as void pointers, complex results go to a last argument of the ..._sub forms.
// Row-major products are column-major ones of the transposed matrices.
#include "compat/blas/report.h"
#include "frame/arguments.h"

using namespace orv;
using namespace orv::compat;

namespace {

// How CBLAS takes an argument of a routine.
template <class Int, class A> struct Argument {
    using type = std::conditional_t<is_complex<A>, const void*, A>;
};
template <class Int> struct Argument<Int, i64> {
    using type = Int;
};
template <class Int, class T> struct Argument<Int, T*> {
    using type = std::conditional_t<!is_complex<std::remove_const_t<T>>, T*,
                                    std::conditional_t<std::is_const_v<T>, const void*, void*>>;
};

template <auto& F, int i> using cblas32_argument = typename Argument<i32, value_argument<F, i>>::type;
template <auto& F, int i> using cblas64_argument = typename Argument<i64, value_argument<F, i>>::type;

// An argument of CBLAS as the core takes it.
template <class A, class C> A native(C argument)
{
    if constexpr (is_complex<A>) return *static_cast<const A*>(argument);
    else return static_cast<A>(argument);
}

// A position counts from 0 here too, but that of nothing is 0.
template <auto& F, int... i, class... C> auto call(std::integer_sequence<int, i...>, C... arguments)
{
    const auto result = F(native<value_argument<F, i>>(arguments)...);
    if constexpr (std::is_same_v<result_of<F>, orv_status>) done(result);
    else if constexpr (std::is_same_v<result_of<F>, i64>)
        return static_cast<std::size_t>(max(answer(result + 1), 1) - 1);
    else return answer(result);
}

template <auto& F, class... C> auto call(C... arguments)
{
    return call<F>(std::make_integer_sequence<int, sizeof...(C)>(), arguments...);
}

enum Layout { row_major = 101, column_major = 102 };

// Fortran's letter for a transposition, 0 for a value that is none.
constexpr char letter(int transposition)
{
    constexpr char letters[] = {'N', 'T', 'C'};
    return transposition >= 111 && transposition <= 113 ? letters[transposition - 111] : '\0';
}

// The error routine of the interface that was called, and a call of it. The reference library passes positions in the
// column-major call that it makes of a row-major one, and leaves it to the error routine to translate them if
// RowMajorStrg is set. Here they are those of the program's own call already, so an error routine that
// knows the custom is told not to.
template <class Int> using Xerbla = void(Int, const char*, const char*, ...);
template <class Int, class... A>
[[gnu::cold]] void report(Xerbla<Int>* xerbla, Int position, const char* name, const char* format = "", A... values)
{
    RowMajorStrg = 0;
    xerbla(position, name, format, values...);
}

// Checks come in the order of the reference, which for row-major products is that of the column-major one; it also
// reports a bad transb of these as argument 2.
template <auto& F, class Int, class T = value_argument<F, 5>>
void gemm(const char* name, Xerbla<Int>* xerbla, int layout, int transa, int transb, i64 m, i64 n, i64 k, T alpha,
          const T* a, i64 lda, const T* b, i64 ldb, T beta, T* c, i64 ldc)
{
    const bool rows = layout == row_major;
    if (!rows && layout != column_major) return report<Int>(xerbla, 1, name, "Illegal layout setting, %d\n", layout);
    const char ta = letter(transa), tb = letter(transb);
    if (ta == '\0') return report<Int>(xerbla, 2, name, "Illegal TransA setting, %d\n", transa);
    if (tb == '\0') return report<Int>(xerbla, rows ? 2 : 3, name, "Illegal TransB setting, %d\n", transb);

    if (!rows) {
        if (const int bad = arguments::gemm(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc)) [[unlikely]]
            return report<Int>(xerbla, bad + 1, name);
        return done(F(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc));
    }
    if (const int bad = arguments::gemm(tb, ta, n, m, k, alpha, b, ldb, a, lda, beta, c, ldc)) [[unlikely]] {
        constexpr int swapped[] = {0, 2, 1, 4, 3, 5, 6, 9, 10, 7, 8, 11, 12, 13};
        return report<Int>(xerbla, swapped[bad] + 1, name);
    }
    done(F(tb, ta, n, m, k, alpha, b, ldb, a, lda, beta, c, ldc));
}

template <auto& F, class Int, class T = value_argument<F, 2>>
void ger(const char* name, Xerbla<Int>* xerbla, int layout, i64 m, i64 n, T alpha, const T* x, i64 incx, const T* y,
         i64 incy, T* a, i64 lda)
{
    if (layout == column_major) {
        if (const int bad = arguments::ger(m, n, alpha, x, incx, y, incy, a, lda)) [[unlikely]]
            return report<Int>(xerbla, bad + 1, name);
        return done(F(m, n, alpha, x, incx, y, incy, a, lda));
    }
    if (layout != row_major) return report<Int>(xerbla, 1, name, "Illegal layout setting, %d\n", layout);
    if (const int bad = arguments::ger(n, m, alpha, y, incy, x, incx, a, lda)) [[unlikely]] {
        constexpr int swapped[] = {0, 2, 1, 3, 6, 7, 4, 5, 8, 9};
        return report<Int>(xerbla, swapped[bad] + 1, name);
    }
    done(F(n, m, alpha, y, incy, x, incx, a, lda));
}

} // namespace

#define FORM(symbol, width, arity, name)                                                                               \
    STANDARD auto symbol(ORV_PARAMETERS_##arity(cblas##width##_argument, orv_##name))                                  \
    {                                                                                                                  \
        return call<orv_##name>(ORV_NAMES_##arity);                                                                    \
    }
#define CBLAS(arity, name)                                                                                             \
    FORM(cblas_##name, 32, arity, name)                                                                                \
    FORM(cblas_##name##_64, 64, arity, name)                                                                           \
    FORM(cblas_##name##64_, 64, arity, name)

#define SUB_FORM(symbol, width, arity, name)                                                                           \
    STANDARD void symbol(ORV_PARAMETERS_##arity(cblas##width##_argument, orv_##name), void* result)                    \
    {                                                                                                                  \
        *static_cast<result_of<orv_##name>*>(result) = call<orv_##name>(ORV_NAMES_##arity);                            \
    }
#define CBLAS_SUB(arity, name)                                                                                         \
    SUB_FORM(cblas_##name##_sub, 32, arity, name)                                                                      \
    SUB_FORM(cblas_##name##_sub_64, 64, arity, name)                                                                   \
    SUB_FORM(cblas_##name##_sub64_, 64, arity, name)

#define GEMM_FORM(symbol, xerbla, Int, name, T, Scalar, Array)                                                         \
    STANDARD void symbol(int layout, int transa, int transb, Int m, Int n, Int k, Scalar alpha, const Array* a,        \
                         Int lda, const Array* b, Int ldb, Scalar beta, Array* c, Int ldc)                             \
    {                                                                                                                  \
        gemm<orv_##name, Int>("cblas_" #name, xerbla, layout, transa, transb, m, n, k, native<T>(alpha),               \
                              static_cast<const T*>(a), lda, static_cast<const T*>(b), ldb, native<T>(beta),           \
                              static_cast<T*>(c), ldc);                                                                \
    }
#define CBLAS_GEMM(name, T, Scalar, Array)                                                                             \
    GEMM_FORM(cblas_##name, cblas_xerbla, i32, name, T, Scalar, Array)                                                 \
    GEMM_FORM(cblas_##name##_64, cblas_xerbla_64, i64, name, T, Scalar, Array)                                         \
    GEMM_FORM(cblas_##name##64_, cblas_xerbla64_, i64, name, T, Scalar, Array)

#define GER_FORM(symbol, xerbla, Int, name, T)                                                                         \
    STANDARD void symbol(int layout, Int m, Int n, T alpha, const T* x, Int incx, const T* y, Int incy, T* a, Int lda) \
    {                                                                                                                  \
        ger<orv_##name, Int>("cblas_" #name, xerbla, layout, m, n, alpha, x, incx, y, incy, a, lda);                   \
    }
#define CBLAS_GER(name, T)                                                                                             \
    GER_FORM(cblas_##name, cblas_xerbla, i32, name, T)                                                                 \
    GER_FORM(cblas_##name##_64, cblas_xerbla_64, i64, name, T)                                                         \
    GER_FORM(cblas_##name##64_, cblas_xerbla64_, i64, name, T)

CBLAS(6, saxpy)
CBLAS(6, daxpy)
CBLAS(6, caxpy)
CBLAS(6, zaxpy)
CBLAS(7, saxpby)
CBLAS(7, daxpby)
CBLAS(7, caxpby)
CBLAS(7, zaxpby)

CBLAS(4, sscal)
CBLAS(4, dscal)
CBLAS(4, cscal)
CBLAS(4, zscal)
CBLAS(4, csscal)
CBLAS(4, zdscal)
CBLAS(5, scopy)
CBLAS(5, dcopy)
CBLAS(5, ccopy)
CBLAS(5, zcopy)
CBLAS(5, sswap)
CBLAS(5, dswap)
CBLAS(5, cswap)
CBLAS(5, zswap)

CBLAS(5, sdot)
CBLAS(5, ddot)
CBLAS_SUB(5, cdotu)
CBLAS_SUB(5, cdotc)
CBLAS_SUB(5, zdotu)
CBLAS_SUB(5, zdotc)
CBLAS(6, sdsdot)
CBLAS(5, dsdot)

CBLAS(3, snrm2)
CBLAS(3, dnrm2)
CBLAS(3, scnrm2)
CBLAS(3, dznrm2)
CBLAS(3, sasum)
CBLAS(3, dasum)
CBLAS(3, scasum)
CBLAS(3, dzasum)
CBLAS(1, scabs1)
CBLAS(1, dcabs1)
CBLAS(3, isamax)
CBLAS(3, idamax)
CBLAS(3, icamax)
CBLAS(3, izamax)
CBLAS(3, isamin)
CBLAS(3, idamin)
CBLAS(3, icamin)
CBLAS(3, izamin)

CBLAS(7, srot)
CBLAS(7, drot)
CBLAS(7, csrot)
CBLAS(7, zdrot)
CBLAS(4, srotg)
CBLAS(4, drotg)
CBLAS(4, crotg)
CBLAS(4, zrotg)
CBLAS(6, srotm)
CBLAS(6, drotm)
CBLAS(5, srotmg)
CBLAS(5, drotmg)

CBLAS_GEMM(sgemm, float, float, float)
CBLAS_GEMM(dgemm, double, double, double)
CBLAS_GEMM(cgemm, cpx<float>, const void*, void)
CBLAS_GEMM(zgemm, cpx<double>, const void*, void)
CBLAS_GER(dger, double)
