// Sine and cosine transforms as programs call them: values, layouts, threads, and what is refused.
#include "core/team/eagerness.h"
#include "tests/core/teams.h"
#include "tests/core/trig_rows.h"
#include "tests/support/probe.h"

#include <cstring>
#include <gtest/gtest.h>

namespace orv::test {
namespace {

template <class T> class TrigRows : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(TrigRows, Reals);

template <class T> void expect_formula(Way way)
{
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (i64 points = least_points(kind); points <= 150; ++points) {
            const Made trig = made<T>(kind, points, way);
            const std::vector<T> x = random_row<T>(points, 1);
            const long double n = static_cast<long double>(cells(kind, points));
            for (const bool forward : {true, false}) {
                Guarded<T> in(x.size()), out(x.size());
                std::copy(x.begin(), x.end(), in.begin());
                const auto run = forward ? orv_trig_forward : orv_trig_backward;
                ASSERT_EQ(run(trig.get(), in.data(), out.data()), ORV_OK);
                ASSERT_TRUE(std::equal(x.begin(), x.end(), in.begin()));
                ASSERT_EQ(run(trig.get(), in.data(), in.data()), ORV_OK);
                ASSERT_EQ(std::memcmp(in.data(), out.data(), x.size() * sizeof(T)), 0); // in place the same bits
                const std::vector<long double> should = sums(kind, forward, x);
                const long double scale = forward ? 1 / n : 0.5L, bound = bound_of(kind, way, x);
                for (i64 k = 0; k < points; ++k)
                    ASSERT_LE(std::fabs(static_cast<long double>(out[k]) - should[k] * scale), bound * scale)
                        << letter<T> << " kind " << kind << " forward " << forward << " points " << points;
            }
        }
}

TYPED_TEST(TrigRows, are_transformed_by_the_formula_of_their_kind) { expect_formula<TypeParam>(Way::kernel); }
TYPED_TEST(TrigRows, are_transformed_the_careful_way) { expect_formula<TypeParam>(Way::careful); }

TYPED_TEST(TrigRows, are_multiplied_by_the_scales_that_were_set)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (const i64 points : {2, 33}) {
            const Made trig = made<T>(kind, points);
            std::vector<T> x = random_row<T>(points, 2), plain(x.size()), scaled(x.size());
            for (const bool forward : {true, false}) {
                const auto run = forward ? orv_trig_forward : orv_trig_backward;
                ASSERT_EQ(orv_trig_set_scales(trig.get(), 1, 1), ORV_OK);
                ASSERT_EQ(run(trig.get(), x.data(), plain.data()), ORV_OK);
                ASSERT_EQ(orv_trig_set_scales(trig.get(), forward ? -3 : 5, forward ? 5 : -3), ORV_OK);
                ASSERT_EQ(run(trig.get(), x.data(), scaled.data()), ORV_OK);
                for (i64 k = 0; k < points; ++k) EXPECT_EQ(scaled[k], plain[k] * -3) << kind << " " << k;
            }
        }
}

// Where element j of row r stands.
struct Layout {
    i64 stride, distance;
};

// Each row as if it stood alone, and nothing between the rows touched.
template <class T> void expect_rows(i64 kind, Way way, i64 points, i64 rows, Layout from, Layout to, bool in_place)
{
    const Made trig = made<T>(kind, points, way);
    const auto span = [&](Layout l) {
        return static_cast<std::size_t>((points - 1) * std::abs(l.stride) + (rows - 1) * std::abs(l.distance) + 1);
    };
    const auto begin = [&](std::vector<T>& array, Layout l) {
        return array.data() + (l.stride < 0 ? (1 - points) * l.stride : 0) +
               (l.distance < 0 ? (1 - rows) * l.distance : 0);
    };
    std::vector<T> in = random_row<T>(static_cast<i64>(span(from)), 3);
    std::vector<T> out = in_place ? in : random_row<T>(static_cast<i64>(span(to)), 4), should = out;
    const T* const source = begin(in, from);
    for (i64 r = 0; r < rows; ++r) {
        std::vector<T> row(static_cast<std::size_t>(points));
        for (i64 j = 0; j < points; ++j) row[j] = source[r * from.distance + j * from.stride];
        ASSERT_EQ(orv_trig_backward(trig.get(), row.data(), row.data()), ORV_OK);
        for (i64 j = 0; j < points; ++j) begin(should, to)[r * to.distance + j * to.stride] = row[j];
    }
    T* const target = begin(out, to);
    ASSERT_EQ(orv_trig_backward_rows(trig.get(), rows, in_place ? target : source, from.stride, from.distance, target,
                                     to.stride, to.distance),
              ORV_OK);
    EXPECT_EQ(std::memcmp(out.data(), should.data(), out.size() * sizeof(T)), 0)
        << "kind " << kind << " points " << points << " rows " << rows << " from " << from.stride << " "
        << from.distance << " to " << to.stride << " " << to.distance;
}

TYPED_TEST(TrigRows, stand_where_strides_and_distances_say)
{
    using T = TypeParam;
    const i64 points = 13;
    for (i64 number = 0; number < 2 * pdett::kinds; ++number)
        for (const i64 rows : {1, 2, 20, 37}) {
            const i64 kind = number / 2;
            const Way way = ways[number % 2];
            const Layout packed{1, points}, apart{1, points + 4}, crossed{rows, 1}, wide{2 * rows + 1, 2},
                back{-1, -points}, gaps{3, 3 * points + 1};
            for (const Layout& layout : {packed, apart, crossed, wide, back, gaps})
                expect_rows<T>(kind, way, points, rows, layout, layout, true);
            for (const auto& [from, to] : {std::pair(packed, crossed), std::pair(crossed, packed),
                                           std::pair(wide, apart), std::pair(gaps, back), std::pair(apart, gaps)})
                expect_rows<T>(kind, way, points, rows, from, to, false);
        }
}

TYPED_TEST(TrigRows, have_the_same_bits_on_any_number_of_threads)
{
    using T = TypeParam;
    orv_team_set_eagerness(1e6);
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (const auto& [points, rows] : {std::pair<i64, i64>(100, 31), std::pair<i64, i64>(3000, 5)})
            for (const int form : {0, 1, 2, 3}) {
                const bool crossed = form % 2;
                const Made trig = made<T>(kind, points, ways[form / 2]);
                const i64 stride = crossed ? rows : 1, distance = crossed ? 1 : points;
                const auto run = [&, rows = rows](T* x) {
                    return orv_trig_forward_rows(trig.get(), rows, x, stride, distance, x, stride, distance);
                };
                const std::vector<T> x = random_row<T>(points * rows, 5);
                const std::vector<T> one = expect_same_bits("kind " + std::to_string(kind), x, true, run, 1, 4);
                ASSERT_EQ(orv_trig_set_threads(trig.get(), 1), ORV_OK);
                EXPECT_EQ(on_threads(4, false, x, run), one); // no more than were asked for
            }
    orv_team_set_eagerness(1);
}

TYPED_TEST(TrigRows, have_nan_in_all_that_a_factor_other_than_zero_brings_it_to)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (const Way way : ways)
            for (const i64 points : {2, 7, 16, 33, 40}) {
                const Made trig = made<T>(kind, points, way);
                for (const bool forward : {true, false})
                    for (i64 at = 0; at < points; ++at) {
                        std::vector<T> unit(static_cast<std::size_t>(points), T(0)), x = random_row<T>(points, 8);
                        unit[at] = 1, x[at] = std::numeric_limits<T>::quiet_NaN();
                        ASSERT_EQ((forward ? orv_trig_forward : orv_trig_backward)(trig.get(), x.data(), x.data()),
                                  ORV_OK);
                        const std::vector<long double> factors = sums(kind, forward, unit);
                        for (i64 k = 0; k < points; ++k) {
                            if (std::fabs(factors[k]) < 1e-9L) continue;
                            EXPECT_TRUE(std::isnan(x[k])) << kind << " of " << points << ": " << at << " to " << k;
                        }
                    }
            }
}

