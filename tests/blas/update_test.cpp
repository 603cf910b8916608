// axpy, axpby, scal, copy, swap: every path against scalar code, bit for bit.
#include "frame/kernels/blas.h"
#include "tests/blas/elementwise.h"

#include <bit>
#include <cmath>
#include <limits>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> constexpr T scalar(double re, double im)
{
    if constexpr (is_complex<T>) return {static_cast<real_t<T>>(re), static_cast<real_t<T>>(im)};
    else return static_cast<T>(re);
}
template <class T> constexpr T alpha = scalar<T>(0.7, -1.3);
template <class T> constexpr T beta = scalar<T>(-0.4, 0.9);

// Exported name: prefix, letter of the type, rest.
template <class T> std::string name(const char* prefix, const char* rest)
{
    return std::string(prefix) + letter<T> + rest;
}

template <class T> void axpy(i64 n, T a, const T* x, i64 incx, T* y, i64 incy)
{
    static auto* f = kernel<Axpy<T>>("blas", name<T>("x", "axpy"));
    f(&n, &a, x, &incx, y, &incy);
}
template <class A, class T> void scal(const char* symbol, i64 n, A a, T* x, i64 incx)
{
    using F = std::conditional_t<std::is_same_v<A, T>, Scal<T>, RealScal<T>>;
    kernel<F>("blas", symbol)(&n, &a, x, &incx);
}

template <class T> class Update : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Update, Types);

TYPED_TEST(Update, axpy_equals_scalar_code_on_every_path)
{
    using T = TypeParam;
    expect_pairs<T>({"axpy", [](i64 n, T* x, i64 incx, T* y, i64 incy) { axpy(n, alpha<T>, x, incx, y, incy); },
                     [](T& x, T& y) { y = y + alpha<T> * x; }});
}

TYPED_TEST(Update, axpby_equals_scalar_code_on_every_path)
{
    using T = TypeParam;
    expect_pairs<T>({"axpby",
                     [](i64 n, T* x, i64 incx, T* y, i64 incy) {
                         static auto* f = kernel<Axpby<T>>("blas", name<T>("x", "axpby"));
                         f(&n, &alpha<T>, x, &incx, &beta<T>, y, &incy);
                     },
                     [](T& x, T& y) { y = alpha<T> * x + beta<T> * y; }});
}

TYPED_TEST(Update, copy_moves_bits_on_every_path)
{
    using T = TypeParam;
    expect_pairs<T>({"copy",
                     [](i64 n, T* x, i64 incx, T* y, i64 incy) {
                         static auto* f = kernel<Copy<T>>("blas", name<T>("x", "copy"));
                         f(&n, x, &incx, y, &incy);
                     },
                     [](T& x, T& y) { y = x; }});
}

TYPED_TEST(Update, swap_moves_bits_on_every_path)
{
    using T = TypeParam;
    expect_pairs<T>({"swap",
                     [](i64 n, T* x, i64 incx, T* y, i64 incy) {
                         static auto* f = kernel<Swap<T>>("blas", name<T>("x", "swap"));
                         f(&n, x, &incx, y, &incy);
                     },
                     [](T& x, T& y) { std::swap(x, y); }});
}

// x is only read and goes through the walk as a bystander that must not change.
template <class A, class T> void expect_scal(const char* symbol)
{
    static const char* routine;
    routine = symbol;
    expect_pairs<T>({symbol, [](i64 n, T*, i64, T* y, i64 incy) { scal(routine, n, alpha<A>, y, incy); },
                     [](T&, T& y) { y = alpha<A> * y; }});
}

TEST(Scal, equals_scalar_code_on_every_path)
{
    expect_scal<float, float>("sscal");
    expect_scal<double, double>("dscal");
    expect_scal<cpx<float>, cpx<float>>("cscal");
    expect_scal<cpx<double>, cpx<double>>("zscal");
    expect_scal<float, cpx<float>>("csscal");
    expect_scal<double, cpx<double>>("zdscal");
}

