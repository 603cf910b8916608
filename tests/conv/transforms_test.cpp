// What the route through a transform asks for, by the names that a program may replace.
#include "tests/conv/problem.h"
#include "tests/conv/transforms.h"
#include "tests/support/probe.h"

namespace orv::test::convolution {
namespace {

Member member(const std::string& name)
{
    for (const Member& m : members())
        if (m.name == name) return m;
    throw std::runtime_error(name);
}

std::vector<std::string> calls_of(const std::string& name, const Numbers& nx, const Numbers& ny)
{
    const Member m = member(name);
    std::vector<std::string> calls;
    with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
        const Problem p = full_problem(m.correlates, nx, ny);
        const Arrays<T> a(p, 1);
        AskedScope asked;
        EXPECT_EQ(run(m, p, a), ok);
        calls = asked->calls;
        EXPECT_EQ(asked->transforms, 0);
        EXPECT_EQ(asked->lines.size(), 0u);
    });
    return calls;
}

using Calls = std::vector<std::string>;

TEST(ConvTransforms, of_reals_in_two_dimensions_are_real_ones_of_powers_of_two_with_the_innermost_length_last)
{
    const Calls real{"create 33 8 16", "set 11 44", "set 21 57", "set 10 39", "set 5",
                     "commit",         "forward",   "forward",   "backward",  "free"};
    for (const char* name : {"ssfft_all_conv_de", "sdfft_all_corr_de", "ddfft_all_conv_de"})
        EXPECT_EQ(calls_of(name, {5, 3}, {6, 4}), real) << name;
}

TEST(ConvTransforms, from_three_dimensions_on_are_complex_and_nothing_but_their_scale_is_set)
{
    const auto complex = [](const std::string& lengths) {
        return Calls{"create 32 " + lengths, "set 5", "commit", "forward", "forward", "backward", "free"};
    };
    for (const std::string pair : {"ss", "sd", "dd", "cc", "cz", "zz"}) {
        EXPECT_EQ(calls_of(pair + "fft_all_conv_de", {3, 4, 2}, {3, 5, 2}), complex("4 8 8")) << pair;
        EXPECT_EQ(calls_of(pair + "fft_all_corr_de", {3, 2, 2, 1}, {3, 1, 2, 1}), complex("2 4 2 6")) << pair;
        EXPECT_EQ(calls_of(pair + "fft_all_conv_de", {3, 2, 2, 1, 2}, {3, 1, 2, 1, 2}), complex("3 1 3 2 5")) << pair;
    }
    EXPECT_EQ(calls_of("zzfft_all_conv_de", {5, 3}, {6, 4}), complex("8 16"));
    EXPECT_EQ(calls_of("ccfft_all_conv_de", {5, 3}, {6, 4}), complex("8 16"));
}

TEST(ConvTransforms, scale_back_by_the_product_of_their_lengths)
{
    AskedScope asked;
    const Member m = member("ssfft_all_conv_de");
    const Problem p = full_problem(false, {3, 4, 2}, {3, 5, 2});
    const Arrays<float> a(p, 1);
    ASSERT_EQ(run(m, p, a), ok);
    EXPECT_EQ(asked->scales, std::vector<double>{1.0 / 256});
}

TEST(ConvTransforms, of_one_dimension_are_cut_in_pieces_that_fit_powers_of_two)
{
    // 100 beside 5: pieces of 2*8 - 5 + 1 = 12 elements, 9 of them, and 16 points for each.
    const Calls calls = calls_of("ddfft_all_conv_de", {100}, {5});
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "create 33 16"), 8);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "create 33 8"), 1); // the last four: 8 points
    // An operand of one or two elements is never cut, and neither is the other one beside it.
    for (const i32 ny : {1, 2}) {
        const Calls whole = calls_of("ddfft_all_corr_de", {100}, {ny});
        EXPECT_EQ(std::count(whole.begin(), whole.end(), "commit"), 1);
    }
}

TEST(ConvTransforms, of_pieces_add_up_to_the_exact_sums)
{
    for (const char* name : {"ddfft_all_conv_de", "ddfft_all_corr_de", "czfft_all_conv_de", "ccfft_all_corr_de"}) {
        const Member m = member(name);
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            for (const i32 nx : {1, 2, 3, 4, 5, 8, 9, 17, 63, 64, 65})
                for (const i32 ny : {1, 2, 3, 5, 7, 16, 31, 70}) {
                    const Problem p = full_problem(m.correlates, {nx}, {ny});
                    const Arrays<T> a(p, 1);
                    ASSERT_EQ(run(m, p, a), ok) << p.text();
                    expect_exact<T, I>(m, p, a);
                }
        });
    }
}

TEST(ConvLines, go_through_the_replaceable_linear_convolution_once_for_reals_and_four_times_for_pairs)
{
    for (const Member& m : members()) {
        if (m.direct || !m.line || !m.decimated) continue;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            const Problem p = full_problem(m.correlates, {30}, {20});
            const Arrays<T> a(p, 1);
            AskedScope asked;
            ASSERT_EQ(run(m, p, a), ok) << m.name;
            EXPECT_EQ(asked->calls.size(), 0u);
            EXPECT_EQ(asked->lines.size(), is_complex<T> ? 4u : 1u) << m.name;
            for (const auto& line : asked->lines) {
                EXPECT_EQ(line.nx, 30);
                EXPECT_EQ(line.ny, 20);
                EXPECT_EQ(line.bytes, sizeof(real_t<I>));
            }
        });
    }
}

