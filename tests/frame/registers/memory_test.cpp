// How registers are filled from memory and emptied into it.
#include "tests/frame/registers/registers.h"

namespace {
using namespace orv;
using namespace orv::test;

template <class T> class Memory : public testing::Test {
};
TYPED_TEST_SUITE(Memory, Elements);
template <class T> class MemoryOfReals : public testing::Test {
};
TYPED_TEST_SUITE(MemoryOfReals, Reals);

// n elements before an unreadable page, or behind one.
template <class T> struct Operand {
    Guarded<T> x;
    explicit Operand(int n, Edge edge = Edge::end) : x(n, edge)
    {
        for (T& e : x) e = drawn<T>();
    }
    operator T*() const { return x.data(); }
};

TYPED_TEST(Memory, keeps_the_order_of_lanes)
{
    using T = TypeParam;
    alignas(vector_bytes) T from[2 * lanes<T>], to[2 * lanes<T>] = {};
    for (T& e : from) e = drawn<T>();
    const auto expected = [&](int at) { return each_lane<T>([&](int l) { return from[at + l]; }); };
    EXPECT_TRUE(is(load(from), expected(0)));
    EXPECT_TRUE(is(vec<T>(load_placed(from + lanes<T>)), expected(lanes<T>)));
    for (int at = 0; at <= lanes<T>; ++at) {
        EXPECT_TRUE(is(loadu(from + at), expected(at)));
        storeu(to + at, loadu(from + at));
        EXPECT_TRUE(is(loadu(to + at), expected(at)));
    }
    store(to, load(from + lanes<T>));
    EXPECT_TRUE(is(load(to), expected(lanes<T>)));
}

TYPED_TEST(Memory, first_lanes_touch_nothing_behind_them)
{
    using T = TypeParam;
    for_each_count<1, lanes<T>>([]<int n>() {
        const Operand<T> x(n), y(n);
        const auto expected = each_lane<T>([&](int l) { return l < n ? x[l] : zero<T>; });
        EXPECT_TRUE(is(load_first<n>(x.x.data()), expected)) << n;
        store_first<n>(y.x.data(), load_first<n>(x.x.data()));
        for (int i = 0; i < n; ++i) EXPECT_TRUE(same(y[i], x[i])) << n;
    });
}

TYPED_TEST(Memory, counts_tails_that_only_the_program_knows)
{
    using T = TypeParam;
    for (int n = 0; n <= lanes<T>; ++n) {
        int found = 0;
        with_count<lanes<T>>(n, [&]<int count>() { found += count; });
        EXPECT_EQ(found, n);
    }
}

TYPED_TEST(Memory, last_lanes_touch_nothing_before_and_behind_them)
{
    using T = TypeParam;
    for_each_count<1, lanes<T>>([]<int n>() {
        for (const Edge edge : {Edge::start, Edge::end}) {
            const Operand<T> x(n, edge);
            const Lanes<T> a = lanes_of(load_last<n>(x.x.data()));
            for (int l = 0; l < n; ++l) EXPECT_TRUE(same(a[lanes<T> - n + l], x[l])) << n;
        }
    });
}

TYPED_TEST(Memory, repeats_an_element_in_every_lane)
{
    using T = TypeParam;
    const Operand<T> x(1);
    const auto expected = each_lane<T>([&](int) { return x[0]; });
    EXPECT_TRUE(is(load_splat(x.x.data()), expected));
    EXPECT_TRUE(is(splat(x[0]), expected));
    EXPECT_TRUE(is(zeros<T>(), each_lane<T>([](int) { return zero<T>; })));
    EXPECT_TRUE(same(first_lane(splat(x[0])), x[0]));
}

TYPED_TEST(MemoryOfReals, repeats_a_pair)
{
    using R = TypeParam;
    const Operand<R> x(2);
    EXPECT_TRUE(is(load_pair(x.x.data()), each_lane<R>([&](int l) { return x[l % 2]; })));
}

TYPED_TEST(MemoryOfReals, repeats_even_and_odd_lanes)
{
    using R = TypeParam;
    alignas(vector_bytes) R x[lanes<R>];
    for (R& e : x) e = drawn<R>();
    EXPECT_TRUE(is(load_even(x), each_lane<R>([&](int l) { return x[l / 2 * 2]; })));
    EXPECT_TRUE(is(load_odd(x), each_lane<R>([&](int l) { return x[l / 2 * 2 + 1]; })));
}

TYPED_TEST(MemoryOfReals, brings_parts_of_pairs_apart)
{
    using T = cpx<TypeParam>;
    alignas(vector_bytes) T x[lanes<T>];
    for (T& e : x) e = drawn<T>();
    EXPECT_TRUE(is(load_re_twice(x), each_lane<T>([&](int l) { return T{x[l].re, x[l].re}; })));
    EXPECT_TRUE(is(load_im_twice(x), each_lane<T>([&](int l) { return T{x[l].im, x[l].im}; })));
}

TEST(Memory, widens_singles)
{
    for_each_count<1, lanes<double>>([]<int n>() {
        const Operand<float> x(n);
        EXPECT_TRUE(is(load_widened_first<n>(x.x.data()),
                       each_lane<double>([&](int l) { return l < n ? static_cast<double>(x[l]) : 0.0; })));
    });
}

TYPED_TEST(Memory, strides_take_no_other_elements)
{
    using T = TypeParam;
    for (const i64 inc : {i64(-3), i64(-1), i64(1), i64(2), i64(5)}) {
        const i64 n = (lanes<T> - 1) * (inc < 0 ? -inc : inc) + 1, start = inc < 0 ? n - 1 : 0;
        const Operand<T> x(n), y(n);
        const auto expected = each_lane<T>([&](int l) { return x[start + l * inc]; });
        EXPECT_TRUE(is(gather(x + start, inc), expected)) << inc;
        Guarded<T> before(n);
        for (i64 i = 0; i < n; ++i) before[i] = y[i];
        scatter(y + start, inc, register_of<T>(expected));
        for (i64 i = 0; i < n; ++i) {
            const bool written = (i - start) % inc == 0;
            EXPECT_TRUE(same(y[i], written ? x[i] : before[i])) << inc;
        }
    }
    const Operand<T> x(1);
    EXPECT_TRUE(is(gather(x.x.data(), 0), each_lane<T>([&](int) { return x[0]; })));
    EXPECT_TRUE(is(load_strided<false>(x.x.data(), 0), each_lane<T>([&](int) { return x[0]; })));
}

TYPED_TEST(Memory, walks_blocks_from_the_longest_and_then_single_elements)
{
    using T = TypeParam;
    for (i64 n = 0; n < 9 * lanes<T>; ++n) {
        i64 at = 0;
        int before = 4;
        each<T, 4, 1>(
            n,
            [&]<int registers>(i64 i, std::integral_constant<int, registers>) {
                EXPECT_EQ(i, at);
                EXPECT_LE(registers, before);
                EXPECT_TRUE(registers == 4 || n - at < 4 * lanes<T>);
                before = registers, at += registers * lanes<T>;
            },
            [&](i64 i) {
                EXPECT_LT(n - at, lanes<T>);
                EXPECT_EQ(i, at++);
            });
        EXPECT_EQ(at, n);
    }
}

} // namespace
