// The engine's parts by name: fixed kernels, tables, reversals, stages.
#include "frame/dft.h"
#include "tests/dft/fft/engine.h"
#include "tests/dft/fft/oracle.h"

#include <numeric>

namespace orv::test {
namespace {

template <class R> std::vector<cpx<quad>> widened(const PairsOf<R>& x)
{
    std::vector<cpx<quad>> y;
    for (const auto& e : x) y.push_back({e.re, e.im});
    return y;
}
template <class R>
void expect_near(const PairsOf<R>& is, std::vector<cpx<quad>> should, R scale, const std::string& name)
{
    // At most 5 levels of four roundings each, of sums that stay below 2*32.
    const quad allowed = quad{20} * std::numeric_limits<R>::epsilon() * 64;
    for (std::size_t k = 0; k < is.size(); ++k) {
        EXPECT_LT(magnitude(is[k].re - scale * should[k].re), allowed) << name << " at " << k;
        EXPECT_LT(magnitude(is[k].im - scale * should[k].im), allowed) << name << " at " << k;
    }
}

std::string size_of_name(Direction d, std::size_t n)
{
    return "FFT" + std::string(n <= 2 ? "" : d == Direction::forward ? "fwd" : "inv") + "_" + std::to_string(n);
}
template <class Visit> void each_fixed(Visit visit)
{
    each_real_type([&]<class R>(R) {
        for (int order = 0; order <= 5; ++order)
            for (const auto d : {Direction::forward, Direction::inverse})
                for (const bool scaled : {false, true})
                    for (const bool in_place : {false, true}) visit(R(), order, d, scaled, in_place);
    });
}

TEST(FixedTransform, of_pairs_is_right_with_a_scale_and_without_apart_and_in_place)
{
    each_fixed([]<class R>(R, int order, Direction d, bool scaled, bool in_place) {
        const std::size_t n = std::size_t{1} << order;
        const auto x = random_array<cpx<R>>(i64{1} << order, 1);
        const std::string name = "ymps_c" + size_of_name(d, n) + (scaled ? "_scale_" : "_") + token<cpx<R>>();
        const Guarded<cpx<R>> src(n), dst(n, Edge::start);
        std::copy(x.begin(), x.end(), src.begin());
        cpx<R>* const to = in_place ? src.data() : dst.data();
        const R scale = scaled ? R(0.375) : R(1);
        if (scaled) primitive<FixedFft<cpx<R>, R>>(name)(scale, src.data(), to);
        else primitive<FixedFft<cpx<R>>>(name)(src.data(), to);
        expect_near<R>({to, to + n}, naive_transform(widened(x), order, d == Direction::forward ? -1 : 1), scale, name);
    });
}

TEST(FixedTransform, of_two_arrays_is_right_with_a_scale_and_without_apart_and_in_place)
{
    each_fixed([]<class R>(R, int order, Direction d, bool scaled, bool in_place) {
        const std::size_t n = std::size_t{1} << order;
        const auto x = random_array<cpx<R>>(i64{1} << order, 1);
        const std::string name = "ymps_cr" + size_of_name(d, n) + (scaled ? "_scale_" : "_") + token<R>();
        const Guarded<R> re(n), im(n, Edge::start), dst_re(n, Edge::start), dst_im(n);
        for (std::size_t i = 0; i < n; ++i) re[i] = x[i].re, im[i] = x[i].im;
        const auto& to_re = in_place ? re : dst_re;
        const auto& to_im = in_place ? im : dst_im;
        const R scale = scaled ? R(0.375) : R(1);
        if (scaled) primitive<FixedSplitFft<R, R>>(name)(scale, re.data(), im.data(), to_re.data(), to_im.data());
        else primitive<FixedSplitFft<R>>(name)(re.data(), im.data(), to_re.data(), to_im.data());
        PairsOf<R> y;
        for (std::size_t i = 0; i < n; ++i) y.push_back({to_re[i], to_im[i]});
        expect_near<R>(y, naive_transform(widened(x), order, d == Direction::forward ? -1 : 1), scale, name);
    });
}

TEST(FixedTransform, of_reals_goes_to_perm_and_back)
{
    each_fixed([]<class R>(R, int order, Direction d, bool scaled, bool in_place) {
        const std::size_t n = std::size_t{1} << order;
        PairsOf<R> x(n);
        for (auto& e : x) e = {static_cast<R>(&e - x.data()) / 8 - 1, 0};
        const auto spectrum = naive_transform(widened(x), order, -1);
        const std::string name = "ymps_r" + size_of_name(d, n) + (scaled ? "_scale_" : "_") + token<R>();
        const Guarded<R> src(n), dst(n, Edge::start);
        std::vector<R> perm{static_cast<R>(spectrum[0].re)};
        if (n > 1) perm.push_back(static_cast<R>(spectrum[n / 2].re));
        for (std::size_t k = 1; 2 * k < n; ++k)
            perm.push_back(static_cast<R>(spectrum[k].re)), perm.push_back(static_cast<R>(spectrum[k].im));
        for (std::size_t i = 0; i < n; ++i) src[i] = d == Direction::forward ? x[i].re : perm[i];
        R* const to = in_place ? src.data() : dst.data();
        const R scale = scaled ? R(0.375) : R(1);
        if (scaled) primitive<FixedFft<R, R>>(name)(scale, src.data(), to);
        else primitive<FixedFft<R>>(name)(src.data(), to);
        for (std::size_t i = 0; i < n; ++i) {
            const R should = scale * (d == Direction::forward ? perm[i] : static_cast<R>(n) * x[i].re);
            EXPECT_NEAR(to[i], should, 20 * 64 * std::numeric_limits<R>::epsilon()) << name << " at " << i;
        }
    });
}

// One unit in the last place of the true value.
template <class R> void expect_within_an_ulp(R is, quad should, const std::string& what)
{
    const R magnitude_of = static_cast<R>(magnitude(should));
    const R ulp = std::nextafter(magnitude_of, R(2)) - magnitude_of;
    EXPECT_LE(magnitude(is - should), ulp) << what;
}

TEST(TwiddleBase, has_the_sines_of_a_quarter_each_within_a_unit_in_the_last_place)
{
    each_real_type([]<class R>(R) {
        for (const int order : {2, 3, 6, 10, 11, 17, 19}) {
            const std::size_t count = (std::size_t{1} << (order - 2)) + 1;
            const Guarded<R> table((count * sizeof(R) + 63) / 64 * 64 / sizeof(R));
            auto* const base = primitive<InitTabTwdBase<R>>("ymps_initTabTwdBase_" + token<R>());
            EXPECT_EQ(reinterpret_cast<R*>(base(order, table.data())), table.data() + table.size());
            for (std::size_t k = 0; k < count; ++k)
                expect_within_an_ulp<R>(table[k], unit_root<quad>(static_cast<i64>(k), order).im,
                                        std::to_string(order) + " at " + std::to_string(k));
            EXPECT_EQ(table[0], 0);
            EXPECT_EQ(table[count - 1], 1);
        }
    });
}

TEST(TwiddleBase, of_the_core_is_that_of_order_10)
{
    each_real_type([]<class R>(R) {
        std::vector<R> table(257 + 16);
        primitive<InitTabTwdBase<R>>("ymps_initTabTwdBase_" + token<R>())(10, table.data());
        const R* core;
        if constexpr (sizeof(R) == 4) core = orv_dft_fft_fix_twiddle_table_32f.sines;
        else core = orv_dft_fft_fix_twiddle_table_64f.sines;
        EXPECT_TRUE(same_bits(core, table.data(), 257));
    });
}

// How many transforms the last pass joins.
std::size_t parts_of(i32 order) { return (order - 4) % 3 == 0 ? 8 : 4; }

// Sines and cosines that come out of symmetry are as exact as the base.
TEST(TwiddleTable, has_copies_of_the_base)
{
    each_real_type([]<class R>(R) {
        std::vector<R> base(257 + 16), table(2 * 1024 + 64);
        primitive<InitTabTwdBase<R>>("ymps_initTabTwdBase_" + token<R>())(10, base.data());
        primitive<InitTabTwd<R>>("ymps_initTabTwd_L1_" + token<R>())(10, base.data(), 10, table.data());
        std::vector<R> values(base.begin(), base.begin() + 257);
        for (const R value : std::vector<R>(values)) values.push_back(-value);
        std::sort(values.begin(), values.end());
        for (std::size_t i = 0; i < 2 * (1024 - 16); ++i)
            ASSERT_TRUE(std::binary_search(values.begin(), values.end(), table[i])) << i;
        // The last pass, first column block, row 1 of the reversed ones: half of the parts' number times the angle.
        const std::size_t parts = parts_of(10);
        const R* const last = table.data() + 2 * (1024 / parts - 16);
        constexpr int lanes = 16 / sizeof(R);
        for (int l = 0; l < lanes; ++l) {
            const auto angle = static_cast<i64>(parts) / 2 * l;
            expect_within_an_ulp<R>(last[l], unit_root<quad>(angle, 10).re, "real");
            expect_within_an_ulp<R>(-last[lanes + l], unit_root<quad>(angle, 10).im, "imaginary");
        }
    });
}

i64 reversed(i64 index, int bits)
{
    i64 r = 0;
    for (int b = 0; b < bits; ++b) r |= (index >> b & 1) << (bits - 1 - b);
    return r;
}

TEST(ReversalTable, has_indices_over_two_bits_less_and_ends_in_zero)
{
    const auto expect = [](const auto& fill, int bits, int shift, const char* name) {
        const std::size_t count = (std::size_t{1} << bits) + 1;
        const Guarded<i32> table((count + 15) / 16 * 16);
        EXPECT_EQ(reinterpret_cast<i32*>(fill(table.data())), table.data() + table.size()) << name;
        for (std::size_t i = 0; i + 1 < count; ++i)
            ASSERT_EQ(table[i], reversed(static_cast<i64>(i), bits) << shift) << name << bits << " at " << i;
        EXPECT_EQ(table[count - 1], 0);
    };
    for (i32 order = 2; order <= 17; ++order) {
        expect([&](i32* t) { return primitive<InitTabBitRev>("ymps_initTabBitRev")(order, t); }, order - 2, 0, "plain");
        expect([&](i32* t) { return primitive<InitTabBitRev>("ymps_initTabBitRevNorm")(order, t); }, order - 2, 1,
               "norm");
    }
    for (i32 order = 10; order <= 20; ++order)
        expect([&](i32* t) { return primitive<InitTabBitRevLarge>("ymps_initTabBitRevLarge")(order, 5, t); },
               order - 10, 5, "large");
}

template <class R> constexpr const char* letter_of = sizeof(R) == 4 ? "C" : "Z";

TEST(BitReversal, moves_each_point_to_its_reversed_index)
{
    each_real_type([]<class R>(R) {
        for (i32 order = 2; order <= 14; ++order) {
            const i32 n = i32{1} << order;
            std::vector<i32> table(static_cast<std::size_t>(n / 4 + 32));
            primitive<InitTabBitRev>("ymps_initTabBitRevNorm")(order, table.data());
            const auto x = random_array<cpx<R>>(n, 1);
            PairsOf<R> should(x.size()), apart(x.size()), in_place = x, block = x;
            for (i64 i = 0; i < n; ++i)
                should[static_cast<std::size_t>(reversed(i, order))] = x[static_cast<std::size_t>(i)];
            const std::string letter = letter_of<R>;
            primitive<BitRev2<cpx<R>>>("ymps_BitRev2_" + letter)(x.data(), apart.data(), n, table.data());
            primitive<BitRev1<cpx<R>>>("ymps_BitRev1_" + letter)(in_place.data(), n, table.data());
            primitive<BitRev1<cpx<R>>>(sizeof(R) == 4 ? "ymps_cBitRev1_Blk" : "ymps_zBitRev1_Blk")(block.data(), n,
                                                                                                   table.data());
            EXPECT_TRUE(same_bits(apart.data(), should.data(), n)) << order;
            EXPECT_TRUE(same_bits(in_place.data(), should.data(), n)) << order;
            EXPECT_TRUE(same_bits(block.data(), should.data(), n)) << order;
        }
    });
}

// All passes behind a reversal. The inverse is the forward transform with both parts exchanged.
template <class R> PairsOf<R> by_passes(Direction d, PairsOf<R> x, const YmpFftSpec* spec)
{
    const auto exchange = [=](PairsOf<R>& pairs) {
        if (d == Direction::inverse)
            for (auto& e : pairs) std::swap(e.re, e.im);
    };
    const auto n = static_cast<i32>(x.size());
    PairsOf<R> y(x.size());
    exchange(x);
    primitive<BitRev2<cpx<R>>>(std::string("ymps_BitRev2_") + letter_of<R>)(x.data(), y.data(), n,
                                                                            spec->bit_reverse_table);
    primitive<Radix4<cpx<R>>>("ymps_cRadix4Fwd_" + token<cpx<R>>())(y.data(), y.data(), n,
                                                                    static_cast<const R*>(spec->twiddle_table));
    exchange(y);
    return y;
}

// The engine's bits where it goes by the same passes. Orders below 13 it may do with fewer, so both are only as near as
// two transforms are whose rounding errors each grow with the order.
template <class R> void expect_of_engine(const PairsOf<R>& y, const PairsOf<R>& engine, i32 order)
{
    if (order > 12) {
        EXPECT_TRUE(same_bits(y.data(), engine.data(), static_cast<i64>(y.size()))) << order;
    }
    double error = 0, norm = 0;
    for (std::size_t i = 0; i < y.size(); ++i) {
        const double re = double{y[i].re} - engine[i].re, im = double{y[i].im} - engine[i].im;
        error += re * re + im * im;
        norm += double{engine[i].re} * engine[i].re + double{engine[i].im} * engine[i].im;
    }
    EXPECT_LT(std::sqrt(error / norm), 2 * order * std::numeric_limits<R>::epsilon()) << order;
}

// The passes on reversed points give what the engine does; and in parts, the last pass in slices as threads would share
// it, they give the same bits.
TEST(Radix4, on_reversed_points_is_the_engine_and_in_slices_has_the_same_bits)
{
    each_real_type([]<class R>(R) {
        for (const i32 order : {11, 12, 13, 14}) {
            const i32 n = i32{1} << order;
            const std::size_t parts = parts_of(order), size = static_cast<std::size_t>(n) / parts;
            const int log = parts == 8 ? 3 : 2;
            const Record<KindOf<R, Shape::pairs>> record(order), inner(order - log);
            const auto* const twiddles = static_cast<const R*>(record.spec()->twiddle_table);
            const auto x = random_array<cpx<R>>(n, 2);
            for (const auto d : {Direction::forward, Direction::inverse}) {
                PairsOf<R> engine(x.size()), y;
                ASSERT_EQ(transform(d, x.data(), engine.data(), record.spec(), record.buffer()), ok);
                const PairsOf<R> should = by_passes(d, x, record.spec());
                expect_of_engine(should, engine, order);
                // Each part has the points that its reversed number is the rest of; then the last pass in three slices.
                for (std::size_t part = 0; part < parts; ++part) {
                    PairsOf<R> points;
                    for (std::size_t i = 0; i < size; ++i)
                        points.push_back(
                            x[parts * i + static_cast<std::size_t>(reversed(static_cast<i64>(part), log))]);
                    for (const auto& e : by_passes(d, points, inner.spec())) y.push_back(e);
                }
                std::vector<R> re, im;
                for (const auto& e : y) re.push_back(e.re), im.push_back(e.im);
                const auto all = static_cast<i32>(size);
                const std::string direction = letters(d);
                auto* const core = primitive<Core<cpx<R>>>("ymps_cFft" + direction + "_CoreMT_" + token<cpx<R>>());
                auto* const split = primitive<SplitCore<R>>("ymps_crFft" + direction + "_CoreMT_" + token<R>());
                for (const auto& [begin, end] : {std::pair{all / 2, all}, {0, 4}, {4, all / 2}}) {
                    core(y.data(), n, begin, end, twiddles);
                    split(re.data(), im.data(), n, begin, end, twiddles);
                }
                EXPECT_TRUE(same_bits(y.data(), should.data(), n)) << order << direction;
                for (std::size_t i = 0; i < x.size(); ++i) {
                    ASSERT_EQ(re[i], should[i].re) << order << direction << " at " << i;
                    ASSERT_EQ(im[i], should[i].im) << order << direction << " at " << i;
                }
            }
        }
    });
}

TEST(Block, is_merged_from_rows_and_split_back)
{
    each_real_type([]<class R>(R) {
        using T = cpx<R>;
        constexpr std::size_t lanes = 16 / sizeof(R);
        constexpr i32 rows = 5, columns = 16, stride = 37;
        const auto x = random_array<T>(rows * stride, 3);
        PairsOf<R> block(rows * columns), back = x, pairs = x, exchanged = x;
        primitive<BlkMerge<T>>("ymps_cFft_BlkMerge_" + token<T>())(x.data() + 2, block.data(), rows, columns, stride);
        const auto split = primitive<BlkSplit<T>>("ymps_cFft_BlkSplit_" + token<T>());
        std::fill(back.begin(), back.end(), T{7, 7});
        split(block.data(), back.data() + 2, rows, columns, stride, 0);
        split(block.data(), pairs.data() + 2, rows, columns, stride, 1);
        split(block.data(), exchanged.data() + 2, rows, columns, stride, -1);
        const R* const reals = &block[0].re;
        for (std::size_t i = 0; i < x.size(); ++i) {
            const std::size_t row = i / stride, c = i % stride - 2;
            if (i % stride < 2 || c >= columns) {
                ASSERT_TRUE((back[i] == T{7, 7}) && pairs[i] == x[i]);
                continue;
            }
            ASSERT_TRUE(block[row * columns + c] == x[i] && back[i] == x[i]);
            const std::size_t at = 2 * (row * columns + c / lanes * lanes) + c % lanes;
            ASSERT_TRUE((pairs[i] == T{reals[at], reals[at + lanes]}) &&
                        (exchanged[i] == T{reals[at + lanes], reals[at]}));
        }
    });
}

// A stage with twiddles of 1 is a transform of its rows, which stand in reversed order.
template <class R, class Call> void expect_stage(int radix, int order, Call call)
{
    constexpr i64 groups = 3, columns = 8, between = columns;
    constexpr i64 lanes = 16 / sizeof(R);
    alignas(64) R ones[7 * 2 * columns];
    for (i64 i = 0; i < 7 * 2 * columns; ++i) ones[i] = i / lanes % 2 == 0 ? R(1) : R(0);
    const auto x = random_array<cpx<R>>(groups * radix * between, 4);
    auto y = x;
    call(y, i32{groups}, between, i32{columns}, ones);
    for (i64 g = 0; g < groups; ++g)
        for (i64 c = 0; c < columns; ++c) {
            std::vector<cpx<quad>> in, out;
            const auto at = [=](i64 row) { return static_cast<std::size_t>((g * radix + row) * between + c); };
            for (i64 row = 0; row < radix; ++row) {
                const auto& e = x[at(reversed(row, order))];
                in.push_back({e.re, e.im});
            }
            const auto should = naive_transform(in, order, -1);
            for (i64 row = 0; row < radix; ++row) {
                ASSERT_LT(magnitude(y[at(row)].re - should[static_cast<std::size_t>(row)].re),
                          100 * std::numeric_limits<R>::epsilon());
                ASSERT_LT(magnitude(y[at(row)].im - should[static_cast<std::size_t>(row)].im),
                          100 * std::numeric_limits<R>::epsilon());
            }
        }
}

TEST(Stage, joins_rows_that_stand_in_reversed_order)
{
    each_real_type([]<class R>(R) {
        constexpr std::size_t lanes = 16 / sizeof(R);
        for (const int radix : {4, 8}) {
            expect_stage<R>(radix, radix / 4 + 1, [=](PairsOf<R>& x, i32 groups, i64 between, i32 columns, const R* w) {
                std::vector<R> blocks; // a register of real parts, one of imaginary parts
                for (std::size_t i = 0; i < x.size(); i += lanes) {
                    for (std::size_t l = 0; l < lanes; ++l) blocks.push_back(x[i + l].re);
                    for (std::size_t l = 0; l < lanes; ++l) blocks.push_back(x[i + l].im);
                }
                const std::string name = "ymps_cFftFwd_Fact" + std::to_string(radix) + "_" + token<cpx<R>>();
                primitive<Factor<cpx<R>>>(name)(reinterpret_cast<cpx<R>*>(blocks.data()), groups, between, columns, w);
                for (std::size_t i = 0; i < x.size(); ++i) {
                    const std::size_t at = 2 * (i / lanes * lanes) + i % lanes;
                    x[i] = {blocks[at], blocks[at + lanes]};
                }
            });
        }
        expect_stage<R>(8, 3, [](PairsOf<R>& x, i32 groups, i64 between, i32 columns, const R* w) {
            std::vector<R> re, im;
            for (const auto& e : x) re.push_back(e.re), im.push_back(e.im);
            primitive<SplitFactor<R>>("ymps_crFftFwd_Fact8_Last_" + token<R>())(re.data(), im.data(), groups, between,
                                                                                columns, w);
            for (std::size_t i = 0; i < x.size(); ++i) x[i] = {re[i], im[i]};
        });
    });
}

// Perm and CCS by the recombination's two names, and back up to the factor of an inverse.
TEST(Recombination, turns_the_transform_of_pairs_into_a_spectrum_and_back)
{
    each_real_type([]<class R>(R) {
        for (const i32 order : {6, 9}) {
            const i32 n = i32{1} << order, m = n / 2;
            const Record<KindOf<R, Shape::reals>> record(order);
            const Record<KindOf<R, Shape::pairs>> half(order - 1);
            const auto* const twiddles = static_cast<const R*>(record.spec()->real_twiddles);
            const auto x = random_array<R>(n, 6);
            std::vector<R> z(x.size()), perm(x.size()), ccs(x.size() + 2);
            ASSERT_EQ(transform(Direction::forward, reinterpret_cast<const cpx<R>*>(x.data()),
                                reinterpret_cast<cpx<R>*>(z.data()), half.spec(), half.buffer()),
                      ok);
            ASSERT_EQ(transform(Direction::forward, "Perm", x.data(), perm.data(), record.spec(), record.buffer()), ok);
            ASSERT_EQ(transform(Direction::forward, "CCS", x.data(), ccs.data(), record.spec(), record.buffer()), ok);
            std::vector<R> is = z;
            primitive<Recombine<R>>("ymps_cRealRecombine_" + token<R>())(is.data(), m, 1, twiddles);
            EXPECT_EQ(is, perm);
            primitive<Recombine<R>>("ymps_cRealRecombine_" + token<R>())(is.data(), m, -1, twiddles);
            for (std::size_t i = 0; i < z.size(); ++i)
                EXPECT_NEAR(is[i], 2 * z[i], 500 * std::numeric_limits<R>::epsilon());
            is = z, is.resize(z.size() + 2);
            primitive<Recombine<R>>("ymps_cCcsRecombine_" + token<R>())(is.data(), m, 1, twiddles);
            EXPECT_EQ(is, ccs);
            primitive<Recombine<R>>("ymps_cCcsRecombine_" + token<R>())(is.data(), m, -1, twiddles);
            for (std::size_t i = 0; i < z.size(); ++i)
                EXPECT_NEAR(is[i], 2 * z[i], 500 * std::numeric_limits<R>::epsilon());
        }
    });
}

} // namespace
} // namespace orv::test
