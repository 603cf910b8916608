// Small Bunch-Kaufman factorisations: ?sytrf_l_small, ?sytrf_u_small.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/fronts.h"
#include "tests/lapack_ps/matrix.h"

#include <algorithm>

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class T> i64 factor(bool lower, const Square<T>& a, const Guarded<i64>& ipiv)
{
    i64 info = 55;
    const char ignored = '?';
    kernel<Sytrf<T>>("lapack_ps", letter<T>, "sytrf_", lower ? 'l' : 'u', "_small")(&ignored, &a.n, a.data.data(),
                                                                                    &a.lda, ipiv.data(), &info);
    return info;
}

template <class T> constexpr i64 calls_from = std::is_same_v<T, float> ? 60 : 45;

template <class T> T& at(const Square<T>& a, bool lower, i64 i, i64 j)
{
    return (i >= j) == lower || i == j ? a(i, j) : a(j, i);
}

// The textbook's steps on the lower triangle of a matrix, scalar by scalar; for the upper one on its mirror image, in
// which row and column i are n-1-i. Of equal candidates the first in memory is taken, in the mirror image the last.
template <class T> struct Model {
    bool lower;
    const Square<T>& a;
    const Guarded<i64>& ipiv;

    i64 mirrored(i64 i) const { return lower ? i : a.n - 1 - i; }
    T& operator()(i64 i, i64 j) const { return a(mirrored(i), mirrored(j)); }
    bool better(T candidate, T best) const { return lower ? candidate > best : candidate >= best && candidate > 0; }

    void exchange(i64 p, i64 q) const // p > q
    {
        const Model& m = *this;
        for (i64 i = p + 1; i < a.n; ++i) std::swap(m(i, q), m(i, p));
        for (i64 j = q + 1; j < p; ++j) std::swap(m(j, q), m(p, j));
        std::swap(m(q, q), m(p, p));
    }

    i64 operator()() const
    {
        const Model& m = *this;
        const i64 n = a.n;
        const T alpha = std::is_same_v<T, float> ? T(0.6403881907463074) : T(0.6403882032022076);
        i64 info = 0;
        for (i64 k = 0, step; k < n; k += step) {
            step = 1;
            const T diagonal = std::fabs(m(k, k));
            i64 r = k + 1, p = k;
            T colmax = 0;
            for (i64 i = k + 1; i < n; ++i)
                if (better(std::fabs(m(i, k)), colmax)) colmax = std::fabs(m(i, k)), r = i;
            if (std::max(diagonal, colmax) == 0) {
                if (info == 0) info = mirrored(k) + 1;
            } else {
                if (diagonal < alpha * colmax) {
                    T rowmax = 0;
                    for (i64 j = k; j < r; ++j) rowmax = std::max(rowmax, std::fabs(m(r, j)));
                    for (i64 i = r + 1; i < n; ++i) rowmax = std::max(rowmax, std::fabs(m(i, r)));
                    if (diagonal >= alpha * colmax * (colmax / rowmax)) p = k;
                    else if (std::fabs(m(r, r)) >= alpha * rowmax) p = r;
                    else p = r, step = 2;
                }
                const i64 moved = k + step - 1;
                if (p != moved) {
                    exchange(p, moved);
                    if (step == 2) std::swap(m(k + 1, k), m(p, k));
                }
                step == 1 ? one(k) : two(k);
            }
            const i64 sign = step == 1 ? 1 : -1;
            for (i64 s = 0; s < step; ++s) ipiv[mirrored(k + s)] = sign * (mirrored(p) + 1);
        }
        return info;
    }
    void one(i64 k) const
    {
        const Model& m = *this;
        const T reciprocal = 1 / m(k, k);
        for (i64 j = k + 1; j < a.n; ++j) {
            const T f = reciprocal * m(j, k);
            for (i64 i = j; i < a.n; ++i) m(i, j) -= m(i, k) * f;
        }
        for (i64 i = k + 1; i < a.n; ++i) m(i, k) *= reciprocal;
    }
    void two(i64 k) const
    {
        const Model& m = *this;
        const T off = m(k + 1, k), d11 = m(k + 1, k + 1) / off, d22 = m(k, k) / off;
        const T t = 1 / (d11 * d22 - 1), f = t / off;
        for (i64 j = k + 2; j < a.n; ++j) {
            const T w = f * (d11 * m(j, k) - m(j, k + 1)), v = f * (d22 * m(j, k + 1) - m(j, k));
            for (i64 i = j; i < a.n; ++i) m(i, j) = m(i, j) - m(i, k) * w - m(i, k + 1) * v;
            m(j, k) = w, m(j, k + 1) = v;
        }
    }
};

