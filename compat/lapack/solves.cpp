// Factorisations and solves: ?potrf, ?potrf2, ?gtsv, ?gttrs, ?gtts2, ?pttrs, ?ptts2, ?getc2.
#include "compat/lapack/routine.h"

using namespace orv;
using namespace orv::compat;

namespace {

// ---- Cholesky factorisation

template <class T> using Potrf = void(const char*, const i32*, T*, const i32*, i32*, Length);
template <class T> using NativePotrf = orv_status(char, i64, T*, i64, i64*);

template <class T>
void potrf(const char* name, NativePotrf<T>* native, Behind<Potrf<T>>& behind, const char* uplo, const i32* n, T* a,
           const i32* lda, i32* info)
{
    if (refused(name, info, arguments::potrf(*uplo, *n, a, *lda, info))) return;
    i64 pivot;
    if (native(*uplo, *n, a, *lda, &pivot) == ORV_OK) *info = static_cast<i32>(pivot);
    else behind(uplo, n, a, lda, info, one_letter);
}

// ---- Tridiagonal systems: elimination with pivoting

template <class T> using Gtsv = void(const i32*, const i32*, T*, T*, T*, T*, const i32*, i32*);
template <class T> using GtsvKernel = void(const i64*, const i64*, T*, T*, T*, T*, const i64*, i64*);

template <class T>
void gtsv(const char* name, Kernel<GtsvKernel<T>>& kernel, Behind<Gtsv<T>>& behind, const i32* n, const i32* nrhs,
          T* dl, T* d, T* du, T* b, const i32* ldb, i32* info)
{
    if (refused(name, info, arguments::gtsv(*n, *nrhs, dl, d, du, b, *ldb, info))) return;
    auto* const run = kernel.get();
    if (run == nullptr) return behind(n, nrhs, dl, d, du, b, ldb, info);
    const i64 order = *n, columns = *nrhs, step = *ldb;
    i64 pivot = 0;
    run(&order, &columns, dl, d, du, b, &step, &pivot);
    *info = static_cast<i32>(pivot);
}

template <class T>
using Gttrs = void(const char*, const i32*, const i32*, const T*, const T*, const T*, const T*, const i32*, T*,
                   const i32*, i32*, Length);
template <class T>
using Gtts2 = void(const i32*, const i32*, const i32*, const T*, const T*, const T*, const T*, const i32*, T*,
                   const i32*);
template <class T>
using Gtts2Kernel = void(const i64*, const i64*, const i64*, const T*, const T*, const T*, const T*, const i64*, T*,
                         const i64*);

// False if it cannot be: there is no kernel, or no memory for the pivots.
template <class T>
bool gtts2(Kernel<Gtts2Kernel<T>>& kernel, i64 itrans, i64 n, i64 nrhs, const T* dl, const T* d, const T* du,
           const T* du2, const i32* ipiv, T* b, i64 ldb)
{
    if (n <= 0 || nrhs <= 0) return true;
    auto* const run = kernel.get();
    if (run == nullptr) return false;
    Widened pivots(ipiv, n);
    if (!pivots) return false;
    run(&itrans, &n, &nrhs, dl, d, du, du2, pivots.data(), b, &ldb);
    return true;
}

template <class T>
void gttrs(const char* name, Kernel<Gtts2Kernel<T>>& kernel, Behind<Gttrs<T>>& behind, const char* trans, const i32* n,
           const i32* nrhs, const T* dl, const T* d, const T* du, const T* du2, const i32* ipiv, T* b, const i32* ldb,
           i32* info)
{
    if (refused(name, info, arguments::gttrs(*trans, *n, *nrhs, dl, d, du, du2, ipiv, b, *ldb, info))) return;
    *info = 0;
    const i64 itrans = fold(*trans) == 'N' ? 0 : fold(*trans) == 'T' || !is_complex<T> ? 1 : 2;
    if (!gtts2(kernel, itrans, *n, *nrhs, dl, d, du, du2, ipiv, b, *ldb))
        behind(trans, n, nrhs, dl, d, du, du2, ipiv, b, ldb, info, one_letter);
}

// ---- Tridiagonal systems: positive definite. Of complex ones e may stand below or above the diagonal.

template <class T> using RealPttrs = void(const i32*, const i32*, const T*, const T*, T*, const i32*, i32*);
template <class T> using RealPtts2 = void(const i32*, const i32*, const T*, const T*, T*, const i32*);
template <class T> using RealPtts2Kernel = void(const i64*, const i64*, const T*, const T*, T*, const i64*);
template <class T>
using ComplexPttrs = void(const char*, const i32*, const i32*, const real_t<T>*, const T*, T*, const i32*, i32*,
                          Length);
template <class T>
using ComplexPtts2 = void(const i32*, const i32*, const i32*, const real_t<T>*, const T*, T*, const i32*);
template <class T>
using ComplexPtts2Kernel = void(const i64*, const i64*, const i64*, const real_t<T>*, const T*, T*, const i64*);

template <class K, class... P> bool ran(Kernel<K>& kernel, P... arguments)
{
    auto* const run = kernel.get();
    if (run != nullptr) run(arguments...);
    return run != nullptr;
}

template <class T>
void pttrs(const char* name, Kernel<RealPtts2Kernel<T>>& kernel, Behind<RealPttrs<T>>& behind, const i32* n,
           const i32* nrhs, const T* d, const T* e, T* b, const i32* ldb, i32* info)
{
    if (refused(name, info, arguments::real_pttrs(*n, *nrhs, d, e, b, *ldb, info))) return;
    *info = 0;
    const i64 order = *n, columns = *nrhs, step = *ldb;
    if (order == 0 || columns == 0) return;
    if (!ran(kernel, &order, &columns, d, e, b, &step)) behind(n, nrhs, d, e, b, ldb, info);
}
template <class T>
void pttrs(const char* name, Kernel<ComplexPtts2Kernel<T>>& kernel, Behind<ComplexPttrs<T>>& behind, const char* uplo,
           const i32* n, const i32* nrhs, const real_t<T>* d, const T* e, T* b, const i32* ldb, i32* info)
{
    if (refused(name, info, arguments::complex_pttrs(*uplo, *n, *nrhs, d, e, b, *ldb, info))) return;
    *info = 0;
    const i64 above = fold(*uplo) == 'U', order = *n, columns = *nrhs, step = *ldb;
    if (order == 0 || columns == 0) return;
    if (!ran(kernel, &above, &order, &columns, d, e, b, &step)) behind(uplo, n, nrhs, d, e, b, ldb, info, one_letter);
}

template <class T>
void ptts2(Kernel<RealPtts2Kernel<T>>& kernel, Behind<RealPtts2<T>>& behind, const i32* n, const i32* nrhs, const T* d,
           const T* e, T* b, const i32* ldb)
{
    const i64 order = *n, columns = *nrhs, step = *ldb;
    if (order <= 0 || columns <= 0) return;
    if (!ran(kernel, &order, &columns, d, e, b, &step)) behind(n, nrhs, d, e, b, ldb);
}
template <class T>
void ptts2(Kernel<ComplexPtts2Kernel<T>>& kernel, Behind<ComplexPtts2<T>>& behind, const i32* iuplo, const i32* n,
           const i32* nrhs, const real_t<T>* d, const T* e, T* b, const i32* ldb)
{
    const i64 above = *iuplo, order = *n, columns = *nrhs, step = *ldb;
    if (order <= 0 || columns <= 0) return;
    if (!ran(kernel, &above, &order, &columns, d, e, b, &step)) behind(iuplo, n, nrhs, d, e, b, ldb);
}

// ---- Complete pivoting

template <class T> using Getc2 = void(const i32*, T*, const i32*, i32*, i32*, i32*);
template <class T> using Getc2Kernel = void(const i64*, T*, const i64*, i64*, i64*, i64*);

template <class T>
void getc2(Kernel<Getc2Kernel<T>>& kernel, Behind<Getc2<T>>& behind, const i32* n, T* a, const i32* lda, i32* ipiv,
           i32* jpiv, i32* info)
{
    const i64 order = *n, step = *lda;
    i64 last = 0;
    if (order > 0) {
        Widened rows(order), columns(order);
        if (!rows || !columns || !ran(kernel, &order, a, &step, rows.data(), columns.data(), &last))
            return behind(n, a, lda, ipiv, jpiv, info);
        rows.put(ipiv, order), columns.put(jpiv, order);
    }
    *info = static_cast<i32>(last);
}

} // namespace

