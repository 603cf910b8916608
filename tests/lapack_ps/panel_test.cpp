// Products and updates of rank two and 2k with a panel of a triangle: ?symv_nb, ?syr2_nb, ?syr2k_nb and the Hermitian
// ones.
#include "frame/kernels/lapack_ps.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/probe.h"
#include "tests/support/random.h"
#include "tests/support/whole.h"

#include <array>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

using Triple = std::array<i64, 3>; // what three operands, or sizes, have

template <class T> std::string named(const char* of_reals, const char* of_complex)
{
    return letter<T> + std::string(is_complex<T> ? of_complex : of_reals);
}
template <class T> T scalar(int re, int im)
{
    if constexpr (is_complex<T>) return {real_t<T>(re), real_t<T>(im)};
    else return T(re);
}
template <class T> T hermitian(T a)
{
    if constexpr (is_complex<T>) return {a.re, 0};
    else return a;
}

// A triangle of order n in all of whose unread places stand NaN, and the vectors.
template <class T> struct Case {
    char uplo;
    i64 n, nb, lda;
    Guarded<T> a, x, y;
    std::vector<T> a_before, y_before;

    Case(char uplo, i64 n, i64 nb, i64 padding, const Triple& shifts, bool whole_numbers = true)
        : uplo(uplo), n(n), nb(nb), lda(n + padding), a(n * lda, Edge::start, shifts[0]), x(n, Edge::start, shifts[1]),
          y(n, Edge::start, shifts[2])
    {
        Random random(n * 100 + nb);
        const auto value = [&] { return whole_numbers ? whole<T>(random) : random.value<T>(); };
        for (i64 j = first(); j < last(); ++j)
            for (i64 i = 0; i < n; ++i)
                if (stored(i, j)) a[i + j * lda] = value();
        for (T& e : x) e = value();
        for (T& e : y) e = value();
        a_before.assign(a.begin(), a.end()), y_before.assign(y.begin(), y.end());
    }
    bool upper() const { return (uplo | 32) == 'u'; }
    i64 first() const { return upper() ? max(n - nb, 0) : 0; }
    i64 last() const { return upper() ? n : min(nb, n); }
    bool stored(i64 i, i64 j) const { return j >= first() && j < last() && (upper() ? i <= j : i >= j); }
    T at(i64 i, i64 j) const
    {
        const T e = a_before[i + j * lda];
        return i == j ? hermitian(e) : e;
    }

    void multiply(T alpha, T beta) const
    {
        const i64 strides[] = {7, -3}; // not looked at
        kernel<SymvNb<T>>("lapack_ps", named<T>("symv_nb", "hemv_nb"))(&uplo, &n, &nb, &alpha, a.data(), &lda, x.data(),
                                                                       strides, &beta, y.data(), strides + 1);
    }
    void update(T alpha) const
    {
        const i64 strides[] = {0, 5};
        kernel<Syr2Nb<T>>("lapack_ps", named<T>("syr2_nb", "her2_nb"))(&uplo, &n, &nb, &alpha, x.data(), strides,
                                                                       y.data(), strides + 1, a.data(), &lda);
    }
    std::string text() const
    {
        return std::string("panel ") + letter<T> + " " + uplo + " n=" + std::to_string(n) +
               " nb=" + std::to_string(nb) + " lda=" + std::to_string(lda) +
               " a%16=" + std::to_string(reinterpret_cast<std::uintptr_t>(a.data()) % 16) +
               " x%16=" + std::to_string(reinterpret_cast<std::uintptr_t>(x.data()) % 16) +
               " y%16=" + std::to_string(reinterpret_cast<std::uintptr_t>(y.data()) % 16);
    }

    // y as the product leaves it, in the order of the plain path.
    std::vector<T> product(T alpha, T beta) const
    {
        std::vector<T> to(y_before);
        if (beta != one<T>)
            for (T& e : to) e = beta == zero<T> ? zero<T> : beta * e;
        for (i64 j = first(); j < last(); ++j) {
            const T t = alpha * x[j];
            T s = zero<T>;
            to[j] += t * at(j, j);
            for (i64 i = 0; i < n; ++i)
                if (i != j && stored(i, j)) to[i] += t * at(i, j), s += conj(at(i, j)) * x[i];
            to[j] += alpha * s;
        }
        return to;
    }
    void expect_product(const std::vector<T>& expected) const
    {
        for (i64 i = 0; i < n; ++i) ASSERT_TRUE(y[i] == expected[i]) << text() << " at " << i;
        ASSERT_EQ(std::memcmp(a.data(), a_before.data(), a.size() * sizeof(T)), 0) << text();
    }
    // Bit for bit on either path: each element is computed alone.
    void expect_update(T alpha) const
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < lda; ++i) {
                T expected = a_before[i + j * lda];
                if (i < n && stored(i, j)) {
                    expected = expected + (alpha * conj(y[j])) * x[i] + conj(alpha * x[j]) * y[i];
                    if (i == j) expected = hermitian(expected);
                }
                ASSERT_EQ(std::memcmp(&expected, &a[i + j * lda], sizeof(T)), 0) << text() << " at " << i << ',' << j;
            }
    }
};

