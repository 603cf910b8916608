// Problems whose solution is known as a function: the error falls with the square of the step.
#include "tests/pde/poisson.h"

#include <gtest/gtest.h>

namespace orv::test {
namespace {

// u = sin(x + 0.3)*cos(1.5y - 0.2) (*exp(z/2)), or waves of full periods where a pair of sides is periodic.
struct Wave {
    bool periodic[3];
    double at(int axis, double x, int derivative) const
    {
        const double w[] = {1, 1.5, 0.5}, k = periodic[axis] ? 2 * std::acos(-1.) : w[axis], shift[] = {0.3, -0.2, 0.1};
        const double power = std::pow(k, derivative), angle = k * x + shift[axis] + derivative * std::acos(0.);
        return power * std::sin(angle);
    }
};

template <int axes> double error_on(const std::string& sides, const i64 (&cells)[axes], double q)
{
    Problem<double, axes> p(sides, cells, q);
    Wave wave{};
    for (int a = 0; a < axes; ++a) p.from[a] = 0, p.to[a] = 1, wave.periodic[a] = sides[2 * a] == 'p';
    std::vector<double> u(p.f.size());
    i64 at[3] = {0, 0, 0};
    for (i64 point = 0; point < p.points(); ++point) {
        double x[3], value = 1, f = 0;
        for (int a = 0; a < axes; ++a)
            x[a] = static_cast<double>(at[a]) / static_cast<double>(cells[a]), value *= wave.at(a, x[a], 0);
        const auto differentiated = [&](int axis, int times) {
            double all = 1;
            for (int a = 0; a < axes; ++a) all *= wave.at(a, x[a], a == axis ? times : 0);
            return all;
        };
        for (int a = 0; a < axes; ++a) f -= differentiated(a, 2);
        u[point] = value, p.f[point] = f + q * value;
        for (int a = 0; a < axes; ++a) {
            i64 of_side = 0, scale = 1;
            for (int b = 0; b < axes; ++b)
                if (b != a) of_side += at[b] * scale, scale *= cells[b] + 1;
            const int side = 2 * a + (at[a] != 0);
            if (at[a] != 0 && at[a] != cells[a]) continue;
            p.bd[side][of_side] = sides[side] == 'd' ? value : differentiated(a, 1) * (at[a] == 0 ? -1 : 1);
        }
        for (int a = 0; a < axes && ++at[a] > cells[a]; ++a) at[a] = 0;
    }
    const i64 stat = p.run();
    EXPECT_TRUE(stat == pdepl::good || stat == pdepl::singular);
    // Up to a constant where one is open.
    double mean = 0, worst = 0;
    if (stat == pdepl::singular)
        for (std::size_t k = 0; k < u.size(); ++k) mean += (p.f[k] - u[k]) / static_cast<double>(u.size());
    for (std::size_t k = 0; k < u.size(); ++k) worst = std::fmax(worst, std::fabs(p.f[k] - u[k] - mean));
    return worst;
}

TEST(PoissonOrder, is_two_on_rectangles)
{
    for (const char* sides : {"dddd", "dnnd", "ndpp", "nnnn", "ppnn", "ppdd", "pppp", "nndn"})
        for (const double q : {0., 2., -1.}) {
            const i64 coarse[] = {16, 20}, fine[] = {64, 80};
            const double order = std::log2(error_on(sides, coarse, q) / error_on(sides, fine, q)) / 2;
            EXPECT_NEAR(order, 2, 0.15) << sides << " q=" << q;
        }
}

TEST(PoissonOrder, is_two_in_boxes)
{
    for (const char* sides : {"dddddd", "dnppnd", "ppndnn", "nnnnnn"})
        for (const double q : {0., 1.}) {
            const i64 coarse[] = {8, 12, 10}, fine[] = {16, 24, 20};
            const double order = std::log2(error_on(sides, coarse, q) / error_on(sides, fine, q));
            EXPECT_NEAR(order, 2, 0.25) << sides << " q=" << q;
        }
}

} // namespace
} // namespace orv::test
