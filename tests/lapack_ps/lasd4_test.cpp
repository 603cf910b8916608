// Roots of secular equations, held to an enclosure in quadruple precision.
#include "frame/kernels/lapack_ps.h"
#include "lapack_ps/front_ends.h"
#include "tests/lapack_ps/fronts.h"
#include "tests/support/bounds.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/quad.h"
#include "tests/support/random.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

// The routine for three poles, seen on its way: this program exports it before the core does.
namespace {
struct {
    bool stuck = false;      // moves nowhere
    orv::i64 fails_with = 0; // tells this
    std::vector<orv::i64> iterations;
} three_poles;

template <class R>
void laed6(const char* symbol, const orv::i64* iteration, const orv::i64* orgati, const R* rho, const R* d, const R* z,
           const R* f_at_0, R* tau, orv::i64* info)
{
    three_poles.iterations.push_back(*iteration);
    reinterpret_cast<orv::imports::Laed6<R>*>(dlsym(RTLD_NEXT, symbol))(iteration, orgati, rho, d, z, f_at_0, tau,
                                                                        info);
    if (three_poles.stuck) *tau = *f_at_0 > 0 ? -std::numeric_limits<R>::min() : std::numeric_limits<R>::min();
    if (three_poles.fails_with != 0) *info = three_poles.fails_with;
}
} // namespace

