// The primitive engine as nodes use it: records of one dimension, scales that it can apply itself, its statuses, and an
// inverse that it is given in another layout.
#include "dft/node.h"
#include "dft/primitives/dft/call.h"
#include "dft/primitives/packed.h"

namespace orv::dft {
namespace {

// A kind of records: where a node keeps one, and what makes it.
struct Kind {
    YmpDftSpec* DftiNode::*spec;
    DftInitAlloc* init;
    DftGetBufSize* buffer_bytes;
};
template <class R> struct Kinds;
#define ORV_DFT_NODE_KINDS(t)                                                                                          \
    template <> struct Kinds<t_##t> {                                                                                  \
        static constexpr Kind complex{&DftiNode::spec_c_##t##c, DFT(ympsDFTInitAlloc_C_##t##c),                        \
                                      DFT(ympsDFTGetBufSize_C_##t##c)};                                                \
        static constexpr Kind split{&DftiNode::spec_c_##t, DFT(ympsDFTInitAlloc_C_##t), DFT(ympsDFTGetBufSize_C_##t)}; \
        static constexpr Kind real{&DftiNode::spec_r_##t, DFT(ympsDFTInitAlloc_R_##t), DFT(ympsDFTGetBufSize_R_##t)};  \
        static constexpr Kind out_of_order{&DftiNode::spec_outord_##t##c, DFT(ympsDFTOutOrdInitAlloc_C_##t##c),        \
                                           DFT(ympsDFTOutOrdGetBufSize_C_##t##c)};                                     \
    };
ORV_DFT_REAL(ORV_DFT_NODE_KINDS)
#undef ORV_DFT_NODE_KINDS

i32 transfer(i32 status)
{
    switch (status) {
    case ok:
        return node_ok;
    case no_memory:
        return node_no_memory;
    default:
        return node_internal_error;
    }
}

// A node that cannot be had takes the whole chain with it.
i32 initialise(DftiNode* node, DftiNode* head, i64 longest, const Kind& kind)
{
    i32 status = node_too_long, bytes = 0;
    if (node->length <= longest) {
        status = transfer(kind.init(&(node->*kind.spec), static_cast<i32>(node->length), scale_none, 0));
        if (status == node_ok) status = transfer(kind.buffer_bytes(node->*kind.spec, &bytes));
    }
    if (status != node_ok) return give_up(head, status);
    node->node_buffer_bytes = bytes;
    return node_ok;
}

template <class R> i32 init_complex(DftiNode* node, DftiNode* head)
{
    const Kind& kind = is_ordered(*node) ? Kinds<R>::complex : Kinds<R>::out_of_order;
    return initialise(node, head, engine_limit<R>(node->length), kind);
}
template <class R> i32 init_split(DftiNode* node, DftiNode* head)
{
    return initialise(node, head, engine_limit<R>(node->length), Kinds<R>::split);
}
template <class R> i32 init_real(DftiNode* node, DftiNode* head)
{
    return initialise(node, head, engine_limit<R>(node->length), Kinds<R>::real);
}
template <class R> i32 init_first_of_real(DftiNode* node, DftiNode* head)
{
    if (const i32 status = init_real<R>(node, head)) return status;
    node->ccs_row_split = keeps_rows_apart(*node);
    return node_ok;
}

i32 can_scale(const DftiNode* node, i32* flag)
{
    const auto n = static_cast<double>(node->work_lengths.dims[0].n);
    const double f = node->forward_scale, b = node->backward_scale, root = 1 / __builtin_sqrt(n);
    const i32 found = f == 1 && b == 1         ? scale_none
                      : f == 1 / n && b == 1   ? scale_forward
                      : f == 1 && b == 1 / n   ? scale_inverse
                      : f == root && b == root ? scale_both
                                               : 0;
    if (flag != nullptr) *flag = found;
    return found != 0;
}

template <class R> constexpr auto& perm_to_reals = DFT(ympsDFTInv_PermToR_64f);
template <> constexpr auto& perm_to_reals<float> = DFT(ympsDFTInv_PermToR_32f);

// Pack goes back by way of Perm.
template <class R> i32 inverse_of_pack(const R* src, R* dst, const YmpDftSpec* spec, t_8u* buffer)
{
    to_perm(Layout::pack, src, dst, general::record_of(spec).length);
    return perm_to_reals<R>(dst, dst, spec, buffer);
}

} // namespace

PRIMITIVE(2, ymp_init_d_c2c, init_complex<double>)
PRIMITIVE(2, ymp_init_s_c2c, init_complex<float>)
PRIMITIVE(2, ymp_init_d_ri2ri, init_split<double>)
PRIMITIVE(2, ymp_init_s_ri2ri, init_split<float>)
PRIMITIVE(2, ymp_init_d_r2c, init_real<double>)
PRIMITIVE(2, ymp_init_s_r2c, init_real<float>)
PRIMITIVE(2, z_ymp_real_init, init_first_of_real<double>)
PRIMITIVE(2, c_ymp_real_init, init_first_of_real<float>)
PRIMITIVE(2, ymp_can_scale, can_scale)
PRIMITIVE(1, transfer_ymp_orv_error, transfer)
PRIMITIVE(4, workaround_for_DFTInv_RPack_32f, inverse_of_pack)
PRIMITIVE(4, workaround_for_DFTInv_RPack_64f, inverse_of_pack)

} // namespace orv::dft
