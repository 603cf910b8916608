// Squares in place: ?imatcopy_square_*, ?sqtrans, tiles and the shares of a team.
#include "frame/kernels/trans.h"
#include "tests/trans/matrices.h"

namespace orv::test {
namespace {

using namespace kernels::trans;

template <class T> constexpr u64 unit = 64 / sizeof(T);
template <class T> bool lines_up(u64 n, u64 ld) { return n % unit<T> == 0 || ld % unit<T> == 0; }

template <class T> class SquareTest : public ::testing::Test {
protected:
    void SetUp() override { teams() = {}; }
};
TYPED_TEST_SUITE(SquareTest, Types);

template <class T> std::vector<T> expected(char op, u64 n, T alpha, const Storage<T>& ab, u64 ld, By by)
{
    std::vector<T> result = ab.copy();
    for (u64 i = 0; i < n; ++i)
        for (u64 j = 0; j < n; ++j)
            result[turns(op) ? j * ld + i : i * ld + j] = element(op, alpha, ab[i * ld + j], by);
    return result;
}

// Sides on both sides of a tile, of 64, and of 256 KiB.
template <class T> std::vector<u64> sides()
{
    std::vector<u64> all;
    for (u64 n = 0; n <= 35; ++n) all.push_back(n);
    for (const u64 n : {47, 48, 49, 63, 64, 65, 66, 72, 100, 127, 128, 129, 136, 181, 182, 184, 256, 257, 258, 272})
        all.push_back(n);
    return all;
}

TYPED_TEST(SquareTest, turns_every_side_and_distance_of_rows)
{
    using T = TypeParam;
    auto* f = kernel<TurnSquare<T>>("trans", symbol<T>("imatcopy_square_t"));
    for (const u64 n : sides<T>())
        for (const u64 pad : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9})
            for (const T alpha : {one<T>, scalar<T>(0.7, -1.3)}) {
                if (n > 72 && pad > 2 && (n + pad) % unit<T> != 0) continue;
                const u64 ld = std::max<u64>(n, 1) + pad;
                const Storage<T> ab(extent(n, n, ld));
                const std::vector<T> after =
                    expected('T', n, alpha, ab, ld, lines_up<T>(n, ld) ? By::moving_by_one : By::multiplying);
                f(n, alpha, ab.data(), ld);
                ASSERT_HOLDS(ab, after) << problem("square_t", 'R', 'T', n, n, ld, ld, alpha);
            }
}

TYPED_TEST(SquareTest, conjugates_and_scales_by_name)
{
    using T = TypeParam;
    for (const char op : std::string(is_complex<T> ? "NRC" : "N")) {
        for (const u64 n : {0, 1, 2, 7, 8, 9, 16, 31, 65, 100})
            for (const u64 pad : {0, 1, 8})
                for (const T alpha : {one<T>, scalar<T>(0.7, -1.3)})
                    for (const std::size_t shift : {0, 1, 3}) {
                        if (op == 'N' && pad != 0) continue;
                        const u64 ld = std::max<u64>(n, 1) + pad;
                        const Storage<T> ab(extent(n, n, ld), Edge::end, shift);
                        const std::vector<T> after = expected(op, n, alpha, ab, ld, By::multiplying);
                        const std::string name = symbol<T>("imatcopy_square_") + static_cast<char>(op | 0x20);
                        if (op == 'N') kernel<ScaleSquare<T>>("trans", name)(n, alpha, ab.data());
                        else kernel<TurnSquare<T>>("trans", name)(n, alpha, ab.data(), ld);
                        ASSERT_HOLDS(ab, after) << problem("square", 'R', op, n, n, ld, ld, alpha);
                    }
    }
    EXPECT_EQ(teams().squares, 0);
}

TYPED_TEST(SquareTest, asks_for_a_team_above_64_and_for_a_factor_of_one_only)
{
    using T = TypeParam;
    const auto asks = [](u64 n, T alpha) {
        teams() = {};
        const Storage<T> ab(n * n);
        kernel<TurnSquare<T>>("trans", symbol<T>("imatcopy_square_t"))(n, alpha, ab.data(), n);
        return teams().squares;
    };
    EXPECT_EQ(asks(64, one<T>), 0);
    EXPECT_EQ(asks(65, one<T>), 1);
    EXPECT_EQ(asks(65, scalar<T>(1, -0.0)), 1);
    EXPECT_EQ(asks(65, scalar<T>(2, 0)), 0);
    EXPECT_EQ(asks(65, scalar<T>(NAN, 0)), 0);
    if constexpr (is_complex<T>) {
        EXPECT_EQ(asks(65, scalar<T>(1, 1)), 0);
    }
}

TYPED_TEST(SquareTest, leaves_the_work_to_a_team_that_says_it_did_it)
{
    using T = TypeParam;
    auto* f = kernel<TurnSquare<T>>("trans", symbol<T>("imatcopy_square_t"));
    for (const u64 n : {80, 81}) {
        const Storage<T> ab(n * n);
        const std::vector<T> before = ab.copy();
        teams().answer = 7;
        f(n, one<T>, ab.data(), n);
        ASSERT_HOLDS(ab, before);
        const std::vector<T> after =
            expected('T', n, one<T>, ab, n, lines_up<T>(n, n) ? By::moving_by_one : By::multiplying);
        teams().answer = 0;
        f(n, one<T>, ab.data(), n);
        ASSERT_HOLDS(ab, after);
    }
}

TYPED_TEST(SquareTest, refuses_tiles_only_if_neither_side_nor_distance_is_a_multiple)
{
    using T = TypeParam;
    auto* f = kernel<Sqtrans<T>>("trans", symbol<T>("sqtrans"));
    for (const u64 n : sides<T>())
        for (const u64 pad : {u64(0), u64(1), unit<T> - 1, unit<T>, (unit<T> - n % unit<T>) % unit<T>}) {
            const u64 ld = std::max<u64>(n, 1) + pad;
            const Storage<T> ab(extent(n, n, ld));
            const std::vector<T> after =
                lines_up<T>(n, ld) ? expected('T', n, one<T>, ab, ld, By::moving_by_one) : ab.copy();
            EXPECT_EQ(f(ab.data(), n, ld), lines_up<T>(n, ld) ? 0 : 6);
            ASSERT_HOLDS(ab, after) << problem("sqtrans", 'R', 'T', n, n, ld, ld, one<T>);
        }
}

TEST(Square, takes_12_rows_of_doubles_16_apart_but_not_12)
{
    auto* f = kernel<dsqtrans>();
    const Storage<double> ab(extent(12, 12, 16));
    EXPECT_EQ(f(ab.data(), 12, 12), 6);
    EXPECT_EQ(f(ab.data(), 12, 16), 0);
}

TYPED_TEST(SquareTest, has_no_tiles_for_a_team_and_says_so)
{
    using T = TypeParam;
    const Storage<T> ab(256);
    const std::vector<T> before = ab.copy();
    i64 status = -1;
    kernel<SqtransTeam<T>>("trans", symbol<T>("sqtrans_team"))(16, ab.data(), 16, 0, 2, &status);
    EXPECT_EQ(status, 6);
    ASSERT_HOLDS(ab, before);
}

TYPED_TEST(SquareTest, gives_each_pair_of_tiles_to_one_member_of_a_team)
{
    using T = TypeParam;
    auto* f = kernel<TurnSquareTeam<T>>("trans", symbol<T>("imatcopy_square_t_team"));
    for (u64 tiles = 0; tiles <= 40; ++tiles)
        for (u64 members = 1; members <= 9; ++members) {
            const u64 n = tiles * unit<T>, ld = n + members % 3;
            const Storage<T> ab(extent(n, n, ld));
            const std::vector<T> after = expected('T', n, one<T>, ab, ld, By::moving_by_one);
            for (u64 member = members; member-- > 0;) f(n, ab.data(), ld, member, members);
            ASSERT_HOLDS(ab, after) << tiles << " tiles, " << members << " members";
        }
}

TYPED_TEST(SquareTest, gives_each_row_of_tiles_the_same_number_of_tiles)
{
    using T = TypeParam;
    auto* f = kernel<TurnSquareTeam<T>>("trans", symbol<T>("imatcopy_square_t_team"));
    for (const u64 tiles : {1, 2, 3, 8, 9, 12, 13})
        for (u64 t = 0; t < tiles; ++t) {
            const u64 n = tiles * unit<T>, half = tiles / 2;
            const Storage<T> ab(n * n);
            const std::vector<T> before = ab.copy();
            f(n, ab.data(), n, t, tiles); // as many members as rows: one row each
            u64 touched = 0;
            for (u64 i = 0; i < tiles; ++i)
                for (u64 j = 0; j < tiles; ++j) {
                    // The second element of a tile moves, on the diagonal too.
                    const u64 at = i * unit<T> * n + j * unit<T> + 1;
                    touched += !same(ab[at], before[at]);
                }
            EXPECT_EQ(touched, 1 + 2 * ((t < half ? half + 1 : tiles - half) - 1)) << t << " of " << tiles;
        }
}

// Lines of a tile then meet in one set of the cache; the other distances are its neighbours.
TYPED_TEST(SquareTest, turns_squares_with_rows_whole_pages_apart)
{
    using T = TypeParam;
    constexpr u64 page = 4096 / sizeof(T);
    const u64 whole = static_cast<u64>(std::sqrt(262144.0 / sizeof(T))) / unit<T> * unit<T> + 2 * unit<T>;
    for (const u64 n : {whole, whole + 5})
        for (const u64 ld : {page, 2 * page, 2 * page + unit<T>}) {
            if (ld < n) continue;
            const Storage<T> ab(extent(n, n, ld)), shared(extent(whole, whole, ld));
            const std::vector<T> after = expected('T', n, one<T>, ab, ld, By::moving_by_one),
                                 after_shares = expected('T', whole, one<T>, shared, ld, By::moving_by_one);
            EXPECT_EQ(kernel<Sqtrans<T>>("trans", symbol<T>("sqtrans"))(ab.data(), n, ld), 0);
            ASSERT_HOLDS(ab, after) << problem("sqtrans", 'R', 'T', n, n, ld, ld, one<T>);
            for (const u64 member : {0, 1, 2})
                kernel<TurnSquareTeam<T>>("trans", symbol<T>("imatcopy_square_t_team"))(whole, shared.data(), ld,
                                                                                        member, 3);
            ASSERT_HOLDS(shared, after_shares) << ld;
        }
}

TYPED_TEST(SquareTest, exchanges_a_row_of_tiles_with_a_column)
{
    using T = TypeParam;
    auto* f = kernel<TurnTiles<T>>("trans", symbol<T>("imatcopy_square_t_64x64n"));
    constexpr u64 u = unit<T>, tiles = 7, n = tiles * u, ld = n + 3;
    for (u64 i = 0; i < tiles; ++i)
        for (u64 j = 0; j < tiles; ++j)
            for (u64 count = 0; i + count <= tiles && j + count <= tiles; ++count) {
                if (i != j && j + count > i && i + count > j) continue; // would meet tiles twice
                const Storage<T> ab(extent(n, n, ld));
                std::vector<T> after = ab.copy();
                // Tile (i, j + k) with tile (j + k, i).
                for (u64 k = 0; k < count; ++k)
                    for (u64 r = 0; r < u; ++r)
                        for (u64 c = 0; c < u; ++c) {
                            const u64 across = (i * u + r) * ld + (j + k) * u + c,
                                      down = ((j + k) * u + c) * ld + i * u + r;
                            after[across] = ab[down], after[down] = ab[across];
                        }
                f(ab.data() + i * u * ld + j * u, ab.data() + j * u * ld + i * u, ld, count);
                ASSERT_HOLDS(ab, after) << i << ' ' << j << ' ' << count;
            }
}

TYPED_TEST(SquareTest, turns_zero_factors_to_zeros_but_keeps_nan)
{
    using T = TypeParam;
    for (const u64 n : {16, 33, 80}) {
        const Storage<T> ab(n * n);
        ab[3] = scalar<T>(NAN, NAN);
        kernel<TurnSquare<T>>("trans", symbol<T>("imatcopy_square_t"))(n, zero<T>, ab.data(), n);
        for (u64 i = 0; i < n * n; ++i) EXPECT_EQ(ab[i] == zero<T>, i != 3 * n) << i;
        EXPECT_FALSE(ab[3 * n] == ab[3 * n]);
    }
}

TEST(Square, has_an_initialiser_that_does_nothing) { kernel<dsoi_init>()(); }

} // namespace
} // namespace orv::test
