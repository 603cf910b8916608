// Two products in one pass: ?gem2vu, ?gem2vc and their unit-stride kernels.
#include "frame/kernels/blas.h"
#include "tests/blas/matrix_vector.h"

#include <algorithm>
#include <array>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> constexpr const char* drivers[] = {nullptr};
template <> constexpr const char* drivers<float>[] = {"sgem2vu"};
template <> constexpr const char* drivers<double>[] = {"dgem2vu"};
template <> constexpr const char* drivers<cpx<float>>[] = {"cgem2vc", "cgem2vc_f"};
template <> constexpr const char* drivers<cpx<double>>[] = {"zgem2vc"};

template <class T> struct Operands {
    Matrix<T> a;
    Strided<T> x1, x2, y1, y2;
    T alpha = scalar<T>(0.7, -1.3), beta = scalar<T>(-0.4, 0.9);

    Operands(i64 m, i64 n, i64 lda, std::array<i64, 4> inc = {1, 1, 1, 1})
        : a(m, n, lda), x1(n, inc[0]), x2(m, inc[1]), y1(m, inc[2]), y2(n, inc[3])
    {
        Random random(static_cast<std::uint64_t>(m * 1000 + n));
        a.fill(random), x1.fill(random), x2.fill(random), y1.fill(random), y2.fill(random);
    }
    void call(const std::string& name)
    {
        const i64 x1_inc = x1.inc(), x2_inc = x2.inc(), y1_inc = y1.inc(), y2_inc = y2.inc();
        kernel<Gem2v<T>>("blas", name)(&a.m, &a.n, &alpha, *a, &a.lda, x1.data(), &x1_inc, x2.data(), &x2_inc, &beta,
                                       y1.data(), &y1_inc, y2.data(), &y2_inc);
    }
    void call_kernel(const std::string& name)
    {
        kernel<Gem2vUnit<T>>("blas", name)(&a.m, &a.n, &alpha, *a, &a.lda, x1.data(), x2.data(), y1.data(), y2.data());
    }
};

template <class T> std::string problem(const std::string& name, const Operands<T>& o)
{
    std::string s =
        name + " m=" + std::to_string(o.a.m) + " n=" + std::to_string(o.a.n) + " lda=" + std::to_string(o.a.lda);
    for (const i64 inc : {o.x1.inc(), o.x2.inc(), o.y1.inc(), o.y2.inc()}) s += " inc=" + std::to_string(inc);
    return s;
}

// Worst error of both results as a multiple of the bound. An update with beta uses the parts of a complex product.
template <class T> long double worst_error(Operands<T>& o, const std::string& name, bool with_beta = true)
{
    const Matrix<T>& a = o.a;
    std::vector<Bounded> first, second;
    const Bounded alpha(o.alpha), beta(with_beta ? o.beta : one<T>);
    for (i64 i = 0; i < a.m; ++i) {
        Bounded sum;
        for (i64 j = 0; j < a.n; ++j) sum += Bounded(a(i, j)) * Bounded(o.x1(j));
        first.push_back(beta * Bounded(o.y1(i)));
        first.back() += alpha * sum;
    }
    for (i64 j = 0; j < a.n; ++j) {
        Bounded sum;
        for (i64 i = 0; i < a.m; ++i) sum += Bounded(conj(a(i, j))) * Bounded(o.x2(i));
        second.push_back(beta * Bounded(o.y2(j)));
        second.back() += alpha * sum;
    }
    if (with_beta) o.call(name);
    else o.call_kernel(name);
    long double worst = 0;
    const auto look = [&](T computed, const Bounded& b, i64 length) {
        const long double e = excess(computed, b, product_roundings<T>(length));
        worst = e <= worst ? worst : e; // NaN stays
    };
    for (i64 i = 0; i < a.m; ++i) look(o.y1(i), first[i], a.n);
    for (i64 j = 0; j < a.n; ++j) look(o.y2(j), second[j], a.m);
    return worst;
}

template <class T> class Gem2vTest : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Gem2vTest, Types);

TYPED_TEST(Gem2vTest, computes_both_products_at_all_small_sizes_and_around_its_thresholds)
{
    using T = TypeParam;
    long double worst = 0;
    const auto at = [&](i64 m, i64 n) {
        for (const std::string name : drivers<T>) {
            Operands<T> o(m, n, m + (m + n) % 3);
            const long double e = worst_error(o, name);
            ASSERT_LE(e, 1) << problem(name, o);
            worst = std::max(worst, e);
        }
    };
    for (i64 m = 1; m <= 40; ++m)
        for (i64 n = 1; n <= 20; ++n) at(m, n);
    for (const i64 m : {48, 49, 50, 51, 71, 95, 109, 110, 111, 131, 500})
        for (const i64 n : {1, 4, 7, 199, 200, 201}) at(m, n);
    std::printf("gem2v %c: worst error %.2Lf of its bound\n", letter<T>, worst);
}

TYPED_TEST(Gem2vTest, goes_column_by_column_at_other_strides)
{
    using T = TypeParam;
    for (const std::string name : drivers<T>)
        for (const i64 m : {1, 2, 9, 30})
            for (const i64 n : {1, 5, 8})
                for (const i64 a : {1, -1, 2, -3})
                    for (const i64 b : {1, -1, 2, -3})
                        for (const auto& inc : {std::array{a, b, i64{1}, i64{1}}, std::array{i64{1}, i64{1}, a, b},
                                                std::array{i64{2}, a, b, i64{-1}}}) {
                            Operands<T> o(m, n, m + 1, inc);
                            ASSERT_LE(worst_error(o, name), 1) << problem(name, o);
                        }
}

