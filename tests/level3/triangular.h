// A triangular problem that is solved and multiplied exactly. A and X are small whole numbers, the diagonal of A powers
// of two (times powers of i): then the product and the solve that undoes it are exact, whatever their order. What of A
// is not to be read holds NaN.
#pragma once

#include "frame/kernels/blas.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/line.h"
#include "tests/support/whole.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace orv::test {

template <class T> T number(double re, double im = 0)
{
    if constexpr (is_complex<T>) return {real_t<T>(re), real_t<T>(im)};
    else return T(re);
}
template <class T> T nan_of() { return number<T>(std::numeric_limits<double>::quiet_NaN()); }
template <class T> bool same_bits(const T& a, const T& b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

template <class T> T power_of_two(Random& random)
{
    const double size = std::ldexp(random.integer(0, 1) ? 1 : -1, static_cast<int>(random.integer(-1, 2)));
    return is_complex<T> && random.integer(0, 1) ? number<T>(0, size) : number<T>(size);
}

struct Options {
    char side, uplo, trans, diag;
    bool left() const { return fold(side) == 'L'; }
    bool unit() const { return fold(diag) == 'U'; }
    bool upper() const { return fold(uplo) == 'U'; }
    bool plain() const { return fold(trans) == 'N'; }
    std::string text() const { return {side, uplo, trans, diag}; }
};

template <class T> std::vector<Options> all_options()
{
    std::vector<Options> all;
    for (const char side : {'L', 'r'})
        for (const char uplo : {'U', 'l'})
            for (const char trans : {'N', 't', 'C'})
                for (const char diag : {'N', 'u'}) all.push_back({side, uplo, trans, diag});
    return all;
}

// X, and P = op(A)*X or X*op(A); B, of the same shape, is whichever a routine starts from.
template <class T> struct Problem {
    Options o;
    i64 m, n, lda, ldb;
    T alpha;
    Guarded<T> a, b;
    std::vector<T> x, p;

    Problem(Options options, i64 rows, i64 columns, T f)
        : o(options), m(rows), n(columns), lda(max(order(), 1) + order() % 3), ldb(max(m, 1) + n % 3), alpha(f),
          a(order() * lda), b(n * ldb), x(n * ldb), p(n * ldb)
    {
        Random random(static_cast<std::uint64_t>(m * 1000 + n));
        for (T& e : a) e = nan_of<T>();
        for (i64 j = 0; j < order(); ++j) {
            for (i64 i = o.upper() ? 0 : j + 1; i < (o.upper() ? j : order()); ++i) a[i + j * lda] = whole<T>(random);
            if (!o.unit()) a[j * (lda + 1)] = power_of_two<T>(random);
        }
        for (T& e : x) e = whole<T>(random);
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < m; ++i) {
                T& sum = p[i + j * ldb] = zero<T>;
                if (o.left()) each(i, true, [&](i64 k, T t) { sum += t * x[k + j * ldb]; });
                else each(j, false, [&](i64 k, T t) { sum += x[i + k * ldb] * t; });
            }
    }
    i64 order() const { return o.left() ? m : n; }
    // body(k, element) for the elements of row or column i of op(A).
    template <class Body> void each(i64 i, bool row, const Body& body) const
    {
        const bool above = o.upper() == o.plain(); // op(A) is upper
        const i64 from = above == row ? i : 0, to = above == row ? order() : i + 1;
        for (i64 k = from; k < to; ++k) {
            T e = row == o.plain() ? a[i + k * lda] : a[k + i * lda];
            if (o.unit() && k == i) e = one<T>;
            else if constexpr (is_complex<T>)
                if (fold(o.trans) == 'C') e = conj(e);
            body(k, e);
        }
    }
    void start(const std::vector<T>& from) const { std::copy(from.begin(), from.end(), b.begin()); }
    template <class F = kernels::blas::Trmm<T>> void call(const std::string& name) const
    {
        kernel<F>("blas", name)(&o.side, &o.uplo, &o.trans, &o.diag, &m, &n, &alpha, a.data(), &lda, b.data(), &ldb);
    }
    void call_plain(const std::string& name) const
    {
        const char upper = o.upper(), is_n = o.plain(), is_t = fold(o.trans) == 'T';
        kernel<kernels::blas::TrmmPlain<T>>("blas", name)(&o.side, &upper, &is_n, &is_t, &o.diag, &m, &n, a.data(),
                                                          &lda, b.data(), &ldb);
    }
    void call_letters(const std::string& name) const
    {
        kernel<kernels::blas::TrmmOfForm<T>>("blas", name)(&o.diag, &m, &n, a.data(), &lda, b.data(), &ldb);
    }
    // With the stored triangle of A column after column without gaps.
    void call_packed(const std::string& name) const
    {
        Guarded<T> packed(order() * (order() + 1) / 2);
        T* to = packed.data();
        for (i64 j = 0; j < order(); ++j)
            for (i64 i = o.upper() ? 0 : j; i < (o.upper() ? j + 1 : order()); ++i) *to++ = a[i + j * lda];
        kernel<kernels::blas::Ptrmm<T>>("blas", name)(&o.side, &o.uplo, &o.trans, &o.diag, &m, &n, &alpha,
                                                      packed.data(), b.data(), &ldb);
    }
    // B = f*expected, and padding as it was in both.
    void expect(const std::vector<T>& expected, const std::vector<T>& before, T f, const std::string& name) const
    {
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < ldb; ++i) {
                const i64 e = i + j * ldb;
                if (i >= m) ASSERT_TRUE(same_bits(b[e], before[e])) << text(name, i, j) << " is padding";
                else ASSERT_EQ(b[e], f == zero<T> ? zero<T> : f * expected[e]) << text(name, i, j);
            }
    }
    void expect_untouched(const std::vector<T>& before) const
    {
        ASSERT_TRUE(std::equal(before.begin(), before.end(), b.begin(), same_bits<T>)) << text("untouched", 0, 0);
    }
    std::string text(const std::string& name, i64 i, i64 j) const
    {
        Line text = line<T>(name.find("trmm") != name.npos ? "trmm" : "trsm", o.text());
        text.with("m", m).with("n", n).with("alpha", alpha).with("lda", lda).with("ldb", ldb);
        return text.text(name + " at (" + std::to_string(i) + ',' + std::to_string(j) + ')');
    }
};

} // namespace orv::test
