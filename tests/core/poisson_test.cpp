// Poisson solvers as programs call them.
#include "core/team/eagerness.h"
#include "tests/core/poisson.h"
#include "tests/support/probe.h"

#include <cmath>
#include <filesystem>
#include <functional>
#include <limits>
#include <orv/threads.h>
#include <thread>

namespace orv::test {
namespace {

template <class T> class Poisson : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Poisson, Reals);

// u = x^2 + 2y^2 is exact on any grid: -(2 + 4) + q*u. Two given sides and two slopes.
TYPED_TEST(Poisson, finds_a_polynomial_from_its_values_and_slopes)
{
    using T = TypeParam;
    const int64_t nx = 12, ny = 7;
    const auto p = solver<T>({{-1, 2, nx, ORV_DIRICHLET, ORV_NEUMANN}, {0, 2, ny, ORV_NEUMANN, ORV_DIRICHLET}}, 0.5);
    const auto x = [&](int64_t i) { return -1 + 3. * static_cast<double>(i) / nx; };
    const auto y = [&](int64_t j) { return 2. * static_cast<double>(j) / ny; };
    const auto u = [&](double a, double b) { return a * a + 2 * b * b; };
    std::vector<T> f((nx + 1) * (ny + 1)), low(ny + 1), high(3 * (nx + 1));
    for (int64_t j = 0; j <= ny; ++j)
        for (int64_t i = 0; i <= nx; ++i) f[i + j * (nx + 1)] = static_cast<T>(-6 + 0.5 * u(x(i), y(j)));
    for (int64_t j = 0; j <= ny; ++j) low[j] = static_cast<T>(u(-1, y(j)));
    for (int64_t i = 0; i <= nx; ++i) high[3 * i] = static_cast<T>(u(x(i), 2));
    const T slope = 4; // one value for the whole side
    const Side<T> sides[] = {{low.data(), {1, 0}}, {&slope, {0, 0}}, {nullptr, {0, 0}}, {high.data(), {3, 0}}};
    double misfit = 1;
    ASSERT_EQ(solve(p, f.data(), nullptr, sides, &misfit), ORV_OK) << orv_last_error();
    EXPECT_EQ(misfit, 0);
    EXPECT_EQ(orv_poisson_is_up_to_constant(p.get()), 0);
    // A rounding of f and one of the answer, by the condition (4/hx^2 + 4/hy^2 + q) / ((pi/6)^2 + (pi/4)^2 + q).
    constexpr double condition = 82, largest = 12;
    for (int64_t j = 0; j <= ny; ++j)
        for (int64_t i = 0; i <= nx; ++i)
            EXPECT_NEAR(f[i + j * (nx + 1)], u(x(i), y(j)),
                        2 * condition * largest * std::numeric_limits<T>::epsilon());
}

// Transforms between a given value and a slope lose up to a rounding for each point of a row, and no more.
TEST(PoissonInSinglePrecision, keeps_its_digits_on_long_rows)
{
    const int64_t n = 4000;
    for (const auto& [low, high] : {std::pair{ORV_DIRICHLET, ORV_NEUMANN}, {ORV_NEUMANN, ORV_DIRICHLET}}) {
        const std::vector<orv_poisson_axis> axes = {unit(n, low, high), unit(20, ORV_DIRICHLET, ORV_DIRICHLET)};
        auto single = random_elements<float>((n + 1) * 21, 6);
        std::vector<double> wide(single.begin(), single.end());
        ASSERT_EQ(solve(solver<float>(axes, 0), single.data()), ORV_OK);
        ASSERT_EQ(solve(solver<double>(axes, 0), wide.data()), ORV_OK);
        double error = 0, size = 0;
        for (std::size_t k = 0; k < wide.size(); ++k) {
            error = std::fmax(error, std::fabs(static_cast<double>(single[k]) - wide[k]));
            size = std::fmax(size, std::fabs(wide[k]));
        }
        EXPECT_LE(error, static_cast<double>(n) * std::numeric_limits<float>::epsilon() * size);
    }
}

TYPED_TEST(Poisson, takes_any_layout_to_the_same_bits)
{
    using T = TypeParam;
    const auto p = solver<T>({unit(6, ORV_DIRICHLET, ORV_DIRICHLET), unit(4, ORV_PERIODIC, ORV_PERIODIC),
                              unit(5, ORV_NEUMANN, ORV_DIRICHLET)},
                             1);
    const auto f = random_elements<T>(7 * 5 * 6, 1), values = random_elements<T>(5 * 6, 2);
    const Side<T> sides[6] = {{values.data(), {1, 5}}};
    auto plain = f;
    ASSERT_EQ(solve(p, plain.data(), nullptr, sides), ORV_OK);
    const int64_t layouts[][3] = {{1, 7, 35}, {30, 6, 1}, {2, 20, 100}, {-1, 7, 35}};
    for (const auto& strides : layouts) {
        std::vector<T> apart(2000, T(-77));
        T* const first = apart.data() + 500;
        const auto at = [&](int64_t i, int64_t j, int64_t k) -> T& {
            return first[i * strides[0] + j * strides[1] + k * strides[2]];
        };
        const auto each = [&](const auto& visit) {
            for (int64_t k = 0, n = 0; k < 6; ++k)
                for (int64_t j = 0; j < 5; ++j)
                    for (int64_t i = 0; i < 7; ++i, ++n) visit(at(i, j, k), n);
        };
        each([&](T& element, int64_t n) { element = f[n]; });
        ASSERT_EQ(solve(p, first, strides, sides), ORV_OK);
        each([&](T& element, int64_t n) {
            EXPECT_EQ(element, plain[n]);
            element = T(-77);
        });
        for (const T element : apart) EXPECT_EQ(element, T(-77)); // nothing between the points was touched
    }
}

TYPED_TEST(Poisson, tells_what_was_taken_off_where_a_constant_is_open)
{
    using T = TypeParam;
    const auto p = solver<T>({unit(8, ORV_NEUMANN, ORV_NEUMANN), unit(6, ORV_PERIODIC, ORV_PERIODIC)}, 0);
    EXPECT_EQ(orv_poisson_is_up_to_constant(p.get()), 1);
    std::vector<T> f(9 * 7);
    for (int64_t j = 0; j <= 6; ++j)
        for (int64_t i = 0; i <= 8; ++i)
            f[i + 9 * j] = static_cast<T>(std::cos(pi * static_cast<double>(i) / 8) + 0.02);
    for (int64_t i = 0; i <= 8; ++i)
        f[i + 9 * 6] = std::numeric_limits<T>::quiet_NaN(); // the first row again, not read
    // u = cos(pi*x)*h^2/(2*sin(pi*h/2))^2 solves the grid's equation.
    const double h = 1. / 8, root = 2 * std::sin(pi * h / 2) / h;
    double misfit = 0;
    ASSERT_EQ(solve(p, f.data(), nullptr, nullptr, &misfit), ORV_OK) << orv_last_error();
    EXPECT_NEAR(misfit, 0.02, 4 * std::numeric_limits<T>::epsilon());
    for (int64_t j = 0; j <= 6; ++j)
        for (int64_t i = 0; i <= 8; ++i)
            EXPECT_NEAR(f[i + 9 * j], std::cos(pi * static_cast<double>(i) / 8) / (root * root),
                        64 * std::numeric_limits<T>::epsilon());

    // 1 flows in through one side and -1 through the other: nothing is amiss. Twice as much does not fit at all.
    std::vector<T> slopes(9 * 7, T(0));
    const T in = 1, out = -1, twice = -2;
    const Side<T> fitting[4] = {{&in, {0, 0}}, {&out, {0, 0}}}, wrong[4] = {{&in, {0, 0}}, {&twice, {0, 0}}};
    EXPECT_EQ(solve(p, slopes.data(), nullptr, fitting, &misfit), ORV_OK);
    EXPECT_NEAR(misfit, 0, 64 * std::numeric_limits<T>::epsilon());
    EXPECT_NEAR(slopes[0] - slopes[8], 1, 64 * std::numeric_limits<T>::epsilon());
    std::vector<T> untouched(9 * 7, T(0.25));
    untouched[0] = 3;
    const auto before = untouched;
    EXPECT_EQ(solve(p, untouched.data(), nullptr, wrong, &misfit), ORV_NOT_SOLVABLE);
    EXPECT_NE(std::string(orv_last_error()).find("do not cancel"), std::string::npos) << orv_last_error();
    EXPECT_EQ(untouched, before);
    EXPECT_EQ(orv_poisson_set_tolerance(p.get(), std::numeric_limits<double>::infinity()), ORV_OK);
    EXPECT_EQ(solve(p, untouched.data(), nullptr, wrong, &misfit), ORV_OK);
    EXPECT_EQ(orv_poisson_set_tolerance(p.get(), -1), -2);
    EXPECT_EQ(orv_poisson_set_tolerance(nullptr, 1), -1);
}

TYPED_TEST(Poisson, has_nan_at_all_unknowns_or_refuses_it)
{
    using T = TypeParam;
    const T nan = std::numeric_limits<T>::quiet_NaN();
    for (const int kind : {ORV_DIRICHLET, ORV_NEUMANN, ORV_PERIODIC}) {
        const auto p = solver<T>({unit(6, ORV_DIRICHLET, ORV_DIRICHLET), unit(8, kind, kind)}, 0);
        for (int64_t at = 0; at < 7 * 9; ++at) {
            std::vector<T> u(7 * 9, T(1));
            u[at] = nan;
            ASSERT_EQ(solve(p, u.data()), ORV_OK);
            const auto is_told = [&](int64_t place) {
                const int64_t i = place % 7, j = place / 7;
                return i == 0 || i == 6 || (kind == ORV_DIRICHLET && (j == 0 || j == 8));
            };
            const bool is_read = !is_told(at) && !(kind == ORV_PERIODIC && at / 7 == 8);
            for (int64_t k = 0; k < 7 * 9; ++k) EXPECT_EQ(std::isnan(u[k]), is_read && !is_told(k)) << at << " " << k;
        }
    }
    const auto open = solver<T>({unit(6, ORV_NEUMANN, ORV_NEUMANN), unit(8, ORV_PERIODIC, ORV_PERIODIC)}, 0);
    std::vector<T> u(7 * 9, T(0));
    u[10] = nan;
    EXPECT_EQ(orv_poisson_set_tolerance(open.get(), HUGE_VAL), ORV_OK);
    EXPECT_EQ(solve(open, u.data()), ORV_NOT_SOLVABLE);
}

// The eigenvalues of 4 by 4 cells of size 1/4 between given sides: 64*(sin(i*pi/8)^2 + sin(j*pi/8)^2).
TYPED_TEST(Poisson, refuses_a_resonance)
{
    const orv_poisson_axis axes[] = {unit(4, ORV_DIRICHLET, ORV_DIRICHLET), unit(4, ORV_DIRICHLET, ORV_DIRICHLET),
                                     unit(4, ORV_NEUMANN, ORV_NEUMANN)};
    const auto wave = [](int k) { return 64 * std::pow(std::sin(k * pi / 8), 2); };
    for (const double q : {-wave(1) - wave(1), -wave(2) - wave(3), -wave(3) - wave(1)}) {
        orv_poisson* p = nullptr;
        EXPECT_EQ(orv_poisson_create(&p, precision<TypeParam>, 2, axes, q), ORV_RESONANCE);
        EXPECT_EQ(p, nullptr);
        EXPECT_EQ(orv_poisson_create(&p, precision<TypeParam>, 3, axes, q - wave(3)), ORV_RESONANCE);
        EXPECT_EQ(orv_poisson_create(&p, precision<TypeParam>, 2, axes, q * 1.01), ORV_OK);
        orv_poisson_free(p);
    }
}

TYPED_TEST(Poisson, solves_on_the_sphere_from_pole_to_pole_and_on_patches)
{
    using T = TypeParam;
    const int64_t np = 48, nt = 36;
    // u = sin(t)*cos(p) is an eigenfunction of eigenvalue 2.
    const auto u = [](double phi, double theta) { return std::sin(theta) * std::cos(phi); };
    const auto worst = [&](const orv_poisson_axis& phi, const orv_poisson_axis& theta, double q) {
        const auto p = sphere<T>(phi, theta, q);
        const auto at = [](const orv_poisson_axis& axis, int64_t i) {
            return axis.a + (axis.b - axis.a) * static_cast<double>(i) / static_cast<double>(axis.n);
        };
        std::vector<T> f((np + 1) * (nt + 1)), sides_of[4];
        for (int64_t j = 0; j <= nt; ++j)
            for (int64_t i = 0; i <= np; ++i)
                f[i + j * (np + 1)] = static_cast<T>((2 + q) * u(at(phi, i), at(theta, j)));
        for (int64_t j = 0; j <= nt; ++j)
            for (const int high : {0, 1})
                sides_of[high].push_back(static_cast<T>(u(high ? phi.b : phi.a, at(theta, j))));
        for (int64_t i = 0; i <= np; ++i)
            for (const int high : {0, 1})
                sides_of[2 + high].push_back(static_cast<T>(u(at(phi, i), high ? theta.b : theta.a)));
        Side<T> sides[4];
        for (int side = 0; side < 4; ++side) sides[side] = {sides_of[side].data(), {1, 0}};
        EXPECT_EQ(solve(p, f.data(), nullptr, sides), ORV_OK) << orv_last_error();
        double most = 0;
        for (int64_t j = 0; j <= nt; ++j)
            for (int64_t i = 0; i <= np; ++i)
                most = std::fmax(most, std::fabs(f[i + j * (np + 1)] - u(at(phi, i), at(theta, j))));
        return most;
    };
    const orv_poisson_axis circle{0, 2 * pi, np, ORV_PERIODIC, ORV_PERIODIC},
        third{0.2, 2, np, ORV_DIRICHLET, ORV_DIRICHLET};
    const orv_poisson_axis whole{0, pi, nt, ORV_POLE, ORV_POLE}, belt{0.7, 2.3, nt, ORV_DIRICHLET, ORV_DIRICHLET};
    const double steps = 1. / (nt * nt); // of second order
    EXPECT_LE(worst(circle, whole, 0), 10 * steps);
    EXPECT_LE(worst(circle, whole, 2.5), 10 * steps);
    EXPECT_LE(worst(circle, belt, 0), 10 * steps);
    EXPECT_LE(worst(third, belt, 1), 10 * steps);
}

TYPED_TEST(Poisson, has_the_same_bits_on_any_number_of_threads)
{
    using T = TypeParam;
    orv_team_set_eagerness(1e9);
    const std::vector<std::vector<orv_poisson_axis>> problems = {
        {unit(70, ORV_DIRICHLET, ORV_NEUMANN), unit(33, ORV_NEUMANN, ORV_NEUMANN)},
        {unit(38, ORV_PERIODIC, ORV_PERIODIC), unit(21, ORV_PERIODIC, ORV_PERIODIC)},
        {unit(12, ORV_PERIODIC, ORV_PERIODIC), unit(9, ORV_NEUMANN, ORV_DIRICHLET),
         unit(14, ORV_DIRICHLET, ORV_DIRICHLET)}};
    for (const auto& axes : problems)
        for (const double q : {1., -30.}) {
            int64_t points = 1;
            for (const auto& axis : axes) points *= axis.n + 1;
            const auto f = random_elements<T>(points, 3);
            std::vector<T> first;
            for (const int threads : {1, 2, 3, 5}) {
                orv_set_thread_num_threads(threads);
                const auto p = solver<T>(axes, q);
                auto u = f;
                EXPECT_EQ(solve(p, u.data()), ORV_OK);
                if (first.empty()) first = u;
                EXPECT_EQ(u, first) << threads << " threads";
            }
        }
    orv_set_thread_num_threads(0);
    orv_team_set_eagerness(1);
}

TYPED_TEST(Poisson, serves_several_threads_at_once)
{
    using T = TypeParam;
    const auto p = solver<T>({unit(20, ORV_DIRICHLET, ORV_NEUMANN), unit(30, ORV_PERIODIC, ORV_PERIODIC)}, 2);
    const auto f = random_elements<T>(21 * 31, 4);
    auto alone = f;
    ASSERT_EQ(solve(p, alone.data()), ORV_OK);
    std::vector<std::vector<T>> results(4, f);
    std::vector<std::thread> threads;
    for (auto& u : results)
        threads.emplace_back([&] {
            for (int times = 0; times < 20; ++times) u = f, solve(p, u.data());
        });
    for (auto& thread : threads) thread.join();
    for (const auto& u : results) EXPECT_EQ(u, alone);
}

TYPED_TEST(Poisson, refuses_bad_arguments_with_a_sentence)
{
    using T = TypeParam;
    const int code = precision<T>;
    const orv_poisson_axis good[] = {unit(4, ORV_DIRICHLET, ORV_DIRICHLET), unit(4, ORV_DIRICHLET, ORV_DIRICHLET),
                                     unit(4, 0, 0)};
    orv_poisson* p = nullptr;
    EXPECT_EQ(orv_poisson_create(nullptr, code, 2, good, 0), -1);
    EXPECT_EQ(orv_poisson_create(&p, 7, 2, good, 0), -2);
    EXPECT_EQ(orv_poisson_create(&p, code, 1, good, 0), -3);
    EXPECT_EQ(orv_poisson_create(&p, code, 4, good, 0), -3);
    EXPECT_EQ(orv_poisson_create(&p, code, 2, nullptr, 0), -4);
    EXPECT_EQ(orv_poisson_create(&p, code, 2, good, std::nan("")), -5);
    const auto refused = [&](int at, const orv_poisson_axis& bad, const char* why) {
        orv_poisson_axis axes[] = {good[0], good[1], good[2]};
        axes[at] = bad;
        EXPECT_EQ(orv_poisson_create(&p, code, 3, axes, 0), -4);
        EXPECT_NE(std::string(orv_last_error()).find(why), std::string::npos) << orv_last_error();
    };
    refused(0, {1, 1, 4, 0, 0}, "ascend");
    refused(1, {0, HUGE_VAL, 4, 0, 0}, "ascend");
    refused(2, unit(1, 0, 0), "1 cells along z");
    refused(0, unit(2, 2, 2), "takes 4 at least");
    refused(1, unit(7, 2, 2), "odd");
    refused(0, unit(4, 2, 0), "one end of x is periodic");
    refused(2, unit(4, 0, 3), "the ends of z are 0 and 3");
    const orv_poisson_axis circle{0, 6, 8, 2, 2}, whole{0, pi, 8, 3, 3}, belt{1, 2, 8, 0, 0}, patch{0, 1, 8, 0, 0};
    EXPECT_EQ(orv_poisson_create_sphere(&p, code, nullptr, &whole, 0), -3);
    EXPECT_EQ(orv_poisson_create_sphere(&p, code, &circle, nullptr, 0), -4);
    EXPECT_EQ(orv_poisson_create_sphere(&p, code, &patch, &whole, 0), -4);
    EXPECT_EQ(orv_poisson_create_sphere(&p, code, &whole, &belt, 0), -3);
    const orv_poisson_axis beyond{1, 4, 8, 0, 0}, no_pole{0.1, pi, 8, 3, 3};
    EXPECT_EQ(orv_poisson_create_sphere(&p, code, &circle, &beyond, 0), -4);
    EXPECT_EQ(orv_poisson_create_sphere(&p, code, &circle, &no_pole, 0), -4);
    EXPECT_EQ(p, nullptr);

    const auto one = solver<T>({good[0], good[1]}, 0);
    T u[25] = {};
    const int64_t still[] = {1, 0};
    EXPECT_EQ(solve({nullptr, orv_poisson_free}, u), -1);
    EXPECT_EQ(solve(one, static_cast<T*>(nullptr)), -2);
    EXPECT_EQ(solve(one, u, still), -3);
    if (sizeof(T) == 8) {
        EXPECT_EQ(orv_spoisson_solve(one.get(), reinterpret_cast<float*>(u), nullptr, nullptr, nullptr), -1);
    }
    orv_poisson_free(nullptr);
    EXPECT_EQ(orv_poisson_is_up_to_constant(nullptr), 0);
}

TYPED_TEST(Poisson, prints_nothing_and_leaks_nothing_wherever_memory_runs_out)
{
    using T = TypeParam;
    const orv_poisson_axis axes[] = {unit(6, ORV_PERIODIC, ORV_PERIODIC), unit(5, ORV_NEUMANN, ORV_NEUMANN),
                                     unit(4, ORV_NEUMANN, ORV_NEUMANN)};
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    int failures = 0;
    orv_status status = ORV_OK;
    each_allocation_fails(
        [&] {
            orv_poisson* p = nullptr;
            std::vector<T> u(7 * 6 * 5, T(1));
            const int64_t strides[] = {30, 5, 1};
            status = orv_poisson_create(&p, precision<T>, 3, axes, 0);
            if (status == ORV_OK) {
                orv_poisson_set_tolerance(p, HUGE_VAL);
                status = solve({p, orv_poisson_free}, u.data(), strides);
            }
        },
        [&] {
            EXPECT_TRUE(status == ORV_OK || status == ORV_NO_MEMORY) << status;
            failures += status != ORV_OK;
        });
    EXPECT_GT(failures, 6);
    EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(std::filesystem::exists("ORV_Poisson_Library_Log.txt"));
}

} // namespace
} // namespace orv::test
