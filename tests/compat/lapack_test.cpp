// liborv_lapack beside the reference: the same results up to rounding on well-conditioned problems.
#include "tests/compat/lapack.h"

namespace orv::test {
namespace {

template <class T> void expect_factors()
{
    for (const char* routine : {"potrf", "potrf2"})
        for (const char uplo : {'U', 'l'})
            for (const i32 n : {0, 1, 5, 19, 20, 39, 40, 50, 64, 65, 130})
                for (const i32 failing : {0, (n + 1) / 2}) {
                    const i32 lda = n + 3;
                    expect_same<T>(n, std::string(routine) + letter<T> + uplo + std::to_string(n),
                                   [&](Library library, auto& a) {
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
                expect_same<T>(20, "gttrs " + what, [&](Library library, auto& b) {
                    auto dl = random_values<T>(n, 1), d = random_values<T>(n, 2), du = random_values<T>(n, 3);
                    for (i32 i = 0; i < n; ++i) // rows change places now and then
                        if (i % 5 != 1) d[i] += element<T>::make(4);
                        else if (i + 1 < n) dl[i] += element<T>::make(4), d[i + 1] -= d[i + 1];
                    std::vector<T> du2(n);
                    Integers ipiv(n);
                    i32 info = 0;
                    call<void>(theirs(), named<T>("gttrf"), &n, dl.data(), d.data(), du.data(), du2.data(), &ipiv,
                               &info);
                    b = random_values<T>(ldb * nrhs, 4);
                    info = 77;
                    call<void>(library, named<T>("gttrs"), &trans, &n, &nrhs, dl.data(), d.data(), du.data(),
                               du2.data(), &ipiv, b.data(), &ldb, &info);
                    EXPECT_EQ(info, 0);
                    const i32 itrans = trans == 'N' ? 0 : trans == 'T' ? 1 : 2;
                    call<void>(library, named<T>("gtts2"), &itrans, &n, &nrhs, dl.data(), d.data(), du.data(),
                               du2.data(), &ipiv, b.data(), &ldb);
                });
                if (trans == 'T') continue;
                expect_same<T>(20, "pttrs " + what, [&](Library library, auto& b) {
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
                    expect_same<T>(20, "gtsv " + what, [&](Library library, auto& b) {
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
        std::vector<Integers> pivots;
        expect_same<T>(n, std::string("getc2 ") + letter<T> + std::to_string(n), [&](Library library, auto& a) {
            a = random_values<T>(n * n, n); // no two elements are as large, so there is one order of pivots
            Integers rows(n), columns(n);
            i32 info = 77;
            call<void>(library, named<T>("getc2"), &n, a.data(), &n, &rows, &columns, &info);
            rows.insert(rows.end(), columns.begin(), columns.end()), pivots.push_back(rows);
            EXPECT_EQ(info, 0);
            if (n > 30) a.clear(); // complete pivoting lets rounding choose sooner or later
        });
        EXPECT_TRUE(n > 30 || (pivots[0] == pivots[1] && pivots[0] == pivots[2])) << n;
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
                    const auto value = [&](Library library) {
                        return call<real_t<T>>(library, named<T>("lange"), &norm, &m, &n, a.data(), &lda, work.data());
                    };
                    const auto mine = value(ours()), other = value(theirs());
                    const auto wide = value(ours(true));
                    EXPECT_TRUE(wide == mine || std::isnan(mine)) << norm << m << ' ' << n;
                    EXPECT_EQ(std::isnan(wide), std::isnan(mine)) << norm << m << ' ' << n;
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
                    const auto value = [&](Library library) {
                        return call<real_t<T>>(library, named<T>(routine), &norm, &uplo, &n, a.data(), &lda,
                                               work.data());
                    };
                    expect_close<real_t<T>>({value(ours())}, {value(theirs())}, 2 * n, std::string(routine) + norm);
                    EXPECT_EQ(value(ours()), value(ours(true)));
                }
}

template <class T> void expect_rotations()
{
    using R = real_t<T>;
    for (const char side : {'L', 'r'}) // the right one comes from the library behind, which has no other names
        for (const char pivot : {'V', 't', 'B'})
            for (const char direct : {'F', 'b'})
                for (const i32 m : {1, 2, 9, 20})
                    for (const i32 n : {1, 4, 9}) {
                        const i32 lda = m + 1, count = side == 'L' ? m : n;
                        expect_same<T>(
                            2 * count, std::string("lasr ") + side + pivot + direct,
                            [&](Library library, auto& a) {
                                auto c = random_values<R>(count, 1), s = c;
                                for (i32 i = 0; i < count; ++i) s[i] = std::sqrt(1 - c[i] * c[i]);
                                a = random_values<T>(lda * n, 3);
                                call<void>(library, named<T>("lasr"), &side, &pivot, &direct, &m, &n, c.data(),
                                           s.data(), a.data(), &lda);
                            },
                            side == 'L');
                    }
    for (const i32 inc : {1, 2})
        expect_same<T>(4, "lartv", [&](Library library, auto& x) {
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
                           [&](Library library, auto& c) {
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
            expect_same<T>(20, "lasd4", [&](Library library, auto& result) {
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

template <class T> void expect_packed_updates()
{
    for (const char uplo : {'U', 'l'})
        for (const i32 inc : {1, -2, 3})
            for (const bool none : {false, true})
                expect_same<T>(4, std::string("spr ") + uplo, [&](Library library, auto& a) {
                    const i32 n = 9;
                    const T alpha = none ? zero<T> : T{1, 2};
                    auto x = random_values<T>(27, 1);
                    if (none) x[3].re = NAN; // not looked at
                    a = random_values<T>(45, 2);
                    call<void>(library, named<T>("spr"), &uplo, &n, &alpha, x.data(), &inc, a.data());
                });
}

// Symmetric and indefinite. Orders on both sides of the one from which the library behind factors. A zero column makes
// info, and pivots of order 2 come with a zero diagonal.
template <class T> void expect_symmetric_factors()
{
    for (const char uplo : {'U', 'l'})
        for (const i32 n : {0, 1, 2, 5, 33, 64, 65, 100})
            for (const i32 zero_column : {0, (n + 1) / 2})
                for (const bool zero_diagonal : {false, true}) {
                    const i32 lda = n + 3;
                    std::vector<Integers> pivots;
                    std::vector<i32> infos;
                    expect_same<T>(n, std::string("sytrf ") + letter<T> + uplo + std::to_string(n),
                                   [&](Library library, auto& a) {
                                       a = random_values<T>(lda * std::max(n, 1), n);
                                       for (i32 j = 0; j < n; ++j)
                                           a[j + j * lda] = zero_diagonal ? 0 : 2 * n * (j % 2 ? 1 : -1);
                                       for (i32 i = 0; i < n && zero_column > 0; ++i)
                                           a[i + (zero_column - 1) * lda] = a[zero_column - 1 + i * lda] = 0;
                                       Integers ipiv(n);
                                       i32 info = 77, lwork = -1;
                                       T size = 0;
                                       call<void>(library, named<T>("sytrf"), &uplo, &n, a.data(), &lda, &ipiv, &size,
                                                  &lwork, &info);
                                       EXPECT_EQ(info, 0);
                                       lwork = std::max(1, static_cast<i32>(size));
                                       std::vector<T> work(lwork);
                                       info = 77;
                                       call<void>(library, named<T>("sytrf"), &uplo, &n, a.data(), &lda, &ipiv,
                                                  work.data(), &lwork, &info);
                                       pivots.push_back(ipiv), infos.push_back(info);
                                       // Without a heavy diagonal rounding may choose, and factors grow.
                                       if (zero_diagonal && n > 5) a.clear(), pivots.back().clear();
                                   });
                    EXPECT_EQ(pivots, std::vector<Integers>(3, pivots[0])) << n;
                    EXPECT_EQ(infos, std::vector<i32>(3, infos[0])) << n;
                    EXPECT_TRUE(zero_diagonal || infos[0] == zero_column) << n;
                }
}

// The first of them counts, in the order in which columns are eliminated.
template <class T> void expect_info_of_pivots_that_are_no_numbers()
{
    const i32 n = 9;
    for (const char uplo : {'u', 'L'})
        for (const i32 no_number : {1, 4, 9})
            for (const i32 zero_column : {0, 2, 7}) {
                std::vector<i32> infos;
                expect_same<T>(n, std::string("sytrf ") + letter<T> + uplo, [&](Library library, auto& a) {
                    a.assign(n * n, T(0));
                    for (i32 j = 0; j < n; ++j) a[j * (n + 1)] = j + 1 == no_number ? T(NAN) : T(j + 1 != zero_column);
                    Integers ipiv(n);
                    std::vector<T> work(64 * n);
                    const i32 lwork = 64 * n;
                    i32 info = 77;
                    call<void>(library, named<T>("sytrf"), &uplo, &n, a.data(), &n, &ipiv, work.data(), &lwork, &info);
                    infos.push_back(info);
                    a.clear(); // it may hold NaN wherever one of them stood
                });
                const bool zero_is_first = zero_column > 0 && (uplo == 'L') == (zero_column < no_number);
                EXPECT_EQ(infos, std::vector<i32>(3, zero_is_first ? zero_column : no_number)) << uplo << no_number;
            }
}

template <class T> void expect_the_same_as_the_reference()
{
    expect_factors<T>();
    expect_tridiagonal_solutions<T>();
    expect_complete_pivoting<T>();
    expect_norms<T>();
    expect_rotations<T>();
    if constexpr (!is_complex<T>) {
        expect_secular_roots<T>();
        expect_symmetric_factors<T>();
        expect_info_of_pivots_that_are_no_numbers<T>();
    }
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
    expect_packed_updates<cpx<float>>();
}
TEST_F(Lapack, computes_what_the_reference_does_in_complex_double)
{
    expect_the_same_as_the_reference<cpx<double>>();
    expect_packed_updates<cpx<double>>();
}

} // namespace
} // namespace orv::test
