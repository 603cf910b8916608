// Products with banded matrices: ?gbmv.
#include "frame/kernels/blas.h"
#include "tests/blas/matrix_vector.h"
#include "tests/support/probe.h"

#include <algorithm>

namespace orv::test {
namespace {

using namespace kernels::blas;

// m by n with kl diagonals below the main one and ku above, element (i, j) in row ku + i - j of column j of an array
// that ends at an unreadable page. Its corners and padding are NaN.
template <class T> struct Banded {
    i64 m, n, kl, ku, lda;
    Guarded<T> data;

    Banded(i64 m, i64 n, i64 kl, i64 ku, i64 pad, Random& random, Place place = {})
        : m(m), n(n), kl(kl), ku(ku), lda(kl + ku + 1 + pad),
          data(m > 0 && n > 0 ? static_cast<std::size_t>((n - 1) * lda + kl + ku + 1) : 0, place.edge,
               place.shift / sizeof(T))
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < m; ++i)
                if (is_stored(i, j)) data[offset(i, j)] = random.value<T>();
    }
    bool is_stored(i64 i, i64 j) const { return i - j <= kl && j - i <= ku; }
    T operator()(i64 i, i64 j) const { return is_stored(i, j) ? data[offset(i, j)] : zero<T>; }

private:
    std::size_t offset(i64 i, i64 j) const { return static_cast<std::size_t>(ku + i - j + j * lda); }
};

template <class T> void gbmv(char trans, const Banded<T>& a, T alpha, const T* x, i64 incx, T beta, T* y, i64 incy)
{
    static auto* f = kernel<Gbmv<T>>("blas", letter<T>, "gbmv");
    f(&trans, &a.m, &a.n, &a.kl, &a.ku, &alpha, a.data.data(), &a.lda, x, &incx, &beta, y, &incy);
}

// What a letter means: N, C for complex matrices, everything else T.
template <class T> char meaning(char trans)
{
    if (trans == 'N' || trans == 'n') return 'N';
    return is_complex<T> && (trans == 'C' || trans == 'c') ? 'C' : 'T';
}

template <class T> std::string problem(char trans, const Banded<T>& a, i64 incx, i64 incy)
{
    Line text = line<T>("gbmv", {trans});
    text.with("m", a.m).with("n", a.n).with("kl", a.kl).with("ku", a.ku).with("lda", a.lda);
    return text.with("incx", incx).with("incy", incy).text();
}

template <class T>
std::vector<Bounded> exact(char trans, const Banded<T>& a, T alpha, const std::vector<T>& x, T beta,
                           const std::vector<T>& y)
{
    std::vector<Bounded> result;
    const char op = meaning<T>(trans);
    for (i64 i = 0; i < static_cast<i64>(y.size()); ++i) {
        Bounded sum;
        for (i64 j = 0; j < static_cast<i64>(x.size()); ++j) {
            const T e = op == 'N' ? a(i, j) : a(j, i);
            sum += Bounded(op == 'C' ? conj(e) : e) * Bounded(x[j]);
        }
        Bounded total = beta == zero<T> ? Bounded() : Bounded(beta) * Bounded(y[i]);
        total += Bounded(alpha) * sum;
        result.push_back(total);
    }
    return result;
}

// Each element is a sum of as many products as the band is wide; copies of strided vectors add up to four sums more.
template <class T> i64 roundings(const Banded<T>& a)
{
    return product_roundings<T>(std::min(max(a.m, a.n), a.kl + a.ku + 1) + 4);
}

constexpr i64 strides[] = {1, -1, 2, -3};

