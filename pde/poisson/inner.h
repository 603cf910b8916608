// The transforms that a solver makes for itself: one along each axis but the last, or of periodic sides two of half the
// points, a sine transform for the odd part of a row and a cosine transform for the even part. Both are one real
// Fourier transform and differ in their tables only, so one handle serves both.
#pragma once

#include "pde/poisson/state.h"

namespace orv::pdepl {

template <class T> struct Trig;
#define ORV_TRIG(t, T)                                                                                                 \
    template <> struct Trig<T> {                                                                                       \
        static constexpr auto& init = kernels::pdett::PDETT(t##_init_trig_transform);                                  \
        static constexpr auto& commit = kernels::pdett::PDETT(t##_commit_trig_transform);                              \
    };
ORV_TRIG(s, float)
ORV_TRIG(d, double)
#undef ORV_TRIG
inline constexpr auto& free_transform = kernels::pdett::PDETT(free_trig_transform);

// The ipar of a transform, which lies in that of the solver.
inline i64* inner_ipar(i64* ipar, int axis, int which)
{
    return ipar + ipar_inner + (2 * axis + which) * ipar_inner_step;
}

// Rows are as the solver leaves them, so their ends are not looked at and results not scaled: the loops of tridiagonal
// systems do that in passing. init_failed: a diagnostic, that of commit is the next.
template <class T>
i64 make_transform(const State<T>& state, i64 kind, i64 n, int axis, int which, int position, Handle* handle,
                   i64 init_failed)
{
    i64* const ipar = inner_ipar(state.ipar, axis, which);
    T* const dpar = state.table(position);
    i64 stat = 0;
    Trig<T>::init(&n, &kind, ipar, dpar, &stat);
    if (stat != 0) return state.fail(transform_failed, init_failed);
    ipar[kernels::pdett::ipar_errors] = state.ipar[ipar_errors];
    ipar[kernels::pdett::ipar_warnings] = state.ipar[ipar_warnings];
    ipar[kernels::pdett::ipar_language] = state.ipar[ipar_language];
    // Several callers, even if it is one: the Fourier transform then shares no row among threads, and a row has the
    // same bits whoever transforms it.
    ipar[kernels::pdett::ipar_threads] = max(state.ipar[ipar_threads], 2);
    ipar[kernels::pdett::ipar_raw] = 1;
    dpar[kernels::pdett::dpar_tolerance] = state.dpar[dpar_tolerance];
    Trig<T>::commit(nullptr, handle, ipar, dpar, &stat);
    return stat == 0 ? i64{good} : state.fail(transform_failed, init_failed + 1);
}

inline i64 free_inner(i64* ipar, int axis, int which, Handle* handle)
{
    i64 stat = interrupted;
    free_transform(handle, inner_ipar(ipar, axis, which), &stat);
    return stat;
}

constexpr i64 kind_of(i64 pair)
{
    using namespace kernels::pdett;
    return pair == dd ? i64{sine} : pair == nn ? i64{cosine} : pair == nd ? i64{staggered_cosine} : i64{staggered_sine};
}

} // namespace orv::pdepl