template <class A, class T> void expect_scal_special(const char* symbol)
{
    SCOPED_TRACE(symbol);
    using R = real_t<T>;
    const R nan = std::numeric_limits<R>::quiet_NaN(), inf = std::numeric_limits<R>::infinity();

    // Alpha 1 does not read the vector: an unreadable one does no harm.
    GuardedBytes nothing(0);
    scal(symbol, 5, one<A>, reinterpret_cast<T*>(nothing.at_end()), 1);

    for (const i64 inc : {1, 2, -1, 0}) {
        std::vector<T> x(7, scalar<T>(nan, nan));
        scal(symbol, inc == 0 ? 1 : 3, zero<A>, x.data(), inc);
        for (const T& element : x) EXPECT_NE(element, element) << "alpha 0 cleared a NaN at stride " << inc;
    }
    T infinite = scalar<T>(inf, inf), negative = scalar<T>(-1, -1);
    scal(symbol, 1, zero<A>, &infinite, 1);
    EXPECT_NE(infinite, infinite);
    scal(symbol, 1, element<A>::make(0), &negative, 1);
    EXPECT_EQ(negative, zero<T>);

    T power = one<T>;
    scal(symbol, 10, element<A>::make(2), &power, 0);
    EXPECT_EQ(power, scalar<T>(1024, 0)) << "a stride of 0 multiplies the one element n times";
}

TEST(Scal, has_one_special_alpha_and_it_is_one)
{
    expect_scal_special<float, float>("sscal");
    expect_scal_special<double, double>("dscal");
    expect_scal_special<cpx<float>, cpx<float>>("cscal");
    expect_scal_special<cpx<double>, cpx<double>>("zscal");
    expect_scal_special<float, cpx<float>>("csscal");
    expect_scal_special<double, cpx<double>>("zdscal");
}

TYPED_TEST(Update, axpy_returns_at_once_for_alpha_zero)
{
    using T = TypeParam;
    GuardedBytes nothing(0);
    T* unreadable = reinterpret_cast<T*>(nothing.at_end());
    axpy<T>(100, zero<T>, unreadable, 1, unreadable, 1);
}

TYPED_TEST(Update, axpy_goes_on_for_alpha_nan)
{
    using T = TypeParam;
    const auto nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<T> x(5, one<T>);
    std::vector<T> y(5, one<T>);
    axpy<T>(5, scalar<T>(nan, 0), x.data(), 1, y.data(), 1);
    for (const T& element : y) EXPECT_NE(element, element);
}

template <class T> void expect_axpy_a(const char* symbol)
{
    static Axpy<T>* f;
    f = kernel<Axpy<T>>("blas", symbol);
    expect_pairs<T>({symbol, [](i64 n, T* x, i64 incx, T* y, i64 incy) { f(&n, &alpha<T>, x, &incx, y, &incy); },
                     [](T& x, T& y) { y = y + alpha<T> * x; }});
}

TEST(AxpyA, equals_scalar_code_on_every_path)
{
    expect_axpy_a<cpx<float>>("xcaxpy_a");
    expect_axpy_a<cpx<double>>("xzaxpy_a");
}

TEST(AxpyA, goes_on_for_alpha_zero)
{
    const auto expect_nan = []<class T>(const char* symbol, T) {
        const T a = zero<T>, x = scalar<T>(std::numeric_limits<double>::quiet_NaN(), 0);
        T y = one<T>;
        const i64 n = 1, inc = 1;
        kernel<Axpy<T>>("blas", symbol)(&n, &a, &x, &inc, &y, &inc);
        EXPECT_NE(y, y) << symbol;
    };
    expect_nan("xcaxpy_a", cpx<float>{});
    expect_nan("xzaxpy_a", cpx<double>{});
}

TYPED_TEST(Update, axpy_folds_into_one_location_in_order_when_incy_is_zero)
{
    using T = TypeParam;
    // Large, small, -large: the order shows in the rounding.
    const auto large = 3 / std::numeric_limits<real_t<T>>::epsilon();
    const T x[] = {scalar<T>(large, large), scalar<T>(1, 1), scalar<T>(-large, -large), scalar<T>(1, 1)};
    for (const i64 incx : {1, -1}) {
        T y = zero<T>, expected = zero<T>;
        for (int i = 0; i < 4; ++i) expected = expected + x[incx > 0 ? i : 3 - i];
        axpy<T>(4, one<T>, x, incx, &y, 0);
        EXPECT_EQ(y, expected);
    }
}

