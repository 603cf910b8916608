// Small Cholesky factorisations: ?potrf_l_small, ?potrf_u_small.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/fronts.h"
#include "tests/lapack_ps/matrix.h"

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

constexpr i64 sentinel = -77;

template <class T> i64 factor(bool lower, const Square<T>& a)
{
    static Potrf<T>* const kernels[] = {kernel<Potrf<T>>("lapack_ps", letter<T>, "potrf_u_small"),
                                        kernel<Potrf<T>>("lapack_ps", letter<T>, "potrf_l_small")};
    i64 info = sentinel;
    const char ignored = '?';
    kernels[lower](&ignored, &a.n, a.data.data(), &a.lda, &info);
    return info;
}

// The first order that the public routines take part in.
template <class T> i64 calls_from(bool lower)
{
    switch (letter<T>) {
    case 's':
        return lower ? 50 : 1000;
    case 'd':
        return lower ? 40 : 50;
    case 'c':
        return lower ? 20 : 50;
    default:
        return 40;
    }
}

// Element (i, j) of the factor L, or of U^T.
template <class T> T& at(const Square<T>& a, bool lower, i64 i, i64 j) { return lower ? a(i, j) : a(j, i); }

// A*A^H of a lower triangle with a positive diagonal is positive definite. Imaginary parts of the diagonal count for
// nothing, so they are NaN; so is the other triangle.
template <class T, class Value> void fill(const Square<T>& a, bool lower, Value value)
{
    std::vector<std::vector<T>> l(a.n, std::vector<T>(a.n));
    for (i64 i = 0; i < a.n; ++i)
        for (i64 j = 0; j <= i; ++j) l[i][j] = value(i, j);
    for (i64 i = 0; i < a.n; ++i)
        for (i64 j = 0; j <= i; ++j) {
            Wide sum{};
            for (i64 k = 0; k <= j; ++k) sum += wide(l[i][k]) * wide(conj(l[j][k]));
            at(a, lower, i, j) = number<T>(double(sum.re), i == j ? not_a_number : double(lower ? sum.im : -sum.im));
        }
}
// Far from singular at every order.
template <class T> void fill_random(const Square<T>& a, bool lower)
{
    Random random(static_cast<std::uint64_t>(a.n));
    const auto off_diagonal = static_cast<real_t<T>>(1 / std::sqrt(double(a.n)));
    fill(a, lower, [&](i64 i, i64 j) {
        return i == j ? number<T>(1.5 + random.value<double>()) : off_diagonal * random.value<T>();
    });
}
// Whole numbers, and powers of two on the diagonal of L: no operation rounds, whatever their order.
template <class T> std::vector<T> fill_exact(const Square<T>& a, bool lower)
{
    Random random(static_cast<std::uint64_t>(a.n) + 99);
    std::vector<T> l(a.n * a.n);
    fill(a, lower, [&](i64 i, i64 j) {
        const auto digit = [&] { return double(random.integer(-1, 1)); };
        const T value = i == j ? number<T>(random.integer(0, 1) ? 2 : 4) : number<T>(digit(), digit());
        l[i + j * a.n] = lower ? value : conj(value);
        return value;
    });
    return l;
}

// The order of operations in scalar code, one column after the other. Returns info.
template <class T> i64 model(const Square<T>& a, bool lower)
{
    for (i64 j = 0; j < a.n; ++j) {
        for (i64 i = j; i < a.n; ++i)
            for (i64 p = 0; p < j; ++p)
                at(a, lower, i, j) = at(a, lower, i, j) - at(a, lower, i, p) * conj(at(a, lower, j, p));
        T& pivot = at(a, lower, j, j);
        pivot = number<T>(real_of(pivot));
        if (!(real_of(pivot) > 0)) return j + 1;
        const real_t<T> root = std::sqrt(real_of(pivot)), reciprocal = 1 / root;
        pivot = element<T>::make(root);
        for (i64 i = j + 1; i < a.n; ++i) at(a, lower, i, j) = reciprocal * at(a, lower, i, j);
    }
    return sentinel;
}

std::string problem(char type, bool lower, i64 n)
{
    return std::string(1, type) + "potrf " + (lower ? "L" : "U") + " n=" + std::to_string(n) +
           " seed=" + std::to_string(seed());
}

