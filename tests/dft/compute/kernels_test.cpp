// Kernels over the engine on nodes made by hand: the primitive that is called, the scale, what becomes of a failure;
// and rows between packed formats and pairs.
#include "tests/dft/compute/problem.h"

namespace orv::test {
namespace {

template <class R> std::string width() { return sizeof(R) == 4 ? "32" : "64"; }

template <class R> class Kernels : public testing::Test {
};
using Reals = testing::Types<float, double>;
TYPED_TEST_SUITE(Kernels, Reals);

DftiNode node_of(i64 n)
{
    DftiNode node{};
    node.length = n;
    node.work_rank = 1;
    node.committed_forward_scale = node.committed_backward_scale = 1;
    node.conjugate_even_storage = CFG_STORE_PACKED;
    node.packed_format = CFG_PACK;
    node.placement = CFG_OUT_OF_PLACE;
    return node;
}

TYPED_TEST(Kernels, of_pairs_scale_the_output_even_after_a_failed_primitive)
{
    using R = TypeParam;
    for (const auto& [stem, forward] :
         {std::pair{"fwd", true}, {"inv", false}, {"fwd_rev", true}, {"inv_rev", false}}) {
        DftiNode node = node_of(7); // has no specification, so that every primitive refuses
        (forward ? node.committed_forward_scale : node.committed_backward_scale) = 0.5;
        std::vector<cpx<R>> in(7), out(8, {R(2), R(4)});
        EXPECT_EQ(primitive<DftiKernel>(std::string("xymps_") + stem + "_" + width<R>() + "fc")(in.data(), out.data(),
                                                                                                &node, nullptr),
                  node_internal_error);
        for (int i = 0; i < 7; ++i) EXPECT_EQ(out[i], (cpx<R>{R(1), R(2)})) << stem;
        EXPECT_EQ(out[7], (cpx<R>{R(2), R(4)})) << stem;
    }
}

TYPED_TEST(Kernels, of_two_arrays_scale_both)
{
    using R = TypeParam;
    for (const auto& [stem, forward] : {std::pair{"fwd", true}, {"inv", false}}) {
        DftiNode node = node_of(5);
        (forward ? node.committed_forward_scale : node.committed_backward_scale) = 0.5;
        std::vector<R> in(5), re(6, R(2)), im(6, R(4));
        const R* from[] = {in.data(), in.data()};
        R* to[] = {re.data(), im.data()};
        EXPECT_EQ(
            primitive<DftiKernel>(std::string("xymps_") + stem + "_" + width<R>() + "f")(from, to, &node, nullptr),
            node_internal_error);
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(re[i], R(1));
            EXPECT_EQ(im[i], R(2));
        }
        EXPECT_EQ(re[5], R(2));
        EXPECT_EQ(im[5], R(4));
    }
}

// Stands for the primitive that commit chooses by the format: leaves twos, ends with the status it is told.
i32 told_status;
template <class R> i32 twos(const void*, void* dst, const YmpDftSpec*, t_8u*)
{
    std::fill_n(static_cast<R*>(dst), 10, R(2));
    return told_status;
}
template <class R> DftiKernel* real_kernel(bool forward)
{
    return primitive<DftiKernel>((forward ? "xymps_fwd_rtocomplex_" : "xymps_inv_complextor_") + width<R>() + "f");
}
template <class R> void set_primitives(DftiNode& node)
{
    if constexpr (sizeof(R) == 4) node.ymp_rs_forward = node.ymp_rs_backward = twos<float>;
    else node.ymp_rd_forward = node.ymp_rd_backward = twos<double>;
}
template <class R> i64 scaled_elements(bool forward, DftiNode& node)
{
    set_primitives<R>(node);
    node.committed_forward_scale = node.committed_backward_scale = 0.5;
    std::vector<R> in(10), out(10);
    EXPECT_EQ(real_kernel<R>(forward)(in.data(), out.data(), &node, nullptr), told_status == 0 ? node_ok
                                                                              : told_status == -9
                                                                                  ? node_no_memory
                                                                                  : node_internal_error);
    return std::count(out.begin(), out.end(), R(1));
}

TYPED_TEST(Kernels, to_half_spectra_scale_one_more_where_the_format_has_its_zeros)
{
    using R = TypeParam;
    DftiNode node = node_of(6);
    for (const i32 status : {0, -9, -5}) {
        told_status = status;
        node.conjugate_even_storage = CFG_STORE_PACKED;
        for (const auto& [format, elements] : {std::pair{CFG_PACK, 6}, {CFG_PERM, 6}, {CFG_CCS, 7}}) {
            node.packed_format = format;
            EXPECT_EQ(scaled_elements<R>(true, node), elements);
            EXPECT_EQ(scaled_elements<R>(false, node), 6);
        }
        node.packed_format = CFG_PACK, node.conjugate_even_storage = CFG_STORE_COMPLEX;
        EXPECT_EQ(scaled_elements<R>(true, node), 7);
    }
    told_status = 0;
}

TYPED_TEST(Kernels, back_to_reals_clear_the_last_slot_of_CCS_in_place_alone)
{
    using R = TypeParam;
    for (const u32 format : {CFG_CCS, CFG_PACK})
        for (const u32 placement : {CFG_IN_PLACE, CFG_OUT_OF_PLACE}) {
            DftiNode node = node_of(6);
            set_primitives<R>(node);
            node.packed_format = format, node.placement = placement;
            std::vector<R> data(10);
            ASSERT_EQ(real_kernel<R>(false)(data.data(), data.data(), &node, nullptr), node_ok);
            EXPECT_EQ(data[6], format == CFG_CCS && placement == CFG_IN_PLACE ? R(0) : R(2));
        }
}

TYPED_TEST(Kernels, back_to_reals_read_rows_that_were_kept_apart_as_Perm)
{
    using R = TypeParam;
    for (const u32 format : {CFG_CCS, CFG_PACK})
        for (const u32 storage : {CFG_STORE_PACKED, CFG_STORE_COMPLEX})
            for (const i32 rank : {1, 2}) {
                DftiNode node = node_of(6); // has no specification: the engine's own primitive refuses
                set_primitives<R>(node);
                node.packed_format = format, node.conjugate_even_storage = storage, node.work_rank = rank;
                std::vector<R> data(10);
                const bool apart = rank == 2 && (format == CFG_CCS || storage == CFG_STORE_COMPLEX);
                EXPECT_EQ(real_kernel<R>(false)(data.data(), data.data(), &node, nullptr),
                          apart ? node_internal_error : node_ok);
            }
}

// Commit plans batches for the columns of a node as they lie. Other columns go by blocks, as rows do.
TYPED_TEST(Kernels, of_many_lines_take_plans_of_batches_for_the_planned_stride_alone)
{
    using R = TypeParam;
    const i64 n = 70, planned = 6, stride = 9;
    const Node node = create_md(precision_letter<R>, 'c', {planned, n});
    ASSERT_EQ(commit(node), node_ok);
    DftiNode* const columns = node->next;
    ASSERT_NE(columns->method, nullptr);
    std::vector<cpx<R>> data = random_array<cpx<R>>(stride * n, 21), expected = data;
    DftiKernel* kernel;
    if constexpr (sizeof(R) == 4) kernel = columns->kernel_s_forward;
    else kernel = columns->kernel_d_forward;
    std::vector<cpx<R>> buffer(static_cast<std::size_t>(16 * n));
    auto* const lines = primitive<DftCopyAndTransform<cpx<R>>>(std::string("x") + letter<cpx<R>> + "dft1d_copy");
    auto* const rows =
        primitive<DftCopyAndTransformOut<cpx<R>, cpx<R>>>(std::string("x") + letter<cpx<R>> + "dft1d_out_copy");
    ASSERT_EQ(lines(data.data(), stride, kernel, columns, planned, 1, buffer.data(), 3, nullptr), node_ok);
    for (i64 c = 0; c < planned; ++c) {
        std::vector<cpx<R>> line(static_cast<std::size_t>(n)), result = line;
        for (i64 i = 0; i < n; ++i) line[i] = expected[c + i * stride];
        ASSERT_EQ(rows(line.data(), 1, result.data(), 1, kernel, columns, 1, n, n, nullptr, 0, nullptr), node_ok);
        for (i64 i = 0; i < n; ++i) expected[c + i * stride] = result[i];
    }
    EXPECT_TRUE(same_bits(data.data(), expected.data(), stride * n));
}

TYPED_TEST(Kernels, rows_go_from_any_packed_format_to_pairs_and_back_in_place_too)
{
    using R = TypeParam;
    const bool single = sizeof(R) == 4;
    auto* const unpack = primitive<UnpackRow<R>>(single ? "c_complex_for_real_by_row" : "d_complex_for_real_by_row");
    auto* const pack = primitive<PackRow<R>>(single ? "cs_complex_for_real_by_row" : "zd_complex_for_real_by_row");
    for (const auto& [storage, format] :
         {std::pair{Storage::CCS, CFG_CCS}, {Storage::PACK, CFG_PACK}, {Storage::PERM, CFG_PERM}})
        for (i64 n = 1; n <= 9; ++n) {
            const i64 half = n / 2 + 1, row = packed_row(storage, n);
            std::vector<R> packed(static_cast<std::size_t>(row), R(0));
            std::vector<cpx<R>> pairs(static_cast<std::size_t>(half));
            for (i64 k = 0; k < half; ++k) {
                const Place at = packed_place(storage, n, k);
                pairs[k] = {R(k + 1), at.im < 0 || k == 0 ? R(0) : R(-k)};
                packed[at.re] = pairs[k].re;
                if (at.im >= 0) packed[at.im] = pairs[k].im;
            }
            std::vector<cpx<R>> unpacked(pairs.size());
            unpack(n, format, packed.data(), unpacked.data());
            EXPECT_EQ(unpacked, pairs) << name_of(storage) << " n=" << n;
            std::vector<R> again(packed.size(), R(-1));
            pack(n, format, pairs.data(), again.data());
            EXPECT_EQ(again, packed) << name_of(storage) << " n=" << n;

            std::vector<cpx<R>> both(static_cast<std::size_t>(half));
            std::copy(packed.begin(), packed.end(), &both[0].re);
            unpack(n, format, &both[0].re, both.data());
            EXPECT_EQ(both, pairs) << name_of(storage) << " in place n=" << n;
            pack(n, format, both.data(), &both[0].re);
            EXPECT_TRUE(same_bits(&both[0].re, packed.data(), row)) << name_of(storage) << " in place n=" << n;
        }
}

} // namespace
} // namespace orv::test
