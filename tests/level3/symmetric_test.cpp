// syrk, herk, syr2k, her2k, symm, hemm and their parts, with whole numbers: every result is exact. Triangles that are
// not to be read hold NaN, and must hold it still where they are not to be written.
#include "frame/kernels/blas.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/line.h"
#include "tests/support/probe.h"
#include "tests/support/whole.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> T number(double re, double im = 0)
{
    if constexpr (is_complex<T>) return {real_t<T>(re), real_t<T>(im)};
    else return T(re);
}
template <class T> T nan_of() { return number<T>(std::numeric_limits<double>::quiet_NaN(), 0); }
template <class T> bool same_bits(const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

template <class T> struct Matrix {
    i64 rows, columns, ld;
    Guarded<T> data;

    Matrix(i64 m, i64 n, i64 pad, Random& random) : rows(m), columns(n), ld(max(m, 1) + pad), data(max(n, 0) * ld)
    {
        for (T& x : data) x = nan_of<T>();
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < m; ++i) at(i, j) = whole<T>(random);
    }
    T& at(i64 i, i64 j) const { return data[i + j * ld]; }
};

bool is_stored(char uplo, i64 i, i64 j) { return i == j || (fold(uplo) == 'U') == (i < j); }

// alpha*op(X)*op(Y) of entries, op N, T or C.
template <class T> T entry(const Matrix<T>& x, char op, i64 i, i64 j)
{
    const T e = fold(op) == 'N' ? x.at(i, j) : x.at(j, i);
    if constexpr (is_complex<T>) return fold(op) == 'C' ? conj(e) : e;
    else return e;
}
template <class T> T product(const Matrix<T>& x, char opx, const Matrix<T>& y, char opy, i64 k, i64 i, i64 j)
{
    T sum = zero<T>;
    for (i64 p = 0; p < k; ++p) sum += entry(x, opx, i, p) * entry(y, opy, p, j);
    return sum;
}
constexpr char turned(char op, char other) { return fold(op) == 'N' ? other : 'N'; }

// ---- Updates --------------------------------------------------------------------------------------------------------

// F is the type of the factors that a Hermitian update wants real.
template <class T, class F> using Once = std::conditional_t<std::is_same_v<T, F>, Syrk<T>, Herk<T>>;
template <class T, class F> using Twice = std::conditional_t<std::is_same_v<T, F>, Syr2k<T>, Her2k<T>>;

template <class T, class F> F factor_of(T x)
{
    if constexpr (std::is_same_v<T, F>) return x;
    else return x.re;
}
template <class T, class F> T as_element(F x)
{
    if constexpr (std::is_same_v<T, F>) return x;
    else return {x, 0};
}

