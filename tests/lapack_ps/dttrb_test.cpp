// Elimination from both ends: ?dttrfb, x?dttrsb, ?dtsvb.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/tridiagonal.h"
#include "tests/support/probe.h"

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class T> std::string name(const char* prefix, const char* stem)
{
    return std::string(prefix) + letter<T> + stem;
}
template <class T> i64 dttrfb(const System<T>& s)
{
    i64 info = -77;
    kernel<Dttrfb<T>>("lapack_ps", name<T>("", "dttrfb"))(&s.n, s.dl.data(), s.d.data(), s.du.data(), &info);
    return info;
}
template <class T> i64 dttrsb(char trans, const System<T>& s)
{
    i64 info = -77;
    kernel<Dttrsb<T>>("lapack_ps", name<T>("x", "dttrsb"))(&trans, &s.n, &s.nrhs, s.dl.data(), s.d.data(), s.du.data(),
                                                           s.b.data(), &s.ldb, &info);
    return info;
}
template <class T> i64 dtsvb(const System<T>& s)
{
    i64 info = -77;
    kernel<Dtsvb<T>>("lapack_ps", name<T>("", "dtsvb"))(&s.n, &s.nrhs, s.dl.data(), s.d.data(), s.du.data(), s.b.data(),
                                                        &s.ldb, &info);
    return info;
}

template <class T> bool fails(T a)
{
    if constexpr (is_complex<T>) return a.re != a.re || a.im != a.im || (a.re == 0 && a.im == 0);
    else return a != a || a == 0;
}

// The steps as they are defined; `sides` right-hand sides take part in the elimination.
template <class T> i64 model_factor(const System<T>& s, i64 sides)
{
    const i64 n = s.n, h = (n - 1) / 2;
    if (n == 0) return 0;
    const auto top = [&](i64 i) {
        const T r = quotient(one<T>, s.d[i]), m = s.dl[i] * r;
        s.dl[i] = m, s.d[i] = r, s.d[i + 1] -= m * s.du[i];
        for (i64 c = 0; c < sides; ++c) s.side(i + 1, c) -= s.side(i, c) * m;
    };
    const auto bottom = [&](i64 j) {
        const T r = quotient(one<T>, s.d[j]), m = s.dl[j - 1] * r;
        s.d[j] = r, s.dl[j - 1] = m, s.d[j - 1] -= m * s.du[j - 1];
        for (i64 c = 0; c < sides; ++c) {
            s.side(j, c) = s.side(j, c) * r;
            s.side(j - 1, c) -= s.side(j, c) * s.du[j - 1];
        }
    };
    for (i64 i = 0; i < h; ++i) {
        if (fails(s.d[i])) return i + 1;
        top(i);
        if (fails(s.d[n - 1 - i])) return n - i;
        bottom(n - 1 - i);
    }
    if (2 * h + 1 < n) {
        if (fails(s.d[h])) return h + 1;
        top(h);
    }
    if (fails(s.d[n - h - 1])) return n - h;
    s.d[n - h - 1] = quotient(one<T>, s.d[n - h - 1]);
    return 0;
}
template <class T> void model_inward(const System<T>& s)
{
    const i64 n = s.n;
    for (i64 c = 0; c < s.nrhs; ++c)
        for (i64 i = 0; i < n / 2; ++i) {
            s.side(i + 1, c) -= s.side(i, c) * s.dl[i];
            if (const i64 j = n - 1 - i; j - 1 > i) {
                s.side(j, c) = s.side(j, c) * s.d[j];
                s.side(j - 1, c) -= s.side(j, c) * s.du[j - 1];
            }
        }
}
template <class T> void model_outward(const System<T>& s)
{
    const i64 n = s.n, middle = n / 2;
    for (i64 c = 0; c < s.nrhs && n > 0; ++c) {
        s.side(middle, c) = s.side(middle, c) * s.d[middle];
        for (i64 k = middle - 1; k >= 0; --k) s.side(k, c) = (s.side(k, c) - s.side(k + 1, c) * s.du[k]) * s.d[k];
        for (i64 k = middle; k < n - 1; ++k) s.side(k + 1, c) -= s.side(k, c) * s.dl[k];
    }
}

template <class Body> void each_type(Body body)
{
    body.template operator()<float>();
    body.template operator()<double>();
    body.template operator()<cpx<float>>();
    body.template operator()<cpx<double>>();
}
template <class Body> void each_problem(Body body)
{
    each_type([&]<class T>() {
        for (const i64 sides : {0, 1, 2, 3, 4, 5, 7, 8, 9, 12, 13, 17})
            for (i64 n = 0; n <= 22; ++n) {
                const System<T> system(n, sides);
                system.fill(2.5);
                SCOPED_TRACE(problem("dttrb", system));
                body(system);
            }
    });
}

TEST(Dttrb, factors_in_the_order_told)
{
    each_type([]<class T>() {
        for (i64 n : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 99, 100}) {
            const System<T> expected(n, 0), computed(n, 0);
            expected.fill(0.1), computed.copy(expected);
            SCOPED_TRACE(problem("dttrfb", expected));
            ASSERT_EQ(dttrfb(computed), model_factor(expected, 0));
            ASSERT_EQ(computed.differs_from(expected), "");
        }
    });
}

