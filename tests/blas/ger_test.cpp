// Rank-one updates: ?ger, ?geru, ?gerc.
#include "frame/kernels/blas.h"
#include "tests/support/guarded.h"
#include "tests/support/kernels.h"
#include "tests/support/random.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> struct Update {
    i64 m, n, incx, incy, lda;
    T alpha;
    Guarded<T> x, y, a;
    std::vector<T> before;

    static std::size_t length(i64 n, i64 inc) { return n <= 0 ? 0 : (n - 1) * std::abs(inc) + 1; }

    Update(i64 m, i64 n, i64 incx, i64 incy, i64 padding, T alpha, Edge edge = Edge::end, std::size_t shift = 0)
        : m(m), n(n), incx(incx), incy(incy), lda(max(m, 1) + padding), alpha(alpha), x(length(m, incx), edge, shift),
          y(length(n, incy), edge), a(m > 0 && n > 0 ? (n - 1) * lda + m : 0, edge, shift)
    {
        Random random(m * 100 + n);
        random.fill(x), random.fill(y), random.fill(a);
        before.assign(a.begin(), a.end());
    }
    void call(const std::string& name) const
    {
        kernel<Ger<T>>("blas", name)(&m, &n, &alpha, x.data(), &incx, y.data(), &incy, a.data(), &lda);
    }
    // Every element is its column's one factor times x, added once; padding keeps its bits.
    void expect_update(bool conjugated) const
    {
        for (i64 j = 0; j < n && m > 0; ++j)
            for (i64 i = 0; i < (j + 1 < n ? lda : m); ++i) {
                T expected = before[i + j * lda];
                if (i < m) {
                    const T e = first(y.data(), n, incy)[j * incy], f = alpha * (conjugated ? conj(e) : e);
                    expected = expected + f * first(x.data(), m, incx)[i * incx];
                }
                ASSERT_EQ(std::memcmp(&expected, &a[i + j * lda], sizeof(T)), 0)
                    << "ger " << letter<T> << " m=" << m << " n=" << n << " incx=" << incx << " incy=" << incy
                    << " lda=" << lda << ": (" << i << ',' << j << ')';
            }
    }
};

template <class T> void expect_updates(const std::string& name, bool conjugated)
{
    T alpha;
    if constexpr (is_complex<T>) alpha = {real_t<T>(0.7), real_t<T>(-0.3)};
    else alpha = T(0.7);
    for (i64 m = 0; m <= 19; ++m)
        for (i64 n = 0; n <= 5; ++n)
            for (i64 incx : {1, 3, -1, -2})
                for (i64 incy : {1, 2, -1}) {
                    Update<T> u(m, n, incx, incy, n % 3, alpha);
                    u.call(name);
                    u.expect_update(conjugated);
                }
    for (std::size_t shift = 0; shift < 4; ++shift) {
        Update<T> u(37, 4, 1, 1, shift, alpha, Edge::start, shift);
        u.call(name);
        u.expect_update(conjugated);
    }
    for (i64 bytes : {1 << 12, 1 << 14, 1 << 15, 40000}) // strided x is gathered in chunks of 16 KiB
        for (i64 off : {-1, 0, 1}) {
            Update<T> u(bytes / i64(sizeof(T)) + off, 3, 2, 1, 1, alpha);
            u.call(name);
            u.expect_update(conjugated);
        }
    for (i64 incx : {1, 2}) { // of a megabyte and more, the next lines are asked for ahead
        Update<T> u(1003, (1 << 20) / i64(sizeof(T)) / 1003 + 2, incx, 1, 5, alpha);
        u.call(name);
        u.expect_update(conjugated);
    }
}

TEST(Ger, adds_one_multiple_of_x_to_each_column)
{
    expect_updates<float>("sger", false);
    expect_updates<double>("dger", false);
    expect_updates<cpx<float>>("cgeru", false);
    expect_updates<cpx<float>>("cgerc", true);
    expect_updates<cpx<double>>("zgeru", false);
    expect_updates<cpx<double>>("zgerc", true);
}

TEST(Ger, leaves_a_for_an_alpha_of_zero_and_columns_whose_factor_is_zero)
{
    Update<double> u(9, 3, 1, 1, 0, 0.0);
    for (double& e : u.x) e = NAN;
    u.call("dger");
    EXPECT_EQ(std::memcmp(u.a.data(), u.before.data(), u.before.size() * sizeof(double)), 0);

    Update<double> v(9, 3, 1, 1, 0, 2.0);
    for (double& e : v.x) e = NAN;
    v.y[1] = 0;
    v.call("dger");
    for (i64 i = 0; i < 9; ++i) {
        EXPECT_TRUE(std::isnan(v.a[i]));
        EXPECT_EQ(v.a[9 + i], v.before[9 + i]);
        EXPECT_TRUE(std::isnan(v.a[18 + i]));
    }
}

TEST(Ger, lets_a_nan_alpha_reach_every_element)
{
    Update<cpx<double>> u(7, 3, 1, 1, 0, {NAN, 0});
    u.call("zgeru");
    for (const cpx<double>& e : u.a) EXPECT_TRUE(e != e);
}

} // namespace
} // namespace orv::test
