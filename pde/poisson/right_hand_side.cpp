// The right-hand side times the square of the step along the last axis: the tridiagonal systems have 1 and q*h^2 in
// them where the equation has 1/h^2 and q.
#include "frame/simd.h"
#include "pde/poisson/state.h"

namespace orv::pdepl {
namespace {

// One rounding for each element, whichever way it is reached.
template <class T> void scale(T* x, i64 n, T by)
{
    constexpr int registers = 8 / vec<T>::lanes;
    static_assert(8 % vec<T>::lanes == 0);
    i64 before = 0;
    if (n >= 8)
        for (; before < vec<T>::lanes && !is_aligned(x + before, 16); ++before) x[before] *= by;
    T* const from = x + before;
    const vec<T> all = splat(by);
    each<T, registers>(
        n - before,
        [=](i64 i, auto length) {
            for (int k = 0; k < length; ++k) {
                T* const at = from + i + k * vec<T>::lanes;
                storeu(at, loadu(at) * all);
            }
        },
        [=](i64 i) { from[i] *= by; });
}

template <class T> void of_box(i64 points, T h, T* f, i64* stat)
{
    *stat = h == 0 ? no_points : good;
    if (*stat == good) scale(f, points, h * h);
}

// Row by row with the sine of its theta; q goes along.
template <class T> void of_sphere(i64 np, i64 nt, T hphi, T htheta, T* q, const T* sines, T* f, i64* stat)
{
    *stat = hphi == 0 ? no_points : good;
    if (*stat != good) return;
    const T square = htheta * htheta;
    *q *= square;
    for (i64 j = 0; j <= nt; ++j) scale(f + j * (np + 1), np + 1, sines[j] * square);
}

} // namespace
} // namespace orv::pdepl

#define RIGHT_HAND_SIDES(t, T)                                                                                         \
    ORV_EXPORT void PDEPL(t##_right_hand_side_2d)(const i64* nx, const i64* ny, const T* hy, T* f, i64* stat)          \
    {                                                                                                                  \
        orv::pdepl::of_box((*nx + 1) * (*ny + 1), *hy, f, stat);                                                       \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_right_hand_side_3d)(const i64* nx, const i64* ny, const i64* nz, const T* hz, T* f,      \
                                                  i64* stat)                                                           \
    {                                                                                                                  \
        orv::pdepl::of_box((*nx + 1) * (*ny + 1) * (*nz + 1), *hz, f, stat);                                           \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_sph_right_2d)(const i64* np, const i64* nt, const T* hphi, const T* htheta, T* q,        \
                                            const T* sines, T* f, i64* stat)                                           \
    {                                                                                                                  \
        orv::pdepl::of_sphere(*np, *nt, *hphi, *htheta, q, sines, f, stat);                                            \
    }

namespace orv::kernels::pdepl {
RIGHT_HAND_SIDES(s, float)
RIGHT_HAND_SIDES(d, double)
} // namespace orv::kernels::pdepl
