// rot and rotm: every path against scalar code, bit for bit.
#include "frame/kernels/blas.h"
#include "tests/blas/elementwise.h"

#include <limits>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class R> constexpr R cosine = R(0.8);
template <class S> constexpr S sine = S(0.6);
template <class R> constexpr cpx<R> sine<cpx<R>> = {R(0.36), R(-0.48)};

template <class T, class S> void expect_rot(const char* symbol)
{
    using F = std::conditional_t<std::is_same_v<T, S>, Rot<T>, RealRot<T>>;
    static F* f;
    f = kernel<F>("blas", symbol);
    expect_pairs<T>(
        {symbol, [](i64 n, T* x, i64 incx, T* y, i64 incy) { f(&n, x, &incx, y, &incy, &cosine<real_t<T>>, &sine<S>); },
         [](T& x, T& y) {
             const real_t<T> c = cosine<real_t<T>>;
             const T before = x;
             x = c * x + sine<S> * y;
             y = c * y - conj(sine<S>) * before;
         }});
}

TEST(Rot, equals_scalar_code_on_every_path)
{
    expect_rot<float, float>("xsrot");
    expect_rot<double, double>("xdrot");
    expect_rot<cpx<float>, float>("xcsrot");
    expect_rot<cpx<double>, double>("xzdrot");
    expect_rot<cpx<float>, cpx<float>>("xcrot");
    expect_rot<cpx<double>, cpx<double>>("xzrot");
}

TEST(Rot, has_no_special_angle)
{
    const double nan = std::numeric_limits<double>::quiet_NaN(), c = 1, s = 0;
    double x = 1, y = nan;
    const i64 n = 1, inc = 1;
    kernel<xdrot>()(&n, &x, &inc, &y, &inc, &c, &s);
    EXPECT_NE(x, x) << "0 times NaN is NaN";
}

template <class T> constexpr T entries[] = {T(0.9), T(-0.3), T(1.7), T(0.4)}; // h11 h21 h12 h22

template <class T> void expect_rotm(const char* symbol)
{
    static Rotm<T>* f;
    static T param[5];
    f = kernel<Rotm<T>>("blas", symbol);
    for (const T flag : {T(-1), T(-0.5), T(0), T(1), T(7), T(-2)}) {
        SCOPED_TRACE(testing::Message() << "flag " << flag);
        param[0] = flag;
        std::copy(std::begin(entries<T>), std::end(entries<T>), param + 1);
        // Entries that the flag implies are not read.
        const T nan = std::numeric_limits<T>::quiet_NaN();
        if (flag == T(0)) param[1] = param[4] = nan;
        if (flag > T(0)) param[2] = param[3] = nan;
        expect_pairs<T>({symbol, [](i64 n, T* x, i64 incx, T* y, i64 incy) { f(&n, x, &incx, y, &incy, param); },
                         [](T& x, T& y) {
                             const T a = x, b = y, flag = param[0];
                             if (flag == T(-2)) return;
                             if (flag < T(0)) x = param[1] * a + param[3] * b, y = param[2] * a + param[4] * b;
                             else if (flag == T(0)) x = a + param[3] * b, y = param[2] * a + b;
                             else x = param[1] * a + b, y = param[4] * b - a;
                         }});
    }
}

TEST(Rotm, applies_the_entries_that_its_flag_names)
{
    expect_rotm<float>("srotm");
    expect_rotm<double>("drotm");
}

} // namespace
} // namespace orv::test
