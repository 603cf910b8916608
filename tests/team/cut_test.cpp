// Where matrices are cut: nobody waits for a part that is larger than it has to be, and nobody has none.
#include "core/blas/cut_products.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

using namespace orv;
using namespace orv::core;

namespace {

constexpr i64 sides[] = {1,   15,  16,  31,  32,  33,  47,  48,  63,  64,  65,  79,  95,  96,  97, 100,
                         112, 127, 128, 129, 144, 160, 191, 192, 193, 200, 255, 257, 300, 333, 400};

// Parts of a side that Grid makes; they follow each other, from 0 to the end.
std::vector<i64> parts_of(i64 side, int parts)
{
    std::vector<i64> sizes;
    i64 at = 0;
    for (int i = 0; i < parts; ++i) {
        const Range r = even_part(side, parts, i, tile);
        EXPECT_EQ(r.begin, at);
        at += r.size;
        sizes.push_back(r.size);
    }
    EXPECT_EQ(at, side);
    return sizes;
}

template <class Check> void for_all_cuts(const Check& check)
{
    for (const i64 m : sides)
        for (const i64 n : sides)
            for (int threads = 1; threads <= 64; ++threads) {
                SCOPED_TRACE(std::to_string(m) + " by " + std::to_string(n) + " on " + std::to_string(threads));
                check(m, n, threads, Grid(m, n, threads));
                if (testing::Test::HasFailure()) return;
            }
}

TEST(Grid, has_no_part_too_small_for_its_kernel)
{
    for_all_cuts([](i64 m, i64 n, int threads, const Grid& grid) {
        EXPECT_LE(grid.parts(), threads);
        for (const auto& [side, parts] : {std::pair{m, grid.rows}, std::pair{n, grid.columns}})
            for (const i64 size : parts_of(side, parts)) EXPECT_GE(size, std::min(side, least_side));
    });
}

// Members count themselves: as many as there are parts cut the same.
TEST(Grid, is_the_same_for_the_members_it_asked_for)
{
    for_all_cuts([](i64 m, i64 n, int, const Grid& grid) {
        const Grid again(m, n, grid.parts());
        EXPECT_EQ(again.rows, grid.rows);
        EXPECT_EQ(again.columns, grid.columns);
    });
}

// To a tile, with what is left over behind the last, a part of a side is as long as the others.
TEST(Grid, has_no_part_much_larger_than_the_mean)
{
    for_all_cuts([](i64 m, i64 n, int, const Grid& grid) {
        for (const auto& [side, parts] : {std::pair{m, grid.rows}, std::pair{n, grid.columns}})
            EXPECT_LT(std::ranges::max(parts_of(side, parts)), side / parts + 2 * tile);
    });
}

// No other cut with as many threads at most has a largest part that is smaller by more than its edges cost.
TEST(Grid, leaves_threads_out_only_where_they_would_not_help)
{
    for_all_cuts([](i64 m, i64 n, int threads, const Grid& grid) {
        const auto largest = [&](int rows, int columns) {
            return std::ranges::max(parts_of(m, rows)) * std::ranges::max(parts_of(n, columns));
        };
        const i64 own = largest(grid.rows, grid.columns), edges = 8 * (m + n);
        for (int r = 1; r <= std::min<i64>(threads, Grid::most_parts(m)); ++r)
            for (int c = 1; c <= std::min<i64>(threads / r, Grid::most_parts(n)); ++c)
                EXPECT_LE(own, largest(r, c) + edges) << r << " by " << c;
    });
}

TEST(Grid, cuts_both_ways_on_a_prime_number_of_threads)
{
    const Grid small(100, 100, 7), large(2000, 2000, 7), stripes(3000, 20, 7);
    EXPECT_EQ(small.parts(), 6);
    EXPECT_EQ(large.parts(), 7);
    EXPECT_EQ(stripes.rows, 7);
}

TEST(EvenPart, is_a_multiple_of_its_granule_and_never_empty_where_there_are_as_many)
{
    for (i64 n = granule; n < 1000; ++n)
        for (int parts = 1; parts <= n / granule; ++parts) {
            i64 at = 0;
            for (int i = 0; i < parts; ++i) {
                const Range r = even_part(n, parts, i);
                ASSERT_EQ(r.begin, at);
                ASSERT_EQ(r.begin % granule, 0);
                ASSERT_GE(r.size, granule);
                at += r.size;
            }
            ASSERT_EQ(at, n);
        }
}

TEST(TrianglePart, covers_all_columns_with_as_many_elements_each)
{
    for (const bool upper : {false, true})
        for (i64 n = granule; n < 3000; n += 61)
            for (int parts = 1; parts <= max(most_triangle_parts(n), 1); ++parts) {
                i64 at = 0;
                for (int i = 0; i < parts; ++i) {
                    const Range r = triangle_part(upper, n, parts, i);
                    ASSERT_EQ(r.begin, at);
                    ASSERT_GT(r.size, 0);
                    ASSERT_EQ(r.begin % granule, 0);
                    at += r.size;
                    // Longest columns first or last: the middle one is the mean.
                    const double middle = double(r.begin) + 0.5 * double(r.size),
                                 elements = double(r.size) * (upper ? middle : double(n) - middle);
                    ASSERT_LE(elements, 0.5 * double(n) * double(n) / parts + double(granule) * double(n));
                }
                ASSERT_EQ(at, n);
            }
}

} // namespace
