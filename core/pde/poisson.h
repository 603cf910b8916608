// A solver of the public interface: what the user told, and the arrays of a kernel's solver with its tables made. A
// solve works on a copy of these arrays.
#pragma once

#include "core/branch/kernel.h"
#include "core/pde/grid.h"
#include "orv/poisson.h"

struct orv_poisson {
    int precision, axes;
    bool is_sphere, is_up_to_constant;
    orv_poisson_axis axis[3];
    double q, tolerance;

    orv::i64 ipar[orv::kernels::pdepl::ipar_size];
    void* dpar;
    orv::i64 dpar_size; // elements
    orv::kernels::pdepl::Handle handles[2];

    int side(int number) const { return number % 2 == 0 ? axis[number / 2].low : axis[number / 2].high; }
    orv::i64 points() const { return (axis[0].n + 1) * (axis[1].n + 1) * (axes == 3 ? axis[2].n + 1 : 1); }
    double step(int number) const { return (axis[number].b - axis[number].a) / static_cast<double>(axis[number].n); }
};

namespace orv::core::pde {

template <class T> inline constexpr int precision_code = ORV_DFT_SINGLE;
template <> inline constexpr int precision_code<double> = ORV_DFT_DOUBLE;

template <class T> struct PoissonKernels;
#define ORV_POISSON_KERNELS(t, T)                                                                                      \
    template <> struct PoissonKernels<T> {                                                                             \
        static inline constinit Kernel init_2d{kernels::pdepl::t##_init_helmholtz_2d()};                               \
        static inline constinit Kernel init_3d{kernels::pdepl::t##_init_helmholtz_3d()};                               \
        static inline constinit Kernel init_circle{kernels::pdepl::t##_init_sph_p()};                                  \
        static inline constinit Kernel init_patch{kernels::pdepl::t##_init_sph_np()};                                  \
        static inline constinit Kernel commit_2d{kernels::pdepl::t##_commit_helmholtz_2d()};                           \
        static inline constinit Kernel commit_3d{kernels::pdepl::t##_commit_helmholtz_3d()};                           \
        static inline constinit Kernel commit_circle{kernels::pdepl::t##_commit_sph_p()};                              \
        static inline constinit Kernel commit_patch{kernels::pdepl::t##_commit_sph_np()};                              \
        static inline constinit Kernel solve_2d{kernels::pdepl::t##_helmholtz_2d()};                                   \
        static inline constinit Kernel solve_3d{kernels::pdepl::t##_helmholtz_3d()};                                   \
        static inline constinit Kernel solve_circle{kernels::pdepl::t##_sph_p()};                                      \
        static inline constinit Kernel solve_patch{kernels::pdepl::t##_sph_np()};                                      \
    };
ORV_POISSON_KERNELS(s, float)
ORV_POISSON_KERNELS(d, double)
#undef ORV_POISSON_KERNELS

// The kernel's step of this solver's geometry: of a rectangle, a box, a circle or a patch of a sphere. values: of six
// sides. The kernel's status, or an interruption if there is no kernel.
template <class T, class Two, class Three, class Circle, class Patch>
i64 kernel_step(const orv_poisson& p, Two& two, Three& three, Circle& circle, Patch& patch, T* f,
                const T* const* values, Handle* handles, i64* ipar, T* dpar)
{
    i64 stat = interrupted;
    const auto& v = values;
    if (!p.is_sphere && p.axes == 2) two.run(f, v[0], v[1], v[2], v[3], &handles[0], ipar, dpar, &stat);
    else if (!p.is_sphere)
        three.run(f, v[0], v[1], v[2], v[3], v[4], v[5], &handles[0], &handles[1], ipar, dpar, &stat);
    else if (p.axis[0].low == ORV_PERIODIC) circle.run(f, &handles[0], &handles[1], ipar, dpar, &stat);
    else patch.run(f, &handles[0], ipar, dpar, &stat);
    return stat;
}

template <class T> i64 commit(const orv_poisson& p, T* f, const T* const* values, Handle* handles, i64* ipar, T* dpar)
{
    using K = PoissonKernels<T>;
    return kernel_step<T>(p, K::commit_2d, K::commit_3d, K::commit_circle, K::commit_patch, f, values, handles, ipar,
                          dpar);
}
template <class T> i64 solve(const orv_poisson& p, T* f, const T* const* values, Handle* handles, i64* ipar, T* dpar)
{
    using K = PoissonKernels<T>;
    return kernel_step<T>(p, K::solve_2d, K::solve_3d, K::solve_circle, K::solve_patch, f, values, handles, ipar, dpar);
}

} // namespace orv::core::pde
