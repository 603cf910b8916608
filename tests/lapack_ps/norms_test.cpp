// Norms x?lange, x?lansy, x?lanhe.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/fronts.h"
#include "tests/support/bounds.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class T> std::string named(const char* name) { return std::string("x") + letter<T> + name; }

template <class T> long double size_of(T x)
{
    if constexpr (is_complex<T>) return std::hypot(static_cast<long double>(x.re), static_cast<long double>(x.im));
    else return std::fabs(static_cast<long double>(x));
}
template <class T> T times(T x, real_t<T> f)
{
    if constexpr (is_complex<T>) return {x.re * f, x.im * f};
    else return x * f;
}

enum class Kind { general, symmetric, hermitian };

// A matrix in which all that is not to be read is NaN; lange looks at all of it.
template <class T> struct Matrix {
    using R = real_t<T>;
    Kind kind;
    char uplo;
    i64 m, n, lda;
    Guarded<T> a;
    Guarded<R> work;

    Matrix(Kind kind, char uplo, i64 m, i64 n, i64 padding, i64 shift)
        : kind(kind), uplo(uplo), m(m), n(n), lda(m + padding), a((n - 1) * lda + m, Edge::end, shift),
          work(kind == Kind::general ? m : n)
    {
    }
    void fill(R factor)
    {
        Random random(m * 100 + n);
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < m; ++i)
                if (stored(i, j)) {
                    a[i + j * lda] = times(random.value<T>(), factor);
                    if constexpr (is_complex<T>)
                        if (i == j && kind == Kind::hermitian) a[i + j * lda].im = NAN;
                }
    }
    bool stored(i64 i, i64 j) const { return kind == Kind::general || ((uplo | 32) == 'u' ? i <= j : i >= j); }
    long double at(i64 i, i64 j) const
    {
        const T e = stored(i, j) ? a[i + j * lda] : a[j + i * lda];
        if constexpr (is_complex<T>)
            if (i == j && kind == Kind::hermitian) return size_of(e.re);
        return size_of(e);
    }
    long double exact(char norm) const
    {
        long double value = 0, squares = 0;
        std::vector<long double> rows(m), columns(n);
        for (i64 j = 0; j < n; ++j)
            for (i64 i = 0; i < m; ++i) {
                const long double e = at(i, j);
                if (norm == 'M') value = std::max(value, e);
                rows[i] += e, columns[j] += e, squares += e * e;
            }
        if (norm == 'O') value = *std::max_element(columns.begin(), columns.end());
        if (norm == 'I') value = *std::max_element(rows.begin(), rows.end());
        return norm == 'F' ? std::sqrt(squares) : value;
    }
    R computed(char norm) const
    {
        const bool needs_work = std::string(kind == Kind::general ? "Ii" : "OoIi1").find(norm) != std::string::npos;
        R* const w = needs_work ? work.data() : nullptr;
        if (kind == Kind::general)
            return kernel<Lange<T>>("lapack_ps", named<T>("lange"))(&norm, &m, &n, a.data(), &lda, w);
        return kernel<Lansy<T>>("lapack_ps", named<T>(kind == Kind::hermitian ? "lanhe" : "lansy"))(&norm, &uplo, &n,
                                                                                                    a.data(), &lda, w);
    }
    void expect_norms() const
    {
        SCOPED_TRACE(std::string("norm ") + letter<T> + " kind " + char('0' + int(kind)) + ' ' + uplo +
                     " m=" + std::to_string(m) + " n=" + std::to_string(n) + " lda=" + std::to_string(lda));
        for (const char norm : {'M', 'm', 'O', 'o', '1', 'I', 'i', 'F', 'f', 'E', 'e'}) {
            const char canonical = norm == '1' ? 'O' : (norm & 0xdf) == 'E' ? 'F' : norm & 0xdf;
            const long double expected = exact(canonical);
            // A square, its sum and root for each element, then the sum of a row, a column or, for squares, of all.
            const i64 roundings = (is_complex<T> ? 4 : 0) + (canonical == 'M'   ? 0
                                                             : canonical == 'F' ? m + n + 8
                                                                                : m + n);
            const R value = computed(norm);
            const long double allowed =
                gamma_n<T>(roundings) * expected + std::numeric_limits<R>::denorm_min() * roundings;
            // The largest number is an overflow that a norm may round to.
            if (expected > std::numeric_limits<R>::max() * 0.99L) EXPECT_GE(value, std::numeric_limits<R>::max() * 0.9);
            else ASSERT_LE(std::fabs(value - expected), allowed) << norm << ' ' << value;
        }
    }
};