// |P*L*D*L^T*P^T - A| / (n*|A|*eps) in the one norm, the figure that LAPACK's own tester looks at, with its limit
// of 30.
template <class T> long double residual(bool lower, const Square<T>& a, const Square<T>& f, const Guarded<i64>& ipiv)
{
    const i64 n = a.n;
    std::vector<std::vector<long double>> m(n, std::vector<long double>(n));
    const i64 forward = lower ? 1 : -1;
    for (i64 k = 0; k < n; ++k) m[k][k] = f(k, k);
    std::vector<i64> pivots; // the first row of each block, in the order of elimination
    for (i64 k = lower ? 0 : n - 1; k >= 0 && k < n; k += forward) {
        pivots.push_back(k);
        if (ipiv[k] < 0) {
            m[k][k + forward] = m[k + forward][k] = f(k + forward, k);
            k += forward;
        }
    }
    for (auto it = pivots.rbegin(); it != pivots.rend(); ++it) {
        const i64 k = *it, size = ipiv[k] < 0 ? 2 : 1, last = k + (size - 1) * forward;
        const auto add = [&](auto element) { // rows, or columns, behind the block
            for (i64 i = last + forward; i >= 0 && i < n; i += forward)
                for (i64 s = 0; s < size; ++s)
                    for (i64 j = 0; j < n; ++j) element(i, j) += f(i, k + s * forward) * element(k + s * forward, j);
        };
        add([&](i64 i, i64 j) -> long double& { return m[i][j]; });
        add([&](i64 i, i64 j) -> long double& { return m[j][i]; });
        const i64 p = std::abs(ipiv[k]) - 1;
        if (p != last) {
            std::swap(m[p], m[last]);
            for (auto& row : m) std::swap(row[p], row[last]);
        }
    }
    long double norm = 0, error = 0;
    for (i64 j = 0; j < n; ++j) {
        long double column = 0, off = 0;
        for (i64 i = 0; i < n; ++i) {
            const long double element = at(a, lower, i, j);
            column += std::fabs(element), off += std::fabs(element - m[i][j]);
        }
        norm = std::max(norm, column), error = std::max(error, off);
    }
    return error == 0 ? 0 : error / (n * norm * 2 * unit<T>);
}

enum class Kind { random, no_diagonal, graded, dominant, zero_columns, ties };
const Kind kinds[] = {Kind::random, Kind::no_diagonal, Kind::graded, Kind::dominant, Kind::zero_columns, Kind::ties};

template <class T> void fill(const Square<T>& a, bool lower, Kind kind)
{
    Random random(static_cast<std::uint64_t>(a.n) + 7);
    for (i64 j = 0; j < a.n; ++j)
        for (i64 i = j; i < a.n; ++i) {
            T e = random.value<T>();
            if (kind == Kind::no_diagonal && i == j) e = 0;
            if (kind == Kind::graded) e = static_cast<T>(e * std::pow(0.5, (i + j) % 17));
            if (kind == Kind::dominant && i == j) e = static_cast<T>(a.n) + e;
            if (kind == Kind::zero_columns && (i % 3 == 1 || j % 3 == 1)) e = 0;
            if (kind == Kind::ties) e = i == j ? 0 : 1;
            at(a, lower, i, j) = e;
        }
}