TEST(Dttrb, solves_in_the_order_told)
{
    each_problem([]<class T>(const System<T>& system) {
        model_factor(system, 0);
        for (const char trans : {'N', 'n'}) {
            const System<T> expected(system.n, system.nrhs), computed(system.n, system.nrhs);
            expected.copy(system), computed.copy(system);
            model_inward(expected), model_outward(expected);
            ASSERT_EQ(dttrsb(trans, computed), 0);
            ASSERT_EQ(computed.differs_from(expected), "");
        }
    });
}

TEST(Dttrb, factors_and_solves_in_one_call_with_the_same_bits)
{
    each_problem([]<class T>(const System<T>& system) {
        const System<T> expected(system.n, system.nrhs), computed(system.n, system.nrhs);
        expected.copy(system), computed.copy(system);
        if (system.nrhs > 0) model_factor(expected, 0), model_inward(expected), model_outward(expected);
        ASSERT_EQ(dtsvb(computed), 0);
        ASSERT_EQ(computed.differs_from(expected), "");
    });
}

// The order in which the pivots are met is 0, n-1, 1, n-2, ...; the first that is zero or NaN is reported, counted
// from 1.
TEST(Dttrb, stops_at_the_first_pivot_met_that_is_zero_or_nan)
{
    each_type([]<class T>() {
        for (i64 n = 1; n <= 12; ++n)
            for (i64 k = 0; k < n; ++k)
                for (const double pivot : {0.0, not_a_number})
                    for (const i64 sides : {1, 2}) {
                        const System<T> system(n, sides), factored(n, sides), solved(n, sides), expected(n, sides);
                        system.fill(2.5);
                        // No coupling into row k: its pivot is what stands there.
                        if (k > 0) system.dl[k - 1] = number<T>(0);
                        if (k < n - 1) system.du[k] = number<T>(0);
                        system.d[k] = number<T>(pivot, k % 2 ? pivot : 0);
                        SCOPED_TRACE(problem("dttrfb", system) + " pivot " + std::to_string(k));
                        factored.copy(system), solved.copy(system), expected.copy(system);
                        ASSERT_EQ(dttrfb(factored), k + 1);
                        ASSERT_EQ(dtsvb(solved), k + 1);
                        ASSERT_EQ(model_factor(expected, sides == 1 ? 1 : 0), k + 1);
                        ASSERT_EQ(solved.differs_from(expected), "");
                    }
    });
}

TEST(Dttrb, stops_at_complex_pivots_that_are_zero_or_nan_in_both_parts_or_nan_in_one)
{
    using C = cpx<double>;
    const std::pair<C, bool> pivots[] = {{{0, 2}, false},   {{2, 0}, false},           {{0, -0.0}, true},
                                         {{-0.0, 0}, true}, {{1, not_a_number}, true}, {{not_a_number, 0}, true}};
    for (const auto& [pivot, stops] : pivots)
        for (i64 k = 0; k < 5; ++k) {
            const System<C> system(5, 0);
            system.fill(2.5);
            if (k > 0) system.dl[k - 1] = {0, 0};
            if (k < 4) system.du[k] = {0, 0};
            system.d[k] = pivot;
            EXPECT_EQ(dttrfb(system), stops ? k + 1 : 0) << pivot.re << ' ' << pivot.im << ' ' << k;
        }
}

TEST(Dttrb, reports_the_last_diagonal_element_from_the_bottom_sweep)
{
    const System<double> system(5, 0);
    system.fill(2.5);
    system.d[4] = 0;
    const double second = system.d[2];
    EXPECT_EQ(dttrfb(system), 5);
    EXPECT_EQ(system.d[2], second) << "it was the first trip";
}

TEST(Dttrb, inverts_the_only_element_of_order_one)
{
    const System<double> system(1, 0);
    system.d[0] = 4;
    EXPECT_EQ(dttrfb(system), 0);
    EXPECT_EQ(system.d[0], 0.25);
}

TEST(Dttrb, does_nothing_without_right_hand_sides)
{
    const System<double> system(6, 0), before(6, 0);
    system.fill(0), before.copy(system);
    EXPECT_EQ(dtsvb(system), 0);
    EXPECT_EQ(system.differs_from(before), "");
}

TEST(Dttrb, solves_dominant_systems_and_their_transposes)
{
    long double worst = 0;
    each_problem([&]<class T>(const System<T>& system) {
        int op = 0;
        for (const char trans : {'N', 'T', 'c'}) {
            const System<T> x(system.n, system.nrhs);
            x.copy(system);
            ASSERT_EQ(dttrfb(x), 0);
            ASSERT_EQ(dttrsb(trans, x), 0);
            const long double error = backward_error(op++, system, x) / dominant_bound<T>(8);
            ASSERT_LE(error, 1) << trans;
            worst = std::max(worst, error);
        }
    });
    RecordProperty("worst", std::to_string(worst));
}

TEST(Dttrb, takes_no_memory)
{
    const System<double> system(9, 7);
    system.fill(2.5);
    const ProbeScope probe;
    EXPECT_EQ(dtsvb(system), 0);
    EXPECT_EQ(test::probe().allocations, 0);
}

} // namespace
} // namespace orv::test