template <class T, class F> struct Update {
    static constexpr bool hermitian = !std::is_same_v<T, F>;
    char uplo, trans;
    i64 n, k;
    T alpha;
    F beta;
    Random random;
    Matrix<T> a, b, c;
    std::vector<T> before;

    Update(char half, char op, i64 order, i64 depth, T f, T g)
        : uplo(half), trans(op), n(order), k(depth), alpha(f), beta(factor_of<T, F>(g)),
          random(static_cast<std::uint64_t>(order * 64 + depth)), a(make()), b(make()), c(n, n, n % 3, random)
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < n; ++i)
                if (!is_stored(uplo, i, j)) c.at(i, j) = nan_of<T>();
        if (hermitian)
            for (i64 j = 0; j < n; ++j) c.at(j, j) = as_element<T>(factor_of<T, F>(c.at(j, j)));
        before.assign(c.data.begin(), c.data.end());
    }
    Matrix<T> make()
    {
        const bool plain = fold(trans) == 'N';
        return {plain ? n : k, plain ? k : n, k % 3, random};
    }
    char other() const { return hermitian ? 'C' : 'T'; }

    void call1(const std::string& name) const
    {
        const F f = factor_of<T, F>(alpha);
        kernel<Once<T, F>>("blas", name)(&uplo, &trans, &n, &k, &f, a.data.data(), &a.ld, &beta, c.data.data(), &c.ld);
    }
    void call2(const std::string& name) const
    {
        kernel<Twice<T, F>>("blas", name)(&uplo, &trans, &n, &k, &alpha, a.data.data(), &a.ld, b.data.data(), &b.ld,
                                          &beta, c.data.data(), &c.ld);
    }
    // op(A)*op(A)' or the two products of A and B.
    T added(bool twice, i64 i, i64 j) const
    {
        const char op = trans, turn = turned(op, other()), left = fold(op) == 'N' ? 'N' : other();
        if (!twice) return as_element<T>(factor_of<T, F>(alpha)) * product(a, left, a, turn, k, i, j);
        const T f = hermitian ? conj(alpha) : alpha;
        return alpha * product(a, left, b, turn, k, i, j) + f * product(b, left, a, turn, k, i, j);
    }
    void expect_exact(bool twice, const std::string& name) const
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < c.ld; ++i) {
                const T was = before[i + j * c.ld];
                if (i >= n || !is_stored(uplo, i, j))
                    ASSERT_TRUE(same_bits(c.at(i, j), was)) << text(name, i, j) << " was written";
                else {
                    const T kept = beta == F(zero<F>) ? zero<T> : beta * was;
                    ASSERT_EQ(c.at(i, j), alpha == zero<T> || k <= 0 ? kept : added(twice, i, j) + kept)
                        << text(name, i, j);
                }
            }
    }
    std::string text(const std::string& name, i64 i, i64 j) const
    {
        const bool twice = name.find('2') != name.npos;
        Line text = line<T>(std::string(hermitian ? "her" : "syr") + (twice ? "2k" : "k"), {uplo, trans});
        text.with("n", n).with("k", k);
        if (twice) text.with("alpha", alpha);
        else text.with("alpha", factor_of<T, F>(alpha));
        text.with("lda", a.ld);
        if (twice) text.with("ldb", b.ld);
        text.with("beta", beta).with("ldc", c.ld);
        return text.text(name + " at (" + std::to_string(i) + ',' + std::to_string(j) + ')');
    }
};

template <class T, class F> struct Family {
    using Element = T;
    using FactorType = F;
};
template <class Type> class SymmetricUpdate : public testing::Test {
public:
    using T = typename Type::Element;
    using F = typename Type::FactorType;
    using Problem = Update<T, F>;
    static constexpr bool hermitian = !std::is_same_v<T, F>;
    static std::string one_() { return std::string(1, letter<T>) + (hermitian ? "herk" : "syrk"); }
    static std::string two() { return std::string(1, letter<T>) + (hermitian ? "her2k" : "syr2k"); }
    static constexpr const char* ops = hermitian ? "NnCc" : is_complex<T> ? "NnTt" : "NtCc";

    static void sweep(std::span<const i64> orders, std::span<const i64> depths)
    {
        int turn = 0;
        for (const i64 n : orders)
            for (const i64 k : depths)
                for (const char uplo : {'U', 'l'})
                    for (const char* op = ops; *op != '\0'; ++op) {
                        const T alphas[] = {number<T>(2, hermitian ? 0 : -1), number<T>(-1), number<T>(1),
                                            number<T>(0)},
                                betas[] = {number<T>(3, -2), number<T>(0), number<T>(1)};
                        const T alpha = alphas[turn % 7 == 0 ? 3 : turn % 3], beta = betas[turn++ / 3 % 3];
                        const Problem x(uplo, *op, n, k, alpha, beta);
                        x.call1("x" + one_());
                        x.expect_exact(false, one_());
                        const Problem y(uplo, *op, n, k, hermitian ? number<T>(alpha == zero<T> ? 0 : 2, 1) : alpha,
                                        beta);
                        y.call2("x" + two());
                        y.expect_exact(true, two());
                    }
    }
};
using Families =
    testing::Types<Family<float, float>, Family<double, double>, Family<cpx<float>, cpx<float>>,
                   Family<cpx<double>, cpx<double>>, Family<cpx<float>, float>, Family<cpx<double>, double>>;
TYPED_TEST_SUITE(SymmetricUpdate, Families);

