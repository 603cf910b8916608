#include "tests/dft/node/node.h"

#include "frame/serv.h"

namespace orv::test {
namespace {

namespace k = kernels::dft;

std::vector<i64> strides_of(const Node& node, bool input)
{
    std::vector<i64> s(static_cast<std::size_t>(node->user_rank) + 1);
    (input ? node->methods->get_input_strides : node->methods->get_output_strides)(node.get(), s.data());
    return s;
}

// Marks a node as committed without committing it.
DftiCompute pretended;
i32 pretended(DftiNode*, void*, void*, void*, void*) { return 0; }
void pretend_commit(const Node& node)
{
    node->commit_status = CFG_COMMITTED;
    node->compute_forward = node->compute_backward = pretended;
}

TEST(Node, begins_with_the_defaults)
{
    const Node node = create_md('d', 'r', {6, 5, 4});
    EXPECT_EQ(node->magic, 0x544644u);
    EXPECT_EQ(node->commit_status, u32{CFG_UNCOMMITTED});
    EXPECT_EQ(node->precision, u32{CFG_DOUBLE});
    EXPECT_EQ(node->forward_domain, u32{CFG_DOMAIN_REAL});
    EXPECT_EQ(node->user_rank, 3);
    EXPECT_EQ(node->ordering, u32{CFG_ORDERED});
    EXPECT_EQ(node->complex_storage, u32{CFG_STORE_COMPLEX});
    EXPECT_EQ(node->real_storage, u32{CFG_STORE_SPLIT});
    EXPECT_EQ(node->conjugate_even_storage, u32{CFG_STORE_PACKED});
    EXPECT_EQ(node->packed_format, u32{CFG_CCS});
    EXPECT_EQ(node->placement, u32{CFG_IN_PLACE});
    EXPECT_EQ(node->transpose, u32{CFG_NONE});
    EXPECT_EQ(node->workspace, u32{CFG_ALLOW});
    EXPECT_EQ(node->number_of_transforms, 1);
    EXPECT_EQ(node->number_of_user_threads, 1);
    EXPECT_EQ(node->thread_limit, 0);
    EXPECT_EQ(node->forward_scale, 1.0);
    EXPECT_EQ(node->backward_scale, 1.0);
    EXPECT_EQ(node->compute_forward, nullptr);
    EXPECT_EQ(strides_of(node, true), (std::vector<i64>{0, 1, 6, 30}));
    EXPECT_EQ(strides_of(node, false), (std::vector<i64>{0, 1, 6, 30}));
    ASSERT_EQ(node->batch.rank, 1);
    EXPECT_EQ(node->batch.dims[0].n, 1);
    EXPECT_EQ(node->batch.dims[0].is, 0);
    EXPECT_EQ(node->batch.dims[0].os, 0);
    EXPECT_EQ(node->work_lengths.rank, 3);
    EXPECT_EQ(node->work_lengths.dims[2].is, 30);
    EXPECT_EQ(node->work_batch.rank, 1);
    const Node other = create_1d('s', 'c', 7);
    EXPECT_EQ(other->precision, u32{CFG_SINGLE});
    EXPECT_EQ(other->forward_domain, u32{CFG_DOMAIN_COMPLEX});
}

TEST(Node, has_the_list_of_its_kind)
{
    const auto list = [](const Node& node) {
        std::vector<const DftiMethod*> all;
        for (const DftiMethod* const* m = node->bkdown_list; *m != nullptr; ++m) all.push_back(*m);
        return all;
    };
    // null: the general path, which has no name and nothing to let go of
    const auto expect = [&](const Node& node, std::vector<const char*> names) {
        const auto all = list(node);
        ASSERT_EQ(all.size(), names.size());
        for (std::size_t i = 0; i < names.size(); ++i)
            if (names[i] != nullptr) {
                EXPECT_EQ(all[i], method(names[i])) << names[i];
            } else {
                EXPECT_EQ(all[i]->detach, nullptr);
            }
    };
    expect(create_1d('d', 'c', 8),
           {"bkd_as2s_n_m", "bkd_as2s_1_m", "bkd_ds2s_1_1", "bkd3_z", "bkd2_z", "bkd1_z", nullptr, "bluestein_z"});
    expect(create_1d('s', 'c', 8),
           {"bkd_as2s_n_m", "bkd_as2s_1_m", "bkd_ss2s_1_1", "bkd3_c", "bkd2_c", "bkd1_c", nullptr, "bluestein_c"});
    expect(create_md('d', 'c', {8}), {"bkd_as2s_n_m", "bkd_as2s_1_m", "bkd_ds2s_1_1", "tiny_3d_z2z", nullptr});
    expect(create_md('s', 'c', {8}), {"bkd_as2s_n_m", "bkd_as2s_1_m", "bkd_ss2s_1_1", "tiny_3d_c2c", nullptr});
    expect(create_1d('d', 'r', 8), {"par_1d_r2c_d", nullptr, "bluestein_d"});
    expect(create_1d('s', 'r', 8), {"par_1d_r2c_s", nullptr, "bluestein_s"});
    expect(create_md('d', 'r', {8}), {"tiny_3d_z2d", nullptr});
    expect(create_md('s', 'r', {8}), {"tiny_3d_c2s", nullptr});
}

TEST(Node, is_not_made_of_lengths_that_no_array_has)
{
    ProbeScope memory;
    auto* const unset = reinterpret_cast<DftiNode*>(1);
    DftiNode* out = unset;
    const i64 with_zero[] = {4, 0, 4}, negative[] = {4, -4}, too_many[] = {i64{1} << 32, i64{1} << 31};
    const auto create = kernel<k::dfti_create_node>();
    EXPECT_EQ(create(&out, CFG_DOUBLE, CFG_DOMAIN_COMPLEX, 3, with_zero), node_bad_length);
    EXPECT_EQ(create(&out, CFG_DOUBLE, CFG_DOMAIN_COMPLEX, 2, negative), node_bad_length);
    EXPECT_EQ(create(&out, CFG_DOUBLE, CFG_DOMAIN_COMPLEX, 2, too_many), node_bad_length);
    for (const char* p : {"dc", "dr", "sc", "sr"}) {
        const auto of_1d = primitive<Create1d>(std::string("dfti_create_") + p + "1d");
        const auto of_md = primitive<CreateMd>(std::string("dfti_create_") + p + "md");
        EXPECT_EQ(of_1d(&out, 0), node_bad_length);
        EXPECT_EQ(of_md(&out, 3, with_zero), node_bad_length);
        EXPECT_EQ(of_md(&out, 0, with_zero), node_bad_length);
        EXPECT_EQ(of_1d(nullptr, 4), node_inconsistent);
        EXPECT_EQ(of_md(nullptr, 1, with_zero), node_inconsistent);
    }
    EXPECT_EQ(out, unset);
    EXPECT_EQ(memory->allocations, 0);
}

TEST(Node, leaves_nothing_behind_without_memory)
{
    auto* const unset = reinterpret_cast<DftiNode*>(1);
    DftiNode* out = unset;
    const i64 lengths[] = {4, 5};
    i32 status = node_ok;
    each_allocation_fails(
        [&] {
            out = unset;
            status = kernel<k::dfti_create_scmd>()(&out, 2, lengths);
            if (status == node_ok) out->destroy(out);
        },
        [&] {
            EXPECT_EQ(status, probe().failed != 0 ? node_no_memory : node_ok);
            if (status != node_ok) {
                EXPECT_EQ(out, unset);
            }
        });
}

TEST(Node, goes_back_to_uncommitted_when_strides_or_a_scale_change)
{
    const Node node = create_md('d', 'c', {6, 5});
    const i64 values[] = {3, 2, 40};
    double scale = 0;

    pretend_commit(node);
    node->methods->set_input_strides(node.get(), values);
    EXPECT_EQ(node->commit_status, u32{CFG_UNCOMMITTED});
    EXPECT_EQ(node->compute_forward, nullptr);
    EXPECT_EQ(strides_of(node, true), (std::vector<i64>{3, 2, 40}));
    EXPECT_EQ(strides_of(node, false), (std::vector<i64>{0, 1, 6}));
    EXPECT_EQ(node->input_offset, 3);

    pretend_commit(node);
    node->methods->set_output_strides(node.get(), values);
    EXPECT_EQ(node->commit_status, u32{CFG_UNCOMMITTED});
    EXPECT_EQ(strides_of(node, false), (std::vector<i64>{3, 2, 40}));

    for (const i32 which : {4, 5}) {
        pretend_commit(node);
        EXPECT_EQ(node->methods->set_scale(node.get(), 1.0, which), node_ok);
        EXPECT_EQ(node->commit_status, u32{CFG_COMMITTED}) << "the value was the same";
        EXPECT_EQ(node->methods->set_scale(node.get(), 0.5, which), node_ok);
        EXPECT_EQ(node->commit_status, u32{CFG_UNCOMMITTED});
        EXPECT_EQ(node->methods->get_scale(node.get(), &scale, which), node_ok);
        EXPECT_EQ(scale, 0.5);
    }
    EXPECT_EQ(node->methods->set_scale(node.get(), 0.25, 3), node_inconsistent);
    EXPECT_EQ(node->methods->get_scale(node.get(), &scale, 6), node_inconsistent);
}

TEST(Node, stays_committed_when_distances_or_the_count_change)
{
    const Node node = create_1d('d', 'c', 6);
    pretend_commit(node);
    set_batch(node, 7, 8, 9);
    EXPECT_EQ(node->commit_status, u32{CFG_COMMITTED});
    i64 count = 0, in = 0, out = 0, length = 0;
    node->methods->get_number_of_transforms(node.get(), &count);
    node->methods->get_input_distance(node.get(), &in);
    node->methods->get_output_distance(node.get(), &out);
    node->methods->get_lengths(node.get(), &length);
    EXPECT_EQ(count, 7);
    EXPECT_EQ(in, 8);
    EXPECT_EQ(out, 9);
    EXPECT_EQ(length, 6);
    EXPECT_EQ(node->number_of_transforms, 7);
    EXPECT_EQ(node->input_distance, 8);
    EXPECT_EQ(node->output_distance, 9);
}

TEST(Node, has_a_name_of_ten_bytes)
{
    const Node node = create_1d('d', 'c', 6);
    char out[12];
    const auto name = [&](const char* text, i64 size, i64 read) {
        node->methods->set_descriptor_name(node.get(), text, size, '.');
        std::memset(out, '#', sizeof out);
        node->methods->get_descriptor_name(node.get(), out, read);
        return std::string(out, sizeof out);
    };
    EXPECT_EQ(name("spectrum of the left channel", 28, 12), "spectrum o##");
    EXPECT_EQ(name("left", 4, 12), "left......##");
    EXPECT_EQ(name("left", 4, 2), "le##########");
    EXPECT_EQ(name("", 0, 10), "..........##");
}

i32 three() { return 3; }
i32 one_if_fixed() { return 1; }

TEST(Node, knows_how_many_threads_it_may_have)
{
    const Node node = create_1d('d', 'c', 6);
    ServicesScope services(node);
    services->max_threads = three, services->fixed_threads = nullptr;
    const auto limit = [&] {
        i32 value = -1;
        node->methods->get_thread_limit(node.get(), &value);
        return value;
    };
    EXPECT_EQ(limit(), 0);
    EXPECT_EQ(node->methods->set_thread_limit(node.get(), -1), node_inconsistent);
    EXPECT_EQ(node->methods->set_thread_limit(node.get(), 5), node_ok);
    EXPECT_EQ(limit(), 5);
    pretend_commit(node);
    node->effective_threads = 8;
    EXPECT_EQ(limit(), 3);
    node->effective_threads = 2;
    EXPECT_EQ(limit(), 2);
    services->max_threads = nullptr;
    EXPECT_EQ(limit(), 1);

    node->uncommit(node.get());
    services->fixed_threads = one_if_fixed;
    EXPECT_EQ(limit(), 1);
    EXPECT_EQ(node->methods->set_thread_limit(node.get(), 7), node_ok);
    EXPECT_EQ(node->thread_limit, 1);
}

TEST(Node, finds_the_size_of_a_cache_if_nobody_else_tells)
{
    const Node node = create_1d('d', 'c', 6);
    ServicesScope services(node);
    services->cache_bytes = nullptr;
    const Node next = create_1d('d', 'c', 6);
    ASSERT_NE(services->cache_bytes, nullptr);
    EXPECT_EQ(services->cache_bytes(), orv_serv_get_cache_size(0));
    services->cache_bytes = three;
    const Node last = create_1d('d', 'c', 6);
    EXPECT_EQ(services->cache_bytes, three);
}

TEST(Node, is_copied_uncommitted_with_its_settings_and_tensors)
{
    const Node node = create_md('s', 'c', {6, 5});
    set_strides(node, {2, 20}, {3, 30});
    set_batch(node, 7, 8, 9);
    set_scales(node, 0.5, 0.25);
    node->placement = CFG_OUT_OF_PLACE, node->workspace = CFG_AVOID, node->ordering = 49;
    node->packed_format = CFG_PERM, node->complex_storage = CFG_STORE_SPLIT;
    node->methods->set_thread_limit(node.get(), 4);
    node->number_of_user_threads = 2;
    node->input_offset = 11, node->output_offset = 12;
    node->nioargs = 4;
    pretend_commit(node);

    DftiNode* out = nullptr;
    ASSERT_EQ(node->methods->copy_node(node.get(), &out), node_ok);
    const Node copy(out);
    EXPECT_EQ(copy->commit_status, u32{CFG_UNCOMMITTED});
    EXPECT_EQ(copy->compute_forward, nullptr);
    EXPECT_EQ(copy->method, nullptr);
    EXPECT_EQ(copy->methods, node->methods);
    EXPECT_EQ(copy->api, node->api);
    EXPECT_EQ(copy->bkdown_list, node->bkdown_list);
    EXPECT_EQ(copy->magic, node->magic);
    EXPECT_EQ(copy->nioargs, 4u);
    EXPECT_EQ(strides_of(copy, true), strides_of(node, true));
    EXPECT_EQ(strides_of(copy, false), strides_of(node, false));
    EXPECT_NE(copy->lengths.dims, node->lengths.dims);
    EXPECT_EQ(copy->batch.dims[0].n, 7);
    EXPECT_EQ(copy->batch.dims[0].os, 9);
    EXPECT_EQ(copy->number_of_transforms, 7);
    EXPECT_EQ(copy->input_distance, 8);
    EXPECT_EQ(copy->precision, u32{CFG_SINGLE});
    EXPECT_EQ(copy->forward_domain, u32{CFG_DOMAIN_COMPLEX});
    EXPECT_EQ(copy->placement, u32{CFG_OUT_OF_PLACE});
    EXPECT_EQ(copy->workspace, u32{CFG_AVOID});
    EXPECT_EQ(copy->ordering, 49u);
    EXPECT_EQ(copy->packed_format, u32{CFG_PERM});
    EXPECT_EQ(copy->complex_storage, u32{CFG_STORE_SPLIT});
    EXPECT_EQ(copy->forward_scale, 0.5);
    EXPECT_EQ(copy->backward_scale, 0.25);
    EXPECT_EQ(copy->thread_limit, 4);
    EXPECT_EQ(copy->number_of_user_threads, 2);
    EXPECT_EQ(copy->input_offset, 11);
    EXPECT_EQ(copy->output_offset, 12);

    i32 status = node_ok;
    each_allocation_fails(
        [&] {
            out = nullptr;
            status = node->methods->copy_node(node.get(), &out);
            if (status == node_ok) out->destroy(out);
        },
        [&] { EXPECT_EQ(status == node_ok, probe().failed == 0); });
}

const DftiMethod* detached_by = nullptr;
i32 note_detach(const DftiMethod* method, DftiNode* node)
{
    detached_by = method;
    node->method = nullptr;
    return node_ok;
}
int freed_2d = 0;
void note_free_2d(DftiNode* node)
{
    EXPECT_NE(node->via2d_data, nullptr);
    ++freed_2d;
}

TEST(Node, lets_go_of_all_that_commit_left)
{
    ProbeScope memory;
    Node node = create_1d('d', 'c', 6);
    const i64 before = memory->live;
    const DftiMethod method{nullptr, note_detach};
    node->method = &method;
    node->via2d_data = &node, node->via2d_free = note_free_2d;
    node->flags = 15;
    node->max_buffer_bytes = node->node_buffer_bytes = 100, node->ccs_row_split = 1;
    ASSERT_EQ(kernel<k::ympsDFTInitAlloc_C_64fc>()(&node->spec_c_64fc, 100, 8, 0), 0);
    ASSERT_EQ(kernel<k::ympsDFTInitAlloc_C_32fc>()(&node->spec_c_32fc, 100, 8, 0), 0);
    ASSERT_EQ(kernel<k::ympsDFTInitAlloc_C_64f>()(&node->spec_c_64f, 100, 8, 0), 0);
    ASSERT_EQ(kernel<k::ympsDFTInitAlloc_C_32f>()(&node->spec_c_32f, 100, 8, 0), 0);
    ASSERT_EQ(kernel<k::ympsDFTInitAlloc_R_64f>()(&node->spec_r_64f, 100, 8, 0), 0);
    ASSERT_EQ(kernel<k::ympsDFTInitAlloc_R_32f>()(&node->spec_r_32f, 100, 8, 0), 0);
    ASSERT_EQ(kernel<k::ympsDFTOutOrdInitAlloc_C_64fc>()(&node->spec_outord_64fc, 100, 8, 0), 0);
    ASSERT_EQ(kernel<k::ympsDFTOutOrdInitAlloc_C_32fc>()(&node->spec_outord_32fc, 100, 8, 0), 0);
    node->buffer0 = orv_serv_malloc(10, 64), node->buffer1 = orv_serv_malloc(10, 64);
    pretend_commit(node);

    node->uncommit(node.get());
    EXPECT_EQ(memory->live, before);
    EXPECT_EQ(detached_by, &method);
    EXPECT_EQ(freed_2d, 1);
    EXPECT_EQ(node->via2d_data, nullptr);
    EXPECT_EQ(node->flags, 8) << "what a parent has forbidden holds";
    EXPECT_EQ(node->commit_status, u32{CFG_UNCOMMITTED});
    EXPECT_EQ(node->compute_forward, nullptr);
    EXPECT_EQ(node->max_buffer_bytes + node->node_buffer_bytes + node->ccs_row_split, 0);
    EXPECT_EQ(node->spec_c_64fc, nullptr);
    EXPECT_EQ(node->spec_outord_32fc, nullptr);
    EXPECT_EQ(node->buffer0, nullptr);
    node.reset();
    EXPECT_EQ(memory->live, 0);
}

TEST(Node, is_destroyed_with_the_node_kept_for_its_method)
{
    ProbeScope memory;
    Node node = create_1d('d', 'c', 6);
    node->method_data = create_1d('d', 'c', 3).release();
    EXPECT_EQ(kernel<k::free_allocated_buffers>()(node.get()), node_ok);
    EXPECT_EQ(node->method_data, nullptr);
    EXPECT_EQ(kernel<k::free_allocated_buffers>()(node.get()), node_ok);
    node.reset();
    EXPECT_EQ(memory->live, 0);
}

TEST(Node, of_the_older_form_is_a_block_of_records)
{
    ProbeScope memory;
    DftiNode* nodes = nullptr;
    const i64 lengths[] = {6, 5, 4, 3};
    const auto create = kernel<k::create_descriptor_md>();
    ASSERT_EQ(create(&nodes, CFG_SINGLE, CFG_DOMAIN_REAL, 3, lengths), node_ok);
    EXPECT_EQ(memory->live, 1);
    for (int d = 0; d < 3; ++d) {
        EXPECT_EQ(nodes[d].length, lengths[d]);
        EXPECT_EQ(nodes[d].prev, d > 0 ? &nodes[d - 1] : nullptr);
        EXPECT_EQ(nodes[d].next, d < 2 ? &nodes[d + 1] : nullptr);
        EXPECT_EQ(nodes[d].dimension_index, d);
        EXPECT_EQ(nodes[d].committed_forward_scale, 1.0);
        EXPECT_EQ(nodes[d].committed_backward_scale, 1.0);
        EXPECT_EQ(nodes[d].forward_scale, 1.0);
        EXPECT_EQ(nodes[d].backward_scale, 1.0);
        EXPECT_EQ(nodes[d].packed_format, u32{CFG_CCS});
        EXPECT_EQ(nodes[d].commit_status, u32{CFG_UNCOMMITTED});
    }
    EXPECT_EQ(nodes[2].input_stride, 30);
    EXPECT_EQ(nodes[1].output_stride, 6);
    EXPECT_EQ(nodes[0].total_half_size, 4);
    orv_serv_free(nodes);

    EXPECT_EQ(create(&nodes, CFG_SINGLE, CFG_DOMAIN_REAL, 4, lengths), node_unsupported);
    EXPECT_EQ(create(nullptr, CFG_SINGLE, CFG_DOMAIN_REAL, 3, lengths), node_inconsistent);
    memory->fail_all = true;
    EXPECT_EQ(create(&nodes, CFG_SINGLE, CFG_DOMAIN_COMPLEX, 4, lengths), node_no_memory);
    EXPECT_EQ(memory->live, 0);
}

TEST(Node, counts_the_pointers_of_a_call)
{
    const Node complex = create_1d('d', 'c', 6), real = create_1d('d', 'r', 6);
    const auto count = kernel<k::determine_nioargs>();
    EXPECT_EQ(count(complex.get()), 1);
    EXPECT_EQ(count(real.get()), 1);
    complex->placement = real->placement = CFG_OUT_OF_PLACE;
    EXPECT_EQ(count(complex.get()), 2);
    complex->complex_storage = real->complex_storage = CFG_STORE_SPLIT;
    EXPECT_EQ(count(complex.get()), 4);
    EXPECT_EQ(count(real.get()), 2);
    complex->placement = CFG_IN_PLACE;
    EXPECT_EQ(count(complex.get()), 2);
}

TEST(Node, tells_the_version_without_an_end)
{
    char whole[199] = {}, text[250];
    orv_serv_get_version_string_c(whole, 198);
    const std::string version(whole);
    const auto read = [&](i64 size) {
        std::memset(text, '#', sizeof text);
        kernel<k::dfti_get_version_string>()(text, size);
        return std::string(text, sizeof text);
    };
    ASSERT_FALSE(version.empty());
    EXPECT_EQ(read(250), version + std::string(250 - version.size(), '#'));
    EXPECT_EQ(read(3), version.substr(0, 3) + std::string(247, '#'));
    EXPECT_EQ(read(0), std::string(250, '#'));
}

} // namespace
} // namespace orv::test
