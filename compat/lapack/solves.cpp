// Factorisations and solves: ?potrf, ?potrf2, ?gtsv, ?gttrs, ?gtts2, ?pttrs, ?ptts2, ?getc2.
#include "compat/lapack/routine.h"

using namespace orv;
using namespace orv::compat;

namespace {

// ---- Cholesky factorisation

template <class T, class Int> using Potrf = void(const char*, const Int*, T*, const Int*, Int*, Length);
template <class T> using NativePotrf = orv_status(char, i64, T*, i64, i64*);

template <class T, class Int>
void potrf(NativePotrf<T>* native, Routine<Int, Potrf<T, Int>>& routine, const char* uplo, const Int* n, T* a,
           const Int* lda, Int* info)
{
    if (routine.refuses(info, arguments::potrf(*uplo, *n, a, *lda, info))) return;
    i64 pivot;
    if (native(*uplo, *n, a, *lda, &pivot) == ORV_OK) *info = static_cast<Int>(pivot);
    else routine.hand_on(info, uplo, n, a, lda, info, one_letter);
}

// ---- Tridiagonal systems: elimination with pivoting

template <class T, class Int> using Gtsv = void(const Int*, const Int*, T*, T*, T*, T*, const Int*, Int*);

template <class T, class Int>
void gtsv(Kernel<lapack_ps::Gtsv<T>>& kernel, Routine<Int, Gtsv<T, Int>>& routine, const Int* n, const Int* nrhs, T* dl,
          T* d, T* du, T* b, const Int* ldb, Int* info)
{
    if (routine.refuses(info, arguments::gtsv(*n, *nrhs, dl, d, du, b, *ldb, info))) return;
    auto* const run = kernel.get();
    if (run == nullptr) return routine.hand_on(info, n, nrhs, dl, d, du, b, ldb, info);
    const i64 order = *n, columns = *nrhs, step = *ldb;
    i64 pivot = 0;
    run(&order, &columns, dl, d, du, b, &step, &pivot);
    *info = static_cast<Int>(pivot);
}

template <class T, class Int>
using Gttrs = void(const char*, const Int*, const Int*, const T*, const T*, const T*, const T*, const Int*, T*,
                   const Int*, Int*, Length);
template <class T, class Int>
using Gtts2 = void(const Int*, const Int*, const Int*, const T*, const T*, const T*, const T*, const Int*, T*,
                   const Int*);

// False if it cannot be: there is no kernel, or no memory for the pivots.
template <class T, class Int>
bool gtts2(Kernel<lapack_ps::Gtts2<T>>& kernel, i64 itrans, i64 n, i64 nrhs, const T* dl, const T* d, const T* du,
           const T* du2, const Int* ipiv, T* b, i64 ldb)
{
    if (n <= 0 || nrhs <= 0) return true;
    auto* const run = kernel.get();
    if (run == nullptr) return false;
    Widened<Int> pivots(ipiv, n);
    if (!pivots) return false;
    run(&itrans, &n, &nrhs, dl, d, du, du2, pivots.data(), b, &ldb);
    return true;
}

template <class T, class Int>
void gttrs(Kernel<lapack_ps::Gtts2<T>>& kernel, Routine<Int, Gttrs<T, Int>>& routine, const char* trans, const Int* n,
           const Int* nrhs, const T* dl, const T* d, const T* du, const T* du2, const Int* ipiv, T* b, const Int* ldb,
           Int* info)
{
    if (routine.refuses(info, arguments::gttrs(*trans, *n, *nrhs, dl, d, du, du2, ipiv, b, *ldb, info))) return;
    *info = 0;
    const i64 itrans = fold(*trans) == 'N' ? 0 : fold(*trans) == 'T' || !is_complex<T> ? 1 : 2;
    if (!gtts2(kernel, itrans, *n, *nrhs, dl, d, du, du2, ipiv, b, *ldb))
        routine.hand_on(info, trans, n, nrhs, dl, d, du, du2, ipiv, b, ldb, info, one_letter);
}

// ---- Tridiagonal systems: positive definite. Of complex ones e may stand below or above the diagonal.

template <class T, class Int> using RealPttrs = void(const Int*, const Int*, const T*, const T*, T*, const Int*, Int*);
template <class T, class Int> using RealPtts2 = void(const Int*, const Int*, const T*, const T*, T*, const Int*);
template <class T, class Int>
using ComplexPttrs = void(const char*, const Int*, const Int*, const real_t<T>*, const T*, T*, const Int*, Int*,
                          Length);
template <class T, class Int>
using ComplexPtts2 = void(const Int*, const Int*, const Int*, const real_t<T>*, const T*, T*, const Int*);

template <class K, class... P> bool ran(Kernel<K>& kernel, P... arguments)
{
    auto* const run = kernel.get();
    if (run != nullptr) run(arguments...);
    return run != nullptr;
}

template <class T, class Int>
void pttrs(Kernel<lapack_ps::Ptts2<T>>& kernel, Routine<Int, RealPttrs<T, Int>>& routine, const Int* n, const Int* nrhs,
           const T* d, const T* e, T* b, const Int* ldb, Int* info)
{
    if (routine.refuses(info, arguments::real_pttrs(*n, *nrhs, d, e, b, *ldb, info))) return;
    *info = 0;
    const i64 order = *n, columns = *nrhs, step = *ldb;
    if (order == 0 || columns == 0) return;
    if (!ran(kernel, &order, &columns, d, e, b, &step)) routine.hand_on(info, n, nrhs, d, e, b, ldb, info);
}
template <class T, class Int>
void pttrs(Kernel<lapack_ps::ComplexPtts2<T>>& kernel, Routine<Int, ComplexPttrs<T, Int>>& routine, const char* uplo,
           const Int* n, const Int* nrhs, const real_t<T>* d, const T* e, T* b, const Int* ldb, Int* info)
{
    if (routine.refuses(info, arguments::complex_pttrs(*uplo, *n, *nrhs, d, e, b, *ldb, info))) return;
    *info = 0;
    const i64 above = fold(*uplo) == 'U', order = *n, columns = *nrhs, step = *ldb;
    if (order == 0 || columns == 0) return;
    if (!ran(kernel, &above, &order, &columns, d, e, b, &step))
        routine.hand_on(info, uplo, n, nrhs, d, e, b, ldb, info, one_letter);
}

template <class T, class Int>
void ptts2(Kernel<lapack_ps::Ptts2<T>>& kernel, Routine<Int, RealPtts2<T, Int>>& routine, const Int* n, const Int* nrhs,
           const T* d, const T* e, T* b, const Int* ldb)
{
    const i64 order = *n, columns = *nrhs, step = *ldb;
    if (order <= 0 || columns <= 0) return;
    if (!ran(kernel, &order, &columns, d, e, b, &step)) routine.hand_on(nullptr, n, nrhs, d, e, b, ldb);
}
template <class T, class Int>
void ptts2(Kernel<lapack_ps::ComplexPtts2<T>>& kernel, Routine<Int, ComplexPtts2<T, Int>>& routine, const Int* iuplo,
           const Int* n, const Int* nrhs, const real_t<T>* d, const T* e, T* b, const Int* ldb)
{
    const i64 above = *iuplo, order = *n, columns = *nrhs, step = *ldb;
    if (order <= 0 || columns <= 0) return;
    if (!ran(kernel, &above, &order, &columns, d, e, b, &step)) routine.hand_on(nullptr, iuplo, n, nrhs, d, e, b, ldb);
}

// ---- Complete pivoting

template <class T, class Int> using Getc2 = void(const Int*, T*, const Int*, Int*, Int*, Int*);

template <class T, class Int>
void getc2(Kernel<lapack_ps::Getc2<T>>& kernel, Routine<Int, Getc2<T, Int>>& routine, const Int* n, T* a,
           const Int* lda, Int* ipiv, Int* jpiv, Int* info)
{
    const i64 order = *n, step = *lda;
    i64 last = 0;
    if (order > 0) {
        Widened<Int> rows(order), columns(order);
        if (!rows || !columns || !ran(kernel, &order, a, &step, rows.data(), columns.data(), &last))
            return routine.hand_on(info, n, a, lda, ipiv, jpiv, info);
        rows.put(ipiv, order), columns.put(jpiv, order);
    }
    *info = static_cast<Int>(last);
}

} // namespace