// Results next to an end are as good as others.
TYPED_TEST(TrigRows, have_the_error_of_a_fourier_transform_the_careful_way)
{
    using T = TypeParam;
    for (i64 kind = 0; kind < pdett::kinds; ++kind)
        for (const i64 n : {1000, 999, 1536}) {
            const i64 points = n + n - cells(kind, n);
            const Made trig = made<T>(kind, points, Way::careful);
            const std::vector<T> x = random_row<T>(points, 6);
            std::vector<T> y(x.size());
            for (const bool forward : {true, false}) {
                ASSERT_EQ(orv_trig_set_scales(trig.get(), 1, 1), ORV_OK);
                ASSERT_EQ((forward ? orv_trig_forward : orv_trig_backward)(trig.get(), x.data(), y.data()), ORV_OK);
                const std::vector<long double> should = sums(kind, forward, x);
                const long double bound = bound_of(kind, Way::careful, x);
                for (i64 k = 0; k < points; ++k)
                    ASSERT_LE(std::fabs(static_cast<long double>(y[k]) - should[k]), bound) << kind << " " << k;
            }
        }
}

// Angles that are sums of many rounded steps would be off by thousands of units here.
TEST(TrigRowsOfSingles, are_exact_to_a_few_units_for_large_sizes)
{
    const i64 points = 1 << 16;
    for (const int kind : {ORV_TRIG_STAGGERED2_COSINE, ORV_TRIG_STAGGERED2_SINE}) {
        const Made single = made<float>(kind, points), twice = made<double>(kind, points);
        std::vector<float> x = random_row<float>(points, 6);
        std::vector<double> y(x.begin(), x.end());
        ASSERT_EQ(orv_trig_forward(single.get(), x.data(), x.data()), ORV_OK);
        ASSERT_EQ(orv_trig_forward(twice.get(), y.data(), y.data()), ORV_OK);
        double error = 0, norm = 0;
        for (i64 k = 0; k < points; ++k) error += (x[k] - y[k]) * (x[k] - y[k]), norm += y[k] * y[k];
        // A Fourier transform is within 6u*log2(n) in the norm; two turns by rounded tables add less than that again.
        EXPECT_LE(std::sqrt(error / norm), 2 * 6 * std::log2(points) * std::numeric_limits<float>::epsilon() / 2);
    }
}

