#include "frame/kernels/blas.h"
#include "tests/blas/reduction.h"
#include "tests/support/bounds.h"

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class R> struct Rotated {
    R a, b, c, s; // as left by the call
};

template <class R> Rotated<R> rotg(R a, R b)
{
    R c = 7, s = 7;
    kernel<Rotg<R>>("blas", letter<R>, "rotg")(&a, &b, &c, &s);
    return {a, b, c, s};
}

template <class R> Rotated<R> literal_rotg(R a, R b)
{
    const R abs_a = std::fabs(a), abs_b = std::fabs(b), scale = abs_a + abs_b;
    if (scale == 0) return {0, 0, 1, 0};
    const R roe = abs_a > abs_b ? a : b;
    const R root = std::sqrt((a / scale) * (a / scale) + (b / scale) * (b / scale));
    const R r = (roe < 0 ? R(-1) : R(1)) * scale * root;
    const R c = a / r, s = b / r;
    const R z = abs_a > abs_b ? s : c != 0 ? 1 / c : R(1);
    return {r, z, c, s};
}

template <class R> void expect_same(const Rotated<R>& computed, const Rotated<R>& expected)
{
    EXPECT_TRUE(same_bits(computed.a, expected.a)) << "r " << computed.a << " for " << expected.a;
    EXPECT_TRUE(same_bits(computed.b, expected.b)) << "z " << computed.b << " for " << expected.b;
    EXPECT_TRUE(same_bits(computed.c, expected.c)) << "c " << computed.c << " for " << expected.c;
    EXPECT_TRUE(same_bits(computed.s, expected.s)) << "s " << computed.s << " for " << expected.s;
}

template <class R> class Rotg : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Rotg, Reals);

TYPED_TEST(Rotg, computes_as_documented_and_turns_b_into_zero)
{
    using R = TypeParam;
    Random random(8);
    for (int i = 0; i < 20000; ++i) {
        const R a = std::ldexp(random.value<R>(), static_cast<int>(random.integer(-30, 30)));
        const R b = std::ldexp(random.value<R>(), static_cast<int>(random.integer(-30, 30)));
        SCOPED_TRACE("a=" + std::to_string(a) + " b=" + std::to_string(b));
        const Rotated<R> got = rotg(a, b);
        expect_same(got, literal_rotg(a, b));
        // r = c*a + s*b, 0 = c*b - s*a, 1 = c^2 + s^2, each within the roundings of c, s and r.
        const long double c = got.c, s = got.s, r = got.a;
        const long double norm = std::hypot(static_cast<long double>(a), static_cast<long double>(b));
        const long double allowed = gamma_n<R>(12);
        EXPECT_LE(std::fabs(c * a + s * b - r), allowed * norm);
        EXPECT_LE(std::fabs(c * b - s * a), allowed * norm);
        EXPECT_LE(std::fabs(c * c + s * s - 1), allowed);
        EXPECT_LE(std::fabs(std::fabs(r) - norm), allowed * norm);
        if (this->HasFailure()) return;
    }
}

TYPED_TEST(Rotg, takes_each_branch_at_its_edge)
{
    using R = TypeParam;
    expect_same(rotg<R>(0, 0), {0, 0, 1, 0});
    expect_same(rotg<R>(R(-0.0), R(-0.0)), {0, 0, 1, 0});
    expect_same(rotg<R>(0, 5), {5, 1, 0, 1}); // c is zero, so z is 1
    expect_same(rotg<R>(0, -5), {-5, 1, R(-0.0), 1});
    expect_same(rotg<R>(5, 0), {5, 0, 1, 0});
    for (const R a : {R(3), R(-3)})
        for (const R b : {R(3), R(-3)}) {
            const Rotated<R> got = rotg(a, b); // equal magnitudes: b gives the sign, and z is 1/c
            expect_same(got, literal_rotg(a, b));
            EXPECT_EQ(std::signbit(got.a), std::signbit(b));
            EXPECT_EQ(got.b, 1 / got.c);
        }
    const R huge = std::numeric_limits<R>::max() / 4;
    EXPECT_LT(rotg(huge, huge).a, inf<R>);
    EXPECT_TRUE(std::isnan(rotg(quiet_nan<R>, R(1)).a));
}