#define LAED6(name, T)                                                                                                 \
    extern "C" __attribute__((visibility("default"), used)) void name(                                                 \
        const orv::i64* iteration, const orv::i64* orgati, const T* rho, const T* d, const T* z, const T* f_at_0,      \
        T* tau, orv::i64* info)                                                                                        \
    {                                                                                                                  \
        laed6(#name, iteration, orgati, rho, d, z, f_at_0, tau, info);                                                 \
    }
LAED6(orv_lapack_slaed6, float)
LAED6(orv_lapack_dlaed6, double)

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class R> struct Equation {
    std::vector<R> d, z;
    R rho;
    i64 n() const { return static_cast<i64>(d.size()); }

    void normalise()
    {
        long double squares = 0;
        for (const R e : z) squares += static_cast<long double>(e) * e;
        for (R& e : z) e = static_cast<R>(e / std::sqrt(squares));
    }
};

template <class R> struct Root {
    Guarded<R> delta, work;
    R sigma;
    i64 info = 77;

    Root(const Equation<R>& e, i64 i) : delta(e.n()), work(e.n())
    {
        const i64 n = e.n();
        kernel<Lasd4<R>>("lapack_ps", letter<R>, "lasd4")(&n, &i, e.d.data(), e.z.data(), delta.data(), &e.rho, &sigma,
                                                          work.data(), &info);
    }
};

// The equation at tau from pole `origin`, in quadruple precision: value, derivative by tau, and what the value may be
// off where the stopping rule is content.
struct Value {
    quad w, slope, allowed;
};
template <class R> Value evaluate(const Equation<R>& e, i64 origin, quad tau)
{
    const quad u = unit<R>, from = e.d[origin];
    quad w = 1 / quad(e.rho), slope = 0, terms = 0, partial = 0, partials = 0;
    const auto add = [&](i64 j) {
        const quad distance = ((e.d[j] - from) - tau) * ((e.d[j] + from) + tau),
                   term = quad(e.z[j]) * e.z[j] / distance;
        w += term, slope += term / distance, partial += term;
        if (j != origin) terms += magnitude(term), partials += magnitude(partial);
    };
    for (i64 j = 0; j < origin; ++j) add(j);
    partial = 0;
    for (i64 j = e.n() - 1; j > origin; --j) add(j);
    add(origin);
    const quad own = quad(e.z[origin]) * e.z[origin] / (tau * (2 * from + tau));
    // The rule's terms, and the evaluation's own roundings: seven a term, one a partial sum.
    const quad allowed = u * ((8 + 7) * terms + 2 * partials + 4 / quad(e.rho) + (3 + 7) * magnitude(own) +
                              magnitude(tau * (2 * from + tau)) * slope);
    return {w, 2 * (from + tau) * slope, allowed};
}

template <class R> std::string show(const Equation<R>& e, i64 i, const char* kind)
{
    return std::string(1, letter<R>) + "lasd4 " + kind + " n=" + std::to_string(e.n()) + " i=" + std::to_string(i) +
           " rho=" + std::to_string(e.rho) + " seed=" + std::to_string(seed());
}

// The root lies where the equation changes sign: between tau less and tau plus what is allowed. Differences, sums and
// sigma belong to that tau within the roundings of their own sums.
template <class R> void expect_root(const Equation<R>& e, i64 i, const char* kind)
{
    SCOPED_TRACE(show(e, i, kind));
    const Root<R> root(e, i);
    ASSERT_EQ(root.info, 0);
    const i64 left = i - 1, right = i < e.n() ? i : i - 1;
    const i64 origin = std::fabs(root.delta[left]) <= std::fabs(root.delta[right]) ? left : right;
    const quad u = unit<R>, tau = -quad(root.delta[origin]), from = e.d[origin];

    const Value at = evaluate(e, origin, tau);
    const quad allowed = 2 * (at.allowed / at.slope + 4 * u * magnitude(tau));
    // Beyond a pole the sign is known.
    const auto below_root = [&](quad t) { return from + t <= e.d[left] || evaluate(e, origin, t).w <= 0; };
    const auto above_root = [&](quad t) { return (i < e.n() && from + t >= e.d[i]) || evaluate(e, origin, t).w >= 0; };
    EXPECT_TRUE(below_root(tau - allowed)) << double(tau) << " " << double(allowed);
    EXPECT_TRUE(above_root(tau + allowed)) << double(tau) << " " << double(allowed);

    // Halfway between two poles all may be formed from the other one, and tau here is rounded.
    const quad slack = 3 * u * magnitude(tau) + 2 * std::numeric_limits<R>::denorm_min();
    EXPECT_LE(magnitude(root.sigma - (from + tau)), u * root.sigma + slack);
    for (i64 j = 0; j < e.n(); ++j) {
        const quad difference = (e.d[j] - from) - tau, sum = (e.d[j] + from) + tau;
        EXPECT_LE(magnitude(root.delta[j] - difference), u * (magnitude(e.d[j] - from) + magnitude(difference)) + slack)
            << j;
        EXPECT_LE(magnitude(root.work[j] - sum), 2 * u * sum + slack) << j;
    }
}

template <class R> void expect_all_roots(Equation<R> e, const char* kind)
{
    e.normalise();
    for (i64 i = 1; i <= e.n(); ++i) expect_root(e, i, kind);
}

template <class R> class Lasd4Of : public ::testing::Test {
};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Lasd4Of, Reals);

// 10 to a power between -digits and 0.
template <class R> R small(Random& random, double digits)
{
    return static_cast<R>(std::pow(10.0, -digits * (random.value<double>() + 1) / 2));
}

constexpr i64 orders[] = {2, 3, 4, 5, 8, 13, 40};

template <class R> Equation<R> equation(i64 n, Random& random, auto gap, auto weight)
{
    Equation<R> e{std::vector<R>(n), std::vector<R>(n), 10 * small<R>(random, 5)};
    R pole = 0;
    for (i64 j = 0; j < n; ++j) {
        e.d[j] = pole, e.z[j] = weight() * (random.value<R>() < 0 ? R(-1) : R(1));
        const R next = pole + R(gap());
        pole = next > pole ? next : std::nextafter(pole, std::numeric_limits<R>::max());
    }
    return e;
}

TYPED_TEST(Lasd4Of, finds_roots_among_separate_poles)
{
    using R = TypeParam;
    Random random;
    const double digits = std::numeric_limits<R>::digits10;
    for (const i64 n : orders)
        for (int trial = 0; trial < 12; ++trial) {
            const auto gap = [&] { return 0.01 + small<R>(random, 2); };
            expect_all_roots(equation<R>(n, random, gap, [&] { return small<R>(random, 1); }), "separate");
            expect_all_roots(equation<R>(n, random, gap, [&] { return small<R>(random, digits); }), "light");
            if (this->HasFailure()) return;
        }
}

