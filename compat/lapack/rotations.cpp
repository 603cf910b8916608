// Rotations, reflectors, and the steps of the divide and conquer method for singular values: ?lasr, ?lartv, dlarfx,
// clarfx, ?lasd3, ?lasd4; and cspr.
#include "compat/lapack/routine.h"

using namespace orv;
using namespace orv::compat;

namespace {

// ---- Sequences of rotations. Kernels apply them from the left.

template <class T>
using Lasr = void(const char*, const char*, const char*, const i32*, const i32*, const real_t<T>*, const real_t<T>*, T*,
                  const i32*, Length, Length, Length);
template <class T> using LasrKernel = void(const i64*, const i64*, const real_t<T>*, const real_t<T>*, T*, const i64*);
template <class T> using LasrKernels = Kernel<LasrKernel<T>>[3][2]; // by pivot, V T B, and by direction, F B

template <class T>
void lasr(const char* name, LasrKernels<T>& kernels, Behind<Lasr<T>>& behind, const char* side, const char* pivot,
          const char* direct, const i32* m, const i32* n, const real_t<T>* c, const real_t<T>* s, T* a, const i32* lda)
{
    if (refused(name, nullptr, arguments::lasr(*side, *pivot, *direct, *m, *n, c, s, a, *lda))) return;
    const int by_pivot = fold(*pivot) == 'V' ? 0 : fold(*pivot) == 'T' ? 1 : 2, backward = fold(*direct) == 'B';
    auto* const run = fold(*side) == 'L' ? kernels[by_pivot][backward].get() : nullptr;
    if (run == nullptr) return behind(side, pivot, direct, m, n, c, s, a, lda, one_letter, one_letter, one_letter);
    const i64 rows = *m, columns = *n, step = *lda;
    run(&rows, &columns, c, s, a, &step);
}

template <class T>
using Lartv = void(const i32*, T*, const i32*, T*, const i32*, const real_t<T>*, const T*, const i32*);
template <class T>
using LartvKernel = void(const i64*, T*, const i64*, T*, const i64*, const real_t<T>*, const T*, const i64*);

template <class T>
void lartv(Kernel<LartvKernel<T>>& kernel, Behind<Lartv<T>>& behind, const i32* n, T* x, const i32* incx, T* y,
           const i32* incy, const real_t<T>* c, const T* s, const i32* incc)
{
    auto* const run = kernel.get();
    if (run == nullptr) return behind(n, x, incx, y, incy, c, s, incc);
    const i64 count = *n, x_step = *incx, y_step = *incy, c_step = *incc;
    run(&count, x, &x_step, y, &y_step, c, s, &c_step);
}

// ---- Small reflectors

template <class T>
using Larfx = void(const char*, const i32*, const i32*, const T*, const T*, T*, const i32*, T*, Length);
template <class T>
using LarfxKernel = void(const char*, const i64*, const i64*, const T*, const T*, T*, const i64*, T*);

template <class T>
void larfx(Kernel<LarfxKernel<T>>& kernel, Behind<Larfx<T>>& behind, const char* side, const i32* m, const i32* n,
           const T* v, const T* tau, T* c, const i32* ldc, T* work)
{
    auto* const run = kernel.get();
    if (run == nullptr) return behind(side, m, n, v, tau, c, ldc, work, one_letter);
    const i64 rows = *m, columns = *n, step = *ldc;
    run(side, &rows, &columns, v, tau, c, &step, work);
}

// ---- Singular values by divide and conquer

template <class T>
using Lasd3 = void(const i32*, const i32*, const i32*, const i32*, T*, T*, const i32*, T*, T*, const i32*, const T*,
                   const i32*, T*, const i32*, T*, const i32*, const i32*, const i32*, T*, i32*);
template <class T>
using Lasd3Kernel = void(const i64*, const i64*, const i64*, const i64*, T*, T*, const i64*, T*, T*, const i64*,
                         const T*, const i64*, T*, const i64*, T*, const i64*, const i64*, const i64*, T*, i64*);

template <class T>
void lasd3(const char* name, Kernel<Lasd3Kernel<T>>& kernel, Behind<Lasd3<T>>& behind, const i32* nl, const i32* nr,
           const i32* sqre, const i32* k, T* d, T* q, const i32* ldq, T* dsigma, T* u, const i32* ldu, const T* u2,
           const i32* ldu2, T* vt, const i32* ldvt, T* vt2, const i32* ldvt2, const i32* idxc, const i32* ctot, T* z,
           i32* info)
{
    if (refused(name, info,
                arguments::lasd3(*nl, *nr, *sqre, *k, d, q, *ldq, dsigma, u, *ldu, u2, *ldu2, vt, *ldvt, vt2, *ldvt2,
                                 idxc, ctot, z, info)))
        return;
    auto* const run = kernel.get();
    constexpr i64 types = 4;
    Widened order(idxc, *k), counts(ctot, types);
    if (run == nullptr || !order)
        return behind(nl, nr, sqre, k, d, q, ldq, dsigma, u, ldu, u2, ldu2, vt, ldvt, vt2, ldvt2, idxc, ctot, z, info);
    const i64 upper = *nl, lower = *nr, extra = *sqre, count = *k, q_step = *ldq, u_step = *ldu, u2_step = *ldu2,
              vt_step = *ldvt, vt2_step = *ldvt2;
    i64 failed = 0;
    run(&upper, &lower, &extra, &count, d, q, &q_step, dsigma, u, &u_step, u2, &u2_step, vt, &vt_step, vt2, &vt2_step,
        order.data(), counts.data(), z, &failed);
    *info = static_cast<i32>(failed);
}

template <class T> using Lasd4 = void(const i32*, const i32*, const T*, const T*, T*, const T*, T*, T*, i32*);
template <class T> using Lasd4Kernel = void(const i64*, const i64*, const T*, const T*, T*, const T*, T*, T*, i64*);

template <class T>
void lasd4(Kernel<Lasd4Kernel<T>>& kernel, Behind<Lasd4<T>>& behind, const i32* n, const i32* i, const T* d, const T* z,
           T* delta, const T* rho, T* sigma, T* work, i32* info)
{
    auto* const run = kernel.get();
    if (run == nullptr) return behind(n, i, d, z, delta, rho, sigma, work, info);
    const i64 order = *n, root = *i;
    i64 failed = 0;
    run(&order, &root, d, z, delta, rho, sigma, work, &failed);
    *info = static_cast<i32>(failed);
}

// ---- Packed symmetric matrices of complex singles

using C = cpx<float>;
using Cspr = void(const char*, const i32*, const C*, const C*, const i32*, C*, Length);
using CsprKernel = void(const char*, const i64*, const C*, const C*, const i64*, C*);

} // namespace

