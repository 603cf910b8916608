// Rotations, reflectors, and the steps of the divide and conquer method for singular values: ?lasr, ?lartv, dlarfx,
// clarfx, ?lasd3, ?lasd4.
#include "compat/lapack/routine.h"

using namespace orv;
using namespace orv::compat;

namespace {

// ---- Sequences of rotations. Kernels apply them from the left.

template <class T, class Int>
using Lasr = void(const char*, const char*, const char*, const Int*, const Int*, const real_t<T>*, const real_t<T>*, T*,
                  const Int*, Length, Length, Length);
template <class T> using LasrKernels = Kernel<lapack_ps::Lasr<T>>[3][2]; // by pivot, V T B, and by direction, F B

template <class T, class Int>
void lasr(LasrKernels<T>& kernels, Routine<Int, Lasr<T, Int>>& routine, const char* side, const char* pivot,
          const char* direct, const Int* m, const Int* n, const real_t<T>* c, const real_t<T>* s, T* a, const Int* lda)
{
    if (routine.refuses(nullptr, arguments::lasr(*side, *pivot, *direct, *m, *n, c, s, a, *lda))) return;
    const int by_pivot = fold(*pivot) == 'V' ? 0 : fold(*pivot) == 'T' ? 1 : 2, backward = fold(*direct) == 'B';
    auto* const run = fold(*side) == 'L' ? kernels[by_pivot][backward].get() : nullptr;
    if (run == nullptr)
        return routine.hand_on(nullptr, side, pivot, direct, m, n, c, s, a, lda, one_letter, one_letter, one_letter);
    const i64 rows = *m, columns = *n, step = *lda;
    run(&rows, &columns, c, s, a, &step);
}

template <class T, class Int>
using Lartv = void(const Int*, T*, const Int*, T*, const Int*, const real_t<T>*, const T*, const Int*);

template <class T, class Int>
void lartv(Kernel<lapack_ps::Lartv<T>>& kernel, Routine<Int, Lartv<T, Int>>& routine, const Int* n, T* x,
           const Int* incx, T* y, const Int* incy, const real_t<T>* c, const T* s, const Int* incc)
{
    auto* const run = kernel.get();
    if (run == nullptr) return routine.hand_on(nullptr, n, x, incx, y, incy, c, s, incc);
    const i64 count = *n, x_step = *incx, y_step = *incy, c_step = *incc;
    run(&count, x, &x_step, y, &y_step, c, s, &c_step);
}

// ---- Small reflectors

template <class T, class Int>
using Larfx = void(const char*, const Int*, const Int*, const T*, const T*, T*, const Int*, T*, Length);

template <class T, class Int>
void larfx(Kernel<lapack_ps::Larfx<T>>& kernel, Routine<Int, Larfx<T, Int>>& routine, const char* side, const Int* m,
           const Int* n, const T* v, const T* tau, T* c, const Int* ldc, T* work)
{
    auto* const run = kernel.get();
    if (run == nullptr) return routine.hand_on(nullptr, side, m, n, v, tau, c, ldc, work, one_letter);
    const i64 rows = *m, columns = *n, step = *ldc;
    run(side, &rows, &columns, v, tau, c, &step, work);
}

// ---- Singular values by divide and conquer

template <class T, class Int>
using Lasd3 = void(const Int*, const Int*, const Int*, const Int*, T*, T*, const Int*, T*, T*, const Int*, const T*,
                   const Int*, T*, const Int*, T*, const Int*, const Int*, const Int*, T*, Int*);

template <class T, class Int>
void lasd3(Kernel<lapack_ps::Lasd3<T>>& kernel, Routine<Int, Lasd3<T, Int>>& routine, const Int* nl, const Int* nr,
           const Int* sqre, const Int* k, T* d, T* q, const Int* ldq, T* dsigma, T* u, const Int* ldu, const T* u2,
           const Int* ldu2, T* vt, const Int* ldvt, T* vt2, const Int* ldvt2, const Int* idxc, const Int* ctot, T* z,
           Int* info)
{
    if (routine.refuses(info, arguments::lasd3(*nl, *nr, *sqre, *k, d, q, *ldq, dsigma, u, *ldu, u2, *ldu2, vt, *ldvt,
                                               vt2, *ldvt2, idxc, ctot, z, info)))
        return;
    auto* const run = kernel.get();
    constexpr i64 types = 4;
    Widened<Int> order(idxc, *k), counts(ctot, types);
    if (run == nullptr || !order)
        return routine.hand_on(info, nl, nr, sqre, k, d, q, ldq, dsigma, u, ldu, u2, ldu2, vt, ldvt, vt2, ldvt2, idxc,
                               ctot, z, info);
    const i64 upper = *nl, lower = *nr, extra = *sqre, count = *k, q_step = *ldq, u_step = *ldu, u2_step = *ldu2,
              vt_step = *ldvt, vt2_step = *ldvt2;
    i64 failed = 0;
    run(&upper, &lower, &extra, &count, d, q, &q_step, dsigma, u, &u_step, u2, &u2_step, vt, &vt_step, vt2, &vt2_step,
        order.data(), counts.data(), z, &failed);
    *info = static_cast<Int>(failed);
}

template <class T, class Int>
using Lasd4 = void(const Int*, const Int*, const T*, const T*, T*, const T*, T*, T*, Int*);

template <class T, class Int>
void lasd4(Kernel<lapack_ps::Lasd4<T>>& kernel, Routine<Int, Lasd4<T, Int>>& routine, const Int* n, const Int* i,
           const T* d, const T* z, T* delta, const T* rho, T* sigma, T* work, Int* info)
{
    auto* const run = kernel.get();
    if (run == nullptr) return routine.hand_on(info, n, i, d, z, delta, rho, sigma, work, info);
    const i64 order = *n, root = *i;
    i64 failed = 0;
    run(&order, &root, d, z, delta, rho, sigma, work, &failed);
    *info = static_cast<Int>(failed);
}

} // namespace