template <class Body> void each_triangle(Body body)
{
    for (const bool lower : {true, false}) {
        body.template operator()<float>(lower);
        body.template operator()<double>(lower);
        body.template operator()<cpx<float>>(lower);
        body.template operator()<cpx<double>>(lower);
    }
}

TEST(Potrf, keeps_the_order_of_operations_where_nothing_is_called)
{
    each_triangle([]<class T>(bool lower) {
        for (i64 n = 0; n < std::min<i64>(calls_from<T>(lower), 70); ++n)
            for (const Edge edge : {Edge::start, Edge::end}) {
                SCOPED_TRACE(problem(letter<T>, lower, n));
                const Square<T> expected(n, n % 3, edge), computed(n, n % 3, edge);
                fill_random(expected, lower), computed.copy(expected);
                ASSERT_EQ(factor(lower, computed), model(expected, lower));
                ASSERT_EQ(difference(expected.data, computed.data), "");
            }
    });
}

TEST(Potrf, finds_the_exact_factor_of_whole_numbers_on_both_sides_of_the_threshold)
{
    each_triangle([]<class T>(bool lower) {
        for (const i64 n : {1, 2, 5, 18, 19, 20, 21, 38, 39, 40, 41, 48, 49, 50, 51, 60, 71}) {
            SCOPED_TRACE(problem(letter<T>, lower, n));
            const Square<T> expected(n, 2), computed(n, 2);
            const std::vector<T> l = fill_exact(computed, lower);
            for (i64 j = 0; j < n; ++j)
                for (i64 i = j; i < n; ++i) at(expected, lower, i, j) = l[i + j * n];
            ASSERT_EQ(factor(lower, computed), sentinel) << "info is written though nothing failed";
            ASSERT_EQ(unequal(expected.data, computed.data), "");
        }
    });
}

TEST(Potrf, stops_at_the_first_pivot_that_is_not_positive)
{
    each_triangle([]<class T>(bool lower) {
        const i64 from = std::min<i64>(calls_from<T>(lower), 60);
        for (const i64 n : {i64(1), i64(2), i64(3), i64(4), i64(5), i64(7), i64(8), i64(13), from - 1, from})
            for (i64 k = 0; k < n; ++k)
                for (const double pivot : {0.0, -1.0, not_a_number}) {
                    SCOPED_TRACE(problem(letter<T>, lower, n) + " pivot " + std::to_string(k) + " is " +
                                 std::to_string(pivot));
                    const Square<T> before(n, 1), after(n, 1);
                    const std::vector<T> l = fill_exact(before, lower);
                    // What is left of the pivot is l(k, k)^2: whole numbers, so it can be made any number.
                    at(before, lower, k, k) = number<T>(real_of(at(before, lower, k, k)) -
                                                            real_of(l[k + k * n]) * real_of(l[k + k * n]) + pivot,
                                                        not_a_number);
                    after.copy(before);
                    ASSERT_EQ(factor(lower, after), k + 1);
                    ASSERT_TRUE(equal(at(after, lower, k, k), number<T>(pivot)));
                    const bool ahead = letter<T> == 'z' && lower && n >= 40; // each column updates all later ones
                    for (i64 j = 0; j < n; ++j)
                        for (i64 i = 0; i < n; ++i) {
                            const T now = at(after, lower, i, j), then = at(before, lower, i, j);
                            if (i < j) {
                                ASSERT_TRUE(same(now, then)) << "other triangle";
                            } else if (j < k) {
                                ASSERT_TRUE(equal(now, l[i + j * n])) << "column that is done";
                            } else if (j > k && !ahead) {
                                ASSERT_TRUE(same(now, then)) << "later column";
                            }
                        }
                }
    });
}

TEST(Potrf, leaves_a_failed_column_updated_and_not_scaled_where_nothing_is_called)
{
    each_triangle([]<class T>(bool lower) {
        for (const i64 n : {3, 4, 9, 18})
            for (i64 k = 0; k < n; ++k) {
                SCOPED_TRACE(problem(letter<T>, lower, n));
                const Square<T> expected(n), computed(n);
                fill_random(expected, lower);
                at(expected, lower, k, k) = number<T>(-3);
                computed.copy(expected);
                ASSERT_EQ(factor(lower, computed), model(expected, lower));
                ASSERT_EQ(difference(expected.data, computed.data), "");
            }
    });
}

