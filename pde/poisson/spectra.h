// What a second difference along a transformed axis does to each wave, times the square of the step h along the axis of
// the tridiagonal systems: (2*h*sin(a)/step)^2, where a goes by the kind of the sides.
#pragma once

#include "frame/kernels/pdepl.h"

#include <cmath>

namespace orv::pdepl {

inline constexpr double pi = 3.14159265358979323846;

// Half of the phase from one point to the next, of wave i = 0, 1, ... on n cells.
inline double angle_of_whole(i64 i, i64 n) { return static_cast<double>(i) * pi / (2 * static_cast<double>(n)); }
inline double angle_of_mixed(i64 i, i64 n)
{
    return static_cast<double>(2 * i + 1) * pi / (4 * static_cast<double>(n));
}
inline double angle_of_periodic(i64 i, i64 n) { return static_cast<double>(i) * pi / static_cast<double>(n); }
using Angle = double(i64 i, i64 n);

inline Angle& angle_of(i64 pair)
{
    using namespace kernels::pdepl;
    return pair == pp ? angle_of_periodic : pair == dd || pair == nn ? angle_of_whole : angle_of_mixed;
}

inline double sine_of(double a) { return std::sin(a); }
inline float sine_of(float a) { return sinf(a); }

// n + 1 entries, each with what is beside the difference on the diagonal of a system: a constant and q*h*h.
template <class T> i64 fill_spectrum(i64 n, T step, T h, T constant, T q, Angle& angle, T* table)
{
    if (n == 0 || step == 0) return kernels::pdepl::no_points;
    for (i64 i = 0; i <= n; ++i) {
        const T root = 2 * h * sine_of(static_cast<T>(angle(i, n))) / step;
        table[i] = root * root + constant + q * h * h;
    }
    return kernels::pdepl::good;
}

} // namespace orv::pdepl
