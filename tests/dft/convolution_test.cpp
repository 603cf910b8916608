// Direct and cyclic convolutions: the order of their sums bit for bit, and their values against quadruple precision.
#include "dft/primitives/conv_plan.h"
#include "tests/dft/exact.h"
#include "tests/support/bounds.h"
#include "tests/support/quad.h"

namespace orv::test {
namespace {

#define VISIT(t) visit(t_##t{});
template <class Visit> void each_real(Visit visit) { ORV_DFT_REAL(VISIT) }

template <class T> auto* add_convolution = primitive<Work<Convolution<T>>>("ownConv_" + token<T>());

constexpr i64 inputs[][2] = {{1, 1},    {2, 1},    {1, 2},     {7, 3},   {3, 7},    {8, 8},
                             {9, 8},    {40, 9},   {41, 17},   {64, 63}, {70, 70},  {300, 61},
                             {448, 64}, {449, 63}, {5000, 31}, {31, 77}, {10, 100}, {16, 15}};

TEST(DirectConvolution, adds_products_to_a_result_in_the_order_of_the_second_input)
{
    each_real([]<class T>(T) {
        for (const auto& [n, m] : inputs) {
            const auto a = random_array<T>(n, 1), b = random_array<T>(m, 2);
            auto should = random_array<T>(n + m - 1, 3);
            Guarded<T> x(a.size()), y(b.size()), dst(should.size());
            std::copy(a.begin(), a.end(), x.begin()), std::copy(b.begin(), b.end(), y.begin());
            std::copy(should.begin(), should.end(), dst.begin());
            for (std::size_t j = 0; j < b.size(); ++j)
                for (std::size_t i = 0; i < a.size(); ++i) should[i + j] += a[i] * b[j];
            add_convolution<T>(x.data(), static_cast<i32>(n), y.data(), static_cast<i32>(m), dst.data());
            ASSERT_TRUE(same_bits(dst.data(), should.data(), n + m - 1)) << token<T>() << " n=" << n << " m=" << m;
        }
    });
}

TEST(DirectConvolution, of_every_small_size)
{
    each_real([]<class T>(T) {
        const auto a = random_array<T>(30, 1), b = random_array<T>(30, 2);
        for (std::size_t n = 1; n <= 30; ++n)
            for (std::size_t m = 1; m <= 30; ++m) {
                Guarded<T> x(n), y(m), dst(n + m - 1);
                std::vector<T> should(n + m - 1);
                std::copy_n(a.begin(), n, x.begin()), std::copy_n(b.begin(), m, y.begin());
                std::fill(dst.begin(), dst.end(), T(0));
                for (std::size_t j = 0; j < m; ++j)
                    for (std::size_t i = 0; i < n; ++i) should[i + j] += a[i] * b[j];
                add_convolution<T>(x.data(), static_cast<i32>(n), y.data(), static_cast<i32>(m), dst.data());
                ASSERT_TRUE(same_bits(dst.data(), should.data(), static_cast<i64>(n + m - 1))) << n << " by " << m;
            }
    });
}

TEST(DirectConvolution, is_as_near_to_the_exact_sum_as_its_terms_allow)
{
    each_real([]<class T>(T) {
        for (const auto& [n, m] : inputs) {
            const auto a = random_array<T>(n, 4), b = random_array<T>(m, 5);
            std::vector<T> dst(static_cast<std::size_t>(n + m - 1));
            add_convolution<T>(a.data(), static_cast<i32>(n), b.data(), static_cast<i32>(m), dst.data());
            for (i64 k = 0; k < n + m - 1; ++k) {
                quad sum = 0, magnitudes = 0;
                for (i64 j = std::max(i64{0}, k - n + 1); j <= std::min(k, m - 1); ++j) {
                    const quad term = quad{a[static_cast<std::size_t>(k - j)]} * b[static_cast<std::size_t>(j)];
                    sum += term, magnitudes += magnitude(term);
                }
                const quad allowed = gamma_n<T>(static_cast<long double>(std::min(n, m))) * magnitudes;
                ASSERT_LE(magnitude(dst[static_cast<std::size_t>(k)] - sum), allowed)
                    << n << " by " << m << " at " << k;
            }
        }
    });
}

template <class X, class H, class T> std::vector<T> cyclic(const std::vector<X>& x, const std::vector<H>& h)
{
    std::vector<T> sums(x.size(), T{});
    for (std::size_t k = 0; k < x.size(); ++k)
        for (std::size_t i = 0; i < x.size(); ++i) sums[k] += x[i] * h[(k + x.size() - i) % x.size()];
    return sums;
}

TEST(CyclicConvolution, of_floats_sums_in_the_order_of_the_first_input)
{
    const auto x = random_array<t_32f>(8, 1), h = random_array<t_32f>(8, 2);
    Guarded<t_32f> dst(8);
    primitive<void(const t_32f*, const t_32f*, t_32f*)>("ownConvCyclic8x8_32f")(x.data(), h.data(), dst.data());
    EXPECT_TRUE(same_bits(dst.data(), cyclic<t_32f, t_32f, t_32f>(x, h).data(), 8));

    const std::vector<t_32f> four(x.begin(), x.begin() + 4);
    const auto c = random_array<t_32fc>(4, 3);
    Guarded<t_32fc> complex(4);
    primitive<void(const t_32f*, const t_32fc*, t_32fc*)>("ownConvCyclic4x4_32f32fc")(four.data(), c.data(),
                                                                                      complex.data());
    EXPECT_TRUE(same_bits(complex.data(), cyclic<t_32f, t_32fc, t_32fc>(four, c).data(), 4));
}

using Cyclic16 = i32(const t_16s*, const t_16s*, t_16s*, i32);

TEST(CyclicConvolution, of_integers_follows_the_law_of_factors)
{
    auto* f = primitive<Cyclic16>("ympsConvCyclic8x8_16s_Sfs");
    auto* worker = primitive<Work<Cyclic16>>("ownConvCyclic8x8_16s_Sfs");
    for (std::uint64_t round = 0; round < 20; ++round) {
        auto x = random_array<t_16s>(8, 10 + round), h = random_array<t_16s>(8, 40 + round);
        if (round == 0) x.assign(8, INT16_MIN), h.assign(8, INT16_MIN);
        if (round == 1) x.assign(8, INT16_MAX), h.assign(8, INT16_MIN);
        if (round == 2) x = {1, 0, 0, 0, 0, 0, 0, 0};
        std::vector<Exact> sums(8);
        for (std::size_t k = 0; k < 8; ++k)
            for (std::size_t i = 0; i < 8; ++i) sums[k] += Exact{x[i]} * h[(k + 8 - i) % 8];
        for (i32 s = -70; s <= 70; ++s) {
            Guarded<t_16s> dst(8);
            ASSERT_EQ(f(x.data(), h.data(), dst.data(), s), ok);
            for (std::size_t k = 0; k < 8; ++k) ASSERT_EQ(dst[k], scaled<t_16s>(sums[k], s)) << "factor " << s;
            auto in_place = x;
            worker(in_place.data(), h.data(), in_place.data(), s);
            ASSERT_TRUE(same_bits(in_place.data(), dst.data(), 8));
        }
    }
    t_16s x[8]{}, dst[8]{5};
    EXPECT_EQ(f(nullptr, x, dst, 0), null_pointer);
    EXPECT_EQ(f(x, nullptr, dst, 0), null_pointer);
    EXPECT_EQ(f(x, x, nullptr, 0), null_pointer);
    EXPECT_EQ(dst[0], 5);
}

TEST(ConvolutionPlan, is_direct_for_short_results_and_short_inputs)
{
    const auto route = [](i64 n, i64 m) { return plan_convolution(n, m).route; };
    EXPECT_EQ(route(256, 256), Route::direct); // 511 results
    EXPECT_EQ(route(257, 256), Route::one_transform);
    EXPECT_EQ(route(448, 64), Route::direct);
    EXPECT_EQ(route(449, 64), Route::blocks);
    EXPECT_EQ(route(100000, 63), Route::direct);
    EXPECT_EQ(route(100000, 64), Route::blocks);
}

TEST(ConvolutionPlan, takes_blocks_from_three_times_the_shorter_input_on)
{
    for (const i64 m : {200, 256, 257, 1000, 4096}) {
        const auto one = plan_convolution(3 * m - 1, m), blocks = plan_convolution(3 * m, m);
        EXPECT_EQ(one.route, Route::one_transform);
        EXPECT_GE(i64{1} << one.order, 4 * m - 2);
        EXPECT_LT(i64{1} << (one.order - 1), 4 * m - 2);
        EXPECT_EQ(blocks.route, Route::blocks);
        EXPECT_GE(i64{1} << (blocks.order - 1), 2 * m);
        EXPECT_LT(i64{1} << (blocks.order - 2), 2 * m);
        EXPECT_EQ(blocks.step, (i64{1} << blocks.order) - m + 1);
    }
}

TEST(ConvolutionPlan, does_what_the_caller_asks)
{
    EXPECT_EQ(plan_convolution(5000, 4000, Algorithm::direct).route, Route::direct);
    EXPECT_EQ(plan_convolution(2, 2, Algorithm::transform).route, Route::one_transform);
    EXPECT_EQ(plan_convolution(2, 2, Algorithm::transform).order, 2);
    EXPECT_EQ(plan_convolution(3, 1, Algorithm::transform).route, Route::blocks);
    EXPECT_TRUE(is_algorithm(0) && is_algorithm(2) && is_algorithm(0x102) && !is_algorithm(3) && !is_algorithm(-1));
}

TEST(SumsOfLogarithms, come_as_the_precision_of_the_name)
{
    std::vector<t_64f> x(257);
    std::vector<t_32f> y(257);
    std::vector<t_16s> i(257);
    quad sum_x = 0, sum_y = 0, sum_i = 0, sizes = 0;
    for (std::size_t k = 0; k < x.size(); ++k) {
        x[k] = 0.01 + static_cast<double>(k) * 0.37, y[k] = static_cast<t_32f>(x[k]),
        i[k] = static_cast<t_16s>(1 + 100 * k);
        sum_x += std::log(static_cast<long double>(x[k])), sum_y += std::log(static_cast<long double>(y[k]));
        sum_i += std::log(static_cast<long double>(i[k])), sizes += magnitude(quad{std::log(i[k])});
    }
    // One rounding a sum, and the logarithm's own error of below one unit.
    const quad allowed = gamma_n<double>(2 * 257.0L) * sizes;
    const auto near = [&](quad computed, quad should, quad more) {
        return magnitude(computed - should) <= allowed + more * magnitude(should);
    };
    EXPECT_TRUE(near(primitive<t_64f(const t_64f*, i32)>("ownsSumLn_64f")(x.data(), 257), sum_x, 0));
    EXPECT_TRUE(near(primitive<t_64f(const t_32f*, i32)>("ownsSumLn_32f64f")(y.data(), 257), sum_y, 0));
    EXPECT_TRUE(near(primitive<t_32f(const t_32f*, i32)>("ownsSumLn_32f")(y.data(), 257), sum_y, unit<float>));
    EXPECT_TRUE(near(primitive<t_32f(const t_16s*, i32)>("ownsSumLn_16s32f")(i.data(), 257), sum_i, unit<float>));
    EXPECT_EQ(primitive<t_64f(t_64f)>("ownsLnOne")(1), 0);
    EXPECT_EQ(primitive<t_64f(t_64f)>("ownsLnOne")(0), -INFINITY);
    EXPECT_EQ(primitive<t_64f(const t_64f*, i32)>("ownsSumLn_64f")(x.data(), 0), 0);
}

} // namespace
} // namespace orv::test