TEST(ConvLines, write_straight_to_outputs_without_gaps_where_all_are_wanted)
{
    const auto straight = [](const char* name, const auto& change) {
        const Member m = member(name);
        bool is_z = false;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            Problem p = full_problem(m.correlates, {30}, {20});
            change(p);
            const Arrays<T> a(p, 1);
            AskedScope asked;
            ASSERT_EQ(run(m, p, a), ok) << m.name;
            is_z = asked->lines.at(0).z == a.z.data();
        });
        return is_z;
    };
    const auto nothing = [](Problem&) {};
    EXPECT_TRUE(straight("ddfft_1d_conv_de", nothing));
    EXPECT_TRUE(straight("ssfft_1d_corr_de", nothing));
    EXPECT_FALSE(straight("sdfft_1d_conv_de", nothing));
    EXPECT_FALSE(straight("zzfft_1d_conv_de", nothing));
    EXPECT_FALSE(straight("ddfft_1d_conv_de", [](Problem& p) { p.zs[0] = -1; }));
    EXPECT_FALSE(straight("ddfft_1d_conv_de", [](Problem& p) { p.zs[0] = 2; }));
    EXPECT_FALSE(straight("ddfft_1d_conv_de", [](Problem& p) { p.nz[0] -= 1; }));
}

TEST(ConvLines, read_operands_where_they_stand_if_they_have_no_gaps)
{
    const auto reads = [](const char* name, i32 xs, i32 ys) {
        const Member m = member(name);
        Problem p = full_problem(m.correlates, {30}, {20});
        p.xs[0] = xs, p.ys[0] = ys;
        const Arrays<double> a(p, 1);
        AskedScope asked;
        EXPECT_EQ(run(m, p, a), ok);
        const auto& line = asked->lines.at(0);
        return std::pair(line.x == a.x.data(), line.y == a.y.data());
    };
    EXPECT_EQ(reads("ddfft_1d_conv_de", 1, 1), std::pair(true, true));
    EXPECT_EQ(reads("ddfft_1d_conv_de", 2, -1), std::pair(false, false));
    EXPECT_EQ(reads("ddfft_1d_corr_de", 1, 1), std::pair(false, true)); // reversed
    EXPECT_EQ(reads("ddfft_1d_corr_de", -1, 1), std::pair(false, true));
}

// All members that go through a transform, with problems that need a work array.
template <class Act> void each_transform(Act act)
{
    for (const Member& m : members()) {
        if (m.direct || !m.decimated) continue;
        SCOPED_TRACE(m.name);
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            for (const int rank : {1, 2, 3}) {
                if (m.line && rank > 1) continue;
                const auto r = static_cast<std::size_t>(rank);
                Problem p = full_problem(m.correlates, Numbers(r, 9), Numbers(r, 3));
                p.zs[0] = -1;
                const Arrays<T> a(p, 1);
                act(m, p, a);
            }
        });
    }
}

TEST(ConvTransforms, that_are_refused_at_any_call_leave_outputs_alone_and_nothing_behind)
{
    each_transform([](const Member& m, const Problem& p, const auto& used) {
        if (m.line) return;
        for (int k = 0;; ++k) {
            const std::remove_cvref_t<decltype(used)> a(p, 1);
            AskedScope asked;
            ProbeScope memory;
            asked->refuse_at = k;
            const i32 status = run(m, p, a);
            EXPECT_EQ(asked->transforms, 0);
            EXPECT_EQ(memory->live, 0);
            const auto& calls = asked->calls;
            if (k >= std::ssize(calls)) {
                EXPECT_EQ(status, ok);
                return;
            }
            if (calls[static_cast<std::size_t>(k)] == "free") continue; // it cannot be refused
            ASSERT_EQ(status, transform_failed);
            // One dimension comes in pieces; nothing is cut out before all are there.
            ASSERT_TRUE(a.z_untouched()) << k;
        }
    });
}

TEST(ConvLines, that_are_refused_leave_outputs_alone)
{
    each_transform([](const Member& m, const Problem& p, const auto& a) {
        if (!m.line) return;
        AskedScope asked;
        ProbeScope memory;
        asked->refuse_lines = true;
        EXPECT_EQ(run(m, p, a), transform_failed);
        EXPECT_TRUE(a.z_untouched());
        EXPECT_EQ(memory->live, 0);
    });
}

TEST(ConvMemory, that_is_refused_leaves_outputs_alone_on_both_routes)
{
    for (const Member& m : members()) {
        if (!m.decimated) continue;
        SCOPED_TRACE(m.name);
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            const std::size_t rank = m.line ? 1 : 2;
            Problem p = full_problem(m.correlates, Numbers(rank, 9), Numbers(rank, 7));
            p.xs[0] = -1, p.ys[0] = -1, p.zs[0] = -1;
            for (i64 k = 0;; ++k) {
                const Arrays<T> a(p, 1);
                ProbeScope memory;
                memory->fail_at = k;
                const i32 status = run(m, p, a);
                ASSERT_EQ(memory->live, 0) << k;
                if (memory->failed == 0) {
                    EXPECT_EQ(status, ok);
                    EXPECT_GT(k, 1);
                    break;
                }
                // The transform takes memory of its own, and may go on without some of it.
                if (k == 0 || m.direct) {
                    ASSERT_EQ(status, no_memory) << k;
                    EXPECT_EQ(memory->asked_alignments.at(0), 128);
                }
                if (status == ok) expect_exact<T, I>(m, p, a);
                else ASSERT_TRUE(a.z_untouched()) << k;
            }
        });
    }
}

} // namespace
} // namespace orv::test::convolution
