// What nodes ask of the primitive engine, and kernels of few points.
#include "tests/dft/dft/general.h"
#include "tests/dft/node/node.h"

namespace orv::test {
namespace {

namespace k = kernels::dft;

TEST(NodeEngine, gives_its_statuses_the_meaning_of_nodes)
{
    const auto transfer = kernel<k::transfer_ymp_orv_error>();
    EXPECT_EQ(transfer(0), 0);
    EXPECT_EQ(transfer(-9), 1);
    for (const i32 status : {-6, -8, -15, -16, -17, 1, 7}) EXPECT_EQ(transfer(status), 7) << status;
}

TEST(NodeEngine, applies_the_scales_that_records_know)
{
    const auto can = kernel<k::ymp_can_scale>();
    for (const i64 n : {2, 3, 10, 64, 100, 1000}) {
        const Node node = create_1d('d', 'c', n);
        const double by_n = 1.0 / static_cast<double>(n), root = 1.0 / std::sqrt(static_cast<double>(n));
        const struct {
            double forward, backward;
            i32 flag;
        } cases[] = {{1, 1, 8}, {by_n, 1, 1}, {1, by_n, 2}, {root, root, 4}, {by_n, by_n, 0}, {2, 1, 0}, {root, 1, 0}};
        for (const auto& c : cases) {
            set_scales(node, c.forward, c.backward);
            i32 flag = -1;
            EXPECT_EQ(can(node.get(), &flag), c.flag != 0) << n << ' ' << c.forward << ' ' << c.backward;
            EXPECT_EQ(flag, c.flag);
            EXPECT_EQ(can(node.get(), nullptr), c.flag != 0);
        }
    }
}

struct Initialiser {
    const char* name;
    char precision, domain;
    YmpDftSpec* DftiNode::*spec;
    i64 limit; // of lengths other than powers of two
};
const Initialiser initialisers[] = {
    {"ymp_init_d_c2c", 'd', 'c', &DftiNode::spec_c_64fc, i64{1} << 24},
    {"ymp_init_s_c2c", 's', 'c', &DftiNode::spec_c_32fc, i64{1} << 25},
    {"ymp_init_d_ri2ri", 'd', 'c', &DftiNode::spec_c_64f, i64{1} << 24},
    {"ymp_init_s_ri2ri", 's', 'c', &DftiNode::spec_c_32f, i64{1} << 25},
    {"ymp_init_d_r2c", 'd', 'r', &DftiNode::spec_r_64f, i64{1} << 24},
    {"ymp_init_s_r2c", 's', 'r', &DftiNode::spec_r_32f, i64{1} << 25},
    {"z_ymp_real_init", 'd', 'r', &DftiNode::spec_r_64f, i64{1} << 24},
    {"c_ymp_real_init", 's', 'r', &DftiNode::spec_r_32f, i64{1} << 25},
};

TEST(NodeEngine, makes_the_record_of_a_node_without_scale)
{
    for (const Initialiser& i : initialisers) {
        const Node node = create_1d(i.precision, i.domain, 1000);
        node->length = 1000;
        ASSERT_EQ(primitive<YmpInit>(i.name)(node.get(), node.get()), node_ok) << i.name;
        const YmpDftSpec* const spec = node.get()->*i.spec;
        ASSERT_NE(spec, nullptr) << i.name;
        EXPECT_EQ(spec->length, 1000);
        EXPECT_EQ(spec->scale_forward + spec->scale_inverse, 0);
        EXPECT_EQ(node->node_buffer_bytes, spec->buffer_bytes + 64) << "room to reach a boundary";
    }
}

TEST(NodeEngine, is_not_asked_for_lengths_beyond_its_limits)
{
    for (const Initialiser& i : initialisers)
        for (const i64 n : {i.limit + 1, i.limit + 2, 8 * i.limit, i64{1} << 40, (i64{1} << 40) + 3}) {
            const Node node = create_1d(i.precision, i.domain, n);
            DftiNode chained{};
            node->length = n;
            node->next = &chained;
            ProbeScope memory;
            EXPECT_EQ(primitive<YmpInit>(i.name)(node.get(), node.get()), node_too_long) << i.name << ' ' << n;
            EXPECT_EQ(memory->allocations, 0) << "the limit comes before any memory";
            EXPECT_EQ(node->next, nullptr);
            EXPECT_EQ(node.get()->*i.spec, nullptr);
        }
}

TEST(NodeEngine, takes_the_head_along_when_memory_is_missing)
{
    for (const Initialiser& i : initialisers) {
        const Node node = create_1d(i.precision, i.domain, 1000);
        node->length = 1000;
        i32 status = node_ok;
        each_allocation_fails(
            [&] {
                node->commit_status = CFG_COMMITTED;
                status = primitive<YmpInit>(i.name)(node.get(), node.get());
                if (status == node_ok) node->uncommit(node.get());
            },
            [&] {
                EXPECT_EQ(status, probe().failed != 0 ? node_no_memory : node_ok) << i.name;
                EXPECT_EQ(node->commit_status, u32{CFG_UNCOMMITTED});
            });
    }
}

TEST(NodeEngine, has_a_record_of_its_own_for_spectra_in_any_order)
{
    for (const char p : {'d', 's'}) {
        const Node node = create_1d(p, 'c', 100);
        node->length = 100, node->ordering = 49;
        ASSERT_EQ(primitive<YmpInit>(std::string("ymp_init_") + p + "_c2c")(node.get(), node.get()), node_ok);
        EXPECT_NE(p == 'd' ? node->spec_outord_64fc : node->spec_outord_32fc, nullptr);
        EXPECT_EQ(p == 'd' ? node->spec_c_64fc : node->spec_c_32fc, nullptr);
    }
}

TEST(NodeEngine, notes_that_rows_of_a_real_backward_plane_are_kept_apart)
{
    for (const Initialiser& i : initialisers) {
        if (i.name[2] != 'y') continue; // z_ymp_real_init, c_ymp_real_init
        for (const u32 placement : {CFG_IN_PLACE, CFG_OUT_OF_PLACE})
            for (const i32 rank : {1, 2, 3})
                for (const u32 format : {CFG_CCS, CFG_PACK, CFG_PERM, CFG_CCE}) {
                    const Node node = create_1d(i.precision, i.domain, 24);
                    node->length = 24, node->work_rank = rank;
                    node->placement = placement, node->packed_format = format;
                    ASSERT_EQ(primitive<YmpInit>(i.name)(node.get(), node.get()), node_ok);
                    const bool apart =
                        placement == CFG_OUT_OF_PLACE && rank > 1 && (format == CFG_CCS || format == CFG_CCE);
                    EXPECT_EQ(node->ccs_row_split, u32{apart}) << i.name << ' ' << rank << ' ' << format;
                }
    }
}

// ---- The way back from Pack

template <class R> void expect_pack_to_go_back()
{
    const std::string t = token<R>();
    const auto inverse = primitive<PackInverse<R>>("workaround_for_DFTInv_RPack_" + t);
    const auto direct = primitive<Dft<R>>("ympsDFTInv_PackToR_" + t);
    for (i32 n = 1; n <= 70; ++n) {
        YmpDftSpec* spec = nullptr;
        ASSERT_EQ(primitive<DftInitAlloc>("ympsDFTInitAlloc_R_" + t)(&spec, n, scale_none, 0), 0);
        const auto packed = random_array<R>(n, static_cast<std::uint64_t>(n));
        std::vector<R> expected(static_cast<std::size_t>(n)), apart(expected), in_place = packed;
        ASSERT_EQ(direct(packed.data(), expected.data(), spec, nullptr), 0);
        EXPECT_EQ(inverse(packed.data(), apart.data(), spec, nullptr), 0);
        EXPECT_EQ(inverse(in_place.data(), in_place.data(), spec, nullptr), 0);
        double off = 0;
        for (i32 i = 0; i < n; ++i) off = std::max<double>(off, std::abs(apart[i] - expected[i]));
        EXPECT_LE(off, 8 * n * std::numeric_limits<R>::epsilon()) << n;
        EXPECT_TRUE(same_bits(in_place.data(), apart.data(), n)) << n;
        primitive<DftFree>("ympsDFTFree_R_" + t)(spec);
    }
}
TEST(NodeEngine, turns_pack_to_perm_for_its_way_back)
{
    expect_pack_to_go_back<float>();
    expect_pack_to_go_back<double>();
}

// ---- Codelets

template <class R> Node node_with_codelets(i64 n, u32 format, u32 storage = CFG_STORE_PACKED)
{
    Node node = create_1d(precision_letter<R>, 'r', n);
    node->length = n;
    node->committed_forward_scale = node->committed_backward_scale = 1;
    node->packed_format = format, node->conjugate_even_storage = storage;
    for (const char direction : {'f', 'b'})
        primitive<SetCodelet>(std::string("set_codelet_") + precision_letter<R> + direction)(node.get());
    return node;
}
template <class R> DftiKernel* forward_of(const Node& node)
{
    return sizeof(R) == 4 ? node->kernel_rs_forward : node->kernel_rd_forward;
}
template <class R> DftiKernel* backward_of(const Node& node)
{
    return sizeof(R) == 4 ? node->kernel_rs_backward : node->kernel_rd_backward;
}
template <class R> constexpr double tolerance = 16 * std::numeric_limits<R>::epsilon();

// How the n reals of a format hold X[k]; the whole spectrum follows from that.
template <class R> std::vector<R> packed(const std::vector<QuadPair>& x, u32 format)
{
    const std::size_t n = x.size();
    const auto re = [&](std::size_t k) { return static_cast<R>(x[k].re); };
    std::vector<R> p;
    if (format == CFG_CCS) {
        for (std::size_t k = 0; k <= n / 2; ++k) p.push_back(re(k)), p.push_back(static_cast<R>(x[k].im));
        p[1] = p[n + 1] = 0;
        return p;
    }
    p.push_back(re(0));
    if (format == CFG_PERM) p.push_back(re(n / 2));
    for (std::size_t k = 1; k < n / 2; ++k) p.push_back(re(k)), p.push_back(static_cast<R>(x[k].im));
    if (format == CFG_PACK) p.push_back(re(n / 2));
    return p;
}

template <class R> void expect_near(const R* a, const std::vector<R>& b, double scale, const char* what, i64 n)
{
    for (std::size_t i = 0; i < b.size(); ++i)
        EXPECT_NEAR(a[i], b[i] * scale, tolerance<R> * static_cast<double>(n)) << what << ' ' << n << ' ' << i;
}

template <class R> void expect_real_codelets()
{
    for (i64 n = 2; n <= 64; n *= 2) {
        const auto reals = random_array<R>(n, static_cast<std::uint64_t>(n));
        const auto roots = quad_roots(n);
        std::vector<QuadPair> spectrum;
        for (i64 i = 0; i < n; ++i) spectrum.push_back(point(reals, roots, i));
        for (const u32 format : {CFG_CCS, CFG_PACK, CFG_PERM}) {
            const Node node = node_with_codelets<R>(n, format);
            const auto expected = packed<R>(spectrum, format);
            const i64 values = static_cast<i64>(expected.size());
            std::vector<R> back(static_cast<std::size_t>(n));
            for (const double scale : {1.0, 0.25}) {
                node->committed_forward_scale = scale, node->committed_backward_scale = 1 / (scale * n);
                // In place, at the end of a page; and apart, where the input stays.
                Guarded<R> data(values), apart(values);
                const std::vector<R> before = reals;
                std::copy(reals.begin(), reals.end(), data.data());
                ASSERT_EQ(forward_of<R>(node)(data.data(), data.data(), node.get(), nullptr), 0);
                expect_near(data.data(), expected, scale, "forward", n);
                std::vector<R> input = reals;
                ASSERT_EQ(forward_of<R>(node)(input.data(), apart.data(), node.get(), nullptr), 0);
                EXPECT_TRUE(same_bits(apart.data(), data.data(), values));
                EXPECT_EQ(input, before);

                node->placement = CFG_OUT_OF_PLACE;
                ASSERT_EQ(backward_of<R>(node)(apart.data(), back.data(), node.get(), nullptr), 0);
                EXPECT_TRUE(same_bits(apart.data(), data.data(), values)) << "the input of " << n;
                expect_near(back.data(), reals, 1, "backward", n);
                node->placement = CFG_IN_PLACE;
                ASSERT_EQ(backward_of<R>(node)(data.data(), data.data(), node.get(), nullptr), 0);
                EXPECT_TRUE(same_bits(data.data(), back.data(), n));
                if (format == CFG_CCS) {
                    EXPECT_EQ(data.data()[n], 0);
                }
            }
        }
    }
}
TEST(Codelets, transform_2_to_64_reals_in_every_format_with_the_scale)
{
    expect_real_codelets<float>();
    expect_real_codelets<double>();
}

TEST(Codelets, are_chosen_by_length)
{
    for (const i64 n : {2, 4, 8, 16, 32, 64}) {
        const std::string size = std::to_string(n);
        const Node d = node_with_codelets<double>(n, CFG_CCS), s = node_with_codelets<float>(n, CFG_CCS);
        EXPECT_EQ(d->kernel_rd_forward, primitive<DftiKernel>("xd_f" + size + "_1df"));
        EXPECT_EQ(d->kernel_rd_backward, primitive<DftiKernel>("xd_f" + size + "_1db"));
        EXPECT_EQ(s->kernel_rs_forward, primitive<DftiKernel>("xs_f" + size + "_1df"));
        EXPECT_EQ(s->kernel_rs_backward, primitive<DftiKernel>("xs_f" + size + "_1db"));
        const Node c = create_1d('s', 'c', n);
        c->length = n;
        kernel<k::set_codelet_cf>()(c.get());
        kernel<k::set_codelet_cb>()(c.get());
        EXPECT_EQ(c->kernel_s_forward, n > 4 ? nullptr : primitive<DftiKernel>("xc_f" + size + "_1df"));
        EXPECT_EQ(c->kernel_s_backward, n > 4 ? nullptr : primitive<DftiKernel>("xc_f" + size + "_1db"));
    }
}

TEST(Codelets, read_perm_where_rows_are_kept_apart)
{
    const i64 n = 16;
    const auto reals = random_array<double>(n, 1);
    const Node perm = node_with_codelets<double>(n, CFG_PERM), ccs = node_with_codelets<double>(n, CFG_CCS);
    ccs->placement = CFG_OUT_OF_PLACE, ccs->work_rank = 2;
    kernel<k::set_codelet_db>()(ccs.get());
    ASSERT_EQ(ccs->ccs_row_split, 1u);
    std::vector<double> row(reals), a(n), b(n);
    perm->kernel_rd_backward(row.data(), a.data(), perm.get(), nullptr);
    ccs->kernel_rd_backward(row.data(), b.data(), ccs.get(), nullptr);
    EXPECT_EQ(a, b);
}

TEST(Codelets, hold_pairs_where_the_half_spectrum_is_complex_whatever_the_format)
{
    const i64 n = 8;
    const auto reals = random_array<double>(n, 1);
    const Node ccs = node_with_codelets<double>(n, CFG_CCS);
    for (const u32 format : {CFG_PACK, CFG_PERM, CFG_CCE}) {
        const Node half = node_with_codelets<double>(n, format, CFG_STORE_COMPLEX);
        std::vector<double> in(reals), a(n + 2), b(n + 2);
        ccs->kernel_rd_forward(in.data(), a.data(), ccs.get(), nullptr);
        half->kernel_rd_forward(in.data(), b.data(), half.get(), nullptr);
        EXPECT_EQ(a, b);
    }
}

TEST(Codelets, transform_2_and_4_pairs)
{
    using T = cpx<float>;
    for (const i64 n : {2, 4}) {
        const Node node = create_1d('s', 'c', n);
        node->length = n;
        kernel<k::set_codelet_cf>()(node.get());
        kernel<k::set_codelet_cb>()(node.get());
        auto x = random_array<T>(n, static_cast<std::uint64_t>(n));
        const auto roots = quad_roots(n);
        for (const double scale : {1.0, 0.5}) {
            node->committed_forward_scale = scale, node->committed_backward_scale = 1 / (scale * n);
            std::vector<T> y(x.size()), back(x.size());
            ASSERT_EQ(node->kernel_s_forward(x.data(), y.data(), node.get(), nullptr), 0);
            for (i64 i = 0; i < n; ++i) {
                const QuadPair p = point(x, roots, i);
                EXPECT_NEAR(y[i].re, static_cast<double>(p.re) * scale, tolerance<float>);
                EXPECT_NEAR(y[i].im, static_cast<double>(p.im) * scale, tolerance<float>);
            }
            ASSERT_EQ(node->kernel_s_backward(y.data(), back.data(), node.get(), nullptr), 0);
            for (i64 i = 0; i < n; ++i) EXPECT_NEAR(back[i].re, x[i].re, tolerance<float>);
            for (i64 i = 0; i < n; ++i) EXPECT_NEAR(back[i].im, x[i].im, tolerance<float>);
        }
    }
}

} // namespace
} // namespace orv::test