// Runs over both triangles, orders and widths on both sides of all blocks, all alignments, and both states.
template <class T, class Body> void each_case(Body body)
{
    for (const char uplo : {'U', 'l'})
        for (const i64 n : {1, 2, 3, 5, 8, 9, 12, 13, 21})
            for (const i64 nb : {i64(1), i64(2), i64(3), i64(4), i64(5), i64(7), n - 1, n, n + 2})
                for (const i64 padding : {0, 1, 2})
                    for (const Triple& shifts : {Triple{0, 0, 0}, Triple{1, 1, 1}, Triple{2, 2, 2}, Triple{1, 0, 0},
                                                 Triple{0, 2, 0}, Triple{0, 0, 1}})
                        for (const int state : {1, 2}) {
                            if (nb <= 0) continue;
                            ProbeScope scope;
                            scope->reproducibility = state;
                            body(uplo, n, nb, padding, shifts);
                            EXPECT_EQ(scope->allocations, 0);
                            if (testing::Test::HasFatalFailure()) return;
                        }
}

template <class T> void expect_products()
{
    const T scalars[][2] = {
        {scalar<T>(3, -2), scalar<T>(2, 1)}, {scalar<T>(-1, 1), zero<T>}, {scalar<T>(2, 0), one<T>}};
    each_case<T>([&](char uplo, i64 n, i64 nb, i64 padding, const Triple& shifts) {
        for (const auto& [alpha, beta] : scalars) {
            Case<T> c(uplo, n, nb, padding, shifts);
            const auto expected = c.product(alpha, beta);
            if (beta == zero<T>)
                for (T& e : c.y) std::memset(&e, 0xff, sizeof e); // NaN
            c.multiply(alpha, beta);
            c.expect_product(expected);
            if (testing::Test::HasFatalFailure()) return;
        }
        EXPECT_EQ(probe().reproducibility_asked, 3);
    });
}

TEST(PanelProduct, multiplies_by_the_panel_and_its_mirror_image_on_every_path)
{
    expect_products<float>();
    expect_products<double>();
    expect_products<cpx<float>>();
    expect_products<cpx<double>>();
}

template <class T> void expect_fixed_order()
{
    const T alpha = scalar<T>(3, -2), beta = scalar<T>(2, 1);
    for (const i64 padding : {0, 1})
        for (const Triple& shifts : {Triple{0, 0, 0}, Triple{1, 1, 1}, Triple{1, 0, 0}})
            for (const char uplo : {'U', 'L'}) {
                ProbeScope scope;
                scope->reproducibility = 2;
                Case<T> c(uplo, 40, 23, padding, shifts, false);
                const auto expected = c.product(alpha, beta);
                c.multiply(alpha, beta);
                c.expect_product(expected);
            }
    // Free to choose, but out of step: columns an odd number apart, or one pointer in another place of a register.
    ProbeScope scope;
    scope->reproducibility = 1;
    for (const auto& [n, shifts] :
         {std::pair<i64, Triple>(41, {0, 0, 0}), {40, {1, 0, 0}}, {40, {0, 1, 0}}, {40, {0, 0, 1}}, {40, {1, 1, 0}}}) {
        if (n == 40 && sizeof(T) == 16) continue; // each fills a register
        Case<T> c('L', n, 23, 0, shifts, false);
        const auto expected = c.product(alpha, beta);
        c.multiply(alpha, beta);
        c.expect_product(expected);
    }
}

TEST(PanelProduct, keeps_the_plain_order_where_results_are_reproducible_or_operands_out_of_step)
{
    expect_fixed_order<float>();
    expect_fixed_order<double>();
    expect_fixed_order<cpx<float>>();
    expect_fixed_order<cpx<double>>();
}

template <class T> void expect_updates()
{
    const T alpha = scalar<T>(3, -2);
    each_case<T>([&](char uplo, i64 n, i64 nb, i64 padding, const Triple& shifts) {
        const Case<T> c(uplo, n, nb, padding, shifts, false);
        c.update(alpha);
        c.expect_update(alpha);
        EXPECT_EQ(probe().reproducibility_asked, 1);
    });
}

TEST(PanelUpdate, computes_each_element_alone_on_every_path)
{
    expect_updates<float>();
    expect_updates<double>();
    expect_updates<cpx<float>>();
    expect_updates<cpx<double>>();
}

TEST(PanelUpdate, does_nothing_and_asks_nothing_without_order_or_width)
{
    for (const Triple& size : {Triple{0, 4}, Triple{-1, 4}, Triple{4, 0}, Triple{4, -2}}) {
        ProbeScope scope;
        const char uplo = 'U';
        const i64 inc = 1, lda = 4;
        const double alpha = 1, beta = 0;
        double y[4] = {1, 2, 3, 4};
        kernel<SymvNb<double>>("lapack_ps", "dsymv_nb")(&uplo, &size[0], &size[1], &alpha, nullptr, &lda, nullptr, &inc,
                                                        &beta, y, &inc);
        kernel<Syr2Nb<double>>("lapack_ps", "dsyr2_nb")(&uplo, &size[0], &size[1], &alpha, nullptr, &inc, nullptr, &inc,
                                                        nullptr, &lda);
        EXPECT_EQ(y[0] + y[1] + y[2] + y[3], 10);
        EXPECT_EQ(scope->reproducibility_asked, 0);
    }
}

