// Which method takes which problem, over the whole list: the table that the node's settings lead through.
#include "tests/dft/dft/general.h"
#include "tests/dft/node/node.h"

namespace orv::test {
namespace {

// The general path has no name.
const char* const general = "";

std::string method_of(const Node& node)
{
    for (const char* name :
         {"bkd_as2s_n_m", "bkd_as2s_1_m", "bkd_ds2s_1_1", "bkd_ss2s_1_1", "bkd1_c",       "bkd1_z",      "bkd2_c",
          "bkd2_z",       "bkd3_c",       "bkd3_z",       "bluestein_c",  "bluestein_z",  "bluestein_s", "bluestein_d",
          "tiny_3d_c2c",  "tiny_3d_z2z",  "tiny_3d_c2s",  "tiny_3d_z2d",  "par_1d_r2c_d", "par_1d_r2c_s"})
        if (node->method == method(name)) return name;
    return node->method == nullptr ? general : "?";
}
std::string chosen(const Node& node)
{
    const i32 status = commit(node);
    return status == node_ok ? method_of(node) : "status " + std::to_string(status);
}

TEST(Choice, of_single_pairs_by_length_and_scale)
{
    const auto by_length = [](i64 n) { return chosen(create_1d('s', 'c', n)); };
    EXPECT_EQ(by_length(2), "bkd2_c");
    EXPECT_EQ(by_length(4), "bkd2_c");
    EXPECT_EQ(by_length(8), "bkd2_c");
    EXPECT_EQ(by_length(16), "bkd3_c");
    EXPECT_EQ(by_length(64), "bkd3_c");
    EXPECT_EQ(by_length(3), "bkd1_c");
    EXPECT_EQ(by_length(100003), general);
    for (const auto& [forward, backward, name] : {std::tuple{1.0 / 64, 1.0, "bkd1_c"},
                                                  {1.0, 1.0 / 64, "bkd1_c"},
                                                  {0.125, 0.125, "bkd1_c"},
                                                  {0.5, 1.0, general}}) {
        const Node node = create_1d('s', 'c', 64);
        set_scales(node, forward, backward);
        EXPECT_EQ(chosen(node), name) << forward << ' ' << backward;
    }
}

TEST(Choice, of_double_pairs_by_length)
{
    const auto by_length = [](i64 n) { return chosen(create_1d('d', 'c', n)); };
    EXPECT_EQ(by_length(2), "bkd2_z");
    EXPECT_EQ(by_length(4), "bkd2_z");
    EXPECT_EQ(by_length(8), "bkd3_z");
    EXPECT_EQ(by_length(128), "bkd3_z");
    // Beyond that the engine's work area has to fit on the stack.
    for (const i64 n : {31, 64 + 1, 256, 1000, 4096}) {
        const Node node = create_1d('d', 'c', n);
        YmpDftSpec* spec = nullptr;
        i32 bytes = 0;
        ASSERT_EQ(primitive<DftInitAlloc>("ympsDFTInitAlloc_C_64fc")(&spec, static_cast<i32>(n), 8, 0), 0);
        ASSERT_EQ(primitive<DftGetBufSize>("ympsDFTGetBufSize_C_64fc")(spec, &bytes), 0);
        primitive<DftFree>("ympsDFTFree_C_64fc")(spec);
        EXPECT_EQ(chosen(node), bytes <= 2048 ? "bkd1_z" : general) << n << ' ' << bytes;
    }
}

TEST(Choice, goes_to_the_general_path_for_what_the_quick_ones_do_not_take)
{
    const auto changed = [](auto change) {
        Node node = create_1d('d', 'c', 64);
        EXPECT_EQ(chosen(node), "bkd3_z");
        change(node);
        return chosen(node);
    };
    EXPECT_EQ(changed([](Node& n) { n->placement = CFG_OUT_OF_PLACE; }), "bkd3_z");
    EXPECT_EQ(changed([](Node& n) { set_strides(n, {2}, {2}); }), general);
    EXPECT_EQ(changed([](Node& n) { set_strides(n, {1}, {2}); }), "bkd3_z") << "in place the output does not count";
    EXPECT_EQ(changed([](Node& n) { set_strides(n, {1}, {2}), n->placement = CFG_OUT_OF_PLACE; }), general);
    EXPECT_EQ(changed([](Node& n) { set_batch(n, 2, 64, 64); }), general);
    EXPECT_EQ(changed([](Node& n) { n->input_offset = 1; }), general);
    EXPECT_EQ(changed([](Node& n) { n->flags |= DftiNode::no_decomposition; }), general);
    EXPECT_EQ(changed([](Node& n) { n->complex_storage = CFG_STORE_SPLIT; }), "bkd_ds2s_1_1");
}

TEST(Choice, of_two_arrays_by_dimensions_and_batches)
{
    const auto split = [](Node node) {
        node->complex_storage = CFG_STORE_SPLIT;
        return chosen(node);
    };
    EXPECT_EQ(split(create_1d('d', 'c', 100)), "bkd_ds2s_1_1");
    EXPECT_EQ(split(create_1d('s', 'c', 100)), "bkd_ss2s_1_1");
    EXPECT_EQ(split(create_md('d', 'c', {10, 12})), "bkd_as2s_n_m");
    EXPECT_EQ(split(create_md('s', 'c', {10, 1, 12})), "bkd_as2s_n_m");
    EXPECT_EQ(split(create_md('s', 'c', {10, 1})), "bkd_ss2s_1_1");
}

TEST(Choice, of_cubes_ends_at_10_points_a_side)
{
    EXPECT_EQ(chosen(create_md('d', 'c', {10, 10, 10})), "tiny_3d_z2z");
    EXPECT_EQ(chosen(create_md('s', 'c', {10, 10, 10})), "tiny_3d_c2c");
    EXPECT_EQ(chosen(create_md('d', 'c', {11, 11, 11})), general);
    EXPECT_EQ(chosen(create_md('d', 'c', {10, 10, 9})), general);
}

TEST(Choice, of_lengths_beyond_the_engine_is_two_dimensions_where_there_are_factors)
{
    const i64 n = i64{4100} * 4100; // above 2^24
    const Node node = create_1d('d', 'c', n);
    EXPECT_EQ(chosen(node), general);
    ASSERT_NE(node->via2d_data, nullptr);
    EXPECT_EQ(static_cast<const Via2dData*>(node->via2d_data)->n1, 4100);
    const Node single = create_1d('s', 'c', n); // below 2^25: the engine's record is not made here
    single->workspace = CFG_AVOID;
    EXPECT_EQ(chosen(single), general);
    EXPECT_NE(single->via2d_data, nullptr);
}

// A convolution for such a length takes gigabytes: that it asks for them shows that the node came so far.
TEST(Choice, of_primes_beyond_the_engine_is_a_convolution_for_one_plain_transform)
{
    const i64 prime = (i64{1} << 24) + 43;
    const auto without_memory = [](const Node& node) {
        ProbeScope memory;
        memory->fail_all = true;
        return commit(node);
    };
    EXPECT_EQ(without_memory(create_1d('d', 'c', prime)), node_no_memory);
    const Node scaled = create_1d('d', 'c', prime), several = create_1d('d', 'c', prime);
    set_scales(scaled, 0.5, 1);
    set_batch(several, 2, prime, prime);
    EXPECT_EQ(without_memory(scaled), node_inconsistent);
    EXPECT_EQ(without_memory(several), node_inconsistent);

    const i64 odd = (i64{1} << 26) + 1;
    const auto packed = [&](double scale) {
        Node node = create_1d('d', 'r', odd);
        node->packed_format = CFG_PACK;
        set_scales(node, scale, 1);
        return node;
    };
    EXPECT_EQ(without_memory(packed(1)), node_no_memory);
    EXPECT_EQ(without_memory(packed(0.5)), node_inconsistent);
}

i32 two() { return 2; }

TEST(Choice, of_long_reals_is_shared_among_threads_if_there_are_some)
{
    const auto with_threads = [](i64 n, i32 (*threads)()) {
        const Node node = create_1d('d', 'r', n);
        ServicesScope services(node);
        services->max_threads = threads;
        return chosen(node);
    };
    EXPECT_EQ(with_threads(16384, nullptr), general);
    EXPECT_EQ(with_threads(16384, two), "par_1d_r2c_d");
    EXPECT_EQ(with_threads(16382, two), general);
}

TEST(Choice, does_not_change_for_a_count_before_the_next_commit)
{
    const Node node = create_1d('d', 'c', 16);
    ASSERT_EQ(commit(node), node_ok);
    auto x = random_array<cpx<double>>(48, 1), y = x;
    set_batch(node, 3, 16, 16);
    ASSERT_EQ(node->compute_forward(node.get(), y.data(), nullptr, nullptr, nullptr), node_ok);
    EXPECT_FALSE(same_bits(y.data(), x.data(), 16));
    EXPECT_TRUE(same_bits(y.data() + 16, x.data() + 16, 32));
    ASSERT_EQ(commit(node), node_ok);
    y = x;
    ASSERT_EQ(node->compute_forward(node.get(), y.data(), nullptr, nullptr, nullptr), node_ok);
    EXPECT_FALSE(same_bits(y.data() + 32, x.data() + 32, 16));
}

} // namespace
} // namespace orv::test
