#include "frame/kernels/blas.h"
#include "tests/blas/reduction.h"
#include "tests/support/bounds.h"

#include <array>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class R> struct Outcome {
    R d1, d2, x1;
    std::array<R, 5> param;
};
template <class R> bool same(const Outcome<R>& a, const Outcome<R>& b)
{
    bool equal = same_bits(a.d1, b.d1) && same_bits(a.d2, b.d2) && same_bits(a.x1, b.x1);
    for (int i = 0; i < 5; ++i) equal = equal && same_bits(a.param[i], b.param[i]);
    return equal;
}
template <class R> std::ostream& operator<<(std::ostream& out, const Outcome<R>& o)
{
    out << std::hexfloat << o.d1 << ' ' << o.d2 << ' ' << o.x1 << " |";
    for (const R p : o.param) out << ' ' << p;
    return out;
}

constexpr int untouched = 99;

template <class R> Outcome<R> rotmg(R d1, R d2, R x1, R y1)
{
    Outcome<R> o = {d1, d2, x1, {}};
    o.param.fill(untouched);
    kernel<Rotmg<R>>("blas", letter<R>, "rotmg")(&o.d1, &o.d2, &o.x1, &y1, o.param.data());
    return o;
}

// Step by step, with every entry of H kept in full.
template <class R> Outcome<R> literal_rotmg(R d1, R d2, R x1, R y1)
{
    constexpr R u = untouched, gam = 4096, gamsq = 16777216;
    if (d1 < 0) return {0, 0, 0, {-1, 0, 0, 0, 0}};
    if (d2 * y1 == 0) return {d1, d2, x1, {-2, u, u, u, u}};
    R flag, h11 = 1, h12 = 1, h21 = -1, h22 = 1;
    const R p1 = d1 * x1, p2 = d2 * y1, q1 = p1 * x1, q2 = p2 * y1;
    if (std::fabs(q1) > std::fabs(q2)) {
        flag = 0;
        h21 = -y1 / x1;
        h12 = p2 / p1;
        const R v = 1 - h12 * h21;
        d1 /= v, d2 /= v, x1 *= v;
    } else if (q2 < 0) return {0, 0, 0, {-1, 0, 0, 0, 0}};
    else {
        flag = 1;
        h11 = p1 / p2;
        h22 = x1 / y1;
        const R v = 1 + h11 * h22, swapped = d2 / v;
        d2 = d1 / v, d1 = swapped, x1 = y1 * v;
    }
    for (; d1 != 0 && d1 <= 1 / gamsq; flag = -1) d1 *= gamsq, x1 /= gam, h11 /= gam, h12 /= gam;
    for (; d1 != 0 && d1 >= gamsq; flag = -1) d1 /= gamsq, x1 *= gam, h11 *= gam, h12 *= gam;
    for (; d2 != 0 && std::fabs(d2) <= 1 / gamsq; flag = -1) d2 *= gamsq, h21 /= gam, h22 /= gam;
    for (; d2 != 0 && std::fabs(d2) >= gamsq; flag = -1) d2 /= gamsq, h21 *= gam, h22 *= gam;
    if (flag == 0) return {d1, d2, x1, {flag, u, h21, h12, u}};
    if (flag == 1) return {d1, d2, x1, {flag, h11, u, u, h22}};
    return {d1, d2, x1, {flag, h11, h21, h12, h22}};
}

// H (x1, y1) = (x1', 0), and H keeps what the scaled squares measure: H' D' H = D.
template <class R> void expect_rotation(R d1, R d2, R x1, R y1, const Outcome<R>& o)
{
    using X = long double;
    X h11 = o.param[1], h21 = o.param[2], h12 = o.param[3], h22 = o.param[4];
    if (o.param[0] == 0) h11 = h22 = 1;
    if (o.param[0] == 1) h12 = 1, h21 = -1;
    const X allowed = gamma_n<R>(16);
    EXPECT_LE(std::fabs(h11 * x1 + h12 * y1 - o.x1), allowed * (std::fabs(h11 * x1) + std::fabs(h12 * y1)));
    EXPECT_LE(std::fabs(h21 * x1 + h22 * y1), allowed * (std::fabs(h21 * x1) + std::fabs(h22 * y1)));
    const auto equal = [&](X p, X q, X target) {
        EXPECT_LE(std::fabs(p + q - target), allowed * (std::fabs(p) + std::fabs(q) + std::fabs(target)));
    };
    equal(o.d1 * h11 * h11, o.d2 * h21 * h21, d1);
    equal(o.d1 * h12 * h12, o.d2 * h22 * h22, d2);
    equal(o.d1 * h11 * h12, o.d2 * h21 * h22, 0);
}

template <class R> class Rotmg : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Rotmg, Reals);

TYPED_TEST(Rotmg, computes_step_by_step_and_zeroes_the_second_component)
{
    using R = TypeParam;
    Random random(10);
    std::array<int, 4> flags = {}; // how often -2, -1, 0, 1 came out
    for (int i = 0; i < 50000; ++i) {
        const auto spread = [&](int e) {
            return static_cast<R>(std::ldexp(random.value<R>(), static_cast<int>(random.integer(-e, e))));
        };
        const int wide = i % 2 == 0 ? 3 : 35;
        const R d1 = std::fabs(spread(wide)), d2 = i % 5 == 0 ? spread(wide) : std::fabs(spread(wide));
        const R x1 = spread(3), y1 = i % 50 == 0 ? R(0) : spread(3);
        const Outcome<R> got = rotmg(d1, d2, x1, y1), expected = literal_rotmg(d1, d2, x1, y1);
        ASSERT_TRUE(same(got, expected)) << got << "\nfor " << expected;
        ++flags[static_cast<int>(got.param[0]) + 2];
        const bool rotates = got.param[0] != -2 && (got.d1 != 0 || got.x1 != 0);
        if (rotates && d2 > 0) expect_rotation(d1, d2, x1, y1, got);
        if (this->HasFailure()) FAIL() << d1 << ' ' << d2 << ' ' << x1 << ' ' << y1;
    }
    for (const int times : flags) EXPECT_GT(times, 100);
}

