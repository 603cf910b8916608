// Drawn problems of any form, layout and place, through the widest door, beside Debian's FFTW.
#include "tests/fftw/problem.h"

#include <gtest/gtest.h>

#include <numeric>

namespace orv::test {
namespace {

class Drawn {
public:
    explicit Drawn(unsigned seed) : random_(seed * 2654435761u + 1) { (void)random_(); }
    int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

    Problem problem()
    {
        Problem p;
        p.form = static_cast<Form>(below(4));
        p.sign = below(2) ? 1 : -1;
        p.in_place = below(3) == 0;
        p.split = p.form != Form::r2r && below(3) == 0 && !(p.halves() && p.in_place);
        const int rank = below(4), loops = below(4) - 1;
        for (int k = 0; k < rank; ++k) p.dims.push_back({length(rank), 1, 1});
        for (int k = 0; k < loops; ++k) p.loops.push_back({1 + below(4), 1, 1});
        if (p.form == Form::r2r)
            for (int k = 0; k < rank; ++k) {
                p.kinds.push_back(below(real_kinds));
                if (p.kinds.back() == redft00 && p.dims[k].n == 1) p.dims[k].n = 2; // of one there is no plan
            }
        if (p.halves() && p.dims.empty()) p.dims.push_back({length(1), 1, 1});
        lay_out(p, true);
        if (!p.in_place) lay_out(p, false);
        else
            for (auto* dims : {&p.dims, &p.loops})
                for (Dim& d : *dims) d.is = p.form == Form::r2c ? 2 * d.os : d.os, d.os *= p.form == Form::c2r ? 2 : 1;
        if (p.in_place && p.halves()) p.dims.back().is = p.dims.back().os = 1;
        return p;
    }

private:
    std::minstd_rand random_;

