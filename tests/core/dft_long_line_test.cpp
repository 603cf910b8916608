// A long line of complex numbers that a team shares: the same numbers as from one thread, whoever is in the team.
#include "tests/core/transforms.h"
#include "tests/support/probe.h"

#include <orv/orv.h>

namespace orv::test {
namespace {

template <class R> constexpr int precision_of = sizeof(R) == 8 ? ORV_DFT_DOUBLE : ORV_DFT_SINGLE;

// The spectrum of a few impulses, by the definition.
struct Impulse {
    i64 place;
    exact height;
};
std::vector<exact> spectrum_of(const std::vector<Impulse>& impulses, i64 n, int sign)
{
    std::vector<exact> root(n), y(n);
    for (i64 k = 0; k < n; ++k)
        root[k] = std::polar(1.0L, sign * 2 * std::numbers::pi_v<long double> * static_cast<long double>(k) / n);
    for (const auto& [place, height] : impulses)
        for (i64 k = 0; k < n; ++k) y[k] += height * root[place * k % n];
    return y;
}

template <class R> void expect_spectra(i64 n, int placement)
{
    SCOPED_TRACE(std::to_string(n) + (placement == ORV_DFT_IN_PLACE ? " in place" : " out of place"));
    const std::vector<Impulse> impulses = {{0, {0.5L, 0}}, {1, {0, 1}}, {n / 3, {-1, 2}}, {n - 1, {3, -0.25L}}};
    for (const int direction : {-1, +1}) {
        Transform t(precision_of<R>, ORV_DFT_COMPLEX, {n});
        t.set(ORV_DFT_PLACEMENT, placement).set(ORV_DFT_THREADS, 3);
        ASSERT_EQ(orv_dft_set_scales(t, 2, 0.5), ORV_OK);
        ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
        EXPECT_EQ(t.get(ORV_DFT_THREADS_USED), 3) << orv_dft_method(t);
        Guarded<std::complex<R>> in(n, Edge::end), out(n, Edge::start);
        for (auto& v : in) v = 0;
        for (const auto& [place, height] : impulses) in[place] = std::complex<R>(height);
        const std::vector<std::complex<R>> before(in.begin(), in.end());
        auto* const to = placement == ORV_DFT_IN_PLACE ? in.data() : out.data();
        ASSERT_EQ((direction < 0 ? orv_dft_forward : orv_dft_backward)(t, in.data(), to), ORV_OK) << orv_last_error();
        auto wanted = spectrum_of(impulses, n, direction);
        for (auto& v : wanted) v *= direction < 0 ? 2 : 0.5L;
        // Each frequency is a sum of four numbers turned by some angles, so no single one may be far off, either.
        long double worst = 0;
        for (i64 k = 0; k < n; ++k) worst = std::max(worst, std::abs(exact(to[k]) - wanted[k]));
        const long double norm = direction < 0 ? 2 * 7 : 0.5L * 7; // about the sum of the heights
        EXPECT_LT(worst, units_allowed({n}) * std::numeric_limits<R>::epsilon() * norm);
        if (placement == ORV_DFT_OUT_OF_PLACE) {
            EXPECT_TRUE(std::equal(before.begin(), before.end(), in.begin())) << "the input";
        }
    }
}

TEST(DftLongLine, is_what_the_definition_says)
{
    for (const int placement : {ORV_DFT_IN_PLACE, ORV_DFT_OUT_OF_PLACE}) {
        for (const i64 n : {i64{1} << 17, i64{1} << 18, i64{300000}, i64{3 * 43691 + 2}, i64{362 * 363}}) {
            expect_spectra<double>(n, placement);
            expect_spectra<float>(n, placement);
        }
    }
}

TEST(DftLongLine, has_the_same_bits_for_any_team_and_nearly_those_of_one_thread)
{
    for (const i64 n : {i64{1} << 17, i64{150000}}) {
        const auto in = random_elements<float>(2 * n, 3);
        std::vector<float> first;
        for (const int threads : {1, 2, 3, 4, 5}) {
            Transform t(ORV_DFT_SINGLE, ORV_DFT_COMPLEX, {n});
            t.set(ORV_DFT_THREADS, threads);
            ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
            auto x = in;
            ASSERT_EQ(orv_dft_forward(t, x.data(), x.data()), ORV_OK);
            if (threads <= 2) {
                if (threads == 2) {
                    double error = 0, norm = 0;
                    for (i64 i = 0; i < 2 * n; ++i) {
                        error += std::pow(double{x[i]} - double{first[i]}, 2);
                        norm += std::pow(double{first[i]}, 2);
                    }
                    EXPECT_LT(std::sqrt(error / norm), 2 * units_allowed({n}) * std::numeric_limits<float>::epsilon());
                }
                first = x;
            }
            EXPECT_TRUE(x == first) << threads << " threads: " << orv_dft_method(t);
        }
    }
}

int threads_of(Transform& t)
{
    EXPECT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
    return static_cast<int>(t.get(ORV_DFT_THREADS_USED));
}

TEST(DftLongLine, is_shared_only_where_that_is_one_line_and_pays)
{
    const auto line = [](i64 n) {
        auto t = std::make_unique<Transform>(ORV_DFT_DOUBLE, ORV_DFT_COMPLEX, std::vector<i64>{n});
        t->set(ORV_DFT_THREADS, 2);
        return t;
    };
    constexpr i64 n = i64{1} << 17;
    const auto shared = line(n);
    EXPECT_EQ(threads_of(*shared), 2);
    const std::string words = orv_dft_method(*shared);
    EXPECT_EQ(words.find("one dimension as two (via_2d); 2 threads; "), 0u) << words;
    EXPECT_EQ(threads_of(*line(n - 2)), 1) << "short";
    EXPECT_EQ(threads_of(*line(131101)), 1) << "prime";
    EXPECT_EQ(threads_of(line(n)->set(ORV_DFT_WORKSPACE, ORV_DFT_AVOID)), 1) << "needs an array in place";
    EXPECT_EQ(threads_of(line(n)->set(ORV_DFT_WORKSPACE, ORV_DFT_AVOID).set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE)),
              2);
    EXPECT_EQ(threads_of(line(n)->set(ORV_DFT_ORDERING, ORV_DFT_ANY_ORDER)), 1);
    EXPECT_EQ(threads_of(line(n)->set(ORV_DFT_SIGNAL_OFFSET, 1)), 1);
    EXPECT_EQ(threads_of(line(n)->set(ORV_DFT_THREADS, 1)), 1);
    const int before = orv_get_reproducible();
    orv_set_reproducible(1);
    EXPECT_EQ(threads_of(*line(n)), 1);
    orv_set_reproducible(before);
    auto again = line(n);
    EXPECT_EQ(threads_of(*again), 2);
    again->set(ORV_DFT_TRANSFORMS, 0);
    EXPECT_EQ(threads_of(*again), 1) << "nothing to do";
}

TEST(DftLongLine, without_memory_says_so_and_gives_all_back)
{
    constexpr i64 n = i64{1} << 17;
    const auto in = random_elements<double>(2 * n, 5);
    for (const int placement : {ORV_DFT_IN_PLACE, ORV_DFT_OUT_OF_PLACE}) {
        Transform t(ORV_DFT_DOUBLE, ORV_DFT_COMPLEX, {n});
        t.set(ORV_DFT_PLACEMENT, placement).set(ORV_DFT_THREADS, 2);
        ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
        auto x = in, y = in;
        auto& to = placement == ORV_DFT_IN_PLACE ? x : y;
        ASSERT_EQ(orv_dft_forward(t, x.data(), to.data()), ORV_OK);
        const auto expected = to;
        for (const i64 fail_at : {0, 1, 2, 3, 4, 5, 1000}) {
            ProbeScope probe;
            x = in;
            probe->fail_at = fail_at, probe->allocations = 0;
            const orv_status status = orv_dft_forward(t, x.data(), to.data());
            if (status == ORV_OK) EXPECT_TRUE(to == expected);
            else EXPECT_EQ(status, ORV_NO_MEMORY) << orv_last_error();
            EXPECT_TRUE(status == ORV_NO_MEMORY || fail_at > 5) << fail_at;
            EXPECT_EQ(probe->live, 0) << fail_at;
        }
    }
}

} // namespace
} // namespace orv::test
