// Helmholtz problems on spheres and on patches of them: against the same system by elimination, against spherical
// harmonics, and the life of their solvers.
#include "tests/pde/messages.h"
#include "tests/pde/poisson.h"
#include "tests/support/probe.h"

#include <gtest/gtest.h>

namespace orv::test {
namespace {

using namespace pdepl;
const double pi = std::acos(-1.);

#define SPHERE_KERNEL(name, Type, stem)                                                                                \
    template <class T> auto* name = kernel<pdepl::Type<T>>("pdepl", letter<T>, stem);
SPHERE_KERNEL(init_circle, InitSphere, "_init_sph_p")
SPHERE_KERNEL(init_patch, InitSphere, "_init_sph_np")
SPHERE_KERNEL(commit_circle, StepSphere, "_commit_sph_p")
SPHERE_KERNEL(commit_patch, StepPatch, "_commit_sph_np")
SPHERE_KERNEL(solve_circle, StepSphere, "_sph_p")
SPHERE_KERNEL(solve_patch, StepPatch, "_sph_np")

template <class T> struct Sphere {
    bool circle;
    T ap = 0, bp, at, bt, q;
    i64 np, nt, stat = -1, ipar[ipar_size];
    Guarded<T> dpar;
    std::vector<T> f;
    imports::Handle handles[2] = {nullptr, nullptr};

    // A circle, from pole to pole unless theta is told; or a patch of a third of it.
    Sphere(bool is_circle, double from, double to, i64 across, i64 down, double coefficient)
        : circle(is_circle), bp(static_cast<T>(is_circle ? 2 * pi : 2.1)), at(static_cast<T>(from)),
          bt(static_cast<T>(to)), q(static_cast<T>(coefficient)), np(across), nt(down),
          dpar(static_cast<std::size_t>(dpar_size_sphere(across, down))),
          f(static_cast<std::size_t>((across + 1) * (down + 1)), T(0))
    {
        (circle ? init_circle<T> : init_patch<T>)(&ap, &bp, &at, &bt, &np, &nt, &q, ipar, dpar.data(), &stat);
        ipar[ipar_errors] = ipar[ipar_warnings] = 0;
    }
    Sphere(const Sphere&) = delete;
    Sphere& operator=(const Sphere&) = delete;
    ~Sphere()
    {
        if (handles[0] != nullptr) free();
    }
    i64 commit()
    {
        if (circle) commit_circle<T>(f.data(), &handles[0], &handles[1], ipar, dpar.data(), &stat);
        else commit_patch<T>(f.data(), &handles[0], ipar, dpar.data(), &stat);
        return stat;
    }
    i64 solve()
    {
        if (circle) solve_circle<T>(f.data(), &handles[0], &handles[1], ipar, dpar.data(), &stat);
        else solve_patch<T>(f.data(), &handles[0], ipar, dpar.data(), &stat);
        return stat;
    }
    i64 free()
    {
        if (circle) kernel<kernels::pdepl::free_sph_p>()(&handles[0], &handles[1], ipar, &stat);
        else kernel<kernels::pdepl::free_sph_np>()(&handles[0], ipar, &stat);
        return stat;
    }
    i64 run() { return commit() < 0 ? stat : solve(); }

    double phi(i64 i) const { return static_cast<double>(i) * static_cast<double>(bp) / static_cast<double>(np); }
    double theta(i64 j) const
    {
        return static_cast<double>(at) +
               static_cast<double>(j) * (static_cast<double>(bt) - static_cast<double>(at)) / static_cast<double>(nt);
    }
    T& value(i64 i, i64 j) { return f[i + j * (np + 1)]; }
};

// The balance of each cell, cells of a pole row as one: the matrix, and which unknown a point of the grid is.
struct Balances {
    std::vector<i64> unknown;
    std::vector<long double> matrix, right;
    i64 count = 0;
};
template <class T> Balances balances_of(Sphere<T>& sphere)
{
    const i64 np = sphere.np, nt = sphere.nt;
    const bool poles = sphere.ipar[ipar_theta] == 0;
    Balances b;
    b.unknown.assign(sphere.f.size(), -1);
    const auto number = [&](i64 i, i64 j) -> i64& {
        return b.unknown[(sphere.circle ? (i + np) % np : i) + j * (np + 1)];
    };
    const i64 north = poles ? b.count++ : -1, south = poles ? b.count++ : -1;
    for (i64 j = 0; j <= nt; ++j)
        for (i64 i = sphere.circle ? 0 : 1; i < np; ++i) number(i, j) = j == 0 ? north : j == nt ? south : b.count++;
    b.matrix.assign(b.count * b.count, 0), b.right.assign(b.count, 0);
    const long double h = (static_cast<long double>(sphere.bt) - static_cast<long double>(sphere.at)) / nt,
                      width = static_cast<long double>(sphere.bp) / np;
    const auto s = [&](i64 j) { return std::sin(static_cast<long double>(sphere.at) + j * h); };
    const auto add = [&](i64 row, i64 column, long double value) {
        if (row < 0) return;
        b.matrix[row * b.count + row] += value;
        if (column >= 0) b.matrix[row * b.count + column] -= value;
    };
    for (i64 j = 1; j < nt; ++j)
        for (i64 i = sphere.circle ? 0 : 1; i < np; ++i) {
            const i64 row = number(i, j);
            const long double f = static_cast<long double>(sphere.value(i, j));
            b.right[row] += s(j) * h * h * f;
            b.matrix[row * b.count + row] += static_cast<long double>(sphere.q) * h * h * s(j);
            for (const int way : {-1, 1}) {
                const i64 beside = number(i, j + way);
                const long double between = (s(j) + s(j + way)) / 2;
                add(row, beside, between);
                if (beside == north || beside == south) add(beside, row, between);
                add(row, number(i + way, j), h * h / (width * width * s(j)));
            }
            // A cap has an eighth of the weight of the row beside it, and its right-hand side.
            for (const bool at_south : {false, true})
                if (poles && j == (at_south ? nt - 1 : 1)) {
                    const i64 cap = at_south ? south : north;
                    b.right[cap] += s(j) / 8 * h * h * f;
                    b.matrix[cap * b.count + cap] += static_cast<long double>(sphere.q) * h * h * s(j) / 8;
                }
        }
    return b;
}

template <class T> class Spheres : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Spheres, Reals);

TYPED_TEST(Spheres, solve_the_balances_of_their_cells)
{
    using T = TypeParam;
    std::uint64_t stream = 0;
    for (const bool circle : {true, false})
        for (const bool to_poles : {true, false})
            for (const double q : {0.75, 0., -1.5})
                for (const auto& [np, nt] : {std::pair<i64, i64>{8, 7}, {10, 6}, {4, 9}}) {
                    if (circle && to_poles && q == 0) continue;
                    Sphere<T> sphere(circle, to_poles ? 0 : 0.4, to_poles ? pi : 2.2, np, nt, q);
                    Random random(++stream);
                    for (T& value : sphere.f) value = random.value<T>();
                    EXPECT_EQ(sphere.ipar[ipar_theta], circle && to_poles ? 0 : 1);
                    const Balances b = balances_of(sphere);
                    auto inverse = b.matrix;
                    ASSERT_TRUE(invert(inverse, b.count));
                    const auto u = product(inverse, b.right);
                    const long double condition = row_sum_norm(b.matrix, b.count) * row_sum_norm(inverse, b.count);
                    const long double allowed = 16 * std::numeric_limits<T>::epsilon() / 2.0L * condition * largest(u);
                    ASSERT_EQ(sphere.run(), good) << circle << to_poles << q;
                    for (i64 j = 0; j <= nt; ++j)
                        for (i64 i = 0; i <= np; ++i) {
                            const i64 k = b.unknown[(circle ? i % np : i) + j * (np + 1)];
                            EXPECT_NEAR(sphere.value(i, j), k < 0 ? 0 : u[k], allowed) << i << " " << j << " q=" << q;
                        }
                }
}

// u = sin(t)^2*cos(2p)/... with l = 2: -laplacian(u) = 6u. And l = 1: cos(t), 2u.
TEST(SphereOrder, is_two)
{
    const auto error = [](i64 np, i64 nt, double q, bool around) {
        Sphere<double> sphere(true, 0, pi, np, nt, q);
        const auto u = [&](i64 i, i64 j) {
            const double s = std::sin(sphere.theta(j));
            return around ? s * s * std::cos(2 * sphere.phi(i) + 0.5) : std::cos(sphere.theta(j));
        };
        for (i64 j = 0; j <= nt; ++j)
            for (i64 i = 0; i <= np; ++i) sphere.value(i, j) = ((around ? 6 : 2) + q) * u(i, j);
        EXPECT_EQ(sphere.run(), q == 0 ? singular : good);
        double worst = 0;
        for (i64 j = 0; j <= nt; ++j)
            for (i64 i = 0; i <= np; ++i) worst = std::fmax(worst, std::fabs(sphere.value(i, j) - u(i, j)));
        return worst;
    };
    for (const bool around : {true, false})
        for (const double q : {0., 1.})
            EXPECT_NEAR(std::log2(error(32, 20, q, around) / error(128, 80, q, around)) / 2, 2, 0.15) << around << q;
}

TYPED_TEST(Spheres, have_mean_zero_where_a_constant_is_open)
{
    using T = TypeParam;
    Sphere<T> sphere(true, 0, pi, 8, 6, 0);
    for (T& value : sphere.f) value = T(2.5); // does not fit: only 0 would
    EXPECT_EQ(sphere.run(), singular);
    EXPECT_EQ(sphere.ipar[ipar_status], singular);
    for (const T value : sphere.f) EXPECT_NEAR(value, 0, 64 * std::numeric_limits<T>::epsilon());
    EXPECT_EQ(sphere.solve(), singular);

    Sphere<T> cut(true, 1e-3, pi, 8, 6, 0);
    EXPECT_EQ(cut.run(), good);
}

TYPED_TEST(Spheres, are_whole_to_their_tolerance)
{
    const double beside = sizeof(TypeParam) == 8 ? 1e-11 : 1e-5, off = sizeof(TypeParam) == 8 ? 1e-9 : 1e-3;
    EXPECT_EQ(Sphere<TypeParam>(true, beside, pi, 8, 6, 0).ipar[ipar_theta], 0);
    EXPECT_EQ(Sphere<TypeParam>(true, off, pi, 8, 6, 0).ipar[ipar_theta], 1);
    EXPECT_EQ(Sphere<TypeParam>(true, 0, pi - off, 8, 6, 0).ipar[ipar_theta], 1);
    EXPECT_EQ(Sphere<TypeParam>(false, 0, pi, 8, 6, 0).ipar[ipar_theta], 1);
}

TYPED_TEST(Spheres, keep_their_tables_where_they_are_told_to_be)
{
    using T = TypeParam;
    for (const i64 np : {4, 6, 8, 22}) {
        Sphere<T> sphere(true, 0, pi, np, 5, 2);
        ASSERT_EQ(sphere.commit(), good);
        const i64 *const ipar = sphere.ipar, m = 3 * np / 4;
        EXPECT_EQ(ipar[13], 6);
        EXPECT_EQ(ipar[14], ipar[13] + 1 + np);
        EXPECT_EQ(ipar[15], ipar[14] + 1);
        EXPECT_EQ(ipar[16], ipar[15] + 1 + 5);
        EXPECT_EQ(ipar[17], ipar[16] + 1);
        EXPECT_EQ(ipar[18], ipar[17] + m);
        EXPECT_EQ(ipar[23], ipar[18] + 1);
        EXPECT_EQ(ipar[24], ipar[23] + m);
        const T h = T(pi) / 5;
        EXPECT_EQ(sphere.dpar[1], h);
        EXPECT_EQ(sphere.dpar[3], 2 * (h * h)); // the right-hand side's stage leaves it so
        for (i64 j = 0; j <= 5; ++j)
            EXPECT_NEAR(sphere.dpar[ipar[15] - 1 + j], std::sin(sphere.theta(j)),
                        4 * std::numeric_limits<T>::epsilon());
        for (i64 i = 0; i <= np; ++i) {
            const double root = 2 * h * std::sin(static_cast<double>(i) * pi / static_cast<double>(np)) /
                                (2 * pi / static_cast<double>(np));
            EXPECT_NEAR(sphere.dpar[5 + i], root * root,
                        16 * std::numeric_limits<T>::epsilon() * static_cast<double>(np));
        }
        ++sphere.ipar[24];
        EXPECT_EQ(sphere.solve(), 1); // an answer, and a warning
        EXPECT_EQ(sphere.ipar[ipar_status], 1);
    }
}

TYPED_TEST(Spheres, leave_the_last_point_of_an_odd_circle_out)
{
    using T = TypeParam;
    InFolder folder;
    Sphere<T> sphere(true, 0.5, 2, 9, 6, 1);
    sphere.ipar[ipar_warnings] = 1;
    EXPECT_EQ(shown([&] { sphere.commit(); }), "\n" + message(0x0c) + message(130, 9LL) + "\n\n");
    EXPECT_EQ(sphere.ipar[40], 4);
    EXPECT_EQ(sphere.solve(), good);
    for (i64 j = 0; j <= 6; ++j) {
        EXPECT_EQ(sphere.value(8, j), sphere.value(0, j));
        EXPECT_EQ(sphere.value(9, j), sphere.value(0, j));
    }
}

TYPED_TEST(Spheres, refuse_what_makes_no_sense_with_a_message)
{
    using T = TypeParam;
    struct Refusal {
        int position;
        i64 value;
        std::string line;
        i64 status;
    };
    for (const bool circle : {true, false})
        for (const auto& [position, value, line, status] :
             {Refusal{0, 8, message(117, 8LL), not_ready}, Refusal{10, 0, message(100, 0LL), not_allowed},
              Refusal{11, -2, message(101, -2LL), not_allowed}, Refusal{10, 1, message(116, 1LL), not_allowed},
              Refusal{3, 2, message(132, 2LL), not_allowed}}) {
            Sphere<T> sphere(circle, 0.5, 2, 8, 6, 1);
            sphere.ipar[ipar_errors] = 1, sphere.ipar[position] = value;
            EXPECT_EQ(shown([&] { sphere.commit(); }), "\n" + message(0x0b) + line + "\n\n");
            EXPECT_EQ(sphere.stat, status);
            EXPECT_EQ(sphere.ipar[ipar_status], status);
            EXPECT_EQ(shown([&] { sphere.solve(); }),
                      "\n" + message(0x0b) + message(117, static_cast<long long>(status)) + "\n\n");
            EXPECT_EQ(sphere.stat, not_ready);
            EXPECT_EQ(sphere.handles[0], nullptr);
        }
    Sphere<T> narrow(true, 0.5, 2, 8, 6, 1);
    narrow.ipar[ipar_errors] = -1, narrow.dpar[1] = 0;
    InFolder folder;
    EXPECT_EQ(narrow.commit(), not_allowed);
    EXPECT_EQ(log_in_folder("ORV_Poisson_Library_Log.txt"), "\n" + message(0x0b) + message(104, 0.) + "\n\n");
    EXPECT_EQ(narrow.handles[0], nullptr); // what was made before is given back
}

TYPED_TEST(Spheres, are_given_back_once_and_leak_nothing_without_memory)
{
    using T = TypeParam;
    for (const bool circle : {true, false}) {
        Sphere<T> sphere(circle, 0.5, 2, 8, 6, 1);
        ASSERT_EQ(sphere.run(), good);
        EXPECT_EQ(sphere.free(), 0);
        EXPECT_EQ(sphere.free(), transform_failed);
        i64 failures = 0;
        each_allocation_fails(
            [&] {
                Sphere<T> again(circle, 0.5, 2, 8, 6, 1);
                failures += again.run() != good;
            },
            [] {});
        EXPECT_GT(failures, 2);
    }
}

TYPED_TEST(Spheres, of_a_resonance_have_no_solution)
{
    // A single unknown: s*(1 + 1)... = 0 for this q.
    using T = TypeParam;
    Sphere<T> probe_of_size(false, 0.5, 2, 2, 2, 0);
    const Balances b = balances_of(probe_of_size);
    ASSERT_EQ(b.count, 1);
    const double h = 0.75, s = std::sin(1.25);
    Sphere<T> sphere(false, 0.5, 2, 2, 2, static_cast<double>(-b.matrix[0]) / (h * h * s));
    sphere.value(1, 1) = 1;
    EXPECT_EQ(sphere.run(), not_allowed);
}

} // namespace
} // namespace orv::test
