// Every kernel of the grid by its symbol: results, the order of direct sums, and what the short forms answer.
#include "tests/conv/problem.h"

namespace orv::test::convolution {
namespace {

std::vector<int> ranks(const Member& m)
{
    if (m.line) return {1};
    if (m.direct) return {2, 3, 4, 5, 6, 7};
    return {1, 2, 3, 4, 5, 6, 7};
}

// How long a dimension may be, so that exact sums stay cheap.
i32 longest(int rank)
{
    constexpr i32 lengths[] = {0, 40, 10, 5, 4, 3, 3, 2};
    return lengths[rank];
}

TEST(ConvKernels, are_ninety_six) { EXPECT_EQ(members().size(), 96u); }

TEST(ConvKernels, agree_with_exact_sums_whatever_shapes_outputs_and_strides_are)
{
    for (const Member& m : members()) {
        if (!m.decimated) continue;
        SCOPED_TRACE(m.name);
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            Random random(std::hash<std::string>()(m.name));
            for (const int rank : ranks(m))
                for (std::uint64_t round = 0; round < (rank == 1 ? 40u : 12u); ++round) {
                    const Problem p = random_problem(random, m.correlates, rank, longest(rank));
                    const Arrays<T> a(p, round, round % 2 == 0 ? Edge::end : Edge::start);
                    ASSERT_EQ(run(m, p, a), ok) << p.text();
                    expect_exact<T, I>(m, p, a);
                    ASSERT_TRUE(a.gaps_untouched(p)) << p.text();
                    if (testing::Test::HasFatalFailure()) return;
                }
        });
    }
}

TEST(ConvKernels, of_single_elements_multiply_them)
{
    for (const Member& m : members()) {
        if (!m.decimated) continue;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            for (const int rank : ranks(m)) {
                const Numbers one(static_cast<std::size_t>(rank), 1);
                const Problem p = full_problem(m.correlates, one, one);
                const Arrays<T> a(p, 3);
                ASSERT_EQ(run(m, p, a), ok);
                expect_exact<T, I>(m, p, a);
            }
        });
    }
}

// The chains of direct sums: of complex numbers four, which meet at the end.
template <class T, class I> struct Chain {
    real_t<I> rr = 0, ii = 0, ri = 0, ir = 0;

    void add(T a, T b)
    {
        if constexpr (is_complex<T>) {
            const real_t<I> are = a.re, aim = a.im, bre = b.re, bim = b.im;
            rr += are * bre, ii += aim * bim, ri += are * bim, ir += aim * bre;
        } else {
            const real_t<I> x = a, y = b;
            rr += x * y;
        }
    }
    T value() const
    {
        if constexpr (is_complex<T>) return {static_cast<real_t<T>>(rr - ii), static_cast<real_t<T>>(ri + ir)};
        else return static_cast<T>(rr);
    }
};

// The products of an output in the order of the sums: of a convolution the operand of fewer elements goes from its last
// one to its first, of a correlation x from its first.
template <class T, class I> T chained(const Problem& p, const Arrays<T>& a, const Numbers& output)
{
    std::vector<std::pair<T, T>> by_x;
    each_product(p, a, output, [&](T x, T y) { by_x.push_back({x, y}); });
    Chain<T, I> chain;
    if (p.correlates)
        for (const auto& [x, y] : by_x) chain.add(x, y);
    else if (total(p.ny) < total(p.nx)) // as x ascends, y descends
        for (const auto& [x, y] : by_x) chain.add(y, x);
    else
        for (auto at = by_x.rbegin(); at != by_x.rend(); ++at) chain.add(at->first, at->second);
    return chain.value();
}

