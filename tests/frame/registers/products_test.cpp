// Products of registers round as the plain formula does, in whatever form.
#include "frame/products.h"
#include "tests/frame/registers/registers.h"

namespace {
using namespace orv;
using namespace orv::test;

template <class T> class Products : public testing::Test {
};
TYPED_TEST_SUITE(Products, Elements);

// Sums of n products, kept apart by parts as the forms do: re*re, im*im, re*im and im*re.
template <class R> struct PartSums {
    R re_re = 0, im_im = 0, re_im = 0, im_re = 0;
    void add(cpx<R> a, cpx<R> b)
    {
        re_re += a.re * b.re, im_im += a.im * b.im, re_im += a.re * b.im, im_re += a.im * b.re;
    }
};

constexpr int terms = 5;
template <class T> struct Series {
    Lanes<T> a[terms], b[terms];
    Series()
    {
        for (int k = 0; k < terms; ++k) a[k] = drawn_lanes<T>(), b[k] = drawn_lanes<T>();
    }
    vec<T> x(int k) const { return register_of<T>(a[k]); }
    vec<T> y(int k) const { return register_of<T>(b[k]); }
    // The sums of lane l.
    auto parts(int l) const
    {
        PartSums<real_t<T>> sums;
        for (int k = 0; k < terms; ++k) sums.add(a[k][l], b[k][l]);
        return sums;
    }
};

TYPED_TEST(Products, of_a_number_with_each_lane)
{
    using T = TypeParam;
    const T a = drawn<T>();
    const Lanes<T> x = drawn_lanes<T>();
    const auto expected = each_lane<T>([&](int l) { return a * x[l]; });
    EXPECT_TRUE(is(factor<T>(a) * register_of<T>(x), expected));
    EXPECT_TRUE(is(factor<T>(a, true) * register_of<T>(x), each_lane<T>([&](int l) { return a * conj(x[l]); })));
    EXPECT_TRUE(same(factor<T>(a).scalar(), a));
    alignas(vector_bytes) T memory[lanes<T>];
    for (int l = 0; l < lanes<T>; ++l) memory[l] = x[l];
    EXPECT_TRUE(is(factor<T>(a) * load_placed(memory), expected));
}

TYPED_TEST(Products, of_elements)
{
    using T = TypeParam;
    const Lanes<T> a = drawn_lanes<T>(), b = drawn_lanes<T>();
    EXPECT_TRUE(
        is(element_product(register_of<T>(a), register_of<T>(b)), each_lane<T>([&](int l) { return a[l] * b[l]; })));
}

TYPED_TEST(Products, by_parts_are_joined_at_the_end)
{
    using T = TypeParam;
    const Series<T> s;
    ProductSum<T> sum;
    for (int k = 0; k < terms; ++k) sum.add(s.x(k), Multiplicand<T>(s.y(k)));
    if constexpr (is_complex<T>) {
        EXPECT_TRUE(is(sum.value(), each_lane<T>([&](int l) {
                           const auto p = s.parts(l);
                           return T{p.re_re - p.im_im, p.re_im + p.im_re};
                       })));
        EXPECT_TRUE(is(sum.template value<true>(), each_lane<T>([&](int l) {
                           const auto p = s.parts(l);
                           return T{p.re_re + p.im_im, p.re_im - p.im_re};
                       })));
    } else {
        EXPECT_TRUE(is(sum.value(), each_lane<T>([&](int l) {
                           T sum = 0;
                           for (int k = 0; k < terms; ++k) sum += s.a[k][l] * s.b[k][l];
                           return sum;
                       })));
    }
}

TYPED_TEST(Products, begin_at_a_start_that_takes_real_factors)
{
    using T = TypeParam;
    const Lanes<T> start = drawn_lanes<T>(), a = drawn_lanes<T>(), b = drawn_lanes<T>();
    ProductSum<T> sum(register_of<T>(start));
    sum.begin(register_of<T>(a), Multiplicand<T>(register_of<T>(b)));
    EXPECT_TRUE(is(sum.value(), each_lane<T>([&](int l) {
                       if constexpr (!is_complex<T>) return start[l] + a[l] * b[l];
                       else
                           return T{(start[l].re + a[l].re * b[l].re) - a[l].im * b[l].im,
                                    (start[l].im + a[l].im * b[l].re) + a[l].re * b[l].im};
                   })));
}

TYPED_TEST(Products, by_like_and_unlike_parts_are_four_sums)
{
    using T = TypeParam;
    const Series<T> s;
    CrossedSum<T> sum;
    sum.clear();
    for (int k = 0; k < terms; ++k) sum.add(s.x(k), s.y(k));
    if constexpr (is_complex<T>) {
        EXPECT_TRUE(is(sum.straight, each_lane<T>([&](int l) { return T{s.parts(l).re_re, s.parts(l).im_im}; })));
        EXPECT_TRUE(is(sum.crossed, each_lane<T>([&](int l) { return T{s.parts(l).im_re, s.parts(l).re_im}; })));
    } else
        EXPECT_TRUE(is(sum.sum, each_lane<T>([&](int l) {
                           T sum = 0;
                           for (int k = 0; k < terms; ++k) sum += s.a[k][l] * s.b[k][l];
                           return sum;
                       })));
}

TYPED_TEST(Products, fold_every_sum)
{
    using T = TypeParam;
    const Series<T> s;
    ProductSum<T> by_parts;
    CrossedSum<T> crossed;
    crossed.clear();
    for (int k = 0; k < terms; ++k) {
        by_parts.add(s.x(k), Multiplicand<T>(s.y(k)));
        crossed.add(s.x(k), s.y(k));
    }
    const auto folded = [](vec<T> v) { return first_lane(fold_lanes(v)); };
    if constexpr (is_complex<T>) {
        EXPECT_TRUE(same(first_lane((by_parts + by_parts).folded().re), folded(by_parts.re + by_parts.re)));
        EXPECT_TRUE(same(first_lane((by_parts + by_parts).folded().im), folded(by_parts.im + by_parts.im)));
        EXPECT_TRUE(
            same(first_lane((crossed + crossed).folded().straight), folded(crossed.straight + crossed.straight)));
        EXPECT_TRUE(same(first_lane((crossed + crossed).folded().crossed), folded(crossed.crossed + crossed.crossed)));
    } else {
        EXPECT_TRUE(same(first_lane(by_parts.folded().sum), folded(by_parts.sum)));
        EXPECT_TRUE(same(first_lane(crossed.folded().sum), folded(crossed.sum)));
    }
}

TYPED_TEST(Products, with_i_turn_by_a_right_angle)
{
    using T = TypeParam;
    if constexpr (is_complex<T>) {
        const Lanes<T> x = drawn_lanes<T>();
        EXPECT_TRUE(is(times_i(register_of<T>(x)), each_lane<T>([&](int l) { return T{-x[l].im, x[l].re}; })));
        EXPECT_TRUE(is(times_minus_i(register_of<T>(x)), each_lane<T>([&](int l) { return T{x[l].im, -x[l].re}; })));
    }
}

} // namespace