TEST(TrigCalls, refuse_bad_arguments_with_a_sentence)
{
    const auto expect_bad = [](orv_status status, int argument, const char* words) {
        EXPECT_EQ(status, -argument);
        EXPECT_NE(std::string(orv_last_error()).find(words), std::string::npos) << orv_last_error();
    };
    orv_trig* trig = nullptr;
    expect_bad(orv_trig_create(nullptr, ORV_DFT_DOUBLE, 0, 3), 1, "orv_trig_create: argument 1: null");
    expect_bad(orv_trig_create_careful(&trig, ORV_DFT_DOUBLE, 0, 0), 4, "orv_trig_create_careful: argument 4: 0");
    expect_bad(orv_trig_create(&trig, 34, 0, 3), 2, "34, but a precision is");
    expect_bad(orv_trig_create(&trig, ORV_DFT_DOUBLE, 6, 3), 3, "6, but a kind is");
    expect_bad(orv_trig_create(&trig, ORV_DFT_DOUBLE, -1, 3), 3, "-1, but a kind is");
    expect_bad(orv_trig_create(&trig, ORV_DFT_DOUBLE, ORV_TRIG_SINE, 0), 4, "0, but a row of this kind");
    expect_bad(orv_trig_create(&trig, ORV_DFT_DOUBLE, ORV_TRIG_COSINE, 1), 4, "at least 2");
    EXPECT_EQ(orv_trig_create(&trig, ORV_DFT_DOUBLE, ORV_TRIG_SINE, i64{1} << 60), ORV_UNSUPPORTED);
    EXPECT_EQ(trig, nullptr);

    const Made made_one = made<double>(ORV_TRIG_SINE, 3);
    trig = made_one.get();
    double x[30] = {}, y[30] = {};
    expect_bad(orv_trig_set_scales(nullptr, 1, 1), 1, "null");
    expect_bad(orv_trig_set_threads(nullptr, 1), 1, "null");
    expect_bad(orv_trig_set_threads(trig, -1), 2, "-1, but threads are");
    expect_bad(orv_trig_set_threads(trig, 1025), 2, "1025");
    expect_bad(orv_trig_forward(nullptr, x, y), 1, "orv_trig_forward: argument 1: null");
    expect_bad(orv_trig_forward(trig, nullptr, y), 2, "null");
    expect_bad(orv_trig_backward(trig, x, nullptr), 3, "orv_trig_backward: argument 3: null");
    expect_bad(orv_trig_forward_rows(nullptr, 1, x, 1, 3, y, 1, 3), 1, "orv_trig_forward_rows: argument 1");
    expect_bad(orv_trig_forward_rows(trig, -2, x, 1, 3, y, 1, 3), 2, "-2 rows");
    expect_bad(orv_trig_backward_rows(trig, 1, nullptr, 1, 3, y, 1, 3), 3, "orv_trig_backward_rows: argument 3");
    expect_bad(orv_trig_forward_rows(trig, 1, x, 1, 3, nullptr, 1, 3), 6, "null");
    expect_bad(orv_trig_forward_rows(trig, 2, x, 1, 3, x, 2, 3), 7, "the stride of argument 4, 1");
    expect_bad(orv_trig_forward_rows(trig, 2, x, 1, 3, x, 1, 4), 8, "the distance of argument 5, 3");
    EXPECT_EQ(orv_trig_forward_rows(trig, 0, x, 1, 3, y, 1, 3), ORV_OK);
    EXPECT_EQ(orv_trig_forward_rows(trig, 1, x, 1, 3, x, 1, 99), ORV_OK); // of one row there is no distance
    orv_trig_free(nullptr);
}