#define POTRF(t, T, name)                                                                                              \
    STANDARD void t##name##_(const char* uplo, const i32* n, T* a, const i32* lda, i32* info)                          \
    {                                                                                                                  \
        static constinit Behind<Potrf<T>> behind{#t #name "_"};                                                        \
        potrf<T>(#t #name, orv_##t##potrf, behind, uplo, n, a, lda, info);                                             \
    }
#define GTSV(t, T)                                                                                                     \
    STANDARD void t##gtsv_(const i32* n, const i32* nrhs, T* dl, T* d, T* du, T* b, const i32* ldb, i32* info)         \
    {                                                                                                                  \
        static constinit Kernel<GtsvKernel<T>> kernel{{"lapack_ps", #t "gtsv_small"}};                                 \
        static constinit Behind<Gtsv<T>> behind{#t "gtsv_"};                                                           \
        gtsv(#t "gtsv", kernel, behind, n, nrhs, dl, d, du, b, ldb, info);                                             \
    }
#define GTTRS(t, T)                                                                                                    \
    namespace {                                                                                                        \
    constinit Kernel<Gtts2Kernel<T>> t##gtts2_kernel{{"lapack_ps", #t "gtts2"}};                                       \
    }                                                                                                                  \
    STANDARD void t##gttrs_(const char* trans, const i32* n, const i32* nrhs, const T* dl, const T* d, const T* du,    \
                            const T* du2, const i32* ipiv, T* b, const i32* ldb, i32* info)                            \
    {                                                                                                                  \
        static constinit Behind<Gttrs<T>> behind{#t "gttrs_"};                                                         \
        gttrs(#t "gttrs", t##gtts2_kernel, behind, trans, n, nrhs, dl, d, du, du2, ipiv, b, ldb, info);                \
    }                                                                                                                  \
    STANDARD void t##gtts2_(const i32* itrans, const i32* n, const i32* nrhs, const T* dl, const T* d, const T* du,    \
                            const T* du2, const i32* ipiv, T* b, const i32* ldb)                                       \
    {                                                                                                                  \
        static constinit Behind<Gtts2<T>> behind{#t "gtts2_"};                                                         \
        if (!gtts2(t##gtts2_kernel, *itrans, *n, *nrhs, dl, d, du, du2, ipiv, b, *ldb))                                \
            behind(itrans, n, nrhs, dl, d, du, du2, ipiv, b, ldb);                                                     \
    }
#define REAL_PTTRS(t, T)                                                                                               \
    namespace {                                                                                                        \
    constinit Kernel<RealPtts2Kernel<T>> t##ptts2_kernel{{"lapack_ps", #t "ptts2"}};                                   \
    }                                                                                                                  \
    STANDARD void t##pttrs_(const i32* n, const i32* nrhs, const T* d, const T* e, T* b, const i32* ldb, i32* info)    \
    {                                                                                                                  \
        static constinit Behind<RealPttrs<T>> behind{#t "pttrs_"};                                                     \
        pttrs(#t "pttrs", t##ptts2_kernel, behind, n, nrhs, d, e, b, ldb, info);                                       \
    }                                                                                                                  \
    STANDARD void t##ptts2_(const i32* n, const i32* nrhs, const T* d, const T* e, T* b, const i32* ldb)               \
    {                                                                                                                  \
        static constinit Behind<RealPtts2<T>> behind{#t "ptts2_"};                                                     \
        ptts2(t##ptts2_kernel, behind, n, nrhs, d, e, b, ldb);                                                         \
    }
#define COMPLEX_PTTRS(t, T)                                                                                            \
    namespace {                                                                                                        \
    constinit Kernel<ComplexPtts2Kernel<T>> t##ptts2_kernel{{"lapack_ps", #t "ptts2"}};                                \
    }                                                                                                                  \
    STANDARD void t##pttrs_(const char* uplo, const i32* n, const i32* nrhs, const real_t<T>* d, const T* e, T* b,     \
                            const i32* ldb, i32* info)                                                                 \
    {                                                                                                                  \
        static constinit Behind<ComplexPttrs<T>> behind{#t "pttrs_"};                                                  \
        pttrs(#t "pttrs", t##ptts2_kernel, behind, uplo, n, nrhs, d, e, b, ldb, info);                                 \
    }                                                                                                                  \
    STANDARD void t##ptts2_(const i32* iuplo, const i32* n, const i32* nrhs, const real_t<T>* d, const T* e, T* b,     \
                            const i32* ldb)                                                                            \
    {                                                                                                                  \
        static constinit Behind<ComplexPtts2<T>> behind{#t "ptts2_"};                                                  \
        ptts2(t##ptts2_kernel, behind, iuplo, n, nrhs, d, e, b, ldb);                                                  \
    }
#define GETC2(t, T)                                                                                                    \
    STANDARD void t##getc2_(const i32* n, T* a, const i32* lda, i32* ipiv, i32* jpiv, i32* info)                       \
    {                                                                                                                  \
        static constinit Kernel<Getc2Kernel<T>> kernel{{"lapack_ps", #t "getc2"}};                                     \
        static constinit Behind<Getc2<T>> behind{#t "getc2_"};                                                         \
        getc2(kernel, behind, n, a, lda, ipiv, jpiv, info);                                                            \
    }

#define EACH_TYPE(t, T) POTRF(t, T, potrf) POTRF(t, T, potrf2) GTTRS(t, T) GETC2(t, T)
EACH_TYPE(s, float)
EACH_TYPE(d, double)
EACH_TYPE(c, cpx<float>)
EACH_TYPE(z, cpx<double>)
GTSV(s, float)
GTSV(d, double)
REAL_PTTRS(s, float)
REAL_PTTRS(d, double)
COMPLEX_PTTRS(c, cpx<float>)
COMPLEX_PTTRS(z, cpx<double>)