TEST(Potrf, takes_an_infinite_pivot_for_a_positive_one)
{
    each_triangle([]<class T>(bool lower) {
        for (const i64 n : {1, 3, 6, 18})
            for (i64 k = 0; k < n; ++k) {
                SCOPED_TRACE(problem(letter<T>, lower, n) + " pivot " + std::to_string(k));
                const Square<T> expected(n), computed(n);
                fill_random(expected, lower);
                at(expected, lower, k, k) = number<T>(INFINITY);
                computed.copy(expected);
                ASSERT_EQ(factor(lower, computed), model(expected, lower));
                ASSERT_EQ(difference(expected.data, computed.data), "");
            }
    });
}

TEST(Potrf, calls_nothing_below_its_threshold)
{
    each_triangle([]<class T>(bool lower) {
        const i64 n = std::min<i64>(calls_from<T>(lower) - 1, 120);
        const Square<T> a(n);
        fill_random(a, lower);
        FrontCalls fronts;
        factor(lower, a);
        EXPECT_EQ(fronts.calls.size(), 0u) << problem(letter<T>, lower, n);
    });
}

TEST(Potrf, calls_the_public_routines_once_a_column_from_its_threshold_on)
{
    const auto calls = []<class T>(bool lower) {
        const Square<T> a(calls_from<T>(lower));
        fill_random(a, lower);
        FrontCalls fronts;
        factor(lower, a);
        return std::pair(fronts.calls, static_cast<std::size_t>(a.n));
    };
    // The first and the last column need less: there is nothing before the one, nothing below the other.
    const auto expect = [](const auto& seen, std::vector<std::pair<std::string, int>> expected) {
        std::size_t sum = 0;
        for (const auto& [name, missing] : expected) {
            const auto count = static_cast<std::size_t>(std::count(seen.first.begin(), seen.first.end(), name));
            EXPECT_EQ(count, seen.second - static_cast<std::size_t>(missing)) << name;
            sum += count;
        }
        EXPECT_EQ(seen.first.size(), sum) << "other calls";
    };
    expect(calls.operator()<float>(true), {{"sscal", 1}});
    expect(calls.operator()<double>(true), {{"dgemv No traspose", 1}});
    expect(calls.operator()<double>(false), {{"dgemv Transpose", 1}});
    expect(calls.operator()<cpx<float>>(true), {{"cdotc", 0}, {"cgemv No traspose", 2}, {"csscal", 1}});
    expect(calls.operator()<cpx<float>>(false), {{"cdotc", 0}, {"cgemv Transpose", 2}, {"csscal", 1}});
    expect(calls.operator()<cpx<double>>(true), {{"zher Lower", 1}, {"zdscal", 1}});
    expect(calls.operator()<cpx<double>>(false), {{"zdotc", 0}, {"zgemv Transpose", 2}});
}

// |A - L*L^H| <= gamma_(n+1) |L||L^H| (Higham, theorem 10.3); a reciprocal in place of a division rounds once more, and
// so do complex products.
TEST(Potrf, has_a_small_residual)
{
    long double worst = 0;
    each_triangle([&]<class T>(bool lower) {
        for (const i64 n : {1, 3, 10, 19, 20, 39, 40, 49, 50, 64, 100}) {
            SCOPED_TRACE(problem(letter<T>, lower, n));
            const Square<T> a(n), l(n);
            fill_random(a, lower), l.copy(a);
            ASSERT_EQ(factor(lower, l), sentinel);
            const long double bound = gamma_n<T>((is_complex<T> ? 2 : 1) * (n + 4));
            for (i64 j = 0; j < n; ++j)
                for (i64 i = j; i < n; ++i) {
                    T element = at(a, lower, i, j);
                    if (i == j) element = number<T>(real_of(element));
                    Wide rest = wide(element);
                    long double magnitudes = 0;
                    for (i64 k = 0; k <= j; ++k) {
                        const Wide x = wide(at(l, lower, i, k)), y = wide(at(l, lower, j, k));
                        rest -= x * conj(y), magnitudes += size(x) * size(y);
                    }
                    ASSERT_LE(size(rest), bound * magnitudes) << i << ',' << j;
                    worst = std::max(worst, size(rest) / (bound * magnitudes));
                }
        }
    });
    RecordProperty("worst", std::to_string(worst));
}

} // namespace
} // namespace orv::test