TYPED_TEST(Lasd4Of, finds_roots_among_clustered_poles)
{
    using R = TypeParam;
    Random random;
    const R u = std::numeric_limits<R>::epsilon();
    for (const i64 n : orders)
        for (int trial = 0; trial < 12; ++trial) {
            int count = 0; // most gaps are a few last places wide
            const auto gap = [&] { return ++count % 4 == 0 ? small<R>(random, 2) : 8 * u * (1 + small<R>(random, 1)); };
            expect_all_roots(equation<R>(n, random, gap, [&] { return small<R>(random, 1); }), "clusters");
            expect_all_roots(equation<R>(n, random, gap, [&] { return small<R>(random, 5); }), "light clusters");
            if (this->HasFailure()) return;
        }
}

TYPED_TEST(Lasd4Of, finds_roots_among_graded_poles)
{
    using R = TypeParam;
    Random random;
    const double decades = sizeof(R) == 4 ? 8 : 60;
    for (const i64 n : orders)
        for (int trial = 0; trial < 12; ++trial) {
            i64 j = 0;
            const auto gap = [&] { return std::pow(10.0, -decades * double(n - ++j) / n); };
            i64 k = 0;
            const auto weight = [&] { return std::pow(10.0, -decades / 2 * double(n - 1 - k++) / n); };
            expect_all_roots(equation<R>(n, random, gap, weight), "graded");
            if (this->HasFailure()) return;
        }
}

// A power of two changes nothing but exponents.
TYPED_TEST(Lasd4Of, scales_tiny_and_huge_data)
{
    using R = TypeParam;
    Random random;
    const int most = std::numeric_limits<R>::max_exponent;
    for (const i64 n : {3, 5, 13})
        for (const int exponent : {-most * 2 / 5, -most / 4, -most / 16, most / 16, most / 4, most * 2 / 5}) {
            Equation<R> e = equation<R>(
                n, random, [&] { return 0.1 + small<R>(random, 1); }, [&] { return R(1); });
            e.rho = 1;
            e.normalise();
            Equation<R> far = e;
            const R size = std::ldexp(R(1), exponent);
            for (R& d : far.d) d *= size;
            far.rho *= size * size;
            for (i64 i = 1; i <= n; ++i) {
                SCOPED_TRACE(show(e, i, "scaled") + " by 2^" + std::to_string(exponent));
                const Root<R> near(e, i), there(far, i);
                ASSERT_EQ(there.info, 0);
                ASSERT_EQ(there.sigma / size, near.sigma);
                for (i64 j = 0; j < n; ++j) {
                    ASSERT_EQ(there.delta[j] / size, near.delta[j]);
                    ASSERT_EQ(there.work[j] / size, near.work[j]);
                }
            }
        }
}

TYPED_TEST(Lasd4Of, also_takes_weights_that_are_not_normalised)
{
    using R = TypeParam;
    Random random;
    for (const double size : {0.3, 3.0, 30.0}) {
        Equation<R> e = equation<R>(
            8, random, [&] { return 0.1 + small<R>(random, 1); }, [&] { return R(size); });
        for (i64 i = 1; i <= e.n(); ++i) expect_root(e, i, "not normalised");
    }
}

TYPED_TEST(Lasd4Of, adds_squares_where_there_is_one_pole)
{
    using R = TypeParam;
    const Root<R> root(Equation<R>{{R(3)}, {R(2)}, R(4)}, 1);
    EXPECT_EQ(root.info, 0);
    EXPECT_EQ(root.sigma, R(5));
    EXPECT_EQ(root.delta[0], R(1));
    EXPECT_EQ(root.work[0], R(1));
}