// Rank 2k, of whole numbers: exact in any order.
template <class T> struct Depth {
    char uplo, trans;
    i64 n, k, nb, lda, ldc;
    Guarded<T> a, b, c;
    std::vector<T> before;

    Depth(char uplo, char trans, i64 n, i64 k, i64 nb, i64 padding, const Triple& shifts)
        : uplo(uplo), trans(trans), n(n), k(k), nb(nb), lda((plain() ? n : k) + padding), ldc(n + padding),
          a((plain() ? k : n) * lda, Edge::start, shifts[0]), b((plain() ? k : n) * lda, Edge::start, shifts[1]),
          c(n * ldc, Edge::start, shifts[2])
    {
        Random random(n * 100 + k);
        for (auto* m : {&a, &b})
            for (T& e : *m) e = whole<T>(random);
        for (T& e : c) e = whole<T>(random);
        before.assign(c.begin(), c.end());
    }
    bool plain() const { return (trans | 32) == 'n'; }
    bool upper() const { return (uplo | 32) == 'u'; }
    bool stored(i64 i, i64 j) const { return i < n && (upper() ? i <= j && j >= n - nb : i >= j && j < nb); }
    void expect(T alpha, real_t<T> beta)
    {
        if (beta == 0)
            for (i64 j = 0; j < n; ++j)
                for (i64 i = 0; i < n; ++i)
                    if (stored(i, j)) std::memset(&c[i + j * ldc], 0xff, sizeof(T));
        kernel<Syr2kNb<T>>("lapack_ps", named<T>("syr2k_nb", "her2k_nb"))(&uplo, &trans, &n, &k, &nb, &alpha, a.data(),
                                                                          &lda, b.data(), &lda, &beta, c.data(), &ldc);
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < ldc; ++i) {
                T sum = before[i + j * ldc];
                if (stored(i, j)) {
                    if (i == j) sum = hermitian(sum);
                    sum = scalar<T>(static_cast<int>(beta), 0) * sum;
                    for (i64 l = 0; l < k; ++l) {
                        const auto of = [&](const Guarded<T>& m, i64 r) {
                            return plain() ? m[r + l * lda] : m[l + r * lda];
                        };
                        const auto ahead = [&](T e) { return plain() ? e : conj(e); };
                        const auto behind = [&](T e) { return plain() ? conj(e) : e; };
                        sum += alpha * (ahead(of(a, i)) * behind(of(b, j)));
                        sum += conj(alpha) * (ahead(of(b, i)) * behind(of(a, j)));
                    }
                    if (i == j) sum = hermitian(sum);
                }
                ASSERT_TRUE(sum == c[i + j * ldc])
                    << "syr2k_nb " << letter<T> << ' ' << uplo << trans << " n=" << n << " k=" << k << " nb=" << nb
                    << " lda=" << lda << " ldc=" << ldc << " at " << i << ',' << j;
            }
    }
};

template <class T> void expect_depths()
{
    for (const char uplo : {'U', 'l'})
        for (const char trans : {'n', is_complex<T> ? 'C' : 'T'})
            for (const i64 n : {1, 2, 3, 6, 9})
                for (const i64 k : {1, 3, 4, 5, 11})
                    for (const i64 nb : {i64(1), i64(5), n})
                        for (const i64 padding : {0, 1, 2})
                            for (const Triple& shifts : {Triple{0, 0, 0}, Triple{1, 1, 1}, Triple{0, 1, 0}})
                                for (const int beta : {0, 1, -2}) {
                                    Depth<T>(uplo, trans, n, k, nb, padding, shifts)
                                        .expect(scalar<T>(3, -2), real_t<T>(beta));
                                    if (testing::Test::HasFatalFailure()) return;
                                }
}

TEST(PanelUpdate, of_rank_2k_has_the_exact_result_of_whole_numbers_on_every_path)
{
    expect_depths<float>();
    expect_depths<double>();
    expect_depths<cpx<float>>();
    expect_depths<cpx<double>>();
}

TEST(PanelUpdate, of_rank_2k_leaves_c_without_depth)
{
    ProbeScope scope;
    for (const Triple& size : {Triple{0, 3, 3}, Triple{3, 0, 3}, Triple{3, 3, 0}}) {
        const char uplo = 'L', trans = 'N';
        const i64 ld = 3;
        const double alpha = 1, beta = 0;
        kernel<Syr2kNb<double>>("lapack_ps", "dsyr2k_nb")(&uplo, &trans, &size[0], &size[1], &size[2], &alpha, nullptr,
                                                          &ld, nullptr, &ld, &beta, nullptr, &ld);
    }
    EXPECT_EQ(scope->reproducibility_asked, 0);
}

} // namespace
} // namespace orv::test
