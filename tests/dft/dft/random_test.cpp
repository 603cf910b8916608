// Transforms drawn at random, and long ones of inputs that are zero but for a few points: of those every frequency is
// known without a sum.
#include "tests/dft/dft/general.h"

namespace orv::test {
namespace {

struct Impulse {
    i64 at;
    double re, im;
};
QuadPair frequency(const std::vector<Impulse>& x, i64 n, i64 k)
{
    QuadPair sum{0, 0};
    for (const Impulse& e : x) {
        const QuadPair w = quad_root(static_cast<i64>(static_cast<__int128>(e.at) * (n - k) % n), n);
        sum = sum + QuadPair{e.re, e.im} * w;
    }
    return sum;
}

// Rounding errors that grow with the doublings of the length, three transforms of a convolution included.
double bound(i64 n) { return 0.6 * std::sqrt(3 * std::log2(4.0 * n) + 6); }

template <class R> void compare(Random& random, i32 n)
{
    constexpr i32 flags[] = {scale_none, scale_forward, scale_inverse, scale_both};
    const i32 flag = flags[random.integer(0, 3)];
    const bool forward = random.integer(0, 1) != 0, in_place = random.integer(0, 1) != 0,
               own = random.integer(0, 1) != 0;
    const auto form = static_cast<Form>(random.integer(0, 3));
    const std::string layout = layouts[random.integer(0, 2)];
    const std::string line = "n=" + std::to_string(n) + " form=" + std::to_string(static_cast<int>(form)) +
                             " flag=" + std::to_string(flag) + " forward=" + std::to_string(forward) +
                             " in_place=" + std::to_string(in_place) + " own buffer=" + std::to_string(own) + " " +
                             layout + " " + token<R>() + " seed=" + std::to_string(seed());
    SCOPED_TRACE(line);
    const Made<R> dft(form, n, flag);
    ASSERT_EQ(dft.status, 0);
    t_8u* const buffer = own ? nullptr : dft.buffer();
    const bool scaled = flag == scale_both || flag == (forward ? scale_forward : scale_inverse);
    const double divided_by = !scaled ? 1 : flag == scale_both ? std::sqrt(n) : n;

    std::vector<Impulse> x;
    for (int i = 0; i < 4; ++i)
        x.push_back({random.integer(0, n - 1), random.value<float>(), form == Form::real ? 0 : random.value<float>()});
    std::vector<cpx<R>> dense(n);
    for (const Impulse& e : x) dense[e.at] += cpx<R>{static_cast<R>(e.re), static_cast<R>(e.im)};

    Errors errors;
    if (form != Form::real) {
        const auto result = transformed(dft, forward, dense, in_place, buffer);
        for (const i64 k : points_to_see(n, 40))
            errors.add(result[k], frequency(x, n, forward ? k : (n - k) % n), divided_by);
    } else if (forward) {
        const auto result = real_transformed(dft, layout, true, parts(dense, false), in_place, buffer);
        for (const i64 k : points_to_see(n, 40))
            if (2 * k <= n) errors.add(unpacked(layout, result, n, k), frequency(x, n, k), divided_by);
    } else { // the spectrum of an even sequence: real, and the same at k and n-k
        std::vector<Impulse> even;
        std::vector<cpx<R>> spectrum(n);
        for (const Impulse& e : x)
            for (const i64 at : {e.at, (n - e.at) % n}) {
                even.push_back({at, e.re, 0});
                spectrum[at] += cpx<R>{static_cast<R>(e.re), 0};
            }
        const auto result = real_transformed(dft, layout, false, packed(layout, spectrum, n), in_place, buffer);
        for (const i64 k : points_to_see(n, 40)) errors.add(cpx<R>{result[k], 0}, frequency(even, n, k), divided_by);
    }
    EXPECT_LE(errors.rms(), 2 * bound(n)) << "of a few points, and of some that are large beside others";
}

TEST(GeneralDftRandom, transforms_of_any_kind_are_right)
{
    Random random(77);
    for (int i = 0; i < 600; ++i) {
        const i32 n = static_cast<i32>(random.integer(1, i % 4 == 0 ? 20000 : 1500));
        random.integer(0, 1) != 0 ? compare<double>(random, n) : compare<float>(random, n);
    }
}

// By factors with parts within parts, primes by convolution, the halves of even lengths.
TEST(GeneralDftLongFull, long_transforms_of_any_kind_are_right)
{
    Random random(78);
    for (const i32 n :
         {59049, 65535, 65537, 65538, 99991, 100000, 117649, 199982, 262143, 500000, 720720, 1000000, 1000003})
        for (int i = 0; i < 8; ++i) i % 2 == 0 ? compare<double>(random, n) : compare<float>(random, n);
}

} // namespace
} // namespace orv::test
