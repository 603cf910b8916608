// Transforms of a few points as kernels of nodes: the engine's fixed ones, with the scale that was committed.
#include "dft/node.h"
#include "dft/primitives/fft/recombine.h"
#include "dft/primitives/fft/record.h"
#include "dft/primitives/packed.h"

namespace orv::dft {
namespace {

// The fixed kernels of a type, by order.
template <class T> struct Fixed;
#define ORV_DFT_FIXED_OF(form, t)                                                                                      \
    template <> struct Fixed<t_##t> {                                                                                  \
        static constexpr FixedFft<t_##t>* forward[] = ORV_DFT_FIXED_KERNELS(form, fwd, _, t);                          \
        static constexpr FixedFft<t_##t>* inverse[] = ORV_DFT_FIXED_KERNELS(form, inv, _, t);                          \
        static constexpr FixedFft<t_##t, real_t<t_##t>>* forward_scaled[] =                                            \
            ORV_DFT_FIXED_KERNELS(form, fwd, _scale_, t);                                                              \
        static constexpr FixedFft<t_##t, real_t<t_##t>>* inverse_scaled[] =                                            \
            ORV_DFT_FIXED_KERNELS(form, inv, _scale_, t);                                                              \
    };
ORV_DFT_FIXED_OF(c, 32fc)
ORV_DFT_FIXED_OF(c, 64fc)
ORV_DFT_FIXED_OF(r, 32f)
ORV_DFT_FIXED_OF(r, 64f)
#undef ORV_DFT_FIXED_OF

template <bool forward, int order, class T> ORV_INLINE void transform(double scale, const T* src, T* dst)
{
    using F = Fixed<T>;
    if (scale == 1) (forward ? F::forward : F::inverse)[order](src, dst);
    else (forward ? F::forward_scaled : F::inverse_scaled)[order](static_cast<real_t<T>>(scale), src, dst);
}

template <class R> constexpr auto& recombine_perm = DFT(ymps_cRealRecombine_64f);
template <> constexpr auto& recombine_perm<float> = DFT(ymps_cRealRecombine_32f);

// Reals have no fixed kernel of 64 points; theirs is one of 32 pairs.
constexpr int order_of_pairs = 6;

template <int order, class R> ORV_INLINE void forward_to_perm(double scale, const R* src, R* dst)
{
    if constexpr (order < order_of_pairs) transform<true, order>(scale, src, dst);
    else {
        transform<true, order - 1>(scale, reinterpret_cast<const cpx<R>*>(src), reinterpret_cast<cpx<R>*>(dst));
        recombine_perm<R>(dst, 32, 1, half_sines<R, order_of_pairs>.table);
    }
}
template <int order, class R> ORV_INLINE void inverse_of_perm(double scale, R* dst)
{
    if constexpr (order < order_of_pairs) transform<false, order>(scale, dst, dst);
    else {
        recombine_perm<R>(dst, 32, -1, half_sines<R, order_of_pairs>.table);
        auto* const pairs = reinterpret_cast<cpx<R>*>(dst);
        transform<false, order - 1>(scale, pairs, pairs);
    }
}

template <int order, class R> ORV_INLINE i32 real_forward(void* input, void* output, const DftiNode* node)
{
    auto* const to = static_cast<R*>(output);
    forward_to_perm<order>(node->committed_forward_scale, static_cast<const R*>(input), to);
    from_perm(layout_of(*node), to, i64{1} << order);
    return node_ok;
}
template <int order, class R> ORV_INLINE i32 real_backward(void* input, void* output, const DftiNode* node)
{
    constexpr i64 n = i64{1} << order;
    auto* const to = static_cast<R*>(output);
    const Layout layout = node->ccs_row_split != 0 ? Layout::perm : layout_of(*node);
    to_perm(layout, static_cast<const R*>(input), to, n);
    inverse_of_perm<order>(node->committed_backward_scale, to);
    if (is_in_place(*node) && layout == Layout::ccs) to[n] = 0;
    return node_ok;
}

template <class R, int order, bool forward> i32 real_codelet(void* input, void* output, DftiNode* node, void*)
{
    return (forward ? real_forward<order, R> : real_backward<order, R>)(input, output, node);
}
template <class R, int order, bool forward> i32 complex_codelet(void* input, void* output, DftiNode* node, void*)
{
    using T = cpx<R>;
    const double scale = forward ? node->committed_forward_scale : node->committed_backward_scale;
    transform<forward, order>(scale, static_cast<const T*>(input), static_cast<T*>(output));
    return node_ok;
}

// The codelets of one direction, by order from 1 on.
template <int count> using Codelets = DftiKernel* const[count];
#define ORV_DFT_CODELETS(x, dir)                                                                                       \
    {                                                                                                                  \
        DFT(x##_f2_1d##dir), DFT(x##_f4_1d##dir), DFT(x##_f8_1d##dir), DFT(x##_f16_1d##dir), DFT(x##_f32_1d##dir),     \
            DFT(x##_f64_1d##dir)                                                                                       \
    }
constexpr Codelets<2> complex_forward_s = {DFT(xc_f2_1df), DFT(xc_f4_1df)};
constexpr Codelets<2> complex_backward_s = {DFT(xc_f2_1db), DFT(xc_f4_1db)};
constexpr Codelets<6> forward_d = ORV_DFT_CODELETS(xd, f), backward_d = ORV_DFT_CODELETS(xd, b);
constexpr Codelets<6> forward_s = ORV_DFT_CODELETS(xs, f), backward_s = ORV_DFT_CODELETS(xs, b);
#undef ORV_DFT_CODELETS

template <auto kernel, const auto& codelets> void set(DftiNode* node)
{
    for (i64 n = 2; DftiKernel * codelet : codelets) {
        if (node->length == n) node->*kernel = codelet;
        n *= 2;
    }
}
template <auto kernel, const auto& codelets> void set_backward(DftiNode* node)
{
    set<kernel, codelets>(node);
    node->ccs_row_split = keeps_rows_apart(*node);
}

} // namespace

#define CODELET(x, body, R, n, order)                                                                                  \
    PRIMITIVE(4, x##_f##n##_1df, body<R, order, true>)                                                                 \
    PRIMITIVE(4, x##_f##n##_1db, body<R, order, false>)
#define REAL_CODELETS(x, R)                                                                                            \
    CODELET(x, real_codelet, R, 2, 1)                                                                                  \
    CODELET(x, real_codelet, R, 4, 2)                                                                                  \
    CODELET(x, real_codelet, R, 8, 3)                                                                                  \
    CODELET(x, real_codelet, R, 16, 4) CODELET(x, real_codelet, R, 32, 5) CODELET(x, real_codelet, R, 64, 6)
CODELET(xc, complex_codelet, float, 2, 1)
CODELET(xc, complex_codelet, float, 4, 2)
REAL_CODELETS(xd, double)
REAL_CODELETS(xs, float)

PRIMITIVE(1, set_codelet_cf, set<&DftiNode::kernel_s_forward, complex_forward_s>)
PRIMITIVE(1, set_codelet_cb, set<&DftiNode::kernel_s_backward, complex_backward_s>)
PRIMITIVE(1, set_codelet_df, set<&DftiNode::kernel_rd_forward, forward_d>)
PRIMITIVE(1, set_codelet_db, set_backward<&DftiNode::kernel_rd_backward, backward_d>)
PRIMITIVE(1, set_codelet_sf, set<&DftiNode::kernel_rs_forward, forward_s>)
PRIMITIVE(1, set_codelet_sb, set_backward<&DftiNode::kernel_rs_backward, backward_s>)

} // namespace orv::dft