TEST(TrigCalls, answer_a_lack_of_memory_and_give_all_of_it_back)
{
    for (int kind = 0; kind < pdett::kinds; ++kind)
        for (const int form : {0, 1, 2, 3}) {
            const bool crossed = form % 2;
            const auto create = form / 2 ? orv_trig_create_careful : orv_trig_create;
            const i64 points = kind == ORV_TRIG_COSINE ? 37 : 35; // of sines and cosines 36 cells, two halves
            orv_status created = ORV_OK, ran = ORV_OK;
            std::vector<double> x(static_cast<std::size_t>(points * 4), 1);
            each_allocation_fails(
                [&] {
                    orv_trig* trig = nullptr;
                    created = create(&trig, ORV_DFT_DOUBLE, kind, points);
                    EXPECT_EQ(created == ORV_OK, trig != nullptr);
                    ran = ORV_OK;
                    if (trig == nullptr) return;
                    ran = crossed ? orv_trig_forward_rows(trig, 4, x.data(), 4, 1, x.data(), 4, 1)
                                  : orv_trig_forward(trig, x.data(), x.data());
                    orv_trig_free(trig);
                },
                [&] {
                    const bool failed = probe().failed > 0;
                    EXPECT_TRUE(created == ORV_OK || created == ORV_NO_MEMORY) << created << orv_last_error();
                    EXPECT_TRUE(ran == ORV_OK || ran == ORV_NO_MEMORY) << ran << orv_last_error();
                    EXPECT_TRUE(failed || (created == ORV_OK && ran == ORV_OK));
                });
        }
}

} // namespace
} // namespace orv::test
