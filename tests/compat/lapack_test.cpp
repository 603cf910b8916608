// liborv_lapack beside the reference: the same results up to rounding on well-conditioned problems, the same reports of
// bad arguments, and what it leaves to the library behind it.
#include "tests/compat/errors.h"
#include "tests/support/bounds.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"
#include "tests/support/sanitized.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <stdexcept>
#include <unistd.h>
#include <vector>

namespace orv::test {
namespace {

void* opened(const char* path)
{
    void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw std::runtime_error(dlerror());
    return handle;
}
void* ours()
{
    static void* const handle = opened(ORV_LAPACK);
    return handle;
}
void* theirs()
{
    static void* const handle = opened(REFERENCE_LAPACK);
    return handle;
}

// Scalars by pointer, arrays as they are, Fortran's lengths of strings behind all.
template <class R, class... P> R call(void* library, const std::string& name, const P*... arguments)
{
    void* const found = dlsym(library, name.c_str());
    if (found == nullptr) throw std::runtime_error("no symbol " + name);
    return reinterpret_cast<R (*)(const P*..., std::size_t, std::size_t, std::size_t)>(found)(arguments..., 1, 1, 1);
}

template <class T> std::string named(const char* name) { return letter<T> + std::string(name) + '_'; }

template <class T> std::vector<T> random_values(i64 n, int stream)
{
    Random random(stream);
    std::vector<T> values(n);
    random.fill(values);
    return values;
}
template <class T> long double size_of(T a)
{
    if constexpr (is_complex<T>) return std::hypot((long double)a.re, (long double)a.im);
    else return std::fabs((long double)a);
}

// Two vectors that came by different orders of the same `terms` operations on data without cancellation, or by backward
// stable methods on a problem with a condition number below 4: each is off by at most gamma(terms) of the largest.
template <class T>
void expect_close(const std::vector<T>& mine, const std::vector<T>& other, i64 terms, const std::string& what)
{
    long double largest = 0, off = 0;
    ASSERT_EQ(mine.size(), other.size());
    for (std::size_t i = 0; i < mine.size(); ++i) {
        largest = std::max(largest, size_of(other[i]));
        const long double difference = size_of(mine[i] - other[i]);
        off = difference <= off ? off : difference; // NaN stays
    }
    EXPECT_LE(off, 8 * gamma_n<T>(terms + 4) * largest) << what;
}

// Runs body(library, result) on both and compares what it leaves in the result.
template <class T>
void expect_same(i64 terms, const std::string& what, const std::function<void(void*, std::vector<T>&)>& body)
{
    std::vector<T> mine, other;
    body(ours(), mine), body(theirs(), other);
    expect_close(mine, other, terms, what);
    EXPECT_TRUE(take_reports().empty()) << what;
}

template <class T> void expect_factors()
{
    for (const char* routine : {"potrf", "potrf2"})
        for (const char uplo : {'U', 'l'})
            for (const i32 n : {0, 1, 5, 19, 20, 39, 40, 50, 64, 65, 130})
                for (const i32 failing : {0, (n + 1) / 2}) {
                    const i32 lda = n + 3;
                    expect_same<T>(n, std::string(routine) + letter<T> + uplo + std::to_string(n),
                                   [&](void* library, auto& a) {
                                       a = random_values<T>(lda * std::max(n, 1), n);
                                       for (i32 j = 0; j < n; ++j) a[j + j * lda] = element<T>::make(real_t<T>(n + 1));
                                       if (failing > 0) a[(failing - 1) * (lda + 1)] = element<T>::make(-1);
                                       i32 info = 77;
                                       call<void>(library, named<T>(routine), &uplo, &n, a.data(), &lda, &info);
                                       EXPECT_EQ(info, failing) << routine << n;
                                       if (failing > 0) a.clear();
                                   });
                }
}

template <class T> void expect_tridiagonal_solutions()
{
    for (const i32 n : {1, 2, 3, 17, 300, 600}) // pivots are widened on the stack up to 256
        for (const i32 nrhs : {1, 2, 3, 4, 9})
            for (const char trans : {'N', 'T', 'C'}) {
                const i32 ldb = n + 1;
                const std::string what =
                    letter<T> + std::string(" n=") + std::to_string(n) + " nrhs=" + std::to_string(nrhs) + trans;
                expect_same<T>(20, "gttrs " + what, [&](void* library, auto& b) {
                    auto dl = random_values<T>(n, 1), d = random_values<T>(n, 2), du = random_values<T>(n, 3);
                    for (i32 i = 0; i < n; ++i) // rows change places now and then
                        if (i % 5 != 1) d[i] += element<T>::make(4);
                        else if (i + 1 < n) dl[i] += element<T>::make(4), d[i + 1] -= d[i + 1];
                    std::vector<T> du2(n);
                    std::vector<i32> ipiv(n);
                    i32 info = 0;
                    call<void>(theirs(), named<T>("gttrf"), &n, dl.data(), d.data(), du.data(), du2.data(), ipiv.data(),
                               &info);
                    b = random_values<T>(ldb * nrhs, 4);
                    info = 77;
                    call<void>(library, named<T>("gttrs"), &trans, &n, &nrhs, dl.data(), d.data(), du.data(),
                               du2.data(), ipiv.data(), b.data(), &ldb, &info);
                    EXPECT_EQ(info, 0);
                    const i32 itrans = trans == 'N' ? 0 : trans == 'T' ? 1 : 2;
                    call<void>(library, named<T>("gtts2"), &itrans, &n, &nrhs, dl.data(), d.data(), du.data(),
                               du2.data(), ipiv.data(), b.data(), &ldb);
                });
                if (trans == 'T') continue;
                expect_same<T>(20, "pttrs " + what, [&](void* library, auto& b) {
                    std::vector<real_t<T>> d(n, 4);
                    const auto e = random_values<T>(n, 3);
                    i32 info = 77;
                    b = random_values<T>(ldb * nrhs, 4);
                    if constexpr (is_complex<T>) {
                        const char uplo = trans == 'N' ? 'L' : 'u';
                        const i32 iuplo = trans == 'N';
                        call<void>(library, named<T>("pttrs"), &uplo, &n, &nrhs, d.data(), e.data(), b.data(), &ldb,
                                   &info);
                        call<void>(library, named<T>("ptts2"), &iuplo, &n, &nrhs, d.data(), e.data(), b.data(), &ldb);
                    } else {
                        call<void>(library, named<T>("pttrs"), &n, &nrhs, d.data(), e.data(), b.data(), &ldb, &info);
                        call<void>(library, named<T>("ptts2"), &n, &nrhs, d.data(), e.data(), b.data(), &ldb);
                    }
                    EXPECT_EQ(info, 0);
                });
                if constexpr (!is_complex<T>)
                    expect_same<T>(20, "gtsv " + what, [&](void* library, auto& b) {
                        auto dl = random_values<T>(n, 1), d = random_values<T>(n, 2), du = random_values<T>(n, 3);
                        for (T& e : d) e += 4;
                        b = random_values<T>(ldb * nrhs, 4);
                        i32 info = 77;
                        call<void>(library, named<T>("gtsv"), &n, &nrhs, dl.data(), d.data(), du.data(), b.data(), &ldb,
                                   &info);
                        EXPECT_EQ(info, 0);
                    });
            }
}

template <class T> void expect_complete_pivoting()
{
    for (const i32 n : {1, 2, 8, 30, 300}) {
        std::vector<i32> pivots[2];
        int run = 0;
        expect_same<T>(n, std::string("getc2 ") + letter<T> + std::to_string(n), [&](void* library, auto& a) {
            a = random_values<T>(n * n, n); // no two elements are as large, so there is one order of pivots
            std::vector<i32>& p = pivots[run++];
            p.assign(2 * n, 0);
            i32 info = 77;
            call<void>(library, named<T>("getc2"), &n, a.data(), &n, p.data(), p.data() + n, &info);
            EXPECT_EQ(info, 0);
            if (n > 30) a.clear(); // complete pivoting lets rounding choose sooner or later
        });
        EXPECT_TRUE(n > 30 || pivots[0] == pivots[1]) << n;
    }
}

template <class T> void expect_norms()
{
    for (const i32 m : {0, 1, 7, 40})
        for (const i32 n : {0, 1, 9}) {
            const i32 lda = m + 2;
            for (const int nans : {0, 1})
                for (const char norm : {'M', 'm', 'O', '1', 'I', 'f', 'E'}) {
                    auto a = random_values<T>(lda * (n + 1), m);
                    if (nans && m > 0 && n > 0) a[(n - 1) * lda] = element<T>::make(NAN);
                    std::vector<real_t<T>> work(m + 1);
                    const auto value = [&](void* library) {
                        return call<real_t<T>>(library, named<T>("lange"), &norm, &m, &n, a.data(), &lda, work.data());
                    };
                    const auto mine = value(ours()), other = value(theirs());
                    if (std::isnan(other)) EXPECT_TRUE(std::isnan(mine)) << norm << m << ' ' << n;
                    else expect_close<real_t<T>>({mine}, {other}, m + n, std::string("lange ") + norm);
                }
        }
    for (const i32 n : {0, 1, 2, 33})
        for (const char uplo : {'U', 'L'})
            for (const char norm : {'M', 'O', '1', 'I', 'F', 'E'})
                for (const char* routine : {"lansy", "lanhe"}) {
                    if (!is_complex<T> && routine[4] == 'e') continue;
                    const auto a = random_values<T>((n + 1) * (n + 1), n);
                    const i32 lda = n + 1;
                    std::vector<real_t<T>> work(n + 1);
                    const auto value = [&](void* library) {
                        return call<real_t<T>>(library, named<T>(routine), &norm, &uplo, &n, a.data(), &lda,
                                               work.data());
                    };
                    expect_close<real_t<T>>({value(ours())}, {value(theirs())}, 2 * n, std::string(routine) + norm);
                }
}

template <class T> void expect_rotations()
{
    using R = real_t<T>;
    for (const char side : {'L', 'r'}) // the right one comes from the library behind
        for (const char pivot : {'V', 't', 'B'})
            for (const char direct : {'F', 'b'})
                for (const i32 m : {1, 2, 9, 20})
                    for (const i32 n : {1, 4, 9}) {
                        const i32 lda = m + 1, count = side == 'L' ? m : n;
                        expect_same<T>(2 * count, std::string("lasr ") + side + pivot + direct,
                                       [&](void* library, auto& a) {
                                           auto c = random_values<R>(count, 1), s = c;
                                           for (i32 i = 0; i < count; ++i) s[i] = std::sqrt(1 - c[i] * c[i]);
                                           a = random_values<T>(lda * n, 3);
                                           call<void>(library, named<T>("lasr"), &side, &pivot, &direct, &m, &n,
                                                      c.data(), s.data(), a.data(), &lda);
                                       });
                    }
    for (const i32 inc : {1, 2})
        expect_same<T>(4, "lartv", [&](void* library, auto& x) {
            const i32 n = 11;
            const auto c = random_values<R>(n * inc, 1);
            const auto s = random_values<T>(n * inc, 2);
            x = random_values<T>(2 * n * inc, 3);
            call<void>(library, named<T>("lartv"), &n, x.data(), &inc, x.data() + n * inc, &inc, c.data(), s.data(),
                       &inc);
        });
}

template <class T> void expect_reflectors()
{
    for (const char side : {'L', 'R'})
        for (i32 order = 1; order <= 13; ++order) {
            const i32 m = side == 'L' ? order : 9, n = side == 'L' ? 9 : order, ldc = m + 1;
            expect_same<T>(2 * order, std::string("larfx ") + side + std::to_string(order),
                           [&](void* library, auto& c) {
                               const auto v = random_values<T>(order, 1), tau = random_values<T>(1, 2);
                               std::vector<T> work(20);
                               c = random_values<T>(ldc * n, 3);
                               call<void>(library, named<T>("larfx"), &side, &m, &n, v.data(), tau.data(), c.data(),
                                          &ldc, work.data());
                           });
        }
}

template <class T> void expect_secular_roots()
{
    for (const i32 n : {1, 2, 3, 10})
        for (i32 i = 1; i <= n; ++i)
            expect_same<T>(20, "lasd4", [&](void* library, auto& result) {
                std::vector<T> d(n), z(n, T(1)), delta(n), work(n);
                for (i32 j = 0; j < n; ++j) d[j] = T(j + 1), z[j] = T(1) / std::sqrt(T(n));
                const T rho = 2;
                T sigma = 0;
                i32 info = 77;
                call<void>(library, named<T>("lasd4"), &n, &i, d.data(), z.data(), delta.data(), &rho, &sigma,
                           work.data(), &info);
                EXPECT_EQ(info, 0);
                result = {sigma};
            });
}

class Lapack : public testing::Test {
    void SetUp() override
    {
        if (access(REFERENCE_LAPACK, R_OK) != 0) GTEST_SKIP() << "the reference LAPACK is not installed";
    }
};

template <class T> void expect_the_same_as_the_reference()
{
    expect_factors<T>();
    expect_tridiagonal_solutions<T>();
    expect_complete_pivoting<T>();
    expect_norms<T>();
    expect_rotations<T>();
    if constexpr (!is_complex<T>) expect_secular_roots<T>();
}

TEST_F(Lapack, computes_what_the_reference_does_in_single) { expect_the_same_as_the_reference<float>(); }
TEST_F(Lapack, computes_what_the_reference_does_in_double)
{
    expect_the_same_as_the_reference<double>();
    expect_reflectors<double>();
}
TEST_F(Lapack, computes_what_the_reference_does_in_complex_single)
{
    expect_the_same_as_the_reference<cpx<float>>();
    expect_reflectors<cpx<float>>();
    for (const char uplo : {'U', 'l'})
        expect_same<cpx<float>>(4, "spr", [&](void* library, auto& a) {
            const i32 n = 9, inc = -2;
            const cpx<float> alpha = {1, 2};
            const auto x = random_values<cpx<float>>(18, 1);
            a = random_values<cpx<float>>(45, 2);
            call<void>(library, "cspr_", &uplo, &n, &alpha, x.data(), &inc, a.data());
        });
}
TEST_F(Lapack, computes_what_the_reference_does_in_complex_double) { expect_the_same_as_the_reference<cpx<double>>(); }

// A call whose letters and integers can be made bad, one at a time. Of its integers those below zero are the leading
// dimensions, as small as they may be; 0 stands for an array.
struct Call {
    std::string name, letters;
    std::vector<int> integers;
    bool has_info;
};
using Outcome = std::pair<std::vector<Report>, i32>;

// Argument `bad` gets the value, or another letter.
Outcome outcome(void* library, const std::string& name, const Call& c, std::size_t bad, i32 value)
{
    std::string letters = c.letters;
    std::vector<i32> integers;
    for (const int i : c.integers) integers.push_back(std::abs(i));
    if (bad < letters.size()) letters[bad] = 'Q';
    else integers[bad - letters.size()] = value;
    std::vector<double> array(100);
    i32 info = 77;
    std::vector<void*> p;
    for (char& letter : letters) p.push_back(&letter);
    for (std::size_t i = 0; i < integers.size(); ++i)
        p.push_back(c.integers[i] == 0 ? static_cast<void*>(array.data()) : &integers[i]);
    if (c.has_info) p.push_back(&info);
    p.resize(20);
    using V = void*;
    using F = void(V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V, V);
    reinterpret_cast<F*>(dlsym(library, name.c_str()))(p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9],
                                                       p[10], p[11], p[12], p[13], p[14], p[15], p[16], p[17], p[18],
                                                       p[19]);
    return {take_reports(), info};
}

TEST_F(Lapack, reports_bad_arguments_as_the_reference_does)
{
    const Call calls[] = {
        {"potrf", "U", {3, 0, -3}, true},
        {"potrf2", "L", {3, 0, -3}, true},
        {"gtsv", "", {3, 2, 0, 0, 0, 0, -3}, true},
        {"gttrs", "T", {3, 2, 0, 0, 0, 0, 0, 0, -3}, true},
        {"pttrs", "", {3, 2, 0, 0, 0, -3}, true},
        {"pttrs", "U", {3, 2, 0, 0, 0, -3}, true},
        {"lasr", "LVF", {3, 2, 0, 0, 0, -3}, false},
        {"lasd3", "", {2, 2, 1, 3, 0, 0, -3, 0, 0, -5, 0, -5, 0, -6, 0, -6, 0, 0, 0}, true},
    };
    for (const Call& c : calls)
        for (const char type : {'s', 'd', 'c', 'z'}) {
            const std::string name = type + c.name + '_';
            const bool is_complex_type = type == 'c' || type == 'z';
            if (dlsym(ours(), name.c_str()) == nullptr) continue;
            if (c.name == "pttrs" && is_complex_type == c.letters.empty()) continue;
            for (std::size_t bad = 0; bad < c.letters.size() + c.integers.size(); ++bad) {
                const int good = bad < c.letters.size() ? 1 : c.integers[bad - c.letters.size()];
                for (const i32 value : {-1, good < 0 ? -good - 1 : -2}) {
                    if (good == 0) continue;
                    const Outcome mine = outcome(ours(), name, c, bad, value),
                                  other = outcome(theirs(), name, c, bad, value);
                    EXPECT_EQ(mine, other) << name << ' ' << bad << " = " << value;
                    EXPECT_EQ(mine.first.size(), 1u) << name << ' ' << bad << " = " << value;
                }
            }
        }
    const i32 none = 0, one = 1;
    const cpx<float> alpha = {1, 0};
    call<void>(ours(), "cspr_", "U", &one, &alpha, &alpha, &none, &alpha);
    EXPECT_EQ(take_reports(), (std::vector<Report>{{"xerbla_", "CSPR  ", 5, ""}}));
}

TEST_F(Lapack, says_so_once_where_no_library_stands_behind)
{
    if (sanitized()) GTEST_SKIP() << "the sanitizer has a dlopen of its own";
    std::FILE* const pipe = popen(ALONE " 2>&1", "r");
    std::string said;
    for (int c; (c = std::fgetc(pipe)) != EOF;) said += static_cast<char>(c);
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_EQ(said,
              "orv: dlasr_ is called with arguments that liborv_lapack leaves to the LAPACK behind it, and there is "
              "none: link the program with one, or install liblapack.so.3\n"
              "1 2 3 4\n"   // left alone
              "2 -1 4 -3\n" // a quarter turn
              " ** On entry to DLASR  parameter number  4 had an illegal value\n");
}

} // namespace
} // namespace orv::test
