// Constants of the arithmetic and sums of squares, as LAPACK kernels ask for them.
#include "frame/imports.h"
#include "tests/support/bounds.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"
#include "tests/support/vectors.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace orv::test {
namespace {

template <class T> inline constexpr auto lassq = nullptr;
template <> inline constexpr auto lassq<float> = orv_lapack_slassq;
template <> inline constexpr auto lassq<double> = orv_lapack_dlassq;
template <> inline constexpr auto lassq<cpx<float>> = orv_lapack_classq;
template <> inline constexpr auto lassq<cpx<double>> = orv_lapack_zlassq;

template <class R> R lamch(const char* letter)
{
    if constexpr (sizeof(R) == 4) return orv_lapack_slamch(letter);
    else return orv_lapack_dlamch(letter);
}

template <class R> void expect_constants()
{
    using Limits = std::numeric_limits<R>;
    EXPECT_EQ(lamch<R>("Epsilon"), Limits::epsilon() / 2);
    EXPECT_EQ(lamch<R>("e"), Limits::epsilon() / 2);
    EXPECT_EQ(lamch<R>("Precision"), Limits::epsilon());
    EXPECT_EQ(lamch<R>("Safe minimum"), Limits::min());
    EXPECT_EQ(lamch<R>("B"), 2);
    EXPECT_EQ(lamch<R>("N"), Limits::digits);
    EXPECT_EQ(lamch<R>("R"), 1);
    EXPECT_EQ(lamch<R>("M"), Limits::min_exponent);
    EXPECT_EQ(lamch<R>("U"), Limits::min());
    EXPECT_EQ(lamch<R>("L"), Limits::max_exponent);
    EXPECT_EQ(lamch<R>("O"), Limits::max());
    EXPECT_EQ(lamch<R>("?"), 0);
}

TEST(Lamch, tells_the_constants_of_the_arithmetic_by_their_letters)
{
    expect_constants<float>();
    expect_constants<double>();
}

TEST(Labad, leaves_numbers_of_this_range_as_they_are)
{
    float small = 1e-38f, large = 1e38f;
    orv_lapack_slabad(&small, &large);
    EXPECT_EQ(small, 1e-38f);
    EXPECT_EQ(large, 1e38f);
    double little = 1e-308, much = 1e308;
    orv_lapack_dlabad(&little, &much);
    EXPECT_EQ(little, 1e-308);
    EXPECT_EQ(much, 1e308);
}

template <class T> long double square(T x)
{
    if constexpr (is_complex<T>) return square(x.re) + square(x.im);
    else return static_cast<long double>(x) * x;
}

// The sum that goes in and the one that comes out, of numbers as large as 2^exponent, every third as large as 2^other.
template <class T> void expect_sum(i64 n, i64 inc, int exponent, int other, real_t<T> scale, real_t<T> sumsq)
{
    using R = real_t<T>;
    SCOPED_TRACE(std::string("lassq ") + letter<T> + " n=" + std::to_string(n) + " inc=" + std::to_string(inc) + " 2^" +
                 std::to_string(exponent) + " 2^" + std::to_string(other));
    Random random(n);
    Strided<T> x(n, inc);
    x.fill(random);
    long double expected = square(scale) * sumsq;
    for (i64 i = 0; i < n; ++i) {
        const R factor = std::ldexp(R(1), i % 3 == 0 ? other : exponent);
        if constexpr (is_complex<T>) x(i) = {x(i).re * factor, x(i).im * factor};
        else x(i) *= factor;
    }
    for (i64 i = 0; i < n; ++i) expected += square(x(i));
    lassq<T>(&n, x.data(), &inc, &scale, &sumsq);
    const long double sum = square(scale) * sumsq;
    // A square, the sums, and what the scales cost; numbers below the least normal one are known to a unit of it.
    const long double allowed = (2 * n + 8) * unit<T> * expected + 2 * n * square(std::numeric_limits<R>::denorm_min());
    EXPECT_LE(std::fabs(sum - expected), allowed) << "scale " << scale << " sumsq " << sumsq;
    EXPECT_TRUE(sumsq == 0 || std::isnormal(sumsq)) << sumsq;
}

template <class T> void expect_sums()
{
    using R = real_t<T>;
    const int top = std::numeric_limits<R>::max_exponent - 1, bottom = std::numeric_limits<R>::min_exponent;
    const R large = std::ldexp(R(1), top / 2 + 9), little = std::ldexp(R(1), bottom / 2 - 9);
    for (const i64 n : {1, 2, 7, 8, 9, 31, 511, 512, 513, 1100})
        for (const i64 inc : {1, 3, -2}) {
            for (const int exponent :
                 {0, top / 2 - 40, top / 2, top, bottom / 2 + 40, bottom / 2, bottom / 2 - 10, bottom})
                for (const int other : {0, top, bottom, exponent}) expect_sum<T>(n, inc, exponent, other, 0, 1);
            for (const int exponent : {0, top, bottom})
                for (const R scale : {R(1), large, little}) {
                    expect_sum<T>(n, inc, exponent, exponent, scale, 3);
                    expect_sum<T>(n, inc, exponent, exponent, 1, scale * 3);
                }
        }
}

TEST(Lassq, adds_squares_of_all_sizes_without_overflow_or_underflow)
{
    expect_sums<float>();
    expect_sums<double>();
    expect_sums<cpx<float>>();
    expect_sums<cpx<double>>();
}

template <class T> void expect_special_values()
{
    using R = real_t<T>;
    const R infinity = std::numeric_limits<R>::infinity(), nan = std::numeric_limits<R>::quiet_NaN();
    const auto sum = [](R value, R other, R scale, R sumsq) {
        std::vector<T> x(1030, element<T>::make(other));
        x[1000] = element<T>::make(value), x[17] = x[1000];
        const i64 n = x.size(), inc = 1;
        lassq<T>(&n, x.data(), &inc, &scale, &sumsq);
        return scale * std::sqrt(sumsq);
    };
    for (const R other : {R(0), R(1), std::numeric_limits<R>::max(), std::numeric_limits<R>::denorm_min()}) {
        EXPECT_TRUE(std::isnan(sum(nan, other, 0, 1)));
        EXPECT_EQ(sum(infinity, other, 0, 1), infinity);
        EXPECT_EQ(sum(-infinity, other, 1, 1), infinity);
    }
    EXPECT_TRUE(std::isnan(sum(1, 1, nan, 1)));
    EXPECT_TRUE(std::isnan(sum(1, 1, 1, nan)));
    EXPECT_TRUE(std::isnan(sum(infinity, nan, 0, 1)));
    EXPECT_EQ(sum(1, 0, infinity, 1), infinity);
    EXPECT_EQ(sum(0, 0, 0, 1), 0);
}

TEST(Lassq, passes_nan_and_infinity_on)
{
    expect_special_values<float>();
    expect_special_values<double>();
    expect_special_values<cpx<float>>();
    expect_special_values<cpx<double>>();
}

TEST(Lassq, changes_nothing_without_elements)
{
    for (const i64 n : {0, -1}) {
        const i64 inc = 1;
        double scale = 0, sumsq = 1;
        orv_lapack_dlassq(&n, nullptr, &inc, &scale, &sumsq);
        EXPECT_EQ(scale, 0);
        EXPECT_EQ(sumsq, 1);
    }
}

} // namespace
} // namespace orv::test
