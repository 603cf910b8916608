// Parts of the engine by name: tables, what no record uses in this order, reordering, roots.
#include "tests/dft/dft/general.h"

#include <cfloat>

namespace orv::test {
namespace {

// Both types with the letters of their pairs.
template <class F> void both_types(F f) { f.template operator()<float>(), f.template operator()<double>(); }

template <class R> double units(R computed, quad exact)
{
    const double value = std::fabs(static_cast<double>(exact));
    const double unit = value == 0 ? 0 : std::scalbn(1.0, std::ilogb(value)) * std::numeric_limits<R>::epsilon();
    const double off = std::fabs(static_cast<double>(computed - exact));
    return off == 0 ? 0 : off / unit;
}

TEST(GeneralDftTables, have_roots_within_one_unit_of_their_last_place)
{
    both_types([]<class R>() {
        for (const i32 n : {1, 2, 3, 8, 17, 60, 63, 65, 91, 129, 255, 360, 1009, 4095, 4097, 6561, 16382, 100000}) {
            Guarded<cpx<R>> table(n + 64 / sizeof(cpx<R>));
            const auto init = primitive<InitTabDft<R>>("ownsInitTabDftBase_" + token<R>());
            const t_8u* const behind = init(n, table.data());
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(behind) % 64, 0u);
            EXPECT_GE(behind, reinterpret_cast<t_8u*>(table.data() + n));
            EXPECT_LT(behind, reinterpret_cast<t_8u*>(table.data() + n) + 64);
            double worst = 0;
            for (i32 k = 0; k < n; ++k) {
                const QuadPair w = quad_root(k, n);
                const bool axis_re = 4 * i64{k} == n || 4 * i64{k} == 3 * i64{n}, axis_im = 2 * i64{k} % n == 0;
                worst = std::max(worst, units(table[k].re, axis_re ? 0 : w.re));
                worst = std::max(worst, units(table[k].im, axis_im ? 0 : -w.im));
            }
            EXPECT_LE(worst, 1) << n;
            ProbeScope probe;
            cpx<R>* const made = primitive<CreateTabDft<R>>("ownsCreateTabDftBase_" + token<R>())(n);
            EXPECT_TRUE(same_bits(made, table.data(), n));
            primitive<Free>("ympsFree")(made);
            probe->fail_all = true;
            EXPECT_EQ(primitive<CreateTabDft<R>>("ownsCreateTabDftBase_" + token<R>())(n), nullptr);
        }
    });
}

TEST(GeneralDftTables, have_what_recombinations_multiply_by)
{
    both_types([]<class R>() {
        for (const i32 m : {9, 10, 48, 101}) {
            const auto create = [&](const char* direction) {
                return primitive<CreateTabDft<R>>(std::string("ownsCreateTabDft") + direction + "Rec_" + token<R>())(m);
            };
            cpx<R>*const forward = create("Fwd"), *const inverse = create("Inv");
            for (i32 k = 0; 2 * k <= m; ++k) { // -i*conj(w)/2 and i*w
                const QuadPair w = quad_root(k, 2 * i64{m});
                if (k == 0 || 2 * k == m) continue; // parts that are 0 have no last place
                EXPECT_LE(units(forward[k].re, -w.im / 2), 1);
                EXPECT_LE(units(forward[k].im, -w.re / 2), 1);
                EXPECT_LE(units(inverse[k].re, -w.im), 1);
                EXPECT_LE(units(inverse[k].im, w.re), 1);
            }
            primitive<Free>("ympsFree")(forward), primitive<Free>("ympsFree")(inverse);
        }
    });
}

// Twos stand before other factors out of order alone; in order a stage of two joins as well.
TEST(GeneralDftStages, of_two_join_the_transforms_of_halves)
{
    both_types([]<class R>() {
        for (const i32 n : {26, 40, 50}) {
            const Made<R> scrambled(Form::out_of_order, n), half(Form::interleaved, n / 2);
            const DftFactor& f = scrambled.fields().factors[0];
            ASSERT_EQ(f.radix, 2);
            ASSERT_EQ(f.count, n / 2);
            const auto* const twiddles = static_cast<const R*>(f.twiddles);
            const auto x = random_array<cpx<R>>(n, 4);
            const auto roots = quad_roots(n);
            for (const bool forward : {true, false}) {
                std::vector<cpx<R>> joined;
                for (const int odd : {0, 1}) {
                    std::vector<cpx<R>> part;
                    for (i32 i = odd; i < n; i += 2) part.push_back(x[i]);
                    part = transformed(half, forward, part, false, half.buffer());
                    joined.insert(joined.end(), part.begin(), part.end());
                }
                std::vector<R> re = parts(joined, false), im = parts(joined, true);
                const std::string name = std::string(forward ? "Fwd" : "Inv") + "_Fact2_" + token<R>();
                primitive<DftFact<cpx<R>>>("ownscDft" + name + "c")(joined.data(), joined.data(), n / 2, 1, twiddles);
                primitive<SplitDftFact<R>>("ownscrDft" + name)(re.data(), im.data(), re.data(), im.data(), n / 2, 1,
                                                               twiddles);
                Errors errors, split;
                for (i32 k = 0; k < n; ++k) {
                    const QuadPair exact = point(x, roots, forward ? k : (n - k) % n);
                    errors.add(joined[k], exact), split.add(cpx<R>{re[k], im[k]}, exact);
                }
                EXPECT_LE(errors.rms(), 2) << n;
                EXPECT_LE(split.rms(), 2) << n;
            }
        }
    });
}

TEST(GeneralDftReorder, takes_a_spectrum_to_the_order_of_frequencies_and_back)
{
    both_types([]<class R>() {
        for (const i32 n : {12, 24, 40, 64, 91, 97, 600}) {
            const Made<R> scrambled(Form::out_of_order, n), ordered(Form::interleaved, n);
            auto x = random_array<cpx<R>>(n, 6);
            const auto spectrum = transformed(ordered, true, x, false, ordered.buffer());
            const auto forward = primitive<Dft<cpx<R>>>("ympsDFTOutOrdFwd_CToC_" + token<R>() + "c");
            ASSERT_EQ(forward(x.data(), x.data(), scrambled.spec(), scrambled.buffer()), 0);
            const auto reorder = primitive<DftReord<cpx<R>>>("ownscDftReord_" + token<R>() + "c");
            std::vector<cpx<R>> in_order(n), back(n);
            reorder(scrambled.spec(), x.data(), in_order.data(), 1);
            reorder(scrambled.spec(), in_order.data(), back.data(), -1);
            EXPECT_TRUE(same_bits(back.data(), x.data(), n));
            for (i32 k = 0; k < n; ++k) {
                EXPECT_NEAR(in_order[k].re, spectrum[k].re, 40 * std::numeric_limits<R>::epsilon() * std::sqrt(n)) << n;
                EXPECT_NEAR(in_order[k].im, spectrum[k].im, 40 * std::numeric_limits<R>::epsilon() * std::sqrt(n)) << n;
            }
        }
    });
}

template <class F> F* untagged(const std::string& name) { return reinterpret_cast<F*>(branch_symbol(name)); }

TEST(IndexRoots, multiply_modulo_m_in_64_bits)
{
    for (const char* name : {"orvgPowMod_32fc", "orvgPowMod_64fc"}) {
        const auto pow_mod = untagged<i64(i64, i64, i64, i64)>(name);
        EXPECT_EQ(pow_mod(5, 3, 4, 7), 6); // 5*81 = 405
        EXPECT_EQ(pow_mod(12, 3, 0, 7), 5);
        EXPECT_EQ(pow_mod(12, 3, -1, 7), 5);
        EXPECT_EQ(pow_mod(1, 2147483646, 2, 2147483647), 1);
        EXPECT_EQ(pow_mod(2147483646, 2147483645, 1, 2147483647), 2);
    }
}

TEST(IndexRoots, are_sines_and_cosines_of_multiples_of_pi)
{
    const double pi = std::acos(-1.0);
    for (double x = -3; x < 3; x += 0.37) {
        const float f = static_cast<float>(x), angle = static_cast<float>(pi * f);
        EXPECT_EQ(untagged<double(double)>("orvgCosPi_64fc")(x), std::cos(pi * x));
        EXPECT_EQ(untagged<double(double)>("orvgSinPi_64fc")(x), std::sin(pi * x));
        EXPECT_EQ(untagged<float(float)>("orvgCosPi_32fc")(f), std::cos(angle));
        EXPECT_EQ(untagged<float(float)>("orvgSinPi_32fc")(f), std::sin(angle));
        const auto d = untagged<cpx<double>(double)>("orvgOmegaPi_64fc")(x);
        const auto s = untagged<cpx<float>(float)>("orvgOmegaPi_32fc")(f);
        EXPECT_EQ(d, (cpx<double>{std::cos(pi * x), std::sin(pi * x)}));
        EXPECT_EQ(s, (cpx<float>{std::cos(angle), std::sin(angle)}));
    }
}

TEST(IndexRoots, are_of_unity)
{
    for (i64 n = 1; n < 40; ++n)
        for (i64 k = -3; k < 2 * n; ++k) {
            const QuadPair w = quad_root((k + 3 * n) % n, n);
            const auto d = untagged<cpx<double>(i64, i64)>("orvgOmega_64fc")(n, k);
            const auto s = untagged<cpx<float>(i64, i64)>("orvgOmega_32fc")(n, k);
            EXPECT_NEAR(d.re, static_cast<double>(w.re), 1e-14);
            EXPECT_NEAR(d.im, static_cast<double>(w.im), 1e-14);
            EXPECT_EQ(s, (cpx<float>{static_cast<float>(d.re), static_cast<float>(d.im)}));
        }
}

} // namespace
} // namespace orv::test
