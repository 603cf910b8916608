// laed6, lasd5 and lamc3 of the core: roots of small secular equations.
#include "lapack_ps/front_ends.h"
#include "tests/support/bounds.h"
#include "tests/support/quad.h"
#include "tests/support/random.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>

namespace orv::test {
namespace {

template <class R> class SecularOfFewPoles : public ::testing::Test {
};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(SecularOfFewPoles, Reals);

template <class R> std::string show(std::initializer_list<R> values)
{
    std::ostringstream text;
    text.precision(17);
    for (const R value : values) text << ' ' << value;
    return text.str() + " seed=" + std::to_string(seed());
}

// 10 to a power between low and high.
template <class R> R graded(Random& random, double low, double high)
{
    return static_cast<R>(std::pow(10.0, low + (high - low) * (random.value<double>() + 1) / 2));
}

TYPED_TEST(SecularOfFewPoles, lamc3_adds_and_rounds)
{
    using R = TypeParam;
    const R epsilon = std::numeric_limits<R>::epsilon();
    EXPECT_EQ(front::lamc3(R(1), epsilon / 2), R(1));
    EXPECT_EQ(front::lamc3(R(1), epsilon), R(1) + epsilon);
}

// With differences and sums of the poles and the root as lasd5 gives them, the equation holds as well as the terms'
// roundings allow, and the differences and sums belong to one root.
template <class R> void expect_root_of_two(i64 i, R d1, R d2, R z1, R z2, R rho)
{
    SCOPED_TRACE("lasd5 i=" + std::to_string(i) + show({d1, d2, z1, z2, rho}));
    const R d[] = {d1, d2}, z[] = {z1, z2};
    R delta[2], work[2], sigma;
    front::lasd5(i, d, z, delta, rho, &sigma, work);
    const quad u = unit<R>;

    EXPECT_GE(sigma, d[i - 1]);
    EXPECT_TRUE(i == 2 || sigma <= d2) << sigma;
    EXPECT_LE(i == 1 ? delta[0] : delta[1], 0);
    quad value = 1, magnitudes = 1;
    for (int j = 0; j < 2; ++j) {
        // d - sigma and d + sigma: of the farther pole they are rounded sums with tau.
        const quad gap = quad(d2) - d1, smallest = std::numeric_limits<R>::denorm_min();
        EXPECT_LE(magnitude(quad(work[j]) - delta[j] - 2 * quad(sigma)), 4 * u * work[j] + 2 * smallest);
        EXPECT_LE(magnitude(quad(delta[1]) - delta[0] - gap), 2 * u * (gap + magnitude(quad(delta[j]))) + 2 * smallest);
        if (z[j] == 0) continue;
        const quad term = quad(rho) * z[j] * z[j] / (quad(delta[j]) * work[j]);
        value += term, magnitudes += magnitude(term);
    }
    // b, c, the square root and two quotients: not more than 16 roundings, each moves a term by its own size.
    EXPECT_LE(double(magnitude(value) / (16 * u * magnitudes)), 1.0);
}

TYPED_TEST(SecularOfFewPoles, lasd5_solves_for_two_poles)
{
    using R = TypeParam;
    Random random;
    const double range = sizeof(R) == 4 ? 6 : 30;
    for (int trial = 0; trial < 4000; ++trial) {
        const R d1 = trial % 5 == 0 ? R(0) : graded<R>(random, -3, 0);
        const R gap = graded<R>(random, trial % 2 ? -5 : -1, 0);
        const R angle = graded<R>(random, trial % 3 ? -1 : -5, 0.1);
        const R rho = graded<R>(random, -5, 3);
        const R size = trial % 4 == 0 ? graded<R>(random, -range, range) : R(1);
        for (const i64 i : {1, 2})
            expect_root_of_two(i, d1 * size, (d1 + gap) * size, R(std::cos(angle)), R(std::sin(angle)),
                               rho * size * size);
        if (::testing::Test::HasFailure()) return;
    }
}

TYPED_TEST(SecularOfFewPoles, lasd5_keeps_squares_in_range)
{
    using R = TypeParam;
    const int most = std::numeric_limits<R>::max_exponent;
    // Powers of two bring the squares of the poles out of range and that of the sum, rho, to its edge.
    for (const int exponent : {most * 3 / 4, -most * 3 / 4})
        for (const i64 i : {1, 2}) {
            const R size = std::ldexp(R(1), exponent);
            const R d[] = {R(0.7), R(1.1)}, z[] = {R(0.6), R(0.8)}, rho = std::ldexp(R(1.3), -exponent);
            const R far[] = {d[0] * size, d[1] * size};
            R delta[2], work[2], sigma, far_delta[2], far_work[2], far_sigma;
            front::lasd5(i, d, z, delta, rho, &sigma, work);
            front::lasd5(i, far, z, far_delta, rho * size * size, &far_sigma, far_work);
            EXPECT_EQ(far_sigma, sigma * size);
            for (const int j : {0, 1}) {
                EXPECT_EQ(far_delta[j], delta[j] * size);
                EXPECT_EQ(far_work[j], work[j] * size);
            }
        }
}

TYPED_TEST(SecularOfFewPoles, lasd5_hands_nan_on)
{
    using R = TypeParam;
    const R nan = std::numeric_limits<R>::quiet_NaN();
    const R d[] = {1, 2}, z[] = {nan, R(0.8)};
    R delta[2], work[2], sigma;
    for (const i64 i : {1, 2}) {
        front::lasd5(i, d, z, delta, R(1), &sigma, work);
        EXPECT_NE(sigma, sigma);
    }
}

template <class R> struct Three {
    R rho, d[3], z[3];

    quad operator()(quad x) const
    {
        quad value = rho;
        for (int i = 0; i < 3; ++i) value += z[i] / (d[i] - x);
        return value;
    }
    quad slope(quad x) const
    {
        quad value = 0;
        for (int i = 0; i < 3; ++i) value += z[i] / (d[i] - x) / (d[i] - x);
        return value;
    }
    // The function grows from -infinity to infinity between two poles.
    quad bisect(quad low, quad high) const
    {
        for (int step = 0; step < 400; ++step) {
            const quad middle = (low + high) / 2;
            ((*this)(middle) < 0 ? low : high) = middle;
        }
        return low;
    }
};

// The error allowed: what the stopping rule and the evaluation's roundings leave of the value, over the slope, and the
// last places of a bracket.
template <class R> void expect_root_of_three(const Three<R>& f, bool upper, i64 iteration)
{
    SCOPED_TRACE("laed6 orgati=" + std::to_string(upper) + " iteration=" + std::to_string(iteration) +
                 show({f.rho, f.d[0], f.d[1], f.d[2], f.z[0], f.z[1], f.z[2]}));
    const R f0 = static_cast<R>(f(0));
    R tau = 77;
    i64 info = 7;
    front::laed6(iteration, upper, f.rho, f.d, f.z, f0, &tau, &info);
    ASSERT_EQ(info, 0);
    const quad exact = f.bisect(f.d[upper ? 1 : 0], f.d[upper ? 2 : 1]), u = unit<R>;
    quad terms = magnitude(quad(f0)); // of f(0) + x * sum z/(d*(d - x)), each with 7 roundings
    for (int i = 0; i < 3; ++i) terms += magnitude(exact * f.z[i] / (f.d[i] * (f.d[i] - exact)));
    const quad value_error = u * ((4 * 8 + 7) * terms + 4 * magnitude(exact) * f.slope(exact));
    const quad allowed = value_error / f.slope(exact) + 5 * u * magnitude(exact);
    EXPECT_LE(double(magnitude(tau - exact) / allowed), 1.0) << double(exact) << " " << tau;
}

TYPED_TEST(SecularOfFewPoles, laed6_finds_the_root_on_either_side_of_the_middle_pole)
{
    using R = TypeParam;
    Random random;
    for (int trial = 0; trial < 3000; ++trial) {
        const bool upper = trial % 2;
        const double grade = trial % 3 == 0 ? -4 : -1;
        // 0 lies between the poles that the root lies between.
        const R a = graded<R>(random, grade, 0), b = graded<R>(random, grade, 0), c = graded<R>(random, grade, 0);
        Three<R> f{random.value<R>(), {-a, b, b + c}, {}};
        if (upper) f.d[0] = -a - c, f.d[1] = -a, f.d[2] = b;
        for (R& z : f.z) z = graded<R>(random, trial % 5 == 0 ? -6 : -2, 0);
        // Its callers start close to the root: f at 0 is of the size of the other terms at most.
        expect_root_of_three(f, upper, trial % 7 < 4 ? 2 : 3);
        if (::testing::Test::HasFailure()) return;
    }
}

TYPED_TEST(SecularOfFewPoles, laed6_scales_where_third_powers_leave_the_range)
{
    using R = TypeParam;
    const int third = std::numeric_limits<R>::max_exponent / 3;
    for (const int exponent : {-third - 5, -third * 3 / 2, -2 * third, third, third * 3 / 2})
        for (const bool upper : {false, true})
            for (const i64 iteration : {2, 3}) {
                const R size = std::ldexp(R(1), exponent);
                Three<R> f{R(0.25), {-3, upper ? R(-1) : R(1), 2}, {R(0.5), R(0.25), 1}};
                for (int i = 0; i < 3; ++i) f.d[i] *= size, f.z[i] *= size;
                expect_root_of_three(f, upper, iteration);
            }
}

TYPED_TEST(SecularOfFewPoles, laed6_tells_that_it_found_none)
{
    using R = TypeParam;
    const R nan = std::numeric_limits<R>::quiet_NaN(), d[] = {-1, 1, 2}, z[] = {1, nan, 1};
    R tau;
    i64 info = 0;
    front::laed6(3, 0, R(1), d, z, R(1), &tau, &info);
    EXPECT_EQ(info, 1);
}

} // namespace
} // namespace orv::test
