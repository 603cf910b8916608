// Factorisation with complete pivoting: ?getc2.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/fronts.h"
#include "tests/lapack_ps/matrix.h"

#include <algorithm>

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class T> struct Factors {
    Square<T> a;
    Guarded<i64> ipiv, jpiv;
    i64 info = -77;

    explicit Factors(i64 n) : a(n, n % 3), ipiv(n), jpiv(n) {}
    void compute()
    {
        kernel<Getc2<T>>("lapack_ps", letter<T>, "getc2")(&a.n, a.data.data(), &a.lda, ipiv.data(), jpiv.data(), &info);
    }
};

template <class Body> void each_type(Body body)
{
    body.template operator()<float>();
    body.template operator()<double>();
    body.template operator()<cpx<float>>();
    body.template operator()<cpx<double>>();
}

template <class T> void fill_random(const Square<T>& a)
{
    Random random(static_cast<std::uint64_t>(a.n));
    for (i64 j = 0; j < a.n; ++j)
        for (i64 i = 0; i < a.n; ++i) a(i, j) = random.value<T>();
}

// The smallest number whose reciprocal is finite, over twice the unit roundoff.
template <class T> real_t<T> smallest_pivot()
{
    using R = real_t<T>;
    return std::numeric_limits<R>::min() / std::numeric_limits<R>::epsilon();
}

// |P*L*U*Q - A| <= gamma_n * P*|L||U|*Q (Higham, theorem 9.3).
TEST(Getc2, gives_the_matrix_back)
{
    each_type([]<class T>() {
        for (i64 n = 0; n <= 18; ++n) {
            SCOPED_TRACE(std::string(1, letter<T>) + "getc2 n=" + std::to_string(n) +
                         " seed=" + std::to_string(seed()));
            Factors<T> f(n);
            fill_random(f.a);
            const Square<T> a(n);
            a.copy(f.a);
            f.compute();
            ASSERT_EQ(f.info, 0);
            std::vector<std::vector<Wide>> m(n, std::vector<Wide>(n));
            std::vector<std::vector<long double>> magnitudes(n, std::vector<long double>(n));
            for (i64 i = 0; i < n; ++i)
                for (i64 j = 0; j < n; ++j)
                    for (i64 k = 0; k <= std::min(i, j); ++k) {
                        const Wide l = k == i ? Wide{1, 0} : wide(f.a(i, k)), u = wide(f.a(k, j));
                        m[i][j] += l * u, magnitudes[i][j] += size(l) * size(u);
                    }
            const auto exchange = [&](auto& x, i64 k) {
                std::swap(x[k], x[f.ipiv[k] - 1]);
                for (auto& row : x) std::swap(row[k], row[f.jpiv[k] - 1]);
            };
            for (i64 k = n - 1; k >= 0; --k) exchange(m, k), exchange(magnitudes, k);
            const long double bound = gamma_n<T>((is_complex<T> ? 6 : 1) * (n + 1));
            for (i64 i = 0; i < n; ++i)
                for (i64 j = 0; j < n; ++j) ASSERT_LE(size(m[i][j] - wide(a(i, j))), bound * magnitudes[i][j]);
        }
    });
}

TEST(Getc2, takes_the_last_of_equal_candidates)
{
    each_type([]<class T>() {
        Factors<T> f(5);
        for (T& e : f.a.data) e = number<T>(-1);
        f.a(2, 3) = f.a(1, 3) = number<T>(2);
        f.compute();
        EXPECT_EQ(f.ipiv[0], 3);
        EXPECT_EQ(f.jpiv[0], 4);
    });
}

TEST(Getc2, moves_rows_and_columns_only_where_the_pivot_does)
{
    Factors<cpx<float>> f(4);
    for (i64 j = 0; j < 4; ++j)
        for (i64 i = 0; i < 4; ++i) f.a(i, j) = i == j ? cpx<float>{float(9 - i), 0} : cpx<float>{0.25f, 0};
    std::swap(f.a(1, 1), f.a(1, 2)); // column 2 and 1 change places in the second step, and that is all
    f.a(2, 2) = {0.25f, 0}, f.a(2, 1) = {7, 0};
    FrontCalls fronts;
    f.compute();
    EXPECT_EQ(fronts.calls,
              (std::vector<std::string>{"slamch P", "slamch S", "slabad", "cgeru", "cswap", "cgeru", "cgeru"}));
}

TEST(Getc2, puts_the_threshold_in_place_of_pivots_that_are_too_small)
{
    each_type([]<class T>() {
        for (const i64 n : {1, 2, 3, 6}) {
            Factors<T> f(n);
            for (i64 j = 0; j < n; ++j)
                for (i64 i = 0; i < n; ++i) f.a(i, j) = number<T>(0);
            f.compute();
            EXPECT_EQ(f.info, n) << "the last one counts";
            for (i64 i = 0; i < n; ++i) EXPECT_TRUE(same(f.a(i, i), number<T>(smallest_pivot<T>())));
        }
    });
}

// Of rank one: what is left is rounding, far below eps times the largest element only if there is none at all.
TEST(Getc2, measures_pivots_by_the_largest_element_of_the_matrix)
{
    each_type([]<class T>() {
        Factors<T> f(3);
        const double tiny = std::numeric_limits<real_t<T>>::epsilon() / 8;
        for (i64 j = 0; j < 3; ++j)
            for (i64 i = 0; i < 3; ++i) f.a(i, j) = number<T>(i == j ? (i == 1 ? 4 : tiny) : 0);
        f.compute();
        const real_t<T> eps = std::numeric_limits<real_t<T>>::epsilon(); // of lamch: precision, the base times the unit
        EXPECT_EQ(f.info, 3);
        EXPECT_EQ(f.ipiv[0], 2);
        for (i64 i = 1; i < 3; ++i) EXPECT_TRUE(same(f.a(i, i), number<T>(4 * eps)));
    });
}

TEST(Getc2, chooses_complex_pivots_by_their_modulus)
{
    Factors<cpx<double>> f(2);
    f.a(0, 0) = {3, 3}, f.a(1, 0) = {4, 0}, f.a(0, 1) = {1, 0}, f.a(1, 1) = {0, -4.1};
    f.compute();
    EXPECT_EQ(f.ipiv[0], 1);
    EXPECT_EQ(f.jpiv[0], 1);
    // No square overflows.
    Factors<cpx<double>> huge(2);
    for (i64 j = 0; j < 2; ++j)
        for (i64 i = 0; i < 2; ++i) huge.a(i, j) = {1e300, i == 1 && j == 0 ? 1.1e300 : 1e300};
    huge.compute();
    EXPECT_EQ(huge.ipiv[0], 2);
    EXPECT_EQ(huge.jpiv[0], 1);
}

TEST(Getc2, never_chooses_nan)
{
    Factors<double> f(3), nothing_else(3);
    for (i64 j = 0; j < 3; ++j)
        for (i64 i = 0; i < 3; ++i)
            f.a(i, j) = i == 2 && j == 1 ? not_a_number : 1 + i, nothing_else.a(i, j) = not_a_number;
    f.compute(), nothing_else.compute();
    EXPECT_EQ(f.ipiv[0], 3);
    EXPECT_EQ(f.jpiv[0], 3);
    for (i64 i = 0; i < 3; ++i) EXPECT_EQ(nothing_else.ipiv[i], i + 1);
}

} // namespace
} // namespace orv::test
