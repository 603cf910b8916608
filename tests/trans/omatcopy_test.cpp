// Copies and transpositions out of place: ?omatcopy, ?omatcopy2 and the routines behind them.
#include "frame/kernels/trans.h"
#include "tests/trans/matrices.h"

namespace orv::test {
namespace {

using namespace kernels::trans;

constexpr char ops[] = {'N', 'T', 'R', 'C'};

template <class T> class OmatcopyTest : public ::testing::Test {
protected:
    void SetUp() override { teams() = {}; }
};
TYPED_TEST_SUITE(OmatcopyTest, Types);

// b after the copy, by a plain loop. m by n: the shape of A in row-major order.
template <class T>
std::vector<T> expected(char op, u64 m, u64 n, T alpha, const Storage<T>& a, u64 lda, u64 stridea, const Storage<T>& b,
                        u64 ldb, u64 strideb)
{
    std::vector<T> result = b.copy();
    for (u64 i = 0; i < m; ++i)
        for (u64 j = 0; j < n; ++j)
            result[turns(op) ? j * ldb + i * strideb : i * ldb + j * strideb] =
                element(op, alpha, a[i * lda + j * stridea], turns(op) ? By::moving_by_one : By::multiplying);
    return result;
}

// One call of ?omatcopy2 and its check. lda and ldb are the least plus padding.
template <class T> struct Call {
    char ordering, op;
    u64 rows, cols;
    T alpha;
    u64 pada = 0, padb = 0, stridea = 1, strideb = 1;
    Edge edge = Edge::end;
    std::size_t shift = 0;

    void run(const char* name = "omatcopy2") const
    {
        auto* f = kernel<Omatcopy2<T>>("trans", symbol<T>(name));
        const u64 m = ordering == 'R' ? rows : cols, n = ordering == 'R' ? cols : rows;
        const u64 bm = turns(op) ? n : m, bn = turns(op) ? m : n;
        const u64 lda = std::max<u64>(n * stridea, 1) + pada, ldb = std::max<u64>(bn * strideb, 1) + padb;
        const Storage<T> a(extent(m, n, lda, stridea), edge, shift), b(extent(bm, bn, ldb, strideb), edge, shift / 2);
        const std::vector<T> before = a.copy();
        const std::vector<T> after = expected(op, m, n, alpha, a, lda, stridea, b, ldb, strideb);
        Line text = line<T>(name, {ordering, op});
        text.with("rows", rows).with("cols", cols).with("alpha", alpha).with("lda", lda).with("stridea", stridea);
        SCOPED_TRACE(text.with("ldb", ldb).with("strideb", strideb).text());
        if (stridea == 1 && strideb == 1 && std::strcmp(name, "omatcopy2") == 0)
            kernel<Omatcopy<T>>("trans", symbol<T>("omatcopy"))(ordering, op, rows, cols, alpha, a.data(), lda,
                                                                b.data(), ldb);
        else f(ordering, op, rows, cols, alpha, a.data(), lda, stridea, b.data(), ldb, strideb);
        ASSERT_HOLDS(b, after);
        ASSERT_HOLDS(a, before);
    }
};

TYPED_TEST(OmatcopyTest, copies_and_transposes_every_small_shape)
{
    using T = TypeParam;
    for (u64 rows = 0; rows <= 40; ++rows)
        for (u64 cols = 0; cols <= 40; ++cols)
            for (const char op : ops)
                for (const T alpha : {one<T>, scalar<T>(0.7, -1.3)}) {
                    const char ordering = (rows + cols) % 2 == 0 ? 'R' : 'C';
                    Call<T>{ordering, op, rows, cols, alpha, (rows + 3 * cols) % 10, (7 * rows + cols) % 10}.run();
                    if (this->HasFatalFailure()) return;
                }
}

TYPED_TEST(OmatcopyTest, takes_elements_of_a_row_apart)
{
    using T = TypeParam;
    for (const u64 rows : {1, 2, 3, 8, 9, 13, 21, 34})
        for (const u64 cols : {1, 2, 5, 8, 12, 33})
            for (const u64 stridea : {1, 2, 5})
                for (const u64 strideb : {1, 3})
                    for (const char op : ops)
                        for (const T alpha : {one<T>, scalar<T>(-0.6, 0.2)}) {
                            const char ordering = rows % 2 == 0 ? 'R' : 'C';
                            Call<T>{ordering, op, rows, cols, alpha, 1, 2, stridea, strideb}.run();
                            if (this->HasFatalFailure()) return;
                        }
}

TYPED_TEST(OmatcopyTest, gives_the_same_at_every_alignment)
{
    using T = TypeParam;
    for (const Edge edge : {Edge::start, Edge::end})
        for (std::size_t shift = 0; shift < 2 * 64 / sizeof(T); ++shift)
            for (const char op : ops)
                for (const T alpha : {one<T>, scalar<T>(-0.6, 0.2)}) {
                    Call<T>{'R', op, 21, 30, alpha, shift % 3, shift % 4, 1, 1, edge, shift}.run();
                    if (this->HasFatalFailure()) return;
                }
}

// Rows of A and of B on both sides of a page, rows of A that meet in one set of the cache and their neighbours, and
// numbers of rows on both sides of every height that a band of them can have.
TYPED_TEST(OmatcopyTest, transposes_in_bands_of_rows)
{
    using T = TypeParam;
    constexpr u64 page = 4096 / sizeof(T);
    const auto at = [&](u64 rows, u64 cols, u64 lda, u64 ldb) {
        if (lda < cols || ldb < rows) return;
        Call<T>{'R', is_complex<T> ? 'C' : 'T', rows, cols, one<T>, lda - cols, ldb - rows}.run("omatcopy2_seq");
    };
    for (const u64 rows : {31, 32, 33, 63, 64, 65})
        for (const u64 cols : {1, 9, 13})
            for (const u64 lda : {page, page - 1, page + 1, 2 * page, 8 * page - 1, 8 * page, 8 * page + 1})
                for (const u64 ldb : {page - 1, page, page + 1}) at(rows, cols, lda, ldb);
    // Short rows, several a page: so much higher bands.
    for (const u64 in_page : {2, 3, 6})
        for (const u64 height : {32 * in_page, 64 * in_page})
            for (const u64 rows : {height - 1, height, height + 1})
                for (const u64 ldb : {rows, page + 1})
                    at(rows, 17, page / in_page, ldb), at(rows, 9, page / in_page + 1, ldb);
    teams() = {};
}

// Its elements make one row of the target, so the distance of rows there means nothing.
TYPED_TEST(OmatcopyTest, turns_one_column_whatever_the_distance_of_rows_it_becomes)
{
    using T = TypeParam;
    for (const u64 rows : {1, 2, 31, 33, 1000})
        for (const u64 ldb : {0, 1}) {
            const Storage<T> a(extent(rows, 1, 3)), b(rows);
            const std::vector<T> after = expected('T', rows, 1, one<T>, a, 3, 1, b, ldb, 1);
            kernel<Omatcopy2OfForm<T>>("trans", symbol<T>("omatcopy2_t"))(rows, 1, one<T>, a.data(), 3, 1, b.data(),
                                                                          ldb, 1);
            ASSERT_HOLDS(b, after) << rows << ' ' << ldb;
        }
}

// More than half a MiB, for which lines are asked for ahead; rows whole pages apart, and not.
TYPED_TEST(OmatcopyTest, transposes_large_matrices)
{
    using T = TypeParam;
    constexpr u64 page = 4096 / sizeof(T);
    for (const u64 rows : {u64(150), page, page + 13})
        for (const u64 pad : {u64(0), u64(1)})
            for (const T alpha : {one<T>, scalar<T>(-0.6, 0.2)}) {
                const u64 cols = 0x80000 / sizeof(T) / rows + 9,
                          lda = pad == 0 ? (cols + page - 1) / page * page : cols + 1;
                Call<T>{'R', is_complex<T> ? 'C' : 'T', rows, cols, alpha, lda - cols, pad}.run("omatcopy2_seq");
                if (this->HasFatalFailure()) return;
            }
}

TYPED_TEST(OmatcopyTest, cuts_in_halves_when_it_has_to_multiply)
{
    using T = TypeParam;
    for (const u64 rows : {31, 32, 33, 63, 64, 65, 66, 100, 257})
        for (const u64 cols : {1, 8, 31, 33, 64, 65, 129, 260})
            for (const char op : {'T', 'C'}) {
                Call<T>{'R', op, rows, cols, scalar<T>(-0.6, 0.2), 3, 1}.run("omatcopy2_seq");
                if (this->HasFatalFailure()) return;
            }
}

// Each routine behind the letters, called by its own name.
TYPED_TEST(OmatcopyTest, offers_each_operation_by_name)
{
    using T = TypeParam;
    for (const char op : std::string(is_complex<T> ? "NTRC" : "NT")) {
        auto* f = kernel<Omatcopy2OfForm<T>>("trans", symbol<T>("omatcopy2_") + static_cast<char>(op | 0x20));
        for (const u64 stride : {1, 2})
            for (const T alpha : {one<T>, scalar<T>(3, 0.25)}) {
                const u64 rows = 19, cols = 10, lda = 23, ldb = turns(op) ? 20 * stride : 10 * stride;
                const Storage<T> a(extent(rows, cols, lda)),
                    b(turns(op) ? extent(cols, rows, ldb, stride) : extent(rows, cols, ldb, stride));
                const std::vector<T> after = expected(op, rows, cols, alpha, a, lda, 1, b, ldb, stride);
                f(rows, cols, alpha, a.data(), lda, 1, b.data(), ldb, stride);
                ASSERT_HOLDS(b, after) << op;
            }
    }
}

TYPED_TEST(OmatcopyTest, takes_letters_in_both_cases_and_no_others)
{
    using T = TypeParam;
    constexpr u64 rows = 5, cols = 3, ld = 7;
    const T alpha = scalar<T>(2, 1);
    for (const char* name : {"omatcopy", "omatcopy2", "omatcopy2_seq"})
        for (int ordering = -128; ordering < 128; ++ordering)
            for (int trans = -128; trans < 128; ++trans) {
                const auto known = [](int letter, const char* all) {
                    return letter != 0 && std::strchr(all, letter) != nullptr;
                };
                const bool valid = known(ordering, "RrCc") && known(trans, "NnTtRrCc");
                if (!valid && ordering % 7 != 0 && trans % 7 != 0 && ordering != 'R') continue;
                const Storage<T> a(ld * ld), b(ld * ld);
                const auto o = static_cast<char>(ordering), t = static_cast<char>(trans);
                const bool by_rows = fold(o) == 'R';
                const std::vector<T> after =
                    valid ? expected(fold(t), by_rows ? rows : cols, by_rows ? cols : rows, alpha, a, ld, 1, b, ld, 1)
                          : b.copy();
                if (name[8] == '\0')
                    kernel<Omatcopy<T>>("trans", symbol<T>(name))(o, t, rows, cols, alpha, a.data(), ld, b.data(), ld);
                else
                    kernel<Omatcopy2<T>>("trans", symbol<T>(name))(o, t, rows, cols, alpha, a.data(), ld, 1, b.data(),
                                                                   ld, 1);
                ASSERT_HOLDS(b, after) << name << ' ' << ordering << ' ' << trans;
            }
}

TYPED_TEST(OmatcopyTest, asks_for_a_team_above_16_by_16_and_32_KiB)
{
    using T = TypeParam;
    const auto asks = [&](u64 rows, u64 cols) {
        teams() = {};
        Call<T>{'R', 'T', rows, cols, one<T>}.run();
        const int plain = teams().copies;
        Call<T>{'C', 'N', rows, cols, one<T>, 0, 0, 1, 2}.run();
        EXPECT_EQ(teams().copies, 2 * plain);
        return plain == 1;
    };
    constexpr u64 limit = 32768 / sizeof(T);
    EXPECT_FALSE(asks(17, 17));
    EXPECT_FALSE(asks(16, limit / 16 + 1));
    EXPECT_FALSE(asks(limit / 16 + 1, 16));
    EXPECT_FALSE(asks(32, limit / 32));
    EXPECT_TRUE(asks(32, limit / 32 + 1));
    EXPECT_TRUE(asks(17, limit / 17 + 1));
    EXPECT_TRUE(asks(limit / 17 + 1, 17));
    EXPECT_FALSE(asks(17, limit / 17));
}

TYPED_TEST(OmatcopyTest, passes_its_arguments_to_the_team_as_they_came)
{
    using T = TypeParam;
    Call<T>{'C', 'T', 100, 200, one<T>, 3, 5, 2, 3}.run();
    EXPECT_EQ(teams().last_copy, "CT 100 200 203 2 605 3");
    Call<T>{'R', 'N', 100, 200, one<T>, 3, 5}.run();
    EXPECT_EQ(teams().last_copy, "RN 100 200 203 1 205 1");
    // A letter that is none goes to the team too, which leaves B alone.
    const Storage<T> a(100 * 100), b(100 * 100);
    const std::vector<T> before = b.copy();
    kernel<Omatcopy<T>>("trans", symbol<T>("omatcopy"))('R', 'x', 100, 100, one<T>, a.data(), 100, b.data(), 100);
    EXPECT_EQ(teams().last_copy, "Rx 100 100 100 1 100 1");
    ASSERT_HOLDS(b, before);
}

TYPED_TEST(OmatcopyTest, never_asks_for_a_team_in_its_sequential_form)
{
    using T = TypeParam;
    Call<T>{'R', 'T', 300, 200, one<T>}.run("omatcopy2_seq");
    EXPECT_EQ(teams().copies, 0);
}

TYPED_TEST(OmatcopyTest, touches_nothing_without_rows_or_columns)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    for (const char op : ops)
        for (const auto& [rows, cols] : {std::pair<u64, u64>{0, 5}, {5, 0}, {0, 0}}) {
            kernel<Omatcopy<T>>("trans", symbol<T>("omatcopy"))('R', op, rows, cols, one<T>, none.data(), 5,
                                                                none.data(), 5);
            kernel<Omatcopy2<T>>("trans", symbol<T>("omatcopy2"))('C', op, rows, cols, one<T>, none.data(), 5, 2,
                                                                  none.data(), 5, 2);
            kernel<Omatcopy2<T>>("trans", symbol<T>("omatcopy2_seq"))('C', op, rows, cols, one<T>, none.data(), 5, 1,
                                                                      none.data(), 5, 1);
        }
}

// NaN, infinities and signed zeros in every place of a register, through factors that are tempting to leave out.
TYPED_TEST(OmatcopyTest, computes_with_special_values_as_with_all_others)
{
    using T = TypeParam;
    const double special[] = {NAN, INFINITY, -INFINITY, 0.0, -0.0, 1, -5e-324, 1e308};
    const double nan = NAN;
    for (const T alpha : {one<T>, zero<T>, scalar<T>(-1, 0), scalar<T>(nan, 0), scalar<T>(INFINITY, 0),
                          scalar<T>(-0.0, 0), scalar<T>(1, -0.0), scalar<T>(1, nan), scalar<T>(0, 1)})
        for (const char op : ops) {
            const u64 rows = 13, cols = 16;
            const Storage<T> a(rows * cols), b(rows * cols);
            for (u64 i = 0; i < rows * cols; ++i) a[i] = scalar<T>(special[i % 8], special[i / 8 % 8]);
            const u64 ldb = turns(op) ? rows : cols;
            const std::vector<T> after = expected(op, rows, cols, alpha, a, cols, 1, b, ldb, 1);
            kernel<Omatcopy<T>>("trans", symbol<T>("omatcopy"))('R', op, rows, cols, alpha, a.data(), cols, b.data(),
                                                                ldb);
            ASSERT_HOLDS(b, after) << problem("omatcopy", 'R', op, rows, cols, cols, ldb, alpha);
        }
}

TYPED_TEST(OmatcopyTest, moves_every_bit_when_it_transposes_by_one)
{
    using T = TypeParam;
    constexpr u64 n = 29, bytes = n * n * sizeof(T);
    const Storage<T> a(n * n), b(n * n);
    auto* raw = reinterpret_cast<unsigned char*>(a.data()); // all kinds of NaN among them
    for (u64 i = 0; i < bytes; ++i) raw[i] = static_cast<unsigned char>(i % 5 == 0 ? 0xff : i * 37);
    kernel<Omatcopy<T>>("trans", symbol<T>("omatcopy"))('R', 'T', n, n, one<T>, a.data(), n, b.data(), n);
    for (u64 i = 0; i < n; ++i)
        for (u64 j = 0; j < n; ++j) ASSERT_EQ(std::memcmp(&a[i * n + j], &b[j * n + i], sizeof(T)), 0) << i << ' ' << j;
}

TYPED_TEST(OmatcopyTest, yields_nan_for_a_factor_that_is_nan)
{
    using T = TypeParam;
    const Storage<T> a(100), b(100);
    kernel<Omatcopy2OfForm<T>>("trans", symbol<T>("omatcopy2_t"))(10, 10, scalar<T>(NAN, 0), a.data(), 10, 1, b.data(),
                                                                  10, 1);
    for (u64 i = 0; i < 100; ++i) EXPECT_FALSE(b[i] == b[i]) << i;
}

} // namespace
} // namespace orv::test