    std::ptrdiff_t length(int rank)
    {
        if (rank > 1) return 1 + below(9);
        return below(4) ? 1 + below(24) : 1 + below(200);
    }
    // Strides of a side, in place of the half spectrum, in any order of dimensions and with gaps.
    void lay_out(Problem& p, bool output)
    {
        const std::size_t all = p.dims.size() + p.loops.size();
        std::vector<std::size_t> order(all);
        std::iota(order.rbegin(), order.rend(), 0u);
        const bool halved_in_place = p.in_place && p.halves();
        if (below(2)) std::shuffle(order.begin(), order.end(), random_);
        std::ptrdiff_t stride = halved_in_place ? 1 : 1 + below(5) / 2;
        if (halved_in_place) std::iter_swap(order.begin(), std::find(order.begin(), order.end(), p.dims.size() - 1));
        for (const std::size_t k : order) {
            Dim& d = k < p.dims.size() ? p.dims[k] : p.loops[k - p.dims.size()];
            const bool last = k + 1 == p.dims.size();
            const std::ptrdiff_t n = halved_in_place && last ? d.n / 2 + 1 : d.n;
            const bool back = !p.in_place && below(8) == 0;
            (output ? d.os : d.is) = back ? -stride : stride;
            stride = stride * n + below(3);
        }
    }
};

template <class R> void compare(const Problem& p, Drawn& drawn, unsigned seed)
{
    SCOPED_TRACE("seed " + std::to_string(seed) + ": " + describe(p));
    const Edge edge = drawn.below(2) ? Edge::start : Edge::end;
    const Problem plain = compact(p);
    const Arrays<R> a(p, edge, static_cast<std::size_t>(drawn.below(4))), b(plain);
    fill(p, a, seed);
    b.copy_input(a);
    const auto before = a.all();
    const unsigned flags[] = {measure, estimate, patient, exhaustive, destroy_input, preserve_input, unaligned};
    const Arrays<R> elsewhere(p); // where a plan was made matters only to a plan that is run without arrays
    const int way = drawn.below(3);
    const Plan plan = guru64(ours<R>(), p, way ? elsewhere : a, flags[drawn.below(7)]),
               other = guru64(debian<R>(), plain, b, estimate);
    ASSERT_NE(other, nullptr);
    ASSERT_NE(plan, nullptr);
    const auto planned = a.all();
    for (std::size_t k = 0; k < before.size(); ++k) ASSERT_TRUE(same_bytes(before[k], planned[k])) << "by planning";
    if (way == 0) ours<R>().execute(plan);
    else execute(ours<R>(), p, plan, a, way == 2);
    debian<R>().execute(other);
    EXPECT_LE(worst(p, a, b), 1);

    // All but what is written stays: out of place the input too, and always the gaps.
    for (const Side<R>* side : {a.in.get(), a.out.get()})
        for (std::size_t k = 0; k < side->planes(); ++k) {
            const std::size_t array = side == a.in.get() ? k : a.in->planes() + k;
            std::vector<R> after(side->array(k).begin(), side->array(k).end());
            if (side == a.out.get())
                for (const std::ptrdiff_t r : side->reals())
                    after[static_cast<std::size_t>(side->plane(k) + r - side->array(k).data())] =
                        before[array][static_cast<std::size_t>(side->plane(k) + r - side->array(k).data())];
            EXPECT_TRUE(same_bytes(before[array], after)) << "array " << array;
        }
    ours<R>().destroy(plan), debian<R>().destroy(other);
}

template <class R> void compare_all(unsigned from, unsigned to)
{
    NEED_DEBIAN(R);
    for (unsigned seed = from; seed < to && !testing::Test::HasFatalFailure(); ++seed) {
        Drawn drawn(seed);
        compare<R>(drawn.problem(), drawn, seed);
    }
}
TEST(FftwDrawn, DoubleIsAsDebians) { compare_all<double>(0, 1500); }
TEST(FftwDrawn, SingleIsAsDebians) { compare_all<float>(0, 1500); }
TEST(FftwDrawnFull, DoubleIsAsDebians) { compare_all<double>(1500, 15000); }
TEST(FftwDrawnFull, SingleIsAsDebians) { compare_all<float>(1500, 15000); }

// One line of every form and length, in place and out of place, on one thread and on several.
template <class R> void compare_lines(const std::vector<int>& lengths)
{
    NEED_DEBIAN(R);
    for (const int n : lengths)
        for (int k = 0; k < 24 && !testing::Test::HasFatalFailure(); ++k) {
            Drawn drawn(static_cast<unsigned>(24 * n + k));
            Problem p;
            p.form = static_cast<Form>(k % 4), p.in_place = k / 4 % 2, p.sign = k < 8 ? -1 : 1;
            p.dims = {{n, 1, 1}};
            if (p.form == Form::r2r) p.kinds = {k / 8};
            ours<R>().template call<void>("plan_with_nthreads", 1 + k / 8);
            compare<R>(p, drawn, static_cast<unsigned>(n));
        }
    ours<R>().template call<void>("cleanup_threads");
}

// One line of sines or cosines of each kind.
template <class R> void compare_waves(const std::vector<int>& lengths)
{
    NEED_DEBIAN(R);
    for (const int n : lengths)
        for (int kind = redft00; kind < real_kinds && !testing::Test::HasFatalFailure(); ++kind) {
            Drawn drawn(static_cast<unsigned>(11 * n + kind));
            Problem p;
            p.form = Form::r2r, p.in_place = n % 2 != 0;
            p.dims = {{n, 1, 1}};
            p.kinds = {kind};
            if (n > 1 || kind != redft00) compare<R>(p, drawn, static_cast<unsigned>(n));
        }
}
std::vector<int> up_to(int last)
{
    std::vector<int> all(static_cast<std::size_t>(last));
    std::iota(all.begin(), all.end(), 1);
    return all;
}
const std::vector<int> long_lengths{1 << 12, 1 << 16, 1 << 17, 5000, 4099, 30030, 59049, 65521};
TEST(FftwLines, ShortOnesOfDoublesAreAsDebians) { compare_lines<double>(up_to(140)); }
TEST(FftwLines, ShortOnesOfSinglesAreAsDebians) { compare_lines<float>(up_to(140)); }
TEST(FftwWaves, OfDoublesAreAsDebians) { compare_waves<double>(up_to(140)); }
TEST(FftwWaves, OfSinglesAreAsDebians) { compare_waves<float>(up_to(140)); }
TEST(FftwWavesFull, LongOnesOfDoublesAreAsDebians) { compare_waves<double>({1023, 1025, 4096, 5000, 65535, 65537}); }
TEST(FftwWavesFull, LongOnesOfSinglesAreAsDebians) { compare_waves<float>({1023, 1025, 4096, 5000, 65535, 65537}); }
TEST(FftwLinesFull, LongOnesOfDoublesAreAsDebians) { compare_lines<double>(long_lengths); }
TEST(FftwLinesFull, LongOnesOfSinglesAreAsDebians) { compare_lines<float>(long_lengths); }

} // namespace
} // namespace orv::test
