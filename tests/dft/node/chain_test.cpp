// The general path: which kernel each dimension gets, and what commit refuses. What a node then computes is tested with
// the transforms themselves; here the choice is.
#include "frame/kernels/dft_batch.h"
#include "tests/dft/node/node.h"

namespace orv::test {
namespace {

namespace k = kernels::dft;

DftiKernel* named(const std::string& name) { return primitive<DftiKernel>(name); }
DftiKernel* small_radix(const char* table, i64 n)
{
    return static_cast<DftiKernel* const*>(kernel_address("dft", table))[n - 2];
}

// A chain's node, by number.
const DftiNode* dimension(const Node& node, int index)
{
    const DftiNode* d = node.get();
    for (; index > 0 && d != nullptr; --index) d = d->next;
    return d;
}

// A complex transform that no quicker method takes: a scale that the engine cannot apply sends one dimension here.
Node general(char precision, i64 n)
{
    Node node = create_1d(precision, 'c', n);
    set_scales(node, 3, 1);
    return node;
}

TEST(Chain, runs_powers_of_two_by_the_engine)
{
    for (const i64 n : {1, 8, 16, 256, 4096, 1 << 15}) {
        const Node d = general('d', n), s = general('s', n);
        ASSERT_EQ(commit(d), node_ok);
        ASSERT_EQ(commit(s), node_ok);
        EXPECT_EQ(d->method, nullptr);
        EXPECT_EQ(d->kernel_d_forward, named("xymps_fwd_64fc")) << n;
        EXPECT_EQ(d->kernel_d_backward, named("xymps_inv_64fc"));
        EXPECT_EQ(d->use_engine, 1u);
        EXPECT_NE(d->spec_c_64fc, nullptr);
        EXPECT_EQ(s->kernel_s_forward, named("xymps_fwd_32fc"));
        EXPECT_EQ(s->kernel_s_backward, named("xymps_inv_32fc"));
        EXPECT_NE(s->spec_c_32fc, nullptr);
        EXPECT_EQ(d->max_buffer_bytes, d->node_buffer_bytes);
        EXPECT_EQ(d->compute_forward, primitive<DftiCompute>("compute_fwd_d_c2c_1d_i"));
        EXPECT_EQ(s->compute_backward, primitive<DftiCompute>("compute_bwd_s_c2c_1d_i"));
        EXPECT_EQ(d->committed_forward_scale, 3.0);
    }
}

TEST(Chain, runs_2_and_4_pairs_of_singles_by_codelets_at_unit_strides)
{
    for (const i64 n : {2, 4}) {
        const std::string size = std::to_string(n);
        const Node s = general('s', n), strided = general('s', n), d = general('d', n);
        set_strides(strided, {2}, {2});
        for (const Node* node : {&s, &strided, &d}) ASSERT_EQ(commit(*node), node_ok);
        EXPECT_EQ(s->kernel_s_forward, named("xc_f" + size + "_1df"));
        EXPECT_EQ(s->kernel_s_backward, named("xc_f" + size + "_1db"));
        EXPECT_EQ(s->use_engine, 0u);
        EXPECT_EQ(s->spec_c_32fc, nullptr);
        EXPECT_EQ(strided->kernel_s_forward, named("xymps_fwd_32fc"));
        EXPECT_EQ(strided->use_engine, 1u);
        EXPECT_EQ(d->kernel_d_forward, named("xymps_fwd_64fc"));
    }
}

TEST(Chain, runs_other_lengths_to_64_of_doubles_by_a_kernel_of_their_own)
{
    for (i64 n = 3; n <= 70; ++n) {
        if ((n & (n - 1)) == 0) continue;
        const Node d = general('d', n), s = general('s', n), scrambled = general('d', n);
        scrambled->ordering = 49;
        for (const Node* node : {&d, &s, &scrambled}) ASSERT_EQ(commit(*node), node_ok);
        EXPECT_EQ(d->kernel_d_forward, n <= 64 ? small_radix("zsmallradix_forward", n) : named("xymps_fwd_64fc")) << n;
        EXPECT_EQ(d->kernel_d_backward, n <= 64 ? small_radix("zsmallradix_inverse", n) : named("xymps_inv_64fc"));
        EXPECT_NE(d->spec_c_64fc, nullptr) << "its bytes count all the same";
        EXPECT_EQ(s->kernel_s_forward, named("xymps_fwd_32fc"));
        EXPECT_EQ(scrambled->kernel_d_forward, named("xymps_fwd_rev_64fc"));
        EXPECT_EQ(scrambled->kernel_d_backward, named("xymps_inv_rev_64fc"));
        EXPECT_NE(scrambled->spec_outord_64fc, nullptr);
        EXPECT_EQ(scrambled->spec_c_64fc, nullptr);
    }
}

TEST(Chain, runs_two_arrays_by_the_engine_where_nothing_else_may)
{
    for (const u32 ordering : {u32{CFG_ORDERED}, 49u})
        for (const i64 n : {4, 48, 100}) {
            const Node d = create_1d('d', 'c', n), s = create_1d('s', 'c', n);
            for (const Node* node : {&d, &s}) {
                (*node)->complex_storage = CFG_STORE_SPLIT, (*node)->ordering = ordering;
                (*node)->flags |= DftiNode::no_decomposition;
                ASSERT_EQ(commit(*node), node_ok);
                EXPECT_EQ((*node)->nioargs, 2u);
                EXPECT_EQ((*node)->use_engine, 1u);
            }
            EXPECT_EQ(d->kernel_d_forward, named("xymps_fwd_64f"));
            EXPECT_EQ(d->kernel_d_backward, named("xymps_inv_64f"));
            EXPECT_NE(d->spec_c_64f, nullptr);
            EXPECT_EQ(s->kernel_s_forward, named("xymps_fwd_32f"));
            EXPECT_NE(s->spec_c_32f, nullptr);
        }
}

// ---- Several dimensions

TEST(Chain, gives_every_dimension_the_settings_of_the_first)
{
    const Node node = create_md('d', 'c', {6, 70, 8});
    node->placement = CFG_OUT_OF_PLACE, node->thread_hint = 5, node->chain_hint = 6, node->alignment_hint = 7;
    set_strides(node, {1, 10, 1000}, {1, 6, 420});
    set_batch(node, 3, 20000, 10000);
    set_scales(node, 0.5, 0.25);
    node->input_offset = 2, node->output_offset = 3;
    ASSERT_EQ(commit(node), node_ok);
    EXPECT_EQ(node->nioargs, 2u);
    EXPECT_EQ(node->compute_forward, primitive<DftiCompute>("compute_fwd_d_c2c_md_o"));
    EXPECT_EQ(node->compute_backward, primitive<DftiCompute>("compute_bwd_d_c2c_md_o"));
    i64 largest = 0;
    for (int i = 0; i < 3; ++i) {
        const DftiNode* const d = dimension(node, i);
        ASSERT_NE(d, nullptr);
        EXPECT_EQ(d->dimension_index, i);
        EXPECT_EQ(d->length, (std::vector<i64>{6, 70, 8})[i]);
        EXPECT_EQ(d->input_stride, (std::vector<i64>{1, 10, 1000})[i]);
        EXPECT_EQ(d->output_stride, (std::vector<i64>{1, 6, 420})[i]);
        EXPECT_EQ(d->placement, u32{CFG_OUT_OF_PLACE});
        EXPECT_EQ(d->thread_hint, 5u);
        EXPECT_EQ(d->chain_hint, 6u);
        EXPECT_EQ(d->alignment_hint, 7u);
        EXPECT_EQ(d->number_of_transforms, 3);
        EXPECT_EQ(d->input_distance, 20000);
        EXPECT_EQ(d->output_distance, 10000);
        EXPECT_EQ(d->input_offset, 2);
        EXPECT_EQ(d->output_offset, 3);
        EXPECT_EQ(d->commit_status, u32{CFG_COMMITTED});
        EXPECT_EQ(d->total_size, 6 * 70 * 8);
        EXPECT_EQ(d->committed_forward_scale, i == 0 ? 0.5 : 1.0) << "the scale is the first dimension's";
        largest = std::max(largest, d->node_buffer_bytes);
    }
    EXPECT_EQ(dimension(node, 3), nullptr);
    EXPECT_EQ(node->max_buffer_bytes, largest);
    EXPECT_GT(largest, 0);
}

TEST(Chain, has_planes_by_domain_storage_and_placement)
{
    const auto plane = [](const char* name) { return primitive<DftiKernel2d>(name); };
    const auto plane_out = [](const char* name) { return primitive<DftiKernel2dOut>(name); };
    for (const u32 placement : {CFG_IN_PLACE, CFG_OUT_OF_PLACE}) {
        const bool in = placement == CFG_IN_PLACE;
        const Node z = create_md('d', 'c', {6, 10}), c = create_md('s', 'c', {6, 10});
        for (const Node* node : {&z, &c}) {
            (*node)->placement = placement;
            ASSERT_EQ(commit(*node), node_ok);
        }
        EXPECT_EQ(z->kernel_2d_forward, in ? plane("xzdft2d") : nullptr);
        EXPECT_EQ(z->kernel_2d_backward, in ? plane("xzdft2d") : nullptr);
        EXPECT_EQ(z->kernel_2d_forward_out, in ? nullptr : plane_out("xzdft2d_out"));
        EXPECT_EQ(c->kernel_2d_forward, in ? plane("xcdft2d") : nullptr);
        EXPECT_EQ(c->kernel_2d_backward_out, in ? nullptr : plane_out("xcdft2d_out"));

        for (const u32 storage : {CFG_STORE_PACKED, CFG_STORE_COMPLEX}) {
            const bool half = storage == CFG_STORE_COMPLEX;
            const Node d = create_md('d', 'r', {6, 10}), s = create_md('s', 'r', {6, 10});
            for (const Node* node : {&d, &s}) {
                (*node)->placement = placement, (*node)->conjugate_even_storage = storage;
                set_strides(*node, {1, 8}, {1, 4});
                ASSERT_EQ(commit(*node), node_ok);
            }
            EXPECT_EQ(d->kernel_2d_forward_out, plane_out(half ? "xdzzdft2d" : "xdzdft2d"));
            EXPECT_EQ(d->kernel_2d_backward_out, plane_out(half ? "xzzddft2d" : "xzddft2d"));
            EXPECT_EQ(s->kernel_2d_forward_out, plane_out(half ? "xsccdft2d" : "xscdft2d"));
            EXPECT_EQ(s->kernel_2d_backward_out, plane_out(half ? "xccsdft2d" : "xcsdft2d"));
        }
    }
}

TEST(Chain, of_one_dimension_left_ends_as_one_dimension)
{
    for (const char domain : {'c', 'r'}) {
        const Node node = create_md('d', domain, {100, 1});
        if (domain == 'r') node->methods->set_scale(node.get(), 3, scale_of_forward);
        ASSERT_EQ(commit(node), node_ok);
        const std::string d = domain == 'c' ? "c2c" : "r2c";
        EXPECT_EQ(node->work_rank, domain == 'c' ? 1 : 2);
        EXPECT_EQ(node->compute_forward,
                  primitive<DftiCompute>("compute_fwd_d_" + d + (domain == 'c' ? "_1d_i" : "_md_i")));
    }
}

// ---- Plans for batches of columns

bool has_plans(const DftiNode* node) { return node->method != nullptr && node->method->commit == nullptr; }

TEST(Chain, plans_batches_of_columns_of_100_to_256_points)
{
    const auto planned = [](char precision, i64 n, i64 columns, u32 ordering = CFG_ORDERED) {
        const Node node = create_md(precision, 'c', {columns, n});
        node->ordering = ordering;
        EXPECT_EQ(commit(node), node_ok);
        EXPECT_FALSE(has_plans(node.get())) << "its columns are not side by side";
        return has_plans(dimension(node, 1));
    };
    EXPECT_TRUE(planned('d', 100, 12));
    EXPECT_TRUE(planned('d', 250, 12));
    EXPECT_FALSE(planned('d', 260, 12)) << "too long";
    EXPECT_TRUE(planned('d', 66, 12));
    EXPECT_FALSE(planned('d', 63, 12)) << "has a kernel of its own";
    EXPECT_FALSE(planned('d', 128, 12)) << "a power of two";
    EXPECT_FALSE(planned('d', 100, 256)) << "columns that meet in the cache";
    EXPECT_FALSE(planned('d', 100, 768));
    EXPECT_TRUE(planned('d', 100, 128));
    EXPECT_FALSE(planned('d', 100, 12, 49)) << "in any order";
    EXPECT_TRUE(planned('s', 100, 12));
    EXPECT_TRUE(planned('s', 63, 12));
    EXPECT_TRUE(planned('s', 250, 12));
    EXPECT_FALSE(planned('s', 260, 12));
    EXPECT_FALSE(planned('s', 196, 12));
}

i32 two() { return 2; }
i32 three() { return 3; }

TEST(Chain, plans_no_batches_of_singles_where_threads_would_divide_them_evenly)
{
    const auto planned = [](i32 (*threads)(), char precision, i64 n) {
        const Node node = create_md(precision, 'c', {12, n});
        ServicesScope services(node);
        services->max_threads = threads, services->dynamic_threads = nullptr;
        EXPECT_EQ(commit(node), node_ok);
        return has_plans(dimension(node, 1));
    };
    EXPECT_FALSE(planned(two, 's', 105)); // 104 / 2 is even
    EXPECT_TRUE(planned(two, 's', 99));   // 98 / 2 is odd
    EXPECT_TRUE(planned(three, 's', 100));
    EXPECT_FALSE(planned(three, 's', 98));
    EXPECT_TRUE(planned(two, 'd', 105));
}

TEST(Chain, plans_batches_where_the_first_strides_are_1_and_dimensions_are_above_it)
{
    const auto planned = [](const std::vector<i64>& input, const std::vector<i64>& output, u32 placement) {
        const Node node = create_md('d', 'c', {12, 100});
        node->placement = placement;
        set_strides(node, input, output);
        EXPECT_EQ(commit(node), node_ok);
        return has_plans(dimension(node, 1));
    };
    EXPECT_TRUE(planned({1, 12}, {1, 12}, CFG_IN_PLACE));
    EXPECT_TRUE(planned({1, 12}, {2, 24}, CFG_IN_PLACE));
    EXPECT_TRUE(planned({1, 256}, {1, 12}, CFG_OUT_OF_PLACE)) << "the columns are those of the output";
    EXPECT_FALSE(planned({1, 12}, {1, 256}, CFG_OUT_OF_PLACE));
    EXPECT_FALSE(planned({2, 24}, {2, 24}, CFG_IN_PLACE));
    EXPECT_FALSE(planned({1, 12}, {2, 24}, CFG_OUT_OF_PLACE));

    const Node several = create_1d('d', 'c', 100), apart = create_1d('d', 'c', 100);
    for (const Node* node : {&several, &apart}) set_batch(*node, 3, 100, 100);
    apart->placement = CFG_OUT_OF_PLACE;
    ASSERT_EQ(commit(several), node_ok);
    ASSERT_EQ(commit(apart), node_ok);
    EXPECT_TRUE(has_plans(several.get()));
    EXPECT_FALSE(has_plans(apart.get()));
}

TEST(Chain, has_plans_of_powers_of_two_up_to_the_columns)
{
    for (const i64 columns : {2, 5, 16, 48, 5000}) {
        const Node node = create_md('d', 'c', {columns, 100});
        ASSERT_EQ(commit(node), node_ok);
        const DftiNode* const d = dimension(node, 1);
        ASSERT_TRUE(has_plans(d));
        const auto& plans = *static_cast<const BatchPlans*>(d->method_data);
        for (int w = 0; w < BatchPlans::count; ++w) {
            const bool fits = i64{1} << w <= columns;
            EXPECT_EQ(plans.forward[w] != nullptr, fits) << columns << ' ' << w;
            EXPECT_EQ(plans.inverse[w] != nullptr, fits);
        }
        EXPECT_GT(plans.thread_bytes, 0);
    }
}

TEST(Chain, takes_as_many_columns_at_once_as_stay_in_cache)
{
    const auto widest = [](char precision, i64 n, i64 columns) {
        const Node node = create_md(precision, 'c', {columns, n});
        EXPECT_EQ(commit(node), node_ok);
        const DftiNode* const d = dimension(node, 1);
        return has_plans(d) ? static_cast<const BatchPlans*>(d->method_data)->widest : -1;
    };
    EXPECT_EQ(widest('d', 100, 12), 20);
    EXPECT_EQ(widest('d', 200, 12), 10);
    EXPECT_EQ(widest('d', 200, 48), 16) << "16 is the lowest bit of the columns";
    EXPECT_EQ(widest('d', 200, 32), 10);
    EXPECT_EQ(widest('s', 100, 12), 40);
    EXPECT_EQ(widest('s', 6, 12), 682);
}

i32 many() { return 1000; }

TEST(Chain, plans_no_batches_in_three_dimensions_whose_buffers_exceed_the_data)
{
    const auto planned = [](const std::vector<i64>& lengths, i32 (*threads)()) {
        const Node node = create_md('d', 'c', lengths);
        ServicesScope services(node);
        services->max_threads = threads, services->dynamic_threads = nullptr;
        EXPECT_EQ(commit(node), node_ok);
        const DftiNode* const last = dimension(node, static_cast<int>(lengths.size()) - 1);
        EXPECT_EQ(last->kernel_d_forward, named("xymps_fwd_64fc"));
        return has_plans(last);
    };
    EXPECT_TRUE(planned({24, 24, 100}, two));
    EXPECT_FALSE(planned({24, 24, 100}, many));
    EXPECT_TRUE(planned({24 * 24, 100}, many));
}

// ---- Real transforms

TEST(Chain, of_reals_begins_with_a_codelet_or_the_engine)
{
    for (const i64 n : {2, 4, 8, 16, 32, 64, 128, 24, 100, 1, 7}) {
        const bool few = n > 1 && n <= 64 && (n & (n - 1)) == 0;
        const std::string size = std::to_string(n);
        const Node d = create_1d('d', 'r', n), s = create_1d('s', 'r', n), strided = create_1d('d', 'r', n);
        set_strides(strided, {2}, {2});
        for (const Node* node : {&d, &s, &strided}) ASSERT_EQ(commit(*node), node_ok) << n;
        EXPECT_EQ(d->kernel_rd_forward, named(few ? "xd_f" + size + "_1df" : "xymps_fwd_rtocomplex_64f")) << n;
        EXPECT_EQ(d->kernel_rd_backward, named(few ? "xd_f" + size + "_1db" : "xymps_inv_complextor_64f"));
        EXPECT_EQ(s->kernel_rs_forward, named(few ? "xs_f" + size + "_1df" : "xymps_fwd_rtocomplex_32f"));
        EXPECT_EQ(s->kernel_rs_backward, named(few ? "xs_f" + size + "_1db" : "xymps_inv_complextor_32f"));
        EXPECT_EQ(d->use_engine, u32{!few});
        EXPECT_EQ(d->spec_r_64f != nullptr, !few);
        EXPECT_EQ(strided->kernel_rd_forward, named("xymps_fwd_rtocomplex_64f"));
        EXPECT_EQ(d->compute_forward, primitive<DftiCompute>("compute_fwd_d_r2c_1d_i"));
        EXPECT_EQ(s->compute_backward, primitive<DftiCompute>("compute_bwd_s_r2c_1d_i"));
    }
}

TEST(Chain, of_singles_in_several_dimensions_has_codelets_to_32)
{
    for (const auto& [n, few] : {std::pair<i64, bool>{32, true}, {64, false}}) {
        const Node s = create_md('s', 'r', {n, 3}), d = create_md('d', 'r', {n, 3});
        ASSERT_EQ(commit(s), node_ok);
        ASSERT_EQ(commit(d), node_ok);
        EXPECT_EQ(s->use_engine, u32{!few});
        EXPECT_EQ(d->use_engine, 0u);
    }
}

TEST(Chain, of_reals_has_the_primitives_of_the_packed_format)
{
    const auto primitive_of = [](const char* name) {
        return reinterpret_cast<DftiPrimitive*>(kernel_address("dft", name));
    };
    const struct {
        u32 format, storage;
        const char *forward, *backward;
    } cases[] = {
        {CFG_CCS, CFG_STORE_PACKED, "ympsDFTFwd_RToCCS_64f", "ympsDFTInv_CCSToR_64f"},
        {CFG_PACK, CFG_STORE_PACKED, "ympsDFTFwd_RToPack_64f", "workaround_for_DFTInv_RPack_64f"},
        {CFG_PERM, CFG_STORE_PACKED, "ympsDFTFwd_RToPerm_64f", "ympsDFTInv_PermToR_64f"},
        {CFG_PACK, CFG_STORE_COMPLEX, "ympsDFTFwd_RToCCS_64f", "ympsDFTInv_CCSToR_64f"},
        {CFG_CCE, CFG_STORE_COMPLEX, "ympsDFTFwd_RToCCS_64f", "ympsDFTInv_CCSToR_64f"},
    };
    for (const auto& c : cases) {
        const Node node = create_1d('d', 'r', 100);
        node->packed_format = c.format, node->conjugate_even_storage = c.storage;
        ASSERT_EQ(commit(node), node_ok);
        EXPECT_EQ(node->ymp_rd_forward, primitive_of(c.forward)) << c.forward;
        EXPECT_EQ(node->ymp_rd_backward, primitive_of(c.backward)) << c.backward;
    }
    const Node unpacked = create_md('d', 'r', {100});
    unpacked->packed_format = CFG_CCE;
    EXPECT_EQ(commit(unpacked), node_unsupported);
    EXPECT_EQ(unpacked->commit_status, u32{CFG_UNCOMMITTED});
}

TEST(Chain, of_reals_goes_on_with_complex_dimensions)
{
    const Node node = create_md('d', 'r', {10, 12, 66});
    node->conjugate_even_storage = CFG_STORE_COMPLEX, node->placement = CFG_OUT_OF_PLACE;
    set_strides(node, {1, 10, 120}, {1, 6, 72});
    set_scales(node, 0.5, 2);
    ASSERT_EQ(commit(node), node_ok);
    EXPECT_EQ(node->compute_forward, primitive<DftiCompute>("compute_fwd_d_r2c_md_o"));
    EXPECT_EQ(node->ccs_row_split, 1u);
    EXPECT_EQ(dimension(node, 1)->kernel_d_forward, small_radix("zsmallradix_forward", 12));
    EXPECT_EQ(dimension(node, 2)->kernel_d_forward, named("xymps_fwd_64fc"));
    EXPECT_NE(dimension(node, 1)->spec_c_64fc, nullptr);
    EXPECT_EQ(node->total_half_size, 6 * 12 * 66);
}

TEST(Chain, of_reals_is_in_order_even_if_it_need_not_be)
{
    const Node node = create_md('d', 'r', {10, 100});
    node->ordering = 49;
    ASSERT_EQ(commit(node), node_ok);
    EXPECT_EQ(dimension(node, 1)->kernel_d_forward, named("xymps_fwd_64fc"));
    EXPECT_NE(dimension(node, 1)->spec_c_64fc, nullptr);
}

TEST(Chain, of_packed_reals_ends_at_two_dimensions)
{
    for (const char p : {'d', 's'}) {
        const Node three = create_md(p, 'r', {4, 12, 6});
        EXPECT_EQ(commit(three), node_unsupported);
        EXPECT_EQ(three->commit_status, u32{CFG_UNCOMMITTED});
        three->conjugate_even_storage = CFG_STORE_COMPLEX, three->placement = CFG_OUT_OF_PLACE;
        EXPECT_EQ(commit(three), node_ok);
    }
}

TEST(Chain, of_reals_in_place_has_strides_and_offsets_of_pairs_on_one_side)
{
    const auto status = [](i64 in_offset, i64 out_offset, i64 in_stride, i64 out_stride) {
        const Node node = create_md('s', 'r', {6, 5});
        node->conjugate_even_storage = CFG_STORE_COMPLEX;
        set_strides(node, {1, in_stride}, {1, out_stride});
        node->input_offset = in_offset, node->output_offset = out_offset;
        return commit(node);
    };
    EXPECT_EQ(status(0, 0, 8, 4), node_ok);
    EXPECT_EQ(status(0, 0, 4, 8), node_ok);
    EXPECT_EQ(status(2, 1, 8, 4), node_ok);
    EXPECT_EQ(status(1, 2, 8, 4), node_ok);
    EXPECT_EQ(status(0, 0, 8, 8), node_inconsistent);
    EXPECT_EQ(status(0, 0, 8, 5), node_inconsistent);
    EXPECT_EQ(status(1, 1, 8, 4), node_inconsistent);
    EXPECT_EQ(status(0, 1, 8, 4), node_inconsistent);
}

// ---- Failures and repetition

TEST(Chain, beyond_the_engine_fails_where_nobody_stands_behind_it)
{
    const i64 prime_like = (i64{1} << 24) + 43; // a prime
    const Node several = create_md('d', 'c', {prime_like, 2});
    EXPECT_EQ(commit(several), node_too_long);
    EXPECT_EQ(several->commit_status, u32{CFG_UNCOMMITTED});
    EXPECT_EQ(several->next, nullptr);
    const Node strided = create_1d('d', 'c', prime_like);
    set_strides(strided, {2}, {2});
    EXPECT_EQ(commit(strided), node_inconsistent) << "the next method does not apply";
}

TEST(Chain, without_memory_fails_and_commits_again)
{
    const auto try_all = [](const Node& node) {
        i32 status = node_ok;
        each_allocation_fails(
            [&] {
                status = commit(node);
                node->uncommit(node.get());
            },
            [&] {
                EXPECT_EQ(status, probe().failed != 0 ? node_no_memory : node_ok);
                EXPECT_EQ(node->method, nullptr);
                EXPECT_EQ(node->next, nullptr);
            });
        EXPECT_EQ(commit(node), node_ok);
    };
    try_all(general('d', 100));
    try_all(create_md('d', 'c', {12, 100, 17}));
    try_all(create_md('s', 'c', {12, 100, 64}));
    try_all(create_md('s', 'r', {12, 100}));
    try_all(create_1d('d', 'r', 100));
}

TEST(Chain, is_made_anew_by_every_commit)
{
    ProbeScope memory;
    Node node = create_md('d', 'c', {12, 100, 17});
    const i64 before = memory->live;
    ASSERT_EQ(commit(node), node_ok);
    const i64 committed = memory->live;
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(commit(node), node_ok);
        EXPECT_EQ(memory->live, committed);
    }
    set_scales(node, 2, 1);
    EXPECT_EQ(memory->live, before);
    ASSERT_EQ(commit(node), node_ok);
    node.reset();
    EXPECT_EQ(memory->live, 0);
}

} // namespace
} // namespace orv::test
