// The variants of the product: panels of twelve rows, three real products for a complex one, real times complex.
//
// Operands of small whole numbers make every sum exact, whatever its order: the results are compared bit for bit.
#include "frame/kernels/blas.h"
#include "tests/gemm/product.h"
#include "tests/support/probe.h"
#include "tests/support/whole.h"

namespace orv::test {
namespace {

using namespace kernels::blas;

// C := alpha*op(A)*op(B) + beta*C of whole numbers; TA is the type of A, T of everything else.
template <class TA, class T> struct Whole {
    char transa, transb;
    i64 m, n, k;
    T alpha, beta;
    i64 lda, ldb, ldc;
    Guarded<TA> a;
    Guarded<T> b, c;
    std::vector<T> before;

    static i64 extent(i64 columns, i64 ld) { return max(columns, 0) * ld; }
    Whole(char ta, char tb, i64 rows, i64 columns, i64 depth, T f, T g, i64 pad = 0)
        : transa(ta), transb(tb), m(rows), n(columns), k(depth), alpha(f), beta(g),
          lda(max(1, fold(ta) == 'N' ? m : k) + pad), ldb(max(1, fold(tb) == 'N' ? k : n) + pad), ldc(max(1, m) + pad),
          a(extent(fold(ta) == 'N' ? k : m, lda)), b(extent(fold(tb) == 'N' ? n : k, ldb)), c(extent(n, ldc))
    {
        Random random(static_cast<std::uint64_t>(m * 31 + n * 7 + k));
        for (TA& x : a) x = whole<TA>(random);
        for (T& x : b) x = whole<T>(random);
        for (T& x : c) x = whole<T>(random);
        before.assign(c.begin(), c.end());
    }

    template <class X> static X element(const Guarded<X>& x, char op, i64 ld, i64 i, i64 j)
    {
        const X e = fold(op) == 'N' ? x[i + j * ld] : x[j + i * ld];
        if constexpr (is_complex<X>) return fold(op) == 'C' ? conj(e) : e;
        else return e;
    }
    using Routine = std::conditional_t<std::is_same_v<T, TA>, Gemm<T>, MixedGemm<T>>;
    void call(const std::string& name) const
    {
        kernel<Routine>("blas", name)(&transa, &transb, &m, &n, &k, &alpha, a.data(), &lda, b.data(), &ldb, &beta,
                                      c.data(), &ldc);
    }
    // Factors that the routine leaves to its caller count as 1.
    void expect_exact(T applied_beta) const
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < ldc; ++i) {
                T expected = before[i + j * ldc];
                if (i < m) {
                    T sum = zero<T>;
                    for (i64 p = 0; p < k; ++p) sum += element(a, transa, lda, i, p) * element(b, transb, ldb, p, j);
                    expected = alpha * sum + applied_beta * expected;
                }
                ASSERT_EQ(c[i + j * ldc], expected)
                    << transa << transb << " m=" << m << " n=" << n << " k=" << k << ": (" << i << ',' << j << ')';
            }
    }
    void expect_exact() const { expect_exact(beta); }
};

// ---- Twelve rows ----------------------------------------------------------------------------------------------------

constexpr const char* twelve_rows[] = {"xdgemm_bdz", "xdgemm_hi_thr_bdz"};

TEST(TwelveRows, adds_the_product_at_every_edge_of_its_panels_and_blocks)
{
    for (const char* name : twelve_rows)
        for (const char* trans : {"nn", "tn", "nT", "Tc"})
            for (const auto& [m, n, k] : {std::array<i64, 3>{11, 4, 2},
                                          {12, 3, 2},
                                          {12, 4, 1},
                                          {12, 4, 2},
                                          {13, 5, 3},
                                          {23, 7, 79},
                                          {24, 8, 80},
                                          {36, 9, 81},
                                          {25, 11, 127},
                                          {37, 6, 129},
                                          {12, 4, 159},
                                          {13, 5, 160},
                                          {14, 5, 161},
                                          {24, 8, 255},
                                          {24, 9, 256},
                                          {25, 8, 257},
                                          {26, 4, 511},
                                          {12, 5, 512},
                                          {13, 4, 515},
                                          {504, 4, 5},
                                          {517, 9, 7}}) {
                const Whole<double, double> x(trans[0], trans[1], m, n, k, 3, 1, (m + n) % 3);
                x.call(name);
                x.expect_exact();
            }
}