TYPED_TEST(Rotmg, changes_the_flag_alone_when_there_is_nothing_to_rotate)
{
    using R = TypeParam;
    constexpr R u = untouched;
    for (const auto& [d2, y1] : {std::pair<R, R>{0, 3},
                                 {5, 0},
                                 {R(-0.0), 1},
                                 {std::numeric_limits<R>::min(), std::numeric_limits<R>::min()}}) {
        const Outcome<R> expected = {2, d2, 7, {-2, u, u, u, u}};
        EXPECT_TRUE(same(rotmg<R>(2, d2, 7, y1), expected)) << rotmg<R>(2, d2, 7, y1);
    }
}

TYPED_TEST(Rotmg, gives_zeros_for_a_negative_d1_and_for_an_imaginary_length)
{
    using R = TypeParam;
    const Outcome<R> zeros = {0, 0, 0, {-1, 0, 0, 0, 0}};
    EXPECT_TRUE(same(rotmg<R>(-1, 2, 3, 4), zeros));
    EXPECT_TRUE(same(rotmg<R>(-1, 0, 3, 4), zeros)); // before d2*y1 is looked at
    EXPECT_TRUE(same(rotmg<R>(1, -2, 1, 1), zeros));
    EXPECT_TRUE(same(rotmg<R>(1, -1, 1, 1), zeros)); // equal magnitudes too
}

TYPED_TEST(Rotmg, takes_each_flag_with_the_entries_that_it_implies)
{
    using R = TypeParam;
    constexpr R u = untouched;
    EXPECT_TRUE(same(rotmg<R>(2, 1, 2, 1), {R(2) / R(1.125), 1 / R(1.125), R(2.25), {0, u, R(-0.5), R(0.25), u}}));
    EXPECT_TRUE(same(rotmg<R>(1, 2, 1, 2), {2 / R(1.125), 1 / R(1.125), R(2.25), {1, R(0.25), u, u, R(0.5)}}));
    EXPECT_TRUE(same(rotmg<R>(1, 1, 1, 1), {R(0.5), R(0.5), 2, {1, 1, u, u, 1}})); // not above: the second leads
    EXPECT_TRUE(same(rotmg<R>(0, 4, 3, 2), {4, 0, 2, {1, 0, u, u, R(1.5)}}));      // a zero is never rescaled
    EXPECT_EQ(rotmg<R>(4, -1, 1, 1).param[0], 0);                                  // u is 1 - 1/4
}

TYPED_TEST(Rotmg, rescales_from_both_sides_and_at_the_very_edges)
{
    using R = TypeParam;
    const R square = 16777216;
    for (const R d1 :
         {1 / square, std::nextafter(1 / square, R(1)), square, std::nextafter(square, R(1)), R(1e-20), R(1e20)})
        for (const R d2 :
             {1 / square, std::nextafter(1 / square, R(1)), square, std::nextafter(square, R(1)), R(1e-20), R(1e20)})
            for (const R x1 : {R(1), R(1e-3), R(1e3)}) {
                const R y1 = 1;
                const Outcome<R> got = rotmg(d1, d2, x1, y1);
                EXPECT_TRUE(same(got, literal_rotmg(d1, d2, x1, y1))) << got;
                for (const R d : {got.d1, got.d2}) {
                    if (d == 0) continue;
                    EXPECT_GT(std::fabs(d), 1 / square);
                    EXPECT_LT(std::fabs(d), square);
                }
                const R apart = d1 > d2 ? d1 / d2 : d2 / d1; // entries of H far apart underflow in single precision
                if (apart < std::ldexp(R(1), 60)) expect_rotation(d1, d2, x1, y1, got);
            }
    // An exact edge: u = 1 + 2^-76 rounds to 1, so d1 reaches the test as it came.
    const R small = std::ldexp(R(1), -100);
    EXPECT_EQ(rotmg<R>(1 / square, small, 1, 1).d1, 1);
    EXPECT_EQ(rotmg<R>(square, small, 1, 1).d1, 1);
    EXPECT_EQ(rotmg<R>(square / 2, small, 1, 1).d1, square / 2);
}

TYPED_TEST(Rotmg, comes_back_from_infinities_and_nan)
{
    using R = TypeParam;
    EXPECT_EQ(rotmg<R>(inf<R>, 1, 1, 1).d1, inf<R>);
    EXPECT_TRUE(std::isnan(rotmg<R>(quiet_nan<R>, 1, 1, 1).x1));
    // d2 < 0 so near to cancelling d1 that u may vanish or change its sign by rounding.
    Random random(11);
    for (int i = 0; i < 10000; ++i) {
        const R x1 = random.value<R>(), y1 = random.value<R>();
        rotmg<R>(y1 * y1, std::nextafter(-x1 * x1, R(0)), x1, y1);
    }
}

} // namespace
} // namespace orv::test
