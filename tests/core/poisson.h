// Poisson solvers as programs make and call them.
#pragma once

#include "tests/support/random.h"

#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <orv/poisson.h>
#include <string>
#include <vector>

namespace orv::test {

inline const double pi = std::acos(-1.);

using Solver = std::unique_ptr<orv_poisson, void (*)(orv_poisson*)>;

template <class T> constexpr int precision = sizeof(T) == 8 ? ORV_DFT_DOUBLE : ORV_DFT_SINGLE;
template <class T> using Side = std::conditional_t<sizeof(T) == 8, orv_dpoisson_side, orv_spoisson_side>;

template <class T> Solver solver(const std::vector<orv_poisson_axis>& axes, double q)
{
    orv_poisson* p = nullptr;
    EXPECT_EQ(orv_poisson_create(&p, precision<T>, static_cast<int>(axes.size()), axes.data(), q), ORV_OK)
        << orv_last_error();
    return {p, orv_poisson_free};
}
template <class T> Solver sphere(const orv_poisson_axis& phi, const orv_poisson_axis& theta, double q)
{
    orv_poisson* p = nullptr;
    EXPECT_EQ(orv_poisson_create_sphere(&p, precision<T>, &phi, &theta, q), ORV_OK) << orv_last_error();
    return {p, orv_poisson_free};
}
inline orv_status solve(const Solver& p, double* u, const int64_t* strides = nullptr,
                        const orv_dpoisson_side* sides = nullptr, double* misfit = nullptr)
{
    return orv_dpoisson_solve(p.get(), u, strides, sides, misfit);
}
inline orv_status solve(const Solver& p, float* u, const int64_t* strides = nullptr,
                        const orv_spoisson_side* sides = nullptr, double* misfit = nullptr)
{
    return orv_spoisson_solve(p.get(), u, strides, sides, misfit);
}

inline orv_poisson_axis unit(int64_t n, int low, int high) { return {0, 1, n, low, high}; }

} // namespace orv::test