#define LASR(t, T)                                                                                                     \
    STANDARD void t##lasr_(const char* side, const char* pivot, const char* direct, const i32* m, const i32* n,        \
                           const real_t<T>* c, const real_t<T>* s, T* a, const i32* lda)                               \
    {                                                                                                                  \
        using K = Kernel<LasrKernel<T>>;                                                                               \
        static constinit LasrKernels<T> kernels{{K{{"lapack_ps", #t "lasr_lvf"}}, K{{"lapack_ps", #t "lasr_lvb"}}},    \
                                                {K{{"lapack_ps", #t "lasr_ltf"}}, K{{"lapack_ps", #t "lasr_ltb"}}},    \
                                                {K{{"lapack_ps", #t "lasr_lbf"}}, K{{"lapack_ps", #t "lasr_lbb"}}}};   \
        static constinit Behind<Lasr<T>> behind{#t "lasr_"};                                                           \
        lasr<T>(#t "lasr", kernels, behind, side, pivot, direct, m, n, c, s, a, lda);                                  \
    }
#define LARTV(t, T)                                                                                                    \
    STANDARD void t##lartv_(const i32* n, T* x, const i32* incx, T* y, const i32* incy, const real_t<T>* c,            \
                            const T* s, const i32* incc)                                                               \
    {                                                                                                                  \
        static constinit Kernel<LartvKernel<T>> kernel{{"lapack_ps", #t "lartv"}};                                     \
        static constinit Behind<Lartv<T>> behind{#t "lartv_"};                                                         \
        lartv(kernel, behind, n, x, incx, y, incy, c, s, incc);                                                        \
    }
#define LARFX(t, T)                                                                                                    \
    STANDARD void t##larfx_(const char* side, const i32* m, const i32* n, const T* v, const T* tau, T* c,              \
                            const i32* ldc, T* work)                                                                   \
    {                                                                                                                  \
        static constinit Kernel<LarfxKernel<T>> kernel{{"lapack_ps", #t "larfx"}};                                     \
        static constinit Behind<Larfx<T>> behind{#t "larfx_"};                                                         \
        larfx(kernel, behind, side, m, n, v, tau, c, ldc, work);                                                       \
    }
#define LASD(t, T)                                                                                                     \
    STANDARD void t##lasd3_(const i32* nl, const i32* nr, const i32* sqre, const i32* k, T* d, T* q, const i32* ldq,   \
                            T* dsigma, T* u, const i32* ldu, const T* u2, const i32* ldu2, T* vt, const i32* ldvt,     \
                            T* vt2, const i32* ldvt2, const i32* idxc, const i32* ctot, T* z, i32* info)               \
    {                                                                                                                  \
        static constinit Kernel<Lasd3Kernel<T>> kernel{{"lapack_ps", #t "lasd3"}};                                     \
        static constinit Behind<Lasd3<T>> behind{#t "lasd3_"};                                                         \
        lasd3(#t "lasd3", kernel, behind, nl, nr, sqre, k, d, q, ldq, dsigma, u, ldu, u2, ldu2, vt, ldvt, vt2, ldvt2,  \
              idxc, ctot, z, info);                                                                                    \
    }                                                                                                                  \
    STANDARD void t##lasd4_(const i32* n, const i32* i, const T* d, const T* z, T* delta, const T* rho, T* sigma,      \
                            T* work, i32* info)                                                                        \
    {                                                                                                                  \
        static constinit Kernel<Lasd4Kernel<T>> kernel{{"lapack_ps", #t "lasd4"}};                                     \
        static constinit Behind<Lasd4<T>> behind{#t "lasd4_"};                                                         \
        lasd4(kernel, behind, n, i, d, z, delta, rho, sigma, work, info);                                              \
    }

#define EACH_TYPE(t, T) LASR(t, T) LARTV(t, T)
EACH_TYPE(s, float)
EACH_TYPE(d, double)
EACH_TYPE(c, cpx<float>)
EACH_TYPE(z, cpx<double>)
LARFX(d, double)
LARFX(c, cpx<float>)
LASD(s, float)
LASD(d, double)

STANDARD void cspr_(const char* uplo, const i32* n, const C* alpha, const C* x, const i32* incx, C* ap)
{
    static constinit Kernel<CsprKernel> kernel{{"lapack_ps", "cspr"}};
    static constinit Behind<Cspr> behind{"cspr_"};
    if (refused("cspr", nullptr, arguments::spr(*uplo, *n, *alpha, x, *incx, ap))) return;
    auto* const run = kernel.get();
    if (run == nullptr) return behind(uplo, n, alpha, x, incx, ap, one_letter);
    const i64 order = *n, step = *incx;
    run(uplo, &order, alpha, x, &step, ap);
}
