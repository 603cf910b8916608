// Scaled copies ?lacpy2 and ?lacpy3, and the packed update cspr.
#include "frame/kernels/lapack_ps.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"
#include "tests/support/vectors.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class T> std::string named(const char* name) { return letter<T> + std::string(name); }

bool in_part(char uplo, i64 i, i64 j)
{
    switch (uplo) {
    case 'U':
    case 'u':
        return i <= j;
    case 'L':
    case 'l':
        return i >= j;
    default:
        return true;
    }
}

template <class T> void expect_copies(char uplo, i64 m, i64 n, i64 padding, i64 shift)
{
    SCOPED_TRACE(std::string("lacpy ") + letter<T> + ' ' + uplo + " m=" + std::to_string(m) +
                 " n=" + std::to_string(n));
    Random random(m * 100 + n);
    const T alpha = random.value<T>(), beta = random.value<T>();
    const i64 lda = max(m, 1) + padding, ldb = max(m, 1) + 2 * padding;
    i64 count = 0;
    for (i64 j = 0; j < n; ++j)
        for (i64 i = 0; i < m; ++i) count += in_part(uplo, i, j);
    const auto size = [&](i64 ld) { return m > 0 && n > 0 ? (n - 1) * ld + m : 0; };
    const Guarded<T> a(size(lda), Edge::end, shift), b(size(ldb)), packed(count, Edge::end, 2 * shift);
    random.fill(b);
    for (i64 j = 0; j < n; ++j) // all that is not to be read stays NaN
        for (i64 i = 0; i < m; ++i)
            if (in_part(uplo, i, j)) a[i + j * lda] = random.value<T>();
    random.fill(packed);
    const std::vector<T> b_before(b.begin(), b.end()), packed_before(packed.begin(), packed.end());

    kernel<Lacpy2<T>>("lapack_ps", named<T>("lacpy2"))(&uplo, &m, &n, a.data(), &lda, &alpha, b.data(), &ldb, &beta);
    kernel<Lacpy3<T>>("lapack_ps", named<T>("lacpy3"))(&uplo, &m, &n, a.data(), &lda, &alpha, packed.data(), &beta);

    i64 next = 0;
    for (i64 j = 0; j < n; ++j)
        for (i64 i = 0; i < (j + 1 < n ? ldb : m) && m > 0; ++i) {
            const T before = b_before[i + j * ldb];
            const bool part = i < m && in_part(uplo, i, j);
            const T expected = part ? alpha * a[i + j * lda] + beta * before : before;
            ASSERT_EQ(std::memcmp(&expected, &b[i + j * ldb], sizeof(T)), 0) << i << ',' << j;
            if (!part) continue;
            const T in_line = alpha * a[i + j * lda] + beta * packed_before[next];
            ASSERT_EQ(std::memcmp(&in_line, &packed[next], sizeof(T)), 0) << "packed " << i << ',' << j;
            ++next;
        }
}

template <class T> void expect_copies()
{
    for (const char uplo : {'U', 'u', 'L', 'l', 'A', ' '})
        for (i64 m = 0; m <= 18; ++m)
            for (const i64 n : {0, 1, 2, 5, 17, 20}) {
                expect_copies<T>(uplo, m, n, m % 3, n % 2);
                if (testing::Test::HasFatalFailure()) return;
            }
}

TEST(Lacpy, combines_the_named_part_and_leaves_the_rest)
{
    expect_copies<float>();
    expect_copies<double>();
    expect_copies<cpx<float>>();
    expect_copies<cpx<double>>();
}

TEST(Lacpy, lets_a_nan_of_the_target_through_a_beta_of_zero)
{
    const i64 m = 3, n = 1;
    const double a[3] = {1, 2, 3}, alpha = 2, beta = 0;
    double b[3] = {NAN, 5, 7};
    kernel<Lacpy2<double>>("lapack_ps", "dlacpy2")("A", &m, &n, a, &m, &alpha, b, &m, &beta);
    EXPECT_TRUE(std::isnan(b[0]));
    EXPECT_EQ(b[1], 4);
    EXPECT_EQ(b[2], 6);
}

using C = cpx<float>;

void spr(char uplo, i64 n, C alpha, const C* x, i64 inc, C* a) { kernel<cspr>()(&uplo, &n, &alpha, x, &inc, a); }

TEST(Cspr, adds_the_product_without_conjugation_and_skips_zeros)
{
    for (const char uplo : {'U', 'u', 'L', 'l'})
        for (i64 n = 0; n <= 11; ++n)
            for (const i64 inc : {1, 2, -1, -3}) {
                SCOPED_TRACE(std::string("cspr ") + uplo + " n=" + std::to_string(n) + " inc=" + std::to_string(inc));
                Random random(n);
                Strided<C> x(n, inc);
                x.fill(random);
                if (n > 3) x(2) = {0, 0};
                const C alpha = {0.5f, -0.75f};
                const Guarded<C> a(n * (n + 1) / 2);
                random.fill(a);
                std::vector<C> expected(a.begin(), a.end());
                i64 next = 0;
                for (i64 j = 0; j < n; ++j)
                    for (i64 i = (uplo & 0xdf) == 'U' ? 0 : j; i < ((uplo & 0xdf) == 'U' ? j + 1 : n); ++i, ++next)
                        if (x(j) != C{0, 0}) expected[next] += x(i) * (alpha * x(j));
                spr(uplo, n, alpha, x.data(), inc, a.data());
                for (i64 e = 0; e < next; ++e) ASSERT_TRUE(a[e] == expected[e]) << e;
            }
}

TEST(Cspr, leaves_a_column_whose_element_of_x_is_zero)
{
    const C x[3] = {{NAN, 0}, {0, -0.0f}, {1, 1}};
    for (const char uplo : {'U', 'L'}) {
        const Guarded<C> a(6);
        std::fill(a.begin(), a.end(), C{2, 3});
        spr(uplo, 3, {1, 0}, x, 1, a.data());
        for (i64 e = 0; e < 6; ++e) { // the middle column is elements 1 and 2 of the upper, 3 and 4 of the lower one
            const bool middle = uplo == 'U' ? e == 1 || e == 2 : e == 3 || e == 4;
            if (middle) {
                EXPECT_TRUE((a[e] == C{2, 3})) << uplo << e;
            }
        }
        EXPECT_TRUE(a[0] != a[0]);
    }
}

TEST(Cspr, leaves_the_matrix_for_an_alpha_of_zero)
{
    const C x[2] = {{NAN, 1}, {1, NAN}};
    C a[3] = {{1, 2}, {3, 4}, {5, 6}};
    spr('U', 2, {0, -0.0f}, x, 1, a);
    EXPECT_TRUE((a[0] == C{1, 2} && a[1] == C{3, 4} && a[2] == C{5, 6}));
    spr('U', 2, {0, 1}, x, 1, a);
    EXPECT_TRUE(a[0] != a[0]);
}

} // namespace
} // namespace orv::test
