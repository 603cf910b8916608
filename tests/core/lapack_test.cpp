// The native routines of LAPACK's kind: Cholesky factorisation, tridiagonal systems from both ends, scaled copies.
#include "tests/support/bounds.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/probe.h"
#include "tests/support/random.h"

#define ORV_COMPLEX_FLOAT orv::cpx<float>
#define ORV_COMPLEX_DOUBLE orv::cpx<double>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <orv/orv.h>
#include <vector>

namespace orv::test {
namespace {

template <class T> struct Routines;
#define ROUTINES(t, T)                                                                                                 \
    template <> struct Routines<T> {                                                                                   \
        static constexpr auto potrf = orv_##t##potrf;                                                                  \
        static constexpr auto dttrfb = orv_##t##dttrfb;                                                                \
        static constexpr auto dttrsb = orv_##t##dttrsb;                                                                \
        static constexpr auto dtsvb = orv_##t##dtsvb;                                                                  \
        static constexpr auto lacpy2 = orv_##t##lacpy2;                                                                \
        static constexpr auto lacpy3 = orv_##t##lacpy3;                                                                \
    };
ROUTINES(s, float)
ROUTINES(d, double)
ROUTINES(c, cpx<float>)
ROUTINES(z, cpx<double>)

using Wide = cpx<long double>;
template <class T> Wide wide(T a)
{
    if constexpr (is_complex<T>) return {a.re, a.im};
    else return {a, 0};
}
long double size_of(Wide a) { return std::hypot(a.re, a.im); }
template <class T> T real(real_t<T> a) { return element<T>::make(a); }

// A positive definite matrix whose other triangle and padding are NaN.
template <class T> struct Definite {
    char uplo;
    i64 n, lda;
    Guarded<T> a;
    std::vector<T> before;

    Definite(char uplo, i64 n, i64 padding)
        : uplo(uplo), n(n), lda(max(n, 1) + padding), a(n > 0 ? (n - 1) * lda + n : 0)
    {
        Random random(n);
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < n; ++i)
                if (stored(i, j)) at(i, j) = random.value<T>();
        for (i64 j = 0; j < n; ++j) {
            at(j, j) = real<T>(real_t<T>(n) + random.value<real_t<T>>());
            if constexpr (is_complex<T>) at(j, j).im = 7; // taken as 0
        }
        keep();
    }
    void keep() { before.assign(a.begin(), a.end()); }
    bool upper() const { return (uplo | 32) == 'u'; }
    bool stored(i64 i, i64 j) const { return upper() ? i <= j : i >= j; }
    T& at(i64 i, i64 j) const { return a[i + j * lda]; }
    std::string text() const
    {
        return std::string("potrf ") + letter<T> + ' ' + uplo + " n=" + std::to_string(n) +
               " lda=" + std::to_string(lda);
    }
    i64 factor() const
    {
        i64 info = -77;
        EXPECT_EQ(Routines<T>::potrf(uplo, n, a.data(), lda, &info), ORV_OK) << text();
        return info;
    }
    // |L*L^H - A| <= gamma(n+1) * |L|*|L^H|, element by element (Higham, theorem 10.3), for the leading part of a given
    // order; complex products have two roundings more.
    void expect_factor(i64 order) const
    {
        const auto l = [&](i64 i, i64 k) { return upper() ? conj(wide(at(k, i))) : wide(at(i, k)); };
        for (i64 j = 0; j < order; ++j)
            for (i64 i = j; i < order; ++i) {
                Wide sum = {0, 0};
                long double magnitude = 0;
                for (i64 k = 0; k <= j; ++k) {
                    sum += l(i, k) * conj(l(j, k));
                    magnitude += size_of(l(i, k)) * size_of(l(j, k));
                }
                const T old = before[upper() ? j + i * lda : i + j * lda];
                const Wide expected = i == j ? Wide{wide(old).re, 0} : upper() ? conj(wide(old)) : wide(old);
                const long double allowed = gamma_n<T>(order + 4) * magnitude;
                ASSERT_LE(size_of(sum - expected), allowed) << text() << " at " << i << ',' << j;
            }
        for (i64 j = 0; j < n; ++j) {
            ASSERT_TRUE(j >= order || wide(at(j, j)).im == 0) << text();
            for (i64 i = 0; i < (j + 1 < n ? lda : n); ++i)
                ASSERT_TRUE((i < n && stored(i, j)) || std::memcmp(&at(i, j), &before[i + j * lda], sizeof(T)) == 0)
                    << text();
        }
    }
};

template <class T> void expect_factors()
{
    for (const char uplo : {'U', 'L', 'u', 'l'})
        for (const i64 n :
             {0, 1, 2, 3, 5, 8, 15, 16, 17, 31, 32, 33, 34, 47, 48, 49, 63, 64, 65, 66, 96, 97, 130, 150}) {
            if (n > 60 && uplo > 'Z') continue;
            const Definite<T> a(uplo, n, n % 3);
            EXPECT_EQ(a.factor(), 0) << a.text();
            a.expect_factor(n);
            if (testing::Test::HasFatalFailure()) return;
        }
}

TEST(Potrf, factors_positive_definite_matrices_within_the_bound)
{
    expect_factors<float>();
    expect_factors<double>();
    expect_factors<cpx<float>>();
    expect_factors<cpx<double>>();
}

template <class T> void expect_failing_pivots()
{
    for (const char uplo : {'U', 'L'})
        for (const i64 n : {1, 7, 33, 70, 100})
            for (i64 j = 0; j<n; j += n> 40 ? 13 : n > 10 ? 5 : 1)
                for (const real_t<T> pivot : {real_t<T>(0), real_t<T>(-1), real_t<T>(NAN)}) {
                    Definite<T> a(uplo, n, 1);
                    a.at(j, j) = real<T>(pivot);
                    a.keep();
                    ASSERT_EQ(a.factor(), j + 1) << a.text() << " pivot " << pivot;
                    a.expect_factor(j);
                    if (testing::Test::HasFatalFailure()) return;
                }
}

TEST(Potrf, tells_the_first_pivot_that_is_not_positive)
{
    expect_failing_pivots<float>();
    expect_failing_pivots<double>();
    expect_failing_pivots<cpx<float>>();
    expect_failing_pivots<cpx<double>>();
}

TEST(Potrf, goes_on_without_memory)
{
    for (const char uplo : {'U', 'L'}) {
        const Definite<double> a(uplo, 300, 1);
        const Definite<cpx<float>> c(uplo, 150, 0);
        {
            ProbeScope scope;
            scope->fail_all = true;
            EXPECT_EQ(a.factor(), 0);
            EXPECT_EQ(c.factor(), 0);
            EXPECT_GT(scope->failed, 0);
        }
        a.expect_factor(300);
        c.expect_factor(150);
    }
}

TEST(Potrf, refuses_bad_arguments)
{
    double a = 1;
    i64 info = 5;
    EXPECT_EQ(orv_dpotrf('X', 1, &a, 1, &info), -1);
    EXPECT_EQ(orv_dpotrf('U', -1, &a, 1, &info), -2);
    EXPECT_EQ(orv_dpotrf('L', 2, &a, 1, &info), -4);
    EXPECT_EQ(orv_dpotrf('L', 0, &a, 0, &info), -4);
    EXPECT_EQ(info, 5);
    EXPECT_EQ(a, 1);
}

template <class T> void expect_tridiagonal_solutions()
{
    const auto dominant = [](Random& random) {
        T d = random.value<T>();
        return d + real<T>(4);
    };
    for (const i64 n : {1, 2, 3, 4, 5, 20, 101})
        for (const i64 nrhs : {1, 3})
            for (const char trans : {'N', 'T', 'C'}) {
                Random random(n);
                std::vector<T> dl(n), d(n), du(n), b(n * nrhs);
                random.fill(dl), random.fill(du), random.fill(b);
                for (T& e : d) e = dominant(random);
                const auto [dl0, d0, du0, b0] = std::tuple(dl, d, du, b);
                i64 info = 9;
                if (trans == 'N' && nrhs == 3) {
                    EXPECT_EQ(Routines<T>::dtsvb(n, nrhs, dl.data(), d.data(), du.data(), b.data(), n, &info), ORV_OK);
                } else {
                    EXPECT_EQ(Routines<T>::dttrfb(n, dl.data(), d.data(), du.data(), &info), ORV_OK);
                    EXPECT_EQ(info, 0);
                    info = 9;
                    EXPECT_EQ(Routines<T>::dttrsb(trans, n, nrhs, dl.data(), d.data(), du.data(), b.data(), n, &info),
                              ORV_OK);
                }
                EXPECT_EQ(info, 0);
                for (i64 k = 0; k < nrhs; ++k)
                    for (i64 i = 0; i < n; ++i) {
                        Wide sum = {0, 0};
                        long double magnitude = 0;
                        const auto add = [&](T a, i64 j) {
                            const Wide w = trans == 'C' ? conj(wide(a)) : wide(a), x = wide(b[j + k * n]);
                            sum += w * x, magnitude += size_of(w) * size_of(x);
                        };
                        const bool plain = trans == 'N';
                        add(d0[i], i);
                        if (i > 0) add(plain ? dl0[i - 1] : du0[i - 1], i - 1);
                        if (i + 1 < n) add(plain ? du0[i] : dl0[i], i + 1);
                        // Diagonally dominant: the factors' magnitudes are at most three times those of A.
                        const long double allowed = 3 * gamma_n<T>(is_complex<T> ? 16 : 8) * magnitude;
                        ASSERT_LE(size_of(sum - wide(b0[i + k * n])), allowed)
                            << letter<T> << trans << " n=" << n << " nrhs=" << nrhs << " at " << i;
                    }
            }
}

TEST(TridiagonalFromBothEnds, solves_diagonally_dominant_systems)
{
    expect_tridiagonal_solutions<float>();
    expect_tridiagonal_solutions<double>();
    expect_tridiagonal_solutions<cpx<float>>();
    expect_tridiagonal_solutions<cpx<double>>();
}

TEST(TridiagonalFromBothEnds, tells_a_zero_pivot_and_refuses_bad_arguments)
{
    double dl[4] = {}, d[5] = {1, 1, 1, 1, 0}, du[4] = {}, b[5];
    i64 info = 0;
    EXPECT_EQ(orv_ddttrfb(5, dl, d, du, &info), ORV_OK);
    EXPECT_EQ(info, 5);
    EXPECT_EQ(orv_ddttrfb(-1, dl, d, du, &info), -1);
    EXPECT_EQ(orv_ddttrsb('Q', 5, 1, dl, d, du, b, 5, &info), -1);
    EXPECT_EQ(orv_ddttrsb('N', -5, 1, dl, d, du, b, 5, &info), -2);
    EXPECT_EQ(orv_ddttrsb('N', 5, -1, dl, d, du, b, 5, &info), -3);
    EXPECT_EQ(orv_ddttrsb('N', 5, 1, dl, d, du, b, 4, &info), -8);
    EXPECT_EQ(orv_ddtsvb(-5, 1, dl, d, du, b, 5, &info), -1);
    EXPECT_EQ(orv_ddtsvb(5, -1, dl, d, du, b, 5, &info), -2);
    EXPECT_EQ(orv_ddtsvb(5, 1, dl, d, du, b, 4, &info), -7);
}

template <class T> void expect_copies()
{
    const T a[4] = {real<T>(1), real<T>(2), real<T>(3), real<T>(4)}, alpha = real<T>(10), beta = real<T>(-1);
    T b[4] = {real<T>(1), real<T>(1), real<T>(1), real<T>(1)}, packed[3] = {b[0], b[1], b[2]};
    EXPECT_EQ(Routines<T>::lacpy2('L', 2, 2, a, 2, alpha, b, 2, beta), ORV_OK);
    EXPECT_TRUE(b[0] == real<T>(9) && b[1] == real<T>(19) && b[2] == real<T>(1) && b[3] == real<T>(39));
    EXPECT_EQ(Routines<T>::lacpy3('U', 2, 2, a, 2, alpha, packed, beta), ORV_OK);
    EXPECT_TRUE(packed[0] == real<T>(9) && packed[1] == real<T>(29) && packed[2] == real<T>(39));
    EXPECT_EQ(Routines<T>::lacpy2('A', -1, 2, a, 2, alpha, b, 2, beta), -2);
    EXPECT_EQ(Routines<T>::lacpy2('A', 2, -1, a, 2, alpha, b, 2, beta), -3);
    EXPECT_EQ(Routines<T>::lacpy2('A', 2, 2, a, 1, alpha, b, 2, beta), -5);
    EXPECT_EQ(Routines<T>::lacpy2('A', 2, 2, a, 2, alpha, b, 1, beta), -8);
    EXPECT_EQ(Routines<T>::lacpy3('A', 2, 2, a, 1, alpha, b, beta), -5);
}

TEST(ScaledCopy, reaches_its_kernels)
{
    expect_copies<float>();
    expect_copies<double>();
    expect_copies<cpx<float>>();
    expect_copies<cpx<double>>();
}

} // namespace
} // namespace orv::test