template <class T> void expect_norms()
{
    using R = real_t<T>;
    const R ordinary = 1, large = std::ldexp(R(1), std::numeric_limits<R>::max_exponent - 9),
            little = std::ldexp(R(1), std::numeric_limits<R>::min_exponent + 2),
            half_lost = std::ldexp(R(1), std::numeric_limits<R>::min_exponent / 2 - 4); // squares lose digits
    for (const R factor : {ordinary, large, little, half_lost})
        for (const i64 m : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 40, 65})
            for (const i64 n : {1, 2, 3, 4, 5, 9}) {
                Matrix<T> a(Kind::general, ' ', m, n, m % 3, n % 2);
                a.fill(factor);
                a.expect_norms();
                if (testing::Test::HasFatalFailure()) return;
            }
    for (const R factor : {ordinary, large, little, half_lost})
        for (const i64 n : {1, 2, 3, 4, 5, 8, 9, 17, 20, 33, 37, 70})
            for (const char uplo : {'U', 'u', 'L', 'l'})
                for (const Kind kind : {Kind::symmetric, Kind::hermitian}) {
                    if (kind == Kind::hermitian && !is_complex<T>) continue;
                    Matrix<T> a(kind, uplo, n, n, n % 3, n % 2);
                    a.fill(factor);
                    a.expect_norms();
                    if (testing::Test::HasFatalFailure()) return;
                }
}

TEST(Norms, are_right_for_all_shapes_and_for_elements_whose_squares_overflow_or_vanish)
{
    expect_norms<float>();
    expect_norms<double>();
    expect_norms<cpx<float>>();
    expect_norms<cpx<double>>();
}

template <class T> void expect_special_values(Kind kind)
{
    using R = real_t<T>;
    const R infinity = std::numeric_limits<R>::infinity(), nan = std::numeric_limits<R>::quiet_NaN();
    for (const char uplo : {'U', 'L'})
        for (i64 place = 0; place < 41; ++place) {
            Matrix<T> a(kind, uplo, 41, 41, 0, 0);
            a.fill(1);
            const i64 j = kind == Kind::general || uplo == 'U' ? 40 : 0; // a whole column
            T& e = a.a[place + j * a.lda];
            e = element<T>::make(0);
            const R others = a.computed('M');
            e = element<T>::make(nan);
            EXPECT_EQ(a.computed('M'), others) << place;
            for (const char norm : {'O', 'I', 'F'}) EXPECT_TRUE(std::isnan(a.computed(norm))) << norm << place;
            e = element<T>::make(-infinity);
            for (const char norm : {'M', 'O', 'I', 'F'}) EXPECT_EQ(a.computed(norm), infinity) << norm << place;
        }
}

TEST(Norms, go_past_nan_for_the_largest_element_and_pass_it_on_for_sums)
{
    for (const Kind kind : {Kind::general, Kind::symmetric}) {
        expect_special_values<float>(kind);
        expect_special_values<double>(kind);
        expect_special_values<cpx<float>>(kind);
        expect_special_values<cpx<double>>(kind);
    }
    expect_special_values<cpx<float>>(Kind::hermitian);
    expect_special_values<cpx<double>>(Kind::hermitian);
}

template <class T> void expect_zero_without_elements()
{
    const i64 none = 0, some = 3;
    for (const char* norm : {"M", "O", "1", "I", "F", "E"}) {
        EXPECT_EQ(kernel<Lange<T>>("lapack_ps", named<T>("lange"))(norm, &none, &some, nullptr, &some, nullptr), 0);
        EXPECT_EQ(kernel<Lange<T>>("lapack_ps", named<T>("lange"))(norm, &some, &none, nullptr, &some, nullptr), 0);
        EXPECT_EQ(kernel<Lansy<T>>("lapack_ps", named<T>("lansy"))(norm, "U", &none, nullptr, &some, nullptr), 0);
        if constexpr (is_complex<T>) {
            EXPECT_EQ(kernel<Lansy<T>>("lapack_ps", named<T>("lanhe"))(norm, "L", &none, nullptr, &some, nullptr), 0);
        }
    }
}

TEST(Norms, of_empty_matrices_are_zero_and_read_nothing)
{
    expect_zero_without_elements<float>();
    expect_zero_without_elements<double>();
    expect_zero_without_elements<cpx<float>>();
    expect_zero_without_elements<cpx<double>>();
}

TEST(Norms, sum_squares_by_the_public_routine_once_a_column_and_once_for_a_diagonal)
{
    const auto calls = []<class T>(Kind kind, char uplo) {
        Matrix<T> a(kind, uplo, 5, 5, 1, 0);
        a.fill(1);
        FrontCalls fronts;
        a.computed('F');
        return fronts.calls;
    };
    using Calls = std::vector<std::string>;
    EXPECT_EQ(calls.operator()<double>(Kind::general, ' '), Calls(5, "dlassq"));
    EXPECT_EQ(calls.operator()<cpx<double>>(Kind::general, ' '), Calls(5, "zlassq"));
    for (const char uplo : {'U', 'L'}) {
        EXPECT_EQ(calls.operator()<float>(Kind::symmetric, uplo), Calls(5, "slassq"));
        EXPECT_EQ(calls.operator()<cpx<float>>(Kind::symmetric, uplo), Calls(5, "classq"));
        EXPECT_EQ(calls.operator()<cpx<float>>(Kind::hermitian, uplo),
                  (Calls{"classq", "classq", "classq", "classq", "slassq"})); // the diagonal is real
    }
}

TEST(Norms, of_one_element_are_its_magnitude)
{
    const i64 one = 1;
    const double a = -3;
    double work;
    for (const char* norm : {"M", "O", "1", "I", "F", "E"})
        EXPECT_EQ(kernel<Lansy<double>>("lapack_ps", "xdlansy")(norm, "U", &one, &a, &one, &work), 3) << norm;
}

} // namespace
} // namespace orv::test
