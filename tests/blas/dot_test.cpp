#include "frame/kernels/blas.h"
#include "tests/blas/reduction.h"
#include "tests/support/bounds.h"

#include <functional>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> T dot(const char* name, i64 n, const T* x, i64 incx, const T* y, i64 incy)
{
    if constexpr (is_complex<T>) {
        T result = {7, 7};
        kernel<ComplexDot<T>>("blas", name)(&result, &n, x, &incx, y, &incy);
        return result;
    } else return kernel<Dot<T>>("blas", name)(&n, x, &incx, y, &incy);
}

template <class T> const char* plain_name();
template <> const char* plain_name<float>() { return "xsdot"; }
template <> const char* plain_name<double>() { return "xddot"; }
template <> const char* plain_name<cpx<float>>() { return "cdotu"; }
template <> const char* plain_name<cpx<double>>() { return "zdotu"; }
template <class T> const char* conjugate_name() { return std::is_same_v<T, cpx<float>> ? "xcdotc" : "zdotc"; }

// Vectors of `lanes` terms go to four accumulators in rotation, `block` vectors at a time; whole vectors left to the
// first accumulator, if so; then the lanes are added, then the terms left.
struct Order {
    i64 lanes, block;
    bool rest_to_a;
};

template <class T> Order order_of(bool unit)
{
    if (!unit) return {std::is_same_v<T, cpx<double>> ? 1 : 2, 4, false};
    return {16 / static_cast<i64>(sizeof(T)), std::is_same_v<T, double> ? 16 : 4, true};
}

template <class R> R sum_in(Order order, i64 n, const std::function<R(i64)>& term)
{
    R acc[4][4] = {}, lane[4] = {};
    i64 i = 0;
    const auto vector_to = [&](int a) {
        for (int l = 0; l < order.lanes; ++l) acc[a][l] += term(i++);
    };
    while (n - i >= order.block * order.lanes)
        for (i64 p = 0; p < order.block; ++p) vector_to(p % 4);
    while (order.rest_to_a && n - i >= order.lanes) vector_to(0);
    for (int l = 0; l < order.lanes; ++l) lane[l] = (acc[1][l] + acc[0][l]) + (acc[2][l] + acc[3][l]);
    R sum = lane[0];
    if (order.lanes == 2) sum = lane[0] + lane[1];
    if (order.lanes == 4) sum = (lane[0] + lane[2]) + (lane[1] + lane[3]);
    for (; i < n; ++i) sum += term(i);
    return sum;
}

template <class T> void expect_documented_order(i64 n, const Strided<T>& x, const Strided<T>& y)
{
    using R = real_t<T>;
    const Order order = order_of<T>(x.inc() == 1 && y.inc() == 1);
    const T plain = dot(plain_name<T>(), n, x.data(), x.inc(), y.data(), y.inc());
    if constexpr (is_complex<T>) {
        const R rr = sum_in<R>(order, n, [&](i64 i) { return x(i).re * y(i).re; });
        const R ii = sum_in<R>(order, n, [&](i64 i) { return x(i).im * y(i).im; });
        const R ri = sum_in<R>(order, n, [&](i64 i) { return x(i).re * y(i).im; });
        const R ir = sum_in<R>(order, n, [&](i64 i) { return x(i).im * y(i).re; });
        const T conjugated = dot(conjugate_name<T>(), n, x.data(), x.inc(), y.data(), y.inc());
        EXPECT_TRUE(same_bits(plain, T{rr - ii, ri + ir})) << plain.re << ' ' << plain.im;
        EXPECT_TRUE(same_bits(conjugated, T{rr + ii, ri - ir})) << conjugated.re << ' ' << conjugated.im;
    } else {
        const T expected = sum_in<T>(order, n, [&](i64 i) { return x(i) * y(i); });
        EXPECT_TRUE(same_bits(plain, expected)) << plain << " for " << expected;
    }
}

template <class T> class Dot : public testing::Test {
};
using AllTypes = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Dot, AllTypes);

TYPED_TEST(Dot, adds_in_its_documented_order_at_every_length_stride_and_alignment)
{
    using T = TypeParam;
    Random random(1);
    for_each_vector<T>(is_complex<T> ? "dotu" : "dot", [&](i64 n, Strided<T>& x) {
        for (const i64 incy : {x.inc(), i64(1), i64(-2)}) {
            Strided<T> y(n, incy, {Edge::end, (n % 3) * sizeof(real_t<T>)});
            y.fill(random);
            SCOPED_TRACE("incy " + std::to_string(incy));
            expect_documented_order(n, x, y);
        }
    });
}

TYPED_TEST(Dot, stays_within_the_bound_of_the_textbook_under_growth_and_cancellation)
{
    using T = TypeParam;
    Random random(2);
    for (const bool growth : {true, false})
        for (const i64 n : {1, 2, 17, 100, 1000, 5000}) {
            Strided<T> x(n, 1), y(n, 1);
            x.fill(random), y.fill(random);
            if (growth)
                for (i64 i = 0; i < n; ++i) y(i) = conj(x(i));
            const T computed = dot(plain_name<T>(), n, x.data(), 1, y.data(), 1);
            if constexpr (is_complex<T>) {
                ComplexEntry entry;
                for (i64 i = 0; i < n; ++i) entry.add(x(i).re, x(i).im, y(i).re, y(i).im);
                entry.re.roundings = entry.im.roundings = n + 1;
                EXPECT_LE(excess(computed, entry), 1) << n;
            } else {
                Entry entry;
                for (i64 i = 0; i < n; ++i) entry.add(static_cast<long double>(x(i)) * y(i));
                entry.roundings = n;
                EXPECT_LE(excess(computed, entry), 1) << n;
            }
        }
}