TYPED_TEST(SymmetricUpdate, is_exact_at_all_small_orders)
{
    std::vector<i64> orders;
    for (i64 n = 0; n <= 35; ++n) orders.push_back(n);
    this->sweep(orders, std::array<i64, 3>{0, 1, 5});
}

TYPED_TEST(SymmetricUpdate, is_exact_on_both_sides_of_every_cut)
{
    this->sweep(std::array<i64, 33>{47,  48,  49,  50,  55,  56,  63,  64,  65,  96,  97,  99,  100, 101, 127, 128, 129,
                                    199, 200, 201, 202, 247, 248, 256, 257, 299, 300, 301, 400, 401, 499, 500, 513},
                std::array<i64, 1>{3});
}

TYPED_TEST(SymmetricUpdate, is_exact_over_several_blocks_of_the_depth)
{
    this->sweep(std::array<i64, 2>{5, 61}, std::array<i64, 2>{130, 300});
}

TYPED_TEST(SymmetricUpdate, computes_without_memory_all_the_same)
{
    using F = SymmetricUpdate<TypeParam>;
    using T = typename F::T;
    const T alpha = number<T>(2), beta = number<T>(3);
    for (const char uplo : {'U', 'L'})
        for (const char op : {F::ops[0], F::ops[2]})
            for (const bool twice : {false, true}) {
                const std::string name = "x" + (twice ? F::two() : F::one_());
                for (i64 failing = 0;; ++failing) {
                    typename F::Problem x(uplo, op, 70, 20, alpha, beta);
                    ProbeScope service;
                    service->fail_at = failing;
                    twice ? x.call2(name) : x.call1(name);
                    x.expect_exact(twice, name);
                    EXPECT_EQ(service->live, 0);
                    if (service->failed == 0) break;
                }
                typename F::Problem x(uplo, op, 70, 20, alpha, beta);
                ProbeScope service;
                service->fail_all = true;
                twice ? x.call2(name) : x.call1(name);
                x.expect_exact(twice, name);
            }
}

TYPED_TEST(SymmetricUpdate, has_its_parts_under_names_of_their_own)
{
    using F = SymmetricUpdate<TypeParam>;
    using T = typename F::T;
    for (const i64 n : {4, 20, 57, 130})
        for (const auto& [suffix, uplo] :
             {std::pair{"_l_1", 'L'}, {"_l_2", 'L'}, {"_u_1", 'U'}, {"_u_2", 'U'}, {"_pst", 'L'}, {"_pst", 'U'}}) {
            typename F::Problem x(uplo, F::ops[0], n, 6, number<T>(2), number<T>(3));
            x.call1(F::one_() + suffix);
            x.expect_exact(false, suffix);
        }
    for (const char uplo : {'L', 'U'}) {
        typename F::Problem y(uplo, F::ops[2], 40, 6, number<T>(2), number<T>(3));
        y.call2(F::two() + "_nobufs");
        y.expect_exact(true, "nobufs");
        if (std::is_same_v<T, float>) continue;
        typename F::Problem x(uplo, F::ops[2], 40, 6, number<T>(2), number<T>(3));
        x.call1(F::one_() + "_nobufs");
        x.expect_exact(false, "nobufs");
    }
}

TEST(Syrk, asks_for_one_square_in_its_innermost_part)
{
    const auto asked = [](const char* name, auto type) {
        using T = decltype(type);
        Update<T, T> x('L', 'N', 10, 0, number<T>(2), number<T>(3)), y('L', 'N', 10, 5, number<T>(2), number<T>(3));
        ProbeScope service;
        x.call1(name);
        EXPECT_EQ(service->allocations, 0) << "beta only";
        y.call1(name);
        return std::pair{service->asked_bytes, service->checked};
    };
    const auto d = asked("dsyrk_pst", double());
    EXPECT_EQ(d.first[0], 0x4800);
    EXPECT_EQ(d.second[0], "DSYRK_PST");
    const auto c = asked("csyrk_pst", cpx<float>());
    EXPECT_EQ(c.first[0], 0x20000);
    EXPECT_EQ(c.second[0], "CSYRK_PST");
    const auto z = asked("zsyrk_pst", cpx<double>());
    EXPECT_EQ(z.first[0], 0x40000);
    EXPECT_EQ(z.second[0], "ZSYRK");
    const auto s = asked("ssyrk_pst", float());
    EXPECT_TRUE(std::none_of(s.second.begin(), s.second.end(), [](const std::string& n) { return n != "xgemm"; }));
}