#define LASR(t, T, end, Int)                                                                                           \
    STANDARD void t##lasr##end(const char* side, const char* pivot, const char* direct, const Int* m, const Int* n,    \
                               const real_t<T>* c, const real_t<T>* s, T* a, const Int* lda)                           \
    {                                                                                                                  \
        static constinit LasrKernels<T> kernels{{Kernel(lapack_ps::t##lasr_lvf()), Kernel(lapack_ps::t##lasr_lvb())},  \
                                                {Kernel(lapack_ps::t##lasr_ltf()), Kernel(lapack_ps::t##lasr_ltb())},  \
                                                {Kernel(lapack_ps::t##lasr_lbf()), Kernel(lapack_ps::t##lasr_lbb())}}; \
        static constinit Routine<Int, Lasr<T, Int>> routine{#t "lasr" #end};                                           \
        lasr<T>(kernels, routine, side, pivot, direct, m, n, c, s, a, lda);                                            \
    }
#define LARTV(t, T, end, Int)                                                                                          \
    STANDARD void t##lartv##end(const Int* n, T* x, const Int* incx, T* y, const Int* incy, const real_t<T>* c,        \
                                const T* s, const Int* incc)                                                           \
    {                                                                                                                  \
        static constinit Kernel kernel{lapack_ps::t##lartv()};                                                         \
        static constinit Routine<Int, Lartv<T, Int>> routine{#t "lartv" #end};                                         \
        lartv(kernel, routine, n, x, incx, y, incy, c, s, incc);                                                       \
    }
#define LARFX(t, T, end, Int)                                                                                          \
    STANDARD void t##larfx##end(const char* side, const Int* m, const Int* n, const T* v, const T* tau, T* c,          \
                                const Int* ldc, T* work)                                                               \
    {                                                                                                                  \
        static constinit Kernel kernel{lapack_ps::t##larfx()};                                                         \
        static constinit Routine<Int, Larfx<T, Int>> routine{#t "larfx" #end};                                         \
        larfx(kernel, routine, side, m, n, v, tau, c, ldc, work);                                                      \
    }
#define LASD(t, T, end, Int)                                                                                           \
    STANDARD void t##lasd3##end(const Int* nl, const Int* nr, const Int* sqre, const Int* k, T* d, T* q,               \
                                const Int* ldq, T* dsigma, T* u, const Int* ldu, const T* u2, const Int* ldu2, T* vt,  \
                                const Int* ldvt, T* vt2, const Int* ldvt2, const Int* idxc, const Int* ctot, T* z,     \
                                Int* info)                                                                             \
    {                                                                                                                  \
        static constinit Kernel kernel{lapack_ps::t##lasd3()};                                                         \
        static constinit Routine<Int, Lasd3<T, Int>> routine{#t "lasd3" #end};                                         \
        lasd3(kernel, routine, nl, nr, sqre, k, d, q, ldq, dsigma, u, ldu, u2, ldu2, vt, ldvt, vt2, ldvt2, idxc, ctot, \
              z, info);                                                                                                \
    }                                                                                                                  \
    STANDARD void t##lasd4##end(const Int* n, const Int* i, const T* d, const T* z, T* delta, const T* rho, T* sigma,  \
                                T* work, Int* info)                                                                    \
    {                                                                                                                  \
        static constinit Kernel kernel{lapack_ps::t##lasd4()};                                                         \
        static constinit Routine<Int, Lasd4<T, Int>> routine{#t "lasd4" #end};                                         \
        lasd4(kernel, routine, n, i, d, z, delta, rho, sigma, work, info);                                             \
    }

#define EACH_TYPE(t, T) ORV_BOTH_WIDTHS(LASR, t, T) ORV_BOTH_WIDTHS(LARTV, t, T)
EACH_TYPE(s, float)
EACH_TYPE(d, double)
EACH_TYPE(c, cpx<float>)
EACH_TYPE(z, cpx<double>)
ORV_BOTH_WIDTHS(LARFX, d, double)
ORV_BOTH_WIDTHS(LARFX, c, cpx<float>)
ORV_BOTH_WIDTHS(LASD, s, float)
ORV_BOTH_WIDTHS(LASD, d, double)
