#include "frame/kernels/blas.h"
#include "tests/support/bounds.h"
#include "tests/support/kernels.h"
#include "tests/support/vectors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> std::string name(const char* rest) { return letter<T> + std::string(rest); }

// A packed vector of n elements in a dense one of 3n + 2, all in guarded storage; elements that no index names are NaN.
template <class T> struct Problem {
    i64 n;
    Guarded<T> x, y;
    Guarded<i64> indx;

    explicit Problem(i64 n_) : n(n_), x(n), y(3 * n + 2), indx(n)
    {
        Random random(n);
        std::vector<i64> all(y.size());
        std::iota(all.begin(), all.end(), 1);
        for (i64 i = 0; i < n; ++i) std::swap(all[i], all[random.integer(i, y.size() - 1)]);
        std::copy_n(all.begin(), n, indx.begin());
        random.fill(x);
        for (const i64 place : indx) y[place - 1] = random.value<T>();
    }
    T& dense(i64 i) { return y[indx[i] - 1]; }
};

template <class T> std::vector<std::byte> bits(const Guarded<T>& v)
{
    const auto* p = reinterpret_cast<const std::byte*>(v.data());
    return {p, p + v.size() * sizeof(T)};
}

template <class T> class SparseVector : public testing::Test {
};
using Types = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(SparseVector, Types);

// The kernel's effect on both vectors against element(x, y) applied in order.
template <class T, class Call, class Element> void expect(Call call, Element element)
{
    for (i64 n = 0; n <= 40; ++n) {
        SCOPED_TRACE(testing::Message() << "n=" << n << " seed=" << seed());
        Problem<T> computed(n), expected(n);
        for (i64 i = 0; i < n; ++i) element(expected.x[i], expected.dense(i));
        call(computed);
        ASSERT_EQ(bits(computed.x), bits(expected.x));
        ASSERT_EQ(bits(computed.y), bits(expected.y));
    }
}

TYPED_TEST(SparseVector, axpyi_adds_at_the_named_places)
{
    using T = TypeParam;
    const T alpha = Random(7).value<T>();
    expect<T>(
        [&](Problem<T>& p) {
            kernel<Axpyi<T>>("blas", name<T>("axpyi"))(&p.n, &alpha, p.x.data(), p.indx.data(), p.y.data());
        },
        [&](T& x, T& y) { y = y + alpha * x; });
}

TYPED_TEST(SparseVector, axpyi_returns_at_once_for_alpha_zero)
{
    using T = TypeParam;
    expect<T>(
        [&](Problem<T>& p) { kernel<Axpyi<T>>("blas", name<T>("axpyi"))(&p.n, &zero<T>, nullptr, nullptr, nullptr); },
        [&](T&, T&) {});
}

TYPED_TEST(SparseVector, a_place_named_twice_is_updated_twice)
{
    using T = TypeParam;
    const T x[] = {one<T>, one<T>, one<T>}, alpha = one<T>;
    const i64 n = 3, indx[] = {2, 2, 1};
    T y[] = {zero<T>, zero<T>};
    kernel<Axpyi<T>>("blas", name<T>("axpyi"))(&n, &alpha, x, indx, y);
    EXPECT_EQ(y[1], one<T> + one<T>);
}

TYPED_TEST(SparseVector, gather_and_scatter_move_bits)
{
    using T = TypeParam;
    expect<T>(
        [&](Problem<T>& p) { kernel<Gthr<T>>("blas", name<T>("gthr"))(&p.n, p.y.data(), p.x.data(), p.indx.data()); },
        [&](T& x, T& y) { x = y; });
    expect<T>(
        [&](Problem<T>& p) { kernel<Sctr<T>>("blas", name<T>("sctr"))(&p.n, p.x.data(), p.indx.data(), p.y.data()); },
        [&](T& x, T& y) { y = x; });
}

