// Matrices on several threads: the same bits, and no team for little work.
#include "tests/core/routines.h"
#include "tests/core/teams.h"
#include "tests/support/bounds.h"
#include "tests/support/probe.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace orv;
using namespace orv::test;

namespace {

struct Shape {
    i64 m, n, k;
    bool shared; // by more than one thread, if there are more
};

// The whole of C, padding included, as one thread and as several compute it.
template <class T> void same_bits(const Shape& shape, char transa, char transb, T beta)
{
    const auto [m, n, k, shared] = shape;
    SCOPED_TRACE(std::string("gemm ") + letter<T> + " " + transa + transb + " m=" + std::to_string(m) +
                 " n=" + std::to_string(n) + " k=" + std::to_string(k));
    const i64 lda = (transa == 'N' ? m : k) + 1, ldb = (transb == 'N' ? k : n) + 3, ldc = m + 2;
    const auto a = random_elements<T>(lda * (transa == 'N' ? k : m), 1);
    const auto b = random_elements<T>(ldb * (transb == 'N' ? n : k), 2), start = random_elements<T>(ldc * n, 3);
    const T alpha = Random(4).value<T>();

    const auto product = [&](int threads) {
        EXPECT_EQ(orv_set_thread_num_threads(threads), ORV_OK);
        auto c = start;
        teams = 0;
        EXPECT_EQ(gemm<T>(transa, transb, m, n, k, alpha, a.data(), lda, b.data(), ldb, beta, c.data(), ldc), ORV_OK);
        EXPECT_EQ(teams, shared && threads > 1 ? 1 : 0) << threads << " threads";
        return c;
    };
    const auto alone = product(1);
    for (const int threads : {2, 3, 4})
        EXPECT_EQ(std::memcmp(product(threads).data(), alone.data(), alone.size() * sizeof(T)), 0)
            << threads << " threads";
    orv_set_thread_num_threads(0);
}

template <class T> void gemm_of(std::initializer_list<Shape> shapes)
{
    for (const Shape& shape : shapes) {
        same_bits<T>(shape, 'N', 'N', zero<T>);
        same_bits<T>(shape, 'T', 'C', element<T>::make(0.5));
        if (testing::Test::HasFailure()) return;
    }
}

// Leftovers of every granule, both ways of cutting, the plain path (few rows, few columns, little depth), rank one, a
// depth of several blocks, more columns than a block holds.
TEST(BlasThreads, gemm_gives_the_same_bits_on_any_number_of_threads)
{
    gemm_of<float>({{203, 209, 217, true},
                    {21, 5011, 90, true},
                    {1301, 3, 2100, true},
                    {3, 1301, 2100, true},
                    {2049, 2055, 3, true},
                    {97, 99, 900, true}});
    gemm_of<double>({{161, 167, 179, true},
                     {17, 5011, 60, true},
                     {1301, 7, 610, true},
                     {1, 3001, 1400, true},
                     {2049, 1055, 3, true},
                     {2049, 2055, 1, true},
                     {97, 99, 520, true}});
    gemm_of<cpx<float>>({{129, 131, 135, true},
                         {17, 5011, 30, true},
                         {1301, 3, 610, true},
                         {1, 1301, 1700, true},
                         {1049, 1055, 3, true},
                         {97, 99, 270, true}});
    gemm_of<cpx<double>>({{101, 107, 103, true},
                          {17, 2011, 31, true},
                          {1301, 3, 310, true},
                          {1, 1301, 900, true},
                          {749, 755, 3, true},
                          {69, 71, 270, true}});
}

TEST(BlasThreads, small_products_wake_no_team)
{
    gemm_of<float>({{10, 10, 10, false}, {100, 100, 100, false}, {199, 200, 200, false}});
    gemm_of<double>({{10, 10, 10, false}, {100, 100, 100, false}, {158, 158, 158, false}});
    gemm_of<cpx<float>>({{100, 100, 100, false}});
    gemm_of<cpx<double>>({{99, 100, 100, false}});
}

// A part that no granule fits in would be no part.
TEST(BlasThreads, a_small_result_of_great_depth_stays_whole) { gemm_of<double>({{31, 31, 5000, false}}); }

// Rows times columns that are just enough for a team of two.
template <class T> constexpr i64 worth_sharing = (i64(8) << 20) / i64(sizeof(T));

template <class T> void matrix_and_vectors()
{
    const T alpha = Random(4).value<T>(), beta = element<T>::make(0.5);
    const i64 most = worth_sharing<float> / 150 + 2;
    const auto x = random_elements<T>(3 * most, 2), v = random_elements<T>(3 * most, 3);
    for (const i64 m : {i64(203), worth_sharing<T> / 150 + 1}) {
        const i64 n = worth_sharing<T> / m + 1, lda = m + 3;
        const auto a = random_elements<T>(lda * n, 1);
        const std::string size = " m=" + std::to_string(m) + " n=" + std::to_string(n);
        for (const i64 inc : {1, -3})
            for (const char trans : {'N', 'T', 'C'})
                expect_same_bits<T>(std::string("gemv ") + trans + size, v, true, [&](T* y) {
                    return gemv<T>(trans, m, n, alpha, a.data(), lda, x.data(), inc, beta, y, inc);
                });
        for (const i64 inc : {1, -3})
            expect_same_bits<T>("ger" + size, a, true,
                                [&](T* to) { return gerc<T>(m, n, alpha, x.data(), inc, v.data(), inc, to, lda); });
    }
    const i64 n = worth_sharing<T> / 201;
    const auto a = random_elements<T>(200 * n, 1);
    expect_same_bits<T>("small gemv", v, false,
                        [&](T* y) { return gemv<T>('N', 200, n, alpha, a.data(), 200, x.data(), 1, beta, y, 1); });
}

// The order of a triangle that is just enough for a team of two.
template <class T> i64 triangle_worth_sharing()
{
    i64 n = 1;
    while (n * n < 2 * worth_sharing<T>) ++n;
    return n;
}

template <class T> void updates_of_triangles()
{
    const i64 n = triangle_worth_sharing<T>(), lda = n + 3;
    const auto a = random_elements<T>(lda * n, 1), x = random_elements<T>(3 * n, 2), y = random_elements<T>(3 * n, 3);
    for (const char uplo : {'U', 'l'})
        for (const i64 inc : {1, -3}) {
            expect_same_bits<T>(std::string("syr ") + uplo, a, !is_complex<T>,
                                [&](T* to) { return her<T>(uplo, n, real_t<T>(-1.5), x.data(), inc, to, lda); });
            expect_same_bits<T>(std::string("syr2 ") + uplo, a, !is_complex<T>, [&](T* to) {
                return her2<T>(uplo, n, element<T>::make(0.75), x.data(), inc, y.data(), inc, to, lda);
            });
        }
}

TEST(BlasThreads, matrices_and_vectors_give_the_same_bits_on_any_number_of_threads)
{
    matrix_and_vectors<float>(), matrix_and_vectors<double>();
    matrix_and_vectors<cpx<float>>(), matrix_and_vectors<cpx<double>>();
}

TEST(BlasThreads, updates_of_triangles_give_the_same_bits_on_any_number_of_threads)
{
    updates_of_triangles<float>(), updates_of_triangles<double>();
    updates_of_triangles<cpx<float>>(), updates_of_triangles<cpx<double>>();
}

template <class T> struct Hermitian {
    i64 n, lda;
    std::vector<T> a; // the other triangle, padding and what else is not to be read are NaN

    Hermitian(char uplo, i64 n) : n(n), lda(n + 3), a(random_elements<T>(lda * n, 1))
    {
        const auto nan = std::numeric_limits<real_t<T>>::quiet_NaN();
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < lda; ++i) {
                T& e = a[static_cast<std::size_t>(i + j * lda)];
                if (i >= n || (uplo == 'U' ? i > j : i < j)) e = element<T>::make(nan);
                if constexpr (is_complex<T>)
                    if (i == j) e.im = nan;
            }
    }
};

