// In place: ?imatcopy, and the routines that follow cycles or move rows.
#include "frame/kernels/trans.h"
#include "tests/trans/matrices.h"

namespace orv::test {
namespace {

using namespace kernels::trans;

constexpr char ops[] = {'N', 'T', 'R', 'C'};

template <class T> class ImatcopyTest : public ::testing::Test {
protected:
    void SetUp() override { teams() = {}; }
};
TYPED_TEST_SUITE(ImatcopyTest, Types);

// Does the call go to the routines for squares, and there to tiles that know no alpha?
constexpr bool is_square(char op, u64 m, u64 n, u64 lda, u64 ldb)
{
    return m == n && lda == ldb && (turns(op) || m == lda);
}
template <class T> bool is_moved(char op, u64 m, u64 n, u64 lda, u64 ldb)
{
    constexpr u64 unit = 64 / sizeof(T);
    return is_square(op, m, n, lda, ldb) && (op == 'T' || (op == 'C' && !is_complex<T>)) &&
           (n % unit == 0 || lda % unit == 0);
}

// ab afterwards, by a plain loop; what is neither element nor target stays.
template <class T> std::vector<T> expected(char op, u64 m, u64 n, T alpha, const Storage<T>& ab, u64 lda, u64 ldb)
{
    const By by = is_moved<T>(op, m, n, lda, ldb) ? By::moving_by_one : By::multiplying;
    std::vector<T> result = ab.copy();
    for (u64 i = 0; i < m; ++i)
        for (u64 j = 0; j < n; ++j)
            result[turns(op) ? j * ldb + i : i * ldb + j] = element(op, alpha, ab[i * lda + j], by);
    return result;
}

template <class T> void run(char ordering, char op, u64 rows, u64 cols, T alpha, u64 pada, u64 padb)
{
    const u64 m = ordering == 'R' ? rows : cols, n = ordering == 'R' ? cols : rows;
    const u64 bm = turns(op) ? n : m, bn = turns(op) ? m : n, lda = std::max<u64>(n, 1) + pada,
              ldb = std::max<u64>(bn, 1) + padb;
    const Storage<T> ab(std::max(extent(m, n, lda), extent(bm, bn, ldb)));
    const std::vector<T> after = expected(op, m, n, alpha, ab, lda, ldb);
    kernel<Imatcopy<T>>("trans", symbol<T>("imatcopy"))(ordering, op, rows, cols, alpha, ab.data(), lda, ldb);
    ASSERT_HOLDS(ab, after) << problem("imatcopy", ordering, op, rows, cols, lda, ldb, alpha);
}

TYPED_TEST(ImatcopyTest, turns_and_moves_every_small_shape)
{
    using T = TypeParam;
    for (u64 rows = 0; rows <= 40; ++rows)
        for (u64 cols = 0; cols <= 40; ++cols)
            for (const char op : ops) {
                const char ordering = (rows + cols) % 2 == 0 ? 'R' : 'C';
                for (const u64 pad : {0, 1}) {
                    const T alpha = pad == 0 ? one<T> : scalar<T>(0.7, -1.3);
                    run<T>(ordering, op, rows, cols, alpha, pad * (rows % 10), pad * ((rows + cols) % 10));
                    if (this->HasFatalFailure()) return;
                }
            }
}

TYPED_TEST(ImatcopyTest, turns_squares_of_every_distance_of_rows)
{
    using T = TypeParam;
    for (const u64 n : {1, 2, 7, 8, 12, 16, 31, 33, 48, 63, 64, 65})
        for (u64 pada = 0; pada <= 9; ++pada)
            for (const u64 padb : {u64(0), pada, u64(9)})
                for (const char op : ops)
                    for (const T alpha : {one<T>, scalar<T>(-0.6, 0.2)}) {
                        run<T>('R', op, n, n, alpha, pada, padb);
                        if (this->HasFatalFailure()) return;
                    }
}

TYPED_TEST(ImatcopyTest, follows_cycles_unless_rows_columns_and_both_distances_agree)
{
    using T = TypeParam;
    run<T>('R', 'T', 100, 100, one<T>, 0, 0);
    EXPECT_EQ(teams().squares, 1); // the sign of the way through squares
    run<T>('R', 'T', 100, 100, one<T>, 0, 4);
    run<T>('C', 'T', 100, 101, one<T>, 1, 0);
    EXPECT_EQ(teams().squares, 1);
}

TYPED_TEST(ImatcopyTest, turns_one_row_or_one_column)
{
    using T = TypeParam;
    for (const u64 n : {1, 2, 3, 17, 64, 100})
        for (const u64 pada : {0, 5})
            for (const u64 padb : {0, 3})
                for (const char op : ops) {
                    run<T>('R', op, 1, n, scalar<T>(2, 1), pada, padb);
                    run<T>('R', op, n, 1, scalar<T>(2, 1), pada, padb);
                    if (this->HasFatalFailure()) return;
                }
}

TYPED_TEST(ImatcopyTest, asks_for_the_ordering_only_where_it_makes_a_difference)
{
    using T = TypeParam;
    for (const char op : ops) {
        Storage<T> square(36), oblong(36);
        const std::vector<T> turned = expected(op, 6, 6, scalar<T>(2, 1), square, 6, 6), before = oblong.copy();
        kernel<Imatcopy<T>>("trans", symbol<T>("imatcopy"))('x', op, 6, 6, scalar<T>(2, 1), square.data(), 6, 6);
        ASSERT_HOLDS(square, turned) << op;
        kernel<Imatcopy<T>>("trans", symbol<T>("imatcopy"))('x', op, 6, 5, scalar<T>(2, 1), oblong.data(), 6, 6);
        kernel<Imatcopy<T>>("trans", symbol<T>("imatcopy"))('x', op, 5, 5, scalar<T>(2, 1), oblong.data(), 5, 6);
        ASSERT_HOLDS(oblong, before) << op;
    }
}

TYPED_TEST(ImatcopyTest, takes_letters_in_both_cases_and_no_others)
{
    using T = TypeParam;
    auto* f = kernel<Imatcopy<T>>("trans", symbol<T>("imatcopy"));
    for (int letter = -128; letter < 128; ++letter)
        for (const char ordering : {'R', 'r', 'C', 'c'})
            for (const u64 cols : {4, 5}) {
                const bool valid = letter != 0 && std::strchr("NnTtRrCc", letter) != nullptr,
                           by_rows = fold(ordering) == 'R';
                const auto l = static_cast<char>(letter);
                const Storage<T> ab(5 * 5);
                const std::vector<T> after =
                    valid ? expected(fold(l), by_rows ? 5 : cols, by_rows ? cols : 5, scalar<T>(2, 1), ab, 5, 5)
                          : ab.copy();
                f(ordering, l, 5, cols, scalar<T>(2, 1), ab.data(), 5, 5);
                ASSERT_HOLDS(ab, after) << letter << ' ' << ordering << ' ' << cols;
            }
}

// The routines behind the letters by name; both directions of a move, close together and far apart.
TYPED_TEST(ImatcopyTest, offers_cycles_and_moves_by_name)
{
    using T = TypeParam;
    for (const char op : std::string(is_complex<T> ? "ntrc" : "nt")) {
        auto* f = kernel<ImatcopyMipt<T>>("trans", symbol<T>("imatcopy_mipt_") + op);
        for (const u64 rows : {1, 2, 5, 9})
            for (const u64 cols : {1, 7, 8, 9, 16, 17, 25})
                for (u64 pada = 0; pada <= 18; pada += 3)
                    for (u64 padb = 0; padb <= 18; padb += 2)
                        for (const T alpha : {one<T>, scalar<T>(-0.6, 0.2)}) {
                            const char o = fold(op);
                            const u64 lda = cols + pada, ldb = (turns(o) ? rows : cols) + padb;
                            const Storage<T> ab(std::max(extent(rows, cols, lda),
                                                         turns(o) ? extent(cols, rows, ldb) : extent(rows, cols, ldb)));
                            std::vector<T> after = ab.copy();
                            for (u64 i = 0; i < rows; ++i)
                                for (u64 j = 0; j < cols; ++j)
                                    after[turns(o) ? j * ldb + i : i * ldb + j] =
                                        element(o, alpha, ab[i * lda + j], By::multiplying);
                            f(rows, cols, alpha, ab.data(), lda, ldb);
                            ASSERT_HOLDS(ab, after) << problem("mipt", 'R', op, rows, cols, lda, ldb, alpha);
                        }
    }
}

TYPED_TEST(ImatcopyTest, touches_nothing_without_rows_or_columns)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    for (const char op : ops)
        for (const auto& [rows, cols] : {std::pair<u64, u64>{0, 5}, {5, 0}, {0, 0}})
            kernel<Imatcopy<T>>("trans", symbol<T>("imatcopy"))('R', op, rows, cols, one<T>, none.data(), 5, 5);
}

TYPED_TEST(ImatcopyTest, computes_with_special_values_as_with_all_others)
{
    using T = TypeParam;
    const double special[] = {NAN, INFINITY, -INFINITY, 0.0, -0.0, 1, -5e-324, 1e308};
    const double nan = NAN;
    for (const T alpha : {one<T>, zero<T>, scalar<T>(-1, 0), scalar<T>(nan, 0), scalar<T>(INFINITY, 0)})
        for (const char op : ops)
            for (const u64 n : {16, 17, 19})
                for (const u64 padb : {0, 1}) {
                    const u64 ldb = n + padb;
                    const Storage<T> ab(extent(n, n, ldb));
                    for (u64 i = 0; i < n * n; ++i) ab[i] = scalar<T>(special[i % 8], special[i / 8 % 8]);
                    const std::vector<T> after = expected(op, n, n, alpha, ab, n, ldb);
                    kernel<Imatcopy<T>>("trans", symbol<T>("imatcopy"))('R', op, n, n, alpha, ab.data(), n, ldb);
                    ASSERT_HOLDS(ab, after) << problem("imatcopy", 'R', op, n, n, n, ldb, alpha);
                }
}

} // namespace
} // namespace orv::test