// One matrix against every pair of strides: within the bound, and nothing else touched.
template <class T>
long double worst_error(char trans, const Banded<T>& a, T alpha, T beta, std::span<const i64> incs = strides)
{
    const bool plain = meaning<T>(trans) == 'N';
    const i64 lenx = plain ? a.n : a.m, leny = plain ? a.m : a.n;
    Random random(static_cast<std::uint64_t>(a.m * 1000 + a.n));
    std::vector<T> x(lenx), y(leny);
    random.fill(x), random.fill(y);
    const std::vector<Bounded> expected = exact(trans, a, alpha, x, beta, y);
    const std::vector<T> matrix(a.data.begin(), a.data.end());
    long double worst = 0;
    for (const i64 incx : incs)
        for (const i64 incy : incs) {
            SCOPED_TRACE(problem(trans, a, incx, incy));
            Strided<T> vx(lenx, incx), vy(leny, incy);
            const std::vector<std::byte> gaps = vy.bits();
            for (i64 i = 0; i < lenx; ++i) vx(i) = x[i];
            if (beta != zero<T>)
                for (i64 i = 0; i < leny; ++i) vy(i) = y[i];
            gbmv(trans, a, alpha, vx.data(), incx, beta, vy.data(), incy);
            for (i64 i = 0; i < leny; ++i) {
                const long double e = excess(vy(i), expected[i], roundings(a));
                EXPECT_LE(e, 1) << "element " << i;
                worst = std::max(worst, e);
                std::memset(static_cast<void*>(&vy(i)), 0xff, sizeof(T));
            }
            EXPECT_EQ(vy.bits(), gaps);
            if (testing::Test::HasFailure()) return worst;
        }
    EXPECT_TRUE(matrix.empty() || std::memcmp(matrix.data(), a.data.data(), matrix.size() * sizeof(T)) == 0);
    return worst;
}

template <class T> class GbmvTest : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(GbmvTest, Types);

constexpr char letters[] = {'N', 'n', 'T', 't', 'C', 'c', 'x'};

TYPED_TEST(GbmvTest, is_within_the_bound_at_all_small_sizes_strides_and_widths)
{
    using T = TypeParam;
    const T scalars[] = {scalar<T>(0.7, -1.3), one<T>, zero<T>};
    long double worst = 0;
    const auto at = [&](i64 m, i64 n, i64 kl, i64 ku, std::span<const i64> incs) {
        Random random(static_cast<std::uint64_t>(m + 100 * n));
        const Banded<T> a(m, n, kl, ku, (m + n) % 4, random);
        const i64 pick = (m + 2 * n + kl + ku) % 8; // of nine pairs all but zero and zero
        const char other = letters[(m + 3 * n) % 7];
        for (const char trans : {'N', 'T', 'C', other})
            if ((is_complex<T> || trans != 'C') && !testing::Test::HasFailure())
                worst = std::max(worst, worst_error(trans, a, scalars[pick / 3], scalars[pick % 3], incs));
    };
    constexpr i64 few[] = {1, -3}, sizes[] = {1, 2, 3, 4, 5, 8, 11}, all_widths[] = {0, 1, 2, 3, 5, 14};
    for (const i64 m : sizes)
        for (const i64 n : sizes)
            for (const i64 kl : all_widths)
                for (const i64 ku : all_widths) at(m, n, kl, ku, few);
    for (i64 n = 1; n <= 70; ++n)
        for (const i64 m : {n, n % 2 == 0 ? n + 7 : max(n - 7, 1)})
            for (const i64 k : {0, 1, 2, 5, 12, 70}) {
                at(m, n, k, (k * 3 + n) % 8, (n + k) % 3 == 0 ? std::span<const i64>(strides) : few);
                at(m, n, (k * 5 + m) % 8, k, few);
            }
    std::printf("%cgbmv: worst error %.2Lf of its bound\n", letter<T>, worst);
}

TYPED_TEST(GbmvTest, is_within_the_bound_across_blocks_and_windows)
{
    using T = TypeParam;
    constexpr i64 few[] = {1, -3};
    long double worst = 0;
    const auto at = [&](i64 m, i64 n, i64 kl, i64 ku) {
        Random random(static_cast<std::uint64_t>(m + n));
        const Banded<T> a(m, n, kl, ku, n % 3, random);
        for (const char trans : {'N', 'T', 'C'})
            worst = std::max(worst, worst_error(trans, a, scalar<T>(0.7, -1.3), scalar<T>(-0.4, 0.9), few));
    };
    for (const i64 n : {127, 128, 129, 200, 255, 256, 257})
        for (const i64 k : {5, 50, 130}) at(n, n, k, k / 2), at(n, n - 60, 2, k), at(n - 60, n, k, 3);
    for (const i64 n : {999, 1000, 1001}) at(n, n, 500, 5);
    // Rows in windows: 8192 bytes each.
    const i64 rows = 8192 / sizeof(T);
    at(rows + 300, 300, rows, 20), at(rows + 130, 200, 2 * rows, 9);
    std::printf("%cgbmv across blocks: worst error %.2Lf of its bound\n", letter<T>, worst);
}

