// What sine and cosine transforms compute, through all their entries.
#include "tests/pde/trig.h"

#include <gtest/gtest.h>

namespace orv::test {
namespace {

template <class T> std::vector<long double> widened(const T* f, i64 count) { return {f, f + count}; }

// Both directions of a kind against the sums, in an array that is no longer than it must be, at either edge of its
// page.
template <class T> void compare(i64 kind, i64 n)
{
    const i64 points = trig_points(kind, n);
    Trig<T> trig(kind, n);
    const std::vector<T> data = trig_data<T>(kind, n, static_cast<std::uint64_t>(7 * n + kind));
    ASSERT_EQ(trig.commit(data.data()), pdett::good);
    const std::vector<long double> f = widened(data.data(), points);
    for (const bool forward : {true, false})
        for (const Edge edge : {Edge::start, Edge::end}) {
            Guarded<T> result(static_cast<std::size_t>(points), edge, edge == Edge::start ? 1 : 0);
            std::copy(data.begin(), data.end(), result.begin());
            ASSERT_EQ(forward ? trig.forward(result.data()) : trig.backward(result.data()), pdett::good);
            const std::vector<long double> sums = trig_sums(kind, forward, n, f);
            const long double scale = forward ? 1 / static_cast<long double>(n) : 0.5L;
            const long double bound = trig_bound<T>(n, f) * scale;
            for (i64 k = 0; k < points; ++k)
                ASSERT_LE(std::fabs(static_cast<long double>(result[k]) - sums[k] * scale), bound)
                    << letter<T> << " kind " << kind << (forward ? " forward" : " backward") << " n=" << n << " k=" << k
                    << ": " << result[k] << " for " << static_cast<double>(sums[k] * scale);
        }
}

template <class T> class Trigonometric : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Trigonometric, Reals);

TYPED_TEST(Trigonometric, transforms_are_the_sums_of_their_kind_for_small_sizes)
{
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (i64 n = 2; n <= 200; ++n) compare<TypeParam>(kind, n);
}

TYPED_TEST(Trigonometric, transforms_are_the_sums_of_their_kind_for_some_large_sizes)
{
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (const i64 n : {256, 509, 1000, 1021, 1155, 2048}) compare<TypeParam>(kind, n);
}

// A single wave has a single coefficient, which needs no sum to check: one point of a large transform.
TYPED_TEST(Trigonometric, transforms_of_large_sizes_find_a_single_wave)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (const i64 n : {i64{1} << 16, i64{99999}}) {
            Trig<T> trig(kind, n);
            std::vector<T> f(static_cast<std::size_t>(trig_points(kind, n)), T(0));
            ASSERT_EQ(trig.commit(f.data()), pdett::good);
            const i64 at = n / 3;
            f[at] = 1;
            ASSERT_EQ(trig.backward(f.data()), pdett::good);
            ASSERT_EQ(trig.forward(f.data()), pdett::good);
            const long double bound = trig_bound<T>(n, {1}) / std::sqrt(static_cast<long double>(n));
            for (i64 k = 0; k < trig_points(kind, n); ++k)
                ASSERT_LE(std::fabs(static_cast<long double>(f[k]) - (k == at)), bound)
                    << letter<T> << " kind " << kind << " n=" << n << " k=" << k;
        }
}

// Ends that are no unknowns take no part; the raw form leaves them alone, and of kind 3 the array begins behind it.
TYPED_TEST(Trigonometric, raw_transforms_are_unscaled_and_leave_ends_alone)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (const i64 n : {2, 3, 64, 65, 100, 101})
            for (const bool forward : {true, false}) {
                Trig<T> trig(kind, n);
                trig.ipar[pdett::ipar_raw] = 1;
                const std::vector<T> data = trig_data<T>(kind, n, 3);
                std::vector<T> raw = data;
                const bool begins_behind = kind == pdett::staggered_sine, ends_unused = kind == pdett::staggered_cosine;
                const T end = 77;
                if (kind == pdett::sine || ends_unused) raw[n] = end;
                if (begins_behind) raw.erase(raw.begin());
                ASSERT_EQ(trig.commit(raw.data()), pdett::good); // large ends are no matter
                ASSERT_EQ(forward ? trig.forward(raw.data()) : trig.backward(raw.data()), pdett::good);
                const std::vector<long double> f = widened(data.data(), trig_points(kind, n));
                const std::vector<long double> sums = trig_sums(kind, forward, n, f);
                for (i64 k = first_unknown(kind); k < end_of_unknowns(kind, n); ++k)
                    ASSERT_LE(std::fabs(static_cast<long double>(raw[k - begins_behind]) - sums[k]),
                              trig_bound<T>(n, f))
                        << "kind " << kind << " n=" << n << " k=" << k;
                if (kind == pdett::sine || ends_unused) {
                    EXPECT_EQ(raw[n], end);
                }
                if (kind == pdett::sine) {
                    EXPECT_EQ(raw[0], 0);
                }
            }
}