TYPED_TEST(Dot, of_no_elements_is_zero_and_reads_nothing)
{
    using T = TypeParam;
    for (const i64 n : {0, -1, -100}) {
        EXPECT_TRUE(same_bits(dot<T>(plain_name<T>(), n, nullptr, 1, nullptr, 1), zero<T>));
        if constexpr (is_complex<T>) {
            EXPECT_TRUE(same_bits(dot<T>(conjugate_name<T>(), n, nullptr, 1, nullptr, -1), zero<T>));
        }
    }
}

TYPED_TEST(Dot, lets_nan_through_from_any_element)
{
    using T = TypeParam;
    using R = real_t<T>;
    for (const i64 n : {1, 2, 3, 7, 31, 67, 131})
        for (const i64 inc : {1, 2})
            for (i64 at = 0; at < n; ++at) {
                Strided<T> x(n, inc), y(n, inc);
                for (i64 i = 0; i < n; ++i) x(i) = y(i) = element<T>::make(i == at ? quiet_nan<R> : R(1));
                const T computed = dot(plain_name<T>(), n, x.data(), inc, y.data(), inc);
                if constexpr (is_complex<T>) {
                    EXPECT_TRUE(std::isnan(computed.re)) << n << ' ' << at;
                } else {
                    EXPECT_TRUE(std::isnan(computed)) << n << ' ' << at;
                }
            }
}

TEST(DotSpecial, infinities_of_both_signs_make_nan_and_denormals_survive)
{
    Packed<double> x{inf<double>, 1, 2}, one{1, 1, 1}, opposite{1, -inf<double>, 1};
    EXPECT_EQ(dot("xddot", 3, x.data(), 1, one.data(), 1), inf<double>);
    EXPECT_TRUE(std::isnan(dot("xddot", 3, x.data(), 1, opposite.data(), 1)));
    const double tiny = std::numeric_limits<double>::denorm_min();
    Packed<double> denormal{tiny, tiny, tiny};
    EXPECT_EQ(dot("xddot", 3, denormal.data(), 1, one.data(), 1), 3 * tiny);
    Packed<double> negative{-0.0};
    EXPECT_TRUE(same_bits(dot("xddot", 1, negative.data(), 1, one.data(), 1), 0.0)); // 0 + -0
}

TEST(DotSpecial, conjugation_is_of_the_first_operand)
{
    Packed<cpx<double>> x{{1, 2}}, y{{3, 5}};
    EXPECT_EQ(dot("zdotc", 1, x.data(), 1, y.data(), 1), (cpx<double>{13, -1}));
    EXPECT_EQ(dot("zdotu", 1, x.data(), 1, y.data(), 1), (cpx<double>{-7, 11}));
}

TEST(DotInDouble, adds_one_product_after_the_other_starting_from_sb)
{
    const auto sdsdot = kernel<Sdsdot>("blas", "sdsdot");
    const auto xdsdot = kernel<Dsdot>("blas", "xdsdot");
    Random random(3);
    for_each_vector<float>("sdsdot", [&](i64 n, Strided<float>& x) {
        for (const i64 incy : {x.inc(), i64(-2)}) {
            Strided<float> y(n, incy);
            y.fill(random);
            const float sb = random.value<float>();
            const i64 incx = x.inc();
            double from_sb = sb, from_zero = 0;
            for (i64 i = 0; i < n; ++i) {
                from_sb += static_cast<double>(x(i)) * y(i);
                from_zero += static_cast<double>(x(i)) * y(i);
            }
            EXPECT_TRUE(same_bits(sdsdot(&n, &sb, x.data(), &incx, y.data(), &incy), static_cast<float>(from_sb)));
            EXPECT_TRUE(same_bits(xdsdot(&n, x.data(), &incx, y.data(), &incy), from_zero));
        }
    });
}

TEST(DotInDouble, rounds_to_single_once_so_the_sum_may_leave_its_range_and_return)
{
    const i64 n = 3, none = 0, inc = 1;
    const float sb = 3;
    Packed<float> x{1e30f, 1e30f, 5}, y{1e30f, -1e30f, 1};
    const auto sdsdot = kernel<Sdsdot>("blas", "sdsdot");
    EXPECT_EQ(sdsdot(&n, &sb, x.data(), &inc, y.data(), &inc), 5.0f); // sb is lost beside 1e60
    EXPECT_EQ(sdsdot(&none, &sb, nullptr, &inc, nullptr, &inc), sb);
    EXPECT_EQ(kernel<Dsdot>("blas", "xdsdot")(&none, nullptr, &inc, nullptr, &inc), 0.0);
}

} // namespace
} // namespace orv::test
