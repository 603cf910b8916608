#include "frame/kernels/blas.h"
#include "tests/blas/reduction.h"
#include "tests/support/bounds.h"

#include <algorithm>

namespace orv::test {
namespace {

double dnrm2(i64 n, const double* x, i64 inc) { return kernel<kernels::blas::dnrm2>()(&n, x, &inc); }
double norm(i64 n, const double* x, i64 inc) { return dnrm2(n, x, inc); }
double norm(i64 n, const cpx<double>* x, i64 inc) { return kernel<kernels::blas::dznrm2>()(&n, x, &inc); }
float norm(i64 n, const float* x, i64 inc) { return kernel<kernels::blas::snrm2>()(&n, x, &inc); }
float norm(i64 n, const cpx<float>* x, i64 inc) { return kernel<kernels::blas::scnrm2>()(&n, x, &inc); }

// Reals in the order of storage: a stride's sign does not matter.
template <class T> std::vector<real_t<T>> reals(i64 n, const T* x, i64 inc)
{
    std::vector<real_t<T>> all;
    for (i64 i = 0; i < n; ++i) {
        const T v = x[i * std::abs(inc)];
        if constexpr (is_complex<T>) all.push_back(v.re), all.push_back(v.im);
        else all.push_back(v);
    }
    return all;
}

double scaled_pass(const std::vector<double>& reals)
{
    double scale = 0, sum = 1;
    for (const double x : reals) {
        const double v = std::fabs(x);
        if (v == 0) continue;
        if (v > scale) {
            sum = sum * (scale / v) * (scale / v) + 1;
            scale = v;
        } else sum += (v / scale) * (v / scale);
    }
    return scale * std::sqrt(sum);
}

template <class T> void expect_scaled_pass(i64 n, const Strided<T>& x)
{
    const double computed = norm(n, x.data(), x.inc());
    double expected = n < 1 ? 0 : scaled_pass(reals(n, x.data(), x.inc()));
    if (!is_complex<T> && n == 1) expected = std::fabs(reals(n, x.data(), x.inc())[0]);
    EXPECT_TRUE(same_bits(computed, expected) || (std::isnan(expected) && std::isnan(computed)))
        << computed << " for " << expected;
}

template <class T> class ScaledNorm : public testing::Test {
};
using Doubles = testing::Types<double, cpx<double>>;
TYPED_TEST_SUITE(ScaledNorm, Doubles);

TYPED_TEST(ScaledNorm, is_the_scaled_pass_at_every_length_stride_and_alignment)
{
    for_each_vector<TypeParam>("nrm2", [](i64 n, Strided<TypeParam>& x) { expect_scaled_pass(n, x); });
}

TYPED_TEST(ScaledNorm, is_the_scaled_pass_wherever_maxima_zeros_and_special_values_stand)
{
    using T = TypeParam;
    Random random(5);
    const double special[] = {0.0, -0.0, 1e308, 1e-308, 5e-324, 1e300, inf<double>, -inf<double>, quiet_nan<double>};
    for (int round = 0; round < 3000; ++round) {
        const i64 n = random.integer(1, 70), inc = random.integer(0, 3) == 0 ? 3 : 1;
        Strided<T> x(n, inc);
        auto* const parts = reinterpret_cast<double*>(x.data());
        const i64 width = sizeof(T) / 8;
        const i64 kind = random.integer(0, 4);
        for (i64 i = 0; i < n; ++i)
            for (i64 p = 0; p < width; ++p) {
                double v = random.value<double>();
                if (kind == 1) v = static_cast<double>(i * width + p); // every element a new maximum
                if (kind == 2) v = 1.0 / static_cast<double>(1 + i * width + p);
                if (kind == 3 && random.integer(0, 9) == 0) v = special[random.integer(0, 8)];
                if (kind == 4) v = i < n / 2 ? 0 : random.integer(0, 1) == 0 ? 0 : v; // zeros lead
                parts[i * inc * width + p] = v;
            }
        SCOPED_TRACE(problem("nrm2", letter<T>, n, inc, {}) + " kind=" + std::to_string(kind) +
                     " round=" + std::to_string(round));
        expect_scaled_pass(n, x);
        if (this->HasFailure()) return;
    }
}

TYPED_TEST(ScaledNorm, neither_overflows_nor_underflows_before_its_result)
{
    using T = TypeParam;
    for (const double magnitude : {1e300, 1e-300, std::numeric_limits<double>::min(), 1.0})
        for (const i64 n : {2, 16, 17, 40}) {
            Strided<T> x(n, 1);
            Entry entry;
            for (i64 i = 0; i < n; ++i) {
                x(i) = element<T>::make(i % 2 == 0 ? -magnitude : magnitude / 3);
                entry.exact += std::pow(static_cast<long double>(i % 2 == 0 ? magnitude : magnitude / 3), 2);
            }
            entry.exact = entry.magnitude = std::sqrt(entry.exact);
            entry.roundings = 3 * n + 2; // generous: each element is rescaled at most once here
            EXPECT_LE(excess(norm(n, x.data(), 1), entry), 1) << magnitude << ' ' << n;
        }
}

TYPED_TEST(ScaledNorm, lets_one_infinity_through_and_makes_nan_of_two_or_of_nan)
{
    using T = TypeParam;
    const auto is = [](double re) { return element<T>::make(re); };
    for (const i64 n : {2, 8, 9, 33})
        for (i64 at = 0; at < n; ++at) {
            Strided<T> x(n, 1);
            for (i64 i = 0; i < n; ++i) x(i) = is(1.0 + static_cast<double>(i));
            x(at) = is(-inf<double>);
            EXPECT_EQ(norm(n, x.data(), 1), inf<double>);
            x((at + 1) % n) = is(inf<double>);
            EXPECT_TRUE(std::isnan(norm(n, x.data(), 1)));
            x((at + 1) % n) = is(1), x(at) = is(quiet_nan<double>);
            EXPECT_TRUE(std::isnan(norm(n, x.data(), 1)));
        }
}

TEST(Dnrm2, of_one_element_is_its_magnitude_whatever_the_stride)
{
    for (const double v : {-3.0, 0.0, -5e-324, -1.7e308, -inf<double>}) {
        Packed<double> x{v};
        for (const i64 inc : {1, 0, -5, 7}) EXPECT_TRUE(same_bits(dnrm2(1, x.data(), inc), std::fabs(v)));
    }
}

TEST(Dnrm2, walks_forward_from_the_base_whatever_the_sign_of_the_stride)
{
    Packed<double> x{3, 100, 4};
    EXPECT_EQ(dnrm2(2, x.data(), 2), 5);
    EXPECT_EQ(dnrm2(2, x.data(), -2), 5);
    EXPECT_EQ(dnrm2(3, x.data(), -1), dnrm2(3, x.data(), 1));
    EXPECT_EQ(dnrm2(4, x.data(), 0), 6);
    Packed<double> nan{quiet_nan<double>, 0, 0};
    EXPECT_TRUE(std::isnan(dnrm2(3, nan.data(), 1)));
}

TEST(Norms, of_no_elements_are_zero_and_read_nothing)
{
    for (const i64 n : {0, -1, -9}) {
        EXPECT_TRUE(same_bits(norm(n, static_cast<const double*>(nullptr), 1), 0.0));
        EXPECT_TRUE(same_bits(norm(n, static_cast<const cpx<double>*>(nullptr), 1), 0.0));
        EXPECT_TRUE(same_bits(norm(n, static_cast<const float*>(nullptr), 1), 0.0f));
        EXPECT_TRUE(same_bits(norm(n, static_cast<const cpx<float>*>(nullptr), 1), 0.0f));
    }
}

double square(float x) { return static_cast<double>(x) * x; }

// Unit strides: single reals to a 16-byte boundary, then blocks of 16, 8, 4, 2, 1 pairs over eight accumulators.
double unit_sum(const std::vector<float>& v, const float* address)
{
    double a[8][2] = {};
    const auto off = reinterpret_cast<std::uintptr_t>(address) % 16;
    const std::size_t head = off % 4 == 0 && off != 0 ? (16 - off) / 4 : 0;
    std::size_t i = 0;
    while (i < std::min(head, v.size())) a[0][0] += square(v[i++]);
    for (const std::size_t pairs : {16, 8, 4, 2, 1})
        while (v.size() - i >= 2 * pairs)
            for (std::size_t p = 0; p < pairs; ++p)
                for (int lane = 0; lane < 2; ++lane) a[p % 8][lane] += square(v[i++]);
    if (i < v.size()) a[0][0] += square(v[i]);
    double lane[2];
    for (int l = 0; l < 2; ++l)
        lane[l] = ((a[0][l] + a[1][l]) + (a[2][l] + a[3][l])) + ((a[4][l] + a[5][l]) + (a[6][l] + a[7][l]));
    return lane[0] + lane[1];
}

// Other strides: blocks of 4, 2, 1 elements over four accumulators.
double strided_sum(const std::vector<float>& v, std::size_t width)
{
    double a[4][2] = {};
    std::size_t i = 0;
    for (const std::size_t elements : {4, 2, 1})
        while (v.size() - i >= elements * width)
            for (std::size_t e = 0; e < elements; ++e)
                for (std::size_t part = 0; part < width; ++part) a[e][part] += square(v[i++]);
    return ((a[0][0] + a[1][0]) + (a[2][0] + a[3][0])) + ((a[0][1] + a[1][1]) + (a[2][1] + a[3][1]));
}

template <class T> class NormInDouble : public testing::Test {
};
using Singles = testing::Types<float, cpx<float>>;
TYPED_TEST_SUITE(NormInDouble, Singles);

TYPED_TEST(NormInDouble, adds_in_its_documented_order_at_every_length_stride_and_alignment)
{
    using T = TypeParam;
    for_each_vector<T>("nrm2", [](i64 n, Strided<T>& x) {
        const auto v = reals(n, x.data(), x.inc());
        const double sum = std::abs(x.inc()) == 1 ? unit_sum(v, reinterpret_cast<const float*>(x.data()))
                                                  : strided_sum(v, sizeof(T) / sizeof(float));
        const float computed = norm(n, x.data(), x.inc());
        EXPECT_TRUE(same_bits(computed, static_cast<float>(std::sqrt(sum)))) << computed << ' ' << std::sqrt(sum);
    });
}

// Rounding to single hides almost every difference in the last bit of a double sum, so the tree of accumulators is
// looked at where one bit decides. Three reals make a sum one unit below the least that rounds upwards. Two small
// squares of 0.4 units each are lost if they meet that sum one by one, and tip it if they meet each other first.
struct Balance {
    float great[3], small;
    Balance()
    {
        double tipped = (1 + 0x1p-24) * (1 + 0x1p-24);
        while (static_cast<float>(std::sqrt(tipped)) == 1) tipped += 0x1p-52;
        while (static_cast<float>(std::sqrt(tipped - 0x1p-52)) != 1) tipped -= 0x1p-52;
        const double target = tipped - 0x1p-52;
        great[0] = 1;
        great[1] = static_cast<float>(std::sqrt(target - 1) * (1 - 0x1p-24));
        great[2] = static_cast<float>(std::sqrt(target - 1 - square(great[1])));
        small = static_cast<float>(std::sqrt(0.4) * 0x1p-26);
        EXPECT_EQ(square(great[0]) + square(great[1]) + square(great[2]), target);
    }
};

TYPED_TEST(NormInDouble, adds_its_accumulators_as_documented_where_one_bit_decides)
{
    using T = TypeParam;
    constexpr i64 width = sizeof(T) / sizeof(float);
    const Balance balance;
    for (const i64 inc : {1, 2}) {
        const i64 period = inc == 1 ? 16 : 4 * width; // reals that go to different lanes
        int tipped = 0, lost = 0;
        for (i64 p = 1; p < period; ++p)
            for (i64 q = p + 1; q < period; ++q) {
                const i64 n = 4 * period / width; // whole blocks
                Strided<T> x(n, inc);
                auto* const parts = reinterpret_cast<float*>(x.data());
                const auto real = [&](i64 k) -> float& { return parts[k / width * inc * width + k % width]; };
                for (i64 k = 0; k < n * width; ++k) real(k) = 0;
                for (i64 row = 0; row < 3; ++row) real(row * period) = balance.great[row];
                real(3 * period + p) = real(3 * period + q) = balance.small;
                const auto v = reals(n, x.data(), inc);
                const double sum = inc == 1 ? unit_sum(v, parts) : strided_sum(v, width);
                EXPECT_EQ(norm(n, x.data(), inc), static_cast<float>(std::sqrt(sum))) << inc << ' ' << p << ' ' << q;
                ++(static_cast<float>(std::sqrt(sum)) == 1 ? lost : tipped);
            }
        EXPECT_GT(tipped, 0);
        EXPECT_GT(lost, 0);
    }
}

TYPED_TEST(NormInDouble, is_within_half_a_unit_and_a_little_of_the_exact_norm)
{
    using T = TypeParam;
    Random random(6);
    for (const float scale : {1e30f, 1.0f, 1e-30f, 1e-44f})
        for (const i64 n : {1, 2, 100, 10000}) {
            Strided<T> x(n, 1);
            x.fill(random);
            for (i64 i = 0; i < n; ++i) x(i) = element<T>::make(scale) * x(i);
            Entry entry;
            for (const float v : reals(n, x.data(), 1)) entry.exact += static_cast<long double>(v) * v;
            entry.exact = std::sqrt(entry.exact);
            entry.magnitude = entry.exact * (1 + gamma_n<double>(2 * n + 4) / unit<float>);
            entry.roundings = 1;
            EXPECT_LE(excess(norm(n, x.data(), 1), entry), 1) << scale << ' ' << n;
        }
}

TEST(Snrm2, of_values_whose_squares_leave_the_range_of_singles)
{
    Packed<float> huge{1e30f, 1e30f}, tiny{1e-30f, 1e-30f}, greatest{3e38f, 3e38f};
    EXPECT_EQ(norm(2, huge.data(), 1), 1.4142135e30f);
    EXPECT_EQ(norm(2, tiny.data(), 1), static_cast<float>(std::sqrt(2.0) * double(1e-30f)));
    EXPECT_EQ(norm(2, greatest.data(), 1), inf<float>); // only the rounding overflows
    EXPECT_EQ(norm(1, greatest.data(), 1), 3e38f);
    Packed<float> infinite{1, -inf<float>, inf<float>}, nan{1, quiet_nan<float>, 2};
    EXPECT_EQ(norm(3, infinite.data(), 1), inf<float>);
    EXPECT_TRUE(std::isnan(norm(3, nan.data(), 1)));
}

} // namespace
} // namespace orv::test
