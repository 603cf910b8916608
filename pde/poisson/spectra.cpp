// Spectra and tables of sines by their own names.
#include "pde/poisson/spectra.h"

#include "pde/poisson/state.h"

namespace orv::pdepl {
namespace {

template <class T> void rectangle(i64 nx, T hx, T hy, T q, Angle& angle, T* table, i64* stat)
{
    *stat = fill_spectrum(nx, hx, hy, T(2), q, angle, table);
}

// Two tables, one an axis, which begin with 1 each.
template <class T>
void box(i64 nx, i64 ny, T hx, T hy, T hz, T q, Angle& x_angle, Angle& y_angle, T* table_x, T* table_y, i64* stat)
{
    *stat = fill_spectrum(nx, hx, hz, T(1), q, x_angle, table_x);
    if (*stat == good) *stat = fill_spectrum(ny, hy, hz, T(1), T(0), y_angle, table_y);
    if (*stat == good) table_x[0] = table_y[0] = 1;
}

} // namespace
} // namespace orv::pdepl

#define SPECTRUM_2D(t, T, name, angle)                                                                                 \
    ORV_EXPORT void PDEPL(t##_##name)(const i64* nx, const T* hx, const T* hy, const T* q, T* table, i64* stat)        \
    {                                                                                                                  \
        orv::pdepl::rectangle(*nx, *hx, *hy, *q, orv::pdepl::angle, table, stat);                                      \
    }
#define SPECTRUM_3D(t, T, name, x_angle, y_angle)                                                                      \
    ORV_EXPORT void PDEPL(t##_##name)(const i64* nx, const i64* ny, const T* hx, const T* hy, const T* hz, const T* q, \
                                      T* table_x, T* table_y, i64* stat)                                               \
    {                                                                                                                  \
        orv::pdepl::box(*nx, *ny, *hx, *hy, *hz, *q, orv::pdepl::x_angle, orv::pdepl::y_angle, table_x, table_y,       \
                        stat);                                                                                         \
    }
#define SPECTRUM_OF_SPHERE(t, T, name, angle)                                                                          \
    ORV_EXPORT void PDEPL(t##_##name)(const i64* np, const T* hphi, const T* htheta, T* table, i64* stat)              \
    {                                                                                                                  \
        *stat = orv::pdepl::fill_spectrum(*np, *hphi, *htheta, T(0), T(0), orv::pdepl::angle, table);                  \
    }
#define TABLES(t, T)                                                                                                   \
    SPECTRUM_2D(t, T, spectr_2d, angle_of_whole)                                                                       \
    SPECTRUM_2D(t, T, spectr_2d_mixed, angle_of_mixed)                                                                 \
    SPECTRUM_2D(t, T, spectr_2d_pp, angle_of_periodic)                                                                 \
    SPECTRUM_3D(t, T, spectr_3d, angle_of_whole, angle_of_whole)                                                       \
    SPECTRUM_3D(t, T, spectr_3d_mixed_1, angle_of_mixed, angle_of_whole)                                               \
    SPECTRUM_3D(t, T, spectr_3d_mixed_2, angle_of_whole, angle_of_mixed)                                               \
    SPECTRUM_3D(t, T, spectr_3d_mixed_3, angle_of_mixed, angle_of_mixed)                                               \
    SPECTRUM_OF_SPHERE(t, T, sph_spectr_2d, angle_of_periodic)                                                         \
    SPECTRUM_OF_SPHERE(t, T, sph_spectr_dddd_2d, angle_of_whole)                                                       \
    ORV_EXPORT T PDEPL(pl_##t##sin)(const T* angle) { return orv::pdepl::sine_of(*angle); }                            \
    /* Of theta at all nt + 1 rows of a sphere. */                                                                     \
    ORV_EXPORT void PDEPL(t##_sphere_s)(const i64* nt, const T* length, const T* first, T* sines)                      \
    {                                                                                                                  \
        for (i64 j = 0; j <= *nt; ++j) {                                                                               \
            const T theta = static_cast<T>(j) * *length / static_cast<T>(*nt) + *first;                                \
            sines[j] = PDEPL(pl_##t##sin)(&theta);                                                                     \
        }                                                                                                              \
    }

namespace orv::kernels::pdepl {
TABLES(s, float)
TABLES(d, double)
} // namespace orv::kernels::pdepl
