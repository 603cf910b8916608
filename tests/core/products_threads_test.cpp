// Products of matrices on several threads: the same bits, the right numbers, and nothing read or written that is not to
// be. Sizes are just enough for a team, with leftovers of every granule.
#include "tests/core/routines.h"
#include "tests/core/teams.h"
#include "tests/support/by_vector.h"
#include "tests/support/probe.h"

#include <limits>

using namespace orv;
using namespace orv::test;

namespace {

// Multiplications that are worth a team of two.
template <class T>
constexpr double worth_sharing = 32e6 / static_cast<double>(sizeof(real_t<T>)) / (is_complex<T> ? 4 : 1);

std::string size(i64 m, i64 n) { return " " + std::to_string(m) + " by " + std::to_string(n); }

struct Sizes {
    i64 order, others;
};
// Just worth sharing; with a long side that leaves three columns or rows behind the sweeps that kernels make over 1000
// columns (side L) or 512 rows.
template <class T> std::vector<Sizes> sizes(char side, double of_volume)
{
    const auto others = [&](i64 order) {
        return static_cast<i64>(of_volume * worth_sharing<T> / static_cast<double>(order * order)) + 1;
    };
    return {{131, max(others(131), 165)}, {331, i64(fold(side) == 'L' ? 1003 : 1027)}};
}

template <class T, class Routine> void triangular(const char* name, Routine* routine, bool solves)
{
    const T alpha = Random(4).value<T>();
    for (const char side : {'L', 'r'})
        for (const auto [order, others] : sizes<T>(side, 2))
            for (const char uplo : {'U', 'l'})
                for (const char trans : {'N', 't', 'C'})
                    for (const char diag : {'N', 'u'}) {
                        if (others > 1000 && (diag == 'u' || trans == 't' || uplo == 'l')) continue;
                        const bool left = side == 'L';
                        const Half<T> a = triangle<T>(uplo, diag, order);
                        const Matrix<T> b(left ? order : others, left ? others : order, 2);
                        const std::string text = std::string(name) + ' ' + side + uplo + trans + diag + size(b.m, b.n);
                        const auto x = b.with(expect_same_bits<T>(
                            text, b.elements, true,
                            [&](T* to) {
                                return routine(side, uplo, trans, diag, b.m, b.n, alpha, a.data(), a.ld, to, b.ld);
                            },
                            1, 4));
                        SCOPED_TRACE(text);
                        const auto v = WideVector::random(b.n);
                        const auto multiplied = [&](const Matrix<T>& y) {
                            return left ? a.times_triangle(trans, y.times(v)) : y.times(a.times_triangle(trans, v));
                        };
                        if (solves) expect_equal<T>(multiplied(x), b.times(v).times(wide(alpha)), order);
                        else expect_equal<T>(x.times(v), multiplied(b).times(wide(alpha)), order);
                        if (testing::Test::HasFailure()) return;
                    }
}

template <class T, class Routine> void symmetric_product(const char* name, Routine* routine, bool hermitian)
{
    const T alpha = Random(4).value<T>(), beta = Random(5).value<T>();
    for (const char side : {'L', 'r'})
        for (const auto [order, others] : sizes<T>(side, 1))
            for (const char uplo : {'U', 'l'}) {
                const bool left = side == 'L';
                const Half<T> a(uplo, order, 1, hermitian);
                const Matrix<T> b(left ? order : others, left ? others : order, 2), c(b.m, b.n, 3);
                const std::string text = std::string(name) + ' ' + side + uplo + size(b.m, b.n);
                const auto x = c.with(expect_same_bits<T>(
                    text, c.elements, true,
                    [&](T* to) {
                        return routine(side, uplo, b.m, b.n, alpha, a.data(), a.ld, b.data(), b.ld, beta, to, c.ld);
                    },
                    1, 4));
                SCOPED_TRACE(text);
                const auto v = WideVector::random(b.n);
                const auto ab = left ? a.times_whole(b.times(v)) : b.times(a.times_whole(v));
                expect_equal<T>(x.times(v), ab.times(wide(alpha)).plus(c.times(v).times(wide(beta))), order);
                if (testing::Test::HasFailure()) return;
            }
}

constexpr char transposed(char op, bool hermitian) { return fold(op) != 'N' ? 'N' : hermitian ? 'C' : 'T'; }

// Groups of the least height, the last one small, or a single row; and of more.
template <class T> std::vector<Sizes> update_sizes(double of_volume)
{
    const auto depth = [&](i64 n) {
        return static_cast<i64>(of_volume * worth_sharing<T> / static_cast<double>(n * n)) + 1;
    };
    return {{203, depth(203)}, {193, depth(193)}, {1301, max(depth(1301), 5)}};
}

template <class T, class F, class Routine>
void update_by_one(const char* name, Routine* routine, const char* letters, F alpha, F beta)
{
    constexpr bool hermitian = !std::is_same_v<T, F>;
    for (const auto [n, k] : update_sizes<T>(2))
        for (const char uplo : {'U', 'l'})
            for (const char* trans = letters; *trans != '\0'; ++trans) {
                const bool plain = fold(*trans) == 'N';
                const Matrix<T> a(plain ? n : k, plain ? k : n, 1);
                const Half<T> c(uplo, n, 3, hermitian);
                const std::string text = std::string(name) + ' ' + uplo + *trans + size(n, k);
                const auto x = c.with(expect_same_bits<T>(
                    text, c.elements, true,
                    [&](T* to) { return routine(uplo, *trans, n, k, alpha, a.data(), a.ld, beta, to, c.ld); }, 1, 4));
                SCOPED_TRACE(text);
                EXPECT_TRUE(x.leaves_the_rest(c));
                const auto v = WideVector::random(n);
                const char first = plain ? 'N' : hermitian ? 'C' : 'T';
                const auto added = a.times(first, a.times(transposed(first, hermitian), v)).times(wide(alpha));
                expect_equal<T>(x.times_whole(v), added.plus(c.times_whole(v).times(wide(beta))), k);
                if (testing::Test::HasFailure()) return;
                if (n > 1000) break;
            }
}

template <class T, class F, class Routine>
void update_by_two(const char* name, Routine* routine, const char* letters, T alpha, F beta)
{
    constexpr bool hermitian = !std::is_same_v<T, F>;
    for (const auto [n, k] : update_sizes<T>(1))
        for (const char uplo : {'U', 'l'})
            for (const char* trans = letters; *trans != '\0'; ++trans) {
                const bool plain = fold(*trans) == 'N';
                const Matrix<T> a(plain ? n : k, plain ? k : n, 1), b(a.m, a.n, 2);
                const Half<T> c(uplo, n, 3, hermitian);
                const std::string text = std::string(name) + ' ' + uplo + *trans + size(n, k);
                const auto x = c.with(expect_same_bits<T>(
                    text, c.elements, true,
                    [&](T* to) {
                        return routine(uplo, *trans, n, k, alpha, a.data(), a.ld, b.data(), b.ld, beta, to, c.ld);
                    },
                    1, 4));
                SCOPED_TRACE(text);
                EXPECT_TRUE(x.leaves_the_rest(c));
                const auto v = WideVector::random(n);
                const char first = plain ? 'N' : hermitian ? 'C' : 'T', second = transposed(first, hermitian);
                const auto added =
                    a.times(first, b.times(second, v))
                        .times(wide(alpha))
                        .plus(b.times(first, a.times(second, v)).times(wide(hermitian ? conjugated(alpha) : alpha)));
                expect_equal<T>(x.times_whole(v), added.plus(c.times_whole(v).times(wide(beta))), 2 * k);
                if (testing::Test::HasFailure()) return;
                if (n > 1000) break;
            }
}

template <class T> class ProductsOnThreads : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(ProductsOnThreads, Types);

TYPED_TEST(ProductsOnThreads, trmm_gives_the_same_bits) { triangular<TypeParam>("trmm", trmm<TypeParam>, false); }
TYPED_TEST(ProductsOnThreads, trsm_gives_the_same_bits) { triangular<TypeParam>("trsm", trsm<TypeParam>, true); }

TYPED_TEST(ProductsOnThreads, symmetric_products_give_the_same_bits)
{
    using T = TypeParam;
    symmetric_product<T>("symm", symm<T>, false);
    if constexpr (is_complex<T>) symmetric_product<T>("hemm", hemm<T>, true);
}

TYPED_TEST(ProductsOnThreads, symmetric_updates_give_the_same_bits)
{
    using T = TypeParam;
    using R = real_t<T>;
    const T alpha = Random(4).value<T>(), beta = Random(5).value<T>();
    const char* const letters = is_complex<T> ? "NT" : "NtC";
    update_by_one<T>("syrk", syrk<T>, letters, alpha, beta);
    update_by_two<T>("syr2k", syr2k<T>, letters, alpha, beta);
    if constexpr (is_complex<T>) {
        update_by_one<T>("herk", herk<T>, "Nc", R(1.5), R(-0.75));
        update_by_two<T>("her2k", her2k<T>, "Nc", alpha, R(-0.75));
    }
}

// A beta of 0 does not read C, also where it is the first of two products that stores.
TYPED_TEST(ProductsOnThreads, updates_that_replace_do_not_read)
{
    using T = TypeParam;
    const auto [n, k] = update_sizes<T>(2)[0];
    const Matrix<T> a(n, k, 1);
    Half<T> c('L', n, 3);
    for (T& e : c.elements) e = c.nan();
    for (const bool twice : {false, true}) {
        const auto x = c.with(expect_same_bits<T>(twice ? "syr2k" : "syrk", c.elements, true, [&](T* to) {
            return twice ? syr2k<T>('L', 'N', n, k, one<T>, a.data(), a.ld, a.data(), a.ld, zero<T>, to, c.ld)
                         : syrk<T>('L', 'N', n, k, one<T>, a.data(), a.ld, zero<T>, to, c.ld);
        }));
        for (i64 j = 0; j < n; ++j)
            for (i64 i = j; i < n; ++i) ASSERT_EQ(x.at(i, j), x.at(i, j)) << i << ',' << j;
    }
}

template <class T> class ComplexProductsOnThreads : public testing::Test {
};
using ComplexTypes = testing::Types<cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(ComplexProductsOnThreads, ComplexTypes);

struct Shape {
    i64 m, n, k;
};

template <class T, class A, class Routine>
void general(const std::string& name, Routine* routine, const Shape& s, const char* letters, bool shared,
             bool bound_by_norms)
{
    const T alpha = Random(4).value<T>(), beta = Random(5).value<T>();
    const auto stored = [](char op, i64 rows, i64 columns, auto make) {
        return fold(op) == 'N' ? make(rows, columns) : make(columns, rows);
    };
    const auto a = stored(letters[0], s.m, s.k, [](i64 m, i64 n) { return Matrix<A>(m, n, 1); });
    const auto b = stored(letters[1], s.k, s.n, [](i64 m, i64 n) { return Matrix<T>(m, n, 2); });
    const Matrix<T> c(s.m, s.n, 3);
    const std::string text = name + ' ' + letters + size(s.m, s.n) + " by " + std::to_string(s.k);
    const auto x = c.with(expect_same_bits<T>(
        text, c.elements, shared,
        [&](T* to) {
            return routine(letters[0], letters[1], s.m, s.n, s.k, alpha, a.data(), a.ld, b.data(), b.ld, beta, to,
                           c.ld);
        },
        1, 4));
    SCOPED_TRACE(text);
    const auto v = WideVector::random(s.n);
    auto expected = a.times(letters[0], b.times(letters[1], v)).times(wide(alpha)).plus(c.times(v).times(wide(beta)));
    // Three real products are as exact as the sums of all parts.
    if (bound_by_norms)
        for (long double& magnitude : expected.magnitude) magnitude *= 3;
    expect_equal<T>(x.times(v), expected, s.k);
}

TYPED_TEST(ComplexProductsOnThreads, three_real_products_give_the_same_bits)
{
    using T = TypeParam;
    for (const Shape& s : {Shape{165, 167, 183}, {9, 2003, 293}, {1011, 21, 295}})
        for (const char* letters : {"NN", "Tc", "CT"}) general<T, T>("gemm3m", gemm3m<T>, s, letters, true, true);
}

// Blocks with leftovers of few rows, few columns and little depth at once.
TYPED_TEST(ComplexProductsOnThreads, three_real_products_stay_on_one_thread_where_that_alone_is_reproducible)
{
    using T = TypeParam;
    for (const i64 k : {129, 138}) {
        orv_set_reproducible(1);
        general<T, T>("gemm3m", gemm3m<T>, {1003, 1005, k}, "NN", false, true);
        orv_set_reproducible(0);
        const Matrix<T> a(1003, k, 1), b(k, 1005, 2), c(1003, 1005, 3);
        on_threads<T>(2, true, c.elements, [&](T* to) {
            return gemm3m<T>('N', 'N', c.m, c.n, k, one<T>, a.data(), a.ld, b.data(), b.ld, one<T>, to, c.ld);
        });
    }
    orv_set_reproducible(1);
    general<T, T>("gemm3m", gemm3m<T>, {1003, 1005, 139}, "NN", true, true);
    orv_set_reproducible(0);
}

TYPED_TEST(ComplexProductsOnThreads, mixed_products_give_the_same_bits)
{
    using T = TypeParam;
    for (const Shape& s : {Shape{165, 167, 303}, {3, 2003, 1400}, {1011, 21, 400}, {503, 5003, 9}})
        for (const char* letters : {"NN", "Tc", "CT"}) {
            if (s.n > 5000 && letters[0] != 'N') continue;
            general<T, real_t<T>>("mixed", mixed<T>, s, letters, true, false);
        }
}

// Too small to share, or with nothing to multiply.
TEST(ProductsOnThreads, little_work_wakes_no_team)
{
    constexpr i64 n = 200, k = 99;
    const auto a = random_elements<double>(n * n, 1), c = random_elements<double>(n * n, 2);
    const auto expect_alone = [&](const char* name, auto call) {
        SCOPED_TRACE(name);
        on_threads<double>(2, false, c, call);
    };
    expect_alone("trsm", [&](double* to) { return orv_dtrsm('L', 'U', 'N', 'U', n, n - 1, 1e-3, a.data(), n, to, n); });
    expect_alone("trmm", [&](double* to) { return orv_dtrmm('R', 'U', 'N', 'U', n - 1, n, 1e-3, a.data(), n, to, n); });
    expect_alone("symm", [&](double* to) { return orv_dsymm('L', 'U', n, k, 1, a.data(), n, a.data(), n, 1, to, n); });
    expect_alone("syrk", [&](double* to) { return orv_dsyrk('U', 'N', n, n - 1, 1, a.data(), n, 1, to, n); });
    expect_alone("syr2k",
                 [&](double* to) { return orv_dsyr2k('U', 'N', n, k, 1, a.data(), n, a.data(), n, 1, to, n); });
    expect_alone("alpha = 0", [&](double* to) { return orv_dsyrk('U', 'N', n, 1000 * n, 0, nullptr, n, 2, to, n); });
    expect_alone("few columns",
                 [&](double* to) { return orv_dtrsm('L', 'U', 'N', 'U', n, 63, 1e-3, a.data(), n, to, n); });
}

// Alone a solve gives up without memory; members of a team go on without.
TYPED_TEST(ProductsOnThreads, a_team_without_memory_computes_all_the_same)
{
    using T = TypeParam;
    const auto [order, others] = sizes<T>('L', 2)[0];
    const T alpha = Random(4).value<T>();
    for (const bool solves : {false, true})
        for (const char side : {'L', 'R'})
            for (const char trans : {'N', 'T', 'C'})
                for (const i64 fail_at : {-1, 0, 1}) {
                    const bool left = side == 'L';
                    const auto routine = solves ? trsm<T> : trmm<T>;
                    const Half<T> a = triangle<T>('U', 'N', order);
                    const Matrix<T> b(left ? order : others, left ? others : order, 2);
                    SCOPED_TRACE(std::string(solves ? "trsm " : "trmm ") + side + trans + std::to_string(fail_at));
                    ProbeScope service;
                    service->fail_at = fail_at, service->fail_all = fail_at < 0;
                    const auto x = b.with(on_threads<T>(2, true, b.elements, [&](T* to) {
                        return routine(side, 'U', trans, 'N', b.m, b.n, alpha, a.data(), a.ld, to, b.ld);
                    }));
                    EXPECT_GE(service->failed, 1);
                    EXPECT_EQ(service->live, 0);
                    const auto v = WideVector::random(b.n);
                    const auto multiplied = [&](const Matrix<T>& y) {
                        return left ? a.times_triangle(trans, y.times(v)) : y.times(a.times_triangle(trans, v));
                    };
                    if (solves) expect_equal<T>(multiplied(x), b.times(v).times(wide(alpha)), order);
                    else expect_equal<T>(x.times(v), multiplied(b).times(wide(alpha)), order);
                }
}

} // namespace
