// Transforms of 2 to 64 doubles through their table, against sums in quadruple precision.
#include "frame/kernels/dft_batch.h"
#include "tests/dft/dft/general.h"

#include <cstdio>

namespace orv::test {
namespace {

using Z = cpx<double>;

DftiKernel* const* table_of(bool forward)
{
    return static_cast<DftiKernel* const*>(
        kernel_address("dft", forward ? "zsmallradix_forward" : "zsmallradix_inverse"));
}

struct Direction {
    bool forward;
    DftiNode node{}; // with a scale for this direction, and nonsense for the other one
    Direction(bool forward, double scale) : forward(forward)
    {
        node.committed_forward_scale = forward ? scale : NAN;
        node.committed_backward_scale = forward ? NAN : scale;
    }
    i32 run(const Z* src, Z* dst, i64 n) { return table_of(forward)[n - 2](const_cast<Z*>(src), dst, &node, nullptr); }
};

std::vector<Z> transformed(bool forward, const std::vector<Z>& x, double scale = 1)
{
    const auto n = x.size();
    Guarded<Z> src(n), dst(n);
    std::copy(x.begin(), x.end(), src.begin());
    EXPECT_EQ(Direction(forward, scale).run(src.data(), dst.data(), static_cast<i64>(n)), 0);
    EXPECT_TRUE(same_bits(src.data(), x.data(), static_cast<i64>(n))) << n;
    return {dst.begin(), dst.end()};
}

// As tests/dft/dft/accuracy_test.cpp has it: sums of a prime have half as many terms as it has points.
double bound(i64 n)
{
    i64 prime = n;
    for (i64 p = 2; p < prime; ++p)
        while (prime % p == 0 && prime > p) prime /= p;
    return std::sqrt(0.36 * std::log2(n + 1.0) + (prime > 16 ? 0.02 * static_cast<double>(prime) : 0));
}

TEST(SmallRadix, gives_the_sums_of_the_definition_in_both_directions)
{
    double worst = 0;
    i64 where = 0;
    for (i64 n = 2; n <= 64; ++n) {
        const auto roots = quad_roots(n);
        for (const bool forward : {true, false}) {
            Errors errors;
            for (std::uint64_t stream = 0; stream < 4; ++stream) {
                const auto x = random_array<Z>(n, stream);
                const auto result = transformed(forward, x);
                for (i64 k = 0; k < n; ++k) errors.add(result[k], point(x, roots, forward ? k : (n - k) % n));
            }
            EXPECT_LE(errors.rms(), bound(n)) << n;
            if (errors.rms() / bound(n) > worst) worst = errors.rms() / bound(n), where = n;
        }
    }
    std::printf("worst rms error: %.0f%% of the bound, n = %d\n", 100 * worst, static_cast<int>(where));
}

TEST(SmallRadix, has_each_function_at_its_length_in_the_table)
{
    for (const bool forward : {true, false})
        for (i64 n = 2; n <= 64; ++n) {
            const std::string name =
                std::string("smallradixDFT") + (forward ? "Fwd" : "Inv") + "_CToC_" + std::to_string(n) + "_64fc";
            EXPECT_EQ(kernel<DftiKernel>("dft", name), table_of(forward)[n - 2]) << name;
        }
    EXPECT_EQ(small_radixes, 63);
}

TEST(SmallRadix, multiplies_each_result_once_by_the_scale_of_its_direction)
{
    for (i64 n = 2; n <= 64; ++n)
        for (const bool forward : {true, false}) {
            const auto x = random_array<Z>(n, 7);
            auto whole = transformed(forward, x);
            const auto scaled = transformed(forward, x, -0.3);
            for (Z& e : whole) e = -0.3 * e;
            EXPECT_TRUE(same_bits(whole.data(), scaled.data(), n)) << n;
        }
}

TEST(SmallRadix, works_in_place_and_at_any_address)
{
    for (i64 n = 2; n <= 64; ++n)
        for (const bool forward : {true, false}) {
            const auto x = random_array<Z>(n, 8);
            const auto expected = transformed(forward, x, 0.5);
            Room room;
            if (n * i64{sizeof(Z)} > 1200) continue; // as much as there is room for
            for (const i64 distance : distances<Z>()) {
                Z* data = room.place<Z>(n, distance);
                std::memcpy(data, x.data(), static_cast<std::size_t>(n) * sizeof(Z));
                EXPECT_EQ(Direction(forward, 0.5).run(data, data, n), 0);
                EXPECT_TRUE(same_bits(data, expected.data(), n)) << n;
                EXPECT_TRUE(room.untouched_around()) << n;
            }
        }
}

} // namespace
} // namespace orv::test
