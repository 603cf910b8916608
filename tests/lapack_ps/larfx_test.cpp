// Reflectors of small order: written out, bit for bit; above, by public products.
#include "frame/kernels/lapack_ps.h"
#include "tests/lapack_ps/fronts.h"
#include "tests/lapack_ps/rotations.h"
#include "tests/support/bounds.h"

#include <algorithm>
#include <complex>
#include <limits>

namespace orv::test {
namespace {

using namespace kernels::lapack_ps;

template <class T> Larfx<T>* larfx() { return kernel<Larfx<T>>("lapack_ps", letter<T>, "larfx"); }

template <class R> std::complex<long double> wide(R a) { return a; }
template <class R> std::complex<long double> wide(cpx<R> a) { return {a.re, a.im}; }

// A matrix and a reflector; element i of column (left) or row (right) j is at(i, j).
template <class T> struct Problem {
    bool left;
    i64 order, count, m, n, ldc;
    Guarded<T> v, c, work;
    T tau;
    std::vector<T> before;

    Problem(bool left, i64 order, i64 count, i64 padding, Edge edge)
        : left(left), order(order), count(count), m(left ? order : count), n(left ? count : order), ldc(m + padding),
          v(order, edge), c(n == 0 || m == 0 ? 0 : (n - 1) * ldc + m, edge), work(order > 10 ? count : 0)
    {
        Random random(order * 100 + count);
        random.fill(v);
        tau = random.value<T>();
        for (i64 i = 0; i < m; ++i)
            for (i64 j = 0; j < n; ++j) c[i + j * ldc] = random.value<T>();
        before.assign(c.begin(), c.end());
    }
    i64 at(i64 i, i64 j) const { return left ? i + j * ldc : j + i * ldc; }
    void apply(const char* side) const { larfx<T>()(side, &m, &n, v.data(), &tau, c.data(), &ldc, work.data()); }
    void apply() const { apply(left ? "Left" : "Right"); }
    std::string text() const
    {
        return std::string(1, letter<T>) + "larfx " + (left ? "L" : "R") + " m=" + std::to_string(m) +
               " n=" + std::to_string(n) + " ldc=" + std::to_string(ldc) + " seed=" + std::to_string(seed());
    }
};

template <class T> std::vector<T> written_out(const Problem<T>& p)
{
    std::vector<T> c = p.before;
    for (i64 j = 0; j < p.count; ++j) {
        if (p.order == 1) {
            T& only = c[p.at(0, j)];
            only = (one<T> - p.tau * p.v[0] * conj(p.v[0])) * only;
            continue;
        }
        T sum;
        for (i64 i = 0; i < p.order; ++i) {
            const T term = (p.left ? conj(p.v[i]) : p.v[i]) * c[p.at(i, j)];
            sum = i == 0 ? term : sum + term;
        }
        for (i64 i = 0; i < p.order; ++i) c[p.at(i, j)] -= sum * (p.tau * (p.left ? p.v[i] : conj(p.v[i])));
    }
    return c;
}

template <class T> class LarfxOf : public ::testing::Test {
};
using Elements = ::testing::Types<double, cpx<float>>;
TYPED_TEST_SUITE(LarfxOf, Elements);

TYPED_TEST(LarfxOf, sums_from_the_left_in_orders_up_to_10)
{
    for (const bool left : {true, false})
        for (i64 order = 1; order <= 10; ++order)
            for (i64 count = 0; count <= 11; ++count)
                for (const i64 padding : {0, 3})
                    for (const Edge edge : {Edge::start, Edge::end}) {
                        const Problem<TypeParam> p(left, order, count, padding, edge);
                        SCOPED_TRACE(p.text());
                        p.apply();
                        ASSERT_EQ(first_difference(written_out(p), p.c), "");
                    }
}

// H and C as they are defined, and what sums of `order` terms may be off.
TYPED_TEST(LarfxOf, applies_the_reflector_on_both_sides_of_order_10)
{
    using T = TypeParam;
    for (const bool left : {true, false})
        for (const i64 order : {1, 2, 3, 9, 10, 11, 12, 25})
            for (const i64 count : {1, 2, 7, 33}) {
                const Problem<T> p(left, order, count, 2, Edge::end);
                SCOPED_TRACE(p.text());
                p.apply();
                const auto tau = wide(p.tau);
                const long double gamma = gamma_n<T>((is_complex<T> ? 4 : 1) * (order + 5));
                for (i64 j = 0; j < count; ++j) {
                    std::complex<long double> sum = 0;
                    long double sizes = 0;
                    for (i64 i = 0; i < order; ++i) {
                        const auto v = wide(p.v[i]), c = wide(p.before[p.at(i, j)]);
                        sum += (left ? std::conj(v) : v) * c, sizes += std::abs(v) * std::abs(c);
                    }
                    for (i64 i = 0; i < order; ++i) {
                        const auto v = wide(p.v[i]), c = wide(p.before[p.at(i, j)]);
                        const auto exact = c - tau * sum * (left ? v : std::conj(v));
                        const long double size = std::abs(c) + std::abs(tau) * std::abs(v) * sizes;
                        ASSERT_LE(std::abs(wide(p.c[p.at(i, j)]) - exact), gamma * size) << i << " " << j;
                    }
                }
                for (i64 k = 0; k < static_cast<i64>(p.before.size()); ++k) {
                    const bool padding = k % p.ldc >= p.m;
                    ASSERT_TRUE(!padding || std::memcmp(&p.before[k], &p.c[k], sizeof(T)) == 0) << k;
                }
            }
}

TYPED_TEST(LarfxOf, calls_public_products_from_order_11_on)
{
    using T = TypeParam;
    const std::string product = is_complex<T> ? "cgemv " : "dgemv ", update = is_complex<T> ? "cgerc" : "dger";
    for (const bool left : {true, false})
        for (const i64 order : {1, 10, 11, 12}) {
            const Problem<T> p(left, order, 3, 0, Edge::end);
            FrontCalls fronts;
            p.apply();
            const std::string word = !left ? "No transpose" : is_complex<T> ? "Conjugate transpose" : "Transpose";
            const std::vector<std::string> expected = {product + word, update};
            EXPECT_EQ(fronts.calls, order > 10 ? expected : std::vector<std::string>()) << p.text();
        }
}

TYPED_TEST(LarfxOf, touches_nothing_if_tau_is_zero)
{
    using T = TypeParam;
    for (const i64 order : {1, 4, 10, 11}) {
        const i64 m = order, n = 5;
        const T tau = zero<T>;
        FrontCalls fronts;
        larfx<T>()("L", &m, &n, nullptr, &tau, nullptr, &m, nullptr);
        larfx<T>()("R", &n, &m, nullptr, &tau, nullptr, &n, nullptr);
        EXPECT_TRUE(fronts.calls.empty());
    }
}

TYPED_TEST(LarfxOf, takes_either_case_of_left_and_all_else_for_right)
{
    using T = TypeParam;
    for (const bool left : {true, false}) {
        const Problem<T> p(left, 3, 3, 0, Edge::end);
        const std::vector<T> expected = written_out(p);
        for (const char* side :
             left ? std::vector<const char*>{"L", "l", "left"} : std::vector<const char*>{"R", "r", "x"}) {
            std::copy(p.before.begin(), p.before.end(), p.c.begin());
            p.apply(side);
            EXPECT_EQ(first_difference(expected, p.c), "") << side;
        }
    }
}

TYPED_TEST(LarfxOf, does_nothing_to_an_empty_matrix)
{
    using T = TypeParam;
    const T tau = one<T>;
    const i64 none = 0, some = 12, ldc = 12;
    FrontCalls fronts;
    larfx<T>()("L", &none, &some, nullptr, &tau, nullptr, &ldc, nullptr);
    larfx<T>()("R", &some, &none, nullptr, &tau, nullptr, &ldc, nullptr);
    EXPECT_TRUE(fronts.calls.empty());
}

} // namespace
} // namespace orv::test