// Orders that are not worth a team, that are cut in two pieces, and in more; `least` threads and more agree.
template <class T> void symmetric_products(int least, bool with_team)
{
    const T alpha = Random(4).value<T>(), beta = element<T>::make(0.5);
    const i64 worth = triangle_worth_sharing<T>();
    for (const char uplo : {'U', 'l'})
        for (const i64 n : {worth - 1, worth, worth * 5 / 3}) {
            const Hermitian<T> h(fold(uplo), n);
            const auto x = random_elements<T>(3 * n, 2), y = random_elements<T>(3 * n, 3);
            for (const i64 inc : {1, -3})
                expect_same_bits<T>(
                    std::string("symv ") + uplo + " n=" + std::to_string(n), y, with_team && n >= worth,
                    [&](T* to) { return hemv<T>(uplo, n, alpha, h.a.data(), h.lda, x.data(), inc, beta, to, inc); },
                    least);
        }
}

TEST(BlasThreads, symmetric_products_give_the_same_bits_in_teams_of_any_size)
{
    symmetric_products<float>(2, true), symmetric_products<double>(2, true);
    symmetric_products<cpx<float>>(2, true), symmetric_products<cpx<double>>(2, true);
}

TEST(BlasThreads, reproducible_symmetric_products_give_the_same_bits_on_any_number_of_threads)
{
    orv_set_reproducible(1);
    symmetric_products<float>(1, false), symmetric_products<double>(1, false);
    orv_set_reproducible(0);
}

