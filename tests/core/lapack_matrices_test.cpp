// lacpy and lascl of the core.
#include "lapack_ps/front_ends.h"
#include "tests/support/guarded.h"
#include "tests/support/random.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <orv/orv.h>
#include <string>
#include <vector>

namespace orv::test {
namespace {

template <class R> class LapackMatrices : public ::testing::Test {
};
using Reals = ::testing::Types<float, double>;
TYPED_TEST_SUITE(LapackMatrices, Reals);

TYPED_TEST(LapackMatrices, copies_the_part_that_its_letter_names)
{
    using R = TypeParam;
    Random random;
    for (const char* uplo : {"U", "u", "Lower", "l", "A", "F", " "})
        for (i64 m : {0, 1, 3, 5})
            for (i64 n : {0, 1, 4, 6}) {
                SCOPED_TRACE(std::string(uplo) + " m=" + std::to_string(m) + " n=" + std::to_string(n));
                const i64 lda = m + 1, ldb = m + 2;
                const Guarded<R> a(std::max<i64>(0, (n - 1) * lda + m)), b(std::max<i64>(0, (n - 1) * ldb + m));
                random.fill(a);
                front::lacpy(uplo, m, n, a.data(), lda, b.data(), ldb);
                for (i64 j = 0; j < n; ++j)
                    for (i64 i = 0; i < m; ++i) {
                        const char letter = fold(*uplo);
                        const bool copied = letter == 'U' ? i <= j : letter == 'L' ? i >= j : true;
                        const R got = b[i + j * ldb];
                        ASSERT_TRUE(copied ? got == a[i + j * lda] : std::isnan(got)) << i << " " << j;
                    }
            }
}

// Whether element (i, j) of the array holds one of the matrix, straight from the definitions of the storage schemes.
bool stored(char type, i64 kl, i64 ku, i64 m, i64 n, i64 i, i64 j)
{
    const auto in_band = [&](i64 row) { return row >= 0 && row < m && row - j <= kl && j - row <= ku; };
    switch (type) {
    case 'G':
        return i < m;
    case 'L':
        return i < m && i >= j;
    case 'U':
        return i < m && i <= j;
    case 'H':
        return i < m && i <= j + 1;
    case 'B':
        return i <= kl && j + i < n; // a(j + i, j) in row i
    case 'Q':
        return i <= ku && j - (ku - i) >= 0; // a(j - (ku - i), j)
    default:
        return i >= kl && in_band(j + i - kl - ku); // row kl + ku holds the diagonal
    }
}

TYPED_TEST(LapackMatrices, scales_what_the_type_stores_and_no_more)
{
    using R = TypeParam;
    for (const char type : std::string("GLUHBQZ"))
        for (i64 m = 0; m <= 6; ++m)
            for (i64 n = 0; n <= 6; ++n)
                for (i64 kl = 0; kl <= std::max<i64>(m - 1, 0); ++kl)
                    for (i64 ku = 0; ku <= std::max<i64>(n - 1, 0); ++ku) {
                        const bool symmetric = type == 'B' || type == 'Q';
                        if (symmetric && (m != n || kl != ku)) continue;
                        const i64 rows = symmetric ? kl + 1 : type == 'Z' ? 2 * kl + ku + 1 : m;
                        const i64 lda = std::max<i64>(1, rows);
                        const Guarded<R> a(lda * n);
                        std::fill(a.begin(), a.end(), R(3));
                        i64 info = 7;
                        front::lascl(&type, kl, ku, R(2), R(1), m, n, a.data(), lda, &info);
                        ASSERT_EQ(info, 0);
                        for (i64 j = 0; j < n; ++j)
                            for (i64 i = 0; i < lda; ++i)
                                ASSERT_EQ(a[i + j * lda], m > 0 && stored(type, kl, ku, m, n, i, j) ? R(1.5) : R(3))
                                    << type << " m=" << m << " n=" << n << " kl=" << kl << " ku=" << ku << " (" << i
                                    << "," << j << ")";
                    }
}

template <class R> R scaled(R from, R to, R x)
{
    i64 info = 7;
    front::lascl("G", 0, 0, from, to, 1, 1, &x, 1, &info);
    EXPECT_EQ(info, 0);
    return x;
}

TYPED_TEST(LapackMatrices, scale_by_quotients_that_no_number_holds)
{
    using R = TypeParam;
    using Limits = std::numeric_limits<R>;
    const R tiny = Limits::min(), least = Limits::denorm_min(), huge = Limits::max() / 2, half_range = std::sqrt(tiny);
    EXPECT_EQ(scaled(huge, tiny, huge), tiny);
    EXPECT_EQ(scaled(tiny, huge, tiny), huge);
    EXPECT_EQ(scaled(least, R(1), least), R(1));
    EXPECT_EQ(scaled(R(1), least, R(1)), least);
    EXPECT_EQ(scaled(-huge, tiny, huge), -tiny);
    EXPECT_EQ(scaled(half_range, huge, half_range), huge);
    EXPECT_EQ(scaled(huge, huge, R(3)), R(3));
    EXPECT_EQ(scaled(R(3), R(0), R(5)), R(0));
    EXPECT_TRUE(std::isinf(scaled(tiny, huge, R(1)))); // the result itself is too large
    EXPECT_TRUE(std::isinf(scaled(R(1), Limits::infinity(), R(2))));
    EXPECT_EQ(scaled(Limits::infinity(), R(1), R(2)), R(0));
    EXPECT_TRUE(std::isnan(scaled(Limits::infinity(), Limits::infinity(), R(2))));
    EXPECT_TRUE(std::isnan(scaled(R(1), R(2), Limits::quiet_NaN())));
    // Powers of two on the way: the one quotient rounds, and the one product.
    EXPECT_EQ(scaled(R(3), R(7), R(5)), R(5) * (R(7) / R(3)));
}

std::string reported_routine;
int reported_argument;

TYPED_TEST(LapackMatrices, tell_of_a_bad_argument_and_write_nothing)
{
    using R = TypeParam;
    const R nan = std::numeric_limits<R>::quiet_NaN();
    struct Case {
        i64 info;
        const char* type;
        i64 kl, ku;
        R from, to;
        i64 m, n, lda;
    };
    const auto before = orv_set_argument_handler(
        [](const char* routine, int argument) { reported_routine = routine, reported_argument = argument; });
    for (const Case& bad : std::initializer_list<Case>{{-1, "X", 0, 0, 1, 2, 1, 1, 1},
                                                       {-4, "G", 0, 0, 0, 2, 1, 1, 1},
                                                       {-4, "G", 0, 0, nan, 2, 1, 1, 1},
                                                       {-5, "G", 0, 0, 1, nan, 1, 1, 1},
                                                       {-6, "G", 0, 0, 1, 2, -1, 1, 1},
                                                       {-7, "G", 0, 0, 1, 2, 1, -1, 1},
                                                       {-7, "B", 0, 0, 1, 2, 1, 2, 1},
                                                       {-7, "Q", 0, 0, 1, 2, 2, 1, 1},
                                                       {-9, "L", 0, 0, 1, 2, 2, 1, 1},
                                                       {-2, "B", -1, 0, 1, 2, 2, 2, 9},
                                                       {-2, "Z", 2, 0, 1, 2, 2, 2, 9},
                                                       {-3, "Z", 1, 2, 1, 2, 2, 2, 9},
                                                       {-3, "B", 1, 0, 1, 2, 2, 2, 9},
                                                       {-9, "B", 1, 1, 1, 2, 2, 2, 1},
                                                       {-9, "Q", 1, 1, 1, 2, 2, 2, 1},
                                                       {-9, "Z", 1, 1, 1, 2, 2, 2, 3}}) {
        R a[4] = {3, 3, 3, 3};
        i64 info = 7;
        reported_routine.clear();
        front::lascl(bad.type, bad.kl, bad.ku, bad.from, bad.to, bad.m, bad.n, a, bad.lda, &info);
        EXPECT_EQ(info, bad.info);
        EXPECT_EQ(reported_routine, sizeof(R) == 4 ? "SLASCL" : "DLASCL");
        EXPECT_EQ(reported_argument, -bad.info);
        for (const R x : a) EXPECT_EQ(x, R(3));
    }
    orv_set_argument_handler(before);
}

} // namespace
} // namespace orv::test