template <class Body> void each_problem(Body body)
{
    const auto all = [&]<class T>() {
        for (const bool lower : {true, false})
            for (const i64 n : {0, 1, 2, 3, 4, 5, 6, 7, 9, 12, 17, 30, 44, 45, 46, 59, 60, 61, 75})
                for (const Kind kind : kinds) {
                    const Square<T> a(n, n % 3, n % 2 ? Edge::start : Edge::end);
                    fill(a, lower, kind);
                    SCOPED_TRACE(std::string(1, letter<T>) + "sytrf " + (lower ? "L" : "U") +
                                 " n=" + std::to_string(n) + " kind=" + std::to_string(int(kind)) +
                                 " seed=" + std::to_string(seed()));
                    body(lower, a);
                }
    };
    all.template operator()<float>();
    all.template operator()<double>();
}

// The other triangle is NaN and stays so; the public routines of the longer paths round alike.
TEST(Sytrf, computes_what_the_textbook_does_bit_for_bit)
{
    each_problem([]<class T>(bool lower, const Square<T>& a) {
        const Square<T> expected(a.n, a.lda - std::max<i64>(a.n, 1)), computed(a.n, a.lda - std::max<i64>(a.n, 1));
        const Guarded<i64> pivots(a.n), ipiv(a.n);
        expected.copy(a), computed.copy(a);
        ASSERT_EQ(factor(lower, computed, ipiv), (Model<T>{lower, expected, pivots}()));
        ASSERT_EQ(difference(expected.data, computed.data), "");
        ASSERT_TRUE(std::equal(pivots.begin(), pivots.end(), ipiv.begin()));
    });
}

TEST(Sytrf, gives_the_matrix_back)
{
    long double worst = 0;
    int blocks_of_two = 0;
    each_problem([&]<class T>(bool lower, const Square<T>& a) {
        const Square<T> f(a.n);
        const Guarded<i64> ipiv(a.n);
        f.copy(a);
        factor(lower, f, ipiv);
        const long double r = residual(lower, a, f, ipiv);
        ASSERT_LE(r, 30);
        worst = std::max(worst, r);
        blocks_of_two += static_cast<int>(std::count_if(ipiv.begin(), ipiv.end(), [](i64 p) { return p < 0; }) / 2);
    });
    EXPECT_GT(blocks_of_two, 100) << "the test does not reach them";
    RecordProperty("worst", std::to_string(worst));
}

TEST(Sytrf, reports_the_first_column_of_zeros_and_goes_on)
{
    for (const bool lower : {true, false})
        for (const i64 n : {1, 2, 5, 45})
            for (i64 k = 0; k < n; ++k) {
                const Square<double> a(n);
                const Guarded<i64> ipiv(n);
                for (i64 j = 0; j < n; ++j)
                    for (i64 i = j; i < n; ++i) at(a, lower, i, j) = i == j && i != k ? 4 : 0;
                if (k > 0) at(a, lower, 0, 0) = 0; // and another one
                EXPECT_EQ(factor(lower, a, ipiv), lower ? (k > 0 ? 1 : k + 1) : k + 1);
                for (i64 i = 0; i < n; ++i) EXPECT_EQ(ipiv[i], i + 1);
            }
}

TEST(Sytrf, survives_nan_anywhere)
{
    for (const bool lower : {true, false})
        for (const i64 n : {1, 2, 3, 7})
            for (i64 j = 0; j < n; ++j)
                for (i64 i = j; i < n; ++i) {
                    const Square<double> a(n);
                    const Guarded<i64> ipiv(n);
                    fill(a, lower, Kind::no_diagonal);
                    at(a, lower, i, j) = not_a_number;
                    factor(lower, a, ipiv);
                    for (const i64 p : ipiv) EXPECT_TRUE(1 <= std::abs(p) && std::abs(p) <= n);
                }
}

