// The general path of real transforms: the first dimension goes between reals and half a spectrum, the others are
// complex.
#include "dft/chain.h"

namespace orv::dft {
namespace {

// In place a half spectrum lies over the reals, so whatever counts pairs on one side counts reals on the other.
bool is_half(i64 a, i64 b) { return a == 2 * b || b == 2 * a; }
bool inconsistent_ri_cce(const DftiNode& head)
{
    if (!is_half(head.input_offset, head.output_offset)) return true;
    for (i32 k = 1; k < head.work_rank; ++k) {
        const IotensorDim& d = head.work_lengths.dims[k];
        if (!is_half(d.is, d.os)) return true;
    }
    return false;
}

// The primitives of a layout, which nodes call without knowing its type.
template <class F> DftiPrimitive* untyped(F& f) { return reinterpret_cast<DftiPrimitive*>(&f); }
template <class R> struct Primitives;
#define ORV_DFT_PRIMITIVES(t)                                                                                          \
    template <> struct Primitives<t_##t> {                                                                             \
        static constexpr auto &to_ccs = DFT(ympsDFTFwd_RToCCS_##t), &from_ccs = DFT(ympsDFTInv_CCSToR_##t);            \
        static constexpr auto &to_pack = DFT(ympsDFTFwd_RToPack_##t),                                                  \
                              &from_pack = DFT(workaround_for_DFTInv_RPack_##t);                                       \
        static constexpr auto &to_perm = DFT(ympsDFTFwd_RToPerm_##t), &from_perm = DFT(ympsDFTInv_PermToR_##t);        \
    };
ORV_DFT_REAL(ORV_DFT_PRIMITIVES)
#undef ORV_DFT_PRIMITIVES

template <class R> bool choose_primitives(DftiNode& node)
{
    using N = Primitives<R>;
    DftiPrimitive*& forward = node.*Precision<R>::primitive_forward;
    DftiPrimitive*& backward = node.*Precision<R>::primitive_backward;
    if (has_half_spectrum(node) || node.packed_format == CFG_CCS)
        forward = untyped(N::to_ccs), backward = untyped(N::from_ccs);
    else if (node.packed_format == CFG_PACK) forward = untyped(N::to_pack), backward = untyped(N::from_pack);
    else if (node.packed_format == CFG_PERM) forward = untyped(N::to_perm), backward = untyped(N::from_perm);
    else return false;
    return true;
}

// most: points that have a codelet here.
template <class R> i32 choose_first(DftiNode* node, DftiNode* head, i64 most)
{
    using P = Precision<R>;
    using N = Parts<R>;
    node->*P::real_forward = N::real_forward, node->*P::real_backward = N::real_backward;
    if (!choose_primitives<R>(*node)) return give_up(head, node_unsupported);
    const i64 n = node->length;
    if (is_power_of_two(n) && n >= 2 && n <= most && has_unit_strides(*head)) {
        node->use_engine = 0;
        N::set_real_forward(node), N::set_real_backward(node);
        return node_ok;
    }
    node->use_engine = 1;
    return N::init_real(node, head);
}

// Half a spectrum has no other order than that of frequencies.
template <class R> i32 choose_later(DftiNode** node, DftiNode* head)
{
    (*node)->ordering = CFG_ORDERED;
    return choose_engine<R>(*node, head);
}

template <class R> void install_planes(DftiNode* head)
{
    using N = Parts<R>;
    const bool half = has_half_spectrum(*head);
    head->kernel_2d_forward_out = half ? N::half_plane_forward : N::real_plane_forward;
    head->kernel_2d_backward_out = half ? N::half_plane_backward : N::real_plane_backward;
}

template <class R> i32 commit(DftiNode* head, const Variant& variant)
{
    const bool half = has_half_spectrum(*head);
    if (is_in_place(*head) && half && inconsistent_ri_cce(*head)) return give_up(head, node_inconsistent);
    if (!half && head->work_rank > 2) return give_up(head, node_unsupported);
    variant.define_threads(head, head->dynamic_threads);
    if (head->work_rank == 2) install_planes<R>(head);
    const i64 most = sizeof(R) == 4 && head->work_rank > 1 ? 32 : 64;
    const i32 status = for_each_node(head, [=](DftiNode* node) {
        if (node->dimension_index == 0) return choose_first<R>(node, head, most);
        return choose_later<R>(&node, head);
    });
    return status == node_ok ? finish(head, variant) : status;
}

template <const Variant& variant, class R> i32 commit_variant(DftiNode* head) { return commit<R>(head, variant); }

ORV_DFT_VARIANTS(d, r2c)
ORV_DFT_VARIANTS(s, r2c)

} // namespace

PRIMITIVE(2, complex_for_real_dft_d, choose_later<double>)
PRIMITIVE(2, complex_for_real_dft_c, choose_later<float>)
PRIMITIVE(1, commit_descriptor_core_d_r2c_1d, commit_variant<d_r2c_1d, double>)
PRIMITIVE(1, commit_descriptor_core_d_r2c_md, commit_variant<d_r2c_md, double>)
PRIMITIVE(1, commit_descriptor_core_s_r2c_1d, commit_variant<s_r2c_1d, float>)
PRIMITIVE(1, commit_descriptor_core_s_r2c_md, commit_variant<s_r2c_md, float>)

} // namespace orv::dft
