// Every form and every order against wider arithmetic: the error's root mean square, as a part of what is allowed.
#include "tests/dft/fft/engine.h"
#include "tests/dft/fft/oracle.h"

#include <cstdio>

namespace orv::test {
namespace {

// 0.6*eps*sqrt(log2 n), times the norm of the result.
template <class R, class X>
double part_of_bound(const PairsOf<R>& computed, const std::vector<cpx<X>>& exact, int order)
{
    quad error = 0, norm = 0;
    for (std::size_t k = 0; k < exact.size(); ++k) {
        const quad re = exact[k].re, im = exact[k].im, de = computed[k].re - re, di = computed[k].im - im;
        error += de * de + di * di, norm += re * re + im * im;
    }
    const quad allowed = quad{0.6} * std::numeric_limits<R>::epsilon() * root(quad(order));
    return static_cast<double>(error == 0 ? quad(0) : root(error / norm) / allowed);
}

// Input that both types hold exactly.
PairsOf<float> input(int order)
{
    return random_array<cpx<float>>(i64{1} << order, 100 + static_cast<unsigned>(order));
}

template <class R> PairsOf<R> as(const PairsOf<float>& x)
{
    PairsOf<R> y;
    for (const auto& e : x) y.push_back({e.re, e.im});
    return y;
}

template <class R> PairsOf<R> of_pairs(Direction d, bool in_place, const PairsOf<R>& x, int order)
{
    const Record<KindOf<R, Shape::pairs>> record(order);
    const Guarded<cpx<R>> src(x.size()), dst(x.size());
    std::copy(x.begin(), x.end(), src.begin());
    cpx<R>* const to = in_place ? src.data() : dst.data();
    EXPECT_EQ(transform(d, src.data(), to, record.spec(), record.buffer()), ok);
    return {to, to + x.size()};
}
template <class R> PairsOf<R> of_planes(Direction d, bool in_place, const PairsOf<R>& x, int order)
{
    const Record<KindOf<R, Shape::planes>> record(order);
    const Guarded<R> re(x.size()), im(x.size()), dst_re(x.size()), dst_im(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) re[i] = x[i].re, im[i] = x[i].im;
    const auto& to_re = in_place ? re : dst_re;
    const auto& to_im = in_place ? im : dst_im;
    EXPECT_EQ(transform(d, re.data(), im.data(), to_re.data(), to_im.data(), record.spec(), record.buffer()), ok);
    PairsOf<R> y;
    for (std::size_t i = 0; i < x.size(); ++i) y.push_back({to_re[i], to_im[i]});
    return y;
}
// The real parts alone: forward a whole spectrum out of Perm.
template <class R> PairsOf<R> of_reals(bool in_place, const PairsOf<R>& x, int order)
{
    const std::size_t n = x.size();
    const Record<KindOf<R, Shape::reals>> record(order);
    const Guarded<R> src(n), dst(n);
    for (std::size_t i = 0; i < n; ++i) src[i] = x[i].re;
    R* const to = in_place ? src.data() : dst.data();
    EXPECT_EQ(transform(Direction::forward, "Perm", src.data(), to, record.spec(), record.buffer()), ok);
    PairsOf<R> y(n);
    y[0] = {to[0], 0};
    if (n > 1) y[n / 2] = {to[1], 0};
    for (std::size_t k = 1; 2 * k < n; ++k) y[k] = {to[2 * k], to[2 * k + 1]}, y[n - k] = conj(y[k]);
    return y;
}
// From the exact spectrum of reals, rounded.
template <class R, class X> PairsOf<R> to_reals(bool in_place, const std::vector<cpx<X>>& spectrum, int order)
{
    const std::size_t n = spectrum.size();
    const Record<KindOf<R, Shape::reals>> record(order);
    const Guarded<R> src(n), dst(n);
    src[0] = static_cast<R>(spectrum[0].re);
    if (n > 1) src[1] = static_cast<R>(spectrum[n / 2].re);
    for (std::size_t k = 1; 2 * k < n; ++k)
        src[2 * k] = static_cast<R>(spectrum[k].re), src[2 * k + 1] = static_cast<R>(spectrum[k].im);
    R* const to = in_place ? src.data() : dst.data();
    EXPECT_EQ(transform(Direction::inverse, "Perm", src.data(), to, record.spec(), record.buffer()), ok);
    PairsOf<R> y;
    for (std::size_t i = 0; i < n; ++i) y.push_back({to[i], 0});
    return y;
}

template <class R, class X>
void expect_right(int order, const PairsOf<float>& x, const std::vector<cpx<X>>& forward,
                  const std::vector<cpx<X>>& inverse, const std::vector<cpx<X>>& of_real)
{
    const PairsOf<R> in = as<R>(x);
    std::vector<cpx<X>> back;
    for (const auto& e : x) back.push_back({static_cast<X>(e.re) * static_cast<X>(x.size()), 0});
    for (const bool in_place : {false, true}) {
        const double parts[] = {part_of_bound<R>(of_pairs(Direction::forward, in_place, in, order), forward, order),
                                part_of_bound<R>(of_pairs(Direction::inverse, in_place, in, order), inverse, order),
                                part_of_bound<R>(of_planes(Direction::forward, in_place, in, order), forward, order),
                                part_of_bound<R>(of_planes(Direction::inverse, in_place, in, order), inverse, order),
                                part_of_bound<R>(of_reals(in_place, in, order), of_real, order),
                                part_of_bound<R>(to_reals<R>(in_place, of_real, order), back, order)};
        std::printf("%-7s 2^%-2d %-9s", sizeof(R) == 8 ? "double" : "single", order, in_place ? "in place" : "apart");
        for (const double part : parts) {
            std::printf(" %5.2f", part);
            EXPECT_LE(part, 1) << "order " << order;
        }
        std::printf("\n");
    }
}

template <class X> void expect_order(int order)
{
    const auto x = input(order);
    std::vector<cpx<X>> forward, of_real;
    for (const auto& e : x) forward.push_back({e.re, e.im});
    exact_transform(forward, -1);
    std::vector<cpx<X>> inverse;
    for (std::size_t k = 0; k < x.size(); ++k) {
        const auto mirrored = forward[(x.size() - k) % x.size()];
        inverse.push_back(mirrored);
        of_real.push_back({(forward[k].re + mirrored.re) / 2, (forward[k].im - mirrored.im) / 2});
    }
    expect_right<float>(order, x, forward, inverse, of_real);
    expect_right<double>(order, x, forward, inverse, of_real);
}

void head()
{
    std::puts("parts of the bound: pairs forward, inverse, planes forward, inverse, reals forward, inverse");
}

TEST(PowerOfTwoOracle, agrees_with_the_sum)
{
    for (int order = 0; order <= 7; ++order) {
        std::vector<cpx<quad>> x;
        for (const auto& e : input(order)) x.push_back({e.re, e.im});
        for (const int sign : {-1, 1}) {
            const auto should = naive_transform(x, order, sign);
            auto y = x;
            exact_transform(y, sign);
            for (std::size_t k = 0; k < y.size(); ++k) {
                EXPECT_LT(magnitude(y[k].re - should[k].re), 1e-28);
                EXPECT_LT(magnitude(y[k].im - should[k].im), 1e-28);
            }
        }
    }
}

TEST(PowerOfTwo, of_any_form_is_as_near_as_allowed_up_to_2_to_16)
{
    head();
    for (int order = 0; order <= 12; ++order) expect_order<quad>(order);
    for (int order = 13; order <= 16; ++order) expect_order<long double>(order);
}

TEST(PowerOfTwoFull, of_any_form_is_as_near_as_allowed_from_2_to_17_on)
{
    head();
    for (int order = 17; order <= 20; ++order) expect_order<long double>(order);
}

// Order 23 is the first that is reversed in one array, after a copy.
TEST(PowerOfTwoNightly, of_any_form_is_as_near_as_allowed_beyond)
{
    head();
    for (int order = 21; order <= 23; ++order) expect_order<long double>(order);
}

// Up to orders that divide twice. Of three points that are not zero the spectrum is known anywhere.
TEST(PowerOfTwoNightly, of_a_few_points_is_right_at_orders_that_divide_twice)
{
    each_real_type([]<class R>(R) {
        for (int order = 24; order <= 25; ++order) {
            const std::size_t n = std::size_t{1} << order;
            Random random(static_cast<unsigned>(order));
            std::vector<std::pair<std::size_t, cpx<R>>> points;
            for (int i = 0; i < 3; ++i)
                points.push_back({static_cast<std::size_t>(random.integer(0, (i64{1} << order) - 1)),
                                  random_element<cpx<R>>(random)});
            for (const bool in_place : {false, true})
                for (const auto d : {Direction::forward, Direction::inverse}) {
                    PairsOf<R> x(n);
                    for (const auto& [at, value] : points) x[at] += value;
                    x = of_pairs(d, in_place, x, order);
                    for (int sample = 0; sample < 20000; ++sample) {
                        const i64 k = random.integer(0, (i64{1} << order) - 1);
                        cpx<long double> should{0, 0};
                        for (const auto& [at, value] : points)
                            should += cpx<long double>{value.re, value.im} *
                                      unit_root<long double>(
                                          (d == Direction::forward ? -1 : 1) * static_cast<i64>(at) * k, order);
                        const auto is = x[static_cast<std::size_t>(k)];
                        ASSERT_NEAR(is.re, should.re, 50 * std::numeric_limits<R>::epsilon()) << order << " at " << k;
                        ASSERT_NEAR(is.im, should.im, 50 * std::numeric_limits<R>::epsilon()) << order << " at " << k;
                    }
                }
        }
    });
}

} // namespace
} // namespace orv::test
