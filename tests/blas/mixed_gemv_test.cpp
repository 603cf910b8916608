// Real matrix, complex vectors: dzgemv, scgemv and their helpers.
#include "frame/kernels/blas.h"
#include "tests/blas/matrix_vector.h"
#include "tests/support/probe.h"

#include <algorithm>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class R> constexpr const char* routine = sizeof(R) == 8 ? "dzgemv" : "scgemv";

template <class R> struct Product {
    using T = cpx<R>;
    char trans;
    Matrix<R> a;
    Strided<T> x, y;
    T alpha = scalar<T>(0.7, -1.3), beta = scalar<T>(-0.4, 0.9);

    Product(char trans, i64 m, i64 n, i64 incx, i64 incy)
        : trans(trans), a(m, n, m + n % 2), x(plain() ? n : m, incx), y(plain() ? m : n, incy)
    {
        Random random(static_cast<std::uint64_t>(m * 100 + n));
        a.fill(random), x.fill(random), y.fill(random);
    }
    bool plain() const { return trans == 'N' || trans == 'n'; }
    i64 lenx() const { return plain() ? a.n : a.m; }
    i64 leny() const { return plain() ? a.m : a.n; }
    std::string problem() const
    {
        return std::string(routine<R>) + ' ' + trans + " m=" + std::to_string(a.m) + " n=" + std::to_string(a.n) +
               " incx=" + std::to_string(x.inc()) + " incy=" + std::to_string(y.inc());
    }
    void call(const std::string& suffix = "")
    {
        const i64 incx = x.inc(), incy = y.inc();
        kernel<MixedGemv<cpx<R>>>("blas", routine<R>, suffix)(&trans, &a.m, &a.n, &alpha, *a, &a.lda, x.data(), &incx,
                                                              &beta, y.data(), &incy);
    }
    std::vector<Bounded> exact() const
    {
        std::vector<Bounded> result;
        for (i64 i = 0; i < leny(); ++i) {
            Bounded sum;
            for (i64 k = 0; k < lenx(); ++k) sum += Bounded(plain() ? a(i, k) : a(k, i)) * Bounded(x(k));
            result.push_back(Bounded(beta) * Bounded(y(i)));
            result.back() += Bounded(alpha) * sum;
        }
        return result;
    }
    long double worst(const std::vector<Bounded>& expected) const
    {
        long double most = 0;
        for (i64 i = 0; i < leny(); ++i) {
            const long double e = excess(y(i), expected[i], product_roundings<T>(lenx()));
            most = e <= most ? most : e; // NaN stays
        }
        return most;
    }
};

template <class R> class MixedGemvTest : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(MixedGemvTest, Reals);

TYPED_TEST(MixedGemvTest, meets_its_bound_for_all_letters_strides_and_small_sizes)
{
    using R = TypeParam;
    long double most = 0;
    for (i64 m = 1; m <= 13; ++m)
        for (i64 n = 1; n <= 13; ++n)
            for (const char trans : {'N', 'n', 'T', 't', 'C', 'c', 'x'})
                for (const i64 incx : {1, -1, 2, -3})
                    for (const i64 incy : {1, -1, 2, -3})
                        for (const char* suffix : {"", "_pst"}) {
                            Product<R> p(trans, m, n, incx, incy);
                            const std::vector<Bounded> expected = p.exact();
                            p.call(suffix);
                            const long double e = p.worst(expected);
                            ASSERT_LE(e, 1) << p.problem() << suffix;
                            most = std::max(most, e);
                        }
    for (const i64 m : {129, 400})
        for (const char trans : {'N', 'T'}) {
            Product<R> p(trans, m, 77, 1, 1);
            const std::vector<Bounded> expected = p.exact();
            p.call();
            ASSERT_LE(p.worst(expected), 1) << p.problem();
        }
    std::printf("%s: worst error %.2Lf of its bound\n", routine<R>, most);
}

