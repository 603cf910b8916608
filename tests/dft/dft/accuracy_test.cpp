// Transforms of every kind against sums in quadruple precision.
#include "tests/dft/dft/general.h"

#include <cstdio>

namespace orv::test {
namespace {

// Mean square error in units of the last place of 1, of independent steps as squares. A transform by factors makes 0.6
// of a unit with each doubling of its length, and a sum of t terms, as a radix without a body of its own has them, 0.2
// of a unit times the root of t: its partial sums grow as the root of their terms. A convolution takes three transforms
// of its own length, one of them of the table, and products with three tables, which are rounded themselves.
double bound(const YmpDftSpec& spec)
{
    if (spec.conv_length != 0) return 0.6 * std::sqrt(3 * std::log2(spec.conv_length) + 6);
    double terms = 0;
    if (spec.direct_table != nullptr) terms = spec.length / 2.0;
    for (const DftFactor& f : spec.factors)
        if (f.fact_table != nullptr) terms += f.radix / 2.0;
    return std::sqrt(0.36 * std::log2(spec.length + 1.0) + 0.04 * terms);
}

// The largest error of each way, as a table when it ends.
class Table {
public:
    explicit Table(const char* title) : title_(title) {}
    void add(const YmpDftSpec& spec, double error)
    {
        Worst& worst = worst_[way(spec)];
        const double share = error / bound(spec);
        if (!(share <= worst.share)) worst = {share, error, spec.length};
        EXPECT_LE(error, bound(spec)) << title_ << " n=" << spec.length;
    }
    ~Table()
    {
        static const char* const ways[] = {"few points", "power of two", "factors", "sums", "convolution"};
        for (int w = 0; w < 5; ++w)
            std::printf("%-22s %-12s  n = %5d: rms error %.2f units, %3.0f%% of the bound\n", title_, ways[w],
                        worst_[w].length, worst_[w].error, 100 * worst_[w].share);
    }

private:
    struct Worst {
        double share = -1, error = 0;
        i32 length = 0;
    };
    static int way(const YmpDftSpec& spec)
    {
        if (spec.is_pow2) return 1;
        if (spec.prime_fact) return 2;
        if (spec.direct_table != nullptr) return 3;
        return spec.conv_length != 0 ? 4 : 0;
    }
    const char* title_;
    Worst worst_[5];
};

// Of short lengths all points are seen.
std::vector<i64> points_of(i64 n) { return points_to_see(n, n <= 300 ? n : 24); }

template <class To, class From> std::vector<To> converted(const std::vector<From>& x)
{
    std::vector<To> y;
    for (const From& e : x)
        if constexpr (is_complex<To>) y.push_back({static_cast<real_t<To>>(e.re), static_cast<real_t<To>>(e.im)});
        else y.push_back(e);
    return y;
}

// x: of numbers that float holds; exact: some points of its forward transform. The inverse has them in reverse.
template <class R>
void compare_complex(const std::vector<cpx<R>>& x, const std::vector<i64>& points, const std::vector<QuadPair>& exact,
                     Table& table)
{
    const i32 n = static_cast<i32>(x.size());
    for (const bool forward : {true, false})
        for (const Form form : {Form::interleaved, Form::split, Form::out_of_order}) {
            const Made<R> dft(form, n);
            ASSERT_EQ(dft.status, 0) << n;
            const auto result = transformed(dft, forward, x, false, dft.buffer());
            Errors errors;
            for (const i64 k : points) errors.add(result[forward ? k : (n - k) % n], exact[k]);
            table.add(dft.fields(), errors.rms());
            const auto in_place = transformed(dft, forward, x, true, dft.buffer());
            EXPECT_TRUE(same_bits(in_place.data(), result.data(), n)) << "in place n=" << n << " forward=" << forward;
            const auto own_buffer = transformed(dft, forward, x, false, nullptr);
            EXPECT_TRUE(same_bits(own_buffer.data(), result.data(), n)) << "without a buffer n=" << n;
        }
}

template <class R>
void compare_forward(const std::vector<R>& x, const std::vector<i64>& points, const std::vector<QuadPair>& exact,
                     Table& table)
{
    const i32 n = static_cast<i32>(x.size());
    const Made<R> dft(Form::real, n);
    for (const std::string layout : layouts) {
        const auto spectrum = real_transformed(dft, layout, true, x, false, dft.buffer());
        Errors errors;
        for (const i64 k : points) errors.add(unpacked(layout, spectrum, n, k), exact[k]);
        table.add(dft.fields(), errors.rms());
        if (layout == "CCS") {
            EXPECT_EQ(spectrum[1], 0);
            if (n % 2 == 0) {
                EXPECT_EQ(spectrum[n + 1], 0);
            }
        }
        const auto in_place = real_transformed(dft, layout, true, x, true, nullptr);
        EXPECT_TRUE(same_bits(in_place.data(), spectrum.data(), values_in(layout, n))) << layout << n;
    }
}
template <class R>
void compare_inverse(const std::vector<cpx<R>>& spectrum, const std::vector<i64>& points,
                     const std::vector<QuadPair>& exact, Table& table)
{
    const i32 n = static_cast<i32>(spectrum.size());
    const Made<R> dft(Form::real, n);
    for (const std::string layout : layouts) {
        const auto source = packed(layout, spectrum, n);
        const auto x = real_transformed(dft, layout, false, source, false, dft.buffer());
        Errors errors;
        for (const i64 k : points) errors.add(cpx<R>{x[(n - k) % n], 0}, exact[k]);
        table.add(dft.fields(), errors.rms());
        const auto in_place = real_transformed(dft, layout, false, source, true, nullptr);
        EXPECT_TRUE(same_bits(in_place.data(), x.data(), n)) << layout << n;
    }
}

// Lengths whose way is another one than their neighbours', and some of every way: primes, squares of primes, many
// factors, the largest factors that are taken, the lengths of convolutions from both sides.
constexpr i32 long_lengths[] = {302,  303,  320,  384,  499,  500,  501,  502,  503,  512,  600,  625,
                                720,  729,  841,  961,  997,  1000, 1001, 1009, 1024, 1155, 1331, 1369,
                                2047, 2048, 2049, 2187, 2197, 2310, 2401, 3125, 3200, 4093, 4095, 4097,
                                4099, 4489, 5040, 5041, 7919, 7921, 8190, 8281, 8633, 9409, 9973, 10080};

template <class Compare> void for_all_lengths(Compare compare)
{
    for (i32 n = 1; n <= 300; ++n) compare(n);
    for (const i32 n : long_lengths) compare(n);
}
template <class T> std::vector<QuadPair> some_points(const std::vector<T>& x, const std::vector<i64>& points)
{
    const auto roots = quad_roots(static_cast<i64>(x.size()));
    std::vector<QuadPair> exact(x.size());
    for (const i64 k : points) exact[k] = point(x, roots, k);
    return exact;
}

TEST(GeneralDftAccuracy, every_way_of_complex_numbers_gives_the_sums_of_the_definition)
{
    Table twice("double complex"), single("single complex");
    for_all_lengths([&](i32 n) {
        const auto x = random_array<cpx<float>>(n, static_cast<std::uint64_t>(n));
        const auto points = points_of(n);
        const auto exact = some_points(x, points);
        compare_complex(x, points, exact, single);
        compare_complex(converted<cpx<double>>(x), points, exact, twice);
    });
}
TEST(GeneralDftAccuracy, reals_have_the_spectrum_of_the_definition_in_every_layout)
{
    Table twice("double real, forward"), single("single real, forward");
    for_all_lengths([&](i32 n) {
        const auto x = random_array<float>(n, static_cast<std::uint64_t>(n));
        auto points = points_of(n);
        std::erase_if(points, [n](i64 k) { return 2 * k > n; });
        const auto exact = some_points(x, points);
        compare_forward(x, points, exact, single);
        compare_forward(converted<double>(x), points, exact, twice);
    });
}
TEST(GeneralDftAccuracy, reals_come_back_from_every_layout_of_their_spectrum)
{
    Table twice("double real, inverse"), single("single real, inverse");
    for_all_lengths([&](i32 n) {
        auto x = random_array<cpx<float>>(n, static_cast<std::uint64_t>(n));
        for (i64 k = 0; 2 * k <= n; ++k) {
            if (k == 0 || 2 * k == n) x[k].im = 0;
            else x[n - k] = conj(x[k]);
        }
        const auto points = points_of(n);
        const auto exact = some_points(x, points);
        compare_inverse(x, points, exact, single);
        compare_inverse(converted<cpx<double>>(x), points, exact, twice);
    });
}

} // namespace
} // namespace orv::test
