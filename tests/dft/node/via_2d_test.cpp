// One dimension as two: when a node goes that way, how its length is split, and what comes out.
#include "tests/dft/dft/general.h"
#include "tests/dft/node/node.h"

namespace orv::test {
namespace {

namespace k = kernels::dft;

const Via2dData* via(const Node& node) { return static_cast<const Via2dData*>(node->via2d_data); }

template <class R> Node long_node(i64 n, u32 workspace = CFG_AVOID)
{
    Node node = create_1d(precision_letter<R>, 'c', n);
    node->workspace = workspace;
    return node;
}

struct Split {
    i64 n, n1, n2;
};
// The greatest product of factors that the rule makes below the root.
const Split splits[] = {{i64{1} << 16, 256, 256}, {i64{1} << 17, 256, 512}, {40000, 200, 200},
                        {65537 * 2, 2, 65537},    {65535, 255, 257},        {46225, 215, 215},
                        {3 * 65536, 384, 512},    {50700, 195, 260},        {44100, 210, 210}};

TEST(Via2d, splits_a_length_near_its_root)
{
    for (const auto& [n, n1, n2] : splits) {
        const Node node = long_node<double>(n);
        ASSERT_EQ(commit(node), node_ok) << n;
        ASSERT_NE(via(node), nullptr) << n;
        EXPECT_EQ(via(node)->n1 * via(node)->n2, n);
        EXPECT_EQ(via(node)->n1, n1) << n;
        EXPECT_EQ(via(node)->n2, n2) << n;
        EXPECT_EQ(via(node)->ld1 % 16, 8) << "pitches are odd multiples of 8";
        EXPECT_EQ(via(node)->ld2 % 16, 8);
        EXPECT_GE(via(node)->ld1, n1);
        EXPECT_LE(via(node)->ld1, n1 + 15);
        EXPECT_EQ(via(node)->child1 == via(node)->child2, n1 == n2);
        EXPECT_EQ(via(node)->child1->thread_limit, 1);
        EXPECT_TRUE(via(node)->child2->flags & DftiNode::no_decomposition);
        EXPECT_TRUE(node->flags & DftiNode::via_2d_single);
        EXPECT_EQ(node->kernel_d_forward, primitive<DftiKernel>("xz_1d_via_2d_f"));
        EXPECT_EQ(node->kernel_d_backward, primitive<DftiKernel>("xz_1d_via_2d_b"));
        EXPECT_EQ(node->node_buffer_bytes, 0);
        EXPECT_EQ(node->spec_c_64fc, nullptr);
    }
}

TEST(Via2d, has_a_pitch_that_is_an_odd_multiple_of_8)
{
    for (const auto& [n, ld] : {std::pair<i64, i64>{65536, 264}, {i64{2} * 65537, 8}, {40000, 200}}) {
        const Node node = long_node<double>(n);
        ASSERT_EQ(commit(node), node_ok);
        EXPECT_EQ(via(node)->ld1, ld) << n;
    }
}

TEST(Via2d, finds_no_split_of_a_prime_and_leaves_it_to_the_engine)
{
    const i64 prime = 65537;
    const Node node = long_node<double>(prime);
    node->length = prime, node->length_order = 17;
    EXPECT_EQ(kernel<k::xz_init_data_1d_via_2d>()(node.get(), node.get()), node_no_split);
    ASSERT_EQ(commit(node), node_ok);
    EXPECT_EQ(via(node), nullptr);
    EXPECT_EQ(node->kernel_d_forward, primitive<DftiKernel>("xymps_fwd_64fc"));
    EXPECT_NE(node->spec_c_64fc, nullptr);
}

TEST(Via2d, is_for_ordered_pairs_at_unit_strides_of_16_bits_and_more_where_memory_is_to_be_spared)
{
    const i64 n = i64{1} << 16;
    const auto taken = [](const Node& node) {
        EXPECT_EQ(commit(node), node_ok);
        return via(node) != nullptr;
    };
    EXPECT_TRUE(taken(long_node<double>(n)));
    EXPECT_TRUE(taken(long_node<float>(n)));
    EXPECT_TRUE(taken(long_node<double>(n / 2 + 2))) << "its order is 16";
    EXPECT_FALSE(taken(long_node<double>(n / 2)));
    EXPECT_FALSE(taken(long_node<double>(n, CFG_ALLOW)));
    Node node = long_node<double>(n);
    node->ordering = 49;
    EXPECT_FALSE(taken(node));
    node = long_node<double>(n);
    set_strides(node, {2}, {2});
    EXPECT_FALSE(taken(node));
    node = long_node<double>(n);
    node->placement = CFG_OUT_OF_PLACE;
    set_strides(node, {1}, {2});
    EXPECT_FALSE(taken(node));
    node = long_node<double>(n);
    set_batch(node, 3, n, n);
    EXPECT_TRUE(taken(node));
    EXPECT_FALSE(node->flags & DftiNode::via_2d_single);
    node = create_md('d', 'c', {n / 4, 4});
    node->workspace = CFG_AVOID;
    EXPECT_FALSE(taken(node));
}

TEST(Via2d, takes_the_order_from_which_it_is_used_from_the_environment)
{
    const i64 n = i64{1} << 17;
    const auto taken = [](const Node& node) {
        EXPECT_EQ(commit(node), node_ok);
        return via(node) != nullptr;
    };
    for (const auto& [order, used] : {std::pair{"17", true}, {"16", true}, {"18", false}}) {
        EnvironmentScope environment("DFTI_WORKSPACE_ORDER", order);
        EXPECT_EQ(taken(long_node<double>(n, CFG_ALLOW)), used) << order;
        EXPECT_TRUE(taken(long_node<double>(n))) << order;
        EXPECT_FALSE(taken(long_node<double>(n / 4))) << order;
    }
    for (const char* order : {"0", "-1"}) {
        EnvironmentScope environment("DFTI_WORKSPACE_ORDER", order);
        EXPECT_FALSE(taken(long_node<double>(n))) << order;
    }
}

TEST(Via2d, takes_its_mode_from_the_settings_or_the_environment)
{
    const i64 n = i64{1} << 16;
    const auto mode = [](const Node& node) {
        EXPECT_EQ(commit(node), node_ok);
        return via(node) != nullptr ? via(node)->mode : 99;
    };
    EXPECT_EQ(mode(long_node<double>(n)), 1);
    for (const auto& [text, expected] : {std::pair{"0", 0}, {"1", 1}, {"-1", -1}, {"2", 0}, {"-2", 0}, {"x", 0}}) {
        EnvironmentScope environment("DFTI_WORKSPACE", text);
        EXPECT_EQ(mode(long_node<double>(n)), expected) << text;
        EnvironmentScope order("DFTI_WORKSPACE_ORDER", "16");
        EXPECT_EQ(mode(long_node<double>(n, CFG_ALLOW)), 1) << "whatever else is set";
    }
}

TEST(Via2d, has_the_squares_of_its_indices_as_angles)
{
    const Node node = long_node<float>(50700);
    ASSERT_EQ(commit(node), node_ok);
    const i64 entries = via(node)->n1 + via(node)->n2;
    const auto* const w = static_cast<const cpx<float>*>(via(node)->twist) + 8;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(via(node)->twist) % 64, 0u);
    for (i64 j = -8; j < entries; ++j) {
        const QuadPair root = quad_root(4 * 50700 - j * j % (4 * 50700), 4 * 50700);
        ASSERT_NEAR(w[j].re, static_cast<double>(root.re), 0x1p-25) << j; // half a unit of the last place of 1
        ASSERT_NEAR(w[j].im, static_cast<double>(root.im), 0x1p-25) << j;
    }
}

// The forward transform of x in double precision by the engine.
template <class R> std::vector<cpx<double>> by_engine(const std::vector<cpx<R>>& x)
{
    const i64 n = static_cast<i64>(x.size());
    std::vector<cpx<double>> y;
    for (const cpx<R> z : x) y.push_back({z.re, z.im});
    YmpDftSpec* spec = nullptr;
    EXPECT_EQ(kernel<k::ympsDFTInitAlloc_C_64fc>()(&spec, static_cast<i32>(n), 8, 0), 0);
    EXPECT_EQ(kernel<k::ympsDFTFwd_CToC_64fc>()(y.data(), y.data(), spec, nullptr), 0);
    kernel<k::ympsDFTFree_C_64fc>()(spec);
    return y;
}
template <class R> double relative_error(const cpx<R>* a, const std::vector<cpx<double>>& b, double scale)
{
    double off = 0, whole = 0;
    for (std::size_t i = 0; i < b.size(); ++i) {
        const double re = a[i].re - scale * b[i].re, im = a[i].im - scale * b[i].im;
        off += re * re + im * im;
        whole += scale * scale * (b[i].re * b[i].re + b[i].im * b[i].im);
    }
    return std::sqrt(off / whole) / std::numeric_limits<R>::epsilon();
}

// Both directions, both placements, all modes; what is not in place leaves its input, and nothing beyond is touched.
template <class R> void expect_transforms(i64 n)
{
    using T = cpx<R>;
    const auto x = random_array<T>(n, static_cast<std::uint64_t>(n));
    const auto expected = by_engine(x);
    const double bound = 2 * std::sqrt(std::log2(static_cast<double>(n)));
    std::vector<T> first;
    for (const char* mode : {"0", "1", "-1"})
        for (const u32 placement : {CFG_IN_PLACE, CFG_OUT_OF_PLACE}) {
            EnvironmentScope environment("DFTI_WORKSPACE", mode);
            const Node node = long_node<R>(n);
            node->placement = placement;
            set_scales(node, 0.5, 2.0 / static_cast<double>(n));
            ASSERT_EQ(commit(node), node_ok);
            ASSERT_NE(via(node), nullptr);
            Guarded<T> a(n), b(n);
            std::copy(x.begin(), x.end(), a.data());
            T *from = a.data(), *to = placement == CFG_IN_PLACE ? a.data() : b.data();
            T* const second = placement == CFG_IN_PLACE ? nullptr : to;
            ASSERT_EQ(node->compute_forward(node.get(), from, second, nullptr, nullptr), node_ok);
            EXPECT_LE(relative_error(to, expected, 0.5), bound) << n << " mode " << mode;
            if (placement == CFG_OUT_OF_PLACE) {
                EXPECT_TRUE(same_bits(from, x.data(), n)) << "the input";
            }
            if (first.empty()) first.assign(to, to + n);
            EXPECT_TRUE(same_bits(to, first.data(), n)) << "the mode is a matter of memory alone: " << mode;

            if (placement == CFG_OUT_OF_PLACE) std::swap(from, to);
            T* const back = placement == CFG_IN_PLACE ? nullptr : to;
            ASSERT_EQ(node->compute_backward(node.get(), from, back, nullptr, nullptr), node_ok);
            std::vector<cpx<double>> original;
            for (const T z : x) original.push_back({z.re, z.im});
            EXPECT_LE(relative_error(to, original, 1), 2 * bound) << n << " mode " << mode;
        }
}

TEST(Via2d, transforms_in_every_mode_and_placement)
{
    for (const i64 n :
         {i64{1} << 16, i64{1} << 17, i64{40000}, i64{50700}, i64{2} * 32771, i64{65535}, i64{33 * 1009}}) {
        expect_transforms<double>(n);
        expect_transforms<float>(n);
    }
}

TEST(Via2d, goes_through_a_child_that_is_split_again)
{
    EnvironmentScope environment("DFTI_WORKSPACE_ORDER", "16");
    const i64 n = i64{191} * 191 * 191;
    const Node node = long_node<float>(n);
    ASSERT_EQ(commit(node), node_ok);
    ASSERT_NE(via(node), nullptr);
    const DftiNode* const child = via(node)->child2;
    ASSERT_NE(child->via2d_data, nullptr);
    EXPECT_EQ(via(node)->mode, 1);
    EXPECT_EQ(static_cast<const Via2dData*>(child->via2d_data)->mode, 0) << "one level alone spares memory";

    // A single point at j becomes exp(-2*pi*i*j*k/n).
    const i64 j = 1234567;
    std::vector<cpx<float>> x(static_cast<std::size_t>(n));
    x[j] = {1, 0};
    ASSERT_EQ(node->compute_forward(node.get(), x.data(), nullptr, nullptr, nullptr), node_ok);
    for (const i64 k : points_to_see(n, 1000)) {
        const QuadPair root = quad_root(n - j * k % n, n);
        ASSERT_NEAR(x[k].re, static_cast<double>(root.re), 1e-6) << k;
        ASSERT_NEAR(x[k].im, static_cast<double>(root.im), 1e-6) << k;
    }
}

TEST(Via2d, transforms_each_of_a_batch)
{
    const i64 n = 40000, distance = n + 5;
    const auto x = random_array<cpx<double>>(2 * distance, 5);
    const Node node = long_node<double>(n);
    set_batch(node, 2, distance, distance);
    ASSERT_EQ(commit(node), node_ok);
    ASSERT_NE(via(node), nullptr);
    auto y = x;
    ASSERT_EQ(node->compute_forward(node.get(), y.data(), nullptr, nullptr, nullptr), node_ok);
    for (i64 b = 0; b < 2; ++b) {
        const std::vector<cpx<double>> one(x.begin() + b * distance, x.begin() + b * distance + n);
        EXPECT_LE(relative_error(y.data() + b * distance, by_engine(one), 1), 10);
    }
    EXPECT_TRUE(same_bits(y.data() + n, x.data() + n, 5));
}

TEST(Via2d, without_memory_at_commit_goes_on_with_the_engine_or_fails_and_commits_again)
{
    const Node node = long_node<double>(i64{1} << 16);
    i32 status = node_ok;
    each_allocation_fails(
        [&] {
            status = commit(node);
            EXPECT_EQ(status == node_ok, node->compute_forward != nullptr);
            node->uncommit(node.get());
        },
        [&] {
            EXPECT_TRUE(status == node_ok || (status == node_no_memory && probe().failed != 0)) << status;
            EXPECT_EQ(via(node), nullptr);
        });
}

TEST(Via2d, without_memory_at_compute_tells_so_and_leaks_nothing)
{
    const i64 n = i64{1} << 16;
    for (const char* mode : {"0", "1", "-1"}) {
        EnvironmentScope environment("DFTI_WORKSPACE", mode);
        const Node node = long_node<float>(n);
        node->placement = CFG_OUT_OF_PLACE;
        ASSERT_EQ(commit(node), node_ok);
        auto x = random_array<cpx<float>>(n, 1);
        std::vector<cpx<float>> y(x.size());
        i32 status = node_ok;
        each_allocation_fails([&] { status = node->compute_forward(node.get(), x.data(), y.data(), nullptr, nullptr); },
                              [&] { EXPECT_EQ(status, probe().failed != 0 ? node_no_memory : node_ok); });
    }
}

} // namespace
} // namespace orv::test