TYPED_TEST(GbmvTest, reads_nothing_outside_its_operands_at_any_alignment)
{
    using T = TypeParam;
    const T alpha = scalar<T>(0.7, -1.3), beta = scalar<T>(-0.4, 0.9);
    for (const char trans : {'N', 'T', 'C'})
        for (const i64 m : {1, 4, 7, 30})
            for (const i64 n : {1, 5, 8, 31})
                for (const i64 k : {0, 1, 4, 9})
                    for (const Place& place : places<T>()) {
                        const Place other{place.edge, place.shift * 3 % 16};
                        Random random(static_cast<std::uint64_t>(m + n));
                        const Banded<T> a(m, n, k, k / 2, 1, random, place);
                        Strided<T> x(trans == 'N' ? n : m, 1, other), y(trans == 'N' ? m : n, 1, place);
                        x.fill(random), y.fill(random);
                        SCOPED_TRACE(problem(trans, a, 1, 1) + " shift=" + std::to_string(place.shift));
                        const i64 lenx = trans == 'N' ? n : m, leny = trans == 'N' ? m : n;
                        const std::vector<T> logical_x(x.data(), x.data() + lenx), logical_y(y.data(), y.data() + leny);
                        const std::vector<Bounded> expected = exact(trans, a, alpha, logical_x, beta, logical_y);
                        gbmv(trans, a, alpha, x.data(), 1, beta, y.data(), 1);
                        for (i64 i = 0; i < leny; ++i)
                            ASSERT_LE(excess(y(i), expected[i], roundings(a)), 1) << "element " << i;
                    }
}

TYPED_TEST(GbmvTest, applies_beta_and_reads_neither_a_nor_x_for_alpha_of_zero)
{
    using T = TypeParam;
    Random random;
    for (const char trans : {'N', 'T', 'C'})
        for (const i64 inc : {1, -1, 2, -3})
            for (i64 n = 1; n <= 30; ++n)
                for (const T beta : {zero<T>, scalar<T>(-0.4, 0.9)}) {
                    const Guarded<T> none(0);
                    const i64 m = n + 2, leny = trans == 'N' ? m : n, k = 1, lda = 3;
                    Strided<T> y(leny, inc); // all NaN
                    if (beta != zero<T>) y.fill(random);
                    Strided<T> expected(y, {});
                    for (i64 i = 0; i < leny; ++i) expected(i) = beta == zero<T> ? zero<T> : beta * expected(i);
                    const T alpha = zero<T>;
                    kernel<Gbmv<T>>("blas", letter<T>, "gbmv")(&trans, &m, &n, &k, &k, &alpha, none.data(), &lda,
                                                               none.data(), &inc, &beta, y.data(), &inc);
                    ASSERT_EQ(y.bits(), expected.bits()) << trans << ' ' << n << ' ' << inc;
                }
}

TYPED_TEST(GbmvTest, leaves_y_alone_when_there_is_nothing_to_do)
{
    using T = TypeParam;
    Random random;
    const Guarded<T> none(0);
    for (const char trans : {'N', 'T', 'C'}) {
        gbmv(trans, Banded<T>(0, 9, 1, 1, 0, random), one<T>, none.data(), 1, zero<T>, none.data(), 1);
        gbmv(trans, Banded<T>(9, 0, 1, 1, 0, random), one<T>, none.data(), 1, zero<T>, none.data(), 1);
        gbmv(trans, Banded<T>(9, 9, 1, 1, 0, random), zero<T>, none.data(), 1, one<T>, none.data(), 1);
    }
}

TYPED_TEST(GbmvTest, takes_no_memory)
{
    using T = TypeParam;
    Random random;
    const Banded<T> a(1500, 1400, 1200, 3, 0, random);
    Strided<T> x(1500, 2), y(1500, -3);
    x.fill(random), y.fill(random);
    ProbeScope scope;
    for (const char trans : {'N', 'T', 'C'}) {
        gbmv(trans, a, one<T>, x.data(), 2, zero<T>, y.data(), -3);
        gbmv(trans, a, one<T>, x.data(), 1, zero<T>, y.data(), 1);
    }
    EXPECT_EQ(scope->allocations, 0);
}

TEST(Line, of_gbmv_repeats_it)
{
    Random random;
    EXPECT_TRUE(repeats(problem('n', Banded<float>(9, 7, 2, 1, 3, random), 1, 2)));
    EXPECT_TRUE(repeats(problem('C', Banded<cpx<double>>(9, 7, 2, 1, 0, random), -1, 2)));
}

} // namespace
} // namespace orv::test