template <class R> struct ComplexRotated {
    cpx<R> a;
    R c;
    cpx<R> s;
};

template <class R> ComplexRotated<R> rotg(cpx<R> a, cpx<R> b)
{
    R c = 7;
    cpx<R> s = {7, 7};
    kernel<ComplexRotg<cpx<R>>>("blas", letter<cpx<R>>, "rotg")(&a, &b, &c, &s);
    return {a, c, s};
}

TYPED_TEST(Rotg, of_complex_numbers_turns_b_into_zero)
{
    using R = TypeParam;
    using X = cpx<long double>;
    const auto wide = [](cpx<R> v) { return X{v.re, v.im}; };
    const auto size = [](X v) { return std::hypot(v.re, v.im); };
    Random random(9);
    for (int i = 0; i < 20000; ++i) {
        const R up = std::ldexp(R(1), static_cast<int>(random.integer(-20, 20)));
        const cpx<R> a = random.value<cpx<R>>(), b = up * random.value<cpx<R>>();
        const ComplexRotated<R> got = rotg(a, b);
        // r = c*a + s*b, 0 = c*b - conj(s)*a, 1 = c^2 + |s|^2
        const X s = wide(got.s), r = wide(got.a), first = static_cast<long double>(got.c) * wide(a) + s * wide(b),
                second = static_cast<long double>(got.c) * wide(b) - X{s.re, -s.im} * wide(a);
        const long double norm = std::hypot(size(wide(a)), size(wide(b)));
        const long double allowed = gamma_n<R>(24);
        EXPECT_LE(size(first - r), allowed * norm);
        EXPECT_LE(size(second), allowed * norm);
        EXPECT_LE(std::fabs(got.c * static_cast<long double>(got.c) + s.re * s.re + s.im * s.im - 1), allowed);

        const auto modulus = [](cpx<R> v) { return R(std::sqrt(v.re * v.re + v.im * v.im)); };
        const R abs_a = modulus(a), scale = abs_a + modulus(b);
        const auto squared = [&](R part) { return R((part / scale) * (part / scale)); };
        const R length = scale * R(std::sqrt(squared(a.re) + squared(a.im) + squared(b.re) + squared(b.im)));
        const cpx<R> alpha = {a.re / abs_a, a.im / abs_a}, turned = alpha * conj(b);
        EXPECT_TRUE(same_bits(got.c, R(abs_a / length)));
        EXPECT_TRUE(same_bits(got.s, cpx<R>{turned.re / length, turned.im / length}));
        EXPECT_TRUE(same_bits(got.a, length * alpha));
        if (this->HasFailure()) return;
    }
}

TYPED_TEST(Rotg, of_a_complex_zero_takes_b_whole)
{
    using R = TypeParam;
    const cpx<R> b = {3, -4};
    const R vanishing = std::numeric_limits<R>::min(); // its square is zero
    for (const cpx<R> a : {cpx<R>{0, 0}, cpx<R>{R(-0.0), 0}, cpx<R>{vanishing, -vanishing}}) {
        const ComplexRotated<R> got = rotg(a, b);
        EXPECT_EQ(got.a, b);
        EXPECT_EQ(got.c, 0);
        EXPECT_EQ(got.s, (cpx<R>{1, 0}));
    }
    const ComplexRotated<R> alone = rotg(b, cpx<R>{0, 0});
    EXPECT_EQ(alone.c, 1);
    EXPECT_EQ(alone.s, (cpx<R>{0, 0}));
    EXPECT_EQ(alone.a.re, b.re);
}

TYPED_TEST(Rotg, of_complex_numbers_whose_squares_overflow_is_still_a_rotation)
{
    using R = TypeParam;
    const R huge = std::numeric_limits<R>::max() / 16;
    const ComplexRotated<R> got = rotg(cpx<R>{huge, huge}, cpx<R>{huge, -huge});
    EXPECT_NEAR(got.c, std::sqrt(R(0.5)), 8 * unit<R>);
    EXPECT_NEAR(got.s.im, std::sqrt(R(0.5)), 8 * unit<R>);
    EXPECT_LT(got.a.re, inf<R>);
}

} // namespace
} // namespace orv::test