TYPED_TEST(SparseVector, gthrz_clears_what_it_has_read)
{
    using T = TypeParam;
    expect<T>(
        [&](Problem<T>& p) { kernel<Gthrz<T>>("blas", name<T>("gthrz"))(&p.n, p.y.data(), p.x.data(), p.indx.data()); },
        [&](T& x, T& y) { x = y, y = zero<T>; });
}

TYPED_TEST(SparseVector, negative_counts_do_nothing)
{
    using T = TypeParam;
    const i64 n = -3;
    kernel<Axpyi<T>>("blas", name<T>("axpyi"))(&n, &one<T>, nullptr, nullptr, nullptr);
    kernel<Gthr<T>>("blas", name<T>("gthr"))(&n, nullptr, nullptr, nullptr);
    kernel<Gthrz<T>>("blas", name<T>("gthrz"))(&n, nullptr, nullptr, nullptr);
    kernel<Sctr<T>>("blas", name<T>("sctr"))(&n, nullptr, nullptr, nullptr);
}

template <class T> void expect_roti(const char* symbol)
{
    const T c = T(0.8), s = T(0.6);
    expect<T>(
        [&](Problem<T>& p) { kernel<Roti<T>>("blas", symbol)(&p.n, p.x.data(), p.indx.data(), p.y.data(), &c, &s); },
        [&](T& x, T& y) {
            const T a = x;
            x = c * a + s * y;
            y = c * y - s * a;
        });
    expect<T>(
        [&](Problem<T>& p) { kernel<Roti<T>>("blas", symbol)(&p.n, nullptr, nullptr, nullptr, &one<T>, &zero<T>); },
        [](T&, T&) {});
}

TEST(SparseRotation, rotates_the_named_places_and_returns_at_once_for_the_identity)
{
    expect_roti<float>("sroti");
    expect_roti<double>("droti");
}

template <class T> void expect_doti(const char* symbol)
{
    for (i64 n = -1; n <= 100; ++n) {
        SCOPED_TRACE(testing::Message() << symbol << " n=" << n << " seed=" << seed());
        Problem<T> p(std::max<i64>(n, 0));
        Entry entry;
        for (i64 i = 0; i < n; ++i) entry.add(static_cast<long double>(p.x[i]) * p.dense(i));
        entry.roundings = n + 1;
        const T computed = kernel<Doti<T>>("blas", symbol)(&n, p.x.data(), p.indx.data(), p.y.data());
        EXPECT_LE(excess(computed, entry), 1);
        if (n <= 0) {
            EXPECT_EQ(computed, T(0));
        }
    }
}

template <class T> void expect_complex_doti(const char* symbol, int sign)
{
    for (i64 n = -1; n <= 100; ++n) {
        SCOPED_TRACE(testing::Message() << symbol << " n=" << n << " seed=" << seed());
        Problem<T> p(std::max<i64>(n, 0));
        ComplexEntry entry;
        for (i64 i = 0; i < n; ++i) entry.add(p.x[i].re, sign * p.x[i].im, p.dense(i).re, p.dense(i).im);
        entry.re.roundings = entry.im.roundings = n + 2;
        T computed = {5, 5};
        kernel<ComplexDoti<T>>("blas", symbol)(&computed, &n, p.x.data(), p.indx.data(), p.y.data());
        EXPECT_LE(excess(computed, entry), 1);
        if (n <= 0) {
            EXPECT_EQ(computed, zero<T>);
        }
    }
}

TEST(SparseDot, keeps_its_bound)
{
    expect_doti<float>("sdoti");
    expect_doti<double>("ddoti");
    expect_complex_doti<cpx<float>>("cdotui", 1);
    expect_complex_doti<cpx<double>>("zdotui", 1);
    expect_complex_doti<cpx<float>>("cdotci", -1);
    expect_complex_doti<cpx<double>>("zdotci", -1);
}

} // namespace
} // namespace orv::test
