// Norms: ?lange, ?lansy, ?lanhe.
//
// A standard norm is NaN if an element is. The kernel's largest magnitude goes past NaN, so sums tell whether there is
// one.
#include "compat/lapack/routine.h"

using namespace orv;
using namespace orv::compat;

namespace {

// norm(letter), where letter is the wanted one, or that of a sum for what the largest magnitude does not tell.
template <class Norm> auto with_nan(const char* letter, const char* of_sum, Norm norm)
{
    const auto value = norm(letter);
    if (fold(*letter) != 'M') return value;
    const auto sum = norm(of_sum);
    return sum != sum ? sum : value;
}

template <class T>
using Lange = real_t<T>(const char*, const i32*, const i32*, const T*, const i32*, real_t<T>*, Length);
template <class T> using LangeKernel = real_t<T>(const char*, const i64*, const i64*, const T*, const i64*, real_t<T>*);

template <class T>
real_t<T> lange(Kernel<LangeKernel<T>>& kernel, Behind<Lange<T>>& behind, const char* norm, const i32* m, const i32* n,
                const T* a, const i32* lda, real_t<T>* work)
{
    auto* const run = kernel.get();
    if (run == nullptr) return behind(norm, m, n, a, lda, work, one_letter);
    const i64 rows = *m, columns = *n, step = *lda;
    return with_nan(norm, "O", [&](const char* letter) { return run(letter, &rows, &columns, a, &step, work); });
}

template <class T>
using Lansy = real_t<T>(const char*, const char*, const i32*, const T*, const i32*, real_t<T>*, Length, Length);
template <class T>
using LansyKernel = real_t<T>(const char*, const char*, const i64*, const T*, const i64*, real_t<T>*);

template <class T>
real_t<T> lansy(Kernel<LansyKernel<T>>& kernel, Behind<Lansy<T>>& behind, const char* norm, const char* uplo,
                const i32* n, const T* a, const i32* lda, real_t<T>* work)
{
    auto* const run = kernel.get();
    if (run == nullptr) return behind(norm, uplo, n, a, lda, work, one_letter, one_letter);
    const i64 order = *n, step = *lda;
    return with_nan(norm, "F", [&](const char* letter) { return run(letter, uplo, &order, a, &step, work); });
}

} // namespace

#define LANGE(name, T)                                                                                                 \
    STANDARD real_t<T> name##_(const char* norm, const i32* m, const i32* n, const T* a, const i32* lda,               \
                               real_t<T>* work)                                                                        \
    {                                                                                                                  \
        static constinit Kernel<LangeKernel<T>> kernel{{"lapack_ps", "x" #name}};                                      \
        static constinit Behind<Lange<T>> behind{#name "_"};                                                           \
        return lange(kernel, behind, norm, m, n, a, lda, work);                                                        \
    }
#define LANSY(name, T)                                                                                                 \
    STANDARD real_t<T> name##_(const char* norm, const char* uplo, const i32* n, const T* a, const i32* lda,           \
                               real_t<T>* work)                                                                        \
    {                                                                                                                  \
        static constinit Kernel<LansyKernel<T>> kernel{{"lapack_ps", "x" #name}};                                      \
        static constinit Behind<Lansy<T>> behind{#name "_"};                                                           \
        return lansy(kernel, behind, norm, uplo, n, a, lda, work);                                                     \
    }

LANGE(slange, float)
LANGE(dlange, double)
LANGE(clange, cpx<float>)
LANGE(zlange, cpx<double>)
LANSY(slansy, float)
LANSY(dlansy, double)
LANSY(clansy, cpx<float>)
LANSY(zlansy, cpx<double>)
LANSY(clanhe, cpx<float>)
LANSY(zlanhe, cpx<double>)