TYPED_TEST(Lasd4Of, leaves_two_poles_to_the_public_routine)
{
    using R = TypeParam;
    const Equation<R> e{{R(0.25), R(1.5)}, {R(0.6), R(0.8)}, R(0.7)};
    for (const i64 i : {1, 2}) {
        const Root<R> root(e, i);
        R delta[2], work[2], sigma;
        front::lasd5(i, e.d.data(), e.z.data(), delta, e.rho, &sigma, work);
        EXPECT_EQ(root.info, 0);
        EXPECT_EQ(root.sigma, sigma);
        for (const int j : {0, 1}) {
            EXPECT_EQ(root.delta[j], delta[j]);
            EXPECT_EQ(root.work[j], work[j]);
        }
    }
}

TYPED_TEST(Lasd4Of, asks_for_the_precision_from_three_poles_on)
{
    using R = TypeParam;
    const std::vector<std::string> asked[] = {{}, {"lasd5"}, {"lamch Epsilon"}};
    for (const i64 n : {1, 2, 3}) {
        Equation<R> e{std::vector<R>(n), std::vector<R>(n, R(0.5)), R(1)};
        for (i64 j = 0; j < n; ++j) e.d[j] = R(j);
        FrontCalls fronts;
        const Root<R> root(e, n);
        std::vector<std::string> expected;
        for (const std::string& call : asked[n - 1]) expected.push_back(letter<R> + call);
        EXPECT_EQ(fronts.calls, expected) << n;
    }
}

TYPED_TEST(Lasd4Of, gives_up_on_what_cannot_converge)
{
    using R = TypeParam;
    const R nan = std::numeric_limits<R>::quiet_NaN();
    for (const i64 n : {3, 6})
        for (i64 i = 1; i <= n; ++i) {
            Equation<R> e{std::vector<R>(n), std::vector<R>(n, R(0.5)), R(1)};
            for (i64 j = 0; j < n; ++j) e.d[j] = R(j);
            Equation<R> bad_weight = e, bad_pole = e, bad_rho = e;
            bad_weight.z[n / 2] = nan, bad_pole.d[n - 2] = nan, bad_rho.rho = nan;
            for (const auto& bad : {bad_weight, bad_pole, bad_rho}) EXPECT_EQ(Root<R>(bad, i).info, 1) << n << " " << i;
        }
}

// Poles and weights such that the root's neighbours on both sides count.
template <class R> Equation<R> three_close_poles()
{
    return {{0, 1, R(1.01), R(1.02), 3}, {R(0.1), R(0.6), R(0.01), R(0.6), R(0.5)}, R(0.5)};
}

template <class R> i64 root_by_three_poles(const Equation<R>& e)
{
    for (i64 i = 1; i <= e.n(); ++i) {
        three_poles = {};
        const Root<R> root(e, i);
        if (!three_poles.iterations.empty()) return i;
    }
    return 0;
}

TYPED_TEST(Lasd4Of, stops_at_the_400th_iteration)
{
    using R = TypeParam;
    const Equation<R> e = three_close_poles<R>();
    const i64 i = root_by_three_poles(e);
    ASSERT_NE(i, 0) << "no root needs three poles";
    EXPECT_EQ(three_poles.iterations.front(), 2);
    three_poles = {true, 0, {}};
    const Root<R> root(e, i);
    EXPECT_EQ(root.info, 1);
    EXPECT_EQ(three_poles.iterations.size(), 399u); // the first iteration is the start
    EXPECT_EQ(three_poles.iterations.back(), 400);
    EXPECT_GT(root.sigma, e.d[i - 1]);
    EXPECT_LT(root.sigma, e.d[i]);
    three_poles = {};
}

TYPED_TEST(Lasd4Of, hands_on_what_the_routine_for_three_poles_tells)
{
    using R = TypeParam;
    const Equation<R> e = three_close_poles<R>();
    const i64 i = root_by_three_poles(e);
    three_poles = {false, 5, {}};
    const Root<R> root(e, i);
    EXPECT_EQ(root.info, 5);
    EXPECT_EQ(three_poles.iterations.size(), 1u);
    EXPECT_GT(root.sigma, e.d[i - 1]); // the start
    EXPECT_LT(root.sigma, e.d[i]);
    three_poles = {};
}

} // namespace
} // namespace orv::test
