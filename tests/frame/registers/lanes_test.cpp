// What is done with registers, each lane against scalar code.
#include "tests/frame/registers/registers.h"

#include <cmath>
#include <limits>

namespace {
using namespace orv;
using namespace orv::test;

template <class T> class Registers : public testing::Test {
};
TYPED_TEST_SUITE(Registers, Elements);
template <class T> class RegistersOfReals : public testing::Test {
};
TYPED_TEST_SUITE(RegistersOfReals, Reals);

// The same register as reals, whatever its elements.
template <class T> vec<real_t<T>> as_reals(vec<T> v) { return {v.r}; }

TYPED_TEST(Registers, join_at_any_lane)
{
    using T = TypeParam;
    const Lanes<T> a = drawn_lanes<T>(), b = drawn_lanes<T>();
    for_each_count<1, lanes<T> - 1>([&]<int offset>() {
        EXPECT_TRUE(is(splice<offset>(register_of<T>(a), register_of<T>(b)), each_lane<T>([&](int l) {
                           return l + offset < lanes<T> ? a[l + offset] : b[l + offset - lanes<T>];
                       })))
            << offset;
    });
}

TYPED_TEST(Registers, shuffle_neighbouring_reals)
{
    using T = TypeParam;
    using R = real_t<T>;
    const auto a = register_of<T>(drawn_lanes<T>()), b = register_of<T>(drawn_lanes<T>());
    const Lanes<R> x = lanes_of(as_reals(a)), y = lanes_of(as_reals(b));
    EXPECT_TRUE(is(as_reals(swap_neighbours(a)), each_lane<R>([&](int l) { return x[l ^ 1]; })));
    EXPECT_TRUE(is(as_reals(alternate(a, b)), each_lane<R>([&](int l) { return l % 2 == 0 ? x[l] : y[l]; })));
    EXPECT_TRUE(is(as_reals(real_parts(a)), each_lane<R>([&](int l) { return x[l & ~1]; })));
    EXPECT_TRUE(is(as_reals(imaginary_parts(a)), each_lane<R>([&](int l) { return x[l | 1]; })));
}

TYPED_TEST(Registers, spread_the_first_element_or_keep_it_alone)
{
    using T = TypeParam;
    const Lanes<T> a = drawn_lanes<T>();
    EXPECT_TRUE(is(splat_first(register_of<T>(a)), each_lane<T>([&](int) { return a[0]; })));
    EXPECT_TRUE(is(first_only(register_of<T>(a)), each_lane<T>([&](int l) { return l == 0 ? a[0] : zero<T>; })));
}

TYPED_TEST(Registers, change_rows_with_columns)
{
    using T = TypeParam;
    std::array<Lanes<T>, lanes<T>> square;
    vec<T> v[lanes<T>];
    for (int i = 0; i < lanes<T>; ++i) v[i] = register_of<T>(square[i] = drawn_lanes<T>());
    transpose(v);
    for (int i = 0; i < lanes<T>; ++i) EXPECT_TRUE(is(v[i], each_lane<T>([&](int l) { return square[l][i]; }))) << i;
}

TYPED_TEST(Registers, round_each_lane_as_elements_are_rounded)
{
    using T = TypeParam;
    using R = real_t<T>;
    const Lanes<T> a = drawn_lanes<T>(), b = drawn_lanes<T>();
    const auto x = register_of<T>(a), y = register_of<T>(b);
    EXPECT_TRUE(is(x + y, each_lane<T>([&](int l) { return a[l] + b[l]; })));
    EXPECT_TRUE(is(x - y, each_lane<T>([&](int l) { return a[l] - b[l]; })));
    const Lanes<R> r = lanes_of(as_reals(x)), s = lanes_of(as_reals(y));
    EXPECT_TRUE(is(as_reals(lane_product(x, y)), each_lane<R>([&](int l) { return r[l] * s[l]; })));
    EXPECT_TRUE(
        is(as_reals(add_sub(x, y)), each_lane<R>([&](int l) { return l % 2 == 0 ? r[l] - s[l] : r[l] + s[l]; })));
    EXPECT_TRUE(is(as_reals(x) / as_reals(y), each_lane<R>([&](int l) { return r[l] / s[l]; })));
}

TYPED_TEST(Registers, turn_signs_of_zeros_and_NaN_too)
{
    using T = TypeParam;
    using R = real_t<T>;
    constexpr R special[] = {R(0), -R(0), std::numeric_limits<R>::infinity(), R(-1.5)};
    const auto x = each_lane<R>([&](int l) { return special[l % 4]; });
    const vec<T> v{register_of<R>(x).r};
    EXPECT_TRUE(is(as_reals(magnitude(v)), each_lane<R>([&](int l) { return std::fabs(x[l]); })));
    EXPECT_TRUE(is(as_reals(negative_magnitude(v)), each_lane<R>([&](int l) { return -std::fabs(x[l]); })));
    EXPECT_TRUE(is(as_reals(conj(v)), each_lane<R>([&](int l) { return is_complex<T> && l % 2 == 1 ? -x[l] : x[l]; })));
    const vec<R> nan = magnitude(splat(-std::numeric_limits<R>::quiet_NaN()));
    for (const R e : lanes_of(nan)) EXPECT_FALSE(std::signbit(e));
}

TYPED_TEST(RegistersOfReals, take_the_second_where_one_is_NaN)
{
    using R = TypeParam;
    constexpr R nan = std::numeric_limits<R>::quiet_NaN();
    const auto a = each_lane<R>([&](int l) { return l % 4 == 0 ? nan : drawn<R>(); });
    const auto b = each_lane<R>([&](int l) { return l % 3 == 1 ? nan : drawn<R>(); });
    const auto x = register_of<R>(a), y = register_of<R>(b);
    EXPECT_TRUE(is(maximum(x, y), each_lane<R>([&](int l) { return a[l] > b[l] ? a[l] : b[l]; })));
    EXPECT_TRUE(is(minimum(x, y), each_lane<R>([&](int l) { return a[l] < b[l] ? a[l] : b[l]; })));
    EXPECT_TRUE(is(root(magnitude(x)), each_lane<R>([&](int l) { return std::sqrt(std::fabs(a[l])); })));
}

TYPED_TEST(RegistersOfReals, compare_lane_by_lane)
{
    using R = TypeParam;
    constexpr R nan = std::numeric_limits<R>::quiet_NaN();
    constexpr int n = lanes<R>;
    for (int at = 0; at < n; ++at) {
        const auto one_at = [&](R there, R elsewhere) {
            return register_of<R>(each_lane<R>([&](int l) { return l == at ? there : elsewhere; }));
        };
        EXPECT_EQ(lane_bits(one_at(2, 1) > splat(R(1))), 1 << at);
        EXPECT_EQ(lane_bits(one_at(2, 1) == splat(R(2))), 1 << at);
        EXPECT_EQ(lane_bits(one_at(nan, nan) > splat(R(1))), 0);
        EXPECT_EQ(lane_bits((one_at(3, 0) > splat(R(1))) | (splat(R(1)) > splat(R(2)))), 1 << at);
        if constexpr (sizeof(R) == 8) {
            EXPECT_EQ(lane_bits(unordered(one_at(nan, 1), splat(R(1)))), 1 << at);
            EXPECT_EQ(lane_bits(unordered(splat(R(1)), one_at(nan, 1))), 1 << at);
        }
        EXPECT_TRUE(any_nonzero(one_at(nan, 0)));
        EXPECT_TRUE(any_nonzero(one_at(1, 0)));

        const mask<R> none = splat(R(0)) > splat(R(0)), found = one_at(1, 0) > splat(R(0));
        EXPECT_EQ(first_true(found, found, none, none), at);
        EXPECT_EQ(first_true(none, found, none, found), n + at);
        EXPECT_EQ(first_true(none, none, found, found), 2 * n + at);
        EXPECT_EQ(first_true(none, none, none, found), 3 * n + at);
        EXPECT_EQ(first_true(none, none, none, none), -1);
    }
    EXPECT_FALSE(any_nonzero(splat(-R(0))));
    EXPECT_FALSE(any(splat(nan) == splat(nan)));
}

TYPED_TEST(Registers, fold_halves_onto_each_other)
{
    using T = TypeParam;
    Lanes<T> a = drawn_lanes<T>();
    const T folded = first_lane(fold_lanes(register_of<T>(a)));
    for (int half = lanes<T> / 2; half > 0; half /= 2)
        for (int l = 0; l < half; ++l) a[l] = a[l] + a[l + half];
    EXPECT_TRUE(same(folded, a[0]));
}

TYPED_TEST(RegistersOfReals, find_the_greatest_lane)
{
    using R = TypeParam;
    using Key = std::conditional_t<sizeof(R) == 4, i32, double>;
    for (int at = 0; at < lanes<Key>; ++at) {
        const auto keys = each_lane<Key>([&](int l) { return Key(l == at ? 100 : -l); });
        EXPECT_TRUE(is(greatest_lane(register_of<Key>(keys)), each_lane<Key>([](int) { return Key(100); })));
        EXPECT_TRUE(is(maximum(register_of<Key>(keys), register_of<Key>(each_lane<Key>([](int) { return Key(7); }))),
                       each_lane<Key>([&](int l) { return keys[l] > 7 ? keys[l] : Key(7); })));
    }
}

TYPED_TEST(RegistersOfReals, add_the_parts_of_pairs)
{
    using R = TypeParam;
    using T = cpx<R>;
    const Lanes<T> a = drawn_lanes<T>(), b = drawn_lanes<T>();
    const auto x = register_of<T>(a), y = register_of<T>(b);
    EXPECT_TRUE(is(add_pairs(x, y), each_lane<T>([&](int l) { return T{a[l].re + a[l].im, b[l].re + b[l].im}; })));
    const auto sums = each_lane<R>([&](int l) {
        const T e = l < lanes<T> ? a[l] : b[l - lanes<T>];
        return e.re + e.im;
    });
    EXPECT_TRUE(is(add_parts(x, y), sums));
    EXPECT_TRUE(is(add_parts_sparing_shuffles(x, y), sums));
}

TYPED_TEST(RegistersOfReals, put_pairs_side_by_side)
{
    using R = TypeParam;
    std::array<Lanes<R>, lanes<R> / 2> rows;
    vec<R> v[lanes<R> / 2];
    for (int i = 0; i < lanes<R> / 2; ++i) v[i] = register_of<R>(rows[i] = drawn_lanes<R>());
    for (int k = 0; k < lanes<R> / 2; ++k)
        EXPECT_TRUE(is(pair_of_each(v, k), each_lane<R>([&](int l) { return rows[l / 2][2 * k + l % 2]; }))) << k;
}

TEST(Registers, put_a_pair_beside_itself_turned)
{
    const Lanes<cpx<float>> a = drawn_lanes<cpx<float>>();
    const float expected[] = {a[0].re, a[0].im, a[0].im, a[0].re};
    const Lanes<float> turned = lanes_of(first_pair_and_turned(register_of<cpx<float>>(a)));
    for (int l = 0; l < 4; ++l) EXPECT_TRUE(same(turned[l], expected[l])) << l;
}

} // namespace