TEST(TwelveRows, crosses_the_widest_block_of_columns)
{
    const Whole<double, double> x('n', 't', 13, 5009, 3, -2, 1);
    x.call("xdgemm_bdz");
    x.expect_exact();
}

TEST(TwelveRows, leaves_the_scaling_of_c_to_its_caller)
{
    for (const i64 m : {7, 30}) {
        const Whole<double, double> x('n', 'n', m, 8, 6, 2, 5);
        x.call("xdgemm_bdz");
        x.expect_exact(1);
    }
    const Whole<double, double> nothing('n', 'n', 30, 8, 6, 0, 5);
    nothing.call("xdgemm_bdz");
    EXPECT_TRUE(std::equal(nothing.before.begin(), nothing.before.end(), nothing.c.begin()));
}

TEST(TwelveRows, takes_one_block_from_twelve_rows_four_columns_and_two_steps_on)
{
    const auto asked = [](const char* name, i64 m, i64 n, i64 k) {
        const Whole<double, double> x('n', 'n', m, n, k, 1, 1);
        ProbeScope service;
        x.call(name);
        EXPECT_EQ(service->live, 0);
        return service->asked_bytes;
    };
    for (const char* name : twelve_rows) {
        EXPECT_TRUE(asked(name, 11, 4, 2).empty());
        EXPECT_TRUE(asked(name, 12, 3, 2).empty());
        EXPECT_TRUE(asked(name, 12, 4, 1).empty());
        EXPECT_EQ(asked(name, 12, 4, 2), std::vector<i64>{(12 + 4) * 128 * 8 + 0x4200});
    }
    EXPECT_EQ(asked("xdgemm_bdz", 600, 5, 201), std::vector<i64>{(504 + 5) * 202 * 8 + 0x4200});
    EXPECT_EQ(asked("xdgemm_bdz", 13, 5, 401), std::vector<i64>{(24 + 5) * 200 * 8 + 0x4200});
    EXPECT_EQ(asked("xdgemm_bdz", 13, 5, 512), std::vector<i64>{(24 + 5) * 256 * 8 + 0x4200});
    EXPECT_EQ(asked("xdgemm_hi_thr_bdz", 13, 5, 123), std::vector<i64>{(24 + 5) * 62 * 8 + 0x4200});
    EXPECT_EQ(asked("xdgemm_hi_thr_bdz", 13, 5, 160), std::vector<i64>{(24 + 5) * 80 * 8 + 0x4200});
}

TEST(TwelveRows, computes_without_memory_all_the_same)
{
    const Whole<double, double> x('t', 'n', 40, 9, 30, 2, 1);
    ProbeScope service;
    service->fail_all = true;
    x.call("xdgemm_bdz");
    x.expect_exact();
    ASSERT_EQ(service->checked.size(), 1u);
    EXPECT_EQ(service->checked[0], "xdgemm");
}

TEST(TwelveRows, ends_with_products_of_matrix_and_vector)
{
    const auto before = Operands<double>(Problem<double>{'t', 'n', 30, 5, 300}, {}, 3);
    before.call(gemm<double>("x", "gemm_bdz"));
    const Operands<double> x(Problem<double>{'t', 'n', 30, 5, 300}, {}, 3);
    const i64 unit = 1;
    kernel<xdgemv>()("t", &x.p.k, &x.p.m, &x.p.alpha, x.a.data(), &x.p.lda, &x.b[4 * x.p.ldb], &unit, &x.p.beta,
                     &x.at(0, 4), &unit);
    for (i64 i = 0; i < 30; ++i) EXPECT_EQ(before.at(i, 4), x.at(i, 4));
}

TEST(TwelveRows, has_a_plain_way_under_its_own_name)
{
    Operands<float> x(Problem<float>{'n', 't', 13, 5, 7, 2, 3});
    x.call(gemm<float>("", "gemm_pst_brc"));
    expect_bits(x, [&](i64 i, i64 j) { return plain_entry(x, i, j); });
}

// ---- Three products, and real times complex -------------------------------------------------------------------------

