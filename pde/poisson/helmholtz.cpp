// Rectangles and boxes by name; what they do stands in helmholtz.h.
#include "pde/poisson/helmholtz.h"

#define RECTANGLE_AND_BOX(t, T)                                                                                        \
    ORV_EXPORT void PDEPL(t##_commit_helmholtz_2d)(T * f, const T* ax, const T* bx, const T* ay, const T* by,          \
                                                   Handle* xhandle, i64* ipar, T* dpar, i64* stat)                     \
    {                                                                                                                  \
        orv::pdepl::commit<T, 2>(f, {ax, bx, ay, by}, {xhandle}, {ipar, dpar, stat});                                  \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_commit_helmholtz_3d)(T * f, const T* ax, const T* bx, const T* ay, const T* by,          \
                                                   const T* az, const T* bz, Handle* xhandle, Handle* yhandle,         \
                                                   i64* ipar, T* dpar, i64* stat)                                      \
    {                                                                                                                  \
        orv::pdepl::commit<T, 3>(f, {ax, bx, ay, by, az, bz}, {xhandle, yhandle}, {ipar, dpar, stat});                 \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_helmholtz_2d)(T * f, const T* ax, const T* bx, const T* ay, const T* by,                 \
                                            Handle* xhandle, i64* ipar, T* dpar, i64* stat)                            \
    {                                                                                                                  \
        orv::pdepl::solve<T, 2>(f, {ax, bx, ay, by}, {ipar, dpar, stat}, [=] {                                         \
            PDEPL(t##_basic_2d_poisson)(f, xhandle, ipar, dpar, stat);                                                 \
        });                                                                                                            \
    }                                                                                                                  \
    ORV_EXPORT void PDEPL(t##_helmholtz_3d)(T * f, const T* ax, const T* bx, const T* ay, const T* by, const T* az,    \
                                            const T* bz, Handle* xhandle, Handle* yhandle, i64* ipar, T* dpar,         \
                                            i64* stat)                                                                 \
    {                                                                                                                  \
        orv::pdepl::solve<T, 3>(f, {ax, bx, ay, by, az, bz}, {ipar, dpar, stat}, [=] {                                 \
            PDEPL(t##_basic_3d_poisson)(f, xhandle, yhandle, ipar, dpar, stat);                                        \
        });                                                                                                            \
    }

namespace orv::kernels::pdepl {
RECTANGLE_AND_BOX(s, float)
RECTANGLE_AND_BOX(d, double)

ORV_EXPORT void PDEPL(free_helmholtz_2d)(Handle* xhandle, i64* ipar, i64* stat)
{
    orv::pdepl::free_transforms<2>({xhandle}, ipar, stat);
}
ORV_EXPORT void PDEPL(free_helmholtz_3d)(Handle* xhandle, Handle* yhandle, i64* ipar, i64* stat)
{
    orv::pdepl::free_transforms<3>({xhandle, yhandle}, ipar, stat);
}
} // namespace orv::kernels::pdepl