TEST(Syr2k, asks_for_one_square_under_the_name_of_its_family)
{
    const auto expect_asks = [](const char* routine, auto element, auto factor, i64 bytes, const char* name) {
        using T = decltype(element);
        Update<T, decltype(factor)> x('U', 'T', 30, 5, number<T>(2), number<T>(3));
        ProbeScope service;
        x.call2(routine);
        EXPECT_EQ(service->asked_bytes[0], bytes) << routine;
        EXPECT_EQ(service->checked[0], name) << routine;
    };
    using C = cpx<float>;
    using Z = cpx<double>;
    expect_asks("xssyr2k", float(), float(), 0x20000, "xdsyr2k");
    expect_asks("xdsyr2k", double(), double(), 0x20000, "xdsyr2k");
    expect_asks("xcsyr2k", C(), C(), 0x20000, "xcsyr2k");
    expect_asks("xzsyr2k", Z(), Z(), 0x40000, "xcsyr2k");
    expect_asks("xcher2k", C(), float(), 0x20000, "xcher2k");
    expect_asks("xzher2k", Z(), double(), 0x40000, "xcher2k");
}

// ---- Products -------------------------------------------------------------------------------------------------------

template <class T> struct SymmetricProduct {
    bool hermitian;
    char side, uplo;
    i64 m, n;
    T alpha, beta;
    Random random;
    Matrix<T> a, whole_a, b, c;
    std::vector<T> before;

    SymmetricProduct(bool h, char s, char half, i64 rows, i64 columns, T f, T g)
        : hermitian(h), side(s), uplo(half), m(rows), n(columns), alpha(f), beta(g),
          random(static_cast<std::uint64_t>(rows * 64 + columns)), a(order(), order(), m % 3, random),
          whole_a(order(), order(), 0, random), b(m, n, n % 3, random), c(m, n, 1, random)
    {
        for (i64 j = 0; j < order(); ++j)
            for (i64 i = 0; i < order(); ++i) {
                if (!is_stored(uplo, i, j)) a.at(i, j) = nan_of<T>();
                else whole_a.at(i, j) = a.at(i, j), whole_a.at(j, i) = h ? conj(a.at(i, j)) : a.at(i, j);
            }
        if constexpr (is_complex<T>)
            if (h)
                for (i64 j = 0; j < order(); ++j) whole_a.at(j, j).im = 0, a.at(j, j).im = NAN;
        before.assign(c.data.begin(), c.data.end());
    }
    i64 order() const { return fold(side) == 'L' ? m : n; }
    void call(const std::string& name) const
    {
        kernel<Symm<T>>("blas", name)(&side, &uplo, &m, &n, &alpha, a.data.data(), &a.ld, b.data.data(), &b.ld, &beta,
                                      c.data.data(), &c.ld);
    }
    void expect_exact(const std::string& name) const
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < c.ld; ++i) {
                const T was = before[i + j * c.ld];
                if (i >= m) {
                    ASSERT_TRUE(same_bits(c.at(i, j), was)) << "padding";
                    continue;
                }
                const T p =
                    fold(side) == 'L' ? product(whole_a, 'N', b, 'N', m, i, j) : product(b, 'N', whole_a, 'N', n, i, j);
                ASSERT_EQ(c.at(i, j),
                          (alpha == zero<T> ? zero<T> : alpha * p) + (beta == zero<T> ? zero<T> : beta * was))
                    << name << ' ' << side << uplo << " m=" << m << " n=" << n << ": (" << i << ',' << j << ')';
            }
    }
};