// What one operand holds for the other product must not matter: each result is that of its gemv kernel, bit for bit.
template <class T> void expect_gemv_kernels(const std::string& name, const std::string& n, const std::string& t)
{
    for (const i64 rows : {0, 1, 2, 3, 15, 16, 24, 25, 47, 49, 50, 95, 109, 110, 130})
        for (const i64 columns : {0, 1, 2, 3, 4, 5, 8, 11}) {
            Operands<T> o(rows, columns, max(rows, 1) + 1);
            SCOPED_TRACE(problem(name, o));
            Strided<T> y1(o.y1, {}), y2(o.y2, {});
            kernel<GemvUnit<T>>("blas", n)(&o.a.m, &o.a.n, &o.alpha, *o.a, &o.a.lda, o.x1.data(), y1.data());
            kernel<GemvUnit<T>>("blas", t)(&o.a.m, &o.a.n, &o.alpha, *o.a, &o.a.lda, o.x2.data(), y2.data());
            o.call_kernel(name);
            if constexpr (!is_complex<T>) { // complex sums are joined after other columns
                ASSERT_EQ(o.y1.bits(), y1.bits());
            }
            ASSERT_EQ(o.y2.bits(), y2.bits());
        }
}

TEST(Gem2vKernel, keep_the_orders_of_the_single_products)
{
    for (const char* name : {"dgem2vu_even_m2_n4", "dgem2vu_even_m16_n4", "dgem2vu_even_m24_n4"})
        expect_gemv_kernels<double>(name, "dgemv_n_even", "dgemv_t_even");
    expect_gemv_kernels<float>("sgem2vu_even", "sgemv_n_even", "sgemv_t_even");
    expect_gemv_kernels<cpx<double>>("zgem2vc_f", "zgemv_n", "zgemv_c");
}

// Columns so far apart that the matrix must be large: the kernels ask ahead.
TYPED_TEST(Gem2vTest, gives_the_same_bits_in_a_block_of_a_large_matrix)
{
    using T = TypeParam;
    for (const i64 m : {1, 7, 23, 64, 130})
        for (const i64 n : {1, 4, 7}) {
            Operands<T> close(m, n, m), apart(m, n, 1100);
            close.call(drivers<T>[0]), apart.call(drivers<T>[0]);
            ASSERT_EQ(close.y1.bits(), apart.y1.bits()) << problem(drivers<T>[0], apart);
            ASSERT_EQ(close.y2.bits(), apart.y2.bits()) << problem(drivers<T>[0], apart);
        }
}

TEST(Gem2vKernel, zgem2vc_f_adds_both_products)
{
    for (i64 m = 1; m <= 20; ++m)
        for (i64 n = 1; n <= 6; ++n) {
            Operands<cpx<double>> o(m, n, m);
            ASSERT_LE(worst_error(o, "zgem2vc_f", false), 1) << problem("zgem2vc_f", o);
        }
}

// A column alone skips a factor of zero, a strip does not: this tells the two ways of cgem2vc apart.
TEST(Gem2v, cgem2vc_goes_column_by_column_from_200_columns_on)
{
    using T = cpx<float>;
    for (const i64 n : {199, 200}) {
        Operands<T> o(3, n, 3);
        o.beta = one<T>;
        for (i64 j = 0; j < n; ++j) o.x1(j) = zero<T>;
        o.a(1, 5) = scalar<T>(NAN, 0);
        o.call("cgem2vc");
        EXPECT_EQ(o.y1(1) == o.y1(1), n == 200) << n;
    }
}

TYPED_TEST(Gem2vTest, clears_without_reading_for_alpha_and_beta_of_zero)
{
    using T = TypeParam;
    const Guarded<T> none(0);
    for (const std::string name : drivers<T>)
        for (const i64 inc : {1, -1, 2, -3, 0}) {
            const i64 m = 17, n = 5;
            const T nothing = zero<T>;
            Strided<T> y1(m, inc), y2(n, inc); // NaN
            kernel<Gem2v<T>>("blas", name)(&m, &n, &nothing, none.data(), &m, none.data(), &inc, none.data(), &inc,
                                           &nothing, y1.data(), &inc, y2.data(), &inc);
            for (i64 i = 0; i < m; ++i) ASSERT_PRED2(same_bits<T>, y1(i), nothing);
            for (i64 j = 0; j < n; ++j) ASSERT_PRED2(same_bits<T>, y2(j), nothing);
        }
}

TYPED_TEST(Gem2vTest, leaves_results_alone_when_there_is_nothing_to_do)
{
    using T = TypeParam;
    for (const std::string name : drivers<T>) {
        Operands<T> o(4, 3, 4);
        const auto y1 = o.y1.bits(), y2 = o.y2.bits();
        o.alpha = zero<T>, o.beta = one<T>;
        o.call(name);
        o.alpha = one<T>, o.beta = zero<T>, o.a.m = 0;
        o.call(name);
        o.a.m = 4, o.a.n = 0;
        o.call(name);
        EXPECT_EQ(o.y1.bits(), y1);
        EXPECT_EQ(o.y2.bits(), y2);
    }
}

} // namespace
} // namespace orv::test
