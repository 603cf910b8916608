#include "frame/kernels/blas.h"
#include "tests/blas/reduction.h"

namespace orv::test {
namespace {

using namespace kernels::blas;

template <class T> i64 position(const char* end, i64 n, const T* x, i64 inc)
{
    return kernel<Amax<T>>("blas", "i", letter<T>, end)(&n, x, &inc);
}

template <class R> R size_of(R x) { return std::fabs(x); }
template <class R> R size_of(cpx<R> x) { return std::fabs(x.re) + std::fabs(x.im); }

// The search as it is defined, lane by lane: `beyond(a, b)` is a > b for the maximum, a < b for the minimum.
template <class T> i64 search(i64 n, const T* x, i64 inc, bool greatest)
{
    using R = real_t<T>;
    constexpr i64 lanes = 16 / sizeof(R);
    if (n < 1 || inc < 1) return 0;
    const auto beyond = [&](R a, R b) { return greatest ? a > b : a < b; };
    const auto not_beyond = [&](R a, R b) { return greatest ? a <= b : a >= b; };
    const auto m = [&](i64 i) { return size_of(x[i * inc]); };

    R best = m(0);
    i64 at = 0, i = 0;
    const auto off = reinterpret_cast<std::uintptr_t>(x) % 16;
    if (inc == 1 && off % sizeof(T) == 0 && off != 0)
        for (const i64 head = std::min<i64>(n, (16 - off) / sizeof(T)); i < head; ++i)
            if (beyond(m(i), best)) best = m(i), at = i;
    R lane[lanes];
    i64 place[lanes];
    std::fill_n(lane, lanes, best), std::fill_n(place, lanes, at);
    for (; i + lanes <= n; i += lanes)
        for (i64 l = 0; l < lanes; ++l) {
            if (!not_beyond(m(i + l), lane[l])) place[l] = i + l;
            if (beyond(m(i + l), lane[l])) lane[l] = m(i + l);
        }
    best = lane[0], at = place[0];
    for (i64 l = 1; l < lanes; ++l) {
        const bool tie = !beyond(lane[l], best) && !beyond(best, lane[l]);
        if (beyond(lane[l], best) || (tie && place[l] < at)) best = lane[l], at = place[l];
    }
    for (; i < n; ++i)
        if (beyond(m(i), best)) best = m(i), at = i;
    return at + 1;
}

template <class T> void expect_both(i64 n, const T* x, i64 inc)
{
    EXPECT_EQ(position("amax", n, x, inc), search(n, x, inc, true));
    EXPECT_EQ(position("amin", n, x, inc), search(n, x, inc, false));
}

template <class T> class Extreme : public testing::Test {
};
using AllTypes = testing::Types<float, double, cpx<float>, cpx<double>>;
TYPED_TEST_SUITE(Extreme, AllTypes);

TYPED_TEST(Extreme, is_the_search_by_lanes_at_every_length_stride_and_alignment)
{
    for_each_vector<TypeParam>("amax", [](i64 n, Strided<TypeParam>& x) { expect_both(n, x.data(), x.inc()); });
}

TYPED_TEST(Extreme, is_the_search_by_lanes_among_ties_and_special_values)
{
    using T = TypeParam;
    using R = real_t<T>;
    Random random(7);
    const R special[] = {quiet_nan<R>, -quiet_nan<R>, inf<R>, -inf<R>, std::numeric_limits<R>::denorm_min(), R(-0.0)};
    for (int round = 0; round < 20000; ++round) {
        const i64 n = random.integer(1, round % 50 == 0 ? 1500 : 40), inc = random.integer(1, 2);
        const bool with_special = random.integer(0, 2) != 0;
        Strided<T> x(n, inc, {Edge::start, static_cast<std::size_t>(random.integer(0, 4)) * sizeof(R)});
        for (i64 i = 0; i < n; ++i) {
            R v = static_cast<R>(random.integer(-4, 4)); // many ties
            if (with_special && random.integer(0, 7) == 0) v = special[random.integer(0, 5)];
            x(i) = element<T>::make(v);
            if constexpr (is_complex<T>)
                if (random.integer(0, 1) == 0) x(i) = {R(1), v};
        }
        SCOPED_TRACE(problem("amax", letter<T>, n, inc, {}) + " round=" + std::to_string(round));
        expect_both(n, x.data(), inc);
        if (this->HasFailure()) return;
    }
}

TYPED_TEST(Extreme, finds_a_single_one_at_every_position_and_the_first_of_two)
{
    using T = TypeParam;
    using R = real_t<T>;
    for (const i64 n : {1, 2, 3, 8, 33, 129, 300, 700})
        for (const i64 inc : {1, 3})
            for (i64 at = 0; at < n; ++at) {
                Strided<T> x(n, inc);
                for (i64 i = 0; i < n; ++i) x(i) = element<T>::make(R(2));
                x(at) = element<T>::make(R(-3));
                EXPECT_EQ(position("amax", n, x.data(), inc), at + 1);
                x(n - 1) = element<T>::make(R(-3));
                EXPECT_EQ(position("amax", n, x.data(), inc), at + 1);
                x(n - 1) = element<T>::make(R(2));
                x(at) = element<T>::make(R(-0.5));
                EXPECT_EQ(position("amin", n, x.data(), inc), at + 1);
                x(n - 1) = element<T>::make(R(0.5));
                EXPECT_EQ(position("amin", n, x.data(), inc), at + 1);
            }
}

TYPED_TEST(Extreme, of_nothing_or_without_a_positive_stride_is_0_and_of_one_element_1)
{
    using T = TypeParam;
    Packed<T> x{element<T>::make(quiet_nan<real_t<T>>)};
    for (const char* end : {"amax", "amin"}) {
        for (const i64 n : {0, -1}) EXPECT_EQ(position<T>(end, n, nullptr, 1), 0);
        for (const i64 inc : {0, -1, -7}) EXPECT_EQ(position<T>(end, 10, nullptr, inc), 0);
        EXPECT_EQ(position(end, 1, x.data(), 5), 1);
    }
}

TEST(Idamax, lets_a_nan_move_the_position_of_its_lane_but_not_the_maximum)
{
    alignas(16) const double nan = quiet_nan<double>;
    alignas(16) const double moved[] = {1, 2, 0, nan, 0, 0}, other_lane[] = {1, 2, nan, 0, 0, 0};
    alignas(16) const double tie[] = {2, nan, 0, 0}, last[] = {1, 2, nan}, raised[] = {1, 2, 0, nan, 0, 3};
    EXPECT_EQ(position("amax", 6, moved, 1), 4);      // lane 1 holds 2 and points at the NaN
    EXPECT_EQ(position("amax", 6, other_lane, 1), 2); // lane 0 holds 1
    EXPECT_EQ(position("amax", 4, tie, 1), 1);        // both lanes hold 2, the smaller position wins
    EXPECT_EQ(position("amax", 3, last, 1), 2);       // a last odd NaN loses
    EXPECT_EQ(position("amax", 6, raised, 1), 6);
}

} // namespace
} // namespace orv::test