TYPED_TEST(MixedGemvTest, takes_two_blocks_from_4_rows_and_columns_on_and_none_below)
{
    using R = TypeParam;
    for (const auto& [m, n] : {std::pair{3, 9}, {9, 3}, {4, 9}, {9, 4}})
        for (const char trans : {'N', 'T'}) {
            Product<R> p(trans, m, n, 1, 1);
            ProbeScope scope;
            p.call();
            if (m < 4 || n < 4) EXPECT_EQ(scope->allocations, 0);
            else {
                const i64 pair = sizeof(cpx<R>);
                EXPECT_EQ(scope->asked_bytes, (std::vector<i64>{p.lenx() * pair, p.leny() * pair}));
                EXPECT_EQ(scope->asked_alignments, (std::vector<i64>{128, 128}));
                EXPECT_EQ(scope->live, 0);
            }
        }
}

TYPED_TEST(MixedGemvTest, goes_the_plain_way_when_memory_is_exhausted)
{
    using R = TypeParam;
    for (const char trans : {'N', 'T'}) {
        std::unique_ptr<Product<R>> p;
        std::vector<Bounded> expected;
        each_allocation_fails(
            [&] {
                p = std::make_unique<Product<R>>(trans, 19, 11, 2, -1);
                expected = p->exact();
                p->call();
            },
            [&] { EXPECT_LE(p->worst(expected), 1); });
    }
}

TYPED_TEST(MixedGemvTest, clears_y_without_reading_and_leaves_it_when_there_is_nothing_to_do)
{
    using R = TypeParam;
    using T = cpx<R>;
    const Guarded<R> no_matrix(0);
    const Guarded<T> no_vector(0);
    for (const i64 size : {2, 20})
        for (const i64 inc : {1, -1, 2, 0})
            for (const char* suffix : {"", "_pst"}) {
                auto* f = kernel<MixedGemv<cpx<R>>>("blas", routine<R>, suffix);
                const T nothing = zero<T>, unit = one<T>;
                Strided<T> y(size, inc); // NaN
                const auto before = y.bits();
                const i64 none = 0;
                f("N", &size, &none, &unit, no_matrix.data(), &size, no_vector.data(), &inc, &nothing, y.data(), &inc);
                f("T", &none, &size, &unit, no_matrix.data(), &size, no_vector.data(), &inc, &nothing, y.data(), &inc);
                f("N", &size, &size, &nothing, no_matrix.data(), &size, no_vector.data(), &inc, &unit, y.data(), &inc);
                EXPECT_EQ(y.bits(), before);
                f("N", &size, &size, &nothing, no_matrix.data(), &size, no_vector.data(), &inc, &nothing, y.data(),
                  &inc);
                for (i64 i = 0; i < size; ++i) ASSERT_PRED2(same_bits<T>, y(i), nothing);
            }
}

TEST(Scgemv, asks_for_the_reproducibility_state_through_the_real_product)
{
    Product<float> p('T', 9, 9, 1, 1);
    ProbeScope scope;
    scope->reproducibility = 0;
    const std::vector<Bounded> expected = p.exact();
    p.call();
    EXPECT_EQ(scope->reproducibility_asked, 2);
    EXPECT_LE(p.worst(expected), 1);
}

TYPED_TEST(MixedGemvTest, helpers_split_scale_and_join)
{
    using R = TypeParam;
    using T = cpx<R>;
    const std::string stem = routine<R>;
    const T alpha = scalar<T>(0.7, -1.3);
    for (const i64 inc : {1, -1, 3, -2})
        for (i64 n = 0; n <= 9; ++n) {
            Strided<T> v(n, inc), joined(n, inc);
            Random random(static_cast<std::uint64_t>(n));
            v.fill(random);
            Guarded<R> parts(2 * n), scaled(2 * n);
            kernel<MixedCopyY<T>>("blas", stem + "_copyy_fwd")(&n, v.data(), &inc, parts.data());
            kernel<MixedCopyX<T>>("blas", stem + "_copyx")(&n, &alpha, v.data(), &inc, scaled.data());
            for (i64 i = 0; i < n; ++i) {
                ASSERT_PRED2(same_bits<T>, (T{parts[i], parts[i + n]}), v(i));
                ASSERT_PRED2(same_bits<T>, (T{scaled[i], scaled[i + n]}), alpha * v(i));
            }
            kernel<MixedCopyYBack<T>>("blas", stem + "_copyy_bwd")(&n, parts.data(), joined.data(), &inc);
            ASSERT_EQ(joined.bits(), v.bits());
        }
}

} // namespace
} // namespace orv::test