template <class T> void large_symmetric_product(char uplo, i64 incx, i64 incy, bool without_memory)
{
    SCOPED_TRACE(std::string("symv ") + letter<T> + uplo + " incx=" + std::to_string(incx) +
                 " incy=" + std::to_string(incy) + (without_memory ? " without memory" : ""));
    const i64 n = triangle_worth_sharing<T>();
    const Hermitian<T> h(uplo, n);
    const auto at = [n](i64 i, i64 inc) { return static_cast<std::size_t>(inc < 0 ? (i - n + 1) * inc : i * inc); };
    const auto x = random_elements<T>(3 * n, 2), start = random_elements<T>(3 * n, 3);
    const T alpha = Random(4).value<T>(), beta = Random(5).value<T>();
    auto y = start;
    const auto multiply = [&] {
        return hemv<T>(uplo, n, alpha, h.a.data(), h.lda, x.data(), incx, beta, y.data(), incy);
    };
    orv_set_thread_num_threads(2);
    teams = 0;
    if (without_memory) {
        ProbeScope scope;
        scope->fail_all = true;
        ASSERT_EQ(multiply(), ORV_OK);
        EXPECT_EQ(scope->failed, 1);
    } else ASSERT_EQ(multiply(), ORV_OK);
    EXPECT_EQ(teams, without_memory ? 0 : 1);
    orv_set_thread_num_threads(0);
    std::vector<std::conditional_t<is_complex<T>, ComplexEntry, Entry>> sums(static_cast<std::size_t>(n));
    const auto add = [&](i64 to, T a, i64 from) {
        auto& sum = sums[static_cast<std::size_t>(to)];
        const T f = x[at(from, incx)];
        if constexpr (is_complex<T>) sum.add(a.re, a.im, f.re, f.im);
        else sum.add(static_cast<long double>(a) * f);
    };
    for (i64 j = 0; j < n; ++j)
        for (i64 i = uplo == 'U' ? 0 : j; i < (uplo == 'U' ? j + 1 : n); ++i) {
            T a = h.a[static_cast<std::size_t>(i + j * h.lda)];
            if constexpr (is_complex<T>)
                if (i == j) a.im = 0;
            add(i, a, j);
            if (i != j) add(j, conj(a), i);
        }
    long double worst = 0;
    for (i64 i = 0; i < n; ++i) {
        const auto& sum = sums[static_cast<std::size_t>(i)];
        const T old = start[at(i, incy)], now = y[at(i, incy)];
        const auto roundings = static_cast<long double>(2 * n + 8);
        if constexpr (is_complex<T>) {
            ComplexEntry e;
            e.add(alpha.re, alpha.im, sum.re.exact, sum.im.exact), e.add(beta.re, beta.im, old.re, old.im);
            const long double magnitude =
                (std::fabs(alpha.re) + std::fabs(alpha.im)) * (sum.re.magnitude + sum.im.magnitude) + e.re.magnitude +
                e.im.magnitude;
            e.re.magnitude = e.im.magnitude = magnitude;
            e.re.roundings = e.im.roundings = roundings;
            worst = std::max(worst, excess(now, e));
        } else {
            Entry e;
            e.add(static_cast<long double>(alpha) * sum.exact), e.add(static_cast<long double>(beta) * old);
            e.magnitude += std::fabs(static_cast<long double>(alpha)) * sum.magnitude, e.roundings = roundings;
            worst = std::max(worst, excess(now, e));
        }
    }
    EXPECT_LE(worst, 1);
}

TEST(BlasThreads, large_symmetric_products_read_one_triangle_and_need_no_memory)
{
    for (const bool without_memory : {false, true})
        for (const char uplo : {'U', 'L'}) {
            large_symmetric_product<float>(uplo, 1, 1, without_memory);
            large_symmetric_product<double>(uplo, 1, -2, without_memory);
            large_symmetric_product<cpx<float>>(uplo, 3, 1, without_memory);
            large_symmetric_product<cpx<double>>(uplo, -2, 3, without_memory);
        }
}

TEST(BlasThreads, a_bad_argument_wakes_no_team)
{
    std::vector<double> c(1, 1);
    orv_set_thread_num_threads(2);
    teams = 0;
    EXPECT_EQ(orv_dgemm('N', 'N', 1000, 1000, 1000, 1, c.data(), 999, c.data(), 1000, 0, c.data(), 1000), -8);
    EXPECT_EQ(teams, 0);
    EXPECT_EQ(c[0], 1);
    orv_set_thread_num_threads(0);
}

} // namespace