#define POTRF_NAMED(t, T, name, end, Int)                                                                              \
    STANDARD void t##name##end(const char* uplo, const Int* n, T* a, const Int* lda, Int* info)                        \
    {                                                                                                                  \
        static constinit Routine<Int, Potrf<T, Int>> routine{#t #name #end};                                           \
        potrf<T>(orv_##t##potrf, routine, uplo, n, a, lda, info);                                                      \
    }
#define POTRF(t, T, end, Int) POTRF_NAMED(t, T, potrf, end, Int) POTRF_NAMED(t, T, potrf2, end, Int)
#define GTSV(t, T, end, Int)                                                                                           \
    STANDARD void t##gtsv##end(const Int* n, const Int* nrhs, T* dl, T* d, T* du, T* b, const Int* ldb, Int* info)     \
    {                                                                                                                  \
        static constinit Kernel kernel{lapack_ps::t##gtsv_small()};                                                    \
        static constinit Routine<Int, Gtsv<T, Int>> routine{#t "gtsv" #end};                                           \
        gtsv(kernel, routine, n, nrhs, dl, d, du, b, ldb, info);                                                       \
    }
#define GTTRS(t, T, end, Int)                                                                                          \
    STANDARD void t##gttrs##end(const char* trans, const Int* n, const Int* nrhs, const T* dl, const T* d,             \
                                const T* du, const T* du2, const Int* ipiv, T* b, const Int* ldb, Int* info)           \
    {                                                                                                                  \
        static constinit Routine<Int, Gttrs<T, Int>> routine{#t "gttrs" #end};                                         \
        static constinit Kernel kernel{lapack_ps::t##gtts2()};                                                         \
        gttrs(kernel, routine, trans, n, nrhs, dl, d, du, du2, ipiv, b, ldb, info);                                    \
    }                                                                                                                  \
    STANDARD void t##gtts2##end(const Int* itrans, const Int* n, const Int* nrhs, const T* dl, const T* d,             \
                                const T* du, const T* du2, const Int* ipiv, T* b, const Int* ldb)                      \
    {                                                                                                                  \
        static constinit Routine<Int, Gtts2<T, Int>> routine{#t "gtts2" #end};                                         \
        static constinit Kernel kernel{lapack_ps::t##gtts2()};                                                         \
        if (!gtts2(kernel, *itrans, *n, *nrhs, dl, d, du, du2, ipiv, b, *ldb))                                         \
            routine.hand_on(nullptr, itrans, n, nrhs, dl, d, du, du2, ipiv, b, ldb);                                   \
    }
#define REAL_PTTRS(t, T, end, Int)                                                                                     \
    STANDARD void t##pttrs##end(const Int* n, const Int* nrhs, const T* d, const T* e, T* b, const Int* ldb,           \
                                Int* info)                                                                             \
    {                                                                                                                  \
        static constinit Routine<Int, RealPttrs<T, Int>> routine{#t "pttrs" #end};                                     \
        static constinit Kernel kernel{lapack_ps::t##ptts2()};                                                         \
        pttrs(kernel, routine, n, nrhs, d, e, b, ldb, info);                                                           \
    }                                                                                                                  \
    STANDARD void t##ptts2##end(const Int* n, const Int* nrhs, const T* d, const T* e, T* b, const Int* ldb)           \
    {                                                                                                                  \
        static constinit Routine<Int, RealPtts2<T, Int>> routine{#t "ptts2" #end};                                     \
        static constinit Kernel kernel{lapack_ps::t##ptts2()};                                                         \
        ptts2(kernel, routine, n, nrhs, d, e, b, ldb);                                                                 \
    }
#define COMPLEX_PTTRS(t, T, end, Int)                                                                                  \
    STANDARD void t##pttrs##end(const char* uplo, const Int* n, const Int* nrhs, const real_t<T>* d, const T* e, T* b, \
                                const Int* ldb, Int* info)                                                             \
    {                                                                                                                  \
        static constinit Routine<Int, ComplexPttrs<T, Int>> routine{#t "pttrs" #end};                                  \
        static constinit Kernel kernel{lapack_ps::t##ptts2()};                                                         \
        pttrs(kernel, routine, uplo, n, nrhs, d, e, b, ldb, info);                                                     \
    }                                                                                                                  \
    STANDARD void t##ptts2##end(const Int* iuplo, const Int* n, const Int* nrhs, const real_t<T>* d, const T* e, T* b, \
                                const Int* ldb)                                                                        \
    {                                                                                                                  \
        static constinit Routine<Int, ComplexPtts2<T, Int>> routine{#t "ptts2" #end};                                  \
        static constinit Kernel kernel{lapack_ps::t##ptts2()};                                                         \
        ptts2(kernel, routine, iuplo, n, nrhs, d, e, b, ldb);                                                          \
    }
#define GETC2(t, T, end, Int)                                                                                          \
    STANDARD void t##getc2##end(const Int* n, T* a, const Int* lda, Int* ipiv, Int* jpiv, Int* info)                   \
    {                                                                                                                  \
        static constinit Kernel kernel{lapack_ps::t##getc2()};                                                         \
        static constinit Routine<Int, Getc2<T, Int>> routine{#t "getc2" #end};                                         \
        getc2(kernel, routine, n, a, lda, ipiv, jpiv, info);                                                           \
    }

#define EACH_TYPE(t, T) ORV_BOTH_WIDTHS(POTRF, t, T) ORV_BOTH_WIDTHS(GTTRS, t, T) ORV_BOTH_WIDTHS(GETC2, t, T)
EACH_TYPE(s, float)
EACH_TYPE(d, double)
EACH_TYPE(c, cpx<float>)
EACH_TYPE(z, cpx<double>)
ORV_BOTH_WIDTHS(GTSV, s, float)
ORV_BOTH_WIDTHS(GTSV, d, double)
ORV_BOTH_WIDTHS(REAL_PTTRS, s, float)
ORV_BOTH_WIDTHS(REAL_PTTRS, d, double)
ORV_BOTH_WIDTHS(COMPLEX_PTTRS, c, cpx<float>)
ORV_BOTH_WIDTHS(COMPLEX_PTTRS, z, cpx<double>)
