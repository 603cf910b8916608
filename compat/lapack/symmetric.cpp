// Symmetric matrices: ssytrf, dsytrf; cspr, zspr.
#include "compat/lapack/routine.h"

#include <orv/blas.h>

using namespace orv;
using namespace orv::compat;

namespace {

// ---- Factorisation with pivots of order 1 and 2

template <class T, class Int>
using Sytrf = void(const char*, const Int*, T*, const Int*, Int*, T*, const Int*, Int*, Length);
template <class T> using SytrfKernels = Kernel<lapack_ps::Sytrf<T>>[2]; // by triangle, L U

// The kernels work column by column, like LAPACK up to the order of one of its blocks. Larger matrices are for the
// LAPACK behind, if there is one.
constexpr i64 lapack_block = 64;

// The first step, from the first column on (L) or from the last one back (U), at which LAPACK has no pivot: the column
// is zero, which kernels tell, or what stands on the diagonal is not a number.
template <class T> i64 first_without_pivot(bool upper, i64 n, const T* a, i64 lda, const i64* ipiv, i64 zero_column)
{
    for (i64 step = 0; step < n; ++step) {
        const i64 k = upper ? n - 1 - step : step;
        const bool of_order_1 = ipiv[k] > 0, is_nan = a[k + k * lda] != a[k + k * lda];
        if (k + 1 == zero_column || (of_order_1 && is_nan)) return k + 1;
    }
    return 0;
}

template <class T, class Int>
void sytrf(SytrfKernels<T>& kernels, Routine<Int, Sytrf<T, Int>>& routine, const char* uplo, const Int* n, T* a,
           const Int* lda, Int* ipiv, T* work, const Int* lwork, Int* info)
{
    if (routine.refuses(info, arguments::sytrf(*uplo, *n, a, *lda, ipiv, work, *lwork, info))) return;
    const i64 order = *n, step = *lda;
    const bool upper = fold(*uplo) == 'U';
    auto* const run = kernels[upper].get();
    Widened<Int> pivots(order);
    if (run == nullptr || !pivots || (order > lapack_block && routine.has_one_behind()))
        return routine.hand_on(info, uplo, n, a, lda, ipiv, work, lwork, info, one_letter);
    *work = 1; // what the kernels would like to have of it
    *info = 0;
    if (*lwork == arguments::workspace_query) return;
    i64 zero_column = 0;
    run(uplo, &order, a, &step, pivots.data(), &zero_column);
    pivots.put(ipiv, order);
    *info = static_cast<Int>(first_without_pivot(upper, order, a, step, pivots.data(), zero_column));
}

// ---- Packed updates of complex matrices that are symmetric, not Hermitian

template <class T, class Int> using Spr = void(const char*, const Int*, const T*, const T*, const Int*, T*, Length);

template <class Int>
void spr(Routine<Int, Spr<cpx<float>, Int>>& routine, const char* uplo, const Int* n, const cpx<float>* alpha,
         const cpx<float>* x, const Int* incx, cpx<float>* ap)
{
    static constinit Kernel kernel{lapack_ps::cspr()};
    if (routine.refuses(nullptr, arguments::spr(*uplo, *n, *alpha, x, *incx, ap))) return;
    auto* const run = kernel.get();
    if (run == nullptr) return routine.hand_on(nullptr, uplo, n, alpha, x, incx, ap, one_letter);
    const i64 order = *n, step = *incx;
    run(uplo, &order, alpha, x, &step, ap);
}

// There is no kernel for doubles: column by column.
template <class Int>
void spr(Routine<Int, Spr<cpx<double>, Int>>& routine, const char* uplo, const Int* n, const cpx<double>* alpha,
         const cpx<double>* x, const Int* incx, cpx<double>* ap)
{
    if (routine.refuses(nullptr, arguments::spr(*uplo, *n, *alpha, x, *incx, ap))) return;
    if (orv_branch_status() != ORV_OK) return routine.hand_on(nullptr, uplo, n, alpha, x, incx, ap, one_letter);
    if (*alpha == zero<cpx<double>>) return;
    const i64 order = *n, step = *incx;
    const bool upper = fold(*uplo) == 'U';
    const cpx<double>* const elements = first(x, order, step);
    for (i64 j = 0; j < order; ++j) {
        const i64 top = upper ? 0 : j, count = upper ? j + 1 : order - j;
        const cpx<double>* const part = elements + (step < 0 ? top + count - 1 : top) * step;
        orv_zaxpy(count, *alpha * elements[j * step], part, step, ap, 1);
        ap += count;
    }
}

} // namespace

#define SYTRF(t, T, end, Int)                                                                                          \
    STANDARD void t##sytrf##end(const char* uplo, const Int* n, T* a, const Int* lda, Int* ipiv, T* work,              \
                                const Int* lwork, Int* info)                                                           \
    {                                                                                                                  \
        static constinit SytrfKernels<T> kernels{Kernel(lapack_ps::t##sytrf_l_small()),                                \
                                                 Kernel(lapack_ps::t##sytrf_u_small())};                               \
        static constinit Routine<Int, Sytrf<T, Int>> routine{#t "sytrf" #end};                                         \
        sytrf(kernels, routine, uplo, n, a, lda, ipiv, work, lwork, info);                                             \
    }
#define SPR(t, T, end, Int)                                                                                            \
    STANDARD void t##spr##end(const char* uplo, const Int* n, const T* alpha, const T* x, const Int* incx, T* ap)      \
    {                                                                                                                  \
        static constinit Routine<Int, Spr<T, Int>> routine{#t "spr" #end};                                             \
        spr(routine, uplo, n, alpha, x, incx, ap);                                                                     \
    }

ORV_BOTH_WIDTHS(SYTRF, s, float)
ORV_BOTH_WIDTHS(SYTRF, d, double)
ORV_BOTH_WIDTHS(SPR, c, cpx<float>)
ORV_BOTH_WIDTHS(SPR, z, cpx<double>)
