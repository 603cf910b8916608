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

template <class T, class Int>
using Lange = real_t<T>(const char*, const Int*, const Int*, const T*, const Int*, real_t<T>*, Length);

template <class T, class Int>
real_t<T> lange(Kernel<lapack_ps::Lange<T>>& kernel, Routine<Int, Lange<T, Int>>& routine, const char* norm,
                const Int* m, const Int* n, const T* a, const Int* lda, real_t<T>* work)
{
    auto* const run = kernel.get();
    if (run == nullptr) return routine.hand_on(nullptr, norm, m, n, a, lda, work, one_letter);
    const i64 rows = *m, columns = *n, step = *lda;
    return with_nan(norm, "O", [&](const char* letter) { return run(letter, &rows, &columns, a, &step, work); });
}

template <class T, class Int>
using Lansy = real_t<T>(const char*, const char*, const Int*, const T*, const Int*, real_t<T>*, Length, Length);

template <class T, class Int>
real_t<T> lansy(Kernel<lapack_ps::Lansy<T>>& kernel, Routine<Int, Lansy<T, Int>>& routine, const char* norm,
                const char* uplo, const Int* n, const T* a, const Int* lda, real_t<T>* work)
{
    auto* const run = kernel.get();
    if (run == nullptr) return routine.hand_on(nullptr, norm, uplo, n, a, lda, work, one_letter, one_letter);
    const i64 order = *n, step = *lda;
    return with_nan(norm, "F", [&](const char* letter) { return run(letter, uplo, &order, a, &step, work); });
}

} // namespace

#define LANGE(name, T, end, Int)                                                                                       \
    STANDARD real_t<T> name##end(const char* norm, const Int* m, const Int* n, const T* a, const Int* lda,             \
                                 real_t<T>* work)                                                                      \
    {                                                                                                                  \
        static constinit Kernel kernel{lapack_ps::x##name()};                                                          \
        static constinit Routine<Int, Lange<T, Int>> routine{#name #end};                                              \
        return lange(kernel, routine, norm, m, n, a, lda, work);                                                       \
    }
#define LANSY(name, T, end, Int)                                                                                       \
    STANDARD real_t<T> name##end(const char* norm, const char* uplo, const Int* n, const T* a, const Int* lda,         \
                                 real_t<T>* work)                                                                      \
    {                                                                                                                  \
        static constinit Kernel kernel{lapack_ps::x##name()};                                                          \
        static constinit Routine<Int, Lansy<T, Int>> routine{#name #end};                                              \
        return lansy(kernel, routine, norm, uplo, n, a, lda, work);                                                    \
    }

ORV_BOTH_WIDTHS(LANGE, slange, float)
ORV_BOTH_WIDTHS(LANGE, dlange, double)
ORV_BOTH_WIDTHS(LANGE, clange, cpx<float>)
ORV_BOTH_WIDTHS(LANGE, zlange, cpx<double>)
ORV_BOTH_WIDTHS(LANSY, slansy, float)
ORV_BOTH_WIDTHS(LANSY, dlansy, double)
ORV_BOTH_WIDTHS(LANSY, clansy, cpx<float>)
ORV_BOTH_WIDTHS(LANSY, zlansy, cpx<double>)
ORV_BOTH_WIDTHS(LANSY, clanhe, cpx<float>)
ORV_BOTH_WIDTHS(LANSY, zlanhe, cpx<double>)