// Numbers of every kind as bits: quiet and signalling NaN with payloads, both zeros and infinities, subnormal ones.
template <class R> std::vector<R> rogue_numbers()
{
    using bits = std::conditional_t<sizeof(R) == 4, std::uint32_t, std::uint64_t>;
    constexpr int mantissa = std::numeric_limits<R>::digits - 1;
    const bits sign = bits(1) << (8 * sizeof(R) - 1), infinite = (~bits(0) >> (mantissa + 1)) << mantissa,
               quiet = bits(1) << (mantissa - 1);
    std::vector<R> numbers;
    for (const bits b : {bits(0), bits(1), infinite, infinite | 5, infinite | quiet, infinite | quiet | 77})
        for (const bits with : {b, b | sign}) numbers.push_back(std::bit_cast<R>(with));
    return numbers;
}

template <class T> void fill_with_rogues(Strided<T>& v, i64 n, std::size_t from)
{
    static const auto numbers = rogue_numbers<real_t<T>>();
    for (i64 i = 0; i < n; ++i) {
        real_t<T> parts[sizeof(T) / sizeof(real_t<T>)];
        for (auto& part : parts) part = numbers[from++ % numbers.size()];
        std::memcpy(&v(i), parts, sizeof parts);
    }
}

TYPED_TEST(Update, copy_and_swap_keep_the_bits_of_every_kind_of_number)
{
    using T = TypeParam;
    auto* copy = kernel<Copy<T>>("blas", name<T>("x", "copy"));
    auto* swap = kernel<Swap<T>>("blas", name<T>("x", "swap"));
    for (const i64 n : {1, 5, 40, 600})
        for (const i64 inc : {1, 2, -3})
            for (const Place place : {Place{}, Place{Edge::start, sizeof(real_t<T>)}}) {
                SCOPED_TRACE(problem("swap", letter<T>, n, inc, inc, place, {}));
                Strided<T> x(n, inc, place), y(n, inc);
                fill_with_rogues(x, n, 0), fill_with_rogues(y, n, 7);
                const auto x_before = x.bits(), y_before = y.bits();
                swap(&n, x.data(), &inc, y.data(), &inc);
                EXPECT_EQ(x.bits(), y_before);
                EXPECT_EQ(y.bits(), x_before);
                copy(&n, x.data(), &inc, y.data(), &inc);
                EXPECT_EQ(x.bits(), y_before);
                EXPECT_EQ(y.bits(), y_before);
            }
}

// Elements are computed alone, so a special one shows in its own place and in no other, on every path.
TYPED_TEST(Update, axpy_keeps_nan_and_infinity_in_their_places)
{
    using T = TypeParam;
    using R = real_t<T>;
    for (const R special : {std::numeric_limits<R>::quiet_NaN(), std::numeric_limits<R>::infinity()})
        for (const i64 n : {9, 70, 200})
            for (const i64 inc : {1, 2})
                for (const std::size_t shift : {std::size_t(0), sizeof(R)}) {
                    const Place place{Edge::start, shift};
                    SCOPED_TRACE(problem("axpy", letter<T>, n, inc, 1, place, {}));
                    for (i64 at = 0; at < n; at += 5) {
                        Strided<T> x(n, inc, place), y(n, 1);
                        for (i64 i = 0; i < n; ++i) x(i) = y(i) = one<T>;
                        x(at) = scalar<T>(special, special);
                        axpy<T>(n, one<T>, x.data(), inc, y.data(), 1);
                        for (i64 i = 0; i < n; ++i) {
                            if (i != at) {
                                ASSERT_EQ(y(i), one<T> + one<T>) << i;
                            }
                        }
                        ASSERT_NE(y(at) - y(at), zero<T>) << "neither NaN nor infinite";
                    }
                }
}

TEST(Line, of_two_vectors_repeats_it)
{
    for (const char* routine : {"axpy", "axpby", "copy", "swap", "rot"})
        EXPECT_TRUE(repeats(problem(routine, 'z', 9, -1, 2, {Edge::end, 4}, {Edge::start, 8})));
    for (const char* routine : {"nrm2", "asum", "scal", "amax"}) EXPECT_TRUE(repeats(problem(routine, 's', 9, 2, {})));
}

} // namespace
} // namespace orv::test
