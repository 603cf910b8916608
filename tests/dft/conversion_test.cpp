// Products of floats that end as integers of 16 bits.
#include "tests/dft/exact.h"

#include <cmath>

namespace orv::test {
namespace {

auto* by_low = primitive<ByConstant<t_32f, t_16s>>("ympsMulC_Low_32f16s");
auto* by_factor = primitive<ByConstant<t_32f, t_16s, i32>>("ympsMulC_32f16s_Sfs");

// In long double the product of two floats and a power of two is exact.
t_16s expected(t_32f x, t_32f c, i32 factor)
{
    const long double v = std::ldexp(static_cast<long double>(x) * c, -factor);
    if (v != v || v < INT16_MIN) return INT16_MIN;
    return v > INT16_MAX ? t_16s{INT16_MAX} : static_cast<t_16s>(std::nearbyint(v));
}

TEST(ProductsToIntegers, are_exact_until_they_are_rounded_once)
{
    std::vector<t_32f> src{0.5f,      1.5f,      2.5f,   -0.5f, -1.5f,       -2.5f,     32766.5f,
                           32767.5f,  -32768.5f, -32769, 1e30f, -1e30f,      0x1p-149f, INFINITY,
                           -INFINITY, NAN,       0,      -0.0f, 0.49999997f, 32767.496f};
    const auto random = random_array<t_32f>(50, 1);
    for (const t_32f x : random) src.push_back(x * 70000);
    Room room_src, room_dst;
    for (const t_32f c : {1.0f, -1.0f, 0.1f, 1e-20f, 3e38f, 0x1p-149f, 0.0f})
        for (const i32 s : {0, 1, 15, 16, -1, -16, 149, -149, 298, -298, 400, -401, INT32_MAX, INT32_MIN + 1})
            for (i32 n = 1; n <= 70; ++n) {
                const i64 distance = n % 16;
                auto* from = room_src.place<t_32f>(n, distance);
                std::memcpy(from, src.data(), static_cast<std::size_t>(n) * sizeof *from);
                auto* dst = room_dst.place<t_16s>(n, 15 - distance);
                ASSERT_EQ(s == 0 ? by_low(from, c, dst, n) : by_factor(from, c, dst, n, s), ok);
                for (i32 i = 0; i < n; ++i)
                    ASSERT_EQ(dst[i], expected(src[static_cast<std::size_t>(i)], c, s))
                        << src[static_cast<std::size_t>(i)] << " by " << c << " factor " << s;
                ASSERT_TRUE(room_dst.untouched_around());
            }
}

TEST(ProductsToIntegers, tell_null_before_a_bad_length)
{
    t_32f x = 1;
    t_16s dst = 77;
    for (const i32 n : bad_lengths) {
        EXPECT_EQ(by_low(nullptr, 1, &dst, n), null_pointer);
        EXPECT_EQ(by_factor(&x, 1, nullptr, n, 1), null_pointer);
        EXPECT_EQ(by_low(&x, 1, &dst, n), bad_size);
        EXPECT_EQ(by_factor(&x, 1, &dst, n, 1), bad_size);
    }
    EXPECT_EQ(dst, 77);
}

} // namespace
} // namespace orv::test