template <class T, class I> void expect_chains(const Member& m, const Problem& p, std::uint64_t stream)
{
    const Arrays<T> a(p, stream);
    ASSERT_EQ(run(m, p, a), ok) << p.text();
    Numbers j(p.nz.size());
    do {
        const T z = a.z[static_cast<std::size_t>(place(p.nz, p.zs, j))], should = chained<T, I>(p, a, j);
        ASSERT_EQ(std::memcmp(&z, &should, sizeof z), 0) << m.name << ' ' << p.text();
    } while (advance(j, p.nz));
}

TEST(DirectConv, sums_each_output_in_one_chain)
{
    for (const Member& m : members()) {
        if (!m.decimated || !m.direct) continue;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            Random random(7);
            for (const int rank : ranks(m))
                for (std::uint64_t round = 0; round < 20; ++round)
                    expect_chains<T, I>(m, random_problem(random, m.correlates, rank, longest(rank)), round);
        });
    }
}

TEST(DirectConv, sums_in_the_same_order_at_every_edge_of_its_groups_of_outputs)
{
    for (const Member& m : members()) {
        if (!m.decimated || !m.direct) continue;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            for (const i32 nx : {1, 2, 3, 5, 9, 33})
                for (const i32 ny : {1, 2, 4, 7, 8, 31, 64, 65, 75}) {
                    if (m.line) expect_chains<T, I>(m, full_problem(m.correlates, {nx}, {ny}), 1);
                    else expect_chains<T, I>(m, full_problem(m.correlates, {nx, 2}, {ny, 3}), 1);
                }
        });
    }
}

TEST(DirectConv, without_a_step_is_that_with_a_step_of_one)
{
    for (const Member& m : members()) {
        if (m.name != "ssdirect_1d_conv_nd" && m.name != "ssdirect_1d_corr_nd") continue;
        for (const i32 nx : {1, 3, 20})
            for (const i32 ny : {1, 4, 50}) expect_chains<float, float>(m, full_problem(m.correlates, {nx}, {ny}), 2);
    }
}

TEST(DirectConv, without_a_step_fills_outputs_beyond_the_last_with_zeros)
{
    for (const Member& m : members()) {
        if (m.name != "ssdirect_1d_conv_nd" && m.name != "ssdirect_1d_corr_nd") continue;
        Problem p = full_problem(m.correlates, {3}, {10});
        p.nz[0] = 40;
        const Arrays<float> a(p, 1);
        ASSERT_EQ(run(m, p, a), ok);
        expect_exact<float, float>(m, p, a);
        for (std::size_t j = 12; j < 40; ++j) EXPECT_EQ(a.z[j], 0);
    }
}

TEST(ConvKernels, without_a_step_do_nothing_but_for_direct_lines_of_singles)
{
    int refusing = 0;
    for (const Member& m : members()) {
        if (m.decimated || m.name == "ssdirect_1d_conv_nd" || m.name == "ssdirect_1d_corr_nd") continue;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            const Problem p = full_problem(m.correlates, {3}, {4});
            const Arrays<T> a(p, 1);
            EXPECT_EQ(run(m, p, a), no_kernel) << m.name;
            EXPECT_TRUE(a.z_untouched());
            EXPECT_EQ(run<T>(m, p, nullptr, nullptr, nullptr), no_kernel) << m.name;
        });
        ++refusing;
    }
    EXPECT_EQ(refusing, 46);
}

TEST(ConvKernels, leave_zeros_and_special_values_where_no_product_has_them)
{
    for (const Member& m : members()) {
        if (!m.decimated || !m.direct || !m.line || m.correlates) continue;
        with_types(m.pair, [&]<class T, class I>(Types<T, I>) {
            const Problem p = full_problem(false, {3}, {100});
            const Arrays<T> a(p, 1);
            a.y[50] = element<T>::make(std::numeric_limits<real_t<T>>::quiet_NaN());
            ASSERT_EQ(run(m, p, a), ok);
            for (std::size_t j = 0; j < 102; ++j) EXPECT_EQ(re(a.z[j]) != re(a.z[j]), j >= 50 && j <= 52) << j;
        });
    }
}

} // namespace
} // namespace orv::test::convolution
