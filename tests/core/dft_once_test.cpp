// Transforms in one call.
#include "tests/core/transforms.h"

#include <orv/status.h>

namespace orv::test {
namespace {

TEST(DftOnce, transforms_and_inverts_every_type)
{
    for (const i64 n : {1, 2, 7, 30, 64, 1000}) {
        SCOPED_TRACE(n);
        const auto d = random_elements<double>(n, 1);
        std::vector<std::complex<double>> z(n), half(n / 2 + 1), y(n), back(n);
        for (i64 i = 0; i < n; ++i) z[i] = {d[i], d[(i * 7 + 1) % n]};
        std::vector<exact> x(z.begin(), z.end()), re(d.begin(), d.end());
        const auto as_exact = [](const auto& v) { return std::vector<exact>(v.begin(), v.end()); };
        EXPECT_EQ(orv_fft_z(n, z.data(), y.data()), ORV_OK) << orv_last_error();
        EXPECT_LE(distance_in_units<double>(as_exact(y), transformed(x, {n}, -1)), units_allowed({n}));
        EXPECT_EQ(orv_ifft_z(n, y.data(), y.data()), ORV_OK); // in place
        EXPECT_LE(distance_in_units<double>(as_exact(y), x), 2 * units_allowed({n}));
        EXPECT_EQ(orv_fft_d(n, d.data(), half.data()), ORV_OK) << orv_last_error();
        auto wanted = transformed(re, {n}, -1);
        wanted.resize(half.size());
        EXPECT_LE(distance_in_units<double>(as_exact(half), wanted), units_allowed({n}));
        std::vector<double> reals(n);
        EXPECT_EQ(orv_ifft_d(n, half.data(), reals.data()), ORV_OK);
        EXPECT_LE(distance_in_units<double>(as_exact(reals), re), 2 * units_allowed({n}));

        std::vector<std::complex<float>> c32(z.begin(), z.end()), half32(half.size());
        std::vector<float> s32(d.begin(), d.end());
        EXPECT_EQ(orv_fft_c(n, c32.data(), c32.data()), ORV_OK);
        EXPECT_EQ(orv_ifft_c(n, c32.data(), c32.data()), ORV_OK);
        EXPECT_LE(distance_in_units<float>(as_exact(c32), x), 2 * units_allowed({n}) + 1);
        EXPECT_EQ(orv_fft_s(n, s32.data(), half32.data()), ORV_OK);
        EXPECT_LE(distance_in_units<float>(as_exact(half32), wanted), units_allowed({n}) + 1);
        EXPECT_EQ(orv_ifft_s(n, half32.data(), s32.data()), ORV_OK);
        EXPECT_LE(distance_in_units<float>(as_exact(s32), re), 2 * units_allowed({n}) + 1);
    }
}

TEST(DftOnce, transforms_and_inverts_several_dimensions)
{
    const std::vector<i64> lengths = {6, 5, 4};
    const i64 n = product(lengths), half = 4 * 5 * 4;
    const int rank = 3;
    const auto d = random_elements<double>(n, 1);
    std::vector<std::complex<double>> z(d.begin(), d.end()), y(n), h(half);
    std::vector<double> back(n);
    EXPECT_EQ(orv_fftn_z(rank, lengths.data(), z.data(), y.data()), ORV_OK) << orv_last_error();
    EXPECT_EQ(orv_fftn_d(rank, lengths.data(), d.data(), h.data()), ORV_OK) << orv_last_error();
    const auto wanted = transformed(std::vector<exact>(d.begin(), d.end()), lengths, -1);
    EXPECT_LE(distance_in_units<double>(std::vector<exact>(y.begin(), y.end()), wanted), units_allowed(lengths));
    for (i64 row = 0; row < 20; ++row)
        for (i64 k = 0; k < 4; ++k) EXPECT_LE(std::abs(h[row * 4 + k] - y[row * 6 + k]), 1e-13);
    EXPECT_EQ(orv_ifftn_z(rank, lengths.data(), y.data(), y.data()), ORV_OK);
    EXPECT_EQ(orv_ifftn_d(rank, lengths.data(), h.data(), back.data()), ORV_OK);
    for (i64 i = 0; i < n; ++i) {
        EXPECT_LE(std::abs(y[i] - d[i]), 1e-14);
        EXPECT_LE(std::abs(back[i] - d[i]), 1e-14);
    }
    std::vector<std::complex<float>> c32(d.begin(), d.end()), h32(half);
    std::vector<float> s32(d.begin(), d.end());
    EXPECT_EQ(orv_fftn_c(rank, lengths.data(), c32.data(), c32.data()), ORV_OK);
    EXPECT_EQ(orv_ifftn_c(rank, lengths.data(), c32.data(), c32.data()), ORV_OK);
    EXPECT_EQ(orv_fftn_s(rank, lengths.data(), s32.data(), h32.data()), ORV_OK);
    EXPECT_EQ(orv_ifftn_s(rank, lengths.data(), h32.data(), s32.data()), ORV_OK);
    for (i64 i = 0; i < n; ++i) {
        EXPECT_LE(std::abs(std::complex<double>(c32[i]) - d[i]), 1e-5);
        EXPECT_LE(std::abs(s32[i] - d[i]), 1e-5);
    }
}

TEST(DftOnce, names_what_is_bad)
{
    std::complex<double> x[4];
    const i64 lengths[] = {2, 2}, bad[] = {2, -2};
    EXPECT_EQ(orv_fft_z(0, x, x), -1);
    EXPECT_EQ(orv_fft_z(4, nullptr, x), -2);
    EXPECT_EQ(orv_ifft_z(4, x, nullptr), -3);
    EXPECT_EQ(orv_fftn_z(0, lengths, x, x), -1);
    EXPECT_EQ(orv_fftn_z(2, bad, x, x), -2);
    EXPECT_NE(std::string(orv_last_error()).find("orv_fftn_z: argument 2: -2"), std::string::npos) << orv_last_error();
    EXPECT_EQ(orv_fftn_z(2, lengths, nullptr, x), -3);
    EXPECT_EQ(orv_ifftn_z(2, lengths, x, nullptr), -4);
}

} // namespace
} // namespace orv::test