// Of order two, with the constant on one end of the diagonal and zero on the other, and one beside it.
template <class T> void expect_constant(T constant)
{
    const auto pivots = [](bool lower, T eaten_first, T other) {
        const Square<T> a(2);
        const Guarded<i64> ipiv(2);
        const i64 k = lower ? 0 : 1;
        a(k, k) = eaten_first, a(1 - k, 1 - k) = other, at(a, lower, 1, 0) = 1;
        factor(lower, a, ipiv);
        return std::pair(ipiv[k], ipiv[1 - k]);
    };
    using Pivots = std::pair<i64, i64>;
    const T less = std::nextafter(constant, T(0));
    for (const bool lower : {true, false}) {
        const i64 k = lower ? 1 : 2, other = 3 - k;
        EXPECT_EQ(pivots(lower, constant, 0), Pivots(k, other)) << "stays";
        EXPECT_EQ(pivots(lower, 0, constant), Pivots(other, other)) << "the other one comes first";
        EXPECT_EQ(pivots(lower, less, 0), Pivots(-other, -other)) << "a block of two";
        EXPECT_EQ(pivots(lower, 0, less), Pivots(-other, -other)) << "a block of two";
    }
}

TEST(Sytrf, chooses_blocks_by_the_constant_to_its_last_bit)
{
    expect_constant<float>(0.6403881907463074F);
    expect_constant<double>(0.6403882032022076);
}

template <class T> void expect_neighbours_of_zeros_kept()
{
    for (const bool lower : {true, false})
        for (const i64 n : {2, 5, 45, 59}) {
            const Square<T> a(n);
            const Guarded<i64> ipiv(n);
            for (i64 j = 0; j < n; ++j)
                for (i64 i = j; i < n; ++i) at(a, lower, i, j) = i == j ? 4 : 0;
            const i64 k = lower ? 0 : n - 1; // the first to be eliminated
            a(k, k) = std::numeric_limits<T>::denorm_min();
            EXPECT_EQ(factor(lower, a, ipiv), 0);
            for (i64 i = 0; i < n; ++i)
                EXPECT_EQ(a(i, i), i == k ? std::numeric_limits<T>::denorm_min() : 4) << lower << n << ' ' << i;
        }
}

TEST(Sytrf, leaves_what_stands_beside_zeros_where_the_reciprocal_of_a_pivot_is_infinite)
{
    expect_neighbours_of_zeros_kept<float>();
    expect_neighbours_of_zeros_kept<double>();
}

TEST(Sytrf, calls_the_public_routines_from_its_threshold_on)
{
    const auto calls = []<class T>(bool lower, i64 n) {
        const Square<T> a(n);
        const Guarded<i64> ipiv(n);
        fill(a, lower, Kind::dominant);
        FrontCalls fronts;
        factor(lower, a, ipiv);
        return fronts.calls;
    };
    EXPECT_TRUE(calls.operator()<float>(true, calls_from<float> - 1).empty());
    EXPECT_TRUE(calls.operator()<double>(true, calls_from<double> - 1).empty());
    EXPECT_TRUE(calls.operator()<float>(false, 100).empty());
    EXPECT_TRUE(calls.operator()<double>(false, 100).empty());

    const auto doubles = calls.operator()<double>(true, calls_from<double>);
    EXPECT_EQ(doubles, std::vector<std::string>(calls_from<double> - 1, "dscal"));
    const auto singles = calls.operator()<float>(true, calls_from<float>);
    EXPECT_EQ(std::count(singles.begin(), singles.end(), "ssyr Lower"), calls_from<float> - 1);
    EXPECT_EQ(std::count(singles.begin(), singles.end(), "sscal"), calls_from<float> - 1);
    EXPECT_EQ(singles.size(), 2u * (calls_from<float> - 1));
}

} // namespace
} // namespace orv::test
