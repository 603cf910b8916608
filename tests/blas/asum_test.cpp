#include "frame/kernels/blas.h"
#include "tests/blas/reduction.h"
#include "tests/support/bounds.h"

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> const char* asum_name();
template <> const char* asum_name<float>() { return "sasum"; }
template <> const char* asum_name<double>() { return "dasum"; }
template <> const char* asum_name<cpx<float>>() { return "scasum"; }
template <> const char* asum_name<cpx<double>>() { return "dzasum"; }

template <class T> real_t<T> asum(i64 n, const T* x, i64 inc)
{
    return kernel<Norm<T>>("blas", asum_name<T>())(&n, x, &inc);
}

// Magnitudes of the reals of a vector, in the order of its elements.
template <class T> std::vector<real_t<T>> magnitudes(i64 n, const Strided<T>& x)
{
    std::vector<real_t<T>> all;
    for (i64 i = 0; i < n; ++i) {
        if constexpr (is_complex<T>) all.push_back(std::fabs(x(i).re)), all.push_back(std::fabs(x(i).im));
        else all.push_back(std::fabs(x(i)));
    }
    return all;
}

// Eight accumulators, a register each of a block of eight registers; of singles, whole registers left to the first;
// then pairs of accumulators, lanes, and the reals left.
template <class R> R sum_in_order(const std::vector<R>& v)
{
    constexpr std::size_t lanes = 16 / sizeof(R);
    R acc[8][lanes] = {}, lane[lanes];
    std::size_t i = 0;
    const auto register_to = [&](int a) {
        for (std::size_t l = 0; l < lanes; ++l) acc[a][l] += v[i++];
    };
    while (v.size() - i >= 8 * lanes)
        for (int a = 0; a < 8; ++a) register_to(a);
    while (sizeof(R) == 4 && v.size() - i >= lanes) register_to(0);
    for (std::size_t l = 0; l < lanes; ++l)
        lane[l] =
            ((acc[0][l] + acc[1][l]) + (acc[2][l] + acc[3][l])) + ((acc[4][l] + acc[5][l]) + (acc[6][l] + acc[7][l]));
    R sum = lane[0] + lane[1];
    if constexpr (lanes == 4) sum = (lane[0] + lane[2]) + (lane[1] + lane[3]);
    for (; i < v.size(); ++i) sum += v[i];
    return sum;
}

template <class T> class Asum : public testing::Test {
};
using AllTypes = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Asum, AllTypes);

TYPED_TEST(Asum, adds_in_its_documented_order_at_every_length_stride_and_alignment)
{
    using T = TypeParam;
    for_each_vector<T>("asum", [&](i64 n, Strided<T>& x) {
        const auto expected = sum_in_order(magnitudes(n, x));
        EXPECT_TRUE(same_bits(asum(n, x.data(), x.inc()), expected)) << expected;
    });
}

TYPED_TEST(Asum, stays_within_the_bound_of_the_textbook)
{
    using T = TypeParam;
    Random random(2);
    for (const i64 n : {1, 3, 50, 1000, 20000}) {
        Strided<T> x(n, 1);
        x.fill(random);
        Entry entry;
        for (const auto m : magnitudes(n, x)) entry.add(m), ++entry.roundings;
        EXPECT_LE(excess(asum(n, x.data(), 1), entry), 1) << n;
    }
}

TYPED_TEST(Asum, of_no_elements_is_zero_and_reads_nothing)
{
    using T = TypeParam;
    for (const i64 n : {0, -1, -7}) EXPECT_TRUE(same_bits(asum<T>(n, nullptr, 1), real_t<T>(0)));
}

TYPED_TEST(Asum, ignores_signs_and_lets_nan_and_infinity_through)
{
    using T = TypeParam;
    using R = real_t<T>;
    const auto is = [](R re) { return element<T>::make(re); };
    for (const i64 n : {1, 5, 16, 40, 67})
        for (i64 at = 0; at < n; ++at) {
            Strided<T> x(n, 1);
            for (i64 i = 0; i < n; ++i) x(i) = is(R(-1));
            EXPECT_EQ(asum(n, x.data(), 1), R(n));
            x(at) = is(-inf<R>);
            EXPECT_EQ(asum(n, x.data(), 1), inf<R>);
            x(at) = is(quiet_nan<R>);
            EXPECT_TRUE(std::isnan(asum(n, x.data(), 1)));
        }
    Packed<T> zeros{is(R(-0.0)), is(R(-0.0))};
    EXPECT_TRUE(same_bits(asum(2, zeros.data(), 1), R(0)));
}

template <class R> void expect_abs1(const char* name)
{
    const auto abs1 = kernel<Abs1<cpx<R>>>("blas", name);
    Random random(4);
    for (int i = 0; i < 1000; ++i) {
        const auto x = random.value<cpx<R>>();
        EXPECT_TRUE(same_bits(abs1(&x), R(std::fabs(x.re) + std::fabs(x.im))));
    }
    const cpx<R> huge = {-std::numeric_limits<R>::max(), std::numeric_limits<R>::max()}, nan = {1, quiet_nan<R>};
    EXPECT_EQ(abs1(&huge), inf<R>);
    EXPECT_TRUE(std::isnan(abs1(&nan)));
}

TEST(Abs1, is_the_sum_of_the_magnitudes_of_the_parts)
{
    expect_abs1<float>("scabs1");
    expect_abs1<double>("dcabs1");
}

} // namespace
} // namespace orv::test