template <class T> class SymmetricProductTest : public testing::Test {
public:
    static std::vector<std::string> names()
    {
        const std::string t(1, letter<T>);
        if constexpr (is_complex<T>) return {t + "symm", t + "hemm"};
        else return {t + "symm"};
    }
    static bool hermitian(const std::string& name) { return name[1] == 'h'; }
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(SymmetricProductTest, Types);

TYPED_TEST(SymmetricProductTest, is_exact_at_small_sizes_and_on_both_sides_of_its_blocks)
{
    using T = TypeParam;
    int turn = 0;
    for (const std::string& name : this->names())
        for (const auto& [m, n] : {std::pair<i64, i64>{0, 3},
                                   {3, 0},
                                   {1, 1},
                                   {2, 5},
                                   {7, 3},
                                   {13, 17},
                                   {31, 33},
                                   {127, 5},
                                   {128, 6},
                                   {129, 5},
                                   {5, 129},
                                   {175, 3},
                                   {176, 3},
                                   {177, 3},
                                   {256, 2},
                                   {257, 3},
                                   {3, 256},
                                   {4, 257},
                                   {513, 2},
                                   {2, 514},
                                   {6, 1001},
                                   {6, 1012},
                                   {5003, 3},
                                   {5011, 3},
                                   {3, 5002}})
            for (const char side : {'L', 'r'})
                for (const char uplo : {'U', 'l'}) {
                    if (max(m, n) > 1000 && (fold(side) == 'L') == (m > n))
                        continue; // an order of thousands says no more
                    const T alphas[] = {number<T>(2, -1), number<T>(1), number<T>(0)},
                            betas[] = {number<T>(3, 1), number<T>(0), number<T>(1)};
                    SymmetricProduct<T> x(this->hermitian(name), side, uplo, m, n, alphas[turn % 5 == 4 ? 2 : turn % 2],
                                          betas[turn % 3]);
                    ++turn;
                    x.call("x" + name);
                    x.expect_exact(name);
                }
}

TYPED_TEST(SymmetricProductTest, computes_without_memory_all_the_same)
{
    using T = TypeParam;
    for (const std::string& name : this->names())
        for (const char side : {'L', 'R'})
            for (const char uplo : {'U', 'L'}) {
                const bool h = this->hermitian(name);
                for (i64 failing = 0; failing < 4; ++failing) {
                    SymmetricProduct<T> x(h, side, uplo, 40, 37, number<T>(2), number<T>(3));
                    ProbeScope service;
                    service->fail_at = failing;
                    x.call("x" + name);
                    EXPECT_EQ(service->live, 0);
                    x.expect_exact(name);
                }
                SymmetricProduct<T> x(h, side, uplo, 40, 37, number<T>(2), number<T>(3));
                x.call(name + (h ? "_nobufs" : "_pst"));
                x.expect_exact(name);
            }
}

TEST(Symm, asks_for_one_square)
{
    const auto first = [](const char* name, auto type, bool hermitian) {
        using T = decltype(type);
        SymmetricProduct<T> x(hermitian, 'L', 'U', 5, 5, number<T>(2), number<T>(3));
        ProbeScope service;
        x.call(name);
        return std::tuple{service->asked_bytes[0], service->asked_alignments[0], service->checked[0]};
    };
    EXPECT_EQ(first("xdsymm", double(), false), (std::tuple{0x80000, 64, "xsymm"}));
    EXPECT_EQ(first("xzsymm", cpx<double>(), false), (std::tuple{0x80000, 64, "xsymm"}));
    EXPECT_EQ(first("xchemm", cpx<float>(), true), (std::tuple{0x20400, 128, "xchemm"}));
    EXPECT_EQ(first("xzhemm", cpx<double>(), true), (std::tuple{0x40800, 128, "xzhemm"}));
}

TEST(Line, of_symmetric_updates_repeats_it)
{
    for (const char* name : {"xdsyrk", "xdsyr2k"})
        EXPECT_TRUE(repeats(Update<double, double>('U', 't', 7, 5, 0.5, -1).text(name, 0, 0)));
    for (const char* name : {"xzherk", "xzher2k"})
        EXPECT_TRUE(repeats(Update<cpx<double>, double>('l', 'C', 7, 5, {0.5, 2}, {-1, 0}).text(name, 0, 0)));
}

} // namespace
} // namespace orv::test