TYPED_TEST(Trigonometric, transforms_scale_the_raw_results_and_the_ends)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (const i64 n : {2, 7, 8, 63, 64, 65, 130})
            for (const bool forward : {true, false}) {
                Trig<T> trig(kind, n), raw_trig(kind, n);
                raw_trig.ipar[pdett::ipar_raw] = 1;
                std::vector<T> f = trig_data<T>(kind, n, 5);
                ASSERT_EQ(trig.commit(f.data()), pdett::good);
                ASSERT_EQ(raw_trig.commit(f.data()), pdett::good);
                if (kind == pdett::sine || kind == pdett::staggered_cosine) f[n] = 3;
                if (kind == pdett::staggered_sine) f[0] = 3;
                std::vector<T> raw = f;
                T* const raw_first = raw.data() + (kind == pdett::staggered_sine);
                const T scale = forward ? 1 / static_cast<T>(n) : T(0.5);
                ASSERT_EQ(forward ? trig.forward(f.data()) : trig.backward(f.data()), pdett::good);
                ASSERT_EQ(forward ? raw_trig.forward(raw_first) : raw_trig.backward(raw_first), pdett::good);
                for (i64 k = 0; k < trig_points(kind, n); ++k) {
                    // Backward a sine is scaled inside, a staggered sine behind its first point.
                    const bool unscaled =
                        !forward && ((kind == pdett::sine && k == n) || (kind == pdett::staggered_sine && k == 0));
                    ASSERT_EQ(f[k], unscaled ? raw[k] : raw[k] * scale) << "kind " << kind << " n=" << n << " k=" << k;
                }
            }
}

TYPED_TEST(Trigonometric, forward_and_backward_end_where_they_began)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (const i64 n : {2, 3, 31, 32, 77, 360, 1024}) {
            Trig<T> trig(kind, n);
            const std::vector<T> data = trig_data<T>(kind, n, 9);
            std::vector<T> f = data;
            ASSERT_EQ(trig.commit(f.data()), pdett::good);
            ASSERT_EQ(trig.forward(f.data()), pdett::good);
            ASSERT_EQ(trig.backward(f.data()), pdett::good);
            const std::vector<long double> wide = widened(data.data(), trig_points(kind, n));
            // Both directions are sqrt(2n) times what keeps lengths, together divided by 2n.
            const long double bound = 2 * trig_bound<T>(n, wide) / std::sqrt(2.0L * n);
            for (i64 k = 0; k < trig_points(kind, n); ++k)
                ASSERT_LE(std::fabs(static_cast<long double>(f[k] - data[k])), bound)
                    << "kind " << kind << " n=" << n << " k=" << k;
        }
}

// By the exported name of each routine, on the tables of a commit.
template <class T> void compare_routine(i64 kind, bool forward, const char* stem)
{
    auto* routine = kernel<pdett::Transform<T>>("pdett", letter<T>, "ptk_dft_", stem);
    for (const i64 n : {2, 5, 96}) {
        Trig<T> trig(kind, n);
        std::vector<T> f = trig_data<T>(kind, n, 4);
        ASSERT_EQ(trig.commit(f.data()), pdett::good);
        const std::vector<long double> wide = widened(f.data(), trig_points(kind, n));
        const i64 shift = kind == pdett::staggered_sine;
        trig.stat = -5;
        EXPECT_EQ(routine(f.data() + shift, &trig.handle, trig.ipar, trig.dpar.data() + pdett::dpar_tables, &trig.stat),
                  0);
        EXPECT_EQ(trig.stat, -5); // good is for the operation to tell
        const std::vector<long double> sums = trig_sums(kind, forward, n, wide);
        for (i64 k = first_unknown(kind); k < end_of_unknowns(kind, n); ++k)
            ASSERT_LE(std::fabs(static_cast<long double>(f[k]) - sums[k]), trig_bound<T>(n, wide)) << stem << " " << n;
    }
}

TYPED_TEST(Trigonometric, routines_have_names_of_their_own)
{
    using T = TypeParam;
    compare_routine<T>(pdett::sine, true, "sin");
    compare_routine<T>(pdett::cosine, true, "cos");
    compare_routine<T>(pdett::staggered_cosine, true, "scos_f");
    compare_routine<T>(pdett::staggered_cosine, false, "scos_b");
    compare_routine<T>(pdett::staggered_sine, true, "ssin_f");
    compare_routine<T>(pdett::staggered_sine, false, "ssin_b");
    compare_routine<T>(pdett::staggered2_cosine, true, "scos2_f");
    compare_routine<T>(pdett::staggered2_cosine, false, "scos2_b");
    compare_routine<T>(pdett::staggered2_sine, true, "ssin2_f");
    compare_routine<T>(pdett::staggered2_sine, false, "ssin2_b");
}

} // namespace
} // namespace orv::test