template <class R> class ComplexVariants : public testing::Test {
public:
    using T = cpx<R>;
    static std::string three() { return std::string("x") + letter<T> + "gemm3m"; }
    static std::string four() { return std::string("x") + letter<T> + "gemm"; }
    static std::string mixed() { return std::is_same_v<R, float> ? "scgemm" : "dzgemm"; }
    static constexpr T f{2, -1}, g{-1, 3};
    static constexpr int has_choice = std::is_same_v<R, double>; // of kernels, by the processor
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(ComplexVariants, Reals);

TYPED_TEST(ComplexVariants, compute_exactly_with_whole_numbers)
{
    using F = ComplexVariants<TypeParam>;
    using T = cpx<TypeParam>;
    for (const char ta : {'N', 't', 'C'})
        for (const char tb : {'n', 'T', 'c'})
            for (const auto& [m, n, k] : {std::array<i64, 3>{1, 1, 1},
                                          {3, 9, 9},
                                          {9, 3, 9},
                                          {9, 9, 3},
                                          {4, 4, 4},
                                          {8, 9, 9},
                                          {9, 8, 9},
                                          {9, 9, 8},
                                          {9, 9, 9},
                                          {13, 10, 127},
                                          {12, 14, 128},
                                          {17, 9, 129},
                                          {20, 31, 260},
                                          {0, 5, 5},
                                          {5, 0, 5},
                                          {10, 10, 0}})
                for (const T beta : {F::g, zero<T>, one<T>}) {
                    const Whole<T, T> x(ta, tb, m, n, k, F::f, beta, m % 3);
                    x.call(F::three());
                    x.expect_exact();
                    for (const std::string& name : {"x" + F::mixed(), F::mixed() + "_pst"}) {
                        const Whole<TypeParam, T> y(ta, tb, m, n, k, F::f, beta, n % 3);
                        y.call(name);
                        y.expect_exact();
                    }
                }
}

TYPED_TEST(ComplexVariants, by_three_products_combine_them_in_a_fixed_order)
{
    using R = TypeParam;
    using T = cpx<R>;
    for (const T beta : {T{R(0.3), R(-1.7)}, zero<T>}) {
        const Operands<T> x(Problem<T>{'N', 'N', 23, 17, 100, {R(1.1), R(-0.7)}, beta});
        const auto parts = [](const Guarded<T>& from, int part) {
            std::vector<R> plane;
            for (const T& e : from) plane.push_back(part == 0 ? e.re : part == 1 ? e.im : e.re + e.im);
            return plane;
        };
        std::vector<R> p[3];
        for (int part = 0; part < 3; ++part) {
            const std::vector<R> a = parts(x.a, part), b = parts(x.b, part);
            p[part].resize(x.c.size());
            gemm<R>()("N", "N", &x.p.m, &x.p.n, &x.p.k, &one<R>, a.data(), &x.p.lda, b.data(), &x.p.ldb, &zero<R>,
                      p[part].data(), &x.p.ldc);
        }
        x.call(gemm<T>("x", "gemm3m"));
        expect_bits(x, [&](i64 i, i64 j) {
            const auto at = static_cast<std::size_t>(i + j * x.p.ldc);
            const R re = p[0][at] - p[1][at], im = (p[2][at] - p[0][at]) - p[1][at];
            const T f = x.p.alpha, g = beta, c = x.was(i, j);
            T sum{f.re * re - f.im * im, re * f.im + im * f.re};
            if (beta != zero<T>) sum = {(sum.re + g.re * c.re) - g.im * c.im, (sum.im + c.re * g.im) + c.im * g.re};
            return sum;
        });
    }
}

TYPED_TEST(ComplexVariants, cross_the_edges_of_their_blocks)
{
    using F = ComplexVariants<TypeParam>;
    using T = cpx<TypeParam>;
    for (const auto& [m, n] : {std::pair<i64, i64>{1001, 10}, {10, 1003}, {9, 5003}, {501, 13}}) {
        const Whole<T, T> x('C', 'T', m, n, 130, F::f, F::g, 1);
        x.call(F::three());
        x.expect_exact();
        const Whole<TypeParam, T> y('N', 'C', m, n, 130, F::f, F::g, 1);
        y.call("x" + F::mixed());
        y.expect_exact();
    }
}

TYPED_TEST(ComplexVariants, read_no_c_for_a_beta_of_zero_and_no_operand_for_an_alpha_of_zero)
{
    using F = ComplexVariants<TypeParam>;
    using T = cpx<TypeParam>;
    const auto nan = [](auto& x) {
        for (auto& e : x)
            e = std::remove_reference_t<decltype(e)>(scalar<std::remove_reference_t<decltype(e)>>(NAN, NAN));
    };
    const auto check = [&](auto& x, const std::string& name) {
        nan(x.c);
        x.call(name);
        x.expect_exact(zero<T>);
    };
    Whole<T, T> x('N', 'T', 12, 11, 10, F::f, zero<T>);
    check(x, F::three());
    Whole<TypeParam, T> y('N', 'T', 12, 11, 10, F::f, zero<T>);
    check(y, "x" + F::mixed());

    const auto unread = [&](auto& operands, const std::string& name) {
        nan(operands.a), nan(operands.b);
        operands.call(name);
        for (i64 i = 0; i < 12 * 11; ++i) EXPECT_EQ(operands.c[i], F::g * operands.before[i]);
    };
    Whole<T, T> u('N', 'T', 12, 11, 10, zero<T>, F::g);
    unread(u, F::three());
    Whole<TypeParam, T> v('N', 'T', 12, 11, 10, zero<T>, F::g);
    unread(v, "x" + F::mixed());
}

TYPED_TEST(ComplexVariants, by_three_products_take_three_blocks_from_nine_on_and_else_are_the_ordinary_product)
{
    using F = ComplexVariants<TypeParam>;
    using T = cpx<TypeParam>;
    for (const auto& [m, n, k] : {std::array<i64, 3>{8, 9, 9}, {9, 8, 9}, {9, 9, 8}, {9, 10, 11}}) {
        const bool large = m > 8 && n > 8 && k > 8;
        const Whole<T, T> x('N', 'N', m, n, k, F::f, F::g);
        ProbeScope service;
        x.call(F::three());
        EXPECT_EQ(service->live, 0);
        const std::vector<i64> own = {128 * 3 * i64(sizeof(TypeParam)) * 1000, 128 * 3 * i64(sizeof(TypeParam)) * 1000,
                                      1000 * 3 * i64(sizeof(TypeParam)) * n};
        if (large) {
            ASSERT_GE(service->asked_bytes.size(), 3u);
            EXPECT_EQ(std::vector<i64>(service->asked_bytes.begin(), service->asked_bytes.begin() + 3), own);
            EXPECT_EQ(service->checked[0], "xgemm3m");
        }
        const auto& names = service->checked;
        EXPECT_EQ(std::count(names.begin(), names.end(), "xgemm3m"), large ? 3 : 0);
    }
    for (int failing = 0; failing < 3; ++failing) {
        const Whole<T, T> x('N', 'N', 12, 13, 14, F::f, F::g);
        ProbeScope service;
        service->fail_at = failing;
        x.call(F::three());
        EXPECT_EQ(service->microarchitecture_asked, F::has_choice) << "the kernel is chosen before memory is asked for";
        EXPECT_EQ(service->live, 0);
        x.expect_exact();
    }
}

TYPED_TEST(ComplexVariants, of_a_real_matrix_take_two_blocks_from_four_on_and_go_the_plain_way_without)
{
    using F = ComplexVariants<TypeParam>;
    using T = cpx<TypeParam>;
    for (const auto& [m, n, k] : {std::array<i64, 3>{3, 4, 4}, {4, 3, 4}, {4, 4, 3}, {4, 5, 6}}) {
        const Whole<TypeParam, T> x('N', 'N', m, n, k, F::f, F::g);
        ProbeScope service;
        x.call("x" + F::mixed());
        EXPECT_EQ(service->live, 0);
        const i64 pair = sizeof(T);
        if (m < 4 || n < 4 || k < 4) EXPECT_EQ(service->allocations + service->microarchitecture_asked, 0);
        else {
            ASSERT_GE(service->asked_bytes.size(), 2u);
            EXPECT_EQ(service->asked_bytes[0], 128 * n * pair);
            EXPECT_EQ(service->asked_bytes[1], m * n * pair);
        }
    }
    for (const i64 failing : {0, 1, 2}) {
        const Whole<TypeParam, T> x('N', 'N', 12, 13, 14, F::f, F::g);
        ProbeScope service;
        service->fail_at = failing;
        x.call("x" + F::mixed());
        if (failing < 2) {
            EXPECT_EQ(service->microarchitecture_asked, F::has_choice) << "before memory is asked for";
        }
        EXPECT_EQ(service->live, 0);
        x.expect_exact();
    }
}

} // namespace
} // namespace orv::test
