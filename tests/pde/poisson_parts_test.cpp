// The parts of Helmholtz solvers by their own names: spectra, tables of sines, right-hand sides.
#include "tests/pde/poisson.h"

#include <gtest/gtest.h>

namespace orv::test {
namespace {

using namespace pdepl;
const double pi = std::acos(-1.);

template <class T> class PoissonParts : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(PoissonParts, Reals);

// A sine and a square of it, each with its rounding and that of the angle.
template <class T>
void expect_spectrum(const Guarded<T>& table, double h, double step, double added, double angle_of_0, double apart)
{
    for (std::size_t i = 0; i < table.size(); ++i) {
        const double root = 2 * h * std::sin(angle_of_0 + apart * static_cast<double>(i)) / step,
                     expected = root * root + added;
        EXPECT_NEAR(table[i], expected, 16 * std::numeric_limits<T>::epsilon() * (std::fabs(expected) + 2 * h / step))
            << i;
    }
}

TYPED_TEST(PoissonParts, make_spectra_of_rectangles_and_spheres)
{
    using T = TypeParam;
    const T step = T(0.25), h = T(0.5), q = T(-1.5);
    struct Form {
        const char* name;
        double first, apart; // of the angles, in units of pi/4n
    };
    for (const i64 n : {1, 2, 7, 100}) {
        const double unit = pi / (4 * static_cast<double>(n));
        for (const Form& form :
             {Form{"_spectr_2d", 0, 2}, Form{"_spectr_2d_mixed", 1, 2}, Form{"_spectr_2d_pp", 0, 4}}) {
            Guarded<T> table(static_cast<std::size_t>(n + 1));
            i64 stat = -1;
            kernel<Spectrum2d<T>>("pdepl", letter<T>, form.name)(&n, &step, &h, &q, table.data(), &stat);
            EXPECT_EQ(stat, 0);
            expect_spectrum(table, 0.5, 0.25, 2 - 1.5 * 0.25, form.first * unit, form.apart * unit);
        }
        for (const Form& form : {Form{"_sph_spectr_2d", 0, 4}, Form{"_sph_spectr_dddd_2d", 0, 2}}) {
            Guarded<T> table(static_cast<std::size_t>(n + 1));
            i64 stat = -1;
            kernel<SpectrumSphere<T>>("pdepl", letter<T>, form.name)(&n, &step, &h, table.data(), &stat);
            EXPECT_EQ(stat, 0);
            expect_spectrum(table, 0.5, 0.25, 0, form.first * unit, form.apart * unit);
        }
    }
}

TYPED_TEST(PoissonParts, make_spectra_of_boxes_that_begin_with_one)
{
    using T = TypeParam;
    const i64 nx = 6, ny = 9;
    const T hx = T(0.25), hy = T(0.5), hz = T(0.75), q = 2;
    struct Form {
        const char* name;
        bool x, y; // mixed
    };
    for (const Form& form : {Form{"_spectr_3d", false, false}, Form{"_spectr_3d_mixed_1", true, false},
                             Form{"_spectr_3d_mixed_2", false, true}, Form{"_spectr_3d_mixed_3", true, true}}) {
        Guarded<T> x(7), y(10);
        i64 stat = -1;
        kernel<Spectrum3d<T>>("pdepl", letter<T>, form.name)(&nx, &ny, &hx, &hy, &hz, &q, x.data(), y.data(), &stat);
        EXPECT_EQ(stat, 0) << form.name;
        EXPECT_EQ(x[0], 1);
        EXPECT_EQ(y[0], 1);
        const auto expect_entry = [&](T value, double step, i64 i, bool mixed, double added, i64 n) {
            const double root =
                2 * 0.75 *
                std::sin(static_cast<double>(mixed ? 2 * i + 1 : 2 * i) * pi / (4 * static_cast<double>(n))) / step;
            EXPECT_NEAR(value, root * root + added, 64 * std::numeric_limits<T>::epsilon() * (root * root + added))
                << form.name << i;
        };
        for (i64 i = 1; i <= nx; ++i) expect_entry(x[i], 0.25, i, form.x, 2 * 0.5625 + 1, nx);
        for (i64 j = 1; j <= ny; ++j) expect_entry(y[j], 0.5, j, form.y, 1, ny);
    }
}

TYPED_TEST(PoissonParts, refuse_spectra_without_points_or_steps)
{
    using T = TypeParam;
    const i64 n = 4, none = 0;
    const T step = 1, no_step = 0;
    T table[5], q = 1;
    i64 stat = 0;
    auto* const spectrum = kernel<Spectrum2d<T>>("pdepl", letter<T>, "_spectr_2d");
    spectrum(&none, &step, &step, &q, table, &stat);
    EXPECT_EQ(stat, no_points);
    spectrum(&n, &no_step, &step, &q, table, &stat);
    EXPECT_EQ(stat, no_points);
    auto* const right = kernel<RightHandSideSphere<T>>("pdepl", letter<T>, "_sph_right_2d");
    right(&n, &none, &no_step, &step, &q, table, table, &stat);
    EXPECT_EQ(stat, no_points);
    EXPECT_EQ(q, 1);
}

// One product each, rounded once, at any address and of any number.
TYPED_TEST(PoissonParts, scale_right_hand_sides)
{
    using T = TypeParam;
    const T h = T(0.7);
    auto* const of_rectangle = kernel<RightHandSide2d<T>>("pdepl", letter<T>, "_right_hand_side_2d");
    for (const i64 nx : {1, 5, 6, 7, 8, 15, 40})
        for (std::size_t shift = 0; shift < 5; ++shift) {
            const i64 ny = 0;
            Guarded<T> f(static_cast<std::size_t>(nx + 1), Edge::end, shift);
            Random random(static_cast<std::uint64_t>(nx));
            random.fill(f);
            const std::vector<T> before(f.begin(), f.end());
            i64 stat = -1;
            of_rectangle(&nx, &ny, &h, f.data(), &stat);
            EXPECT_EQ(stat, 0);
            for (std::size_t i = 0; i < before.size(); ++i) EXPECT_EQ(f[i], before[i] * (h * h));
        }
    const i64 n[] = {3, 2, 4};
    std::vector<T> f(4 * 3 * 5, T(2));
    i64 stat = -1;
    kernel<RightHandSide3d<T>>("pdepl", letter<T>, "_right_hand_side_3d")(&n[0], &n[1], &n[2], &h, f.data(), &stat);
    for (const T value : f) EXPECT_EQ(value, 2 * (h * h));

    std::vector<T> sphere(4 * 3, T(3));
    const T sines[] = {T(0), T(0.5), T(0.25)}, width = 1;
    T q = 5;
    kernel<RightHandSideSphere<T>>("pdepl", letter<T>, "_sph_right_2d")(&n[0], &n[1], &width, &h, &q, sines,
                                                                        sphere.data(), &stat);
    EXPECT_EQ(q, 5 * (h * h));
    for (i64 k = 0; k < 12; ++k) EXPECT_EQ(sphere[k], 3 * (sines[k / 4] * (h * h)));
}

TYPED_TEST(PoissonParts, tabulate_sines)
{
    using T = TypeParam;
    const i64 nt = 9;
    const T length = T(1.5), first = T(0.25);
    Guarded<T> sines(10);
    kernel<SinesOfTheta<T>>("pdepl", letter<T>, "_sphere_s")(&nt, &length, &first, sines.data());
    for (int j = 0; j <= 9; ++j)
        EXPECT_NEAR(sines[j], std::sin(0.25 + 1.5 * j / 9), 4 * std::numeric_limits<T>::epsilon());
    const T angle = T(0.625);
    EXPECT_EQ((kernel<Sine<T>>("pdepl", "pl_", letter<T>, "sin")(&angle)), std::sin(angle));
}

} // namespace
} // namespace orv::test
