// Linear convolution, by direct sums and through transforms, at both thresholds and in both shapes.
#include "dft/primitives/conv_plan.h"
#include "tests/dft/exact.h"
#include "tests/support/bounds.h"
#include "tests/support/probe.h"
#include "tests/support/quad.h"

#include <cmath>

namespace orv::test {
namespace {

#define VISIT(t) visit(t_##t{});
template <class Visit> void each_real(Visit visit) { ORV_DFT_REAL(VISIT) }

template <class T> using InBuffer = i32(const T*, i32, const T*, i32, T*, i32, t_8u*);
using BufferSize = i32(i32, i32, i32, i32, i32*);
using Conv16 = i32(const t_16s*, i32, const t_16s*, i32, t_16s*, i32);

template <class T> auto* convolve = primitive<Convolution<T>>("ympsConv_" + token<T>());
template <class T> auto* convolve_in_buffer = primitive<InBuffer<T>>("ympsConvolve_" + token<T>());
auto* buffer_size = primitive<BufferSize>("ympsConvolveGetBufferSize");
auto* convolve_integers = primitive<Conv16>("ympsConv_16s_Sfs");
template <class T> constexpr i32 type_code = sizeof(T) == 4 ? 13 : 19;

// Both sides of every threshold, both orders of the inputs, several blocks, and slices of direct sums.
constexpr i32 inputs[][2] = {{1, 1},    {2, 5},     {256, 256}, {257, 256},   {448, 64},  {449, 64},  {64, 500},
                             {600, 63}, {767, 256}, {768, 256}, {769, 256},   {80, 3000}, {5000, 64}, {9000, 100},
                             {4096, 9}, {4097, 63}, {8200, 40}, {1000, 1000}, {300, 3000}};

// Direct sums err by a rounding a term; transforms by a multiple of the norms of both inputs.
template <class T> void expect_convolution(const std::vector<T>& a, const std::vector<T>& b, const T* dst, Route route)
{
    const auto n = static_cast<i64>(a.size()), m = static_cast<i64>(b.size());
    quad norm_a = 0, norm_b = 0;
    for (const T x : a) norm_a += quad{x} * x;
    for (const T x : b) norm_b += quad{x} * x;
    // Three transforms of up to 2^14 points, at most five roundings a level in each.
    const quad by_transforms = gamma_n<T>(3 * 14 * 5) * root(norm_a * norm_b);
    for (i64 k = 0; k < n + m - 1; ++k) {
        quad sum = 0, magnitudes = 0;
        for (i64 j = std::max(i64{0}, k - n + 1); j <= std::min(k, m - 1); ++j) {
            const quad term = quad{a[static_cast<std::size_t>(k - j)]} * b[static_cast<std::size_t>(j)];
            sum += term, magnitudes += magnitude(term);
        }
        const quad direct = gamma_n<T>(static_cast<long double>(std::min(n, m)) + 1) * magnitudes;
        ASSERT_LE(magnitude(dst[k] - sum), route == Route::direct ? direct : by_transforms)
            << token<T>() << ' ' << n << " by " << m << " at " << k;
    }
}

TEST(LinearConvolution, is_right_on_both_sides_of_every_threshold)
{
    each_real([]<class T>(T) {
        for (const auto& [n, m] : inputs) {
            const auto a = random_array<T>(n, 1), b = random_array<T>(m, 2);
            Guarded<T> x(a.size()), y(b.size()), dst(a.size() + b.size() - 1);
            std::copy(a.begin(), a.end(), x.begin()), std::copy(b.begin(), b.end(), y.begin());
            ProbeScope probe;
            ASSERT_EQ(convolve<T>(x.data(), n, y.data(), m, dst.data()), ok);
            EXPECT_EQ(probe->live, 0);
            const Route route = plan_convolution(std::max(n, m), std::min(n, m)).route;
            if (route == Route::direct) {
                EXPECT_EQ(probe->allocations, 0) << n << " by " << m;
            }
            expect_convolution(a, b, dst.data(), route);
        }
    });
}

TEST(LinearConvolution, needs_a_buffer_of_exactly_the_size_told)
{
    each_real([]<class T>(T) {
        for (const auto& [n, m] : inputs)
            for (const i32 algorithm : {0, 1, 2, 0x300}) {
                const auto a = random_array<T>(n, 1), b = random_array<T>(m, 2);
                i32 bytes = -1;
                ASSERT_EQ(buffer_size(n, m, type_code<T>, algorithm, &bytes), ok);
                const auto plan = plan_convolution(std::max(n, m), std::min(n, m), algorithm_of(algorithm));
                if (plan.route == Route::direct) {
                    EXPECT_EQ(bytes, 0);
                }
                Guarded<t_8u> buffer(static_cast<std::size_t>(bytes));
                Guarded<T> dst(a.size() + b.size() - 1);
                ProbeScope probe;
                ASSERT_EQ(convolve_in_buffer<T>(a.data(), n, b.data(), m, dst.data(), algorithm,
                                                bytes ? buffer.data() : nullptr),
                          ok);
                EXPECT_EQ(probe->allocations, 0);
                expect_convolution(a, b, dst.data(), plan.route);
            }
    });
}

TEST(LinearConvolution, of_integers_rounds_whole_sums_by_the_law_of_factors)
{
    for (const auto& [n, m] : inputs) {
        const auto a = random_array<t_16s>(n, 1), b = random_array<t_16s>(m, 2);
        std::vector<Exact> sums(a.size() + b.size() - 1);
        for (std::size_t i = 0; i < a.size(); ++i)
            for (std::size_t j = 0; j < b.size(); ++j) sums[i + j] += Exact{a[i]} * b[j];
        for (const i32 s : {0, 1, 15, 20, 31, 40, 61, 63, 100, -1, -15, -16, -60}) {
            Guarded<t_16s> dst(sums.size());
            ASSERT_EQ(convolve_integers(a.data(), n, b.data(), m, dst.data(), s), ok);
            for (std::size_t k = 0; k < sums.size(); ++k)
                ASSERT_EQ(dst[k], scaled<t_16s>(sums[k], s)) << n << " by " << m << " factor " << s << " at " << k;
        }
    }
}

// call() with every allocation failing in turn; nothing may be left taken, and what it writes stays as it was.
template <class T, class Call> void expect_nothing_without_memory(std::vector<T> dst, Call call)
{
    const auto before = dst;
    each_allocation_fails(
        [&] {
            const i32 status = call(dst.data());
            EXPECT_EQ(status, probe().failed > 0 ? no_memory : ok);
        },
        [&] {
            if (probe().failed > 0) {
                EXPECT_EQ(dst, before);
            }
        });
}

TEST(LinearConvolution, without_memory_tells_so_and_writes_nothing)
{
    const auto a = random_array<t_32f>(600, 1);
    const auto i = random_array<t_16s>(600, 3);
    expect_nothing_without_memory(std::vector<t_32f>(699, 5),
                                  [&](t_32f* dst) { return convolve<t_32f>(a.data(), 600, a.data(), 100, dst); });
    expect_nothing_without_memory(std::vector<t_16s>(1199, 5),
                                  [&](t_16s* dst) { return convolve_integers(i.data(), 600, i.data(), 600, dst, 15); });
}

TEST(LinearConvolution, tells_null_then_a_bad_length_then_a_bad_algorithm)
{
    each_real([]<class T>(T) {
        T x = 1, dst = 7;
        t_8u buffer[64];
        i32 bytes = 7;
        for (const i32 n : bad_lengths) {
            EXPECT_EQ(convolve<T>(nullptr, n, &x, 1, &dst), null_pointer);
            EXPECT_EQ(convolve<T>(&x, 1, nullptr, n, &dst), null_pointer);
            EXPECT_EQ(convolve<T>(&x, 1, &x, n, nullptr), null_pointer);
            EXPECT_EQ(convolve<T>(&x, n, &x, 1, &dst), bad_size);
            EXPECT_EQ(convolve<T>(&x, 1, &x, n, &dst), bad_size);
            EXPECT_EQ(convolve_in_buffer<T>(nullptr, n, &x, 1, &dst, 7, buffer), null_pointer);
            EXPECT_EQ(convolve_in_buffer<T>(&x, n, &x, 1, &dst, 7, buffer), bad_size);
            EXPECT_EQ(buffer_size(n, 1, type_code<T>, 7, nullptr), null_pointer);
            EXPECT_EQ(buffer_size(n, 1, type_code<T>, 7, &bytes), bad_size);
            EXPECT_EQ(buffer_size(1, n, type_code<T>, 7, &bytes), bad_size);
        }
        EXPECT_EQ(convolve_in_buffer<T>(&x, 1, &x, 1, &dst, 3, buffer), bad_algorithm);
        EXPECT_EQ(convolve_in_buffer<T>(&x, 1, &x, 1, &dst, 2, nullptr), null_pointer);
        EXPECT_EQ(buffer_size(1, 1, type_code<T>, 3, &bytes), bad_algorithm);
        EXPECT_EQ(buffer_size(1, 1, 12, 0, &bytes), bad_flag);
        EXPECT_TRUE(dst == 7 && bytes == 7);
    });
    t_16s i = 1;
    EXPECT_EQ(convolve_integers(nullptr, 0, &i, 1, &i, 0), null_pointer);
    EXPECT_EQ(convolve_integers(&i, 0, &i, 1, &i, 0), bad_size);
}

} // namespace
} // namespace orv::test
