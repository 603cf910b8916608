// The public copies and transpositions: arguments, work memory, threads.
#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include "tests/support/probe.h"
#include "tests/trans/matrices.h"

#include <orv/orv.h>

namespace orv::test {
namespace {

template <class T> struct Routines;
#define ROUTINES(t, T)                                                                                                 \
    template <> struct Routines<T> {                                                                                   \
        static constexpr auto& omatcopy = orv_##t##omatcopy;                                                           \
        static constexpr auto& omatcopy2 = orv_##t##omatcopy2;                                                         \
        static constexpr auto& omatadd = orv_##t##omatadd;                                                             \
        static constexpr auto& imatcopy = orv_##t##imatcopy;                                                           \
    };
ROUTINES(s, float)
ROUTINES(d, double)
ROUTINES(c, cpx<float>)
ROUTINES(z, cpx<double>)

template <class T> class TransTest : public ::testing::Test {
};
TYPED_TEST_SUITE(TransTest, Types);

constexpr char ops[] = {'N', 'T', 'R', 'C'};

TYPED_TEST(TransTest, computes_out_of_place)
{
    using T = TypeParam;
    using R = Routines<T>;
    const T alpha = scalar<T>(0.7, -1.3), beta = scalar<T>(-0.4, 0.9);
    for (const char op : ops) {
        const Storage<T> a(12 * 10), b(12 * 10), c(12 * 10), d(12 * 10 * 2);
        const u64 m = 5, n = 7;
        std::vector<T> copied = b.copy(), added = c.copy(), apart = d.copy();
        for (u64 i = 0; i < m; ++i)
            for (u64 j = 0; j < n; ++j) {
                const T x = alpha * conjugated_by(op, a[i * 9 + j]);
                copied[turns(op) ? j * 10 + i : i * 10 + j] = x;
                apart[turns(op) ? j * 20 + i * 2 : i * 20 + j * 2] = x;
            }
        for (u64 i = 0; i < (turns(op) ? n : m); ++i)
            for (u64 j = 0; j < (turns(op) ? m : n); ++j)
                added[i * 8 + j] =
                    alpha * conjugated_by(op, a[turns(op) ? j * 9 + i : i * 9 + j]) + beta * copied[i * 10 + j];
        EXPECT_EQ(R::omatcopy('R', op, m, n, alpha, a.data(), 9, b.data(), 10), ORV_OK);
        EXPECT_EQ(R::omatcopy2('c', op, n, m, alpha, a.data(), 9, 1, d.data(), 20, 2), ORV_OK);
        EXPECT_EQ(R::omatadd('C', op, 'N', turns(op) ? m : n, turns(op) ? n : m, alpha, a.data(), 9, beta, b.data(), 10,
                             c.data(), 8),
                  ORV_OK);
        ASSERT_HOLDS(b, copied) << op;
        ASSERT_HOLDS(d, apart) << op;
        ASSERT_HOLDS(c, added) << op;
    }
}

// One transposition in place of m by n elements in row-major order, and its check.
template <class T> void turn(char ordering, char op, u64 m, u64 n, T alpha, u64 pada, u64 padb)
{
    const u64 lda = n + pada, ldb = m + padb;
    const bool by_rows = ordering == 'R';
    const Storage<T> ab(std::max(extent(m, n, lda), extent(n, m, ldb)));
    std::vector<T> after = ab.copy();
    for (u64 i = 0; i < m; ++i)
        for (u64 j = 0; j < n; ++j) after[j * ldb + i] = element(op, alpha, ab[i * lda + j], By::moving_by_one);
    EXPECT_EQ(Routines<T>::imatcopy(ordering, op, static_cast<i64>(by_rows ? m : n), static_cast<i64>(by_rows ? n : m),
                                    alpha, ab.data(), static_cast<i64>(lda), static_cast<i64>(ldb)),
              ORV_OK);
    ASSERT_HOLDS(ab, after) << problem("imatcopy", ordering, op, m, n, lda, ldb, alpha);
}

// Shapes that go through work memory as a whole, in tiles of all forms, with and without leftovers on each side.
TYPED_TEST(TransTest, turns_rectangles_in_place_with_work_memory)
{
    using T = TypeParam;
    const T alpha = scalar<T>(0.7, -1.3);
    for (u64 m = 1; m <= 20; m += 3)
        for (u64 n = 1; n <= 20; n += 2)
            for (const u64 pad : {0, 1, 5})
                turn<T>(m % 2 ? 'R' : 'C', n % 4 == 1 ? 'T' : 'C', m, n, alpha, pad, pad / 2);
    constexpr std::pair<u64, u64> large[] = {{640, 1280}, {641, 1283}, {1283, 641}, {2, 300000}, {300000, 2},
                                             {1, 400000}, {400000, 1}, {3, 200001}, {50000, 17}, {700, 701}};
    for (const auto& [m, n] : large) {
        turn<T>('R', 'T', m, n, one<T>, 0, 0);
        turn<T>('C', 'C', m, n, alpha, 0, 0);
    }
    turn<T>('R', 'T', 641, 1283, one<T>, 3, 1);
}

TYPED_TEST(TransTest, turns_rectangles_without_memory_all_the_same)
{
    using T = TypeParam;
    for (const auto& [m, n, pad] : {std::tuple<u64, u64, u64>{13, 40, 0}, {40, 13, 2}, {300, 1001, 0}})
        for (const char op : {'T', 'C'}) {
            const Storage<T> start(extent(m, n, n + pad)), ab(extent(m, n, n + pad) + (n - 1) * (m + pad));
            std::vector<T> after;
            each_allocation_fails(
                [&] {
                    std::copy_n(start.data(), extent(m, n, n + pad), ab.data());
                    after = ab.copy();
                    for (u64 i = 0; i < m; ++i)
                        for (u64 j = 0; j < n; ++j)
                            after[j * (m + pad) + i] =
                                element(op, scalar<T>(2, 0.5), ab[i * (n + pad) + j], By::multiplying);
                    Routines<T>::imatcopy('R', op, static_cast<i64>(m), static_cast<i64>(n), scalar<T>(2, 0.5),
                                          ab.data(), static_cast<i64>(n + pad), static_cast<i64>(m + pad));
                },
                [&] { ASSERT_HOLDS(ab, after) << m << ' ' << n << ' ' << pad; });
        }
}

TEST(Trans, takes_little_memory_to_turn_a_large_matrix_without_gaps)
{
    for (const auto& [m, n] : {std::pair<i64, i64>{3000, 1000}, {1009, 3001}, {20, 200000}}) {
        std::vector<double> ab(static_cast<std::size_t>(m * n));
        ProbeScope scope;
        EXPECT_EQ(orv_dimatcopy('R', 'T', m, n, 1, ab.data(), n, m), ORV_OK);
        ASSERT_EQ(scope->asked_bytes.size(), 1u);
        EXPECT_LT(scope->asked_bytes[0], std::max<i64>(2 << 20, 128 * std::min(m, n)) + m * n * 8 / 512 + (1 << 17))
            << m << ' ' << n;
    }
}

TYPED_TEST(TransTest, takes_no_memory_for_squares_and_for_what_is_not_turned)
{
    using T = TypeParam;
    const Storage<T> ab(100 * 110);
    ProbeScope scope;
    EXPECT_EQ(Routines<T>::imatcopy('R', 'T', 100, 100, one<T>, ab.data(), 100, 100), ORV_OK);
    EXPECT_EQ(Routines<T>::imatcopy('R', 'N', 90, 100, one<T>, ab.data(), 100, 110), ORV_OK);
    EXPECT_EQ(scope->allocations, 0);
}

// The result on one thread and on several.
TYPED_TEST(TransTest, gives_the_same_on_any_number_of_threads)
{
    using T = TypeParam;
    const u64 scale = sizeof(T) == 4 ? 2 : 1;
    constexpr std::pair<u64, u64> shapes[] = {{600, 701}, {1021, 400}, {17, 40000}, {40000, 18}};
    for (const auto& [m, rest] : shapes)
        for (const char op : ops)
            for (const char ordering : {'R', 'C'}) {
                const u64 n = rest * scale;
                const Storage<T> a(m * n), b(m * n);
                std::vector<T> first;
                for (const int threads : {1, 2, 3, 5}) {
                    ASSERT_EQ(orv_set_num_threads(threads), ORV_OK);
                    std::memset(static_cast<void*>(b.data()), 0xff, m * n * sizeof(T));
                    const u64 width = (ordering == 'R') == turns(op) ? m : n;
                    Routines<T>::omatcopy(ordering, op, static_cast<i64>(m), static_cast<i64>(n), scalar<T>(0.7, -1.3),
                                          a.data(), static_cast<i64>(ordering == 'R' ? n : m), b.data(),
                                          static_cast<i64>(width));
                    if (first.empty()) first = b.copy();
                    ASSERT_HOLDS(b, first)
                        << problem("omatcopy", ordering, op, m, n, n, width, one<T>) << ' ' << threads;
                }
            }
    for (const u64 n : {1024, 1030, 1037}) {
        const Storage<T> ab(n * n);
        for (const int threads : {2, 3, 5}) {
            ASSERT_EQ(orv_set_num_threads(threads), ORV_OK);
            std::vector<T> after = ab.copy();
            for (u64 i = 0; i < n; ++i)
                for (u64 j = 0; j < n; ++j) after[j * n + i] = ab[i * n + j];
            Routines<T>::imatcopy('R', 'T', static_cast<i64>(n), static_cast<i64>(n), one<T>, ab.data(),
                                  static_cast<i64>(n), static_cast<i64>(n));
            ASSERT_HOLDS(ab, after) << n << ' ' << threads;
        }
    }
    orv_set_num_threads(0);
}

// What multiplication by one would change: kinds of NaN, zeros with a sign beside infinities. With gaps and without,
// one long row, large enough for threads.
TYPED_TEST(TransTest, copies_every_bit_by_one)
{
    using T = TypeParam;
    constexpr std::tuple<u64, u64, u64> shapes[] = {{5, 7, 0},       {5, 7, 3},      {1, 3, 2},
                                                    {1100, 1001, 0}, {1101, 999, 5}, {1, 1500007, 0}};
    for (const auto& [m, n, pad] : shapes)
        for (const int threads : {1, 2, 3}) {
            ASSERT_EQ(orv_set_num_threads(threads), ORV_OK);
            const char ordering = pad == 3 ? 'c' : 'R', op = is_complex<T> || threads == 1 ? 'n' : 'R';
            const u64 lda = n + pad, ldb = n + pad / 2;
            const Storage<T> a(extent(m, n, lda)), b(extent(m, n, ldb));
            auto* raw = reinterpret_cast<unsigned char*>(a.data());
            for (u64 i = 0; i < extent(m, n, lda) * sizeof(T); ++i)
                raw[i] = static_cast<unsigned char>(i / 8 % 3 == 0 ? 0xff : i / 8 % 3 == 1 ? i * 37 : i % 8 / 7 * 128);
            std::vector<T> after = b.copy();
            for (u64 i = 0; i < m; ++i) std::copy_n(&a[i * lda], n, &after[i * ldb]);
            const bool by_rows = ordering == 'R';
            EXPECT_EQ(Routines<T>::omatcopy(ordering, op, static_cast<i64>(by_rows ? m : n),
                                            static_cast<i64>(by_rows ? n : m), one<T>, a.data(), static_cast<i64>(lda),
                                            b.data(), static_cast<i64>(ldb)),
                      ORV_OK);
            ASSERT_EQ(std::memcmp(b.data(), after.data(), after.size() * sizeof(T)), 0)
                << problem("omatcopy", ordering, op, m, n, lda, ldb, one<T>) << ' ' << threads;
        }
    orv_set_num_threads(0);
}

TYPED_TEST(TransTest, finds_each_bad_argument_and_writes_nothing)
{
    using T = TypeParam;
    using R = Routines<T>;
    const Storage<T> a(40), b(40);
    const std::vector<T> before = b.copy();
    const auto omatcopy = [&](char ordering, char trans, i64 rows, i64 cols, i64 lda, i64 ldb) {
        const int status = R::omatcopy(ordering, trans, rows, cols, one<T>, a.data(), lda, b.data(), ldb);
        EXPECT_EQ(R::imatcopy(ordering, trans, rows, cols, one<T>, b.data(), lda, ldb), status == -9 ? -8 : status);
        EXPECT_EQ(R::omatcopy2(ordering, trans, rows, cols, one<T>, a.data(), lda, 1, b.data(), ldb, 1),
                  status == -9 ? -10 : status);
        return status;
    };
    EXPECT_EQ(omatcopy('x', 'y', -1, -1, 0, 0), -1);
    EXPECT_EQ(omatcopy('R', 'y', -1, -1, 0, 0), -2);
    EXPECT_EQ(omatcopy('R', 'N', -1, -1, 0, 0), -3);
    EXPECT_EQ(omatcopy('R', 'N', 2, -1, 0, 0), -4);
    EXPECT_EQ(omatcopy('R', 'N', 2, 3, 2, 0), -7);
    EXPECT_EQ(omatcopy('C', 'N', 2, 3, 1, 0), -7);
    EXPECT_EQ(omatcopy('R', 'N', 2, 3, 3, 2), -9);
    EXPECT_EQ(omatcopy('R', 'T', 2, 3, 3, 1), -9);
    EXPECT_EQ(omatcopy('C', 'R', 2, 3, 2, 1), -9);
    EXPECT_EQ(omatcopy('C', 'C', 2, 3, 2, 2), -9);
    EXPECT_EQ(std::string(orv_last_error()).find("omatcopy2: argument 10 is not allowed") != std::string::npos, true);
    EXPECT_EQ(R::omatcopy2('R', 'N', 2, 3, one<T>, a.data(), 9, 0, b.data(), 3, 1), -8);
    EXPECT_EQ(R::omatcopy2('R', 'N', 2, 3, one<T>, a.data(), 4, 2, b.data(), 3, 1), -7);
    EXPECT_EQ(R::omatcopy2('R', 'N', 2, 3, one<T>, a.data(), 3, 1, b.data(), 9, 0), -11);
    EXPECT_EQ(R::omatcopy2('R', 'T', 2, 3, one<T>, a.data(), 3, 1, b.data(), 2, 2), -10);
    const auto omatadd = [&](char ordering, char transa, char transb, i64 rows, i64 cols, i64 lda, i64 ldb, i64 ldc) {
        return R::omatadd(ordering, transa, transb, rows, cols, one<T>, a.data(), lda, one<T>, a.data(), ldb, b.data(),
                          ldc);
    };
    EXPECT_EQ(omatadd('x', 'x', 'x', -1, -1, 0, 0, 0), -1);
    EXPECT_EQ(omatadd('R', 'x', 'x', -1, -1, 0, 0, 0), -2);
    EXPECT_EQ(omatadd('R', 'N', 'x', -1, -1, 0, 0, 0), -3);
    EXPECT_EQ(omatadd('R', 'N', 'N', -1, -1, 0, 0, 0), -4);
    EXPECT_EQ(omatadd('R', 'N', 'N', 2, -1, 0, 0, 0), -5);
    EXPECT_EQ(omatadd('R', 'N', 'N', 2, 3, 2, 2, 2), -8);
    EXPECT_EQ(omatadd('R', 'T', 'N', 2, 3, 2, 2, 2), -11);
    EXPECT_EQ(omatadd('C', 'T', 'R', 2, 3, 2, 2, 2), -8);
    EXPECT_EQ(omatadd('R', 'T', 'C', 2, 3, 2, 2, 2), -13);
    EXPECT_EQ(omatadd('R', 'T', 'C', 2, 3, 2, 1, 2), -11);
    ASSERT_HOLDS(b, before);
}

TYPED_TEST(TransTest, does_nothing_without_rows_or_columns)
{
    using T = TypeParam;
    using R = Routines<T>;
    T* const none = nullptr;
    for (const char op : ops)
        for (const auto& [rows, cols] : {std::pair<i64, i64>{0, 5}, {5, 0}, {0, 0}}) {
            EXPECT_EQ(R::omatcopy('R', op, rows, cols, one<T>, none, 5, none, 5), ORV_OK);
            EXPECT_EQ(R::omatcopy2('R', op, rows, cols, one<T>, none, 9, 2, none, 9, 2), ORV_OK);
            EXPECT_EQ(R::imatcopy('R', op, rows, cols, one<T>, none, 5, 5), ORV_OK);
            EXPECT_EQ(R::omatadd('R', op, op, rows, cols, one<T>, none, 5, one<T>, none, 5, none, 5), ORV_OK);
        }
}

} // namespace
} // namespace orv::test
